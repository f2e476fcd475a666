#pragma once

#include <memory>
#include <mutex>

#include "VideoLibrary.h"
#include "support/Memory.h"

/// Memory for the pictures that a decoder gives out. Frames that are kept from one pass for the
/// next make the decoder take fresh memory for each, and the system takes longer to find that in
/// small pages than the decoder for the picture. THREAD: any. Pictures may outlive it.
class CPictureMemory {
 public:
  /// Has the decoder take its pictures from here. REQUIRES: it is not open yet, and does not
  /// outlive this.
  void serve(AVCodecContext& decoder);

 private:
  static int getBuffer(AVCodecContext* decoder, AVFrame* picture, int flags);
  std::shared_ptr<void> memoryFor(std::size_t bytes);
  bool fill(AVCodecContext& decoder, AVFrame& picture);

  std::mutex mutex_;
  std::unique_ptr<CBufferPool> pool_;  ///< under mutex_; of the size asked for last
};
