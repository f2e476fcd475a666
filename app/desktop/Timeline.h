#pragma once

#include <QWidget>
#include <functional>
#include <vector>

/// Frames [first, end).
struct SSpan {
  int first = 0;
  int end = 0;
  friend bool operator==(const SSpan&, const SSpan&) = default;
};

/// What the timeline shows. Frames are absolute; marks below 0 are unset, OUT is one past the last.
struct STimelineContent {
  SSpan clip;
  int displayed = 0;
  int markIn = -1;
  int markOut = -1;
  std::vector<SSpan> tracked;
  std::vector<SSpan> results;
  std::vector<SSpan> cached;
  friend bool operator==(const STimelineContent&, const STimelineContent&) = default;
};

/// The shot from left to right: a ruler with frames and timecode, the marks, which are dragged, the
/// displayed frame, which follows the pointer, and three lanes: tracked, result, cached. The wheel
/// zooms at the pointer, with Shift it scrolls. THREAD: the user-interface thread.
class CTimeline : public QWidget {
 public:
  explicit CTimeline(QWidget* parent = nullptr);

  void setContent(const STimelineContent& content);
  /// The text of a frame's ruler mark, besides its number; empty: none.
  std::function<QString(int frame)> timecodeOf;

  std::function<void(int frame)> onScrub;
  /// Once, when the drag ends. Marks stay inside the clip and apart.
  std::function<void(int frame)> onMarkIn;
  std::function<void(int frame)> onMarkOut;

  /// Where a frame begins, in widget units.
  double xOf(double frame) const;
  QSize sizeHint() const override { return {640, 84}; }
  QSize minimumSizeHint() const override { return {320, 84}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  bool event(QEvent* event) override;

 private:
  enum class EDrag { none, scrub, markIn, markOut };

  double frameAt(double x) const;
  int wholeFrameAt(double x) const;
  EDrag handleAt(const QPointF& at) const;
  void dragTo(const QPointF& at);
  void setRange(double first, double end);
  void followDisplayed();
  void paintRuler(QPainter& painter) const;
  void paintLanes(QPainter& painter) const;
  void paintMarks(QPainter& painter) const;
  void paintPlayhead(QPainter& painter) const;
  int rulerStep() const;
  QString hintAt(const QPointF& at) const;

  STimelineContent content_;
  double rangeFirst_ = 0.0;  ///< what is seen of the clip
  double rangeEnd_ = 1.0;
  EDrag drag_ = EDrag::none;
  int draggedIn_ = -1;
  int draggedOut_ = -1;
};
