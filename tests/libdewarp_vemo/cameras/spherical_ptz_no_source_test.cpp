// Spherical PTZ panes over base maps with parts without a source (letterbox bands, islands,
// single elements): the lattice's no-source test leaves the map exactly as the lattice builds it
// without the test, and saves the functor calls over large empty parts.
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "../builders/builders_test_support.h"

#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/spherical_ptz_functor.h>
#include <libdewarp_vemo/spherical_ptz_map_builder.h>

#include "cameras_test_support.h"

using namespace vemo::libdewarp;
using cameras_test::SameElements;

namespace {

using ::vemo::test::CountingFunctor;

const float kFocal = 300.0f;
const Vector2d kSource(1936.0f, 1936.0f);

PtzPosition Position(float yaw, float pitch, float zoom) { return PtzPosition(EulerAngles(yaw, pitch, 0.0f), zoom); }

// A smooth, gently curved base map over a 1936 x 1936 source, centred on the source centre.
Vector2d Smooth(int x, int y, int cols, int rows) {
  const float u = static_cast<float>(x) - 0.5f * static_cast<float>(cols);
  const float v = static_cast<float>(y) - 0.5f * static_cast<float>(rows);
  return Vector2d(968.0f + 1.1f * u + u * v / 4096.0f, 968.0f + 0.9f * v + u * u / 8192.0f);
}

std::unique_ptr<ImageMap> SmoothBase(int cols, int rows) {
  std::unique_ptr<ImageMap> map(new ImageMap(cols, rows));
  map->SetInputSize(kSource);
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < cols; ++x) map->SetMapItem(x, y, Smooth(x, y, cols, rows));
  }
  return map;
}

void Blank(ImageMap& map, int left, int top, int width, int height) {
  for (int y = top; y < top + height; ++y) {
    for (int x = left; x < left + width; ++x) map.SetMapItem(x, y, Vector2d::InvalidVector);
  }
}

// A panorama filling only the middle rows of its base map: bands of `band` rows without a source
// above and below, as in a panoramic strip scaled into a 16:9 map.
std::unique_ptr<ImageMap> LetterboxBase(int cols, int rows, int band) {
  std::unique_ptr<ImageMap> map = SmoothBase(cols, rows);
  Blank(*map, 0, 0, cols, band);
  Blank(*map, 0, rows - band, cols, band);
  return map;
}

// Deterministic pseudo-random numbers (a 32-bit linear congruential generator).
class Lcg {
public:
  explicit Lcg(std::uint32_t seed) : m_state(seed) {}
  int Next(int bound) {
    m_state = m_state * 1664525u + 1013904223u;
    return static_cast<int>((m_state >> 8) % static_cast<std::uint32_t>(bound));
  }

private:
  std::uint32_t m_state;
};

// A smooth base with islands without a source smaller than a lattice cell (1 to 6 elements
// across) and single elements without one, and a letterbox band at the top that holds small
// islands and single elements with a source: there a cell's corners and middle find no source
// while some of its pixels have one.
std::unique_ptr<ImageMap> IslandBase(int cols, int rows, std::uint32_t seed) {
  std::unique_ptr<ImageMap> map = SmoothBase(cols, rows);
  Lcg rng(seed);
  for (int n = 0; n < 60; ++n) {
    const int w = 1 + rng.Next(6), h = 1 + rng.Next(6);
    Blank(*map, rng.Next(cols - w), rows / 3 + rng.Next(rows - rows / 3 - h), w, h);
  }
  for (int n = 0; n < 300; ++n) Blank(*map, rng.Next(cols), rows / 3 + rng.Next(rows - rows / 3), 1, 1);
  Blank(*map, 0, 0, cols, rows / 3);
  for (int n = 0; n < 40; ++n) {
    const int w = 1 + rng.Next(3), h = 1 + rng.Next(3);
    const int x0 = rng.Next(cols - w), y0 = rng.Next(rows / 3 - h);
    for (int y = y0; y < y0 + h; ++y) {
      for (int x = x0; x < x0 + w; ++x) map->SetMapItem(x, y, Smooth(x, y, cols, rows));
    }
  }
  return map;
}

