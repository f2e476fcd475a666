#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"
#include "frames/FrameStore.h"
#include "host/NavSystemInterface.h"
#include "session/Overlay.h"
#include "session/ShotDisplay.h"
#include "session/TrackingRun.h"
#include "setups/ToolSetups.h"
#include "toolkit/Controls.h"
#include "tracking/TrackingPointsEditor.h"

/// "; point 3 was lost at frame 1005 (left the picture)" and so on, for each point that a pass left
/// out. Empty: all were followed. `in`: the mark IN that it began at.
struct STrackingOutcome;
std::string LostPoints(const STrackingOutcome& outcome, int in);

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
/// the tool setups and the tracking pass, and is driven by `pump`. A display shows it to an
/// operator; without one it is a batch host's. THREAD: the user-interface thread (its creator's);
/// the operations that the interface allows to a processor's thread excepted.
class CShotSession : public CNavSystemInterface {
 public:
  struct SSettings {
    int threads = 1;            ///< for reading, tracking and writing
    int readAhead = 4;          ///< decoded frames that may wait
    int outputLimit = 3;        ///< finished frames that may wait
    std::size_t keptBytes = 0;  ///< of frames that are kept from tracking for rendering
    bool batch = true;          ///< nobody sits in front of it
  };

  CShotSession(std::unique_ptr<IClipReader> reader, const SSettings& settings);
  ~CShotSession() override;

  /// The tool that is told what happens. It must be shut down before the session ends.
  void setTool(CToolObject* tool);
  /// Null: nobody looks. Not owned.
  void setDisplay(IShotDisplay* display) { display_ = display; }
  /// The operator goes on with another clip: the tool is told before and after, its points go, the
  /// marks are unset. REQUIRES: no pass runs (see isBusy).
  void changeClip(std::unique_ptr<IClipReader> reader);
  /// The tool was shown for this clip.
  void noteShown() { shown_ = true; }
  bool isTracking() const { return trackingRun_ != nullptr; }
  /// A pass runs or pauses: tracking, smoothing, preview or render.
  bool isBusy() const;
  /// A pass has paused: the shot can be looked at, not changed.
  bool isPaused() const;
  /// What the tool draws over the displayed frame.
  SOverlay overlay();

  /// Where render passes write; not owned; null: nowhere, and renders are refused.
  void setWriter(IClipWriter* writer);
  IClipReader& reader() { return *shot_->reader; }
  CFrameStore& store() { return shot_->store; }
  const SClipInfo& info() const { return shot_->reader->info(); }
  CTrackingPointsEditor* editor() const { return editor_; }

  /// Sets both marks and tells the tool. [in, out)
  void setMarks(int in, int out);
  /// Where points may lie and are followed: `region`, inclusive, in place of the one that the tool
  /// processes, which is its matting box where it uses one and else the active picture.
  void setTrackingRegion(const SRect& region) { trackingRegion_ = region; }
  /// What a tracking pass that began now would track with. REQUIRES: the tool is active.
  STrackSettings trackSettings() const;

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
  const std::string& frameFailure() const { return shot_->setups.failure(); }
  /// Ends every pass and destroys the tool's processors. A plug-in is unloaded, and a writer
  /// destroyed, only after this.
  void endPasses();
  /// Waits for the frames of the last pass to be written; how many were.
  int finishWriting() { return shot_->setups.finishWriting(); }

