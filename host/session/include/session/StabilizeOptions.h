#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "clip/ClipReader.h"
#include "session/TrackerText.h"
#include "support/PDLElement.h"
#include "support/Rect.h"
#include "tracker/ShotTracker.h"

/// A request that contradicts itself or the clip; the message names the option.
class CUsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class EStabilize { horizontal, vertical, both, rotation };
enum class EMotion { smooth, remove, match };
enum class EAnchor { first, last, both, none };
enum class EFill { white, black, previous, zoom };
enum class EWarp { euclidean, logarithmic, thinPlate, none };
enum class EMatting { automatic, off, box };

struct SFilePoints;

/// What a person asks for when a shot is to be stabilised. What is not set follows the tool's own
/// defaults (see MakeEntry).
struct SStabilizeOptions {
  // What comes out.
  std::string input;
  std::string output;
  std::optional<int> in;        ///< absolute frame; default: the clip's first
  std::optional<int> out;       ///< one past the last frame; default: the clip's end
  int autoPoints = 16;          ///< how many points to find when none are given
  std::vector<SPoint2> points;  ///< pixels, in the IN frame
  std::string pointsFile;       ///< a points file or trackers' text (.txt), in place of both
  /// What `pointsFile` holds, once it was read (OpenInput).
  std::shared_ptr<const SFilePoints> filePoints;
  ETrackerOrigin trackerOrigin = ETrackerOrigin::topLeft;  ///< of texts read and written
  EStabilize stabilize = EStabilize::both;
  EMotion motion = EMotion::remove;
  std::optional<int> reference;   ///< absolute frame, for EMotion::match
  std::optional<int> smoothing;   ///< 0 to 10
  int jitter = 0;                 ///< 0 to 10
  std::optional<EAnchor> anchor;  ///< default: first
  EFill fill = EFill::white;
  EMatting matting = EMatting::automatic;
  bool mattingGiven = false;    ///< asked for; else that of a points file counts
  SRect mattingBox;             ///< inclusive, for EMatting::box
  std::optional<int> trackBox;  ///< half width, pixels
  std::optional<int> search;    ///< reach, pixels
  EWarp warp = EWarp::euclidean;
  bool overwrite = false;
  bool replacePoints = false;  ///< as overwrite, for savePoints alone
  bool placeOnly = false;      ///< known paths of pointsFile are not taken over, only their start
  /// The tool's settings and points as they were captured before; stands for all that is said of
  /// points, motion and matting above.
  std::shared_ptr<const CPDLEntry> entry;

  // What is said about it.
  std::string report;        ///< JSON file; empty: none
  std::string graph;         ///< SVG file
  std::string compare;       ///< side-by-side clip
  std::string savePoints;    ///< points file, or trackers' text (.txt)
  std::string exportMotion;  ///< .csv or .json
  bool verify = false;
  std::optional<double> maxResidual;  ///< pixels; implies verify

  // How fast.
  int threads = 0;                         ///< 0: the machine's cores
  std::optional<std::size_t> cacheMemory;  ///< default: see CacheMemory
};

/// Bytes that decoded frames may fill between tracking and rendering; when nobody says how many, a
/// quarter of the machine's memory, so that four runs side by side fit.
std::size_t CacheMemory(const SStabilizeOptions& options);

struct SSizeRange {
  int low;
  int high;
};
/// Half widths of the track box, and reaches of the search, that a clip of this size allows.
SSizeRange TrackBoxRange(const SClipInfo& clip);
SSizeRange SearchRange(const SClipInfo& clip);

/// Completes the options for a clip and refuses what does not fit together or to the clip: marks,
/// reference frame, ranges of sizes, anchors, matting box, points outside the picture. With
/// an entry, see TakeEntrySettings. Throws CUsageError.
void CheckAndComplete(SStabilizeOptions& options, const SClipInfo& clip);

/// The process-list entry that the options stand for: the parameter record, and the boxes when a
/// matting box is given. REQUIRES: completed options.
CPDLEntry MakeEntry(const SStabilizeOptions& options);
