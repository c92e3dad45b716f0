#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

using vemo::libdewarp::Trigonometry;

namespace {

const long double kPi = 3.141592653589793238462643383279502884L;
const float kNan = std::numeric_limits<float>::quiet_NaN();

// True when c is the single-precision number nearest to the exact value.
::testing::AssertionResult IsNearestFloat(float c, long double exact) {
  const long double below = std::nextafter(c, -std::numeric_limits<float>::infinity());
  const long double above = std::nextafter(c, std::numeric_limits<float>::infinity());
  const long double error = std::fabs(static_cast<long double>(c) - exact);
  if (error <= std::fabs(above - c) / 2 && error <= std::fabs(c - below) / 2) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << c << " is not the float nearest to " << static_cast<double>(exact);
}

// Exact angle of table entry i.
double EntryAngle(int i) { return -3.14159265358979323846 + i * (2.0 * 3.14159265358979323846 / 4096.0); }

TEST(Trigonometry, ConstantsAreTheNearestFloats) {
  EXPECT_TRUE(IsNearestFloat(Trigonometry::DEGREES_TO_RADIANS, kPi / 180));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::RADIANS_TO_DEGREES, 180 / kPi));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::EPSILON, 1e-10L));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::PI, kPi));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::TWO_PI, 2 * kPi));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::HALF_PI, kPi / 2));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::QUARTER_PI, kPi / 4));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::ONE_OVER_PI, 1 / kPi));
  EXPECT_TRUE(IsNearestFloat(Trigonometry::ONE_OVER_TWO_PI, 1 / (2 * kPi)));
  // The decimal forms by which the constants are known.
  EXPECT_EQ(Trigonometry::PI, 3.1415927f);
  EXPECT_EQ(Trigonometry::HALF_PI, 1.5707964f);
  EXPECT_EQ(Trigonometry::RADIANS_TO_DEGREES, 57.29578f);
  EXPECT_EQ(Trigonometry::DEGREES_TO_RADIANS, 0.017453292f);
}

TEST(Trigonometry, TablesHold4097EntriesFromMinusPiToPi) {
  ASSERT_EQ(Trigonometry::SineTable.size(), 4097u);
  ASSERT_EQ(Trigonometry::CosineTable.size(), 4097u);
  for (int i = 0; i < 4097; ++i) {
    ASSERT_NEAR(Trigonometry::SineTable[i], std::sin(EntryAngle(i)), 1e-7) << "entry " << i;
    ASSERT_NEAR(Trigonometry::CosineTable[i], std::cos(EntryAngle(i)), 1e-7) << "entry " << i;
  }
}

TEST(Trigonometry, TableLandmarks) {
  EXPECT_EQ(Trigonometry::SineTable[2048], 0.0f);
  EXPECT_EQ(Trigonometry::CosineTable[2048], 1.0f);
  EXPECT_EQ(Trigonometry::CosineTable[0], -1.0f);
  EXPECT_EQ(Trigonometry::SineTable[1024], -1.0f);  // -pi/2
  EXPECT_EQ(Trigonometry::SineTable[3072], 1.0f);   // +pi/2
  // The extra entry for the angle pi: sine 0, cosine -1.
  EXPECT_EQ(Trigonometry::SineTable[4096], 0.0f);
  EXPECT_EQ(Trigonometry::CosineTable[4096], -1.0f);
  // The last regular entry is the angle pi - 2pi/4096.
  EXPECT_NEAR(Trigonometry::SineTable[4095], std::sin(3.14159265358979 - 2 * 3.14159265358979 / 4096), 1e-7);
}

TEST(Trigonometry, FastSineOfZeroReadsTheMiddleEntry) {
  EXPECT_EQ(Trigonometry::table_index(0.0f), 2048);
  EXPECT_EQ(Trigonometry::fast_sin(0.0f), Trigonometry::SineTable[2048]);
  EXPECT_EQ(Trigonometry::fast_cos(0.0f), 1.0f);
}

TEST(Trigonometry, FastCosineOfMinusPiReadsTheFirstEntry) {
  EXPECT_EQ(Trigonometry::table_index(-Trigonometry::PI), 0);
  EXPECT_EQ(Trigonometry::fast_cos(-Trigonometry::PI), -1.0f);
  EXPECT_EQ(Trigonometry::fast_cos(-Trigonometry::PI), Trigonometry::CosineTable[0]);
}

