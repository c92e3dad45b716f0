// Where a PTZ view looks: the centre pixel of a PTZ map built over a projection map centred on
// the lens axis must sample the fisheye point of the requested viewing direction.
//
// The expected point comes from the physical set-up, not from the engine's rotations. World
// axes: east E, up U, north N. A PTZ position (pan p, tilt t) looks along
//     d = cos t sin p E + sin t U + cos t cos p N
// (pan turns from north towards east, tilt is positive upwards). Each mount places the lens in
// the world (lens axes: x to the right of the image, y down the image, z the optical axis):
//     wall:           z = N, x = E,  y = -U   (upright, pan 0 tilt 0 at the image centre)
//     inverted wall:  z = N, x = -E, y = U    (the same lens upside down)
//     ceiling:        z = -U, x = E, y = -N   (looking down, north at the top of the image, east
//                                              on the right as on a map seen from above)
//     floor:          z = U, x = -E, y = -N   (looking up, north at the top, so east on the left)
// and the equidistant lens puts the direction at radius f * angle from the image centre.
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>

#include "cameras_test_support.h"

using namespace vemo::libdewarp;
using cameras_test::Dir;
using cameras_test::Model;

namespace {

const unsigned kLens = 1000;  // lens image size, 180 degrees across
const int kCols = 200, kRows = 160;

Dir ViewInLensAxes(DEWARP_INTERNAL_CAMERA_MOUNT mount, double pan, double tilt) {
  const double e = std::cos(tilt) * std::sin(pan), u = std::sin(tilt), n = std::cos(tilt) * std::cos(pan);
  switch (mount) {
    case WALL_MOUNT:
      return Dir{e, -u, n};
    case INVERTED_WALL_MOUNT:
      return Dir{-e, u, n};
    case CEILING_MOUNT:
      return Dir{e, -n, -u};
    default:  // FLOOR_MOUNT
      return Dir{-e, -n, u};
  }
}

struct Case {
  double pan, tilt;
};

void ExpectCentreSamples(const FisheyeCamera& camera, const ImageMap& map, int cx, int cy, double pan, double tilt) {
  const double f = camera.GetFocalLength();
  double ex, ey;
  cameras_test::LensPoint(ViewInLensAxes(camera.GetCameraMount(), pan, tilt), f, &ex, &ey);
  ex += kLens / 2.0;
  ey += kLens / 2.0;
  const Vector2d got = map.GetMapItem(cx, cy);
  EXPECT_NEAR(ex, got.X, 1.0) << "mount " << camera.GetCameraMount() << " pan " << pan << " tilt " << tilt;
  EXPECT_NEAR(ey, got.Y, 1.0) << "mount " << camera.GetCameraMount() << " pan " << pan << " tilt " << tilt;
}

std::vector<Case> CasesFor(DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  const double pans[] = {0.0, 0.7, -1.9, 2.6, -3.0};
  std::vector<Case> cases;
  if (mount == CEILING_MOUNT || mount == FLOOR_MOUNT) {
    const double sign = mount == CEILING_MOUNT ? -1.0 : 1.0;  // ceilings look down, floors up
    for (double pan : pans)
      for (double tilt : {0.2, 0.7, 1.2}) cases.push_back(Case{pan, sign * tilt});
  } else {
    for (double pan : {0.0, 0.5, -1.1, 1.3})
      for (double tilt : {-0.6, 0.0, 0.45}) cases.push_back(Case{pan, tilt});
  }
  return cases;
}

class PtzGeometry : public ::testing::TestWithParam<DEWARP_INTERNAL_CAMERA_MOUNT> {
protected:
  PtzGeometry()
      : camera(Model(CIRCULAR_FISHEYE_CAMERA, 180.0f, 180.0f, 180.0f, kLens, kLens), GetParam()),
        base(camera.BuildProjectionMap(Resolution(kCols, kRows), RECTILINEAR_PROJECTION, Projection::ZeroShift,
                                       Projection::IdentityScale)) {}
  FisheyeCamera camera;
  std::unique_ptr<ImageMap> base;
};

}  // namespace

TEST_P(PtzGeometry, BaseMapCentreIsTheLensCentre) {
  ASSERT_TRUE(base);
  const Vector2d c = base->GetMapItem(kCols / 2, kRows / 2);
  EXPECT_NEAR(kLens / 2.0, c.X, 0.5);
  EXPECT_NEAR(kLens / 2.0, c.Y, 0.5);
}

TEST_P(PtzGeometry, SinglePaneCentreSamplesTheViewingDirection) {
  for (const Case& c : CasesFor(GetParam())) {
    for (float zoom : {1.0f, 2.5f}) {
      const PtzPosition position(EulerAngles(static_cast<float>(c.pan), static_cast<float>(c.tilt), 0.0f), zoom);
      std::unique_ptr<ImageMap> map(camera.BuildPtzMap(position, *base, 1));
      ASSERT_TRUE(map);
      ExpectCentreSamples(camera, *map, kCols / 2, kRows / 2, c.pan, c.tilt);
    }
  }
}

TEST_P(PtzGeometry, DualAndQuadPaneCentresLookAroundTheVertical) {
  if (GetParam() != CEILING_MOUNT && GetParam() != FLOOR_MOUNT) return;  // one pane only on walls
  const double pi = cameras_test::kPi;
  for (const Case& c : CasesFor(GetParam())) {
    const PtzPosition position(EulerAngles(static_cast<float>(c.pan), static_cast<float>(c.tilt), 0.0f), 1.0f);
    std::unique_ptr<ImageMap> dual(camera.BuildPtzMap(position, *base, 2));
    ASSERT_TRUE(dual);
    // Two stacked panes of 200 x 80: the second looks the opposite way.
    ExpectCentreSamples(camera, *dual, kCols / 2, kRows / 4, c.pan, c.tilt);
    ExpectCentreSamples(camera, *dual, kCols / 2, kRows / 2 + kRows / 4, c.pan + pi, c.tilt);

    std::unique_ptr<ImageMap> quad(camera.BuildPtzMap(position, *base, 4));
    ASSERT_TRUE(quad);
    // Four panes of 100 x 80 in reading order, a quarter turn apart.
    const int qx[] = {kCols / 4, kCols / 2 + kCols / 4, kCols / 4, kCols / 2 + kCols / 4};
    const int qy[] = {kRows / 4, kRows / 4, kRows / 2 + kRows / 4, kRows / 2 + kRows / 4};
    for (int i = 0; i < 4; ++i) ExpectCentreSamples(camera, *quad, qx[i], qy[i], c.pan + i * pi / 2, c.tilt);
  }
}

INSTANTIATE_TEST_SUITE_P(Mounts, PtzGeometry,
                         ::testing::Values(CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT, INVERTED_WALL_MOUNT));
