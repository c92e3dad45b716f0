// Coordinate tables and image maps: fresh fill, ownership, conversion, the integer merge and
// the caching of merged tables.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::Map;
using vemo::libdewarp::Vector2d;

namespace {

const std::int32_t kOutside = static_cast<std::int32_t>(0x80000000u);

// A FLOAT pair of maps of cols x rows filled from the given values.
void FillPair(Map& mx, Map& my, const float* xs, const float* ys, unsigned cols, unsigned rows) {
  mx.Reset(Map::FLOAT, cols, rows);
  my.Reset(Map::FLOAT, cols, rows);
  for (unsigned i = 0; i < cols * rows; ++i) {
    mx.GetTypePtr<float>()[i] = xs[i];
    my.GetTypePtr<float>()[i] = ys[i];
  }
}

}  // namespace

TEST(MapTest, DefaultMapIsEmptyIntegerOwningNothing) {
  Map map;
  EXPECT_EQ(Map::INTEGER, map.GetType());
  EXPECT_EQ(0u, map.GetRows());
  EXPECT_EQ(0u, map.GetCols());
  EXPECT_TRUE(map.GetOwnBuffer());
  EXPECT_EQ(nullptr, map.GetTypePtr<std::int32_t>());
  EXPECT_EQ(nullptr, map.GetTypePtr<float>());
  EXPECT_EQ(nullptr, map.GetTypePtr<double>());
  EXPECT_EQ(nullptr, map.GetMergedTypePtr<std::int32_t>());
  EXPECT_EQ(nullptr, map.GetMergedTypePtr<float>());
  EXPECT_EQ(nullptr, map.GetMergedTypePtr<double>());
}

TEST(MapTest, ImageMapOfFourByTwoHasTwoNanTablesOfEightElements) {
  ImageMap map(4, 2);
  EXPECT_EQ(Vector2d(4.0f, 2.0f), map.GetMapSize());
  EXPECT_EQ(4u, map.GetMapWidth());
  EXPECT_EQ(2u, map.GetMapHeight());
  const Map* tables[2] = {&map.GetMapX(), &map.GetMapY()};
  for (const Map* table : tables) {
    EXPECT_EQ(Map::FLOAT, table->GetType());
    EXPECT_EQ(8u, table->GetAllocatedCount());
    ASSERT_NE(nullptr, table->GetTypePtr<float>());
    EXPECT_EQ(nullptr, table->GetTypePtr<std::int32_t>());
    EXPECT_EQ(nullptr, table->GetTypePtr<double>());
    for (int i = 0; i < 8; ++i) {
      EXPECT_TRUE(std::isnan(table->GetTypePtr<float>()[i])) << i;
    }
  }
  EXPECT_FALSE(map.GetMapItem(3, 1).Valid());
}

TEST(MapTest, FreshTablesAreAllOnesBytes) {
  Map integer(Map::INTEGER, 3, 3);
  Map dbl(Map::DOUBLE, 5, 1);
  for (int i = 0; i < 9; ++i) {
    EXPECT_EQ(-1, integer.GetTypePtr<std::int32_t>()[i]);
  }
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(std::isnan(dbl.GetTypePtr<double>()[i]));
    unsigned char bytes[sizeof(double)];
    std::memcpy(bytes, &dbl.GetTypePtr<double>()[i], sizeof(bytes));
    for (unsigned char b : bytes) {
      EXPECT_EQ(0xFF, b);
    }
  }
  EXPECT_EQ(-1, integer.at<std::int32_t>(2, 2));
}

TEST(MapTest, CopyConstructionTransfersOwnershipAndReportsSquareSize) {
  Map source(Map::FLOAT, 4, 2);
  float* data = source.GetTypePtr<float>();
  Map copy(source);
  EXPECT_EQ(2u, copy.GetRows());
  EXPECT_EQ(2u, copy.GetCols());
  EXPECT_EQ(Map::FLOAT, copy.GetType());
  EXPECT_EQ(data, copy.GetTypePtr<float>());
  EXPECT_TRUE(copy.GetOwnBuffer());
  EXPECT_FALSE(source.GetOwnBuffer());
  // The source keeps its pointers (and they stay valid).
  EXPECT_EQ(data, source.GetTypePtr<float>());
  source.GetTypePtr<float>()[7] = 5.0f;
  EXPECT_EQ(4u, source.GetCols());
}

