#include "session/MotionMeasure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>

#include "support/Numerics.h"

namespace {

constexpr double DEGREES = 180.0 / std::numbers::pi;
constexpr double FIT_TOLERANCE = 1e-4;  // pixels

struct SPairs {
  std::vector<SPoint2> from;  // in the first frame, against the centre
  std::vector<SPoint2> to;
};

SPairs pairsOf(const CTrackingPoints& first, const CTrackingPoints& points, const SPoint2& centre) {
  SPairs pairs;
  for (const auto& [index, point] : points.Entries()) {
    if (!point.IsValid() || !first.IsValidPoint(index)) continue;
    const CTrackPoint& reference = first.Entries().at(index);
    pairs.from.push_back({reference.x - centre.x, reference.y - centre.y});
    pairs.to.push_back({point.x - centre.x, point.y - centre.y});
  }
  return pairs;
}

/// Small rotation: the columns are those of the derivative of R(angle) at 0.
SFrameMotion fit(int frame, const SPairs& pairs) {
  const std::size_t n = pairs.from.size();
  const std::size_t columns = n > 1 ? 3 : 2;
  std::vector<double> a(2 * n * columns, 0.0);
  std::vector<double> b(2 * n);
  for (std::size_t i = 0; i < n; ++i) {
    double* rowX = &a[i * columns];
    double* rowY = &a[(i + n) * columns];
    rowX[0] = 1.0;
    rowY[1] = 1.0;
    if (columns == 3) {
      rowX[2] = -pairs.from[i].y;
      rowY[2] = pairs.from[i].x;
    }
    b[i] = pairs.to[i].x - pairs.from[i].x;
    b[i + n] = pairs.to[i].y - pairs.from[i].y;
  }
  std::array<double, 3> x{};
  robust(b, a, FIT_TOLERANCE, std::span<double>(x.data(), columns));
  return {frame, x[0], x[1], x[2] * DEGREES};
}

double rms(double sumOfSquares, std::size_t count) {
  return count == 0 ? 0.0 : std::sqrt(sumOfSquares / static_cast<double>(count));
}

}  // namespace

SPoint2 CentreOf(const CImageFormat& format) {
  return {(format.getPixelsPerLine() - 1) * 0.5, (format.getLinesPerFrame() - 1) * 0.5};
}

std::vector<SFrameMotion> FitMotion(const CTrackingArray& array, const SPoint2& centre) {
  std::vector<SFrameMotion> motion;
  if (array.frames.empty()) return motion;
  const CTrackingPoints& first = array.frames.begin()->second;
  for (const auto& [frame, points] : array.frames)
    motion.push_back(fit(frame, pairsOf(first, points, centre)));
  return motion;
}

int MostTypicalPoint(const CTrackingArray& array, const std::vector<SFrameMotion>& motion,
                     const SPoint2& centre) {
  if (array.frames.empty()) return -1;
  const CTrackingPoints& first = array.frames.begin()->second;
  std::map<int, double> distance;
  auto shared = motion.begin();
  for (const auto& [frame, points] : array.frames) {
    const double turn = shared->angle / DEGREES;
    for (const auto& [index, point] : points.Entries()) {
      const CTrackPoint& start = first.Entries().at(index);
      const double x = start.x - turn * (start.y - centre.y) + shared->x;
      const double y = start.y + turn * (start.x - centre.x) + shared->y;
      distance[index] += std::hypot(point.x - x, point.y - y);
    }
    ++shared;
  }
  const auto nearest =
      std::min_element(distance.begin(), distance.end(),
                       [](const auto& a, const auto& b) { return a.second < b.second; });
  return nearest == distance.end() ? -1 : nearest->first;
}

std::vector<SFrameMotion> MotionOfTriangles(const CTrackingArray& triangles,
                                            const SPoint2& centre) {
  std::vector<SFrameMotion> motion;
  SPoint2 firstOrigin;
  double firstAngle = 0.0;
  for (const auto& [frame, points] : triangles.frames) {
    if (!points.IsValidPoint(0) || !points.IsValidPoint(1)) continue;
    const CTrackPoint& origin = points.Entries().at(0);
    const CTrackPoint& second = points.Entries().at(1);
    const double angle = std::atan2(second.y - origin.y, second.x - origin.x);
    if (motion.empty()) {
      firstOrigin = {origin.x, origin.y};
      firstAngle = angle;
    }
    const double turn = std::remainder(angle - firstAngle, 2.0 * std::numbers::pi);
    const SPoint2 arm{centre.x - firstOrigin.x, centre.y - firstOrigin.y};
    const double x = origin.x + std::cos(turn) * arm.x - std::sin(turn) * arm.y;
    const double y = origin.y + std::sin(turn) * arm.x + std::cos(turn) * arm.y;
    motion.push_back({frame, x - centre.x, y - centre.y, turn * DEGREES});
  }
  return motion;
}

std::vector<SDeviation> Deviations(const std::vector<SFrameMotion>& path,
                                   const std::vector<SFrameMotion>& meant) {
  std::vector<SDeviation> deviations;
  SDeviation mean;
  const std::size_t count = std::min(path.size(), meant.size());
  for (std::size_t i = 0; i < count; ++i) {
    deviations.push_back({path[i].frame, path[i].x - meant[i].x, path[i].y - meant[i].y,
                          path[i].angle - meant[i].angle});
    mean.x += deviations.back().x / static_cast<double>(count);
    mean.y += deviations.back().y / static_cast<double>(count);
    mean.angle += deviations.back().angle / static_cast<double>(count);
  }
  for (SDeviation& deviation : deviations) {
    deviation.x -= mean.x;
    deviation.y -= mean.y;
    deviation.angle -= mean.angle;
  }
  return deviations;
}

SSteadiness Steadiness(const std::vector<SDeviation>& deviations) {
  SSteadiness steadiness;
  double sumX = 0.0;
  double sumY = 0.0;
  double sumAngle = 0.0;
  for (const SDeviation& deviation : deviations) {
    sumX += deviation.x * deviation.x;
    sumY += deviation.y * deviation.y;
    sumAngle += deviation.angle * deviation.angle;
    steadiness.peakWeave = std::max(steadiness.peakWeave, std::abs(deviation.x));
    steadiness.peakJump = std::max(steadiness.peakJump, std::abs(deviation.y));
    steadiness.peakRotation = std::max(steadiness.peakRotation, std::abs(deviation.angle));
  }
  steadiness.weave = rms(sumX, deviations.size());
  steadiness.jump = rms(sumY, deviations.size());
  steadiness.rotation = rms(sumAngle, deviations.size());
  return steadiness;
}

std::vector<SDeviation> WorstFrames(std::vector<SDeviation> deviations, int count) {
  std::stable_sort(deviations.begin(), deviations.end(),
                   [](const SDeviation& a, const SDeviation& b) {
                     return std::hypot(a.x, a.y) > std::hypot(b.x, b.y);
                   });
  deviations.resize(std::min(deviations.size(), static_cast<std::size_t>(std::max(0, count))));
  return deviations;
}
