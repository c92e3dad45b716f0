#include <libdewarp_vemo/ptz_position.h>

#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::EulerAngles;
using vemo::libdewarp::PtzPosition;
using vemo::libdewarp::Trigonometry;

namespace {

const double kPi = 3.14159265358979323846;
const float kNan = std::numeric_limits<float>::quiet_NaN();

DEWARP_PTZ_POSITION Record(float pan, float tilt, float roll, float zoom) {
  DEWARP_PTZ_POSITION r;
  r.Pan = pan;
  r.Tilt = tilt;
  r.Roll = roll;
  r.Zoom = zoom;
  return r;
}

TEST(PtzPosition, DefaultIsTheIdentityWithZoomOne) {
  const PtzPosition p;
  EXPECT_EQ(p.m_obOrientation, EulerAngles::Identity);
  EXPECT_EQ(p.m_fZoom, 1.0f);
  EXPECT_EQ(PtzPosition::DefaultZoom, 1.0f);
  EXPECT_EQ(PtzPosition::DefaultOrientation, EulerAngles::Identity);
  EXPECT_EQ(PtzPosition::Identity.m_obOrientation, EulerAngles::Identity);
  EXPECT_EQ(PtzPosition::Identity.m_fZoom, 1.0f);
}

TEST(PtzPosition, IdentityEqualsDefaultAndNeitherIsValid) {
  EXPECT_TRUE(PtzPosition::Identity == PtzPosition());
  EXPECT_FALSE(PtzPosition::Identity != PtzPosition());
  EXPECT_FALSE(PtzPosition::Identity.IsValid());
  EXPECT_FALSE(PtzPosition().IsValid());
}

TEST(PtzPosition, NoPositionCountsAsValid) {
  EXPECT_FALSE(PtzPosition(EulerAngles(0.1f, 0.2f, 0.3f), 2.0f).IsValid());
  PtzPosition cleared;
  cleared.Clear();
  EXPECT_FALSE(cleared.IsValid());
}

TEST(PtzPosition, SetFromTheRecordWrapsTheAngles) {
  const PtzPosition p(Record(270.0f, 0.0f, 0.0f, 2.0f));
  EXPECT_NEAR(p.m_obOrientation.Yaw, -kPi / 2, 1e-6);
  EXPECT_EQ(p.m_obOrientation.Pitch, 0.0f);
  EXPECT_EQ(p.m_obOrientation.Roll, 0.0f);
  EXPECT_EQ(p.m_fZoom, 2.0f);
  DEWARP_PTZ_POSITION back;
  p.Get(back);
  EXPECT_NEAR(back.Pan, -90.0, 1e-4);
  EXPECT_EQ(back.Tilt, 0.0f);
  EXPECT_EQ(back.Roll, 0.0f);
  EXPECT_EQ(back.Zoom, 2.0f);
}

TEST(PtzPosition, SetConvertsEachAngle) {
  PtzPosition p;
  p.Set(Record(45.0f, -30.0f, 540.0f, 0.5f));
  EXPECT_NEAR(p.m_obOrientation.Yaw, kPi / 4, 1e-6);
  EXPECT_NEAR(p.m_obOrientation.Pitch, -kPi / 6, 1e-6);
  // 540 degrees is a turn and a half: -pi in [-pi, pi).
  EXPECT_NEAR(p.m_obOrientation.Roll, -kPi, 1e-5);
  EXPECT_EQ(p.m_fZoom, 0.5f);
}

TEST(PtzPosition, GetDoesNotWrap) {
  const PtzPosition p(EulerAngles(4.0f, -1.0f, 0.5f), 3.0f);
  const DEWARP_PTZ_POSITION r = p.Get();
  EXPECT_NEAR(r.Pan, 4.0 * 180 / kPi, 1e-3);
  EXPECT_NEAR(r.Tilt, -180 / kPi, 1e-4);
  EXPECT_NEAR(r.Roll, 90 / kPi, 1e-4);
  EXPECT_EQ(r.Zoom, 3.0f);
}

TEST(PtzPosition, ClearAndSetIdentity) {
  PtzPosition p(EulerAngles(0.1f, 0.2f, 0.3f), 4.0f);
  p.Clear();
  EXPECT_TRUE(std::isnan(p.m_obOrientation.Yaw));
  EXPECT_TRUE(std::isnan(p.m_obOrientation.Pitch));
  EXPECT_TRUE(std::isnan(p.m_obOrientation.Roll));
  EXPECT_TRUE(std::isnan(p.m_fZoom));
  PtzPosition q(EulerAngles(0.1f, 0.2f, 0.3f), 4.0f);
  q.SetIdentity();
  EXPECT_EQ(q.m_obOrientation, EulerAngles::Identity);
  EXPECT_EQ(q.m_fZoom, 4.0f);
}

TEST(PtzPosition, EqualityIsExact) {
  const PtzPosition a(EulerAngles(0.1f, 0.2f, 0.3f), 2.0f);
  EXPECT_TRUE(a == PtzPosition(EulerAngles(0.1f, 0.2f, 0.3f), 2.0f));
  EXPECT_FALSE(a == PtzPosition(EulerAngles(0.1f, 0.2f, 0.3f), std::nextafter(2.0f, 3.0f)));
  EXPECT_TRUE(a != PtzPosition(EulerAngles(0.1f, 0.2f, 0.3f), std::nextafter(2.0f, 3.0f)));
  EXPECT_TRUE(a != PtzPosition(EulerAngles(0.1f, 0.25f, 0.3f), 2.0f));
  // With NaN neither equal nor unequal.
  const PtzPosition n(EulerAngles(0.1f, 0.2f, 0.3f), kNan);
  EXPECT_FALSE(n == n);
  EXPECT_FALSE(n != n);
}

TEST(PtzPosition, ConcatenateComposesOrientationsAndMultipliesZoom) {
  PtzPosition p(EulerAngles(0.3f, 0.0f, 0.0f), 2.0f);
  p.Concatenate(PtzPosition(EulerAngles(0.4f, 0.0f, 0.0f), 1.5f));
  EXPECT_NEAR(p.m_obOrientation.Yaw, 0.7, 1e-6);
  EXPECT_NEAR(p.m_obOrientation.Pitch, 0.0, 1e-6);
  EXPECT_NEAR(p.m_obOrientation.Roll, 0.0, 1e-6);
  EXPECT_EQ(p.m_fZoom, 3.0f);
  p.Concatenate(EulerAngles(0.0f, 0.2f, 0.0f));
  EXPECT_NEAR(p.m_obOrientation.Pitch, 0.2, 1e-6);
  EXPECT_EQ(p.m_fZoom, 3.0f);
}

}  // namespace
