#include <libdewarp_vemo/rotation_matrix_3d.h>

#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>

using vemo::libdewarp::EulerAngles;
using vemo::libdewarp::Quaternion;
using vemo::libdewarp::RotationMatrix3d;
using vemo::libdewarp::Trigonometry;
using vemo::libdewarp::Vector3d;

namespace {


void ExpectIdentity(const RotationMatrix3d& m) {
  EXPECT_EQ(m.M11, 1.0f);
  EXPECT_EQ(m.M12, 0.0f);
  EXPECT_EQ(m.M13, 0.0f);
  EXPECT_EQ(m.M21, 0.0f);
  EXPECT_EQ(m.M22, 1.0f);
  EXPECT_EQ(m.M23, 0.0f);
  EXPECT_EQ(m.M31, 0.0f);
  EXPECT_EQ(m.M32, 0.0f);
  EXPECT_EQ(m.M33, 1.0f);
}

::testing::AssertionResult NearMatrix(const RotationMatrix3d& a, const RotationMatrix3d& b, double tolerance) {
  const float* pa = &a.M11;
  const float* pb = &b.M11;
  for (int i = 0; i < 9; ++i) {
    if (std::fabs(pa[i] - pb[i]) > tolerance) {
      return ::testing::AssertionFailure() << "entry " << i << ": " << pa[i] << " vs " << pb[i];
    }
  }
  return ::testing::AssertionSuccess();
}

RotationMatrix3d Transpose(const RotationMatrix3d& m) {
  RotationMatrix3d t;
  t.M11 = m.M11; t.M12 = m.M21; t.M13 = m.M31;
  t.M21 = m.M12; t.M22 = m.M22; t.M23 = m.M32;
  t.M31 = m.M13; t.M32 = m.M23; t.M33 = m.M33;
  return t;
}

TEST(RotationMatrix3d, DefaultAndIdentity) {
  ExpectIdentity(RotationMatrix3d());
  ExpectIdentity(RotationMatrix3d::Identity);
  RotationMatrix3d m(0.3f, 0.2f, 0.1f);
  m.SetIdentity();
  ExpectIdentity(m);
  ExpectIdentity(RotationMatrix3d(EulerAngles::Identity));
}

TEST(RotationMatrix3d, SetupFromTheFormulaEntries) {
  // yaw 0.5, pitch 0.25, roll -0.75 worked out entry by entry in double precision.
  const double h = 0.5, p = 0.25, b = -0.75;
  const double sh = std::sin(h), ch = std::cos(h), sp = std::sin(p), cp = std::cos(p), sb = std::sin(b),
               cb = std::cos(b);
  const RotationMatrix3d m(0.5f, 0.25f, -0.75f);
  EXPECT_NEAR(m.M11, ch * cb + sh * sp * sb, 1e-6);
  EXPECT_NEAR(m.M12, sh * sp * cb - ch * sb, 1e-6);
  EXPECT_NEAR(m.M13, sh * cp, 1e-6);
  EXPECT_NEAR(m.M21, cp * sb, 1e-6);
  EXPECT_NEAR(m.M22, cp * cb, 1e-6);
  EXPECT_NEAR(m.M23, -sp, 1e-6);
  EXPECT_NEAR(m.M31, ch * sp * sb - sh * cb, 1e-6);
  EXPECT_NEAR(m.M32, ch * sp * cb + sh * sb, 1e-6);
  EXPECT_NEAR(m.M33, ch * cp, 1e-6);
  RotationMatrix3d n;
  RotationMatrix3d& r = n.Setup(EulerAngles(0.5f, 0.25f, -0.75f));
  EXPECT_EQ(&r, &n);
  EXPECT_TRUE(NearMatrix(n, m, 0.0));
}

TEST(RotationMatrix3d, SetupIsOrthonormal) {
  for (int i = -8; i <= 8; ++i) {
    for (int j = -8; j <= 8; ++j) {
      const RotationMatrix3d m(0.39f * i, 0.19f * j, 0.27f * (i - j));
      const Vector3d r1(m.M11, m.M12, m.M13), r2(m.M21, m.M22, m.M23), r3(m.M31, m.M32, m.M33);
      ASSERT_NEAR(r1 * r1, 1.0, 1e-6);
      ASSERT_NEAR(r2 * r2, 1.0, 1e-6);
      ASSERT_NEAR(r3 * r3, 1.0, 1e-6);
      ASSERT_NEAR(r1 * r2, 0.0, 1e-6);
      ASSERT_NEAR(r1 * r3, 0.0, 1e-6);
      ASSERT_NEAR(r2 * r3, 0.0, 1e-6);
      // A rotation, not a reflection: r1 x r2 = r3.
      const Vector3d c = CrossProduct(r1, r2);
      ASSERT_NEAR(c.X, r3.X, 1e-6);
      ASSERT_NEAR(c.Y, r3.Y, 1e-6);
      ASSERT_NEAR(c.Z, r3.Z, 1e-6);
    }
  }
}

TEST(RotationMatrix3d, ObjectToInertialMultipliesByTheMatrixAndInertialToObjectByItsTranspose) {
  RotationMatrix3d m;
  m.M11 = 1; m.M12 = 2; m.M13 = 3;
  m.M21 = 4; m.M22 = 5; m.M23 = 6;
  m.M31 = 7; m.M32 = 8; m.M33 = 9;
  const Vector3d v(1.0f, 10.0f, 100.0f);
  EXPECT_EQ(m.ObjectToInertial(v), Vector3d(321.0f, 654.0f, 987.0f));
  EXPECT_EQ(m.InertialToObject(v), Vector3d(741.0f, 852.0f, 963.0f));
}

TEST(RotationMatrix3d, ObjectToInertialUndoesInertialToObject) {
  const RotationMatrix3d m(1.1f, -0.4f, 2.3f);
  const Vector3d v(0.3f, -0.2f, 0.9f);
  const Vector3d back = m.ObjectToInertial(m.InertialToObject(v));
  EXPECT_NEAR(back.X, v.X, 1e-6);
  EXPECT_NEAR(back.Y, v.Y, 1e-6);
  EXPECT_NEAR(back.Z, v.Z, 1e-6);
}

TEST(RotationMatrix3d, PureYawTurnsTheForwardDirection) {
  // A heading of 90 degrees: the object's +Z axis points along inertial +X.
  const RotationMatrix3d m(Trigonometry::HALF_PI, 0.0f, 0.0f);
  const Vector3d z = m.ObjectToInertial(Vector3d(0.0f, 0.0f, 1.0f));
  EXPECT_NEAR(z.X, 1.0, 1e-7);
  EXPECT_NEAR(z.Y, 0.0, 1e-7);
  EXPECT_NEAR(z.Z, 0.0, 1e-7);
  // Pitch tips the object's +Z axis downwards (-Y) for positive angles.
  const RotationMatrix3d p(0.0f, 0.5f, 0.0f);
  const Vector3d d = p.ObjectToInertial(Vector3d(0.0f, 0.0f, 1.0f));
  EXPECT_NEAR(d.Y, -std::sin(0.5), 1e-7);
  EXPECT_NEAR(d.Z, std::cos(0.5), 1e-7);
}

TEST(RotationMatrix3d, MatricesFromQuaternionsAgreeWithSetup) {
  // The inertial-to-object quaternion of e gives Setup(e) through the inertial-to-object
  // conversion, and the object-to-inertial quaternion gives it through the other one; the two
  // conversions of one quaternion are transposes of each other.
  for (int i = -4; i <= 4; ++i) {
    for (int j = -3; j <= 3; ++j) {
      const EulerAngles e(0.7f * i, 0.4f * j, 0.5f * i - 0.3f * j);
      Quaternion toObject, toInertial;
      toObject.SetToRotateInertialToObject(e);
      toInertial.SetToRotateObjectToInertial(e);
      RotationMatrix3d a, b, c;
      RotationMatrix3d& ra = a.FromInertialToObjectQuaternion(toObject);
      RotationMatrix3d& rb = b.FromObjectToInertialQuaternion(toInertial);
      EXPECT_EQ(&ra, &a);
      EXPECT_EQ(&rb, &b);
      c.FromObjectToInertialQuaternion(toObject);
      const RotationMatrix3d setup(e);
      ASSERT_TRUE(NearMatrix(a, setup, 2e-6)) << i << " " << j;
      ASSERT_TRUE(NearMatrix(b, setup, 2e-6)) << i << " " << j;
      ASSERT_TRUE(NearMatrix(c, Transpose(a), 0.0)) << i << " " << j;
    }
  }
}

TEST(RotationMatrix3d, QuaternionEntriesFromTheFormula) {
  const Quaternion q(0.5f, 0.5f, -0.5f, 0.5f);  // w x y z
  RotationMatrix3d m;
  m.FromInertialToObjectQuaternion(q);
  // 1-2(y2+z2) = 0; 2(xy+wz) = 0; 2(xz-wy) = 1; 2(xy-wz) = -1; 1-2(x2+z2) = 0; 2(yz+wx) = 0;
  // 2(xz+wy) = 0; 2(yz-wx) = -1; 1-2(x2+y2) = 0.
  EXPECT_EQ(m.M11, 0.0f); EXPECT_EQ(m.M12, 0.0f); EXPECT_EQ(m.M13, 1.0f);
  EXPECT_EQ(m.M21, -1.0f); EXPECT_EQ(m.M22, 0.0f); EXPECT_EQ(m.M23, 0.0f);
  EXPECT_EQ(m.M31, 0.0f); EXPECT_EQ(m.M32, -1.0f); EXPECT_EQ(m.M33, 0.0f);
  m.FromObjectToInertialQuaternion(q);
  EXPECT_EQ(m.M11, 0.0f); EXPECT_EQ(m.M12, -1.0f); EXPECT_EQ(m.M13, 0.0f);
  EXPECT_EQ(m.M21, 0.0f); EXPECT_EQ(m.M22, 0.0f); EXPECT_EQ(m.M23, -1.0f);
  EXPECT_EQ(m.M31, 1.0f); EXPECT_EQ(m.M32, 0.0f); EXPECT_EQ(m.M33, 0.0f);
}

TEST(RotationMatrix3d, ConstructorsAgree) {
  const EulerAngles e(0.2f, -0.1f, 0.4f);
  const RotationMatrix3d a(e), b(0.2f, -0.1f, 0.4f);
  RotationMatrix3d c(a);
  EXPECT_TRUE(NearMatrix(a, b, 0.0));
  EXPECT_TRUE(NearMatrix(a, c, 0.0));
  RotationMatrix3d d;
  d = a;
  EXPECT_TRUE(NearMatrix(a, d, 0.0));
}

}  // namespace
