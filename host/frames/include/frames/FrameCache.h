#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "clip/ClipReader.h"
#include "support/Memory.h"

/// Frames [first, end).
struct SFrameSpan {
  int first = 0;
  int end = 0;
  friend bool operator==(const SFrameSpan&, const SFrameSpan&) = default;
};

/// A clip's decoded frames around the place that is looked at, for a viewer that must never wait
/// for a decoder: it says where it looks, takes what is there, and hears when more has come.
///
/// Frames are decoded in the order in which the viewer will want them, as many as memory allows;
/// when memory is full, what lies farthest from the place goes first, and nothing that is wanted is
/// ever dropped to be decoded again. A frame that cannot be read takes no memory, and the others
/// still come.
///
/// THREAD: any for every operation; none waits for a decoder, but the destructor, which waits for
/// the frames under way. Owns its reader.
class CFrameCache {
 public:
  /// One frame as the reader gives it: info().format.getBytesPerField() bytes, three components per
  /// pixel. Outlives the cache where someone holds it.
  using Samples = std::shared_ptr<const std::uint16_t>;

  struct SSettings {
    /// Bound on the frames kept and being decoded; two fit whatever it says. Frames that were
    /// dropped but are still held outside are not counted.
    std::size_t bytes = 0;
    int threads = 1;  ///< decoding threads; more than one only where the reader is parallel
  };

  /// `onChange` is called with a frame that has come or failed. It may use the cache, but not
  /// destroy it. THREAD: a decoding one, with no lock held; never after the destructor.
  CFrameCache(std::unique_ptr<IClipReader> reader, const SSettings& settings,
              std::function<void(int frame)> onChange);
  ~CFrameCache();
  CFrameCache(const CFrameCache&) = delete;
  CFrameCache& operator=(const CFrameCache&) = delete;

  const SClipInfo& info() const { return reader_->info(); }

  /// Null: not decoded yet, or failed.
  Samples find(int frame) const;
  /// Why the frame cannot be read, naming file and frame; empty: no failure is known.
  std::string failure(int frame) const;
  /// In order, with gaps between them.
  std::vector<SFrameSpan> cached() const;

  /// From now on `frame` is wanted first (the clip's nearest frame, if it has none of that number)
  /// and then frames of [first, end): for `direction` 0 on both sides, near ones first; for +1 and
  /// -1 onwards in that direction, and from the end of the range round to its other end, as looped
  /// playing goes. A reader that is not parallel is slow backwards: there what lies behind is taken
  /// in blocks, each from its beginning, that stay in place while the viewer moves through them.
  /// What is being decoded comes to its end first. Looking at a failed frame after another one
  /// tries it again.
  void lookAt(int frame, int direction, int first, int end);
  /// Forgets all failures, so that what is wanted of them is tried again: the files came back.
  void retryFailed();

 private:
  struct SLook {
    int frame = 0;
    int direction = 0;
    int first = 0;
    int end = 0;
    friend bool operator==(const SLook&, const SLook&) = default;
  };
  struct SOutcome {
    Samples samples;
    std::string failure;
  };

  void decodingThread();
  SOutcome decode(int frame);
  SOutcome tryDecode(int frame);
  // REQUIRES for what follows: mutex_ held.
  void orderLocked();
  bool findWorkLocked();
  std::map<int, Samples>::iterator farthestUnwantedLocked();
  Samples beginLocked(int frame);
  void finishLocked(int frame, SOutcome outcome);

  const std::unique_ptr<IClipReader> reader_;
  const std::function<void(int frame)> onChange_;
  const std::size_t capacity_;  // in frames
  CBufferPool pool_;

  mutable std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  SLook look_;
  bool looking_ = false;
  std::vector<int> order_;          // the frames that fit and do not fail, wanted most first
  std::unordered_set<int> wanted_;  // the same frames
  std::size_t next_ = 0;            // into order_; what stands before is here or on its way
  std::map<int, Samples> cached_;
  std::set<int> decoding_;
  std::map<int, std::string> failures_;
  bool quit_ = false;
  std::vector<std::thread> threads_;
};
