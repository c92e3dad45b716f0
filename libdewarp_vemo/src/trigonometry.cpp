#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

namespace {

// The tables are generated at compile time in double precision and rounded to single
// precision. Entry i is the angle (i - 2048) * pi / 2048. Whole quarter and half turns are
// reduced exactly on the integer step count, so that the series below only ever sees angles
// up to pi/4, where it converges quickly and the quadrant values (0, +-1) come out exact.
constexpr int kHalfTurn = 2048;
constexpr int kQuarterTurn = 1024;
constexpr int kEighthTurn = 512;
constexpr double kPi = 3.14159265358979323846;

// Taylor series of sine and cosine for |x| <= pi/4; 12 terms are far beyond double precision.
constexpr double SeriesSin(double x) {
  double term = x, sum = x;
  for (int n = 1; n < 12; ++n) {
    term *= -x * x / ((2.0 * n) * (2.0 * n + 1.0));
    sum += term;
  }
  return sum;
}

constexpr double SeriesCos(double x) {
  double term = 1.0, sum = 1.0;
  for (int n = 1; n < 12; ++n) {
    term *= -x * x / ((2.0 * n - 1.0) * (2.0 * n));
    sum += term;
  }
  return sum;
}

constexpr double StepAngle(int steps) { return steps * (kPi / kHalfTurn); }

// Sine and cosine of steps * pi / 2048 for steps in 0 ... 1024 (a quarter turn).
constexpr double QuarterSin(int steps) {
  return steps <= kEighthTurn ? SeriesSin(StepAngle(steps)) : SeriesCos(StepAngle(kQuarterTurn - steps));
}

// Sine of steps * pi / 2048 for steps in -2048 ... 2048.
constexpr double StepSin(int steps) {
  if (steps < 0) return -StepSin(-steps);
  if (steps > kQuarterTurn) return QuarterSin(kHalfTurn - steps);
  return QuarterSin(steps);
}

// Cosine of steps * pi / 2048 for steps in -2048 ... 2048.
constexpr double StepCos(int steps) {
  if (steps < 0) steps = -steps;
  if (steps > kQuarterTurn) return -QuarterSin(steps - kQuarterTurn);
  return QuarterSin(kQuarterTurn - steps);
}

constexpr std::array<float, Trigonometry::TableSize> MakeTable(bool sine) {
  std::array<float, Trigonometry::TableSize> table{};
  for (int i = 0; i < Trigonometry::TableSize; ++i) {
    const int steps = i - kHalfTurn;
    table[i] = static_cast<float>(sine ? StepSin(steps) : StepCos(steps));
  }
  return table;
}

// constexpr, so that the tables are computed by the compiler and are in place before any code
// of the process runs.
constexpr std::array<float, Trigonometry::TableSize> kSineTable = MakeTable(true);
constexpr std::array<float, Trigonometry::TableSize> kCosineTable = MakeTable(false);

}  // namespace

const std::array<float, Trigonometry::TableSize> Trigonometry::SineTable = kSineTable;
const std::array<float, Trigonometry::TableSize> Trigonometry::CosineTable = kCosineTable;

float Trigonometry::normalise_angle(float a) {
  const float shifted = a + PI;
  const float turns = std::floor(shifted * ONE_OVER_TWO_PI);
  float wrapped = shifted - TWO_PI * turns - PI;
  // For angles of many turns the rounding of the single-precision terms can leave the result
  // a few units in the last place outside [-pi, pi); one more turn brings it back.
  if (wrapped < -PI) {
    wrapped += TWO_PI;
  } else if (wrapped >= PI) {
    wrapped -= TWO_PI;
  }
  return wrapped;
}

}  // namespace libdewarp
}  // namespace vemo
