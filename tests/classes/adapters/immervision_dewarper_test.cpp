// The ImmerVision dewarper against the stand-in of libIMV1.so.
#include <cstring>

#include "DewarperRegistry.h"
#include "DewarpWrapper.h"
#include "ImmervisionDewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

class ImmervisionDewarperTest : public FakeLogTest {};

// "in/out" as the stand-in prints an IMV_Buffer: size+offsets of full size, pixels.
std::string Record(int width, int height, const void* data) {
  return Format("%dx%d+0+0 of %dx%d %s", width, height, width, height, Ptr(data).c_str());
}

TEST_F(ImmervisionDewarperTest, CreatesTheInterfaceOnceInCheck) {
  {
    ImmervisionDewarper dewarper(Params(0, 1));
    EXPECT_EQ(dewarper.Mode(), DewarperType::ImmerVision);
    EXPECT_TRUE(Calls().empty());  // nothing before it is needed
    EXPECT_TRUE(dewarper.Check());
    EXPECT_TRUE(dewarper.Check());
    EXPECT_EQ(Calls(), std::vector<std::string>({"IMV_CameraInterface()"}));
  }
  // Destroyed with its own destructor, its storage intact.
  EXPECT_EQ(Calls(), std::vector<std::string>({"~IMV_CameraInterface(intact)"}));
}

TEST_F(ImmervisionDewarperTest, ConfiguresVideoLensZoomLimitsAndPositionThenDewarps) {
  ImmervisionDewarper dewarper(Params(1, 1));
  const Frame frame = RequestFrame(dewarper, 1280, 960, 640, 480);
  ASSERT_TRUE(frame.OutputOk);
  // The output always has the input's size, written back to the host.
  EXPECT_EQ(frame.Width, 1280);
  EXPECT_EQ(frame.Height, 960);
  EXPECT_EQ(frame.OutputFormat, 12);
  EXPECT_EQ(frame.OutputSize, 1280u * 3u * 960u);
  // Both records describe a frame of the input's size; view 0 in sub-mode 1; mounting 1; lens 1
  // of the table; zoom limits 23 to 180; the position as it stands (zoom 0 before any Clear).
  const std::vector<std::string> expected = {
      "IMV_CameraInterface()",
      "SetVideoParams(in=" + Record(1280, 960, frame.Input) + ", out=" + Record(1280, 960, frame.Output) +
          ", 4, 0, 1)",
      "SetLens(FAKE-B1)",
      "SetZoomLimits(23, 180)",
      "SetPosition(0, 0, 0, 0, 1)",
      "Update()"};
  EXPECT_EQ(Calls(), expected);
  // The next frame only dewarps.
  ASSERT_TRUE(RequestFrame(dewarper, 1280, 960, 640, 480).OutputOk);
  EXPECT_EQ(Calls(), std::vector<std::string>({"Update()"}));
}

TEST_F(ImmervisionDewarperTest, ALensOutsideTheTableIsNotSet) {
  for (int lens : {-1, 3, 99}) {
    ImmervisionDewarper dewarper(Params(lens, 1));
    ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
    for (const std::string& call : Calls()) {
      EXPECT_NE(call.rfind("SetLens", 0), 0u) << "lens " << lens;
    }
  }
}

TEST_F(ImmervisionDewarperTest, OtherSubModesUseViewTwo) {
  ImmervisionDewarper dewarper(Params(0, 0, 35));
  dewarper.SetSubMode(2);
  const Frame frame = RequestFrame(dewarper, 640, 480, 100, 100);
  ASSERT_TRUE(frame.OutputOk);
  const std::vector<std::string> calls = Calls();
  ASSERT_GE(calls.size(), 2u);
  EXPECT_EQ(calls[1], "SetVideoParams(in=" + Record(640, 480, frame.Input) + ", out=" +
                          Record(640, 480, frame.Output) + ", 4, 2, 0)");
}

