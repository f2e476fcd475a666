#include "VideoWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "FrameRates.h"
#include "SequencePattern.h"
#include "TemporaryFile.h"
#include "VideoCompanions.h"
#include "VideoPixels.h"
#include "VideoReader.h"
#include "support/Trace.h"

namespace {

/// One way to write a video.
struct SVideoKind {
  const char* extension;
  const char* encoder;
  AVPixelFormat forRgb;  ///< kind of picture for sources of RGB
  AVPixelFormat forYuv;
  const char* options;  ///< of the encoder, for sources of RGB
  const char* optionsYuv;
};

// FFV1 in a fixed number of slices: threads share them, and the bytes do not depend on how many.
constexpr SVideoKind kKinds[] = {
    {"mov", "prores_ks", AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV422P10, "profile=4444", "profile=hq"},
    {"mkv", "ffv1", AV_PIX_FMT_GBRP16, AV_PIX_FMT_GBRP16, "level=3:slicecrc=1:slices=12",
     "level=3:slicecrc=1:slices=12"},
    {"mp4", "libx264", AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P, "crf=16:preset=medium",
     "crf=16:preset=medium"},
};

const SVideoKind* FindKind(const std::string& extension) {
  for (const SVideoKind& kind : kKinds)
    if (extension == kind.extension) return &kind;
  return nullptr;
}

bool IsYuv(int format) {
  const AVPixFmtDescriptor* kind = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
  return kind != nullptr && (kind->flags & AV_PIX_FMT_FLAG_RGB) == 0 && kind->nb_components > 2;
}

class CVideoWriter : public IClipWriter {
 public:
  CVideoWriter(const std::string& path, IClipReader& source, int first, int end,
               const SWriteOptions& options)
      : path_(path),
        source_(source),
        video_(dynamic_cast<const CVideoReader*>(&source)),
        first_(first),
        end_(end),
        lastFrame_(first - 1),
        temporary_(path),
        pixels_(std::max(1, options.threads)),
        packet_(MakePacket()),
        picture_(MakePicture()) {
    if (video_ != nullptr) original_ = OpenInput(source.info().path);
    TraceVideoLibrary();
    const SVideoKind& kind = *FindKind(ExtensionOf(path));
    openFile();
    openEncoder(kind, std::max(1, options.threads));
    addStream();
    if (video_ != nullptr) addCompanions();
    writeHeader();
    makePicture();
  }

  void writeFrame(int frame, const std::uint16_t* samples) override {
    if (frame <= lastFrame_ || frame >= end_)
      fail(frame, "video frames are written in rising order, within the range announced", 0);
    int code = av_frame_make_writable(picture_.get());
    if (code < 0) fail(frame, "", code);
    pixels_.fromSamples(samples, *picture_);
    picture_->pts = timeOf(frame);
    lastFrame_ = frame;
    code = avcodec_send_frame(encoder_.get(), picture_.get());
    if (code >= 0) code = writePackets();
    if (code >= 0 && companions_) code = companions_->writeUntil(secondOf(frame));
    if (code < 0) fail(frame, "", code);
  }

  void finish() override {
    if (isFinished_) return;
    int code = avcodec_send_frame(encoder_.get(), nullptr);
    if (code >= 0) code = writePackets();
    if (code >= 0 && companions_) code = companions_->writeRest();
    if (code >= 0) code = av_write_trailer(file_.get());
    if (code >= 0 && file_->pb->error < 0) code = file_->pb->error;
    const int closed = avio_closep(&file_->pb);
    if (code >= 0) code = closed;
    if (code < 0) fail(lastFrame_, "", code);
    temporary_.commit();
    isFinished_ = true;
  }

 private:
  [[noreturn]] void fail(int frame, const std::string& text, int code) const {
    const std::string where = "frame " + std::to_string(frame) + ": " + path_;
    if (code < 0) ThrowVideoError(where, text, code);
    throw CClipError(where + ": " + text);
  }

