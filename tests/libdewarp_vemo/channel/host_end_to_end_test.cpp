// End to end as a host drives the engine: a channel on the built-in camera, every mount, view kind,
// projection, aspect ratio and interpolation, PTZ steps, clicked points and frames of several sizes
// (odd ones too), then close. Expected values come from the lens (183 degrees over 1936 pixels),
// the PTZ ranges of the view kinds and the limiting rules, worked out here independently.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "channel_test_support.h"

namespace {

using namespace channel_test;
using vemo::test::LogCapture;

const double kLensFov = 183.0;  // degrees, every direction
// The walk through every combination runs on the built-in lens scaled down (same angles); the
// built-in camera itself is driven through every view kind and mount below.
const unsigned int kLensSide = kSmallSide;
const double kPtzFov = 90.0;    // a PTZ pane shows 90 by 90 degrees
const double kTolerance = 2e-3; // degrees after a round trip through radians in single precision

const std::uint8_t kY = 200, kU = 60, kV = 190;  // the uniform test picture
const std::uint8_t kPrefill = 77;               // what the host left in the output buffer

// Focal length of the equidistant lens in pixels per radian.
double FocalLength(unsigned int side = kLensSide) { return side / (kLensFov * kPi / 180.0); }

// Angle wrapped into [-180, 180).
double Wrap(double degrees) {
  double a = std::fmod(degrees + 180.0, 360.0);
  if (a < 0) a += 360.0;
  return a - 180.0;
}

// The PTZ range a view kind allows on a mount (degrees; zoom upper bound infinite for PTZ panes).
struct Range {
  double panLo, panHi, tiltLo, tiltHi, rollLo, rollHi, zoomLo, zoomHi;
};

Range ExpectedRange(DEWARP_VIEW view, DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  const double inf = HUGE_VAL;
  const bool vertical = mount == CEILING_MOUNT || mount == FLOOR_MOUNT;
  if (!IsPtzView(view)) {
    // Panoramic: the whole circle about the lens axis (ceiling, floor) or about the view axis (walls).
    if (vertical) return {-180, 180, 0, 0, 0, 0, 1, 1};
    return {0, 0, 0, 0, -180, 180, 1, 1};
  }
  const double half = kPtzFov / 2;
  // Ceiling: tilt from straight out (0) to straight down (-90); floor the mirror image; both
  // widened by half the pane's field of view.
  if (mount == CEILING_MOUNT) return {-180, 180, -90 - half, 0 + half, 0, 0, 1, inf};
  if (mount == FLOOR_MOUNT) return {-180, 180, 0 - half, 90 + half, 0, 0, 1, inf};
  // Walls: half the lens's field of view either way, any roll.
  return {-kLensFov / 2, kLensFov / 2, -kLensFov / 2, kLensFov / 2, -180, 180, 1, inf};
}

void ExpectRange(const DEWARP_PTZ_RANGE& r, const Range& e, const std::string& where) {
  EXPECT_NEAR(r.PanLo, e.panLo, kTolerance) << where;
  EXPECT_NEAR(r.PanHi, e.panHi, kTolerance) << where;
  EXPECT_NEAR(r.TiltLo, e.tiltLo, kTolerance) << where;
  EXPECT_NEAR(r.TiltHi, e.tiltHi, kTolerance) << where;
  EXPECT_NEAR(r.RollLo, e.rollLo, kTolerance) << where;
  EXPECT_NEAR(r.RollHi, e.rollHi, kTolerance) << where;
  EXPECT_EQ(r.ZoomLo, e.zoomLo) << where;
  if (std::isinf(e.zoomHi)) {
    EXPECT_TRUE(std::isinf(r.ZoomHi) && r.ZoomHi > 0) << where;
  } else {
    EXPECT_EQ(r.ZoomHi, e.zoomHi) << where;
  }
}

// One bound narrowed so that a pane of half-width `half` stays inside: unless the axis turns all
// the way round, each end moves in by `half`; a range too small for the pane collapses to its middle.
std::pair<double, double> Deflate(double lo, double hi, double half, bool fullCircle) {
  if (fullCircle) return {lo, hi};
  if (lo + half > hi - half) return {(lo + hi) / 2, (lo + hi) / 2};
  return {lo + half, hi - half};
}

double Clamp(double x, double lo, double hi) { return std::min(std::max(x, lo), hi); }

// The position a view takes when asked for `p` (degrees), from its range and its field of view
// (the pane's 90 degrees for PTZ kinds; the panoramic kinds' ranges collapse whatever it is).
DEWARP_PTZ_POSITION ExpectedLimit(const Range& r, bool ptz, const DEWARP_PTZ_POSITION& p) {
  const double zoom = Clamp(p.Zoom, r.zoomLo, r.zoomHi);
  const double half = ptz ? kPtzFov / zoom / 2 : 1.0;  // any positive half-width for panoramas
  const bool panCircle = r.panLo == -180 && r.panHi == 180;
  const std::pair<double, double> pan = Deflate(r.panLo, r.panHi, half, panCircle);
  const std::pair<double, double> tilt = Deflate(r.tiltLo, r.tiltHi, half, false);
  DEWARP_PTZ_POSITION out;
  out.Pan = static_cast<float>(Clamp(Wrap(p.Pan), pan.first, pan.second));
  out.Tilt = static_cast<float>(Clamp(Wrap(p.Tilt), tilt.first, tilt.second));
  out.Roll = static_cast<float>(Clamp(Wrap(p.Roll), r.rollLo, r.rollHi));
  out.Zoom = static_cast<float>(zoom);
  return out;
}

void ExpectPtz(const DEWARP_PTZ_POSITION& got, const DEWARP_PTZ_POSITION& want, const std::string& where) {
  EXPECT_NEAR(got.Pan, want.Pan, kTolerance) << where;
  EXPECT_NEAR(got.Tilt, want.Tilt, kTolerance) << where;
  EXPECT_NEAR(got.Roll, want.Roll, kTolerance) << where;
  EXPECT_NEAR(got.Zoom, want.Zoom, 1e-5) << where;
}

std::string Where(DEWARP_INTERNAL_CAMERA_MOUNT mount, DEWARP_VIEW view, int projection = -1) {
  return "mount " + std::to_string(mount) + " view " + std::to_string(view) +
         (projection >= 0 ? " projection " + std::to_string(projection) : std::string());
}

// The fisheye picture of a lens of the given side, one colour all over (shared by the tests).
Frame& Picture(unsigned int side = kLensSide) {
  static std::map<unsigned int, Frame> pictures;
  std::map<unsigned int, Frame>::iterator it = pictures.find(side);
  if (it == pictures.end()) {
    it = pictures.insert(std::make_pair(side, Frame(side, side, side, 0))).first;
    it->second.Fill(kY, kU, kV);
  }
  return it->second;
}

struct FrameResult {
  int result;
  std::size_t picture;  // luma samples showing the picture
  std::size_t outside;  // luma samples of the default colour
  std::size_t other;    // luma samples with any other value
  bool unchanged;
  std::string others;   // where the first few of those are, for the failure message
};

// Dewarps the picture into a fresh output of the given size and sorts what it holds.
FrameResult Dewarp(DEWARP_CHANNEL channel, unsigned int width, unsigned int height,
                   DEWARP_INTERPOLATION interpolation, Frame* keep = nullptr,
                   unsigned int side = kLensSide) {
  Frame out(width, height, width, kPrefill);
  const std::vector<std::uint8_t> before = out.Bytes();
  FrameResult r = {0, 0, 0, 0, false, std::string()};
  r.result = dewarp_image(channel, &Picture(side).Image(), &out.Image());
  EXPECT_EQ(out.Image().Data, out.Data()) << "the host's own buffer is handed back";
  EXPECT_TRUE(out.GuardsIntact()) << width << "x" << height;
  EXPECT_TRUE(Picture(side).GuardsIntact());
  r.unchanged = out.Bytes() == before;
  for (unsigned int y = 0; y < height; ++y) {
    for (unsigned int x = 0; x < width; ++x) {
      const std::uint8_t v = out.Y(x, y);
      // Bilinear blending of one value may come out one below it (the blend is truncated).
      const bool picture = interpolation == LINEAR_INTERPOLATION ? (v == kY || v == kY - 1) : v == kY;
      if (picture) {
        ++r.picture;
      } else if (v == 16) {
        ++r.outside;
      } else if (!(v == kPrefill && (interpolation == LINEAR_INTERPOLATION || y + 1 == height ||
                                     height < 2))) {
        // The prefill may only survive where a frame leaves samples alone: the last row of an odd
        // height, a single row, and beside the top-left sample of a bilinear block outside.
        if (++r.other <= 8) {
          r.others += " (" + std::to_string(x) + "," + std::to_string(y) + ")=" + std::to_string(v);
        }
      }
    }
  }
  if (keep) *keep = out;
  return r;
}

class HostEndToEnd : public ::testing::TestWithParam<DEWARP_INTERNAL_CAMERA_MOUNT> {};

TEST_P(HostEndToEnd, EveryViewKindProjectionAndSetting) {
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = GetParam();
  LogCapture capture(LOG_ERROR);  // nothing here is an error
  ScopedChannel channel(OpenSmall(mount));
  ASSERT_NE(channel.get(), nullptr);
  EXPECT_EQ(dewarp_channel_valid(channel), 0);
  EXPECT_EQ(dewarp_internal_get_mount(channel), mount);
  DEWARP_INTERNAL_CAMERA_MODEL model;
  ASSERT_EQ(dewarp_internal_get_model(channel, &model), 0);
  const DEWARP_INTERNAL_CAMERA_MODEL lens = SmallLens();
  EXPECT_EQ(std::memcmp(&model, &lens, sizeof model), 0);

  // The camera's defaults: single panoramic view.
  DEWARP_PTZ_RANGE range;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0);
  ExpectRange(range, ExpectedRange(SINGLE_PANORAMIC_VIEW, mount), Where(mount, SINGLE_PANORAMIC_VIEW));

