#include <libdewarp_vemo/vector_3d.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::Vector3d;

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(Vector3d, DefaultAndStatics) {
  const Vector3d v;
  EXPECT_EQ(v.X, 0.0f);
  EXPECT_EQ(v.Y, 0.0f);
  EXPECT_EQ(v.Z, 0.0f);
  EXPECT_EQ(Vector3d::ZeroVector, Vector3d(0.0f, 0.0f, 0.0f));
  EXPECT_TRUE(std::isnan(Vector3d::InvalidVector.X));
  EXPECT_TRUE(std::isnan(Vector3d::InvalidVector.Y));
  EXPECT_TRUE(std::isnan(Vector3d::InvalidVector.Z));
}

TEST(Vector3d, InvalidVectorIsNeitherEqualNorUnequalToItself) {
  EXPECT_FALSE(Vector3d::InvalidVector == Vector3d::InvalidVector);
  EXPECT_FALSE(Vector3d::InvalidVector != Vector3d::InvalidVector);
  EXPECT_FALSE(Vector3d(1.0f, kNan, 3.0f) == Vector3d(1.0f, kNan, 3.0f));
  EXPECT_FALSE(Vector3d(1.0f, kNan, 3.0f) != Vector3d(1.0f, 2.0f, 3.0f));
  // A NaN does not hide a difference elsewhere.
  EXPECT_TRUE(Vector3d(1.0f, kNan, 3.0f) != Vector3d(1.0f, 2.0f, 4.0f));
}

TEST(Vector3d, ExactEquality) {
  EXPECT_TRUE(Vector3d(1.0f, 2.0f, 3.0f) == Vector3d(1.0f, 2.0f, 3.0f));
  EXPECT_FALSE(Vector3d(1.0f, 2.0f, 3.0f) != Vector3d(1.0f, 2.0f, 3.0f));
  EXPECT_FALSE(Vector3d(1.0f, 2.0f, 3.0f) == Vector3d(1.0f, 2.0f, std::nextafter(3.0f, 4.0f)));
  EXPECT_TRUE(Vector3d(1.0f, 2.0f, 3.0f) != Vector3d(1.0f, 2.0f, std::nextafter(3.0f, 4.0f)));
}

TEST(Vector3d, Arithmetic) {
  Vector3d v(1.0f, 2.0f, 3.0f);
  v += Vector3d(1.0f, 1.0f, 1.0f);
  EXPECT_EQ(v, Vector3d(2.0f, 3.0f, 4.0f));
  v -= Vector3d(2.0f, 2.0f, 2.0f);
  EXPECT_EQ(v, Vector3d(0.0f, 1.0f, 2.0f));
  v *= 3.0f;
  EXPECT_EQ(v, Vector3d(0.0f, 3.0f, 6.0f));
  v /= 3.0f;
  EXPECT_EQ(v, Vector3d(0.0f, 1.0f, 2.0f));
  EXPECT_EQ(-v, Vector3d(-0.0f, -1.0f, -2.0f));
  EXPECT_EQ(v + Vector3d(1.0f, 1.0f, 1.0f), Vector3d(1.0f, 2.0f, 3.0f));
  EXPECT_EQ(v - Vector3d(1.0f, 1.0f, 1.0f), Vector3d(-1.0f, 0.0f, 1.0f));
  EXPECT_EQ(v * 2.0f, Vector3d(0.0f, 2.0f, 4.0f));
  EXPECT_EQ(v / 2.0f, Vector3d(0.0f, 0.5f, 1.0f));
  EXPECT_EQ(2.0f * v, Vector3d(0.0f, 2.0f, 4.0f));
  EXPECT_EQ(4.0f / Vector3d(1.0f, 2.0f, 8.0f), Vector3d(4.0f, 2.0f, 0.5f));
  EXPECT_EQ(Vector3d(1.0f, 2.0f, 3.0f) * Vector3d(4.0f, -5.0f, 6.0f), 12.0f);
}

TEST(Vector3d, CrossProductIsRightHanded) {
  EXPECT_EQ(CrossProduct(Vector3d(1.0f, 0.0f, 0.0f), Vector3d(0.0f, 1.0f, 0.0f)), Vector3d(0.0f, 0.0f, 1.0f));
  EXPECT_EQ(CrossProduct(Vector3d(0.0f, 1.0f, 0.0f), Vector3d(0.0f, 0.0f, 1.0f)), Vector3d(1.0f, 0.0f, 0.0f));
  EXPECT_EQ(CrossProduct(Vector3d(0.0f, 0.0f, 1.0f), Vector3d(1.0f, 0.0f, 0.0f)), Vector3d(0.0f, 1.0f, 0.0f));
  // (1, 2, 3) x (4, 5, 6) = (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4) = (-3, 6, -3)
  EXPECT_EQ(CrossProduct(Vector3d(1.0f, 2.0f, 3.0f), Vector3d(4.0f, 5.0f, 6.0f)), Vector3d(-3.0f, 6.0f, -3.0f));
}

TEST(Vector3d, LengthAndDistance) {
  EXPECT_EQ(Vector3d(3.0f, 4.0f, 12.0f).Length(), 13.0f);
  EXPECT_EQ(Vector3d().Length(), 0.0f);
  EXPECT_EQ(Distance(Vector3d(1.0f, 1.0f, 1.0f), Vector3d(3.0f, 4.0f, 7.0f)), 7.0f);
}

TEST(Vector3d, NormaliseOfZeroLeavesItZero) {
  Vector3d v;
  v.Normalise();
  EXPECT_EQ(v.X, 0.0f);
  EXPECT_EQ(v.Y, 0.0f);
  EXPECT_EQ(v.Z, 0.0f);
}

TEST(Vector3d, NormaliseScalesToUnitLength) {
  Vector3d v(3.0f, 0.0f, -4.0f);
  Vector3d& r = v.Normalise();
  EXPECT_EQ(&r, &v);
  EXPECT_NEAR(v.X, 0.6, 1e-7);
  EXPECT_EQ(v.Y, 0.0f);
  EXPECT_NEAR(v.Z, -0.8, 1e-7);
  EXPECT_NEAR(v.Length(), 1.0, 1e-7);
}

TEST(Vector3d, ValidAndSetZero) {
  EXPECT_TRUE(Vector3d(1.0f, 2.0f, 3.0f).Valid());
  EXPECT_FALSE(Vector3d::InvalidVector.Valid());
  EXPECT_FALSE(Vector3d(0.0f, std::numeric_limits<float>::infinity(), 0.0f).Valid());
  Vector3d v(1.0f, 2.0f, 3.0f);
  v.SetZero();
  EXPECT_EQ(v, Vector3d::ZeroVector);
}

}  // namespace
