// Camera base behaviour: model, focal length, mount shift and scale, projection sizes and
// fields of view, the type names and the information lines.
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/rectilinear_camera.h>

#include "cameras_test_support.h"
#include "log_capture.h"

using namespace vemo::libdewarp;
using cameras_test::kPi;
using cameras_test::Model;

namespace {

const double kDeg = kPi / 180.0;

FisheyeCamera Fisheye(float fovH, unsigned width, DEWARP_INTERNAL_CAMERA_MOUNT mount = WALL_MOUNT) {
  return FisheyeCamera(Model(CIRCULAR_FISHEYE_CAMERA, fovH, fovH, fovH, width, width), mount);
}

}  // namespace

TEST(Camera, FisheyeFocalLengthIsPixelsPerRadian) {
  // 1920 pixels across 180 degrees: 1920 / pi = 611.15 pixels per radian.
  EXPECT_NEAR(1920.0 / kPi, Fisheye(180.0f, 1920).GetFocalLength(), 1e-2);
  EXPECT_NEAR(611.15, Fisheye(180.0f, 1920).GetFocalLength(), 1e-2);
}

TEST(Camera, RectilinearFocalLengthFromHalfWidthAndHalfAngle) {
  RectilinearCamera camera(Model(RECTILINEAR_CAMERA, 90.0f, 60.0f, 100.0f, 1280, 720), WALL_MOUNT);
  // (1280 / 2) / tan(45 degrees) = 640.
  EXPECT_NEAR(640.0, camera.GetFocalLength(), 1e-3);
}

TEST(Camera, UnknownTypeHasNoFocalLengthAndUnknownName) {
  FisheyeCamera camera(Model(static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(5), 180.0f, 180.0f, 180.0f, 1000, 1000),
                       WALL_MOUNT);
  EXPECT_TRUE(std::isnan(camera.GetFocalLength()));
  EXPECT_STREQ("<unknown>", Camera::GetCameraTypeName(5));
  EXPECT_STREQ("<unknown>", Camera::GetCameraTypeName(-1));
  EXPECT_STREQ("rectilinear", Camera::GetCameraTypeName(0));
  EXPECT_STREQ("circular fish eye", Camera::GetCameraTypeName(1));
}

TEST(Camera, ModelIsStoredInRadiansWithItsOwnDiagonal) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = Model(CIRCULAR_FISHEYE_CAMERA, 180.0f, 90.0f, 200.0f, 1920, 1080);
  FisheyeCamera camera(model, FLOOR_MOUNT);
  EXPECT_EQ(CIRCULAR_FISHEYE_CAMERA, camera.GetCameraType());
  EXPECT_EQ(FLOOR_MOUNT, camera.GetCameraMount());
  const FieldOfView fov = camera.GetCameraFieldOfView();
  EXPECT_NEAR(kPi, fov.Horizontal, 1e-6);
  EXPECT_NEAR(kPi / 2, fov.Vertical, 1e-6);
  // The model's diagonal (200 degrees), not the hypotenuse of the other two.
  EXPECT_NEAR(200.0 * kDeg, fov.Diagonal, 1e-5);
  EXPECT_EQ(Vector2d(1920.0f, 1080.0f), camera.GetCameraResolution());
  const DEWARP_INTERNAL_CAMERA_MODEL back = camera.GetCameraModel();
  EXPECT_EQ(model.Type, back.Type);
  EXPECT_EQ(model.FovD, back.FovD);
  EXPECT_EQ(model.FovH, back.FovH);
  EXPECT_EQ(model.FovV, back.FovV);
  EXPECT_EQ(model.ResolutionH, back.ResolutionH);
  EXPECT_EQ(model.ResolutionV, back.ResolutionV);
  camera.SetCameraMount(WALL_MOUNT);
  EXPECT_EQ(WALL_MOUNT, camera.GetCameraMount());
}

