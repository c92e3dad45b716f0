// A direction or point in space, single precision. Y is up and -Z points forward.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/floating_point.h>

namespace vemo {
namespace libdewarp {

class Vector3d {
public:
  DEWARP_FLOAT X;
  DEWARP_FLOAT Y;
  DEWARP_FLOAT Z;

  static const Vector3d ZeroVector;
  static const Vector3d InvalidVector;

  constexpr Vector3d() : X(0.0f), Y(0.0f), Z(0.0f) {}
  constexpr Vector3d(const Vector3d& other) : X(other.X), Y(other.Y), Z(other.Z) {}
  constexpr Vector3d(DEWARP_FLOAT x, DEWARP_FLOAT y, DEWARP_FLOAT z) : X(x), Y(y), Z(z) {}
  virtual ~Vector3d() {}

  Vector3d& operator=(const Vector3d& other);

  // Exact equality of every component (false with any NaN). Inequality is true only when a
  // pair of components is less-or-greater, so with a NaN component both are false.
  bool operator==(const Vector3d& other) const { return X == other.X && Y == other.Y && Z == other.Z; }
  bool operator!=(const Vector3d& other) const {
    return FloatingPoint::is_lessgreater(X, other.X) || FloatingPoint::is_lessgreater(Y, other.Y) ||
           FloatingPoint::is_lessgreater(Z, other.Z);
  }

  Vector3d operator-() const { return Vector3d(-X, -Y, -Z); }
  Vector3d& operator+=(const Vector3d& o) { X += o.X; Y += o.Y; Z += o.Z; return *this; }
  Vector3d& operator-=(const Vector3d& o) { X -= o.X; Y -= o.Y; Z -= o.Z; return *this; }
  Vector3d& operator*=(DEWARP_FLOAT k) { X *= k; Y *= k; Z *= k; return *this; }
  Vector3d& operator/=(DEWARP_FLOAT k) { X /= k; Y /= k; Z /= k; return *this; }
  Vector3d operator+(const Vector3d& o) const { return Vector3d(X + o.X, Y + o.Y, Z + o.Z); }
  Vector3d operator-(const Vector3d& o) const { return Vector3d(X - o.X, Y - o.Y, Z - o.Z); }
  Vector3d operator*(DEWARP_FLOAT k) const { return Vector3d(X * k, Y * k, Z * k); }
  Vector3d operator/(DEWARP_FLOAT k) const { return Vector3d(X / k, Y / k, Z / k); }
  // Dot product.
  DEWARP_FLOAT operator*(const Vector3d& o) const { return X * o.X + Y * o.Y + Z * o.Z; }

  void SetZero() { X = 0.0f; Y = 0.0f; Z = 0.0f; }
  DEWARP_FLOAT Length() const;
  // Scales to unit length; a zero vector is left as it is.
  Vector3d& Normalise();
  bool Valid() const {
    return FloatingPoint::is_finite(X) && FloatingPoint::is_finite(Y) && FloatingPoint::is_finite(Z);
  }
};

Vector3d CrossProduct(const Vector3d& a, const Vector3d& b);
DEWARP_FLOAT Distance(const Vector3d& a, const Vector3d& b);
inline Vector3d operator*(DEWARP_FLOAT k, const Vector3d& v) { return Vector3d(k * v.X, k * v.Y, k * v.Z); }
inline Vector3d operator/(DEWARP_FLOAT k, const Vector3d& v) { return Vector3d(k / v.X, k / v.Y, k / v.Z); }

}  // namespace libdewarp
}  // namespace vemo
