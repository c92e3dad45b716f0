// PTZ limiting, best zoom and the conversion of a camera image point to a PTZ position. Expected
// values are worked out in the tests from the ranges of the mounts and the view's field of view.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>

#include "log_capture.h"
#include "views_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;
using views_test::MakeFisheye;
using views_test::WrapAngle;

const double kPi = views_test::kPi;
const double kInf = std::numeric_limits<double>::infinity();

// Zoom at which a view of field of view (h, v) just fits between the nearer ends of the pan
// range (panHi, panLo) and the tilt range (tiltHi, tiltLo), limited to the zoom range [zLo, zHi].
double ExpectedBestZoom(double pan, double tilt, double h, double v, double panHi, double panLo,
                        double tiltHi, double tiltLo, double zLo, double zHi) {
  const double dPan = std::min(panHi - pan, pan - panLo);
  const double dTilt = std::min(tiltHi - tilt, tilt - tiltLo);
  const double qPan = dPan > 0 ? (h / 2) / dPan : kInf;
  const double qTilt = dTilt > 0 ? (v / 2) / dTilt : kInf;
  return std::min(std::max(std::max(qPan, qTilt), zLo), zHi);
}

class ViewPtz : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_NEAR(kPi / 2, ptz.GetFov().Horizontal, 1e-6);
    ASSERT_NEAR(kPi / 2, ptz.GetFov().Vertical, 1e-6);
  }
  CameraPtr ceiling = MakeFisheye(CEILING_MOUNT);
  SinglePtzView ptz{ceiling, RECTILINEAR_PROJECTION};
};

TEST_F(ViewPtz, CeilingRangeIsTheCeilingPtzRangeWidenedByHalfTheFieldOfView) {
  const PtzRange r = ptz.GetPtzRange();
  EXPECT_FLOAT_EQ(kPi, r.m_obPanRange.X);
  EXPECT_FLOAT_EQ(-kPi, r.m_obPanRange.Y);
  EXPECT_NEAR(kPi / 4, r.m_obTiltRange.X, 1e-6);
  EXPECT_NEAR(-3 * kPi / 4, r.m_obTiltRange.Y, 1e-6);
  EXPECT_EQ(0.0f, r.m_obRollRange.X);
  EXPECT_EQ(0.0f, r.m_obRollRange.Y);
  EXPECT_TRUE(std::isinf(r.m_obZoomRange.X));
  EXPECT_EQ(1.0f, r.m_obZoomRange.Y);
}

TEST_F(ViewPtz, LimitPtzKeepsTheZoomedViewInsideTheRange) {
  // Zoom 2 halves the field of view to pi/4; the tilt range (pi/4, -3pi/4) shrinks by pi/8 at
  // both ends to (pi/8, -5pi/8). Pan moves freely, roll has no motion.
  const PtzPosition p = ptz.LimitPtz(PtzPosition(EulerAngles(0.3f, 1.0f, 0.2f), 2.0f));
  EXPECT_FLOAT_EQ(0.3f, p.m_obOrientation.Yaw);
  EXPECT_NEAR(kPi / 8, p.m_obOrientation.Pitch, 1e-6);
  EXPECT_EQ(0.0f, p.m_obOrientation.Roll);
  EXPECT_EQ(2.0f, p.m_fZoom);

  const PtzPosition q = ptz.LimitPtz(PtzPosition(EulerAngles(0.0f, -2.0f, 0.0f), 2.0f));
  EXPECT_NEAR(-5 * kPi / 8, q.m_obOrientation.Pitch, 1e-6);
}

