#pragma once

#include <memory>
#include <string>

#include "session/PreparedShot.h"
#include "session/StabilizeOptions.h"
#include "tracking/TrackingArray.h"

/// The points of a file, before a tool sees them.
struct SFilePoints {
  std::string path;
  bool isText = false;    ///< trackers' text; else a points file
  CTrackingArray points;  ///< every entry valid
  int count = 0;          ///< points that lie in at least one frame

  /// Whether every point lies in every frame of [in, out).
  bool areWholeOver(int in, int out) const;
  /// Whether the paths over [in, out) are known, so that nothing is left to track. A text is what
  /// its lines are, and may reach beyond the marks; a points file says whether it is tracked, and
  /// its frames must be those of the marks.
  bool areTrackedOver(int in, int out) const;
  /// Over all of its own frames.
  bool areTracked() const { return areTrackedOver(points.FirstFrame(), points.EndFrame()); }
};

/// Reads `options.pointsFile`. Throws std::runtime_error that names the file, and the line and the
/// reason, when it cannot be read, exceeds 256 MiB, is no such file or holds no points.
std::shared_ptr<const SFilePoints> ReadPointsFile(const SStabilizeOptions& options,
                                                  const CImageFormat& format);

/// Where neither mark is given: those of tracked points that lie inside the clip.
void TakeMarksOfPoints(SStabilizeOptions& options, const SClipInfo& clip);

/// Brings the options' file points onto the shot's tool, a points file by the tool's own key, and
/// sets what follows from them: region, features, and whether the shot is tracked. Known paths are
/// taken over as they are. Others are placed in the IN frame, to be tracked from there: where a
/// text has them in that frame, else where the file has them in its first. A matting box that was
/// not asked for is the points file's. Throws std::runtime_error that names file and point where a
/// point or the box does not fit the picture, CJobError, CInterrupted.
void LoadPoints(SPreparedShot& shot, const SStabilizeOptions& options,
                const SJobObserver& observer);
