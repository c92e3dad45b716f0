// Angle constants, the trigonometric functions of the C library in three widths, clamped
// inverse sine and cosine, angle wrapping and a table-driven sine and cosine for per-pixel use.
#pragma once

#include <libdewarp_vemo/floating_point.h>

#include <array>
#include <cmath>
#include <utility>

namespace vemo {
namespace libdewarp {

// The single-precision angle constants, each the float nearest to the quantity named.
struct TrigonometryConstants {
  static constexpr float DEGREES_TO_RADIANS = static_cast<float>(3.14159265358979323846 / 180.0);
  static constexpr float RADIANS_TO_DEGREES = static_cast<float>(180.0 / 3.14159265358979323846);
  static constexpr float EPSILON = 1e-10f;
  static constexpr float PI = static_cast<float>(3.14159265358979323846);
  static constexpr float TWO_PI = static_cast<float>(2.0 * 3.14159265358979323846);
  static constexpr float HALF_PI = static_cast<float>(3.14159265358979323846 / 2.0);
  static constexpr float QUARTER_PI = static_cast<float>(3.14159265358979323846 / 4.0);
  static constexpr float ONE_OVER_PI = static_cast<float>(1.0 / 3.14159265358979323846);
  static constexpr float ONE_OVER_TWO_PI = static_cast<float>(1.0 / (2.0 * 3.14159265358979323846));
};

// Width in which the library function of a width is evaluated. Single precision goes through
// the double-precision function and is rounded once: the single-precision functions of the C
// library on i386 (x87) and on x86-64 differ in the last place for several of these
// functions, while the rounded double results agree, so both builds compute the same floats.
template <class T>
struct TrigonometryEvaluation {
  typedef T type;
};
template <>
struct TrigonometryEvaluation<float> {
  typedef double type;
};

// The library functions of one width, written once for float, double and long double.
template <class T>
class BasicTrigonometry {
  typedef typename TrigonometryEvaluation<T>::type W;

public:
  static T sin(T x) { return static_cast<T>(std::sin(static_cast<W>(x))); }
  static T cos(T x) { return static_cast<T>(std::cos(static_cast<W>(x))); }
  static T tan(T x) { return static_cast<T>(std::tan(static_cast<W>(x))); }
  static T sinh(T x) { return static_cast<T>(std::sinh(static_cast<W>(x))); }
  static T cosh(T x) { return static_cast<T>(std::cosh(static_cast<W>(x))); }
  static T tanh(T x) { return static_cast<T>(std::tanh(static_cast<W>(x))); }
  static T asinh(T x) { return static_cast<T>(std::asinh(static_cast<W>(x))); }
  static T acosh(T x) { return static_cast<T>(std::acosh(static_cast<W>(x))); }
  static T atanh(T x) { return static_cast<T>(std::atanh(static_cast<W>(x))); }
  static T atan(T x) { return static_cast<T>(std::atan(static_cast<W>(x))); }
  static T atan(T y, T x) { return static_cast<T>(std::atan2(static_cast<W>(y), static_cast<W>(x))); }
  static T hypot(T x, T y) { return static_cast<T>(std::hypot(static_cast<W>(x), static_cast<W>(y))); }
  static std::pair<T, T> sin_and_cos(T x) { return std::pair<T, T>(sin(x), cos(x)); }

