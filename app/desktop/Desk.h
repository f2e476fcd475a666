#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frames/FrameCache.h"
#include "frames/ResultFrames.h"
#include "presenter/QtApplication.h"
#include "session/OperatedShot.h"
#include "session/PointEditing.h"
#include "session/ProcessListFile.h"
#include "support/FileLock.h"

/// Whom the desk tells what changed and asks what only an operator knows.
class IDeskWindow {
 public:
  virtual ~IDeskWindow() = default;
  virtual void showClip() = 0;
  virtual void showFrame() = 0;
  virtual void showMarks() = 0;
  virtual void showOverlay() = 0;
  virtual void showCachedFrames() = 0;
  virtual void showProgress(bool busy) = 0;
  virtual void showPanel(const std::string& title, TControl& panel) = 0;
  virtual void removePanel() = 0;
  virtual void showPointer(const SCursorImage* pointer) = 0;
  virtual void showResult(bool result) = 0;
  virtual void showList() = 0;
  virtual void showOutput() = 0;
  virtual void setHelpPages(const std::string& operation, const std::string& hotKeys) = 0;
  /// Things an operator should read; the work goes on.
  virtual void showMessage(const std::string& text) = 0;
  virtual void showFailure(const std::string& text) = 0;
  virtual bool confirm(const std::string& question, const std::string& yes) = 0;
  /// The operator chooses an output; empty: none.
  virtual std::string chooseOutput(const std::string& suggestion) = 0;
};

/// The open shot and what belongs to it on an operator's desk: the tool at work, decoded frames and
/// results to look at, where the output goes, the process list. Draws nothing.
/// THREAD: the user-interface thread.
class CDesk : public IShotDisplay {
 public:
  CDesk(CQtApplication& application, IDeskWindow& window);
  ~CDesk() override;

  bool isOpen() const { return shot_ != nullptr; }
  /// Asks where something would be lost. False: nothing was opened, and the operator knows why.
  bool open(const std::string& path);
  /// False: the operator wants to go on.
  bool mayClose();

  COperatedShot& shot() { return *shot_; }
  CShotSession& session() { return shot_->session(); }
  const SClipInfo& info() const { return shot_->info(); }
  CPointEditing& points() { return *points_; }

  void goToFrame(int frame);
  int displayedFrame() { return session().getDisplayedFrame(); }
  /// Which way the displayed frame will go on, see CFrameCache::lookAt.
  void setDirection(int direction);
  /// What will be wanted next is counted from there, while the displayed frame stays.
  void lookAhead(int frame);
  CFrameCache::Samples frameBefore(int frame) const { return cache_->find(frame); }
  CResultFrames::Samples frameAfter(int frame) const { return results_->find(frame); }
  std::string frameFailure(int frame) const { return cache_->failure(frame); }
  std::vector<SFrameSpan> cachedFrames() const { return cache_->cached(); }
  std::vector<int> resultFrames() const { return results_->frames(); }
  /// Files may be back.
  void retryFrames();

  /// Where renders go: a sequence pattern, a folder or a video file; empty: asked for.
  const std::string& output() const { return output_; }
  void setOutput(const std::string& output);
  /// The operator's choice: told at once when nothing can be written there.
  void chooseOutput();

  const CProcessListFile& list() const { return list_; }
  /// Opens an entry's clip with its marks, output, settings and points.
  bool openEntry(const SQueuedShot& entry);

  /// Why none can be looked for now; empty: they can.
  std::string findingRefusal();
  /// Finds points in the displayed IN frame.
  void findPoints(int count);
  bool isBusy() { return isOpen() && shot_->isBusy(); }
  /// The displayed frame is the pass's: none is under way but one that has paused.
  bool isDisplayTaken() { return isOpen() && session().isBusy() && !session().isPaused(); }

 private:
  void tick();
  std::unique_ptr<IClipReader> openReader(const std::string& path) const;
  /// Null: the operator does not want the clip.
  std::unique_ptr<CFileClaim> claim(const std::string& folder);
  bool mayReplace(const std::string& output);
  void tellFailures();
  void tellOutcome();

  // IShotDisplay
  void onDisplayedFrame() override;
  void onMarks() override;
  void onOverlay() override;
  bool copyShownFrame(int frame, std::uint16_t* samples) override;
  void showResult(int frame, const std::uint16_t* samples) override;
  bool prepareRender() override;
  void captureToList(bool allEvents) override;
  void toggleResult() override { window_.showResult(true); }
  void showControlPanel(const std::string& title, TControl& panel) override;
  void removeControlPanel() override { window_.removePanel(); }
  void setHelpPages(const std::string& operation, const std::string& hotKeys) override;
  void showPointer(const SCursorImage* pointer) override { window_.showPointer(pointer); }

  CQtApplication& application_;
  IDeskWindow& window_;
  const int threads_;
  CProcessListFile list_;
  std::string output_;
  std::string renderOutput_;  ///< of the render under way, or the last
  std::unique_ptr<CFileClaim> claim_;
  std::string claimed_;                     ///< the folder
  std::atomic<bool> framesArrived_{false};  // set by the threads of cache and results
  std::unique_ptr<CFrameCache> cache_;
  std::unique_ptr<CResultFrames> results_;
  std::unique_ptr<COperatedShot> shot_;
  std::unique_ptr<CPointEditing> points_;
  int direction_ = 0;
  bool wasBusy_ = false;
  bool overlayDue_ = false;
  QTimer timer_;
};
