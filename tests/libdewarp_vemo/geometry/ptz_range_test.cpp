#include <libdewarp_vemo/ptz_range.h>

#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using vemo::libdewarp::EulerAngles;
using vemo::libdewarp::FieldOfView;
using vemo::libdewarp::PtzPosition;
using vemo::libdewarp::PtzRange;
using vemo::libdewarp::Trigonometry;
using vemo::libdewarp::Vector2d;

namespace {

const double kPi = 3.14159265358979323846;
const float kPiF = Trigonometry::PI;
const float kHalfPiF = Trigonometry::HALF_PI;
const float kInf = std::numeric_limits<float>::infinity();
const float kNan = std::numeric_limits<float>::quiet_NaN();

void ExpectRange(const Vector2d& range, float hi, float lo) {
  EXPECT_EQ(range.X, hi);
  EXPECT_EQ(range.Y, lo);
}

void ExpectNearRange(const Vector2d& range, double hi, double lo, double tolerance) {
  EXPECT_NEAR(range.X, hi, tolerance);
  EXPECT_NEAR(range.Y, lo, tolerance);
}

TEST(PtzRange, FlagsAndStaticRanges) {
  EXPECT_EQ(PtzRange::ZeroFlags, 0u);
  EXPECT_EQ(PtzRange::NoDeflateHighTilt, 1u);
  EXPECT_EQ(PtzRange::NoDeflateLowTilt, 2u);
  ExpectRange(PtzRange::FullMotion, kPiF, -kPiF);
  ExpectRange(PtzRange::NoMotion, 0.0f, 0.0f);
  ExpectRange(PtzRange::EmptyZoomRange, 1.0f, 1.0f);
  ExpectRange(PtzRange::InfiniteZoomRange, kInf, 1.0f);
}

struct Expected {
  const PtzRange* range;
  float pan[2], tilt[2], roll[2], zoom[2];
};

TEST(PtzRange, StaticPtzRanges) {
  const Expected table[] = {
      {&PtzRange::CeilingPanoramicRange, {kPiF, -kPiF}, {0, 0}, {0, 0}, {1, 1}},
      {&PtzRange::FloorPanoramicRange, {kPiF, -kPiF}, {0, 0}, {0, 0}, {1, 1}},
      {&PtzRange::WallPanoramicRange, {0, 0}, {0, 0}, {kPiF, -kPiF}, {1, 1}},
      {&PtzRange::InvertedWallPanoramicRange, {0, 0}, {0, 0}, {kPiF, -kPiF}, {1, 1}},
      {&PtzRange::CeilingPtzRange, {kPiF, -kPiF}, {0, -kHalfPiF}, {0, 0}, {kInf, 1}},
      {&PtzRange::FloorPtzRange, {kPiF, -kPiF}, {kHalfPiF, 0}, {0, 0}, {kInf, 1}},
  };
  for (const Expected& e : table) {
    ExpectRange(e.range->m_obPanRange, e.pan[0], e.pan[1]);
    ExpectRange(e.range->m_obTiltRange, e.tilt[0], e.tilt[1]);
    ExpectRange(e.range->m_obRollRange, e.roll[0], e.roll[1]);
    ExpectRange(e.range->m_obZoomRange, e.zoom[0], e.zoom[1]);
    EXPECT_EQ(e.range->m_ulFlags, 0u);
  }
}

TEST(PtzRange, DefaultAndFourRangeConstructor) {
  const PtzRange d;
  ExpectRange(d.m_obPanRange, 0, 0);
  ExpectRange(d.m_obZoomRange, 0, 0);
  EXPECT_EQ(d.m_ulFlags, 0u);
  const PtzRange r(Vector2d(1, -1), Vector2d(2, -2), Vector2d(3, -3), Vector2d(4, 1), 3u);
  ExpectRange(r.m_obPanRange, 1, -1);
  ExpectRange(r.m_obTiltRange, 2, -2);
  ExpectRange(r.m_obRollRange, 3, -3);
  ExpectRange(r.m_obZoomRange, 4, 1);
  EXPECT_EQ(r.m_ulFlags, 3u);
  const PtzRange c(r);
  ExpectRange(c.m_obRollRange, 3, -3);
  EXPECT_EQ(c.m_ulFlags, 3u);
}

TEST(PtzRange, LimitTiltOnTheCeilingRange) {
  EXPECT_EQ(PtzRange::CeilingPtzRange.LimitTilt(1.0f), 0.0f);
  EXPECT_EQ(PtzRange::CeilingPtzRange.LimitTilt(-2.0f), -kHalfPiF);
  EXPECT_EQ(PtzRange::CeilingPtzRange.LimitTilt(-0.5f), -0.5f);
}

TEST(PtzRange, LimitsPassNanAndPreferHiOnAnInvertedRange) {
  const PtzRange r(Vector2d(1, 2), Vector2d(0.5f, -0.5f), Vector2d(0.25f, -0.25f), Vector2d(8, 1), 0);
  // Inverted pan range: first raised to Lo (2), then lowered to Hi (1).
  EXPECT_EQ(r.LimitPan(0.0f), 1.0f);
  EXPECT_EQ(r.LimitPan(5.0f), 1.0f);
  EXPECT_TRUE(std::isnan(r.LimitPan(kNan)));
  EXPECT_TRUE(std::isnan(r.LimitTilt(kNan)));
  EXPECT_EQ(r.LimitRoll(1.0f), 0.25f);
  EXPECT_EQ(r.LimitRoll(-1.0f), -0.25f);
  EXPECT_EQ(r.LimitZoom(0.5f), 1.0f);
  EXPECT_EQ(r.LimitZoom(20.0f), 8.0f);
  EXPECT_EQ(PtzRange::CeilingPtzRange.LimitZoom(1e30f), 1e30f);
}

TEST(PtzRange, LimitClampsEveryPartOfAPosition) {
  const PtzPosition limited =
      PtzRange::CeilingPtzRange.Limit(PtzPosition(EulerAngles(2.0f, 0.7f, 0.3f), 0.5f));
  EXPECT_EQ(limited.m_obOrientation.Yaw, 2.0f);
  EXPECT_EQ(limited.m_obOrientation.Pitch, 0.0f);
  EXPECT_EQ(limited.m_obOrientation.Roll, 0.0f);
  EXPECT_EQ(limited.m_fZoom, 1.0f);
}

DEWARP_PTZ_RANGE Record(float panLo, float panHi, float tiltLo, float tiltHi, float rollLo, float rollHi,
                        float zoomLo, float zoomHi) {
  DEWARP_PTZ_RANGE r;
  r.PanLo = panLo;
  r.PanHi = panHi;
  r.TiltLo = tiltLo;
  r.TiltHi = tiltHi;
  r.RollLo = rollLo;
  r.RollHi = rollHi;
  r.ZoomLo = zoomLo;
  r.ZoomHi = zoomHi;
  return r;
}

TEST(PtzRange, SetFromTheRecordConvertsAndWrapsTheAngles) {
  const PtzRange r(Record(-90, 270, -45, 30, -10, 10, 1, 4));
  ExpectNearRange(r.m_obPanRange, -kPi / 2, -kPi / 2, 1e-6);  // 270 degrees wraps to -90
  ExpectNearRange(r.m_obTiltRange, kPi / 6, -kPi / 4, 1e-6);
  ExpectNearRange(r.m_obRollRange, kPi / 18, -kPi / 18, 1e-6);
  ExpectRange(r.m_obZoomRange, 4, 1);
  EXPECT_EQ(r.m_ulFlags, 0u);
  const DEWARP_PTZ_RANGE back = r.Get();
  EXPECT_NEAR(back.PanLo, -90, 1e-4);
  EXPECT_NEAR(back.PanHi, -90, 1e-4);
  EXPECT_NEAR(back.TiltLo, -45, 1e-4);
  EXPECT_NEAR(back.TiltHi, 30, 1e-4);
  EXPECT_NEAR(back.RollLo, -10, 1e-4);
  EXPECT_NEAR(back.RollHi, 10, 1e-4);
  EXPECT_EQ(back.ZoomLo, 1.0f);
  EXPECT_EQ(back.ZoomHi, 4.0f);
}

TEST(PtzRange, SetFromExtentsGivesSymmetricRanges) {
  const PtzRange r(EulerAngles(2.0f, 1.0f, 0.5f), Vector2d(3, 1), PtzRange::NoDeflateLowTilt);
  ExpectNearRange(r.m_obPanRange, 1.0, -1.0, 1e-6);
  ExpectNearRange(r.m_obTiltRange, 0.5, -0.5, 1e-6);
  ExpectNearRange(r.m_obRollRange, 0.25, -0.25, 1e-6);
  ExpectRange(r.m_obZoomRange, 3, 1);
  EXPECT_EQ(r.m_ulFlags, PtzRange::NoDeflateLowTilt);
  // Half of a full turn and a bit wraps: 7 / 2 = 3.5 becomes 3.5 - 2pi.
  PtzRange w;
  w.Set(EulerAngles(7.0f, 0.0f, 0.0f), Vector2d(1, 1));
  ExpectNearRange(w.m_obPanRange, 3.5 - 2 * kPi, 2 * kPi - 3.5, 1e-6);
}

TEST(PtzRange, SetFromAFieldOfViewLeavesRollFree) {
  const PtzRange r(FieldOfView(2.0f, 1.0f), Vector2d(5, 1), 0);
  ExpectNearRange(r.m_obPanRange, 1.0, -1.0, 1e-6);
  ExpectNearRange(r.m_obTiltRange, 0.5, -0.5, 1e-6);
  ExpectRange(r.m_obRollRange, kPiF, -kPiF);
  ExpectRange(r.m_obZoomRange, 5, 1);
}

TEST(PtzRange, InflateWidensAllButFullMotion) {
  PtzRange r(Vector2d(0.5f, -0.5f), Vector2d(0.2f, -0.1f), Vector2d(0.3f, -0.3f), Vector2d(2, 1), 0);
  r.Inflate(FieldOfView(1.0f, 0.4f));
  ExpectNearRange(r.m_obPanRange, 1.0, -1.0, 1e-6);
  ExpectNearRange(r.m_obTiltRange, 0.4, -0.3, 1e-6);
  ExpectRange(r.m_obRollRange, 0.3f, -0.3f);
  ExpectRange(r.m_obZoomRange, 2, 1);
  PtzRange f = PtzRange::FloorPtzRange;
  f.Inflate(FieldOfView(1.0f, 0.4f));
  ExpectRange(f.m_obPanRange, kPiF, -kPiF);
  ExpectNearRange(f.m_obTiltRange, kPi / 2 + 0.2, -0.2, 1e-6);
}

TEST(PtzRange, DeflateLeavesFullMotionAndNarrowsTilt) {
  PtzRange r = PtzRange::FloorPtzRange;
  testing::internal::CaptureStderr();
  r.Deflate(FieldOfView(kHalfPiF, kHalfPiF));
  const std::string printed = testing::internal::GetCapturedStderr();
  ExpectRange(r.m_obPanRange, kPiF, -kPiF);
  ExpectNearRange(r.m_obTiltRange, kPi / 4, kPi / 4, 1e-6);
  ExpectRange(r.m_obZoomRange, kInf, 1);
  EXPECT_EQ(printed, "");
}

TEST(PtzRange, DeflateCollapsesATooNarrowPanRangeToItsMiddle) {
  PtzRange r(Vector2d(0.2f, -0.2f), PtzRange::FullMotion, PtzRange::NoMotion, PtzRange::EmptyZoomRange, 0);
  r.Deflate(FieldOfView(1.0f, 0.5f));
  ExpectRange(r.m_obPanRange, 0.0f, 0.0f);
  ExpectRange(r.m_obTiltRange, kPiF, -kPiF);
  // An off-centre range collapses to its own middle.
  PtzRange s(Vector2d(0.6f, 0.2f), PtzRange::FullMotion, PtzRange::NoMotion, PtzRange::EmptyZoomRange, 0);
  s.Deflate(FieldOfView(1.0f, 0.5f));
  ExpectNearRange(s.m_obPanRange, 0.4, 0.4, 1e-7);
}

TEST(PtzRange, DeflateNarrowsAWidePanRange) {
  PtzRange r(Vector2d(1.5f, -0.5f), PtzRange::FullMotion, PtzRange::NoMotion, PtzRange::EmptyZoomRange, 0);
  r.Deflate(FieldOfView(1.0f, 0.5f));
  ExpectNearRange(r.m_obPanRange, 1.0, 0.0, 1e-7);
}

TEST(PtzRange, NoDeflateHighTiltKeepsTheUpperLimitAndSaysSo) {
  PtzRange r(PtzRange::FullMotion, Vector2d(kHalfPiF, 0.0f), PtzRange::NoMotion, PtzRange::InfiniteZoomRange,
             PtzRange::NoDeflateHighTilt);
  testing::internal::CaptureStderr();
  r.Deflate(FieldOfView(0.0f, 0.5f, 0.5f));
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_EQ(r.m_obTiltRange.X, kHalfPiF);
  EXPECT_NEAR(r.m_obTiltRange.Y, 0.25, 1e-7);
  EXPECT_EQ(printed, "NoDeflateHighTilt flag active\n");
}

TEST(PtzRange, NoDeflateLowTiltKeepsTheLowerLimitAndSaysSo) {
  PtzRange r(PtzRange::FullMotion, Vector2d(0.0f, -kHalfPiF), PtzRange::NoMotion, PtzRange::InfiniteZoomRange,
             PtzRange::NoDeflateLowTilt);
  testing::internal::CaptureStderr();
  r.Deflate(FieldOfView(0.0f, 0.5f, 0.5f));
  r.Deflate(FieldOfView(0.0f, 0.5f, 0.5f));
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NEAR(r.m_obTiltRange.X, -0.5, 1e-6);
  EXPECT_EQ(r.m_obTiltRange.Y, -kHalfPiF);
  // Once per call.
  EXPECT_EQ(printed, "NoDeflateLowTilt flag active\nNoDeflateLowTilt flag active\n");
}

TEST(PtzRange, DeflateCollapsesATooNarrowTiltRangeToItsMiddle) {
  PtzRange r(PtzRange::FullMotion, Vector2d(0.3f, 0.1f), PtzRange::NoMotion, PtzRange::InfiniteZoomRange, 0);
  r.Deflate(FieldOfView(0.0f, 1.0f, 1.0f));
  ExpectNearRange(r.m_obTiltRange, 0.2, 0.2, 1e-7);
  // Both flags keep both limits: nothing to collapse, two messages.
  PtzRange both(PtzRange::FullMotion, Vector2d(0.3f, 0.1f), PtzRange::NoMotion, PtzRange::InfiniteZoomRange,
                PtzRange::NoDeflateHighTilt | PtzRange::NoDeflateLowTilt);
  testing::internal::CaptureStderr();
  both.Deflate(FieldOfView(0.0f, 1.0f, 1.0f));
  const std::string printed = testing::internal::GetCapturedStderr();
  ExpectRange(both.m_obTiltRange, 0.3f, 0.1f);
  EXPECT_EQ(printed, "NoDeflateHighTilt flag active\nNoDeflateLowTilt flag active\n");
}

}  // namespace
