#pragma once

#include <cstddef>
#include <vector>

/// At least `count` elements of memory that is used again by whoever asks next for this type on the
/// same thread: fresh pages cost more than the conversion that they are for.
template <class T>
std::vector<T>& Scratch(std::size_t count) {
  thread_local std::vector<T> memory;
  if (memory.size() < count) memory.resize(count);
  return memory;
}
