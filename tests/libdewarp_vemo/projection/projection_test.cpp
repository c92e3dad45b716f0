// Projection: the cases at the edges of the conversions, the names, and the relations between
// size, field of view and focal length.
#include "projection_test_support.h"

#include <libdewarp_vemo/log.h>
#include <log_capture.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace projection_test;

const double kPi = 3.14159265358979323846;
const float kPiF = 3.14159265f;

TEST(Projection, StereographicCentreIsInvalid) {
  const Vector2d r = Projection::StereographicToEquirectangular(Vector2d(0.0f, 0.0f), 611.15f);
  EXPECT_TRUE(std::isnan(r.X));
  EXPECT_TRUE(std::isnan(r.Y));
  EXPECT_TRUE(r == Vector2d::InvalidVector);
}

TEST(Projection, FisheyeCentreIsTheEquirectangularOrigin) {
  const Vector2d r = Projection::FisheyeToEquirectangular(Vector2d(0.0f, 0.0f), 611.15f);
  EXPECT_EQ(0.0f, r.X);
  EXPECT_EQ(0.0f, r.Y);
}

TEST(Projection, EquirectangularOriginHasNoFisheyePoint) {
  const Vector2d r = Projection::EquirectangularToFisheye(Vector2d(0.0f, 0.0f), 611.15f);
  EXPECT_TRUE(std::isnan(r.X));
  EXPECT_TRUE(std::isnan(r.Y));
}

// CylindricalToFisheye has no guard either: at the centre rho is 0 and k = 0 * f / 0.
TEST(Projection, CylindricalOriginHasNoFisheyePoint) {
  const Vector2d r = Projection::CylindricalToFisheye(Vector2d(0.0f, 0.0f), 611.15f);
  EXPECT_TRUE(std::isnan(r.X));
  EXPECT_TRUE(std::isnan(r.Y));
  // One pixel off the centre the conversion is fine: nearly the same point.
  const Vector2d q = Projection::CylindricalToFisheye(Vector2d(0.0f, 1.0f), 611.15f);
  EXPECT_NEAR(0.0, q.X, 1e-6);
  EXPECT_NEAR(1.0, q.Y, 1e-4);
}

TEST(Projection, RectilinearFoldsOverThePole) {
  const float f = 500.0f;
  // Latitude pi/2 + 0.2 on longitude 0: the polar angle becomes 0.2 and the longitude pi.
  const Vector2d r = Projection::EquirectangularToRectilinear(Vector2d(0.0f, static_cast<float>(kPi / 2 + 0.2) * f), f);
  EXPECT_NEAR(0.0, r.X, 1e-3);                            // f * tan(pi)
  EXPECT_NEAR(-f / std::tan(0.2), r.Y, 1e-2);             // f / (cos(pi) * tan(0.2))
  // The same point as latitude pi/2 - 0.2 on longitude pi, where no fold happens.
  const Vector2d same = Projection::EquirectangularToRectilinear(
      Vector2d(kPiF * f, static_cast<float>(kPi / 2 - 0.2) * f), f);
  EXPECT_NEAR(same.X, r.X, 1e-3);
  EXPECT_NEAR(same.Y, r.Y, 1e-2);
  // Without the fold the result would be f / tan(-0.2), positive after the minus of cos(0) = 1;
  // the fold makes it negative.
  EXPECT_LT(r.Y, 0.0f);
}

TEST(Projection, RectilinearFoldsBelowTheSouthPole) {
  const float f = 500.0f;
  // Latitude -(pi/2 + 0.2): the polar angle pi + 0.2 folds back to pi - 0.2, longitude pi.
  const Vector2d r = Projection::EquirectangularToRectilinear(Vector2d(0.0f, -static_cast<float>(kPi / 2 + 0.2) * f), f);
  EXPECT_NEAR(0.0, r.X, 1e-3);
  EXPECT_NEAR(f / (-1.0 * std::tan(kPi - 0.2)), r.Y, 1e-2);
}

TEST(Projection, StraightAheadIsTheCentreOfEveryPlane) {
  const float f = 500.0f;
  EXPECT_NEAR(0.0, Projection::EquirectangularToRectilinear(Vector2d(0.0f, 0.0f), f).X, 1e-6);
  EXPECT_NEAR(0.0, Projection::EquirectangularToRectilinear(Vector2d(0.0f, 0.0f), f).Y, 1e-3);
  EXPECT_TRUE(SamePoint(Vector2d(0.0f, 0.0f), Projection::EquirectangularToCylindrical(Vector2d(0.0f, 0.0f), f)));
  EXPECT_TRUE(SamePoint(Vector2d(0.0f, 0.0f), Projection::EquirectangularToStereographic(Vector2d(0.0f, 0.0f), f)));
}