// The pane lattice of the builder, with or without the base map's no-source test.
class PaneLattice : public SphericalPtzMapBuilder {
public:
  struct Result {
    std::unique_ptr<ImageMap> map;
    long calls;
  };
  // One pane of `pane` at `offset` in a fresh map of the base map's size, every element NaN
  // beforehand.
  static Result Build(const ImageMap& base, const PtzPosition& position, const Resolution& pane,
                      const Vector2d& offset, bool withTest) {
    SphericalPtzFunctor functor(position, kFocal, base);
    CountingFunctor counting(functor);
    Result result;
    result.map.reset(new ImageMap(base.GetMapSize()));
    result.map->SetInputSize(base.GetInputSize());
    const NoSourceTest test = PaneNoSourceTest(functor);
    BuildPaneLattice(*result.map, counting, withTest ? &test : nullptr, Resolution(base.GetInputSize()), pane,
                     offset);
    result.calls = counting.calls;
    return result;
  }
};

// The pane that the builder builds without the no-source test: its functor form, which builds
// the same lattice over the pane size.
std::unique_ptr<ImageMap> PaneWithoutTest(const ImageMap& base, const PtzPosition& position, const Resolution& pane) {
  SphericalPtzFunctor functor(position, kFocal, base);
  SphericalPtzMapBuilder builder;
  MapBuilder& paneBuilder = builder;
  return std::unique_ptr<ImageMap>(paneBuilder.BuildImageMap(Resolution(base.GetInputSize()), pane, functor, pane));
}

long CountValid(const ImageMap& map) {
  long n = 0;
  for (unsigned y = 0; y < map.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < map.GetMapWidth(); ++x) n += map.GetMapItem(x, y).Valid() ? 1 : 0;
  }
  return n;
}

const PtzPosition kPositions[] = {Position(0.0f, 0.0f, 1.0f), Position(0.4f, -0.2f, 1.0f),
                                  Position(-0.3f, 0.25f, 2.5f), Position(0.1f, 0.1f, 0.6f)};

}  // namespace

TEST(SphericalPtzNoSource, PaneLatticeWithTheTestEqualsItWithoutOnLetterboxedBases) {
  struct Case {
    int cols, rows, band;
  } const cases[] = {{960, 540, 117}, {333, 187, 50}, {640, 360, 30}, {480, 270, 110}};
  for (const Case& c : cases) {
    std::unique_ptr<ImageMap> base = LetterboxBase(c.cols, c.rows, c.band);
    const Resolution pane(c.cols, c.rows);
    for (const PtzPosition& position : kPositions) {
      PaneLattice::Result with = PaneLattice::Build(*base, position, pane, Vector2d(0.0f, 0.0f), true);
      PaneLattice::Result without = PaneLattice::Build(*base, position, pane, Vector2d(0.0f, 0.0f), false);
      SCOPED_TRACE(::testing::Message() << c.cols << " x " << c.rows << " yaw " << position.m_obOrientation.Yaw
                                        << " zoom " << position.m_fZoom);
      EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map));
      // Not a comparison of two empty maps, and the test did save calls wherever the pane reaches
      // the bands (zoomed in 2.5 times about the centre it sees the middle 40 % of the rows).
      EXPECT_GT(CountValid(*with.map), static_cast<long>(c.cols) * c.rows / 16);
      const bool reachesBands = position.m_fZoom <= 1.0f || c.band > 0.3f * static_cast<float>(c.rows);
      if (reachesBands) {
        EXPECT_LT(with.calls, without.calls);
      } else {
        EXPECT_EQ(with.calls, without.calls);
      }
    }
  }
}

TEST(SphericalPtzNoSource, PaneLatticeWithTheTestEqualsItWithoutOnIslandsAndSingleElements) {
  const int sizes[][2] = {{640, 360}, {333, 187}, {257, 129}};
  std::uint32_t seed = 7;
  for (const auto& size : sizes) {
    std::unique_ptr<ImageMap> base = IslandBase(size[0], size[1], seed++);
    const Resolution pane(size[0], size[1]);
    for (const PtzPosition& position : kPositions) {
      PaneLattice::Result with = PaneLattice::Build(*base, position, pane, Vector2d(0.0f, 0.0f), true);
      PaneLattice::Result without = PaneLattice::Build(*base, position, pane, Vector2d(0.0f, 0.0f), false);
      SCOPED_TRACE(::testing::Message() << size[0] << " x " << size[1] << " yaw " << position.m_obOrientation.Yaw
                                        << " zoom " << position.m_fZoom);
      EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map));
      EXPECT_GT(CountValid(*with.map), static_cast<long>(size[0]) * size[1] / 8);
      EXPECT_LE(with.calls, without.calls);
    }
  }
}

