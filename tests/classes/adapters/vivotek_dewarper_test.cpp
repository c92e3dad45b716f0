// The Vivotek dewarper against the stand-in of libfisheyesw.so.1.
#include "VivotekDewarper.h"
#include "adapter_test_support.h"
#include "makers/vivotek_api.h"

using namespace adapter_test;

namespace {

class VivotekDewarperTest : public FakeLogTest {};

std::string Initial() { return Format("Fisheye_Initial(code=0x%08x)", FISHEYE_INITIAL_CODE); }

// The option record of a configuration, as the stand-in prints it: mask 0x20FF (8447), both
// frames with stride = width, the circle at the input's centre with radius half its height.
std::string Configuration(const Frame& frame, int inputWidth, int inputHeight, int mount, int view) {
  return Format("Fisheye_SetOption(h, mask=0x20ff, in=%dx%d/%d %s, out=%dx%d/%d %s, centre=%d,%d r=%d, "
                "mount=%d, view=%d, display=%dx%d)",
                inputWidth, inputHeight, inputWidth, Ptr(frame.Input).c_str(), frame.Width, frame.Height,
                frame.Width, Ptr(frame.Output).c_str(), inputWidth / 2, inputHeight / 2, inputHeight / 2, mount,
                view, frame.Width, frame.Height);
}

TEST_F(VivotekDewarperTest, TheInitialSelectionMaskIs8447) { EXPECT_EQ(FISHEYE_OPTION_INITIAL, 8447); }

TEST_F(VivotekDewarperTest, ConfiguresAMountedCameraThenPushesZoomTiltPanAndScroll) {
  VivotekDewarper dewarper(Params(0, 1, 15));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Vivotek);
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 800, 600);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(frame.Width, 800);
  EXPECT_EQ(frame.Height, 600);
  const std::vector<std::string> expected = {
      Initial(),
      Configuration(frame, 1920, 1080, 1, 0),
      "Fisheye_SetOption(h, mask=0x800, zoom=0)",
      "Fisheye_SetOption(h, mask=0x200, tilt=0)",
      "Fisheye_SetOption(h, mask=0x400, pan=0)",
      "Fisheye_SetOption(h, mask=0x1000, scroll=15)",
      "Fisheye_OneFrame(h)"};
  EXPECT_EQ(Calls(), expected);
  // Positions go as integers (truncated), each with its own flag: 2048, 512, 1024, 4096.
  dewarper.SetPosition(30.7f, 45.9f, 90.5f);
  const std::vector<std::string> pushed = {
      "Fisheye_SetOption(h, mask=0x800, zoom=90)", "Fisheye_SetOption(h, mask=0x200, tilt=45)",
      "Fisheye_SetOption(h, mask=0x400, pan=30)", "Fisheye_SetOption(h, mask=0x1000, scroll=15)"};
  EXPECT_EQ(Calls(), pushed);
}

TEST_F(VivotekDewarperTest, AWallCameraPushesThePanWithFlag256) {
  VivotekDewarper dewarper(Params(0, 0, 15));
  const Frame frame = RequestFrame(dewarper, 1280, 720, 640, 360);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> expected = {Initial(),
                                             Configuration(frame, 1280, 720, 0, 0),
                                             "Fisheye_SetOption(h, mask=0x800, zoom=0)",
                                             "Fisheye_SetOption(h, mask=0x200, tilt=0)",
                                             "Fisheye_SetOption(h, mask=0x100, pan=0)",
                                             "Fisheye_OneFrame(h)"};
  EXPECT_EQ(Calls(), expected);
  dewarper.SetPosition(-45.5f, -20.25f, 75.0f);
  const std::vector<std::string> pushed = {"Fisheye_SetOption(h, mask=0x800, zoom=75)",
                                           "Fisheye_SetOption(h, mask=0x200, tilt=-20)",
                                           "Fisheye_SetOption(h, mask=0x100, pan=-45)"};
  EXPECT_EQ(Calls(), pushed);
}

TEST_F(VivotekDewarperTest, FramesArePlanar420) {
  VivotekDewarper dewarper(Params(0, 1));
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 800, 600);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(frame.InputFormat, 5);
  EXPECT_EQ(frame.InputSize, 1920u * 3u * 1080u / 2u);
  EXPECT_EQ(frame.OutputFormat, 5);
  EXPECT_EQ(frame.OutputSize, 800u * 3u * 600u / 2u);
}

