#include <algorithm>
#include <thread>

#include "ClipCopies.h"
#include "SequenceFiles.h"
#include "TemporaryFolder.h"
#include "clip/ClipReader.h"

namespace {

Samples CutOut(const Samples& frame, int width, const SRect& part) {
  Samples cut;
  for (int y = part.top; y <= part.bottom; ++y) {
    const auto row = frame.begin() + 3 * (static_cast<std::ptrdiff_t>(y) * width + part.left);
    cut.insert(cut.end(), row, row + 3 * (part.right - part.left + 1));
  }
  return cut;
}

Samples PartOf(const IClipFrame& frame, const SRect& part) {
  const int width = part.right - part.left + 1;
  Samples samples(3 * static_cast<std::size_t>(width * (part.bottom - part.top + 1)));
  frame.readPart(part, samples.data());
  return samples;
}

/// Single pixels, corners, odd beginnings, whole rows and columns, everything.
std::vector<SRect> AwkwardParts(int width, int height) {
  const int right = width - 1;
  const int bottom = height - 1;
  return {{0, 0, 0, 0},         {right, bottom, right, bottom},
          {0, 0, 20, 30},       {right - 33, bottom - 21, right, bottom},
          {77, 53, 138, 113},   {40, 41, 40, 120},
          {0, 100, right, 100}, {width / 2 - 1, 0, width / 2 + 1, bottom},
          {0, 0, right, bottom}};
}

/// The frame's parts, and all of it, against what `readFrame` reads.
void ExpectPartsOfTheWhole(IClipReader& clip, CBufferPool& pool) {
  const int frame = clip.info().endFrame - 1;
  const int width = clip.info().format.getPixelsPerLine();
  const int height = clip.info().format.getLinesPerFrame();
  const Samples whole = ReadFrame(clip, frame);
  const std::unique_ptr<IClipFrame> opened = clip.openFrame(frame, pool);
  opened->fetch();
  Samples read(whole.size());
  opened->read(read.data());
  EXPECT_TRUE(read == whole);
  for (const SRect& part : AwkwardParts(width, height))
    EXPECT_TRUE(PartOf(*opened, part) == CutOut(whole, width, part))
        << part.left << "," << part.top << " to " << part.right << "," << part.bottom;
}

}  // namespace

TEST(FrameParts, OfASequenceAreThoseOfTheWholeFrame) {
  const struct {
    SImageCase kind;
    bool isHeld;  ///< in memory, decoded
  } cases[] = {{{"DPX 8", "dpx", OIIO::TypeDesc::UINT8, 8}, false},
               {{"DPX 10", "dpx", OIIO::TypeDesc::UINT16, 10}, false},
               {{"DPX 10 little endian", "dpx", OIIO::TypeDesc::UINT16, 10, 3, "little"}, false},
               {{"DPX 16", "dpx", OIIO::TypeDesc::UINT16, 16}, false},
               {{"DPX 12", "dpx", OIIO::TypeDesc::UINT16, 12}, true},
               {{"DPX 10 RGBA", "dpx", OIIO::TypeDesc::UINT16, 10, 4}, true},
               {{"TIFF 16", "tif", OIIO::TypeDesc::UINT16, 16}, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.kind.name);
    const CTemporaryFolder folder;
    const std::string name = folder(std::string("a.0100.") + c.kind.extension);
    const OIIO::ImageSpec spec = SpecOf(c.kind, 252, 262);
    WriteRaw(name, spec, EveryCode(c.kind, spec.width, spec.height).data());
    const auto clip = OpenClip(name, 1);
    CBufferPool pool(clip->info().format.getBytesPerField(), 0);
    ExpectPartsOfTheWhole(*clip, pool);
    EXPECT_EQ(clip->openFrame(100, pool)->bytes(), c.isHeld ? pool.bytesPerBuffer() : 0U);
    EXPECT_EQ(pool.buffersInUse(), 0);
  }
}

