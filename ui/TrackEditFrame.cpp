#include "ui/TrackEditFrame.h"

TTrackEditFrame::TTrackEditFrame(std::string name, TControl* parent)
    : TControl(std::move(name), parent),
      TitleLabel("TitleLabel", this),
      MinLabel("MinLabel", this),
      MaxLabel("MaxLabel", this),
      TrackBar("TrackBar", this),
      TrackBarDisabledPanel("TrackBarDisabledPanel", this),
      TrackBarMinPositionTick("TrackBarMinPositionTick", this),
      TrackBarMaxPositionTick("TrackBarMaxPositionTick", this),
      EditAlignmentPanel("EditAlignmentPanel", this),
      Edit("Edit", &EditAlignmentPanel),
      EditDisabledPanel("EditDisabledPanel", this),
      EditDisabledLabel("EditDisabledLabel", &EditDisabledPanel),
      NotifyWidget("NotifyWidget", this),
      DeferredUpdateTimer(500) {}

void TTrackEditFrame::enable(bool) {}
void TTrackEditFrame::setRange(int, int) {}
void TTrackEditFrame::setValue(int) {}
