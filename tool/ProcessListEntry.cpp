#include "tool/StabilizerTool.h"

int CStabilizerTool::capturePDLEntry(CPDLEntry& entry) {
  const CPDLElement settings = entry.FirstElement();
  if (window_) window_->gatherParameters().WritePDLEntry(settings);
  tracked_.SetMattingBox(mattingBox_);
  tracked_.WritePDLEntry(settings);
  return 0;
}

int CStabilizerTool::runPDLEntry(CPDLEntry& entry) {
  CAutoErrorReporter reporter("CStabilizerTool::runPDLEntry");
  if (isTrackingPassUnderWay()) {
    // The pass writes into the live points to its very end.
    reporter.set(-1, "A tracking pass is under way; stop it first");
    return -1;
  }
  const CPDLElement settings = entry.FirstElement();
  for (int i = 0; i < settings.GetChildCount(); ++i) {
    const CPDLElement child = settings.GetChild(i);
    if (child.GetName() == "StabilizerParameters") {
      CStabilizerParameters parameters;
      parameters.ReadPDLEntry(child);
      if (window_) window_->showParameters(parameters);
    } else if (child.GetName() == "TrackingArray") {
      CTrackingArray loaded;
      loaded.ReadPDLEntry(child);
      loaded.SetUseMatting(tracked_.UseMatting());  // which the parameters say, not the points
      turnColorPickerOff();
      setMattingBox(loaded.MattingBox());
      editor_.updateMarks();  // marks that it first met later would cost it the new points
      tracked_ = loaded;
      editor_.selectedPoint = -1;
      editor_.pointsChangedHook.notify();
      editor_.refresh();
    }
  }
  discardSmoothedPath();
  forgetWhatHasNotBegun();
  needsRetracking_ = true;
  deferredRender_ = false;
  return 0;
}
