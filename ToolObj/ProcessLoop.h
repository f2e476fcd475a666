#pragma once

#include "FramePipeline.h"

/// Body of a processor's worker thread: takes commands, keeps the control state, runs the frame
/// pipeline. Lives on that thread's stack and is used by it alone.
class CProcessLoop {
 public:
  explicit CProcessLoop(const SProcessorParts& parts) : parts_(parts), pipeline_(parts) {}

  /// Returns after an EXIT command; posts everything but THREAD_ENDED.
  void ProcessLoop();

 private:
  enum class EControlState { stopped, running, paused, exiting };

  // What a command, the abort byte or the pipeline's outcome mean in a state; the next state.
  EControlState nextState(int command);
  EControlState whileStopped(int command);
  EControlState whileRunning(int command);
  EControlState whilePaused(int command);
  EControlState begin();
  EControlState resume();
  EControlState dropOutputs();
  EControlState fail(const char* where, int code);

  void enter(EControlState state);
  void endProcessing();
  void flushOutputs();
  void post(int status, int errorCode = 0);

  const SProcessorParts parts_;
  CFramePipeline pipeline_;
  EControlState state_ = EControlState::stopped;
};
