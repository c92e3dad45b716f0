#include <libdewarp_vemo/rotation_matrix_3d.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const RotationMatrix3d RotationMatrix3d::Identity;

RotationMatrix3d::RotationMatrix3d(const EulerAngles& orientation) : RotationMatrix3d() { Setup(orientation); }

RotationMatrix3d::RotationMatrix3d(DEWARP_FLOAT yaw, DEWARP_FLOAT pitch, DEWARP_FLOAT roll) : RotationMatrix3d() {
  Setup(EulerAngles(yaw, pitch, roll));
}

RotationMatrix3d& RotationMatrix3d::operator=(const RotationMatrix3d& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "RotationMatrix3d");
    return *this;
  }
  M11 = other.M11; M12 = other.M12; M13 = other.M13;
  M21 = other.M21; M22 = other.M22; M23 = other.M23;
  M31 = other.M31; M32 = other.M32; M33 = other.M33;
  return *this;
}

void RotationMatrix3d::SetIdentity() {
  M11 = 1.0f; M12 = 0.0f; M13 = 0.0f;
  M21 = 0.0f; M22 = 1.0f; M23 = 0.0f;
  M31 = 0.0f; M32 = 0.0f; M33 = 1.0f;
}

RotationMatrix3d& RotationMatrix3d::Setup(const EulerAngles& e) {
  const std::pair<float, float> h = Trigonometry::sin_and_cos(e.Yaw);
  const std::pair<float, float> p = Trigonometry::sin_and_cos(e.Pitch);
  const std::pair<float, float> b = Trigonometry::sin_and_cos(e.Roll);
  const float sh = h.first, ch = h.second, sp = p.first, cp = p.second, sb = b.first, cb = b.second;
  M11 = ch * cb + sh * sp * sb;
  M12 = sh * sp * cb - ch * sb;
  M13 = sh * cp;
  M21 = cp * sb;
  M22 = cp * cb;
  M23 = -sp;
  M31 = ch * sp * sb - sh * cb;
  M32 = ch * sp * cb + sh * sb;
  M33 = ch * cp;
  return *this;
}

RotationMatrix3d& RotationMatrix3d::FromInertialToObjectQuaternion(const Quaternion& q) {
  const float w = q.W, x = q.X, y = q.Y, z = q.Z;
  M11 = 1.0f - 2.0f * (y * y + z * z);
  M12 = 2.0f * (x * y + w * z);
  M13 = 2.0f * (x * z - w * y);
  M21 = 2.0f * (x * y - w * z);
  M22 = 1.0f - 2.0f * (x * x + z * z);
  M23 = 2.0f * (y * z + w * x);
  M31 = 2.0f * (x * z + w * y);
  M32 = 2.0f * (y * z - w * x);
  M33 = 1.0f - 2.0f * (x * x + y * y);
  return *this;
}

RotationMatrix3d& RotationMatrix3d::FromObjectToInertialQuaternion(const Quaternion& q) {
  const float w = q.W, x = q.X, y = q.Y, z = q.Z;
  M11 = 1.0f - 2.0f * (y * y + z * z);
  M12 = 2.0f * (x * y - w * z);
  M13 = 2.0f * (x * z + w * y);
  M21 = 2.0f * (x * y + w * z);
  M22 = 1.0f - 2.0f * (x * x + z * z);
  M23 = 2.0f * (y * z - w * x);
  M31 = 2.0f * (x * z - w * y);
  M32 = 2.0f * (y * z + w * x);
  M33 = 1.0f - 2.0f * (x * x + y * y);
  return *this;
}

Vector3d RotationMatrix3d::ObjectToInertial(const Vector3d& v) const {
  return Vector3d(M11 * v.X + M12 * v.Y + M13 * v.Z, M21 * v.X + M22 * v.Y + M23 * v.Z,
                  M31 * v.X + M32 * v.Y + M33 * v.Z);
}

Vector3d RotationMatrix3d::InertialToObject(const Vector3d& v) const {
  return Vector3d(M11 * v.X + M21 * v.Y + M31 * v.Z, M12 * v.X + M22 * v.Y + M32 * v.Z,
                  M13 * v.X + M23 * v.Y + M33 * v.Z);
}

}  // namespace libdewarp
}  // namespace vemo
