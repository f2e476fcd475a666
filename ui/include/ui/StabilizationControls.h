#pragma once

#include "toolkit/Controls.h"
#include "ui/ExecButtonsFrame.h"
#include "ui/ExecStatusBarFrame.h"
#include "ui/MotionGraphs.h"
#include "ui/TrackEditFrame.h"

/// Every control of the stabiliser's panel, made, named, captioned and laid out; what they do is
/// the window's. The groups stand in the order in which an operator works.
///
/// `StabilizationControlPanel` is 512 by 720 pixels and stands in no form: it is handed to the
/// host, which shows it. THREAD: the user-interface thread.
class TStabilizationControls {
 public:
  TStabilizationControls();

  TPanel StabilizationControlPanel;

  TGroupBox TrackingPointsGroupBox;
  TButton TrackButton;
  TButton ClearAllButton;
  TButton LoadPointsButton;
  TButton SavePointsButton;
  TButton PrevPointButton;
  TButton NextPointButton;
  TCheckBox ShowPointCBox;
  TCheckBox ClearOnShotChangeCBox;
  TCheckBox ShowRenderPointCBox;  ///< hidden, as the next two
  TCheckBox AutoLoadCBox;
  TCheckBox AutoSaveCBox;

  TGroupBox TrackingBoxSizeGroupBox;
  TTrackEditFrame TrackingBoxSizeTrackEdit;
  TGroupBox MotionSearchGroupBox;
  TTrackEditFrame MotionTrackEdit;

  TGroupBox StabilizeGroupBox;
  TRadioButton HorizMotionRadioButton;
  TRadioButton VertMotionRadioButton;
  TRadioButton HorizAndVertRadioButton;
  TRadioButton HorizVertRotRadioButton;

  TGroupBox MotionGroupBox;
  TRadioButton SmoothMotionRadioButton;
  TRadioButton NoMotionRadioButton;
  TRadioButton MatchRefRadioButton;
  VTimeCodeEdit RefFrameTimeCodeEdit;
  TToolButton GoToRefframeButton;
  TToolButton ResetRefFrameButton;

  TGroupBox AnchorGroupBox;
  TRadioButton AnchorFirstRadioButton;
  TRadioButton AnchorLastRadioButton;
  TRadioButton AnchorBothRadioButton;
  TRadioButton AnchorNoneRadioButton;

  TGroupBox SmoothingGroupBox;
  TTrackEditFrame SmoothTrackEdit;
  TGroupBox JitterGroupBox;
  TTrackEditFrame JitterTrackEdit;

  TGroupBox MissingDataGroupBox;
  TRadioButton MissingDataBlackRadioButton;
  TRadioButton MissingDataWhiteRadioButton;
  TRadioButton MissingDataPrevFrameRadioButton;
  TRadioButton MissingDataZoomRadioButton;

  TGroupBox MattingGroupBox;
  TPanel MattingBoxPicture;  ///< the box, small, between the arrows that move its edges
  TToolButton TopUpButton;
  TToolButton TopDownButton;
  TToolButton BottomUpButton;
  TToolButton BottomDownButton;
  TToolButton LeftLeftButton;
  TToolButton LeftRightButton;
  TToolButton RightLeftButton;
  TToolButton RightRightButton;
  TToolButton ColorPickButton;
  TButton SetMatButton;
  TButton AllMatButton;
  TCheckBox ShowMattingBoxCBox;
  TCheckBox UseMattingCBox;

  TMotionGraphs MotionGraphs;

  TExecButtonsFrame ExecButtonsToolbar;
  TLabel StatusMessageLabel;
  TLabel PointCountLabel;
  TLabel PointsLabel;
  TExecStatusBarFrame ExecStatusBar;
  TStatusBar StatusBar;

  /// Behind the panel, never shown: values that the visible controls stand for.
  TPanel HiddenPanel;
  TGroupBox AnchorFramesGroupBox;
  TCSpinEdit GoodInSpinEdit;
  TCSpinEdit GoodOutSpinEdit;
  TCheckBox AtMarkInCheckBox;
  TCheckBox AtMarkOutCheckBox;
  TCheckBox WarnMarkOutMoveCheckBox;
  TLabel WarpLabel;
  TComboBox UFunctionComboBox;

 private:
  // StabilizationControls.cpp
  void caption();
  void captionPoints();
  void captionChoices();
  void captionMatting();
  void captionHidden();
  // PanelLayout.cpp
  void layOut();
  void layOutPoints();
  void layOutChoices();
  void layOutFillAndMatting();
};
