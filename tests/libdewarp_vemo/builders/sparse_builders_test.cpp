// The sparse family: call counts, agreement with the dense build for affine functors, borders and
// NaN regions.
#include <libdewarp_vemo/grid_map_builder.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/sparse_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder_2.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using ::vemo::test::CountingFunctor;

using test::AffineFunctor;
using test::IsNan;
using test::MapX;
using test::MapY;

struct Case {
  Resolution out;
  Resolution crop;
};

const Case kCases[] = {
    {Resolution(4, 4), Resolution(4, 4)},   {Resolution(5, 5), Resolution(5, 5)},
    {Resolution(1, 1), Resolution(1, 1)},   {Resolution(2, 3), Resolution(2, 3)},
    {Resolution(17, 9), Resolution(17, 9)}, {Resolution(33, 20), Resolution(20, 11)},
    {Resolution(64, 48), Resolution(64, 48)}, {Resolution(41, 27), Resolution(30, 27)},
};

// Compares a sparse build with the dense build of the same functor over the crop; pixels for which
// `checked` is false are skipped. Both NaN counts as equal.
template <class F>
void ExpectMatchesDense(const ImageMap& sparse, const ImageMap& dense, float tolerance, F checked) {
  ASSERT_EQ(dense.GetMapWidth(), sparse.GetMapWidth());
  ASSERT_EQ(dense.GetMapHeight(), sparse.GetMapHeight());
  EXPECT_EQ(dense.GetInputSize(), sparse.GetInputSize());
  for (unsigned row = 0; row < dense.GetMapHeight(); ++row) {
    for (unsigned col = 0; col < dense.GetMapWidth(); ++col) {
      if (IsNan(dense, col, row)) {
        ASSERT_TRUE(IsNan(sparse, col, row)) << col << "," << row;
        continue;
      }
      if (!checked(col, row)) {
        continue;
      }
      ASSERT_NEAR(MapX(dense, col, row), MapX(sparse, col, row), tolerance) << col << "," << row;
      ASSERT_NEAR(MapY(dense, col, row), MapY(sparse, col, row), tolerance) << col << "," << row;
    }
  }
}

template <class B>
class SparseFamily : public ::testing::Test {};

// Builders whose borders are evaluated rather than extrapolated: equal to the dense build for an
// affine functor at every pixel.
typedef ::testing::Types<GridMapBuilder, SparseMapBuilder2, SparseQuadrantMapBuilder> ExactBorderBuilders;
TYPED_TEST_SUITE(SparseFamily, ExactBorderBuilders);

TYPED_TEST(SparseFamily, AffineFunctorGivesTheDenseMapEverywhere) {
  for (const Case& c : kCases) {
    AffineFunctor f(1.5f, 7.25f, -0.75f, 3.5f);
    AffineFunctor g(1.5f, 7.25f, -0.75f, 3.5f);
    std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(Resolution(200, 100), c.out, f, c.crop));
    std::unique_ptr<ImageMap> sparse(TypeParam().BuildImageMap(Resolution(200, 100), c.out, g, c.crop));
    SCOPED_TRACE(testing::Message() << c.out.X << "x" << c.out.Y << " crop " << c.crop.X << "x" << c.crop.Y);
    ExpectMatchesDense(*sparse, *dense, 1e-3f, [](unsigned, unsigned) { return true; });
    EXPECT_LE(g.calls, f.calls);
  }
}

TYPED_TEST(SparseFamily, MixedAffineFunctorGivesTheDenseMap) {
  test::MixedAffineFunctor f, g;
  std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(Resolution(90, 70), Resolution(37, 29), f));
  std::unique_ptr<ImageMap> sparse(TypeParam().BuildImageMap(Resolution(90, 70), Resolution(37, 29), g));
  ExpectMatchesDense(*sparse, *dense, 1e-3f, [](unsigned, unsigned) { return true; });
  EXPECT_LT(g.calls, f.calls / 2);
}

