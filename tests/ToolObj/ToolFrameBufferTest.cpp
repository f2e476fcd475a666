#include "ToolObj/ToolFrameBuffer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ToolObj/ToolNode.h"
#include "doubles/TraceCapture.h"

namespace {

using Lines = std::vector<std::string>;

class CFrameBufferTest : public testing::Test {
 protected:
  std::unique_ptr<CToolFrameBuffer> frame(int index = -1) {
    auto buffer = std::make_unique<CToolFrameBuffer>(&format_, &pool_);
    buffer->setFrameIndex(index);
    return buffer;
  }
  static void fill(std::uint16_t* samples, std::uint16_t value) {
    std::fill_n(samples, 4 * 4 * 3, value);
  }

  const CImageFormat format_{4, 4};
  CBufferPool pool_{format_.getBytesPerField(), 3};
};

}  // namespace

TEST_F(CFrameBufferTest, RemarksOnOddFramesAndBuildsThem) {
  CTraceCapture trace(3);
  const CToolFrameBuffer mark(nullptr, nullptr);
  const CToolFrameBuffer widest(&static_cast<const CImageFormat&>(CImageFormat(9999, 7499)),
                                &pool_);
  EXPECT_EQ(trace.lines.take(), (Lines{"NEW tool frame buffer - NULL frameImageFormat!",
                                       "NEW tool frame buffer, 9999 x 7499"}));
  const CToolFrameBuffer large(&static_cast<const CImageFormat&>(CImageFormat(10000, 7500)),
                               &pool_);
  EXPECT_EQ(trace.lines.take(), (Lines{"..\\ToolObj\\ToolFrameBuffer:69: ASSERT "
                                       "(frameImageFormat->getTotalFrameWidth() < 10000) FAILED!",
                                       "..\\ToolObj\\ToolFrameBuffer:70: ASSERT "
                                       "(frameImageFormat->getTotalFrameHeight() < 7500) FAILED!",
                                       "NEW tool frame buffer, 10000 x 7500"}));
  EXPECT_EQ(large.imageFormat()->getPixelsPerLine(), 10000);
  CToolFrameBuffer half(&format_, nullptr);
  EXPECT_EQ(trace.lines.texts().front(),
            "..\\ToolObj\\ToolFrameBuffer:64: ASSERT "
            "((newImageFormat == NULL && frameBufferAllocator == NULL) || "
            "(newImageFormat != NULL && frameBufferAllocator != NULL)) FAILED!");
  EXPECT_FALSE(half.ensureSamples());
}

TEST_F(CFrameBufferTest, StaysUsableWhenMemoryIsShort) {
  auto first = frame();
  first->invisibleFields().resize(3);
  EXPECT_FALSE(first->ensureSamples()) << "four buffers of three";
  EXPECT_NE(first->samples(), nullptr);
  first->invisibleFields().pop_back();
  EXPECT_TRUE(first->ensureSamples());
  auto second = frame();
  EXPECT_FALSE(second->CopyFrom(*first, true, false));
  EXPECT_TRUE(second->CopyFrom(*first, false, false)) << "without samples none are needed";
  first->releaseSamples();
  EXPECT_EQ(pool_.buffersInUse(), 0);
  EXPECT_TRUE(second->ensureSamples());
}

TEST_F(CFrameBufferTest, CopiesWhatIsAskedFor) {
  CBufferPool pool(format_.getBytesPerField(), 0);
  CToolFrameBuffer source(&format_, &pool);
  source.setFrameIndex(5);
  source.setFrameKind(2);
  source.setCopiedFlag(true);
  source.setRenderFlag(true);
  source.setNotCacheable(true);
  source.invisibleFields().push_back({nullptr, 1, 2});
  ASSERT_TRUE(source.ensureSamples());
  fill(source.samples(), 100);
  fill(source.invisibleFields()[0].buffer, 200);
  source.changedRegions().Add({0, 0, 1, 1}, nullptr, 4, 4, 3);

  CToolFrameBuffer copy(&format_, &pool);
  copy.setFrameIndex(9);
  for (int attempt = 0; attempt < 2; ++attempt) ASSERT_TRUE(copy.CopyFrom(source, true, true));
  EXPECT_EQ(copy.frameIndex(), 9);
  EXPECT_EQ(copy.frameKind(), 2);
  EXPECT_TRUE(copy.copiedFlag());
  EXPECT_FALSE(copy.renderFlag());
  EXPECT_FALSE(copy.isNotCacheable());
  EXPECT_EQ(copy.samples()[4 * 4 * 3 - 1], 100);
  ASSERT_EQ(copy.invisibleFields().size(), 1u);
  EXPECT_EQ(copy.invisibleFields()[0].fieldIndex, 1);
  EXPECT_EQ(copy.invisibleFields()[0].fieldPeriod, 2);
  EXPECT_EQ(copy.invisibleFields()[0].buffer[4 * 4 * 3 - 1], 200);
  EXPECT_EQ(copy.changedRegions().Regions().size(), 1u) << "a second attempt adds nothing";

  CToolFrameBuffer marks(&format_, &pool);
  ASSERT_TRUE(marks.CopyFrom(source, false, false));
  EXPECT_EQ(marks.samples(), nullptr);
  EXPECT_TRUE(marks.invisibleFields().empty());
}

