#include "VideoPixels.h"

#include <algorithm>
#include <utility>

#include "CodeValues.h"
#include "clip/ClipReader.h"
#include "support/TargetClones.h"

namespace {

/// The library converts to and from planes in vectors, to and from pixels one by one; the values
/// are the same.
constexpr AVPixelFormat kPlanes = AV_PIX_FMT_GBRP16;
constexpr int kGreen = 0;
constexpr int kBlue = 1;
constexpr int kRed = 2;

constexpr int kAccurate = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

/// RGB of whole bytes, which we convert ourselves: the exact way is also the fast one.
bool IsPlainRgb(const AVPixFmtDescriptor& kind) {
  const std::uint64_t odd = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                            AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_FLOAT |
                            AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_BE;
  if ((kind.flags & AV_PIX_FMT_FLAG_RGB) == 0 || (kind.flags & odd) != 0) return false;
  for (int c = 0; c < 3; ++c)
    if (kind.comp[c].depth < 8 || (kind.comp[c].depth + kind.comp[c].shift) > 16) return false;
  return true;
}

void ReadPlainRgb(const AVFrame& picture, const AVPixFmtDescriptor& kind, std::uint16_t* samples) {
  for (int c = 0; c < 3; ++c) {
    const AVComponentDescriptor& part = kind.comp[c];
    const bool bytes = part.depth + part.shift <= 8;
    const unsigned mask = (1u << part.depth) - 1;
    for (int y = 0; y < picture.height; ++y) {
      const std::uint8_t* from = picture.data[part.plane] +
                                 static_cast<std::ptrdiff_t>(y) * picture.linesize[part.plane] +
                                 part.offset;
      std::uint16_t* to = samples + static_cast<std::ptrdiff_t>(y) * picture.width * 3 + c;
      for (int x = 0; x < picture.width; ++x, from += part.step, to += 3) {
        const unsigned word = bytes ? from[0] : from[0] | from[1] << 8;
        *to = WidenCode(word >> part.shift & mask, part.depth);
      }
    }
  }
}

void WritePlainRgb(const std::uint16_t* samples, const AVPixFmtDescriptor& kind, AVFrame& picture) {
  for (int c = 0; c < 3; ++c) {
    const AVComponentDescriptor& part = kind.comp[c];
    const bool bytes = part.depth + part.shift <= 8;
    for (int y = 0; y < picture.height; ++y) {
      std::uint8_t* to = picture.data[part.plane] +
                         static_cast<std::ptrdiff_t>(y) * picture.linesize[part.plane] +
                         part.offset;
      const std::uint16_t* from = samples + static_cast<std::ptrdiff_t>(y) * picture.width * 3 + c;
      for (int x = 0; x < picture.width; ++x, to += part.step, from += 3) {
        const unsigned word = NarrowSample(*from, part.depth) << part.shift;
        to[0] = static_cast<std::uint8_t>(word);
        if (!bytes) to[1] = static_cast<std::uint8_t>(word >> 8);
      }
    }
  }
}

const AVPixFmtDescriptor& KindOf(const AVFrame& picture) {
  const AVPixFmtDescriptor* kind = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
  if (kind == nullptr) throw CClipError("unknown kind of picture");
  return *kind;
}

}  // namespace

