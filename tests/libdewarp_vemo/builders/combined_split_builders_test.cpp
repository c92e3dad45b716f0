// Composition of two maps and rearrangement of one map into strips.
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/split_map_builder.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using test::IsNan;

// Intermediate map 4 wide, 3 tall: item (x, y) = (10 x + 1, 100 y + 2), source 50 x 400.
ImageMap* SecondMap() {
  ImageMap* map = new ImageMap(4, 3);
  map->SetInputSize(Vector2d(50, 400));
  for (unsigned y = 0; y < 3; ++y) {
    for (unsigned x = 0; x < 4; ++x) {
      map->SetMapItem(x, y, Vector2d(10.0f * x + 1, 100.0f * y + 2));
    }
  }
  return map;
}

TEST(CombinedMapBuilder, IntegralPositionsReturnTheSecondMapItem) {
  std::unique_ptr<ImageMap> second(SecondMap());
  ImageMap first(3, 1);
  first.SetInputSize(Vector2d(4, 3));
  first.SetMapItem(0, 0, Vector2d(1, 1));
  first.SetMapItem(1, 0, Vector2d(3, 2));
  first.SetMapItem(2, 0, Vector2d(0, 0));
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(first, *second));
  ASSERT_EQ(3u, result->GetMapWidth());
  ASSERT_EQ(1u, result->GetMapHeight());
  EXPECT_EQ(Vector2d(50, 400), result->GetInputSize());
  EXPECT_EQ(Vector2d(11, 102), result->GetMapItem(0, 0));
  EXPECT_EQ(Vector2d(31, 202), result->GetMapItem(1, 0));
  EXPECT_EQ(Vector2d(1, 2), result->GetMapItem(2, 0));
}

TEST(CombinedMapBuilder, FractionalPositionsBlendTheFourCorners) {
  std::unique_ptr<ImageMap> second(SecondMap());
  ImageMap first(2, 1);
  first.SetMapItem(0, 0, Vector2d(2.25f, 0.5f));
  first.SetMapItem(1, 0, Vector2d(0.5f, 1.75f));
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(first, *second));
  // The second map is affine, so the blend equals it at the fractional position.
  EXPECT_FLOAT_EQ(23.5f, result->GetMapItem(0, 0).X);
  EXPECT_FLOAT_EQ(52.0f, result->GetMapItem(0, 0).Y);
  EXPECT_FLOAT_EQ(6.0f, result->GetMapItem(1, 0).X);
  EXPECT_FLOAT_EQ(177.0f, result->GetMapItem(1, 0).Y);
}

TEST(CombinedMapBuilder, NonAffineCornersUseTheStandardBilinearWeights) {
  ImageMap second(2, 2);
  second.SetMapItem(0, 0, Vector2d(0, 0));
  second.SetMapItem(1, 0, Vector2d(4, 0));
  second.SetMapItem(0, 1, Vector2d(0, 8));
  second.SetMapItem(1, 1, Vector2d(12, 16));
  ImageMap first(1, 1);
  first.SetMapItem(0, 0, Vector2d(0.25f, 0.5f));
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(first, second));
  // x: 0.75*0.5*0 + 0.25*0.5*4 + 0.75*0.5*0 + 0.25*0.5*12 = 2; y: 0.375*8 + 0.125*16 = 5.
  EXPECT_FLOAT_EQ(2.0f, result->GetMapItem(0, 0).X);
  EXPECT_FLOAT_EQ(5.0f, result->GetMapItem(0, 0).Y);
}

TEST(CombinedMapBuilder, PositionsWhoseCornersLeaveTheIntermediateImageStayNan) {
  std::unique_ptr<ImageMap> second(SecondMap());
  ImageMap first(6, 1);
  first.SetMapItem(0, 0, Vector2d(3.5f, 1));    // width - 0.5: ceiling 4 = width
  first.SetMapItem(1, 0, Vector2d(1, 2.5f));    // height - 0.5
  first.SetMapItem(2, 0, Vector2d(-0.5f, 1));   // floor -1
  first.SetMapItem(3, 0, Vector2d(1, -0.25f));  // floor -1
  first.SetMapItem(4, 0, Vector2d::InvalidVector);
  first.SetMapItem(5, 0, Vector2d(3, 2));  // the last item is still inside
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(first, *second));
  for (unsigned x = 0; x < 5; ++x) {
    EXPECT_TRUE(IsNan(*result, x, 0)) << x;
  }
  EXPECT_EQ(Vector2d(31, 202), result->GetMapItem(5, 0));
}

TEST(CombinedMapBuilder, CopiedNonSquareMapIsReadOnlyWithinItsElements) {
  // A copy of a 2 x 4 map reports 4 x 4 but holds 8 elements: only those are read, the rows
  // beyond them stay NaN.
  std::unique_ptr<ImageMap> second(SecondMap());
  ImageMap tall(2, 4);
  tall.FillMap(Vector2d(1, 1));
  ImageMap copy(tall);
  ASSERT_EQ(Vector2d(4, 4), copy.GetMapSize());
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(copy, *second));
  ASSERT_EQ(4u, result->GetMapHeight());
  EXPECT_EQ(Vector2d(11, 102), result->GetMapItem(0, 0));
  for (unsigned x = 0; x < 4; ++x) {
    EXPECT_TRUE(IsNan(*result, x, 2)) << x;
    EXPECT_TRUE(IsNan(*result, x, 3)) << x;
  }
}

