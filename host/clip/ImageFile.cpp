#include "ImageFile.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include "CodeValues.h"
#include "DpxPicture.h"
#include "FrameRates.h"
#include "MediaModules.h"
#include "Scratch.h"
#include "SequencePattern.h"
#include "TemporaryFile.h"
#include "WholeFile.h"
#include "clip/ClipReader.h"

namespace {

/// Puts the stored channels of each pixel into three samples. Alpha must be `opaque`.
void SpreadChannels(const std::uint16_t* stored, const SImageTraits& traits, unsigned opaque,
                    const std::string& path, std::uint16_t* samples) {
  const std::size_t channels = static_cast<std::size_t>(traits.channels);
  const std::size_t pixels = static_cast<std::size_t>(traits.width) * traits.height;
  const bool grey = channels < 3, alpha = channels == 2 || channels == 4;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint16_t* from = stored + i * channels;
    if (alpha && from[channels - 1] != opaque)
      throw CClipError(path + ": " + traits.pixelText(i * channels) +
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

constexpr std::uint16_t kOpaqueHalf = WidenHalf(0x3C00);  // 1.0

/// The header of a DPX file of a layout that needs no library.
std::optional<CDpxHeader> PlainDpxHeader(const std::string& path) {
  if (ExtensionOf(path) != "dpx") return std::nullopt;
  CDpxHeader header(path);
  if (!IsPlainDpx(header)) return std::nullopt;
  return header;
}

SImageTraits TraitsOf(const CDpxHeader& header) {
  SImageTraits traits;
  traits.extension = "dpx";
  traits.width = header.width();
  traits.height = header.height();
  traits.originX = header.originX();
  traits.originY = header.originY();
  traits.channels = header.descriptor() == 51 ? 4 : 3;
  traits.bitDepth = header.bitSize();
  traits.isPlain = true;
  AddTiming(header, traits);
  return traits;
}

void RequireKind(const SImageTraits& found, const SImageTraits& expected, const std::string& path) {
  if (!found.isSameKind(expected))
    throw CClipError(path + ": is " + found.text() + ", the sequence is " + expected.text());
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

std::size_t SImageTraits::storedCount() const {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
         static_cast<std::size_t>(channels);
}

std::string SImageTraits::pixelText(std::size_t sample) const {
  const std::size_t pixel = sample / static_cast<std::size_t>(channels);
  const auto columns = static_cast<std::size_t>(width);
  return "pixel (" + std::to_string(pixel % columns) + ", " + std::to_string(pixel / columns) + ")";
}

void AddTiming(const CDpxHeader& header, SImageTraits& traits) {
  traits.frameRate = header.frameRate();
  const int rate = traits.frameRate ? TimecodeRate(*traits.frameRate) : 24;
  if (const auto code = header.timecode()) traits.timecode = DecodeTimecode(*code, rate, false);
}

SImageTraits ReadImageTraits(const std::string& path) {
  if (const std::optional<CDpxHeader> header = PlainDpxHeader(path)) return TraitsOf(*header);
  RequireWholeFile(path, ExtensionOf(path));
  return ImageLibrary().readTraits(path);
}

std::map<std::string, std::string> ReadImageMetadata(const std::string& path) {
  return ImageLibrary().readMetadata(path);
}

std::unique_ptr<CDpxPicture> OpenPlainPicture(const std::string& path,
                                              const SImageTraits& expected) {
  if (expected.extension != "dpx") return nullptr;
  auto picture = std::make_unique<CDpxPicture>(path);
  if (!IsPlainDpx(picture->header())) return nullptr;
  RequireKind(TraitsOf(picture->header()), expected, path);
  return picture;
}

void ReadImage(const std::string& path, const SImageTraits& expected, int threads,
               std::uint16_t* samples) {
  const std::unique_ptr<CDpxPicture> plain = OpenPlainPicture(path, expected);
  if (!plain) RequireWholeFile(path, expected.extension);
  const bool spread = expected.channels != 3;
  std::uint16_t* stored = spread ? Scratch<std::uint16_t>(expected.storedCount()).data() : samples;
  if (plain) {
    plain->read(stored);
  } else {
    ImageLibrary().readStored(path, expected, threads, stored);
  }
  if (spread)
    SpreadChannels(stored, expected, expected.isFloat ? kOpaqueHalf : 65535, path, samples);
}

void WriteImage(const std::string& path, const SImageTarget& target, int threads,
                const std::uint16_t* samples) {
  const SImageTraits& traits = target.traits;
  const std::uint16_t* stored = samples;
  if (traits.channels != 3) {
    std::vector<std::uint16_t>& gathered = Scratch<std::uint16_t>(traits.storedCount());
    GatherChannels(samples, traits, traits.isFloat ? kOpaqueHalf : 65535, gathered.data());
    stored = gathered.data();
  }
  const std::optional<CDpxHeader> plain =
      traits.extension == "dpx" ? PlainDpxHeader(target.templateFile) : std::nullopt;
  CTemporaryFile temporary(path);
  if (plain) {
    WriteDpxFile(temporary.path(), path, *plain, stored);
  } else {
    ImageLibrary().writeStored(path, temporary.path(), target, threads, stored);
  }
  temporary.commit();
}
