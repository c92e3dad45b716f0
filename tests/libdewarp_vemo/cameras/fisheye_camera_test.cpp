// Fisheye camera: home positions, PTZ maps in one, two and four panes, hit points; the
// rectilinear camera's empty answers; the camera builder.
#include <cerrno>
#include <cmath>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <libdewarp_vemo/camera_builder.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/rectilinear_camera.h>
#include <libdewarp_vemo/spherical_ptz_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

#include "cameras_test_support.h"
#include "log_capture.h"

using namespace vemo::libdewarp;
using cameras_test::kPi;
using cameras_test::Model;
using cameras_test::SameElements;

namespace {

FisheyeCamera Fisheye(DEWARP_INTERNAL_CAMERA_MOUNT mount, float fov = 180.0f, unsigned size = 400) {
  return FisheyeCamera(Model(CIRCULAR_FISHEYE_CAMERA, fov, fov, fov, size, size), mount);
}

std::unique_ptr<ImageMap> RectilinearBase(const Camera& camera, int cols, int rows) {
  return std::unique_ptr<ImageMap>(camera.BuildProjectionMap(Resolution(cols, rows), RECTILINEAR_PROJECTION,
                                                             Projection::ZeroShift, Projection::IdentityScale));
}

PtzPosition Position(float pan, float tilt, float zoom = 1.0f) {
  return PtzPosition(EulerAngles(pan, tilt, 0.0f), zoom);
}

void ExpectOrientation(const PtzPosition& p, float yaw, float pitch, float roll) {
  EXPECT_EQ(yaw, p.m_obOrientation.Yaw);
  EXPECT_EQ(pitch, p.m_obOrientation.Pitch);
  EXPECT_EQ(roll, p.m_obOrientation.Roll);
  EXPECT_EQ(1.0f, p.m_fZoom);
}

}  // namespace

// ---- Home positions -------------------------------------------------------------------------

TEST(FisheyeCamera, OrientationsOfTheMounts) {
  const float halfPi = static_cast<float>(kPi / 2);
  const float pi = static_cast<float>(kPi);
  ExpectOrientation(FisheyeCamera::CeilingOrientation, 0.0f, halfPi, 0.0f);
  ExpectOrientation(FisheyeCamera::FloorOrientation, 0.0f, halfPi, pi);
  ExpectOrientation(FisheyeCamera::WallOrientation, 0.0f, 0.0f, 0.0f);
  ExpectOrientation(FisheyeCamera::InvertedWallOrientation, 0.0f, 0.0f, pi);
}

TEST(FisheyeCamera, HomePositionFollowsTheMount) {
  EXPECT_TRUE(Fisheye(CEILING_MOUNT).GetHomePosition() == FisheyeCamera::CeilingOrientation);
  EXPECT_TRUE(Fisheye(FLOOR_MOUNT).GetHomePosition() == FisheyeCamera::FloorOrientation);
  EXPECT_TRUE(Fisheye(WALL_MOUNT).GetHomePosition() == FisheyeCamera::WallOrientation);
  EXPECT_TRUE(Fisheye(INVERTED_WALL_MOUNT).GetHomePosition() == FisheyeCamera::InvertedWallOrientation);
}

TEST(FisheyeCamera, UnknownMountHasNoHomePosition) {
  FisheyeCamera camera = Fisheye(static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(4));
  errno = 0;
  try {
    camera.GetHomePosition();
    FAIL() << "no error";
  } catch (const Error& e) {
    const std::string what = e.what();
    EXPECT_NE(std::string::npos, what.find("FisheyeCamera::GetHomePosition")) << what;
    EXPECT_NE(std::string::npos, what.find("Error EINVAL (22)")) << what;
    EXPECT_NE(std::string::npos, what.find("] - Invalid camera mount")) << what;
    EXPECT_EQ("Invalid camera mount", what.substr(what.size() - 20));
  }
  EXPECT_EQ(EINVAL, errno);
}

// ---- PTZ maps -------------------------------------------------------------------------------

TEST(FisheyeCamera, SinglePtzMapIsTheBuilderMapForHomeFollowedByPosition) {
  FisheyeCamera camera = Fisheye(CEILING_MOUNT);
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 64, 48);
  const PtzPosition position = Position(0.4f, -0.6f, 1.5f);
  std::unique_ptr<ImageMap> map(camera.BuildPtzMap(position, *base, 1));
  ASSERT_TRUE(map);
  EXPECT_EQ(Vector2d(64.0f, 48.0f), map->GetMapSize());
  EXPECT_EQ(Vector2d(400.0f, 400.0f), map->GetInputSize());
  PtzPosition seen = FisheyeCamera::CeilingOrientation;
  seen.Concatenate(position);
  EXPECT_EQ(1.5f, seen.m_fZoom);
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> expected(builder.BuildImageMap(*base, seen, camera.GetFocalLength()));
  EXPECT_TRUE(SameElements(*expected, 0, 0, *map));
}

