#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>

#include "PictureScaler.h"
#include "ViewTransform.h"
#include "session/Overlay.h"

/// A frame's 16-bit samples, shared with whoever decoded them.
using SharedSamples = std::shared_ptr<const std::uint16_t>;

enum class ECompare { before, after, split, sideBySide };

/// A mouse act over the picture that the viewer does not use itself. The position is in picture
/// pixels between centres: 0, 0 is the centre of the upper left pixel.
struct SPointerAct {
  enum class EKind { press, move, release };
  EKind kind = EKind::move;
  double x = 0.0;
  double y = 0.0;
  Qt::MouseButton button = Qt::NoButton;
  Qt::KeyboardModifiers modifiers;
  double pixelScale = 1.0;  ///< viewer units of one picture pixel
  bool onResult = false;    ///< what is seen there is the result, whose picture has moved
};

/// Shows a frame before and after the work, with the tool's overlay. The wheel zooms at the
/// pointer, the middle button drags the picture, the wipe's line is dragged; all other acts of the
/// mouse are passed on. Never reads a file. THREAD: the user-interface thread.
class CViewer : public QWidget {
 public:
  explicit CViewer(QWidget* parent = nullptr);

  void setClip(const SClipInfo& info);
  /// Null samples: not there (yet); what was shown before stays until they come. Nothing stays
  /// where `notice` says why nothing will come.
  void setFrames(SharedSamples before, SharedSamples after, const QString& notice);
  void setOverlay(const SOverlay& overlay);
  void setCompare(ECompare compare);
  ECompare compare() const { return compare_; }
  void setGrade(const SViewGrade& grade);
  const SViewGrade& grade() const { return scaler_.grade(); }

  double zoom() const { return view_.zoom(); }
  void zoomTo(double zoom);
  void zoomBy(double factor);
  void fit();
  bool isFitted() const { return view_.isFitted(); }
  const CViewTransform& transform() const { return view_; }

  /// A lens beside the pointer.
  void setMagnifier(bool on);
  bool hasMagnifier() const { return magnifier_; }
  /// The pointer over the picture; null: a cross.
  void setPointer(const QCursor* pointer);

  std::function<void(const SPointerAct&)> onPointer;
  std::function<void()> onZoom;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  enum class EDrag { none, pan, wipe, pass };
  /// A frame as it was last scaled, kept while nothing that it depends on changes.
  struct SScaled {
    SharedSamples samples;
    QRectF source;
    QSize size;
    SViewGrade grade;
    QImage image;
  };

  QSizeF paneSize() const;
  double wipeX() const { return wipe_ * width(); }
  bool isOnWipe(const QPointF& at) const;
  /// Where the pointer would be in the first pane.
  QPointF inFirstPane(QPointF at) const;
  bool isOnResult(const QPointF& at) const;
  void passOn(SPointerAct::EKind kind, const QPointF& at, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers);
  void updateView();
  void paintFrame(QPainter& painter, SScaled& scaled, const SharedSamples& samples);
  void paintPane(QPainter& painter, double left, SScaled& scaled, const SharedSamples& samples,
                 const char* label);
  void paintLabel(QPainter& painter, double left, const char* label);
  void paintCompared(QPainter& painter);
  void paintSplit(QPainter& painter);
  void paintMagnifier(QPainter& painter);
  void paintNotice(QPainter& painter);

  CPictureScaler scaler_;
  CPictureScaler lens_;
  CViewTransform view_;
  SharedSamples before_;
  SharedSamples after_;
  QString notice_;
  SOverlay overlay_;
  ECompare compare_ = ECompare::before;
  SScaled scaledBefore_;
  SScaled scaledAfter_;
  double wipe_ = 0.5;
  bool magnifier_ = false;
  EDrag drag_ = EDrag::none;
  Qt::MouseButton dragButton_ = Qt::NoButton;  ///< that ends it
  QPointF last_;
  bool inside_ = false;
  double wheel_ = 0.0;  ///< what is left of an incomplete step
};
