// Round trips: a point of projection P converted to Q and back returns to itself, at sample
// directions inside the domain of both, for every pair that the engine's definitions make
// invertible.
//
// Tolerance: |back - start| <= 2e-5 * (f + |start|) pixels in each coordinate, that is single
// precision rounding of a few chained trigonometric functions (about 0.012 pixels at the centre
// of an image of focal length 611 pixels per radian).
//
// Pairs that are not invertible as the engine defines them:
//   - Stereographic with any other projection: the inverse conversion returns the latitude in
//     radians, not in pixels, so the way back loses the factor f on the vertical.
//   - Spherical with any other projection: the polar panorama is an output only; no conversion
//     leads back out of it.
//   - Cylindrical and Rectilinear with each other: the direct RectilinearToCylindrical divides
//     the vertical by acos(x / f), which is not the inverse of CylindricalToRectilinear's
//     division by cos(x / f).
#include "projection_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace {

using namespace projection_test;

const double kTolerance = 2e-5;

struct Direction {
  float lambda, phi;
};

// Directions inside the domain of every invertible projection: in front of the camera (for
// the rectilinear and orthographic planes), latitude within one radian (the Lambert arc sine)
// and within atan(pi/2) (the double tangent of Pannini).
const std::vector<Direction>& FrontDirections() {
  static std::vector<Direction> d;
  if (d.empty()) {
    for (float lambda : {-1.3f, -0.7f, -0.2f, 0.25f, 0.8f, 1.25f}) {
      for (float phi : {-0.95f, -0.5f, -0.1f, 0.15f, 0.6f, 0.95f}) d.push_back({lambda, phi});
    }
  }
  return d;
}

// Directions behind the side of the camera and steep ones, for the projections that reach
// there.
const std::vector<Direction>& WideDirections() {
  static const std::vector<Direction> d = {{2.4f, 0.3f}, {-2.8f, -0.5f}, {1.9f, 1.2f}, {-2.2f, -1.3f}};
  return d;
}

bool IsWide(const std::string& p) {
  static const std::set<std::string> wide = {"Equirectangular", "Cylindrical", "Mercator", "MillerCylindrical",
                                             "EquirectangularPannini", "Fisheye", "Mirror", "Equisolid"};
  return wide.count(p) != 0;
}

std::string NotInvertibleBecause(const std::string& p, const std::string& q) {
  if (p == q) return "";
  if (p == "Stereographic" || q == "Stereographic") return "stereographic latitude comes back in radians";
  if (p == "Spherical" || q == "Spherical") return "nothing leads out of the polar panorama";
  if ((p == "Cylindrical" && q == "Rectilinear") || (p == "Rectilinear" && q == "Cylindrical"))
    return "RectilinearToCylindrical divides by acos(x / f), not the inverse of CylindricalToRectilinear";
  return "";
}

// The point of projection p that looks in direction d.
Vector2d PointOf(const std::string& p, const Direction& d, float f) {
  return Function("Equirectangular", p)(Vector2d(d.lambda * f, d.phi * f), f);
}

bool Returns(const Vector2d& start, const Vector2d& back, float f) {
  return Near(back.X, start.X, kTolerance * (f + std::fabs(start.X))) &&
         Near(back.Y, start.Y, kTolerance * (f + std::fabs(start.Y)));
}

// Round trips p -> q -> p at every usable direction; the number of points tried.
int CheckRoundTrips(const std::string& p, const std::string& q, float f) {
  std::vector<Direction> directions = FrontDirections();
  if (IsWide(p) && IsWide(q)) {
    directions.insert(directions.end(), WideDirections().begin(), WideDirections().end());
  }
  int tried = 0;
  for (const Direction& d : directions) {
    const Vector2d start = PointOf(p, d, f);
    if (!start.Valid()) {
      ADD_FAILURE() << p << " has no point at (" << d.lambda << ", " << d.phi << ")";
      continue;
    }
    const Vector2d there = Function(p, q)(start, f);
    const Vector2d back = Function(q, p)(there, f);
    EXPECT_TRUE(Returns(start, back, f)) << p << " -> " << q << " -> " << p << " at direction (" << d.lambda << ", "
                                         << d.phi << ") f " << f << ": " << Show(start) << " -> " << Show(there)
                                         << " -> " << Show(back);
    ++tried;
  }
  return tried;
}

