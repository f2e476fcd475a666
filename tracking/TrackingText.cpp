// Stand-in until the branch that owns the text form is merged; plain on purpose.
#include "tracking/TrackingText.h"

namespace {

bool take(std::istream& in, char wanted) {
  char c = 0;
  if (!(in >> c)) return false;
  if (c == wanted) return true;
  in.setstate(std::ios::badbit);
  return false;
}

/// True while another item follows; false at the closing bracket or on failure.
bool more(std::istream& in, char closing) {
  char c = 0;
  if (!(in >> c)) return false;
  if (c == closing) return false;
  in.putback(c);
  return true;
}

void readPoints(std::istream& in, CTrackingPoints& points) {
  if (!take(in, '[')) return;
  while (more(in, ']')) {
    int index = 0;
    double x = 0, y = 0;
    in >> index;
    if (!take(in, '(') || !(in >> x) || !take(in, ',') || !(in >> y) || !take(in, ')')) return;
    points.Point(index) = CTrackPoint(x, y);
  }
}

void readAttributes(std::istream& in, CTrackingAttributes& attributes) {
  if (!take(in, '[')) return;
  while (more(in, ']')) {
    int index = 0;
    char comma = 0;
    CTrackAttribute a;
    in >> index;
    if (!take(in, '(')) return;
    in >> a.Gr >> comma >> a.SmEn >> comma >> a.Sm >> comma >> a.Al >> comma >> a.An >> comma >>
        a.AnIn >> comma;
    attributes[index] = a;
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const CTrackingArray& array) {
  out << '{';
  for (const auto& [frame, points] : array.frames) {
    out << frame << '[';
    for (const auto& [i, p] : points.Entries()) {
      if (!p.IsValid()) continue;
      out << (i % 10 == 0 ? "" : " ") << i << '(' << p.x << ", " << p.y << ')';
      if (i % 10 == 9) out << '\n';
    }
    out << "]\n";
  }
  out << "}\n[";
  for (const auto& [i, a] : array.attributes) {
    out << (i % 10 == 0 ? "" : " ") << i << '(' << a.Gr << ',' << a.SmEn << ',' << a.Sm << ','
        << a.Al << ',' << a.An << ',' << a.AnIn << ')';
    if (i % 10 == 9) out << '\n';
  }
  const SRect& box = array.mattingBox;
  out << "]\n"
      << array.useMatting << ' ' << box.left << ' ' << box.right << ' ' << box.top << ' '
      << box.bottom << '\n';
  return out << (array.trackState == 2 ? 'B' : array.trackState == 1 ? 'G' : 'R') << '\n';
}

std::istream& operator>>(std::istream& in, CTrackingArray& array) {
  array.Clear();
  if (!take(in, '{')) return in;
  while (more(in, '}')) {
    int frame = 0;
    if (in >> frame) readPoints(in, array.PointsAt(frame));
  }
  if (in) readAttributes(in, array.attributes);
  SRect& box = array.mattingBox;
  in >> array.useMatting >> box.left >> box.right >> box.top >> box.bottom;
  char state = 0;
  in >> state;
  array.trackState = state == 'B' ? 2 : state == 'G' ? 1 : 0;
  return in;
}

bool ReadTrackingArray(std::istream& in, CTrackingArray& array, std::string& reason) {
  if (in >> array) return true;
  reason = "this is no tracking points file, or a part of one";
  return false;
}
