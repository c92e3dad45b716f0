// Angular extent of a view or lens, radians.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/vector_2d.h>

// g++ folds the hypotenuse of two constants at compile time; clang does not treat the builtin as a
// constant expression, so there the two-angle constructor is an ordinary one.
#if defined(__clang__)
#define DEWARP_FOV_CONSTEXPR
#else
#define DEWARP_FOV_CONSTEXPR constexpr
#endif

namespace vemo {
namespace libdewarp {

class FieldOfView {
public:
  DEWARP_FLOAT Horizontal;
  DEWARP_FLOAT Vertical;
  DEWARP_FLOAT Diagonal;

  static const FieldOfView ZeroFieldOfView;
  static const FieldOfView InvalidFieldOfView;
  static const FieldOfView CeilingFieldOfView;
  static const FieldOfView FloorFieldOfView;
  static const FieldOfView PtzFieldOfView;

  constexpr FieldOfView() : Horizontal(0.0f), Vertical(0.0f), Diagonal(0.0f) {}
  constexpr FieldOfView(const FieldOfView& o) : Horizontal(o.Horizontal), Vertical(o.Vertical), Diagonal(o.Diagonal) {}
  constexpr FieldOfView(DEWARP_FLOAT horizontal, DEWARP_FLOAT vertical, DEWARP_FLOAT diagonal)
      : Horizontal(horizontal), Vertical(vertical), Diagonal(diagonal) {}
  // The diagonal is the hypotenuse of the two angles, computed as Set computes it (in double
  // precision, rounded once). The constructor is constexpr so that the constant fields of view
  // are in place before any code runs.
  DEWARP_FOV_CONSTEXPR FieldOfView(DEWARP_FLOAT horizontal, DEWARP_FLOAT vertical)
      : Horizontal(horizontal),
        Vertical(vertical),
        Diagonal(static_cast<DEWARP_FLOAT>(__builtin_hypot(static_cast<double>(horizontal), static_cast<double>(vertical)))) {}
  // X horizontal, Y vertical.
  explicit FieldOfView(const Vector2d& angles) : FieldOfView(angles.X, angles.Y) {}
  virtual ~FieldOfView() {}

  FieldOfView& operator=(const FieldOfView& other);

  // The diagonal is the hypotenuse of the two angles.
  void Set(DEWARP_FLOAT horizontal, DEWARP_FLOAT vertical);
  bool Valid() const {
    return FloatingPoint::is_finite(Horizontal) && FloatingPoint::is_finite(Vertical) &&
           FloatingPoint::is_finite(Diagonal);
  }

  // Exact equality of every component (false with any NaN). Inequality is true only when a
  // pair of components is less-or-greater, so with a NaN component both are false.
  bool operator==(const FieldOfView& o) const {
    return Horizontal == o.Horizontal && Vertical == o.Vertical && Diagonal == o.Diagonal;
  }
  bool operator!=(const FieldOfView& o) const {
    return FloatingPoint::is_lessgreater(Horizontal, o.Horizontal) ||
           FloatingPoint::is_lessgreater(Vertical, o.Vertical) || FloatingPoint::is_lessgreater(Diagonal, o.Diagonal);
  }

  FieldOfView operator-() const { return FieldOfView(-Horizontal, -Vertical, -Diagonal); }
  FieldOfView& operator+=(const FieldOfView& o) {
    Horizontal += o.Horizontal; Vertical += o.Vertical; Diagonal += o.Diagonal; return *this;
  }
  FieldOfView& operator-=(const FieldOfView& o) {
    Horizontal -= o.Horizontal; Vertical -= o.Vertical; Diagonal -= o.Diagonal; return *this;
  }
  FieldOfView& operator*=(DEWARP_FLOAT k) { Horizontal *= k; Vertical *= k; Diagonal *= k; return *this; }
  FieldOfView& operator/=(DEWARP_FLOAT k) { Horizontal /= k; Vertical /= k; Diagonal /= k; return *this; }
  FieldOfView operator+(const FieldOfView& o) const {
    return FieldOfView(Horizontal + o.Horizontal, Vertical + o.Vertical, Diagonal + o.Diagonal);
  }
  FieldOfView operator-(const FieldOfView& o) const {
    return FieldOfView(Horizontal - o.Horizontal, Vertical - o.Vertical, Diagonal - o.Diagonal);
  }
  FieldOfView operator*(DEWARP_FLOAT k) const { return FieldOfView(Horizontal * k, Vertical * k, Diagonal * k); }
  FieldOfView operator/(DEWARP_FLOAT k) const { return FieldOfView(Horizontal / k, Vertical / k, Diagonal / k); }
  void SetZero() { Horizontal = 0.0f; Vertical = 0.0f; Diagonal = 0.0f; }
};

inline FieldOfView operator*(DEWARP_FLOAT k, const FieldOfView& f) {
  return FieldOfView(k * f.Horizontal, k * f.Vertical, k * f.Diagonal);
}
inline FieldOfView operator/(DEWARP_FLOAT k, const FieldOfView& f) {
  return FieldOfView(k / f.Horizontal, k / f.Vertical, k / f.Diagonal);
}

}  // namespace libdewarp
}  // namespace vemo