TYPED_TEST(SparseFamily, NanRegionsAreEvaluatedPixelByPixel) {
  AffineFunctor a(2, 0, 2, 0), b(2, 0, 2, 0);
  test::NanBeyondFunctor f(a, 3.0f), g(b, 3.0f);
  std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(Resolution(90, 70), Resolution(24, 16), f));
  std::unique_ptr<ImageMap> sparse(TypeParam().BuildImageMap(Resolution(90, 70), Resolution(24, 16), g));
  // Columns 15.. (x >= 3) are NaN in the dense map; the sparse map must be NaN there too and exact
  // everywhere else.
  EXPECT_TRUE(IsNan(*dense, 15, 0));
  EXPECT_FALSE(IsNan(*dense, 14, 0));
  ExpectMatchesDense(*sparse, *dense, 1e-3f, [](unsigned, unsigned) { return true; });
  for (unsigned row = 0; row < 16; ++row) {
    for (unsigned col = 15; col < 24; ++col) {
      ASSERT_TRUE(IsNan(*sparse, col, row)) << col << "," << row;
    }
  }
}

TYPED_TEST(SparseFamily, FunctorFailurePropagates) {
  test::ThrowingFunctor f(3);
  EXPECT_THROW(TypeParam().BuildImageMap(Resolution(10, 10), Resolution(16, 16), f), std::runtime_error);
}

TYPED_TEST(SparseFamily, ZeroSizedOutputYieldsAnEmptyMap) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(TypeParam().BuildImageMap(Resolution(10, 10), Resolution(0, 0), f));
  EXPECT_EQ(0u, map->GetMapWidth());
  EXPECT_EQ(0, f.calls);
}

// SparseMapBuilder: four passes; the functor only on the lattice of even offsets.

TEST(SparseMapBuilder, FourByFourCallsTheFunctorFourTimesOnTheLattice) {
  AffineFunctor f(1, 0, 1, 0);
  f.record = true;
  std::unique_ptr<ImageMap> map(SparseMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(4, 4), f));
  ASSERT_EQ(4, f.calls);
  // Offsets (0,0), (2,0), (0,2), (2,2) from the top-left corner (-2, -2) of the centred crop.
  EXPECT_EQ(Vector2d(-2, -2), f.points[0]);
  EXPECT_EQ(Vector2d(0, -2), f.points[1]);
  EXPECT_EQ(Vector2d(-2, 0), f.points[2]);
  EXPECT_EQ(Vector2d(0, 0), f.points[3]);
  for (unsigned row = 0; row < 4; ++row) {
    for (unsigned col = 0; col < 4; ++col) {
      EXPECT_FALSE(IsNan(*map, col, row)) << col << "," << row;
    }
  }
}

TEST(SparseMapBuilder, CallsOnlyOnePixelInFour) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(SparseMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(40, 30), f));
  EXPECT_EQ(20 * 15, f.calls);
  AffineFunctor g(1, 0, 1, 0);
  std::unique_ptr<ImageMap> odd(SparseMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(41, 31), g));
  EXPECT_EQ(21 * 16, g.calls);
}

// Whether crop pixel (k, j) of a SparseMapBuilder build is averaged only from pixels inside the
// crop (recursively): lattice pixels always; centres need their four diagonal neighbours; edge
// pixels need their four direct neighbours, each itself fully supported.
bool NeighboursInside(int k, int j, int cols, int rows) {
  auto inside = [=](int x, int y) { return x >= 0 && y >= 0 && x < cols && y < rows; };
  if (!inside(k, j)) {
    return false;
  }
  const bool oddK = (k % 2) != 0, oddJ = (j % 2) != 0;
  if (!oddK && !oddJ) {
    return true;
  }
  if (oddK && oddJ) {
    return inside(k - 1, j - 1) && inside(k + 1, j - 1) && inside(k - 1, j + 1) && inside(k + 1, j + 1);
  }
  return NeighboursInside(k, j - 1, cols, rows) && NeighboursInside(k, j + 1, cols, rows) &&
         NeighboursInside(k - 1, j, cols, rows) && NeighboursInside(k + 1, j, cols, rows);
}

