#include "FramePipeline.h"

#include <algorithm>
#include <exception>

#include "support/Trace.h"
#include "toolkit/Application.h"

using SInPort = CToolProcessor::SInPort;
using SOutPort = CToolProcessor::SOutPort;

namespace {

CToolFrameBuffer* findFrame(const std::vector<CToolFrameBuffer*>& frames, int index) {
  const auto found = std::find_if(frames.begin(), frames.end(), [index](CToolFrameBuffer* frame) {
    return frame->frameIndex() == index;
  });
  return found == frames.end() ? nullptr : *found;
}

// Takes the frame out of the port without deleting it.
void detach(SInPort& port, CToolFrameBuffer* frame) {
  std::erase(port.heldFrames, frame);
  std::replace(port.slots.begin(), port.slots.end(), frame,
               static_cast<CToolFrameBuffer*>(nullptr));
}

bool allFilled(const std::vector<CToolFrameBuffer*>& slots) {
  return std::find(slots.begin(), slots.end(), nullptr) == slots.end();
}

// A processor that throws must not take the host down with it.
template <typename TOperation>
int guarded(TOperation operation) {
  try {
    return operation();
  } catch (const std::exception& error) {
    TraceAt(0, std::string("ERROR: CToolProcessor::ProcessLoop caught ").append(error.what()));
  } catch (...) {
    TraceAt(0, "ERROR: CToolProcessor::ProcessLoop caught an unknown exception");
  }
  return CToolProcessor::OPERATION_THREW;
}

}  // namespace

void CFramePipeline::reset() {
  endOfMaterial_ = false;
  error_ = 0;
  iteration_ = {};
  iteration_.abortFlag = parts_.abortFlag;
}

void CFramePipeline::start() {
  phase_ = EPhase::begin;
  started_ = true;
}

void CFramePipeline::stop() {
  releaseAll();
  started_ = false;
}

void CFramePipeline::pause() {
  if (started_ && phase_ == EPhase::end) {
    call(&CToolProcessor::EndIteration);
    ++iteration_.index;
  }
  stop();
}

int CFramePipeline::applyPendingParameters() {
  if (!pendingParameters_) return 0;
  const std::unique_ptr<CToolParameters> parameters = std::move(pendingParameters_);
  return guarded([&] { return parts_.processor.SetParameters(parameters.get()); });
}

int CFramePipeline::call(int (CToolProcessor::*operation)(SIterationRecord&)) {
  return guarded([&] { return (parts_.processor.*operation)(iteration_); });
}

bool CFramePipeline::advance() {
  if (!started_ || endOfMaterial_ || error_ != 0) return false;
  bool didWork = false;
  // Edges, hooks and memory may throw as well: the host waits for statuses, not for a lost thread.
  const int result = guarded([&] {
    didWork = performPhase();
    return 0;
  });
  if (result != 0) error_ = result;
  return didWork;
}

bool CFramePipeline::performPhase() {
  switch (phase_) {
    case EPhase::begin: return beginIteration();
    case EPhase::inputs: return getInputs();
    case EPhase::buffers: return getOutputBuffers();
    case EPhase::process: return process();
    case EPhase::release: return releaseInputs();
    case EPhase::send: return sendOutputs();
    case EPhase::end: return endIteration();
  }
  return false;
}

bool CFramePipeline::beginIteration() {
  if (iteration_.index >= parts_.processor.GetIterationCount()) return finishMaterial();
  for (SInPort& port : parts_.inPorts) {
    port.neededFrames.clear();
    port.releasedFrames.clear();
    port.slots.clear();
  }
  for (SOutPort& port : parts_.outPorts) {
    port.frames.clear();
    port.slots.clear();
  }
  iteration_.done = true;
  error_ = applyPendingParameters();
  if (error_ == 0) error_ = call(&CToolProcessor::BeginIteration);
  for (SInPort& port : parts_.inPorts) port.slots.resize(port.neededFrames.size());
  for (SOutPort& port : parts_.outPorts) port.slots.resize(port.frames.size());
  phase_ = EPhase::inputs;
  return true;
}

