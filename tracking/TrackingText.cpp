#include "tracking/TrackingText.h"

#include <charconv>
#include <cmath>
#include <ostream>

#include "tracking/TrackingLimits.h"

namespace {

void Append(std::string& text, int number) {
  char digits[16];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void Append(std::string& text, double number) {
  char digits[32];
  text.append(
      digits,
      std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 6).ptr);
}

bool IsFinite(const CTrackPoint& point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

void Append(std::string& text, const CTrackPoint& point) {
  if (!IsFinite(point)) {
    text += '-';
    return;
  }
  text += '(';
  Append(text, point.x);
  text += ", ";
  Append(text, point.y);
  text += ')';
}

void Append(std::string& text, const CTrackAttribute& attribute) {
  text += '(';
  for (const int field : {attribute.Gr, attribute.SmEn ? 1 : 0, attribute.Sm}) {
    Append(text, field);
    text += ',';
  }
  Append(text, std::isfinite(attribute.Al) ? attribute.Al : CTrackAttribute().Al);
  for (const int field : {attribute.An, attribute.AnIn}) {
    text += ',';
    Append(text, field);
  }
  text += ')';
}

/// Tens begin at the margin: the line ends in front of them when the nine is there.
template <typename TItem>
void AppendItem(std::string& text, int index, const TItem& item) {
  if (index % 10 != 0) text += ' ';
  Append(text, index);
  Append(text, item);
  if (index % 10 == 9) text += '\n';
}

void Append(std::string& text, const CTrackingPoints& points) {
  text += '[';
  for (const auto& [index, point] : points.Entries()) {
    if (point.IsValid() && IsFinite(point)) AppendItem(text, index, point);
  }
  text += ']';
}

void Append(std::string& text, const CTrackingAttributes& attributes) {
  text += '[';
  for (const auto& [index, attribute] : attributes) AppendItem(text, index, attribute);
  text += ']';
}

/// All of it at once and unformatted: neither width nor flags nor locale of the stream have a say.
std::ostream& Write(std::ostream& out, const std::string& text) {
  return out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

template <typename TItem>
std::ostream& Insert(std::ostream& out, const TItem& item) {
  std::string text;
  Append(text, item);
  return Write(out, text);
}

char LetterOf(int trackState) {
  switch (trackState) {
    case TRACK_STATE_Rendered: return 'B';
    case TRACK_STATE_Tracked: return 'G';
    default: return 'R';
  }
}

template <typename TMap>
bool HasStorableIndices(const TMap& map) {
  return map.empty() ||
         (IsStorablePoint(map.begin()->first) && IsStorablePoint(map.rbegin()->first));
}

/// Whether the text of the array can be read again.
bool IsStorable(const CTrackingArray& array) {
  if (!HasStorableIndices(array.attributes)) return false;
  if (array.frames.empty()) return true;
  const int first = array.frames.begin()->first;
  const int last = array.frames.rbegin()->first;
  if (!IsStorableFrame(first) || !IsStorableFrame(last) || !IsStorableSpan(first, last)) {
    return false;
  }
  long long total = 0;
  for (const auto& [frame, points] : array.frames) {
    if (!HasStorableIndices(points.Entries())) return false;
    total += points.ValidCount();
  }
  return total <= LARGEST_POINT_TOTAL;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const CTrackPoint& point) {
  return Insert(out, point);
}

std::ostream& operator<<(std::ostream& out, const CTrackingPoints& points) {
  return Insert(out, points);
}

std::ostream& operator<<(std::ostream& out, const CTrackAttribute& attribute) {
  return Insert(out, attribute);
}

std::ostream& operator<<(std::ostream& out, const CTrackingAttributes& attributes) {
  return Insert(out, attributes);
}

std::ostream& operator<<(std::ostream& out, const CTrackingArray& array) {
  if (!IsStorable(array)) {
    out.setstate(std::ios_base::failbit);
    return out;
  }
  Write(out, "{");
  for (const auto& [frame, points] : array.frames) {
    std::string line;
    Append(line, frame);
    Append(line, points);
    Write(out, line += '\n');
  }
  std::string tail = "}\n";
  Append(tail, array.attributes);
  tail += '\n';
  Append(tail, array.useMatting ? 1 : 0);
  const SRect& box = array.mattingBox;
  for (const int side : {box.left, box.right, box.top, box.bottom}) {
    tail += ' ';
    Append(tail, side);
  }
  tail += '\n';
  tail += LetterOf(array.trackState);
  return Write(out, tail += '\n');
}