  // Every view kind with every projection: the views accept or substitute, never refuse.
  std::map<std::pair<int, int>, DEWARP_RESOLUTION> native;
  for (DEWARP_PROJECTION projection : kProjections) {
    for (DEWARP_VIEW view : kViews) {
      const std::string where = Where(mount, view, projection);
      ASSERT_EQ(dewarp_set_projection(channel, view, projection), 0) << where << AllLines(capture);
      DEWARP_RESOLUTION r = {0, 0};
      ASSERT_EQ(dewarp_get_native_resolution(channel, &r), 0) << where;
      EXPECT_GT(r.Width, 0u) << where;
      EXPECT_GT(r.Height, 0u) << where;
      native[std::make_pair(static_cast<int>(projection), static_cast<int>(view))] = r;
      ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0) << where;
      ExpectRange(range, ExpectedRange(view, mount), where);
    }
    const DEWARP_RESOLUTION single = native[std::make_pair(int(projection), int(SINGLE_PANORAMIC_VIEW))];
    const DEWARP_RESOLUTION dual = native[std::make_pair(int(projection), int(DUAL_PANORAMIC_VIEW))];
    const DEWARP_RESOLUTION quad = native[std::make_pair(int(projection), int(QUAD_PANORAMIC_VIEW))];
    // Two strips of half the width one above the other; four strips of a quarter.
    EXPECT_EQ(dual.Width, single.Width / 2) << projection;
    EXPECT_EQ(dual.Height, single.Height * 2) << projection;
    EXPECT_EQ(quad.Width, single.Width / 4) << projection;
    EXPECT_EQ(quad.Height, single.Height * 4) << projection;
    // The PTZ kinds differ only in how the panes are laid out, not in the projection they sample.
    const DEWARP_RESOLUTION ptz = native[std::make_pair(int(projection), int(SINGLE_PTZ_VIEW))];
    for (DEWARP_VIEW view : {DUAL_PTZ_VIEW, QUAD_PTZ_VIEW}) {
      const DEWARP_RESOLUTION other = native[std::make_pair(int(projection), int(view))];
      EXPECT_EQ(other.Width, ptz.Width) << projection;
      EXPECT_EQ(other.Height, ptz.Height) << projection;
    }
  }
  // A rectilinear pane of 90 by 90 degrees is 2 f tan(45 degrees) = 2 f pixels square.
  const DEWARP_RESOLUTION pane = native[std::make_pair(int(RECTILINEAR_PROJECTION), int(SINGLE_PTZ_VIEW))];
  EXPECT_NEAR(pane.Width, 2 * FocalLength(), 2.0);
  EXPECT_EQ(pane.Width, pane.Height);

  // Aspect ratios and interpolations on every view kind, with frames of several sizes.
  struct Size {
    unsigned int w, h;
  };
  const Size sizes[] = {{64, 48}, {33, 17}, {3, 1}, {2, 2}};
  for (DEWARP_VIEW view : kViews) {
    const DEWARP_PROJECTION projection = IsPtzView(view) ? RECTILINEAR_PROJECTION : CYLINDRICAL_PROJECTION;
    ASSERT_EQ(dewarp_set_projection(channel, view, projection), 0);
    for (DEWARP_ASPECT_RATIO aspect : kAspects) {
      ASSERT_EQ(dewarp_set_aspect_ratio(channel, aspect), 0);
      for (DEWARP_INTERPOLATION interpolation : kInterpolations) {
        ASSERT_EQ(dewarp_set_interpolation(channel, interpolation), 0);
        for (const Size& s : sizes) {
          const std::string where = Where(mount, view) + " aspect " + std::to_string(aspect) +
                                    " interpolation " + std::to_string(interpolation) + " size " +
                                    std::to_string(s.w) + "x" + std::to_string(s.h);
          const FrameResult f = Dewarp(channel, s.w, s.h, interpolation);
          EXPECT_EQ(f.result, 0) << where << AllLines(capture);
          if (interpolation == CUBIC_INTERPOLATION || s.h < 2) {
            // No cubic remap exists (the frame is left as it was), and a frame needs a pair of rows.
            EXPECT_TRUE(f.unchanged) << where;
            continue;
          }
          EXPECT_EQ(f.other, 0u) << where << f.others;
          // Scaled with its proportions kept, the tall, narrow quad panorama is a single column
          // of pixels in a 33x17 frame, and the remap draws whole pairs of pixels only.
          const bool singleColumn = view == QUAD_PANORAMIC_VIEW && aspect == SCALE_TO_ASPECT_RATIO && s.w < 64;
          if (s.w >= 32 && !singleColumn) {
            EXPECT_GT(f.picture, 0u) << where;
          }
        }
      }
    }
  }
  EXPECT_TRUE(capture.lines().empty()) << AllLines(capture);
}

