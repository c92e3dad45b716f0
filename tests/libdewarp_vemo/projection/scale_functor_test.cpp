#include <libdewarp_vemo/scale_functor.h>

#include <libdewarp_vemo/shift_scale_functor.h>
#include <log_capture.h>

#include <gtest/gtest.h>

namespace {

using vemo::libdewarp::MapFunctor;
using vemo::libdewarp::Resolution;
using vemo::libdewarp::ScaleFunctor;
using vemo::libdewarp::ShiftScaleFunctor;
using vemo::libdewarp::Vector2d;

void ExpectPoint(float x, float y, const Vector2d& actual) {
  EXPECT_FLOAT_EQ(x, actual.X);
  EXPECT_FLOAT_EQ(y, actual.Y);
}

TEST(ScaleFunctor, DefaultLeavesPoints) {
  ScaleFunctor s;
  ExpectPoint(1.0f, 1.0f, s.GetScaleFactor());
  ExpectPoint(3.0f, -4.0f, s(Vector2d(3.0f, -4.0f)));
}

TEST(ScaleFunctor, SimpleConstructors) {
  ExpectPoint(6.0f, -8.0f, ScaleFunctor(2.0f)(Vector2d(3.0f, -4.0f)));
  ExpectPoint(6.0f, -2.0f, ScaleFunctor(2.0f, 0.5f)(Vector2d(3.0f, -4.0f)));
  ExpectPoint(-3.0f, 12.0f, ScaleFunctor(Vector2d(-1.0f, -3.0f))(Vector2d(3.0f, -4.0f)));
}

TEST(ScaleFunctor, TwoResolutionsDivideTheSecondByTheFirst) {
  ScaleFunctor s(Resolution(640, 480), Resolution(1280, 960));
  ExpectPoint(2.0f, 2.0f, s.GetScaleFactor());
  ExpectPoint(20.0f, -14.0f, s(Vector2d(10.0f, -7.0f)));
  ScaleFunctor t(Resolution(400, 100), Resolution(100, 300));
  ExpectPoint(0.25f, 3.0f, t.GetScaleFactor());
}

TEST(ScaleFunctor, ScaleIsComponentWise) {
  ExpectPoint(6.0f, -20.0f, ScaleFunctor::Scale(Vector2d(3.0f, -4.0f), Vector2d(2.0f, 5.0f)));
}

// Free mode divides the source by the output, axis by axis: the opposite direction of the
// two-resolution constructor.
TEST(ScaleFunctor, FreeAspectRatio) {
  ScaleFunctor s(Resolution(640, 480), Resolution(1280, 960), FREE_ASPECT_RATIO);
  ExpectPoint(0.5f, 0.5f, s.GetScaleFactor());
  ScaleFunctor t(Resolution(1000, 500), Resolution(800, 800), FREE_ASPECT_RATIO);
  ExpectPoint(1.25f, 0.625f, t.GetScaleFactor());
  // Unknown modes behave as the free mode.
  ScaleFunctor u(Resolution(1000, 500), Resolution(800, 800), static_cast<DEWARP_ASPECT_RATIO>(7));
  ExpectPoint(1.25f, 0.625f, u.GetScaleFactor());
}

// A 1000 x 500 source shown at 800 x 800: scaled to fit, its width spans the 800 columns
// (factor 1000 / 800) and it fills 400 rows.
TEST(ScaleFunctor, ScaleToAspectRatioFitsTheWholeSource) {
  ScaleFunctor s(Resolution(1000, 500), Resolution(800, 800), SCALE_TO_ASPECT_RATIO);
  ExpectPoint(1.25f, 1.25f, s.GetScaleFactor());
  // A tall source in a wide output is fitted by its height: 500 x 1000 in 800 x 400, factor
  // 1000 / 400.
  ScaleFunctor t(Resolution(500, 1000), Resolution(800, 400), SCALE_TO_ASPECT_RATIO);
  ExpectPoint(2.5f, 2.5f, t.GetScaleFactor());
}

// Cropped, the same source fills the 800 x 800 output by its height: factor 500 / 800.
TEST(ScaleFunctor, CropToAspectRatioFillsTheOutput) {
  ScaleFunctor s(Resolution(1000, 500), Resolution(800, 800), CROP_TO_ASPECT_RATIO);
  ExpectPoint(0.625f, 0.625f, s.GetScaleFactor());
  ScaleFunctor t(Resolution(500, 1000), Resolution(800, 400), CROP_TO_ASPECT_RATIO);
  ExpectPoint(0.625f, 0.625f, t.GetScaleFactor());
}

// The squish stretches the source before the fit, rounded down to whole pixels.
TEST(ScaleFunctor, SquishStretchesTheSource) {
  // 1000 x 500 squished by (1, 0.5) is 1000 x 250; fitted into 800 x 800 by its width.
  ScaleFunctor s(Resolution(1000, 500), Resolution(800, 800), SCALE_TO_ASPECT_RATIO, Vector2d(1.0f, 0.5f));
  ExpectPoint(1.25f, 1.25f, s.GetScaleFactor());
  // Cropped by its height: 250 / 800.
  ScaleFunctor c(Resolution(1000, 500), Resolution(800, 800), CROP_TO_ASPECT_RATIO, Vector2d(1.0f, 0.5f));
  ExpectPoint(0.3125f, 0.3125f, c.GetScaleFactor());
  // Free: 1000 / 800 and 250 / 800.
  ScaleFunctor f(Resolution(1000, 500), Resolution(800, 800), FREE_ASPECT_RATIO, Vector2d(1.0f, 0.5f));
  ExpectPoint(1.25f, 0.3125f, f.GetScaleFactor());
  // 333 * 0.5 = 166.5 rounds down to 166.
  ScaleFunctor r(Resolution(333, 333), Resolution(166, 100), FREE_ASPECT_RATIO, Vector2d(0.5f, 1.0f));
  ExpectPoint(1.0f, 3.33f, r.GetScaleFactor());
}

TEST(ScaleFunctor, ThreeArgumentFormUsesNoSquish) {
  ScaleFunctor a(Resolution(1000, 500), Resolution(640, 480), SCALE_TO_ASPECT_RATIO);
  ScaleFunctor b(Resolution(1000, 500), Resolution(640, 480), SCALE_TO_ASPECT_RATIO, Vector2d(1.0f, 1.0f));
  ExpectPoint(b.GetScaleFactor().X, b.GetScaleFactor().Y, a.GetScaleFactor());
}

TEST(ScaleFunctor, CopyAssignmentAndSelfAssignment) {
  ScaleFunctor a(3.0f, 4.0f);
  ScaleFunctor b(a);
  ExpectPoint(3.0f, 4.0f, b.GetScaleFactor());
  ScaleFunctor c;
  c = a;
  ExpectPoint(3.0f, 4.0f, c.GetScaleFactor());
  vemo::test::LogCapture cap(LOG_WARNING);
  ScaleFunctor& same = c;
  c = same;
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_TRUE(cap.contains("Self assignment of ScaleFunctor object"));
  ExpectPoint(3.0f, 4.0f, c.GetScaleFactor());
  MapFunctor& base = c;
  ExpectPoint(3.0f, 8.0f, base(Vector2d(1.0f, 2.0f)));
}

TEST(ShiftScaleFunctor, ShiftsThenScales) {
  ShiftScaleFunctor s(Vector2d(10.0f, 0.0f), Vector2d(2.0f, 2.0f));
  ExpectPoint(22.0f, 2.0f, s(Vector2d(1.0f, 1.0f)));
}

TEST(ShiftScaleFunctor, DefaultIsTheIdentity) {
  ShiftScaleFunctor s;
  ExpectPoint(0.0f, 0.0f, s.GetShift());
  ExpectPoint(1.0f, 1.0f, s.GetScale());
  ExpectPoint(0.0f, 0.0f, ShiftScaleFunctor::DefaultShift);
  ExpectPoint(1.0f, 1.0f, ShiftScaleFunctor::DefaultScale);
  ExpectPoint(-5.0f, 9.5f, s(Vector2d(-5.0f, 9.5f)));
}

TEST(ShiftScaleFunctor, StaticHelpersAndSet) {
  ExpectPoint(4.0f, 1.0f, ShiftScaleFunctor::Shift(Vector2d(1.0f, 2.0f), Vector2d(3.0f, -1.0f)));
  ExpectPoint(3.0f, -2.0f, ShiftScaleFunctor::Scale(Vector2d(1.0f, 2.0f), Vector2d(3.0f, -1.0f)));
  ShiftScaleFunctor s;
  s.Set(Vector2d(0.0f, 500.0f), Vector2d(1.0f, 0.5f));
  ExpectPoint(0.0f, 500.0f, s.GetShift());
  ExpectPoint(1.0f, 0.5f, s.GetScale());
  ExpectPoint(4.0f, 251.0f, s(Vector2d(4.0f, 2.0f)));
}

TEST(ShiftScaleFunctor, CopyAssignmentAndSelfAssignment) {
  ShiftScaleFunctor a(Vector2d(1.0f, 2.0f), Vector2d(3.0f, 4.0f));
  ShiftScaleFunctor b(a);
  ExpectPoint(1.0f, 2.0f, b.GetShift());
  ExpectPoint(3.0f, 4.0f, b.GetScale());
  ShiftScaleFunctor c;
  c = a;
  ExpectPoint(1.0f, 2.0f, c.GetShift());
  vemo::test::LogCapture cap(LOG_WARNING);
  ShiftScaleFunctor& same = c;
  c = same;
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_TRUE(cap.contains("Self assignment of ShiftScaleFunctor object"));
  ExpectPoint(3.0f, 4.0f, c.GetScale());
  MapFunctor& base = c;
  ExpectPoint(6.0f, 16.0f, base(Vector2d(1.0f, 2.0f)));
}

}  // namespace