TEST_F(ViewPtz, LimitPtzRaisesAZoomBelowOne) {
  // Zoom 0.5 is limited to 1 first, so the range shrinks by pi/4: tilt (0, -pi/2).
  const PtzPosition p = ptz.LimitPtz(PtzPosition(EulerAngles(0.0f, -2.0f, 0.0f), 0.5f));
  EXPECT_EQ(1.0f, p.m_fZoom);
  EXPECT_NEAR(-kPi / 2, p.m_obOrientation.Pitch, 1e-6);
  const PtzPosition q = ptz.LimitPtz(PtzPosition(EulerAngles(0.0f, 0.5f, 0.0f), 0.5f));
  EXPECT_NEAR(0.0, q.m_obOrientation.Pitch, 1e-6);
}

TEST_F(ViewPtz, WallRangeComesFromTheCameraFieldOfView) {
  SinglePtzView wall(MakeFisheye(WALL_MOUNT), RECTILINEAR_PROJECTION);
  const double half = 183.0 * kPi / 180.0 / 2.0;
  const PtzRange r = wall.GetPtzRange();
  EXPECT_NEAR(half, r.m_obPanRange.X, 1e-5);
  EXPECT_NEAR(-half, r.m_obPanRange.Y, 1e-5);
  EXPECT_NEAR(half, r.m_obTiltRange.X, 1e-5);
  EXPECT_FLOAT_EQ(kPi, r.m_obRollRange.X);
  EXPECT_TRUE(std::isinf(r.m_obZoomRange.X));
  // At zoom 1 the quarter-turn view leaves pan and tilt half - pi/4 either way.
  const PtzPosition p = wall.LimitPtz(PtzPosition(EulerAngles(2.0f, -2.0f, 0.0f), 1.0f));
  EXPECT_NEAR(half - kPi / 4, p.m_obOrientation.Yaw, 1e-5);
  EXPECT_NEAR(-(half - kPi / 4), p.m_obOrientation.Pitch, 1e-5);
}

TEST_F(ViewPtz, LimitPtzWarnsAboutAnInvalidAspectRatioAndGoesOn) {
  ptz.SetAspectRatio(static_cast<DEWARP_ASPECT_RATIO>(3));
  test::LogCapture cap(LOG_WARNING);
  const PtzPosition p = ptz.LimitPtz(PtzPosition(EulerAngles(0.3f, 1.0f, 0.0f), 2.0f));
  EXPECT_TRUE(cap.contains("Invalid aspect ratio\n"));
  EXPECT_NEAR(kPi / 8, p.m_obOrientation.Pitch, 1e-6);
}

TEST_F(ViewPtz, BestZoomFitsTheViewBetweenTheNearerEnds) {
  const double far = ExpectedBestZoom(0.5, -0.6, kPi / 2, kPi / 2, kPi, -kPi, kPi / 4, -3 * kPi / 4, 1, kInf);
  EXPECT_EQ(1.0, far);  // the fitting zoom 0.567 is below the lowest zoom
  EXPECT_NEAR(far, ptz.BestZoom(PtzPosition(EulerAngles(0.5f, -0.6f, 0.0f), 1.0f)), 1e-5);

  const double near = ExpectedBestZoom(0.5, 0.7, kPi / 2, kPi / 2, kPi, -kPi, kPi / 4, -3 * kPi / 4, 1, kInf);
  EXPECT_GT(near, 9.0);
  EXPECT_NEAR(near, ptz.BestZoom(PtzPosition(EulerAngles(0.5f, 0.7f, 0.0f), 1.0f)), 1e-3 * near);

  // Close to the pan end of a bounded range the pan axis decides.
  SinglePtzView wall(MakeFisheye(WALL_MOUNT), RECTILINEAR_PROJECTION);
  const double half = 183.0 * kPi / 180.0 / 2.0;
  const double byPan = ExpectedBestZoom(1.4, 0.0, kPi / 2, kPi / 2, half, -half, half, -half, 1, kInf);
  EXPECT_NEAR(byPan, wall.BestZoom(PtzPosition(EulerAngles(1.4f, 0.0f, 0.0f), 1.0f)), 1e-3 * byPan);
}

