#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

/// Values by index, in order of index, side by side in memory; the first few in the object itself.
/// A frame holds few points and there are many frames: an ordered map would spend most of its time
/// and memory on its nodes, and memory from elsewhere costs more than what is done with it.
/// Appending is cheap, inserting in between moves what follows. Operations are a std::map's.
template <typename TValue>
class CEntries {
 public:
  struct value_type {
    int first;
    TValue second;

    friend bool operator==(const value_type&, const value_type&) = default;
  };
  using const_iterator = const value_type*;

  CEntries() noexcept {}
  ~CEntries() { release(); }
  CEntries(const CEntries& other) : CEntries() { assign(other); }
  CEntries(CEntries&& other) noexcept : CEntries() { take(other); }
  CEntries& operator=(const CEntries& other) {
    if (this != &other) assign(other);
    return *this;
  }
  CEntries& operator=(CEntries&& other) noexcept {
    if (this != &other) {
      release();
      take(other);
    }
    return *this;
  }

  const_iterator begin() const { return data(); }
  const_iterator end() const { return data() + size_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  auto rbegin() const { return std::make_reverse_iterator(end()); }

  const_iterator lower_bound(int index) const {
    return std::lower_bound(begin(), end(), index,
                            [](const value_type& entry, int i) { return entry.first < i; });
  }
  const_iterator find(int index) const {
    const const_iterator place = lower_bound(index);
    return place != end() && place->first == index ? place : end();
  }
  const TValue& at(int index) const {
    const const_iterator found = find(index);
    if (found == end()) throw std::out_of_range("CEntries::at");
    return found->second;
  }
  /// Inserts a default value where there is none. References to other values end.
  TValue& operator[](int index) {
    const const_iterator found = empty() || (end() - 1)->first < index ? end() : lower_bound(index);
    if (found != end() && found->first == index) return data()[found - begin()].second;
    return insert(static_cast<unsigned>(found - begin()), index);
  }
  /// References to other values end.
  void erase(int index) {
    const const_iterator found = find(index);
    if (found == end()) return;
    value_type* const entry = data() + (found - begin());
    std::copy(entry + 1, data() + size_, entry);
    --size_;
  }

  friend bool operator==(const CEntries& a, const CEntries& b) { return std::ranges::equal(a, b); }

 private:
  // Values are copied into memory that holds none, and left without an end.
  static_assert(std::is_trivially_copyable_v<value_type>);

  static constexpr unsigned OWN = 3;  // the corners of a triangle

  bool isOwn() const { return capacity_ == OWN; }
  value_type* data() { return isOwn() ? memory_.own : memory_.heap; }
  const value_type* data() const { return isOwn() ? memory_.own : memory_.heap; }

  void release() {
    if (!isOwn()) std::allocator<value_type>().deallocate(memory_.heap, capacity_);
    size_ = 0;
    capacity_ = OWN;
  }
  void grow(unsigned capacity) {
    value_type* const memory = std::allocator<value_type>().allocate(capacity);
    std::uninitialized_copy_n(data(), size_, memory);
    const unsigned size = size_;
    release();
    memory_.heap = memory;
    size_ = size;
    capacity_ = capacity;
  }
  TValue& insert(unsigned place, int index) {
    if (size_ == capacity_) grow(2 * capacity_);
    value_type* const entry = data() + place;
    for (value_type* moved = data() + size_; moved != entry; --moved) *moved = moved[-1];
    ++size_;
    return (::new (entry) value_type{index, TValue()})->second;
  }
  void assign(const CEntries& other) {
    size_ = 0;
    if (other.size_ > capacity_) grow(other.size_);
    std::uninitialized_copy_n(other.data(), other.size_, data());
    size_ = other.size_;
  }
  /// REQUIRES: released.
  void take(CEntries& other) {
    if (other.isOwn()) {
      std::uninitialized_copy_n(other.memory_.own, other.size_, memory_.own);
    } else {
      memory_.heap = other.memory_.heap;
    }
    size_ = std::exchange(other.size_, 0U);
    capacity_ = std::exchange(other.capacity_, OWN);
  }

  unsigned size_ = 0;
  unsigned capacity_ = OWN;
  union UMemory {
    UMemory() {}
    value_type own[OWN];
    value_type* heap;
  } memory_;
};
