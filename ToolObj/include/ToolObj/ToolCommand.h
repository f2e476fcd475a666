#pragma once

class CToolObject;

/// A command number on its way to a tool.
class CToolCommand {
 public:
  CToolCommand(CToolObject* tool, int commandNumber) : tool_(tool), commandNumber_(commandNumber) {}
  int getCommandNumber() const { return commandNumber_; }
  /// -1 without a tool, else the result of the tool's `onToolCommand`.
  int execute();

 private:
  CToolObject* tool_;
  int commandNumber_;
};
