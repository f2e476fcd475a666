#pragma once

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

/// Values by index, in order of index, side by side in memory. A frame holds few points and there
/// are many frames: an ordered map would spend most of its time and memory on its nodes. Appending
/// is cheap, inserting in between moves what follows. Operations are a std::map's.
template <typename TValue>
class CEntries {
 public:
  using value_type = std::pair<int, TValue>;
  using const_iterator = typename std::vector<value_type>::const_iterator;

  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  auto rbegin() const { return entries_.rbegin(); }

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
    if (empty() || entries_.back().first < index)
      return entries_.emplace_back(index, TValue()).second;
    const auto place = entries_.begin() + (lower_bound(index) - begin());
    if (place->first == index) return place->second;
    return entries_.emplace(place, index, TValue())->second;
  }
  /// References to other values end.
  void erase(int index) {
    const const_iterator found = find(index);
    if (found != end()) entries_.erase(found);
  }

  friend bool operator==(const CEntries&, const CEntries&) = default;

 private:
  std::vector<value_type> entries_;
};
