// Orientation as heading, pitch and bank, radians: Yaw about the vertical Y axis (pan), Pitch
// about the X axis (tilt), Roll about the Z axis.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/floating_point.h>

namespace vemo {
namespace libdewarp {

class Quaternion;
class RotationMatrix3d;

class EulerAngles {
public:
  DEWARP_FLOAT Yaw;
  DEWARP_FLOAT Pitch;
  DEWARP_FLOAT Roll;

  static const EulerAngles Identity;
  static const EulerAngles Invalid;

  constexpr EulerAngles() : Yaw(0.0f), Pitch(0.0f), Roll(0.0f) {}
  constexpr EulerAngles(const EulerAngles& o) : Yaw(o.Yaw), Pitch(o.Pitch), Roll(o.Roll) {}
  constexpr EulerAngles(DEWARP_FLOAT yaw, DEWARP_FLOAT pitch, DEWARP_FLOAT roll)
      : Yaw(yaw), Pitch(pitch), Roll(roll) {}
  virtual ~EulerAngles() {}

  EulerAngles& operator=(const EulerAngles& other);

  // Exact equality of every component (false with any NaN). Inequality is true only when a
  // pair of components is less-or-greater, so with a NaN component both are false.
  bool operator==(const EulerAngles& o) const { return Yaw == o.Yaw && Pitch == o.Pitch && Roll == o.Roll; }
  bool operator!=(const EulerAngles& o) const {
    return FloatingPoint::is_lessgreater(Yaw, o.Yaw) || FloatingPoint::is_lessgreater(Pitch, o.Pitch) ||
           FloatingPoint::is_lessgreater(Roll, o.Roll);
  }

  EulerAngles operator-() const { return EulerAngles(-Yaw, -Pitch, -Roll); }
  EulerAngles& operator+=(const EulerAngles& o) { Yaw += o.Yaw; Pitch += o.Pitch; Roll += o.Roll; return *this; }
  EulerAngles& operator-=(const EulerAngles& o) { Yaw -= o.Yaw; Pitch -= o.Pitch; Roll -= o.Roll; return *this; }
  EulerAngles& operator*=(DEWARP_FLOAT k) { Yaw *= k; Pitch *= k; Roll *= k; return *this; }
  EulerAngles& operator/=(DEWARP_FLOAT k) { Yaw /= k; Pitch /= k; Roll /= k; return *this; }
  EulerAngles operator+(const EulerAngles& o) const { return EulerAngles(Yaw + o.Yaw, Pitch + o.Pitch, Roll + o.Roll); }
  EulerAngles operator-(const EulerAngles& o) const { return EulerAngles(Yaw - o.Yaw, Pitch - o.Pitch, Roll - o.Roll); }
  EulerAngles operator*(DEWARP_FLOAT k) const { return EulerAngles(Yaw * k, Pitch * k, Roll * k); }
  EulerAngles operator/(DEWARP_FLOAT k) const { return EulerAngles(Yaw / k, Pitch / k, Roll / k); }

  void SetIdentity() { Yaw = 0.0f; Pitch = 0.0f; Roll = 0.0f; }
  // Canonical form: Pitch in [-pi/2, pi/2], Yaw and Roll in [-pi, pi); near the poles the
  // roll is folded into the yaw.
  EulerAngles& Normalise();
  // This orientation followed by the other one.
  EulerAngles& Concatenate(const EulerAngles& other);
  EulerAngles& FromRotationMatrix(const RotationMatrix3d& m);
  EulerAngles& FromInertialToObjectQuaternion(const Quaternion& q);
  EulerAngles& FromObjectToInertialQuaternion(const Quaternion& q);
};

inline EulerAngles operator*(DEWARP_FLOAT k, const EulerAngles& e) { return EulerAngles(k * e.Yaw, k * e.Pitch, k * e.Roll); }
inline EulerAngles operator/(DEWARP_FLOAT k, const EulerAngles& e) { return EulerAngles(k / e.Yaw, k / e.Pitch, k / e.Roll); }

}  // namespace libdewarp
}  // namespace vemo
