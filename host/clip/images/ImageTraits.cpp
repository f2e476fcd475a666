#include "ImageTraits.h"

#include <set>

#include "DpxHeader.h"
#include "FrameRates.h"
#include "SequencePattern.h"
#include "clip/ClipReader.h"

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;

bool IsColour(const ImageSpec& spec, int channel, const char* upper) {
  const std::string& name = spec.channelnames[static_cast<std::size_t>(channel)];
  return name == upper || name == std::string(1, static_cast<char>(upper[0] + 32));
}

void RefuseChannels(const ImageSpec& spec, const std::string& path) {
  const int n = spec.nchannels;
  const bool colours =
      n >= 3 && IsColour(spec, 0, "R") && IsColour(spec, 1, "G") && IsColour(spec, 2, "B");
  const bool alphaLast = spec.alpha_channel == n - 1;
  if ((n == 1 && spec.alpha_channel < 0) || (n == 2 && alphaLast) || (n == 3 && colours) ||
      (n == 4 && colours && alphaLast))
    return;
  std::string names;
  for (const std::string& name : spec.channelnames) names += (names.empty() ? "" : ", ") + name;
  throw CClipError(path + ": components " + names + " cannot be carried, only grey or RGB");
}

void RefuseLayout(OIIO::ImageInput& input, const ImageSpec& spec, const SImageTraits& traits,
                  const std::string& path) {
  if (spec.depth > 1 || spec.deep) throw CClipError(path + ": not a flat picture");
  const bool several = spec.get_int_attribute("oiio:subimages", 1) > 1 || input.seek_subimage(1, 0);
  if (several) throw CClipError(path + ": holds several images, a frame has one");
  if (!input.seek_subimage(0, 0)) throw CClipError(path + ": cannot be read");
  RefuseChannels(spec, path);
  const int bits = traits.bitDepth;
  const bool whole = spec.format == TypeDesc::UINT8 ? bits == 8
                     : spec.format == TypeDesc::UINT16
                         ? bits == 16 || (traits.extension == "dpx" && (bits == 10 || bits == 12))
                         : traits.isFloat;
  if (!whole || !spec.channelformats.empty())
    throw CClipError(path + ": samples of " + std::to_string(bits) + " bits (" +
                     spec.format.c_str() + ") cannot be carried");
  if (spec.get_int_attribute("tiff:PhotometricInterpretation", 1) == 0)
    throw CClipError(path + ": grey that runs from white to black cannot be carried");
}

std::string ShortExtension(const OIIO::ImageInput& input) {
  const std::string format = input.format_name();
  return format == "tiff" ? "tif" : format == "openexr" ? "exr" : format;
}

std::uint32_t EncodeTimecode(const CTimecode& timecode) {
  const std::string text = timecode.toText();  // HH:MM:SS:FF
  std::uint32_t code = 0;
  for (const char c : text)
    if (c >= '0' && c <= '9') code = code << 4 | static_cast<std::uint32_t>(c - '0');
  return code | (timecode.isDropFrame() ? 0x40u : 0u);
}

void FillTiming(const ImageSpec& spec, const std::string& path, SImageTraits& traits) {
  if (traits.extension == "dpx") {
    AddTiming(CDpxHeader(path), traits);
    return;
  }
  int rational[2] = {0, 0};
  if (spec.getattribute("FramesPerSecond", OIIO::TypeRational, rational) && rational[0] > 0 &&
      rational[1] > 0)
    traits.frameRate = SFrameRate{rational[0], rational[1]};
  std::uint32_t code[2] = {0, 0};
  if (spec.getattribute("smpte:TimeCode", OIIO::TypeTimeCode, code))
    traits.timecode =
        DecodeTimecode(code[0], traits.frameRate ? TimecodeRate(*traits.frameRate) : 24, true);
}

/// Attributes that mean one file's storage, not the picture.
bool IsStorageAttribute(const std::string& name) {
  static const std::set<std::string> names{"tiff:Compression",
                                           "tiff:PlanarConfiguration",
                                           "tiff:PhotometricInterpretation",
                                           "tiff:RowsPerStrip",
                                           "planarconfig",
                                           "compression",
                                           "oiio:subimages",
                                           "oiio:Endian",
                                           "dpx:Packing",
                                           "dpx:ImageDescriptor",
                                           "dpx:EndOfLinePadding",
                                           "dpx:EndOfImagePadding",
                                           "oiio:BitsPerSample"};
  return names.contains(name);
}

