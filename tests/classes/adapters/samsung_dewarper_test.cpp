// The Samsung dewarper against the stand-in of libDewarpingLib.so.
#include "SamsungDewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

class SamsungDewarperTest : public FakeLogTest {};

TEST_F(SamsungDewarperTest, OutputSizeComesFromTheFourThirdsList) {
  struct Case {
    int InputWidth;
    int Width;
    int Height;
  };
  // The first of 1600x1200, 1280x960, 1024x768, 800x600, 640x480, 320x240 narrower than the input.
  for (const Case& c : {Case{1280, 1024, 768}, Case{1600, 1280, 960}, Case{1601, 1600, 1200},
                        Case{2592, 1600, 1200}, Case{1024, 800, 600}, Case{321, 320, 240}}) {
    SamsungDewarper dewarper(Params(0, 1));
    const Frame frame = RequestFrame(dewarper, c.InputWidth, 720, 1920, 1080);
    ASSERT_TRUE(frame.OutputOk) << c.InputWidth;
    EXPECT_EQ(frame.Width, c.Width) << c.InputWidth;
    EXPECT_EQ(frame.Height, c.Height) << c.InputWidth;
    EXPECT_EQ(frame.OutputSize, static_cast<unsigned int>(c.Width * 3 * c.Height));
  }
}

TEST_F(SamsungDewarperTest, AnInput320WideOrLessFails) {
  for (int inputWidth : {320, 200}) {
    SamsungDewarper dewarper(Params(0, 1));
    const Frame frame = RequestFrame(dewarper, inputWidth, 240, 320, 240);
    EXPECT_TRUE(frame.InputOk);
    EXPECT_FALSE(frame.OutputOk) << inputWidth;
  }
}

TEST_F(SamsungDewarperTest, ConfiguresPositionViewZoomLimitsFramesAndPosition) {
  SamsungDewarper dewarper(Params(0, 1));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Samsung);
  const Frame frame = RequestFrame(dewarper, 1280, 720, 640, 480);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> expected = {
      "CDewarping()",
      "SetCameraPosition(0)",
      "SetViewType(4)",
      "GetZoomLimits() = 1, 8",
      "SetInputParams(ch=3, format=0, " + Ptr(frame.Input) + ", 1280x720)",
      "SetOutputParams(ch=3, format=0, " + Ptr(frame.Output) + ", 1024x768, cleared)",
      "SetPtzPosition(4, 0, 0, 0, 0, 0)",
      "Update()"};
  EXPECT_EQ(Calls(), expected);
  // Zoom limits now come from the library: steps of (8 - 1) / 200, clamped to [1, 8].
  EXPECT_FLOAT_EQ(dewarper.GetZoomScaleModifier(), 7.0f / 200.0f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(0.5f), 1.0f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(9.0f), 8.0f);
  dewarper.SetPosition(0.25f, 0.75f, 2.5f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"SetPtzPosition(4, 0, 0.25, 0.75, 2.5, 0)"}));
  // Positions pass in double precision.
  dewarper.SetPosition(0.1f, 0.3f, 1.1f);
  EXPECT_EQ(Calls(), std::vector<std::string>({Format("SetPtzPosition(4, 0, %.9g, %.9g, %.9g, 0)",
                                                      static_cast<double>(0.1f), static_cast<double>(0.3f),
                                                      static_cast<double>(1.1f))}));
}

TEST_F(SamsungDewarperTest, ViewTypeAndCameraPositionCodes) {
  struct Case {
    int Position;
    int SubMode;
    int CameraPosition;
    int ViewType;
  };
  for (const Case& c : {Case{1, 1, 0, 4}, Case{2, 2, 1, 1}, Case{0, 3, 2, 2}, Case{5, 4, 2, 4}}) {
    fake_makers::Reset();  // forget the previous case's destruction
    SamsungDewarper dewarper(Params(0, c.Position));
    dewarper.SetSubMode(c.SubMode);
    ASSERT_TRUE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
    const std::vector<std::string> calls = Calls();
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[1], Format("SetCameraPosition(%d)", c.CameraPosition));
    EXPECT_EQ(calls[2], Format("SetViewType(%d)", c.ViewType));
  }
}

