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
  int index = 0;  ///< counts from 0 in every run; after the last iteration the iteration count
  /// True before an iteration. DoProcess clears it to be called again for the same iteration, after
  /// commands were looked at, and has to set it again itself.
  bool done = true;
  const CAbortFlag* abortFlag = nullptr;
};

/// Base of the object that processes frames for a tool: a worker thread that takes commands,
/// reports statuses and, while running, pulls inputs, gets output buffers, processes and sends on,
/// one iteration (normally one frame) at a time.
///
/// The host makes it through the tool, connects its node's edges, calls SetIOConfig, SetFrameRange
/// and ConfigurePorts, posts commands, takes statuses, posts EXIT and deletes it after
/// THREAD_ENDED. THREAD: virtual operations run on the worker thread, except SetIOConfig,
/// SetFrameRange, ConfigurePorts and AnnounceOutputFormats (host's thread, while stopped or
/// paused). Queues: any.
///
/// Statuses of a run: RUNNING, then END_OF_MATERIAL (all done) or ERROR_STATUS (an operation
/// failed; its code), then STOPPED; a run that does not start gives ERROR_STATUS and STOPPED. While
/// the abort byte is set RUN is ignored and a running or paused processor stops.
class CToolProcessor {
 public:
  static constexpr int NO_FRAME_ALLOCATOR = -3108;
  /// A concrete operation threw; the trace has the reason.
  static constexpr int OPERATION_THREW = -1;

  /// What the concrete BeginIteration chooses, and what the loop obtained for it.
  struct SInPort {
    int frameCount = -1;              ///< frames at a time; -1 until the concrete processor sets it
    std::vector<int> neededFrames;    ///< set by BeginIteration
    std::vector<int> releasedFrames;  ///< set by BeginIteration; released after DoProcess
    std::vector<CToolFrameBuffer*> slots;       ///< one per needed frame; each is also held
    std::vector<CToolFrameBuffer*> heldFrames;  ///< owned: obtained and not yet released
  };
  struct SOutPort {
    int frameCount = -1;
    /// The output frames are frames of `passThroughInput`, an input port that needs them too: a
    /// frame that it never gets is waited for. One port at most passes a frame through.
    bool passThrough = false;
    /// A passed frame stays with its input and a copy is sent; else the frame itself is sent.
    bool keep = false;
    int passThroughInput = -1;
    int allocatorValueA = 0;  ///< both handed to the host with the allocator request
    int allocatorValueB = 0;
    double formatValue = 0.0;  ///< handed on by AnnounceOutputFormats
    std::unique_ptr<CImageFormat> imageFormat;
    CBufferPool* allocator = nullptr;      ///< the host's
    std::vector<int> frames;               ///< set by BeginIteration
    std::vector<CToolFrameBuffer*> slots;  ///< one per frame; owned unless passed through
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
  /// Asks the host for the frame memory of every port; an output port that has its allocator, or
  /// passes frames through without keeping them, needs none. 0, or NO_FRAME_ALLOCATOR (also for a
  /// port without an image format). REQUIRES: SetIOConfig was called and the edges are connected.
  virtual int ConfigurePorts();
  /// Tells the edge of every port that has frames and a format what passes through it.
  virtual void AnnounceOutputFormats();
  virtual int queryA() { return -1; }
  virtual int queryB() { return -1; }
  /// Starts the worker thread, which waits for commands. A concrete processor calls it at the end
  /// of its constructor, once; nothing may derive from that processor. 0, or -1 when no thread
  /// could be started.
  virtual int StartProcessThread();

  // 0 or a negative code; a code ends the run and is reported as it is.
  /// The parameters stay the caller's.
  virtual int SetParameters(CToolParameters* parameters) = 0;
  /// Once when a run starts; not when it resumes.
  virtual int BeginProcessing(SIterationRecord& iteration) = 0;
  /// Once when the processor goes back to stopped, also after an error.
  virtual int EndProcessing(SIterationRecord& iteration) = 0;
  /// Chooses the frames of the iteration: needed and released ones of the input ports, frames of
  /// the output ports.
  virtual int BeginIteration(SIterationRecord& iteration) = 0;
  /// After the iteration's outputs were sent on.
  virtual int EndIteration(SIterationRecord& iteration) = 0;
  /// With every slot filled.
  virtual int DoProcess(SIterationRecord& iteration) = 0;
  virtual int GetIterationCount() = 0;

  AutotoolCommandQueue& commandQueue() { return commandQueue_; }
  AutotoolStatusQueue& statusQueue() { return statusQueue_; }
  /// 0 and the command, or AutotoolQueue::QUEUE_EMPTY.
  int getNextCommand(CAutotoolCommand& command) { return commandQueue_.Take(command); }
  void postStatus(CAutotoolStatus status) { statusQueue_.Add(status); }
  /// Through the node; null when the frame is not there yet or the port is not connected.
  CToolFrameBuffer* getInputFrame(int port, int frame);
  /// Through the node. True: the frame is no longer the caller's; a port that is not connected
  /// deletes it. False: the edge is full.
  bool putOutputFrame(int port, CToolFrameBuffer* frame);
  bool isOutputFull(int port);
  bool isAborted() const { return abortFlag_ && *abortFlag_ != 0; }
  /// Aborted, or a STOP, PAUSE or EXIT command waits: an operation that waits gives up.
  bool isInterrupted() const;
  void setProcessingStarted(bool started) { processingStarted_ = started; }
  CToolNode& node() { return node_; }

 protected:
  /// Makes `output` a copy of `input` for DoProcess: marks, changed regions, invisible fields and,
  /// unless the caller overwrites them all, samples. While memory is missing the tool frame cache's
  /// oldest frame is deleted or, when there is none, 1 ms passes. The input is not cached when it
  /// is released later. False: interrupted, the copy is incomplete; DoProcess then clears the
  /// iteration's done mark and returns 0, so that the loop can act.
  bool copyInputToOutput(CToolFrameBuffer& input, CToolFrameBuffer& output,
                         bool withSamples = true);

  std::vector<SInPort>& inputPorts() { return inPorts_; }
  std::vector<SOutPort>& outputPorts() { return outPorts_; }
  CNavSystemInterface* systemInterface() const { return systemInterface_; }
  IToolProgressMonitor* progressMonitor() const { return progressMonitor_; }
  int toolNumber() const { return toolNumber_; }
  const std::string& name() const { return name_; }
  const CAbortFlag* abortFlag() const { return abortFlag_; }

 private:
  static void processThread(void* processor, BThreadHandle self);
  int requestAllocator(const CImageFormat* format, int frameCount, int valueA, int valueB,
                       CBufferPool*& allocator);

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
