#include <libdewarp_vemo/quaternion.h>

#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const Quaternion Quaternion::Identity(1.0f, 0.0f, 0.0f, 0.0f);

Quaternion& Quaternion::operator=(const Quaternion& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Quaternion");
    return *this;
  }
  W = other.W;
  X = other.X;
  Y = other.Y;
  Z = other.Z;
  return *this;
}

// a * b is a followed by b: the cross terms are reversed against the Hamilton product.
Quaternion Quaternion::operator*(const Quaternion& b) const {
  return Quaternion(W * b.W - X * b.X - Y * b.Y - Z * b.Z,
                    W * b.X + X * b.W + Z * b.Y - Y * b.Z,
                    W * b.Y + Y * b.W + X * b.Z - Z * b.X,
                    W * b.Z + Z * b.W + Y * b.X - X * b.Y);
}

Quaternion& Quaternion::operator*=(const Quaternion& other) {
  const Quaternion product = *this * other;
  W = product.W;
  X = product.X;
  Y = product.Y;
  Z = product.Z;
  return *this;
}

void Quaternion::SetToRotateAboutX(DEWARP_FLOAT theta) {
  const std::pair<float, float> half = Trigonometry::sin_and_cos(theta * 0.5f);
  W = half.second;
  X = half.first;
  Y = 0.0f;
  Z = 0.0f;
}

void Quaternion::SetToRotateAboutY(DEWARP_FLOAT theta) {
  const std::pair<float, float> half = Trigonometry::sin_and_cos(theta * 0.5f);
  W = half.second;
  X = 0.0f;
  Y = half.first;
  Z = 0.0f;
}

void Quaternion::SetToRotateAboutZ(DEWARP_FLOAT theta) {
  const std::pair<float, float> half = Trigonometry::sin_and_cos(theta * 0.5f);
  W = half.second;
  X = 0.0f;
  Y = 0.0f;
  Z = half.first;
}

void Quaternion::SetToRotateAboutAxis(const Vector3d& axis, DEWARP_FLOAT theta) {
  const std::pair<float, float> half = Trigonometry::sin_and_cos(theta * 0.5f);
  W = half.second;
  X = axis.X * half.first;
  Y = axis.Y * half.first;
  Z = axis.Z * half.first;
}

void Quaternion::SetToRotateInertialToObject(const EulerAngles& e) {
  const std::pair<float, float> h = Trigonometry::sin_and_cos(e.Yaw * 0.5f);
  const std::pair<float, float> p = Trigonometry::sin_and_cos(e.Pitch * 0.5f);
  const std::pair<float, float> b = Trigonometry::sin_and_cos(e.Roll * 0.5f);
  const float sh = h.first, ch = h.second, sp = p.first, cp = p.second, sb = b.first, cb = b.second;
  W = ch * cp * cb + sh * sp * sb;
  X = -ch * sp * cb - sh * cp * sb;
  Y = ch * sp * sb - sh * cb * cp;
  Z = sh * sp * cb - ch * cp * sb;
}

void Quaternion::SetToRotateObjectToInertial(const EulerAngles& e) {
  const std::pair<float, float> h = Trigonometry::sin_and_cos(e.Yaw * 0.5f);
  const std::pair<float, float> p = Trigonometry::sin_and_cos(e.Pitch * 0.5f);
  const std::pair<float, float> b = Trigonometry::sin_and_cos(e.Roll * 0.5f);
  const float sh = h.first, ch = h.second, sp = p.first, cp = p.second, sb = b.first, cb = b.second;
  W = ch * cp * cb + sh * sp * sb;
  X = ch * sp * cb + sh * cp * sb;
  Y = -ch * sp * sb + sh * cp * cb;
  Z = -sh * sp * cb + ch * cp * sb;
}

Quaternion& Quaternion::Normalise() {
  const DEWARP_FLOAT magnitude = FloatingPoint::sqrt(W * W + X * X + Y * Y + Z * Z);
  if (magnitude > 0.0f) {
    const DEWARP_FLOAT inverse = 1.0f / magnitude;
    W *= inverse;
    X *= inverse;
    Y *= inverse;
    Z *= inverse;
  } else {
    SetIdentity();
  }
  return *this;
}

DEWARP_FLOAT Quaternion::GetRotationAngle() const { return 2.0f * Trigonometry::acos(W); }

Vector3d Quaternion::GetRotationAxis() const {
  const DEWARP_FLOAT sinSquared = 1.0f - W * W;
  if (sinSquared <= 0.0f) return Vector3d(1.0f, 0.0f, 0.0f);
  const DEWARP_FLOAT inverse = 1.0f / FloatingPoint::sqrt(sinSquared);
  return Vector3d(X * inverse, Y * inverse, Z * inverse);
}

DEWARP_FLOAT DotProduct(const Quaternion& a, const Quaternion& b) {
  return a.W * b.W + a.X * b.X + a.Y * b.Y + a.Z * b.Z;
}

Quaternion Conjugate(const Quaternion& q) { return Quaternion(q.W, -q.X, -q.Y, -q.Z); }

Quaternion Power(const Quaternion& q, DEWARP_FLOAT exponent) {
  // Close to the identity the axis is ill-defined; the quaternion is returned as it is.
  if (FloatingPoint::fabs(q.W) > 0.9999f) return q;
  const DEWARP_FLOAT alpha = Trigonometry::acos(q.W);
  const DEWARP_FLOAT beta = alpha * exponent;
  const DEWARP_FLOAT factor = Trigonometry::sin(beta) / Trigonometry::sin(alpha);
  return Quaternion(Trigonometry::cos(beta), q.X * factor, q.Y * factor, q.Z * factor);
}

Quaternion Slerp(const Quaternion& q0, const Quaternion& q1, DEWARP_FLOAT t) {
  if (t <= 0.0f) return q0;
  if (t >= 1.0f) return q1;
  // Take the shorter arc: q and -q are the same rotation.
  DEWARP_FLOAT cosine = DotProduct(q0, q1);
  Quaternion target = q1;
  if (cosine < 0.0f) {
    target = -q1;
    cosine = -cosine;
  }
  DEWARP_FLOAT k0, k1;
  if (cosine > 0.9999f) {
    // Nearly parallel: a linear blend avoids dividing by a vanishing sine.
    k0 = 1.0f - t;
    k1 = t;
  } else {
    const DEWARP_FLOAT sine = FloatingPoint::sqrt(1.0f - cosine * cosine);
    const DEWARP_FLOAT omega = Trigonometry::atan(sine, cosine);
    k0 = Trigonometry::sin((1.0f - t) * omega) / sine;
    k1 = Trigonometry::sin(t * omega) / sine;
  }
  return Quaternion(k0 * q0.W + k1 * target.W, k0 * q0.X + k1 * target.X, k0 * q0.Y + k1 * target.Y,
                    k0 * q0.Z + k1 * target.Z);
}

}  // namespace libdewarp
}  // namespace vemo
