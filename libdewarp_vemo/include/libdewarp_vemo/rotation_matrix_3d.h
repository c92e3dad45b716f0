// 3 x 3 rotation matrix, row-major, single precision.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/vector_3d.h>

namespace vemo {
namespace libdewarp {

class Quaternion;

class RotationMatrix3d {
public:
  DEWARP_FLOAT M11, M12, M13;
  DEWARP_FLOAT M21, M22, M23;
  DEWARP_FLOAT M31, M32, M33;

  static const RotationMatrix3d Identity;

  constexpr RotationMatrix3d()
      : M11(1.0f), M12(0.0f), M13(0.0f), M21(0.0f), M22(1.0f), M23(0.0f), M31(0.0f), M32(0.0f), M33(1.0f) {}
  constexpr RotationMatrix3d(const RotationMatrix3d& o)
      : M11(o.M11), M12(o.M12), M13(o.M13), M21(o.M21), M22(o.M22), M23(o.M23), M31(o.M31), M32(o.M32),
        M33(o.M33) {}
  RotationMatrix3d(const EulerAngles& orientation);
  RotationMatrix3d(DEWARP_FLOAT yaw, DEWARP_FLOAT pitch, DEWARP_FLOAT roll);
  virtual ~RotationMatrix3d() {}

  RotationMatrix3d& operator=(const RotationMatrix3d& other);

  void SetIdentity();
  RotationMatrix3d& Setup(const EulerAngles& orientation);
  RotationMatrix3d& FromInertialToObjectQuaternion(const Quaternion& q);
  RotationMatrix3d& FromObjectToInertialQuaternion(const Quaternion& q);

  // M * v.
  Vector3d ObjectToInertial(const Vector3d& v) const;
  // Transpose(M) * v.
  Vector3d InertialToObject(const Vector3d& v) const;
};

}  // namespace libdewarp
}  // namespace vemo
