#include "SequencePattern.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <map>
#include <set>

#include "clip/ClipReader.h"

namespace fs = std::filesystem;

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::size_t NameStart(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? 0 : slash + 1;
}

/// A number to fill in, found in a name: [begin, end) and how many digits it asks for.
struct SPlaceholder {
  std::size_t begin = 0;
  std::size_t end = 0;
  int digits = 0;
};

/// "%d", "%4d", "%04d" at `at`; a run of zero length when there is none.
SPlaceholder PercentPlaceholder(const std::string& name, std::size_t at) {
  std::size_t end = at + 1;
  int digits = 0;
  while (end < name.size() && IsDigit(name[end]) && digits < 100)
    digits = digits * 10 + (name[end++] - '0');
  if (end >= name.size() || name[end] != 'd') return {at, at, 0};
  return {at, end + 1, std::max(digits, 1)};
}

std::vector<SPlaceholder> FindPlaceholders(const std::string& name) {
  std::vector<SPlaceholder> found;
  for (std::size_t at = 0; at < name.size();) {
    SPlaceholder here{at, at, 0};
    if (name.compare(at, 2, "%%") == 0) {
      at += 2;
      continue;
    }
    if (name[at] == '%') here = PercentPlaceholder(name, at);
    if (name[at] == '#' || name[at] == '@') {
      while (here.end < name.size() && name[here.end] == name[at]) ++here.end;
      here.digits = static_cast<int>(here.end - here.begin);
    }
    if (here.end > here.begin) found.push_back(here);
    at = std::max(here.end, at + 1);
  }
  return found;
}

std::string UndoublePercent(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    plain += text[i];
    if (text.compare(i, 2, "%%") == 0) ++i;
  }
  return plain;
}

std::string DoublePercent(const std::string& text) {
  std::string doubled;
  for (char c : text) doubled.append(c == '%' ? 2 : 1, c);
  return doubled;
}

/// Where the run of digits that ends the stem begins and ends; empty when there is none, or when it
/// is too long to be a frame number (a date with a time, a serial number).
std::pair<std::size_t, std::size_t> StemNumber(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  const std::size_t end = dot == std::string::npos ? name.size() : dot;
  std::size_t begin = end;
  while (begin > 0 && IsDigit(name[begin - 1])) --begin;
  return end - begin > 9 ? std::pair{end, end} : std::pair{begin, end};
}

SSequencePattern SplitPlainName(const std::string& folder, const std::string& name) {
  const auto [begin, end] = StemNumber(name);
  if (begin == end) {
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    return {folder, name.substr(0, dot), name.substr(dot), 0};
  }
  return {folder, name.substr(0, begin), name.substr(end), static_cast<int>(end - begin)};
}

std::vector<std::string> FileNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator entry(folder.empty() ? "." : folder, error), end;
  for (; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;
    if (!entry->is_directory(ignored)) names.push_back(entry->path().filename().string());
  }
  if (error) throw CClipError(folder + ": " + error.message());
  std::sort(names.begin(), names.end());
  return names;
}

/// The padding of a sequence cannot be read from a number without leading zeros: "0998", "0999",
/// "1000" pads to 4, "998", "999", "1000" to 3 (or less, which is the same). The neighbours tell.
int PaddingOf(const SSequencePattern& given, const std::string& name,
              const std::vector<std::string>& names) {
  if (name[given.prefix.size()] == '0') return given.digits;
  int longestPadded = 0, shortest = given.digits;
  for (const std::string& other : names) {
    const SSequencePattern split = SplitPlainName(given.folder, other);
    if (split.isSingleFile() || split.prefix != given.prefix || split.suffix != given.suffix)
      continue;
    if (split.digits > given.digits) continue;
    if (other[given.prefix.size()] == '0' && split.digits > 1)
      longestPadded = std::max(longestPadded, split.digits);
    else
      shortest = std::min(shortest, split.digits);
  }
  return longestPadded > 0 ? longestPadded : shortest;
}

SSequence CollectFrames(const SSequencePattern& pattern, const std::vector<std::string>& names) {
  SSequence sequence{pattern, {}};
  for (const std::string& name : names) {
    const int frame = pattern.frameOf(name);
    if (frame >= 0) sequence.frames.push_back(frame);
  }
  std::sort(sequence.frames.begin(), sequence.frames.end());
  return sequence;
}

