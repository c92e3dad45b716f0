// Spherical PTZ map builder: one, two and four panes over a base map.
#include <algorithm>
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include "../builders/builders_test_support.h"

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/spherical_ptz_functor.h>
#include <libdewarp_vemo/spherical_ptz_map_builder.h>

#include "cameras_test_support.h"
#include "log_capture.h"

using namespace vemo::libdewarp;
using cameras_test::AffineMap;
using cameras_test::SameElements;

namespace {

using ::vemo::test::CountingFunctor;

const float kFocal = 150.0f;

PtzPosition Position(float yaw, float pitch, float zoom) { return PtzPosition(EulerAngles(yaw, pitch, 0.0f), zoom); }

// A smooth base map over a 400 x 300 source: the source point moves one pixel per element,
// centred on the source centre.
std::unique_ptr<ImageMap> Base(int cols, int rows) {
  return AffineMap(cols, rows, Vector2d(400.0f, 300.0f), 200.0f - 0.5f * cols, 1.0f, 150.0f - 0.5f * rows, 1.0f);
}

// The pane that the builder should have made: the builder's own pane build (its functor-driven
// BuildImageMap, reached through the map builder interface) run directly on the functor over
// the base map, with the pane size as output.
std::unique_ptr<ImageMap> DirectPane(const ImageMap& base, const PtzPosition& position, const Resolution& pane) {
  SphericalPtzFunctor functor(position, kFocal, base);
  SphericalPtzMapBuilder builder;
  MapBuilder& paneBuilder = builder;
  return std::unique_ptr<ImageMap>(paneBuilder.BuildImageMap(Resolution(base.GetInputSize()), pane, functor, pane));
}

// A fisheye camera of 968 x 968 pixels over 183 degrees, wall mounted, and the rectilinear
// projection map of its natural size: the kind of base map a PTZ view is cut out of.
struct LensBase {
  FisheyeCamera camera{cameras_test::Model(CIRCULAR_FISHEYE_CAMERA, 183.0f, 183.0f, 183.0f, 968, 968), WALL_MOUNT};
  std::unique_ptr<ImageMap> map{
      camera.BuildProjectionMap(RECTILINEAR_PROJECTION, Projection::ZeroShift, Projection::IdentityScale)};
};

bool RowIsNan(const ImageMap& map, int row) {
  for (int x = 0; x < static_cast<int>(map.GetMapWidth()); ++x) {
    const Vector2d v = map.GetMapItem(x, row);
    if (!std::isnan(v.X) || !std::isnan(v.Y)) return false;
  }
  return true;
}

bool ColumnIsNan(const ImageMap& map, int col) {
  for (int y = 0; y < static_cast<int>(map.GetMapHeight()); ++y) {
    const Vector2d v = map.GetMapItem(col, y);
    if (!std::isnan(v.X) || !std::isnan(v.Y)) return false;
  }
  return true;
}

}  // namespace

TEST(SphericalPtzMapBuilder, OnePaneEqualsThePaneBuildOverTheBaseMapSizes) {
  std::unique_ptr<ImageMap> base = Base(64, 48);
  const PtzPosition position = Position(0.2f, -0.1f, 1.5f);
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(*base, position, kFocal));
  ASSERT_TRUE(map);
  EXPECT_EQ(Vector2d(64.0f, 48.0f), map->GetMapSize());
  EXPECT_EQ(Vector2d(400.0f, 300.0f), map->GetInputSize());
  std::unique_ptr<ImageMap> direct = DirectPane(*base, position, Resolution(64, 48));
  EXPECT_TRUE(SameElements(*direct, 0, 0, *map));
}

TEST(SphericalPtzMapBuilder, TwoPanesOf640By481AreEach640By240AndLastRowStaysNan) {
  std::unique_ptr<ImageMap> base = Base(640, 481);
  const PtzPosition top = Position(0.3f, 0.0f, 1.0f);
  const PtzPosition bottom = Position(-0.4f, 0.2f, 2.0f);
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(*base, top, bottom, kFocal));
  ASSERT_TRUE(map);
  EXPECT_EQ(Vector2d(640.0f, 481.0f), map->GetMapSize());
  EXPECT_EQ(Vector2d(400.0f, 300.0f), map->GetInputSize());
  // Pane 1 fills rows 0 to 239, pane 2 rows 240 to 479, each as built on its own at 640 x 240.
  std::unique_ptr<ImageMap> pane1 = DirectPane(*base, top, Resolution(640, 240));
  std::unique_ptr<ImageMap> pane2 = DirectPane(*base, bottom, Resolution(640, 240));
  EXPECT_TRUE(SameElements(*map, 0, 0, *pane1));
  EXPECT_TRUE(SameElements(*map, 0, 240, *pane2));
  EXPECT_TRUE(RowIsNan(*map, 480));
  EXPECT_FALSE(RowIsNan(*map, 479));
  EXPECT_FALSE(RowIsNan(*map, 239));
}