TEST(Camera, MountPredicates) {
  EXPECT_TRUE(Fisheye(180.0f, 100, CEILING_MOUNT).IsVertical());
  EXPECT_TRUE(Fisheye(180.0f, 100, FLOOR_MOUNT).IsVertical());
  EXPECT_FALSE(Fisheye(180.0f, 100, WALL_MOUNT).IsVertical());
  EXPECT_TRUE(Fisheye(180.0f, 100, WALL_MOUNT).IsHorizontal());
  EXPECT_TRUE(Fisheye(180.0f, 100, INVERTED_WALL_MOUNT).IsHorizontal());
  EXPECT_FALSE(Fisheye(180.0f, 100, CEILING_MOUNT).IsHorizontal());
}

TEST(Camera, DefaultsAreTheEngineDefaults) {
  FisheyeCamera camera = Fisheye(180.0f, 100);
  EXPECT_EQ(Defaults::Projection, camera.GetDefaultProjection());
  EXPECT_EQ(Defaults::AspectRatio, camera.GetDefaultAspectRatio());
}

TEST(Camera, ShiftPerMount) {
  const Vector2d size(2000.0f, 1000.0f);
  EXPECT_EQ(Vector2d(0.0f, 500.0f), Fisheye(180.0f, 100, CEILING_MOUNT).GetShift(CYLINDRICAL_PROJECTION, size));
  EXPECT_EQ(Vector2d(0.0f, -500.0f), Fisheye(180.0f, 100, FLOOR_MOUNT).GetShift(CYLINDRICAL_PROJECTION, size));
  EXPECT_EQ(Vector2d(0.0f, 0.0f), Fisheye(180.0f, 100, WALL_MOUNT).GetShift(CYLINDRICAL_PROJECTION, size));
  EXPECT_EQ(Vector2d(0.0f, 0.0f), Fisheye(180.0f, 100, INVERTED_WALL_MOUNT).GetShift(MERCATOR_PROJECTION, size));
}

TEST(Camera, ScalePerMount) {
  EXPECT_EQ(Vector2d(1.0f, 0.5f), Fisheye(180.0f, 100, CEILING_MOUNT).GetScale(CYLINDRICAL_PROJECTION));
  EXPECT_EQ(Vector2d(1.0f, 0.5f), Fisheye(180.0f, 100, FLOOR_MOUNT).GetScale(CYLINDRICAL_PROJECTION));
  EXPECT_EQ(Vector2d(1.0f, 1.0f), Fisheye(180.0f, 100, WALL_MOUNT).GetScale(CYLINDRICAL_PROJECTION));
  EXPECT_EQ(Vector2d(1.0f, 1.0f), Fisheye(180.0f, 100, INVERTED_WALL_MOUNT).GetScale(CYLINDRICAL_PROJECTION));
}

// The natural size of a projection: the camera image's edge midpoints taken from the projection
// to the lens. Worked out on the lens model for a 1000-pixel, 160-degree fisheye
// (f = 1000 / (160 degrees)):
//   equirectangular: along a meridian or the equator the angle from the axis is the coordinate
//     over f, so the 500-pixel half extents stay 500 pixels;
//   cylindrical: horizontally as equirectangular; vertically y is f tan(angle), so the lens
//     radius of y = 500 is f atan(500 / f);
//   rectilinear: both axes f atan(500 / f).
TEST(Camera, ProjectionMapSizeFollowsTheLensModel) {
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  const double f = camera.GetFocalLength();
  ASSERT_NEAR(1000.0 / (160.0 * kDeg), f, 1e-3);
  const double bent = 2.0 * f * std::atan(500.0 / f);

  const Resolution equirectangular = camera.GetProjectionMapSize(EQUIRECTANGULAR_PROJECTION);
  EXPECT_NEAR(1000.0, equirectangular.X, 1.0);
  EXPECT_NEAR(1000.0, equirectangular.Y, 1.0);

  const Resolution cylindrical = camera.GetProjectionMapSize(CYLINDRICAL_PROJECTION);
  EXPECT_NEAR(1000.0, cylindrical.X, 1.0);
  EXPECT_NEAR(std::floor(bent), cylindrical.Y, 1.0);

  const Resolution rectilinear = camera.GetProjectionMapSize(RECTILINEAR_PROJECTION);
  EXPECT_NEAR(std::floor(bent), rectilinear.X, 1.0);
  EXPECT_NEAR(std::floor(bent), rectilinear.Y, 1.0);
  // Whole pixels.
  EXPECT_EQ(std::floor(rectilinear.X), rectilinear.X);
}

