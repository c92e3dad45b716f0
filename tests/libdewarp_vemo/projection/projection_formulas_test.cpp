// The written-out conversions against the same mathematics evaluated here in double precision,
// and the engine's deliberate peculiarities of each.
#include "projection_test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using namespace projection_test;

const double kPi = 3.14159265358979323846;

struct Point {
  double x, y;
};

typedef std::function<Point(double, double, double)> Reference;

struct Case {
  const char* from;
  const char* to;
  Reference reference;
  std::vector<Point> points;  // points inside the conversion's domain, in units of f
};

Point Polar(double radius, double x, double y) {
  const double a = std::atan2(y, x);
  return {radius * std::cos(a), radius * std::sin(a)};
}

// Longitude and polar angle of an equirectangular point, folded over the poles.
void Fold(double x, double y, double f, double& lambda, double& t) {
  lambda = x / f;
  t = kPi / 2 - y / f;
  if (t < 0) {
    t = -t;
    lambda += kPi;
  }
  if (t > kPi) {
    t = kPi - (t - kPi);
    lambda += kPi;
  }
}

std::vector<Case> Cases() {
  const std::vector<Point> hub = {{0.3, 0.2}, {-1.1, -0.6}, {2.0, 0.9}, {-0.05, -1.2}, {0.7, 0.0}};
  const std::vector<Point> lambertHub = {{0.3, 0.2}, {-1.1, -0.6}, {2.0, 0.9}, {-0.05, -0.95}};
  const std::vector<Point> plane = {{0.3, 0.2}, {-1.1, -0.6}, {2.0, 0.9}, {-0.05, -1.2}, {0.01, 0.02}};
  const std::vector<Point> lens = {{0.3, 0.2}, {-1.1, -0.6}, {1.2, 0.9}, {-0.05, -1.2}, {0.01, 0.02}};
  const std::vector<Point> front = {{0.3, 0.2}, {-1.1, -0.6}, {1.2, 0.9}, {-0.05, -1.2}};
  std::vector<Case> cases;
  cases.push_back({"Equirectangular", "Cylindrical",
                   [](double x, double y, double f) { return Point{x, f * std::tan(y / f)}; }, hub});
  cases.push_back({"Cylindrical", "Equirectangular",
                   [](double x, double y, double f) { return Point{x, f * std::atan2(y, f)}; }, plane});
  cases.push_back({"Equirectangular", "Mercator",
                   [](double x, double y, double f) {
                     const double phi = y / f;
                     return Point{x, f * std::log(1 / std::cos(phi) + std::tan(phi))};
                   },
                   hub});
  cases.push_back({"Mercator", "Equirectangular",
                   [](double x, double y, double f) { return Point{x, f * std::atan(std::sinh(y / f))}; }, plane});
  cases.push_back({"Equirectangular", "MillerCylindrical",
                   [](double x, double y, double f) {
                     return Point{x, f * std::log(std::tan(0.4 * y / f + kPi / 4)) / 0.8};
                   },
                   hub});
  cases.push_back({"MillerCylindrical", "Equirectangular",
                   [](double x, double y, double f) { return Point{x, f * 1.25 * std::atan(std::sinh(0.8 * y / f))}; },
                   plane});
  // The Lambert pair: arc sine forward, sine back.
  cases.push_back({"Equirectangular", "LambertCylindrical",
                   [](double x, double y, double f) { return Point{x, f * std::asin(y / f)}; }, lambertHub});
  cases.push_back({"LambertCylindrical", "Equirectangular",
                   [](double x, double y, double f) { return Point{x, f * std::sin(y / f)}; }, plane});
  cases.push_back({"Equirectangular", "Architectural",
                   [](double x, double y, double f) {
                     const double phi = y / f;
                     if (phi < 0) return Point{x, f * std::log(std::tan(0.4 * phi + kPi / 4)) / 0.8};
                     return Point{x, f * std::asin(phi)};
                   },
                   lambertHub});
  cases.push_back({"Architectural", "Equirectangular",
                   [](double x, double y, double f) {
                     const double phi = y / f;
                     if (phi < 0) return Point{x, f * 1.25 * std::atan(std::sinh(0.8 * phi))};
                     return Point{x, f * std::sin(phi)};
                   },
                   plane});
  cases.push_back({"Equirectangular", "EquirectangularPannini",
                   [](double x, double y, double f) {
                     const double h = x / (2 * f);
                     return Point{2 * f * std::tan(h), f * std::tan(y / f) / (std::cos(h) * std::cos(h))};
                   },
                   hub});
  cases.push_back({"EquirectangularPannini", "Equirectangular",
                   [](double x, double y, double f) {
                     const double a = std::atan2(x / f, 2.0);
                     return Point{2 * f * a, f * std::atan(std::cos(a) * std::cos(a) * y / f)};
                   },
                   plane});
  // The plain Pannini pair applies tan and atan twice.
  cases.push_back({"Equirectangular", "Pannini",
                   [](double x, double y, double f) {
                     const double h = x / (2 * f);
                     return Point{2 * f * std::tan(h), f * std::tan(std::tan(y / f)) / (std::cos(h) * std::cos(h))};
                   },
                   {{0.3, 0.2}, {-1.1, -0.6}, {2.0, 0.9}, {0.7, 0.0}}});
  cases.push_back({"Pannini", "Equirectangular",
                   [](double x, double y, double f) {
                     const double a = std::atan2(x / f, 2.0);
                     return Point{2 * f * a, f * std::atan(std::atan(std::cos(a) * std::cos(a) * y / f))};
                   },
                   plane});
  cases.push_back({"Equirectangular", "Stereographic",
                   [](double x, double y, double f) {
                     const double l = x / f, p = y / f;
                     const double k = 2 * f / (std::cos(p) * std::cos(l) + 1);
                     return Point{k * std::cos(p) * std::sin(l), k * std::sin(p)};
                   },
                   hub});
  // The latitude comes back in radians.
  cases.push_back({"Stereographic", "Equirectangular",
                   [](double x, double y, double f) {
                     const double u = x / f, v = y / f, rho = std::hypot(u, v), c = 2 * std::atan2(rho, 2.0);
                     return Point{f * std::atan2(u * std::sin(c), rho * std::cos(c)), std::asin(std::sin(c) * v / rho)};
                   },
                   plane});
  cases.push_back({"Equirectangular", "Rectilinear",
                   [](double x, double y, double f) {
                     double l, t;
                     Fold(x, y, f, l, t);
                     return Point{f * std::tan(l), f / (std::cos(l) * std::tan(t))};
                   },
                   {{0.3, 0.2}, {-1.1, -0.6}, {1.2, 0.9}, {-0.05, -1.2}, {0.2, 1.9}, {0.2, -1.9}}});
  cases.push_back({"Rectilinear", "Equirectangular",
                   [](double x, double y, double f) {
                     // Longitude of the ray (x, y, f) and its latitude.
                     return Point{f * std::atan2(x, f), f * std::atan2(y, std::hypot(x, f))};
                   },
                   plane});
  cases.push_back({"Cylindrical", "Rectilinear",
                   [](double x, double y, double f) { return Point{f * std::tan(x / f), y / std::cos(x / f)}; },
                   front});
  // The vertical divides by acos of the normalised horizontal coordinate.
  cases.push_back({"Rectilinear", "Cylindrical",
                   [](double x, double y, double f) { return Point{f * std::atan2(x, f), y / std::acos(x / f)}; },
                   {{0.3, 0.2}, {-0.9, -0.6}, {0.6, 0.9}, {-0.05, -1.2}}});
  cases.push_back({"Fisheye", "Mirror",
                   [](double x, double y, double f) { return Polar(f * std::sin(std::hypot(x, y) / (2 * f)), x, y); },
                   lens});
  cases.push_back({"Mirror", "Fisheye",
                   [](double x, double y, double f) { return Polar(2 * f * std::asin(std::hypot(x, y) / f), x, y); },
                   {{0.3, 0.2}, {-0.6, -0.6}, {0.01, 0.02}}});
  cases.push_back({"Fisheye", "Equisolid",
                   [](double x, double y, double f) { return Polar(2 * f * std::sin(std::hypot(x, y) / (2 * f)), x, y); },
                   lens});
  cases.push_back({"Equisolid", "Fisheye",
                   [](double x, double y, double f) { return Polar(2 * f * std::asin(std::hypot(x, y) / (2 * f)), x, y); },
                   lens});
  cases.push_back({"Fisheye", "Orthographic",
                   [](double x, double y, double f) { return Polar(f * std::sin(std::hypot(x, y) / f), x, y); }, lens});
  cases.push_back({"Orthographic", "Fisheye",
                   [](double x, double y, double f) { return Polar(f * std::asin(std::hypot(x, y) / f), x, y); },
                   {{0.3, 0.2}, {-0.6, -0.6}, {0.01, 0.02}}});
  cases.push_back({"Fisheye", "Rectilinear",
                   [](double x, double y, double f) { return Polar(f * std::tan(std::hypot(x, y) / f), x, y); },
                   {{0.3, 0.2}, {-0.6, -0.6}, {0.01, 0.02}, {-1.0, 0.9}}});
  cases.push_back({"Rectilinear", "Fisheye",
                   [](double x, double y, double f) { return Polar(f * std::atan(std::hypot(x, y) / f), x, y); },
                   plane});
  cases.push_back({"Fisheye", "Equirectangular",
                   [](double x, double y, double f) {
                     const double r = std::hypot(x, y), t = r / f;
                     const double dx = std::sin(t) * x / r, dy = std::sin(t) * y / r, dz = std::cos(t);
                     return Point{f * std::atan2(dx, dz), f * std::asin(dy)};
                   },
                   lens});
  cases.push_back({"Equirectangular", "Fisheye",
                   [](double x, double y, double f) {
                     double l, t;
                     Fold(x, y, f, l, t);
                     const double dx = std::sin(t) * std::sin(l), dy = std::cos(t), dz = std::sin(t) * std::cos(l);
                     const double rho = std::hypot(dx, dy);
                     return Point{f * std::atan2(rho, dz) * dx / rho, f * std::atan2(rho, dz) * dy / rho};
                   },
                   {{0.3, 0.2}, {-1.1, -0.6}, {2.0, 0.9}, {-0.05, -1.2}, {0.7, 0.0}, {0.2, 1.9}}});
  cases.push_back({"Fisheye", "Cylindrical",
                   [](double x, double y, double f) {
                     const double r = std::hypot(x, y), t = r / f;
                     const double dx = std::sin(t) * x / r, dy = std::sin(t) * y / r, dz = std::cos(t);
                     return Point{f * std::atan2(dx, dz), f * dy / std::hypot(dx, dz)};
                   },
                   {{0.3, 0.2}, {-1.1, -0.6}, {1.2, 0.9}, {0.01, 0.02}}});
  cases.push_back({"Cylindrical", "Fisheye",
                   [](double x, double y, double f) {
                     // The ray (sin lambda, y / f, cos lambda) at its angle from the axis.
                     const double l = x / f, hx = std::sin(l), hy = y / f;
                     const double t = std::atan2(std::hypot(hx, hy), std::cos(l));
                     return Polar(f * t, hx, hy);
                   },
                   plane});
  cases.push_back({"Cylindrical", "Spherical",
                   [](double x, double y, double f) {
                     const double a = -x / (f * kPi / 2);
                     const double r = (kPi / 2 + std::atan2(y, f * kPi / 2)) * f;
                     return Point{r * std::cos(a), r * std::sin(a)};
                   },
                   plane});
  return cases;
}

