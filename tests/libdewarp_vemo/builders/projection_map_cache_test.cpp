// The projection map cache: shared maps keyed by mount and projection.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection_map_cache.h>

#include <gtest/gtest.h>

#include "log_capture.h"

namespace vemo {
namespace libdewarp {
namespace {

typedef boost::shared_ptr<ImageMap> MapPtr;

MapPtr MakeMap(int width) {
  MapPtr map(new ImageMap(width, 2));
  map->FillMap(Vector2d(static_cast<float>(width), 1));
  return map;
}

TEST(ProjectionMapCache, GetOnAnEmptyCacheReturnsAnEmptyPointer) {
  ProjectionMapCache cache;
  EXPECT_FALSE(cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION));
  EXPECT_FALSE(cache.Get(ProjectionMapCache::Key(WALL_MOUNT, RECTILINEAR_PROJECTION)));
}

TEST(ProjectionMapCache, SetThenGetSharesTheMap) {
  ProjectionMapCache cache;
  MapPtr map = MakeMap(4);
  cache.Set(WALL_MOUNT, PANNINI_PROJECTION, map);
  EXPECT_EQ(map.get(), cache.Get(WALL_MOUNT, PANNINI_PROJECTION).get());
  EXPECT_EQ(2, map.use_count());
  EXPECT_FALSE(cache.Get(FLOOR_MOUNT, PANNINI_PROJECTION));
}

TEST(ProjectionMapCache, SecondSetWithTheSameKeyLogsOnceAndKeepsTheSecondMap) {
  test::LogCapture cap;
  ProjectionMapCache cache;
  MapPtr first = MakeMap(4);
  cache.Set(CEILING_MOUNT, CYLINDRICAL_PROJECTION, first);
  EXPECT_TRUE(cap.lines().empty());
  MapPtr before = cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION);
  first.reset();
  MapPtr second = MakeMap(6);
  cache.Set(CEILING_MOUNT, CYLINDRICAL_PROJECTION, second);
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_NE(std::string::npos, cap.lines()[0].find("Projection map cache item was overwritten\n"));
  EXPECT_EQ(second.get(), cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION).get());
  // The map obtained before the overwrite is still alive and usable, now owned by `before` alone.
  ASSERT_TRUE(before);
  EXPECT_EQ(1, before.use_count());
  EXPECT_EQ(4u, before->GetMapWidth());
  EXPECT_EQ(Vector2d(4, 1), before->GetMapItem(3, 1));
}

TEST(ProjectionMapCache, KeysDifferingOnlyInProjectionAreDistinct) {
  ProjectionMapCache cache;
  MapPtr a = MakeMap(4), b = MakeMap(5);
  cache.Set(WALL_MOUNT, CYLINDRICAL_PROJECTION, a);
  test::LogCapture cap;
  cache.Set(WALL_MOUNT, MERCATOR_PROJECTION, b);
  EXPECT_TRUE(cap.lines().empty());
  EXPECT_EQ(a.get(), cache.Get(WALL_MOUNT, CYLINDRICAL_PROJECTION).get());
  EXPECT_EQ(b.get(), cache.Get(WALL_MOUNT, MERCATOR_PROJECTION).get());
}

TEST(ProjectionMapCache, ClearReleasesEntriesButNotMapsHeldElsewhere) {
  ProjectionMapCache cache;
  MapPtr held = MakeMap(4);
  cache.Set(WALL_MOUNT, CYLINDRICAL_PROJECTION, held);
  cache.Set(FLOOR_MOUNT, CYLINDRICAL_PROJECTION, MakeMap(3));
  MapPtr got = cache.Get(FLOOR_MOUNT, CYLINDRICAL_PROJECTION);
  cache.Clear();
  EXPECT_FALSE(cache.Get(WALL_MOUNT, CYLINDRICAL_PROJECTION));
  EXPECT_FALSE(cache.Get(FLOOR_MOUNT, CYLINDRICAL_PROJECTION));
  EXPECT_EQ(1, held.use_count());
  ASSERT_TRUE(got);
  EXPECT_EQ(1, got.use_count());
  EXPECT_EQ(3u, got->GetMapWidth());
}

TEST(ProjectionMapCache, CopiesShareTheSameMaps) {
  ProjectionMapCache cache;
  MapPtr map = MakeMap(4);
  cache.Set(INVERTED_WALL_MOUNT, ARCHITECTURAL_PROJECTION, map);
  ProjectionMapCache copy(cache);
  ProjectionMapCache assigned;
  assigned = cache;
  EXPECT_EQ(map.get(), copy.Get(INVERTED_WALL_MOUNT, ARCHITECTURAL_PROJECTION).get());
  EXPECT_EQ(map.get(), assigned.Get(INVERTED_WALL_MOUNT, ARCHITECTURAL_PROJECTION).get());
  EXPECT_EQ(4, map.use_count());
  cache.Clear();
  EXPECT_EQ(map.get(), copy.Get(INVERTED_WALL_MOUNT, ARCHITECTURAL_PROJECTION).get());
}

TEST(ProjectionMapCache, SelfAssignmentWarnsAndKeepsTheEntries) {
  ProjectionMapCache cache;
  MapPtr map = MakeMap(4);
  cache.Set(WALL_MOUNT, CYLINDRICAL_PROJECTION, map);
  test::LogCapture cap(LOG_WARNING);
  ProjectionMapCache& same = cache;
  cache = same;
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_NE(std::string::npos, cap.lines()[0].find("Self assignment of ProjectionMapCache object\n"));
  EXPECT_EQ(map.get(), cache.Get(WALL_MOUNT, CYLINDRICAL_PROJECTION).get());
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