TEST(SparseMapBuilder, AffineFunctorGivesTheDenseMapWhereAllNeighboursAreInside) {
  for (const Case& c : kCases) {
    AffineFunctor f(1.5f, 7.25f, -0.75f, 3.5f);
    AffineFunctor g(1.5f, 7.25f, -0.75f, 3.5f);
    std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(Resolution(200, 100), c.out, f, c.crop));
    std::unique_ptr<ImageMap> sparse(SparseMapBuilder().BuildImageMap(Resolution(200, 100), c.out, g, c.crop));
    SCOPED_TRACE(testing::Message() << c.out.X << "x" << c.out.Y << " crop " << c.crop.X << "x" << c.crop.Y);
    // The crop occupies columns (W - w)/2 .. +w-1 and the matching rows. A pixel is checked when
    // every neighbour it averages lies inside the crop, and so do theirs in turn.
    const unsigned col0 = static_cast<unsigned>((c.out.X - c.crop.X) / 2);
    const unsigned row0 = static_cast<unsigned>((c.out.Y - c.crop.Y) / 2);
    const int cols = static_cast<int>(c.crop.X), rows = static_cast<int>(c.crop.Y);
    ExpectMatchesDense(*sparse, *dense, 1e-3f, [=](unsigned col, unsigned row) {
      return NeighboursInside(static_cast<int>(col - col0), static_cast<int>(row - row0), cols, rows);
    });
  }
}

TEST(SparseMapBuilder, BorderPixelsAverageTheNeighboursThatExist) {
  // 4 x 4: the last column and row have odd offsets, so their pixels lack east or south
  // neighbours. With A(k, j) the affine value at crop pixel (k, j):
  //   (3, 1) centre pass: NW (2,0), SW (2,2) -> A(2, 1)
  //   (3, 3) centre pass: NW (2,2) only -> A(2, 2)
  //   (1, 3) centre pass: NW (0,2), NE (2,2) -> A(1, 2)
  //   (2, 3) vertical edge: N (2,2), E (3,3) = A(2,2), W (1,3) = A(1,2) -> mean
  //   (3, 0) horizontal edge: S (3,1) = A(2,1), W (2,0) -> mean
  AffineFunctor f(2, 10, 4, 20);
  std::unique_ptr<ImageMap> map(SparseMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(4, 4), f));
  auto A = [&](float k, float j) { return f.Expected(k - 2, j - 2); };
  auto expectAt = [&](unsigned k, unsigned j, const Vector2d& e) {
    EXPECT_FLOAT_EQ(e.X, MapX(*map, k, j)) << k << "," << j;
    EXPECT_FLOAT_EQ(e.Y, MapY(*map, k, j)) << k << "," << j;
  };
  expectAt(3, 1, A(2, 1));
  expectAt(3, 3, A(2, 2));
  expectAt(1, 3, A(1, 2));
  expectAt(2, 3, (A(2, 2) + A(2, 2) + A(1, 2)) / 3.0f);
  expectAt(3, 0, (A(2, 1) + A(2, 0)) / 2.0f);
}

TEST(SparseMapBuilder, NanNeighboursAreLeftOutOfTheMean) {
  // NaN for x >= 0: the lattice column at offset 2 (x = 0) is NaN. Pixel (1, 1) then averages
  // NW (0,0) and SW (0,2) only, i.e. A(0, 1); pixel (1, 0) averages W (0,0) and S (1,1).
  AffineFunctor a(2, 10, 4, 20);
  test::NanBeyondFunctor f(a, 0.0f);
  std::unique_ptr<ImageMap> map(SparseMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(4, 4), f));
  auto A = [&](float k, float j) { return a.Expected(k - 2, j - 2); };
  EXPECT_FLOAT_EQ(A(0, 1).X, MapX(*map, 1, 1));
  EXPECT_FLOAT_EQ(A(0, 1).Y, MapY(*map, 1, 1));
  const Vector2d e = (A(0, 0) + A(0, 1)) / 2.0f;
  EXPECT_FLOAT_EQ(e.X, MapX(*map, 1, 0));
  EXPECT_FLOAT_EQ(e.Y, MapY(*map, 1, 0));
  EXPECT_TRUE(IsNan(*map, 2, 0));
  EXPECT_TRUE(IsNan(*map, 2, 2));
  // (3, 1) has only NaN diagonal neighbours (2,0) and (2,2): it stays NaN.
  EXPECT_TRUE(IsNan(*map, 3, 1));
}

