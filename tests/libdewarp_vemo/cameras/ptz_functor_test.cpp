// PTZ functors: the zoom and map lookup shared by all of them, and the three rotations.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <libdewarp_vemo/equirectangular_ptz_functor.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/rectilinear_ptz_functor.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/spherical_ptz_functor.h>

#include "cameras_test_support.h"
#include "log_capture.h"

using namespace vemo::libdewarp;
using cameras_test::AffineMap;
using cameras_test::kPi;

namespace {

PtzPosition Position(float yaw, float pitch, float roll, float zoom) {
  return PtzPosition(EulerAngles(yaw, pitch, roll), zoom);
}

}  // namespace

// ---- SphericalPerspective ---------------------------------------------------------------------

TEST(SphericalPerspective, CentreStaysAtCentreWithoutRotation) {
  const Vector2d p = PtzFunctor::SphericalPerspective(Vector2d(0.0f, 0.0f), 500.0f, RotationMatrix3d::Identity);
  EXPECT_EQ(0.0f, p.X);
  EXPECT_EQ(0.0f, p.Y);
}

TEST(SphericalPerspective, QuarterTurnInPitchMovesCentreToRadiusFTimesHalfPi) {
  const float f = 500.0f;
  const Vector2d p = PtzFunctor::SphericalPerspective(Vector2d(0.0f, 0.0f), f, RotationMatrix3d(0.0f, kPi / 2, 0.0f));
  // Equidistant lens: a direction a quarter turn off the axis lies at radius f * pi / 2.
  EXPECT_NEAR(f * kPi / 2, std::hypot(p.X, p.Y), 1e-3);
  // Pitch turns the axis within the vertical plane: the point stays on the vertical line.
  EXPECT_NEAR(0.0, p.X, 1e-3);
}

TEST(SphericalPerspective, YawMovesTheCentreSidewaysByFTimesAngle) {
  const float f = 300.0f;
  const float a = 0.4f;
  const Vector2d p = PtzFunctor::SphericalPerspective(Vector2d(0.0f, 0.0f), f, RotationMatrix3d(a, 0.0f, 0.0f));
  EXPECT_NEAR(f * a, p.X, 1e-3);
  EXPECT_NEAR(0.0, p.Y, 1e-3);
}

TEST(SphericalPerspective, IdentityKeepsEveryPoint) {
  const float f = 400.0f;
  const Vector2d points[] = {Vector2d(10.0f, -20.0f), Vector2d(-300.0f, 150.0f), Vector2d(0.0f, 600.0f)};
  for (const Vector2d& q : points) {
    const Vector2d p = PtzFunctor::SphericalPerspective(q, f, RotationMatrix3d::Identity);
    EXPECT_NEAR(q.X, p.X, 2e-3 * std::fabs(q.X) + 1e-3);
    EXPECT_NEAR(q.Y, p.Y, 2e-3 * std::fabs(q.Y) + 1e-3);
  }
}

TEST(SphericalPerspective, AgreesWithTheDirectionModel) {
  // Independent check: rotate the lens direction of the point with the matrix of the same Euler
  // angles (M = Ry(yaw) Rx(pitch) Rz(roll), object to inertial) in double precision.
  const double f = 350.0;
  const double yaw = 0.3, pitch = -0.5, roll = 0.2;
  const double ch = std::cos(yaw), sh = std::sin(yaw), cp = std::cos(pitch), sp = std::sin(pitch);
  const double cb = std::cos(roll), sb = std::sin(roll);
  const double M[3][3] = {{ch * cb + sh * sp * sb, sh * sp * cb - ch * sb, sh * cp},
                          {cp * sb, cp * cb, -sp},
                          {ch * sp * sb - sh * cb, ch * sp * cb + sh * sb, ch * cp}};
  const Vector2d q(120.0f, -80.0f);
  const cameras_test::Dir d = cameras_test::LensDirection(q.X, q.Y, f);
  const cameras_test::Dir r{M[0][0] * d.x + M[0][1] * d.y + M[0][2] * d.z,
                            M[1][0] * d.x + M[1][1] * d.y + M[1][2] * d.z,
                            M[2][0] * d.x + M[2][1] * d.y + M[2][2] * d.z};
  double ex, ey;
  cameras_test::LensPoint(r, f, &ex, &ey);
  const Vector2d p = PtzFunctor::SphericalPerspective(q, static_cast<float>(f),
                                                      RotationMatrix3d(static_cast<float>(yaw),
                                                                       static_cast<float>(pitch),
                                                                       static_cast<float>(roll)));
  EXPECT_NEAR(ex, p.X, 0.05);
  EXPECT_NEAR(ey, p.Y, 0.05);
}

