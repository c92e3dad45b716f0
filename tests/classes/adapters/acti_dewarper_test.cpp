// The ACTi dewarper (also the Inaxsys kind) against the stand-in of libFisheyeSDK.so.
#include "ActiDewarper.h"
#include "DewarpWrapper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

class ActiDewarperTest : public FakeLogTest {};

// One transform as the stand-in prints it; frames of three bytes per pixel.
std::string Transform(int mode, const Frame& frame, int inputWidth, int inputHeight, int mount, int pan,
                      int tilt, int zoom) {
  return Format("FishEye_Transform(h, mode=%d, in=%dx%d/%d %s, mount=%d pan=%d tilt=%d zoom=%d, out=%dx%d/%d %s)",
                mode, inputWidth, inputHeight, inputWidth * 3, Ptr(frame.Input).c_str(), mount, pan, tilt, zoom,
                frame.Width, frame.Height, frame.Width * 3, Ptr(frame.Output).c_str());
}

TEST_F(ActiDewarperTest, ARequestOf3840x1080AnswersTheFullWidthAndAProportionalHeight) {
  ActiDewarper dewarper(Params(0, 1));
  const Frame frame = RequestFrame(dewarper, 2560, 1920, 3840, 1080);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(frame.Width, 1920);
  EXPECT_EQ(frame.Height, 540);
}

TEST_F(ActiDewarperTest, OutputIsLimitedTo1920x1080) {
  struct Case {
    int Width, Height, LimitedWidth, LimitedHeight;
  };
  // Wider than 16:9: full width; otherwise full height (then rounded up to a multiple of 8 and
  // an even height as always).
  for (const Case& c : {Case{1920, 1080, 1920, 1080}, Case{1280, 720, 1280, 720}, Case{1920, 1440, 1440, 1080},
                        Case{2000, 1000, 1920, 960}, Case{1000, 2000, 544, 1080}, Case{1921, 1081, 1920, 1080}}) {
    ActiDewarper dewarper(Params(0, 1));
    const Frame frame = RequestFrame(dewarper, 2560, 1920, c.Width, c.Height);
    ASSERT_TRUE(frame.OutputOk);
    EXPECT_EQ(frame.Width, c.LimitedWidth) << c.Width << "x" << c.Height;
    EXPECT_EQ(frame.Height, c.LimitedHeight) << c.Width << "x" << c.Height;
  }
}

TEST_F(ActiDewarperTest, OpensTheInterfaceAndTransformsEveryFrameWithItsPosition) {
  ActiDewarper dewarper(Params(0, 1));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Acti);
  const Frame frame = RequestFrame(dewarper, 1280, 960, 640, 480);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> expected = {
      "FishEye_OpenInterface()",
      "FishEye_Initial(h, count=1, true)",
      Transform(1, frame, 1280, 960, 1, 0, 0, 0)};
  EXPECT_EQ(Calls(), expected);
  // The position is not pushed on its own: it travels with the next frame, as integers.
  dewarper.SetPosition(20000.7f, 9000.9f, 300.5f);
  EXPECT_TRUE(Calls().empty());
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 480).OutputOk);
  EXPECT_EQ(Calls(), std::vector<std::string>({Transform(1, frame, 1280, 960, 1, 20000, 9000, 300)}));
}

TEST_F(ActiDewarperTest, ModeAndMountFollowSubModeAndPosition) {
  struct Case {
    int Position, SubMode, Mode, Mount;
  };
  for (const Case& c : {Case{1, 2, 2, 1}, Case{2, 3, 3, 2}, Case{0, 2, 2, 0}, Case{3, 1, 1, 0}}) {
    fake_makers::Reset();  // forget the previous case's destruction
    ActiDewarper dewarper(Params(0, c.Position));
    dewarper.SetSubMode(c.SubMode);
    const Frame frame = RequestFrame(dewarper, 1280, 960, 640, 480);
    ASSERT_TRUE(frame.OutputOk);
    const std::vector<std::string> calls = Calls();
    ASSERT_EQ(calls.size(), 3u);
    float pan = 0, tilt = 0, zoom = 0;
    dewarper.GetPosition(pan, tilt, zoom);
    EXPECT_EQ(calls[2], Transform(c.Mode, frame, 1280, 960, c.Mount, static_cast<int>(pan), static_cast<int>(tilt),
                                  static_cast<int>(zoom)));
  }
}

TEST_F(ActiDewarperTest, AFailedInitialisationReleasesAndClosesTheInterface) {
  fake_makers::SetKnob("FishEye_Initial", 1);
  ActiDewarper dewarper(Params(0, 1));
  EXPECT_FALSE(dewarper.Check());
  const std::vector<std::string> expected = {"FishEye_OpenInterface()", "FishEye_Initial(h, count=1, true)",
                                             "FishEye_Release(h)", "FishEye_CloseInterface(h)"};
  EXPECT_EQ(Calls(), expected);
  EXPECT_FALSE(RequestFrame(dewarper, 640, 480, 640, 480).InputOk);
  fake_makers::SetKnob("FishEye_Initial", 0);
  EXPECT_TRUE(dewarper.Check());  // tried again on the next need
}

TEST_F(ActiDewarperTest, AFailedTransformFailsTheFrame) {
  ActiDewarper dewarper(Params(0, 1));
  fake_makers::SetKnob("FishEye_Transform", 6);
  EXPECT_FALSE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
}

