#include <libdewarp_vemo/quaternion.h>

#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using vemo::libdewarp::EulerAngles;
using vemo::libdewarp::Quaternion;
using vemo::libdewarp::RotationMatrix3d;
using vemo::libdewarp::Vector3d;

namespace {

const double kPi = 3.14159265358979323846;

::testing::AssertionResult SameBits(const Quaternion& a, const Quaternion& b) {
  if (std::memcmp(&a.W, &b.W, sizeof(float)) == 0 && std::memcmp(&a.X, &b.X, sizeof(float)) == 0 &&
      std::memcmp(&a.Y, &b.Y, sizeof(float)) == 0 && std::memcmp(&a.Z, &b.Z, sizeof(float)) == 0) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "(" << a.W << ", " << a.X << ", " << a.Y << ", " << a.Z << ") vs (" << b.W
                                       << ", " << b.X << ", " << b.Y << ", " << b.Z << ")";
}

::testing::AssertionResult Near(const Quaternion& a, const Quaternion& b, double tolerance) {
  if (std::fabs(a.W - b.W) <= tolerance && std::fabs(a.X - b.X) <= tolerance && std::fabs(a.Y - b.Y) <= tolerance &&
      std::fabs(a.Z - b.Z) <= tolerance) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "(" << a.W << ", " << a.X << ", " << a.Y << ", " << a.Z << ") vs (" << b.W
                                       << ", " << b.X << ", " << b.Y << ", " << b.Z << ")";
}

Quaternion AboutAxis(float x, float y, float z, float theta) {
  Quaternion q;
  q.SetToRotateAboutAxis(Vector3d(x, y, z), theta);
  return q;
}

TEST(Quaternion, DefaultIsTheIdentity) {
  const Quaternion q;
  EXPECT_TRUE(SameBits(q, Quaternion(1.0f, 0.0f, 0.0f, 0.0f)));
  EXPECT_TRUE(SameBits(Quaternion::Identity, Quaternion(1.0f, 0.0f, 0.0f, 0.0f)));
  Quaternion r(0.5f, 0.5f, 0.5f, 0.5f);
  r.SetIdentity();
  EXPECT_TRUE(SameBits(r, Quaternion::Identity));
}

TEST(Quaternion, ProductHasTheCrossTermsReversed) {
  const Quaternion i(0.0f, 1.0f, 0.0f, 0.0f), j(0.0f, 0.0f, 1.0f, 0.0f), k(0.0f, 0.0f, 0.0f, 1.0f);
  // The Hamilton product gives ij = k, jk = i, ki = j; here each comes out negated.
  EXPECT_TRUE(SameBits(i * j, Quaternion(0.0f, 0.0f, 0.0f, -1.0f)));
  EXPECT_TRUE(SameBits(j * k, Quaternion(0.0f, -1.0f, 0.0f, 0.0f)));
  EXPECT_TRUE(SameBits(k * i, Quaternion(0.0f, 0.0f, -1.0f, 0.0f)));
  EXPECT_TRUE(SameBits(i * i, Quaternion(-1.0f, 0.0f, 0.0f, 0.0f)));
  // A general product worked out term by term from
  // W = w1w2 - x1x2 - y1y2 - z1z2, X = w1x2 + x1w2 + z1y2 - y1z2,
  // Y = w1y2 + y1w2 + x1z2 - z1x2, Z = w1z2 + z1w2 + y1x2 - x1y2.
  const Quaternion a(1.0f, 2.0f, 3.0f, 4.0f), b(5.0f, 6.0f, 7.0f, 8.0f);
  EXPECT_TRUE(SameBits(a * b, Quaternion(5 - 12 - 21 - 32, 6 + 10 + 28 - 24, 7 + 15 + 16 - 24, 8 + 20 + 18 - 14)));
  Quaternion c = a;
  c *= b;
  EXPECT_TRUE(SameBits(c, a * b));
}

TEST(Quaternion, ProductMeansFirstThenSecond) {
  // Rotating by a and then by b: as inertial-to-object matrices acting on row vectors,
  // v M(a) M(b) = v M(a * b).
  Quaternion a, b;
  a.SetToRotateInertialToObject(EulerAngles(0.3f, -0.5f, 0.8f));
  b.SetToRotateInertialToObject(EulerAngles(-1.1f, 0.4f, 0.2f));
  RotationMatrix3d ma, mb, mab;
  ma.FromInertialToObjectQuaternion(a);
  mb.FromInertialToObjectQuaternion(b);
  mab.FromInertialToObjectQuaternion(a * b);
  const Vector3d v(0.2f, -0.7f, 0.4f);
  const Vector3d twoSteps = mb.InertialToObject(ma.InertialToObject(v));
  const Vector3d oneStep = mab.InertialToObject(v);
  EXPECT_NEAR(twoSteps.X, oneStep.X, 1e-6);
  EXPECT_NEAR(twoSteps.Y, oneStep.Y, 1e-6);
  EXPECT_NEAR(twoSteps.Z, oneStep.Z, 1e-6);
}

TEST(Quaternion, SingleAxisRotationsUseTheHalfAngle) {
  Quaternion q;
  q.SetToRotateAboutX(1.0f);
  EXPECT_TRUE(Near(q, Quaternion(std::cos(0.5f), std::sin(0.5f), 0.0f, 0.0f), 0.0));
  q.SetToRotateAboutY(-2.0f);
  EXPECT_TRUE(Near(q, Quaternion(std::cos(-1.0f), 0.0f, std::sin(-1.0f), 0.0f), 0.0));
  q.SetToRotateAboutZ(static_cast<float>(kPi));
  EXPECT_NEAR(q.W, 0.0, 1e-7);
  EXPECT_EQ(q.X, 0.0f);
  EXPECT_EQ(q.Y, 0.0f);
  EXPECT_NEAR(q.Z, 1.0, 1e-7);
  q = AboutAxis(0.0f, 0.6f, 0.8f, 1.0f);
  EXPECT_TRUE(Near(q, Quaternion(std::cos(0.5f), 0.0f, 0.6f * std::sin(0.5f), 0.8f * std::sin(0.5f)), 1e-7));
}

TEST(Quaternion, EulerAnglesToQuaternionsOfBothDirectionsAreConjugates) {
  const EulerAngles e(0.7f, -0.3f, 1.9f);
  Quaternion toObject, toInertial;
  toObject.SetToRotateInertialToObject(e);
  toInertial.SetToRotateObjectToInertial(e);
  EXPECT_TRUE(Near(toInertial, Conjugate(toObject), 1e-7));
  EXPECT_TRUE(Near(toObject * toInertial, Quaternion::Identity, 1e-6));
}

TEST(Quaternion, PureYawIsARotationAboutY) {
  // Heading alone: inertial-to-object rotates by -yaw about Y.
  Quaternion fromEuler, aboutY;
  fromEuler.SetToRotateInertialToObject(EulerAngles(0.8f, 0.0f, 0.0f));
  aboutY.SetToRotateAboutY(-0.8f);
  EXPECT_TRUE(Near(fromEuler, aboutY, 1e-7));
  fromEuler.SetToRotateObjectToInertial(EulerAngles(0.0f, 0.6f, 0.0f));
  Quaternion aboutX;
  aboutX.SetToRotateAboutX(0.6f);
  EXPECT_TRUE(Near(fromEuler, aboutX, 1e-7));
}

TEST(Quaternion, NormaliseOfZeroYieldsTheIdentity) {
  Quaternion q(0.0f, 0.0f, 0.0f, 0.0f);
  Quaternion& r = q.Normalise();
  EXPECT_EQ(&r, &q);
  EXPECT_TRUE(SameBits(q, Quaternion::Identity));
}

TEST(Quaternion, NormaliseScalesToUnitLength) {
  Quaternion q(1.0f, 2.0f, 2.0f, 4.0f);  // length 5
  q.Normalise();
  EXPECT_TRUE(Near(q, Quaternion(0.2f, 0.4f, 0.4f, 0.8f), 1e-7));
}

TEST(Quaternion, RotationAxisOfTheIdentityIsX) {
  const Vector3d axis = Quaternion::Identity.GetRotationAxis();
  EXPECT_EQ(axis, Vector3d(1.0f, 0.0f, 0.0f));
  EXPECT_EQ(Quaternion::Identity.GetRotationAngle(), 0.0f);
}

TEST(Quaternion, RotationAngleAndAxis) {
  const Quaternion q = AboutAxis(0.0f, 0.6f, -0.8f, 1.2f);
  EXPECT_NEAR(q.GetRotationAngle(), 1.2, 1e-6);
  const Vector3d axis = q.GetRotationAxis();
  EXPECT_NEAR(axis.X, 0.0, 1e-6);
  EXPECT_NEAR(axis.Y, 0.6, 1e-6);
  EXPECT_NEAR(axis.Z, -0.8, 1e-6);
  // W slightly above 1 by rounding: the clamped arc cosine gives angle 0 and the axis is X.
  const Quaternion over(1.0000001f, 0.0f, 0.0f, 0.0f);
  EXPECT_EQ(over.GetRotationAngle(), 0.0f);
  EXPECT_EQ(over.GetRotationAxis(), Vector3d(1.0f, 0.0f, 0.0f));
}

TEST(Quaternion, DotProductConjugateAndNegation) {
  EXPECT_EQ(DotProduct(Quaternion(1.0f, 2.0f, 3.0f, 4.0f), Quaternion(5.0f, 6.0f, 7.0f, 8.0f)), 70.0f);
  EXPECT_TRUE(SameBits(Conjugate(Quaternion(1.0f, 2.0f, -3.0f, 4.0f)), Quaternion(1.0f, -2.0f, 3.0f, -4.0f)));
  EXPECT_TRUE(SameBits(-Quaternion(1.0f, 2.0f, -3.0f, 4.0f), Quaternion(-1.0f, -2.0f, 3.0f, -4.0f)));
}

TEST(Quaternion, PowerScalesTheAngle) {
  const Quaternion q = AboutAxis(0.0f, 0.0f, 1.0f, 1.2f);
  const Quaternion half = Power(q, 0.5f);
  EXPECT_TRUE(Near(half, AboutAxis(0.0f, 0.0f, 1.0f, 0.6f), 1e-6));
  const Quaternion triple = Power(q, 3.0f);
  EXPECT_TRUE(Near(triple, AboutAxis(0.0f, 0.0f, 1.0f, 3.6f), 1e-6));
}

TEST(Quaternion, PowerNearTheIdentityReturnsTheQuaternionUnchanged) {
  const Quaternion q = AboutAxis(1.0f, 0.0f, 0.0f, 0.02f);  // W = cos(0.01) = 0.99995
  EXPECT_TRUE(SameBits(Power(q, 5.0f), q));
}

TEST(Quaternion, SlerpAtOrBeforeTheStartReturnsTheFirstExactly) {
  const Quaternion q0 = AboutAxis(0.0f, 1.0f, 0.0f, 0.3f), q1 = AboutAxis(1.0f, 0.0f, 0.0f, 2.0f);
  EXPECT_TRUE(SameBits(Slerp(q0, q1, 0.0f), q0));
  EXPECT_TRUE(SameBits(Slerp(q0, q1, -0.5f), q0));
  EXPECT_TRUE(SameBits(Slerp(q0, q1, -1e30f), q0));
}

TEST(Quaternion, SlerpAtOrAfterTheEndReturnsTheSecondExactly) {
  const Quaternion q0 = AboutAxis(0.0f, 1.0f, 0.0f, 0.3f), q1 = AboutAxis(1.0f, 0.0f, 0.0f, 2.0f);
  EXPECT_TRUE(SameBits(Slerp(q0, q1, 1.0f), q1));
  EXPECT_TRUE(SameBits(Slerp(q0, q1, 1.5f), q1));
  // Even when q1 is on the far side (negative dot product), the end is q1 itself.
  EXPECT_TRUE(SameBits(Slerp(q0, -q1, 1.0f), -q1));
}

TEST(Quaternion, SlerpEndpointsAreExactOverAGrid) {
  const float ts[] = {-100.0f, -1.0f, -1e-30f, 0.0f, -0.0f};
  const float us[] = {1.0f, 1.0000001f, 2.0f, 1e30f};
  for (int a = 0; a < 12; ++a) {
    for (int b = 0; b < 12; ++b) {
      const Quaternion q0 = AboutAxis(0.0f, 0.6f, 0.8f, -3.0f + 0.5f * a);
      const Quaternion q1 = AboutAxis(0.8f, 0.0f, -0.6f, -3.0f + 0.5f * b);
      for (float t : ts) ASSERT_TRUE(SameBits(Slerp(q0, q1, t), q0)) << a << " " << b << " t=" << t;
      for (float t : us) ASSERT_TRUE(SameBits(Slerp(q0, q1, t), q1)) << a << " " << b << " t=" << t;
    }
  }
}

TEST(Quaternion, SlerpTakesTheShortArc) {
  const Quaternion q0 = AboutAxis(0.0f, 0.0f, 1.0f, 0.8f);
  // -q0 is the same rotation: the interpolation stays at q0 instead of passing through zero.
  const Quaternion mid = Slerp(q0, -q0, 0.5f);
  EXPECT_TRUE(Near(mid, q0, 1e-6));
  // q1 given with the opposite sign still gives the short way: halfway between 0.2 and 1.0
  // about Z is 0.6 about Z.
  const Quaternion a = AboutAxis(0.0f, 0.0f, 1.0f, 0.2f), b = AboutAxis(0.0f, 0.0f, 1.0f, 1.0f);
  EXPECT_TRUE(Near(Slerp(a, -b, 0.5f), AboutAxis(0.0f, 0.0f, 1.0f, 0.6f), 1e-6));
}

TEST(Quaternion, SlerpFollowsTheGreatCircle) {
  const Quaternion q1 = AboutAxis(0.0f, 1.0f, 0.0f, static_cast<float>(kPi / 2));
  const Quaternion quarter = Slerp(Quaternion::Identity, q1, 0.25f);
  EXPECT_TRUE(Near(quarter, AboutAxis(0.0f, 1.0f, 0.0f, static_cast<float>(kPi / 8)), 1e-6));
  // Nearly equal quaternions blend linearly.
  const Quaternion p = AboutAxis(0.0f, 1.0f, 0.0f, 0.01f);
  const Quaternion blend = Slerp(Quaternion::Identity, p, 0.5f);
  EXPECT_TRUE(Near(blend, Quaternion(0.5f * (1.0f + p.W), 0.0f, 0.5f * p.Y, 0.0f), 1e-7));
}

}  // namespace