TEST_P(HostEndToEnd, PtzStepsAndClickedPoints) {
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = GetParam();
  LogCapture capture(LOG_ERROR);
  ScopedChannel channel(OpenSmall(mount));
  ASSERT_NE(channel.get(), nullptr);
  for (DEWARP_VIEW view : {SINGLE_PANORAMIC_VIEW, DUAL_PANORAMIC_VIEW, SINGLE_PTZ_VIEW, QUAD_PTZ_VIEW}) {
    const bool ptz = IsPtzView(view);
    ASSERT_EQ(dewarp_set_projection(channel, view, ptz ? RECTILINEAR_PROJECTION : CYLINDRICAL_PROJECTION), 0);
    const Range range = ExpectedRange(view, mount);
    // A host's PTZ joystick: steps in pan, tilt, roll and zoom, each written back as taken.
    for (int step = 0; step < 12; ++step) {
      const DEWARP_PTZ_POSITION wanted = Ptz(-170.0f + 37.0f * step, -100.0f + 19.0f * step,
                                             -50.0f + 11.0f * step, 0.5f + 0.75f * step);
      DEWARP_PTZ_POSITION position = wanted;
      const std::string where = Where(mount, view) + " step " + std::to_string(step);
      ASSERT_EQ(dewarp_set_ptz(channel, &position), 0) << where;
      const DEWARP_PTZ_POSITION expected = ExpectedLimit(range, ptz, wanted);
      ExpectPtz(position, expected, where);
      DEWARP_PTZ_POSITION stored = UntouchedPtz();
      ASSERT_EQ(dewarp_get_ptz(channel, &stored), 0);
      ExpectPtz(stored, expected, where + " (stored)");
      if (step % 4 == 0) {
        const FrameResult f = Dewarp(channel, 48, 32, NEAREST_NEIGHBOUR_INTERPOLATION);
        EXPECT_EQ(f.result, 0) << where;
      }
    }
    // Clicked points: inside the range, never zoomed beyond the limit, the view left where it is.
    DEWARP_PTZ_POSITION before = UntouchedPtz();
    ASSERT_EQ(dewarp_get_ptz(channel, &before), 0);
    const int points[][2] = {{121, 121}, {12, 121}, {121, 225}, {190, 50}, {0, 0}, {-50, 5000}};
    for (const int* p : points) {
      for (float maxZoom : {0.5f, 1.0f, 4.0f}) {
        DEWARP_PTZ_POSITION position = UntouchedPtz();
        const std::string where = Where(mount, view) + " point " + std::to_string(p[0]) + "," +
                                  std::to_string(p[1]) + " max zoom " + std::to_string(maxZoom);
        ASSERT_EQ(dewarp_calc_ptz_position(channel, p[0], p[1], maxZoom, &position), 0) << where;
        EXPECT_LE(position.Zoom, maxZoom) << where;
        if (!ptz) {
          EXPECT_EQ(position.Zoom, std::min(maxZoom, 1.0f)) << where << " (the panorama does not zoom)";
        } else {
          EXPECT_GE(position.Zoom, std::min(maxZoom, 1.0f)) << where;
        }
        EXPECT_GE(position.Pan, range.panLo - kTolerance) << where;
        EXPECT_LE(position.Pan, range.panHi + kTolerance) << where;
        EXPECT_GE(position.Tilt, range.tiltLo - kTolerance) << where;
        EXPECT_LE(position.Tilt, range.tiltHi + kTolerance) << where;
        EXPECT_NEAR(position.Roll, 0.0f, kTolerance) << where;
      }
    }
    DEWARP_PTZ_POSITION after = UntouchedPtz();
    ASSERT_EQ(dewarp_get_ptz(channel, &after), 0);
    EXPECT_TRUE(SamePtz(before, after)) << Where(mount, view);
  }
  // On a wall the lens centre is straight ahead: pan 0, tilt 0, and the pane fits at zoom 1.
  if (mount == WALL_MOUNT || mount == INVERTED_WALL_MOUNT) {
    ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
    DEWARP_PTZ_POSITION position = UntouchedPtz();
    ASSERT_EQ(dewarp_calc_ptz_position(channel, kLensSide / 2, kLensSide / 2, 4.0f, &position), 0);
    ExpectPtz(position, Ptz(0, 0, 0, 1), "wall lens centre");
  }
  EXPECT_TRUE(capture.lines().empty()) << AllLines(capture);
}

