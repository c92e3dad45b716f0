// A point or displacement in the plane, single precision.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/floating_point.h>

namespace vemo {
namespace libdewarp {

class Vector2d {
public:
  DEWARP_FLOAT X;
  DEWARP_FLOAT Y;

  // Both components NaN: the engine-wide "no result" marker.
  static const Vector2d InvalidVector;
  static const Vector2d InfiniteVector;
  static const Vector2d ZeroVector;
  static const Vector2d IdentityVector;
  static const Vector2d& GetInvalidVector() { return InvalidVector; }
  static const Vector2d& GetZeroVector() { return ZeroVector; }
  static const Vector2d& GetIdentityVector() { return IdentityVector; }

  constexpr Vector2d() : X(0.0f), Y(0.0f) {}
  constexpr Vector2d(const Vector2d& other) : X(other.X), Y(other.Y) {}
  constexpr Vector2d(DEWARP_FLOAT x, DEWARP_FLOAT y) : X(x), Y(y) {}
  virtual ~Vector2d() {}

  Vector2d& operator=(const Vector2d& other);

  // Equal unless a pair of components is less-or-greater: two NaN components compare equal,
  // so InvalidVector == InvalidVector holds and callers can test for it.
  bool operator==(const Vector2d& other) const {
    return !FloatingPoint::is_lessgreater(X, other.X) && !FloatingPoint::is_lessgreater(Y, other.Y);
  }
  bool operator!=(const Vector2d& other) const { return !(*this == other); }

  Vector2d operator-() const { return Vector2d(-X, -Y); }
  Vector2d& operator+=(const Vector2d& other) { X += other.X; Y += other.Y; return *this; }
  Vector2d& operator-=(const Vector2d& other) { X -= other.X; Y -= other.Y; return *this; }
  Vector2d& operator*=(DEWARP_FLOAT k) { X *= k; Y *= k; return *this; }
  Vector2d& operator/=(DEWARP_FLOAT k) { X /= k; Y /= k; return *this; }
  Vector2d operator+(const Vector2d& other) const { return Vector2d(X + other.X, Y + other.Y); }
  Vector2d operator-(const Vector2d& other) const { return Vector2d(X - other.X, Y - other.Y); }
  Vector2d operator*(DEWARP_FLOAT k) const { return Vector2d(X * k, Y * k); }
  Vector2d operator/(DEWARP_FLOAT k) const { return Vector2d(X / k, Y / k); }

  void SetZero() { X = 0.0f; Y = 0.0f; }
  DEWARP_FLOAT Length() const;
  // Angle measured from the +Y axis towards +X: atan2(X, Y).
  DEWARP_FLOAT Angle() const;
  // Component-wise product, in place.
  Vector2d& Scale(const Vector2d& factors) { X *= factors.X; Y *= factors.Y; return *this; }
  bool Valid() const { return FloatingPoint::is_finite(X) && FloatingPoint::is_finite(Y); }
};

DEWARP_FLOAT Distance(const Vector2d& a, const Vector2d& b);
inline Vector2d operator*(DEWARP_FLOAT k, const Vector2d& v) { return Vector2d(k * v.X, k * v.Y); }
// (k / X, k / Y): the scalar divided by each component.
inline Vector2d operator/(DEWARP_FLOAT k, const Vector2d& v) { return Vector2d(k / v.X, k / v.Y); }

}  // namespace libdewarp
}  // namespace vemo
