#include <libdewarp_vemo/euler_angles.h>

#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::EulerAngles;
using vemo::libdewarp::Quaternion;
using vemo::libdewarp::RotationMatrix3d;
using vemo::libdewarp::Trigonometry;

namespace {

const double kPi = 3.14159265358979323846;
const float kNan = std::numeric_limits<float>::quiet_NaN();

// Difference of two angles, folded into [-pi, pi]: -pi and pi are the same heading.
double AngleDifference(double a, double b) { return std::remainder(a - b, 2 * kPi); }

::testing::AssertionResult SameOrientation(const EulerAngles& a, const EulerAngles& b, double tolerance) {
  if (std::fabs(AngleDifference(a.Yaw, b.Yaw)) <= tolerance && std::fabs(a.Pitch - b.Pitch) <= tolerance &&
      std::fabs(AngleDifference(a.Roll, b.Roll)) <= tolerance) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "(" << a.Yaw << ", " << a.Pitch << ", " << a.Roll << ") vs (" << b.Yaw
                                       << ", " << b.Pitch << ", " << b.Roll << ")";
}

TEST(EulerAngles, DefaultAndStatics) {
  const EulerAngles e;
  EXPECT_EQ(e.Yaw, 0.0f);
  EXPECT_EQ(e.Pitch, 0.0f);
  EXPECT_EQ(e.Roll, 0.0f);
  EXPECT_TRUE(EulerAngles::Identity == EulerAngles(0.0f, 0.0f, 0.0f));
  EXPECT_TRUE(std::isnan(EulerAngles::Invalid.Yaw));
  EXPECT_TRUE(std::isnan(EulerAngles::Invalid.Pitch));
  EXPECT_TRUE(std::isnan(EulerAngles::Invalid.Roll));
}

TEST(EulerAngles, EqualityIsExactAndInequalityQuiet) {
  EXPECT_TRUE(EulerAngles(1.0f, 2.0f, 3.0f) == EulerAngles(1.0f, 2.0f, 3.0f));
  EXPECT_FALSE(EulerAngles(1.0f, 2.0f, 3.0f) != EulerAngles(1.0f, 2.0f, 3.0f));
  EXPECT_TRUE(EulerAngles(1.0f, 2.0f, 3.0f) != EulerAngles(1.0f, 2.5f, 3.0f));
  EXPECT_FALSE(EulerAngles::Invalid == EulerAngles::Invalid);
  EXPECT_FALSE(EulerAngles::Invalid != EulerAngles::Invalid);
  EXPECT_FALSE(EulerAngles(1.0f, 2.0f, 3.0f) != EulerAngles::Invalid);
  EXPECT_FALSE(EulerAngles(kNan, 2.0f, 3.0f) != EulerAngles(1.0f, 2.0f, 3.0f));
}

TEST(EulerAngles, ComponentWiseArithmetic) {
  EulerAngles e(1.0f, 2.0f, 3.0f);
  e += EulerAngles(1.0f, 1.0f, 1.0f);
  EXPECT_EQ(e, EulerAngles(2.0f, 3.0f, 4.0f));
  e -= EulerAngles(0.5f, 0.5f, 0.5f);
  EXPECT_EQ(e, EulerAngles(1.5f, 2.5f, 3.5f));
  e *= 2.0f;
  EXPECT_EQ(e, EulerAngles(3.0f, 5.0f, 7.0f));
  e /= 2.0f;
  EXPECT_EQ(e, EulerAngles(1.5f, 2.5f, 3.5f));
  EXPECT_EQ(-e, EulerAngles(-1.5f, -2.5f, -3.5f));
  EXPECT_EQ(e + EulerAngles(0.5f, 0.5f, 0.5f), EulerAngles(2.0f, 3.0f, 4.0f));
  EXPECT_EQ(e - EulerAngles(0.5f, 0.5f, 0.5f), EulerAngles(1.0f, 2.0f, 3.0f));
  EXPECT_EQ(e * 2.0f, EulerAngles(3.0f, 5.0f, 7.0f));
  EXPECT_EQ(e / 0.5f, EulerAngles(3.0f, 5.0f, 7.0f));
  EXPECT_EQ(2.0f * e, EulerAngles(3.0f, 5.0f, 7.0f));
  EXPECT_EQ(15.0f / e, EulerAngles(10.0f, 6.0f, 15.0f / 3.5f));
  e.SetIdentity();
  EXPECT_EQ(e, EulerAngles::Identity);
}

TEST(EulerAngles, NormaliseFlipsOverThePole) {
  EulerAngles e(0.0f, 3.0f * Trigonometry::PI / 4.0f, 0.0f);
  EulerAngles& r = e.Normalise();
  EXPECT_EQ(&r, &e);
  EXPECT_NEAR(e.Pitch, kPi / 4, 1e-6);
  // Yaw and roll each gained pi, which wraps to -pi.
  EXPECT_EQ(e.Yaw, -Trigonometry::PI);
  EXPECT_EQ(e.Roll, -Trigonometry::PI);
}

TEST(EulerAngles, NormaliseFlipsOverTheLowerPole) {
  EulerAngles e(0.5f, -3.0f * Trigonometry::PI / 4.0f, 0.25f);
  e.Normalise();
  EXPECT_NEAR(e.Pitch, -kPi / 4, 1e-6);
  EXPECT_NEAR(e.Yaw, 0.5 - kPi, 1e-6);
  EXPECT_NEAR(e.Roll, 0.25 - kPi, 1e-6);
}

TEST(EulerAngles, NormaliseFoldsRollIntoYawAtThePoles) {
  EulerAngles e(0.3f, Trigonometry::HALF_PI, 0.2f);
  e.Normalise();
  EXPECT_NEAR(e.Yaw, 0.5, 1e-6);
  // Wrapping adds and removes pi in single precision: equal to a few units in the last place.
  EXPECT_NEAR(e.Pitch, kPi / 2, 1e-6);
  EXPECT_EQ(e.Roll, 0.0f);
  // Just outside the gimbal band the roll is kept.
  EulerAngles f(0.3f, Trigonometry::HALF_PI - 0.001f, 0.2f);
  f.Normalise();
  EXPECT_NEAR(f.Roll, 0.2, 1e-6);
  EXPECT_NEAR(f.Yaw, 0.3, 1e-6);
}

TEST(EulerAngles, NormaliseWrapsYawAndRoll) {
  EulerAngles e(7.0f, 0.5f, -4.0f);
  e.Normalise();
  EXPECT_NEAR(e.Yaw, 7.0 - 2 * kPi, 1e-6);
  EXPECT_EQ(e.Pitch, 0.5f);
  EXPECT_NEAR(e.Roll, -4.0 + 2 * kPi, 1e-6);
  // Several turns of pitch.
  EulerAngles g(0.0f, static_cast<float>(0.5 + 4 * kPi), 0.0f);
  g.Normalise();
  EXPECT_NEAR(g.Pitch, 0.5, 1e-5);
  EXPECT_NEAR(g.Yaw, 0.0, 1e-6);
}

TEST(EulerAngles, NormalisedAnglesLieInTheirRanges) {
  for (int i = -20; i <= 20; ++i) {
    for (int j = -20; j <= 20; ++j) {
      for (int k = -5; k <= 5; ++k) {
        EulerAngles e(0.37f * i, 0.41f * j, 0.93f * k);
        e.Normalise();
        ASSERT_GE(e.Yaw, -Trigonometry::PI);
        ASSERT_LT(e.Yaw, Trigonometry::PI);
        ASSERT_GE(e.Pitch, -Trigonometry::HALF_PI);
        ASSERT_LE(e.Pitch, Trigonometry::HALF_PI);
        ASSERT_GE(e.Roll, -Trigonometry::PI);
        ASSERT_LT(e.Roll, Trigonometry::PI);
      }
    }
  }
}

TEST(EulerAngles, NormaliseKeepsTheOrientation) {
  for (int i = -6; i <= 6; ++i) {
    for (int j = -6; j <= 6; ++j) {
      const EulerAngles e(0.55f * i, 0.49f * j, 0.31f * i - 0.2f * j);
      EulerAngles n = e;
      n.Normalise();
      const RotationMatrix3d a(e), b(n);
      ASSERT_NEAR(a.M11, b.M11, 1e-5);
      ASSERT_NEAR(a.M12, b.M12, 1e-5);
      ASSERT_NEAR(a.M13, b.M13, 1e-5);
      ASSERT_NEAR(a.M21, b.M21, 1e-5);
      ASSERT_NEAR(a.M22, b.M22, 1e-5);
      ASSERT_NEAR(a.M23, b.M23, 1e-5);
      ASSERT_NEAR(a.M31, b.M31, 1e-5);
      ASSERT_NEAR(a.M32, b.M32, 1e-5);
      ASSERT_NEAR(a.M33, b.M33, 1e-5);
    }
  }
}

TEST(EulerAngles, FromRotationMatrixInvertsSetupOverAGrid) {
  // Normalised angles with |pitch| < pi/2: yaw and roll in [-pi, pi), pitch within 15/32 of
  // a half turn, where the arc sine is well conditioned in single precision.
  int checked = 0;
  for (int i = 0; i < 32; ++i) {
    for (int j = -15; j <= 15; ++j) {
      for (int k = 0; k < 32; ++k) {
        const EulerAngles e(static_cast<float>(-kPi + i * kPi / 16), static_cast<float>(j * kPi / 32),
                            static_cast<float>(-kPi + k * kPi / 16 + 0.01));
        EulerAngles back;
        back.FromRotationMatrix(RotationMatrix3d(e));
        ASSERT_TRUE(SameOrientation(back, e, 1e-5)) << i << " " << j << " " << k;
        ++checked;
      }
    }
  }
  EXPECT_EQ(checked, 32 * 31 * 32);
}

TEST(EulerAngles, FromRotationMatrixAtThePoleGoesThroughTheArcSine) {
  const EulerAngles e(0.3f, Trigonometry::HALF_PI, 0.2f);
  const RotationMatrix3d m(e);
  EulerAngles back;
  back.FromRotationMatrix(m);
  EXPECT_EQ(back.Pitch, Trigonometry::asin(1.0f));
  EXPECT_EQ(back.Pitch, Trigonometry::HALF_PI);
  // The cosine of the single-precision pi/2 is a tiny negative number, so both yaw and roll
  // come out of atan2 turned by pi; the roll is not forced to zero.
  EXPECT_LT(std::cos(Trigonometry::HALF_PI), 0.0f);
  EXPECT_NEAR(back.Yaw, 0.3 - kPi, 1e-5);
  EXPECT_NEAR(back.Roll, 0.2 - kPi, 1e-5);
}

TEST(EulerAngles, FromRotationMatrixGimbalBranchNeedsAnEntryBeyondTheThreshold) {
  RotationMatrix3d m;
  m.M11 = 0.6f;
  m.M31 = -0.8f;
  m.M21 = 0.5f;
  m.M22 = 0.5f;
  m.M13 = 0.0f;
  m.M33 = 1.0f;
  // |sp| = 1 and even 1.5 stay on the arc-sine branch (the threshold is 9.99999).
  m.M23 = -1.0f;
  EulerAngles e;
  e.FromRotationMatrix(m);
  EXPECT_EQ(e.Pitch, Trigonometry::HALF_PI);
  EXPECT_NEAR(e.Roll, kPi / 4, 1e-6);
  EXPECT_EQ(e.Yaw, 0.0f);
  m.M23 = -1.5f;
  e.FromRotationMatrix(m);
  EXPECT_EQ(e.Pitch, Trigonometry::HALF_PI);
  EXPECT_NEAR(e.Roll, kPi / 4, 1e-6);
  // Only beyond 9.99999 the gimbal branch is taken: yaw from M31 and M11, roll zero.
  m.M23 = -10.0f;
  e.FromRotationMatrix(m);
  EXPECT_EQ(e.Pitch, Trigonometry::HALF_PI * 10.0f);
  EXPECT_EQ(e.Roll, 0.0f);
  EXPECT_NEAR(e.Yaw, std::atan2(0.8, 0.6), 1e-6);
}

TEST(EulerAngles, QuaternionRoundTripsOverAGrid) {
  for (int i = 0; i < 16; ++i) {
    for (int j = -7; j <= 7; ++j) {
      for (int k = 0; k < 16; ++k) {
        const EulerAngles e(static_cast<float>(-kPi + i * kPi / 8 + 0.05), static_cast<float>(j * kPi / 16),
                            static_cast<float>(-kPi + k * kPi / 8 + 0.02));
        Quaternion toObject, toInertial;
        toObject.SetToRotateInertialToObject(e);
        toInertial.SetToRotateObjectToInertial(e);
        EulerAngles a, b;
        a.FromInertialToObjectQuaternion(toObject);
        b.FromObjectToInertialQuaternion(toInertial);
        ASSERT_TRUE(SameOrientation(a, e, 2e-5)) << i << " " << j << " " << k;
        ASSERT_TRUE(SameOrientation(b, e, 2e-5)) << i << " " << j << " " << k;
      }
    }
  }
}

TEST(EulerAngles, QuaternionAtThePoleKeepsTheHeadingAndDropsTheRoll) {
  const EulerAngles e(0.3f, Trigonometry::HALF_PI, 0.0f);
  Quaternion toObject, toInertial;
  toObject.SetToRotateInertialToObject(e);
  toInertial.SetToRotateObjectToInertial(e);
  EulerAngles a, b;
  a.FromInertialToObjectQuaternion(toObject);
  b.FromObjectToInertialQuaternion(toInertial);
  EXPECT_NEAR(a.Pitch, kPi / 2, 1e-5);
  EXPECT_EQ(a.Roll, 0.0f);
  EXPECT_NEAR(a.Yaw, 0.3, 1e-4);
  EXPECT_NEAR(b.Pitch, kPi / 2, 1e-5);
  EXPECT_EQ(b.Roll, 0.0f);
  EXPECT_NEAR(b.Yaw, 0.3, 1e-4);
}

TEST(EulerAngles, ConcatenateAddsTurnsAboutOneAxis) {
  EulerAngles e(0.3f, 0.0f, 0.0f);
  EulerAngles& r = e.Concatenate(EulerAngles(0.4f, 0.0f, 0.0f));
  EXPECT_EQ(&r, &e);
  EXPECT_TRUE(SameOrientation(e, EulerAngles(0.7f, 0.0f, 0.0f), 1e-6));
  EulerAngles p(0.0f, 0.2f, 0.0f);
  p.Concatenate(EulerAngles(0.0f, 0.5f, 0.0f));
  EXPECT_TRUE(SameOrientation(p, EulerAngles(0.0f, 0.7f, 0.0f), 1e-6));
}

TEST(EulerAngles, ConcatenateWithTheIdentityKeepsTheOrientation) {
  EulerAngles e(0.3f, -0.6f, 1.2f);
  e.Concatenate(EulerAngles::Identity);
  EXPECT_TRUE(SameOrientation(e, EulerAngles(0.3f, -0.6f, 1.2f), 1e-6));
  EulerAngles i = EulerAngles::Identity;
  i.Concatenate(EulerAngles(0.3f, -0.6f, 1.2f));
  EXPECT_TRUE(SameOrientation(i, EulerAngles(0.3f, -0.6f, 1.2f), 1e-6));
}

TEST(EulerAngles, ConcatenateComposesTheRotations) {
  // The concatenation is the product of the two inertial-to-object rotations, first this one.
  const EulerAngles a(0.4f, 0.3f, -0.2f), b(-0.9f, 0.25f, 0.6f);
  EulerAngles c = a;
  c.Concatenate(b);
  const RotationMatrix3d ma(a), mb(b), mc(c);
  const vemo::libdewarp::Vector3d v(0.3f, 0.5f, -0.8f);
  const vemo::libdewarp::Vector3d twoSteps = mb.InertialToObject(ma.InertialToObject(v));
  const vemo::libdewarp::Vector3d oneStep = mc.InertialToObject(v);
  EXPECT_NEAR(twoSteps.X, oneStep.X, 1e-5);
  EXPECT_NEAR(twoSteps.Y, oneStep.Y, 1e-5);
  EXPECT_NEAR(twoSteps.Z, oneStep.Z, 1e-5);
}

}  // namespace