TEST(MapTest, CopyOutlivedBySourceKeepsTheArrayValid) {
  Map source(Map::FLOAT, 3, 2);
  {
    Map copy(source);
    copy.GetTypePtr<float>()[5] = 2.5f;
  }
  // Read after the new owner went: the array is still there.
  EXPECT_EQ(2.5f, source.GetTypePtr<float>()[5]);
}

TEST(MapTest, AssignmentSharesArraysAndOwnership) {
  Map a(Map::FLOAT, 3, 5);
  Map b;
  b = a;
  EXPECT_EQ(a.GetTypePtr<float>(), b.GetTypePtr<float>());
  EXPECT_TRUE(a.GetOwnBuffer());
  EXPECT_TRUE(b.GetOwnBuffer());
  EXPECT_EQ(5u, b.GetRows());
  EXPECT_EQ(3u, b.GetCols());
  // Both go out of scope owning the same array: released once (the sanitizer tree checks it).
}

TEST(MapTest, SelfAssignmentWarnsAndChangesNothing) {
  vemo::test::LogCapture cap(LOG_WARNING);
  Map a(Map::FLOAT, 2, 2);
  float* data = a.GetTypePtr<float>();
  Map& alias = a;
  a = alias;
  EXPECT_TRUE(cap.contains("Self assignment of Map object"));
  EXPECT_EQ(data, a.GetTypePtr<float>());
}

TEST(MapTest, ConvertToRoundsToNearestEvenForIntegers) {
  const float xs[6] = {2.5f, 3.5f, -2.5f, 1.4999f, -0.5f, 7.0f};
  Map map(Map::FLOAT, 3, 2);
  std::memcpy(map.GetTypePtr<float>(), xs, sizeof(xs));
  Map integer = map.convertTo(Map::INTEGER);
  EXPECT_EQ(Map::INTEGER, integer.GetType());
  EXPECT_EQ(3u, integer.GetCols());
  EXPECT_EQ(2u, integer.GetRows());
  const std::int32_t expected[6] = {2, 4, -2, 1, 0, 7};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], integer.GetTypePtr<std::int32_t>()[i]) << i;
  }
  Map dbl = map.convertTo(Map::DOUBLE);
  EXPECT_EQ(2.5, dbl.GetTypePtr<double>()[0]);
  EXPECT_EQ(static_cast<double>(1.4999f), dbl.GetTypePtr<double>()[3]);
  Map back = dbl.convertTo(Map::FLOAT);
  EXPECT_EQ(-0.5f, back.GetTypePtr<float>()[4]);
  // The source map is untouched.
  EXPECT_EQ(2.5f, map.GetTypePtr<float>()[0]);
}

TEST(MapTest, MergeOfThreeElementsWritesTwoPairs) {
  // Pixels 0, 1 form the first pair; pixel 2 pairs with an element past the end, which is
  // unfilled, so the second pair is outside.
  const float xs[3] = {0.0f, 1.0f, 2.0f};
  const float ys[3] = {0.0f, 0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 3, 1);
  const std::int32_t* merged = mx.Merge(0, my, 4, 1);
  ASSERT_NE(nullptr, merged);
  EXPECT_EQ(merged, mx.GetMergedTypePtr<std::int32_t>());
  EXPECT_EQ(0, merged[0]);
  EXPECT_EQ(0, merged[1]);
  EXPECT_EQ(1, merged[2]);
  EXPECT_EQ(0, merged[3]);
  for (int i = 4; i < 8; ++i) {
    EXPECT_EQ(kOutside, merged[i]) << i;
  }
}

TEST(MapTest, MergeOfFourElementsKeepsBothPairs) {
  const float xs[4] = {0.0f, 1.9f, 2.0f, 3.0f};
  const float ys[4] = {0.5f, 0.0f, 1.0f, 1.99f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 2, 2);
  const std::int32_t* merged = mx.Merge(0, my, 4, 2);
  const std::int32_t expected[8] = {0, 0, 1, 0, 2, 1, 3, 1};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(expected[i], merged[i]) << i;
  }
}

