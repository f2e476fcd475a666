#include "TransportBar.h"

#include <QHBoxLayout>
#include <QLabel>

CTransportBar::CTransportBar(QWidget* parent) : QWidget(parent) {
  setObjectName("TransportBar");
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(6, 2, 6, 2);
  row->setSpacing(4);
  addButton(EGlyph::first, "First", "Mark IN (Home)", [this] { onFirst(); });
  addButton(EGlyph::back, "Back", "One frame back (Left)", [this] { onStep(-1); });
  play_ = addButton(EGlyph::play, "Play", "Play (L, Space); J: backwards; K: stop",
                    [this] { onPlay(); });
  addButton(EGlyph::forward, "Forward", "One frame on (Right)", [this] { onStep(1); });
  addButton(EGlyph::last, "Last", "Last frame before mark OUT (End)", [this] { onLast(); });
  const auto addEdit = [&](const char* name, const char* hint, const char* widest) {
    auto* const edit = new QLineEdit(this);
    edit->setObjectName(name);
    edit->setToolTip(hint);
    edit->setAlignment(Qt::AlignCenter);
    edit->setFocusPolicy(Qt::ClickFocus);
    edit->setFixedWidth(fontMetrics().horizontalAdvance(widest) + 20);
    QObject::connect(edit, &QLineEdit::returnPressed, this, [this, edit] {
      if (onTyped) onTyped(edit->text());
      edit->clearFocus();
    });
    QObject::connect(edit, &QLineEdit::editingFinished, this, [this] { showFrame(); });
    row->addWidget(edit);
    return edit;
  };
  row->addSpacing(6);
  timecode_ =
      addEdit("Timecode", "The displayed frame's timecode; type one to go there", "00:00:00:00");
  frame_ = addEdit("Frame", "The displayed frame; type a number to go there", "00000000");
  marks_ = new QLabel(this);
  marks_->setObjectName("Marks");
  row->addSpacing(6);
  row->addWidget(marks_);
  row->addStretch(1);
  playing_ = new QLabel(this);
  playing_->setObjectName("Playing");
  row->addWidget(playing_);
}

CGlyphButton* CTransportBar::addButton(EGlyph glyph, const char* name, const char* hint,
                                       std::function<void()> act) {
  auto* const button = new CGlyphButton(glyph, this);
  button->setObjectName(name);
  button->setToolTip(hint);
  QObject::connect(button, &QToolButton::clicked, this, std::move(act));
  layout()->addWidget(button);
  return button;
}

void CTransportBar::setFrame(int frame, const QString& timecode) {
  frameText_ = QString::number(frame);
  timecodeText_ = timecode;
  showFrame();
}

void CTransportBar::showFrame() {
  if (!frame_->hasFocus()) frame_->setText(frameText_);
  if (!timecode_->hasFocus()) timecode_->setText(timecodeText_);
}

void CTransportBar::setMarks(const QString& text) {
  marks_->setText(text);
}

void CTransportBar::setPlaying(bool playing, const QString& text) {
  play_->setGlyph(playing ? EGlyph::pause : EGlyph::play);
  playing_->setText(text);
}
