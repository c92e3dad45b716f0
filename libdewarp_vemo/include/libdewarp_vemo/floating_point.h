// Scalar helpers of the engine: guarded square root, quiet (NaN-aware) comparisons,
// classification and the rounding and power functions of the C library.
//
// Every operation exists for float, double and long double. The three overloads are thin
// forwards to one generic definition, BasicFloatingPoint<T>, which calls the library function
// of the matching width (std::sqrt(float) is sqrtf, and so on).
#pragma once

#include <cmath>
#include <limits>

namespace vemo {
namespace libdewarp {

template <class T>
class BasicFloatingPoint {
public:
  static T square(T x) { return x * x; }
  static T fabs(T x) { return std::fabs(x); }

  // The quiet comparisons of C99: false whenever either argument is NaN, except
  // is_unordered, which is true exactly then. They never raise an invalid-operation flag.
  static bool is_greater(T a, T b) { return std::isgreater(a, b); }
  static bool is_greaterequal(T a, T b) { return std::isgreaterequal(a, b); }
  static bool is_less(T a, T b) { return std::isless(a, b); }
  static bool is_lessequal(T a, T b) { return std::islessequal(a, b); }
  static bool is_lessgreater(T a, T b) { return std::islessgreater(a, b); }
  static bool is_unordered(T a, T b) { return std::isunordered(a, b); }

  static bool is_zero(T x) { return std::fpclassify(x) == FP_ZERO; }
  static bool is_normal(T x) { return std::isnormal(x); }
  static bool is_inf(T x) { return std::isinf(x); }
  static bool is_nan(T x) { return std::isnan(x); }
  static bool is_finite(T x) { return std::isfinite(x); }
  static int classify(T x) { return std::fpclassify(x); }

  static T nearbyint(T x) { return std::nearbyint(x); }
  static T ceiling(T x) { return std::ceil(x); }
  static T floor(T x) { return std::floor(x); }
  static T log(T x) { return std::log(x); }
  static T pow(T x, T y) { return std::pow(x, y); }

  // Square root that never yields NaN for a negative argument: it warns through the engine
  // log and takes the root of the absolute value instead.
  static T sqrt(T x);
};

extern template class BasicFloatingPoint<float>;
extern template class BasicFloatingPoint<double>;
extern template class BasicFloatingPoint<long double>;

// One overload per width for each operation of BasicFloatingPoint.
#define DEWARP_FLOATING_POINT_UNARY(name)                                                       \
  static auto name(float x) { return BasicFloatingPoint<float>::name(x); }                      \
  static auto name(double x) { return BasicFloatingPoint<double>::name(x); }                    \
  static auto name(long double x) { return BasicFloatingPoint<long double>::name(x); }
#define DEWARP_FLOATING_POINT_BINARY(name)                                                      \
  static auto name(float a, float b) { return BasicFloatingPoint<float>::name(a, b); }          \
  static auto name(double a, double b) { return BasicFloatingPoint<double>::name(a, b); }       \
  static auto name(long double a, long double b) {                                              \
    return BasicFloatingPoint<long double>::name(a, b);                                         \
  }

class FloatingPoint {
public:
  static constexpr float Zero = 0.0f;
  static constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
  static constexpr float Infinity = std::numeric_limits<float>::infinity();

  FloatingPoint() {}
  FloatingPoint(const FloatingPoint&) {}
  FloatingPoint& operator=(const FloatingPoint&) { return *this; }
  virtual ~FloatingPoint() {}

  DEWARP_FLOATING_POINT_UNARY(square)
  DEWARP_FLOATING_POINT_UNARY(fabs)
  DEWARP_FLOATING_POINT_BINARY(is_greater)
  DEWARP_FLOATING_POINT_BINARY(is_greaterequal)
  DEWARP_FLOATING_POINT_BINARY(is_less)
  DEWARP_FLOATING_POINT_BINARY(is_lessequal)
  DEWARP_FLOATING_POINT_BINARY(is_lessgreater)
  DEWARP_FLOATING_POINT_BINARY(is_unordered)
  DEWARP_FLOATING_POINT_UNARY(is_zero)
  DEWARP_FLOATING_POINT_UNARY(is_normal)
  DEWARP_FLOATING_POINT_UNARY(is_inf)
  DEWARP_FLOATING_POINT_UNARY(is_nan)
  DEWARP_FLOATING_POINT_UNARY(is_finite)
  DEWARP_FLOATING_POINT_UNARY(classify)
  DEWARP_FLOATING_POINT_UNARY(nearbyint)
  DEWARP_FLOATING_POINT_UNARY(ceiling)
  DEWARP_FLOATING_POINT_UNARY(floor)
  DEWARP_FLOATING_POINT_UNARY(log)
  DEWARP_FLOATING_POINT_BINARY(pow)
  DEWARP_FLOATING_POINT_UNARY(sqrt)
};

#undef DEWARP_FLOATING_POINT_UNARY
#undef DEWARP_FLOATING_POINT_BINARY

}  // namespace libdewarp
}  // namespace vemo
