#pragma once

#include <array>
#include <string>

#include "toolkit/Controls.h"

class CStabilizerTool;

/// Three charts of the selected point's motion over the marked frames, as it was measured and as it
/// is meant to be: horizontal, vertical, rotation. Where there is nothing sensible to plot a notice
/// covers them and says why. THREAD: the user-interface thread.
class TMotionGraphs : public TControl {
 public:
  explicit TMotionGraphs(std::string name, TControl* parent = nullptr);

  TLineChart HTrackGraph;
  TLineChart VTrackGraph;
  TLineChart RTrackGraph;
  TPanel TrackWarnPanel;
  TLabel TrackWarnDataLabel;
  TLabel TrackWarnReasonLabel;

  /// Draws what the tool has now. While a smoothing run is making the intended motion, only the
  /// measured one.
  void update(CStabilizerTool& tool);

 private:
  struct SPaths;

  void hideGraphs(const char* reason);
  void draw(CStabilizerTool& tool, int point);
  void drawMovement(const SPaths& paths);
  void drawRotation(const SPaths& paths);
  void layOut();
  std::array<TLineChart*, 3> charts() { return {&HTrackGraph, &VTrackGraph, &RTrackGraph}; }
};
