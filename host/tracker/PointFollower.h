#pragma once

#include <cstdint>
#include <vector>

#include "PatchModel.h"
#include "tracker/PatchSearch.h"
#include "tracker/ShotTracker.h"

/// How far a match differs from what the point's own history leads one to expect.
enum class EDoubt {
  none,
  mild,   ///< the patch has changed; not to be learned from
  strong  ///< something else covers a part of it, or it is something else
};

/// What one point's search in one frame has come to.
struct SAttempt {
  ELossReason reason = ELossReason::none;  ///< none: `fit` holds
  SPatchFit fit;
  SPoint2 centre;  ///< of the patch
  EDoubt doubt = EDoubt::none;
  double rivalDistance = 0.0;  ///< of the second best place, when reason is ambiguous
};

/// Follows one point: search, fit, and what it knows of the point's looks. Decides nothing that
/// needs other points.
/// THREAD: one at a time per object; different objects at once.
class CPointFollower {
 public:
  CPointFollower(const STrackSettings& settings, const SPoint2& position);

  /// Cuts the patch out of the first frame. False when it has no texture above `noise` (standard
  /// deviation, code range 0 to 1).
  bool begin(const IPicture& picture, double noise);

  /// Searches the whole range around the last position.
  const SAttempt& search(const IPicture& picture);
  /// Settles an ambiguous search of the same frame: the place next to `predicted` when one fits
  /// there about as well as the best, and no other is as close.
  const SAttempt& settle(const SPoint2& predicted);

  /// Takes the attempt as the point's place; `learn` lets the patch follow its change of looks.
  void accept(bool learn);
  /// Moves the point without having seen it.
  void moveTo(const SPoint2& position);

  SPoint2 position() const;
  /// Movement that the attempt has found, pixels.
  SPoint2 move() const { return {attempt_.centre.x - centre_.x, attempt_.centre.y - centre_.y}; }
  const SAttempt& attempt() const { return attempt_; }
  /// True when the patch with its rounded centre moved there lies inside the region.
  bool isInside(const SPoint2& position, int margin) const;

 private:
  struct SHistory {
    double rest = 0.0;      ///< 1 - correlation^2, usual
    double residual = 0.0;  ///< mean square residual, usual
  };

  bool openWindow(const IPicture& picture);
  SRect validAt(int x, int y) const;
  SPatchFit refineAt(const SPeak& peak);
  SPoint2 centreOf(const SPatchFit& fit) const;
  void judge(const SPatchFit& fit);
  bool hasRival(const SPatchFit& fit, const std::vector<SPeak>& peaks, std::size_t chosen);
  EDoubt doubtOf(const SPatchFit& fit) const;

  const STrackSettings& settings_;
  SPoint2 fraction_;  ///< point minus centre of the patch
  SPoint2 centre_;
  CPatchModel model_;
  CPatchSearch search_;
  SHistory history_;
  float pivot_ = 0.0F;

  // Of the frame that is being searched.
  SRect range_;  ///< centres that are tried, inclusive
  std::vector<std::uint16_t> part_;
  CPlane window_;
  CPlane scratch_;
  SAttempt attempt_;
};