TEST(Camera, ProjectionMapSizeIsSensibleForEveryProjection) {
  // A 183-degree, 1936-pixel lens (the engine's built-in model): every output projection gets a
  // positive size no larger than a few times the lens image.
  FisheyeCamera camera(Model(CIRCULAR_FISHEYE_CAMERA, 183.0f, 183.0f, 183.0f, 1936, 1936), CEILING_MOUNT);
  for (int p = RECTILINEAR_PROJECTION; p <= EQUIRECTANGULAR_PANNINI_PROJECTION; ++p) {
    const Resolution size = camera.GetProjectionMapSize(static_cast<DEWARP_PROJECTION>(p));
    EXPECT_TRUE(size.Valid()) << "projection " << p << ": " << size.X << " x " << size.Y;
    EXPECT_LT(size.X, 4.0f * 1936.0f) << "projection " << p;
    EXPECT_LT(size.Y, 4.0f * 1936.0f) << "projection " << p;
  }
}

TEST(Camera, ProjectionMapSizeOfUnknownTypeThrowsInvalidCameraType) {
  FisheyeCamera camera(Model(static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(5), 180.0f, 180.0f, 180.0f, 100, 100),
                       WALL_MOUNT);
  errno = 0;
  try {
    camera.GetProjectionMapSize(EQUIRECTANGULAR_PROJECTION);
    FAIL() << "no error";
  } catch (const std::exception& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find("Invalid camera type"));
  }
  EXPECT_EQ(EINVAL, errno);
}

TEST(Camera, ProjectionFieldOfViewPerProjection) {
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  const double f = camera.GetFocalLength();
  const Resolution size(800, 600);

  FieldOfView fov = camera.GetProjectionFieldOfView(size, EQUIRECTANGULAR_PROJECTION);
  EXPECT_NEAR(800.0 / f, fov.Horizontal, 1e-5);
  EXPECT_NEAR(600.0 / f, fov.Vertical, 1e-5);
  EXPECT_NEAR(std::hypot(800.0 / f, 600.0 / f), fov.Diagonal, 1e-5);

  fov = camera.GetProjectionFieldOfView(size, CYLINDRICAL_PROJECTION);
  EXPECT_NEAR(800.0 / f, fov.Horizontal, 1e-5);
  EXPECT_NEAR(2.0 * std::atan2(300.0, f), fov.Vertical, 1e-5);

  fov = camera.GetProjectionFieldOfView(size, RECTILINEAR_PROJECTION);
  EXPECT_NEAR(2.0 * std::atan2(400.0, f), fov.Horizontal, 1e-5);
  EXPECT_NEAR(2.0 * std::atan2(300.0, f), fov.Vertical, 1e-5);

  fov = camera.GetProjectionFieldOfView(size, MERCATOR_PROJECTION);
  EXPECT_NEAR(800.0 / f, fov.Horizontal, 1e-5);
  EXPECT_NEAR(2.0 * std::atan(std::sinh(300.0 / f)), fov.Vertical, 1e-5);

  fov = camera.GetProjectionFieldOfView(size, LAMBERT_CYLINDRICAL_PROJECTION);
  EXPECT_NEAR(2.0 * std::asin(300.0 / f), fov.Vertical, 1e-5);
}

TEST(Camera, RectilinearFieldOfViewIsHeldAtMaxRectilinearFov) {
  EXPECT_NEAR(140.0 * kDeg, Camera::MaxRectilinearFov, 1e-6);
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  const double f = camera.GetFocalLength();
  // 2 atan(5000 / f) is about 176 degrees: beyond the limit horizontally, not vertically.
  const FieldOfView fov = camera.GetProjectionFieldOfView(Resolution(10000, 400), RECTILINEAR_PROJECTION);
  EXPECT_EQ(Camera::MaxRectilinearFov, fov.Horizontal);
  EXPECT_NEAR(2.0 * std::atan2(200.0, f), fov.Vertical, 1e-5);
}

