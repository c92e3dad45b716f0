// Every conversion between two projections against the chain of written-out conversions it
// must be: the composed function returns exactly (bit for bit) what calling its pieces in order
// returns.
#include "projection_test_support.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace {

using namespace projection_test;

// The conversions that are written out and used as they are.
const std::set<std::pair<std::string, std::string>>& WrittenOut() {
  static const std::set<std::pair<std::string, std::string>> written = {
      {"Equirectangular", "Cylindrical"}, {"Cylindrical", "Equirectangular"},
      {"Equirectangular", "Mercator"}, {"Mercator", "Equirectangular"},
      {"Equirectangular", "MillerCylindrical"}, {"MillerCylindrical", "Equirectangular"},
      {"Equirectangular", "LambertCylindrical"}, {"LambertCylindrical", "Equirectangular"},
      {"Equirectangular", "Architectural"}, {"Architectural", "Equirectangular"},
      {"Equirectangular", "EquirectangularPannini"}, {"EquirectangularPannini", "Equirectangular"},
      {"Equirectangular", "Pannini"}, {"Pannini", "Equirectangular"},
      {"Equirectangular", "Stereographic"}, {"Stereographic", "Equirectangular"},
      {"Equirectangular", "Rectilinear"}, {"Rectilinear", "Equirectangular"},
      {"Cylindrical", "Rectilinear"}, {"Rectilinear", "Cylindrical"},
      {"Fisheye", "Mirror"}, {"Mirror", "Fisheye"},
      {"Fisheye", "Equisolid"}, {"Equisolid", "Fisheye"},
      {"Fisheye", "Orthographic"}, {"Orthographic", "Fisheye"},
      {"Fisheye", "Rectilinear"}, {"Rectilinear", "Fisheye"},
      {"Fisheye", "Equirectangular"}, {"Equirectangular", "Fisheye"},
      {"Fisheye", "Cylindrical"}, {"Cylindrical", "Fisheye"},
      {"Cylindrical", "Spherical"}};
  return written;
}

bool IsWritten(const std::string& from, const std::string& to) {
  return WrittenOut().count(std::make_pair(from, to)) != 0;
}

bool IsLensRelative(const std::string& p) {
  return p == "Mirror" || p == "Equisolid" || p == "Orthographic";
}

// The projections a conversion passes through, ends included. Empty for the identity; a
// single element {"invalid"} where no chain exists (out of the polar panorama).
std::vector<std::string> Route(const std::string& from, const std::string& to) {
  if (from == to) return {};
  if (IsWritten(from, to)) return {from, to};
  if (to == "Spherical") {
    std::vector<std::string> r = Route(from, "Cylindrical");
    if (r.size() == 1) return r;
    r.push_back("Spherical");
    return r;
  }
  if (from == "Spherical") return {"invalid"};
  if (IsLensRelative(from) && IsLensRelative(to)) return {from, "Fisheye", to};
  if (IsLensRelative(from)) {
    std::vector<std::string> r = Route("Fisheye", to);
    r.insert(r.begin(), from);
    return r;
  }
  if (IsLensRelative(to)) {
    std::vector<std::string> r = Route(from, "Fisheye");
    r.push_back(to);
    return r;
  }
  return {from, "Equirectangular", to};
}

Vector2d RunRoute(const std::vector<std::string>& route, const Vector2d& p, float f) {
  if (route.empty()) return p;
  if (route.size() == 1) return Vector2d::InvalidVector;
  Vector2d q = p;
  for (size_t i = 0; i + 1 < route.size(); ++i) {
    ProjectionFunction piece = Function(route[i], route[i + 1]);
    q = piece(q, f);
  }
  return q;
}

const std::vector<Vector2d>& SamplePoints() {
  static const std::vector<Vector2d> points = {
      Vector2d(0.0f, 0.0f),      Vector2d(120.5f, -33.25f), Vector2d(-400.0f, 250.0f),
      Vector2d(900.0f, 700.0f),  Vector2d(-1500.0f, -80.0f), Vector2d(3.0f, 2000.0f),
      Vector2d(0.001f, 0.0f),    Vector2d(0.0f, -310.0f),   Vector2d(250.0f, 0.0f),
      Vector2d(-2000.0f, 1200.0f)};
  return points;
}

const std::vector<float>& SampleFocalLengths() {
  static const std::vector<float> lengths = {611.15f, 250.0f, 1000.0f};
  return lengths;
}

TEST(ProjectionComposition, TableCoversAllOrderedPairs) {
  EXPECT_EQ(225u, AllConversions().size());
  std::set<std::pair<std::string, std::string>> seen;
  for (const Conversion& c : AllConversions()) {
    EXPECT_NE(-1, IndexOf(c.from));
    EXPECT_NE(-1, IndexOf(c.to));
    EXPECT_TRUE(c.function != nullptr);
    seen.insert(std::make_pair(c.from, c.to));
  }
  EXPECT_EQ(225u, seen.size());
}

TEST(ProjectionComposition, EveryChainHasAtMostThreeWrittenPieces) {
  for (const Conversion& c : AllConversions()) {
    const std::vector<std::string> r = Route(c.from, c.to);
    if (r.size() < 2) continue;
    EXPECT_LE(r.size(), 4u) << c.from << "To" << c.to;
    for (size_t i = 0; i + 1 < r.size(); ++i) {
      EXPECT_TRUE(IsWritten(r[i], r[i + 1])) << c.from << "To" << c.to << " piece " << r[i] << "To" << r[i + 1];
    }
  }
}

