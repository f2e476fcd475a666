#pragma once

#include <mutex>
#include <string>

#include "ToolObj/ToolNode.h"
#include "frames/FrameStore.h"

/// Input edge of a processor: asks the frame store, which decodes ahead.
/// THREAD: the processor's thread; `failure` and `clearFailure` any.
class CStoreEdge : public CToolEdge {
 public:
  /// The store must outlive the edge.
  explicit CStoreEdge(CFrameStore& store);

  /// Why a frame could not be read; empty while all is well.
  std::string failure() const;
  void clearFailure();

 protected:
  CToolFrameBuffer* requestFrame(int frame) override;

 private:
  CFrameStore& store_;
  mutable std::mutex mutex_;
  std::string failure_;
};
