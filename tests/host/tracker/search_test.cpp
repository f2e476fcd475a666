#include <gtest/gtest.h>

#include "TestShot.h"
#include "tracker/PatchSearch.h"

namespace {

/// Straight from the definition, in double.
double CorrelationByDefinition(const SPlaneView& patch, const SPlaneView& window, int x, int y) {
  double p = 0.0, w = 0.0, pp = 0.0, ww = 0.0, pw = 0.0;
  for (int j = 0; j < patch.height; ++j) {
    for (int i = 0; i < patch.width; ++i) {
      const double a = patch.row(j)[i];
      const double b = window.row(y + j)[x + i];
      p += a;
      w += b;
      pp += a * a;
      ww += b * b;
      pw += a * b;
    }
  }
  const double n = static_cast<double>(patch.width) * patch.height;
  const double var = (pp - p * p / n) * (ww - w * w / n);
  return var > 0.0 ? (pw - p * w / n) / std::sqrt(var) : 0.0;
}

SPeak BestByDefinition(const SPlaneView& patch, const SPlaneView& window) {
  SPeak best;
  for (int y = 0; y + patch.height <= window.height; ++y) {
    for (int x = 0; x + patch.width <= window.width; ++x) {
      const double value = CorrelationByDefinition(patch, window, x, y);
      if (value > best.correlation) best = {x, y, value};
    }
  }
  return best;
}

CPlane PlaneOf(const CTexture& texture, SPoint2 shift, int width, int height, unsigned seed) {
  const std::vector<double> values = texture.render(width, height, shift.x, shift.y);
  CEven even(seed);
  CPlane plane;
  plane.resize(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      plane.row(y)[x] =
          static_cast<float>(values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                    static_cast<std::size_t>(x)] +
                             even(0.03));
    }
  }
  return plane;
}

}  // namespace

TEST(PatchSearch, ExactSearchFindsWhatTheDefinitionFinds) {
  struct SCase {
    int halfX, halfY, range;
    double shortest;  ///< period of the finest texture
    bool there;       ///< false: the patch is from another picture, only weak matches exist
  };
  unsigned seed = 1;
  for (const SCase& c :
       {SCase{5, 5, 10, 6.0, true}, SCase{10, 10, 20, 6.0, true}, SCase{10, 10, 20, 2.5, true},
        SCase{10, 10, 20, 6.0, false}, SCase{10, 10, 20, 2.5, false}, SCase{10, 5, 13, 4.0, false},
        SCase{7, 16, 9, 3.0, true}, SCase{20, 20, 16, 6.0, false}, SCase{2, 2, 8, 4.0, true}}) {
    SCOPED_TRACE("half " + std::to_string(c.halfX) + " x " + std::to_string(c.halfY) + ", period " +
                 std::to_string(c.shortest));
    for (int trial = 0; trial < 3; ++trial, ++seed) {
      const int width = 2 * c.halfX + 1;
      const int height = 2 * c.halfY + 1;
      const CTexture texture(seed, c.shortest);
      const CTexture other(seed + 1000, c.shortest);
      const CPlane source = PlaneOf(texture, {1.4, -0.6}, 120, 120, seed + 1);
      const CPlane plane = PlaneOf(c.there ? texture : other, {}, width + 2 * c.range,
                                   height + 2 * c.range, seed + 2);
      const SPlaneView patch = ViewOf(source, c.range - 3, c.range + 2, width, height);
      const SPlaneView window = ViewOf(plane, 0, 0, plane.width(), plane.height());
      CPatchSearch search;
      search.setPatch(patch);
      const SPeak best = search.findBest(window);
      const SPeak expected = BestByDefinition(patch, window);
      EXPECT_EQ(best.x, expected.x);
      EXPECT_EQ(best.y, expected.y);
      EXPECT_NEAR(best.correlation, expected.correlation, 1e-5);
    }
  }
}

TEST(PatchSearch, SecondBestKeepsItsDistance) {
  const CTexture texture(5);
  const CPlane plane = PlaneOf(texture, {}, 61, 61, 1);
  const SPlaneView window = ViewOf(plane, 0, 0, 61, 61);
  CPatchSearch search;
  search.setPatch(ViewOf(plane, 20, 17, 21, 21));
  const SPeak best = search.findBest(window);
  EXPECT_EQ(best.x, 20);
  EXPECT_EQ(best.y, 17);
  EXPECT_NEAR(best.correlation, 1.0, 1e-5);
  const SPeak second = search.findBest(window, &best, 6);
  EXPECT_TRUE(std::abs(second.x - best.x) >= 6 || std::abs(second.y - best.y) >= 6);
  EXPECT_LT(second.correlation, 0.95);
  EXPECT_EQ(search.findBest(window, &best, 100).correlation, -1.0) << "nothing is left";
}

TEST(PatchSearch, CoarseToFineAgreesWithTheExactSearch) {
  for (const double shortest : {6.0, 4.0, 3.0}) {
    for (const int half : {5, 10, 30}) {
      for (unsigned seed = 1; seed <= 6; ++seed) {
        const int size = 2 * half + 1;
        const CTexture texture(seed, shortest);
        const CPlane source = PlaneOf(texture, {0.5, 0.4}, size + 80, size + 80, 1);
        const CPlane plane = PlaneOf(texture, {}, size + 80, size + 80, 2);
        const SPlaneView window = ViewOf(plane, 0, 0, plane.width(), plane.height());
        CPatchSearch search;
        search.setPatch(
            ViewOf(source, 11 * static_cast<int>(seed), 77 - static_cast<int>(seed), size, size));
        const SPeak exact = search.findBest(window);
        const SPeak quick = search.findPeaks(window).front();
        // A low correlation sends the tracker to the exact search, so only it may be wrong.
        if (quick.correlation < 0.6) continue;
        EXPECT_EQ(quick.x, exact.x) << "half " << half << " period " << shortest;
        EXPECT_EQ(quick.y, exact.y) << "half " << half << " period " << shortest;
      }
    }
  }
}
