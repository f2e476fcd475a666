#include "session/PointsJob.h"

#include <utility>

#include "session/PointsOutput.h"
#include "session/PreparedShot.h"

SStabilizeResult SavePointsOfShot(const SStabilizeOptions& options, bool track,
                                  const SJobObserver& observer) {
  SStabilizeResult result;
  result.options = options;
  std::unique_ptr<IClipReader> reader = OpenInput(result.options);
  CheckPointsOutput(result.options);
  result.clip = reader->info();
  SPreparedShot shot = PrepareShot(std::move(reader), result.options, observer);
  result.pluginVersion = shot.tool->pluginVersion();
  result.region = shot.region;
  result.features = std::move(shot.features);
  if (track && !shot.tracked) shot.tool->command(TOOL_TRACK);
  SavePoints(*shot.tool, result.options);
  result.tracking = shot.tool->session().tracking();
  result.trackSeconds = result.tracking.seconds;
  return result;
}
