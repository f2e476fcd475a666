#include <algorithm>
#include <initializer_list>
#include <vector>

#include "ui/StabilizationControls.h"

// The panel's one grid: groups in full, half or third columns, rows of lines inside a group.

namespace {

constexpr int WIDTH = 512;
constexpr int HEIGHT = 720;
constexpr int MARGIN = 8;
constexpr int GAP = 6;
constexpr int INNER = WIDTH - 2 * MARGIN;
constexpr int PAD = 8;       // inside a group
constexpr int CAPTION = 16;  // of a group
constexpr int LINE = 20;     // a check mark or radio button and its text
constexpr int BUTTON = 22;
constexpr int CHOICES = 184;  // a column with the longest choice
constexpr int SLIDER = 36;    // a slider and the labels below it

constexpr int groupHeight(int content) {
  return CAPTION + content + 4;
}

/// A group and the width of its column; 0: an equal share of what the others leave.
struct SColumn {
  TControl* group;
  int width = 0;
};

/// Lays groups side by side, of equal height, and moves on below them. All rows end at one edge.
class CRows {
 public:
  void place(std::initializer_list<SColumn> columns, int height) {
    int left = MARGIN;
    int rest = INNER - (static_cast<int>(columns.size()) - 1) * GAP;
    int shares = 0;
    for (const SColumn& column : columns) {
      rest -= column.width;
      shares += column.width == 0 ? 1 : 0;
    }
    for (const SColumn& column : columns) {
      const int width = column.width != 0 ? column.width : rest / shares;
      if (column.width == 0) rest -= rest / shares--;
      column.group->setBounds({left, top_, width, height});
      left += width + GAP;
    }
    top_ += height + GAP;
  }
  int top() const { return top_; }

 private:
  int top_ = MARGIN;
};

template <typename T>
void stack(std::initializer_list<T*> controls, const TControl& group) {
  int top = CAPTION;
  for (T* control : controls) {
    control->setBounds({PAD, top, group.bounds().width - 2 * PAD, LINE});
    top += LINE;
  }
}

template <typename T>
void spread(std::initializer_list<T*> controls, int left, int top, int width, int height) {
  const int count = static_cast<int>(controls.size());
  const int each = (width - (count - 1) * GAP) / count;
  for (T* control : controls) {
    control->setBounds({left, top, each, height});
    left += each + GAP;
  }
}

void layOutSlider(TTrackEditFrame& frame, const TControl& group) {
  frame.setBounds({PAD, CAPTION, group.bounds().width - 2 * PAD, SLIDER});
}

}  // namespace

void TStabilizationControls::layOut() {
  StabilizationControlPanel.setBounds({0, 0, WIDTH, HEIGHT});
  CRows rows;
  rows.place({{&TrackingPointsGroupBox}}, groupHeight(BUTTON + 2 + LINE));
  layOutPoints();
  rows.place({{&TrackingBoxSizeGroupBox}, {&MotionSearchGroupBox}}, groupHeight(SLIDER));
  layOutSlider(TrackingBoxSizeTrackEdit, TrackingBoxSizeGroupBox);
  layOutSlider(MotionTrackEdit, MotionSearchGroupBox);
  rows.place({{&StabilizeGroupBox, CHOICES}, {&MotionGroupBox}, {&AnchorGroupBox, 128}},
             groupHeight(4 * LINE + 4));
  layOutChoices();
  rows.place({{&SmoothingGroupBox}, {&JitterGroupBox}}, groupHeight(SLIDER));
  layOutSlider(SmoothTrackEdit, SmoothingGroupBox);
  layOutSlider(JitterTrackEdit, JitterGroupBox);
  rows.place({{&MissingDataGroupBox, CHOICES}, {&MattingGroupBox}}, groupHeight(4 * LINE));
  layOutFillAndMatting();

  constexpr int TOOLBAR = 46;
  constexpr int PROGRESS = 40;
  constexpr int FOOT = LINE + GAP + TOOLBAR + GAP + PROGRESS + GAP + LINE;
  constexpr int POINTS = 36;  // "points", so that it ends at the panel's edge
  rows.place({{&MotionGraphs}}, HEIGHT - MARGIN - FOOT - GAP - rows.top());
  rows.place({{&StatusMessageLabel}, {&PointCountLabel, 40}, {&PointsLabel, POINTS}}, LINE);
  rows.place({{&ExecButtonsToolbar}}, TOOLBAR);
  rows.place({{&ExecStatusBar}}, PROGRESS);
  rows.place({{&StatusBar}}, LINE);
}