TEST(Projection, Names) {
  EXPECT_STREQ("rectilinear", Projection::GetName(RECTILINEAR_PROJECTION));
  EXPECT_STREQ("cylindical", Projection::GetName(CYLINDRICAL_PROJECTION));
  EXPECT_STREQ("equirectangular", Projection::GetName(EQUIRECTANGULAR_PROJECTION));
  EXPECT_STREQ("mercator", Projection::GetName(MERCATOR_PROJECTION));
  EXPECT_STREQ("lambert cylindrical", Projection::GetName(LAMBERT_CYLINDRICAL_PROJECTION));
  EXPECT_STREQ("miller cyclindrical", Projection::GetName(MILLER_CYLINDRICAL_PROJECTION));
  EXPECT_STREQ("pannini", Projection::GetName(PANNINI_PROJECTION));
  EXPECT_STREQ("architectural", Projection::GetName(ARCHITECTURAL_PROJECTION));
  EXPECT_STREQ("equirectangular pannini", Projection::GetName(EQUIRECTANGULAR_PANNINI_PROJECTION));
}

TEST(Projection, KnownNamesLogNothing) {
  vemo::test::LogCapture cap(LOG_INFO);
  Projection::GetName(LAMBERT_CYLINDRICAL_PROJECTION);
  EXPECT_TRUE(cap.lines().empty());
}

TEST(Projection, UnknownNameWarnsOnce) {
  vemo::test::LogCapture cap(LOG_WARNING);
  EXPECT_STREQ("<unknown>", Projection::GetName(static_cast<DEWARP_PROJECTION>(9)));
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_TRUE(cap.contains("Unable to get the name of an unknown projection\n"));
  EXPECT_EQ(0u, cap.lines()[0].find("LIBDEWARP: WARNING"));
  cap.clear();
  EXPECT_STREQ("<unknown>", Projection::GetName(static_cast<DEWARP_PROJECTION>(-1)));
  EXPECT_EQ(1u, cap.lines().size());
}

TEST(Projection, UnknownNameWarningIsBelowTheErrorLevel) {
  vemo::test::LogCapture cap(LOG_ERROR);
  EXPECT_STREQ("<unknown>", Projection::GetName(static_cast<DEWARP_PROJECTION>(9)));
  EXPECT_TRUE(cap.lines().empty());
}

TEST(Projection, SelfAssignmentWarns) {
  vemo::test::LogCapture cap(LOG_WARNING);
  Projection p;
  Projection& q = p;
  p = q;
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_TRUE(cap.contains("Self assignment of Projection object"));
}

TEST(Projection, ShiftAndScaleConstants) {
  EXPECT_EQ(0.0f, Projection::ZeroShift.X);
  EXPECT_EQ(0.0f, Projection::ZeroShift.Y);
  EXPECT_EQ(1.0f, Projection::IdentityScale.X);
  EXPECT_EQ(1.0f, Projection::IdentityScale.Y);
}

// ---- Focal lengths -----------------------------------------------------------------------

TEST(ProjectionFocalLength, FisheyeOfAHalfTurn) {
  EXPECT_FLOAT_EQ(static_cast<float>(1000.0 / kPi), Projection::FisheyeFocalLength(1000.0f, kPiF));
}

TEST(ProjectionFocalLength, RectilinearOfAnEighthTurn) {
  EXPECT_FLOAT_EQ(500.0f, Projection::RectilinearFocalLength(500.0f, kPiF / 4));
}

TEST(ProjectionFocalLength, LinearProjectionsDivideSizeByAngle) {
  const float size = 1920.0f, angle = 2.5f;
  const float expected = 768.0f;
  EXPECT_FLOAT_EQ(expected, Projection::EquirectangularFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::CylindricalFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::FisheyeFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::MercatorFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::LambertCylindricalFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::MillerCylindricalFocalLength(size, angle));
  EXPECT_FLOAT_EQ(expected, Projection::ArchitecturalFocalLength(size, angle));
}

