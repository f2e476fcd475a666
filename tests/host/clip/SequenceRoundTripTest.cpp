#include "ClipCopies.h"
#include "SequenceFiles.h"
#include "TemporaryFolder.h"
#include "clip/ClipReader.h"

namespace {

using OIIO::TypeDesc;

const SImageCase kCases[] = {
    {"DPX 8", "dpx", TypeDesc::UINT8, 8},
    {"DPX 10", "dpx", TypeDesc::UINT16, 10},
    {"DPX 10 little endian", "dpx", TypeDesc::UINT16, 10, 3, "little"},
    {"DPX 10 method B", "dpx", TypeDesc::UINT16, 10, 3, "big", "Filled, method B"},
    {"DPX 10 packed", "dpx", TypeDesc::UINT16, 10, 3, "big", "Packed"},
    {"DPX 12", "dpx", TypeDesc::UINT16, 12},
    {"DPX 12 filled", "dpx", TypeDesc::UINT16, 12, 3, "big", "Filled, method A"},
    {"DPX 16", "dpx", TypeDesc::UINT16, 16},
    {"DPX 16 little endian", "dpx", TypeDesc::UINT16, 16, 3, "little"},
    {"DPX 10 RGBA", "dpx", TypeDesc::UINT16, 10, 4},
    {"DPX 16 grey", "dpx", TypeDesc::UINT16, 16, 1},
    {"TIFF 8", "tif", TypeDesc::UINT8, 8},
    {"TIFF 16", "tif", TypeDesc::UINT16, 16},
    {"TIFF 16 grey", "tif", TypeDesc::UINT16, 16, 1},
    {"TIFF 16 RGBA", "tiff", TypeDesc::UINT16, 16, 4},
    {"PNG 8", "png", TypeDesc::UINT8, 8},
    {"PNG 16", "png", TypeDesc::UINT16, 16},
    {"PNG 8 grey and alpha", "png", TypeDesc::UINT8, 8, 2},
    {"EXR half", "exr", TypeDesc::HALF, 16},
    {"EXR half RGBA", "exr", TypeDesc::HALF, 16, 4},
    {"EXR float of halves", "exr", TypeDesc::FLOAT, 32},
};

void ExpectRoundTrip(const SImageCase& c, int width) {
  const CTemporaryFolder folder;
  const OIIO::ImageSpec spec = SpecOf(c, width, 262);
  const std::string name = std::string("a.0100.") + c.extension;
  WriteRaw(folder(name), spec, EveryCode(c, spec.width, spec.height).data());
  const SRawImage before = ReadRaw(folder(name));

  const auto clip = OpenClip(folder(name), 1);
  EXPECT_EQ(clip->info().bitDepth, c.bits);
  EXPECT_EQ(clip->info().format.getPixelsPerLine(), width);
  CopyClip(*clip, folder("out/"));
  const SRawImage after = ReadRaw(folder("out/" + name));
  EXPECT_EQ(after.spec.format, before.spec.format);
  EXPECT_EQ(after.spec.nchannels, before.spec.nchannels);
  EXPECT_TRUE(after.bytes == before.bytes);
  for (const char* key : {"oiio:BitsPerSample", "dpx:Packing", "compression", "tiff:Compression"})
    EXPECT_EQ(after.spec[key].get(), before.spec[key].get()) << key;
  EXPECT_EQ(FileBytes(folder("out/" + name)).substr(0, 4), FileBytes(folder(name)).substr(0, 4))
      << "byte order";
  EXPECT_EQ(folder.names("out"), std::vector<std::string>{name});
}

}  // namespace

/// 251 columns give rows that fill no whole words, so that padding and packing of rows show; with
/// 252 they do fill them.
TEST(SequenceRoundTrip, EveryCodeOfEveryKindOfFileComesBack) {
  for (const SImageCase& c : kCases)
    for (const int width : {251, 252}) {
      SCOPED_TRACE(c.name);
      ExpectRoundTrip(c, width);
    }
}

TEST(SequenceRoundTrip, SamplesAreFullRange) {
  for (const SImageCase& c : kCases) {
    if (c.type != TypeDesc::UINT8 && c.type != TypeDesc::UINT16) continue;
    const CTemporaryFolder folder;
    const std::string name = folder(std::string("still.") + c.extension);
    WriteRaw(name, SpecOf(c, 256, 256), EveryCode(c, 256, 256).data());
    const auto clip = OpenClip(name, 1);
    const std::vector<std::uint16_t> samples = ReadFrame(*clip, clip->info().firstFrame);
    EXPECT_EQ(*std::min_element(samples.begin(), samples.end()), 0) << c.name;
    EXPECT_EQ(*std::max_element(samples.begin(), samples.end()), 65535) << c.name;
  }
}

