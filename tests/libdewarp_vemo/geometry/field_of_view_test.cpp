#include <libdewarp_vemo/field_of_view.h>

#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::FieldOfView;
using vemo::libdewarp::Trigonometry;
using vemo::libdewarp::Vector2d;

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();

void ExpectAngles(const FieldOfView& f, float h, float v, float d) {
  EXPECT_EQ(f.Horizontal, h);
  EXPECT_EQ(f.Vertical, v);
  EXPECT_EQ(f.Diagonal, d);
}

TEST(FieldOfView, DiagonalIsTheHypotenuseOfTheTwoAngles) {
  ExpectAngles(FieldOfView(3.0f, 4.0f), 3.0f, 4.0f, 5.0f);
  ExpectAngles(FieldOfView(Vector2d(5.0f, 12.0f)), 5.0f, 12.0f, 13.0f);
  FieldOfView f;
  f.Set(0.6f, 0.8f);
  EXPECT_EQ(f.Horizontal, 0.6f);
  EXPECT_EQ(f.Vertical, 0.8f);
  EXPECT_NEAR(f.Diagonal, 1.0, 1e-7);
  // Not the diagonal angle of a rectilinear view (which would come through the tangents).
  EXPECT_GT(std::fabs(f.Diagonal - 2 * std::atan(std::hypot(std::tan(0.3), std::tan(0.4)))), 0.01);
}

TEST(FieldOfView, ThreeValuesAreStoredAsGiven) {
  ExpectAngles(FieldOfView(1.0f, 2.0f, 7.0f), 1.0f, 2.0f, 7.0f);
  ExpectAngles(FieldOfView(), 0.0f, 0.0f, 0.0f);
}

TEST(FieldOfView, Statics) {
  ExpectAngles(FieldOfView::ZeroFieldOfView, 0.0f, 0.0f, 0.0f);
  EXPECT_TRUE(std::isnan(FieldOfView::InvalidFieldOfView.Horizontal));
  EXPECT_TRUE(std::isnan(FieldOfView::InvalidFieldOfView.Vertical));
  EXPECT_TRUE(std::isnan(FieldOfView::InvalidFieldOfView.Diagonal));
  const float twoPi = Trigonometry::TWO_PI, halfPi = Trigonometry::HALF_PI;
  // The same diagonal as the two-value constructor gives at run time.
  volatile float h = twoPi, v = halfPi;
  ExpectAngles(FieldOfView::CeilingFieldOfView, twoPi, halfPi, FieldOfView(h, v).Diagonal);
  ExpectAngles(FieldOfView::FloorFieldOfView, twoPi, halfPi, FieldOfView(h, v).Diagonal);
  ExpectAngles(FieldOfView::PtzFieldOfView, halfPi, halfPi, FieldOfView(v, v).Diagonal);
  EXPECT_NEAR(FieldOfView::CeilingFieldOfView.Diagonal, std::hypot(2 * 3.14159265358979, 3.14159265358979 / 2), 1e-6);
  EXPECT_NEAR(FieldOfView::PtzFieldOfView.Diagonal, 3.14159265358979 / std::sqrt(2.0), 1e-6);
}

TEST(FieldOfView, ValidMeansAllFinite) {
  EXPECT_TRUE(FieldOfView(1.0f, 2.0f).Valid());
  EXPECT_FALSE(FieldOfView::InvalidFieldOfView.Valid());
  EXPECT_FALSE(FieldOfView(1.0f, 2.0f, std::numeric_limits<float>::infinity()).Valid());
  EXPECT_FALSE(FieldOfView(kNan, 2.0f, 3.0f).Valid());
}

TEST(FieldOfView, EqualityIsExactAndInequalityQuiet) {
  EXPECT_TRUE(FieldOfView(1.0f, 2.0f, 3.0f) == FieldOfView(1.0f, 2.0f, 3.0f));
  EXPECT_FALSE(FieldOfView(1.0f, 2.0f, 3.0f) != FieldOfView(1.0f, 2.0f, 3.0f));
  EXPECT_TRUE(FieldOfView(1.0f, 2.0f, 3.0f) != FieldOfView(1.0f, 2.0f, 4.0f));
  EXPECT_FALSE(FieldOfView::InvalidFieldOfView == FieldOfView::InvalidFieldOfView);
  EXPECT_FALSE(FieldOfView::InvalidFieldOfView != FieldOfView::InvalidFieldOfView);
  EXPECT_FALSE(FieldOfView(kNan, 2.0f, 3.0f) != FieldOfView(1.0f, 2.0f, 3.0f));
}

TEST(FieldOfView, ComponentWiseArithmetic) {
  FieldOfView f(1.0f, 2.0f, 3.0f);
  ExpectAngles(-f, -1.0f, -2.0f, -3.0f);
  ExpectAngles(f + FieldOfView(1.0f, 1.0f, 1.0f), 2.0f, 3.0f, 4.0f);
  ExpectAngles(f - FieldOfView(1.0f, 1.0f, 1.0f), 0.0f, 1.0f, 2.0f);
  ExpectAngles(f * 2.0f, 2.0f, 4.0f, 6.0f);
  ExpectAngles(f / 2.0f, 0.5f, 1.0f, 1.5f);
  ExpectAngles(2.0f * f, 2.0f, 4.0f, 6.0f);
  ExpectAngles(6.0f / f, 6.0f, 3.0f, 2.0f);
  f += FieldOfView(1.0f, 1.0f, 1.0f);
  ExpectAngles(f, 2.0f, 3.0f, 4.0f);
  f -= FieldOfView(0.5f, 0.5f, 0.5f);
  ExpectAngles(f, 1.5f, 2.5f, 3.5f);
  f *= 2.0f;
  ExpectAngles(f, 3.0f, 5.0f, 7.0f);
  f /= 4.0f;
  ExpectAngles(f, 0.75f, 1.25f, 1.75f);
  f.SetZero();
  ExpectAngles(f, 0.0f, 0.0f, 0.0f);
}

}  // namespace