// The pool has three buffers.
TEST_F(CFrameBufferTest, SharedSamplesStayAsTheyAreWhateverBecomesOfTheFrame) {
  auto buffer = frame();
  EXPECT_EQ(buffer->shareSamples(), nullptr);
  ASSERT_TRUE(buffer->ensureSamples());
  fill(buffer->samples(), 1);
  const std::shared_ptr<const std::uint16_t> first = buffer->shareSamples();
  EXPECT_EQ(std::as_const(*buffer).samples(), first.get()) << "looking on costs no copy";
  EXPECT_EQ(buffer->samples()[47], 1);
  fill(buffer->samples(), 2);
  std::shared_ptr<const std::uint16_t> second = buffer->shareSamples();
  fill(buffer->samples(), 3);
  EXPECT_EQ(first.get()[47], 1);
  EXPECT_EQ(second.get()[47], 2);

  const std::shared_ptr<const std::uint16_t> third = buffer->shareSamples();
  EXPECT_EQ(buffer->samples(), nullptr) << "a fourth buffer of three";
  EXPECT_EQ(std::as_const(*buffer).samples()[47], 3) << "nothing is lost";
  second.reset();
  fill(buffer->samples(), 4);
  EXPECT_EQ(third.get()[47], 3);

  CToolFrameBuffer source(&format_, &pool_);
  EXPECT_FALSE(source.ensureSamples());
  buffer->releaseSamples();
  ASSERT_TRUE(source.ensureSamples());
  fill(source.samples(), 5);
  const std::shared_ptr<const std::uint16_t> fifth = source.shareSamples();
  EXPECT_FALSE(source.CopyFrom(*buffer, true, false)) << "not into what others look at";
  EXPECT_EQ(fifth.get()[47], 5);
  EXPECT_EQ(source.samples(), nullptr) << "without memory there are none";
}

TEST_F(CFrameBufferTest, KeepsOriginalsInTheChangedRegions) {
  auto buffer = frame();
  ASSERT_TRUE(buffer->ensureSamples());
  fill(buffer->samples(), 77);
  buffer->originalValues().Add({1, 1, 2, 2}, nullptr, 4, 4, 3);
  buffer->keepOriginals();
  EXPECT_TRUE(buffer->originalValues().IsEmpty());
  ASSERT_EQ(buffer->changedRegions().Regions().size(), 1u);
  EXPECT_EQ(buffer->changedRegions().Regions()[0].pixels, std::vector<std::uint16_t>(12, 77));
}

TEST_F(CFrameBufferTest, MergesListedRegionsIntoTheFieldsLines) {
  const struct {
    int index, period;
    bool even, odd;
  } cases[] = {{0, 1, true, true},  {3, 0, true, true},  {0, 2, true, false},
               {1, 2, false, true}, {4, 2, true, false}, {4, 3, false, true}};
  for (const auto& c : cases) {
    auto buffer = frame();
    buffer->invisibleFields().push_back({nullptr, c.index, c.period});
    ASSERT_TRUE(buffer->ensureSamples());
    std::uint16_t* field = buffer->invisibleFields()[0].buffer;
    fill(buffer->samples(), 9);
    fill(field, 1);
    buffer->originalValues().Add({0, 0, 1, 3}, nullptr, 4, 4, 3);
    buffer->mergeInvisibleFields();
    for (int y = 0; y < 4; ++y) {
      const int expected = (y % 2 == 0 ? c.even : c.odd) ? 9 : 1;
      EXPECT_EQ(field[y * 12], expected) << c.index << "/" << c.period << " line " << y;
      EXPECT_EQ(field[y * 12 + 6], 1) << "outside the region";
    }
  }
}

