#include "ToolCalls.h"

#include <string>

#include "session/JobObserver.h"

namespace {

void require(int code, const char* what) {
  if (code != 0) throw CJobError(code, std::string(what) + " (" + std::to_string(code) + ")");
}

}  // namespace

CToolObject* StartTool(CPluginLibrary& plugin, CShotSession& session) {
  CToolObject* const tool = plugin.createTool("Stabilize");
  require(tool->toolInitialize(&session), "the tool cannot be initialised");
  session.setTool(tool);
  return tool;
}

void EndTool(CToolObject* tool, CShotSession& session) {
  if (tool) {
    tool->toolDeactivate();
    tool->toolHide();
    tool->toolShutdown();
    session.setTool(nullptr);
  }
  session.endPasses();
  session.setWriter(nullptr);
}

CPDLEntry CaptureEntry(CToolObject& tool) {
  CPDLEntry entry;
  require(tool.capturePDLEntry(entry), "the tool does not give its settings");
  return entry;
}

void ApplyEntry(CToolObject& tool, CPDLEntry& entry) {
  require(tool.runPDLEntry(entry), "the tool refused its settings");
}
