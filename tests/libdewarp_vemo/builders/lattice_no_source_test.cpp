// The lattice's optional no-source test: asked only about cells larger than the lattice leaves
// empty on their own evidence whose corners and middle have no source, and never changing the map.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>

#include <gtest/gtest.h>

#include "builders_test_support.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace vemo {
namespace libdewarp {
namespace {

// The lattice over the whole crop, lines every 16 pixels, with an optional no-source test.
using test::LatticeProbe;

int FloorInt(float v) { return static_cast<int>(std::floor(v)); }

// A curved view with no source above y = -20, except at isolated points (x, y) with
// floor(x) = 3 mod 23 and floor(y) = 4 mod 7; below that line, no source in a disc of radius 30
// about (60, 40). Counts its calls.
class BandFunctor : public MapFunctor {
public:
  Vector2d Call(const Vector2d& p) override {
    ++calls;
    if (!HasSource(p.X, p.Y)) return Vector2d::InvalidVector;
    return Vector2d(p.X + p.X * p.Y / 512.0f, p.Y + p.X * p.X / 1024.0f);
  }
  static bool Isolated(int x, int y) { return Mod(x, 23) == 3 && Mod(y, 7) == 4; }
  static bool HasSource(float x, float y) {
    if (y < -20.0f) return Isolated(FloorInt(x), FloorInt(y));
    return (x - 60.0f) * (x - 60.0f) + (y - 40.0f) * (y - 40.0f) > 900.0f;
  }
  long calls = 0;

private:
  static int Mod(int a, int m) { return ((a % m) + m) % m; }
};

// What the lattice asked, and an exact answer for the band: every point of the rectangle lies
// above y = -20 and no isolated point with a source lies in it.
struct Asked {
  std::vector<float> rects;  // left, top, right, bottom, ...
  bool answerAlways = false;
};

bool ExactBandTest(const void* context, float left, float top, float right, float bottom) {
  Asked* asked = const_cast<Asked*>(static_cast<const Asked*>(context));
  asked->rects.insert(asked->rects.end(), {left, top, right, bottom});
  if (asked->answerAlways) return true;
  if (!(bottom < -20.0f)) return false;
  for (int y = FloorInt(top); y <= FloorInt(bottom); ++y) {
    for (int x = FloorInt(left); x <= FloorInt(right); ++x) {
      if (BandFunctor::Isolated(x, y)) return false;
    }
  }
  return true;
}

bool SameBits(const ImageMap& a, const ImageMap& b) {
  if (a.GetMapWidth() != b.GetMapWidth() || a.GetMapHeight() != b.GetMapHeight()) return false;
  for (unsigned y = 0; y < a.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < a.GetMapWidth(); ++x) {
      const Vector2d va = a.GetMapItem(x, y), vb = b.GetMapItem(x, y);
      if (std::memcmp(&va.X, &vb.X, sizeof(float)) != 0 || std::memcmp(&va.Y, &vb.Y, sizeof(float)) != 0) {
        ADD_FAILURE() << "element (" << x << ", " << y << "): (" << va.X << ", " << va.Y << ") vs (" << vb.X << ", "
                      << vb.Y << ")";
        return false;
      }
    }
  }
  return true;
}

}  // namespace

TEST(LatticeNoSourceTest, AnExactTestLeavesTheMapUnchangedAndSavesCalls) {
  const Resolution sizes[] = {Resolution(320, 240), Resolution(333, 187), Resolution(97, 301)};
  for (const Resolution& size : sizes) {
    BandFunctor plain, tested;
    LatticeProbe without;
    std::unique_ptr<ImageMap> a(without.BuildImageMap(Resolution(400, 300), size, plain, size));
    Asked asked;
    const MapBuilder::NoSourceTest test = {ExactBandTest, &asked};
    LatticeProbe with;
    with.test = &test;
    std::unique_ptr<ImageMap> b(with.BuildImageMap(Resolution(400, 300), size, tested, size));
    EXPECT_TRUE(SameBits(*a, *b)) << size.X << " x " << size.Y;
    EXPECT_LT(tested.calls, plain.calls) << size.X << " x " << size.Y;
    EXPECT_FALSE(asked.rects.empty());
  }
}

TEST(LatticeNoSourceTest, IsAskedOnlyAboutLargeCellsWhoseCornersAndMiddleHaveNoSource) {
  // Answering "no source" to everything shows where the lattice asks: each rectangle is a cell
  // more than 4 steps across one way whose corners and middle pixel the functor finds empty.
  BandFunctor f;
  Asked asked;
  asked.answerAlways = true;
  const MapBuilder::NoSourceTest test = {ExactBandTest, &asked};
  LatticeProbe with;
  with.test = &test;
  std::unique_ptr<ImageMap> map(with.BuildImageMap(Resolution(400, 300), Resolution(320, 240), f, Resolution(320, 240)));
  ASSERT_FALSE(asked.rects.empty());
  for (size_t n = 0; n < asked.rects.size(); n += 4) {
    const float left = asked.rects[n], top = asked.rects[n + 1], right = asked.rects[n + 2], bottom = asked.rects[n + 3];
    EXPECT_TRUE(right - left > 4.0f || bottom - top > 4.0f);
    EXPECT_FALSE(BandFunctor::HasSource(left, top));
    EXPECT_FALSE(BandFunctor::HasSource(right, top));
    EXPECT_FALSE(BandFunctor::HasSource(left, bottom));
    EXPECT_FALSE(BandFunctor::HasSource(right, bottom));
    EXPECT_FALSE(BandFunctor::HasSource(left + std::floor((right - left) / 2.0f), top + std::floor((bottom - top) / 2.0f)));
  }
}

TEST(LatticeNoSourceTest, IsNotAskedWithoutACheck) {
  // Without a threshold a cell with a corner lacking a source is evaluated pixel by pixel, and
  // the test has no part in it.
  BandFunctor plain, tested;
  LatticeProbe without;
  without.threshold = std::numeric_limits<float>::infinity();
  std::unique_ptr<ImageMap> a(without.BuildImageMap(Resolution(400, 300), Resolution(160, 120), plain, Resolution(160, 120)));
  Asked asked;
  asked.answerAlways = true;
  const MapBuilder::NoSourceTest test = {ExactBandTest, &asked};
  LatticeProbe with;
  with.threshold = std::numeric_limits<float>::infinity();
  with.test = &test;
  std::unique_ptr<ImageMap> b(with.BuildImageMap(Resolution(400, 300), Resolution(160, 120), tested, Resolution(160, 120)));
  EXPECT_TRUE(asked.rects.empty());
  EXPECT_TRUE(SameBits(*a, *b));
  EXPECT_EQ(plain.calls, tested.calls);
}

}  // namespace libdewarp
}  // namespace vemo
