#include "DpxPicture.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "CodeValues.h"
#include "Scratch.h"
#include "clip/ClipReader.h"
#include "support/TargetClones.h"

namespace {

/// An open file that is closed on every way out.
class CDescriptor {
 public:
  CDescriptor(const std::string& path, int flags) : value_(::open(path.c_str(), flags, 0666)) {}
  ~CDescriptor() {
    if (value_ >= 0) ::close(value_);
  }
  CDescriptor(const CDescriptor&) = delete;
  CDescriptor& operator=(const CDescriptor&) = delete;
  int value() const { return value_; }
  bool close() { return ::close(std::exchange(value_, -1)) == 0; }

 private:
  int value_;
};

[[noreturn]] void ThrowSystemError(const std::string& name) {
  throw CClipError(name + ": " + std::strerror(errno));
}

std::size_t Components(const CDpxHeader& header) {
  return header.descriptor() == 51 ? 4 : 3;
}

/// Bytes of a row; 0 when the rows are not of whole words.
std::size_t RowBytes(const CDpxHeader& header) {
  const std::size_t datums = Components(header) * static_cast<std::size_t>(header.width());
  if (header.bitSize() == 10) return (datums + 2) / 3 * 4;
  const std::size_t bytes = datums * static_cast<std::size_t>(header.bitSize()) / 8;
  return bytes % 4 == 0 ? bytes : 0;
}

std::size_t PictureBytes(const CDpxHeader& header) {
  return RowBytes(header) * static_cast<std::size_t>(header.height());
}

constexpr std::uint32_t Swapped(std::uint32_t word) {
  return __builtin_bswap32(word);
}
constexpr std::uint16_t Swapped(std::uint16_t word) {
  return __builtin_bswap16(word);
}

template <class Word>
Word WordAt(const std::uint8_t* bytes, bool swap) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return swap ? Swapped(word) : word;
}

template <class Word>
void PutWord(Word word, bool swap, std::uint8_t* bytes) {
  if (swap) word = Swapped(word);
  std::memcpy(bytes, &word, sizeof word);
}

/// The pixels of a row, three datums a word. A loop without ends of its own becomes vectors.
template <bool Swap>
inline void DecodeWords(const std::uint8_t* __restrict row, std::size_t words,
                        std::uint16_t* __restrict stored) {
  for (std::size_t i = 0; i < words; ++i) {
    const std::uint32_t word = WordAt<std::uint32_t>(row + 4 * i, Swap);
    stored[3 * i] = WidenCode(word >> 22, 10);
    stored[3 * i + 1] = WidenCode(word >> 12 & 1023, 10);
    stored[3 * i + 2] = WidenCode(word >> 2 & 1023, 10);
  }
}

template <bool Swap>
inline void EncodeWords(const std::uint16_t* __restrict stored, std::size_t words,
                        std::uint8_t* __restrict row) {
  for (std::size_t i = 0; i < words; ++i) {
    const std::uint32_t word = NarrowSample(stored[3 * i], 10) << 22 |
                               NarrowSample(stored[3 * i + 1], 10) << 12 |
                               NarrowSample(stored[3 * i + 2], 10) << 2;
    PutWord(word, Swap, row + 4 * i);
  }
}

STAB_CLONES void DecodeTenBits(const std::uint8_t* row, std::size_t words, bool swap,
                               std::uint16_t* stored) {
  if (swap) return DecodeWords<true>(row, words, stored);
  DecodeWords<false>(row, words, stored);
}

STAB_CLONES void EncodeTenBits(const std::uint16_t* stored, std::size_t words, bool swap,
                               std::uint8_t* row) {
  if (swap) return EncodeWords<true>(stored, words, row);
  EncodeWords<false>(stored, words, row);
}

