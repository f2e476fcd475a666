#include "VideoDecoder.h"

#include <algorithm>

#include "clip/ClipReader.h"

std::int64_t TimeOf(const AVFrame& picture) {
  return picture.best_effort_timestamp != AV_NOPTS_VALUE ? picture.best_effort_timestamp
                                                         : picture.pts;
}

CVideoDecoder::CVideoDecoder(const std::string& path, int threads)
    : path_(path), threads_(std::max(1, threads)), packet_(MakePacket()), picture_(MakePicture()) {
  open();
}

// What is open stays so until its successor is: a file that has gone may come back.
void CVideoDecoder::open() {
  auto file = OpenInput(path_);
  const AVCodec* decoder = nullptr;
  const int found = av_find_best_stream(file.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
  if (found < 0) throw CClipError(path_ + ": holds no video that can be decoded");
  for (unsigned i = 0; i < file->nb_streams; ++i)
    if (static_cast<int>(i) != found) file->streams[i]->discard = AVDISCARD_ALL;
  decltype(codec_) codec(avcodec_alloc_context3(decoder));
  if (!codec) throw std::bad_alloc();
  const AVStream& video = *file->streams[found];
  int code = avcodec_parameters_to_context(codec.get(), video.codecpar);
  codec->thread_count = threads_;
  codec->pkt_timebase = video.time_base;
  memory_.serve(*codec);
  if (code >= 0) code = avcodec_open2(codec.get(), decoder, nullptr);
  if (code < 0) ThrowVideoError(path_, "cannot be decoded: ", code);
  codec_ = std::move(codec);
  file_ = std::move(file);
  stream_ = found;
  drained_ = packetWaits_ = false;
}

void CVideoDecoder::restart() {
  open();
}

bool CVideoDecoder::readPacket(AVPacket& packet) {
  for (;;) {
    av_packet_unref(&packet);
    const int code = av_read_frame(file_.get(), &packet);
    if (code == AVERROR_EOF) return false;
    if (code < 0) ThrowVideoError(path_, "cannot be read: ", code);
    if (packet.stream_index == stream_) return true;
  }
}

void CVideoDecoder::sendPacket(const AVPacket* packet) {
  const int code = avcodec_send_packet(codec_.get(), packet);
  // A damaged packet gives no picture; its frame is missed, and named, when it is asked for.
  if (code < 0 && code != AVERROR_INVALIDDATA && code != AVERROR_EOF)
    ThrowVideoError(path_, "cannot be decoded: ", code);
}

const AVFrame* CVideoDecoder::nextPicture() {
  for (;;) {
    const int code = avcodec_receive_frame(codec_.get(), picture_.get());
    if (code >= 0) return picture_.get();
    if (code == AVERROR_EOF) return nullptr;
    if (code != AVERROR(EAGAIN) && code != AVERROR_INVALIDDATA)
      ThrowVideoError(path_, "cannot be decoded: ", code);
    if (drained_) {
      if (code == AVERROR(EAGAIN)) return nullptr;
      continue;
    }
    if (packetWaits_ || readPacket(*packet_)) {
      packetWaits_ = false;
      sendPacket(packet_.get());
    } else {
      drained_ = true;
      sendPacket(nullptr);
    }
  }
}

bool CVideoDecoder::seekToPacket(std::int64_t decodingTime) {
  if (av_seek_frame(file_.get(), stream_, decodingTime, AVSEEK_FLAG_BACKWARD) < 0) return false;
  avcodec_flush_buffers(codec_.get());
  drained_ = packetWaits_ = false;
  while (readPacket(*packet_)) {
    if (packet_->dts == AV_NOPTS_VALUE || packet_->dts > decodingTime) return false;
    if (packet_->dts < decodingTime) continue;
    packetWaits_ = true;
    return true;
  }
  return false;
}