TEST(SphericalPtzMapBuilder, FourPanesInReadingOrderWithOddSizesLeaveLastRowAndColumnNan) {
  std::unique_ptr<ImageMap> base = Base(65, 49);
  const PtzPosition p1 = Position(0.0f, 0.0f, 1.0f);
  const PtzPosition p2 = Position(0.5f, 0.1f, 1.0f);
  const PtzPosition p3 = Position(-0.5f, -0.1f, 2.0f);
  const PtzPosition p4 = Position(1.0f, 0.2f, 1.5f);
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(*base, p1, p2, p3, p4, kFocal));
  ASSERT_TRUE(map);
  EXPECT_EQ(Vector2d(65.0f, 49.0f), map->GetMapSize());
  const Resolution pane(32, 24);
  EXPECT_TRUE(SameElements(*map, 0, 0, *DirectPane(*base, p1, pane)));
  EXPECT_TRUE(SameElements(*map, 32, 0, *DirectPane(*base, p2, pane)));
  EXPECT_TRUE(SameElements(*map, 0, 24, *DirectPane(*base, p3, pane)));
  EXPECT_TRUE(SameElements(*map, 32, 24, *DirectPane(*base, p4, pane)));
  EXPECT_TRUE(RowIsNan(*map, 48));
  EXPECT_TRUE(ColumnIsNan(*map, 64));
  EXPECT_FALSE(ColumnIsNan(*map, 63));
}

TEST(SphericalPtzMapBuilder, PaneCentresLookInTheirOwnDirections) {
  // With an identity-like base map the centre of each pane looks the base centre up and turns
  // it by the pane's yaw: f * yaw to the right of the input centre.
  std::unique_ptr<ImageMap> base = Base(64, 48);
  SphericalPtzMapBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(*base, Position(0.0f, 0.0f, 1.0f), Position(0.5f, 0.0f, 1.0f),
                                                      Position(-0.5f, 0.0f, 1.0f), Position(1.0f, 0.0f, 1.0f), kFocal));
  const int cx[] = {16, 48, 16, 48};
  const int cy[] = {12, 12, 36, 36};
  const float yaw[] = {0.0f, 0.5f, -0.5f, 1.0f};
  for (int i = 0; i < 4; ++i) {
    const Vector2d v = map->GetMapItem(cx[i], cy[i]);
    EXPECT_NEAR(200.0 + kFocal * yaw[i], v.X, 0.5) << "pane " << i;
    EXPECT_NEAR(150.0, v.Y, 0.5) << "pane " << i;
  }
}

TEST(SphericalPtzMapBuilder, SelfAssignmentWarns) {
  vemo::test::LogCapture cap(LOG_WARNING);
  SphericalPtzMapBuilder builder;
  SphericalPtzMapBuilder& alias = builder;
  builder = alias;
  EXPECT_EQ(1u, cap.count("Self assignment of SphericalPtzMapBuilder object\n"));
}

TEST(SphericalPtzMapBuilder, PaneBuildStaysWithinAQuarterPixelOfTheDenseBuild) {
  // Over a real lens's projection map, at zoom 1 (the widest, most curved view) and beyond, the
  // interpolated pane may differ from the functor evaluated at every pixel only by interpolation
  // error (measured: up to 0.12 source pixels on this small lens; on the 1936-pixel lens at
  // 1920 x 1080, 0.06), and must have a source exactly where the dense map has one.
  LensBase lens;
  ASSERT_TRUE(lens.map);
  const Resolution in(lens.map->GetInputSize());
  const Resolution out(lens.map->GetMapSize());
  const float f = lens.camera.GetFocalLength();
  const PtzPosition positions[] = {Position(0.0f, 0.0f, 1.0f), Position(0.6f, 0.4f, 1.0f), Position(-1.2f, -0.5f, 1.5f),
                                   Position(0.3f, 0.9f, 3.0f)};
  for (const PtzPosition& position : positions) {
    SphericalPtzFunctor functor(position, f, *lens.map);
    LinearMapBuilder dense;
    std::unique_ptr<ImageMap> exact(dense.BuildImageMap(in, out, functor, out));
    SphericalPtzMapBuilder builder;
    std::unique_ptr<ImageMap> built(builder.BuildImageMap(*lens.map, position, f));
    double worst = 0.0;
    long mismatched = 0;
    for (int y = 0; y < static_cast<int>(out.Y); ++y) {
      for (int x = 0; x < static_cast<int>(out.X); ++x) {
        const Vector2d a = exact->GetMapItem(x, y), b = built->GetMapItem(x, y);
        const bool va = std::isfinite(a.X) && std::isfinite(a.Y), vb = std::isfinite(b.X) && std::isfinite(b.Y);
        if (va != vb) {
          ++mismatched;
        } else if (va) {
          worst = std::max(worst, static_cast<double>(std::max(std::fabs(a.X - b.X), std::fabs(a.Y - b.Y))));
        }
      }
    }
    EXPECT_EQ(0, mismatched) << "yaw " << position.m_obOrientation.Yaw;
    EXPECT_LT(worst, 0.25) << "yaw " << position.m_obOrientation.Yaw;
  }
}