/// Rows of 10 bits end in a whole word; one that is not full is read and written by way of one.
void DecodeTenBitRow(const std::uint8_t* row, std::size_t datums, bool swap,
                     std::uint16_t* stored) {
  const std::size_t words = datums / 3;
  DecodeTenBits(row, words, swap, stored);
  std::uint16_t last[3];
  DecodeTenBits(row + 4 * words, datums % 3 ? 1 : 0, swap, last);
  std::copy_n(last, datums % 3, stored + 3 * words);
}

void EncodeTenBitRow(const std::uint16_t* stored, std::size_t datums, bool swap,
                     std::uint8_t* row) {
  const std::size_t words = datums / 3;
  EncodeTenBits(stored, words, swap, row);
  std::uint16_t last[3] = {};
  std::copy_n(stored + 3 * words, datums % 3, last);
  EncodeTenBits(last, datums % 3 ? 1 : 0, swap, row + 4 * words);
}

template <bool Swap>
void DecodeRow(const std::uint8_t* row, int bits, std::size_t datums, std::uint16_t* stored) {
  if (bits == 8) return WidenBytes(row, stored, datums);
  if (bits == 10) return DecodeTenBitRow(row, datums, Swap, stored);
  for (std::size_t i = 0; i < datums; ++i) stored[i] = WordAt<std::uint16_t>(row + 2 * i, Swap);
}

template <bool Swap>
void EncodeRow(const std::uint16_t* stored, int bits, std::size_t datums, std::uint8_t* row) {
  if (bits == 8) return NarrowToBytes(stored, row, datums);
  if (bits == 10) return EncodeTenBitRow(stored, datums, Swap, row);
  for (std::size_t i = 0; i < datums; ++i) PutWord(stored[i], Swap, row + 2 * i);
}

bool IsSwapped(const CDpxHeader& header) {
  return header.isLittleEndian() != (std::endian::native == std::endian::little);
}

/// Rows are coded in parts of this size: what the system has just copied is still in the cache, and
/// no memory of a picture's size has to be found.
constexpr std::size_t kPartBytes = 256u << 10;

std::size_t RowsOfPart(std::size_t rowBytes) {
  return std::max<std::size_t>(1, kPartBytes / rowBytes);
}

void ReadAll(int file, std::uint8_t* bytes, std::size_t count, std::size_t at,
             const std::string& path) {
  for (std::size_t done = 0; done < count;) {
    const ssize_t read = ::pread(file, bytes + done, count - done, static_cast<off_t>(at + done));
    if (read < 0 && errno == EINTR) continue;
    if (read < 0) ThrowSystemError(path);
    if (read == 0) throw CClipError(path + ": truncated, the end of the picture is missing");
    done += static_cast<std::size_t>(read);
  }
}

void WriteAll(int file, const std::uint8_t* bytes, std::size_t count, const std::string& name) {
  while (count > 0) {
    const ssize_t written = ::write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) ThrowSystemError(name);
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

}  // namespace

bool IsPlainDpx(const CDpxHeader& header) {
  const int bits = header.bitSize();
  const bool depth = bits == 8 || bits == 16 || (bits == 10 && header.packing() == 1);
  return depth && (header.descriptor() == 50 || header.descriptor() == 51) &&
         header.elements() == 1 && !header.isRunLength() && !header.isSigned() &&
         !header.hasLinePadding() && RowBytes(header) > 0;
}

CDpxPicture::CDpxPicture(const std::string& path)
    : path_(path), header_(path), file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (file_ < 0) ThrowSystemError(path);
}

CDpxPicture::~CDpxPicture() {
  ::close(file_);
}

namespace {

/// True when the byte is in the system's cache; systems that cannot tell say so of every byte.
bool IsCached(int file, std::size_t at) {
  std::uint8_t byte = 0;
  iovec into{&byte, 1};
  return ::preadv2(file, &into, 1, static_cast<off_t>(at), RWF_NOWAIT) >= 0 || errno != EAGAIN;
}

}  // namespace