bool CFramePipeline::finishMaterial() {
  for (std::size_t port = 0; port < parts_.inPorts.size(); ++port) {
    delete parts_.processor.getInputFrame(static_cast<int>(port),
                                          CToolEdge::END_OF_MATERIAL_REQUEST);
  }
  for (std::size_t port = 0; port < parts_.outPorts.size(); ++port) {
    auto mark = std::make_unique<CToolFrameBuffer>(nullptr, nullptr);
    mark->markEndOfMaterial();
    if (parts_.processor.putOutputFrame(static_cast<int>(port), mark.get())) mark.release();
  }
  endOfMaterial_ = true;
  return true;
}

bool CFramePipeline::getInputs() {
  bool obtained = false;
  bool complete = true;
  for (std::size_t port = 0; port < parts_.inPorts.size(); ++port) {
    SInPort& in = parts_.inPorts[port];
    for (std::size_t slot = 0; slot < in.slots.size(); ++slot) {
      if (in.slots[slot]) continue;
      obtained |= fillInputSlot(static_cast<int>(port), in, slot);
    }
    complete &= allFilled(in.slots);
  }
  if (complete) phase_ = EPhase::buffers;
  return obtained || complete;
}

bool CFramePipeline::fillInputSlot(int port, SInPort& in, std::size_t slot) {
  CToolFrameBuffer* frame = findFrame(in.heldFrames, in.neededFrames[slot]);
  if (!frame) {
    frame = parts_.processor.getInputFrame(port, in.neededFrames[slot]);
    if (frame) in.heldFrames.push_back(frame);
  }
  in.slots[slot] = frame;
  return frame != nullptr;
}

bool CFramePipeline::getOutputBuffers() {
  for (SOutPort& out : parts_.outPorts) {
    for (std::size_t slot = 0; slot < out.slots.size(); ++slot) {
      const bool usable =
          out.passThrough ? fillPassThroughSlot(out, slot) : fillOutputSlot(out, slot);
      if (!usable) return error_ != 0;
    }
  }
  phase_ = EPhase::process;
  return true;
}

bool CFramePipeline::fillOutputSlot(SOutPort& out, std::size_t slot) {
  if (!out.imageFormat || !out.allocator) {
    error_ = CToolProcessor::NO_FRAME_ALLOCATOR;  // waiting would never end
    return false;
  }
  if (!out.slots[slot]) {
    out.slots[slot] = new CToolFrameBuffer(out.imageFormat.get(), out.allocator);
    out.slots[slot]->setFrameIndex(out.frames[slot]);
  }
  return ensureSamples(*out.slots[slot]);
}

bool CFramePipeline::fillPassThroughSlot(SOutPort& out, std::size_t slot) {
  if (out.passThroughInput < 0 || out.passThroughInput >= static_cast<int>(parts_.inPorts.size())) {
    return false;
  }
  const SInPort& in = parts_.inPorts[static_cast<std::size_t>(out.passThroughInput)];
  out.slots[slot] = findFrame(in.heldFrames, out.frames[slot]);
  return out.slots[slot] != nullptr;
}

bool CFramePipeline::ensureSamples(CToolFrameBuffer& frame) {
  return frame.ensureSamples() || (evictOldestCached() && frame.ensureSamples());
}

bool CFramePipeline::evictOldestCached() {
  const std::unique_ptr<CToolFrameBuffer> oldest(
      parts_.systemInterface->getToolFrameCache()->GetOldest());
  return oldest != nullptr;
}

bool CFramePipeline::process() {
  error_ = call(&CToolProcessor::DoProcess);
  if (iteration_.done) phase_ = EPhase::release;
  return true;
}

bool CFramePipeline::releaseInputs() {
  for (SInPort& in : parts_.inPorts) releaseListed(in);
  phase_ = EPhase::send;
  return true;
}

