#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/PointHistory.h"
#include "session/ShotSession.h"

/// The mouse's work on the tracking points: places, selects, moves and deletes them on the tool's
/// live data, through the editor that the tool gave to the host, and takes that back. Positions are
/// pixels of the picture.
///
/// Points are placed and moved on the mark IN frame, where tracking begins: the other frames hold
/// what was measured. A changed set is an untracked one, of which the positions of the mark IN
/// frame are left. A set that loses a point stays tracked. Whatever was smoothed from the points
/// before is out of date after every edit, and the tool is told so. While a pass runs or pauses
/// nothing but the selection changes.
///
/// Undo. Every step holds the whole set, with its tracking and the selection: an undo brings back
/// how the points were just before the edit, and a redo how that undo found them, also where they
/// were tracked or loaded in between - a redo gives a set as it stood, never half of one. Box sizes
/// stay as they are. If the marks have moved meanwhile, a set that is tracked at the new mark IN
/// comes back as it was; any other moves there and is to be tracked again, and without a mark OUT
/// only the mark IN frame comes back, as the editor treats moved marks. Points that were cleared by
/// the tool, or went with mark IN, are not brought back: there is nothing to undo then, and the
/// next point that is placed begins anew. See CPointHistory for the limits.
///
/// THREAD: the user-interface thread.
class CPointEditing {
 public:
  /// The session outlives this.
  explicit CPointEditing(CShotSession& session);

  /// The nearest of the points that are drawn in the displayed frame, at most `radius` away, the
  /// upper one of two; -1: none.
  int pointAt(double x, double y, double radius) const;
  /// Why no point can be placed or moved there now, for the operator; empty: it can.
  std::string refusal(double x, double y) const;
  /// Why nothing can be deleted, undone or redone now; empty: it can, if there is anything.
  std::string refusal() const;

  /// Index of the new point, which is the selected one then; -1: refused.
  int place(double x, double y);
  /// These are the points then, the first of them selected, as one step. Places where none can be
  /// tracked are left out. False: refused, or none is left.
  bool replaceAll(const std::vector<SPoint2>& places);
  /// Why points cannot be placed on the displayed frame; empty: they can.
  std::string placingRefusal() const { return frameRefusal(); }
  /// -1: none. An index that names no point changes nothing.
  void select(int index);
  /// A drag, which is one step. False: refused, or no such point in the displayed frame. Nothing
  /// changes before the point moves; one that ends where it began has not moved, and the set is as
  /// tracked as it was.
  bool beginMove(int index);
  /// Where the point shall be; it goes to the nearest place where it can be tracked. Ends the drag
  /// when points can no longer be moved.
  void moveTo(double x, double y);
  void endMove();
  /// Puts the point back.
  void cancelMove();
  bool isMoving() const { return move_.has_value(); }
  /// A move by keys, one step. False: refused, or it could not move.
  bool nudge(int index, double dx, double dy);
  /// From any frame. The numbering closes up; the selection stays with its point, that of the
  /// deleted one goes to the point before it.
  bool remove(int index);

  bool canUndo() const;
  bool canRedo() const;
  /// "Place point", "Move point", "Delete point"; empty: nothing to undo (redo).
  std::string undoText() const;
  std::string redoText() const;
  void undo();
  void redo();
  /// The clip changed: no step belongs to the new one.
  void forget();

 private:
  struct SMove {
    int index = -1;
    SPoint2 from;
    CPointHistory::State before;  ///< null: nothing has moved yet
  };

  CTrackingPointsEditor& editor() const { return *session_.editor(); }
  CTrackingArray& points() const { return *session_.editor()->trackingArray(); }
  bool hasPoints() const { return session_.editor() && session_.editor()->trackingArray(); }
  const CTrackingPoints* pointsAt(int frame) const;
  bool isDrawn(int frame) const;
  std::string frameRefusal() const;
  std::optional<SPoint2> nearestAllowed(double x, double y) const;

  int keepOnlyMarkIn(int followed);
  void finishEdit();
  CPointHistory::State capture() const;
  void install(const SPointsState& state);
  void fitToMarks();
  bool wereCleared() const;

  CShotSession& session_;
  CPointHistory history_;
  std::optional<SMove> move_;
  bool leftPoints_ = false;  ///< the last edit did
};
