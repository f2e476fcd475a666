#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ToolObj/ToolProcessor.h"
#include "params/StabilizerParameters.h"
#include "render/MissingData.h"
#include "render/Resampler.h"
#include "smoothing/StabilizerShot.h"
#include "support/ZoomFractional.h"

class CSliceThreads;

/// The processor that renders stabilised frames: one iteration is one frame of the range. The
/// anchor frames at both ends keep their source picture, every frame between is resampled through
/// the map of its triangles in horizontal bands on up to 8 threads; what the move uncovers is
/// filled; what lies outside the processing rectangle is never read.
///
/// Its parameters are CStabilizerToolParameters; the shot behind them outlives the processor and is
/// read on the processor's thread while the run state is RUN_RENDERING. The output of a frame does
/// not depend on the number of threads.
/// THREAD: as CToolProcessor.
class CStabilizerProc final : public CToolProcessor {
 public:
  /// A failure that brings no code of its own.
  static constexpr int FAILED_FRAME = -8508;
  static constexpr int MOST_THREADS = 8;

  /// Starts the worker thread. When there is none to be had the status queue says so (an error,
  /// then "thread ended").
  CStabilizerProc(int toolNumber, const std::string& name, CNavSystemInterface* systemInterface,
                  const CAbortFlag* abortFlag, IToolProgressMonitor* progressMonitor);
  ~CStabilizerProc() override;

  /// REQUIRES: the input edge is connected and knows its image format; without one no pass starts.
  void SetIOConfig(const CToolIOConfig& config) override;
  void SetFrameRange(const CToolFrameRange& range) override;
  /// REQUIRES: a CStabilizerToolParameters. The caller keeps it.
  int SetParameters(CToolParameters* parameters) override;
  int BeginProcessing(SIterationRecord& iteration) override;
  int EndProcessing(SIterationRecord& iteration) override;
  int BeginIteration(SIterationRecord& iteration) override;
  int EndIteration(SIterationRecord& iteration) override;
  int DoProcess(SIterationRecord& iteration) override;
  int GetIterationCount() override { return frameCount_; }

 private:
  int fail(const std::string& operation, int code, const std::string& text);
  int readGeometry();
  int prepareFill();
  bool isLastAnchorIn(int frame) const;
  bool isAnchorOut(int frame) const;
  /// True: the frame is whole. False: its error is in `theError`.
  bool StabilizeFrame(int frame);
  bool frameMap(int frame, SWarpMap& map);
  SRows rowsOfSlice(int slice) const;
  SRows linesOfSlice(int slice) const;
  bool resampleInBands(const SWarpMap& map);
  void renderOutside(SRows rows);
  bool enlargeSource(int frame);
  bool enlargeInBands(const std::function<void(int slice)>& work);
  void enlargeRows(const SResampleJob& job, int slice);
  std::size_t warpedRowsOfSlice() const {
    return static_cast<std::size_t>(CZoomFractional::MOST_LINES) * 3 * pixelsPerLine_;
  }

  // Set by the host before a run, or with the parameters.
  std::optional<CImageFormat> format_;
  int firstFrame_ = 0;
  int endFrame_ = 0;
  int frameCount_ = 0;
  int threadCount_ = 1;
  CStabilizerParameters parameters_;
  IStabilizerShot* shot_ = nullptr;
  CZoomFractional zoom_;

  // Of the pass.
  const SResampler* resampler_ = nullptr;
  SRect activePicture_;
  SRect area_;  ///< processing rectangle, inclusive, inside the frame
  int pixelsPerLine_ = 0;
  int lines_ = 0;
  std::uint16_t black_[3] = {0, 0, 0};
  std::uint16_t white_[3] = {0, 0, 0};
  std::optional<SRectD> zoomSource_;
  /// What uncovered pixels show with the fills that look back: mostly the last output, which is on
  /// its way already. Null: nothing yet.
  std::shared_ptr<const std::uint16_t> previous_;
  std::vector<std::uint16_t> warpedRows_;  ///< for each band, rows that are being enlarged
  std::unique_ptr<CSliceThreads> sliceThreads_;

  // Of the frame.
  const std::uint16_t* source_ = nullptr;
  std::uint16_t* output_ = nullptr;
};