TEST(FisheyeCamera, ThreePanesOnACeilingWarnOnceAndBuildOnePane) {
  FisheyeCamera camera = Fisheye(CEILING_MOUNT);
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 64, 48);
  const PtzPosition position = Position(0.4f, -0.6f);
  std::unique_ptr<ImageMap> single(camera.BuildPtzMap(position, *base, 1));
  vemo::test::LogCapture cap(LOG_WARNING);
  std::unique_ptr<ImageMap> three(camera.BuildPtzMap(position, *base, 3));
  ASSERT_TRUE(three);
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Ignoring invalid number of panes (3) for PTZ view\n", cap.lines()[0]);
  EXPECT_EQ("LIBDEWARP: WARNING - Ignoring invalid number of panes (%u) for PTZ view\n", cap.formats()[0]);
  EXPECT_TRUE(SameElements(*single, 0, 0, *three));
}

TEST(FisheyeCamera, WallMountsBuildOnlyOnePane) {
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : {WALL_MOUNT, INVERTED_WALL_MOUNT}) {
    FisheyeCamera camera = Fisheye(mount);
    std::unique_ptr<ImageMap> base = RectilinearBase(camera, 64, 48);
    const PtzPosition position = Position(0.3f, 0.2f);
    std::unique_ptr<ImageMap> single(camera.BuildPtzMap(position, *base, 1));
    for (unsigned panes : {2u, 4u, 0u}) {
      vemo::test::LogCapture cap(LOG_WARNING);
      std::unique_ptr<ImageMap> map(camera.BuildPtzMap(position, *base, panes));
      ASSERT_TRUE(map);
      ASSERT_EQ(1u, cap.lines().size()) << panes;
      EXPECT_EQ("LIBDEWARP: WARNING - Only single pane PTZ view is available for this camera mounting\n",
                cap.lines()[0]);
      EXPECT_TRUE(SameElements(*single, 0, 0, *map));
    }
  }
}

TEST(FisheyeCamera, OnePaneLogsNothing) {
  FisheyeCamera camera = Fisheye(FLOOR_MOUNT);
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 32, 32);
  vemo::test::LogCapture cap(LOG_INFO);
  std::unique_ptr<ImageMap> map(camera.BuildPtzMap(Position(0.0f, 0.5f), *base, 1));
  EXPECT_TRUE(map);
  EXPECT_TRUE(cap.lines().empty());
}

TEST(FisheyeCamera, DualPanesLookAtThePositionAndTheOppositeWay) {
  FisheyeCamera camera = Fisheye(CEILING_MOUNT);
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 64, 48);
  const PtzPosition position = Position(0.4f, -0.6f);
  std::unique_ptr<ImageMap> dual(camera.BuildPtzMap(position, *base, 2));
  ASSERT_TRUE(dual);
  EXPECT_EQ(Vector2d(64.0f, 48.0f), dual->GetMapSize());
  PtzPosition first = FisheyeCamera::CeilingOrientation;
  first.Concatenate(position);
  PtzPosition second = FisheyeCamera::CeilingOrientation;
  second.Concatenate(Position(Trigonometry::normalise_angle(0.4f + Trigonometry::PI), -0.6f));
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> expected(builder.BuildImageMap(*base, first, second, camera.GetFocalLength()));
  EXPECT_TRUE(SameElements(*expected, 0, 0, *dual));
}

TEST(FisheyeCamera, QuadPanesAreAQuarterTurnApartInReadingOrder) {
  FisheyeCamera camera = Fisheye(FLOOR_MOUNT);
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 64, 48);
  const PtzPosition position = Position(-0.2f, 0.7f, 2.0f);
  std::unique_ptr<ImageMap> quad(camera.BuildPtzMap(position, *base, 4));
  ASSERT_TRUE(quad);
  PtzPosition panes[4];
  const float offsets[4] = {0.0f, Trigonometry::HALF_PI, Trigonometry::PI, 3.0f * Trigonometry::HALF_PI};
  for (int i = 0; i < 4; ++i) {
    panes[i] = FisheyeCamera::FloorOrientation;
    const float pan = i == 0 ? -0.2f : Trigonometry::normalise_angle(-0.2f + offsets[i]);
    panes[i].Concatenate(Position(pan, 0.7f, 2.0f));
  }
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> expected(
      builder.BuildImageMap(*base, panes[0], panes[1], panes[2], panes[3], camera.GetFocalLength()));
  EXPECT_TRUE(SameElements(*expected, 0, 0, *quad));
}

