// Dense build: one functor call per pixel of the crop, NaN outside it.
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/resolution.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using test::AffineFunctor;
using test::IsNan;
using test::MapX;
using test::MapY;

// Element (col, row) of a build with crop = out holds f(col - W/2, row - H/2) + (input centre).
void ExpectDense(const ImageMap& map, const AffineFunctor& f, float W, float H, float inW, float inH) {
  for (unsigned row = 0; row < map.GetMapHeight(); ++row) {
    for (unsigned col = 0; col < map.GetMapWidth(); ++col) {
      const Vector2d e = f.Expected(static_cast<float>(col) - W / 2, static_cast<float>(row) - H / 2);
      ASSERT_FLOAT_EQ(e.X + inW / 2, MapX(map, col, row)) << col << "," << row;
      ASSERT_FLOAT_EQ(e.Y + inH / 2, MapY(map, col, row)) << col << "," << row;
    }
  }
}

TEST(LinearMapBuilder, FullBuildCallsTheFunctorOncePerPixel) {
  AffineFunctor f(2, 1, -3, 0.5f);
  std::unique_ptr<ImageMap> map(LinearMapBuilder().BuildImageMap(Resolution(100, 60), Resolution(8, 6), f));
  ASSERT_EQ(8u, map->GetMapWidth());
  ASSERT_EQ(6u, map->GetMapHeight());
  EXPECT_EQ(Vector2d(100, 60), map->GetInputSize());
  EXPECT_EQ(48, f.calls);
  ExpectDense(*map, f, 8, 6, 100, 60);
}

TEST(LinearMapBuilder, RowsAreWalkedTopToBottomFromTheCentredCorner) {
  AffineFunctor f(1, 0, 1, 0);
  f.record = true;
  std::unique_ptr<ImageMap> map(LinearMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(3, 2), f));
  ASSERT_EQ(6u, f.points.size());
  // x from -1.5 while below 1.5, y from -1 while below 1, row by row.
  const Vector2d expected[6] = {Vector2d(-1.5f, -1), Vector2d(-0.5f, -1), Vector2d(0.5f, -1),
                                Vector2d(-1.5f, 0), Vector2d(-0.5f, 0), Vector2d(0.5f, 0)};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], f.points[i]) << i;
  }
}

TEST(LinearMapBuilder, OddSizesAreEvaluatedAtHalfPixelOffsets) {
  AffineFunctor f(0.5f, 3, 2, -1);
  std::unique_ptr<ImageMap> map(LinearMapBuilder().BuildImageMap(Resolution(31, 17), Resolution(7, 5), f));
  EXPECT_EQ(35, f.calls);
  ExpectDense(*map, f, 7, 5, 31, 17);
}

TEST(LinearMapBuilder, SmallerCropLeavesAnEqualNanBorderOnBothSides) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      LinearMapBuilder().BuildImageMap(Resolution(50, 50), Resolution(10, 8), f, Resolution(6, 4)));
  EXPECT_EQ(24, f.calls);
  for (unsigned row = 0; row < 8; ++row) {
    for (unsigned col = 0; col < 10; ++col) {
      const bool inside = col >= 2 && col <= 7 && row >= 2 && row <= 5;
      EXPECT_EQ(!inside, IsNan(*map, col, row)) << col << "," << row;
      if (inside) {
        // Destination points stay relative to the output centre.
        EXPECT_FLOAT_EQ(static_cast<float>(col) - 5 + 25, MapX(*map, col, row));
        EXPECT_FLOAT_EQ(static_cast<float>(row) - 4 + 25, MapY(*map, col, row));
      }
    }
  }
}

TEST(LinearMapBuilder, OddCropBorderDiffersByAtMostOnePixel) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      LinearMapBuilder().BuildImageMap(Resolution(50, 50), Resolution(10, 9), f, Resolution(5, 4)));
  EXPECT_EQ(20, f.calls);
  // Columns: trunc(-2.5 + k + 5) = 2..6, so 2 NaN columns on the left and 3 on the right.
  // Rows: trunc(-2 + j + 4.5) = 2..5, so 2 NaN rows above and 3 below.
  unsigned left = 0, right = 0, top = 0, bottom = 0;
  for (unsigned col = 0; col < 10 && IsNan(*map, col, 3); ++col) ++left;
  for (unsigned col = 10; col > 0 && IsNan(*map, col - 1, 3); --col) ++right;
  for (unsigned row = 0; row < 9 && IsNan(*map, 4, row); ++row) ++top;
  for (unsigned row = 9; row > 0 && IsNan(*map, 4, row - 1); --row) ++bottom;
  EXPECT_EQ(2u, left);
  EXPECT_EQ(3u, right);
  EXPECT_EQ(2u, top);
  EXPECT_EQ(3u, bottom);
}

TEST(LinearMapBuilder, ZeroSizedOutputYieldsAnEmptyMapWithoutCalls) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(LinearMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(0, 0), f));
  ASSERT_TRUE(map);
  EXPECT_EQ(0u, map->GetMapWidth());
  EXPECT_EQ(0u, map->GetMapHeight());
  EXPECT_EQ(0, f.calls);
  std::unique_ptr<ImageMap> wide(LinearMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(5, 0), f));
  EXPECT_EQ(0, f.calls);
}

TEST(LinearMapBuilder, CropLargerThanTheOutputIsClippedToTheMap) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      LinearMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(4, 4), f, Resolution(40, 30)));
  EXPECT_EQ(16, f.calls);
  ExpectDense(*map, f, 4, 4, 10, 10);
}

TEST(LinearMapBuilder, FunctorFailurePropagates) {
  test::ThrowingFunctor f(5);
  EXPECT_THROW(LinearMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(4, 4), f), std::runtime_error);
  EXPECT_EQ(5, f.calls);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
