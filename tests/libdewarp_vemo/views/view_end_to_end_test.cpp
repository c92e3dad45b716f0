// End to end: a synthetic fisheye frame whose colour encodes the viewing direction of each pixel is
// dewarped by every view kind, and the pictures are judged by what they show, not by the maps.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string>
#include <memory>
#include <vector>

#include <libdewarp_vemo/dual_ptz_view.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/quad_ptz_view.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>
#include <libdewarp_vemo/view_builder.h>

#include "views_test_support.h"

#if defined(__SANITIZE_ADDRESS__)
#define VIEWS_TEST_SANITIZED 1
#else
#define VIEWS_TEST_SANITIZED 0
#endif

// The 32-bit build runs its tests under an emulator here, some twenty times slower; it sweeps a
// subset of the matrix, and the digest compares its results with the 64-bit build's bit for bit.
#if defined(__i386__)
#define VIEWS_TEST_32_BIT 1
#else
#define VIEWS_TEST_32_BIT 0
#endif

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;
using views_test::Chord;
using views_test::Decode;
using views_test::Direction;
using views_test::MakeFisheye;
using views_test::WrapAngle;
using views_test::YuvFrame;

const double kPi = views_test::kPi;
const unsigned int kSide = 1936;  // the built-in camera's lens picture

// Built once per size; the dewarping only reads them.
YuvFrame& Fisheye(unsigned int side = kSide) {
  static std::map<unsigned int, YuvFrame> frames;
  std::map<unsigned int, YuvFrame>::iterator it = frames.find(side);
  if (it == frames.end()) {
    it = frames.insert(std::make_pair(side, views_test::DirectionFrame(side))).first;
  }
  return it->second;
}

// Dewarps the fisheye frame into a fresh output of the given size (pre-filled with the default
// colour, so that pixels the remap leaves alone read as outside the picture).
YuvFrame Dewarp(View& view, unsigned int w, unsigned int h, DEWARP_INTERPOLATION interpolation) {
  YuvFrame out(w, h, 16, 128);
  const unsigned int side = static_cast<unsigned int>(view.GetCamera()->GetCameraResolution().X);
  ImagePlanar420 input = Fisheye(side).Image();
  ImagePlanar420 output = out.Image();
  view.DewarpImage(input, output, interpolation);
  return out;
}

struct Plausibility {
  double coverage;       // share of pixels showing the lens picture
  double medianStep;     // median angle between horizontally adjacent picture pixels
  double p90Step;        // 90th percentile of that angle
};

Plausibility Judge(const YuvFrame& f) {
  std::vector<double> steps;
  unsigned long valid = 0, total = 0;
  for (unsigned int y = 0; y < f.Height(); y += 3) {
    Direction prev = Decode(f, 0, y);
    for (unsigned int x = 1; x < f.Width(); ++x) {
      const Direction d = Decode(f, x, y);
      ++total;
      if (d.valid) {
        ++valid;
        if (prev.valid) steps.push_back(Chord(prev, d));
      }
      prev = d;
    }
  }
  Plausibility p = {total ? double(valid) / total : 0.0, 10.0, 10.0};
  if (!steps.empty()) {
    // Two order statistics, each found in linear time.
    std::nth_element(steps.begin(), steps.begin() + steps.size() / 2, steps.end());
    p.medianStep = steps[steps.size() / 2];
    std::nth_element(steps.begin(), steps.begin() + steps.size() * 9 / 10, steps.end());
    p.p90Step = steps[steps.size() * 9 / 10];
  }
  return p;
}

// ---- The ceiling panorama ----------------------------------------------------------------------

// Azimuths (about the lens axis) of every 8th column of a row, over the columns that show the
// lens picture.
std::vector<double> RowAzimuths(const YuvFrame& f, unsigned int y) {
  std::vector<double> a;
  for (unsigned int x = 4; x + 4 < f.Width(); x += 8) {
    const Direction d = Decode(f, x, y);
    if (d.valid && d.theta > 0.3) a.push_back(d.alpha);
  }
  return a;
}