TEST(CombinedMapBuilder, NullPointersRaiseInvalidMaps) {
  std::unique_ptr<ImageMap> second(SecondMap());
  ImageMap first(1, 1);
  CombinedMapBuilder builder;
  const ImageMap* none = nullptr;
  for (int which = 0; which < 3; ++which) {
    errno = 0;
    try {
      std::unique_ptr<ImageMap> result(builder.BuildImageMap(which == 0 ? none : &first,
                                                             which == 1 ? none : second.get()));
      if (which == 2) {
        continue;  // both present: a map
      }
      ADD_FAILURE() << "no error for " << which;
    } catch (const Error& e) {
      EXPECT_NE(2, which);
      EXPECT_EQ(EINVAL, errno);
      const std::string text = e.what();
      EXPECT_NE(std::string::npos, text.find("Invalid maps")) << text;
      EXPECT_NE(std::string::npos, text.find("CombinedMapBuilder")) << text;
      EXPECT_NE(std::string::npos, text.find("22")) << text;
    }
  }
}

// Map 8 x 3 with item (x, y) = (x + 0.5, y + 0.25): every element tells where it came from.
ImageMap* StripSource(unsigned width) {
  ImageMap* map = new ImageMap(static_cast<int>(width), 3);
  map->SetInputSize(Vector2d(640, 480));
  for (unsigned y = 0; y < 3; ++y) {
    for (unsigned x = 0; x < width; ++x) {
      map->SetMapItem(x, y, Vector2d(x + 0.5f, y + 0.25f));
    }
  }
  return map;
}

TEST(SplitMapBuilder, DualLayoutPlacesTheRightHalfBelowTheLeftHalf) {
  std::unique_ptr<ImageMap> source(StripSource(8));
  std::unique_ptr<ImageMap> result(SplitMapBuilder().BuildImageMap(*source, Vector2d(4, 6)));
  ASSERT_EQ(4u, result->GetMapWidth());
  ASSERT_EQ(6u, result->GetMapHeight());
  EXPECT_EQ(Vector2d(640, 480), result->GetInputSize());
  for (unsigned y = 0; y < 6; ++y) {
    for (unsigned x = 0; x < 4; ++x) {
      const unsigned strip = y / 3;
      EXPECT_EQ(Vector2d(strip * 4 + x + 0.5f, (y % 3) + 0.25f), result->GetMapItem(x, y)) << x << "," << y;
    }
  }
}

TEST(SplitMapBuilder, QuadLayoutStacksFourStripsLeftToRight) {
  std::unique_ptr<ImageMap> source(StripSource(8));
  std::unique_ptr<ImageMap> result(SplitMapBuilder().BuildImageMap(*source, Vector2d(2, 12)));
  ASSERT_EQ(2u, result->GetMapWidth());
  ASSERT_EQ(12u, result->GetMapHeight());
  for (unsigned y = 0; y < 12; ++y) {
    for (unsigned x = 0; x < 2; ++x) {
      EXPECT_EQ(Vector2d((y / 3) * 2 + x + 0.5f, (y % 3) + 0.25f), result->GetMapItem(x, y)) << x << "," << y;
    }
  }
}

TEST(SplitMapBuilder, OddWidthDropsTheLastColumnAndExtraRowsStayNan) {
  std::unique_ptr<ImageMap> source(StripSource(9));
  // Half of 9 is 4.5, which the map truncates to 4; two strips of 4 columns, column 8 unused.
  std::unique_ptr<ImageMap> result(SplitMapBuilder().BuildImageMap(*source, Vector2d(4.5f, 7)));
  ASSERT_EQ(4u, result->GetMapWidth());
  ASSERT_EQ(7u, result->GetMapHeight());
  EXPECT_EQ(Vector2d(7.5f, 2.25f), result->GetMapItem(3, 5));
  for (unsigned x = 0; x < 4; ++x) {
    EXPECT_TRUE(IsNan(*result, x, 6)) << x;  // a third strip does not exist
  }
}

TEST(SplitMapBuilder, NullMapRaisesInvalidMap) {
  errno = 0;
  try {
    const ImageMap* none = nullptr;
    std::unique_ptr<ImageMap> result(SplitMapBuilder().BuildImageMap(none, Vector2d(4, 6)));
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(EINVAL, errno);
    const std::string text = e.what();
    EXPECT_NE(std::string::npos, text.find("Invalid map")) << text;
    EXPECT_EQ(std::string::npos, text.find("Invalid maps")) << text;
    EXPECT_NE(std::string::npos, text.find("SplitMapBuilder")) << text;
  }
  std::unique_ptr<ImageMap> source(StripSource(8));
  std::unique_ptr<ImageMap> result(SplitMapBuilder().BuildImageMap(source.get(), Vector2d(4, 6)));
  EXPECT_EQ(Vector2d(4.5f, 0.25f), result->GetMapItem(0, 3));
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
