#pragma once

#include <cstdint>
#include <string>

#include "DpxHeader.h"
#include "support/Rect.h"

/// The pictures of the DPX files that film is scanned to: RGB or RGBA in 8 bits, 10 bits filled
/// from the top (three components in a word, method A) or 16 bits, either byte order, rows of whole
/// words. Read and written here because the image library takes several times as long, reads
/// the ends of ten-bit RGBA rows wrongly and does not keep the header. Other layouts go through the
/// library. THREAD: any.

/// True when the functions below know the layout.
bool IsPlainDpx(const CDpxHeader& header);

/// The picture of an open file, as 16-bit samples. THREAD: any for every operation; the file's
/// position is not used.
class CDpxPicture {
 public:
  /// Throws CClipError naming the file: as CDpxHeader does, or it cannot be opened.
  explicit CDpxPicture(const std::string& path);
  ~CDpxPicture();
  CDpxPicture(const CDpxPicture&) = delete;
  CDpxPicture& operator=(const CDpxPicture&) = delete;

  const CDpxHeader& header() const { return header_; }
  /// Brings the file's picture from its disk into the system's cache, where it is not there yet.
  /// Throws as read.
  void fetch() const;
  /// Components as stored: width * height * components. REQUIRES: IsPlainDpx(header()). Throws
  /// CClipError naming the file.
  void read(std::uint16_t* stored) const;
  /// The pixels of `part` (inclusive), row after row, without reading the others. REQUIRES: as
  /// read; three components; the part lies in the picture and is not empty.
  void readPart(const SRect& part, std::uint16_t* stored) const;

 private:
  const std::string path_;
  const CDpxHeader header_;
  const int file_;
};

/// Writes a file: the header as it is, then the samples narrowed to the header's depth. Throws
/// CClipError with the system's cause; `name` is what the message calls the file.
void WriteDpxFile(const std::string& path, const std::string& name, const CDpxHeader& header,
                  const std::uint16_t* stored);
