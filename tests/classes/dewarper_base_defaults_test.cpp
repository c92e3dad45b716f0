#include <gtest/gtest.h>

#include <climits>

#include "recording_dewarper.h"

TEST(DewarperBase, ConstructionStartsInSubModeOneWithPendingInitialisation) {
  const DewarpParams_t params = {3, 1, 7, 100, 200, 300};
  RecordingDewarper dewarper(params);
  EXPECT_EQ(dewarper.SubMode(), 1);
  EXPECT_TRUE(dewarper.m_needsInit);
  EXPECT_EQ(dewarper.m_width, 0);
  EXPECT_EQ(dewarper.m_height, 0);
  EXPECT_EQ(dewarper.m_dstWidth, 0);
  EXPECT_EQ(dewarper.m_dstHeight, 0);
  EXPECT_EQ(dewarper.m_input, nullptr);
  EXPECT_EQ(dewarper.m_output, nullptr);
  float pan = -1, tilt = -1, zoom = -1;
  dewarper.GetPosition(pan, tilt, zoom);
  EXPECT_EQ(pan, 0.0f);
  EXPECT_EQ(tilt, 0.0f);
  EXPECT_EQ(zoom, 0.0f);
}

TEST(DewarperBase, ModeIsTheTypeItIsBoundTo) {
  RecordingDewarper dewarper(ParamsWithPosition(0));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Sentry360);
}

TEST(DewarperBase, ParametersAreACopyOfTheCreationParameters) {
  DewarpParams_t params = {3, 1, 7, 100, 200, 300};
  RecordingDewarper dewarper(params);
  params.Lens = 99;
  const DewarpParams_t& kept = dewarper.Parameters();
  EXPECT_EQ(kept.Lens, 3);
  EXPECT_EQ(kept.Position, 1);
  EXPECT_EQ(kept.Scroll, 7);
  EXPECT_EQ(kept.X, 100);
  EXPECT_EQ(kept.Y, 200);
  EXPECT_EQ(kept.R, 300);
}

TEST(DewarperBase, SetSubModeDoesNothingAndNoSubModeIsSupported) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetSubMode(2);
  EXPECT_EQ(dewarper.SubMode(), 1);
  for (int n = -1; n <= 4; ++n) {
    EXPECT_FALSE(dewarper.IsSubModeSupported(n)) << n;
    EXPECT_FALSE(dewarper.IsNormalPTZSupported(n)) << n;
  }
}

TEST(DewarperBase, SteeringFollowsTheCurrentSubModeNotTheArgument) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  EXPECT_TRUE(dewarper.CanPan(2));
  EXPECT_TRUE(dewarper.CanTilt(3));
  EXPECT_TRUE(dewarper.CanZoom(0));
  dewarper.m_subMode = 2;
  EXPECT_FALSE(dewarper.CanPan(1));
  EXPECT_FALSE(dewarper.CanPan(2));
  EXPECT_FALSE(dewarper.CanTilt(1));
  EXPECT_FALSE(dewarper.CanZoom(1));
}

TEST(DewarperBase, NeutralAnswers) {
  RecordingDewarper dewarper(ParamsWithPosition(2));
  EXPECT_FALSE(dewarper.GetNeedsRotation());
  EXPECT_FALSE(dewarper.IDewarperBase::InvertPan());
  EXPECT_FALSE(dewarper.IDewarperBase::InvertTilt());
  EXPECT_EQ(dewarper.AdjustAspectRatio(1.5f, 2.0f), 2.0f);
  EXPECT_EQ(dewarper.AdjustAspectRatio(4.0f, -3.0f), -3.0f);
  EXPECT_EQ(dewarper.GetZoomScaleModifier(), 1.0f);
  EXPECT_EQ(dewarper.LimitZoomRange(-12.5f), -12.5f);
  EXPECT_EQ(dewarper.LimitZoomRange(1e9f), 1e9f);
}

TEST(DewarperBase, GetLensHasNoLensesAndTouchesNoBuffer) {
  RecordingDewarper dewarper(ParamsWithPosition(0));
  char text[8] = "abcdefg";
  EXPECT_EQ(dewarper.GetLens(0, text, sizeof(text)), 0);
  EXPECT_STREQ(text, "abcdefg");
  EXPECT_EQ(dewarper.GetLens(-5, nullptr, 0), 0);
  EXPECT_EQ(dewarper.GetLens(INT_MAX, nullptr, 100), 0);
  EXPECT_EQ(dewarper.GetLens(1, text, 1), 0);
  EXPECT_STREQ(text, "abcdefg");
}

TEST(DewarperBase, SetDewarperTypeChangesNothing) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetDewarperType(DewarperType::Kestrel);
  EXPECT_EQ(dewarper.Mode(), DewarperType::Sentry360);
  EXPECT_EQ(dewarper.SubMode(), 1);
  EXPECT_TRUE(dewarper.m_needsInit);
}

TEST(DewarperBase, InitOptionsAnswersTheReadiness) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  EXPECT_TRUE(dewarper.InitOptions());
  EXPECT_EQ(dewarper.checks, 1);
  dewarper.ready = false;
  EXPECT_FALSE(dewarper.InitOptions());
  EXPECT_EQ(dewarper.checks, 2);
}

TEST(DewarperBase, DefaultFormatIsThreeBytesPerPixel) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  unsigned int size = 0;
  int format = 0;
  dewarper.GetFormatAndSize(640, 480, &size, &format);
  EXPECT_EQ(format, 12);
  EXPECT_EQ(size, 640u * 3u * 480u);
  size = 0;
  format = 0;
  dewarper.GetInputFormatAndSize(7, 5, &size, &format);
  EXPECT_EQ(format, 12);
  EXPECT_EQ(size, 105u);
  size = 0;
  format = 0;
  dewarper.GetOutputFormatAndSize(1008, 602, &size, &format);
  EXPECT_EQ(format, 12);
  EXPECT_EQ(size, 1008u * 3u * 602u);
}

struct RangeRow {
  int position;
  float panMin, panMax, panSpan;
  bool panWraps;
  float tiltMin, tiltMax, tiltSpan;
};

TEST(DewarperBase, DefaultRangesByMounting) {
  const RangeRow rows[] = {
      {0, -90, 90, 180, false, -90, 90, 180},  {1, 0, 360, 360, true, 0, 90, 90},
      {2, 0, 360, 360, true, -90, 0, 90},      {3, 0, 360, 360, true, 0, 90, 90},
      {-1, 0, 360, 360, true, 0, 90, 90},      {INT_MIN, 0, 360, 360, true, 0, 90, 90},
  };
  for (const RangeRow& row : rows) {
    RecordingDewarper dewarper(ParamsWithPosition(row.position));
    float min = 1234, max = 1234, span = 1234;
    bool wraps = !row.panWraps;
    dewarper.GetPanRange(min, max, span, wraps);
    EXPECT_EQ(min, row.panMin) << row.position;
    EXPECT_EQ(max, row.panMax) << row.position;
    EXPECT_EQ(span, row.panSpan) << row.position;
    EXPECT_EQ(wraps, row.panWraps) << row.position;
    wraps = true;
    dewarper.GetTiltRange(min, max, span, wraps);
    EXPECT_EQ(min, row.tiltMin) << row.position;
    EXPECT_EQ(max, row.tiltMax) << row.position;
    EXPECT_EQ(span, row.tiltSpan) << row.position;
    EXPECT_FALSE(wraps) << row.position;
  }
}
