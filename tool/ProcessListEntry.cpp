#include "tool/StabilizerTool.h"

int CStabilizerTool::capturePDLEntry(CPDLEntry& entry) {
  const CPDLElement settings = entry.FirstElement();
  if (window_) window_->gatherParameters().WritePDLEntry(settings);
  tracked_.SetMattingBox(mattingBox_);
  tracked_.WritePDLEntry(settings);
  return 0;
}

int CStabilizerTool::runPDLEntry(CPDLEntry& entry) {
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
      turnColorPickerOff();
      setMattingBox(loaded.MattingBox());
      tracked_ = loaded;
      editor_.selectedPoint = -1;
      editor_.pointsChangedHook.notify();
      editor_.refresh();
    }
  }
  discardSmoothedPath();
  needsRetracking_ = true;
  deferredRender_ = false;
  return 0;
}