TEST(SparseMapBuilder, SmallerCropLeavesNanOutside) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(
      SparseMapBuilder().BuildImageMap(Resolution(20, 20), Resolution(10, 8), f, Resolution(6, 4)));
  EXPECT_EQ(3 * 2, f.calls);
  for (unsigned row = 0; row < 8; ++row) {
    for (unsigned col = 0; col < 10; ++col) {
      const bool inside = col >= 2 && col <= 7 && row >= 2 && row <= 5;
      EXPECT_EQ(!inside, IsNan(*map, col, row)) << col << "," << row;
    }
  }
}

// Lattice-based builders: call counts follow from their lattices.

TEST(GridMapBuilder, CallsTheFunctorOnlyOnTheEightPixelLattice) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(GridMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(17, 17), f));
  EXPECT_EQ(3 * 3, f.calls);  // lines 0, 8, 16 on both axes
  AffineFunctor g(1, 0, 1, 0);
  std::unique_ptr<ImageMap> other(GridMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(20, 10), g));
  EXPECT_EQ(4 * 2 + 4, g.calls);  // columns 0, 8, 16, 19; rows 0, 8, 9
}

TEST(GridMapBuilder, InterpolatesCurvedFunctorsBilinearly) {
  // x^2 / 8 sampled at x = a and a + 8: the straight line misses the middle by 64 / 32 = 2.
  test::QuadraticFunctor f;
  std::unique_ptr<ImageMap> map(GridMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(17, 1), f));
  EXPECT_EQ(3, f.calls);
  // Column 4: x = -4.5, between x = -8.5 (column 0) and x = -0.5 (column 8).
  const float sampled = (8.5f * 8.5f / 8 + 0.5f * 0.5f / 8) / 2;
  EXPECT_FLOAT_EQ(sampled, MapX(*map, 4, 0));
  EXPECT_FLOAT_EQ(4.5f * 4.5f / 8 + 2, sampled);
}

TEST(SparseMapBuilder2, CallsTheFunctorOnEverySecondPixelOfEverySecondRowAndOnTheBorders) {
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(SparseMapBuilder2().BuildImageMap(Resolution(10, 10), Resolution(4, 4), f));
  EXPECT_EQ(3 * 3, f.calls);  // rows 0, 2, 3 and columns 0, 2, 3
  AffineFunctor g(1, 0, 1, 0);
  std::unique_ptr<ImageMap> odd(SparseMapBuilder2().BuildImageMap(Resolution(10, 10), Resolution(41, 31), g));
  EXPECT_EQ(21 * 16, g.calls);
}

TEST(SparseQuadrantMapBuilder, LatticeRunsFromTheCentreAndEachCellIsChecked) {
  AffineFunctor f(1, 0, 1, 0);
  f.record = true;
  std::unique_ptr<ImageMap> map(SparseQuadrantMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(9, 9), f));
  // Lines 0, 4, 8 on both axes (the centre pixel 4 and the borders; the next line outward would
  // lie 8 pixels out, beyond them): 9 crossings, then one check at the middle of each of the 4
  // cells.
  EXPECT_EQ(9 + 4, f.calls);
  bool centre = false;
  for (const Vector2d& p : f.points) {
    centre = centre || p == Vector2d(-0.5f, -0.5f);  // pixel (4, 4) of a 9 x 9 map
  }
  EXPECT_TRUE(centre);
  AffineFunctor g(1, 0, 1, 0);
  g.record = true;
  std::unique_ptr<ImageMap> wide(SparseQuadrantMapBuilder().BuildImageMap(Resolution(10, 10), Resolution(25, 10), g));
  // Columns 0, 4, 12, 20, 24 (the centre 12, then every 8 pixels outward, ending on the borders);
  // rows 0, 5, 9 (centre 5): 15 crossings; 4 x 2 cells, each at least 2 pixels across both ways,
  // so each has a middle pixel to check.
  EXPECT_EQ(15 + 8, g.calls);
  // The crossing of column 4 and row 0 is evaluated: column 4 lies at x = -12.5 + 4.
  bool crossing = false;
  for (const Vector2d& p : g.points) {
    crossing = crossing || p == Vector2d(-8.5f, -5.0f);
  }
  EXPECT_TRUE(crossing);
}