// Every written-out conversion agrees with the double-precision evaluation within the rounding of
// single precision: 2e-5 of (f + |result|).
TEST(ProjectionFormulas, WrittenConversionsMatchTheirMathematics) {
  const std::vector<Case> cases = Cases();
  EXPECT_EQ(33u, cases.size());
  for (const Case& c : cases) {
    ProjectionFunction function = Function(c.from, c.to);
    ASSERT_TRUE(function != nullptr) << c.from << "To" << c.to;
    for (double f : {611.15, 250.0}) {
      for (const Point& unit : c.points) {
        const Point p = {unit.x * f, unit.y * f};
        const Point expected = c.reference(p.x, p.y, f);
        const Vector2d actual = function(Vector2d(static_cast<float>(p.x), static_cast<float>(p.y)),
                                         static_cast<float>(f));
        EXPECT_TRUE(Near(actual.X, expected.x, 2e-5 * (f + std::fabs(expected.x))))
            << c.from << "To" << c.to << " x at (" << p.x << ", " << p.y << "): " << actual.X << " vs " << expected.x;
        EXPECT_TRUE(Near(actual.Y, expected.y, 2e-5 * (f + std::fabs(expected.y))))
            << c.from << "To" << c.to << " y at (" << p.x << ", " << p.y << "): " << actual.Y << " vs " << expected.y;
      }
    }
  }
}

