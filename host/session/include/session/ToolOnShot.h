#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "ToolObj/ToolObject.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"
#include "session/JobObserver.h"
#include "session/PluginLibrary.h"
#include "session/ShotSession.h"

class THeadlessApplication;

/// Keys of the tool that a batch host presses, by command number.
enum EToolCommand {
  TOOL_SAVE_POINTS = 11,
  TOOL_LOAD_POINTS = 12,            ///< with the marks of the file
  TOOL_LOAD_POINTS_NOT_MARKS = 13,  ///< those of its first frame, in the IN frame
  TOOL_TRACK = 16
};

/// The stabiliser at work on one shot: the open clip, the session that is its host, the plug-in and
/// its tool, opened together and closed together. A batch host's hands: everything that it asks of
/// the tool goes through here. THREAD: one thread, which becomes the tool's user-interface thread.
///
/// Operations throw CJobError with the tool's own code and text where it gave them, CInterrupted
/// when the observer wants the work stopped.
class CToolOnShot {
 public:
  /// Loads the plug-in, shows and activates its tool, sets the marks [in, out). `keptBytes`: what
  /// frames may fill between tracking and rendering. The observer outlives this. Throws
  /// CPluginError, CJobError.
  CToolOnShot(std::unique_ptr<IClipReader> reader, int threads, std::size_t keptBytes, int in,
              int out, const SJobObserver& observer);
  ~CToolOnShot();
  CToolOnShot(const CToolOnShot&) = delete;
  CToolOnShot& operator=(const CToolOnShot&) = delete;

  CShotSession& session() { return session_; }
  /// The tool's live points.
  CTrackingArray& points() { return *session_.editor()->trackingArray(); }
  std::string pluginVersion() const { return plugin_.version(); }

  /// Gives the tool a process-list entry: its settings, and its points where the entry holds some.
  void apply(CPDLEntry& entry);
  /// Its settings and points as a process-list entry.
  CPDLEntry capture();
  /// Points were placed or changed through `points`.
  void tellPointsChanged();
  /// Presses a key of the tool's, by its command number, with the file that a dialog of the tool is
  /// to be answered with, and waits for what follows.
  void command(int number, const std::string& fileAnswer = {});
  /// Tracks and smooths what is not yet tracked, then renders [in, out) into the writer, which is
  /// finished afterwards. Returns the number of frames. After a failure the tool is closed: the
  /// writer, whole frames in it, may go.
  int render(IClipWriter& writer);

 private:
  /// The tool's failures, from construction to destruction.
  struct SToolErrors {
    SToolErrors();
    ~SToolErrors();
    void setCode(int newCode);

    std::mutex mutex;  ///< the tool's threads fail, too; guards both
    int code = 0;
    std::string text;
  };

  void openTool(int in, int out);
  void close();
  int renderInto();
  void pumpUntilIdle();
  void throwWhatFailed();

  const SJobObserver& observer_;
  SToolErrors errors_;
  std::unique_ptr<THeadlessApplication> application_;  ///< answers the tool's dialogs
  CPluginLibrary plugin_;
  CShotSession session_;
  CToolObject* tool_ = nullptr;
};
