#include "ImageLibrary.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

#include "CodeValues.h"
#include "DpxHeader.h"
#include "ImageTraits.h"
#include "SequencePattern.h"
#include "WholeFile.h"
#include "clip/ClipReader.h"

namespace {

using OIIO::TypeDesc;

/// Memory that is used again for the next frame on the same thread: fresh pages cost more than the
/// conversion.
template <class T>
std::vector<T>& Scratch(std::size_t count) {
  thread_local std::vector<T> memory;
  if (memory.size() < count) memory.resize(count);
  return memory;
}

void ReadPixels(OIIO::ImageInput& input, const SImageTraits& traits, const std::string& path,
                TypeDesc type, void* data) {
  if (!input.read_image(0, 0, 0, traits.channels, type, data))
    throw CClipError(ImageErrorText(path, input.geterror(), "cannot be read"));
}

/// Reads half or float samples and encodes them.
void ReadFloats(OIIO::ImageInput& input, const SImageTraits& traits, const std::string& path,
                std::uint16_t* stored, std::size_t count) {
  if (!traits.isSingleFloat) {
    ReadPixels(input, traits, path, TypeDesc::HALF, stored);
  } else {
    std::vector<float>& floats = Scratch<float>(count);
    ReadPixels(input, traits, path, TypeDesc::FLOAT, floats.data());
    for (std::size_t i = 0; i < count; ++i) {
      const std::optional<std::uint16_t> exact = ExactHalf(floats[i]);
      if (!exact)
        throw CClipError(path + ": " + traits.pixelText(i) + " holds " + std::to_string(floats[i]) +
                         ", which is no half-precision number; convert to half first");
      stored[i] = *exact;
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (!IsCarriedHalf(stored[i]))
      throw CClipError(path + ": " + traits.pixelText(i) + " holds " +
                       std::to_string(HalfToFloat(stored[i])) +
                       "; negative and undefined numbers cannot be carried");
    stored[i] = WidenHalf(stored[i]);
  }
}

/// Reads samples of any kind as 16-bit codes, channels as stored.
void ReadStored(OIIO::ImageInput& input, const SImageTraits& traits, const std::string& path,
                std::uint16_t* stored, std::size_t count) {
  if (traits.isFloat) return ReadFloats(input, traits, path, stored, count);
  if (traits.bitDepth > 8) return ReadPixels(input, traits, path, TypeDesc::UINT16, stored);
  std::vector<std::uint8_t>& bytes = Scratch<std::uint8_t>(count);
  ReadPixels(input, traits, path, TypeDesc::UINT8, bytes.data());
  WidenBytes(bytes.data(), stored, count);
}

/// Encodes 16-bit samples, channels as they shall be stored, and hands them to the file.
bool WriteStored(OIIO::ImageOutput& output, const SImageTraits& traits, const std::uint16_t* stored,
                 std::size_t count) {
  if (traits.isSingleFloat) {
    std::vector<float>& floats = Scratch<float>(count);
    for (std::size_t i = 0; i < count; ++i) floats[i] = HalfToFloat(NarrowToHalf(stored[i]));
    return output.write_image(TypeDesc::FLOAT, floats.data());
  }
  if (!traits.isFloat && traits.bitDepth == 8) {
    std::vector<std::uint8_t>& bytes = Scratch<std::uint8_t>(count);
    NarrowToBytes(stored, bytes.data(), count);
    return output.write_image(TypeDesc::UINT8, bytes.data());
  }
  if (!traits.isFloat && traits.bitDepth == 16) return output.write_image(TypeDesc::UINT16, stored);
  static thread_local std::vector<std::uint16_t> codes;
  if (codes.size() < count) codes.resize(count);
  if (traits.isFloat)
    for (std::size_t i = 0; i < count; ++i) codes[i] = NarrowToHalf(stored[i]);
  else
    QuantiseSamples(stored, codes.data(), count, traits.bitDepth);
  return output.write_image(traits.isFloat ? TypeDesc::HALF : TypeDesc::UINT16, codes.data());
}

/// The library reports no cause when the disk is full; the system does.
std::string WriteErrorText(const std::string& path, std::string cause) {
  const std::string system = errno != 0 ? std::strerror(errno) : "cannot be written";
  if (!cause.empty() && errno != 0) cause += " (" + system + ")";
  return ImageErrorText(path, cause, system.c_str());
}

}  // namespace

void ReadStoredImage(const std::string& path, const SImageTraits& expected, int threads,
                     std::uint16_t* stored) {
  const std::unique_ptr<OIIO::ImageInput> input = OpenImage(path);
  input->threads(threads);
  const SImageTraits traits = TraitsOf(*input, path);
  if (!traits.isSameKind(expected))
    throw CClipError(path + ": is " + traits.text() + ", the sequence is " + expected.text());
  ReadStored(*input, traits, path, stored, traits.storedCount());
}

void WriteStoredImage(const std::string& path, const std::string& temporary,
                      const SImageTarget& target, int threads, const std::uint16_t* stored) {
  const SImageTraits& traits = target.traits;
  std::optional<CDpxHeader> header;
  if (traits.extension == "dpx" && ExtensionOf(target.templateFile) == "dpx")
    header.emplace(target.templateFile);
  OIIO::ImageSpec spec = TargetSpec(target);
  if (header) spec.attribute("oiio:Endian", header->isLittleEndian() ? "little" : "big");
  const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(traits.extension);
  if (!output) throw CClipError(ImageErrorText(path, OIIO::geterror(), "cannot be written"));
  output->threads(threads);
  errno = 0;
  if (!output->open(temporary, spec) ||
      !WriteStored(*output, traits, stored, traits.storedCount()) || !output->close())
    throw CClipError(WriteErrorText(path, output->geterror()));
  if (header)
    header->carryInto(temporary);
  else if (traits.extension == "dpx")
    CDpxHeader::nameFile(temporary, path.substr(path.rfind('/') + 1));
  try {
    RequireWholeFile(temporary, traits.extension);
  } catch (const CClipError&) {
    throw CClipError(WriteErrorText(path, ""));
  }
}
