#include "VideoFiles.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "VideoLibrary.h"

namespace {

void Require(bool good, const char* what) {
  if (!good) throw std::runtime_error(std::string("the test's own video: ") + what);
}

Codec OpenEncoder(const SClipInfo& info, const SVideoMaking& making, AVStream& stream) {
  const AVCodec* encoder = avcodec_find_encoder_by_name("libx264");
  Require(encoder != nullptr, "no encoder");
  Codec codec(avcodec_alloc_context3(encoder));
  codec->width = info.format.getPixelsPerLine();
  codec->height = info.format.getLinesPerFrame();
  codec->pix_fmt = AV_PIX_FMT_YUV420P;
  codec->time_base = making.times.empty() ? AVRational{1, 24} : AVRational{1, 1000};
  codec->gop_size = making.keyInterval;
  codec->max_b_frames = making.betweenFrames;
  codec->thread_count = 1;
  codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  Require(avcodec_open2(codec.get(), encoder, nullptr) >= 0, "encoder");
  Require(avcodec_parameters_from_context(stream.codecpar, codec.get()) >= 0, "parameters");
  stream.time_base = codec->time_base;
  return codec;
}

void WritePackets(AVFormatContext& file, AVCodecContext& codec, int stream) {
  const Packet packet = MakePacket();
  while (avcodec_receive_packet(&codec, packet.get()) >= 0) {
    packet->stream_index = stream;
    packet->duration = codec.time_base.den == 24 ? 1 : 40;
    av_packet_rescale_ts(packet.get(), codec.time_base, file.streams[stream]->time_base);
    Require(av_interleaved_write_frame(&file, packet.get()) >= 0, "packet");
  }
}

void AddSoundStream(AVFormatContext& file) {
  AVStream* stream = avformat_new_stream(&file, nullptr);
  stream->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
  stream->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
  stream->codecpar->sample_rate = 48000;
  stream->codecpar->bits_per_coded_sample = 16;
  stream->codecpar->block_align = 2;
  av_channel_layout_default(&stream->codecpar->ch_layout, 1);
  stream->time_base = {1, 48000};
}

/// A hundred packets of ten milliseconds.
void WriteSound(AVFormatContext& file) {
  for (int i = 0; i < 100; ++i) {
    const Packet packet = MakePacket();
    Require(av_new_packet(packet.get(), 960) >= 0, "memory");
    for (int s = 0; s < 480; ++s) {
      const auto value = static_cast<std::int16_t>(i * 480 + s);
      std::memcpy(packet->data + 2 * s, &value, 2);
    }
    packet->stream_index = 1;
    packet->pts = packet->dts = i * 480;
    packet->duration = 480;
    av_packet_rescale_ts(packet.get(), {1, 48000}, file.streams[1]->time_base);
    Require(av_interleaved_write_frame(&file, packet.get()) >= 0, "sound");
  }
}

/// Grey is enough: what matters is which frame it is.
void FillPicture(const std::vector<std::uint16_t>& samples, AVFrame& picture) {
  for (int y = 0; y < picture.height; ++y)
    for (int x = 0; x < picture.width; ++x)
      picture.data[0][y * picture.linesize[0] + x] =
          static_cast<std::uint8_t>(16 + samples[(y * picture.width + x) * 3u] / 300);
  for (int plane = 1; plane < 3; ++plane)
    for (int y = 0; y < picture.height / 2; ++y)
      std::memset(picture.data[plane] + y * picture.linesize[plane], 128,
                  static_cast<std::size_t>(picture.width / 2));
}

}  // namespace

void MakeVideo(const std::string& path, IClipReader& clip, const SVideoMaking& making) {
  TraceVideoLibrary();
  const SClipInfo& info = clip.info();
  AVFormatContext* context = nullptr;
  Require(avformat_alloc_output_context2(&context, nullptr, nullptr, path.c_str()) >= 0, "file");
  const OutputFile file(context);
  Require(avio_open(&file->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0, "file");
  const Codec codec = OpenEncoder(info, making, *avformat_new_stream(file.get(), nullptr));
  if (making.hasSound) AddSoundStream(*file);
  Require(avformat_write_header(file.get(), nullptr) >= 0, "header");
  std::vector<std::uint16_t> samples(info.format.getBytesPerField() / 2);
  for (int i = 0; i < info.frameCount(); ++i) {
    clip.readFrame(info.firstFrame + i, samples.data());
    const Picture picture = MakePicture();
    picture->format = codec->pix_fmt;
    picture->width = codec->width;
    picture->height = codec->height;
    Require(av_frame_get_buffer(picture.get(), 0) >= 0, "memory");
    FillPicture(samples, *picture);
    picture->pts = making.times.empty() ? i : making.times[static_cast<std::size_t>(i)];
    Require(avcodec_send_frame(codec.get(), picture.get()) >= 0, "picture");
    WritePackets(*file, *codec, 0);
  }
  Require(avcodec_send_frame(codec.get(), nullptr) >= 0, "flush");
  WritePackets(*file, *codec, 0);
  if (making.hasSound) WriteSound(*file);
  Require(av_write_trailer(file.get()) >= 0, "trailer");
}

std::vector<int> TimesOf(const std::string& path) {
  const InputFile file = OpenInput(path);
  const Packet packet = MakePacket();
  std::vector<int> times;
  while (av_read_frame(file.get(), packet.get()) >= 0) {
    const AVStream& stream = *file->streams[packet->stream_index];
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
      times.push_back(static_cast<int>(av_rescale_q(packet->pts, stream.time_base, {1, 1000})));
    av_packet_unref(packet.get());
  }
  std::sort(times.begin(), times.end());
  return times;
}

std::vector<std::int16_t> SoundOf(const std::string& path) {
  const InputFile file = OpenInput(path);
  const Packet packet = MakePacket();
  std::vector<std::int16_t> samples;
  while (av_read_frame(file.get(), packet.get()) >= 0) {
    const AVStream& stream = *file->streams[packet->stream_index];
    if (stream.codecpar->codec_id == AV_CODEC_ID_PCM_S16LE) {
      const std::size_t at = samples.size(), count = static_cast<std::size_t>(packet->size) / 2;
      samples.resize(at + count);
      std::memcpy(samples.data() + at, packet->data, count * 2);
    }
    av_packet_unref(packet.get());
  }
  return samples;
}
