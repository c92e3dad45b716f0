// The Geovision dewarper against the stand-in of libGeoFESDK.so.
#include "GeovisionDewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

class GeovisionDewarperTest : public FakeLogTest {};

// The view record as the stand-in prints it: centre (height / 2, width / 2) in this order, both
// radii half the smaller side, SetFrame 0.
std::string View(int mode, int camPos, int width, int height) {
  const int radius = (width < height ? width : height) / 2;
  return Format("mode=%d campos=%d frame=0 u=%d v=%d lr=%d sr=%d", mode, camPos, height / 2, width / 2, radius,
                radius);
}

std::vector<std::string> Configuration(int object, int width, int height, int dstWidth, int dstHeight, int mode,
                                       int camPos) {
  return {Format("#%d GvFE_Initialize(0, %d, %d, %d, %d, 3)", object, width, height, dstWidth, dstHeight),
          Format("#%d GvFESetPosition(0, %s)", object, View(mode, camPos, width, height).c_str()),
          Format("#%d GvFE_ParamsUpdated(0, event=zero, %s)", object, View(mode, camPos, width, height).c_str())};
}

std::vector<std::string> Joined(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const auto& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

TEST_F(GeovisionDewarperTest, StartsAtZoom20) {
  GeovisionDewarper dewarper(Params(0, 1));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Geovision);
  const Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 20.0f);
  EXPECT_TRUE(Calls().empty());
}

TEST_F(GeovisionDewarperTest, ConfiguresChannelZeroThenDewarpsEveryFrame) {
  GeovisionDewarper dewarper(Params(0, 1));
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 1280, 720);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> expected =
      Joined({{"IFishEye_Create() = #1"},
              Configuration(1, 1920, 1080, 1280, 720, 8, 0),
              {"#1 SetAbsolutePTZ(0, 0, 0, 20, 1)",
               Format("#1 GvFE_VideoInput(0, %s, %s)", Ptr(frame.Input).c_str(), Ptr(frame.Output).c_str())}});
  EXPECT_EQ(Calls(), expected);
  ASSERT_TRUE(RequestFrame(dewarper, 1920, 1080, 1280, 720).OutputOk);
  EXPECT_EQ(Calls(), std::vector<std::string>({Format("#1 GvFE_VideoInput(0, %s, %s)", Ptr(frame.Input).c_str(),
                                                      Ptr(frame.Output).c_str())}));
}

TEST_F(GeovisionDewarperTest, EveryConfigurationStartsFromANewObject) {
  GeovisionDewarper dewarper(Params(0, 2));
  ASSERT_TRUE(RequestFrame(dewarper, 1920, 1080, 1280, 720).OutputOk);
  Calls();
  const Frame frame = RequestFrame(dewarper, 1920, 1080, 640, 360);  // a new output size
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> expected =
      Joined({{"#1 GvFE_Close(0)", "IFishEye_Release()", "IFishEye_Create() = #2"},
              Configuration(2, 1920, 1080, 640, 360, 8, 2),
              {"#2 SetAbsolutePTZ(0, 0, 0, 20, 1)",
               Format("#2 GvFE_VideoInput(0, %s, %s)", Ptr(frame.Input).c_str(), Ptr(frame.Output).c_str())}});
  EXPECT_EQ(Calls(), expected);
}

TEST_F(GeovisionDewarperTest, ViewModeAndCameraPositionCodes) {
  struct Case {
    int Position, SubMode, Mode, CamPos;
  };
  for (const Case& c : {Case{1, 1, 8, 0}, Case{2, 3, 4, 2}, Case{0, 1, 8, 1}, Case{0, 2, 8, 1}, Case{3, 3, 4, 0}}) {
    {
      GeovisionDewarper dewarper(Params(0, c.Position));
      dewarper.SetSubMode(c.SubMode);
      ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
      const std::vector<std::string> calls = Calls();
      ASSERT_GE(calls.size(), 4u);
      EXPECT_EQ(calls[2], Format("#1 GvFESetPosition(0, %s)", View(c.Mode, c.CamPos, 1280, 960).c_str()));
    }
    fake_makers::Reset();  // numbering starts again at #1
  }
}

TEST_F(GeovisionDewarperTest, PositionsGoInTenthsOfADegreeInSubModeOneOnly) {
  GeovisionDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
  Calls();
  // Pan wraps into [0, 3600), tilt clamps into [0, 900], zoom into [0, 800].
  dewarper.SetPosition(3700.0f, 950.0f, 900.0f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"#1 SetAbsolutePTZ(0, 100, 900, 800, 1)"}));
  dewarper.SetPosition(123.9f, 45.5f, 7.2f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"#1 SetAbsolutePTZ(0, 123, 45, 7, 1)"}));
  dewarper.SetSubMode(3);
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
  for (const std::string& call : Calls()) {
    EXPECT_EQ(call.find("SetAbsolutePTZ"), std::string::npos) << call;
  }
  dewarper.SetPosition(100.0f, 100.0f, 100.0f);
  EXPECT_TRUE(Calls().empty());
}

