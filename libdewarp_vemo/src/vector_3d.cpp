#include <libdewarp_vemo/vector_3d.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

const Vector3d Vector3d::ZeroVector(FloatingPoint::Zero, FloatingPoint::Zero, FloatingPoint::Zero);
const Vector3d Vector3d::InvalidVector(FloatingPoint::Nan, FloatingPoint::Nan, FloatingPoint::Nan);

Vector3d& Vector3d::operator=(const Vector3d& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Vector3d");
    return *this;
  }
  X = other.X;
  Y = other.Y;
  Z = other.Z;
  return *this;
}

DEWARP_FLOAT Vector3d::Length() const { return FloatingPoint::sqrt(X * X + Y * Y + Z * Z); }

Vector3d& Vector3d::Normalise() {
  const DEWARP_FLOAT squared = X * X + Y * Y + Z * Z;
  if (squared > 0.0f) {
    const DEWARP_FLOAT inverse = 1.0f / FloatingPoint::sqrt(squared);
    X *= inverse;
    Y *= inverse;
    Z *= inverse;
  }
  return *this;
}

Vector3d CrossProduct(const Vector3d& a, const Vector3d& b) {
  return Vector3d(a.Y * b.Z - a.Z * b.Y, a.Z * b.X - a.X * b.Z, a.X * b.Y - a.Y * b.X);
}

DEWARP_FLOAT Distance(const Vector3d& a, const Vector3d& b) {
  const DEWARP_FLOAT dx = a.X - b.X;
  const DEWARP_FLOAT dy = a.Y - b.Y;
  const DEWARP_FLOAT dz = a.Z - b.Z;
  return FloatingPoint::sqrt(dx * dx + dy * dy + dz * dz);
}

}  // namespace libdewarp
}  // namespace vemo