TEST(InvSphericalPerspective, UndoesSphericalPerspective) {
  const float f = 320.0f;
  const RotationMatrix3d R(0.7f, 0.4f, -0.3f);
  const Vector2d points[] = {Vector2d(0.0f, 0.0f), Vector2d(50.0f, 30.0f), Vector2d(-200.0f, 90.0f)};
  for (const Vector2d& q : points) {
    const Vector2d there = PtzFunctor::SphericalPerspective(q, f, R);
    const Vector2d back = PtzFunctor::InvSphericalPerspective(there, f, R);
    EXPECT_NEAR(q.X, back.X, 0.05);
    EXPECT_NEAR(q.Y, back.Y, 0.05);
  }
}

TEST(InvSphericalPerspective, CentreWithoutRotationIsCentre) {
  const Vector2d p = PtzFunctor::InvSphericalPerspective(Vector2d(0.0f, 0.0f), 100.0f, RotationMatrix3d::Identity);
  EXPECT_EQ(0.0f, p.X);
  EXPECT_EQ(0.0f, p.Y);
}

// ---- RectilinearPerspective -------------------------------------------------------------------

TEST(RectilinearPerspective, IdentityAddsTheOffset) {
  const Vector2d p = PtzFunctor::RectilinearPerspective(Vector2d(10.0f, -4.0f), 200.0f, RotationMatrix3d::Identity,
                                                        Vector2d(3.0f, 5.0f));
  EXPECT_FLOAT_EQ(13.0f, p.X);
  EXPECT_FLOAT_EQ(1.0f, p.Y);
}

TEST(RectilinearPerspective, YawMovesTheCentreByFTimesTangent) {
  const float f = 200.0f;
  const float a = 0.3f;
  const Vector2d p = PtzFunctor::RectilinearPerspective(Vector2d(0.0f, 0.0f), f, RotationMatrix3d(a, 0.0f, 0.0f),
                                                        Vector2d(0.0f, 0.0f));
  EXPECT_NEAR(f * std::tan(a), p.X, 1e-3);
  EXPECT_NEAR(0.0, p.Y, 1e-4);
}

TEST(RectilinearPerspective, RayTurnedIntoTheImagePlaneGivesNoFiniteResult) {
  // A quarter turn that takes the viewing axis onto the image plane: rotated Z is exactly zero.
  RotationMatrix3d R;
  R.M11 = 0.0f; R.M12 = 0.0f; R.M13 = 1.0f;
  R.M21 = 0.0f; R.M22 = 1.0f; R.M23 = 0.0f;
  R.M31 = -1.0f; R.M32 = 0.0f; R.M33 = 0.0f;
  const Vector2d p = PtzFunctor::RectilinearPerspective(Vector2d(0.0f, 0.0f), 100.0f, R, Vector2d(0.0f, 0.0f));
  EXPECT_TRUE(std::isinf(p.X));
  EXPECT_TRUE(std::isnan(p.Y));
  EXPECT_FALSE(p.Valid());
}

// ---- EquirectangularPerspective ---------------------------------------------------------------

TEST(EquirectangularPerspective, QuarterPeriodShiftAndWrapPastTheRightEdge) {
  const float f = 100.0f;
  const Vector2d rotation(static_cast<float>(kPi) * f, static_cast<float>(kPi) * f / 2.0f);
  // Shifted by a quarter of the period 2 pi f.
  Vector2d p = PtzFunctor::EquirectangularPerspective(Vector2d(0.0f, 7.0f), f, rotation);
  EXPECT_NEAR(kPi * f / 2, p.X, 1e-3);
  EXPECT_EQ(7.0f, p.Y);
  // 0.75 pi f + 0.5 pi f = 1.25 pi f lies past the right edge (pi f) and wraps to -0.75 pi f.
  p = PtzFunctor::EquirectangularPerspective(Vector2d(0.75f * static_cast<float>(kPi) * f, -3.0f), f, rotation);
  EXPECT_NEAR(-0.75 * kPi * f, p.X, 1e-3);
  EXPECT_EQ(-3.0f, p.Y);
}