namespace {

/// Fields of a DPX header at odd places, and user data behind it, as scanners leave them.
std::string MakeScannedDpx(const std::string& path, int frame) {
  const SImageCase c{"", "dpx", TypeDesc::UINT16, 10, 3, "big"};
  OIIO::ImageSpec spec = SpecOf(c, 64, 48);
  const std::uint32_t code[2] = {0x01020300u + static_cast<unsigned>(frame % 10), 0};
  spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, code);
  WriteRaw(path, spec, EveryCode(c, 64, 48).data());
  std::string bytes = FileBytes(path);
  bytes.replace(160, 12, "Scanner 9000");          // creator
  bytes.replace(664, 8, "reserved");               // reserved for whom?
  bytes.replace(801, 2, std::string("\x03\x05"));  // printing density, ITU-R 709
  bytes.replace(1664, 16,
                "KJ"
                "12"
                "34"
                "567890"
                "0042");                                       // edge code
  bytes.replace(1724, 4, std::string("\x41\xC0\x00\x00", 4));  // 24 frames a second
  bytes.replace(1732, 10, "frame text");
  bytes.replace(1932, 4, "rate");
  std::ofstream(path, std::ios::binary) << bytes;
  return bytes;
}

}  // namespace

TEST(SequenceRoundTrip, ADpxHeaderGoesThroughUnchangedFrameByFrame) {
  const CTemporaryFolder folder;
  std::vector<std::string> headers;
  for (int frame = 1; frame <= 3; ++frame)
    headers.push_back(MakeScannedDpx(folder("a.000" + std::to_string(frame) + ".dpx"), frame));
  const auto clip = OpenClip(folder("a.####.dpx"), 1);
  EXPECT_EQ(clip->info().startTimecode.toText(), "01:02:03:01");
  EXPECT_EQ(clip->info().frameRate, (SFrameRate{24, 1}));
  EXPECT_TRUE(clip->info().frameRateKnown);
  EXPECT_EQ(clip->metadata().at("FilmEdgeCode"), "KJ 12 34 567890 0042");
  CopyClip(*clip, folder("b.%04d.dpx"));
  for (int frame = 1; frame <= 3; ++frame) {
    const std::string copy = FileBytes(folder("b.000" + std::to_string(frame) + ".dpx"));
    EXPECT_TRUE(copy == headers[static_cast<std::size_t>(frame - 1)]) << "frame " << frame;
  }
}

TEST(SequenceRoundTrip, TagsOfOtherTypesGoThrough) {
  struct SCase {
    SImageCase image;
    const char* key;
    const char* value;
  };
  const SCase cases[] = {
      {{"", "tif", TypeDesc::UINT16, 16}, "ImageDescription", "reel 7"},
      {{"", "tif", TypeDesc::UINT8, 8}, "compression", "lzw"},
      {{"", "png", TypeDesc::UINT16, 16}, "Copyright", "the archive"},
      {{"", "exr", TypeDesc::HALF, 16}, "Copyright", "the archive"},
      {{"", "exr", TypeDesc::HALF, 16}, "compression", "piz"},
  };
  for (const SCase& c : cases) {
    const CTemporaryFolder folder;
    OIIO::ImageSpec spec = SpecOf(c.image, 40, 30);
    spec.attribute(c.key, c.value);
    const std::uint32_t code[2] = {0x10203012u, 0};
    if (c.image.extension == std::string("exr"))
      spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, code);
    const std::string in = folder(std::string("a.1.") + c.image.extension);
    const std::string out = folder(std::string("b.1.") + c.image.extension);
    WriteRaw(in, spec, EveryCode(c.image, 40, 30).data());
    CopyClip(*OpenClip(in, 1), out);
    EXPECT_EQ(ReadRaw(out).spec.get_string_attribute(c.key), c.value) << c.key;
    EXPECT_EQ(ReadRaw(out).spec["smpte:TimeCode"].get(), ReadRaw(in).spec["smpte:TimeCode"].get());
  }
}

