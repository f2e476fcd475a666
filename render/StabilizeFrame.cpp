#include <algorithm>
#include <cstring>
#include <sstream>

#include "SliceThreads.h"
#include "render/StabilizerProc.h"
#include "support/ErrorReport.h"
#include "support/Trace.h"

// One frame: what CStabilizerProc does between taking an input frame and handing on an output.

namespace {

constexpr int DETAIL = 3;
constexpr int TRIANGLE_POINTS = 3;

/// Points 0 to 2 of a frame; absent ones come as invalid. Looks without creating: the window's
/// graphs may be reading the same array.
CTrackingPoints triangle(const CTrackingArray& array, int frame) {
  CTrackingPoints points;
  const auto found = array.frames.find(frame);
  for (int i = 0; i < TRIANGLE_POINTS; ++i) {
    CTrackPoint& point = points.Point(i);
    if (found == array.frames.end()) continue;
    const auto entry = found->second.Entries().find(i);
    if (entry != found->second.Entries().end()) point = entry->second;
  }
  return points;
}

void traceTriangle(const char* tag, const CTrackingPoints& points) {
  if (!TracesAt(DETAIL)) return;
  std::ostringstream line;
  line << tag;
  for (const auto& [index, point] : points.Entries())
    line << " (" << point.x << "," << point.y << ")";
  TraceAt(DETAIL, line.str());
}

void traceWeights(const char* tag, const std::array<float, 3>& weights) {
  if (!TracesAt(DETAIL)) return;
  std::ostringstream line;
  line << tag << "(" << weights[0] << "," << weights[1] << "," << weights[2] << ")";
  TraceAt(DETAIL, line.str());
}

}  // namespace

bool CStabilizerProc::isLastAnchorIn(int frame) const {
  const int anchors = std::max(parameters_.GoodFramesIn, 1);
  return frame == firstFrame_ + anchors - 1;
}

bool CStabilizerProc::isAnchorOut(int frame) const {
  return frame >= endFrame_ - parameters_.GoodFramesOut;
}

int CStabilizerProc::DoProcess(SIterationRecord& iteration) {
  const CToolFrameBuffer* input = inputPorts()[0].slots[0];
  CToolFrameBuffer* output = outputPorts()[0].slots[0];
  const int frame = input->frameIndex();
  const std::string operation = "CStabilizerProc::DoProcess";
  if (!input->imageFormat() || input->imageFormat()->getPixelsPerLine() != pixelsPerLine_ ||
      input->imageFormat()->getLinesPerFrame() != lines_ || !input->samples()) {
    return fail(operation, FAILED_FRAME,
                "Frame " + std::to_string(frame) + " has another size than the clip");
  }
  // Samples are copied below, and only those that are not overwritten at once.
  iteration.done = copyInputToOutput(*inputPorts()[0].slots[0], *output, false);
  if (!iteration.done) return 0;
  if (const int code = prepareFill(); code != 0) return code;

  source_ = input->samples();
  output_ = output->samples();
  const int fill = parameters_.MissingDataFill;
  if (FillNeedsPreviousFrame(fill) && (isLastAnchorIn(frame) || !previous_.isFilled())) {
    keepSource();
  }
  const bool isAnchorIn = iteration.index < parameters_.GoodFramesIn && fill != MISSING_DATA_Zoom;
  const bool isAnchor = isAnchorIn || isAnchorOut(frame);
  if (isAnchor) {
    std::memcpy(output_, source_, format_->getBytesPerField());
  } else if (!StabilizeFrame(frame)) {
    return theError.getError() != 0 ? theError.getError() : FAILED_FRAME;
  }
  output->setRenderFlag(!isAnchorIn);
  if (isAnchorIn) return 0;
  if (fill == MISSING_DATA_Zoom) {
    if (!zoomFrame(frame, isAnchor ? source_ : warped_.samples())) return FAILED_FRAME;
  } else if (fill == MISSING_DATA_Previous_Frame && isAnchor) {
    keepSource();
  }
  output->changedRegions().Add(activePicture_, nullptr, pixelsPerLine_, lines_,
                               format_->getComponentCountExcAlpha());
  return 0;
}