TEST(EquirectangularPerspective, WrapsPastTheLeftEdge) {
  const float f = 100.0f;
  const Vector2d rotation(static_cast<float>(kPi) * f, 0.0f);
  const Vector2d p = PtzFunctor::EquirectangularPerspective(Vector2d(-1.5f * static_cast<float>(kPi) * f, 0.0f), f,
                                                            rotation);
  EXPECT_NEAR(0.5 * kPi * f, p.X, 1e-3);
}

TEST(EquirectangularPerspective, FarAwayPointsAndDegeneratePeriodsEnd) {
  // Points many periods away land inside one period; no period at all leaves the shifted point.
  const Vector2d far = PtzFunctor::EquirectangularPerspective(Vector2d(1e30f, 0.0f), 1.0f, Vector2d(10.0f, 0.0f));
  EXPECT_LE(far.X, 10.0f);
  EXPECT_GE(far.X, -10.0f);
  const Vector2d none = PtzFunctor::EquirectangularPerspective(Vector2d(25.0f, 1.0f), 1.0f, Vector2d(0.0f, 5.0f));
  EXPECT_EQ(30.0f, none.X);
  const Vector2d nan = PtzFunctor::EquirectangularPerspective(
      Vector2d(std::numeric_limits<float>::quiet_NaN(), 0.0f), 1.0f, Vector2d(10.0f, 0.0f));
  EXPECT_TRUE(std::isnan(nan.X));
}

// ---- Set and Zoom -----------------------------------------------------------------------------

TEST(PtzFunctor, SetTakesRotationZoomAndMapSizes) {
  std::unique_ptr<ImageMap> map = AffineMap(8, 6, Vector2d(40.0f, 30.0f), 0.0f, 1.0f, 0.0f, 1.0f);
  SphericalPtzFunctor functor(Position(0.2f, -0.1f, 0.0f, 2.5f), 123.0f, *map);
  EXPECT_EQ(2.5f, functor.GetZoom());
  EXPECT_EQ(123.0f, functor.GetFocalLength());
  EXPECT_EQ(map.get(), functor.GetImageMap());
  EXPECT_EQ(Vector2d(8.0f, 6.0f), functor.GetOutputResolution());
  EXPECT_EQ(Vector2d(40.0f, 30.0f), functor.GetInputResolution());
  EXPECT_EQ(Vector2d(4.0f, 3.0f), functor.GetOutputOffset());
  EXPECT_EQ(Vector2d(20.0f, 15.0f), functor.GetInputOffset());
  const RotationMatrix3d expected(0.2f, -0.1f, 0.0f);
  EXPECT_EQ(expected.M13, functor.GetRotation().M13);
  EXPECT_EQ(expected.M23, functor.GetRotation().M23);
  EXPECT_EQ(expected.M31, functor.GetRotation().M31);
}

TEST(PtzFunctor, ZoomWithoutMapScalesAboutTheOrigin) {
  SphericalPtzFunctor functor(Position(0.0f, 0.0f, 0.0f, 2.0f), 100.0f);
  EXPECT_EQ(Vector2d::ZeroVector, functor.GetOutputOffset());
  const Vector2d z = functor.Zoom(Vector2d(10.0f, -6.0f), 2.0f);
  EXPECT_EQ(5.0f, z.X);
  EXPECT_EQ(-3.0f, z.Y);
}

TEST(PtzFunctor, ZoomOnWholeNumbersReadsOneElementRelativeToInputCentre) {
  // Element (x, y) = (100 + 10 x, 200 + 20 y); input centre (4, 3).
  std::unique_ptr<ImageMap> map = AffineMap(4, 4, Vector2d(8.0f, 6.0f), 100.0f, 10.0f, 200.0f, 20.0f);
  SphericalPtzFunctor functor(PtzPosition(), 100.0f, *map);
  const Vector2d z = functor.Zoom(Vector2d(3.0f, 1.0f), 1.0f);
  EXPECT_EQ(130.0f - 4.0f, z.X);
  EXPECT_EQ(220.0f - 3.0f, z.Y);
}

TEST(PtzFunctor, ZoomAboutTheOutputCentreBlendsFourElements) {
  std::unique_ptr<ImageMap> map = AffineMap(4, 4, Vector2d(8.0f, 6.0f), 100.0f, 10.0f, 200.0f, 20.0f);
  SphericalPtzFunctor functor(PtzPosition(), 100.0f, *map);
  // Output centre (2, 2): (3, 3) zoomed by 2 is (2.5, 2.5), halfway between four elements.
  const Vector2d z = functor.Zoom(Vector2d(3.0f, 3.0f), 2.0f);
  EXPECT_FLOAT_EQ(100.0f + 25.0f - 4.0f, z.X);
  EXPECT_FLOAT_EQ(200.0f + 50.0f - 3.0f, z.Y);
}

