#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "ToolObj/ToolFrameBuffer.h"
#include "clip/ClipReader.h"
#include "support/Memory.h"

struct SFrameStoreSettings {
  int readAhead = 4;  ///< frames that may wait, fewer than 2 count as 2; bounds the store's memory
  int threads = 1;    ///< reading threads; a reader that is not parallel opens one frame at a time
  std::size_t keptBytes = 0;  ///< that frames given back with `keep` may fill
};

/// What a pass wants of its frames.
enum class EFrameForm {
  samples,  ///< decoded, for `take` and `waitFor`
  opened,   ///< for `waitForOpened`: some parts of each will be read
  both      ///< for `waitForOpened`: most of each will be read
};

/// A frame whose `clipFrame` can be given back for the next pass. The store must outlive it.
struct SOpenedFrame {
  std::unique_ptr<IClipFrame> clipFrame;
  /// Null where only parts were wanted, and the frame gives parts.
  std::unique_ptr<CToolFrameBuffer> samples;

  explicit operator bool() const { return clipFrame != nullptr; }
};

/// Hands out a clip's frames in order and reads ahead of whoever takes them. Memory is bounded by
/// `readAhead` frames, one more for each reading thread while reading begins anew elsewhere,
/// `keptBytes` and what the takers hold, whatever the length of the clip. A frame of the form
/// `both` may be there twice, as it was read and as samples.
///
/// THREAD: any for every operation; one taker at a time. The reader must outlive the store, and the
/// store must outlive the frames it handed out.
class CFrameStore {
 public:
  CFrameStore(IClipReader& reader, const SFrameStoreSettings& settings);
  ~CFrameStore();
  CFrameStore(const CFrameStore&) = delete;
  CFrameStore& operator=(const CFrameStore&) = delete;

  const SClipInfo& info() const { return reader_.info(); }

  /// Forgets what was read and reads [first, end) from now on.
  void start(int first, int end, EFrameForm form = EFrameForm::samples);
  /// Forgets what was read and ends reading; returns when no frame is being decoded any more.
  void stop();

  /// The frame, which the caller deletes before the store ends, or null when it is not decoded yet.
  /// A frame that is not under way (asked for again, or skipped to) restarts reading there. Throws
  /// CClipError when the frame cannot be read.
  CToolFrameBuffer* take(int frame);
  /// Waits for the frame; null when `cancelled` became true (see wake).
  CToolFrameBuffer* waitFor(int frame, const std::atomic<bool>& cancelled);
  /// As waitFor, for a pass that was started for opened frames; empty when cancelled. Whoever asks
  /// for another form than what was started restarts reading there.
  SOpenedFrame waitForOpened(int frame, const std::atomic<bool>& cancelled);
  /// Lets waiting takers look at their cancel flag.
  void wake();

  /// Gives an opened frame back for the next pass: it is not opened again, if there is room for it
  /// now. Whoever takes it next has the kept one, whatever has become of its file; until then it
  /// takes up its room. Where there is no room, or the frame holds no memory, it is dropped.
  void keep(int frame, std::unique_ptr<IClipFrame> opened);

  /// Both on the calling thread, beside whatever is being read ahead; a reader that is not parallel
  /// comes to the end of its frame first. Throw CClipError.
  void readNow(int frame, std::uint16_t* samples);
  std::unique_ptr<IClipFrame> openNow(int frame);
  /// All samples of an opened frame, in memory of the store's. Throws CClipError.
  std::unique_ptr<CToolFrameBuffer> decode(int frame, const IClipFrame& opened);

 private:
  struct SSlot {
    SOpenedFrame frame;  // holds what the pass wants, once it is ready
    std::exception_ptr error;
    bool ready = false;
  };

  void readerThread();
  bool mayRead() const;  // REQUIRES: mutex_ held
  std::unique_ptr<CToolFrameBuffer> samplesOf(int frame, const IClipFrame* opened);
  SSlot read(int frame, EFrameForm form, std::unique_ptr<IClipFrame> kept);
  void readNext(std::unique_lock<std::mutex>& lock);
  std::unique_ptr<IClipFrame> openInTurn(int frame);
  SSlot* findLocked(int frame, bool opened);
  CToolFrameBuffer* takeLocked(int frame);
  void restartLocked(int first, int end);

  IClipReader& reader_;
  const SFrameStoreSettings settings_;
  CBufferPool pool_;
  std::mutex readerMutex_;  // for readers that take one call at a time; never held with mutex_

  std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  std::map<int, SSlot> slots_;
  std::map<int, std::unique_ptr<IClipFrame>> kept_;
  std::size_t keptBytes_ = 0;
  EFrameForm form_ = EFrameForm::samples;
  bool opening_ = false;  // a reading thread has the reader, which is not parallel
  int generation_ = 0;    // a decode that began before a restart is thrown away
  int nextToRead_ = 0;
  int end_ = 0;
  int decoding_ = 0;
  bool quit_ = false;
  std::vector<std::thread> threads_;
};
