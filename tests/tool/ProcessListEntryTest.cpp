#include "ToolFixture.h"

namespace {

class ProcessListEntry : public ToolTest {};

CStabilizerParameters unusualParameters() {
  CStabilizerParameters p;
  p.TrackBoxExtentX = p.TrackBoxExtentY = 12;
  p.SearchBoxExtentLeft = p.SearchBoxExtentRight = 33;
  p.SearchBoxExtentUp = p.SearchBoxExtentDown = 34;
  p.GoodFramesOut = 0;
  p.RefFrameIndex = 104;
  p.Jitter = 3.0;
  p.Alpha2 = 0.025;
  p.HMode = p.VMode = p.RMode = STABMODE_Smoothed;
  p.UFunction = U_Fcn_Thin_Plate;
  p.MissingDataFill = MISSING_DATA_Zoom;
  p.UseMatting = false;
  return p;
}

TEST_F(ProcessListEntry, CarriesSettingsPointsAndBoxThroughText) {
  window->showParameters(unusualParameters());
  placePoints(3);
  tool.setMattingBox({4, 5, 60, 40});
  tool.livePoints().SetMattingBox({});
  CPDLEntry captured;
  ASSERT_EQ(tool.capturePDLEntry(captured), 0);
  EXPECT_EQ(captured.FirstElement().GetChild(0).GetName(), "StabilizerParameters");
  EXPECT_EQ(captured.FirstElement().GetChild(1).GetName(), "TrackingArray");

  window->showParameters(CStabilizerParameters());
  makeSmoothed();
  tool.editor().selectedPoint = 1;
  tool.setMattingBox({0, 0, 1, 1});
  const std::unique_ptr<CPDLEntry> entry = CPDLEntry::FromText(captured.ToText());
  ASSERT_TRUE(entry);
  ASSERT_EQ(tool.runPDLEntry(*entry), 0);

  EXPECT_EQ(window->gatherParameters(), unusualParameters());
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 3);
  EXPECT_EQ(tool.livePoints().FindPoints(IN).Entries().at(2).x, 50.0);
  EXPECT_EQ(tool.getMattingBox(), (SRect{4, 5, 60, 40}));
  EXPECT_EQ(tool.livePoints().MattingBox(), (SRect{4, 5, 60, 40}));
  EXPECT_EQ(tool.editor().selectedPoint, -1);
  EXPECT_EQ(tool.editor().trackingArray(), &tool.livePoints());
  EXPECT_FALSE(tool.isTracked());
  EXPECT_TRUE(tool.evaluateRetracking());
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(12, 12, 33, 33, 34, 34));
}

TEST_F(ProcessListEntry, SettingsWithoutPointsLeaveThePoints) {
  makeSmoothed();
  CPDLEntry entry;
  unusualParameters().WritePDLEntry(entry.FirstElement());
  entry.FirstElement().MakeNewChild("SomethingElse");
  EXPECT_EQ(tool.runPDLEntry(entry), 0);
  EXPECT_EQ(window->gatherParameters(), unusualParameters());
  EXPECT_TRUE(tool.isTracked());
  EXPECT_FALSE(tool.isSmoothed()) << "the path was made with other settings";
  EXPECT_TRUE(tool.evaluateRetracking());
}

TEST_F(ProcessListEntry, ABatchGoesFromEntryToRenderByItself) {
  placePoints();
  CPDLEntry entry;
  tool.capturePDLEntry(entry);
  tool.clearAllTrackingData();
  tool.editor().updateMarks();
  host.batchRun = true;
  host.onCall = [this](const std::string& call) {
    if (call != "StartTrackingRun") return;
    EXPECT_TRUE(tool.onTrackingStart());
    trackPoints();
    tool.onTrackingEnd(0);
  };
  tool.runPDLEntry(entry);
  EXPECT_EQ(tool.startProcessing(CToolObject::EVENT_RENDER_RANGE, false), 0);
  EXPECT_EQ(tool.runState(), RUN_TRACKING_REQUESTED);
  for (int beats = 0; beats < 10 && host.calls.count("RunActiveToolSetup") == 0; ++beats) {
    heartbeat();
  }
  EXPECT_EQ(host.calls.count("StartTrackingRun"), 1);
  EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 1);
  EXPECT_EQ(tool.runState(), RUN_RENDERING);
  EXPECT_TRUE(host.calls.contains("SetToolFrameRange 0 100 110"));
  EXPECT_EQ(host.renderMode, 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(ProcessListEntry, AnEntryDoesNotMixItsPointsWithThoseOfATrackingPass) {
  placePoints();
  CPDLEntry entry;
  ASSERT_EQ(tool.capturePDLEntry(entry), 0);
  placePoints(3);
  shot.setRunState(RUN_TRACKING);
  EXPECT_NE(tool.runPDLEntry(entry), 0);
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 3);
  EXPECT_EQ(errors.size(), 1u);
  shot.setRunState(RUN_IDLE);
  EXPECT_EQ(tool.runPDLEntry(entry), 0);
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
}

}  // namespace