TEST_F(ViewPtz, PanoramicBestZoomIsTheFixedZoom) {
  SinglePanoramicView pano(ceiling, CYLINDRICAL_PROJECTION);
  EXPECT_EQ(1.0f, pano.BestZoom(PtzPosition()));
}

TEST_F(ViewPtz, CalcPtzPositionNeverExceedsMaxZoom) {
  SinglePanoramicView pano(ceiling, CYLINDRICAL_PROJECTION);
  const PtzPosition p = pano.CalcPtzPosition(Vector2d(300.0f, 200.0f), 0.5f);
  EXPECT_EQ(0.5f, p.m_fZoom);  // the best zoom of the panorama is 1

  // The pan-limited end of a wall range asks for more zoom than allowed.
  SinglePtzView wall(MakeFisheye(WALL_MOUNT), RECTILINEAR_PROJECTION);
  for (float x = 5.0f; x < 400.0f; x += 65.0f) {
    for (float y = 5.0f; y < 400.0f; y += 65.0f) {
      const PtzPosition q = wall.CalcPtzPosition(Vector2d(x, y), 3.0f);
      EXPECT_LE(q.m_fZoom, 3.0f) << x << "," << y;
      const PtzPosition r = ptz.CalcPtzPosition(Vector2d(x, y), 3.0f);
      EXPECT_LE(r.m_fZoom, 3.0f) << x << "," << y;
    }
  }
}

TEST_F(ViewPtz, CalcPtzPositionFarFromTheEndsReturnsTheBestZoom) {
  // A point near the middle of a wall lens: a direction far from every end of the range
  // (pan and tilt within +-91.5 degrees), where a zoom well below the allowed 8 fits.
  SinglePtzView wall(MakeFisheye(WALL_MOUNT), RECTILINEAR_PROJECTION);
  const double half = 183.0 * kPi / 180.0 / 2.0;
  const PtzPosition p = wall.CalcPtzPosition(Vector2d(215.0f, 190.0f), 8.0f);
  const double pan = p.m_obOrientation.Yaw, tilt = p.m_obOrientation.Pitch;
  ASSERT_LT(std::fabs(pan), 0.5);
  ASSERT_LT(std::fabs(tilt), 0.5);
  const double expected = ExpectedBestZoom(pan, tilt, kPi / 2, kPi / 2, half, -half, half, -half, 1, kInf);
  EXPECT_NEAR(expected, p.m_fZoom, 1e-5);
  EXPECT_LT(p.m_fZoom, 2.0f);
  // The view's own position is untouched.
  EXPECT_TRUE(wall.GetPtz() == PtzPosition());
}

TEST_F(ViewPtz, CalcPtzPositionAimsAtTheCameraDirectionOfThePoint) {
  // The position takes pan and tilt from the direction the camera reports for the point, limited
  // to the range at the caller's zoom, and the zoom that fits the view there (at most MaxZoom).
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : views_test::kMounts) {
    const CameraPtr camera = MakeFisheye(mount);
    SinglePtzView v(camera, RECTILINEAR_PROJECTION);
    const PtzRange r = v.GetPtzRange();
    for (float x = 20.0f; x < 400.0f; x += 90.0f) {
      for (float y = 30.0f; y < 400.0f; y += 90.0f) {
        const Vector2d angles = camera->MapHitPoint(Vector2d(x, y));
        const PtzPosition limited = v.LimitPtz(PtzPosition(EulerAngles(angles.X, angles.Y, 0.0f), 3.0f));
        const PtzPosition p = v.CalcPtzPosition(Vector2d(x, y), 3.0f);
        EXPECT_EQ(limited.m_obOrientation.Yaw, p.m_obOrientation.Yaw) << mount << " " << x << "," << y;
        EXPECT_EQ(limited.m_obOrientation.Pitch, p.m_obOrientation.Pitch) << mount << " " << x << "," << y;
        EXPECT_EQ(0.0f, p.m_obOrientation.Roll);
        const double best = ExpectedBestZoom(p.m_obOrientation.Yaw, p.m_obOrientation.Pitch, kPi / 2, kPi / 2,
                                             r.m_obPanRange.X, r.m_obPanRange.Y, r.m_obTiltRange.X,
                                             r.m_obTiltRange.Y, r.m_obZoomRange.Y, r.m_obZoomRange.X);
        EXPECT_NEAR(std::min(best, 3.0), p.m_fZoom, 1e-4 * p.m_fZoom) << mount << " " << x << "," << y;
      }
    }
  }
}