/// Compression that changes samples is replaced by one that does not.
void KeepLossless(ImageSpec& spec, const std::string& extension) {
  const std::string name = spec.get_string_attribute("compression");
  const std::string kind = name.substr(0, name.find(':'));
  static const std::set<std::string> lossy{"jpeg", "b44", "b44a", "dwaa", "dwab"};
  if (lossy.contains(kind) || (kind == "pxr24" && spec.format == TypeDesc::FLOAT))
    spec.attribute("compression", "zip");
  if (extension == "tif" && name.empty()) spec.attribute("compression", "zip");
}

void CarryTemplate(const SImageTarget& target, ImageSpec& spec) {
  const std::unique_ptr<OIIO::ImageInput> input = OpenImage(target.templateFile);
  const bool sameFormat = ShortExtension(*input) == target.traits.extension;
  if (sameFormat) {
    const TypeDesc format = spec.format;
    spec = input->spec();
    spec.set_format(format);
    return;
  }
  for (const OIIO::ParamValue& value : input->spec().extra_attribs)
    if (!IsStorageAttribute(value.name().string())) spec.extra_attribs.push_back(value);
}

}  // namespace

std::string ImageErrorText(const std::string& path, std::string cause, const char* fallback) {
  cause = cause.substr(0, cause.find('\n'));
  return path + ": " + (cause.empty() ? fallback : cause);
}

std::unique_ptr<OIIO::ImageInput> OpenImage(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::create(extension);
  if (!input) throw CClipError(ImageErrorText(path, OIIO::geterror(), "cannot be opened"));
  ImageSpec asked, found;
  asked.attribute("oiio:RawColor", 1);
  asked.attribute("oiio:UnassociatedAlpha", 1);
  if (!input->open(path, found, asked))
    throw CClipError(ImageErrorText(path, input->geterror(), "cannot be opened"));
  return input;
}

SImageTraits TraitsOf(OIIO::ImageInput& input, const std::string& path) {
  const ImageSpec spec = input.spec();
  SImageTraits traits;
  traits.extension = ShortExtension(input);
  traits.width = spec.width;
  traits.height = spec.height;
  traits.originX = spec.x - spec.full_x;
  traits.originY = spec.y - spec.full_y;
  traits.channels = spec.nchannels;
  traits.isSingleFloat = spec.format == TypeDesc::FLOAT;
  traits.isFloat = traits.isSingleFloat || spec.format == TypeDesc::HALF;
  const int stored = static_cast<int>(spec.format.size()) * 8;
  traits.bitDepth = traits.isFloat ? stored : spec.get_int_attribute("oiio:BitsPerSample", stored);
  if (traits.bitDepth == 0) traits.bitDepth = stored;
  RefuseLayout(input, spec, traits, path);
  FillTiming(spec, path, traits);
  return traits;
}

std::map<std::string, std::string> MetadataOf(OIIO::ImageInput& input, const std::string& path) {
  std::map<std::string, std::string> metadata;
  for (const OIIO::ParamValue& value : input.spec().extra_attribs)
    if (value.type().basetype != TypeDesc::UINT8)
      metadata[value.name().string()] = value.get_string();
  if (ShortExtension(input) != "dpx") return metadata;
  const CDpxHeader header(path);
  if (const std::string edge = header.filmEdgeCode(); !edge.empty())
    metadata["FilmEdgeCode"] = edge;
  metadata["ByteOrder"] = header.isLittleEndian() ? "little endian" : "big endian";
  return metadata;
}

ImageSpec TargetSpec(const SImageTarget& target) {
  const SImageTraits& traits = target.traits;
  const TypeDesc format = traits.isSingleFloat  ? TypeDesc::FLOAT
                          : traits.isFloat      ? TypeDesc::HALF
                          : traits.bitDepth > 8 ? TypeDesc::UINT16
                                                : TypeDesc::UINT8;
  ImageSpec spec(traits.width, traits.height, traits.channels, format);
  if (!target.templateFile.empty()) CarryTemplate(target, spec);
  if (!traits.isFloat) spec.attribute("oiio:BitsPerSample", traits.bitDepth);
  KeepLossless(spec, traits.extension);
  spec.attribute("oiio:UnassociatedAlpha", 1);
  if (target.frameRate) {
    const int rational[2] = {target.frameRate->numerator, target.frameRate->denominator};
    if (traits.extension == "exr")
      spec.attribute("FramesPerSecond", OIIO::TypeRational, rational);
    else
      spec.attribute("dpx:FrameRate", static_cast<float>(target.frameRate->value()));
  }
  if (target.timecode) {
    const std::uint32_t code[2] = {EncodeTimecode(*target.timecode), 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, code);
  }
  return spec;
}
