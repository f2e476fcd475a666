#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Ordered maps of many entries. Copying one node by node out of the heap costs more than all that
/// is done with the copy, so the nodes of a map lie in a few large blocks of its own.

/// Equally sized pieces of memory from blocks that grow with their number. What is given back is
/// used again; with the last piece the blocks go as well. THREAD: any, one at a time.
class CNodePool {
 public:
  CNodePool() = default;
  CNodePool(const CNodePool&) = delete;
  CNodePool& operator=(const CNodePool&) = delete;
  ~CNodePool();

  /// A piece of the size of the first one that was taken; std::bad_alloc without memory. REQUIRES:
  /// `bytes` at least a pointer's, a multiple of its alignment, and always the same.
  void* take(std::size_t bytes);
  void giveBack(void* piece) noexcept;
  /// So many pieces are taken next: those that the last block does not have come in one.
  void expect(std::size_t pieces) { expected_ = pieces > freshPieces_ ? pieces - freshPieces_ : 0; }

 private:
  struct SFree {
    SFree* next;
  };

  void addBlock(std::size_t bytes);
  void release() noexcept;

  std::vector<void*> blocks_;
  std::byte* fresh_ = nullptr;  // what is left of the last block
  std::size_t freshPieces_ = 0;
  SFree* free_ = nullptr;
  std::size_t taken_ = 0;
  std::size_t blockPieces_ = 0;
  std::size_t expected_ = 0;
};

/// Nodes of one map from one pool, which comes with the first node: an empty map is made, moved and
/// swapped without memory. Maps that are still without one count as having the same: nodes must not
/// be spliced or merged from map to map.
template <typename T>
class CNodeAllocator {
 public:
  using value_type = T;
  using propagate_on_container_move_assignment = std::true_type;
  using propagate_on_container_swap = std::true_type;

  CNodeAllocator() noexcept = default;
  explicit CNodeAllocator(std::shared_ptr<CNodePool> pool) noexcept : pool_(std::move(pool)) {}
  // Copied where it might be moved: what it is moved from must go on as it was.
  CNodeAllocator(const CNodeAllocator&) noexcept = default;
  CNodeAllocator& operator=(const CNodeAllocator&) noexcept = default;
  template <typename TOther>
  explicit(false) CNodeAllocator(const CNodeAllocator<TOther>& other) noexcept
      : pool_(other.pool()) {}
  CNodeAllocator select_on_container_copy_construction() const { return {}; }

  T* allocate(std::size_t count) {
    if (count != 1) throw std::bad_array_new_length();
    if (!pool_) pool_ = std::make_shared<CNodePool>();
    return static_cast<T*>(pool_->take(sizeof(T)));
  }
  void deallocate(T* piece, std::size_t) noexcept { pool_->giveBack(piece); }

  const std::shared_ptr<CNodePool>& pool() const { return pool_; }
  friend bool operator==(const CNodeAllocator& a, const CNodeAllocator& b) {
    return a.pool_ == b.pool_;
  }

 private:
  std::shared_ptr<CNodePool> pool_;
};

/// A std::map on a pool of its own. Two maps never share one, not even after a move: they may
/// belong to two threads.
template <typename TKey, typename TValue>
class CPooledMap : public std::map<TKey, TValue, std::less<TKey>,
                                   CNodeAllocator<std::pair<const TKey, TValue>>> {
 public:
  using CMap =
      std::map<TKey, TValue, std::less<TKey>, CNodeAllocator<std::pair<const TKey, TValue>>>;

  CPooledMap() = default;
  ~CPooledMap() = default;
  CPooledMap(const CPooledMap& other) : CMap() { *this = other; }
  CPooledMap(CPooledMap&& other) noexcept { this->swap(other); }
  CPooledMap& operator=(const CPooledMap& other) {
    if (other.size() > this->size()) poolOfOwn().expect(other.size() - this->size());
    CMap::operator=(other);
    return *this;
  }
  CPooledMap& operator=(CPooledMap&& other) noexcept {
    if (this != &other) {
      this->clear();
      this->swap(other);
    }
    return *this;
  }

 private:
  using CAllocator = typename CMap::allocator_type;

  CNodePool& poolOfOwn() {
    if (!this->get_allocator().pool()) {
      CMap made(CAllocator(std::make_shared<CNodePool>()));
      CMap::swap(made);
    }
    return *this->get_allocator().pool();
  }
};