TEST(Camera, ProjectionResolutionPerProjection) {
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  const double f = camera.GetFocalLength();
  const FieldOfView fov(static_cast<float>(kPi / 2), static_cast<float>(kPi / 3));

  Resolution r = camera.GetProjectionResolution(fov, EQUIRECTANGULAR_PROJECTION);
  EXPECT_NEAR(std::floor(f * kPi / 2), r.X, 1.0);
  EXPECT_NEAR(std::floor(f * kPi / 3), r.Y, 1.0);

  r = camera.GetProjectionResolution(fov, RECTILINEAR_PROJECTION);
  EXPECT_NEAR(std::floor(2.0 * f * std::tan(kPi / 4)), r.X, 1.0);
  EXPECT_NEAR(std::floor(2.0 * f * std::tan(kPi / 6)), r.Y, 1.0);

  r = camera.GetProjectionResolution(fov, CYLINDRICAL_PROJECTION);
  EXPECT_NEAR(std::floor(f * kPi / 2), r.X, 1.0);
  EXPECT_NEAR(std::floor(2.0 * f * std::tan(kPi / 6)), r.Y, 1.0);

  r = camera.GetProjectionResolution(fov, MERCATOR_PROJECTION);
  EXPECT_NEAR(std::floor(2.0 * f * std::log(1.0 / std::cos(kPi / 6) + std::tan(kPi / 6))), r.Y, 1.0);
  // Whole pixels.
  EXPECT_EQ(std::floor(r.X), r.X);
  EXPECT_EQ(std::floor(r.Y), r.Y);
}

TEST(Camera, RectilinearResolutionIsLimitedToMaxRectilinearFov) {
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  const double f = camera.GetFocalLength();
  // A half turn would need an infinite image; it is held at 140 degrees.
  const Resolution r = camera.GetProjectionResolution(FieldOfView(static_cast<float>(kPi), 1.0f),
                                                      RECTILINEAR_PROJECTION);
  EXPECT_TRUE(r.Valid());
  EXPECT_NEAR(std::floor(2.0 * f * std::tan(70.0 * kDeg)), r.X, 1.0);
  EXPECT_NEAR(std::floor(2.0 * f * std::tan(0.5)), r.Y, 1.0);
}

TEST(Camera, UnknownProjectionHasNoFieldOfViewOrResolution) {
  FisheyeCamera camera = Fisheye(160.0f, 1000);
  EXPECT_FALSE(camera.GetProjectionFieldOfView(Resolution(100, 100), static_cast<DEWARP_PROJECTION>(9)).Valid());
  EXPECT_FALSE(camera.GetProjectionResolution(FieldOfView(1.0f, 1.0f), static_cast<DEWARP_PROJECTION>(9)).Valid());
  EXPECT_FALSE(camera.GetProjectionResolution(FieldOfView(1.0f, 1.0f), static_cast<DEWARP_PROJECTION>(-1)).Valid());
}

TEST(Camera, BuildProjectionMapOfTheNaturalSize) {
  FisheyeCamera camera = Fisheye(180.0f, 400);
  std::unique_ptr<ImageMap> map(
      camera.BuildProjectionMap(EQUIRECTANGULAR_PROJECTION, Projection::ZeroShift, Projection::IdentityScale));
  ASSERT_TRUE(map);
  EXPECT_EQ(camera.GetProjectionMapSize(EQUIRECTANGULAR_PROJECTION), map->GetMapSize());
  EXPECT_EQ(Vector2d(400.0f, 400.0f), map->GetInputSize());
}

