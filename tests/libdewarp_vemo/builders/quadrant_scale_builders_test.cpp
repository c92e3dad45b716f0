// Quadrant mirroring and the scale map builder on top of it.
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/quadrant_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_map_builder.h>

#include <gtest/gtest.h>

#include <memory>

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using test::AffineFunctor;
using test::IsNan;
using test::MapX;
using test::MapY;

TEST(QuadrantMapBuilder, EvenSizeEvaluatesOneQuadrantAndLeavesTheFirstRowAndColumnNan) {
  AffineFunctor f(2, 0, 3, 0);  // odd-symmetric, as the scale functors are
  std::unique_ptr<ImageMap> map(QuadrantMapBuilder().BuildImageMap(Resolution(20, 30), Resolution(4, 4), f));
  EXPECT_EQ(4, f.calls);  // x, y in {0, 1}
  EXPECT_EQ(Vector2d(20, 30), map->GetInputSize());
  for (unsigned row = 0; row < 4; ++row) {
    for (unsigned col = 0; col < 4; ++col) {
      if (row == 0 || col == 0) {
        EXPECT_TRUE(IsNan(*map, col, row)) << col << "," << row;
        continue;
      }
      // Equal to the dense build there: (2 (col - 2) + 10, 3 (row - 2) + 15).
      EXPECT_FLOAT_EQ(2.0f * (static_cast<float>(col) - 2) + 10, MapX(*map, col, row));
      EXPECT_FLOAT_EQ(3.0f * (static_cast<float>(row) - 2) + 15, MapY(*map, col, row));
    }
  }
}

TEST(QuadrantMapBuilder, OddSizeCoversTheWholeMapSymmetricallyAboutTheCentrePixel) {
  AffineFunctor f(2, 0, 3, 0);
  std::unique_ptr<ImageMap> map(QuadrantMapBuilder().BuildImageMap(Resolution(20, 30), Resolution(5, 5), f));
  EXPECT_EQ(9, f.calls);  // x, y in {0, 1, 2}
  for (unsigned row = 0; row < 5; ++row) {
    for (unsigned col = 0; col < 5; ++col) {
      // Rows trunc(2.5 + y) = 2, 3, 4 and trunc(2.5 - y) = 2, 1, 0: row r holds y = r - 2.
      EXPECT_FLOAT_EQ(2.0f * (static_cast<float>(col) - 2) + 10, MapX(*map, col, row)) << col << "," << row;
      EXPECT_FLOAT_EQ(3.0f * (static_cast<float>(row) - 2) + 15, MapY(*map, col, row)) << col << "," << row;
    }
  }
}

TEST(QuadrantMapBuilder, WritesTheFourMirroredValuesInOrder) {
  // A functor that is not symmetric shows each of the four writes: f(1, 1) = (101, 51).
  AffineFunctor f(1, 100, 1, 50);
  std::unique_ptr<ImageMap> map(QuadrantMapBuilder().BuildImageMap(Resolution(20, 30), Resolution(4, 4), f));
  EXPECT_EQ(Vector2d(101 + 10, 51 + 15), map->GetMapItem(3, 3));    // ( x,  y): ( sx,  sy)
  EXPECT_EQ(Vector2d(101 + 10, -51 + 15), map->GetMapItem(3, 1));   // ( x, -y): ( sx, -sy)
  EXPECT_EQ(Vector2d(-101 + 10, -51 + 15), map->GetMapItem(1, 1));  // (-x, -y): (-sx, -sy)
  EXPECT_EQ(Vector2d(-101 + 10, 51 + 15), map->GetMapItem(1, 3));   // (-x,  y): (-sx,  sy)
  // The centre pixel receives all four writes of f(0, 0) = (100, 50); the last one stays.
  EXPECT_EQ(Vector2d(-100 + 10, 50 + 15), map->GetMapItem(2, 2));
}

TEST(QuadrantMapBuilder, SmallerCropIsCentred) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      QuadrantMapBuilder().BuildImageMap(Resolution(8, 8), Resolution(8, 8), f, Resolution(4, 4)));
  EXPECT_EQ(4, f.calls);
  for (unsigned row = 0; row < 8; ++row) {
    for (unsigned col = 0; col < 8; ++col) {
      const bool written = col >= 3 && col <= 5 && row >= 3 && row <= 5;
      EXPECT_EQ(!written, IsNan(*map, col, row)) << col << "," << row;
    }
  }
}

TEST(QuadrantMapBuilder, EmptyCropWritesNothing) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      QuadrantMapBuilder().BuildImageMap(Resolution(8, 8), Resolution(8, 8), f, Resolution(0, 4)));
  EXPECT_EQ(0, f.calls);
  EXPECT_TRUE(IsNan(*map, 4, 4));
}

TEST(QuadrantMapBuilder, CropLargerThanTheOutputIsClipped) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      QuadrantMapBuilder().BuildImageMap(Resolution(8, 8), Resolution(6, 4), f, Resolution(100, 100)));
  EXPECT_EQ(3 * 2, f.calls);
}

