#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ToolObj/ToolProcessor.h"

/// What the worker thread uses of its processor.
struct SProcessorParts {
  CToolProcessor& processor;
  std::vector<CToolProcessor::SInPort>& inPorts;
  std::vector<CToolProcessor::SOutPort>& outPorts;
  CNavSystemInterface* systemInterface;
  int toolNumber;
  const std::string& name;
  const CAbortFlag* abortFlag;
  const std::atomic<bool>& processingStarted;
};

/// Takes iteration after iteration through its phases, one phase at a time, without ever waiting: a
/// phase that lacks something is tried again in the next round.
///
/// Ownership: an input frame is owned by its port's held frames from the moment it is obtained
/// until it is released or, passed through, sent on; slots only point to it. An output port's slots
/// own their frames until these are sent on, unless the port passes frames through. THREAD: the
/// processor's worker thread.
class CFramePipeline {
 public:
  explicit CFramePipeline(const SProcessorParts& parts) : parts_(parts) {}
  ~CFramePipeline() { releaseAll(); }
  CFramePipeline(const CFramePipeline&) = delete;
  CFramePipeline& operator=(const CFramePipeline&) = delete;

  /// Before a run starts or resumes: first iteration, no error, no end of material.
  void reset();
  void start();
  /// Releases every frame.
  void stop();
  /// Ends the iteration whose outputs are sent: nobody makes them again. Then as stop.
  void pause();
  /// One phase of the current iteration while started. False when there was nothing to do, or an
  /// iteration ended: the loop may rest.
  bool advance();

  int error() const { return error_; }
  bool reachedEndOfMaterial() const { return endOfMaterial_; }

  /// Takes ownership; older ones that were never applied are deleted.
  void setPendingParameters(CToolParameters* parameters) { pendingParameters_.reset(parameters); }
  /// 0 when there are none, else the result of SetParameters.
  int applyPendingParameters();
  /// Calls a concrete operation with the iteration record.
  int call(int (CToolProcessor::*operation)(SIterationRecord&));

 private:
  enum class EPhase { begin, inputs, buffers, process, release, send, end };

  bool performPhase();
  bool beginIteration();
  bool finishMaterial();
  bool getInputs();
  bool getOutputBuffers();
  bool process();
  bool releaseInputs();
  bool sendOutputs();
  bool endIteration();

  bool fillInputSlot(int port, CToolProcessor::SInPort& in, std::size_t slot);
  bool fillOutputSlot(CToolProcessor::SOutPort& out, std::size_t slot);
  bool fillPassThroughSlot(CToolProcessor::SOutPort& out, std::size_t slot);
  bool ensureSamples(CToolFrameBuffer& frame);
  bool evictOldestCached();
  bool sendSlot(int port, CToolProcessor::SOutPort& out, CToolFrameBuffer*& slot);
  std::unique_ptr<CToolFrameBuffer> copyForSending(const CToolProcessor::SOutPort& out,
                                                   const CToolFrameBuffer& frame);
  bool waitsInPassThroughSlot(const CToolFrameBuffer* frame) const;
  void releaseListed(CToolProcessor::SInPort& in);
  void cacheOrDelete(CToolFrameBuffer* frame);
  void releaseAll();

  const SProcessorParts parts_;
  std::unique_ptr<CToolParameters> pendingParameters_;
  SIterationRecord iteration_;
  EPhase phase_ = EPhase::begin;
  bool started_ = false;
  bool endOfMaterial_ = false;
  int error_ = 0;
};
