#include "VideoIndex.h"

#include <algorithm>

namespace {

bool IsEarlier(const SVideoFrame& a, const SVideoFrame& b) {
  return a.time < b.time;
}

}  // namespace

CVideoIndex::CVideoIndex(CVideoDecoder& decoder) {
  // Pictures of two fields may come as two packets, so that packets do not tell their number.
  const AVFieldOrder order = decoder.stream().codecpar->field_order;
  const bool perhapsFields = order != AV_FIELD_PROGRESSIVE && order != AV_FIELD_UNKNOWN;
  if (perhapsFields || !indexPackets(decoder)) {
    decoder.restart();
    indexPictures(decoder);
  }
}

bool CVideoIndex::indexPackets(CVideoDecoder& decoder) {
  const Packet packet = MakePacket();
  while (decoder.readPacket(*packet)) {
    if ((packet->flags & AV_PKT_FLAG_DISCARD) != 0) continue;
    if (packet->pts == AV_NOPTS_VALUE || packet->dts == AV_NOPTS_VALUE) return false;
    frames_.push_back({packet->pts, packet->dts, (packet->flags & AV_PKT_FLAG_KEY) != 0});
  }
  std::sort(frames_.begin(), frames_.end(), IsEarlier);
  const auto twins = std::adjacent_find(
      frames_.begin(), frames_.end(),
      [](const SVideoFrame& a, const SVideoFrame& b) { return a.time == b.time; });
  if (twins != frames_.end()) return false;
  // What comes before the first picture that can be decoded (the rest of a cut group) is no frame.
  decoder.restart();
  const AVFrame* first = decoder.nextPicture();
  if (first == nullptr) return false;
  const int at = frameAt(TimeOf(*first));
  if (at < 0) return false;
  frames_.erase(frames_.begin(), frames_.begin() + at);
  return true;
}

void CVideoIndex::indexPictures(CVideoDecoder& decoder) {
  frames_.clear();
  while (const AVFrame* picture = decoder.nextPicture()) {
    const std::int64_t time = TimeOf(*picture);
    if (!frames_.empty() && time <= frames_.back().time) continue;
    frames_.push_back({time, picture->pkt_dts, false});
  }
}

int CVideoIndex::frameAt(std::int64_t time) const {
  const auto found =
      std::lower_bound(frames_.begin(), frames_.end(), SVideoFrame{time, 0, false}, IsEarlier);
  if (found == frames_.end() || found->time != time) return -1;
  return static_cast<int>(found - frames_.begin());
}

int CVideoIndex::keyBefore(int frame) const {
  while (frame >= 0 && !(*this)[frame].isKey) --frame;
  return frame;
}

bool CVideoIndex::isConstantRate() const {
  if (count() < 3) return true;
  const double step =
      static_cast<double>(frames_.back().time - frames_.front().time) / (count() - 1);
  for (int i = 0; i < count(); ++i) {
    const double expected = static_cast<double>(frames_.front().time) + step * i;
    if (std::abs(static_cast<double>((*this)[i].time) - expected) > std::max(1.5, 0.02 * step))
      return false;
  }
  return true;
}
