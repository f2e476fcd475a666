#include <algorithm>

#include "setups/ToolSetups.h"

CToolSetup::CToolSetup(CToolObject& tool, CFrameStore& store, int kind, const CToolIOConfig& config,
                       int outputLimit)
    : store_(store), kind_(kind), input_(store), output_(outputLimit) {
  processor_.reset(tool.makeToolProcessorInstance(&abortFlag_));
  processor_->node().connectInput(0, &input_);
  processor_->node().connectOutput(0, &output_);
  processor_->SetIOConfig(config);
}

CToolSetup::~CToolSetup() {
  post(CAutotoolCommand::EXIT);
  CAutotoolStatus status;
  while (!threadEnded_) {
    processor_->statusQueue().Event().Wait();
    while (processor_->statusQueue().Take(status) == 0) note(status);
  }
  processor_.reset();
}

void CToolSetup::setFrameRange(const CToolFrameRange& range) {
  // A one-frame pass asks for its neighbours; at the clip's ends there are none.
  CToolFrameRange clipped = range;
  CToolFrameRange::SFrameRange& wanted = clipped.inputs.front();
  wanted.firstFrame = std::max(wanted.firstFrame, store_.info().firstFrame);
  wanted.endFrame = std::min(wanted.endFrame, store_.info().endFrame);
  oneFrame_ = wanted.flag ? range.inputs.front().firstFrame + 1 : CWriterEdge::EVERY_FRAME;
  first_ = wanted.firstFrame;
  end_ = wanted.endFrame;
  processor_->SetFrameRange(clipped);
}

void CToolSetup::setParameters(CToolParameters* parameters) {
  processor_->commandQueue().Add({CAutotoolCommand::NEW_PARAMETERS, parameters});
}

int CToolSetup::run(IClipWriter* writer, int writerThreads) {
  const int result = processor_->ConfigurePorts();
  if (result != 0) return result;
  input_.clearFailure();
  if (status_ != STATUS_PAUSED) {
    output_.open(writer, writerThreads, oneFrame_);
    firstOfRun_ = first_;
    writes_ = writer != nullptr;
  }
  store_.start(first_, end_);
  post(CAutotoolCommand::RUN);
  status_ = STATUS_RUNNING;  // not only once the processor has said so
  return 0;
}

void CToolSetup::post(int command) {
  processor_->commandQueue().Add({command, nullptr});
}

void CToolSetup::note(const CAutotoolStatus& status) {
  if (status.status == CAutotoolStatus::STOPPED) status_ = STATUS_STOPPED;
  if (status.status == CAutotoolStatus::PAUSED) status_ = STATUS_PAUSED;
  if (status.status == CAutotoolStatus::RUNNING) status_ = STATUS_RUNNING;
  if (status.status == CAutotoolStatus::THREAD_ENDED) threadEnded_ = true;
}

std::vector<CAutotoolStatus> CToolSetup::takeStatuses() {
  std::vector<CAutotoolStatus> statuses;
  CAutotoolStatus status;
  while (processor_->statusQueue().Take(status) == 0) {
    note(status);
    statuses.push_back(status);
  }
  return statuses;
}

int CToolSetup::firstUnwritten() const {
  const int frame = writes_ ? output_.firstUnwritten(firstOfRun_, end_) : end_;
  return frame < end_ ? frame : NO_FRAME;
}

int CToolSetup::finishWriting() {
  output_.drain();
  return output_.framesWritten();
}

std::string CToolSetup::failure() const {
  const std::string reading = input_.failure();
  return reading.empty() ? output_.failure() : reading;
}