TEST(PtzFunctor, ZoomWeightsCornersBilinearly) {
  // Elements that are not linear in the position, so that wrong weights show: x = col^2,
  // y = row^3.
  std::unique_ptr<ImageMap> map(new ImageMap(4, 4));
  map->SetInputSize(Vector2d(0.0f, 0.0f));
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x) map->SetMapItem(x, y, Vector2d(static_cast<float>(x * x), static_cast<float>(y * y * y)));
  SphericalPtzFunctor functor(PtzPosition(), 100.0f, *map);
  // Zoom 1 keeps the point: (1.25, 2.5). Expected by hand: x: 0.75 * 1 + 0.25 * 4 = 1.75;
  // y: 0.5 * 8 + 0.5 * 27 = 17.5.
  const Vector2d z = functor.Zoom(Vector2d(1.25f, 2.5f), 1.0f);
  EXPECT_FLOAT_EQ(1.75f, z.X);
  EXPECT_FLOAT_EQ(17.5f, z.Y);
}

TEST(PtzFunctor, PointsZoomedOutsideTheMapHaveNoSource) {
  std::unique_ptr<ImageMap> map = AffineMap(4, 4, Vector2d(8.0f, 6.0f), 0.0f, 1.0f, 0.0f, 1.0f);
  SphericalPtzFunctor functor(PtzPosition(), 100.0f, *map);
  // A zoom below 1 pushes the corner (0, 0) to (-2, -2), outside the map.
  EXPECT_FALSE(functor.Zoom(Vector2d(0.0f, 0.0f), 0.5f).Valid());
  EXPECT_FALSE(functor.Zoom(Vector2d(3.5f, 0.0f), 1.0f).Valid());  // right neighbour is column 4
  EXPECT_FALSE(functor.Zoom(Vector2d(std::numeric_limits<float>::quiet_NaN(), 1.0f), 1.0f).Valid());
}

