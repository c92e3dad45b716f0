// Rotation quaternion (W, X, Y, Z), single precision.
//
// The product a * b means "a followed by b": its cross terms are reversed against the
// textbook Hamilton product. This order holds throughout the engine.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/vector_3d.h>

namespace vemo {
namespace libdewarp {

class EulerAngles;

class Quaternion {
public:
  DEWARP_FLOAT W;
  DEWARP_FLOAT X;
  DEWARP_FLOAT Y;
  DEWARP_FLOAT Z;

  static const Quaternion Identity;

  constexpr Quaternion() : W(1.0f), X(0.0f), Y(0.0f), Z(0.0f) {}
  constexpr Quaternion(const Quaternion& o) : W(o.W), X(o.X), Y(o.Y), Z(o.Z) {}
  constexpr Quaternion(DEWARP_FLOAT w, DEWARP_FLOAT x, DEWARP_FLOAT y, DEWARP_FLOAT z)
      : W(w), X(x), Y(y), Z(z) {}
  virtual ~Quaternion() {}

  Quaternion& operator=(const Quaternion& other);

  void SetIdentity() { W = 1.0f; X = 0.0f; Y = 0.0f; Z = 0.0f; }
  Quaternion operator-() const { return Quaternion(-W, -X, -Y, -Z); }
  Quaternion operator*(const Quaternion& other) const;
  Quaternion& operator*=(const Quaternion& other);

  // Rotations by theta radians about a coordinate axis, or about a unit axis (not checked).
  void SetToRotateAboutX(DEWARP_FLOAT theta);
  void SetToRotateAboutY(DEWARP_FLOAT theta);
  void SetToRotateAboutZ(DEWARP_FLOAT theta);
  void SetToRotateAboutAxis(const Vector3d& axis, DEWARP_FLOAT theta);
  void SetToRotateInertialToObject(const EulerAngles& orientation);
  void SetToRotateObjectToInertial(const EulerAngles& orientation);

  // Scales to unit length; a zero quaternion becomes the identity.
  Quaternion& Normalise();
  DEWARP_FLOAT GetRotationAngle() const;
  // Unit axis of the rotation; (1, 0, 0) when there is no rotation.
  Vector3d GetRotationAxis() const;
};

DEWARP_FLOAT DotProduct(const Quaternion& a, const Quaternion& b);
Quaternion Conjugate(const Quaternion& q);
Quaternion Power(const Quaternion& q, DEWARP_FLOAT exponent);
// Spherical linear interpolation along the shorter arc; t <= 0 gives q0 and t >= 1 gives q1
// exactly. The result is not renormalised.
Quaternion Slerp(const Quaternion& q0, const Quaternion& q1, DEWARP_FLOAT t);

}  // namespace libdewarp
}  // namespace vemo
