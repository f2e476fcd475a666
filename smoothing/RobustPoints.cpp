#include "smoothing/RobustPoints.h"

#include <algorithm>
#include <locale>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "SmoothingErrors.h"
#include "smoothing/LinearAlgebra.h"
#include "support/ErrorReport.h"
#include "support/Numerics.h"
#include "support/Trace.h"

namespace {

constexpr double FIT_TOLERANCE = 0.001;
/// Where the second robust point lies in the reference frame, pixels from the first.
constexpr double LEVER = 100.0;
constexpr int WARNING_LEVEL = 1;
constexpr int DETAIL_LEVEL = 3;

/// Sends a line made of its parts, if anybody reads that level.
template <typename... TParts>
void TraceLine(int level, const TParts&... parts) {
  if (!TracesAt(level)) return;
  std::ostringstream line;
  line.imbue(std::locale::classic());
  (line << ... << parts);
  TraceAt(level, line.str());
}

/// One point in the frame at hand and in the reference frame.
struct SPair {
  int index;
  CTrackPoint point;
  CTrackPoint reference;
};

std::vector<SPair> PairsOf(const CTrackingArray& tracked, int frame, int referenceFrame) {
  std::vector<SPair> pairs;
  if (!tracked.HasFrame(frame) || !tracked.HasFrame(referenceFrame)) return pairs;
  const auto& references = tracked.FindPoints(referenceFrame).Entries();
  auto reference = references.begin();
  for (const auto& [index, point] : tracked.FindPoints(frame).Entries()) {
    while (reference != references.end() && reference->first < index) ++reference;
    if (reference == references.end()) break;
    if (!point.IsValid() || reference->first != index || !reference->second.IsValid()) continue;
    pairs.push_back({index, point, reference->second});
  }
  return pairs;
}

/// The library's fit on row vectors.
bool robust(const mvector<double>& b, const matrix<double>& a, double tolerance,
            mvector<double>& x) {
  std::vector<double> rows;
  rows.reserve(static_cast<std::size_t>(a.rows()) * a.cols());
  for (int i = 0; i < a.rows(); ++i) {
    rows.insert(rows.end(), a[i].data(), a[i].data() + a.cols());
  }
  return ::robust(std::span(b.data(), b.size()), rows, tolerance, std::span(x.data(), x.size()));
}

/// The coefficients that move the reference points onto the frame's: (tx, ty) or (tx, ty, theta).
bool Fit(const std::vector<SPair>& pairs, mvector<double>& coefficients) {
  const int m = static_cast<int>(pairs.size());
  const bool rotation = coefficients.size() == 3;
  mvector<double> b(2 * m);
  matrix<double> a(2 * m, coefficients.size());
  for (int i = 0; i < m; ++i) {
    const auto& [index, point, reference] = pairs[i];
    b[i] = point.x - reference.x;
    b[i + m] = point.y - reference.y;
    TraceLine(DETAIL_LEVEL, "IN[", index, "] = (", b[i], ",", b[i + m], ")");
    a[i].Zero();
    a[i + m].Zero();
    a[i][0] = 1.0;
    a[i + m][1] = 1.0;
    if (!rotation) continue;
    a[i][2] = -reference.y;
    a[i + m][2] = reference.x;
  }
  return robust(b, a, FIT_TOLERANCE, coefficients);
}

int WithinRange(const CTrackingArray& tracked, int frame) {
  return std::clamp(frame, tracked.FirstFrame(), std::max(tracked.EndFrame() - 1, 0));
}

/// Fits one frame; `coefficients` stay 0 in the reference frame.
bool Regress(const CTrackingArray& tracked, int frame, int referenceFrame,
             mvector<double>& coefficients) {
  coefficients.Zero();
  referenceFrame = WithinRange(tracked, referenceFrame);
  TraceLine(DETAIL_LEVEL, "=== FRAME ", frame, " ====");
  if (frame == referenceFrame) return true;
  const bool converged = Fit(PairsOf(tracked, frame, referenceFrame), coefficients);
  if (!converged) {
    TraceLine(WARNING_LEVEL, "WARNING: Check frame ", frame,
              " -- regression did not reach convergence");
  }
  if (coefficients.size() == 3) {
    TraceLine(DETAIL_LEVEL, "OUT = (", coefficients[0], ",", coefficients[1], ",", coefficients[2],
              ")");
  } else {
    TraceLine(DETAIL_LEVEL, "OUT = (", coefficients[0], ",", coefficients[1], ")");
  }
  return converged;
}

/// A frame without both points gets no midpoint, and smoothing says so.
void TakeMidpoints(SMotionArrays& motion) {
  for (const auto& [frame, points] : motion.tracked.frames) {
    if (!points.IsValidPoint(0) || !points.IsValidPoint(1)) continue;
    const CTrackPoint& a = points.Entries().at(0);
    const CTrackPoint& b = points.Entries().at(1);
    motion.original.PointsAt(frame).Point(0) = CTrackPoint((a.x + b.x) * 0.5, (a.y + b.y) * 0.5);
  }
}

}  // namespace

bool RegressTranslation(SMotionArrays& motion, int frame, int referenceFrame) {
  mvector<double> coefficients(2);
  const bool converged = Regress(motion.tracked, frame, referenceFrame, coefficients);
  motion.original.PointsAt(frame).Point(0) = CTrackPoint(coefficients[0], coefficients[1]);
  return converged;
}

bool RegressTranslationRotation(SMotionArrays& motion, int frame, int referenceFrame) {
  mvector<double> coefficients(3);
  const bool converged = Regress(motion.tracked, frame, referenceFrame, coefficients);
  const CTrackPoint origin(coefficients[0], coefficients[1]);
  const CTrackPoint lever(origin.x + LEVER, origin.y + LEVER * coefficients[2]);
  CTrackingPoints& points = motion.original.PointsAt(frame);
  points.Point(0) = origin;
  points.Point(1) = lever;
  TraceLine(DETAIL_LEVEL, "0: (", origin.x, ",", origin.y, ")");
  TraceLine(DETAIL_LEVEL, "1: (", lever.x, ",", lever.y, ")");
  return converged;
}

bool ComputeRobustPoints(IStabilizerShot& shot, SMotionArrays& motion, int referenceFrame,
                         int rMode) {
  CTrackingArray& tracked = motion.tracked;
  tracked.Compact();
  const int count = tracked.NumberOfPoints();
  if (count < 1) return false;
  const bool rotation = rMode != STABMODE_None;
  if (count == 1 || (count == 2 && rotation)) {
    motion.original = tracked;
    return true;
  }
  if (count == 2) {
    TakeMidpoints(motion);
    return true;
  }
  shot.setStatusMessage("Initializing...");
  shot.setTimeMessage("");
  const int reference = WithinRange(tracked, referenceFrame);
  if (!tracked.HasFrame(reference) || tracked.FindPoints(reference).ValidCount() == 0) {
    theError.set(SMOOTHING_POINT_MISSING, SMOOTHING_POINT_MISSING_TEXT);
    return false;
  }
  for (int frame = tracked.FirstFrame(); frame < tracked.EndFrame(); ++frame) {
    if (rotation) {
      RegressTranslationRotation(motion, frame, reference);
    } else {
      RegressTranslation(motion, frame, reference);
    }
  }
  return true;
}
