#include "VideoReader.h"

#include <cmath>

#include "FrameRates.h"

namespace {

std::string NameOrEmpty(const char* name) {
  return name != nullptr ? name : "";
}

/// The first timecode found: of the video, of another stream (a timecode track), of the file.
std::string FindTimecode(const AVFormatContext& file, const AVStream& video) {
  std::string text = MetadataText(video.metadata, "timecode");
  for (unsigned i = 0; i < file.nb_streams && text.empty(); ++i)
    text = MetadataText(file.streams[i]->metadata, "timecode");
  return text.empty() ? MetadataText(file.metadata, "timecode") : text;
}

double RotationOf(const AVStream& stream) {
  const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (matrix == nullptr) return 0.0;
  return av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
}

int DepthOf(const AVCodecParameters& parameters) {
  const AVPixFmtDescriptor* kind =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(parameters.format));
  return kind != nullptr ? kind->comp[0].depth : 8;
}

}  // namespace

CVideoReader::CVideoReader(const std::string& path, int threads)
    : path_(path), decoder_(path, threads), pixels_(threads), current_(MakePicture()) {
  index_.emplace(decoder_);
  if (index_->count() == 0) throw CClipError(path + ": holds no frame that can be decoded");
  decoder_.restart();
  isPositioned_ = true;
  fillInfo();
  fillTiming();
  fillMetadata();
}

void CVideoReader::fillInfo() {
  const AVCodecParameters& parameters = *decoder_.stream().codecpar;
  if (parameters.width < 1 || parameters.height < 1)
    throw CClipError(path_ + ": the size of its pictures is not known");
  const std::string container = NameOrEmpty(decoder_.file().iformat->long_name);
  info_.path = path_;
  info_.kind =
      container.substr(0, container.find(" / ")) + ", " + avcodec_get_name(parameters.codec_id);
  info_.format = CImageFormat(parameters.width, parameters.height);
  info_.bitDepth = DepthOf(parameters);
  info_.format.setPixelPacking(info_.bitDepth == 8    ? CImageFormat::PACKING_8_BITS
                               : info_.bitDepth == 10 ? CImageFormat::PACKING_10_BITS
                                                      : CImageFormat::PACKING_16_BITS);
  info_.endFrame = index_->count();
}

void CVideoReader::fillTiming() {
  const AVStream& stream = decoder_.stream();
  const AVRational rate =
      stream.avg_frame_rate.num > 0 ? stream.avg_frame_rate : stream.r_frame_rate;
  if (rate.num > 0 && rate.den > 0) {
    info_.frameRate = {rate.num, rate.den};
    info_.frameRateKnown = true;
  }
  if (!index_->isConstantRate()) metadata_["VariableFrameRate"] = "yes";
  const std::string text = FindTimecode(decoder_.file(), stream);
  const int nominal = TimecodeRate(info_.frameRate);
  const bool drop = text.find(';') != std::string::npos && (nominal == 30 || nominal == 60);
  CTimecode timecode(0, nominal, drop);
  info_.timecodeKnown = !text.empty() && timecode.fromText(text);
  info_.startTimecode = info_.timecodeKnown ? timecode : CTimecode(0, nominal, false);
}

void CVideoReader::fillMetadata() {
  const AVStream& stream = decoder_.stream();
  const AVCodecParameters& parameters = *stream.codecpar;
  const auto note = [this](const char* key, const std::string& text) {
    if (!text.empty() && text != "unknown") metadata_[key] = text;
  };
  note("PixelFormat",
       NameOrEmpty(av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format))));
  note("ColourPrimaries", NameOrEmpty(av_color_primaries_name(parameters.color_primaries)));
  note("ColourTransfer", NameOrEmpty(av_color_transfer_name(parameters.color_trc)));
  note("ColourMatrix", NameOrEmpty(av_color_space_name(parameters.color_space)));
  note("ColourRange", NameOrEmpty(av_color_range_name(parameters.color_range)));
  if (parameters.field_order > AV_FIELD_PROGRESSIVE)
    note("Fields", parameters.field_order == AV_FIELD_TT || parameters.field_order == AV_FIELD_TB
                       ? "interlaced, top field first"
                       : "interlaced, bottom field first");
  const double rotation = RotationOf(stream);
  if (rotation != 0.0 && !std::isnan(rotation))
    note("Rotation", std::to_string(static_cast<int>(std::lround(rotation))));
  const AVRational aspect = parameters.sample_aspect_ratio;
  if (aspect.num > 0 && aspect.num != aspect.den)
    note("PixelAspectRatio", std::to_string(aspect.num) + ":" + std::to_string(aspect.den));
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(decoder_.file().metadata, "", entry, AV_DICT_IGNORE_SUFFIX)))
    note(entry->key, entry->value);
}

void CVideoReader::positionFor(int frame) {
  const int key = index_->keyBefore(frame);
  const bool ahead = isPositioned_ && frame > currentFrame_;
  if (ahead && key <= currentFrame_ + 1) return;
  currentFrame_ = -1;
  isPositioned_ = false;  // until it is there: what is wrong with the file may pass
  if (key > 0 && decoder_.seekToPacket((*index_)[key].decodingTime)) {
    // Pictures shown before the key frame may lack what they are predicted from.
    currentFrame_ = key - 1;
    return;
  }
  decoder_.restart();
}

const AVFrame& CVideoReader::decode(int frame) {
  if (frame == currentFrame_ && current_->width > 0) return *current_;
  positionFor(frame);
  av_frame_unref(current_.get());
  isPositioned_ = false;
  while (const AVFrame* picture = decoder_.nextPicture()) {
    const int shown = index_->frameAt(TimeOf(*picture));
    if (shown < 0 || shown < frame) continue;
    if (shown > frame) break;
    if (av_frame_ref(current_.get(), picture) < 0) throw std::bad_alloc();
    currentFrame_ = frame;
    isPositioned_ = true;
    return *current_;
  }
  currentFrame_ = -1;
  throw CClipError(path_ + ": the picture is missing or damaged");
}

const AVFrame& CVideoReader::decodeSound(int frame) {
  if (frame < 0 || frame >= info_.endFrame) throw CClipError(path_ + ": outside the clip");
  const AVFrame& picture = decode(frame);
  if ((picture.flags & AV_FRAME_FLAG_CORRUPT) != 0 || picture.decode_error_flags != 0)
    throw CClipError(path_ + ": the picture is damaged");
  if (picture.width != info_.format.getPixelsPerLine() ||
      picture.height != info_.format.getLinesPerFrame())
    throw CClipError(path_ + ": is " + std::to_string(picture.width) + " x " +
                     std::to_string(picture.height) + ", unlike the first");
  return picture;
}

void CVideoReader::readFrame(int frame, std::uint16_t* samples) {
  try {
    pixels_.toSamples(decodeSound(frame), samples);
  } catch (const CClipError& error) {
    throw CClipError("frame " + std::to_string(frame) + ": " + error.what());
  }
}

std::unique_ptr<IClipFrame> CVideoReader::openFrame(int frame, CBufferPool&) {
  try {
    return MakeVideoFrame(decodeSound(frame), framePixels_, path_, frame);
  } catch (const CClipError& error) {
    throw CClipError("frame " + std::to_string(frame) + ": " + error.what());
  }
}

std::unique_ptr<IClipReader> OpenVideo(const std::string& path, int threads) {
  return std::make_unique<CVideoReader>(path, threads);
}