TEST(SphericalPtzMapBuilder, PaneBuildCallsTheFunctorForFewPixels) {
  // A smooth view is interpolated: far fewer functor calls than the one in four pixels of the
  // every-other-pixel sparse scheme (a 16-pixel lattice plus each cell's middle is about one in
  // 128).
  std::unique_ptr<ImageMap> base = Base(640, 480);
  SphericalPtzFunctor functor(Position(0.2f, -0.1f, 1.5f), kFocal, *base);
  CountingFunctor counting(functor);
  SphericalPtzMapBuilder builder;
  MapBuilder& paneBuilder = builder;
  std::unique_ptr<ImageMap> map(paneBuilder.BuildImageMap(Resolution(400, 300), Resolution(640, 480), counting,
                                                          Resolution(640, 480)));
  ASSERT_TRUE(map);
  EXPECT_GT(counting.calls, 0);
  EXPECT_LT(counting.calls, 640L * 480L / 64L);
}

// A gently curved view whose outermost columns and top row have no source (as when a pane's edge
// falls on the border of its base map). Points are centred: x from -320 to 319, y from -240 to
// 239 on a 640 x 480 pane.
class EdgelessFunctor : public MapFunctor {
public:
  Vector2d Call(const Vector2d& p) override {
    ++calls;
    if (p.X < -319.5f || p.X > 318.5f || p.Y < -239.5f) return Vector2d::InvalidVector;
    return Vector2d(p.X + p.X * p.X / 4096.0f, p.Y + p.X * p.Y / 8192.0f);
  }
  long calls = 0;
};

TEST(SphericalPtzMapBuilder, PaneWhoseOutermostPixelsHaveNoSourceIsExactAtTheEdgeAndCheap) {
  EdgelessFunctor sparse, dense;
  SphericalPtzMapBuilder builder;
  MapBuilder& paneBuilder = builder;
  const Resolution pane(640, 480);
  std::unique_ptr<ImageMap> built(paneBuilder.BuildImageMap(Resolution(400, 300), pane, sparse, pane));
  std::unique_ptr<ImageMap> exact(LinearMapBuilder().BuildImageMap(Resolution(400, 300), pane, dense, pane));
  ASSERT_TRUE(built && exact);
  long mismatched = 0;
  double worst = 0.0;
  for (int y = 0; y < 480; ++y) {
    for (int x = 0; x < 640; ++x) {
      const Vector2d a = exact->GetMapItem(x, y), b = built->GetMapItem(x, y);
      if (a.Valid() != b.Valid()) {
        ++mismatched;
      } else if (a.Valid()) {
        worst = std::max(worst, static_cast<double>(std::max(std::fabs(a.X - b.X), std::fabs(a.Y - b.Y))));
      }
    }
  }
  EXPECT_TRUE(ColumnIsNan(*built, 0));
  EXPECT_TRUE(ColumnIsNan(*built, 639));
  EXPECT_TRUE(RowIsNan(*built, 0));
  EXPECT_FALSE(RowIsNan(*built, 1));
  EXPECT_EQ(0, mismatched);
  EXPECT_LE(worst, 0.125 + 1e-4);
  // The edge costs about one call per 16 pixels along the lines next to it and a few per 16
  // along the edge itself, not a refinement of every cell there down to single pixels: the whole
  // pane stays within the one call in 64 pixels of a pane without such an edge.
  EXPECT_LT(sparse.calls, 640L * 480L / 64L);
}

TEST(SphericalPtzMapBuilder, PaneWithACropSmallerThanTheOutputKeepsANanBorder) {
  std::unique_ptr<ImageMap> base = Base(64, 48);
  SphericalPtzFunctor functor(Position(0.0f, 0.0f, 1.0f), kFocal, *base);
  SphericalPtzMapBuilder builder;
  MapBuilder& paneBuilder = builder;
  std::unique_ptr<ImageMap> map(
      paneBuilder.BuildImageMap(Resolution(400, 300), Resolution(64, 48), functor, Resolution(60, 44)));
  ASSERT_TRUE(map);
  EXPECT_TRUE(RowIsNan(*map, 0));
  EXPECT_TRUE(RowIsNan(*map, 47));
  EXPECT_TRUE(ColumnIsNan(*map, 1));
  EXPECT_TRUE(ColumnIsNan(*map, 63));
  EXPECT_FALSE(RowIsNan(*map, 2));
  EXPECT_FALSE(ColumnIsNan(*map, 2));
}