TEST_F(VivotekDewarperTest, ASubModeChangeReleasesTheHandleAndStartsAgain) {
  VivotekDewarper dewarper(Params(0, 1, 0));
  ASSERT_TRUE(RequestFrame(dewarper, 1920, 1080, 800, 600).OutputOk);
  Calls();
  dewarper.SetSubMode(0);  // counts as 1: no change
  EXPECT_TRUE(Calls().empty());
  dewarper.SetSubMode(3);
  EXPECT_EQ(Calls(), std::vector<std::string>({"Fisheye_Release(h)"}));
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 800, 600);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> calls = Calls();
  ASSERT_GE(calls.size(), 2u);
  EXPECT_EQ(calls[0], Initial());
  EXPECT_EQ(calls[1], Configuration(frame, 1920, 1080, 1, 2));
  EXPECT_EQ(calls.back(), "Fisheye_OneFrame(h)");
}

TEST_F(VivotekDewarperTest, AFailedConfigurationAsksForANewInputAndConfiguresAgain) {
  VivotekDewarper dewarper(Params(0, 1));
  fake_makers::SetKnob("Fisheye_SetOption.initial", 1);
  EXPECT_FALSE(RequestFrame(dewarper, 1920, 1080, 800, 600).OutputOk);
  std::vector<std::string> calls = Calls();
  ASSERT_EQ(calls.size(), 2u);  // no position, no frame
  EXPECT_EQ(calls[0], Initial());
  fake_makers::SetKnob("Fisheye_SetOption.initial", 0);
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 800, 600);
  ASSERT_TRUE(frame.OutputOk);
  calls = Calls();
  ASSERT_EQ(calls.size(), 6u);  // configuration, four position fields, the frame
  EXPECT_EQ(calls[0], Configuration(frame, 1920, 1080, 1, 0));
}

TEST_F(VivotekDewarperTest, FailuresOfTheLibraryShowAsFalse) {
  fake_makers::SetKnob("Fisheye_Initial", 2);
  VivotekDewarper refused(Params(0, 1));
  EXPECT_FALSE(refused.Check());
  EXPECT_FALSE(RequestFrame(refused, 640, 480, 640, 480).InputOk);
  fake_makers::SetKnob("Fisheye_Initial", 0);
  VivotekDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  fake_makers::SetKnob("Fisheye_OneFrame", 4);
  EXPECT_FALSE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
}

TEST_F(VivotekDewarperTest, DestructionReleasesTheHandle) {
  {
    VivotekDewarper dewarper(Params(0, 1));
    ASSERT_TRUE(dewarper.Check());
    Calls();
  }
  EXPECT_EQ(Calls(), std::vector<std::string>({"Fisheye_Release(h)"}));
}

TEST_F(VivotekDewarperTest, OverridesAndRanges) {
  VivotekDewarper mounted(Params(0, 1));
  VivotekDewarper wall(Params(0, 0));
  EXPECT_TRUE(mounted.IsSubModeSupported(1));
  EXPECT_TRUE(mounted.IsSubModeSupported(2));
  EXPECT_TRUE(mounted.IsSubModeSupported(3));
  EXPECT_TRUE(wall.IsSubModeSupported(1));
  EXPECT_TRUE(wall.IsSubModeSupported(2));
  EXPECT_FALSE(wall.IsSubModeSupported(3));
  EXPECT_FALSE(mounted.IsNormalPTZSupported(1));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(2));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(3));
  EXPECT_FLOAT_EQ(mounted.GetZoomScaleModifier(), 1.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(50.0f), 70.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(1.0e5f), 1.0e5f);
  EXPECT_FALSE(mounted.InvertPan());
  EXPECT_FALSE(mounted.InvertTilt());
  EXPECT_FALSE(mounted.GetNeedsRotation());
  EXPECT_RANGE(PanRangeOf(mounted), 0.0f, 360.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(wall), -90.0f, 90.0f, 180.0f, false);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.25f);
  mounted.SetSubMode(2);
  wall.SetSubMode(2);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.7777778f);
  EXPECT_TRUE(mounted.CanPan(2));
  EXPECT_FALSE(wall.CanPan(2));
  EXPECT_FALSE(mounted.CanTilt(2));
  EXPECT_FALSE(mounted.CanZoom(2));
  mounted.SetSubMode(3);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.3333334f);
  mounted.Clear();
  const Position p = PositionOf(mounted);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 70.0f);
}

}  // namespace