TEST_F(ActiDewarperTest, DestructionReleasesAndClosesTheInterface) {
  {
    ActiDewarper dewarper(Params(0, 1));
    ASSERT_TRUE(dewarper.Check());
    Calls();
  }
  EXPECT_EQ(Calls(), std::vector<std::string>({"FishEye_Release(h)", "FishEye_CloseInterface(h)"}));
}

TEST_F(ActiDewarperTest, RangesAreInLibraryUnits) {
  ActiDewarper mounted(Params(0, 1));
  EXPECT_RANGE(PanRangeOf(mounted), 0.0f, 65536.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(mounted), 0.0f, 16384.0f, 90.0f, false);
  ActiDewarper floor(Params(0, 2));
  EXPECT_RANGE(PanRangeOf(floor), 0.0f, 65536.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(floor), 0.0f, 16384.0f, 90.0f, false);
  ActiDewarper wall(Params(0, 0));
  EXPECT_RANGE(PanRangeOf(wall), -16384.0f, 16384.0f, 180.0f, false);
  EXPECT_RANGE(TiltRangeOf(wall), -16384.0f, 16384.0f, 180.0f, false);
  // A step is (max - min) / (span / 0.2): 65536 / 1800 of a turn; the floor inverts it.
  mounted.Clear();
  mounted.Pan(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Pan, 65536.0f / (360.0f / 0.2f));
  floor.Clear();
  floor.Pan(-1, 0);
  EXPECT_FLOAT_EQ(PositionOf(floor).Pan, 65536.0f / (360.0f / 0.2f));
  mounted.SetPosition(70000.0f, 20000.0f, 256.0f);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Pan, 70000.0f - 65536.0f);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Tilt, 16384.0f);
}

TEST_F(ActiDewarperTest, SubModeThreeStartsAtTheScrollAngle) {
  ActiDewarper dewarper(Params(0, 1, 90));
  dewarper.SetPosition(1000.0f, 1000.0f, 500.0f);
  dewarper.SetSubMode(3);
  Position p = PositionOf(dewarper);
  EXPECT_FLOAT_EQ(p.Pan, 90.0f * 65536.0f / 360.0f);  // 16384
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 256.0f);
  ActiDewarper past(Params(0, 1, 450));  // 450 degrees wrap to 90
  past.SetSubMode(3);
  EXPECT_FLOAT_EQ(PositionOf(past).Pan, 16384.0f);
  ActiDewarper panorama(Params(0, 1, 90));
  panorama.SetPosition(1000.0f, 1000.0f, 500.0f);
  panorama.SetSubMode(2);
  p = PositionOf(panorama);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Zoom, 256.0f);
}

TEST_F(ActiDewarperTest, Overrides) {
  ActiDewarper mounted(Params(0, 1));
  ActiDewarper wall(Params(0, 0));
  ActiDewarper floor(Params(0, 2));
  EXPECT_TRUE(mounted.IsSubModeSupported(1));
  EXPECT_TRUE(mounted.IsSubModeSupported(2));
  EXPECT_TRUE(mounted.IsSubModeSupported(3));
  EXPECT_TRUE(wall.IsSubModeSupported(2));
  EXPECT_FALSE(wall.IsSubModeSupported(3));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(2));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(3));
  EXPECT_FALSE(mounted.IsNormalPTZSupported(1));
  EXPECT_FLOAT_EQ(mounted.GetZoomScaleModifier(), -4.96f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(10.0f), 32.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(2000.0f), 1024.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(500.0f), 500.0f);
  EXPECT_TRUE(floor.InvertPan());
  EXPECT_TRUE(floor.InvertTilt());
  EXPECT_TRUE(floor.GetNeedsRotation());
  EXPECT_FALSE(mounted.InvertPan());
  EXPECT_FALSE(mounted.InvertTilt());
  EXPECT_FALSE(mounted.GetNeedsRotation());
  EXPECT_FALSE(wall.GetNeedsRotation());
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.25f);
  EXPECT_TRUE(mounted.CanPan(1));
  mounted.SetSubMode(2);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.7777778f);
  EXPECT_FALSE(mounted.CanPan(2));
  mounted.SetSubMode(3);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.3333334f);
  EXPECT_TRUE(mounted.CanPan(3));
  EXPECT_FALSE(mounted.CanTilt(3));
  mounted.Clear();
  mounted.Zoom(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Zoom, 256.0f - 4.96f);
  // Frames keep the default three-byte layout.
  const Frame frame = RequestFrame(wall, 640, 480, 640, 480);
  EXPECT_EQ(frame.InputFormat, 12);
  EXPECT_EQ(frame.InputSize, 640u * 3u * 480u);
}

TEST_F(ActiDewarperTest, TheInaxsysKindIsServedByTheActiDewarper) {
  IDewarper* dewarper = CreateDewarper(DewarperType::Inaxsys, Params(0, 1));
  ASSERT_NE(dewarper, nullptr);
  EXPECT_NE(dynamic_cast<ActiDewarper*>(dewarper), nullptr);
  EXPECT_TRUE(dewarper->Check());
  const std::vector<std::string> calls = Calls();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0], "FishEye_OpenInterface()");
  DeleteDewarper(dewarper);
}

}  // namespace
