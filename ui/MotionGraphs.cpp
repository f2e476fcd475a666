#include "ui/MotionGraphs.h"

#include <utility>

TMotionGraphs::TMotionGraphs(std::string name, TControl* parent)
    : TControl(std::move(name), parent),
      HTrackGraph("HTrackGraph", this),
      VTrackGraph("VTrackGraph", this),
      RTrackGraph("RTrackGraph", this),
      TrackWarnPanel("TrackWarnPanel", this),
      TrackWarnDataLabel("TrackWarnDataLabel", &TrackWarnPanel),
      TrackWarnReasonLabel("TrackWarnReasonLabel", &TrackWarnPanel) {}

void TMotionGraphs::update(CStabilizerTool&) {}
