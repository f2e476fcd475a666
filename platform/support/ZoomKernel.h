#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "ZoomLine.h"

/// Rows of the target that are made in one go: each is made of ZOOM_TAPS filtered lines, one
/// further down than those of the row above it.
struct SZoomRows {
  static constexpr int MOST = 4;
  int rows = 0;   ///< 1 or MOST
  int count = 0;  ///< values of a row
  /// Padded as filterLines leaves them.
  std::array<const float*, MOST + ZOOM_TAPS - 1> lines{};
  std::array<std::array<float, ZOOM_TAPS>, MOST> weights{};
  std::array<std::uint16_t*, MOST> output{};
};

/// One way to compute both halves of the filter; all give the same bits. Each value is limited to
/// the range of what it was made of.
struct SZoomKernel {
  static constexpr int MOST_LINES = 4;
  const char* name;  ///< support/Kernels.h
  bool usesBlocks;   ///< wants SZoomLineFilter::blocks
  /// 1 to MOST_LINES lines, of which `source` is the first one's sample at the filter's first
  /// column; nothing is read beyond the last column's. Each target has room for ZOOM_LINE_PADDING
  /// values behind its own. `scratch` is kept from call to call.
  void (*filterLines)(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                      std::vector<float>& scratch, float* const* targets);
  /// Each row's weighted sum of its lines, limited to their range and rounded.
  void (*combineRows)(const SZoomRows& rows);
};

/// One for each kernel of the machine's kind, best first, usable or not. The last one is for any
/// machine.
std::span<const SZoomKernel> AllZoomKernels();
/// That of TheKernel, or the one for any machine.
const SZoomKernel& TheZoomKernel();

/// For filters of any width, on any machine.
void FilterZoomLines(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                     std::vector<float>& scratch, float* const* targets);
/// One row.
void CombineZoomLines(const float* const* lines, const float* weights, int taps, int count,
                      std::uint16_t* output);

// The compiler of the fuzzers, clang, knows no instruction set for a part of a file.
#if defined(__x86_64__) && !defined(__clang__)
#define STAB_ZOOM_X86
/// REQUIRE: the instruction set is there.
void FilterZoomLinesAvx2(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                         std::vector<float>& scratch, float* const* targets);
void CombineZoomRowsAvx2(const SZoomRows& rows);
void FilterZoomLinesAvx512(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                           std::vector<float>& scratch, float* const* targets);
void CombineZoomRowsAvx512(const SZoomRows& rows);
#endif
