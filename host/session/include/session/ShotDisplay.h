#pragma once

#include <cstdint>
#include <string>

struct SCursorImage;
class TControl;

/// Who shows a session to an operator. The session tells and asks; a batch run has none. Outlives
/// the session. THREAD: the user-interface thread, except `showResult`.
class IShotDisplay {
 public:
  virtual ~IShotDisplay() = default;

  virtual void onDisplayedFrame() = 0;
  virtual void onMarks() = 0;
  /// The overlay may have changed; see CShotSession::overlay.
  virtual void onOverlay() = 0;

  /// The displayed frame's samples, where they are at hand. False: the session decodes them.
  virtual bool copyShownFrame(int frame, std::uint16_t* samples) = 0;
  /// A frame came out of a running pass; the samples are valid during the call. THREAD: the
  /// processor's.
  virtual void showResult(int frame, const std::uint16_t* samples) = 0;

  /// A render is about to begin: gives the session its writer. False refuses the render.
  virtual bool prepareRender() = 0;
  /// The operator wants the tool's settings, of this shot or of all, in the process list.
  virtual void captureToList(bool allEvents) = 0;
  /// The operator's key for seeing the picture with and without the work.
  virtual void toggleResult() = 0;

  virtual void showControlPanel(const std::string& title, TControl& panel) = 0;
  virtual void removeControlPanel() = 0;
  virtual void setHelpPages(const std::string& operation, const std::string& hotKeys) = 0;
  /// The pointer over the picture; null: the usual one. The picture stays the caller's.
  virtual void showPointer(const SCursorImage* pointer) = 0;
};