AVColorSpace MatrixOf(AVColorSpace said, int height) {
  if (said != AVCOL_SPC_UNSPECIFIED && said != AVCOL_SPC_RGB && said != AVCOL_SPC_RESERVED)
    return said;
  return height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

SwsContext* CVideoPixels::scaler(const AVFrame& picture, bool reading) {
  const int fullRange = picture.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
  const int key[6] = {picture.width,      picture.height, picture.format,
                      picture.colorspace, fullRange,      reading ? 1 : 2};
  if (scaler_ && std::equal(key, key + 6, key_)) return scaler_.get();
  const auto kind = static_cast<AVPixelFormat>(picture.format);
  scaler_.reset(sws_alloc_context());
  if (!scaler_) throw CClipError("no memory to convert pictures");
  const std::pair<const char*, std::int64_t> settings[] = {
      {"srcw", picture.width},  {"srch", picture.height}, {"src_format", reading ? kind : kPlanes},
      {"dstw", picture.width},  {"dsth", picture.height}, {"dst_format", reading ? kPlanes : kind},
      {"sws_flags", kAccurate}, {"threads", threads_}};
  for (const auto& [name, value] : settings) av_opt_set_int(scaler_.get(), name, value, 0);
  if (sws_init_context(scaler_.get(), nullptr, nullptr) < 0) {
    scaler_.reset();
    throw CClipError(std::string("pictures of the kind ") + KindOf(picture).name +
                     " cannot be converted");
  }
  const int* matrix = sws_getCoefficients(MatrixOf(picture.colorspace, picture.height));
  sws_setColorspaceDetails(scaler_.get(), matrix, reading ? fullRange : 1, matrix,
                           reading ? 1 : fullRange, 0, 1 << 16, 1 << 16);
  std::copy(key, key + 6, key_);
  return scaler_.get();
}

namespace {

STAB_CLONES void Interleave(const std::uint16_t* __restrict red,
                            const std::uint16_t* __restrict green,
                            const std::uint16_t* __restrict blue, std::size_t count,
                            std::uint16_t* __restrict samples) {
  for (std::size_t i = 0; i < count; ++i) {
    samples[3 * i] = red[i];
    samples[3 * i + 1] = green[i];
    samples[3 * i + 2] = blue[i];
  }
}

STAB_CLONES void Separate(const std::uint16_t* __restrict samples, std::size_t count,
                          std::uint16_t* __restrict red, std::uint16_t* __restrict green,
                          std::uint16_t* __restrict blue) {
  for (std::size_t i = 0; i < count; ++i) {
    red[i] = samples[3 * i];
    green[i] = samples[3 * i + 1];
    blue[i] = samples[3 * i + 2];
  }
}

std::uint16_t* RowOf(const AVFrame& planes, int plane, int y) {
  return reinterpret_cast<std::uint16_t*>(planes.data[plane] +
                                          static_cast<std::ptrdiff_t>(y) * planes.linesize[plane]);
}

void Convert(SwsContext* scaler, AVFrame& to, const AVFrame& from) {
  if (sws_scale_frame(scaler, &to, &from) < 0) throw CClipError("the picture cannot be converted");
}

}  // namespace

AVFrame& CVideoPixels::planesFor(const AVFrame& picture) {
  if (planes_ && planes_->width == picture.width && planes_->height == picture.height)
    return *planes_;
  planes_ = MakePicture();
  planes_->format = kPlanes;
  planes_->width = picture.width;
  planes_->height = picture.height;
  if (av_frame_get_buffer(planes_.get(), 0) < 0) {
    planes_.reset();
    throw CClipError("no memory to convert pictures");
  }
  return *planes_;
}

void CVideoPixels::toSamples(const AVFrame& picture, std::uint16_t* samples) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return ReadPlainRgb(picture, kind, samples);
  AVFrame& planes = planesFor(picture);
  Convert(scaler(picture, true), planes, picture);
  const auto width = static_cast<std::size_t>(picture.width);
  for (int y = 0; y < picture.height; ++y, samples += 3 * width)
    Interleave(RowOf(planes, kRed, y), RowOf(planes, kGreen, y), RowOf(planes, kBlue, y), width,
               samples);
}

void CVideoPixels::fromSamples(const std::uint16_t* samples, AVFrame& picture) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return WritePlainRgb(samples, kind, picture);
  const AVFrame& planes = planesFor(picture);
  const auto width = static_cast<std::size_t>(picture.width);
  for (int y = 0; y < picture.height; ++y, samples += 3 * width)
    Separate(samples, width, RowOf(planes, kRed, y), RowOf(planes, kGreen, y),
             RowOf(planes, kBlue, y));
  Convert(scaler(picture, false), picture, planes);
}
