#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ToolObj/ToolNode.h"
#include "clip/ClipWriter.h"

/// Output edge of a processor: takes finished frames to a writer on threads of its own. Holds at
/// most `limit` frames; the processor waits when it is full. What is finished when a run pauses or
/// stops is written, too. THREAD: put and flush on the
/// processor's thread, the rest on the user-interface thread.
class CWriterEdge : public CToolEdge {
 public:
  explicit CWriterEdge(int limit);
  ~CWriterEdge() override;

  static constexpr int EVERY_FRAME = -1;

  /// Where frames go from now on; null drops them, as `onlyFrame` does with all the others. Not
  /// owned; must outlive `drain`. More than one thread writes only where the writer is parallel; a
  /// writer that is not gets a frame once, also when a run goes back: what it has stays.
  /// REQUIRES: nothing is queued.
  void open(IClipWriter* writer, int threads, int onlyFrame);
  /// Waits until every queued frame is written or dropped.
  void drain();
  int framesWritten() const;
  /// The first of the frames [first, end) that is not written; `end`: all are.
  int firstUnwritten(int first, int end) const;
  /// Why a frame could not be written; empty while all is well. Later frames are dropped.
  std::string failure() const;

 protected:
  void onFramePut() override;
  void onFlush() override;

 private:
  void writerThread();
  bool isWanted(const CToolFrameBuffer& frame, const IClipWriter& writer) const;
  void write(const CToolFrameBuffer& frame, IClipWriter* writer);
  void endThreads();

  mutable std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  IClipWriter* writer_ = nullptr;
  int onlyFrame_ = EVERY_FRAME;
  int queued_ = 0;
  int writing_ = 0;
  std::set<int> written_;
  std::string failure_;
  bool quit_ = false;
  std::vector<std::thread> threads_;
};