TEST(SphericalPtzNoSource, SourcesInsideAnEmptyBandSurviveWhereTheLatticeFoundThem) {
  // Single elements with a source in a band without one, at zoom 1 on whole-element points, each
  // give an output pixel a source of its own. A cell whose corners and middle miss them must not
  // be declared empty at once: the map with the test keeps every such pixel the lattice without
  // the test keeps.
  const int cols = 480, rows = 272;
  std::unique_ptr<ImageMap> base = LetterboxBase(cols, rows, 100);
  for (int y = 4; y < 96; y += 7) {
    for (int x = 3; x < cols; x += 23) base->SetMapItem(x, y, Smooth(x, y, cols, rows));
  }
  const PtzPosition identity = Position(0.0f, 0.0f, 1.0f);
  PaneLattice::Result with = PaneLattice::Build(*base, identity, Resolution(cols, rows), Vector2d(0.0f, 0.0f), true);
  PaneLattice::Result without =
      PaneLattice::Build(*base, identity, Resolution(cols, rows), Vector2d(0.0f, 0.0f), false);
  EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map));
  long inBand = 0;
  for (int y = 0; y < 100; ++y) {
    for (int x = 0; x < cols; ++x) inBand += with.map->GetMapItem(x, y).Valid() ? 1 : 0;
  }
  EXPECT_GT(inBand, 0);  // the case is exercised: the lattice found some of them
}

TEST(SphericalPtzNoSource, PanesAtAnOffsetWithOddSizesEqualThemWithoutTheTest) {
  std::unique_ptr<ImageMap> base = LetterboxBase(501, 283, 70);
  const Resolution pane(250, 141);
  const Vector2d offsets[] = {Vector2d(0.0f, 0.0f), Vector2d(250.0f, 0.0f), Vector2d(0.0f, 141.0f),
                              Vector2d(250.0f, 141.0f)};
  for (const Vector2d& offset : offsets) {
    for (const PtzPosition& position : kPositions) {
      PaneLattice::Result with = PaneLattice::Build(*base, position, pane, offset, true);
      PaneLattice::Result without = PaneLattice::Build(*base, position, pane, offset, false);
      EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map)) << offset.X << ", " << offset.Y;
    }
  }
}

TEST(SphericalPtzNoSource, OneTwoAndFourPanesEqualThePanesBuiltWithoutTheTest) {
  std::unique_ptr<ImageMap> bases[] = {LetterboxBase(640, 360, 78), IslandBase(333, 187, 99),
                                       LetterboxBase(321, 181, 40)};
  for (const std::unique_ptr<ImageMap>& base : bases) {
    const int cols = static_cast<int>(base->GetMapWidth()), rows = static_cast<int>(base->GetMapHeight());
    SCOPED_TRACE(::testing::Message() << cols << " x " << rows);
    SphericalPtzMapBuilder builder;
    for (const PtzPosition& position : kPositions) {
      std::unique_ptr<ImageMap> one(builder.BuildImageMap(*base, position, kFocal));
      EXPECT_TRUE(SameElements(*one, 0, 0, *PaneWithoutTest(*base, position, Resolution(cols, rows))));
    }
    const Resolution half(cols, rows / 2);
    std::unique_ptr<ImageMap> two(builder.BuildImageMap(*base, kPositions[1], kPositions[2], kFocal));
    EXPECT_TRUE(SameElements(*two, 0, 0, *PaneWithoutTest(*base, kPositions[1], half)));
    EXPECT_TRUE(SameElements(*two, 0, rows / 2, *PaneWithoutTest(*base, kPositions[2], half)));
    const Resolution quarter(cols / 2, rows / 2);
    std::unique_ptr<ImageMap> four(
        builder.BuildImageMap(*base, kPositions[0], kPositions[1], kPositions[2], kPositions[3], kFocal));
    EXPECT_TRUE(SameElements(*four, 0, 0, *PaneWithoutTest(*base, kPositions[0], quarter)));
    EXPECT_TRUE(SameElements(*four, cols / 2, 0, *PaneWithoutTest(*base, kPositions[1], quarter)));
    EXPECT_TRUE(SameElements(*four, 0, rows / 2, *PaneWithoutTest(*base, kPositions[2], quarter)));
    EXPECT_TRUE(SameElements(*four, cols / 2, rows / 2, *PaneWithoutTest(*base, kPositions[3], quarter)));
  }
}

