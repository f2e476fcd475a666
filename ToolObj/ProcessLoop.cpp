#include "ProcessLoop.h"

#include <string>

#include "support/Trace.h"

void CProcessLoop::ProcessLoop() {
  post(CAutotoolStatus::THREAD_STARTED);
  while (state_ != EControlState::exiting) {
    CAutotoolCommand command;
    parts_.processor.getNextCommand(command);
    if (command.command == CAutotoolCommand::NEW_PARAMETERS) {
      pipeline_.setPendingParameters(command.data);
    }

    const EControlState next = nextState(command.command);
    if (next != state_) enter(next);

    const bool didWork = pipeline_.advance();
    if (!didWork && state_ != EControlState::exiting) QTXmillisleep(1);
  }
}

CProcessLoop::EControlState CProcessLoop::nextState(int command) {
  if (command == CAutotoolCommand::EXIT) return EControlState::exiting;
  switch (state_) {
    case EControlState::stopped: return whileStopped(command);
    case EControlState::running: return whileRunning(command);
    case EControlState::paused: return whilePaused(command);
    case EControlState::exiting: break;
  }
  return state_;
}

CProcessLoop::EControlState CProcessLoop::whileStopped(int command) {
  return command == CAutotoolCommand::RUN && !parts_.processor.isAborted() ? begin() : state_;
}

CProcessLoop::EControlState CProcessLoop::whileRunning(int command) {
  if (parts_.processor.isAborted()) return dropOutputs();
  if (pipeline_.error() != 0) return fail("Processing", pipeline_.error());
  if (pipeline_.reachedEndOfMaterial()) {
    post(CAutotoolStatus::END_OF_MATERIAL);
    TraceAt(3, " <<<<<<< in ToolObject: EOM -> STOPPED >>>>>>>");
    return EControlState::stopped;
  }
  if (command == CAutotoolCommand::STOP) return dropOutputs();
  return command == CAutotoolCommand::PAUSE ? EControlState::paused : state_;
}

CProcessLoop::EControlState CProcessLoop::whilePaused(int command) {
  if (command == CAutotoolCommand::STOP || parts_.processor.isAborted()) return dropOutputs();
  return command == CAutotoolCommand::RUN ? resume() : state_;
}

CProcessLoop::EControlState CProcessLoop::begin() {
  pipeline_.reset();
  int result = pipeline_.applyPendingParameters();
  if (result == 0) {
    parts_.processor.setProcessingStarted(true);
    result = pipeline_.call(&CToolProcessor::BeginProcessing);
  }
  if (result == 0) return EControlState::running;
  fail("Startup", result);
  post(CAutotoolStatus::STOPPED);
  return state_;
}

CProcessLoop::EControlState CProcessLoop::resume() {
  pipeline_.reset();
  const int result = pipeline_.applyPendingParameters();
  return result == 0 ? EControlState::running : fail("Resume", result);
}

CProcessLoop::EControlState CProcessLoop::fail(const char* where, int code) {
  std::string line = "ERROR: CToolProcessor::ProcessLoop ";
  TraceAt(0, line.append(where).append(" Error ").append(std::to_string(code)));
  post(CAutotoolStatus::ERROR_STATUS, code);
  return EControlState::stopped;
}

CProcessLoop::EControlState CProcessLoop::dropOutputs() {
  flushOutputs();
  return EControlState::stopped;
}

void CProcessLoop::enter(EControlState state) {
  state_ = state;
  switch (state) {
    case EControlState::stopped:
      endProcessing();
      pipeline_.stop();
      post(CAutotoolStatus::STOPPED);
      break;
    case EControlState::running:
      pipeline_.start();
      post(CAutotoolStatus::RUNNING);
      break;
    case EControlState::paused:
      flushOutputs();
      pipeline_.pause();
      post(CAutotoolStatus::PAUSED);
      break;
    case EControlState::exiting:
      pipeline_.stop();
      flushOutputs();
      break;
  }
}

void CProcessLoop::endProcessing() {
  const int result = pipeline_.call(&CToolProcessor::EndProcessing);
  if (result != 0) post(CAutotoolStatus::ERROR_STATUS, result);
}

void CProcessLoop::flushOutputs() {
  CToolNode& node = parts_.processor.node();
  for (int port = 0; port < node.outputCount(); ++port) {
    if (CToolEdge* edge = node.output(port)) edge->flush();
  }
}

void CProcessLoop::post(int status, int errorCode) {
  parts_.processor.postStatus({status, errorCode, -1, -1});
}
