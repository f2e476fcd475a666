#pragma once

#include <cstdint>
#include <string>

#include "DpxHeader.h"

/// The pictures of the DPX files that film is scanned to: RGB or RGBA in 8 bits, 10 bits filled
/// from the top (three components in a word, method A) or 16 bits, either byte order, rows of whole
/// words. Read and written here because the image library takes several times as long, reads
/// the ends of ten-bit RGBA rows wrongly and does not keep the header. Other layouts go through the
/// library. THREAD: any.

/// True when the functions below know the layout.
bool IsPlainDpx(const CDpxHeader& header);

/// Reads the picture as 16-bit samples, components as stored: width * height * components.
/// REQUIRES: IsPlainDpx. Throws CClipError naming the file.
void ReadDpxPicture(const std::string& path, const CDpxHeader& header, std::uint16_t* stored);

/// Writes a file: the header as it is, then the samples narrowed to the header's depth. Throws
/// CClipError with the system's cause; `name` is what the message calls the file.
void WriteDpxFile(const std::string& path, const std::string& name, const CDpxHeader& header,
                  const std::uint16_t* stored);