TEST_P(HostEndToEnd, MountChangesKeepTheViewsOfEachMount) {
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = GetParam();
  ScopedChannel channel(OpenSmall(mount));
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  DEWARP_PTZ_POSITION position = Ptz(20.0f, 10.0f, 0.0f, 3.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  const DEWARP_PTZ_POSITION taken = position;
  for (DEWARP_INTERNAL_CAMERA_MOUNT other : kMounts) {
    if (other == mount) continue;
    ASSERT_EQ(dewarp_internal_set_mount(channel, other), 0);
    EXPECT_EQ(dewarp_internal_get_mount(channel), other);
    DEWARP_PTZ_RANGE range;
    ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0);
    ExpectRange(range, ExpectedRange(SINGLE_PTZ_VIEW, other), Where(other, SINGLE_PTZ_VIEW));
    DEWARP_PTZ_POSITION fresh = UntouchedPtz();
    ASSERT_EQ(dewarp_get_ptz(channel, &fresh), 0);
    EXPECT_NEAR(fresh.Zoom, 1.0f, 1e-6) << "a view of another mount starts afresh";
    const FrameResult f = Dewarp(channel, 40, 30, LINEAR_INTERPOLATION);
    EXPECT_EQ(f.result, 0);
    EXPECT_EQ(f.other, 0u);
  }
  ASSERT_EQ(dewarp_internal_set_mount(channel, mount), 0);
  DEWARP_PTZ_POSITION back = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &back), 0);
  ExpectPtz(back, taken, "back on the first mount");
}