TEST(MapTest, MergeTruncatesMinusHalfToZeroAndRejectsMinusOne) {
  const float xs[4] = {-0.5f, 1.0f, -1.0f, 1.0f};
  const float ys[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 4, 1);
  const std::int32_t* merged = mx.Merge(0, my, 4, 1);
  EXPECT_EQ(0, merged[0]);
  EXPECT_EQ(0, merged[1]);
  EXPECT_EQ(1, merged[2]);
  EXPECT_EQ(0, merged[3]);
  // x = -1 spoils its partner too.
  for (int i = 4; i < 8; ++i) {
    EXPECT_EQ(kOutside, merged[i]) << i;
  }
}

TEST(MapTest, MergeAcceptsWidthMinusATenthAndRejectsWidth) {
  const float w = 8.0f;
  const float xs[4] = {w - 0.1f, 0.0f, w, 0.0f};
  const float ys[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 4, 1);
  const std::int32_t* merged = mx.Merge(0, my, 8, 1);
  EXPECT_EQ(7, merged[0]);
  EXPECT_EQ(0, merged[2]);
  for (int i = 4; i < 8; ++i) {
    EXPECT_EQ(kOutside, merged[i]) << i;
  }
}

TEST(MapTest, MergeRejectsHeightAndNan) {
  const float xs[4] = {0.0f, 0.0f, std::numeric_limits<float>::quiet_NaN(), 0.0f};
  const float ys[4] = {3.0f, 0.0f, 0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 4, 1);
  const std::int32_t* merged = mx.Merge(0, my, 4, 3);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(kOutside, merged[i]) << i;
  }
}

TEST(MapTest, MergeTwiceReturnsTheFirstTableUnchanged) {
  const float xs[2] = {1.0f, 2.0f};
  const float ys[2] = {0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 2, 1);
  const std::int32_t* first = mx.Merge(0, my, 4, 1);
  mx.GetTypePtr<float>()[0] = 3.0f;
  const std::int32_t* second = mx.Merge(0, my, 4, 1);
  EXPECT_EQ(first, second);
  EXPECT_EQ(1, second[0]);
}

TEST(MapTest, ResetDropsTheMergedCache) {
  const float xs[2] = {1.0f, 2.0f};
  const float ys[2] = {0.0f, 0.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 2, 1);
  mx.Merge(0, my, 4, 1);
  mx.Reset(Map::FLOAT, 2, 1);
  EXPECT_EQ(nullptr, mx.GetMergedTypePtr<std::int32_t>());
  EXPECT_EQ(nullptr, mx.GetMergedTypePtr<float>());
  mx.GetTypePtr<float>()[0] = 3.0f;
  mx.GetTypePtr<float>()[1] = 0.0f;
  const std::int32_t* merged = mx.Merge(0, my, 4, 1);
  EXPECT_EQ(3, merged[0]);
  EXPECT_EQ(0, merged[2]);
}

TEST(MapTest, ArgumentlessResetKeepsTypeAndSize) {
  Map map(Map::DOUBLE, 3, 2);
  map.GetTypePtr<double>()[0] = 1.0;
  map.Reset();
  EXPECT_EQ(Map::DOUBLE, map.GetType());
  EXPECT_EQ(3u, map.GetCols());
  EXPECT_EQ(2u, map.GetRows());
  EXPECT_TRUE(std::isnan(map.GetTypePtr<double>()[0]));
}

TEST(MapTest, FloatMergeKeepsOnlyInterpolablePairs) {
  // Source 5 x 4: x must lie in [0, 4) and y in [0, 3).
  const float xs[6] = {0.0f, 3.99f, 4.0f, 1.0f, 2.0f, 2.0f};
  const float ys[6] = {2.5f, 0.0f, 0.0f, 0.0f, -0.01f, 1.0f};
  Map mx, my;
  FillPair(mx, my, xs, ys, 6, 1);
  const float* merged = mx.Merge(0.0f, my, 5, 4);
  EXPECT_EQ(0.0f, merged[0]);
  EXPECT_EQ(2.5f, merged[1]);
  EXPECT_EQ(3.99f, merged[2]);
  EXPECT_EQ(0.0f, merged[3]);
  for (int i = 4; i < 12; ++i) {
    EXPECT_EQ(3.4028235e38f, merged[i]) << i;
  }
  EXPECT_EQ(merged, mx.GetMergedBuffer<float>(my, 5, 4));
}

