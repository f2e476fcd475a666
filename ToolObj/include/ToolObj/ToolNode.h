#pragma once

#include <memory>
#include <vector>

#include "ToolObj/ToolFrameBuffer.h"
#include "support/ImageFormat.h"

/// Where a processor's frames come from or go to. The host derives its edges: an input edge
/// produces frames on demand, an output edge hands them to a writer or a viewer. THREAD: the
/// processor's thread on one end, the host's on the other.
class CToolEdge {
 public:
  CToolEdge() = default;
  virtual ~CToolEdge() = default;
  CToolEdge(const CToolEdge&) = delete;
  CToolEdge& operator=(const CToolEdge&) = delete;

  static constexpr int END_OF_MATERIAL_REQUEST = -2000;

  /// The frame, now the caller's, or null when it is not there yet (ask again later). The index
  /// END_OF_MATERIAL_REQUEST tells the source that no more frames will be asked for.
  CToolFrameBuffer* getFrame(int frame);
  /// True: the edge owns the frame now. False: the edge is full and the frame still the caller's;
  /// an end-of-material frame is never refused.
  bool putFrame(CToolFrameBuffer* frame);
  /// The limit is not 0 and reached.
  bool isFull();
  /// Deletes the queued frames.
  void flush();
  /// The frames that wait; the edge's owner sets their limit here.
  CToolFrameCache& queue() { return queue_; }

  /// Format of the frames on this edge; null until somebody set it.
  const CImageFormat* imageFormat() const { return format_.get(); }
  void setImageFormat(const CImageFormat& format) {
    format_ = std::make_unique<CImageFormat>(format);
  }

  /// Tells the edge what passes through it: format, frames in flight at a time, and a value of the
  /// port that means what host and tool agree on. Default: nothing. THREAD: the host's.
  virtual void announceFormat(const CImageFormat& format, int frameCount, double value);

 protected:
  /// Called by getFrame when the queue does not hold the frame. Default: null. What it throws fails
  /// the run.
  virtual CToolFrameBuffer* requestFrame(int frame);
  /// Called after a frame was queued; must not throw, since the frame has changed hands.
  virtual void onFramePut() {}
  /// Called by flush: what is finished can still be handed on before what is left is deleted.
  virtual void onFlush() {}

 private:
  CToolFrameCache queue_;
  std::unique_ptr<CImageFormat> format_;
};

/// A processor's place in the host's graph: one edge pointer per port. Edges belong to the host.
class CToolNode {
 public:
  CToolNode(int inputPorts, int outputPorts);
  int inputCount() const { return static_cast<int>(inputs_.size()); }
  int outputCount() const { return static_cast<int>(outputs_.size()); }
  /// REQUIRES, also below: 0 <= port < count.
  void connectInput(int port, CToolEdge* edge);
  void connectOutput(int port, CToolEdge* edge);
  /// Null while unconnected.
  CToolEdge* input(int port) const { return inputs_[static_cast<std::size_t>(port)]; }
  CToolEdge* output(int port) const { return outputs_[static_cast<std::size_t>(port)]; }

 private:
  std::vector<CToolEdge*> inputs_;
  std::vector<CToolEdge*> outputs_;
};
