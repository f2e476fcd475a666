#include <exception>
#include <istream>

#include "TrackingTextReader.h"
#include "tracking/TrackingLimits.h"
#include "tracking/TrackingText.h"

namespace {

int StateOf(char letter) {
  switch (letter) {
    case 'B': return TRACK_STATE_Rendered;
    case 'G': return TRACK_STATE_Tracked;
    default: return TRACK_STATE_Untracked;
  }
}

/// One text that is being read: its items, and what it has held so far.
struct SReading {
  CTrackingTextReader reader;
  int total = 0;  ///< points of all frames, also those that a later list replaces
};

void Read(SReading& in, CTrackPoint& point) {
  CTrackingTextReader& reader = in.reader;
  double x = 0.0;
  double y = 0.0;
  if (reader.Match('(') && reader.Real(x, "x") && reader.Match(',') && reader.Real(y, "y") &&
      reader.Match(')')) {
    point = CTrackPoint(x, y);
  }
}

void Read(SReading& in, CTrackAttribute& attribute) {
  CTrackingTextReader& reader = in.reader;
  CTrackAttribute& a = attribute;
  a = CTrackAttribute();
  char closing = 0;
  if (reader.Match('(') && reader.Integer(a.Gr, "Gr") && reader.Match(',') &&
      reader.Flag(a.SmEn, "SmEn") && reader.Match(',') && reader.Integer(a.Sm, "Sm") &&
      reader.Match(',') && reader.Real(a.Al, "Al") && reader.Match(',') &&
      reader.Integer(a.An, "An") && reader.Match(',') && reader.Integer(a.AnIn, "AnIn")) {
    reader.Any(closing, "')'");
  }
}

/// Calls `readItem` with every index of a list, where its item stands.
template <typename TReadItem>
void ReadList(CTrackingTextReader& reader, TReadItem readItem) {
  if (!reader.Require('[')) return;
  while (!reader.Failed() && !reader.Accept(']')) {
    int index = 0;
    if (!reader.Integer(index, "point index")) return;
    if (!IsStorablePoint(index)) {
      reader.Refuse("point index " + std::to_string(index) + " is out of range");
      return;
    }
    readItem(index);
  }
}

void Read(SReading& in, CTrackingPoints& points) {
  points = CTrackingPoints();
  ReadList(in.reader, [&](int index) {
    if (++in.total > LARGEST_POINT_TOTAL) {
      in.reader.Refuse("more than " + std::to_string(LARGEST_POINT_TOTAL) + " points");
    } else {
      Read(in, points.Point(index));
    }
  });
}

void Read(SReading& in, CTrackingAttributes& attributes) {
  attributes.clear();
  ReadList(in.reader, [&](int index) { Read(in, attributes[index]); });
}

void ReadFrame(SReading& in, CTrackingArray& array) {
  int frame = 0;
  if (!in.reader.Integer(frame, "frame index")) return;
  if (!IsStorableFrame(frame)) {
    in.reader.Refuse("frame index " + std::to_string(frame) + " is out of range");
    return;
  }
  CTrackingPoints& points = array.PointsAt(frame);
  if (!IsStorableSpan(array.frames.begin()->first, array.frames.rbegin()->first)) {
    in.reader.Refuse("frame " + std::to_string(frame) + " makes the set longer than " +
                     std::to_string(LARGEST_FRAME_SPAN) + " frames");
    return;
  }
  Read(in, points);
}

void Read(SReading& in, CTrackingArray& array) {
  CTrackingTextReader& reader = in.reader;
  array.Clear();
  if (!reader.Require('{')) return;
  while (!reader.Failed() && !reader.Accept('}')) ReadFrame(in, array);
  Read(in, array.attributes);
  SRect& box = array.mattingBox;
  char letter = 0;
  if (reader.Flag(array.useMatting, "use-matting flag") &&
      reader.Integer(box.left, "matting box's left") &&
      reader.Integer(box.right, "matting box's right") &&
      reader.Integer(box.top, "matting box's top") &&
      reader.Integer(box.bottom, "matting box's bottom") && reader.Any(letter, "state letter")) {
    array.trackState = StateOf(letter);
  }
}

/// `reason` is empty when everything was read.
template <typename TItem>
std::istream& Extract(std::istream& stream, TItem& item, std::string& reason) {
  reason = "the stream had failed before";
  const std::istream::sentry ready(stream, true);
  if (!ready) return stream;
  SReading in{CTrackingTextReader(*stream.rdbuf())};
  try {
    Read(in, item);
  } catch (const std::exception& problem) {
    // The stream's source failed: a folder opens like a file, but cannot be read.
    in.reader.Refuse(problem.what(), std::ios_base::badbit);
  }
  reason = in.reader.Reason();
  stream.setstate(in.reader.State());
  return stream;
}

template <typename TItem>
std::istream& Extract(std::istream& stream, TItem& item) {
  std::string reason;
  return Extract(stream, item, reason);
}

}  // namespace

std::istream& operator>>(std::istream& in, CTrackPoint& point) {
  return Extract(in, point);
}

std::istream& operator>>(std::istream& in, CTrackingPoints& points) {
  return Extract(in, points);
}

std::istream& operator>>(std::istream& in, CTrackAttribute& attribute) {
  return Extract(in, attribute);
}

std::istream& operator>>(std::istream& in, CTrackingAttributes& attributes) {
  return Extract(in, attributes);
}

std::istream& operator>>(std::istream& in, CTrackingArray& array) {
  return Extract(in, array);
}

bool ReadTrackingArray(std::istream& in, CTrackingArray& array, std::string& reason) {
  Extract(in, array, reason);
  return reason.empty();
}
