#pragma once

#include "ToolObj/ToolObject.h"
#include "session/PluginLibrary.h"
#include "session/ShotSession.h"

// What a batch host and one with an operator ask of the tool in the same words. All throw CJobError
// with the tool's code.

/// The plug-in's tool, initialised on the session, which is told of it. Throws CPluginError, too.
CToolObject* StartTool(CPluginLibrary& plugin, CShotSession& session);
/// Deactivates, hides and shuts down the tool and takes it from the session, whose passes end with
/// it: processors are the plug-in's code and write through the writer. Null: only the passes end.
void EndTool(CToolObject* tool, CShotSession& session);
/// Settings and points as a process-list entry, and the other way round.
CPDLEntry CaptureEntry(CToolObject& tool);
void ApplyEntry(CToolObject& tool, CPDLEntry& entry);
