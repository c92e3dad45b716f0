#include <libdewarp_vemo/euler_angles.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const EulerAngles EulerAngles::Identity(0.0f, 0.0f, 0.0f);
const EulerAngles EulerAngles::Invalid(FloatingPoint::Nan, FloatingPoint::Nan, FloatingPoint::Nan);

namespace {

// Beyond this |sin(pitch)| the orientation is treated as looking straight up or down.
constexpr float kQuaternionGimbalLimit = 0.9999f;
// Matrices are converted through asin all the way to the poles: |sin(pitch)| never reaches this.
constexpr float kMatrixGimbalLimit = 9.99999f;

}  // namespace

EulerAngles& EulerAngles::operator=(const EulerAngles& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "EulerAngles");
    return *this;
  }
  Yaw = other.Yaw;
  Pitch = other.Pitch;
  Roll = other.Roll;
  return *this;
}

EulerAngles& EulerAngles::Normalise() {
  Pitch = Trigonometry::normalise_angle(Pitch);
  // Looking over a pole: turn round and roll over instead.
  if (Pitch < -Trigonometry::HALF_PI) {
    Yaw += Trigonometry::PI;
    Pitch = -Trigonometry::PI - Pitch;
    Roll += Trigonometry::PI;
  } else if (Pitch > Trigonometry::HALF_PI) {
    Yaw += Trigonometry::PI;
    Pitch = Trigonometry::PI - Pitch;
    Roll += Trigonometry::PI;
  }
  // At the poles yaw and roll turn about the same axis: fold the roll into the yaw.
  if (FloatingPoint::fabs(Pitch) > Trigonometry::HALF_PI - 0.0001f) {
    Yaw += Roll;
    Roll = 0.0f;
  } else {
    Roll = Trigonometry::normalise_angle(Roll);
  }
  Yaw = Trigonometry::normalise_angle(Yaw);
  return *this;
}

EulerAngles& EulerAngles::Concatenate(const EulerAngles& other) {
  Quaternion first, second;
  first.SetToRotateInertialToObject(*this);
  second.SetToRotateInertialToObject(other);
  return FromInertialToObjectQuaternion(first * second);
}

EulerAngles& EulerAngles::FromRotationMatrix(const RotationMatrix3d& m) {
  const float sp = -m.M23;
  if (FloatingPoint::fabs(sp) > kMatrixGimbalLimit) {
    Yaw = Trigonometry::atan(-m.M31, m.M11);
    Pitch = Trigonometry::HALF_PI * sp;
    Roll = 0.0f;
  } else {
    Yaw = Trigonometry::atan(m.M13, m.M33);
    Pitch = Trigonometry::asin(sp);
    Roll = Trigonometry::atan(m.M21, m.M22);
  }
  return *this;
}

EulerAngles& EulerAngles::FromInertialToObjectQuaternion(const Quaternion& q) {
  const float sp = -2.0f * (q.Y * q.Z + q.W * q.X);
  if (FloatingPoint::fabs(sp) > kQuaternionGimbalLimit) {
    Yaw = Trigonometry::atan(-q.X * q.Z - q.W * q.Y, 0.5f - q.Y * q.Y - q.Z * q.Z);
    Pitch = Trigonometry::HALF_PI * sp;
    Roll = 0.0f;
  } else {
    Yaw = Trigonometry::atan(q.X * q.Z - q.W * q.Y, 0.5f - q.X * q.X - q.Y * q.Y);
    Pitch = Trigonometry::asin(sp);
    Roll = Trigonometry::atan(q.X * q.Y - q.W * q.Z, 0.5f - q.X * q.X - q.Z * q.Z);
  }
  return *this;
}

EulerAngles& EulerAngles::FromObjectToInertialQuaternion(const Quaternion& q) {
  const float sp = -2.0f * (q.Y * q.Z - q.W * q.X);
  if (FloatingPoint::fabs(sp) > kQuaternionGimbalLimit) {
    Yaw = Trigonometry::atan(q.W * q.Y - q.X * q.Z, 0.5f - q.Y * q.Y - q.Z * q.Z);
    Pitch = Trigonometry::HALF_PI * sp;
    Roll = 0.0f;
  } else {
    Yaw = Trigonometry::atan(q.X * q.Z + q.W * q.Y, 0.5f - q.X * q.X - q.Y * q.Y);
    Pitch = Trigonometry::asin(sp);
    Roll = Trigonometry::atan(q.X * q.Y + q.W * q.Z, 0.5f - q.X * q.X - q.Z * q.Z);
  }
  return *this;
}

}  // namespace libdewarp
}  // namespace vemo