  const AVStream* originalStream() const {
    if (!original_) return nullptr;
    const int index = av_find_best_stream(original_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    return index < 0 ? nullptr : original_->streams[index];
  }

  bool hasOwnTimes() const { return video_ != nullptr && !video_->index().isConstantRate(); }

  /// Time of a frame in the encoder's time base, the first at 0.
  std::int64_t timeOf(int frame) const {
    if (!hasOwnTimes()) return frame - first_;
    const CVideoIndex& index = video_->index();
    return index[frame].time - index[first_].time;
  }

  /// How long the frame at an encoder's time is shown; the last of a clip like the average.
  std::int64_t durationAt(std::int64_t time) const {
    if (!hasOwnTimes()) return 1;
    const CVideoIndex& index = video_->index();
    const int frame = index.frameAt(time + index[first_].time);
    if (frame >= 0 && frame + 1 < index.count()) return index[frame + 1].time - index[frame].time;
    return std::llround(1.0 / (source_.info().frameRate.value() * av_q2d(video_->timeBase())));
  }

  /// Time of a frame in the source, where the sound has it.
  double secondOf(int frame) const {
    const CVideoIndex& index = video_->index();
    const double unit = av_q2d(video_->timeBase());
    if (frame < index.count()) return static_cast<double>(index[frame].time) * unit;
    return static_cast<double>(index[index.count() - 1].time) * unit +
           1.0 / source_.info().frameRate.value();
  }

  void openFile() {
    AVFormatContext* context = nullptr;
    const std::string url = "file:" + temporary_.path();
    int code = avformat_alloc_output_context2(&context, nullptr, nullptr, url.c_str());
    file_.reset(context);
    if (code >= 0) code = avio_open(&file_->pb, url.c_str(), AVIO_FLAG_WRITE);
    if (code < 0) ThrowVideoError(path_, "cannot be written: ", code);
  }

  void openEncoder(const SVideoKind& kind, int threads) {
    const AVCodec* codec = avcodec_find_encoder_by_name(kind.encoder);
    if (codec == nullptr)
      throw CClipError(path_ + ": this installation has no encoder " + kind.encoder);
    encoder_.reset(avcodec_alloc_context3(codec));
    if (!encoder_) throw std::bad_alloc();
    const SClipInfo& info = source_.info();
    const AVStream* original = originalStream();
    const bool yuv = original != nullptr && IsYuv(original->codecpar->format);
    encoder_->width = info.format.getPixelsPerLine();
    encoder_->height = info.format.getLinesPerFrame();
    encoder_->pix_fmt = yuv ? kind.forYuv : kind.forRgb;
    encoder_->framerate = {info.frameRate.numerator, info.frameRate.denominator};
    encoder_->time_base = hasOwnTimes() ? video_->timeBase() : av_inv_q(encoder_->framerate);
    encoder_->thread_count = threads;
    encoder_->bits_per_raw_sample = av_pix_fmt_desc_get(encoder_->pix_fmt)->comp[0].depth;
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(encoder_->pix_fmt);
    if (encoder_->width % (1 << format.log2_chroma_w) != 0 ||
        encoder_->height % (1 << format.log2_chroma_h) != 0)
      throw CClipError(path_ + ": ." + kind.extension + " needs an even width and height, not " +
                       std::to_string(encoder_->width) + " x " + std::to_string(encoder_->height) +
                       "; .mkv takes any");
    setColours(original, (format.flags & AV_PIX_FMT_FLAG_RGB) != 0);
    if ((file_->oformat->flags & AVFMT_GLOBALHEADER) != 0)
      encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* options = nullptr;
    av_dict_parse_string(&options, yuv ? kind.optionsYuv : kind.options, "=", ":", 0);
    const int code = avcodec_open2(encoder_.get(), codec, &options);
    av_dict_free(&options);
    if (code < 0) ThrowVideoError(path_, "cannot be encoded: ", code);
  }

  /// The source's tags; the matrix and the range are those of the pictures written.
  void setColours(const AVStream* original, bool writesRgb) {
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    if (original != nullptr) {
      const AVCodecParameters& parameters = *original->codecpar;
      encoder_->color_primaries = parameters.color_primaries;
      encoder_->color_trc = parameters.color_trc;
      encoder_->chroma_sample_location = parameters.chroma_location;
      encoder_->sample_aspect_ratio = parameters.sample_aspect_ratio;
      matrix = parameters.color_space;
    }
    encoder_->colorspace = writesRgb ? AVCOL_SPC_RGB : MatrixOf(matrix, encoder_->height);
    encoder_->color_range = writesRgb ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  }

  void addStream() {
    stream_ = avformat_new_stream(file_.get(), nullptr);
    if (stream_ == nullptr) throw std::bad_alloc();
    const int code = avcodec_parameters_from_context(stream_->codecpar, encoder_.get());
    if (code < 0) ThrowVideoError(path_, "cannot be written: ", code);
    stream_->time_base = encoder_->time_base;
    stream_->sample_aspect_ratio = encoder_->sample_aspect_ratio;
    stream_->avg_frame_rate = encoder_->framerate;
    const SClipInfo& info = source_.info();
    if (const AVStream* original = originalStream()) {
      av_dict_copy(&file_->metadata, original_->metadata, 0);
      av_dict_copy(&stream_->metadata, original->metadata, 0);
      carryRotation(*original);
    }
    // Says which program encoded the source; ours is another.
    av_dict_set(&stream_->metadata, "encoder", nullptr, 0);
    av_dict_set(&file_->metadata, "timecode", nullptr, 0);
    if (info.timecodeKnown)
      av_dict_set(&stream_->metadata, "timecode",
                  AdvanceTimecode(info.startTimecode, first_ - info.firstFrame).toText().c_str(),
                  0);
  }

  /// Sound of the frames written; what leads in before the first frame or fades out behind the last
  /// of the whole clip belongs to them.
  void addCompanions() {
    const SClipInfo& info = source_.info();
    const double begin = first_ == info.firstFrame ? -HUGE_VAL : secondOf(first_);
    const double end = end_ == info.endFrame ? HUGE_VAL : secondOf(end_);
    companions_.emplace(info.path, *file_, path_, secondOf(first_), begin, end);
  }

  void carryRotation(const AVStream& original) {
    std::size_t size = 0;
    const std::uint8_t* matrix =
        av_stream_get_side_data(&original, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (matrix == nullptr) return;
    std::uint8_t* copy = av_stream_new_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, size);
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, matrix, size);
    if (std::strcmp(file_->oformat->name, "matroska") == 0)
      TraceAt(1, path_ + ": this container does not keep the source's rotation");
  }