bool CFramePipeline::waitsInPassThroughSlot(const CToolFrameBuffer* frame) const {
  return std::any_of(parts_.outPorts.begin(), parts_.outPorts.end(), [frame](const SOutPort& out) {
    return out.passThrough &&
           std::find(out.slots.begin(), out.slots.end(), frame) != out.slots.end();
  });
}

void CFramePipeline::releaseListed(SInPort& in) {
  for (const int index : in.releasedFrames) {
    CToolFrameBuffer* frame = findFrame(in.heldFrames, index);
    if (!frame || waitsInPassThroughSlot(frame)) continue;
    detach(in, frame);
    cacheOrDelete(frame);
  }
}

void CFramePipeline::cacheOrDelete(CToolFrameBuffer* frame) {
  if (frame->isNotCacheable()) {
    delete frame;
  } else {
    parts_.systemInterface->getToolFrameCache()->CacheFrame(frame);
  }
}

bool CFramePipeline::sendOutputs() {
  bool sent = false;
  bool complete = true;
  for (std::size_t port = 0; port < parts_.outPorts.size(); ++port) {
    SOutPort& out = parts_.outPorts[port];
    for (CToolFrameBuffer*& slot : out.slots) {
      if (!slot) continue;
      const bool gone = sendSlot(static_cast<int>(port), out, slot);
      sent |= gone;
      complete &= gone;
      if (!gone) break;  // later frames of a port must not overtake
    }
  }
  if (complete) {
    for (SInPort& in : parts_.inPorts) releaseListed(in);  // those that waited to be sent
    phase_ = EPhase::end;
  }
  return sent || complete;
}

bool CFramePipeline::sendSlot(int port, SOutPort& out, CToolFrameBuffer*& slot) {
  if (parts_.processor.isOutputFull(port)) return false;
  std::unique_ptr<CToolFrameBuffer> copy;
  if (out.passThrough && out.keep) {
    copy = copyForSending(out, *slot);
    if (!copy) return false;
  }
  CToolFrameBuffer* frame = copy ? copy.get() : slot;
  parts_.systemInterface->frameOutputHook(frame, parts_.toolNumber, parts_.name,
                                          parts_.processingStarted);
  frame->mergeInvisibleFields();
  frame->keepOriginals();
  // Put means gone: the frame leaves its input before it may be deleted on the other side.
  SInPort* source = nullptr;
  if (out.passThrough && !out.keep) {
    source = &parts_.inPorts[static_cast<std::size_t>(out.passThroughInput)];
    detach(*source, frame);
  }
  if (!parts_.processor.putOutputFrame(port, frame)) {
    if (source) source->heldFrames.push_back(frame);
    return false;
  }
  copy.release();
  slot = nullptr;
  return true;
}

std::unique_ptr<CToolFrameBuffer> CFramePipeline::copyForSending(const SOutPort& out,
                                                                 const CToolFrameBuffer& frame) {
  auto copy = std::make_unique<CToolFrameBuffer>(out.imageFormat.get(), out.allocator);
  if (!copy->CopyFrom(frame, true, true) &&
      !(evictOldestCached() && copy->CopyFrom(frame, true, true))) {
    return nullptr;
  }
  copy->setFrameIndex(frame.frameIndex());
  return copy;
}

bool CFramePipeline::endIteration() {
  error_ = call(&CToolProcessor::EndIteration);
  Application()->processMessages();
  ++iteration_.index;
  phase_ = EPhase::begin;
  return false;
}

void CFramePipeline::releaseAll() {
  for (SOutPort& out : parts_.outPorts) {
    for (CToolFrameBuffer* frame : out.slots) {
      if (!out.passThrough) delete frame;
    }
    out.slots.clear();
  }
  for (SInPort& in : parts_.inPorts) {
    for (CToolFrameBuffer* frame : in.heldFrames) cacheOrDelete(frame);
    in.heldFrames.clear();
    in.slots.clear();
  }
}