TEST_F(CFrameBufferTest, AListRefusesFramesWhenFullButNeverTheEndMark) {
  CToolFrameCache list;
  list.raiseLimit(-4);
  EXPECT_FALSE(list.isFull()) << "no limit";
  list.raiseLimit(2);
  list.raiseLimit(1);
  ASSERT_TRUE(list.add(frame(7).release()));
  EXPECT_FALSE(list.isFull());
  ASSERT_TRUE(list.add(frame(8).release()));
  EXPECT_TRUE(list.isFull());
  const auto refused = frame(9);
  EXPECT_FALSE(list.add(refused.get()));
  auto mark = std::make_unique<CToolFrameBuffer>(nullptr, nullptr);
  mark->markEndOfMaterial();
  EXPECT_TRUE(list.add(mark.release()));

  const std::unique_ptr<CToolFrameBuffer> eighth(list.takeByIndex(8));
  EXPECT_EQ(eighth->frameIndex(), 8);
  EXPECT_EQ(list.takeByIndex(8), nullptr);
  const std::unique_ptr<CToolFrameBuffer> oldest(list.takeOldest());
  EXPECT_EQ(oldest->frameIndex(), 7);
  EXPECT_EQ(list.count(), 1);
  list.clear();
  EXPECT_TRUE(list.isEmpty());
  EXPECT_EQ(list.takeOldest(), nullptr);
}

TEST_F(CFrameBufferTest, TheCacheHoldsOneCleanCopyPerFrame) {
  CToolFrameCache cache;
  auto fresh = frame(7);
  ASSERT_TRUE(fresh->ensureSamples());
  fresh->setRenderFlag(true);
  fresh->changedRegions().Add({0, 0, 1, 1}, nullptr, 4, 4, 3);
  fresh->originalValues().Add({0, 0, 1, 1}, nullptr, 4, 4, 3);
  auto older = frame(7);
  ASSERT_TRUE(older->ensureSamples());
  auto mark = frame(8);
  mark->markEndOfMaterial();
  auto kind = frame(9);
  kind->setFrameKind(1);
  CToolFrameBuffer* const kept = fresh.get();

  CTraceCapture trace(3);
  cache.CacheFrame(older.release());
  cache.CacheFrame(fresh.release());
  cache.CacheFrame(mark.release());
  cache.CacheFrame(kind.release());
  cache.CacheFrame(nullptr);
  EXPECT_EQ(trace.lines.take(), (Lines{"'''''''''''' TFC: Add(7)", "'''''''''''' TFC: Replace(7)",
                                       "'''''''''''' TFC: Reject(8)", "'''''''''''' TFC: Reject(9)",
                                       "'''''''''''' TFC: Reject(-1)"}));
  EXPECT_EQ(pool_.buffersInUse(), 1) << "the older copy is gone";
  EXPECT_TRUE(kept->changedRegions().IsEmpty());
  EXPECT_TRUE(kept->originalValues().IsEmpty());
  EXPECT_FALSE(kept->renderFlag());

  cache.raiseLimit(1);
  cache.CacheFrame(frame(10).release());
  trace.lines.clear();
  const std::unique_ptr<CToolFrameBuffer> oldest(cache.GetOldest());
  EXPECT_EQ(oldest->frameIndex(), 10) << "a full cache gives up its oldest frame";
  EXPECT_EQ(cache.GetOldest(), nullptr);
  EXPECT_EQ(trace.lines.texts(), (Lines{"'''''''''''' TFC: GetOldest returned 10",
                                        "'''''''''''' TFC: GetOldest returned NULL"}));
}

TEST_F(CFrameBufferTest, ADisabledCacheTakesNothing) {
  CToolFrameCache cache;
  cache.CacheFrame(frame(3).release());
  cache.setEnabled(false);
  auto late = frame(4);
  ASSERT_TRUE(late->ensureSamples());
  CTraceCapture trace(3);
  cache.CacheFrame(late.release());
  EXPECT_EQ(pool_.buffersInUse(), 0);
  const std::unique_ptr<CToolFrameBuffer> oldest(cache.GetOldest());
  EXPECT_EQ(oldest->frameIndex(), 3);
  EXPECT_EQ(trace.lines.texts(),
            (Lines{"'''''''''''' TFC: DISABLED - can't add 4",
                   "..\\ToolObj\\ToolFrameBuffer:1435: ASSERT (enabledFlag) FAILED!",
                   "'''''''''''' TFC: GetOldest returned 3"}));
}

TEST_F(CFrameBufferTest, AnEdgeAsksItsSourceForWhatItDoesNotHold) {
  class CSource : public CToolEdge {
   public:
    std::vector<int> requests;

   protected:
    CToolFrameBuffer* requestFrame(int index) override {
      requests.push_back(index);
      return nullptr;
    }
  };
  CSource edge;
  ASSERT_TRUE(edge.putFrame(frame(4).release()));
  const std::unique_ptr<CToolFrameBuffer> queued(edge.getFrame(4));
  EXPECT_EQ(queued->frameIndex(), 4);
  EXPECT_EQ(edge.getFrame(4), nullptr);
  EXPECT_EQ(edge.requests, std::vector<int>{4});
}
