#include "setups/StoreEdge.h"

CStoreEdge::CStoreEdge(CFrameStore& store) : store_(store) {
  setImageFormat(store.info().format);
}

std::string CStoreEdge::failure() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return failure_;
}

void CStoreEdge::clearFailure() {
  std::lock_guard<std::mutex> lock(mutex_);
  failure_.clear();
}

CToolFrameBuffer* CStoreEdge::requestFrame(int frame) {
  if (frame < 0) return nullptr;  // the end-of-material request: the store has nothing to close
  try {
    return store_.take(frame);
  } catch (const std::exception& error) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (failure_.empty()) failure_ = error.what();
    return nullptr;
  }
}