  // Inverse sine and cosine clamped to their domain: arguments at or beyond +-1 give the end
  // values of the range (with the single-precision pi). The comparisons are quiet, so NaN
  // reaches the library function and stays NaN.
  static T asin(T x) {
    if (std::islessequal(x, T(-1))) return -T(TrigonometryConstants::HALF_PI);
    if (std::isgreaterequal(x, T(1))) return T(TrigonometryConstants::HALF_PI);
    return static_cast<T>(std::asin(static_cast<W>(x)));
  }
  static T acos(T x) {
    if (std::islessequal(x, T(-1))) return T(TrigonometryConstants::PI);
    if (std::isgreaterequal(x, T(1))) return T(0);
    return static_cast<T>(std::acos(static_cast<W>(x)));
  }
};

#define DEWARP_TRIGONOMETRY_UNARY(name)                                                         \
  static auto name(float x) { return BasicTrigonometry<float>::name(x); }                       \
  static auto name(double x) { return BasicTrigonometry<double>::name(x); }                     \
  static auto name(long double x) { return BasicTrigonometry<long double>::name(x); }
#define DEWARP_TRIGONOMETRY_BINARY(name)                                                        \
  static auto name(float a, float b) { return BasicTrigonometry<float>::name(a, b); }           \
  static auto name(double a, double b) { return BasicTrigonometry<double>::name(a, b); }        \
  static auto name(long double a, long double b) {                                              \
    return BasicTrigonometry<long double>::name(a, b);                                          \
  }

class Trigonometry : public TrigonometryConstants {
public:
  // Entries of the sine and cosine tables: entry i is the angle -pi + i * 2pi / 4096. Entry
  // 2048 is angle 0 and the extra last entry, 4096, the angle pi, so that every clamped
  // lookup index reads a defined value.
  static constexpr int TableSize = 4097;
  static const std::array<float, TableSize> SineTable;
  static const std::array<float, TableSize> CosineTable;

  Trigonometry() {}
  Trigonometry(const Trigonometry&) {}
  Trigonometry& operator=(const Trigonometry&) { return *this; }
  virtual ~Trigonometry() {}

  static float degrees_to_radians(float a) { return a * DEGREES_TO_RADIANS; }
  static float radians_to_degrees(float a) { return a * RADIANS_TO_DEGREES; }

  DEWARP_TRIGONOMETRY_UNARY(sin)
  DEWARP_TRIGONOMETRY_UNARY(cos)
  DEWARP_TRIGONOMETRY_UNARY(tan)
  DEWARP_TRIGONOMETRY_UNARY(sinh)
  DEWARP_TRIGONOMETRY_UNARY(cosh)
  DEWARP_TRIGONOMETRY_UNARY(tanh)
  DEWARP_TRIGONOMETRY_UNARY(asinh)
  DEWARP_TRIGONOMETRY_UNARY(acosh)
  DEWARP_TRIGONOMETRY_UNARY(atanh)
  DEWARP_TRIGONOMETRY_UNARY(atan)
  DEWARP_TRIGONOMETRY_BINARY(atan)
  DEWARP_TRIGONOMETRY_BINARY(hypot)
  DEWARP_TRIGONOMETRY_UNARY(asin)
  DEWARP_TRIGONOMETRY_UNARY(acos)

  // (sine, cosine) of x, in that order.
  static std::pair<float, float> sin_and_cos(float x) { return BasicTrigonometry<float>::sin_and_cos(x); }
  static std::pair<double, double> sin_and_cos(double x) {
    return BasicTrigonometry<double>::sin_and_cos(x);
  }

  // Wraps an angle into [-pi, pi).
  static float normalise_angle(float a);

  // Table lookups for map building. There is no range reduction: angles beyond +-pi read the
  // first or the last entry. A non-finite argument is returned as it is.
  static float fast_sin(float x) { return std::isfinite(x) ? SineTable[table_index(x)] : x; }
  static float fast_cos(float x) { return std::isfinite(x) ? CosineTable[table_index(x)] : x; }
  static std::pair<float, float> fast_sin_and_cos(float x) {
    if (!std::isfinite(x)) return std::pair<float, float>(x, x);
    const int index = table_index(x);
    return std::pair<float, float>(SineTable[index], CosineTable[index]);
  }

  // Index of the table entry nearest to a finite angle: x * 651.8986 + 2048 as one fused
  // multiply-add in double precision, rounded in the current rounding mode (ties to even) and
  // clamped to 0 ... 4096. The clamp is done before the conversion to int, so that huge
  // angles cannot overflow it.
  static int table_index(float x) {
    double index = std::nearbyint(std::fma(static_cast<double>(x), 651.8986, 2048.0));
    if (index < 0.0) index = 0.0;
    if (index > 4096.0) index = 4096.0;
    return static_cast<int>(index);
  }
};

#undef DEWARP_TRIGONOMETRY_UNARY
#undef DEWARP_TRIGONOMETRY_BINARY

}  // namespace libdewarp
}  // namespace vemo