// ---- The engine's own definitions, kept as they are ----------------------------------------

TEST(ProjectionFormulas, LambertForwardTakesTheArcSine) {
  const float f = 400.0f;
  const Vector2d r = Projection::EquirectangularToLambertCylindrical(Vector2d(10.0f, 0.5f * f), f);
  EXPECT_FLOAT_EQ(10.0f, r.X);
  EXPECT_NEAR(f * kPi / 6, r.Y, 1e-3);  // asin(0.5) = pi/6, not sin(0.5)
  const Vector2d back = Projection::LambertCylindricalToEquirectangular(Vector2d(10.0f, f * kPi / 6), f);
  EXPECT_NEAR(0.5 * f, back.Y, 1e-3);
}

TEST(ProjectionFormulas, LambertLatitudesBeyondOneRadianAreClamped) {
  const float f = 400.0f;
  // asin of 1.2 is clamped to pi/2.
  EXPECT_NEAR(f * kPi / 2, Projection::EquirectangularToLambertCylindrical(Vector2d(0.0f, 1.2f * f), f).Y, 1e-3);
}

TEST(ProjectionFormulas, PanniniAppliesTanTwiceEquirectangularPanniniOnce) {
  const float f = 500.0f;
  const Vector2d p(0.0f, 0.5f * f);
  EXPECT_NEAR(f * std::tan(std::tan(0.5)), Projection::EquirectangularToPannini(p, f).Y, 1e-2);
  EXPECT_NEAR(f * std::tan(0.5), Projection::EquirectangularToEquirectangularPannini(p, f).Y, 1e-2);
  const Vector2d q(0.0f, 0.8f * f);
  EXPECT_NEAR(f * std::atan(std::atan(0.8)), Projection::PanniniToEquirectangular(q, f).Y, 1e-2);
  EXPECT_NEAR(f * std::atan(0.8), Projection::EquirectangularPanniniToEquirectangular(q, f).Y, 1e-2);
}

