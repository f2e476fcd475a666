#include "support/Timecode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "NumberText.h"

namespace {

using Count = std::int64_t;

/// Counting at one rate. Drop-frame skips the first `dropped` numbers of every minute but each
/// tenth (SMPTE ST 12-1).
struct SRate {
  Count fps;
  Count dropped;

  Count perMinute() const { return 60 * fps - dropped; }
  Count perTenMinutes() const { return 10 * perMinute() + dropped; }
  Count perDay() const { return 24 * 6 * perTenMinutes(); }

  /// The number that a clock without drops shows for the label of this frame.
  Count labelOf(Count frame) const {
    const Count tens = frame / perTenMinutes();
    const Count rest = frame % perTenMinutes();
    const Count minutes = rest < 60 * fps ? 0 : 1 + (rest - 60 * fps) / perMinute();
    return frame + dropped * (9 * tens + minutes);
  }
  Count frameOf(Count label) const {
    const Count minutes = label / (60 * fps);
    return label - dropped * (minutes - minutes / 10);
  }
};

bool dropsAt(int framesPerSecond) {
  return framesPerSecond == 30 || framesPerSecond == 60;
}

SRate rateOf(const CTimecode& timecode) {
  const int fps = timecode.framesPerSecond();
  return {fps, timecode.isDropFrame() ? 2 * (fps / 30) : 0};
}

/// Hours, minutes, seconds, frames.
using SFields = std::array<int, 4>;

std::optional<SFields> fieldsOf(std::string_view text) {
  SFields fields{};
  text = WithoutBlanks(text);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (text.empty() || text[0] < '0' || text[0] > '9') return std::nullopt;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), fields[i]);
    if (problem != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (i == fields.size() - 1) break;
    if (text.empty() || (text[0] != ':' && text[0] != ';' && text[0] != '.')) return std::nullopt;
    text.remove_prefix(1);
  }
  if (!text.empty()) return std::nullopt;
  return fields;
}

bool isLabel(const SFields& fields, const SRate& rate) {
  const auto [hours, minutes, seconds, frames] = fields;
  if (hours > 23 || minutes > 59 || seconds > 59 || frames >= rate.fps) return false;
  const bool skipped = minutes % 10 != 0 && seconds == 0 && frames < rate.dropped;
  return !skipped;
}

}  // namespace

CTimecode::CTimecode(int frameCount, int framesPerSecond, bool dropFrame)
    : frameCount_(frameCount),
      framesPerSecond_(std::max(1, framesPerSecond)),
      dropFrame_(dropFrame && dropsAt(framesPerSecond)) {}

std::string CTimecode::toText() const {
  const SRate rate = rateOf(*this);
  const Count frame = (frameCount_ % rate.perDay() + rate.perDay()) % rate.perDay();
  const Count label = rate.labelOf(frame);
  const Count seconds = label / rate.fps;
  char text[64];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", static_cast<int>(seconds / 3600),
                static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                dropFrame_ ? ';' : ':', static_cast<int>(label % rate.fps));
  return text;
}

bool CTimecode::fromText(const std::string& text) {
  const SRate rate = rateOf(*this);
  const std::optional<SFields> fields = fieldsOf(text);
  if (!fields || !isLabel(*fields, rate)) return false;
  const auto [hours, minutes, seconds, frames] = *fields;
  const Count label = ((Count{hours} * 60 + minutes) * 60 + seconds) * rate.fps + frames;
  frameCount_ = static_cast<int>(rate.frameOf(label));
  return true;
}
