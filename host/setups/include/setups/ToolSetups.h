#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "frames/FrameStore.h"
#include "setups/StoreEdge.h"
#include "setups/WriterEdge.h"

/// One tool setup: a processor of the tool, its edges, and what it last reported.
/// THREAD: the user-interface thread.
class CToolSetup {
 public:
  static constexpr int NO_FRAME = -1;
  enum EStatus { STATUS_STOPPED = 1, STATUS_PAUSED = 2, STATUS_RUNNING = 3 };

  /// Makes the processor through the tool and connects it. REQUIRES: one input and one output port.
  CToolSetup(CToolObject& tool, CFrameStore& store, int kind, const CToolIOConfig& config,
             int outputLimit);
  /// Tells the processor to exit and waits for the end of its thread.
  ~CToolSetup();
  CToolSetup(const CToolSetup&) = delete;
  CToolSetup& operator=(const CToolSetup&) = delete;

  void setFrameRange(const CToolFrameRange& range);
  void setParameters(CToolParameters* parameters);
  /// 0, or why the ports could not be configured.
  int run(IClipWriter* writer, int writerThreads);
  void post(int command);
  /// Statuses that arrived since the last call, oldest first.
  std::vector<CAutotoolStatus> takeStatuses();

  int kind() const { return kind_; }
  int status() const { return status_; }
  /// The first frame of a run that has paused that was not written yet, or NO_FRAME.
  int firstUnwritten() const;
  /// Waits until the frames of the last run are written; how many were.
  int finishWriting();
  /// Why a frame could not be read or written; empty while all is well.
  std::string failure() const;

 private:
  void note(const CAutotoolStatus& status);

  CFrameStore& store_;
  const int kind_;
  CAbortFlag abortFlag_{0};
  CStoreEdge input_;
  CWriterEdge output_;
  std::unique_ptr<CToolProcessor> processor_;
  int first_ = 0;
  int end_ = 0;
  int firstOfRun_ = 0;  ///< before a pause, which lets a run go on elsewhere
  bool writes_ = false;
  int oneFrame_ = CWriterEdge::EVERY_FRAME;  ///< the frame that a one-frame pass is about
  int status_ = STATUS_STOPPED;
  bool threadEnded_ = false;
};

/// The host's tool setups: handles, the active one, and the pump that forwards statuses to the
/// tool. THREAD: the user-interface thread.
class CToolSetups {
 public:
  struct SSettings {
    int outputLimit = 3;  ///< finished frames that may wait for the writer
    int writerThreads = 1;
  };
  static constexpr int NO_SUCH_SETUP = -3200;

  CToolSetups(CFrameStore& store, const SSettings& settings);
  ~CToolSetups();

  void setTool(CToolObject* tool) { tool_ = tool; }
  /// Where render passes write; not owned; null drops the frames.
  void setWriter(IClipWriter* writer) { writer_ = writer; }

  /// The operations of the host interface of the same names; results as there.
  int make(int kind, const CToolIOConfig& config);
  int activate(int handle);
  int active() const { return active_; }
  int status(int handle) const;
  void destroy(int handle);
  int setFrameRange(const CToolFrameRange& range);
  int setParameters(CToolParameters* parameters);
  /// For range setups; of the one-frame setups only the render-frame one writes, its one frame.
  void setRenderMode(int mode) { renders_ = mode == 1; }
  void run();
  void pause();
  void stop();

  /// Forwards statuses to the tool; a frame that cannot be read or written stops the pass.
  void pump();
  /// A run that writes has paused, and would go on without a gap from that frame; called before the
  /// tool hears of the pause.
  std::function<void(int)> onPausedAt;
  /// The active setup's run has paused.
  bool isPaused() const;
  /// Frames of the last run of the active setup that are written; waits for them.
  int finishWriting();
  /// The first frame failure since the last run began.
  const std::string& failure() const { return failure_; }
  /// Destroys every setup.
  void clear();

 private:
  CToolSetup* activeSetup() const;
  bool writes(const CToolSetup& setup) const;

  CFrameStore& store_;
  const SSettings settings_;
  CToolObject* tool_ = nullptr;
  IClipWriter* writer_ = nullptr;
  std::map<int, std::unique_ptr<CToolSetup>> setups_;
  int nextHandle_ = 0;
  int active_ = -1;
  bool renders_ = false;
  int startFailure_ = 0;  // of `run`, told to the tool at the next pump
  std::string failure_;
};
