#pragma once

#include <Imath/half.h>
#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <string>
#include <vector>

/// Image files made and looked at through the library alone, past the code under test.

struct SImageCase {
  const char* name;
  const char* extension;
  OIIO::TypeDesc type;
  int bits;
  int channels = 3;
  const char* endian = "";
  const char* packing = "";
};

inline OIIO::ImageSpec SpecOf(const SImageCase& c, int width, int height) {
  OIIO::ImageSpec spec(width, height, c.channels, c.type);
  if (c.channels == 1) spec.channelnames = {"Y"};
  spec.attribute("oiio:BitsPerSample", c.bits);
  if (*c.endian) spec.attribute("oiio:Endian", c.endian);
  if (*c.packing) spec.attribute("dpx:Packing", c.packing);
  return spec;
}

/// `values`: as the file stores them, in the type that its ImageSpec names.
inline void WriteRaw(const std::string& path, const OIIO::ImageSpec& spec, const void* values) {
  const auto output = OIIO::ImageOutput::create(path);
  if (!output || !output->open(path, spec) || !output->write_image(spec.format, values) ||
      !output->close())
    throw std::runtime_error(path + ": the test's own file cannot be written");
}

struct SRawImage {
  OIIO::ImageSpec spec;
  std::vector<unsigned char> bytes;
};

inline SRawImage ReadRaw(const std::string& path) {
  OIIO::ImageSpec asked;
  asked.attribute("oiio:UnassociatedAlpha", 1);
  const auto input = OIIO::ImageInput::open(path, &asked);
  if (!input) throw std::runtime_error(path + ": " + OIIO::geterror());
  SRawImage image{input->spec(), {}};
  image.bytes.resize(image.spec.image_bytes(true));
  if (!input->read_image(0, 0, 0, image.spec.nchannels, image.spec.format, image.bytes.data()))
    throw std::runtime_error(path + ": " + input->geterror());
  return image;
}

/// Every code of the depth in some order, at least once in every colour component; alpha opaque.
/// Floats: every carried half.
inline std::vector<unsigned char> EveryCode(const SImageCase& c, int width, int height) {
  const std::size_t pixels = static_cast<std::size_t>(width) * height;
  std::vector<unsigned char> bytes;
  const bool isHalf = c.type == OIIO::TypeDesc::HALF, isFloat = c.type == OIIO::TypeDesc::FLOAT;
  const unsigned count = isHalf || isFloat ? 0x7C00u : 1u << c.bits;
  for (std::size_t i = 0; i < pixels * c.channels; ++i) {
    const bool isAlpha = c.channels % 2 == 0 && i % c.channels == c.channels - 1u;
    const unsigned pixel = static_cast<unsigned>(i / c.channels), component = i % c.channels;
    unsigned code = isAlpha ? count - 1 : (pixel + component * 77u) % count;
    if (isHalf && isAlpha) code = 0x3C00;
    if (isFloat) {
      half value;
      value.setBits(static_cast<unsigned short>(code));
      const float number = value;
      const auto* raw = reinterpret_cast<const unsigned char*>(&number);
      bytes.insert(bytes.end(), raw, raw + 4);
    } else if (c.type == OIIO::TypeDesc::UINT8) {
      bytes.push_back(static_cast<unsigned char>(code));
    } else {
      if (!isHalf) code = code << (16 - c.bits) | code >> (2 * c.bits - 16);
      bytes.push_back(static_cast<unsigned char>(code));
      bytes.push_back(static_cast<unsigned char>(code >> 8));
    }
  }
  return bytes;
}
