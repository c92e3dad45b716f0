// Projection map builds: the two directions, the regular path and the shift/scale composition.
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/shift_scale_functor.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "builders_test_support.h"
#include "log_capture.h"

namespace vemo {
namespace libdewarp {
namespace {

using test::IsNan;

const float kFocal = 300.0f;

bool SameBits(const ImageMap& a, const ImageMap& b) {
  if (a.GetMapWidth() != b.GetMapWidth() || a.GetMapHeight() != b.GetMapHeight()) {
    return false;
  }
  for (unsigned y = 0; y < a.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < a.GetMapWidth(); ++x) {
      const Vector2d u = a.GetMapItem(x, y), v = b.GetMapItem(x, y);
      if (std::memcmp(&u.X, &v.X, sizeof(float)) != 0 || std::memcmp(&u.Y, &v.Y, sizeof(float)) != 0) {
        return false;
      }
    }
  }
  return true;
}

TEST(ProjectionMapBuilder, ProjectionThenCameraMapsOutputPixelsToLensPixels) {
  std::unique_ptr<ImageMap> map(ProjectionMapBuilder().BuildImageMap(
      Resolution(1000, 800), Resolution(64, 48), EQUIRECTANGULAR_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal));
  ASSERT_EQ(64u, map->GetMapWidth());
  EXPECT_EQ(Vector2d(1000, 800), map->GetInputSize());
  // Pixel (0, 0) is the lattice corner at (-32, -24) from the output centre.
  const Vector2d e = Projection::EquirectangularToFisheye(Vector2d(-32, -24), kFocal);
  EXPECT_FLOAT_EQ(e.X + 500, map->GetMapItem(0, 0).X);
  EXPECT_FLOAT_EQ(e.Y + 400, map->GetMapItem(0, 0).Y);
  const Vector2d g = Projection::EquirectangularToFisheye(Vector2d(31, 23), kFocal);
  EXPECT_FLOAT_EQ(g.X + 500, map->GetMapItem(63, 47).X);
  EXPECT_FLOAT_EQ(g.Y + 400, map->GetMapItem(63, 47).Y);
}

TEST(ProjectionMapBuilder, CameraThenProjectionIsTheOtherDirection) {
  std::unique_ptr<ImageMap> map(ProjectionMapBuilder().BuildImageMap(
      Resolution(1000, 800), Resolution(64, 48), CIRCULAR_FISHEYE_CAMERA, EQUIRECTANGULAR_PROJECTION, kFocal));
  const Vector2d e = Projection::FisheyeToEquirectangular(Vector2d(-32, -24), kFocal);
  EXPECT_FLOAT_EQ(e.X + 500, map->GetMapItem(0, 0).X);
  EXPECT_FLOAT_EQ(e.Y + 400, map->GetMapItem(0, 0).Y);
  const Vector2d other = Projection::EquirectangularToFisheye(Vector2d(-32, -24), kFocal);
  EXPECT_NE(other.X + 500, map->GetMapItem(0, 0).X);
}

TEST(ProjectionMapBuilder, ThreeValueFormsRunTheSparseQuadrantBuilder) {
  ProjectionFunctor f(CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal, Projection::IdentityScale);
  std::unique_ptr<ImageMap> direct(
      SparseQuadrantMapBuilder().BuildImageMap(Resolution(900, 900), Resolution(97, 61), f));
  std::unique_ptr<ImageMap> built(ProjectionMapBuilder().BuildImageMap(
      Resolution(900, 900), Resolution(97, 61), CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal));
  EXPECT_TRUE(SameBits(*direct, *built));
}

TEST(ProjectionMapBuilder, ZeroShiftAndUnitScaleBuildARegularMapWithoutComposition) {
  test::LogCapture cap;
  std::unique_ptr<ImageMap> regular(ProjectionMapBuilder().BuildImageMap(
      Resolution(900, 900), Resolution(97, 61), CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal,
      Projection::ZeroShift, Projection::IdentityScale));
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_NE(std::string::npos, cap.lines()[0].find("Building a regular projection map\n"));
  EXPECT_FALSE(cap.contains("shift/scale"));
  // Bit for bit the map of the three-value form: no second map was put in front of it.
  std::unique_ptr<ImageMap> plain(ProjectionMapBuilder().BuildImageMap(
      Resolution(900, 900), Resolution(97, 61), CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal));
  EXPECT_TRUE(SameBits(*plain, *regular));

  cap.clear();
  std::unique_ptr<ImageMap> other(ProjectionMapBuilder().BuildImageMap(
      Resolution(900, 900), Resolution(97, 61), CIRCULAR_FISHEYE_CAMERA, CYLINDRICAL_PROJECTION, kFocal,
      Vector2d(0, 0), Vector2d(1, 1)));
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_NE(std::string::npos, cap.lines()[0].find("Building a regular projection map\n"));
}

TEST(ProjectionMapBuilder, ShiftAndScaleComposeAShiftScaleMapInFrontOfTheProjectionMap) {
  test::LogCapture cap;
  const Resolution in(900, 900), out(64, 48);
  const Vector2d shift(0, 10), scale(1, 0.5f);
  std::unique_ptr<ImageMap> composed(ProjectionMapBuilder().BuildImageMap(
      in, out, CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal, shift, scale));
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_NE(std::string::npos, cap.lines()[0].find("Building a shift/scale projection map\n"));
  EXPECT_EQ(Vector2d(900, 900), composed->GetInputSize());
  std::unique_ptr<ImageMap> projection(
      ProjectionMapBuilder().BuildImageMap(in, out, CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal));
  // The shift/scale map sends output pixel (c, r) to ((c - 32 + 0) * 1 + 32, (r - 24 + 10) * 0.5 + 24):
  // row 30 looks up row 32 of the projection map, row 20 row 27, both at whole positions.
  for (unsigned c = 0; c < 64; ++c) {
    EXPECT_EQ(projection->GetMapItem(c, 32), composed->GetMapItem(c, 30)) << c;
    EXPECT_EQ(projection->GetMapItem(c, 27), composed->GetMapItem(c, 20)) << c;
  }
  // Odd rows fall halfway between two rows of the projection map: row 31 -> 32.5.
  const Vector2d a = projection->GetMapItem(10, 32), b = projection->GetMapItem(10, 33);
  EXPECT_NEAR(0.5f * (a.X + b.X), composed->GetMapItem(10, 31).X, 1e-3f);
  EXPECT_NEAR(0.5f * (a.Y + b.Y), composed->GetMapItem(10, 31).Y, 1e-3f);
  // The last row looks up (47 - 14) * 0.5 + 24 = 40.5: still inside, so not NaN.
  EXPECT_FALSE(IsNan(*composed, 10, 47));
}

TEST(ProjectionMapBuilder, ShiftThatLeavesTheProjectionMapLeavesNan) {
  // Shift (40, 0): output column c looks up column c + 40, beyond the map from column 24 on
  // (the ceiling of c + 40 must stay below 64).
  std::unique_ptr<ImageMap> composed(ProjectionMapBuilder().BuildImageMap(
      Resolution(900, 900), Resolution(64, 48), EQUIRECTANGULAR_PROJECTION, CIRCULAR_FISHEYE_CAMERA, kFocal,
      Vector2d(40, 0), Vector2d(1, 1)));
  EXPECT_FALSE(IsNan(*composed, 23, 5));
  EXPECT_TRUE(IsNan(*composed, 24, 5));
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
