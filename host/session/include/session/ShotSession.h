#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"
#include "frames/FrameStore.h"
#include "host/NavSystemInterface.h"
#include "session/TrackingRun.h"
#include "setups/ToolSetups.h"
#include "toolkit/Controls.h"
#include "tracking/TrackingPointsEditor.h"

/// What a tracking pass left behind. Points are named by the index they had when the pass began.
struct STrackingOutcome {
  struct SFrame {
    int frame = 0;
    int found = 0;
    int bridged = 0;
  };
  bool ran = false;     ///< false: the paths were measured elsewhere
  std::string failure;  ///< empty: every marked frame was tracked
  std::vector<int> withoutTexture;
  std::map<int, SPointSummary> points;
  std::map<int, int>
      indexInSet;  ///< of the points that were kept: their index in the tracking data
  std::vector<SFrame> frames;
  double seconds = 0.0;
};

/// One open shot: the host that a tool talks to. Holds the clip, the marks, the displayed frame,
/// the tool setups and the tracking pass, and is driven by `pump`. THREAD: the user-interface
/// thread (its creator's); the operations that the interface allows to a processor's thread
/// excepted.
class CShotSession : public CNavSystemInterface {
 public:
  struct SSettings {
    int threads = 1;      ///< for reading, tracking and writing
    int readAhead = 4;    ///< decoded frames that may wait
    int outputLimit = 3;  ///< finished frames that may wait
    bool batch = true;    ///< nobody sits in front of it
  };

  CShotSession(std::unique_ptr<IClipReader> reader, const SSettings& settings);
  ~CShotSession() override;

  /// The tool that is told what happens. It must be shut down before the session ends.
  void setTool(CToolObject* tool);
  /// Where render passes write; not owned; null: nowhere, and renders are refused.
  void setWriter(IClipWriter* writer);
  IClipReader& reader() { return *reader_; }
  const SClipInfo& info() const { return reader_->info(); }
  CTrackingPointsEditor* editor() const { return editor_; }

  /// Sets both marks and tells the tool. [in, out)
  void setMarks(int in, int out);
  /// Where points may lie: the processing region, inclusive. Given to the tracking pass.
  void setTrackingRegion(const SRect& region) { trackingRegion_ = region; }

  /// Paths that were measured elsewhere. A tracking pass over exactly their frames that begins on
  /// their first positions gives them as its results, to the last bit, and tracks nothing.
  /// REQUIRES: every frame from the first to the last holds the same points.
  void setKnownPaths(const CTrackingArray& paths) { knownPaths_ = paths; }
  /// The tool's points came tracked from elsewhere: the host treats them as it treats those of a
  /// pass. REQUIRES: as above, between the marks.
  void adoptTrackedPoints();

  /// One round of the user-interface thread: takes tracking results in, forwards processor
  /// statuses, beats the tool's heart. Call regularly.
  void pump();
  const STrackingOutcome& tracking() const { return tracking_; }
  /// The first frame of the running or last pass that could not be read or written; empty: none.
  const std::string& frameFailure() const { return setups_.failure(); }
  /// Ends every pass and destroys the tool's processors. A plug-in is unloaded, and a writer
  /// destroyed, only after this.
  void endPasses();
  /// Waits for the frames of the last pass to be written; how many were.
  int finishWriting() { return setups_.finishWriting(); }