TEST(FisheyeCamera, PtzMapOnAnUnknownMountFailsWithInvalidCameraMount) {
  FisheyeCamera camera = Fisheye(static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(9));
  std::unique_ptr<ImageMap> base = RectilinearBase(camera, 16, 16);
  errno = 0;
  EXPECT_THROW(camera.BuildPtzMap(Position(0.0f, 0.0f), *base, 1), Error);
  EXPECT_EQ(EINVAL, errno);
}

// ---- Hit points -----------------------------------------------------------------------------
//
// Worked out with the lens model in double precision: the point is flipped to Y up for ceiling
// and floor mounts, centred, pulled in when the incoming point lies beyond half the width from
// the image's top-left corner, turned into a lens direction (angle = radius / f), turned back
// by the transpose of the mount's rotation Ry(yaw) Rx(pitch) Rz(roll), and read as longitude
// atan2(x, z) and latitude atan2(y, hypot(z, x)); on wall mounts a longitude of exactly pi
// is reported as 0.

namespace {

struct Angles {
  double lon, lat;
};

Angles ExpectedHit(const FisheyeCamera& camera, double px, double py) {
  const double f = camera.GetFocalLength();
  const double w = camera.GetCameraResolution().X, h = camera.GetCameraResolution().Y;
  const double r0 = std::hypot(px, py);
  double x = px, y = py;
  if (camera.IsVertical()) y = h - y;
  x -= w / 2;
  y -= h / 2;
  if (r0 > w / 2) {
    x *= (w / 2) / r0;
    y *= (w / 2) / r0;
  }
  const cameras_test::Dir d = cameras_test::LensDirection(x, y, f);
  const EulerAngles home = camera.GetHomePosition().m_obOrientation;
  const double ch = std::cos(home.Yaw), sh = std::sin(home.Yaw), cp = std::cos(home.Pitch), sp = std::sin(home.Pitch);
  const double cb = std::cos(home.Roll), sb = std::sin(home.Roll);
  const double M[3][3] = {{ch * cb + sh * sp * sb, sh * sp * cb - ch * sb, sh * cp},
                          {cp * sb, cp * cb, -sp},
                          {ch * sp * sb - sh * cb, ch * sp * cb + sh * sb, ch * cp}};
  const double vx = M[0][0] * d.x + M[1][0] * d.y + M[2][0] * d.z;
  const double vy = M[0][1] * d.x + M[1][1] * d.y + M[2][1] * d.z;
  const double vz = M[0][2] * d.x + M[1][2] * d.y + M[2][2] * d.z;
  double lon = std::atan2(vx, vz);
  // Wall mounts report straight behind (a longitude of exactly pi) as 0.
  if (camera.IsHorizontal() && lon == kPi) lon = 0.0;
  return Angles{lon, std::atan2(vy, std::hypot(vz, vx))};
}

}  // namespace

TEST(FisheyeCamera, HitPointAtTheWallImageCentreIsStraightAhead) {
  FisheyeCamera camera = Fisheye(WALL_MOUNT, 180.0f, 1000);
  const Vector2d hit = camera.MapHitPoint(Vector2d(500.0f, 500.0f));
  EXPECT_NEAR(0.0, hit.X, 1e-6);
  EXPECT_NEAR(0.0, hit.Y, 1e-6);
}

TEST(FisheyeCamera, HitPointsFollowTheStepsOnEveryMount) {
  // Points near the top-left corner (incoming radius below half the width: no pull-in) and
  // points elsewhere (pulled in by half the width over the incoming radius).
  const Vector2d points[] = {Vector2d(120.0f, 200.0f), Vector2d(300.0f, 100.0f), Vector2d(650.0f, 420.0f),
                             Vector2d(500.0f, 0.0f), Vector2d(800.0f, 900.0f)};
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : {CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT, INVERTED_WALL_MOUNT}) {
    FisheyeCamera camera = Fisheye(mount, 185.0f, 1000);
    for (const Vector2d& p : points) {
      const Angles e = ExpectedHit(camera, p.X, p.Y);
      const Vector2d hit = camera.MapHitPoint(p);
      // Compare directions (longitude wraps at +-pi).
      EXPECT_NEAR(0.0, std::remainder(e.lon - hit.X, 2.0 * kPi), 1e-3) << "mount " << mount << " point " << p.X
                                                                         << ", " << p.Y;
      EXPECT_NEAR(e.lat, hit.Y, 1e-3) << "mount " << mount << " point " << p.X << ", " << p.Y;
    }
  }
}

