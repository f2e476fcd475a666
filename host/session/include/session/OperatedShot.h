#pragma once

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"
#include "session/PluginLibrary.h"
#include "session/ShotDisplay.h"
#include "session/ShotSession.h"

/// The stabiliser at work on shots that an operator looks at: session, plug-in and tool, opened
/// together and closed together. The operator's acts reach the tool through here, and what a pass
/// writes is finished here. THREAD: one thread, which becomes the tool's user-interface thread.
class COperatedShot {
 public:
  /// Loads the plug-in, shows and activates its tool, marks the whole clip. Application and display
  /// outlive this. Throws CPluginError, CJobError.
  COperatedShot(std::unique_ptr<IClipReader> reader, int threads, TApplication& application,
                IShotDisplay& display);
  /// Stops what runs, writes the settings, and closes the tool, which saves the points.
  ~COperatedShot();
  COperatedShot(const COperatedShot&) = delete;
  COperatedShot& operator=(const COperatedShot&) = delete;

  CShotSession& session() { return session_; }
  const SClipInfo& info() const { return session_.info(); }
  /// Another clip, wholly marked. REQUIRES: not busy.
  void changeClip(std::unique_ptr<IClipReader> reader);

  /// A key or mouse button; true when the tool used it.
  bool input(CUserInput& input);
  /// The tool has a command for it.
  bool knows(const CUserInput& input);
  void pointerMoved(CUserInput& input);
  void command(int number);
  /// The tool hides the points after a render; whoever edits them wants to see them.
  void showPoints();
  /// Asks a running or paused pass to end; it ends in later rounds of `pump`.
  void stop();
  /// A pass runs or pauses, or what it wrote is being completed.
  bool isBusy() const { return session_.isBusy() || finishing_.valid(); }

  /// The session's round; does nothing while the tool waits for an answer (see `hold`).
  void pump();
  /// Held while a dialog of the tool is open: the tool is in the middle of something.
  void hold() { ++held_; }
  void release() { --held_; }

  /// The next render writes there. When it has ended the writer is completed, if every marked frame
  /// was written, on a thread of its own, since that may mean sound and the end of a long video;
  /// then it is gone. REQUIRES: no pass runs; waits for a writer that is being completed.
  void setWriter(std::unique_ptr<IClipWriter> writer);
  bool hasWriter() const { return writer_ != nullptr; }

  /// Settings and points as a process-list entry; the other way round. Throw CJobError.
  CPDLEntry capture();
  void apply(CPDLEntry& entry);

  /// What went wrong since the last call: frames that could not be read or written, points that
  /// were lost, the tool's own errors. What comes together has one cause, told first.
  std::vector<std::string> takeFailures();
  struct SRender {
    int written = 0;
    int wanted = 0;  ///< between the marks when it began
  };
  /// The render that has ended since the last call.
  std::optional<SRender> takeRender();

 private:
  /// The tool's own errors, from any thread.
  struct SToolErrors {
    SToolErrors();
    ~SToolErrors();
    std::mutex mutex;
    std::vector<std::string> texts;  // guarded by mutex
  };

  void openTool();
  void close();
  void saveSettings();
  void endRender();
  void takeFinished();
  void noteLostPoints();
  void noteFailure(const std::string& text);

  SToolErrors errors_;
  TApplication& application_;
  CPluginLibrary plugin_;
  CShotSession session_;
  CToolObject* tool_ = nullptr;
  std::unique_ptr<IClipWriter> writer_;
  std::vector<std::string> failures_;
  std::string lastFailure_;
  int wanted_ = 0;  ///< frames of the render that writer_ is for
  std::optional<SRender> ended_;
  SRender finished_;                    ///< what `finishing_` completes
  std::future<std::string> finishing_;  ///< what went wrong with it
  int held_ = 0;
  bool wasBusy_ = false;
  bool wasTracking_ = false;
};