TEST(ViewEndToEnd, CeilingCylindricalPanoramaTurnsSteadilyAroundTheLensAxis) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT, kSide);
  SinglePanoramicView view(camera, CYLINDRICAL_PROJECTION);
  const Vector2d panorama = view.GetProjectionSize();
  for (DEWARP_ASPECT_RATIO aspect : views_test::kAspects) {
    view.SetAspectRatio(aspect);
    const YuvFrame f = Dewarp(view, 640, 480, LINEAR_INTERPOLATION);
    const std::vector<double> a = RowAzimuths(f, 240);
    ASSERT_GT(a.size(), 40u) << aspect;
    std::vector<double> steps;
    double sum = 0.0;
    for (size_t i = 1; i < a.size(); ++i) {
      steps.push_back(WrapAngle(a[i] - a[i - 1]));
      sum += steps.back();
    }
    const double mean = sum / steps.size();
    for (size_t i = 0; i < steps.size(); ++i) {
      // Every step turns the same way by about the same angle.
      EXPECT_GT(steps[i] / mean, 0.5) << "aspect " << aspect << " step " << i;
      EXPECT_LT(steps[i] / mean, 1.5) << "aspect " << aspect << " step " << i;
    }
    // Scaled or stretched, the picture's width holds the whole horizon; cropped to 4:3 at full
    // height it holds the share 640/480 * height / width of it.
    const double share = aspect == CROP_TO_ASPECT_RATIO ? (640.0 / 480.0) * panorama.Y / panorama.X : 1.0;
    const double turned = std::fabs(sum) * a.size() / (a.size() - 1);
    EXPECT_NEAR(2 * kPi * share, turned, 0.1 * 2 * kPi * share) << aspect;
  }
}

TEST(ViewEndToEnd, CeilingPanoramaRunsDownwardsFromTheHorizon) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT, kSide);
  for (DEWARP_PROJECTION projection : {CYLINDRICAL_PROJECTION, EQUIRECTANGULAR_PROJECTION}) {
    SinglePanoramicView view(camera, projection);
    view.SetAspectRatio(FREE_ASPECT_RATIO);
    const YuvFrame f = Dewarp(view, 640, 480, NEAREST_NEIGHBOUR_INTERPOLATION);
    std::vector<double> theta;
    for (unsigned int y = 2; y < 480; y += 8) {
      const Direction d = Decode(f, 321, y);
      if (d.valid) theta.push_back(d.theta);
    }
    ASSERT_GT(theta.size(), 40u);
    for (size_t i = 1; i < theta.size(); ++i) {
      // The angle from the lens axis (straight down) falls steadily down the picture.
      EXPECT_LE(theta[i], theta[i - 1] + 0.01) << projection << " " << i;
    }
    EXPECT_GT(theta.front(), 1.4) << projection;  // the top row lies at the horizon
    EXPECT_LT(theta.back(), theta.front() - 0.5) << projection;
  }
}

// ---- PTZ views look where they are steered -------------------------------------------------------

Direction CentreDirection(View& view, unsigned int x, unsigned int y) {
  const YuvFrame f = Dewarp(view, 320, 240, LINEAR_INTERPOLATION);
  return Decode(f, x, y);
}

// A ceiling or floor camera shifts its projection maps by half their height and halves their
// vertical scale, so that panoramas show the half of the sphere below (above) the horizon. The
// PTZ view's rectilinear map, 2f tan(pi/4) = 2f high, is shifted in the same way: its centre
// samples the rectilinear plane f/2 off the axis, which turns the view by atan(1/2) towards the
// lens axis.
const double kCeilingPtzTurn = std::atan(0.5);

TEST(ViewEndToEnd, CeilingPtzCentreLooksAtThePanAndTiltAsked) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT, kSide);
  SinglePtzView view(camera, RECTILINEAR_PROJECTION);
  // Tilt counts from the horizon downwards (negative) towards the lens axis, so the centre ray
  // lies pi/2 + tilt - atan(1/2) from the axis; a change of pan turns it about the axis by the
  // same angle.
  view.SetPtz(PtzPosition(EulerAngles(0.3f, -0.4f, 0.0f), 2.0f));
  const Direction a = CentreDirection(view, 160, 120);
  view.SetPtz(PtzPosition(EulerAngles(1.3f, -0.4f, 0.0f), 2.0f));
  const Direction b = CentreDirection(view, 160, 120);
  view.SetPtz(PtzPosition(EulerAngles(1.3f, -0.9f, 0.0f), 2.0f));
  const Direction c = CentreDirection(view, 160, 120);
  ASSERT_TRUE(a.valid && b.valid && c.valid);
  EXPECT_NEAR(kPi / 2 - 0.4 - kCeilingPtzTurn, a.theta, 0.03);
  EXPECT_NEAR(kPi / 2 - 0.4 - kCeilingPtzTurn, b.theta, 0.03);
  EXPECT_NEAR(kPi / 2 - 0.9 - kCeilingPtzTurn, c.theta, 0.03);
  EXPECT_NEAR(1.0, std::fabs(WrapAngle(b.alpha - a.alpha)), 0.05);
  EXPECT_NEAR(0.0, WrapAngle(c.alpha - b.alpha), 0.05);
}

