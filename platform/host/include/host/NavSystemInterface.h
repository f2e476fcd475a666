#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/Clip.h"
#include "host/ToolRecords.h"
#include "support/CursorImage.h"
#include "support/ImageFormat.h"
#include "support/Memory.h"
#include "support/Rect.h"

class CToolFrameBuffer;
class CToolFrameCache;
class CTrackingPointsEditor;
class IToolProgressMonitor;
class TControl;

/// Everything a tool asks of its host. Handed to the tool at `toolInitialize`; the host outlives
/// the tool. Frame numbers are absolute clip frames; every end is one past the last. THREAD: the
/// user-interface thread, except `frameOutputHook`, `getFrameAllocator`, `getToolFrameCache` and
/// `getClipImageFormat`, which a processor's thread calls too.
class CNavSystemInterface {
 public:
  enum ESetupKind { SETUP_RENDER_FRAME = 1, SETUP_RANGE = 2, SETUP_FRAME_3 = 3, SETUP_FRAME_4 = 4 };
  static constexpr int SETUP_STATUS_RUNNING = 3;

  virtual ~CNavSystemInterface() = default;

  /// Marks: negative = unset; OUT is exclusive.
  virtual int getMarkIn() = 0;
  virtual int getMarkOut() = 0;
  virtual void setMarkIn(int frame) = 0;
  virtual void setMarkOut(int frame) = 0;
  /// Shows a frame; the host may end on another one (see getDisplayedFrame).
  virtual void goToFrame(int frame) = 0;
  virtual int getDisplayedFrame() = 0;

  virtual bool isClipAvailable() = 0;
  /// Null without a clip. The objects stay valid until the clip changes.
  virtual const IClip* getClip() = 0;
  virtual const CImageFormat* getClipImageFormat() = 0;
  /// Copies the displayed frame's 16-bit samples (getBytesPerField bytes). False without a frame.
  virtual bool copyDisplayedFrame(std::uint16_t* samples) = 0;
  /// Makes the displayed frame's pixels readable. `displayed` 1: as they are shown.
  virtual void prepareDisplayedPixels(int displayed) = 0;
  /// The pixel at (x, y) of the frame: the largest component value, and three components as
  /// fractions of it. False without such a pixel.
  virtual bool readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) = 0;
  /// A text whose folder part belongs to the current clip.
  virtual std::string getFolderText() = 0;

  /// Tool setups. A handle is 0 or more; a negative one is a failure.
  virtual int MakeSimpleToolSetup(const std::string& toolName, int kind,
                                  const CToolIOConfig& config) = 0;
  /// -1 deactivates. 0 or an error code.
  virtual int SetActiveToolSetup(int handle) = 0;
  virtual int getActiveToolSetup() = 0;
  virtual int getToolSetupStatus(int handle) = 0;
  virtual void destroyToolSetup(int handle) = 0;
  /// These four concern the active setup; 0 or an error code. The parameters become the host's.
  virtual int SetToolFrameRange(const CToolFrameRange& range) = 0;
  virtual int SetToolParameters(CToolParameters* parameters) = 0;
  /// 1: the results of the next run are written.
  virtual void setRenderMode(int mode) = 0;
  /// Statuses come back through the tool's `onToolProcessingStatus`.
  virtual void RunActiveToolSetup() = 0;
  virtual void pauseActiveToolSetup() = 0;
  virtual void stopActiveToolSetup() = 0;

  /// The host's tracking pass over the marked range.
  virtual void StartTrackingRun() = 0;
  virtual void StopTrackingRun() = 0;

  /// False refuses a render.
  virtual bool isRenderPermitted() = 0;
  /// True: nobody sits in front of it; renders wait for the tracking they need.
  virtual bool isBatchRun() = 0;
  /// 2 refuses a one-frame pass.
  virtual int getDisplayedFrameStatus() = 0;
  virtual int getParameterValue() = 0;

  virtual CToolFrameCache* getToolFrameCache() = 0;
  /// Called before each frame is sent on. Who only looks asks a const frame for its samples: the
  /// processor may hold them still, and whoever writes to them gets a copy.
  virtual void frameOutputHook(CToolFrameBuffer* frame, int toolNumber, const std::string& name,
                               bool processingStarted) = 0;
  /// A pool of buffers for `count` frames of `bytesPerField` and for one more, since a processor
  /// may look back at the one that it sent last; null when there is none. The host's.
  virtual CBufferPool* getFrameAllocator(std::size_t bytesPerField, int count, int valueA,
                                         int valueB) = 0;

  virtual void notifyToolIdle() = 0;
  virtual void prepareForToolCall() = 0;
  virtual void SetHelpPages(const std::string& operation, const std::string& hotKeys, int flag) = 0;
  /// 0 while a tool changes under the display, 1 when the display may show again.
  virtual void setDisplayMode(int mode) = 0;
  virtual void redrawDisplay(int flag) = 0;

  /// Drawing over the displayed frame, in frame pixels. Colour codes: 0 untracked, 2 tracked,
  /// 4 rendered and matting box, 8 anchor arrows.
  virtual void setDrawingColor(int color) = 0;
  virtual void drawRectangle(int color, const SRect& rect) = 0;
  virtual void drawTrackBox(double x, double y, int halfWidth, int halfHeight, int searchHalfWidth,
                            int searchHalfHeight, bool highlight) = 0;
  virtual void drawArrow(double fromX, double fromY, double toX, double toY, int length,
                         int width) = 0;

  /// The pointer over the display; null restores the normal one. The picture stays the caller's.
  virtual void showCursor(const SCursorImage* cursor) = 0;

  /// Kept until replaced; null takes it back.
  virtual void setToolEditor(CTrackingPointsEditor* editor) = 0;
  virtual void setToolProgressMonitor(IToolProgressMonitor* monitor) = 0;
  virtual void setToolActive(bool active) = 0;
  /// False: the display is taken.
  virtual bool canToolTakeDisplay() = 0;
  /// A display setting that the tool saves while it is active and gives back.
  virtual bool getDisplaySetting() = 0;
  virtual void setDisplaySetting(bool setting) = 0;

  /// True while the tool has not been shown for the current clip.
  virtual bool isFirstShow() = 0;

  virtual void toggleFix(bool flag) = 0;
  virtual void capturePDL(bool allEvents) = 0;
  virtual void focusControl(TControl* control) = 0;
  virtual TControl* getFocusedControl() = 0;
  virtual void setToolControlPanel(const std::string& title, int number, TControl* panel,
                                   int flag) = 0;
  virtual void removeToolControlPanel(int number) = 0;
};