TEST(SphericalPtzNoSource, LensBaseWithLetterboxBandsEqualsThePaneWithoutTheTest) {
  // A real lens's rectilinear projection map (its own parts without a source where the view
  // leaves the lens), with its top and bottom quarters blanked as well.
  FisheyeCamera camera(cameras_test::Model(CIRCULAR_FISHEYE_CAMERA, 183.0f, 183.0f, 183.0f, 968, 968), WALL_MOUNT);
  std::unique_ptr<ImageMap> base(
      camera.BuildProjectionMap(RECTILINEAR_PROJECTION, Projection::ZeroShift, Projection::IdentityScale));
  ASSERT_TRUE(base);
  const int cols = static_cast<int>(base->GetMapWidth()), rows = static_cast<int>(base->GetMapHeight());
  Blank(*base, 0, 0, cols, rows / 4);
  Blank(*base, 0, rows - rows / 4, cols, rows / 4);
  const float f = camera.GetFocalLength();
  const PtzPosition positions[] = {Position(0.0f, 0.0f, 1.0f), Position(0.6f, 0.4f, 1.0f), Position(-1.2f, -0.5f, 1.5f)};
  SphericalPtzMapBuilder builder;
  for (const PtzPosition& position : positions) {
    std::unique_ptr<ImageMap> built(builder.BuildImageMap(*base, position, f));
    SphericalPtzFunctor functor(position, f, *base);
    MapBuilder& paneBuilder = builder;
    std::unique_ptr<ImageMap> without(paneBuilder.BuildImageMap(Resolution(base->GetInputSize()),
                                                                Resolution(cols, rows), functor, Resolution(cols, rows)));
    EXPECT_TRUE(SameElements(*without, 0, 0, *built)) << "yaw " << position.m_obOrientation.Yaw;
  }
}

TEST(SphericalPtzNoSource, PaneOverABaseWithoutAnySourceCostsItsCrossingsAndOneMiddlePerCell) {
  // 960 x 540: lattice columns 0, 1, 16, 32, ..., 944, 958, 959 (63 lines) and rows 0, 1, 16,
  // ..., 528, 538, 539 (37 lines). Every cell but the four 1 x 1 corner cells has its middle
  // evaluated, and then, its corners and middle being empty, is left empty at once.
  std::unique_ptr<ImageMap> base(new ImageMap(960, 540));
  base->SetInputSize(kSource);
  const PtzPosition identity = Position(0.0f, 0.0f, 1.0f);
  PaneLattice::Result with = PaneLattice::Build(*base, identity, Resolution(960, 540), Vector2d(0.0f, 0.0f), true);
  PaneLattice::Result without =
      PaneLattice::Build(*base, identity, Resolution(960, 540), Vector2d(0.0f, 0.0f), false);
  EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map));
  EXPECT_EQ(63 * 37 + 62 * 36 - 4, with.calls);
  EXPECT_GT(without.calls, 10 * with.calls);
}

TEST(SphericalPtzNoSource, LetterboxedPanoramaSavesTheRefinementOfEveryCellInTheBands) {
  // 960 x 540 with 117 rows without a source above and below (43 % of the map, as a panorama of
  // 1920 x 611 in 1920 x 1080). Rows 1 to 112 and 432 to 538 hold 7 + 7 rows of 60 lattice cells
  // (14 to 16 pixels wide, 10 to 16 high) wholly in the bands. Without the test each is halved
  // twice: its middle, 4 new points, 4 x (a middle and 4 new points) and the middles of its 16
  // parts, 41 calls; with it, its middle alone. The rest of the pane (the panorama and its
  // edges, refined down to single pixels where it meets the bands) costs the same both ways.
  std::unique_ptr<ImageMap> base = LetterboxBase(960, 540, 117);
  const PtzPosition identity = Position(0.0f, 0.0f, 1.0f);
  PaneLattice::Result with = PaneLattice::Build(*base, identity, Resolution(960, 540), Vector2d(0.0f, 0.0f), true);
  PaneLattice::Result without =
      PaneLattice::Build(*base, identity, Resolution(960, 540), Vector2d(0.0f, 0.0f), false);
  EXPECT_TRUE(SameElements(*without.map, 0, 0, *with.map));
  EXPECT_GE(without.calls - with.calls, 14L * 60L * 40L);
}