TEST(Trigonometry, FastFunctionsReturnNonFiniteArgumentsAsTheyAre) {
  EXPECT_TRUE(std::isnan(Trigonometry::fast_sin(kNan)));
  EXPECT_TRUE(std::isnan(Trigonometry::fast_cos(kNan)));
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(Trigonometry::fast_sin(inf), inf);
  EXPECT_EQ(Trigonometry::fast_cos(-inf), -inf);
  const std::pair<float, float> both = Trigonometry::fast_sin_and_cos(-inf);
  EXPECT_EQ(both.first, -inf);
  EXPECT_EQ(both.second, -inf);
  EXPECT_TRUE(std::isnan(Trigonometry::fast_sin_and_cos(kNan).second));
}

TEST(Trigonometry, AnglesBeyondPiReadTheClampedEndEntries) {
  // No range reduction: 10 radians reads the last entry, not sin(10).
  EXPECT_EQ(Trigonometry::table_index(10.0f), 4096);
  EXPECT_EQ(Trigonometry::fast_sin(10.0f), Trigonometry::SineTable[4096]);
  EXPECT_EQ(Trigonometry::fast_sin(10.0f), 0.0f);
  EXPECT_EQ(Trigonometry::fast_cos(10.0f), -1.0f);
  EXPECT_EQ(Trigonometry::table_index(-10.0f), 0);
  EXPECT_EQ(Trigonometry::table_index(1e30f), 4096);
  EXPECT_EQ(Trigonometry::table_index(-std::numeric_limits<float>::max()), 0);
}

TEST(Trigonometry, TableIndexUsesTheTruncatedFactor) {
  // pi * 651.8986 + 2048 = 4095.9999: pi reads the extra last entry.
  EXPECT_EQ(Trigonometry::table_index(Trigonometry::PI), 4096);
  // A quarter turn: pi/2 * 651.8986 + 2048 = 3071.99... -> 3072.
  EXPECT_EQ(Trigonometry::table_index(Trigonometry::HALF_PI), 3072);
  // One step of the table, 2pi/4096 = 0.00153398; at 0.6 of a step from zero the index is 2049.
  EXPECT_EQ(Trigonometry::table_index(0.6f * 0.00153398f), 2049);
  EXPECT_EQ(Trigonometry::table_index(0.4f * 0.00153398f), 2048);
}

TEST(Trigonometry, FastSineAndCosineFollowTheLibraryOverTheTurn) {
  double worst = 0;
  const int steps = 200000;
  for (int k = 0; k <= steps; ++k) {
    const float x = static_cast<float>(-3.14159265358979 + k * (2 * 3.14159265358979 / steps));
    const std::pair<float, float> both = Trigonometry::fast_sin_and_cos(x);
    const double sine_error = std::fabs(Trigonometry::fast_sin(x) - std::sin(static_cast<double>(x)));
    const double cosine_error = std::fabs(Trigonometry::fast_cos(x) - std::cos(static_cast<double>(x)));
    ASSERT_LE(sine_error, 2e-3) << "x = " << x;
    ASSERT_LE(cosine_error, 2e-3) << "x = " << x;
    ASSERT_EQ(both.first, Trigonometry::fast_sin(x));
    ASSERT_EQ(both.second, Trigonometry::fast_cos(x));
    worst = std::fmax(worst, std::fmax(sine_error, cosine_error));
  }
  // Half a table step bounds the error of the nearest entry.
  EXPECT_LE(worst, 0.5 * 2 * 3.14159265358979 / 4096 + 1e-4);
}

TEST(Trigonometry, NormaliseAngleLandmarks) {
  EXPECT_EQ(Trigonometry::normalise_angle(0.0f), 0.0f);
  EXPECT_EQ(Trigonometry::normalise_angle(-Trigonometry::PI), -Trigonometry::PI);
  EXPECT_EQ(Trigonometry::normalise_angle(Trigonometry::PI), -Trigonometry::PI);
  const float justAbovePi = std::nextafter(Trigonometry::PI, 4.0f);
  const float wrapped = Trigonometry::normalise_angle(justAbovePi);
  EXPECT_GT(wrapped, -Trigonometry::PI);
  EXPECT_LT(wrapped, -Trigonometry::PI + 1e-5f);
  EXPECT_NEAR(Trigonometry::normalise_angle(1.5f * Trigonometry::PI), -0.5f * Trigonometry::PI, 1e-6);
  EXPECT_NEAR(Trigonometry::normalise_angle(-1.5f * Trigonometry::PI), 0.5f * Trigonometry::PI, 1e-6);
  EXPECT_NEAR(Trigonometry::normalise_angle(7.0f), 7.0 - 2 * 3.14159265358979, 1e-6);
  EXPECT_TRUE(std::isnan(Trigonometry::normalise_angle(kNan)));
}