// ---- Point to PTZ position and back --------------------------------------------------------------
//
// CalcPtzPosition turns a camera image point into a position through the camera's hit-point steps:
// (1) r0 = hypot of the raw point; (2) ceiling and floor flip rows to Y up; (3) centre; (4) if r0
// exceeds half the width, shrink the centred point by (width / 2) / r0; (5) turn it back from the
// mount's home orientation on the sphere; (6) read longitude and latitude of the equidistant point.
// HitPointModel below repeats these steps in double precision.
//
// Fed the camera point that the centre pixel of a PTZ view at p samples, the steps give p back
// only where they invert the PTZ map, which is:
//  - on wall and inverted-wall mounts, the pan whenever that point lies within half the width of
//    the image origin (hypot(x, y) <= width / 2, so that step 4 leaves it alone); the tilt then
//    comes back negated, since wall rows are not flipped (positive latitude is down the image
//    while a positive tilt looks up); the whole of p comes back only for p = (0, 0);
//  - nowhere else: outside that disc step 4 pulls the direction towards the lens axis, and on
//    ceiling and floor mounts the hit-point longitude is measured from the far side of the lens
//    (pan + pi) and the latitude from the lens axis, while a ceiling PTZ view at tilt t looks
//    pi/2 + t - atan(1/2) from the axis (its projection map carries the mount's shift and scale).
// Every case checks the position against the model; the round-trip cases also against p
// (within 0.01 rad, about two output pixels of a 320-pixel view at zoom 1).

struct Angles {
  double lon, lat;
};

Angles HitPointModel(DEWARP_INTERNAL_CAMERA_MOUNT mount, double side, double x, double y) {
  const double f = side / (183.0 * kPi / 180.0);
  const double c = side / 2.0;
  const double r0 = std::hypot(x, y);
  if (mount == CEILING_MOUNT || mount == FLOOR_MOUNT) y = side - y;
  x -= c;
  y -= c;
  if (r0 > c) {
    x *= c / r0;
    y *= c / r0;
  }
  // Home orientation (yaw, pitch, roll) of the mount and the rotation matrix built from it.
  const double home[4][3] = {{0, kPi / 2, 0}, {0, kPi / 2, kPi}, {0, 0, 0}, {0, 0, kPi}};
  const double sh = std::sin(home[mount][0]), ch = std::cos(home[mount][0]);
  const double sp = std::sin(home[mount][1]), cp = std::cos(home[mount][1]);
  const double sb = std::sin(home[mount][2]), cb = std::cos(home[mount][2]);
  const double m[3][3] = {{ch * cb + sh * sp * sb, sh * sp * cb - ch * sb, sh * cp},
                          {cp * sb, cp * cb, -sp},
                          {ch * sp * sb - sh * cb, ch * sp * cb + sh * sb, ch * cp}};
  // Turn back on the sphere (transposed matrix).
  const double r = std::hypot(x, y), theta = r / f;
  const double k = r != 0 ? std::sin(theta) / r : 0.0;
  const double v[3] = {k * x, k * y, std::cos(theta)};
  const double w[3] = {m[0][0] * v[0] + m[1][0] * v[1] + m[2][0] * v[2],
                       m[0][1] * v[0] + m[1][1] * v[1] + m[2][1] * v[2],
                       m[0][2] * v[0] + m[1][2] * v[1] + m[2][2] * v[2]};
  const double rho = std::hypot(w[0], w[1]);
  const double scale = rho != 0 ? std::atan2(rho, w[2]) * f / rho : 0.0;
  const double px = scale * w[0], py = scale * w[1];
  // Equidistant point to longitude and latitude.
  const double pr = std::hypot(px, py), pt = pr / f;
  const double kk = pt != 0 ? std::sin(pt) / pr : 1.0 / f;
  const double dx = kk * px, dy = kk * py, dz = std::cos(pt);
  Angles a = {std::atan2(dx, dz), std::atan2(dy, std::hypot(dz, dx))};
  return a;
}