TEST_F(ImmervisionDewarperTest, AFailedCallStopsTheSequenceAndDisablesPtz) {
  fake_makers::SetKnob("SetVideoParams", 7);
  ImmervisionDewarper dewarper(Params(1, 1));
  EXPECT_TRUE(dewarper.CanPan(1));
  const Frame frame = RequestFrame(dewarper, 640, 480, 640, 480);
  EXPECT_TRUE(frame.InputOk);
  EXPECT_FALSE(frame.OutputOk);
  const std::vector<std::string> calls = Calls();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0], "IMV_CameraInterface()");
  EXPECT_EQ(calls[1].rfind("SetVideoParams(", 0), 0u);
  EXPECT_EQ(calls[2], "GetErrorString(7)");
  EXPECT_FALSE(dewarper.CanPan(1));
  EXPECT_FALSE(dewarper.CanTilt(1));
  EXPECT_FALSE(dewarper.CanZoom(1));
}

TEST_F(ImmervisionDewarperTest, AFailedZoomLimitFailsTheConfiguration) {
  fake_makers::SetKnob("SetZoomLimits", 3);
  ImmervisionDewarper dewarper(Params(0, 1));
  EXPECT_FALSE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  const std::vector<std::string> calls = Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.back(), "GetErrorString(3)");
  EXPECT_FALSE(dewarper.CanPan(1));
}

TEST_F(ImmervisionDewarperTest, AFailedUpdateFailsTheFrameAndDisablesPtz) {
  ImmervisionDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  Calls();
  fake_makers::SetKnob("Update", 9);
  EXPECT_FALSE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  EXPECT_EQ(Calls(), std::vector<std::string>({"Update()", "GetErrorString(9)"}));
  EXPECT_FALSE(dewarper.CanTilt(1));
}

TEST_F(ImmervisionDewarperTest, PushesTheLimitedPositionAndKeepsTheLibrarysCorrection) {
  ImmervisionDewarper dewarper(Params(0, 1));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  Calls();
  // Pan wraps into [0, 360), tilt clamps into [0, 90], zoom into [23, 180].
  dewarper.SetPosition(370.0f, 45.0f, 200.0f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"SetPosition(10, 45, 180, 0, 1)"}));
  fake_makers::SetKnob("SetPosition.zoom", 90.0);
  fake_makers::SetKnob("SetPosition.tilt", 12.5);
  dewarper.SetPosition(20.0f, 30.0f, 100.0f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"SetPosition(20, 30, 100, 0, 1)"}));
  const Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 20.0f);
  EXPECT_EQ(p.Tilt, 12.5f);
  EXPECT_EQ(p.Zoom, 90.0f);
  fake_makers::SetKnob("SetPosition", 5);
  dewarper.SetPosition(20.0f, 30.0f, 100.0f);
  EXPECT_EQ(Calls(), std::vector<std::string>({"SetPosition(20, 30, 100, 0, 1)", "GetErrorString(5)"}));
}

TEST_F(ImmervisionDewarperTest, SubModeChangesResetToTheScrollPan) {
  ImmervisionDewarper dewarper(Params(0, 1, 35));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);
  dewarper.SetPosition(100.0f, 50.0f, 60.0f);
  dewarper.SetSubMode(0);  // counts as 1: no change
  EXPECT_EQ(dewarper.SubMode(), 1);
  EXPECT_EQ(PositionOf(dewarper).Pan, 100.0f);
  dewarper.SetSubMode(3);
  EXPECT_EQ(dewarper.SubMode(), 3);
  Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 35.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 180.0f);
  Calls();
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 640, 480).OutputOk);  // configured again
  const std::vector<std::string> calls = Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls[0].rfind("SetVideoParams(", 0), 0u);
  EXPECT_NE(calls[0].find(", 4, 2, 1)"), std::string::npos);
  // Back to sub-mode 1: configured again, the position is kept.
  dewarper.SetSubMode(1);
  p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 35.0f);
  EXPECT_EQ(p.Zoom, 180.0f);
}

