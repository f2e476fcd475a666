#include <algorithm>
#include <cstring>
#include <functional>
#include <sstream>
#include <utility>

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
  CToolFrameBuffer* input = inputPorts()[0].slots[0];
  CToolFrameBuffer* output = outputPorts()[0].slots[0];
  const int frame = input->frameIndex();
  const std::string operation = "CStabilizerProc::DoProcess";
  if (!input->imageFormat() || input->imageFormat()->getPixelsPerLine() != pixelsPerLine_ ||
      input->imageFormat()->getLinesPerFrame() != lines_ || !std::as_const(*input).samples()) {
    return fail(operation, FAILED_FRAME,
                "Frame " + std::to_string(frame) + " has another size than the clip");
  }
  // Samples are copied below, and only those that are not overwritten at once.
  iteration.done = copyInputToOutput(*input, *output, false);
  if (!iteration.done) return 0;
  if (const int code = prepareFill(); code != 0) return code;

  source_ = std::as_const(*input).samples();
  output_ = output->samples();
  const int fill = parameters_.MissingDataFill;
  const bool looksBack = FillNeedsPreviousFrame(fill);
  if (looksBack && (isLastAnchorIn(frame) || !previous_)) previous_ = input->shareSamples();
  const bool isAnchorIn = iteration.index < parameters_.GoodFramesIn && fill != MISSING_DATA_Zoom;
  const bool isAnchor = isAnchorIn || isAnchorOut(frame);
  if (isAnchor) {
    std::memcpy(output_, source_, format_->getBytesPerField());
  } else if (!StabilizeFrame(frame)) {
    return theError.getError() != 0 ? theError.getError() : FAILED_FRAME;
  }
  output->setRenderFlag(!isAnchorIn);
  if (isAnchorIn) return 0;
  if (fill == MISSING_DATA_Zoom && isAnchor && !enlargeSource(frame)) return FAILED_FRAME;
  if (looksBack) previous_ = output->shareSamples();
  output->changedRegions().Add(activePicture_, nullptr, pixelsPerLine_, lines_,
                               format_->getComponentCountExcAlpha());
  return 0;
}

bool CStabilizerProc::enlargeSource(int frame) {
  const bool whole = enlargeInBands([this](int slice) {
    const SRows rows = rowsOfSlice(slice);
    zoom_.convertRows(rows.first, rows.last, source_, output_);
  });
  if (whole) return true;
  fail("CStabilizerProc::DoProcess", FAILED_FRAME,
       "A part of frame " + std::to_string(frame) + " was not enlarged");
  return false;
}

bool CStabilizerProc::enlargeInBands(const std::function<void(int slice)>& work) {
  return zoom_.prepare(*zoomSource_, area_) && sliceThreads_->Run(work);
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
  job.output = output_;
  const int fill = parameters_.MissingDataFill;
  if (FillNeedsPreviousFrame(fill)) job.previous = previous_.get();
  std::copy_n(fill == MISSING_DATA_Black ? black_ : white_, 3, job.fillColor);

  if (fill == MISSING_DATA_Zoom) {
    return enlargeInBands([this, &job](int slice) {
      enlargeRows(job, slice);
      renderOutside(linesOfSlice(slice));
    });
  }
  return sliceThreads_->Run([this, &job](int slice) {
    const SRows rows = rowsOfSlice(slice);
    resampler_->resampleRows(job, rows.first, rows.last);
    renderOutside(linesOfSlice(slice));
  });
}

/// Rows are warped a few at a time, as they are enlarged, and never leave the cache. Those at the
/// ends of a band are warped by its neighbour too.
void CStabilizerProc::enlargeRows(const SResampleJob& job, int slice) {
  SResampleJob few = job;
  few.output = warpedRows_.data() + static_cast<std::size_t>(slice) * warpedRowsOfSlice();
  const auto warped = [this, &few](int first, int count) -> const std::uint16_t* {
    few.outputTop = first;
    resampler_->resampleRows(few, first, first + count - 1);
    return few.output;
  };
  const SRows rows = rowsOfSlice(slice);
  zoom_.convertRows(rows.first, rows.last, warped, output_);
}
