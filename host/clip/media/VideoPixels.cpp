#include "VideoPixels.h"

#include <algorithm>
#include <utility>

#include "CodeValues.h"
#include "clip/ClipReader.h"

namespace {

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
      {"srcw", picture.width},
      {"srch", picture.height},
      {"src_format", reading ? kind : AV_PIX_FMT_RGB48},
      {"dstw", picture.width},
      {"dsth", picture.height},
      {"dst_format", reading ? AV_PIX_FMT_RGB48 : kind},
      {"sws_flags", kAccurate},
      {"threads", threads_}};
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

/// Our samples as a picture of the library's, which owns nothing.
Picture SamplesAsPicture(std::uint16_t* samples, int width, int height) {
  Picture picture = MakePicture();
  picture->format = AV_PIX_FMT_RGB48;
  picture->width = width;
  picture->height = height;
  picture->linesize[0] = width * 6;
  picture->data[0] = reinterpret_cast<std::uint8_t*>(samples);
  const auto keep = [](void*, std::uint8_t*) {};
  picture->buf[0] = av_buffer_create(
      picture->data[0], static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 6,
      keep, nullptr, 0);
  if (picture->buf[0] == nullptr) throw CClipError("no memory to convert pictures");
  return picture;
}

void Convert(SwsContext* scaler, AVFrame& to, const AVFrame& from) {
  if (sws_scale_frame(scaler, &to, &from) < 0) throw CClipError("the picture cannot be converted");
}

}  // namespace

void CVideoPixels::toSamples(const AVFrame& picture, std::uint16_t* samples) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return ReadPlainRgb(picture, kind, samples);
  const Picture to = SamplesAsPicture(samples, picture.width, picture.height);
  Convert(scaler(picture, true), *to, picture);
}

void CVideoPixels::fromSamples(const std::uint16_t* samples, AVFrame& picture) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return WritePlainRgb(samples, kind, picture);
  // The library only reads what it converts from; its pictures do not say so.
  const Picture from =
      SamplesAsPicture(const_cast<std::uint16_t*>(samples), picture.width, picture.height);
  Convert(scaler(picture, false), picture, *from);
}