TEST_F(GeovisionDewarperTest, AFailedInitialisationFailsWithoutReachingTheChannel) {
  fake_makers::SetKnob("GvFE_Initialize", 1);
  GeovisionDewarper dewarper(Params(0, 1));
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
  EXPECT_EQ(Calls(), std::vector<std::string>({"IFishEye_Create() = #1", "#1 GvFE_Initialize(0, 1280, 960, 640, 360, 3)"}));
  // The next frame has no channel to dewarp on.
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
  EXPECT_TRUE(Calls().empty());
  dewarper.SetPosition(10.0f, 10.0f, 10.0f);
  EXPECT_TRUE(Calls().empty());
}

TEST_F(GeovisionDewarperTest, AFailedFrameIsFalse) {
  GeovisionDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
  fake_makers::SetKnob("GvFE_VideoInput", 2);
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
}

TEST_F(GeovisionDewarperTest, NoObjectMeansNotReady) {
  fake_makers::SetKnob("IFishEye_Create.null", 1);
  GeovisionDewarper dewarper(Params(0, 1));
  EXPECT_FALSE(dewarper.Check());
  EXPECT_FALSE(RequestFrame(dewarper, 1280, 960, 640, 360).InputOk);
}

TEST_F(GeovisionDewarperTest, DestructionClosesTheChannelAndReleasesTheObject) {
  {
    GeovisionDewarper dewarper(Params(0, 1));
    ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 360).OutputOk);
    Calls();
  }
  EXPECT_EQ(Calls(), std::vector<std::string>({"#1 GvFE_Close(0)", "IFishEye_Release()"}));
  {
    GeovisionDewarper unopened(Params(0, 1));
    ASSERT_TRUE(unopened.Check());
    Calls();
  }
  EXPECT_EQ(Calls(), std::vector<std::string>({"IFishEye_Release()"}));
}

TEST_F(GeovisionDewarperTest, RangesAreInTenthsOfADegree) {
  GeovisionDewarper mounted(Params(0, 1));
  EXPECT_RANGE(PanRangeOf(mounted), 0.0f, 3600.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(mounted), 0.0f, 900.0f, 90.0f, false);
  GeovisionDewarper floor(Params(0, 2));
  EXPECT_RANGE(TiltRangeOf(floor), -900.0f, 0.0f, 90.0f, false);
  GeovisionDewarper wall(Params(0, 0));
  EXPECT_RANGE(PanRangeOf(wall), -900.0f, 900.0f, 180.0f, false);
  EXPECT_RANGE(TiltRangeOf(wall), -900.0f, 900.0f, 180.0f, false);
  // One step: (3600 - 0) / (360 / 0.2) = 2 tenths.
  mounted.Clear();
  mounted.Pan(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Pan, 2.0f);
  // Tilt is inverted except on the floor: a positive request (-1 step) raises the tilt here.
  mounted.Tilt(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Tilt, 2.0f);
  floor.Clear();
  floor.Tilt(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(floor).Tilt, -2.0f);
  floor.Pan(1, 0);  // inverted on the floor: wraps below 0 to 3598
  EXPECT_FLOAT_EQ(PositionOf(floor).Pan, 3598.0f);
}

TEST_F(GeovisionDewarperTest, Overrides) {
  GeovisionDewarper mounted(Params(0, 1));
  GeovisionDewarper wall(Params(0, 0));
  GeovisionDewarper floor(Params(0, 2));
  EXPECT_TRUE(mounted.IsSubModeSupported(1));
  EXPECT_FALSE(mounted.IsSubModeSupported(2));
  EXPECT_TRUE(mounted.IsSubModeSupported(3));
  EXPECT_FALSE(wall.IsSubModeSupported(3));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(2));
  EXPECT_TRUE(mounted.IsNormalPTZSupported(3));
  EXPECT_FALSE(mounted.IsNormalPTZSupported(1));
  EXPECT_FLOAT_EQ(mounted.GetZoomScaleModifier(), 4.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(-5.0f), 0.0f);
  EXPECT_FLOAT_EQ(mounted.LimitZoomRange(801.0f), 800.0f);
  EXPECT_FALSE(mounted.InvertPan());
  EXPECT_TRUE(mounted.InvertTilt());
  EXPECT_TRUE(wall.InvertTilt());
  EXPECT_TRUE(floor.InvertPan());
  EXPECT_FALSE(floor.InvertTilt());
  EXPECT_FALSE(floor.GetNeedsRotation());
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.25f);
  mounted.Zoom(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Zoom, 24.0f);
  mounted.SetSubMode(3);
  EXPECT_FLOAT_EQ(mounted.AdjustAspectRatio(1.25f, 1.5f), 1.7777778f);
  const Position p = PositionOf(mounted);
  EXPECT_EQ(p.Zoom, 20.0f);  // cleared
  const Frame frame = RequestFrame(wall, 640, 480, 640, 480);
  EXPECT_EQ(frame.InputFormat, 0);
  EXPECT_EQ(frame.InputSize, 640u * 3u * 480u / 2u);
  EXPECT_EQ(frame.OutputFormat, 0);
}

}  // namespace