TEST(Trigonometry, NormaliseAngleAlwaysLandsInTheHalfOpenTurn) {
  const float pi = Trigonometry::PI;
  // A dense grid over many turns, and every float next to the multiples of pi, where rounding
  // is most likely to leave the interval (-59.6902657 is such a case for the plain formula).
  for (int k = -400000; k <= 400000; ++k) {
    const float a = k * 0.00125f + (k % 7) * 1e-7f;
    const float r = Trigonometry::normalise_angle(a);
    ASSERT_TRUE(r >= -pi && r < pi) << "a = " << a << " r = " << r;
    ASSERT_NEAR(std::remainder(static_cast<double>(r) - a, 2 * 3.14159265358979), 0.0, 2e-4) << "a = " << a;
  }
  for (int turns = -300; turns <= 300; ++turns) {
    float a = static_cast<float>(turns * 3.14159265358979);
    for (int n = 0; n < 8; ++n) a = std::nextafter(a, -1e9f);
    for (int n = 0; n < 16; ++n, a = std::nextafter(a, 1e9f)) {
      const float r = Trigonometry::normalise_angle(a);
      ASSERT_TRUE(r >= -pi && r < pi) << "a = " << a << " r = " << r;
    }
  }
  const float r = Trigonometry::normalise_angle(-59.6902657f);
  EXPECT_TRUE(r >= -pi && r < pi) << r;
}

TEST(Trigonometry, ClampedInverseFunctions) {
  EXPECT_EQ(Trigonometry::acos(1.0000001f), 0.0f);
  EXPECT_EQ(Trigonometry::asin(-2.0f), -Trigonometry::HALF_PI);
  EXPECT_TRUE(std::isnan(Trigonometry::acos(kNan)));
  EXPECT_TRUE(std::isnan(Trigonometry::asin(kNan)));
  EXPECT_EQ(Trigonometry::acos(-1.0f), Trigonometry::PI);
  EXPECT_EQ(Trigonometry::acos(-3.0f), Trigonometry::PI);
  EXPECT_EQ(Trigonometry::asin(1.0f), Trigonometry::HALF_PI);
  EXPECT_NEAR(Trigonometry::asin(0.5f), 3.14159265358979 / 6, 1e-7);
  EXPECT_NEAR(Trigonometry::acos(0.5f), 3.14159265358979 / 3, 1e-7);
}

TEST(Trigonometry, ClampedInverseFunctionsInWiderWidthsUseTheSinglePrecisionEnds) {
  EXPECT_EQ(Trigonometry::asin(-2.0), -static_cast<double>(1.5707964f));
  EXPECT_EQ(Trigonometry::acos(-1.0L), static_cast<long double>(3.1415927f));
  EXPECT_EQ(Trigonometry::acos(1.5), 0.0);
  EXPECT_TRUE(std::isnan(Trigonometry::acos(std::numeric_limits<long double>::quiet_NaN())));
  static_assert(std::is_same<decltype(Trigonometry::asin(0.5)), double>::value, "double overload");
  static_assert(std::is_same<decltype(Trigonometry::acos(0.5L)), long double>::value, "long double overload");
  EXPECT_NEAR(Trigonometry::asin(0.5), 3.14159265358979323846 / 6, 1e-15);
}

