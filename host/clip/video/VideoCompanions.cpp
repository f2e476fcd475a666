#include "VideoCompanions.h"

#include <algorithm>
#include <cmath>

#include "support/Trace.h"

namespace {

/// The stream of the same coding in the output, or -1 when the container cannot hold it.
int AddCopy(const AVStream& source, AVFormatContext& output) {
  const AVCodecParameters& parameters = *source.codecpar;
  const bool isData =
      parameters.codec_type != AVMEDIA_TYPE_AUDIO && parameters.codec_type != AVMEDIA_TYPE_SUBTITLE;
  if (isData ||
      avformat_query_codec(output.oformat, parameters.codec_id, FF_COMPLIANCE_NORMAL) != 1)
    return -1;
  AVStream* copy = avformat_new_stream(&output, nullptr);
  if (copy == nullptr || avcodec_parameters_copy(copy->codecpar, &parameters) < 0) return -1;
  copy->codecpar->codec_tag = 0;
  copy->time_base = source.time_base;
  copy->disposition = source.disposition;
  av_dict_copy(&copy->metadata, source.metadata, 0);
  return copy->index;
}

}  // namespace

CVideoCompanions::CVideoCompanions(const std::string& source, AVFormatContext& output,
                                   const std::string& outputName, double origin, double begin,
                                   double end)
    : output_(output),
      input_(OpenInput(source)),
      origin_(origin),
      begin_(begin),
      end_(end),
      packet_(MakePacket()) {
  const int video = av_find_best_stream(input_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  for (unsigned i = 0; i < input_->nb_streams; ++i) {
    AVStream& stream = *input_->streams[i];
    const bool isVideo = static_cast<int>(i) == video;
    targets_.push_back(isVideo ? -1 : AddCopy(stream, output));
    if (targets_.back() < 0) stream.discard = AVDISCARD_ALL;
    if (targets_.back() < 0 && !isVideo)
      TraceAt(1, source + ": stream " + std::to_string(i) + " (" +
                     avcodec_get_name(stream.codecpar->codec_id) + ") is not carried to " +
                     outputName);
  }
}

double CVideoCompanions::secondOf(const AVPacket& packet) const {
  const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
  if (time == AV_NOPTS_VALUE) return -HUGE_VAL;
  return static_cast<double>(time) * av_q2d(input_->streams[packet.stream_index]->time_base);
}

/// The next packet inside the range.
bool CVideoCompanions::readPacket() {
  if (std::all_of(targets_.begin(), targets_.end(), [](int target) { return target < 0; }))
    return false;
  for (;;) {
    av_packet_unref(packet_.get());
    if (av_read_frame(input_.get(), packet_.get()) < 0) return false;
    if (targets_[static_cast<std::size_t>(packet_->stream_index)] < 0) continue;
    const double second = secondOf(*packet_);
    if (second >= begin_ && second < end_) return true;
  }
}

int CVideoCompanions::writeUntil(double second) {
  for (;;) {
    if (!waits_ && !readPacket()) return 0;
    waits_ = true;
    if (secondOf(*packet_) >= second) return 0;
    const AVRational from = input_->streams[packet_->stream_index]->time_base;
    const std::int64_t shift = std::llround(origin_ / av_q2d(from));
    if (packet_->pts != AV_NOPTS_VALUE) packet_->pts -= shift;
    if (packet_->dts != AV_NOPTS_VALUE) packet_->dts -= shift;
    packet_->stream_index = targets_[static_cast<std::size_t>(packet_->stream_index)];
    packet_->pos = -1;
    av_packet_rescale_ts(packet_.get(), from, output_.streams[packet_->stream_index]->time_base);
    waits_ = false;
    const int code = av_interleaved_write_frame(&output_, packet_.get());
    if (code < 0) return code;
  }
}