TEST(PtzFunctor, ZoomReadsFloatAndDoubleMapsAlike) {
  // Float tables are read straight from memory, other maps element by element: both must give
  // the same values bit for bit. A non-square map with uneven values and one NaN element, so
  // that a wrong row length or a wrong element shows.
  const int cols = 7, rows = 5;
  std::unique_ptr<ImageMap> floats(new ImageMap(cols, rows));
  floats->SetInputSize(Vector2d(30.0f, 20.0f));
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x)
      floats->SetMapItem(x, y, Vector2d(0.37f * static_cast<float>(x * x) + 0.11f * static_cast<float>(y),
                                        1.7f * static_cast<float>(y * y * y) - 0.3f * static_cast<float>(x)));
  floats->SetMapItem(4, 2, Vector2d(std::numeric_limits<float>::quiet_NaN(), 1.0f));
  ImageMap doubles(*floats);
  doubles.GetMapX() = floats->GetMapX().convertTo(Map::DOUBLE);
  doubles.GetMapY() = floats->GetMapY().convertTo(Map::DOUBLE);
  ASSERT_EQ(Map::DOUBLE, doubles.GetMapX().GetType());
  ASSERT_EQ(Map::FLOAT, floats->GetMapX().GetType());
  SphericalPtzFunctor fromFloats(PtzPosition(), 100.0f, *floats);
  SphericalPtzFunctor fromDoubles(PtzPosition(), 100.0f, doubles);
  int compared = 0;
  for (float y = -1.5f; y <= 6.0f; y += 0.25f) {
    for (float x = -1.5f; x <= 8.0f; x += 0.375f) {
      for (float zoom : {1.0f, 1.7f}) {
        const Vector2d a = fromFloats.Zoom(Vector2d(x, y), zoom);
        const Vector2d b = fromDoubles.Zoom(Vector2d(x, y), zoom);
        EXPECT_TRUE(cameras_test::SameBits(a.X, b.X) && cameras_test::SameBits(a.Y, b.Y))
            << "(" << x << ", " << y << ") zoom " << zoom << ": " << a.X << ", " << a.Y << " against " << b.X << ", "
            << b.Y;
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 600);
}

// ---- Call of the three functors ---------------------------------------------------------------

TEST(SphericalPtzFunctor, CentreOfTheViewIsTheMapCentreRotated) {
  // Base map centre (4, 3) holds (60, 45): relative to the input centre (50, 40) that is (10, 5).
  std::unique_ptr<ImageMap> map = AffineMap(8, 6, Vector2d(100.0f, 80.0f), 56.0f, 1.0f, 42.0f, 1.0f);
  SphericalPtzFunctor identity(PtzPosition(), 200.0f, *map);
  Vector2d p = identity(Vector2d(0.0f, 0.0f));
  EXPECT_NEAR(10.0, p.X, 1e-3);
  EXPECT_NEAR(5.0, p.Y, 1e-3);

  SphericalPtzFunctor turned(Position(0.3f, 0.0f, 0.0f, 1.0f), 200.0f, *map);
  p = turned(Vector2d(0.0f, 0.0f));
  const Vector2d expected = PtzFunctor::SphericalPerspective(Vector2d(10.0f, 5.0f), 200.0f,
                                                             RotationMatrix3d(0.3f, 0.0f, 0.0f));
  EXPECT_EQ(expected.X, p.X);
  EXPECT_EQ(expected.Y, p.Y);
}

TEST(RectilinearPtzFunctor, ZoomsThenCastsTheRay) {
  RectilinearPtzFunctor functor(Position(0.0f, 0.0f, 0.0f, 2.0f), 100.0f, Vector2d(1.0f, 2.0f));
  EXPECT_EQ(Vector2d(1.0f, 2.0f), functor.GetOffset());
  EXPECT_EQ(nullptr, functor.GetImageMap());
  const Vector2d p = functor(Vector2d(10.0f, 20.0f));
  // (10, 20) / 2 + offset (1, 2) with no rotation.
  EXPECT_FLOAT_EQ(6.0f, p.X);
  EXPECT_FLOAT_EQ(12.0f, p.Y);
}

TEST(EquirectangularPtzFunctor, PanShiftsThePanoramaByFTimesAngle) {
  const float f = 100.0f;
  EquirectangularPtzFunctor functor(Position(0.5f, 0.0f, 0.0f, 1.0f), f);
  EXPECT_NEAR(kPi * f, functor.GetEquirectangularRotation().X, 1e-3);
  EXPECT_NEAR(0.5 * f, functor.GetEquirectangularRotation().Y, 1e-4);
  const Vector2d p = functor(Vector2d(10.0f, 4.0f));
  EXPECT_NEAR(60.0, p.X, 1e-3);
  EXPECT_EQ(4.0f, p.Y);
  functor.SetEquirectangularRotation(Vector2d(50.0f, 45.0f));
  EXPECT_NEAR(-45.0, functor(Vector2d(10.0f, 0.0f)).X, 1e-4);  // 55 wraps by the period 100
}

TEST(PtzFunctor, SelfAssignmentWarnsAndKeepsState) {
  vemo::test::LogCapture cap(LOG_WARNING);
  SphericalPtzFunctor s(Position(0.1f, 0.0f, 0.0f, 3.0f), 10.0f);
  SphericalPtzFunctor& rs = s;
  s = rs;
  EXPECT_EQ(3.0f, s.GetZoom());
  RectilinearPtzFunctor r(PtzPosition(), 10.0f, Vector2d(1.0f, 1.0f));
  RectilinearPtzFunctor& rr = r;
  r = rr;
  EquirectangularPtzFunctor e(PtzPosition(), 10.0f);
  EquirectangularPtzFunctor& re = e;
  e = re;
  EXPECT_EQ(1u, cap.count("Self assignment of SphericalPtzFunctor object\n"));
  EXPECT_EQ(1u, cap.count("Self assignment of RectilinearPtzFunctor object\n"));
  EXPECT_EQ(1u, cap.count("Self assignment of EquirectangularPtzFunctor object\n"));
}

TEST(PtzFunctor, CopiesShareTheMapAndState) {
  std::unique_ptr<ImageMap> map = AffineMap(4, 2, Vector2d(8.0f, 6.0f), 0.0f, 1.0f, 0.0f, 1.0f);
  SphericalPtzFunctor a(Position(0.1f, 0.2f, 0.0f, 1.5f), 77.0f, *map);
  SphericalPtzFunctor b(a);
  SphericalPtzFunctor c;
  c = a;
  for (const SphericalPtzFunctor* x : {&b, &c}) {
    EXPECT_EQ(map.get(), x->GetImageMap());
    EXPECT_EQ(1.5f, x->GetZoom());
    EXPECT_EQ(77.0f, x->GetFocalLength());
    EXPECT_EQ(Vector2d(2.0f, 1.0f), x->GetOutputOffset());
  }
}