TEST(ViewEndToEnd, WallPtzCentreLooksAtThePanAndTiltAsked) {
  const CameraPtr camera = MakeFisheye(WALL_MOUNT, kSide);
  SinglePtzView view(camera, RECTILINEAR_PROJECTION);
  // The lens looks along pan 0, tilt 0: the centre ray lies acos(cos pan cos tilt) off its axis.
  const float positions[][2] = {{0.0f, 0.0f}, {0.5f, 0.3f}, {-0.6f, -0.2f}};
  for (const auto& p : positions) {
    view.SetPtz(PtzPosition(EulerAngles(p[0], p[1], 0.0f), 1.5f));
    const Direction d = CentreDirection(view, 160, 120);
    ASSERT_TRUE(d.valid);
    EXPECT_NEAR(std::acos(std::cos(p[0]) * std::cos(p[1])), d.theta, 0.03) << p[0] << "," << p[1];
  }
}

TEST(ViewEndToEnd, DualPtzPanesLookOppositeWays) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT, kSide);
  const PtzPosition p(EulerAngles(0.5f, -0.7f, 0.0f), 1.5f);
  SinglePtzView single(camera, RECTILINEAR_PROJECTION);
  DualPtzView dual(camera, RECTILINEAR_PROJECTION);
  single.SetPtz(p);
  dual.SetPtz(p);
  const Direction s = CentreDirection(single, 160, 120);
  const Direction top = CentreDirection(dual, 160, 60);
  const Direction bottom = CentreDirection(dual, 160, 180);
  ASSERT_TRUE(s.valid && top.valid && bottom.valid);
  EXPECT_NEAR(s.theta, top.theta, 0.03);
  EXPECT_NEAR(s.theta, bottom.theta, 0.03);
  EXPECT_NEAR(0.0, WrapAngle(top.alpha - s.alpha), 0.05);
  EXPECT_NEAR(kPi, std::fabs(WrapAngle(bottom.alpha - s.alpha)), 0.05);
}

TEST(ViewEndToEnd, QuadPtzPanesLookFourWays) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT, kSide);
  QuadPtzView quad(camera, RECTILINEAR_PROJECTION);
  quad.SetPtz(PtzPosition(EulerAngles(0.5f, -0.7f, 0.0f), 1.5f));
  const YuvFrame f = Dewarp(quad, 320, 240, LINEAR_INTERPOLATION);
  const Direction d[4] = {Decode(f, 80, 60), Decode(f, 240, 60), Decode(f, 80, 180), Decode(f, 240, 180)};
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(d[i].valid) << i;
    EXPECT_NEAR(kPi / 2 - 0.7 - kCeilingPtzTurn, d[i].theta, 0.03) << i;  // every pane at the same tilt
    for (int j = 0; j < i; ++j) {
      EXPECT_GT(std::fabs(WrapAngle(d[i].alpha - d[j].alpha)), 0.5) << i << " " << j;
    }
  }
}

// ---- Every kind, mount, projection and aspect mode --------------------------------------------------

// Each view is built as a channel builds it (by layout, with the projection asked for) and dewarps
// a direction frame; a picture passes when it shows the lens picture and is continuous: neighbouring
// pixels look in nearly the same direction (a wrong map scatters the directions, with steps of the
// order of 1).
void CheckPictures(View& view, const std::vector<DEWARP_ASPECT_RATIO>& aspects,
                   const std::vector<std::pair<unsigned int, unsigned int> >& sizes, const std::string& what) {
  for (DEWARP_ASPECT_RATIO aspect : aspects) {
    ASSERT_NO_THROW(view.SetAspectRatio(aspect)) << what;
    for (const auto& size : sizes) {
      for (DEWARP_INTERPOLATION interpolation : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
        const std::string where = what + " aspect " + std::to_string(aspect) + " " + std::to_string(size.first) +
                                  "x" + std::to_string(size.second) + " interpolation " +
                                  std::to_string(interpolation);
        YuvFrame f(2, 2);
        ASSERT_NO_THROW(f = Dewarp(view, size.first, size.second, interpolation)) << where;
        const Plausibility p = Judge(f);
        EXPECT_GT(p.coverage, 0.02) << where;  // a quad strip scaled into 16:9 fills about 5%
        EXPECT_LT(p.medianStep, 0.05) << where;
        EXPECT_LT(p.p90Step, 0.2) << where;
      }
    }
  }
}