TEST(HostEndToEndFrames, LargerAndOddFramesOnTheBuiltInCamera) {
  const unsigned int side = 1936;
  ScopedChannel channel(OpenBuiltIn(WALL_MOUNT));
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  struct Size {
    unsigned int w, h;
  };
  for (const Size s : {Size{640, 480}, Size{161, 99}, Size{1, 2}, Size{7, 3}, Size{1, 1}}) {
    for (DEWARP_INTERPOLATION interpolation : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
      ASSERT_EQ(dewarp_set_interpolation(channel, interpolation), 0);
      Frame out(1, 1, 1, 0);
      const FrameResult f = Dewarp(channel, s.w, s.h, interpolation, &out, side);
      const std::string where = std::to_string(s.w) + "x" + std::to_string(s.h) + " interpolation " +
                                std::to_string(interpolation);
      EXPECT_EQ(f.result, 0) << where;
      if (s.h < 2) {
        EXPECT_TRUE(f.unchanged) << where;
        continue;
      }
      EXPECT_EQ(f.other, 0u) << where << f.others;
      if (s.w < 4) continue;
      // The pane looks straight along the lens axis: its centre shows the picture.
      const std::uint8_t centre = out.Y(s.w / 2 & ~1u, s.h / 2 & ~1u);
      EXPECT_TRUE(centre == kY || (interpolation == LINEAR_INTERPOLATION && centre == kY - 1))
          << where << " centre " << int(centre);
    }
  }
  // A host stride wider than the width (nearest neighbour addresses rows by the stride).
  Frame wide(50, 40, 64, kPrefill);
  ASSERT_EQ(dewarp_set_interpolation(channel, NEAREST_NEIGHBOUR_INTERPOLATION), 0);
  EXPECT_EQ(dewarp_image(channel, &Picture(side).Image(), &wide.Image()), 0);
  EXPECT_TRUE(wide.GuardsIntact());
  EXPECT_EQ(wide.Y(24, 20), kY);
  for (unsigned int y = 0; y < 40; ++y) {
    for (unsigned int x = 50; x < 64; ++x) EXPECT_EQ(wide.Y(x, y), kPrefill) << x << "," << y;
  }
  // A source smaller than the lens: what lies beyond it is shown as the default colour.
  Frame small(64, 64, 64, 0);
  small.Fill(kY, kU, kV);
  Frame out(32, 32, 32, kPrefill);
  EXPECT_EQ(dewarp_image(channel, &small.Image(), &out.Image()), 0);
  EXPECT_TRUE(out.GuardsIntact());
  EXPECT_TRUE(small.GuardsIntact());
  EXPECT_EQ(out.Y(16, 16), 16) << "the lens centre lies beyond a 64-pixel source";
}

