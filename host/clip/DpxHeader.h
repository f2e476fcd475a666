#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clip/ClipInfo.h"

/// The header of a DPX file (SMPTE ST 268) as bytes. Kept whole, so that edge code, timecode, user
/// data and fields that nobody thought of go into the output as they are. A plain value.
class CDpxHeader {
 public:
  /// Bytes of the generic and industry sections.
  static constexpr std::size_t kFixedSize = 2048;

  /// Reads everything before the picture. Throws CClipError naming the file: not a DPX file, or a
  /// file that ends before its header or its picture does.
  explicit CDpxHeader(const std::string& path);

  bool isLittleEndian() const { return littleEndian_; }
  int width() const { return static_cast<int>(u32(772)); }
  int height() const { return static_cast<int>(u32(776)); }
  int originX() const { return origin(1408); }  ///< of the stored pixels in the picture
  int originY() const { return origin(1412); }
  int elements() const { return u16(770); }
  int descriptor() const { return u8(800); }
  int bitSize() const { return u8(803); }
  int packing() const { return u16(804); }
  bool isRunLength() const { return u16(806) == 1; }
  bool isSigned() const { return u32(780) == 1; }
  bool hasLinePadding() const { return linePadding() != 0; }
  std::uint32_t pictureOffset() const;
  std::optional<SFrameRate> frameRate() const;
  std::optional<std::uint32_t> timecode() const;  ///< binary coded, HHMMSSFF
  /// Edge code as printed on the film: maker, type, offset, prefix, count; empty when there is
  /// none.
  std::string filmEdgeCode() const;
  /// Everything before the picture.
  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  /// What follows the picture, padding mostly; empty when the picture's size is not known.
  const std::vector<std::uint8_t>& trailer() const { return trailer_; }

  /// Puts this header's descriptive fields into the DPX file at `path`, which holds the same kind
  /// of picture; what describes the layout of that file stays. Throws CClipError.
  void carryInto(const std::string& path) const;

  /// Puts a file name into the header of the DPX file at `path`: the library enters the name that
  /// it was given, which is a temporary one. Throws CClipError.
  static void nameFile(const std::string& path, const std::string& name);

 private:
  std::uint8_t u8(std::size_t at) const { return bytes_[at]; }
  std::uint16_t u16(std::size_t at) const;
  std::uint32_t u32(std::size_t at) const;
  float r32(std::size_t at) const;
  int origin(std::size_t at) const;
  std::uint32_t linePadding() const;
  std::uint64_t pictureBytes() const;

  std::vector<std::uint8_t> bytes_;
  std::vector<std::uint8_t> trailer_;
  bool littleEndian_ = false;
};