// Every one of the 225 conversions at every sample point and focal length.
TEST(ProjectionComposition, EveryConversionIsExactlyItsChain) {
  int compared = 0;
  for (const Conversion& c : AllConversions()) {
    const std::vector<std::string> r = Route(c.from, c.to);
    for (float f : SampleFocalLengths()) {
      for (const Vector2d& p : SamplePoints()) {
        const Vector2d expected = RunRoute(r, p, f);
        const Vector2d actual = c.function(p, f);
        EXPECT_TRUE(SamePoint(expected, actual))
            << c.from << "To" << c.to << " at " << Show(p) << " f " << f << ": expected "
            << Show(expected) << " got " << Show(actual);
        ++compared;
      }
    }
  }
  EXPECT_EQ(225 * 3 * 10, compared);
}

// The chains spelled out for some pairs, piece by piece.
TEST(ProjectionComposition, NamedChains) {
  const float f = 611.15f;
  for (const Vector2d& p : SamplePoints()) {
    EXPECT_TRUE(SamePoint(Projection::EquirectangularToPannini(Projection::CylindricalToEquirectangular(p, f), f),
                          Projection::CylindricalToPannini(p, f)));
    EXPECT_TRUE(SamePoint(
        Projection::EquirectangularToPannini(
            Projection::FisheyeToEquirectangular(Projection::MirrorToFisheye(p, f), f), f),
        Projection::MirrorToPannini(p, f)));
    EXPECT_TRUE(SamePoint(Projection::FisheyeToEquisolid(Projection::CylindricalToFisheye(p, f), f),
                          Projection::CylindricalToEquisolid(p, f)));
    EXPECT_TRUE(SamePoint(Projection::CylindricalToSpherical(Projection::EquirectangularToCylindrical(p, f), f),
                          Projection::EquirectangularToSpherical(p, f)));
    EXPECT_TRUE(SamePoint(
        Projection::CylindricalToSpherical(
            Projection::EquirectangularToCylindrical(Projection::PanniniToEquirectangular(p, f), f), f),
        Projection::PanniniToSpherical(p, f)));
    EXPECT_TRUE(SamePoint(Projection::CylindricalToSpherical(Projection::FisheyeToCylindrical(p, f), f),
                          Projection::FisheyeToSpherical(p, f)));
    EXPECT_TRUE(SamePoint(Projection::CylindricalToSpherical(Projection::RectilinearToCylindrical(p, f), f),
                          Projection::RectilinearToSpherical(p, f)));
    EXPECT_TRUE(SamePoint(Projection::EquirectangularToRectilinear(Projection::StereographicToEquirectangular(p, f), f),
                          Projection::StereographicToRectilinear(p, f)));
    EXPECT_TRUE(SamePoint(Projection::EquirectangularToPannini(Projection::MercatorToEquirectangular(p, f), f),
                          Projection::MercatorToPannini(p, f)));
    // Fisheye reaches the hub projections through the equirectangular plane, except its own
    // direct conversions.
    EXPECT_TRUE(SamePoint(Projection::EquirectangularToMercator(Projection::FisheyeToEquirectangular(p, f), f),
                          Projection::FisheyeToMercator(p, f)));
    EXPECT_TRUE(SamePoint(Projection::EquirectangularToFisheye(Projection::StereographicToEquirectangular(p, f), f),
                          Projection::StereographicToFisheye(p, f)));
    // Lens relatives meet through the fisheye.
    EXPECT_TRUE(SamePoint(Projection::FisheyeToOrthographic(Projection::MirrorToFisheye(p, f), f),
                          Projection::MirrorToOrthographic(p, f)));
    EXPECT_TRUE(SamePoint(
        Projection::FisheyeToEquisolid(Projection::EquirectangularToFisheye(Projection::PanniniToEquirectangular(p, f), f), f),
        Projection::PanniniToEquisolid(p, f)));
    EXPECT_TRUE(SamePoint(
        Projection::CylindricalToSpherical(Projection::FisheyeToCylindrical(Projection::OrthographicToFisheye(p, f), f), f),
        Projection::OrthographicToSpherical(p, f)));
  }
}

TEST(ProjectionComposition, IdentitiesReturnThePointUnchanged) {
  const Vector2d odd(-0.0f, std::nanf(""));
  for (const std::string& name : Names()) {
    ProjectionFunction identity = Function(name, name);
    for (const Vector2d& p : SamplePoints()) {
      EXPECT_TRUE(SamePoint(p, identity(p, 611.15f))) << name;
    }
    EXPECT_TRUE(SamePoint(odd, identity(odd, 0.0f))) << name;
  }
}

TEST(ProjectionComposition, NothingLeadsOutOfThePolarPanorama) {
  for (const std::string& name : Names()) {
    if (name == "Spherical") continue;
    for (const Vector2d& p : SamplePoints()) {
      const Vector2d r = Function("Spherical", name)(p, 611.15f);
      EXPECT_TRUE(std::isnan(r.X) && std::isnan(r.Y)) << "SphericalTo" << name;
    }
  }
}

}  // namespace
