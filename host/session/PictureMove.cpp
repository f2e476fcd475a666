#include "session/PictureMove.h"

#include <cmath>
#include <numbers>

#include "params/StabilizerParameters.h"

namespace {

using Matrix = std::array<double, 6>;

SPoint2 corner(const CTrackingPoints& triangle, int index) {
  const CTrackPoint& point = triangle.Entries().at(index);
  return {point.x, point.y};
}

/// The affine map that takes every corner of `from` to that of `to`. A triangle without area has
/// none, and was not rendered.
Matrix affineMap(const CTrackingPoints& from, const CTrackingPoints& to) {
  const SPoint2 from0 = corner(from, 0);
  const SPoint2 to0 = corner(to, 0);
  const SPoint2 a{corner(from, 1).x - from0.x, corner(from, 1).y - from0.y};
  const SPoint2 b{corner(from, 2).x - from0.x, corner(from, 2).y - from0.y};
  const SPoint2 p{corner(to, 1).x - to0.x, corner(to, 1).y - to0.y};
  const SPoint2 q{corner(to, 2).x - to0.x, corner(to, 2).y - to0.y};
  const double area = a.x * b.y - b.x * a.y;
  const double xx = (p.x * b.y - q.x * a.y) / area;
  const double xy = (q.x * a.x - p.x * b.x) / area;
  const double yx = (p.y * b.y - q.y * a.y) / area;
  const double yy = (q.y * a.x - p.y * b.x) / area;
  return {xx, xy, to0.x - xx * from0.x - xy * from0.y, yx, yy, to0.y - yx * from0.x - yy * from0.y};
}

Matrix inverse(const Matrix& m) {
  const double area = m[0] * m[4] - m[1] * m[3];
  const double xx = m[4] / area;
  const double xy = -m[1] / area;
  const double yx = -m[3] / area;
  const double yy = m[0] / area;
  return {xx, xy, -(xx * m[2] + xy * m[5]), yx, yy, -(yx * m[2] + yy * m[5])};
}

/// The renderer asks for every output pixel where it comes from. It takes the constants of the
/// solved map, holds the scale at 1, and turns nothing when the rotation is left alone.
Matrix renderedMap(const CTrackingPoints& original, const CTrackingPoints& smoothed, bool turns) {
  Matrix source = affineMap(smoothed, original);
  source[0] = source[4] = 1.0;
  if (!turns) source[1] = source[3] = 0.0;
  return inverse(source);
}

/// Rectangles speak of edges, points of centres.
void enlarge(Matrix& m, const SZoom& zoom) {
  if (zoom.source == SRectD{}) return;
  const double factor = zoom.factor();
  for (double& element : m) element *= factor;
  m[2] += zoom.region.left + (0.5 - zoom.source.left) * factor - 0.5;
  m[5] += zoom.region.top + (0.5 - zoom.source.top) * factor - 0.5;
}

}  // namespace

double SPictureMove::angle() const {
  return std::atan2(matrix[3] - matrix[1], matrix[0] + matrix[4]) * (180.0 / std::numbers::pi);
}

double SPictureMove::scale() const {
  return std::sqrt(matrix[0] * matrix[4] - matrix[1] * matrix[3]);
}

double SZoom::factor() const {
  if (source == SRectD{}) return 1.0;
  return (region.right - region.left + 1) / (source.right - source.left);
}

SMoveSettings MoveSettingsOf(const CPDLEntry& entry) {
  CStabilizerParameters parameters;
  const CPDLElement settings = entry.FirstElement();
  for (int i = 0; i < settings.GetChildCount(); ++i)
    if (settings.GetChild(i).GetName() == "StabilizerParameters")
      parameters.ReadPDLEntry(settings.GetChild(i));
  SMoveSettings move;
  move.anchorsIn = parameters.GoodFramesIn;
  move.anchorsOut = parameters.GoodFramesOut;
  move.turns = parameters.RMode != STABMODE_None;
  move.still = parameters.UFunction == U_Fcn_None;
  move.zooms = parameters.MissingDataFill == MISSING_DATA_Zoom;
  return move;
}

std::vector<SPictureMove> PictureMoves(const CTrackingArray& original,
                                       const CTrackingArray& smoothed,
                                       const SMoveSettings& settings, const SZoom& zoom) {
  std::vector<SPictureMove> moves;
  const int first = original.FirstFrame() + (settings.zooms ? 0 : settings.anchorsIn);
  const int end = original.EndFrame() - settings.anchorsOut;
  for (const auto& [frame, triangle] : original.frames) {
    SPictureMove move;
    move.frame = frame;
    const bool copied = settings.still || frame < first || frame >= end;
    if (!copied) move.matrix = renderedMap(triangle, smoothed.frames.at(frame), settings.turns);
    enlarge(move.matrix, zoom);
    moves.push_back(move);
  }
  return moves;
}
