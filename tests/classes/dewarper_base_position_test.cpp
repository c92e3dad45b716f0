#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "recording_dewarper.h"

namespace {

float PanAfter(int position, float pan) {
  RecordingDewarper dewarper(ParamsWithPosition(position));
  dewarper.SetPosition(pan, 45.0f, 1.0f);
  return dewarper.m_Pan;
}

float TiltAfter(int position, float tilt) {
  RecordingDewarper dewarper(ParamsWithPosition(position));
  dewarper.SetPosition(0.0f, tilt, 1.0f);
  return dewarper.m_Tilt;
}

}  // namespace

TEST(DewarperBasePosition, MountedPanWrapsAroundTheCircle) {
  EXPECT_FLOAT_EQ(PanAfter(1, 370.0f), 10.0f);
  EXPECT_FLOAT_EQ(PanAfter(1, -30.0f), 330.0f);
  EXPECT_EQ(PanAfter(1, 360.0f), 0.0f);
  EXPECT_EQ(PanAfter(1, 0.0f), 0.0f);
  EXPECT_EQ(PanAfter(1, -360.0f), 0.0f);
  EXPECT_FLOAT_EQ(PanAfter(1, -730.0f), 350.0f);
  EXPECT_FLOAT_EQ(PanAfter(1, 725.5f), 5.5f);
  EXPECT_FLOAT_EQ(PanAfter(1, -0.5f), 359.5f);
  EXPECT_FLOAT_EQ(PanAfter(2, 450.0f), 90.0f);
  EXPECT_FLOAT_EQ(PanAfter(5, -90.0f), 270.0f);
}

TEST(DewarperBasePosition, WallPanAndTiltAreClampedNotWrapped) {
  RecordingDewarper dewarper(ParamsWithPosition(0));
  dewarper.SetPosition(120.0f, -100.0f, 3.0f);
  EXPECT_EQ(dewarper.m_Pan, 90.0f);
  EXPECT_EQ(dewarper.m_Tilt, -90.0f);
  EXPECT_EQ(dewarper.m_Zoom, 3.0f);
  EXPECT_EQ(PanAfter(0, -120.0f), -90.0f);
  EXPECT_EQ(PanAfter(0, 45.5f), 45.5f);
  EXPECT_EQ(TiltAfter(0, 100.0f), 90.0f);
}

TEST(DewarperBasePosition, TiltIsClampedToTheMountingsHalf) {
  EXPECT_EQ(TiltAfter(1, -5.0f), 0.0f);
  EXPECT_EQ(TiltAfter(1, 95.0f), 90.0f);
  EXPECT_EQ(TiltAfter(1, 30.0f), 30.0f);
  EXPECT_EQ(TiltAfter(2, 30.0f), 0.0f);
  EXPECT_EQ(TiltAfter(2, -100.0f), -90.0f);
  EXPECT_EQ(TiltAfter(2, -30.0f), -30.0f);
  EXPECT_EQ(TiltAfter(4, 400.0f), 90.0f);  // tilt never wraps
}

TEST(DewarperBasePosition, ValuesNoNumberCanRepresentStayInsideTheRange) {
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float values[] = {nan, inf, -inf, 1e30f, -1e30f, 3e9f, -3e9f};
  for (int position : {0, 1, 2}) {
    for (float value : values) {
      RecordingDewarper dewarper(ParamsWithPosition(position));
      dewarper.SetPosition(value, value, value);
      float min = 0, max = 0, span = 0;
      bool wraps = false;
      dewarper.GetPanRange(min, max, span, wraps);
      EXPECT_GE(dewarper.m_Pan, min) << position << " " << value;
      EXPECT_LE(dewarper.m_Pan, max) << position << " " << value;
      dewarper.GetTiltRange(min, max, span, wraps);
      EXPECT_GE(dewarper.m_Tilt, min) << position << " " << value;
      EXPECT_LE(dewarper.m_Tilt, max) << position << " " << value;
    }
  }
}

TEST(DewarperBasePosition, SetPositionPushesOnlyWhenNoInitialisationIsPending) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(10.0f, 20.0f, 30.0f);
  EXPECT_EQ(dewarper.updates, 0);
  float pan = 0, tilt = 0, zoom = 0;
  dewarper.GetPosition(pan, tilt, zoom);
  EXPECT_EQ(pan, 10.0f);
  EXPECT_EQ(tilt, 20.0f);
  EXPECT_EQ(zoom, 30.0f);
  dewarper.m_needsInit = false;
  dewarper.SetPosition(11.0f, 21.0f, 31.0f);
  EXPECT_EQ(dewarper.updates, 1);
}

