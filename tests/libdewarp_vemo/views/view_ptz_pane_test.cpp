// The single PTZ view of the built-in camera at 1920 x 1080, the size its re-aims are timed at:
// the pane the view builds on its lattice against the functor evaluated at every pixel, and the
// functor calls the lattice costs, worked out from the sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/single_ptz_view.h>
#include <libdewarp_vemo/spherical_ptz_functor.h>
#include <libdewarp_vemo/spherical_ptz_map_builder.h>

#include "../builders/builders_test_support.h"
#include "views_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;

const Resolution kOutput(1920, 1080);

// Pan and tilt in degrees, as the channel takes them.
PtzPosition Aim(float pan, float tilt, float zoom) {
  DEWARP_PTZ_POSITION position = {pan, tilt, 0.0f, zoom};
  return PtzPosition(position);
}

// The view at kOutput (cropped to its aspect ratio, as a channel shows a PTZ view), aimed; the
// direction its pane looks in is the mount's orientation followed by the aim.
struct AimedView {
  AimedView(DEWARP_INTERNAL_CAMERA_MOUNT mount, const PtzPosition& aim)
      : camera(CameraBuilder().MakeCamera(GetNorvikKestrelMk2Camera(), mount)), view(camera, RECTILINEAR_PROJECTION) {
    view.SetDewarpedSize(kOutput, CROP_TO_ASPECT_RATIO);
    taken = view.SetPtz(aim);
    built = view.CheckMaps(kOutput);
    pane = dynamic_cast<const FisheyeCamera&>(*camera).GetHomePosition();
    pane.Concatenate(taken);
  }
  CameraPtr camera;
  SinglePtzView view;
  PtzPosition taken, pane;
  bool built = false;
};

bool HasSource(const Vector2d& v) { return std::isfinite(v.X) && std::isfinite(v.Y); }

bool SameBits(float a, float b) { return std::memcmp(&a, &b, sizeof(float)) == 0; }

// The pane lattice with a counting functor, as the view builds its single pane; the calls, or -1
// if the map differs from the view's in any bit.
class CountedPane : public SphericalPtzMapBuilder {
public:
  static long Calls(const AimedView& aimed) {
    const ImageMap& base = *aimed.view.GetScaledProjectionMap();
    SphericalPtzFunctor functor(aimed.pane, aimed.camera->GetFocalLength(), base);
    test::CountingFunctor counting(functor);
    ImageMap map(base.GetMapSize());
    map.SetInputSize(base.GetInputSize());
    const NoSourceTest test = PaneNoSourceTest(functor);
    BuildPaneLattice(map, counting, &test, Resolution(base.GetInputSize()), Resolution(base.GetMapSize()),
                     Vector2d(0.0f, 0.0f));
    const ImageMap& view = *aimed.view.GetPtzMap();
    for (unsigned y = 0; y < map.GetMapHeight(); ++y) {
      for (unsigned x = 0; x < map.GetMapWidth(); ++x) {
        const Vector2d a = map.GetMapItem(x, y), b = view.GetMapItem(x, y);
        if (!SameBits(a.X, b.X) || !SameBits(a.Y, b.Y)) return -1;
      }
    }
    return counting.calls;
  }
};

