#include "render/StabilizerProc.h"

#include <algorithm>
#include <cstring>

#include "SliceThreads.h"
#include "render/StabilizerToolParameters.h"
#include "support/ErrorReport.h"
#include "support/Numerics.h"
#include "support/Threads.h"
#include "support/Trace.h"

namespace {

constexpr int NO_THREAD = -8507;

SRect processingRectangle(const CStabilizerParameters& parameters, IStabilizerShot& shot,
                          const SRect& activePicture) {
  return parameters.UseMatting ? shot.mattingBox() : activePicture;
}

}  // namespace

CStabilizerProc::CStabilizerProc(int toolNumber, const std::string& name,
                                 CNavSystemInterface* systemInterface, const CAbortFlag* abortFlag,
                                 IToolProgressMonitor* progressMonitor)
    : CToolProcessor(toolNumber, name, 1, 1, systemInterface, abortFlag, progressMonitor),
      zoom_(2),
      sliceThreads_(std::make_unique<CSliceThreads>()) {
  setRandSeed(static_cast<std::uint64_t>(qtxGetUST()));
  // Last: from here on the worker calls the virtual operations of a finished object.
  if (CToolProcessor::StartProcessThread() != 0) {
    fail("CStabilizerProc::CStabilizerProc", NO_THREAD, "Can't spawn thread");
    postStatus({CAutotoolStatus::ERROR_STATUS, NO_THREAD, -1, -1});
    postStatus({CAutotoolStatus::THREAD_ENDED, 0, -1, -1});
  }
}

CStabilizerProc::~CStabilizerProc() = default;

int CStabilizerProc::fail(const std::string& operation, int code, const std::string& text) {
  CAutoErrorReporter(operation).set(code, text);
  return code;
}

void CStabilizerProc::SetIOConfig(const CToolIOConfig& config) {
  threadCount_ = std::clamp(config.threadCount, 1, MOST_THREADS);
  inputPorts()[0].frameCount = 1;
  SOutPort& out = outputPorts()[0];
  out.frameCount = 1;
  out.passThrough = false;
  const CToolEdge* edge = node().input(0);
  if (edge && edge->imageFormat()) {
    format_ = *edge->imageFormat();
    out.imageFormat = std::make_unique<CImageFormat>(*format_);
  }
}

void CStabilizerProc::SetFrameRange(const CToolFrameRange& range) {
  firstFrame_ = range.inputs.at(0).firstFrame;
  endFrame_ = range.inputs.at(0).endFrame;
}

int CStabilizerProc::SetParameters(CToolParameters* parameters) {
  const std::string operation = "CStabilizerProc::SetParameters";
  const auto* own = dynamic_cast<const CStabilizerToolParameters*>(parameters);
  if (!own) return fail(operation, FAILED_FRAME, "INTERNAL ERROR: Not the stabilizer's parameters");
  if (!format_) return fail(operation, FAILED_FRAME, "The source has no image format");
  parameters_ = own->parameters;
  shot_ = own->shot;
  zoom_.initialize(*format_, 2, 2, 128, 128, 128);
  SelectRadialBasis(parameters_.UFunction);
  frameCount_ = endFrame_ - firstFrame_;
  return 0;
}

int CStabilizerProc::BeginProcessing(SIterationRecord&) {
  const std::string operation = "CStabilizerProc::BeginProcessing";
  if (!shot_) return fail(operation, FAILED_FRAME, "INTERNAL ERROR: No parameters were set");
  resampler_ = TheResampler();
  if (!resampler_) return fail(operation, theError.getError(), theError.getMessage());

  shot_->setRunState(RUN_RENDERING);
  if (const int code = readGeometry(); code != 0) return code;
  previous_.reset();
  zoomSource_.reset();
  if (const int code = prepareFill(); code != 0) return code;
  sliceThreads_->Start(threadCount_);

  if (IToolProgressMonitor* monitor = progressMonitor()) {
    monitor->SetFrameCount(frameCount_, 1);
    monitor->SetStatusMessage("Stabilizing");
    monitor->StartProgress();
  }
  return 0;
}

int CStabilizerProc::readGeometry() {
  pixelsPerLine_ = format_->getPixelsPerLine();
  lines_ = format_->getLinesPerFrame();
  format_->getComponentValueBlack(black_);
  format_->getComponentValueWhite(white_);
  activePicture_ = format_->getActivePictureRect();
  // A box that was drawn for another clip may be larger than the frame.
  area_ = ClampedToFrame(processingRectangle(parameters_, *shot_, activePicture_), pixelsPerLine_,
                         lines_);
  if (area_.right < area_.left || area_.bottom < area_.top) {
    return fail("CStabilizerProc::BeginProcessing", FAILED_FRAME,
                "The processing region lies outside the frame");
  }
  return 0;
}

/// Makes what the selected fill needs and what is not there yet: parameters may change in mid-pass.
int CStabilizerProc::prepareFill() {
  if (parameters_.MissingDataFill != MISSING_DATA_Zoom) return 0;
  warpedRows_.resize(CSliceThreads::MOST_SLICES * warpedRowsOfSlice());
  if (zoomSource_) return 0;
  const CTrackingArray& smoothed = shot_->syntheticSmoothedArray();
  zoomSource_ = ZoomSourceRectangle(area_, shot_->trackedArray().Trajectory(shot_->selectedPoint()),
                                    smoothed.Trajectory(0), smoothed.Trajectory(1));
  if (IsEmpty(*zoomSource_)) {
    return fail("CStabilizerProc::BeginProcessing", FAILED_FRAME,
                "Zoom: the motion leaves no picture area that all frames have in common");
  }
  return 0;
}

int CStabilizerProc::EndProcessing(SIterationRecord& iteration) {
  sliceThreads_->Stop();
  previous_.reset();
  warpedRows_ = {};
  if (zoomSource_) shot_->setZoomSource(*zoomSource_);
  const bool complete = iteration.index >= frameCount_;
  if (*LastResamplerKernel()) TraceAt(1, std::string("Resampled by ") + LastResamplerKernel());
  if (complete) shot_->setRendered();
  if (IToolProgressMonitor* monitor = progressMonitor()) {
    monitor->SetStatusMessage(complete ? "Stabilization complete" : "Stopped");
    monitor->StopProgress(complete);
  }
  return 0;
}

int CStabilizerProc::BeginIteration(SIterationRecord& iteration) {
  const int frame = firstFrame_ + iteration.index;
  SInPort& in = inputPorts()[0];
  in.neededFrames = {frame};
  if (iteration.index == 0 && frameCount_ > 1) in.neededFrames.push_back(frame + 1);
  in.releasedFrames = {frame};
  outputPorts()[0].frames = {frame};
  return 0;
}

int CStabilizerProc::EndIteration(SIterationRecord& iteration) {
  shot_->frameRendered(firstFrame_ + iteration.index);
  if (IToolProgressMonitor* monitor = progressMonitor()) monitor->BumpProgress(1);
  return 0;
}
