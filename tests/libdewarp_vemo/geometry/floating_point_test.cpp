#include <libdewarp_vemo/floating_point.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cmath>
#include <limits>
#include <type_traits>

using vemo::libdewarp::FloatingPoint;

namespace {

const char kNegativeRootWarning[] =
    "LIBDEWARP: WARNING - Attempted square root of a negative value. Returning root of absolute.\n";

template <class T>
class FloatingPointWidths : public ::testing::Test {};
typedef ::testing::Types<float, double, long double> Widths;
TYPED_TEST_SUITE(FloatingPointWidths, Widths);

TEST(FloatingPoint, ConstantsAreZeroPositiveQuietNanAndInfinity) {
  EXPECT_EQ(FloatingPoint::Zero, 0.0f);
  EXPECT_FALSE(std::signbit(FloatingPoint::Zero));
  EXPECT_TRUE(std::isnan(FloatingPoint::Nan));
  EXPECT_FALSE(std::signbit(FloatingPoint::Nan));
  // Quiet NaN of single precision: exponent all ones, only the top mantissa bit set.
  union {
    float f;
    unsigned u;
  } bits;
  bits.f = FloatingPoint::Nan;
  EXPECT_EQ(bits.u, 0x7fc00000u);
  EXPECT_TRUE(std::isinf(FloatingPoint::Infinity));
  EXPECT_GT(FloatingPoint::Infinity, 0.0f);
}

TEST(FloatingPoint, SquareRootOfMinusFourIsTwoWithOneWarningPerCall) {
  vemo::test::LogCapture capture(LOG_WARNING);
  EXPECT_EQ(FloatingPoint::sqrt(-4.0f), 2.0f);
  ASSERT_EQ(capture.lines().size(), 1u);
  EXPECT_EQ(capture.lines()[0], kNegativeRootWarning);
  EXPECT_EQ(FloatingPoint::sqrt(-4.0), 2.0);
  EXPECT_EQ(FloatingPoint::sqrt(-4.0L), 2.0L);
  EXPECT_EQ(capture.count("Attempted square root of a negative value"), 3u);
}

TEST(FloatingPoint, SquareRootOfNonNegativeValuesIsSilent) {
  vemo::test::LogCapture capture(LOG_WARNING);
  EXPECT_EQ(FloatingPoint::sqrt(9.0f), 3.0f);
  EXPECT_EQ(FloatingPoint::sqrt(0.0f), 0.0f);
  EXPECT_EQ(FloatingPoint::sqrt(2.25), 1.5);
  EXPECT_TRUE(std::isinf(FloatingPoint::sqrt(FloatingPoint::Infinity)));
  EXPECT_TRUE(capture.lines().empty());
}

TEST(FloatingPoint, SquareRootOfNanIsNanWithoutWarning) {
  vemo::test::LogCapture capture(LOG_WARNING);
  EXPECT_TRUE(std::isnan(FloatingPoint::sqrt(FloatingPoint::Nan)));
  EXPECT_TRUE(capture.lines().empty());
}

TEST(FloatingPoint, SquareRootOfMinusInfinityIsInfinity) {
  vemo::test::LogCapture capture(LOG_WARNING);
  EXPECT_EQ(FloatingPoint::sqrt(-FloatingPoint::Infinity), FloatingPoint::Infinity);
  EXPECT_EQ(capture.lines().size(), 1u);
}

TYPED_TEST(FloatingPointWidths, EachWidthKeepsItsType) {
  const TypeParam x = TypeParam(2);
  static_assert(std::is_same<decltype(FloatingPoint::sqrt(x)), TypeParam>::value, "sqrt width");
  static_assert(std::is_same<decltype(FloatingPoint::square(x)), TypeParam>::value, "square width");
  static_assert(std::is_same<decltype(FloatingPoint::pow(x, x)), TypeParam>::value, "pow width");
  static_assert(std::is_same<decltype(FloatingPoint::is_less(x, x)), bool>::value, "comparison result");
  static_assert(std::is_same<decltype(FloatingPoint::classify(x)), int>::value, "classification result");
  EXPECT_EQ(FloatingPoint::square(TypeParam(-3)), TypeParam(9));
  EXPECT_EQ(FloatingPoint::fabs(TypeParam(-3)), TypeParam(3));
  // The root of 2 in this width, not a narrower one.
  EXPECT_EQ(FloatingPoint::sqrt(x), std::sqrt(x));
}

TYPED_TEST(FloatingPointWidths, QuietComparisonsAreFalseWithNan) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const TypeParam one = TypeParam(1);
  for (TypeParam other : {one, nan}) {
    EXPECT_FALSE(FloatingPoint::is_greater(nan, other));
    EXPECT_FALSE(FloatingPoint::is_greaterequal(nan, other));
    EXPECT_FALSE(FloatingPoint::is_less(nan, other));
    EXPECT_FALSE(FloatingPoint::is_lessequal(nan, other));
    EXPECT_FALSE(FloatingPoint::is_lessgreater(nan, other));
    EXPECT_TRUE(FloatingPoint::is_unordered(nan, other));
    EXPECT_FALSE(FloatingPoint::is_less(other, nan));
    EXPECT_TRUE(FloatingPoint::is_unordered(other, nan));
  }
}