  void writeHeader() {
    const int code = avformat_write_header(file_.get(), nullptr);
    if (code < 0) ThrowVideoError(path_, "cannot be written: ", code);
  }

  void makePicture() {
    picture_->format = encoder_->pix_fmt;
    picture_->width = encoder_->width;
    picture_->height = encoder_->height;
    picture_->colorspace = encoder_->colorspace;
    picture_->color_range = encoder_->color_range;
    picture_->color_primaries = encoder_->color_primaries;
    picture_->color_trc = encoder_->color_trc;
    const int code = av_frame_get_buffer(picture_.get(), 0);
    if (code < 0) ThrowVideoError(path_, "", code);
  }

  int writePackets() {
    for (;;) {
      int code = avcodec_receive_packet(encoder_.get(), packet_.get());
      if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return 0;
      if (code < 0) return code;
      packet_->stream_index = stream_->index;
      packet_->duration = durationAt(packet_->pts);
      av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream_->time_base);
      code = av_interleaved_write_frame(file_.get(), packet_.get());
      if (code >= 0 && file_->pb->error < 0) code = file_->pb->error;
      if (code < 0) return code;
    }
  }

  std::string path_;
  IClipReader& source_;
  const CVideoReader* video_;  ///< the source, when it is a video
  InputFile original_;
  int first_;
  int end_;
  int lastFrame_;
  CTemporaryFile temporary_;
  OutputFile file_;
  Codec encoder_;
  AVStream* stream_ = nullptr;
  std::optional<CVideoCompanions> companions_;
  CVideoPixels pixels_;
  Packet packet_;
  Picture picture_;
  bool isFinished_ = false;
};

}  // namespace

std::unique_ptr<IClipWriter> CreateVideo(const std::string& path, IClipReader& source, int first,
                                         int end, const SWriteOptions& options) {
  if (source.info().floatSamples)
    throw CClipError(path + ": half and float samples cannot be written as video");
  return std::make_unique<CVideoWriter>(path, source, first, end, options);
}
