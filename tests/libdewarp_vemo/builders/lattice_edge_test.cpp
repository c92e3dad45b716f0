// A lattice cell crossed from side to side by the edge of the picture (a source at its two top
// corners and none at its bottom ones, or the same left and right) is halved across the edge
// only, down to a strip one step across: the map is the exact one, at a count of calls worked
// out by hand below.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>

#include <gtest/gtest.h>

#include "builders_test_support.h"

#include <cmath>
#include <memory>

namespace vemo {
namespace libdewarp {
namespace {

using test::LatticeProbe;

// An affine view (blended exactly) with a source only where the coordinate across the edge is
// below 0; bAcross puts the edge across the rows (a source above it), otherwise down the columns
// (a source left of it). Counts its calls.
class EdgeFunctor : public MapFunctor {
public:
  explicit EdgeFunctor(bool across) : m_bAcross(across) {}
  Vector2d Call(const Vector2d& p) override {
    ++calls;
    if (!HasSource(p)) return Vector2d::InvalidVector;
    return Vector2d(2.0f * p.X + 3.0f, 0.5f * p.Y + 1.0f);
  }
  bool HasSource(const Vector2d& p) const { return (m_bAcross ? p.Y : p.X) < 0.0f; }
  long calls = 0;

private:
  bool m_bAcross;
};

// Exact for the edge: every point of the rectangle lies on the side without a source.
bool BeyondTheEdge(const void* context, float left, float top, float /*right*/, float /*bottom*/) {
  const bool across = *static_cast<const bool*>(context);
  return (across ? top : left) >= 0.0f;
}

// The lattice (lines every 32 pixels) over a crop 33 pixels across the edge and 97 along it:
// three cells, each with its two corners on one side of the edge. The crop is centred, so pixel
// j across the edge lies at j - 16.5: pixels 0 to 16 have a source, 17 to 32 none.
void ExpectEdgeCells(bool across) {
  const Resolution size = across ? Resolution(97, 33) : Resolution(33, 97);
  EdgeFunctor f(across);
  const MapBuilder::NoSourceTest test = {BeyondTheEdge, &across};
  LatticeProbe probe;
  probe.spacing = 32;
  probe.test = &test;
  std::unique_ptr<ImageMap> map(probe.BuildImageMap(Resolution(400, 300), size, f, size));

  // Each cell: halved across the edge at 16, 24, 20, 18 and 17 (two new points each, on its two
  // sides); the middle of the part 0..16 (blended); the strip 16..17 judged edge by edge (one
  // middle each: 16 blended, 17 empty by the test); the middles of the empty parts 17..18,
  // 18..20, 20..24 and 24..32 (each then left empty by the test): 17 calls. Plus the lattice's
  // own crossings, 4 along each of its 2 lines.
  EXPECT_EQ(f.calls, 2 * 4 + 3 * 17);

  EdgeFunctor exact(across);
  const Vector2d centre = Resolution(400, 300).Centre();
  for (unsigned j = 0; j < map->GetMapHeight(); ++j) {
    for (unsigned k = 0; k < map->GetMapWidth(); ++k) {
      const Vector2d p(static_cast<float>(k) - 0.5f * size.X, static_cast<float>(j) - 0.5f * size.Y);
      const Vector2d got = map->GetMapItem(k, j);
      if (!exact.HasSource(p)) {
        EXPECT_TRUE(std::isnan(got.X) && std::isnan(got.Y)) << k << ", " << j;
        continue;
      }
      const Vector2d want = exact(p);
      EXPECT_FLOAT_EQ(got.X, want.X + centre.X) << k << ", " << j;
      EXPECT_FLOAT_EQ(got.Y, want.Y + centre.Y) << k << ", " << j;
    }
  }
}

TEST(LatticeEdgeTest, AnEdgeAcrossTheCellsIsFollowedByHalvingTheRowsOnly) { ExpectEdgeCells(true); }

TEST(LatticeEdgeTest, AnEdgeDownTheCellsIsFollowedByHalvingTheColumnsOnly) { ExpectEdgeCells(false); }

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
