#pragma once

#include <QLineEdit>
#include <QWidget>
#include <functional>

#include "GlyphButton.h"

class QLabel;

/// The row below the timeline: steps, play, the displayed frame as number and timecode (either can
/// be typed), marks, and what playback does. THREAD: the user-interface thread.
class CTransportBar : public QWidget {
 public:
  explicit CTransportBar(QWidget* parent = nullptr);

  /// Fields that are being typed into are left alone; what is typed and not taken goes with the
  /// focus.
  void setFrame(int frame, const QString& timecode);
  void setMarks(const QString& text);
  void setPlaying(bool playing, const QString& text);

  std::function<void()> onFirst;
  std::function<void(int frames)> onStep;
  std::function<void()> onLast;
  std::function<void()> onPlay;
  /// A frame number or a timecode, as typed.
  std::function<void(const QString& text)> onTyped;

 private:
  void showFrame();
  CGlyphButton* addButton(EGlyph glyph, const char* name, const char* hint,
                          std::function<void()> act);

  CGlyphButton* play_ = nullptr;
  QLineEdit* frame_ = nullptr;
  QLineEdit* timecode_ = nullptr;
  QString frameText_;  ///< what the fields read while nobody types
  QString timecodeText_;
  QLabel* marks_ = nullptr;
  QLabel* playing_ = nullptr;
};
