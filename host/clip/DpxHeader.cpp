#include "DpxHeader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "FrameRates.h"
#include "clip/ClipReader.h"

namespace {

constexpr std::uint32_t kUndefined = 0xFFFFFFFFu;
constexpr std::size_t kMaxHeader = 64u << 20;
constexpr std::size_t kMaxTrailer = 1u << 20;

/// Byte ranges [begin, end) that describe the layout of one file rather than the picture.
struct SRange {
  std::size_t begin;
  std::size_t end;
};
constexpr SRange kLayout[] = {
    {0, 8},      // magic, offset of the picture
    {16, 20},    // file size
    {24, 36},    // section sizes
    {660, 664},  // encryption key
    {770, 780},  // elements, width, height
    {800, 801},  // descriptor
    {803, 820},  // bits, packing, encoding, offset, paddings
};

std::string TrimmedText(const std::vector<std::uint8_t>& bytes, std::size_t at,
                        std::size_t length) {
  std::string text;
  for (std::size_t i = at; i < at + length && bytes[i] != 0 && bytes[i] != 0xFF; ++i)
    text += static_cast<char>(bytes[i]);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

}  // namespace

CDpxHeader::CDpxHeader(const std::string& path) : bytes_(kFixedSize) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw CClipError(path + ": " + std::strerror(errno));
  if (!file.read(reinterpret_cast<char*>(bytes_.data()), kFixedSize))
    throw CClipError(path + ": the file ends within its header");
  littleEndian_ = std::memcmp(bytes_.data(), "XPDS", 4) == 0;
  if (!littleEndian_ && std::memcmp(bytes_.data(), "SDPX", 4) != 0)
    throw CClipError(path + ": not a DPX file");
  if (width() < 1 || height() < 1 || width() > 65536 || height() > 65536)
    throw CClipError(path + ": no sensible picture size in the header");
  const std::uint64_t size = std::filesystem::file_size(path);
  const std::uint64_t needed = pictureOffset() + pictureBytes();
  if (size < needed)
    throw CClipError(path + ": truncated, " + std::to_string(size) + " of " +
                     std::to_string(needed) + " bytes are there");
  if (pictureOffset() > kMaxHeader) throw CClipError(path + ": the header is too long");
  bytes_.resize(std::max<std::size_t>(kFixedSize, pictureOffset()));
  file.read(reinterpret_cast<char*>(bytes_.data() + kFixedSize),
            static_cast<std::streamsize>(bytes_.size() - kFixedSize));
  if (pictureBytes() > 0 && size > needed && size - needed <= kMaxTrailer) {
    trailer_.resize(size - needed);
    file.seekg(static_cast<std::streamoff>(needed));
    file.read(reinterpret_cast<char*>(trailer_.data()),
              static_cast<std::streamsize>(trailer_.size()));
  }
  if (!file) throw CClipError(path + ": cannot read the header");
}

std::uint16_t CDpxHeader::u16(std::size_t at) const {
  const unsigned a = bytes_[at], b = bytes_[at + 1];
  return static_cast<std::uint16_t>(littleEndian_ ? b << 8 | a : a << 8 | b);
}

std::uint32_t CDpxHeader::u32(std::size_t at) const {
  const std::uint32_t a = u16(at), b = u16(at + 2);
  return littleEndian_ ? b << 16 | a : a << 16 | b;
}

float CDpxHeader::r32(std::size_t at) const {
  return std::bit_cast<float>(u32(at));
}

std::uint32_t CDpxHeader::pictureOffset() const {
  const std::uint32_t element = u32(808);
  return element != kUndefined && element >= kFixedSize ? element : u32(4);
}

int CDpxHeader::origin(std::size_t at) const {
  const std::uint32_t value = u32(at);
  return value <= 0x7FFFFFFFu ? static_cast<int>(value) : 0;  // all ones: not known
}

std::uint32_t CDpxHeader::linePadding() const {
  const std::uint32_t padding = u32(812);
  return padding < 65536 ? padding : 0;
}

/// The least that the picture takes; what run-length encoding takes is not known beforehand.
std::uint64_t CDpxHeader::pictureBytes() const {
  const int kind = descriptor();
  if (isRunLength() || elements() != 1) return 0;
  const std::uint64_t datums = kind == 50 ? 3 : kind == 51 || kind == 52 ? 4 : 1;
  const std::uint64_t row = datums * static_cast<std::uint64_t>(width());
  const bool filled = packing() == 1 || packing() == 2;
  std::uint64_t rowBytes = (row * static_cast<std::uint64_t>(bitSize()) + 7) / 8;
  if (filled && bitSize() == 10) rowBytes = (row + 2) / 3 * 4;
  if (filled && bitSize() == 12) rowBytes = row * 2;
  rowBytes += linePadding();
  return rowBytes * static_cast<std::uint64_t>(height());
}

std::optional<SFrameRate> CDpxHeader::frameRate() const {
  for (const std::size_t at : {std::size_t{1724}, std::size_t{1940}}) {  // film, television
    const float rate = r32(at);
    if (std::isfinite(rate) && rate >= 1.0f && rate <= 1000.0f) return FrameRateFromValue(rate);
  }
  return std::nullopt;
}

std::optional<std::uint32_t> CDpxHeader::timecode() const {
  const std::uint32_t code = u32(1920);
  if (code == kUndefined) return std::nullopt;
  return code;
}

std::string CDpxHeader::filmEdgeCode() const {
  std::string text;
  for (const SRange& part :
       {SRange{1664, 1666}, {1666, 1668}, {1668, 1670}, {1670, 1676}, {1676, 1680}}) {
    const std::string field = TrimmedText(bytes_, part.begin, part.end - part.begin);
    if (!field.empty()) text += (text.empty() ? "" : " ") + field;
  }
  return text;
}

void CDpxHeader::carryInto(const std::string& path) const {
  const CDpxHeader written(path);
  if (written.littleEndian_ != littleEndian_)
    throw CClipError(path + ": written in another byte order than its source");
  std::vector<std::uint8_t> merged = bytes_;
  if (written.bytes_.size() != bytes_.size()) {
    merged.resize(kFixedSize);
    merged.insert(merged.end(), written.bytes_.begin() + kFixedSize, written.bytes_.end());
  }
  for (const SRange& range : kLayout)
    std::copy(written.bytes_.begin() + static_cast<std::ptrdiff_t>(range.begin),
              written.bytes_.begin() + static_cast<std::ptrdiff_t>(range.end),
              merged.begin() + static_cast<std::ptrdiff_t>(range.begin));
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.write(reinterpret_cast<const char*>(merged.data()),
             static_cast<std::streamsize>(merged.size()));
  file.close();
  if (!file) throw CClipError(path + ": " + std::strerror(errno));
}

void CDpxHeader::nameFile(const std::string& path, const std::string& name) {
  constexpr std::streamoff kNameAt = 36;
  std::string field = name.substr(0, 99);
  field.resize(100, '\0');
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(kNameAt).write(field.data(), static_cast<std::streamsize>(field.size()));
  file.close();
  if (!file) throw CClipError(path + ": " + std::strerror(errno));
}
