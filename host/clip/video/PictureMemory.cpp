#include "PictureMemory.h"

#include <algorithm>
#include <cstdint>

namespace {

/// Bytes behind each plane that decoders' vectors may touch, as the library's own pictures have.
constexpr std::size_t kSlack = 128;
constexpr int kPlanes = 4;

struct SLayout {
  int linesizes[kPlanes] = {};
  std::size_t planes[kPlanes] = {};  ///< bytes; 0: none
  std::size_t bytes = 0;
};

/// Rows and planes as the decoder wants them for a picture of this kind and size.
bool FindLayout(AVCodecContext& decoder, const AVFrame& picture, SLayout& layout) {
  const auto format = static_cast<AVPixelFormat>(picture.format);
  int width = picture.width;
  int height = picture.height;
  int alignments[AV_NUM_DATA_POINTERS] = {};
  avcodec_align_dimensions2(&decoder, &width, &height, alignments);
  for (bool aligned = false; !aligned;) {
    if (av_image_fill_linesizes(layout.linesizes, format, width) < 0) return false;
    aligned = true;
    for (int i = 0; i < kPlanes; ++i)
      if (layout.linesizes[i] % std::max(1, alignments[i]) != 0) aligned = false;
    width += width & ~(width - 1);  // its lowest set bit: a rounder number each time
  }
  std::ptrdiff_t linesizes[kPlanes];
  std::copy_n(layout.linesizes, kPlanes, linesizes);
  if (av_image_fill_plane_sizes(layout.planes, format, height, linesizes) < 0) return false;
  for (const std::size_t plane : layout.planes)
    if (plane > 0) layout.bytes += (plane + kSlack + 63) / 64 * 64;
  return layout.bytes > 0;
}

/// A picture's hold on its memory.
using Hold = std::shared_ptr<void>;

void LetGo(void* hold, std::uint8_t* /*memory*/) {
  delete static_cast<Hold*>(hold);
}

}  // namespace

void CPictureMemory::serve(AVCodecContext& decoder) {
  decoder.opaque = this;
  decoder.get_buffer2 = getBuffer;
#if LIBAVCODEC_VERSION_MAJOR < 60
  // Versions that ask would else let one thread decode at a time where a decoder works on whole
  // pictures side by side.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  decoder.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
}

std::shared_ptr<void> CPictureMemory::memoryFor(std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  if (!pool_ || pool_->bytesPerBuffer() != bytes) pool_ = std::make_unique<CBufferPool>(bytes, 0);
  return pool_->allocateShared();
}

bool CPictureMemory::fill(AVCodecContext& decoder, AVFrame& picture) {
  SLayout layout;
  if (!FindLayout(decoder, picture, layout)) return false;
  auto hold = std::make_unique<Hold>(memoryFor(layout.bytes));
  auto* memory = static_cast<std::uint8_t*>(hold->get());
  if (memory == nullptr) return false;
  picture.buf[0] = av_buffer_create(memory, layout.bytes, LetGo, hold.get(), 0);
  if (picture.buf[0] == nullptr) return false;
  hold.release();
  for (int i = 0; i < kPlanes && layout.planes[i] > 0; ++i) {
    picture.data[i] = memory;
    picture.linesize[i] = layout.linesizes[i];
    memory += (layout.planes[i] + kSlack + 63) / 64 * 64;
  }
  picture.extended_data = picture.data;
  return true;
}

int CPictureMemory::getBuffer(AVCodecContext* decoder, AVFrame* picture, int flags) {
  const AVPixFmtDescriptor* kind = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture->format));
  const std::uint64_t odd = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL;
  const bool plain = decoder->codec_type == AVMEDIA_TYPE_VIDEO && kind != nullptr &&
                     (kind->flags & odd) == 0 &&
                     (decoder->codec->capabilities & AV_CODEC_CAP_DR1) != 0;
  try {
    if (plain && static_cast<CPictureMemory*>(decoder->opaque)->fill(*decoder, *picture)) return 0;
  } catch (const std::bad_alloc&) {
    return AVERROR(ENOMEM);
  }
  return avcodec_default_get_buffer2(decoder, picture, flags);
}