TEST(ProjectionFormulas, StereographicInverseGivesTheLatitudeInRadians) {
  const float f = 500.0f;
  const Vector2d s = Projection::EquirectangularToStereographic(Vector2d(0.2f * f, 0.3f * f), f);
  const Vector2d back = Projection::StereographicToEquirectangular(s, f);
  EXPECT_NEAR(0.2 * f, back.X, 1e-2);
  EXPECT_NEAR(0.3, back.Y, 1e-5);  // radians, not 0.3 * f
}

TEST(ProjectionFormulas, RectilinearToCylindricalDividesByTheArcCosine) {
  const float f = 500.0f;
  const Vector2d r = Projection::RectilinearToCylindrical(Vector2d(0.0f, 100.0f), f);
  EXPECT_FLOAT_EQ(0.0f, r.X);
  EXPECT_NEAR(100.0 / (kPi / 2), r.Y, 1e-3);  // acos(0) = pi/2, where cos(0) would leave 100
}

TEST(ProjectionFormulas, FisheyeToRectilinearLimitsTheAngleToAQuarterTurn) {
  const float f = 300.0f;
  // Any radius beyond f * pi/2 gives the same result as f * pi/2 itself.
  const Vector2d limit = Projection::FisheyeToRectilinear(Vector2d(f * 1.5707964f, 0.0f), f);
  const Vector2d beyond = Projection::FisheyeToRectilinear(Vector2d(f * 2.5f, 0.0f), f);
  EXPECT_TRUE(SamePoint(limit, beyond)) << Show(limit) << " " << Show(beyond);
  EXPECT_GT(std::fabs(limit.X), 1e6f);
}

TEST(ProjectionFormulas, RectilinearToFisheyeLeavesTheCentre) {
  EXPECT_TRUE(SamePoint(Vector2d(0.0f, 0.0f), Projection::RectilinearToFisheye(Vector2d(0.0f, 0.0f), 500.0f)));
}

