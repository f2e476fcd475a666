#include <utility>

#include "ToolObj/ToolFrameBuffer.h"
#include "session/ShotSession.h"

// What the session passes between the tool and whoever shows it.

namespace {

/// The selected point is drawn with what only a picked one has. Nothing of it stays in the data.
class CPickedWhileDrawn {
 public:
  CPickedWhileDrawn(const CTrackingPointsEditor& editor, int frame) {
    CTrackingArray* const array = editor.trackingArray();
    if (!array || !array->HasFrame(frame)) return;
    CTrackingPoints& points = array->PointsAt(frame);
    if (points.IsValidPoint(editor.selectedPoint)) point_ = &points.Point(editor.selectedPoint);
    if (point_) was_ = std::exchange(point_->highlight, true);
  }
  ~CPickedWhileDrawn() {
    if (point_) point_->highlight = was_;
  }
  CPickedWhileDrawn(const CPickedWhileDrawn&) = delete;
  CPickedWhileDrawn& operator=(const CPickedWhileDrawn&) = delete;

 private:
  CTrackPoint* point_ = nullptr;
  bool was_ = false;
};

}  // namespace

SOverlay CShotSession::overlay() {
  overlay_ = {};
  if (tool_) tool_->drawOverlay();
  if (editor_) {
    const CPickedWhileDrawn picked(*editor_, displayedFrame_);
    editor_->drawTrackingPoints();
  }
  return overlay_;
}

void CShotSession::drawRectangle(int color, const SRect& rect) {
  overlay_.rectangles.push_back({color, rect});
}

void CShotSession::drawTrackBox(double x, double y, int halfWidth, int halfHeight,
                                int searchHalfWidth, int searchHalfHeight, bool highlight) {
  overlay_.trackBoxes.push_back(
      {drawingColor_, x, y, halfWidth, halfHeight, searchHalfWidth, searchHalfHeight, highlight});
}

void CShotSession::drawArrow(double fromX, double fromY, double toX, double toY, int length,
                             int width) {
  overlay_.arrows.push_back({drawingColor_, fromX, fromY, toX, toY, length, width});
}

void CShotSession::redrawDisplay(int) {
  if (display_) display_->onOverlay();
}

bool CShotSession::isRenderPermitted() {
  return display_ ? display_->prepareRender() : writer_ != nullptr;
}

void CShotSession::frameOutputHook(CToolFrameBuffer* frame, int, const std::string&, bool) {
  const std::uint16_t* const samples = std::as_const(*frame).samples();
  if (!display_ || samples == nullptr) return;
  display_->showResult(frame->frameIndex(), samples);
  resultFrame_ = frame->frameIndex();
}

void CShotSession::SetHelpPages(const std::string& operation, const std::string& hotKeys, int) {
  if (display_) display_->setHelpPages(operation, hotKeys);
}

void CShotSession::showCursor(const SCursorImage* cursor) {
  if (display_) display_->showPointer(cursor);
}

void CShotSession::toggleFix(bool) {
  if (display_) display_->toggleResult();
}

void CShotSession::capturePDL(bool allEvents) {
  if (display_) display_->captureToList(allEvents);
}

void CShotSession::setToolControlPanel(const std::string& title, int, TControl* panel, int) {
  if (display_ && panel) display_->showControlPanel(title, *panel);
}

void CShotSession::removeToolControlPanel(int) {
  if (display_) display_->removeControlPanel();
}