  // CNavSystemInterface
  int getMarkIn() override { return markIn_; }
  int getMarkOut() override { return markOut_; }
  void setMarkIn(int frame) override;
  void setMarkOut(int frame) override;
  void goToFrame(int frame) override;
  int getDisplayedFrame() override { return displayedFrame_; }
  bool isClipAvailable() override { return true; }
  const IClip* getClip() override { return shot_->clip.get(); }
  const CImageFormat* getClipImageFormat() override { return &info().format; }
  bool copyDisplayedFrame(std::uint16_t* samples) override;
  void prepareDisplayedPixels(int) override {}
  bool readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) override;
  std::string getFolderText() override;
  int MakeSimpleToolSetup(const std::string& toolName, int kind,
                          const CToolIOConfig& config) override;
  int SetActiveToolSetup(int handle) override { return shot_->setups.activate(handle); }
  int getActiveToolSetup() override { return shot_->setups.active(); }
  int getToolSetupStatus(int handle) override { return shot_->setups.status(handle); }
  void destroyToolSetup(int handle) override { shot_->setups.destroy(handle); }
  int SetToolFrameRange(const CToolFrameRange& range) override {
    return shot_->setups.setFrameRange(range);
  }
  int SetToolParameters(CToolParameters* parameters) override {
    return shot_->setups.setParameters(parameters);
  }
  void setRenderMode(int mode) override { shot_->setups.setRenderMode(mode); }
  void RunActiveToolSetup() override { shot_->setups.run(); }
  void pauseActiveToolSetup() override { shot_->setups.pause(); }
  void stopActiveToolSetup() override { shot_->setups.stop(); }
  void StartTrackingRun() override;
  void StopTrackingRun() override;
  bool isRenderPermitted() override;
  bool isBatchRun() override { return settings_.batch; }
  int getDisplayedFrameStatus() override { return 0; }
  int getParameterValue() override { return 0; }
  CToolFrameCache* getToolFrameCache() override { return &toolFrameCache_; }
  void frameOutputHook(CToolFrameBuffer* frame, int toolNumber, const std::string& name,
                       bool processingStarted) override;
  CBufferPool* getFrameAllocator(std::size_t bytesPerField, int count, int valueA,
                                 int valueB) override;
  void notifyToolIdle() override {}
  void prepareForToolCall() override {}
  void SetHelpPages(const std::string& operation, const std::string& hotKeys, int flag) override;
  void setDisplayMode(int) override {}
  void redrawDisplay(int flag) override;
  void setDrawingColor(int color) override { drawingColor_ = color; }
  void drawRectangle(int color, const SRect& rect) override;
  void drawTrackBox(double x, double y, int halfWidth, int halfHeight, int searchHalfWidth,
                    int searchHalfHeight, bool highlight) override;
  void drawArrow(double fromX, double fromY, double toX, double toY, int length,
                 int width) override;
  void showCursor(const SCursorImage* cursor) override;
  void setToolEditor(CTrackingPointsEditor* editor) override { editor_ = editor; }
  void setToolProgressMonitor(IToolProgressMonitor* monitor) override { monitor_ = monitor; }
  void setToolActive(bool) override {}
  bool canToolTakeDisplay() override { return true; }
  bool getDisplaySetting() override { return displaySetting_; }
  void setDisplaySetting(bool setting) override { displaySetting_ = setting; }
  bool isFirstShow() override { return settings_.batch || !shown_; }
  void toggleFix(bool flag) override;
  void capturePDL(bool allEvents) override;
  void focusControl(TControl* control) override { control->focus(); }
  TControl* getFocusedControl() override { return FocusedControl(); }
  void setToolControlPanel(const std::string& title, int number, TControl* panel,
                           int flag) override;
  void removeToolControlPanel(int number) override;

 private:
  /// What belongs to one clip.
  struct SShot {
    SShot(std::unique_ptr<IClipReader> clipReader, const SSettings& settings);

    std::unique_ptr<IClipReader> reader;
    std::unique_ptr<IClip> clip;
    std::string folderText;  ///< its folder part is where what is kept with the clip lies
    CFrameStore store;
    CToolSetups setups;
  };
  /// The samples that the pointer reads, kept while it moves over one frame.
  struct SDisplayedPixels {
    int frame = -1;
    std::vector<std::uint16_t> samples;
  };

  static constexpr int NO_FRAME = -1;

  void takeShot(std::unique_ptr<IClipReader> reader);
  void tellMarksChanged();
  void followPass();
  bool hasTrackingData() const;
  SRect processedRegion() const;
  bool areKnown(const CTrackingPoints& points) const;
  void failTracking(const std::string& why);
  void pumpTracking();
  void takeTrackingResults();
  void finishTracking();
  bool keepUsablePoints();
  void selectTypicalPoint();

  const SSettings settings_;
  std::mutex poolMutex_;
  std::map<std::size_t, std::unique_ptr<CBufferPool>> pools_;  // guarded by poolMutex_
  std::unique_ptr<SShot> shot_;
  CToolFrameCache toolFrameCache_;
  std::unique_ptr<CTrackingRun> trackingRun_;
  CToolObject* tool_ = nullptr;
  IClipWriter* writer_ = nullptr;
  IShotDisplay* display_ = nullptr;
  bool shown_ = false;
  CTrackingPointsEditor* editor_ = nullptr;
  IToolProgressMonitor* monitor_ = nullptr;
  int markIn_ = -1;
  int markOut_ = -1;
  int displayedFrame_ = 0;
  SDisplayedPixels displayedPixels_;
  SOverlay overlay_;
  int drawingColor_ = 0;
  std::atomic<int> resultFrame_{NO_FRAME};  ///< that came out of the pass since the last pump
  bool displaySetting_ = true;
  bool tellingMarks_ = false;
  std::optional<SRect> trackingRegion_;
  CHRTimer trackingTimer_;
  STrackingOutcome tracking_;
  CTrackingArray knownPaths_;
};