  // CNavSystemInterface
  int getMarkIn() override { return markIn_; }
  int getMarkOut() override { return markOut_; }
  void setMarkIn(int frame) override;
  void setMarkOut(int frame) override;
  void goToFrame(int frame) override;
  int getDisplayedFrame() override { return displayedFrame_; }
  bool isClipAvailable() override { return true; }
  const IClip* getClip() override { return clip_.get(); }
  const CImageFormat* getClipImageFormat() override { return &reader_->info().format; }
  bool copyDisplayedFrame(std::uint16_t* samples) override;
  void prepareDisplayedPixels(int) override {}
  bool readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) override;
  std::string getFolderText() override;
  int MakeSimpleToolSetup(const std::string& toolName, int kind,
                          const CToolIOConfig& config) override;
  int SetActiveToolSetup(int handle) override { return setups_.activate(handle); }
  int getActiveToolSetup() override { return setups_.active(); }
  int getToolSetupStatus(int handle) override { return setups_.status(handle); }
  void destroyToolSetup(int handle) override { setups_.destroy(handle); }
  int SetToolFrameRange(const CToolFrameRange& range) override {
    return setups_.setFrameRange(range);
  }
  int SetToolParameters(CToolParameters* parameters) override {
    return setups_.setParameters(parameters);
  }
  void setRenderMode(int mode) override { setups_.setRenderMode(mode); }
  void RunActiveToolSetup() override { setups_.run(); }
  void pauseActiveToolSetup() override { setups_.pause(); }
  void stopActiveToolSetup() override { setups_.stop(); }
  void StartTrackingRun() override;
  void StopTrackingRun() override;
  bool isRenderPermitted() override { return writer_ != nullptr; }
  bool isBatchRun() override { return settings_.batch; }
  int getDisplayedFrameStatus() override { return 0; }
  int getParameterValue() override { return 0; }
  CToolFrameCache* getToolFrameCache() override { return &toolFrameCache_; }
  void frameOutputHook(CToolFrameBuffer*, int, const std::string&, bool) override {}
  CBufferPool* getFrameAllocator(std::size_t bytesPerField, int count, int valueA,
                                 int valueB) override;
  void notifyToolIdle() override {}
  void prepareForToolCall() override {}
  void SetHelpPages(const std::string&, const std::string&, int) override {}
  void setDisplayMode(int) override {}
  void redrawDisplay(int) override {}
  void setDrawingColor(int) override {}
  void drawRectangle(int, const SRect&) override {}
  void drawTrackBox(double, double, int, int, int, int, bool) override {}
  void drawArrow(double, double, double, double, int, int) override {}
  void showCursor(const SCursorImage*) override {}
  void setToolEditor(CTrackingPointsEditor* editor) override { editor_ = editor; }
  void setToolProgressMonitor(IToolProgressMonitor* monitor) override { monitor_ = monitor; }
  void setToolActive(bool) override {}
  bool canToolTakeDisplay() override { return true; }
  bool getDisplaySetting() override { return displaySetting_; }
  void setDisplaySetting(bool setting) override { displaySetting_ = setting; }
  bool isFirstShow() override { return settings_.batch; }
  void toggleFix(bool) override {}
  void capturePDL(bool) override {}
  void focusControl(TControl* control) override { control->focus(); }
  TControl* getFocusedControl() override { return FocusedControl(); }
  void setToolControlPanel(const std::string&, int, TControl*, int) override {}
  void removeToolControlPanel(int) override {}

 private:
  /// The samples that the pointer reads, kept while it moves over one frame.
  struct SDisplayedPixels {
    int frame = -1;
    std::vector<std::uint16_t> samples;
  };

  void tellMarksChanged();
  STrackSettings trackSettings() const;
  bool hasTrackingData() const;
  bool areKnown(const CTrackingPoints& points) const;
  void failTracking(const std::string& why);
  void pumpTracking();
  void takeTrackingResults();
  void finishTracking();
  bool keepUsablePoints();
  void selectTypicalPoint();

  const SSettings settings_;
  std::unique_ptr<IClipReader> reader_;
  std::unique_ptr<IClip> clip_;
  std::mutex poolMutex_;
  std::map<std::size_t, std::unique_ptr<CBufferPool>> pools_;  // guarded by poolMutex_
  CFrameStore store_;
  CToolFrameCache toolFrameCache_;
  CToolSetups setups_;
  std::unique_ptr<CTrackingRun> trackingRun_;
  CToolObject* tool_ = nullptr;
  IClipWriter* writer_ = nullptr;
  CTrackingPointsEditor* editor_ = nullptr;
  IToolProgressMonitor* monitor_ = nullptr;
  int markIn_ = -1;
  int markOut_ = -1;
  int displayedFrame_;
  SDisplayedPixels displayedPixels_;
  bool displaySetting_ = true;
  bool tellingMarks_ = false;
  SRect trackingRegion_;
  CHRTimer trackingTimer_;
  STrackingOutcome tracking_;
  CTrackingArray knownPaths_;
};