// The position CalcPtzPosition must give for hit-point angles a: pan and tilt clamped into the
// range shrunk by half the field of view seen at the caller's zoom, and the zoom that fits the
// view between the nearer ends, never above the caller's.
PtzPosition ExpectedPosition(const PtzRange& r, const Angles& a, double fov, double maxZoom) {
  const double z = std::min(std::max(maxZoom, double(r.m_obZoomRange.Y)), double(r.m_obZoomRange.X));
  const double half = fov / z / 2;
  double panHi = r.m_obPanRange.X, panLo = r.m_obPanRange.Y, tiltHi = r.m_obTiltRange.X, tiltLo = r.m_obTiltRange.Y;
  const double kFloatPi = static_cast<float>(kPi);  // the full-motion range is held in single precision
  if (!(panHi == kFloatPi && panLo == -kFloatPi)) {
    if (panHi - panLo > 2 * half) {
      panHi -= half;
      panLo += half;
    } else {
      panHi = panLo = (panHi + panLo) / 2;
    }
  }
  if (!(tiltHi == kFloatPi && tiltLo == -kFloatPi)) {
    if (tiltLo + half > tiltHi - half) {
      tiltHi = tiltLo = (tiltHi + tiltLo) / 2;
    } else {
      tiltHi -= half;
      tiltLo += half;
    }
  }
  const double pan = std::min(std::max(a.lon, panLo), panHi);
  const double tilt = std::min(std::max(a.lat, tiltLo), tiltHi);
  const double best = ExpectedBestZoom(pan, tilt, fov, fov, r.m_obPanRange.X, r.m_obPanRange.Y, r.m_obTiltRange.X,
                                       r.m_obTiltRange.Y, r.m_obZoomRange.Y, r.m_obZoomRange.X);
  return PtzPosition(EulerAngles(float(pan), float(tilt), 0.0f), float(std::min(best, maxZoom)));
}

struct CentreCase {
  DEWARP_INTERNAL_CAMERA_MOUNT mount;
  float pan, tilt, zoom;
};

class CentreRoundTrip : public ::testing::TestWithParam<CentreCase> {};

const float kSide = 1936.0f;
const float kMaxZoom = 8.0f;