void CDpxPicture::fetch() const {
  const std::size_t begin = header_.pictureOffset(), count = PictureBytes(header_);
  bool cached = true;
  for (const std::size_t part : {0, 1, 2, 3, 4})
    cached = cached && IsCached(file_, begin + (count - 1) / 4 * part);
  if (cached) return;
  // Read, and not announced to be needed (POSIX_FADV_WILLNEED): the system then fetches it in large
  // pieces, several times as fast.
  std::vector<std::uint8_t> bytes(std::min(kPartBytes, count));
  for (std::size_t done = 0; done < count; done += bytes.size())
    ReadAll(file_, bytes.data(), std::min(bytes.size(), count - done), begin + done, path_);
}

void CDpxPicture::read(std::uint16_t* stored) const {
  const std::size_t row = RowBytes(header_), rows = RowsOfPart(row);
  const std::size_t height = static_cast<std::size_t>(header_.height());
  const std::size_t datums = Components(header_) * static_cast<std::size_t>(header_.width());
  const auto decode = IsSwapped(header_) ? DecodeRow<true> : DecodeRow<false>;
  std::vector<std::uint8_t> bytes(std::min(rows, height) * row);
  for (std::size_t top = 0; top < height; top += rows) {
    const std::size_t count = std::min(rows, height - top);
    ReadAll(file_, bytes.data(), count * row, header_.pictureOffset() + top * row, path_);
    for (std::size_t y = 0; y < count; ++y)
      decode(bytes.data() + y * row, header_.bitSize(), datums, stored + (top + y) * datums);
  }
}

void CDpxPicture::readPart(const SRect& part, std::uint16_t* stored) const {
  // Three components of ten bits are a word of their own; others begin at whole bytes anyway.
  const std::size_t pixel =
      header_.bitSize() == 10 ? 4 : 3 * static_cast<std::size_t>(header_.bitSize()) / 8;
  const std::size_t row = RowBytes(header_);
  const std::size_t width = static_cast<std::size_t>(part.right - part.left + 1);
  const auto decode = IsSwapped(header_) ? DecodeRow<true> : DecodeRow<false>;
  // Rows are read together, with what lies between: asking the system once more takes longer than
  // having it copy a few rows.
  const std::size_t rows = RowsOfPart(row);
  std::size_t at = header_.pictureOffset() + static_cast<std::size_t>(part.top) * row +
                   static_cast<std::size_t>(part.left) * pixel;
  std::size_t left = static_cast<std::size_t>(part.bottom - part.top + 1);
  while (left > 0) {
    const std::size_t count = std::min(rows, left);
    const std::size_t wanted = (count - 1) * row + width * pixel;
    std::uint8_t* const bytes = Scratch<std::uint8_t>(wanted).data();
    ReadAll(file_, bytes, wanted, at, path_);
    for (std::size_t y = 0; y < count; ++y, stored += 3 * width)
      decode(bytes + y * row, header_.bitSize(), 3 * width, stored);
    at += count * row;
    left -= count;
  }
}

void WriteDpxFile(const std::string& path, const std::string& name, const CDpxHeader& header,
                  const std::uint16_t* stored) {
  const std::size_t row = RowBytes(header), rows = RowsOfPart(row);
  const std::size_t height = static_cast<std::size_t>(header.height());
  const std::size_t datums = Components(header) * static_cast<std::size_t>(header.width());
  const auto encode = IsSwapped(header) ? EncodeRow<true> : EncodeRow<false>;
  CDescriptor file(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC);
  if (file.value() < 0) ThrowSystemError(name);
  WriteAll(file.value(), header.bytes().data(), header.bytes().size(), name);
  std::vector<std::uint8_t> bytes(std::min(rows, height) * row);
  for (std::size_t top = 0; top < height; top += rows) {
    const std::size_t count = std::min(rows, height - top);
    for (std::size_t y = 0; y < count; ++y)
      encode(stored + (top + y) * datums, header.bitSize(), datums, bytes.data() + y * row);
    WriteAll(file.value(), bytes.data(), count * row, name);
  }
  WriteAll(file.value(), header.trailer().data(), header.trailer().size(), name);
  if (!file.close()) ThrowSystemError(name);
}