TEST(ProjectionRoundTrip, ThroughTheEquirectangularHub) {
  int pairs = 0;
  for (const std::string& p : Names()) {
    if (!NotInvertibleBecause(p, "Equirectangular").empty()) continue;
    for (float f : {611.15f, 250.0f}) {
      EXPECT_GT(CheckRoundTrips(p, "Equirectangular", f), 0);
      EXPECT_GT(CheckRoundTrips("Equirectangular", p, f), 0);
    }
    ++pairs;
  }
  EXPECT_EQ(13, pairs);  // all but Stereographic and Spherical
}

TEST(ProjectionRoundTrip, LensToProjectionAndBack) {
  int pairs = 0;
  for (const char* lens : {"Fisheye", "Rectilinear", "Mirror", "Equisolid", "Orthographic"}) {
    for (const std::string& q : Names()) {
      if (!NotInvertibleBecause(lens, q).empty()) continue;
      for (float f : {611.15f, 250.0f}) {
        EXPECT_GT(CheckRoundTrips(lens, q, f), 0);
        EXPECT_GT(CheckRoundTrips(q, lens, f), 0);
      }
      ++pairs;
    }
  }
  // 13 partners each, except that Rectilinear has no way back from Cylindrical.
  EXPECT_EQ(5 * 13 - 1, pairs);
}

TEST(ProjectionRoundTrip, EveryInvertiblePair) {
  int invertible = 0;
  for (const std::string& p : Names()) {
    for (const std::string& q : Names()) {
      if (!NotInvertibleBecause(p, q).empty()) continue;
      EXPECT_GT(CheckRoundTrips(p, q, 611.15f), 0);
      ++invertible;
    }
  }
  // 13 * 13 pairs among the invertible projections, less the two between Cylindrical and
  // Rectilinear, plus the identities of Stereographic and Spherical.
  EXPECT_EQ(13 * 13 - 2 + 2, invertible);
}

// The pairs named above really do not come back, at least at some sample direction.
TEST(ProjectionRoundTrip, NamedPairsAreNotInvertible) {
  const float f = 611.15f;
  int named = 0;
  for (const std::string& p : Names()) {
    for (const std::string& q : Names()) {
      if (NotInvertibleBecause(p, q).empty()) continue;
      ++named;
      bool returnsEverywhere = true;
      for (const Direction& d : FrontDirections()) {
        const Vector2d start = (p == "Spherical") ? Vector2d(d.lambda * f, d.phi * f) : PointOf(p, d, f);
        const Vector2d back = Function(q, p)(Function(p, q)(start, f), f);
        if (!Returns(start, back, f)) returnsEverywhere = false;
      }
      EXPECT_FALSE(returnsEverywhere) << p << " <-> " << q << ": " << NotInvertibleBecause(p, q);
    }
  }
  EXPECT_EQ(14 + 14 + 13 + 13 + 2, named);
}

TEST(ProjectionRoundTrip, StereographicComesBackWithTheLatitudeInRadians) {
  const float f = 611.15f;
  for (const Direction& d : FrontDirections()) {
    const Vector2d e(d.lambda * f, d.phi * f);
    const Vector2d back = Projection::StereographicToEquirectangular(Projection::EquirectangularToStereographic(e, f), f);
    EXPECT_NEAR(e.X, back.X, kTolerance * (f + std::fabs(e.X)));
    EXPECT_NEAR(d.phi, back.Y, 1e-5);
  }
}

TEST(ProjectionRoundTrip, LambertBeyondOneRadianDoesNotReturn) {
  // The arc sine clamps latitudes beyond one radian to pi/2, so they come back as sin(pi/2) = 1.
  const float f = 400.0f;
  const Vector2d e(0.0f, 1.3f * f);
  const Vector2d back =
      Projection::LambertCylindricalToEquirectangular(Projection::EquirectangularToLambertCylindrical(e, f), f);
  EXPECT_NEAR(f, back.Y, 1e-3);
}

}  // namespace