// One step moves 0.2 of a degree over the default ranges: (max - min) / (span / 0.2).
TEST(DewarperBaseStepping, PanStepRaisesThePanByAFifthOfADegree) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(10.0f, 45.0f, 2.0f);
  dewarper.Pan(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 10.2f);
  EXPECT_EQ(dewarper.m_Tilt, 45.0f);
  EXPECT_EQ(dewarper.m_Zoom, 2.0f);
  dewarper.Pan(-1, 4);  // five steps back
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 9.2f);
  dewarper.Pan(7, 1);  // only the sign of the direction counts
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 9.6f);
}

TEST(DewarperBaseStepping, PositiveTiltRequestLowersTheTilt) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(10.0f, 45.0f, 2.0f);
  dewarper.Tilt(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Tilt, 44.8f);
  EXPECT_EQ(dewarper.m_Pan, 10.0f);
  dewarper.Tilt(-1, 2);  // three steps up the angle
  EXPECT_FLOAT_EQ(dewarper.m_Tilt, 45.4f);
}

TEST(DewarperBaseStepping, WallRangesStepByTheSameFifth) {
  RecordingDewarper dewarper(ParamsWithPosition(0));
  dewarper.Pan(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 0.2f);
  dewarper.Tilt(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Tilt, -0.2f);
}

TEST(DewarperBaseStepping, ZeroDirectionLeavesThePositionButStillSetsIt) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(10.0f, 45.0f, 2.0f);
  const int before = dewarper.setPositions;
  dewarper.Pan(0, 5);
  EXPECT_EQ(dewarper.setPositions, before + 1);
  EXPECT_EQ(dewarper.m_Pan, 10.0f);
  EXPECT_EQ(dewarper.m_Tilt, 45.0f);
  EXPECT_EQ(dewarper.m_Zoom, 2.0f);
  dewarper.Tilt(0, 3);
  dewarper.Zoom(0, 9);
  EXPECT_EQ(dewarper.setPositions, before + 3);
  EXPECT_EQ(dewarper.m_Tilt, 45.0f);
  EXPECT_EQ(dewarper.m_Zoom, 2.0f);
}

TEST(DewarperBaseStepping, PanStepsWrapOnAMountedCamera) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.Pan(-1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 359.8f);
}

TEST(DewarperBaseStepping, InversionTurnsTheStepAround) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.invertPan = true;
  dewarper.invertTilt = true;
  dewarper.SetPosition(10.0f, 45.0f, 2.0f);
  dewarper.Pan(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Pan, 9.8f);
  dewarper.Tilt(1, 0);
  EXPECT_FLOAT_EQ(dewarper.m_Tilt, 45.2f);
}

TEST(DewarperBaseStepping, ZoomAddsTheModifierPerStep) {
  RecordingDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(0.0f, 0.0f, 2.0f);
  dewarper.Zoom(1, 2);
  EXPECT_EQ(dewarper.m_Zoom, 5.0f);
  dewarper.Zoom(-3, 0);
  EXPECT_EQ(dewarper.m_Zoom, 4.0f);
}

// A range in other units: 65536 units over a nominal 360 degrees move 65536 / 1800 per step.
class UnitRangeDewarper : public RecordingDewarper {
public:
  using RecordingDewarper::RecordingDewarper;
  void GetPanRange(float& min, float& max, float& span, bool& wraps) override {
    min = 0.0f;
    max = 65536.0f;
    span = 360.0f;
    wraps = true;
  }
  float GetZoomScaleModifier() override { return -4.96f; }
};

TEST(DewarperBaseStepping, StepsScaleWithTheRangeInItsOwnUnits) {
  UnitRangeDewarper dewarper(ParamsWithPosition(1));
  dewarper.SetPosition(1000.0f, 0.0f, 100.0f);
  dewarper.Pan(1, 0);
  EXPECT_NEAR(dewarper.m_Pan, 1000.0 + 65536.0 / 1800.0, 1e-3);
  dewarper.Zoom(1, 1);  // a negative modifier makes a positive request lower the value
  EXPECT_NEAR(dewarper.m_Zoom, 100.0 - 2 * 4.96, 1e-4);
}

TEST(DewarperBaseStepping, AnySpeedTheHostSendsIsHarmless) {
  for (int position : {0, 1, 2}) {
    RecordingDewarper dewarper(ParamsWithPosition(position));
    dewarper.Pan(1, INT_MAX);
    dewarper.Pan(-1, INT_MAX);
    dewarper.Tilt(-1, INT_MAX);
    dewarper.Tilt(1, INT_MIN);
    dewarper.Zoom(1, INT_MAX);
    dewarper.Zoom(INT_MIN, INT_MAX);
    float min = 0, max = 0, span = 0;
    bool wraps = false;
    dewarper.GetPanRange(min, max, span, wraps);
    EXPECT_GE(dewarper.m_Pan, min);
    EXPECT_LE(dewarper.m_Pan, max);
    dewarper.GetTiltRange(min, max, span, wraps);
    EXPECT_GE(dewarper.m_Tilt, min);
    EXPECT_LE(dewarper.m_Tilt, max);
  }
}