TEST_F(ImmervisionDewarperTest, OverridesAndRanges) {
  ImmervisionDewarper mounted(Params(0, 1));
  EXPECT_TRUE(mounted.IsSubModeSupported(1));
  EXPECT_FALSE(mounted.IsSubModeSupported(2));
  EXPECT_TRUE(mounted.IsSubModeSupported(3));
  ImmervisionDewarper wall(Params(0, 0));
  EXPECT_TRUE(wall.IsSubModeSupported(1));
  EXPECT_TRUE(wall.IsSubModeSupported(2));
  EXPECT_FALSE(wall.IsSubModeSupported(3));
  for (ImmervisionDewarper* d : {&mounted, &wall}) {
    EXPECT_FALSE(d->IsNormalPTZSupported(1));
    EXPECT_TRUE(d->IsNormalPTZSupported(2));
    EXPECT_TRUE(d->IsNormalPTZSupported(3));
    EXPECT_FALSE(d->GetNeedsRotation());
    EXPECT_FALSE(d->InvertPan());
    EXPECT_FALSE(d->InvertTilt());
    EXPECT_FLOAT_EQ(d->AdjustAspectRatio(1.25f, 1.5f), 1.5f);
    EXPECT_FLOAT_EQ(d->GetZoomScaleModifier(), -0.785f);
    EXPECT_FLOAT_EQ(d->LimitZoomRange(10.0f), 23.0f);
    EXPECT_FLOAT_EQ(d->LimitZoomRange(100.0f), 100.0f);
    EXPECT_FLOAT_EQ(d->LimitZoomRange(181.0f), 180.0f);
  }
  // Pan in every sub-mode of a mounted camera, only in sub-mode 1 on a wall; tilt and zoom only
  // in sub-mode 1.
  mounted.SetSubMode(3);
  wall.SetSubMode(2);
  EXPECT_TRUE(mounted.CanPan(3));
  EXPECT_FALSE(wall.CanPan(2));
  EXPECT_FALSE(mounted.CanTilt(3));
  EXPECT_FALSE(mounted.CanZoom(3));
  EXPECT_RANGE(PanRangeOf(mounted), 0.0f, 360.0f, 360.0f, true);
  EXPECT_RANGE(PanRangeOf(wall), -90.0f, 90.0f, 180.0f, false);
}

TEST_F(ImmervisionDewarperTest, ZoomStepsNarrowTheFieldOfView) {
  ImmervisionDewarper dewarper(Params(0, 1));
  dewarper.Clear();
  Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 180.0f);
  dewarper.Zoom(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).Zoom, 180.0f - 0.785f);
  dewarper.Zoom(-1, 9);  // 179.215 + 10 x 0.785, limited to 180
  EXPECT_FLOAT_EQ(PositionOf(dewarper).Zoom, 180.0f);
}

TEST_F(ImmervisionDewarperTest, LensNamesAreFormattedFromTheTable) {
  ImmervisionDewarper dewarper(Params(0, 0));
  char buffer[64];
  EXPECT_EQ(dewarper.GetLens(0, buffer, sizeof buffer), 18);
  EXPECT_STREQ(buffer, "RPL Number FAKE-A0");
  EXPECT_EQ(dewarper.GetLens(2, buffer, sizeof buffer), 18);
  EXPECT_STREQ(buffer, "RPL Number FAKE-C2");
  // Cut to the buffer; the result is still the whole text's length.
  char small[8];
  EXPECT_EQ(dewarper.GetLens(1, small, sizeof small), 18);
  EXPECT_STREQ(small, "RPL Num");
}

TEST_F(ImmervisionDewarperTest, ALensIndexEqualToTheCountReturnsZeroAndLeavesTheBuffer) {
  ImmervisionDewarper dewarper(Params(0, 0));
  char buffer[16];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(dewarper.GetLens(3, buffer, sizeof buffer), 0);
  EXPECT_EQ(dewarper.GetLens(-1, buffer, sizeof buffer), 0);
  for (char c : buffer) {
    EXPECT_EQ(c, '#');
  }
}

TEST_F(ImmervisionDewarperTest, TheRegistryListsTheLensNames) {
  IDewarpRegister* registry = GetRegister();
  ASSERT_NE(registry, nullptr);
  char buffer[64];
  EXPECT_EQ(registry->GetLens(DewarperType::ImmerVision, 1, buffer, sizeof buffer), 18);
  EXPECT_STREQ(buffer, "RPL Number FAKE-B1");
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(registry->GetLens(DewarperType::ImmerVision, 3, buffer, sizeof buffer), 0);
  EXPECT_EQ(buffer[0], '#');
}

}  // namespace