TEST_F(SamsungDewarperTest, SuccessIsAnUpdateResultOfOne) {
  SamsungDewarper dewarper(Params(0, 1));
  fake_makers::SetKnob("Update", 0);
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
  fake_makers::SetKnob("Update", 2);
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
  fake_makers::SetKnob("Update", 1);
  EXPECT_TRUE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
}

TEST_F(SamsungDewarperTest, SubModeChangesClearAndConfigureAgain) {
  SamsungDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
  dewarper.SetPosition(0.2f, 0.4f, 3.0f);
  dewarper.SetSubMode(0);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).Pan, 0.2f);
  dewarper.SetSubMode(3);
  const Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.5f);
  EXPECT_EQ(p.Tilt, 0.5f);
  EXPECT_EQ(p.Zoom, 1.0f);
  Calls();
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 720, 640, 480).OutputOk);
  const std::vector<std::string> calls = Calls();
  ASSERT_EQ(calls.size(), 7u);
  EXPECT_EQ(calls[1], "SetViewType(2)");
  EXPECT_EQ(calls[5], "SetPtzPosition(2, 0, 0.5, 0.5, 1, 0)");
}

TEST_F(SamsungDewarperTest, RangesAreNormalised) {
  SamsungDewarper mounted(Params(0, 1));
  EXPECT_RANGE(PanRangeOf(mounted), 0.0f, 1.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(mounted), 0.0f, 1.0f, 90.0f, false);
  SamsungDewarper floor(Params(0, 2));
  EXPECT_RANGE(TiltRangeOf(floor), 0.0f, 1.0f, 90.0f, false);
  SamsungDewarper wall(Params(0, 0));
  EXPECT_RANGE(PanRangeOf(wall), 0.0f, 1.0f, 180.0f, false);
  EXPECT_RANGE(TiltRangeOf(wall), 0.0f, 1.0f, 180.0f, false);
  // 1.25 wraps to 0.25 on a mounted camera; a wall camera clamps.
  mounted.SetPosition(1.25f, 1.5f, 1.0f);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Pan, 0.25f);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Tilt, 1.0f);
  wall.SetPosition(1.25f, -0.5f, 1.0f);
  EXPECT_FLOAT_EQ(PositionOf(wall).Pan, 1.0f);
  EXPECT_FLOAT_EQ(PositionOf(wall).Tilt, 0.0f);
  // One step is (max - min) / (span / 0.2): 1 / 1800 of the range on a mounted camera.
  mounted.Clear();
  mounted.Pan(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Pan, 0.5f + 1.0f / (360.0f / 0.2f));
}

TEST_F(SamsungDewarperTest, OverridesBeforeConfiguration) {
  SamsungDewarper mounted(Params(0, 1));
  SamsungDewarper wall(Params(0, 0));
  EXPECT_TRUE(mounted.IsSubModeSupported(1));
  EXPECT_FALSE(mounted.IsSubModeSupported(2));
  EXPECT_TRUE(mounted.IsSubModeSupported(3));
  EXPECT_FALSE(wall.IsSubModeSupported(3));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(2));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(3));
  EXPECT_FALSE(mounted.IsNormalPTZSupported(1));
  // Zoom limits 0 and 10 until the library gives its own.
  EXPECT_FLOAT_EQ(mounted.GetZoomScaleModifier(), 10.0f / 200.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(-1.0f), 0.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(11.0f), 10.0f);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.5f);
  mounted.SetSubMode(3);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.5f);
  EXPECT_FALSE(mounted.GetNeedsRotation());
  EXPECT_FALSE(mounted.InvertPan());
  EXPECT_FALSE(mounted.InvertTilt());
}

TEST_F(SamsungDewarperTest, DestructionRunsTheLibrarysDestructor) {
  {
    SamsungDewarper dewarper(Params(0, 1));
    ASSERT_TRUE(dewarper.Check());
    EXPECT_EQ(Calls(), std::vector<std::string>({"CDewarping()"}));
  }
  EXPECT_EQ(Calls(), std::vector<std::string>({"~CDewarping(intact)"}));
}

}  // namespace
