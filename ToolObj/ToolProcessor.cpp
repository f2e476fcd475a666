#include "ToolObj/ToolProcessor.h"

#include <algorithm>
#include <utility>

#include "ProcessLoop.h"

CToolProcessor::CToolProcessor(int toolNumber, std::string name, int inputPorts, int outputPorts,
                               CNavSystemInterface* systemInterface, const CAbortFlag* abortFlag,
                               IToolProgressMonitor* progressMonitor)
    : toolNumber_(toolNumber),
      name_(std::move(name)),
      node_(inputPorts, outputPorts),
      systemInterface_(systemInterface),
      abortFlag_(abortFlag),
      commandQueue_(name_ + " commands", 0),
      statusQueue_(name_ + " statuses", 0),
      inPorts_(static_cast<std::size_t>(inputPorts)),
      outPorts_(static_cast<std::size_t>(outputPorts)),
      progressMonitor_(progressMonitor) {}

CToolProcessor::~CToolProcessor() {
  // Commands that came after the exit: their parameters were handed to this processor.
  CAutotoolCommand command;
  while (commandQueue_.Take(command) == 0) {
    if (command.command == CAutotoolCommand::NEW_PARAMETERS) delete command.data;
  }
}

int CToolProcessor::requestAllocator(const CImageFormat* format, int frameCount, int valueA,
                                     int valueB, CBufferPool*& allocator) {
  if (format) {
    allocator =
        systemInterface_->getFrameAllocator(format->getBytesPerField(), frameCount, valueA, valueB);
  }
  return allocator ? 0 : NO_FRAME_ALLOCATOR;
}

int CToolProcessor::ConfigurePorts() {
  for (std::size_t port = 0; port < inPorts_.size(); ++port) {
    const CToolEdge* edge = node_.input(static_cast<int>(port));
    CBufferPool* allocator = nullptr;  // the edge's frames bring their own; the host makes room
    const int result = requestAllocator(edge ? edge->imageFormat() : nullptr,
                                        inPorts_[port].frameCount, 0, 0, allocator);
    if (result != 0) return result;
  }
  for (SOutPort& port : outPorts_) {
    if (port.allocator || (port.passThrough && !port.keep)) continue;
    const int result = requestAllocator(port.imageFormat.get(), port.frameCount,
                                        port.allocatorValueA, port.allocatorValueB, port.allocator);
    if (result != 0) return result;
  }
  return 0;
}

void CToolProcessor::AnnounceOutputFormats() {
  const auto announce = [](CToolEdge* edge, const CImageFormat* format, int count, double value) {
    if (edge && format && count > 0) edge->announceFormat(*format, count, value);
  };
  for (std::size_t i = 0; i < inPorts_.size(); ++i) {
    CToolEdge* edge = node_.input(static_cast<int>(i));
    announce(edge, edge ? edge->imageFormat() : nullptr, inPorts_[i].frameCount, 0.0);
  }
  for (std::size_t i = 0; i < outPorts_.size(); ++i) {
    const SOutPort& port = outPorts_[i];
    announce(node_.output(static_cast<int>(i)), port.imageFormat.get(), port.frameCount,
             port.formatValue);
  }
}

int CToolProcessor::StartProcessThread() {
  threadHandle_ = BThreadSpawn(&CToolProcessor::processThread, this);
  return threadHandle_ ? 0 : -1;
}

void CToolProcessor::processThread(void* processor, BThreadHandle self) {
  auto& own = *static_cast<CToolProcessor*>(processor);
  BThreadBegin(self);
  {
    CProcessLoop loop({own, own.inPorts_, own.outPorts_, own.systemInterface_, own.toolNumber_,
                       own.name_, own.abortFlag_, own.processingStarted_});
    loop.ProcessLoop();
  }
  // The host deletes the processor when it sees this status: nothing of it is touched afterwards.
  own.postStatus({CAutotoolStatus::THREAD_ENDED, 0, -1, -1});
  BThreadEnd(self);
}

CToolFrameBuffer* CToolProcessor::getInputFrame(int port, int frame) {
  CToolEdge* edge = node_.input(port);
  return edge ? edge->getFrame(frame) : nullptr;
}

bool CToolProcessor::putOutputFrame(int port, CToolFrameBuffer* frame) {
  if (CToolEdge* edge = node_.output(port)) return edge->putFrame(frame);
  delete frame;
  return true;
}

bool CToolProcessor::isOutputFull(int port) {
  CToolEdge* edge = node_.output(port);
  return edge && edge->isFull();
}

bool CToolProcessor::isInterrupted() const {
  if (isAborted()) return true;
  const std::vector<CAutotoolCommand> waiting = commandQueue_.Waiting();
  return std::any_of(waiting.begin(), waiting.end(), [](const CAutotoolCommand& command) {
    return command.command == CAutotoolCommand::STOP ||
           command.command == CAutotoolCommand::PAUSE || command.command == CAutotoolCommand::EXIT;
  });
}

bool CToolProcessor::copyInputToOutput(CToolFrameBuffer& input, CToolFrameBuffer& output,
                                       bool withSamples) {
  while (!output.CopyFrom(input, withSamples, true)) {
    if (isInterrupted()) return false;
    const std::unique_ptr<CToolFrameBuffer> evicted(
        systemInterface_->getToolFrameCache()->GetOldest());
    if (!evicted) QTXmillisleep(1);
  }
  input.setNotCacheable(true);
  return true;
}