TEST(SequenceRoundTrip, WhatCannotBeGivenBackIsRefusedByFrameAndFile) {
  struct SCase {
    const char* what;
    TypeDesc type;
    int channels;
    float value;  ///< of one sample
    std::vector<std::string> message;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = HUGE_VALF;
  const SCase cases[] = {
      {"negative", TypeDesc::HALF, 3, -0.25f, {"frame 7", "a.7.exr", "(1, 2)", "-0.25"}},
      {"not a number", TypeDesc::HALF, 3, nan, {"frame 7", "a.7.exr", "nan"}},
      {"infinite", TypeDesc::HALF, 3, inf, {"frame 7", "a.7.exr", "inf"}},
      {"too fine", TypeDesc::FLOAT, 3, 0.1f, {"frame 7", "a.7.exr", "half"}},
      {"too large", TypeDesc::FLOAT, 3, 1e6f, {"frame 7", "a.7.exr", "half"}},
      {"not opaque", TypeDesc::HALF, 4, 0.5f, {"frame 7", "a.7.exr", "not opaque"}},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.what);
    const CTemporaryFolder folder;
    OIIO::ImageSpec spec(4, 4, c.channels, c.type);
    std::vector<float> values(static_cast<std::size_t>(16 * c.channels), 1.0f);
    values[static_cast<std::size_t>(9 * c.channels + c.channels - 1)] = c.value;
    const auto output = OIIO::ImageOutput::create("exr");
    ASSERT_TRUE(output->open(folder("a.7.exr"), spec) &&
                output->write_image(TypeDesc::FLOAT, values.data()) && output->close());
    const auto clip = OpenClip(folder("a.7.exr"), 1);
    ExpectMentions(ErrorOf([&] { ReadFrame(*clip, 7); }), c.message);
  }
}

TEST(SequenceRoundTrip, AFrameOfAnotherKindIsNamedWhenItIsMet) {
  const SImageCase c{"", "dpx", TypeDesc::UINT16, 10};
  const CTemporaryFolder folder;
  for (int frame = 1; frame <= 3; ++frame) {
    const int width = frame == 2 ? 48 : 64;
    WriteRaw(folder("a." + std::to_string(frame) + ".dpx"), SpecOf(c, width, 32),
             EveryCode(c, width, 32).data());
  }
  const auto clip = OpenClip(folder("a.%d.dpx"), 1);
  EXPECT_NO_THROW(ReadFrame(*clip, 1));
  ExpectMentions(ErrorOf([&] { ReadFrame(*clip, 2); }),
                 {"frame 2", "a.2.dpx", "48 x 32", "64 x 32"});
  EXPECT_NO_THROW(ReadFrame(*clip, 3));
  std::filesystem::remove(folder("a.3.dpx"));
  ExpectMentions(ErrorOf([&] { OpenClip(folder("a.%d.dpx"), 1); }), {"frame 2", "a.2.dpx"});
}

TEST(SequenceRoundTrip, ATruncatedFileIsNeverAFrame) {
  const SImageCase cases[] = {{"", "dpx", TypeDesc::UINT16, 10}, {"", "dpx", TypeDesc::UINT16, 16},
                              {"", "dpx", TypeDesc::UINT16, 12}, {"", "tif", TypeDesc::UINT16, 16},
                              {"", "tif", TypeDesc::UINT8, 8},   {"", "png", TypeDesc::UINT16, 16},
                              {"", "exr", TypeDesc::HALF, 16}};
  for (const SImageCase& c : cases)
    for (const double part : {0.999, 0.5, 0.1, 0.0}) {
      SCOPED_TRACE(std::string(c.extension) + " " + std::to_string(part));
      const CTemporaryFolder folder;
      for (const char* number : {"1", "2", "3"})
        WriteRaw(folder(std::string("a.") + number + "." + c.extension), SpecOf(c, 200, 100),
                 EveryCode(c, 200, 100).data());
      const std::string name = std::string("a.2.") + c.extension;
      const auto size = static_cast<double>(std::filesystem::file_size(folder(name)));
      std::filesystem::resize_file(folder(name), static_cast<std::uintmax_t>(size * part));
      const auto clip = OpenClip(folder(std::string("a.%d.") + c.extension), 1);
      ExpectMentions(ErrorOf([&] { ReadFrame(*clip, 2); }), {"frame 2", name});
      EXPECT_NO_THROW(ReadFrame(*clip, 3));
    }
}
