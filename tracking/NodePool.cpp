#include "tracking/NodePool.h"

#include <algorithm>

#include "support/Memory.h"

namespace {

constexpr std::size_t FIRST_PIECES = 8;
/// Blocks grow fast: memory in pieces below the size of a huge page costs the most.
constexpr std::size_t GROWTH = 8;
constexpr std::size_t LARGEST_BLOCK = std::size_t{2} << 20;

}  // namespace

CNodePool::~CNodePool() {
  release();
}

void CNodePool::release() noexcept {
  for (void* block : blocks_) QTXfree(block);
  blocks_.clear();
  fresh_ = nullptr;
  freshPieces_ = 0;
  free_ = nullptr;
  blockPieces_ = 0;
  expected_ = 0;
}

void CNodePool::addBlock(std::size_t bytes) {
  blockPieces_ = std::clamp(blockPieces_ * GROWTH, FIRST_PIECES,
                            std::max(LARGEST_BLOCK / bytes, FIRST_PIECES));
  const std::size_t pieces = std::max(blockPieces_, std::exchange(expected_, 0));
  blocks_.reserve(blocks_.size() + 1);
  void* const block = QTXmallocLarge(pieces * bytes);
  if (block == nullptr) throw std::bad_alloc();
  blocks_.push_back(block);
  fresh_ = static_cast<std::byte*>(block);
  freshPieces_ = pieces;
}

void* CNodePool::take(std::size_t bytes) {
  if (free_ != nullptr) {
    SFree* const piece = std::exchange(free_, free_->next);
    ++taken_;
    return piece;
  }
  if (freshPieces_ == 0) addBlock(bytes);
  void* const piece = std::exchange(fresh_, fresh_ + bytes);
  --freshPieces_;
  ++taken_;
  return piece;
}

void CNodePool::giveBack(void* piece) noexcept {
  free_ = ::new (piece) SFree{free_};
  if (--taken_ == 0) release();
}
