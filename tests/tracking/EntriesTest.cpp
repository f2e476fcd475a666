#include "tracking/Entries.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "tracking/NodePool.h"
#include "tracking/TrackingArray.h"

namespace {

using Entries = CEntries<CTrackPoint>;
using Model = std::map<int, CTrackPoint>;

bool SameAs(const Model& model, const Entries& entries) {
  return std::ranges::equal(model, entries, [](const auto& a, const auto& b) {
    return a.first == b.first && a.second == b.second;
  });
}

// Few and many values in turn, so that they move into memory of their own and back.
TEST(Entries, AreAnOrderedMapThroughChangesCopiesAndMoves) {
  std::mt19937 random(3);
  for (const unsigned most : {2U, 3U, 4U, 9U, 60U}) {
    std::vector<Entries> entries(3);
    std::vector<Model> models(3);
    for (int step = 0; step < 4000; ++step) {
      const std::size_t a = random() % 3;
      const std::size_t b = random() % 3;
      const int index = static_cast<int>(random() % most) - 1;
      switch (random() % 8) {
        case 0: entries[a] = entries[b], models[a] = models[b]; break;
        case 1: entries[a] = Entries(entries[b]), models[a] = models[b]; break;
        case 2: std::swap(entries[a], entries[b]), std::swap(models[a], models[b]); break;
        case 3: entries[a].erase(index), models[a].erase(index); break;
        case 4: {
          const Entries moved = std::move(entries[a]);
          ASSERT_TRUE(SameAs(models[a], moved));
          models[a].clear();  // and goes on empty
          break;
        }
        default: entries[a][index].x = models[a][index].x = step;
      }
      for (std::size_t i = 0; i < 3; ++i) ASSERT_TRUE(SameAs(models[i], entries[i])) << most;
      ASSERT_EQ(entries[a] == entries[b], models[a] == models[b]);
      ASSERT_EQ(entries[a].find(index) == entries[a].end(), !models[a].contains(index));
    }
  }
}

using Pooled = CPooledMap<int, CTrackingPoints>;

CTrackingPoints PointsOf(int frame) {
  CTrackingPoints points;
  for (int i = 0; i <= frame % 5; ++i) points.Point(i) = {1.0 * frame, 1.0 * i};
  return points;
}

TEST(PooledMap, KeepsItsNodesThroughCopiesMovesAndTheEndOfOthers) {
  constexpr int FRAMES = 40000;  // blocks of all sizes
  Pooled first;
  for (int frame = 0; frame < FRAMES; ++frame) first[frame] = PointsOf(frame);
  const CTrackingPoints* const place = &first[123];

  Pooled copy = first;
  Pooled moved = std::move(first);
  EXPECT_EQ(&moved[123], place) << "a move leaves entries where they are";
  EXPECT_EQ(moved, copy);
  static_assert(std::is_nothrow_move_constructible_v<Pooled>);
  Pooled again;
  again = first;  // NOLINT(bugprone-use-after-move): empty into empty
  again = copy;
  Pooled fromMoved = std::move(again);
  again = copy;  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(again, fromMoved);
  first[5] = PointsOf(7);  // NOLINT(bugprone-use-after-move): it is empty and usable
  EXPECT_EQ(first.size(), 1u);
  EXPECT_NE(first.get_allocator(), moved.get_allocator()) << "maps may belong to different threads";

  moved.erase(moved.find(100), moved.find(FRAMES - 100));
  first = moved;
  moved.clear();
  moved[1] = PointsOf(1);
  ASSERT_EQ(first.size(), 200u);
  for (const auto& [frame, points] : first) EXPECT_EQ(points, PointsOf(frame));
  first = std::move(copy);
  for (int frame = 0; frame < FRAMES; ++frame) ASSERT_EQ(first.at(frame), PointsOf(frame));
}

}  // namespace