TEST(FrameParts, OfAFileThatIsNotWholeOrOfAnotherKindAreRefusedByName) {
  const CTemporaryFolder folder;
  const SImageCase kind{"DPX 10", "dpx", OIIO::TypeDesc::UINT16, 10};
  for (int frame = 0; frame < 4; ++frame) {
    const OIIO::ImageSpec spec = SpecOf(kind, frame == 1 ? 128 : 252, 262);
    WriteRaw(folder("a.010" + std::to_string(frame) + ".dpx"), spec,
             EveryCode(kind, spec.width, spec.height).data());
  }
  const auto clip = OpenClip(folder("a.####.dpx"), 1);
  std::filesystem::resize_file(folder("a.0102.dpx"), 20000);
  CBufferPool pool(clip->info().format.getBytesPerField(), 0);
  for (const int frame : {101, 102}) {
    const std::string name = std::to_string(frame);
    ExpectMentions(ErrorOf([&] { clip->openFrame(frame, pool); }), {"frame " + name, "a.0" + name});
  }
  EXPECT_NO_THROW(clip->openFrame(103, pool));
}

/// A part is converted on its own where the kind of picture allows it: what lies around it must
/// come in all the same. Odd sizes end in half a colour sample; packed colours do not stand by
/// themselves.
TEST(FrameParts, OfAVideoAreThoseOfTheWholeFrame) {
  const CTemporaryFolder folder;
  const struct {
    const char* kind;
    bool isCutWhereEven;
    bool isCutWhereOdd;
  } cases[] = {{"yuv420p", true, false},    {"yuvj420p", true, false}, {"yuv422p10le", true, false},
               {"yuv444p12le", true, true}, {"yuv411p", true, false},  {"yuva420p", true, false},
               {"nv12", true, false},       {"yuyv422", false, false}, {"gray", true, true},
               {"rgb24", true, true},       {"bgra", true, true},      {"gbrp10le", true, true}};
  for (const bool isEven : {true, false})
    for (const auto& c : cases) {
      const std::string size = isEven ? "332x208" : "331x207";
      SCOPED_TRACE(size + " " + c.kind);
      const std::string path = folder("a.nut");
      RunShell("ffmpeg -y -nostdin -f lavfi -i testsrc=size=" + size +
               ",noise=alls=60:allf=t -frames:v 2 -pix_fmt " + c.kind + " -c:v rawvideo '" + path +
               "'");
      const auto clip = OpenClip(path, 2);
      ASSERT_EQ(clip->info().format.getPixelsPerLine(), isEven ? 332 : 331);
      CBufferPool pool(clip->info().format.getBytesPerField(), 0);
      ExpectPartsOfTheWhole(*clip, pool);
      EXPECT_EQ(clip->openFrame(1, pool)->givesParts(),
                isEven ? c.isCutWhereEven : c.isCutWhereOdd);
    }
}

TEST(FrameParts, OfOpenedFramesAreReadByManyThreadsAtOnce) {
  const CTemporaryFolder folder;
  const std::string path = folder("a.mkv");
  RunShell(
      "ffmpeg -y -nostdin -f lavfi -i testsrc2=size=332x208 -frames:v 6 -pix_fmt yuv420p -c:v ffv1 "
      "'" +
      path + "'");
  const auto clip = OpenClip(path, 2);
  CBufferPool pool(clip->info().format.getBytesPerField(), 0);
  std::vector<std::unique_ptr<IClipFrame>> opened;
  std::vector<Samples> whole;
  for (int frame = 0; frame < 6; ++frame) {
    whole.push_back(ReadFrame(*clip, frame));
    opened.push_back(clip->openFrame(frame, pool));
    EXPECT_GE(opened.back()->bytes(), 332U * 208U * 3U / 2U);
    EXPECT_LT(opened.back()->bytes(), pool.bytesPerBuffer());
  }
  std::vector<int> wrong(3, 0);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < wrong.size(); ++thread)
    threads.emplace_back([&, thread] {
      for (std::size_t frame = 0; frame < opened.size(); ++frame)
        for (const SRect& part : AwkwardParts(332, 208))
          if (PartOf(*opened[frame], part) != CutOut(whole[frame], 332, part)) ++wrong[thread];
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(3, 0));
}
