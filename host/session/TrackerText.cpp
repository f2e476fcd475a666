#include "session/TrackerText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <stdexcept>

#include "tracking/TrackingLimits.h"

namespace {

constexpr std::string_view BLANKS = " \t\r";
/// Pixels; no picture reaches as far, and less is no position in one.
constexpr double FARTHEST = 1e6;
constexpr std::size_t QUOTED_CHARACTERS = 40;

double turned(double y, const STrackerPicture& picture) {
  return picture.origin == ETrackerOrigin::bottomLeft ? (picture.height - 1) - y : y;
}

template <typename T>
void append(std::string& text, T number) {
  char digits[32];  // the longest double has 24
  text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// For a message: what lies outside printable ASCII is a "?", and a long text is cut.
std::string quoted(std::string_view text) {
  std::string quote(text.substr(0, QUOTED_CHARACTERS));
  std::replace_if(
      quote.begin(), quote.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return "\"" + quote + (text.size() > QUOTED_CHARACTERS ? "...\"" : "\"");
}

class CReader {
 public:
  explicit CReader(const STrackerPicture& picture) : picture_(picture) {}

  void takeLine(std::string_view line);
  CTrackingArray take() { return std::move(array_); }

 private:
  void takePoint(const std::array<std::string_view, 3>& fields);
  int frameOf(std::string_view field) const;
  double numberOf(std::string_view field) const;
  [[noreturn]] void refuse(const std::string& why) const {
    throw std::runtime_error("line " + std::to_string(line_) + ": " + why);
  }

  const STrackerPicture picture_;
  CTrackingArray array_;
  int line_ = 0;
  int point_ = -1;
  int total_ = 0;
  bool inPoint_ = false;  // false: the next position begins a point
};

void CReader::takeLine(std::string_view line) {
  ++line_;
  const std::size_t comment = line.find('#');
  const std::string_view said = line.substr(0, comment);
  std::array<std::string_view, 3> fields;
  std::size_t count = 0;
  for (std::size_t at = said.find_first_not_of(BLANKS); at != std::string_view::npos;) {
    const std::size_t end = std::min(said.find_first_of(BLANKS, at), said.size());
    if (count < fields.size()) fields[count] = said.substr(at, end - at);
    ++count;
    at = said.find_first_not_of(BLANKS, end);
  }
  if (count == fields.size()) return takePoint(fields);
  if (count > 0) refuse("wants \"frame x y\", not " + quoted(said));
  if (comment == std::string_view::npos) inPoint_ = false;
}

void CReader::takePoint(const std::array<std::string_view, 3>& fields) {
  const int frame = frameOf(fields[0]);
  const double x = numberOf(fields[1]);
  const double y = numberOf(fields[2]);
  if (!inPoint_) ++point_;
  inPoint_ = true;
  if (!IsStorablePoint(point_)) refuse("there are too many points");
  if (++total_ > LARGEST_POINT_TOTAL) refuse("there are too many positions");
  if (!array_.frames.empty() && (!IsStorableSpan(array_.FirstFrame(), frame) ||
                                 !IsStorableSpan(frame, array_.EndFrame() - 1)))
    refuse("frame " + std::to_string(frame) + " lies too far from the others");
  CTrackingPoints& points = array_.PointsAt(frame);
  if (points.IsValidPoint(point_))
    refuse("frame " + std::to_string(frame) + " comes twice in point " + std::to_string(point_) +
           "; points are parted by an empty line");
  points.Point(point_) = CTrackPoint(x, turned(y, picture_));
}

int CReader::frameOf(std::string_view field) const {
  int frame = 0;
  const char* end = field.data() + field.size();
  const auto [stop, problem] = std::from_chars(field.data(), end, frame);
  if (problem == std::errc::result_out_of_range) refuse(quoted(field) + " is out of range");
  if (problem != std::errc() || stop != end) refuse(quoted(field) + " is no frame number");
  if (!IsStorableFrame(frame)) refuse("frame " + quoted(field) + " is out of range");
  return frame;
}

double CReader::numberOf(std::string_view field) const {
  double number = 0.0;
  const char* end = field.data() + field.size();
  const auto [stop, problem] = std::from_chars(field.data(), end, number);
  if (problem == std::errc::result_out_of_range) refuse(quoted(field) + " is out of range");
  if (problem != std::errc() || stop != end) refuse(quoted(field) + " is no number");
  if (!(std::abs(number) <= FARTHEST)) refuse(quoted(field) + " is no position in a picture");
  return number;
}

}  // namespace

std::string TrackerText(const CTrackingArray& points, const STrackerPicture& picture) {
  std::map<int, std::string> paths;
  for (const auto& [frame, positions] : points.frames)
    for (const auto& [index, point] : positions.Entries()) {
      if (!point.IsValid()) continue;
      std::string& path = paths[index];
      append(path, frame);
      append(path += ' ', point.x);
      append(path += ' ', turned(point.y, picture));
      path += '\n';
    }
  std::string text;
  for (const auto& [index, path] : paths)
    text += (text.empty() ? "# point " : "\n# point ") + std::to_string(index) + "\n" + path;
  return text;
}

CTrackingArray ReadTrackerText(std::string_view text, const STrackerPicture& picture) {
  CReader reader(picture);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    reader.takeLine(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return reader.take();
}
