#include "VideoPixels.h"

#include <algorithm>

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
  const AVPixelFormat kind = static_cast<AVPixelFormat>(picture.format);
  const AVPixelFormat from = reading ? kind : AV_PIX_FMT_RGB48;
  const AVPixelFormat to = reading ? AV_PIX_FMT_RGB48 : kind;
  scaler_.reset(sws_getContext(picture.width, picture.height, from, picture.width, picture.height,
                               to, kAccurate, nullptr, nullptr, nullptr));
  if (!scaler_)
    throw CClipError(std::string("pictures of the kind ") + KindOf(picture).name +
                     " cannot be converted");
  const int* matrix = sws_getCoefficients(MatrixOf(picture.colorspace, picture.height));
  sws_setColorspaceDetails(scaler_.get(), matrix, reading ? fullRange : 1, matrix,
                           reading ? 1 : fullRange, 0, 1 << 16, 1 << 16);
  std::copy(key, key + 6, key_);
  return scaler_.get();
}

void CVideoPixels::toSamples(const AVFrame& picture, std::uint16_t* samples) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return ReadPlainRgb(picture, kind, samples);
  std::uint8_t* planes[4] = {reinterpret_cast<std::uint8_t*>(samples), nullptr, nullptr, nullptr};
  const int strides[4] = {picture.width * 6, 0, 0, 0};
  sws_scale(scaler(picture, true), picture.data, picture.linesize, 0, picture.height, planes,
            strides);
}

void CVideoPixels::fromSamples(const std::uint16_t* samples, AVFrame& picture) {
  const AVPixFmtDescriptor& kind = KindOf(picture);
  if (IsPlainRgb(kind)) return WritePlainRgb(samples, kind, picture);
  const std::uint8_t* planes[4] = {reinterpret_cast<const std::uint8_t*>(samples), nullptr, nullptr,
                                   nullptr};
  const int strides[4] = {picture.width * 6, 0, 0, 0};
  sws_scale(scaler(picture, false), planes, strides, 0, picture.height, picture.data,
            picture.linesize);
}