// (x, y) -> (x^2 / k, y): bent along x only, so a bilinear cell w pixels wide misses the curve by
// w^2 / (4 k) at its middle column, and by no more anywhere else in the cell.
class QuadraticAlongX : public MapFunctor {
public:
  explicit QuadraticAlongX(float k) : m_k(k) {}
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    return Vector2d(p.X * p.X / m_k, p.Y);
  }
  long calls = 0;

private:
  float m_k;
};

TEST(SparseQuadrantMapBuilder, CellsThatMissTheirMiddleAreRefinedUntilWithinTheThreshold) {
  // 17 x 9: columns 0, 8, 16 and rows 0, 4, 8. x^2 / 128 over cells 8 wide misses the middle by
  // 64 / 512 = 1/8 > 1/16: every cell is halved; over the halves (4 wide) the miss is
  // 16 / 512 = 1/32, so they are interpolated. The map is then within 1/16 of the dense map
  // everywhere, and the refinement costs more calls than a map that needs none, but fewer than
  // the dense build.
  QuadraticAlongX f(128.0f), g(128.0f);
  std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(17, 9), f));
  std::unique_ptr<ImageMap> sparse(SparseQuadrantMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(17, 9), g));
  ExpectMatchesDense(*sparse, *dense, 0.0625f + 1e-5f, [](unsigned, unsigned) { return true; });
  // Pixel (2, 0) lies halfway along the top edge of a half (columns 0 to 4, x = -8.5 to -4.5) and
  // is not one of its checked points: it holds the interpolation over the half, 1/32 above the
  // curve, where a cell of the first level would have put it 3/32 above.
  EXPECT_FLOAT_EQ((8.5f * 8.5f + 4.5f * 4.5f) / 128 / 2, MapX(*sparse, 2, 0));
  EXPECT_FLOAT_EQ(6.5f * 6.5f / 128 + 1.0f / 32, MapX(*sparse, 2, 0));
  test::AffineFunctor smooth(2.0f, 1.0f, 0.5f, -3.0f);
  std::unique_ptr<ImageMap> unrefined(
      SparseQuadrantMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(17, 9), smooth));
  EXPECT_GT(g.calls, smooth.calls);
  EXPECT_LT(g.calls, f.calls);
}

TEST(SparseQuadrantMapBuilder, CellsWithinTheThresholdAreInterpolated) {
  // 17 x 17: lines 0, 8, 16 on both axes. x^2 / 512 over cells 8 wide misses the middle by
  // 64 / 2048 = 1/32 <= 1/16: interpolated.
  QuadraticAlongX f(512.0f);
  std::unique_ptr<ImageMap> map(SparseQuadrantMapBuilder().BuildImageMap(Resolution(0, 0), Resolution(17, 17), f));
  EXPECT_EQ(9 + 4, f.calls);
  // Column 4 (x = -4.5) lies halfway between columns 0 (x = -8.5) and 8 (x = -0.5); row 1 is not
  // a cell middle row, so it holds the interpolated value, 1/32 above the curve.
  const float interpolated = (8.5f * 8.5f + 0.5f * 0.5f) / 512 / 2;
  EXPECT_FLOAT_EQ(interpolated, MapX(*map, 4, 1));
  EXPECT_FLOAT_EQ(4.5f * 4.5f / 512 + 1.0f / 32, interpolated);
  // The checked middle pixel (4, 4) keeps the functor's own value.
  EXPECT_FLOAT_EQ(4.5f * 4.5f / 512, MapX(*map, 4, 4));
}

// The quadrant builder's band build, open to the tests.
class BandBuilder : public SparseQuadrantMapBuilder {
public:
  using SparseQuadrantMapBuilder::BuildRowBand;
};