TEST(ProjectionFormulas, EquirectangularToFisheyeFoldsOverThePole) {
  const float f = 500.0f;
  // 0.3 rad beyond the north pole on longitude 0 is latitude pi/2 - 0.3 on longitude pi.
  const float beyond = static_cast<float>(kPi / 2 + 0.3) * f;
  const float same = static_cast<float>(kPi / 2 - 0.3) * f;
  const Vector2d a = Projection::EquirectangularToFisheye(Vector2d(0.0f, beyond), f);
  const Vector2d b = Projection::EquirectangularToFisheye(Vector2d(static_cast<float>(kPi) * f, same), f);
  EXPECT_NEAR(b.X, a.X, 1e-2);
  EXPECT_NEAR(b.Y, a.Y, 1e-2);
  // The direction lies 0.3 rad behind the zenith, pi/2 + 0.3 from the axis, straight up.
  EXPECT_NEAR(0.0, a.X, 1e-2);
  EXPECT_NEAR((kPi / 2 + 0.3) * f, a.Y, 1e-2);
}

TEST(ProjectionFormulas, SphericalIsAPolarPanorama) {
  const float f = 200.0f;
  // The horizon (y = 0) lies on the circle of radius f * pi/2; the longitude turns it.
  const Vector2d r = Projection::CylindricalToSpherical(Vector2d(0.0f, 0.0f), f);
  EXPECT_NEAR(f * kPi / 2, r.X, 1e-3);
  EXPECT_NEAR(0.0, r.Y, 1e-3);
  const Vector2d q = Projection::CylindricalToSpherical(Vector2d(f * static_cast<float>(kPi) / 4, 0.0f), f);
  EXPECT_NEAR(f * kPi / 2 * std::cos(-0.5), q.X, 1e-2);
  EXPECT_NEAR(f * kPi / 2 * std::sin(-0.5), q.Y, 1e-2);
}

TEST(ProjectionFormulas, DirectionVectors) {
  const float f = 500.0f;
  const vemo::libdewarp::Vector3d ahead = Projection::EquirectangularToVector3d(Vector2d(0.0f, 0.0f), f);
  EXPECT_FLOAT_EQ(0.0f, ahead.X);
  EXPECT_FLOAT_EQ(0.0f, ahead.Y);
  EXPECT_FLOAT_EQ(-1.0f, ahead.Z);
  // Longitude pi/2 to the right is +X; latitude pi/2 is +Y.
  const vemo::libdewarp::Vector3d right = Projection::EquirectangularToVector3d(Vector2d(f * 1.5707964f, 0.0f), f);
  EXPECT_NEAR(1.0, right.X, 1e-6);
  EXPECT_NEAR(0.0, right.Y, 1e-6);
  EXPECT_NEAR(0.0, right.Z, 1e-6);
  const vemo::libdewarp::Vector3d up = Projection::EquirectangularToVector3d(Vector2d(0.0f, f * 1.5707964f), f);
  EXPECT_NEAR(0.0, up.X, 1e-6);
  EXPECT_NEAR(1.0, up.Y, 1e-6);
  EXPECT_NEAR(0.0, up.Z, 1e-6);
  // A vector of any length comes back to its longitude and latitude.
  const Vector2d back = Projection::Vector3dToEquirectangular(vemo::libdewarp::Vector3d(2.0f, 2.0f, -2.0f * std::sqrt(2.0f)), f);
  EXPECT_NEAR(f * std::atan2(2.0, 2.0 * std::sqrt(2.0)), back.X, 1e-3);
  EXPECT_NEAR(f * kPi / 6, back.Y, 1e-3);
  for (const Point& d : {Point{0.3, 0.2}, Point{-2.0, -0.9}, Point{1.0, 1.3}}) {
    const Vector2d e(static_cast<float>(d.x) * f, static_cast<float>(d.y) * f);
    const Vector2d r = Projection::Vector3dToEquirectangular(Projection::EquirectangularToVector3d(e, f), f);
    EXPECT_NEAR(e.X, r.X, 1e-2);
    EXPECT_NEAR(e.Y, r.Y, 1e-2);
  }
}

TEST(ProjectionFormulas, ZeroVectorHasNoDirection) {
  const Vector2d r = Projection::Vector3dToEquirectangular(vemo::libdewarp::Vector3d(0.0f, 0.0f, 0.0f), 500.0f);
  EXPECT_FALSE(r.Valid());
}

}  // namespace