TEST(MapTest, ConfigForIntAddsARoundedTableBesideTheFloatOne) {
  const float xs[2] = {1.5f, -0.4f};
  Map map(Map::FLOAT, 2, 1);
  std::memcpy(map.GetTypePtr<float>(), xs, sizeof(xs));
  map.ConfigForInt();
  EXPECT_EQ(Map::FLOAT, map.GetType());
  ASSERT_NE(nullptr, map.GetTypePtr<std::int32_t>());
  EXPECT_EQ(2, map.GetTypePtr<std::int32_t>()[0]);
  EXPECT_EQ(0, map.GetTypePtr<std::int32_t>()[1]);
  EXPECT_EQ(1.5f, map.GetTypePtr<float>()[0]);
}

TEST(ImageMapTest, SizeFromVectorIsTruncated) {
  ImageMap map(Vector2d(4.9f, 2.7f));
  EXPECT_EQ(Vector2d(4.0f, 2.0f), map.GetMapSize());
  map.SetMapSize(Vector2d(3.2f, 1.0f));
  EXPECT_EQ(3u, map.GetMapWidth());
  EXPECT_EQ(1u, map.GetMapHeight());
}

TEST(ImageMapTest, ItemsAndInputSize) {
  ImageMap map(3, 2);
  map.SetMapItem(2, 1, Vector2d(10.5f, -3.0f));
  EXPECT_EQ(Vector2d(10.5f, -3.0f), map.GetMapItem(2, 1));
  EXPECT_EQ(10.5f, map.GetMapX().GetTypePtr<float>()[5]);
  EXPECT_EQ(-3.0f, map.GetMapY().GetTypePtr<float>()[5]);
  EXPECT_FALSE(map.GetMapItem(1, 1).Valid());
  // Past the tables: ignored, and read as invalid.
  map.SetMapItem(0, 7, Vector2d(1.0f, 1.0f));
  EXPECT_FALSE(map.GetMapItem(0, 7).Valid());
  map.SetInputSize(Vector2d(640.0f, 480.0f));
  EXPECT_EQ(Vector2d(640.0f, 480.0f), map.GetInputSize());
  EXPECT_FALSE(map.Empty());
  EXPECT_FALSE(ImageMap().Empty());
}

TEST(ImageMapTest, FillMapSetsEveryElement) {
  ImageMap map(3, 3);
  map.FillMap(Vector2d(1.25f, 7.0f));
  for (unsigned y = 0; y < 3; ++y) {
    for (unsigned x = 0; x < 3; ++x) {
      EXPECT_EQ(Vector2d(1.25f, 7.0f), map.GetMapItem(x, y));
    }
  }
}

TEST(ImageMapTest, CopyConstructionMovesOwnership) {
  ImageMap original(4, 4);
  original.SetInputSize(Vector2d(8.0f, 8.0f));
  original.SetMapItem(1, 1, Vector2d(2.0f, 3.0f));
  ImageMap copy(original);
  EXPECT_EQ(Vector2d(8.0f, 8.0f), copy.GetInputSize());
  EXPECT_EQ(Vector2d(2.0f, 3.0f), copy.GetMapItem(1, 1));
  EXPECT_TRUE(copy.GetMapX().GetOwnBuffer());
  EXPECT_FALSE(original.GetMapX().GetOwnBuffer());
  EXPECT_FALSE(original.GetMapY().GetOwnBuffer());
  EXPECT_EQ(original.GetMapX().GetTypePtr<float>(), copy.GetMapX().GetTypePtr<float>());
}

TEST(ImageMapTest, AssignmentIsShallowAndSelfAssignmentWarns) {
  vemo::test::LogCapture cap(LOG_WARNING);
  ImageMap a(2, 2);
  a.SetInputSize(Vector2d(5.0f, 6.0f));
  ImageMap b(7, 7);
  b = a;
  EXPECT_EQ(Vector2d(2.0f, 2.0f), b.GetMapSize());
  EXPECT_EQ(Vector2d(5.0f, 6.0f), b.GetInputSize());
  EXPECT_EQ(a.GetMapX().GetTypePtr<float>(), b.GetMapX().GetTypePtr<float>());
  EXPECT_TRUE(a.GetMapX().GetOwnBuffer());
  EXPECT_TRUE(b.GetMapX().GetOwnBuffer());
  EXPECT_FALSE(cap.contains("Self assignment"));
  ImageMap& alias = a;
  a = alias;
  EXPECT_TRUE(cap.contains("Self assignment of ImageMap object"));
  EXPECT_EQ(Vector2d(2.0f, 2.0f), a.GetMapSize());
}