std::string Describe(DEWARP_VIEW kind, DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_PROJECTION projection) {
  return "view " + std::to_string(kind) + " mount " + std::to_string(mount) + " projection " +
         std::to_string(projection);
}

const std::vector<DEWARP_ASPECT_RATIO> kAllAspects(std::begin(views_test::kAspects), std::end(views_test::kAspects));
const std::vector<std::pair<unsigned int, unsigned int> > kSmall = {{640, 480}};
const std::vector<std::pair<unsigned int, unsigned int> > kBothSizes = {{640, 480}, {1920, 1080}};

class EveryView : public ::testing::TestWithParam<DEWARP_VIEW> {};

// The full matrix (216 views, each rebuilt for three aspect modes and two sizes, every picture in
// both interpolations: 2592 dewarps) runs on the native 64-bit build. Under emulation and the
// address sanitizer it would take far too long, so those builds cover it in two cheaper sweeps:
//  - every mount and projection of the kind, each in one aspect mode (the three modes taking turns),
//    at 640x480 with both interpolations, over a frame and lens of a quarter the side (484 pixels),
//    which runs the same code on maps a sixteenth the size;
//  - one mount per kind (the four mounts taking turns over the kinds) in all three aspect modes at
//    640x480 and 1920x1080 with both interpolations (640x480 only under the address sanitizer).
// DEWARP_VIEWS_FULL_MATRIX=1 in the environment runs the full matrix there too. On the 32-bit
// build the first sweep takes one projection per mount (the projections taking turns) and the
// second runs at 640x480 only over a frame of half the side.
bool FullMatrix() {
  const char* full = std::getenv("DEWARP_VIEWS_FULL_MATRIX");
  return (!VIEWS_TEST_SANITIZED && !VIEWS_TEST_32_BIT) || (full && full[0] == '1');
}

TEST_P(EveryView, ShowsAPictureForEveryMountAndProjection) {
  const DEWARP_VIEW kind = GetParam();
  const ViewBuilder builder;
  int turn = 0;
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : views_test::kMounts) {
    const CameraPtr camera = MakeFisheye(mount, FullMatrix() ? kSide : kSide / 4);
    for (DEWARP_PROJECTION projection : views_test::kProjections) {
      if (VIEWS_TEST_32_BIT && !FullMatrix() && (projection + 2 * mount + kind) % 9 != 0) continue;
      const std::string what = Describe(kind, mount, projection);
      std::unique_ptr<View> view;
      ASSERT_NO_THROW(view.reset(builder.BuildView(kind, camera, projection))) << what;
      if (FullMatrix()) {
        CheckPictures(*view, kAllAspects, kBothSizes, what);
      } else {
        CheckPictures(*view, {views_test::kAspects[turn++ % 3]}, kSmall, what);
      }
    }
  }
}

TEST_P(EveryView, ShowsAPictureInEveryAspectModeAndSize) {
  const DEWARP_VIEW kind = GetParam();
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = views_test::kMounts[kind % 4];
  const DEWARP_PROJECTION projection = kind < SINGLE_PTZ_VIEW ? MERCATOR_PROJECTION : RECTILINEAR_PROJECTION;
  const std::string what = Describe(kind, mount, projection);
  std::unique_ptr<View> view;
  const unsigned int side = VIEWS_TEST_32_BIT && !FullMatrix() ? kSide / 2 : kSide;
  ASSERT_NO_THROW(view.reset(ViewBuilder().BuildView(kind, MakeFisheye(mount, side), projection))) << what;
  CheckPictures(*view, kAllAspects, VIEWS_TEST_SANITIZED || VIEWS_TEST_32_BIT ? kSmall : kBothSizes, what);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EveryView,
                         ::testing::Values(SINGLE_PANORAMIC_VIEW, DUAL_PANORAMIC_VIEW, QUAD_PANORAMIC_VIEW,
                                           SINGLE_PTZ_VIEW, DUAL_PTZ_VIEW, QUAD_PTZ_VIEW));

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
