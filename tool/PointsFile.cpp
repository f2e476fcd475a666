#include "tool/StabilizerTool.h"

// TEMPORARY: the points files' own branch brings this file whole.
void CStabilizerTool::SavePointsWithDialog() {}
void CStabilizerTool::LoadPointsWithDialog(bool) {}