// The built-in camera as the in-house host adapter opens it: every view kind and every mount.
TEST(HostEndToEndBuiltIn, EveryViewKindAndMount) {
  const unsigned int side = 1936;
  LogCapture capture(LOG_ERROR);
  ScopedChannel channel(OpenBuiltIn(WALL_MOUNT));
  ASSERT_NE(channel.get(), nullptr);
  DEWARP_INTERNAL_CAMERA_MODEL model;
  ASSERT_EQ(dewarp_internal_get_model(channel, &model), 0);
  const DEWARP_INTERNAL_CAMERA_MODEL builtIn = GetNorvikKestrelMk2Camera();
  EXPECT_EQ(std::memcmp(&model, &builtIn, sizeof model), 0);
  for (DEWARP_VIEW view : kViews) {
    ASSERT_EQ(dewarp_set_view(channel, view), 0) << view << AllLines(capture);
    DEWARP_PTZ_RANGE range;
    ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0);
    ExpectRange(range, ExpectedRange(view, WALL_MOUNT), Where(WALL_MOUNT, view));
    for (DEWARP_INTERPOLATION interpolation : kInterpolations) {
      ASSERT_EQ(dewarp_set_interpolation(channel, interpolation), 0);
      const FrameResult f = Dewarp(channel, 48, 36, interpolation, nullptr, side);
      EXPECT_EQ(f.result, 0) << Where(WALL_MOUNT, view);
      if (interpolation == CUBIC_INTERPOLATION) {
        EXPECT_TRUE(f.unchanged);
      } else {
        EXPECT_EQ(f.other, 0u) << Where(WALL_MOUNT, view) << f.others;
        EXPECT_GT(f.picture, 0u) << Where(WALL_MOUNT, view);
      }
    }
  }
  // The pane of the built-in lens: 90 degrees over 2 f pixels.
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  DEWARP_RESOLUTION pane = {0, 0};
  ASSERT_EQ(dewarp_get_native_resolution(channel, &pane), 0);
  EXPECT_NEAR(pane.Width, 2 * FocalLength(side), 2.0);
  EXPECT_EQ(pane.Width, pane.Height);
  DEWARP_PTZ_POSITION centre = UntouchedPtz();
  ASSERT_EQ(dewarp_calc_ptz_position(channel, side / 2, side / 2, 4.0f, &centre), 0);
  ExpectPtz(centre, Ptz(0, 0, 0, 1), "wall lens centre");
  DEWARP_PTZ_POSITION position = Ptz(80.0f, -80.0f, 10.0f, 2.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  ExpectPtz(position, ExpectedLimit(ExpectedRange(SINGLE_PTZ_VIEW, WALL_MOUNT), true, Ptz(80, -80, 10, 2)),
            "built-in wall pane");
  ASSERT_EQ(dewarp_set_interpolation(channel, NEAREST_NEIGHBOUR_INTERPOLATION), 0);
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : kMounts) {
    ASSERT_EQ(dewarp_internal_set_mount(channel, mount), 0);
    EXPECT_EQ(dewarp_internal_get_mount(channel), mount);
    DEWARP_PTZ_RANGE range;
    ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0);
    ExpectRange(range, ExpectedRange(SINGLE_PTZ_VIEW, mount), Where(mount, SINGLE_PTZ_VIEW));
    const FrameResult f = Dewarp(channel, 40, 30, NEAREST_NEIGHBOUR_INTERPOLATION, nullptr, side);
    EXPECT_EQ(f.result, 0);
    EXPECT_EQ(f.other, 0u) << f.others;
  }
  EXPECT_TRUE(capture.lines().empty()) << AllLines(capture);
}

INSTANTIATE_TEST_SUITE_P(Mounts, HostEndToEnd,
                         ::testing::Values(CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT, INVERTED_WALL_MOUNT));

}  // namespace