TYPED_TEST(FloatingPointWidths, QuietComparisonsOfNumbers) {
  const TypeParam one = TypeParam(1), two = TypeParam(2);
  EXPECT_TRUE(FloatingPoint::is_greater(two, one));
  EXPECT_FALSE(FloatingPoint::is_greater(one, one));
  EXPECT_TRUE(FloatingPoint::is_greaterequal(one, one));
  EXPECT_TRUE(FloatingPoint::is_less(one, two));
  EXPECT_FALSE(FloatingPoint::is_less(two, one));
  EXPECT_TRUE(FloatingPoint::is_lessequal(two, two));
  EXPECT_TRUE(FloatingPoint::is_lessgreater(one, two));
  EXPECT_TRUE(FloatingPoint::is_lessgreater(two, one));
  EXPECT_FALSE(FloatingPoint::is_lessgreater(two, two));
  EXPECT_FALSE(FloatingPoint::is_unordered(one, two));
}

TYPED_TEST(FloatingPointWidths, ClassificationFollowsTheLibrary) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const TypeParam inf = std::numeric_limits<TypeParam>::infinity();
  const TypeParam tiny = std::numeric_limits<TypeParam>::denorm_min();
  EXPECT_EQ(FloatingPoint::classify(nan), FP_NAN);
  EXPECT_EQ(FloatingPoint::classify(-inf), FP_INFINITE);
  EXPECT_EQ(FloatingPoint::classify(TypeParam(-0.0)), FP_ZERO);
  EXPECT_EQ(FloatingPoint::classify(tiny), FP_SUBNORMAL);
  EXPECT_EQ(FloatingPoint::classify(TypeParam(1.5)), FP_NORMAL);

  EXPECT_TRUE(FloatingPoint::is_zero(TypeParam(0)));
  EXPECT_TRUE(FloatingPoint::is_zero(TypeParam(-0.0)));
  EXPECT_FALSE(FloatingPoint::is_zero(tiny));
  EXPECT_TRUE(FloatingPoint::is_normal(TypeParam(1)));
  EXPECT_FALSE(FloatingPoint::is_normal(tiny));
  EXPECT_FALSE(FloatingPoint::is_normal(TypeParam(0)));
  EXPECT_FALSE(FloatingPoint::is_normal(inf));
  EXPECT_FALSE(FloatingPoint::is_normal(nan));
  EXPECT_TRUE(FloatingPoint::is_inf(-inf));
  EXPECT_FALSE(FloatingPoint::is_inf(nan));
  EXPECT_TRUE(FloatingPoint::is_nan(nan));
  EXPECT_FALSE(FloatingPoint::is_nan(inf));
  EXPECT_TRUE(FloatingPoint::is_finite(tiny));
  EXPECT_FALSE(FloatingPoint::is_finite(inf));
  EXPECT_FALSE(FloatingPoint::is_finite(nan));
}

TYPED_TEST(FloatingPointWidths, RoundingLogarithmAndPower) {
  // nearbyint rounds halves to even in the default rounding mode.
  EXPECT_EQ(FloatingPoint::nearbyint(TypeParam(2.5)), TypeParam(2));
  EXPECT_EQ(FloatingPoint::nearbyint(TypeParam(3.5)), TypeParam(4));
  EXPECT_EQ(FloatingPoint::nearbyint(TypeParam(-1.25)), TypeParam(-1));
  EXPECT_EQ(FloatingPoint::ceiling(TypeParam(1.25)), TypeParam(2));
  EXPECT_EQ(FloatingPoint::ceiling(TypeParam(-1.25)), TypeParam(-1));
  EXPECT_EQ(FloatingPoint::floor(TypeParam(-1.25)), TypeParam(-2));
  EXPECT_EQ(FloatingPoint::floor(TypeParam(1.75)), TypeParam(1));
  EXPECT_EQ(FloatingPoint::log(TypeParam(1)), TypeParam(0));
  EXPECT_NEAR(static_cast<double>(FloatingPoint::log(TypeParam(std::exp(2.0)))), 2.0, 1e-6);
  EXPECT_EQ(FloatingPoint::pow(TypeParam(2), TypeParam(10)), TypeParam(1024));
  EXPECT_EQ(FloatingPoint::pow(TypeParam(9), TypeParam(0.5)), TypeParam(3));
}

TEST(FloatingPoint, MixedIntegerArgumentsPickTheFloatOverload) {
  // A float compared with an integer literal uses the single-precision overload.
  static_assert(std::is_same<decltype(FloatingPoint::pow(2.0f, 3)), float>::value, "float overload");
  EXPECT_TRUE(FloatingPoint::is_less(0.5f, 1));
  EXPECT_FALSE(FloatingPoint::is_less(FloatingPoint::Nan, 1));
}

}  // namespace