TEST_P(CentreRoundTrip, CentrePixelPointGivesThePositionOfTheHitPointSteps) {
  const CentreCase c = GetParam();
  const CameraPtr camera = MakeFisheye(c.mount, static_cast<unsigned int>(kSide));
  SinglePtzView v(camera, RECTILINEAR_PROJECTION);
  const PtzPosition p = v.SetPtz(PtzPosition(EulerAngles(c.pan, c.tilt, 0.0f), c.zoom));
  ASSERT_FLOAT_EQ(c.pan, p.m_obOrientation.Yaw);  // inside the range: taken as asked
  ASSERT_FLOAT_EQ(c.tilt, p.m_obOrientation.Pitch);
  ASSERT_TRUE(v.CheckMaps(Resolution(320, 240)));
  const Vector2d q = v.GetPtzMap()->GetMapItem(160, 120);
  ASSERT_TRUE(q.Valid());

  const PtzPosition back = v.CalcPtzPosition(q, kMaxZoom);
  const PtzPosition expected = ExpectedPosition(v.GetPtzRange(), HitPointModel(c.mount, kSide, q.X, q.Y), kPi / 2,
                                                kMaxZoom);
  EXPECT_NEAR(expected.m_obOrientation.Yaw, back.m_obOrientation.Yaw, 1e-3);
  EXPECT_NEAR(expected.m_obOrientation.Pitch, back.m_obOrientation.Pitch, 1e-3);
  EXPECT_EQ(0.0f, back.m_obOrientation.Roll);
  EXPECT_NEAR(expected.m_fZoom, back.m_fZoom, 1e-3 * expected.m_fZoom);

  const bool wall = c.mount == WALL_MOUNT || c.mount == INVERTED_WALL_MOUNT;
  if (wall && std::hypot(q.X, q.Y) <= kSide / 2) {
    EXPECT_NEAR(c.pan, back.m_obOrientation.Yaw, 0.01);
    EXPECT_NEAR(-c.tilt, back.m_obOrientation.Pitch, 0.01);
  }
  if (wall && c.pan == 0.0f && c.tilt == 0.0f) {
    EXPECT_NEAR(0.0, back.m_obOrientation.Yaw, 1e-3);
    EXPECT_NEAR(0.0, back.m_obOrientation.Pitch, 1e-3);
  }
}

INSTANTIATE_TEST_SUITE_P(Mounts, CentreRoundTrip,
                         ::testing::Values(CentreCase{WALL_MOUNT, 0.0f, 0.0f, 2.0f},
                                           CentreCase{INVERTED_WALL_MOUNT, 0.0f, 0.0f, 1.0f},
                                           CentreCase{WALL_MOUNT, -0.8f, 0.3f, 2.0f},
                                           CentreCase{WALL_MOUNT, -0.9f, 0.7f, 1.5f},
                                           CentreCase{INVERTED_WALL_MOUNT, 0.5f, -0.6f, 1.0f},
                                           CentreCase{INVERTED_WALL_MOUNT, 0.7f, -0.2f, 2.0f},
                                           CentreCase{WALL_MOUNT, 0.4f, 0.3f, 2.0f},
                                           CentreCase{INVERTED_WALL_MOUNT, 0.3f, 0.4f, 2.0f},
                                           CentreCase{CEILING_MOUNT, 0.5f, -0.6f, 2.0f},
                                           CentreCase{CEILING_MOUNT, -2.0f, -1.2f, 1.5f},
                                           CentreCase{CEILING_MOUNT, 2.8f, -0.2f, 3.0f},
                                           CentreCase{FLOOR_MOUNT, 1.0f, 0.6f, 2.0f},
                                           CentreCase{FLOOR_MOUNT, -0.4f, 0.2f, 1.0f}));

TEST(CentreRoundTripCases, TheWallCasesIncludePointsInsideTheUnshrunkDisc) {
  // Guards the list above: at least two wall cases must exercise the pan round trip.
  int inside = 0;
  const CentreCase cases[] = {{WALL_MOUNT, -0.8f, 0.3f, 2.0f}, {WALL_MOUNT, -0.9f, 0.7f, 1.5f},
                              {INVERTED_WALL_MOUNT, 0.5f, -0.6f, 1.0f}, {INVERTED_WALL_MOUNT, 0.7f, -0.2f, 2.0f}};
  for (const CentreCase& c : cases) {
    SinglePtzView v(MakeFisheye(c.mount, static_cast<unsigned int>(kSide)), RECTILINEAR_PROJECTION);
    v.SetPtz(PtzPosition(EulerAngles(c.pan, c.tilt, 0.0f), c.zoom));
    ASSERT_TRUE(v.CheckMaps(Resolution(320, 240)));
    const Vector2d q = v.GetPtzMap()->GetMapItem(160, 120);
    if (std::hypot(q.X, q.Y) <= kSide / 2) ++inside;
  }
  EXPECT_GE(inside, 2);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