SSequencePattern PatternInFolder(const std::string& path) {
  const std::string folder = path.back() == '/' ? path : path + "/";
  const std::vector<std::string> names = FileNames(folder);
  std::set<std::string> patterns;
  SSequencePattern last;
  for (const std::string& name : names) {
    if (name[0] == '.' || !IsImageExtension(ExtensionOf(name))) continue;
    last = SplitPlainName(folder, name);
    if (!last.isSingleFile()) last.digits = PaddingOf(last, name, names);
    patterns.insert(last.text());
  }
  if (patterns.empty()) throw CClipError(path + ": the folder holds no image sequence");
  if (patterns.size() > 1) {
    std::string list;
    for (const std::string& text : patterns) list += "\n  " + text;
    throw CClipError(path + ": the folder holds several sequences, name one of them:" + list);
  }
  return last;
}

void RefuseHoles(const SSequence& sequence) {
  std::vector<int> missing;
  const std::vector<int>& frames = sequence.frames;
  for (std::size_t i = 1; i < frames.size(); ++i) {
    const int gap = frames[i] - frames[i - 1] - 1;
    if (gap > 1000000)
      throw CClipError(sequence.pattern.text() + ": frames " + std::to_string(frames[i - 1] + 1) +
                       "-" + std::to_string(frames[i] - 1) + " are missing");
    for (int frame = frames[i - 1] + 1; frame < frames[i]; ++frame) missing.push_back(frame);
  }
  if (!missing.empty())
    throw CClipError(sequence.pattern.text() + ": missing frames " + RangesAsText(missing));
}

}  // namespace

std::string SSequencePattern::fileName(int frame) const {
  if (isSingleFile()) return prefix + suffix;
  std::string number = std::to_string(frame);
  if (static_cast<int>(number.size()) < digits) number.insert(0, digits - number.size(), '0');
  return prefix + number + suffix;
}

std::string SSequencePattern::extension() const {
  return ExtensionOf(suffix);
}

std::string SSequencePattern::text() const {
  if (isSingleFile()) return folder + prefix + suffix;
  const std::string field = digits == 1 ? "%d" : "%0" + std::to_string(digits) + "d";
  return folder + DoublePercent(prefix) + field + DoublePercent(suffix);
}

int SSequencePattern::frameOf(const std::string& name) const {
  if (isSingleFile()) return name == prefix + suffix ? 0 : -1;
  if (name.size() <= prefix.size() + suffix.size() || !name.starts_with(prefix) ||
      !name.ends_with(suffix))
    return -1;
  const std::string number =
      name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
  if (!std::all_of(number.begin(), number.end(), IsDigit)) return -1;
  const int length = static_cast<int>(number.size());
  if (length < digits || length > 9 || (length > digits && number[0] == '0')) return -1;
  int frame = -1;
  std::from_chars(number.data(), number.data() + number.size(), frame);
  return frame;
}

bool IsImageExtension(const std::string& extension) {
  static const std::set<std::string> known{"dpx", "tif", "tiff", "png", "exr"};
  return known.contains(extension);
}

std::string ExtensionOf(const std::string& path) {
  const std::size_t start = NameStart(path);
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos || dot < start ? "" : Lower(path.substr(dot + 1));
}

bool HasFramePlaceholder(const std::string& path) {
  return !FindPlaceholders(path.substr(NameStart(path))).empty();
}

SSequencePattern ParseSequencePattern(const std::string& path) {
  const std::size_t start = NameStart(path);
  const std::string folder = path.substr(0, start);
  const std::string name = path.substr(start);
  const std::vector<SPlaceholder> fields = FindPlaceholders(name);
  if (fields.size() > 1) throw CClipError(path + ": more than one frame number in the name");
  if (fields.empty()) return SplitPlainName(folder, name);
  return {folder, UndoublePercent(name.substr(0, fields[0].begin)),
          UndoublePercent(name.substr(fields[0].end)), fields[0].digits};
}

SSequence FindSequence(const std::string& path) {
  if (path.empty()) throw CClipError("no clip named");
  std::error_code error;
  SSequencePattern pattern;
  if (fs::is_directory(path, error)) {
    pattern = PatternInFolder(path);
  } else if (fs::exists(path, error)) {
    const std::size_t start = NameStart(path);
    pattern = SplitPlainName(path.substr(0, start), path.substr(start));
    if (!pattern.isSingleFile())
      pattern.digits = PaddingOf(pattern, path.substr(start), FileNames(pattern.folder));
  } else if (HasFramePlaceholder(path)) {
    pattern = ParseSequencePattern(path);
  } else {
    throw CClipError(path + ": no such file");
  }
  if (pattern.isSingleFile()) return {pattern, {0}};
  SSequence sequence = CollectFrames(pattern, FileNames(pattern.folder));
  if (sequence.frames.empty()) throw CClipError(path + ": no such files");
  RefuseHoles(sequence);
  return sequence;
}

std::string RangesAsText(const std::vector<int>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    if (!text.empty()) text += ", ";
    text += std::to_string(numbers[i]);
    if (last > i) text.append("-").append(std::to_string(numbers[last]));
    i = last + 1;
  }
  return text;
}
