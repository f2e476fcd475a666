#include "ToolObj/ToolNode.h"

CToolFrameBuffer* CToolEdge::getFrame(int frame) {
  CToolFrameBuffer* queued = queue_.takeByIndex(frame);
  return queued ? queued : requestFrame(frame);
}

bool CToolEdge::putFrame(CToolFrameBuffer* frame) {
  if (!queue_.add(frame)) return false;
  onFramePut();
  return true;
}

bool CToolEdge::isFull() {
  return queue_.isFull();
}

void CToolEdge::flush() {
  onFlush();
  queue_.clear();
}

void CToolEdge::announceFormat(const CImageFormat&, int, double) {}

CToolFrameBuffer* CToolEdge::requestFrame(int) {
  return nullptr;
}

CToolNode::CToolNode(int inputPorts, int outputPorts)
    : inputs_(static_cast<std::size_t>(inputPorts)),
      outputs_(static_cast<std::size_t>(outputPorts)) {}

void CToolNode::connectInput(int port, CToolEdge* edge) {
  inputs_[static_cast<std::size_t>(port)] = edge;
}

void CToolNode::connectOutput(int port, CToolEdge* edge) {
  outputs_[static_cast<std::size_t>(port)] = edge;
}