TEST(SinglePtzPane, WithinAnEighthOfASourcePixelOfTheDenseBuildBeyondTheBaseMapsOwnRoughness) {
  // A cell is blended once its middle agrees with the interpolated guess within 1/8 source pixel.
  // The exact map is not smooth from element to element: the base map it reads is itself
  // interpolated, and its values depart from the mean of their neighbours by up to r (measured
  // here, about 0.01). That departure enters both the middle the check trusts and the element
  // compared, so an element may differ from the exact map by 1/8 + 2r. The wall mount at the
  // corner of its zoom-1 range is the most curved view (measured over every element: 0.133, with
  // r = 0.009); the ceiling mount at the engine bench's re-aim position (its tilt limited to 0 at
  // zoom 1) curves less (0.100). To keep the test short the exact map is worked out in bands of
  // three rows, one band in every 24 rows (the functor at each element's centred point, as
  // the dense build evaluates it: x from -960, y from -540).
  struct Case {
    DEWARP_INTERNAL_CAMERA_MOUNT mount;
    PtzPosition aim;
  } const cases[] = {{WALL_MOUNT, Aim(46.5f, 46.5f, 1.0f)}, {CEILING_MOUNT, Aim(35.0f, 25.0f, 1.0f)}};
  const int w = static_cast<int>(kOutput.X), h = static_cast<int>(kOutput.Y);
  for (const Case& c : cases) {
    AimedView aimed(c.mount, c.aim);
    ASSERT_TRUE(aimed.built);
    const ImageMap& base = *aimed.view.GetScaledProjectionMap();
    const ImageMap& built = *aimed.view.GetPtzMap();
    ASSERT_EQ(kOutput.X, built.GetMapSize().X);
    ASSERT_EQ(kOutput.Y, built.GetMapSize().Y);
    SphericalPtzFunctor functor(aimed.pane, aimed.camera->GetFocalLength(), base);
    const Vector2d centre = Resolution(base.GetInputSize()).Centre();
    auto exact = [&](int x, int y) {
      const Vector2d v =
          functor(Vector2d(static_cast<float>(x) - 0.5f * kOutput.X, static_cast<float>(y) - 0.5f * kOutput.Y));
      return Vector2d(v.X + centre.X, v.Y + centre.Y);
    };
    double worst = 0.0, roughness = 0.0;
    long mismatched = 0, compared = 0;
    std::vector<Vector2d> rows[3];
    for (int top = 0; top + 2 < h; top += 24) {
      for (int j = 0; j < 3; ++j) {
        rows[j].resize(w);
        for (int x = 0; x < w; ++x) rows[j][x] = exact(x, top + j);
      }
      for (int j = 0; j < 3; ++j) {
        for (int x = 0; x < w; ++x) {
          const Vector2d a = rows[j][x], b = built.GetMapItem(x, top + j);
          if (HasSource(a) != HasSource(b)) {
            ++mismatched;
            continue;
          }
          if (!HasSource(a)) continue;
          ++compared;
          worst = std::max(worst, static_cast<double>(std::max(std::fabs(a.X - b.X), std::fabs(a.Y - b.Y))));
          const bool across = x > 0 && x + 1 < w && HasSource(rows[j][x - 1]) && HasSource(rows[j][x + 1]);
          const bool down = j == 1 && HasSource(rows[0][x]) && HasSource(rows[2][x]);
          if (across) {
            const Vector2d l = rows[j][x - 1], r = rows[j][x + 1];
            roughness = std::max(roughness, 0.5 * std::fabs(l.X - 2.0 * a.X + r.X));
            roughness = std::max(roughness, 0.5 * std::fabs(l.Y - 2.0 * a.Y + r.Y));
          }
          if (down) {
            const Vector2d u = rows[0][x], d = rows[2][x];
            roughness = std::max(roughness, 0.5 * std::fabs(u.X - 2.0 * a.X + d.X));
            roughness = std::max(roughness, 0.5 * std::fabs(u.Y - 2.0 * a.Y + d.Y));
          }
        }
      }
    }
    SCOPED_TRACE(::testing::Message() << "mount " << c.mount << " worst " << worst << " roughness " << roughness);
    EXPECT_EQ(0, mismatched);
    EXPECT_GT(compared, static_cast<long>(w) * h / 10);
    // The margin stays small beside the threshold, or the bound would say little.
    EXPECT_LT(roughness, 0.0125);
    EXPECT_LE(worst, 0.125 + 2.0 * roughness);
  }
}

TEST(SinglePtzPane, AZoomedInPaneCostsItsCrossingsAndOneMiddlePerCell) {
  // Lattice columns 0, 1, 32, 64, ..., 1888, 1918, 1919 (63 lines) and rows 0, 1, 32, ...,
  // 1056, 1078, 1079 (37 lines): 63 x 37 crossings and 62 x 36 cells, of which the four 1 x 1
  // cells at the corners are blended without a middle. Zoomed in 3 times the pane reads the
  // middle of its base map only, so every element has a source, and it curves so little that
  // every cell is blended on its middle alone.
  AimedView aimed(CEILING_MOUNT, Aim(10.0f, -5.0f, 3.0f));
  ASSERT_TRUE(aimed.built);
  const ImageMap& built = *aimed.view.GetPtzMap();
  for (unsigned y = 0; y < built.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < built.GetMapWidth(); ++x) ASSERT_TRUE(HasSource(built.GetMapItem(x, y)));
  }
  EXPECT_EQ(63L * 37L + 62L * 36L - 4L, CountedPane::Calls(aimed));
}

TEST(SinglePtzPane, AtZoomOneTheBaseMapsBorderCostsTwoCallsPerCellAlongIt) {
  // At zoom 1 the pane reads its base map element for element, and the base map's top row and
  // its first and last columns have no source: so the pane's row 0 and columns 0 and 1919 have
  // none, and its other elements have one. The strips between lines 0 and 1 (and 1918 and 1919)
  // are judged edge by edge: the 60 strip cells along the top and the 2 x 34 along the sides
  // (the 1 x 1 cells at the corners apart) each cost the middle of the edge with a source (it
  // is blended) and the middle of the edge without one, which the no-source test then vouches
  // for at once (the elements the edge's lookups read, on the base map's border, have no source;
  // a test that scanned one element further would reach the next row or column, which has one,
  // and the edge would be halved down to pieces of 4 steps: 15 calls instead of 1). Every other
  // cell costs its middle.
  AimedView aimed(CEILING_MOUNT, Aim(35.0f, 25.0f, 1.0f));
  ASSERT_TRUE(aimed.built);
  const ImageMap& built = *aimed.view.GetPtzMap();
  for (unsigned y = 0; y < built.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < built.GetMapWidth(); ++x) {
      const bool border = y == 0 || x == 0 || x + 1 == built.GetMapWidth();
      ASSERT_EQ(!border, HasSource(built.GetMapItem(x, y))) << x << ", " << y;
    }
  }
  const long strips = 60L + 2L * 34L;
  EXPECT_EQ(63L * 37L + (62L * 36L - 4L - strips) + strips * (1L + 1L), CountedPane::Calls(aimed));
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