TEST(ProjectionFocalLength, TrigonometricProjections) {
  // Equisolid: 0.5 * 1000 / sin(pi/6) = 1000.
  EXPECT_FLOAT_EQ(1000.0f, Projection::EquisolidFocalLength(1000.0f, kPiF / 3));
  // 0.5 * 1000 / tan(pi/4) = 500.
  EXPECT_FLOAT_EQ(500.0f, Projection::EquirectangularPanniniFocalLength(1000.0f, kPiF / 2));
  EXPECT_FLOAT_EQ(500.0f, Projection::PanniniFocalLength(1000.0f, kPiF / 2));
  EXPECT_FLOAT_EQ(500.0f, Projection::StereographicFocalLength(1000.0f, kPiF / 2));
  // Orthographic: 800 / sin(pi/6) = 1600.
  EXPECT_FLOAT_EQ(1600.0f, Projection::OrthographicFocalLength(800.0f, kPiF / 6));
}

// ---- Fields of view and sizes ------------------------------------------------------------

void ExpectNear(double x, double y, const Vector2d& actual, double tolerance, const char* what) {
  EXPECT_NEAR(x, actual.X, tolerance) << what;
  EXPECT_NEAR(y, actual.Y, tolerance) << what;
}

TEST(ProjectionExtent, FieldsOfViewFromSize) {
  const double f = 500.0;
  const Vector2d s(1000.0f, 600.0f);
  const double W = 1000.0, H = 600.0;
  ExpectNear(W / f, H / f, Projection::FisheyeFieldOfView(s, 500.0f), 1e-6, "fisheye");
  ExpectNear(W / f, H / f, Projection::EquirectangularFieldOfView(s, 500.0f), 1e-6, "equirectangular");
  ExpectNear(2 * std::atan2(W / 2, f), 2 * std::atan2(H / 2, f), Projection::RectilinearFieldOfView(s, 500.0f), 1e-6,
             "rectilinear");
  ExpectNear(2 * std::asin(0.5 * W / 2 / f), 2 * std::asin(0.5 * H / 2 / f),
             Projection::OrthographicFieldOfView(Vector2d(500.0f, 300.0f), 500.0f), 1e-6, "orthographic");
  ExpectNear(4 * std::asin(0.25 * W / f), 4 * std::asin(0.25 * H / f),
             Projection::EquisolidFieldOfView(Vector2d(250.0f, 150.0f), 500.0f), 1e-6, "equisolid");
  ExpectNear(4 * std::atan2(W, f), 4 * std::atan2(H, f), Projection::StereographicFieldOfView(s, 500.0f), 1e-6,
             "stereographic");
  ExpectNear(W / f, 2 * std::atan2(H / 2, f), Projection::CylindricalFieldOfView(s, 500.0f), 1e-6, "cylindrical");
  ExpectNear(W / f, 2 * std::asin(H / 2 / f), Projection::LambertCylindricalFieldOfView(s, 500.0f), 1e-6, "lambert");
  ExpectNear(W / f, 2 * std::atan(std::sinh(H / 2 / f)), Projection::MercatorFieldOfView(s, 500.0f), 1e-6, "mercator");
  const double miller = 2 * 1.25 * std::atan(std::sinh(0.8 * H / 2 / f));
  ExpectNear(W / f, miller, Projection::MillerCylindricalFieldOfView(s, 500.0f), 1e-6, "miller");
  ExpectNear(W / f, 0.5 * miller + 0.5 * 2 * std::asin(H / 2 / f), Projection::ArchitecturalFieldOfView(s, 500.0f),
             1e-6, "architectural");
  const double a = std::atan2(W / 2 / f, 2.0);
  ExpectNear(4 * a, 2 * std::atan(std::atan(std::cos(a) * std::cos(a) * H / 2 / f)),
             Projection::PanniniFieldOfView(s, 500.0f), 1e-6, "pannini");
  ExpectNear(4 * a, 2 * std::atan(std::cos(a) * std::cos(a) * H / 2 / f),
             Projection::EquirectangularPanniniFieldOfView(s, 500.0f), 1e-6, "equirectangular pannini");
}