TEST(FisheyeCamera, HitPointPulledInUsesTheIncomingRadius) {
  // Wall mount, 1000 pixels over 180 degrees: the point (700, 500) lies 200 pixels right of the
  // centre but hypot(700, 500) = 860.2 pixels from the top-left corner, beyond half the width,
  // so the centred point is scaled by 500 / 860.2 before it becomes a direction.
  FisheyeCamera camera = Fisheye(WALL_MOUNT, 180.0f, 1000);
  const double f = camera.GetFocalLength();
  const double scaled = 200.0 * 500.0 / std::hypot(700.0, 500.0);
  const Vector2d hit = camera.MapHitPoint(Vector2d(700.0f, 500.0f));
  EXPECT_NEAR(scaled / f, hit.X, 1e-4);
  EXPECT_NEAR(0.0, hit.Y, 1e-6);
}

TEST(FisheyeCamera, WallLongitudeOfExactlyPiBecomesZero) {
  // A lens wider than a half turn: the top-centre point (500, 0) of a 1000-pixel, 240-degree
  // image lies 500 pixels above the centre, more than a quarter turn off the axis, straight up
  // and behind: its longitude is atan2(+0, negative) = pi exactly.
  FisheyeCamera wall = Fisheye(WALL_MOUNT, 240.0f, 1000);
  const float f = wall.GetFocalLength();
  ASSERT_GT(500.0f / f, static_cast<float>(kPi / 2));
  // Precondition of this case: f * pi / f is exactly pi in single precision.
  volatile float product = f * Trigonometry::PI;
  ASSERT_EQ(Trigonometry::PI, product / f);
  const Vector2d hit = wall.MapHitPoint(Vector2d(500.0f, 0.0f));
  EXPECT_EQ(0.0f, hit.X);
  // Latitude: the direction (0, -sin t, cos t) with t = 500 / f gives atan2(-sin t, -cos t)
  // measured against the backward axis: -(pi - t).
  EXPECT_NEAR(-(kPi - 500.0 / f), hit.Y, 1e-4);
}

// ---- Rectilinear camera and builder -----------------------------------------------------------

TEST(RectilinearCamera, HasNoPtzMapAndNoHitPoints) {
  RectilinearCamera camera(Model(RECTILINEAR_CAMERA, 90.0f, 60.0f, 100.0f, 640, 480), CEILING_MOUNT);
  ImageMap base(16, 16);
  EXPECT_EQ(nullptr, camera.BuildPtzMap(PtzPosition(), base, 1));
  EXPECT_EQ(nullptr, camera.BuildPtzMap(PtzPosition(), base, 4));
  EXPECT_TRUE(camera.MapHitPoint(Vector2d(320.0f, 240.0f)) == Vector2d::InvalidVector);
}

TEST(CameraBuilder, MakesTheCameraOfTheModelType) {
  CameraBuilder builder;
  std::unique_ptr<Camera> rect(builder.MakeCamera(Model(RECTILINEAR_CAMERA, 90.0f, 60.0f, 100.0f, 640, 480),
                                                  FLOOR_MOUNT));
  ASSERT_TRUE(rect);
  EXPECT_NE(nullptr, dynamic_cast<RectilinearCamera*>(rect.get()));
  EXPECT_EQ(FLOOR_MOUNT, rect->GetCameraMount());
  EXPECT_EQ(RECTILINEAR_CAMERA, rect->GetCameraType());

  std::unique_ptr<Camera> fish(builder.MakeCamera(Model(CIRCULAR_FISHEYE_CAMERA, 180.0f, 180.0f, 180.0f, 800, 800),
                                                  INVERTED_WALL_MOUNT));
  ASSERT_TRUE(fish);
  EXPECT_NE(nullptr, dynamic_cast<FisheyeCamera*>(fish.get()));
  EXPECT_EQ(INVERTED_WALL_MOUNT, fish->GetCameraMount());
  EXPECT_EQ(Vector2d(800.0f, 800.0f), fish->GetCameraResolution());
}

TEST(CameraBuilder, TypeTwoMakesNoCamera) {
  CameraBuilder builder;
  EXPECT_EQ(nullptr, builder.MakeCamera(Model(static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(2), 90.0f, 60.0f, 100.0f,
                                              640, 480),
                                        WALL_MOUNT));
}

TEST(CameraBuilder, SelfAssignmentWarns) {
  vemo::test::LogCapture cap(LOG_WARNING);
  CameraBuilder builder;
  CameraBuilder& alias = builder;
  builder = alias;
  EXPECT_EQ(1u, cap.count("Self assignment of CameraBuilder object\n"));
}