TEST(Camera, BuildProjectionMapCentreIsTheLensCentre) {
  // The centre of a rectilinear projection looks along the optical axis: the lens centre.
  FisheyeCamera camera = Fisheye(180.0f, 400);
  std::unique_ptr<ImageMap> map(camera.BuildProjectionMap(Resolution(80, 60), RECTILINEAR_PROJECTION,
                                                          Projection::ZeroShift, Projection::IdentityScale));
  ASSERT_TRUE(map);
  EXPECT_EQ(Vector2d(80.0f, 60.0f), map->GetMapSize());
  const Vector2d centre = map->GetMapItem(40, 30);
  EXPECT_NEAR(200.0, centre.X, 0.5);
  EXPECT_NEAR(200.0, centre.Y, 0.5);
  // Ten pixels right of the centre of the projection: the ray at atan(10 / f) off the axis lies
  // f atan(10 / f) pixels right of the lens centre.
  const double f = camera.GetFocalLength();
  const Vector2d right = map->GetMapItem(50, 30);
  EXPECT_NEAR(200.0 + f * std::atan(10.0 / f), right.X, 0.5);
}

TEST(Camera, LogCameraInfoWritesThreeLines) {
  vemo::test::LogCapture cap(LOG_INFO);
  FisheyeCamera camera(Model(CIRCULAR_FISHEYE_CAMERA, 180.0f, 90.0f, 200.0f, 1920, 1080), CEILING_MOUNT);
  cap.clear();
  camera.LogCameraInfo();
  ASSERT_EQ(3u, cap.lines().size());
  EXPECT_EQ("LIBDEWARP: INFO - Camera type is circular fish eye\n", cap.lines()[0]);
  EXPECT_EQ("LIBDEWARP: INFO - Camera resolution is (1920, 1080)\n", cap.lines()[1]);
  // Diagonal and vertical, not horizontal.
  EXPECT_EQ("LIBDEWARP: INFO - Camera FOV is (200.000000, 90.000000)\n", cap.lines()[2]);
  EXPECT_EQ("LIBDEWARP: INFO - Camera type is %s\n", cap.formats()[0]);
  EXPECT_EQ("LIBDEWARP: INFO - Camera resolution is (%d, %d)\n", cap.formats()[1]);
  EXPECT_EQ("LIBDEWARP: INFO - Camera FOV is (%f, %f)\n", cap.formats()[2]);
}

TEST(Camera, LogCameraInfoNamesAnUnknownType) {
  vemo::test::LogCapture cap(LOG_INFO);
  RectilinearCamera camera(Model(static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(7), 90.0f, 60.0f, 100.0f, 640, 480),
                           WALL_MOUNT);
  camera.LogCameraInfo();
  EXPECT_TRUE(cap.contains("Camera type is <unknown>\n"));
}

TEST(Camera, CopyAndSelfAssignment) {
  vemo::test::LogCapture cap(LOG_WARNING);
  FisheyeCamera a(Model(CIRCULAR_FISHEYE_CAMERA, 180.0f, 90.0f, 200.0f, 1920, 1080), FLOOR_MOUNT);
  FisheyeCamera b(a);
  FisheyeCamera c;
  c = a;
  for (const FisheyeCamera* x : {&b, &c}) {
    EXPECT_EQ(FLOOR_MOUNT, x->GetCameraMount());
    EXPECT_EQ(Vector2d(1920.0f, 1080.0f), x->GetCameraResolution());
    EXPECT_EQ(a.GetFocalLength(), x->GetFocalLength());
  }
  FisheyeCamera& alias = a;
  a = alias;
  RectilinearCamera r;
  RectilinearCamera& ralias = r;
  r = ralias;
  EXPECT_EQ(1u, cap.count("Self assignment of FisheyeCamera object\n"));
  EXPECT_EQ(1u, cap.count("Self assignment of RectilinearCamera object\n"));
}

TEST(Camera, DefaultCameraHoldsAnEmptyModelOnTheDefaultMount) {
  FisheyeCamera camera;
  EXPECT_EQ(Defaults::CameraType, camera.GetCameraType());
  EXPECT_EQ(Defaults::CameraMount, camera.GetCameraMount());
  EXPECT_EQ(Vector2d(0.0f, 0.0f), camera.GetCameraResolution());
  EXPECT_TRUE(camera.GetCameraFieldOfView() == FieldOfView(0.0f, 0.0f, 0.0f));
}
