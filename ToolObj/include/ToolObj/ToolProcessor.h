#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "ToolObj/AutotoolStatus.h"
#include "ToolObj/ProgressMonitor.h"
#include "ToolObj/ToolFrameBuffer.h"
#include "ToolObj/ToolNode.h"
#include "host/NavSystemInterface.h"
#include "support/Threads.h"

/// Abort byte of a processor: owned by the host, read without a lock.
using CAbortFlag = std::atomic<unsigned char>;

/// What the concrete operations are told about an iteration.
struct SIterationRecord {
  int index = 0;     ///< counts from 0
  bool done = true;  ///< DoProcess clears it to be called again
  const CAbortFlag* abortFlag = nullptr;
};

/// Base of the object that processes frames for a tool: a worker thread that takes commands,
/// reports statuses and, while running, pulls inputs, gets output buffers, processes and sends on,
/// one iteration (normally one frame) at a time.
///
/// The host makes it through the tool, connects its node's edges, calls SetIOConfig, SetFrameRange
/// and ConfigurePorts, posts commands, takes statuses, posts EXIT and deletes it after
/// THREAD_ENDED. THREAD: virtual operations run on the worker thread, except SetIOConfig,
/// SetFrameRange, ConfigurePorts and AnnounceOutputFormats (host's thread, while stopped). Queues:
/// any.
class CToolProcessor {
 public:
  static constexpr int NO_FRAME_ALLOCATOR = -3108;

  struct SInPort {
    int frameCount = -1;  ///< -1 until the concrete processor sets it
    std::vector<int> neededFrames;
    std::vector<int> releasedFrames;
    std::vector<CToolFrameBuffer*> slots;       ///< one per needed frame; null until obtained
    std::vector<CToolFrameBuffer*> heldFrames;  ///< owned: obtained and not yet released
  };
  struct SOutPort {
    int frameCount = -1;
    bool passThrough = false;
    bool keep = false;
    int passThroughInput = -1;
    int allocatorValueA = 0;
    int allocatorValueB = 0;
    double formatValue = 0.0;
    std::unique_ptr<CImageFormat> imageFormat;
    CBufferPool* allocator = nullptr;
    std::vector<int> frames;
    std::vector<CToolFrameBuffer*> slots;
  };

  CToolProcessor(int toolNumber, std::string name, int inputPorts, int outputPorts,
                 CNavSystemInterface* systemInterface, const CAbortFlag* abortFlag,
                 IToolProgressMonitor* progressMonitor);
  virtual ~CToolProcessor();
  CToolProcessor(const CToolProcessor&) = delete;
  CToolProcessor& operator=(const CToolProcessor&) = delete;

  virtual void SetIOConfig(const CToolIOConfig& config) = 0;
  virtual void SetFrameRange(const CToolFrameRange& range) = 0;
  virtual void hookA() {}
  virtual void hookB() {}
  virtual void hookC() {}
  /// 0, or NO_FRAME_ALLOCATOR.
  virtual int ConfigurePorts();
  virtual void AnnounceOutputFormats();
  virtual int queryA() { return -1; }
  virtual int queryB() { return -1; }
  virtual int StartProcessThread();
  virtual int SetParameters(CToolParameters* parameters) = 0;
  virtual int BeginProcessing(SIterationRecord& iteration) = 0;
  virtual int EndProcessing(SIterationRecord& iteration) = 0;
  virtual int BeginIteration(SIterationRecord& iteration) = 0;
  virtual int EndIteration(SIterationRecord& iteration) = 0;
  virtual int DoProcess(SIterationRecord& iteration) = 0;
  virtual int GetIterationCount() = 0;

  AutotoolCommandQueue& commandQueue() { return commandQueue_; }
  AutotoolStatusQueue& statusQueue() { return statusQueue_; }
  /// 0 and the command, or AutotoolQueue::QUEUE_EMPTY.
  int getNextCommand(CAutotoolCommand& command) { return commandQueue_.Take(command); }
  void postStatus(CAutotoolStatus status) { statusQueue_.Add(status); }
  CToolFrameBuffer* getInputFrame(int port, int frame);
  bool putOutputFrame(int port, CToolFrameBuffer* frame);
  bool isOutputFull(int port);
  bool isAborted() const { return abortFlag_ && *abortFlag_ != 0; }
  void setProcessingStarted(bool started) { processingStarted_ = started; }
  CToolNode& node() { return node_; }

 protected:
  std::vector<SInPort>& inputPorts() { return inPorts_; }
  std::vector<SOutPort>& outputPorts() { return outPorts_; }
  CNavSystemInterface* systemInterface() const { return systemInterface_; }
  IToolProgressMonitor* progressMonitor() const { return progressMonitor_; }
  int toolNumber() const { return toolNumber_; }
  const std::string& name() const { return name_; }
  const CAbortFlag* abortFlag() const { return abortFlag_; }

 private:
  int toolNumber_;
  std::string name_;
  CToolNode node_;
  CNavSystemInterface* systemInterface_;
  const CAbortFlag* abortFlag_;
  AutotoolCommandQueue commandQueue_;
  AutotoolStatusQueue statusQueue_;
  BThreadHandle threadHandle_ = nullptr;
  std::vector<SInPort> inPorts_;
  std::vector<SOutPort> outPorts_;
  IToolProgressMonitor* progressMonitor_;
  std::atomic<bool> processingStarted_{false};
};
