#pragma once

#include <QSlider>
#include <QToolButton>
#include <QWidget>
#include <functional>
#include <vector>

#include "Viewer.h"

class QLabel;

/// The row below the picture: before and after, exposure and gamma of what is seen, zoom.
/// THREAD: the user-interface thread.
class CViewBar : public QWidget {
 public:
  explicit CViewBar(QWidget* parent = nullptr);

  void setCompare(ECompare compare);
  void setZoom(double zoom, bool fitted);
  std::function<void(ECompare)> onCompare;
  std::function<void(const SViewGrade&)> onGrade;
  std::function<void()> onFit;
  std::function<void()> onWholeSize;

 private:
  void tellGrade();
  QSlider* addSlider(const char* name, const char* label, int low, int high, const char* hint);

  std::vector<QToolButton*> compareButtons_;
  QSlider* exposure_ = nullptr;  ///< tenths of a stop
  QSlider* gamma_ = nullptr;     ///< tenths of an octave, so that the middle is 1
  QLabel* values_ = nullptr;
  QToolButton* zoom_ = nullptr;
  bool fitted_ = false;
};
