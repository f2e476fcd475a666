#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VideoPixels.h"
#include "clip/ClipFrame.h"

/// Converters of one video's pictures, lent to whoever converts: making one takes longer than
/// converting a small part of a picture. Those of the sizes used last are kept. THREAD: any.
class CPixelsPool {
 public:
  /// As CVideoPixels::toSamples, on the calling thread alone.
  void toSamples(const AVFrame& picture, std::uint16_t* samples);

 private:
  using Pixels = std::unique_ptr<CVideoPixels>;
  struct SShelf {
    int width = 0;
    int height = 0;
    std::vector<Pixels> free;
  };

  Pixels take(int width, int height);
  void giveBack(int width, int height, Pixels pixels);
  SShelf& shelfLocked(int width, int height);

  std::mutex mutex_;
  std::list<SShelf> shelves_;  ///< under mutex_; the size used last stands first
};

/// A decoded picture, of which only what is read is converted. `path` and `frame` are for messages.
/// The pool must outlive it. Throws std::bad_alloc.
std::unique_ptr<IClipFrame> MakeVideoFrame(const AVFrame& picture, CPixelsPool& pixels,
                                           const std::string& path, int frame);