TEST(Trigonometry, LibraryFunctionsInEachWidth) {
  static_assert(std::is_same<decltype(Trigonometry::sin(1.0f)), float>::value, "float");
  static_assert(std::is_same<decltype(Trigonometry::atan(1.0, 2.0)), double>::value, "double");
  static_assert(std::is_same<decltype(Trigonometry::hypot(1.0L, 2.0L)), long double>::value, "long double");
  EXPECT_NEAR(Trigonometry::sin(0.5), 0.479425538604203, 1e-15);
  EXPECT_NEAR(Trigonometry::cos(0.5f), 0.8775825619, 1e-7);
  EXPECT_NEAR(Trigonometry::tan(0.5L), 0.546302489843790513L, 1e-18L);
  EXPECT_NEAR(Trigonometry::sinh(1.0), 1.1752011936438014, 1e-15);
  EXPECT_NEAR(Trigonometry::cosh(1.0), 1.5430806348152437, 1e-15);
  EXPECT_NEAR(Trigonometry::tanh(1.0), 0.7615941559557649, 1e-15);
  EXPECT_NEAR(Trigonometry::asinh(1.0), 0.881373587019543, 1e-15);
  EXPECT_NEAR(Trigonometry::acosh(2.0), 1.3169578969248166, 1e-15);
  EXPECT_NEAR(Trigonometry::atanh(0.5), 0.5493061443340549, 1e-15);
  EXPECT_NEAR(Trigonometry::atan(1.0), 3.14159265358979323846 / 4, 1e-15);
  // atan(y, x) is atan2 with y first.
  EXPECT_NEAR(Trigonometry::atan(1.0f, 0.0f), 1.5707963, 1e-7);
  EXPECT_EQ(Trigonometry::atan(0.0f, 1.0f), 0.0f);
  EXPECT_NEAR(Trigonometry::atan(0.0, -1.0), 3.14159265358979323846, 1e-15);
  EXPECT_EQ(Trigonometry::hypot(3.0f, 4.0f), 5.0f);
}

TEST(Trigonometry, SineAndCosineComeInThatOrder) {
  const std::pair<float, float> f = Trigonometry::sin_and_cos(0.5f);
  EXPECT_NEAR(f.first, 0.4794255, 1e-7);
  EXPECT_NEAR(f.second, 0.8775826, 1e-7);
  const std::pair<double, double> d = Trigonometry::sin_and_cos(0.5);
  EXPECT_NEAR(d.first, 0.479425538604203, 1e-15);
  EXPECT_NEAR(d.second, 0.8775825618903728, 1e-15);
}

TEST(Trigonometry, DegreeConversions) {
  EXPECT_EQ(Trigonometry::degrees_to_radians(180.0f), 180.0f * 0.017453292f);
  EXPECT_NEAR(Trigonometry::degrees_to_radians(90.0f), 1.5707963, 1e-6);
  EXPECT_NEAR(Trigonometry::radians_to_degrees(Trigonometry::PI), 180.0, 1e-4);
  EXPECT_NEAR(Trigonometry::radians_to_degrees(-1.0f), -57.29578, 1e-5);
}

}  // namespace

namespace {

TEST(Trigonometry, SinglePrecisionIsTheRoundedDoubleResult) {
  // So that the i386 and x86-64 builds agree to the bit: one rounding of the double result.
  for (int i = -200; i <= 200; ++i) {
    const float x = i * 0.00497f;
    const float y = 0.31f + (i % 13) * 0.1f;
    const double dx = x, dy = y;
    ASSERT_EQ(Trigonometry::atan(x, y), static_cast<float>(std::atan2(dx, dy)));
    ASSERT_EQ(Trigonometry::atan(x), static_cast<float>(std::atan(dx)));
    ASSERT_EQ(Trigonometry::asin(x), static_cast<float>(std::asin(dx)));
    ASSERT_EQ(Trigonometry::acos(x), static_cast<float>(std::acos(dx)));
    ASSERT_EQ(Trigonometry::tan(x), static_cast<float>(std::tan(dx)));
    ASSERT_EQ(Trigonometry::sin(y * 3), static_cast<float>(std::sin(static_cast<double>(y * 3))));
    ASSERT_EQ(Trigonometry::cos(y * 3), static_cast<float>(std::cos(static_cast<double>(y * 3))));
    ASSERT_EQ(Trigonometry::hypot(x, y), static_cast<float>(std::hypot(dx, dy)));
    ASSERT_EQ(Trigonometry::sinh(x), static_cast<float>(std::sinh(dx)));
    ASSERT_EQ(Trigonometry::atanh(x), static_cast<float>(std::atanh(dx)));
  }
}

}  // namespace
