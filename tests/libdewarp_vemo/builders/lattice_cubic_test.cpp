// Cubic cells of the lattice: a cell whose bilinear guess misses but whose cubic guess at the
// middle agrees is filled from the sixteen crossings around it instead of being halved.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>

#include <gtest/gtest.h>

#include "builders_test_support.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace vemo {
namespace libdewarp {
namespace {

// The lattice over the whole crop, lines every 32 pixels (and the last), threshold 1/8, with
// cubic cells.
test::LatticeProbe CubicProbe() {
  test::LatticeProbe probe;
  probe.spacing = 32;
  probe.cubic = true;
  return probe;
}

// (x, y) -> (x + x^2 / 1024 + y / 4, y + y^2 / 1024 - x / 2), at the centred point. Each
// coordinate bends along one axis with the second derivative 1/512, so the bilinear guess at the
// middle of a cell h pixels across misses by h^2 / 4096 (1/4 for 32 pixels, 1/16 for 16), while a
// cubic through four crossings reproduces the map up to rounding. Counts its calls.
class BendingFunctor : public MapFunctor {
public:
  Vector2d Call(const Vector2d& p) override {
    ++calls;
    return Exact(p.X, p.Y);
  }
  static Vector2d Exact(float x, float y) {
    return Vector2d(x + x * x / 1024.0f + 0.25f * y, y + y * y / 1024.0f - 0.5f * x);
  }
  long calls = 0;
};

const Resolution kIn(4096, 4096);

// The functor's value at element (x, y) of a map of size out, as the builders store it.
Vector2d Stored(const Resolution& out, int x, int y) {
  const Vector2d v = BendingFunctor::Exact(static_cast<float>(x) - 0.5f * out.X, static_cast<float>(y) - 0.5f * out.Y);
  return Vector2d(v.X + kIn.Centre().X, v.Y + kIn.Centre().Y);
}

double Miss(const Vector2d& a, const Vector2d& b) {
  return std::max(std::fabs(static_cast<double>(a.X) - b.X), std::fabs(static_cast<double>(a.Y) - b.Y));
}

TEST(LatticeCubic, CellsWithCrossingsAllRoundAreFilledCubicallyTheOthersAreHalvedOnce) {
  // 257 x 161: columns 0, 32, ..., 256 (9 lines, 8 cells) and rows 0, 32, ..., 160 (6 lines,
  // 5 cells), all equally spaced. A cell has its sixteen crossings when a line lies beyond each
  // of its sides: cells 1 to 6 across and 1 to 3 down (18 of 40). Every 32-pixel cell misses its
  // bilinear middle by 1/4; the 22 cells along the border are halved once, which costs 4 new
  // points and the middles of their 4 parts (each part misses by 1/16 and is blended).
  test::LatticeProbe probe = CubicProbe();
  const Resolution out(257, 161);
  BendingFunctor f;
  std::unique_ptr<ImageMap> map(probe.BuildImageMap(kIn, out, f, out));
  const long crossings = 9 * 6, cells = 8 * 5, halved = 40 - 18;
  EXPECT_EQ(crossings + cells + halved * 8, f.calls);

  // Without cubic cells all 40 are halved: the same count with every cell halved.
  probe.cubic = false;
  BendingFunctor g;
  std::unique_ptr<ImageMap> plain(probe.BuildImageMap(kIn, out, g, out));
  EXPECT_EQ(crossings + cells + cells * 8, g.calls);
}

TEST(LatticeCubic, ACubicCellFollowsTheBendAndKeepsTheCrossingsExact) {
  // Inside the cubic cells (columns 32 to 224, rows 32 to 128, without the edges they share with
  // halved cells, which those fill) the map is the functor's up to rounding, on the edges between
  // two cubic cells too; a bilinear fill would stray there by up to 1/4. Everywhere else the
  // halved cells' bilinear fill strays by at most 16^2 / 4096 = 1/16. The crossings hold the
  // functor's values exactly.
  test::LatticeProbe probe = CubicProbe();
  const Resolution out(257, 161);
  BendingFunctor f;
  std::unique_ptr<ImageMap> map(probe.BuildImageMap(kIn, out, f, out));
  double inside = 0.0, everywhere = 0.0;
  for (int y = 0; y < 161; ++y) {
    for (int x = 0; x < 257; ++x) {
      const Vector2d stored = map->GetMapItem(x, y), exact = Stored(out, x, y);
      const double miss = Miss(stored, exact);
      everywhere = std::max(everywhere, miss);
      if (x > 32 && x < 224 && y > 32 && y < 128) inside = std::max(inside, miss);
      if (x % 32 == 0 && y % 32 == 0) {
        EXPECT_EQ(0, std::memcmp(&stored, &exact, sizeof(Vector2d))) << x << ", " << y;
      }
    }
  }
  EXPECT_LT(inside, 0.001);
  EXPECT_LE(everywhere, 0.0625 + 0.001);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
