#include "VideoFrame.h"

#include <algorithm>
#include <new>
#include <utility>

#include "clip/ClipReader.h"

namespace {

constexpr std::size_t kMostShelves = 16;

/// A part is converted with this much around it, so that colours between two samples come from the
/// same neighbours as in the whole picture, and begins where every kind of subsampling has a
/// sample.
constexpr int kMargin = 16;
constexpr int kGrid = 16;

/// Pixels [first, end) of a row or column.
struct SStretch {
  int first = 0;
  int end = 0;
  int count() const { return end - first; }
};

SStretch Widened(int first, int last, int size) {
  return {std::max(0, first - kMargin) / kGrid * kGrid,
          std::min(size, (last + 1 + kMargin + kGrid - 1) / kGrid * kGrid)};
}

/// True when a part of the picture is a picture of its own, converted to the same values.
bool CanBeCut(const AVFrame& picture, const AVPixFmtDescriptor& kind) {
  const std::uint64_t odd =
      AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL;
  if ((kind.flags & odd) != 0) return false;
  const bool subsampled = kind.log2_chroma_w != 0 || kind.log2_chroma_h != 0;
  if ((kind.flags & AV_PIX_FMT_FLAG_PLANAR) == 0 && subsampled) return false;
  // With half a colour sample at its end the whole picture's colours are stretched a little.
  return picture.width % (1 << kind.log2_chroma_w) == 0 &&
         picture.height % (1 << kind.log2_chroma_h) == 0;
}

/// A view of a part of the picture, which shares its memory.
Picture Cut(const AVFrame& picture, const AVPixFmtDescriptor& kind, SStretch x, SStretch y) {
  Picture part = MakePicture();
  if (av_frame_ref(part.get(), &picture) < 0) throw std::bad_alloc();
  part->width = x.count();
  part->height = y.count();
  for (int c = 0; c < kind.nb_components; ++c) {
    const AVComponentDescriptor& component = kind.comp[c];
    const bool isColour = c == 1 || c == 2;
    const int column = x.first >> (isColour ? kind.log2_chroma_w : 0);
    const int row = y.first >> (isColour ? kind.log2_chroma_h : 0);
    part->data[component.plane] =
        picture.data[component.plane] +
        static_cast<std::ptrdiff_t>(row) * picture.linesize[component.plane] +
        static_cast<std::ptrdiff_t>(column) * component.step;
  }
  return part;
}

class CVideoFrame : public IClipFrame {
 public:
  CVideoFrame(const AVFrame& picture, CPixelsPool& pixels, const std::string& path, int frame)
      : picture_(MakePicture()), pixels_(pixels), path_(path), frame_(frame) {
    if (av_frame_ref(picture_.get(), &picture) < 0) throw std::bad_alloc();
    kind_ = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
  }

  void read(std::uint16_t* samples) const override { convert(*picture_, samples); }

  void readPart(const SRect& part, std::uint16_t* samples) const override {
    const bool cut = givesParts();
    const SStretch x =
        cut ? Widened(part.left, part.right, picture_->width) : SStretch{0, picture_->width};
    const SStretch y =
        cut ? Widened(part.top, part.bottom, picture_->height) : SStretch{0, picture_->height};
    const auto pitch = 3 * static_cast<std::size_t>(x.count());
    std::vector<std::uint16_t> around(pitch * static_cast<std::size_t>(y.count()));
    convert(cut ? *Cut(*picture_, *kind_, x, y) : *picture_, around.data());
    const auto count = 3 * static_cast<std::size_t>(part.right - part.left + 1);
    const std::uint16_t* row = around.data() +
                               static_cast<std::size_t>(part.top - y.first) * pitch +
                               3 * static_cast<std::size_t>(part.left - x.first);
    for (int line = part.top; line <= part.bottom; ++line, row += pitch)
      samples = std::copy_n(row, count, samples);
  }

  bool givesParts() const override { return kind_ != nullptr && CanBeCut(*picture_, *kind_); }

  std::size_t bytes() const override {
    std::size_t sum = 0;
    for (const AVBufferRef* buffer : picture_->buf)
      if (buffer != nullptr) sum += static_cast<std::size_t>(buffer->size);
    return sum;
  }

 private:
  void convert(const AVFrame& picture, std::uint16_t* samples) const {
    try {
      pixels_.toSamples(picture, samples);
    } catch (const CClipError& error) {
      throw CClipError("frame " + std::to_string(frame_) + ": " + path_ + ": " + error.what());
    }
  }

  const Picture picture_;
  const AVPixFmtDescriptor* kind_ = nullptr;
  CPixelsPool& pixels_;
  const std::string path_;
  const int frame_;
};

}  // namespace

void CPixelsPool::toSamples(const AVFrame& picture, std::uint16_t* samples) {
  Pixels pixels = take(picture.width, picture.height);
  pixels->toSamples(picture, samples);
  giveBack(picture.width, picture.height, std::move(pixels));
}

CPixelsPool::SShelf& CPixelsPool::shelfLocked(int width, int height) {
  const auto found = std::find_if(shelves_.begin(), shelves_.end(), [&](const SShelf& shelf) {
    return shelf.width == width && shelf.height == height;
  });
  if (found != shelves_.end()) {
    shelves_.splice(shelves_.begin(), shelves_, found);
  } else {
    if (shelves_.size() >= kMostShelves) shelves_.pop_back();
    shelves_.push_front({width, height, {}});
  }
  return shelves_.front();
}

CPixelsPool::Pixels CPixelsPool::take(int width, int height) {
  {
    const std::lock_guard lock(mutex_);
    std::vector<Pixels>& free = shelfLocked(width, height).free;
    if (!free.empty()) {
      Pixels pixels = std::move(free.back());
      free.pop_back();
      return pixels;
    }
  }
  return std::make_unique<CVideoPixels>(1);
}

void CPixelsPool::giveBack(int width, int height, Pixels pixels) {
  const std::lock_guard lock(mutex_);
  shelfLocked(width, height).free.push_back(std::move(pixels));
}

std::unique_ptr<IClipFrame> MakeVideoFrame(const AVFrame& picture, CPixelsPool& pixels,
                                           const std::string& path, int frame) {
  return std::make_unique<CVideoFrame>(picture, pixels, path, frame);
}