// Another functor's values inside a circle of the source (relative to the source centre, as
// functor values are) and none outside it: a lens rim.
class RimFunctor : public MapFunctor {
public:
  RimFunctor(MapFunctor& inner, float fRadius) : m_inner(inner), m_fRadius(fRadius) {}
  virtual Vector2d Call(const Vector2d& p) {
    const Vector2d v = m_inner(p);
    if (std::hypot(v.X, v.Y) <= m_fRadius) return v;
    return Vector2d(std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::quiet_NaN());
  }

private:
  MapFunctor& m_inner;
  float m_fRadius;
};

bool SameBits(float a, float b) { return std::memcmp(&a, &b, sizeof(float)) == 0; }

// A band build must hold, in the rows asked for, exactly what the whole build holds there: its
// cells are those of the whole build. A fisheye-to-cylinder map has curved cells that are filled
// cubically or refined and, cut by a lens rim, parts without a source, so every kind of cell fill
// takes part. A cubic cell reads the crossings of the lines beyond its own, so the band is built
// with one more line of the lattice on either side; rows beyond those (the lines are 8 pixels
// apart, so more than 16 rows from the band) have no source.
TEST(SparseQuadrantMapBuilder, ABandOfRowsHoldsTheWholeBuildsValuesThere) {
  const Resolution in(1000, 800), out(381, 121);
  ProjectionFunctor cylinder(CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, 60.0f, Projection::IdentityScale);
  RimFunctor projection(cylinder, 150.0f);
  CountingFunctor whole(projection);
  std::unique_ptr<ImageMap> expected(SparseQuadrantMapBuilder().BuildImageMap(in, out, whole, out));
  int nSourced = 0, nWithout = 0;
  for (unsigned y = 0; y < 121; ++y) {
    for (unsigned x = 0; x < 381; ++x) (std::isnan(MapX(*expected, x, y)) ? nWithout : nSourced)++;
  }
  ASSERT_GT(nSourced, 0);
  ASSERT_GT(nWithout, 0);
  // Whole, lower half from the centre line (row 60 is a lattice line), rows between lines, a
  // single row on a line, a single row between lines, the first and the last row, a band reaching
  // past the map, a band outside it and an empty band.
  std::vector<std::array<int, 2>> bands = {{0, 120}, {60, 120}, {61, 63}, {68, 68}, {33, 33}, {0, 0}, {120, 120},
                                           {100, 500}, {-40, 2}, {121, 300}, {-9, -1}, {50, 40}};
  // And every single row, and every band of six rows.
  for (int r = 0; r < 121; ++r) {
    bands.push_back({r, r});
    bands.push_back({r, r + 5});
  }
  for (const auto& band : bands) {
    CountingFunctor counted(projection);
    std::unique_ptr<ImageMap> actual(BandBuilder::BuildRowBand(in, out, counted, band[0], band[1]));
    ASSERT_EQ(381u, actual->GetMapWidth());
    ASSERT_EQ(121u, actual->GetMapHeight());
    EXPECT_EQ(in.X, actual->GetInputSize().X);
    bool bSame = true, bOutsideEmpty = true;
    for (int y = 0; y < 121; ++y) {
      const bool bInBand = y >= band[0] && y <= band[1];
      const bool bFar = y < band[0] - 16 || y > band[1] + 16;
      for (unsigned x = 0; x < 381; ++x) {
        const float ax = MapX(*actual, x, y), ay = MapY(*actual, x, y);
        if (bInBand) {
          bSame = bSame && SameBits(ax, MapX(*expected, x, y)) && SameBits(ay, MapY(*expected, x, y));
        } else if (bFar) {
          bOutsideEmpty = bOutsideEmpty && std::isnan(ax) && std::isnan(ay);
        }
      }
    }
    EXPECT_TRUE(bSame) << band[0] << ".." << band[1];
    EXPECT_TRUE(bOutsideEmpty) << band[0] << ".." << band[1];
    if (band[0] == 60 && band[1] == 120) {
      // Half the rows of cells: about half the calls, and surely not more than two thirds.
      EXPECT_LT(counted.calls * 3, whole.calls * 2);
      EXPECT_GT(counted.calls * 3, whole.calls);
    }
    if (band[0] > band[1] || band[1] < 0 || band[0] > 120) {
      EXPECT_EQ(0, counted.calls) << band[0] << ".." << band[1];
    }
  }
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