TEST(ScaleMapBuilder, CropSizeIsTheBestFitOnlyWhenScalingToTheAspectRatio) {
  ScaleMapBuilder builder;
  const Resolution fit = builder.GetCropSize(Resolution(1920, 1080), Resolution(800, 800), SCALE_TO_ASPECT_RATIO);
  // 16:9 inside a square: full width, height 800 * 9 / 16 = 450.
  EXPECT_NEAR(800.0f, fit.X, 1e-3f);
  EXPECT_NEAR(450.0f, fit.Y, 1e-3f);
  EXPECT_EQ(Resolution(800, 800), builder.GetCropSize(Resolution(1920, 1080), Resolution(800, 800), FREE_ASPECT_RATIO));
  EXPECT_EQ(Resolution(800, 800), builder.GetCropSize(Resolution(1920, 1080), Resolution(800, 800), CROP_TO_ASPECT_RATIO));
  // A tall source in a wide output: pillarbox, full height.
  const Resolution tall = builder.GetCropSize(Resolution(500, 1000), Resolution(800, 600), SCALE_TO_ASPECT_RATIO);
  EXPECT_NEAR(300.0f, tall.X, 1e-3f);
  EXPECT_NEAR(600.0f, tall.Y, 1e-3f);
}

// A builder whose crop is overridden, to see that the build asks for it virtually.
class FixedCropScaleBuilder : public ScaleMapBuilder {
public:
  virtual Resolution GetCropSize(const Resolution&, const Resolution&, DEWARP_ASPECT_RATIO) {
    ++calls;
    return Resolution(4, 4);
  }
  int calls = 0;
};

TEST(ScaleMapBuilder, BuildAsksForTheCropVirtually) {
  FixedCropScaleBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(Resolution(100, 100), Resolution(10, 10), FREE_ASPECT_RATIO));
  EXPECT_EQ(1, builder.calls);
  // Crop 4 x 4 about the centre pixel 5: rows and columns 4 to 6.
  EXPECT_FALSE(IsNan(*map, 4, 4));
  EXPECT_FALSE(IsNan(*map, 6, 6));
  EXPECT_TRUE(IsNan(*map, 7, 7));
  EXPECT_TRUE(IsNan(*map, 3, 5));
}

TEST(ScaleMapBuilder, ScaleToAspectRatioLetterboxesAndScalesUniformly) {
  std::unique_ptr<ImageMap> map(
      ScaleMapBuilder().BuildImageMap(Resolution(1920, 1080), Resolution(800, 800), SCALE_TO_ASPECT_RATIO));
  ASSERT_EQ(800u, map->GetMapWidth());
  EXPECT_EQ(Vector2d(1920, 1080), map->GetInputSize());
  // Crop 800 x 450: rows 400 - 224 .. 400 + 224 are written, the bars above and below stay NaN.
  EXPECT_TRUE(IsNan(*map, 400, 175));
  EXPECT_FALSE(IsNan(*map, 400, 176));
  EXPECT_FALSE(IsNan(*map, 400, 624));
  EXPECT_TRUE(IsNan(*map, 400, 625));
  // Even width: column 0 is the one never-written line.
  EXPECT_TRUE(IsNan(*map, 0, 400));
  EXPECT_FALSE(IsNan(*map, 1, 400));
  // Factor 1920 / 800 = 1080 / 450 = 2.4 on both axes: pixel (600, 500) is (200, 100) from the
  // centre, so it samples (960 + 480, 540 + 240).
  EXPECT_NEAR(1440.0f, MapX(*map, 600, 500), 1e-3f);
  EXPECT_NEAR(780.0f, MapY(*map, 600, 500), 1e-3f);
  EXPECT_NEAR(960.0f - 2.4f * 399, MapX(*map, 1, 400), 1e-2f);
}

TEST(ScaleMapBuilder, FreeAspectRatioScalesEachAxisOnItsOwn) {
  std::unique_ptr<ImageMap> map(
      ScaleMapBuilder().BuildImageMap(Resolution(1920, 1080), Resolution(800, 800), FREE_ASPECT_RATIO));
  EXPECT_FALSE(IsNan(*map, 400, 1));
  EXPECT_TRUE(IsNan(*map, 400, 0));
  // Factors 1920 / 800 = 2.4 and 1080 / 800 = 1.35.
  EXPECT_NEAR(960.0f + 2.4f * 200, MapX(*map, 600, 500), 1e-3f);
  EXPECT_NEAR(540.0f + 1.35f * 100, MapY(*map, 600, 500), 1e-3f);
}

TEST(ScaleMapBuilder, ShiftFormHandsItsFourthValueToTheScaleFunctor) {
  // The fourth value scales the source size before the factors are taken: (0.5, 0.5) halves the
  // free factors to 960 / 800 = 1.2 and 540 / 800 = 0.675.
  std::unique_ptr<ImageMap> map(ScaleMapBuilder().BuildImageMap(Resolution(1920, 1080), Resolution(800, 800),
                                                                FREE_ASPECT_RATIO, Vector2d(0.5f, 0.5f)));
  EXPECT_NEAR(960.0f + 1.2f * 200, MapX(*map, 600, 500), 1e-3f);
  EXPECT_NEAR(540.0f + 0.675f * 100, MapY(*map, 600, 500), 1e-3f);
  std::unique_ptr<ImageMap> unit(ScaleMapBuilder().BuildImageMap(Resolution(1920, 1080), Resolution(800, 800),
                                                                 FREE_ASPECT_RATIO, Vector2d(1, 1)));
  EXPECT_NEAR(960.0f + 2.4f * 200, MapX(*unit, 600, 500), 1e-3f);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