TEST(SphericalPtzNoSource, TestVouchesOnlyForRectanglesWhosePointsAllHaveNoSource) {
  // Straight at the functor: wherever NoSourceWithin is true, the functor has no source at every
  // whole and half point of the rectangle; it is true inside the band and beyond the map, and
  // false over any element with a source.
  std::unique_ptr<ImageMap> base = IslandBase(257, 129, 3);
  Lcg rng(11);
  for (const PtzPosition& position : kPositions) {
    SphericalPtzFunctor functor(position, kFocal, *base);
    long vouched = 0;
    for (int n = 0; n < 3000; ++n) {
      const float left = static_cast<float>(rng.Next(400) - 200) * 0.5f - 64.0f;
      const float top = static_cast<float>(rng.Next(300) - 150) * 0.5f - 32.0f;
      const float right = left + static_cast<float>(rng.Next(33)) * 0.5f;
      const float bottom = top + static_cast<float>(rng.Next(33)) * 0.5f;
      if (!functor.NoSourceWithin(Vector2d(left, top), Vector2d(right, bottom))) continue;
      ++vouched;
      for (float y = top; y <= bottom; y += 0.5f) {
        for (float x = left; x <= right; x += 0.5f) {
          ASSERT_FALSE(functor(Vector2d(x, y)).Valid()) << x << ", " << y << " zoom " << position.m_fZoom;
        }
      }
    }
    EXPECT_GT(vouched, 100) << "zoom " << position.m_fZoom;
  }
  // Identity at zoom 1 over a 257 x 129 base with 40 rows without a source at the top and the
  // bottom: point (x, y) looks up element (x + 128.5, y + 64.5).
  std::unique_ptr<ImageMap> band = LetterboxBase(257, 129, 40);
  SphericalPtzFunctor identity(Position(0.0f, 0.0f, 1.0f), kFocal, *band);
  EXPECT_TRUE(identity.NoSourceWithin(Vector2d(-100.0f, -64.5f), Vector2d(100.0f, -30.0f)));  // rows 0 to 35
  EXPECT_TRUE(identity.NoSourceWithin(Vector2d(-500.0f, -400.0f), Vector2d(-300.0f, -200.0f)));  // off the map
  EXPECT_FALSE(identity.NoSourceWithin(Vector2d(-100.0f, 10.0f), Vector2d(-90.0f, 20.0f)));  // smooth part
  // One element with a source in the band makes every rectangle over it "may have a source".
  band->SetMapItem(128, 10, Smooth(128, 10, 257, 129));
  EXPECT_FALSE(identity.NoSourceWithin(Vector2d(-16.0f, -60.0f), Vector2d(16.0f, -40.0f)));
}

TEST(SphericalPtzNoSource, TheScanSeesASourceInEveryColumnAndNotHalfOfOne) {
  // The test scans the base map four elements at a time: a single element with a source is seen
  // whichever column of the scanned rectangle it is in (the first, the last, inside a group of
  // four or in the columns left over), and an element with only one coordinate is not a source.
  // Identity at zoom 1: the rectangle below reads columns 100 to 157 and rows 4 to 25.
  for (int column = 100; column <= 157; ++column) {
    std::unique_ptr<ImageMap> band = LetterboxBase(257, 129, 40);
    SphericalPtzFunctor identity(Position(0.0f, 0.0f, 1.0f), kFocal, *band);
    const Vector2d low(-28.0f, -60.0f), high(28.0f, -40.0f);
    ASSERT_TRUE(identity.NoSourceWithin(low, high));
    const Vector2d source = Smooth(column, 10, 257, 129);
    band->SetMapItem(column, 10, Vector2d(source.X, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_TRUE(identity.NoSourceWithin(low, high)) << column;
    band->SetMapItem(column, 10, source);
    EXPECT_FALSE(identity.NoSourceWithin(low, high)) << column;
  }
}