void TStabilizationControls::layOutPoints() {
  const int width = TrackingPointsGroupBox.bounds().width - 2 * PAD;
  spread<TControl>({&TrackButton, &ClearAllButton, &LoadPointsButton, &SavePointsButton,
                    &PrevPointButton, &NextPointButton},
                   PAD, CAPTION, width, BUTTON);
  spread<TControl>({&ShowPointCBox, &ClearOnShotChangeCBox}, PAD, CAPTION + BUTTON + 2, width,
                   LINE);
}

void TStabilizationControls::layOutChoices() {
  stack({&HorizMotionRadioButton, &VertMotionRadioButton, &HorizAndVertRadioButton,
         &HorizVertRotRadioButton},
        StabilizeGroupBox);
  stack({&SmoothMotionRadioButton, &NoMotionRadioButton, &MatchRefRadioButton}, MotionGroupBox);
  stack({&AnchorFirstRadioButton, &AnchorLastRadioButton, &AnchorBothRadioButton,
         &AnchorNoneRadioButton},
        AnchorGroupBox);
  const int top = CAPTION + 3 * LINE;
  const int right = MotionGroupBox.bounds().width - PAD;
  const int left = PAD + 16;
  RefFrameTimeCodeEdit.setBounds({left, top, right - left - 2 * (BUTTON + 2), BUTTON});
  GoToRefframeButton.setBounds({right - 2 * BUTTON - 2, top, BUTTON, BUTTON});
  ResetRefFrameButton.setBounds({right - BUTTON, top, BUTTON, BUTTON});
}

// The arrows stand at the edges that they move, around a picture of the box.
void TStabilizationControls::layOutFillAndMatting() {
  stack({&MissingDataBlackRadioButton, &MissingDataWhiteRadioButton,
         &MissingDataPrevFrameRadioButton, &MissingDataZoomRadioButton},
        MissingDataGroupBox);

  constexpr int ARROW = 20;
  const int middle = PAD + 2 * ARROW + 4;
  const int row = CAPTION + 30;
  TopUpButton.setBounds({middle, CAPTION, ARROW, ARROW});
  TopDownButton.setBounds({middle + ARROW, CAPTION, ARROW, ARROW});
  BottomUpButton.setBounds({middle, CAPTION + 60, ARROW, ARROW});
  BottomDownButton.setBounds({middle + ARROW, CAPTION + 60, ARROW, ARROW});
  LeftLeftButton.setBounds({PAD, row, ARROW, ARROW});
  LeftRightButton.setBounds({PAD + ARROW, row, ARROW, ARROW});
  RightLeftButton.setBounds({middle + 2 * ARROW + 4, row, ARROW, ARROW});
  RightRightButton.setBounds({middle + 3 * ARROW + 4, row, ARROW, ARROW});
  MattingBoxPicture.setBounds({middle, CAPTION + ARROW + 4, 2 * ARROW, 2 * ARROW - 8});
  MattingBoxPicture.setColor(EColor::cream);

  const int left = middle + 4 * ARROW + 4 + 8;
  const int width = MattingGroupBox.bounds().width - PAD - left;
  spread<TControl>({&SetMatButton, &AllMatButton}, left, CAPTION, width - BUTTON - GAP, BUTTON);
  ColorPickButton.setBounds({left + width - BUTTON, CAPTION, BUTTON, BUTTON});
  ShowMattingBoxCBox.setBounds({left, CAPTION + 2 * LINE, width, LINE});
  UseMattingCBox.setBounds({left, CAPTION + 3 * LINE, width, LINE});
}
