#include "ImageFile.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include "CodeValues.h"
#include "DpxHeader.h"
#include "DpxPicture.h"
#include "ImageTraits.h"
#include "SequencePattern.h"
#include "TemporaryFile.h"
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

std::string PixelText(const SImageTraits& traits, std::size_t sample) {
  const std::size_t pixel = sample / static_cast<std::size_t>(traits.channels);
  const std::size_t width = static_cast<std::size_t>(traits.width);
  return "pixel (" + std::to_string(pixel % width) + ", " + std::to_string(pixel / width) + ")";
}

/// Puts the stored channels of each pixel into three samples. Alpha must be `opaque`.
void SpreadChannels(const std::uint16_t* stored, const SImageTraits& traits, unsigned opaque,
                    const std::string& path, std::uint16_t* samples) {
  const std::size_t channels = static_cast<std::size_t>(traits.channels);
  const std::size_t pixels = static_cast<std::size_t>(traits.width) * traits.height;
  const bool grey = channels < 3, alpha = channels == 2 || channels == 4;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint16_t* from = stored + i * channels;
    if (alpha && from[channels - 1] != opaque)
      throw CClipError(path + ": " + PixelText(traits, i * channels) +
                       " is not opaque; alpha cannot be carried");
    for (std::size_t c = 0; c < 3; ++c) samples[i * 3 + c] = from[grey ? 0 : c];
  }
}

/// The opposite. Grey that has become coloured goes back as the mean.
void GatherChannels(const std::uint16_t* samples, const SImageTraits& traits, std::uint16_t opaque,
                    std::uint16_t* stored) {
  const std::size_t channels = static_cast<std::size_t>(traits.channels);
  const std::size_t pixels = static_cast<std::size_t>(traits.width) * traits.height;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint16_t* from = samples + i * 3;
    std::uint16_t* to = stored + i * channels;
    if (channels < 3)
      to[0] = static_cast<std::uint16_t>((from[0] + from[1] + from[2] + 1) / 3);
    else
      std::memcpy(to, from, 3 * sizeof *to);
    if (channels == 2 || channels == 4) to[channels - 1] = opaque;
  }
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
        throw CClipError(path + ": " + PixelText(traits, i) + " holds " +
                         std::to_string(floats[i]) +
                         ", which is no half-precision number; convert to half first");
      stored[i] = *exact;
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (!IsCarriedHalf(stored[i]))
      throw CClipError(path + ": " + PixelText(traits, i) + " holds " +
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

constexpr std::uint16_t kOpaqueHalf = WidenHalf(0x3C00);  // 1.0

std::size_t StoredCount(const SImageTraits& traits) {
  return static_cast<std::size_t>(traits.width) * traits.height * traits.channels;
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

/// True when the file was a DPX file of a layout that needs no library, and has been read.
bool ReadPlainDpx(const std::string& path, const SImageTraits& expected, std::uint16_t* samples) {
  if (expected.extension != "dpx") return false;
  const CDpxHeader header(path);
  SImageTraits traits = expected;
  traits.width = header.width();
  traits.height = header.height();
  traits.channels = header.descriptor() == 51 ? 4 : 3;
  traits.bitDepth = header.bitSize();
  if (!IsPlainDpx(header) || !traits.isSameKind(expected)) return false;
  if (traits.channels == 3) {
    ReadDpxPicture(path, header, samples);
    return true;
  }
  std::vector<std::uint16_t>& stored = Scratch<std::uint16_t>(StoredCount(traits));
  ReadDpxPicture(path, header, stored.data());
  SpreadChannels(stored.data(), traits, 65535, path, samples);
  return true;
}

void WriteThroughLibrary(const std::string& path, const std::string& temporary,
                         const SImageTarget& target, const CDpxHeader* header, int threads,
                         const std::uint16_t* stored) {
  const SImageTraits& traits = target.traits;
  OIIO::ImageSpec spec = TargetSpec(target);
  if (header != nullptr) spec.attribute("oiio:Endian", header->isLittleEndian() ? "little" : "big");
  const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(traits.extension);
  if (!output) throw CClipError(ImageErrorText(path, OIIO::geterror(), "cannot be written"));
  output->threads(threads);
  errno = 0;
  if (!output->open(temporary, spec) ||
      !WriteStored(*output, traits, stored, StoredCount(traits)) || !output->close())
    throw CClipError(WriteErrorText(path, output->geterror()));
  if (header != nullptr)
    header->carryInto(temporary);
  else if (traits.extension == "dpx")
    CDpxHeader::nameFile(temporary, path.substr(path.rfind('/') + 1));
  try {
    RequireWholeFile(temporary, traits.extension);
  } catch (const CClipError&) {
    throw CClipError(WriteErrorText(path, ""));
  }
}

}  // namespace

bool SImageTraits::isSameKind(const SImageTraits& other) const {
  return extension == other.extension && width == other.width && height == other.height &&
         originX == other.originX && originY == other.originY && channels == other.channels &&
         bitDepth == other.bitDepth && isFloat == other.isFloat;
}

std::string SImageTraits::text() const {
  std::string size = std::to_string(width) + " x " + std::to_string(height);
  if (originX != 0 || originY != 0)
    size += " at (" + std::to_string(originX) + ", " + std::to_string(originY) + ")";
  return size + ", " + std::to_string(channels) + " x " + std::to_string(bitDepth) + " bit" +
         (isFloat ? " float" : "");
}

SImageTraits ReadImageTraits(const std::string& path) {
  RequireWholeFile(path, ExtensionOf(path));
  return TraitsOf(*OpenImage(path), path);
}

void ReadImage(const std::string& path, const SImageTraits& expected, int threads,
               std::uint16_t* samples) {
  if (ReadPlainDpx(path, expected, samples)) return;
  RequireWholeFile(path, expected.extension);
  const std::unique_ptr<OIIO::ImageInput> input = OpenImage(path);
  input->threads(threads);
  const SImageTraits traits = TraitsOf(*input, path);
  if (!traits.isSameKind(expected))
    throw CClipError(path + ": is " + traits.text() + ", the sequence is " + expected.text());
  const std::size_t count = StoredCount(traits);
  if (traits.channels == 3) return ReadStored(*input, traits, path, samples, count);
  std::vector<std::uint16_t>& stored = Scratch<std::uint16_t>(count);
  ReadStored(*input, traits, path, stored.data(), count);
  SpreadChannels(stored.data(), traits, traits.isFloat ? kOpaqueHalf : 65535, path, samples);
}

void WriteImage(const std::string& path, const SImageTarget& target, int threads,
                const std::uint16_t* samples) {
  const SImageTraits& traits = target.traits;
  const std::uint16_t* stored = samples;
  if (traits.channels != 3) {
    std::vector<std::uint16_t>& gathered = Scratch<std::uint16_t>(StoredCount(traits));
    GatherChannels(samples, traits, traits.isFloat ? kOpaqueHalf : 65535, gathered.data());
    stored = gathered.data();
  }
  const bool fromDpx = traits.extension == "dpx" && ExtensionOf(target.templateFile) == "dpx";
  const std::optional<CDpxHeader> header =
      fromDpx ? std::optional<CDpxHeader>(target.templateFile) : std::nullopt;
  CTemporaryFile temporary(path);
  if (header && IsPlainDpx(*header))
    WriteDpxFile(temporary.path(), path, *header, stored);
  else
    WriteThroughLibrary(path, temporary.path(), target, header ? &*header : nullptr, threads,
                        stored);
  temporary.commit();
}