TEST(ProjectionExtent, SizesFromFieldOfView) {
  const double f = 500.0, h = 1.6, v = 1.1;
  const Vector2d fov(1.6f, 1.1f);
  const float F = 500.0f;
  ExpectNear(f * h, f * v, Projection::FisheyeResolution(fov, F), 1e-3, "fisheye");
  ExpectNear(f * h, f * v, Projection::EquirectangularResolution(fov, F), 1e-3, "equirectangular");
  ExpectNear(f * h, 2 * f * std::log(1 / std::cos(v / 2) + std::tan(v / 2)), Projection::MercatorResolution(fov, F),
             1e-3, "mercator");
  const double miller = 2 * f * 1.25 * std::asinh(std::tan(0.8 * v / 2));
  ExpectNear(f * h, miller, Projection::MillerCylindricalResolution(fov, F), 1e-3, "miller");
  const double c2 = std::cos(h / 4) * std::cos(h / 4);
  ExpectNear(4 * f * std::tan(h / 4), 2 * f * std::tan(v / 2) / c2, Projection::EquirectangularPanniniResolution(fov, F),
             1e-3, "equirectangular pannini");
  ExpectNear(4 * f * std::tan(h / 4), 2 * f * std::tan(std::tan(v / 2)) / c2, Projection::PanniniResolution(fov, F),
             1e-2, "pannini");
  const double lambert = 2 * f * std::sin(v / 2);
  ExpectNear(f * h, 0.5 * miller + 0.5 * lambert, Projection::ArchitecturalResolution(fov, F), 1e-3, "architectural");
  ExpectNear(f * h, 2 * f * std::tan(v / 2), Projection::CylindricalResolution(fov, F), 1e-3, "cylindrical");
  ExpectNear(f * h, lambert, Projection::LambertCylindricalResolution(fov, F), 1e-3, "lambert");
  ExpectNear(2 * f * std::tan(h / 2), 2 * f * std::tan(v / 2), Projection::RectilinearResolution(fov, F), 1e-3,
             "rectilinear");
  ExpectNear(2 * f * std::sin(h / 2), 2 * f * std::sin(v / 2), Projection::OrthographicResolution(fov, F), 1e-3,
             "orthographic");
  ExpectNear(4 * f * std::sin(h / 4), 4 * f * std::sin(v / 4), Projection::EquisolidResolution(fov, F), 1e-3,
             "equisolid");
  ExpectNear(4 * f * std::tan(h / 4), 4 * f * std::tan(v / 4), Projection::StereographicResolution(fov, F), 1e-3,
             "stereographic");
}

// Where a field of view is the inverse of a size, going there and back returns the size.
TEST(ProjectionExtent, InverseFieldsOfViewReturnTheSize) {
  // Inside the orthographic domain: half the width is less than f.
  const float f = 611.15f;
  const Vector2d size(1000.0f, 720.0f);
  struct Pair {
    const char* name;
    Vector2d (*fov)(const Vector2d&, DEWARP_FLOAT);
    Vector2d (*resolution)(const Vector2d&, DEWARP_FLOAT);
  };
  const Pair pairs[] = {
      {"fisheye", &Projection::FisheyeFieldOfView, &Projection::FisheyeResolution},
      {"equirectangular", &Projection::EquirectangularFieldOfView, &Projection::EquirectangularResolution},
      {"rectilinear", &Projection::RectilinearFieldOfView, &Projection::RectilinearResolution},
      {"orthographic", &Projection::OrthographicFieldOfView, &Projection::OrthographicResolution},
      {"cylindrical", &Projection::CylindricalFieldOfView, &Projection::CylindricalResolution},
      {"lambert", &Projection::LambertCylindricalFieldOfView, &Projection::LambertCylindricalResolution},
      {"mercator", &Projection::MercatorFieldOfView, &Projection::MercatorResolution},
      {"miller", &Projection::MillerCylindricalFieldOfView, &Projection::MillerCylindricalResolution},
      {"pannini", &Projection::PanniniFieldOfView, &Projection::PanniniResolution},
      {"equirectangular pannini", &Projection::EquirectangularPanniniFieldOfView,
       &Projection::EquirectangularPanniniResolution},
  };
  for (const Pair& p : pairs) {
    const Vector2d back = p.resolution(p.fov(size, f), f);
    EXPECT_NEAR(size.X, back.X, 0.05) << p.name;
    EXPECT_NEAR(size.Y, back.Y, 0.05) << p.name;
  }
}

// The equisolid and stereographic fields of view take the whole size where their sizes take
// the half angle: 4 asin(W / f) and 4 atan(W / f) are not the inverses of 4f sin(h / 4) and
// 4f tan(h / 4).
TEST(ProjectionExtent, EquisolidAndStereographicFieldsOfViewAreNotInverses) {
  const float f = 611.15f;
  const Vector2d size(300.0f, 200.0f);
  const Vector2d equisolid = Projection::EquisolidResolution(Projection::EquisolidFieldOfView(size, f), f);
  EXPECT_GT(std::fabs(equisolid.X - size.X), 100.0f);
  const Vector2d stereographic = Projection::StereographicResolution(Projection::StereographicFieldOfView(size, f), f);
  EXPECT_GT(std::fabs(stereographic.X - size.X), 100.0f);
}

}  // namespace
