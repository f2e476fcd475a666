#include "ToolObj/ToolCommand.h"

#include "ToolObj/ToolObject.h"

int CToolCommand::execute() {
  return tool_ ? tool_->onToolCommand(*this) : -1;
}