void CStabilizerProc::keepSource() {
  sliceThreads_->Run([this](int slice) { previous_.Take(source_, area_, rowsOfSlice(slice)); });
  previous_.markFilled();
}

/// Enlarges `from` into the output. What was missing in it has been filled, so the memory of the
/// previous frame takes the rows of this one as they get ready.
bool CStabilizerProc::zoomFrame(int frame, const std::uint16_t* from) {
  const bool zooms = zoom_.prepare(*zoomSource_, area_);
  const bool whole = sliceThreads_->Run([=, this](int slice) {
    const SRows rows = rowsOfSlice(slice);
    if (zooms) {
      zoom_.convertRows(rows.first, rows.last, from, output_, previous_.samples());
    } else {
      CopyArea(from, output_, pixelsPerLine_, area_, rows);
      CopyArea(from, previous_.samples(), pixelsPerLine_, area_, rows);
    }
  });
  if (whole) return true;
  fail("CStabilizerProc::DoProcess", FAILED_FRAME,
       "A part of frame " + std::to_string(frame) + " was not enlarged");
  return false;
}

/// Equal heights by whole division; the last band takes the rest.
SRows CStabilizerProc::rowsOfSlice(int slice) const {
  const int slices = sliceThreads_->slices();
  const int height = (area_.bottom - area_.top) / slices;
  const int first = area_.top + slice * height;
  return {first, slice == slices - 1 ? area_.bottom : first + height - 1};
}

/// With the lines above and below the processing rectangle.
SRows CStabilizerProc::linesOfSlice(int slice) const {
  const SRows rows = rowsOfSlice(slice);
  const bool isLast = slice == sliceThreads_->slices() - 1;
  return {slice == 0 ? 0 : rows.first, isLast ? lines_ - 1 : rows.last};
}

bool CStabilizerProc::StabilizeFrame(int frame) {
  CAutoErrorReporter report("CStabilizerProc::StabilizeFrame");
  SWarpMap map;
  if (!frameMap(frame, map)) {
    report.set(theError.getError(), "StabilizeFrame failed:" + theError.getMessage());
    return false;
  }
  if (resampleInBands(map)) return true;
  report.set(FAILED_FRAME, "StabilizeFrame failed:A part of frame " + std::to_string(frame) +
                               " was not rendered");
  return false;
}

bool CStabilizerProc::frameMap(int frame, SWarpMap& map) {
  const CTrackingPoints original = triangle(shot_->syntheticOriginalArray(), frame);
  const CTrackingPoints smoothed = triangle(shot_->syntheticSmoothedArray(), frame);
  traceTriangle("SYNTHTPO", original);
  traceTriangle("SYNTHTPS", smoothed);
  mvector<long double> vx;
  mvector<long double> vy;
  if (!SolveWarp(smoothed, original, vx, vy)) return false;
  map = PrepareWarpMap(vx, vy, parameters_, area_.bottom - area_.top);
  traceWeights("Weights X", map.wx);
  traceWeights("Weights Y", map.wy);
  return true;
}

void CStabilizerProc::renderOutside(SRows rows) {
  if (!parameters_.KeepOriginalMatValues && format_->getComponentCountExcAlpha() == 3) {
    PaintOutside(output_, pixelsPerLine_, rows, area_, black_);
  } else {
    CopyOutside(source_, output_, pixelsPerLine_, rows, area_);
  }
}

bool CStabilizerProc::resampleInBands(const SWarpMap& map) {
  SResampleJob job;
  job.source = source_;
  job.pixelsPerLine = pixelsPerLine_;
  job.area = area_;
  job.map = map;
  const int fill = parameters_.MissingDataFill;
  // What is enlarged is no output yet, and what is enlarged of it is remembered.
  job.output = fill == MISSING_DATA_Zoom ? warped_.samples() : output_;
  if (FillNeedsPreviousFrame(fill)) job.previous = previous_.samples();
  if (fill == MISSING_DATA_Previous_Frame) job.kept = previous_.samples();
  std::copy_n(fill == MISSING_DATA_Black ? black_ : white_, 3, job.fillColor);

  return sliceThreads_->Run([this, &job](int slice) {
    const SRows rows = rowsOfSlice(slice);
    resampler_->resampleRows(job, rows.first, rows.last);
    renderOutside(linesOfSlice(slice));
  });
}
