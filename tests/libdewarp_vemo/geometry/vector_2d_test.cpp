#include <libdewarp_vemo/vector_2d.h>

#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::Trigonometry;
using vemo::libdewarp::Vector2d;

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

TEST(Vector2d, DefaultIsZero) {
  const Vector2d v;
  EXPECT_EQ(v.X, 0.0f);
  EXPECT_EQ(v.Y, 0.0f);
}

TEST(Vector2d, StaticVectors) {
  EXPECT_TRUE(std::isnan(Vector2d::InvalidVector.X));
  EXPECT_TRUE(std::isnan(Vector2d::InvalidVector.Y));
  EXPECT_EQ(Vector2d::InfiniteVector.X, kInf);
  EXPECT_EQ(Vector2d::InfiniteVector.Y, kInf);
  EXPECT_EQ(Vector2d::ZeroVector.X, 0.0f);
  EXPECT_EQ(Vector2d::ZeroVector.Y, 0.0f);
  EXPECT_EQ(Vector2d::IdentityVector.X, 1.0f);
  EXPECT_EQ(Vector2d::IdentityVector.Y, 1.0f);
  EXPECT_EQ(&Vector2d::GetInvalidVector(), &Vector2d::InvalidVector);
  EXPECT_EQ(&Vector2d::GetZeroVector(), &Vector2d::ZeroVector);
  EXPECT_EQ(&Vector2d::GetIdentityVector(), &Vector2d::IdentityVector);
}

TEST(Vector2d, NanComponentsCompareEqualSoTheInvalidVectorCanBeRecognised) {
  EXPECT_TRUE(Vector2d(kNan, kNan) == Vector2d::InvalidVector);
  EXPECT_TRUE(Vector2d::InvalidVector == Vector2d::InvalidVector);
  EXPECT_FALSE(Vector2d::InvalidVector != Vector2d::InvalidVector);
  // A NaN against a number is not less-or-greater either.
  EXPECT_TRUE(Vector2d(kNan, 2.0f) == Vector2d(1.0f, 2.0f));
  EXPECT_FALSE(Vector2d(1.0f, 2.0f) == Vector2d::ZeroVector);
  EXPECT_TRUE(Vector2d(1.0f, 2.0f) != Vector2d(1.0f, 3.0f));
  EXPECT_TRUE(Vector2d(1.0f, 2.0f) == Vector2d(1.0f, 2.0f));
  EXPECT_TRUE(Vector2d(0.0f, -0.0f) == Vector2d::ZeroVector);
}

TEST(Vector2d, Arithmetic) {
  Vector2d v(1.0f, 2.0f);
  v += Vector2d(3.0f, 5.0f);
  EXPECT_EQ(v, Vector2d(4.0f, 7.0f));
  v -= Vector2d(1.0f, 1.0f);
  EXPECT_EQ(v, Vector2d(3.0f, 6.0f));
  v *= 2.0f;
  EXPECT_EQ(v, Vector2d(6.0f, 12.0f));
  v /= 4.0f;
  EXPECT_EQ(v, Vector2d(1.5f, 3.0f));
  EXPECT_EQ(-v, Vector2d(-1.5f, -3.0f));
  EXPECT_EQ(v + Vector2d(0.5f, 1.0f), Vector2d(2.0f, 4.0f));
  EXPECT_EQ(v - Vector2d(0.5f, 1.0f), Vector2d(1.0f, 2.0f));
  EXPECT_EQ(v * 2.0f, Vector2d(3.0f, 6.0f));
  EXPECT_EQ(v / 3.0f, Vector2d(0.5f, 1.0f));
  EXPECT_EQ(2.0f * v, Vector2d(3.0f, 6.0f));
}

TEST(Vector2d, ScalarDividedByVectorDividesByEachComponent) {
  const Vector2d r = operator/(2.0f, Vector2d(4.0f, 8.0f));
  EXPECT_EQ(r.X, 0.5f);
  EXPECT_EQ(r.Y, 0.25f);
}

TEST(Vector2d, LengthDistanceAndSetZero) {
  EXPECT_EQ(Vector2d(3.0f, 4.0f).Length(), 5.0f);
  EXPECT_EQ(Vector2d(-5.0f, 12.0f).Length(), 13.0f);
  EXPECT_EQ(Distance(Vector2d(1.0f, 1.0f), Vector2d(4.0f, 5.0f)), 5.0f);
  Vector2d v(3.0f, 4.0f);
  v.SetZero();
  EXPECT_EQ(v.X, 0.0f);
  EXPECT_EQ(v.Y, 0.0f);
}

TEST(Vector2d, AngleIsMeasuredFromPlusYTowardsPlusX) {
  EXPECT_EQ(Vector2d(0.0f, 1.0f).Angle(), 0.0f);
  EXPECT_NEAR(Vector2d(1.0f, 0.0f).Angle(), 3.14159265 / 2, 1e-6);
  EXPECT_NEAR(Vector2d(-1.0f, 0.0f).Angle(), -3.14159265 / 2, 1e-6);
  EXPECT_NEAR(Vector2d(0.0f, -1.0f).Angle(), 3.14159265, 1e-6);
  EXPECT_NEAR(Vector2d(1.0f, 1.0f).Angle(), 3.14159265 / 4, 1e-6);
  // 30 degrees east of north: X = sin 30, Y = cos 30.
  EXPECT_NEAR(Vector2d(0.5f, 0.8660254f).Angle(), 3.14159265 / 6, 1e-6);
}

TEST(Vector2d, ScaleMultipliesComponentWiseInPlaceAndReturnsItself) {
  Vector2d v(2.0f, 3.0f);
  Vector2d& r = v.Scale(Vector2d(4.0f, -0.5f));
  EXPECT_EQ(&r, &v);
  EXPECT_EQ(v, Vector2d(8.0f, -1.5f));
}

TEST(Vector2d, ValidMeansBothFinite) {
  EXPECT_TRUE(Vector2d(1.0f, -2.0f).Valid());
  EXPECT_FALSE(Vector2d::InvalidVector.Valid());
  EXPECT_FALSE(Vector2d::InfiniteVector.Valid());
  EXPECT_FALSE(Vector2d(1.0f, kNan).Valid());
  EXPECT_FALSE(Vector2d(-kInf, 0.0f).Valid());
}

TEST(Vector2d, CopyAndAssignment) {
  const Vector2d a(1.5f, -2.5f);
  Vector2d b(a);
  EXPECT_EQ(b, a);
  Vector2d c;
  vemo::test::LogCapture capture(LOG_WARNING);
  c = a;
  EXPECT_EQ(c, a);
  EXPECT_TRUE(capture.lines().empty());
}

}  // namespace
