// The Sentry360 dewarper over the built-in panoramic processor: overrides, ranges, the
// processor's configuration and position, the panorama's size rule and host safety.
#include <ImageProcessor.h>

#include <cmath>
#include <cstring>

#include "Sentry360Dewarper.h"
#include "adapter_test_support.h"

using namespace adapter_test;

namespace {

// Reaches the processor the dewarper drives.
class SentryProbe : public Sentry360Dewarper {
public:
  using Sentry360Dewarper::Sentry360Dewarper;
  ImageProcessor* Processor() { return m_360sdk; }
};

const float kSixteenNinths = 16.0f / 9.0f;

TEST(Sentry360Dewarper, IsOfTheSentry360KindAndAlwaysReady) {
  Sentry360Dewarper dewarper(Params(0, 1));
  EXPECT_EQ(dewarper.Mode(), DewarperType::Sentry360);
  EXPECT_TRUE(dewarper.Check());
  EXPECT_TRUE(dewarper.Check());
}

TEST(Sentry360Dewarper, OffersTheViewAndThePanorama) {
  for (int position : {0, 1, 2}) {
    Sentry360Dewarper dewarper(Params(0, position));
    EXPECT_FALSE(dewarper.IsSubModeSupported(0));
    EXPECT_TRUE(dewarper.IsSubModeSupported(1));
    EXPECT_TRUE(dewarper.IsSubModeSupported(2));
    EXPECT_FALSE(dewarper.IsSubModeSupported(3));
    EXPECT_FALSE(dewarper.IsNormalPTZSupported(1));
    EXPECT_TRUE(dewarper.IsNormalPTZSupported(2));
    EXPECT_TRUE(dewarper.IsNormalPTZSupported(3));
    EXPECT_FALSE(dewarper.GetNeedsRotation());
  }
}

TEST(Sentry360Dewarper, RangesAreCentredOnTheHomeDirection) {
  Sentry360Dewarper mounted(Params(0, 1));
  EXPECT_RANGE(PanRangeOf(mounted), -180.0f, 180.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(mounted), 0.0f, 90.0f, 90.0f, false);
  Sentry360Dewarper floor(Params(0, 2));
  EXPECT_RANGE(PanRangeOf(floor), -180.0f, 180.0f, 360.0f, true);
  EXPECT_RANGE(TiltRangeOf(floor), 0.0f, 90.0f, 90.0f, false);
  Sentry360Dewarper wall(Params(0, 0));
  EXPECT_RANGE(PanRangeOf(wall), -90.0f, 90.0f, 180.0f, false);
  EXPECT_RANGE(TiltRangeOf(wall), -90.0f, 90.0f, 180.0f, false);
}

TEST(Sentry360Dewarper, InvertsPanAndTiltOnTheFloorOnly) {
  for (int position : {0, 1, 3}) {
    Sentry360Dewarper dewarper(Params(0, position));
    EXPECT_FALSE(dewarper.InvertPan());
    EXPECT_FALSE(dewarper.InvertTilt());
  }
  Sentry360Dewarper floor(Params(0, 2));
  EXPECT_TRUE(floor.InvertPan());
  EXPECT_TRUE(floor.InvertTilt());
}

TEST(Sentry360Dewarper, ZoomHasALowerLimitOnly) {
  Sentry360Dewarper dewarper(Params(0, 1));
  EXPECT_FLOAT_EQ(dewarper.GetZoomScaleModifier(), 0.05f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(0.0f), 0.7f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(0.69f), 0.7f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(0.7f), 0.7f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(3.5f), 3.5f);
  EXPECT_FLOAT_EQ(dewarper.LimitZoomRange(1.0e6f), 1.0e6f);
}

TEST(Sentry360Dewarper, HoldsZoomZeroUntilTheFirstClear) {
  Sentry360Dewarper dewarper(Params(0, 1));
  Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_EQ(p.Zoom, 0.0f);
  dewarper.Clear();
  p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_FLOAT_EQ(p.Zoom, 0.7f);
}

TEST(Sentry360Dewarper, AspectIsTheHostsInTheViewAndSixteenNinthsInThePanorama) {
  Sentry360Dewarper dewarper(Params(0, 1));
  EXPECT_FLOAT_EQ(dewarper.AdjustAspectRatio(1.25f, 1.5f), 1.5f);
  dewarper.SetSubMode(2);
  EXPECT_FLOAT_EQ(dewarper.AdjustAspectRatio(1.25f, 1.5f), 1.7777778f);
  EXPECT_EQ(dewarper.AdjustAspectRatio(1.25f, 1.5f), kSixteenNinths);
}

TEST(Sentry360Dewarper, FramesHaveThreeBytesPerPixel) {
  Sentry360Dewarper dewarper(Params(0, 1, 0, 320, 240, 200));
  const Frame frame = RequestFrame(dewarper, 640, 480, 320, 240);
  ASSERT_TRUE(frame.InputOk);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(frame.InputFormat, 12);
  EXPECT_EQ(frame.InputSize, 640u * 3u * 480u);
  EXPECT_EQ(frame.OutputFormat, 12);
  EXPECT_EQ(frame.OutputSize, 320u * 3u * 240u);
}

TEST(Sentry360Dewarper, PanoramaOutputIsHalfTheInputWhateverTheRequest) {
  Sentry360Dewarper dewarper(Params(0, 1, 0, 1024, 768, 700));
  dewarper.SetSubMode(2);
  for (const auto& request : {std::make_pair(640, 480), std::make_pair(1920, 1080), std::make_pair(1, 1),
                              std::make_pair(4000, 4000)}) {
    const Frame frame = RequestFrame(dewarper, 2048, 1536, request.first, request.second);
    ASSERT_TRUE(frame.OutputOk);
    EXPECT_EQ(frame.Width, 1024);
    EXPECT_EQ(frame.Height, 768);
    EXPECT_EQ(frame.OutputSize, 1024u * 3u * 768u);
  }
}

TEST(Sentry360Dewarper, ConfiguresTheProcessorForTheHostsBuffers) {
  SentryProbe dewarper(Params(0, 1, 0, 330, 250, 210));
  const Frame frame = RequestFrame(dewarper, 640, 480, 400, 300);
  ASSERT_TRUE(frame.OutputOk);
  ASSERT_EQ(frame.Width, 400);
  ASSERT_EQ(frame.Height, 300);
  ImageProcessor& processor = *dewarper.Processor();
  const ImageProcessorParams& p = processor.GetParameters();
  EXPECT_EQ(p.InputImageWidth, 640);
  EXPECT_EQ(p.InputImageHeight, 480);
  EXPECT_EQ(p.InputImageStride, 640 * 3);
  EXPECT_EQ(p.InputImageBitsPerPixel, 24);
  EXPECT_EQ(p.InputImageCenterX, 330);
  EXPECT_EQ(p.InputImageCenterY, 250);
  EXPECT_EQ(p.InputImageRadius, 210);
  EXPECT_FALSE(p.InputImageOwnData);
  EXPECT_EQ(p.OutputImageWidth, 400);
  EXPECT_EQ(p.OutputImageHeight, 300);
  EXPECT_EQ(p.OutputImageStride, 400 * 3);
  EXPECT_FALSE(p.OutputImageOwnData);
  EXPECT_TRUE(p.UseOutputImageMapCache);
  EXPECT_EQ(p.OutputImagePrecisionMode, PrecisionModeAuto);
  EXPECT_FALSE(p.OutputImageInvert);
  // The panorama's width and height are crossed over; its stride is the output's.
  EXPECT_EQ(p.OutputPanoramaImageWidth, 300);
  EXPECT_EQ(p.OutputPanoramaImageHeight, 400);
  EXPECT_EQ(p.OutputPanoramaImageStride, 400 * 3);
  EXPECT_FALSE(p.OutputPanoramaImageOwnData);
  EXPECT_TRUE(p.UseOutputPanoramaImageMapCache);
  EXPECT_EQ(p.OutputPanoramaImagePrecisionMode, PrecisionModeAuto);
  EXPECT_FALSE(p.OutputPanoramaImageInvert);
  // The three images are the dewarper's buffers.
  EXPECT_EQ(processor._inputData.Data, frame.Input);
  EXPECT_EQ(processor._inputData.Width, 640);
  EXPECT_EQ(processor._inputData.Height, 480);
  EXPECT_EQ(processor._inputData.Stride, 640 * 3);
  EXPECT_EQ(processor._inputData.BitsPerPixel, 24);
  EXPECT_FALSE(processor._inputData.OwnsData);
  for (const ImageData* image : {&processor._outputData, &processor._outputPanoramaData}) {
    EXPECT_EQ(image->Data, frame.Output);
    EXPECT_EQ(image->Width, 400);
    EXPECT_EQ(image->Height, 300);
    EXPECT_EQ(image->Stride, 400 * 3);
    EXPECT_EQ(image->BitsPerPixel, 24);
    EXPECT_FALSE(image->OwnsData);
  }
}

TEST(Sentry360Dewarper, FloorCamerasRenderInverted) {
  SentryProbe dewarper(Params(0, 2, 0, 320, 240, 200));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 320, 240).OutputOk);
  EXPECT_TRUE(dewarper.Processor()->GetParameters().OutputImageInvert);
  EXPECT_TRUE(dewarper.Processor()->GetParameters().OutputPanoramaImageInvert);
}

// A frame before any Clear: the dewarper holds zoom 0, which the processor would refuse; the
// zoom that reaches it is the lower limit 0.7.
TEST(Sentry360Dewarper, AFrameBeforeClearReachesTheProcessorWithTheLowerZoomLimit) {
  SentryProbe dewarper(Params(0, 1, 0, 320, 240, 200));
  const Frame frame = RequestFrame(dewarper, 640, 480, 320, 240);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(dewarper.Processor()->GetZoom(), static_cast<double>(0.7f));
  EXPECT_EQ(dewarper.Processor()->GetPan(), 0.0);
  EXPECT_EQ(dewarper.Processor()->GetTilt(), 0.0);
  EXPECT_EQ(PositionOf(dewarper).Zoom, 0.0f);
}

TEST(Sentry360Dewarper, PushesTheLimitedPositionToTheProcessor) {
  SentryProbe mounted(Params(0, 1, 0, 320, 240, 200));
  ASSERT_TRUE(RequestFrame(mounted, 640, 480, 320, 240).OutputOk);
  mounted.SetPosition(30.0f, 45.0f, 2.0f);
  EXPECT_EQ(mounted.Processor()->GetPan(), 30.0);
  EXPECT_EQ(mounted.Processor()->GetTilt(), 45.0);
  EXPECT_EQ(mounted.Processor()->GetZoom(), 2.0);
  // 190 wraps into [-180, 180): -180 + (370 mod 360) = -170; tilt clamps into [0, 90].
  mounted.SetPosition(190.0f, 120.0f, 0.1f);
  EXPECT_EQ(mounted.Processor()->GetPan(), -170.0);
  EXPECT_EQ(mounted.Processor()->GetTilt(), 90.0);
  EXPECT_EQ(mounted.Processor()->GetZoom(), static_cast<double>(0.7f));

  SentryProbe wall(Params(0, 0, 0, 320, 240, 200));
  ASSERT_TRUE(RequestFrame(wall, 640, 480, 320, 240).OutputOk);
  wall.SetPosition(120.0f, -100.0f, 1.0f);
  EXPECT_EQ(wall.Processor()->GetPan(), 90.0);
  EXPECT_EQ(wall.Processor()->GetTilt(), -90.0);
}

TEST(Sentry360Dewarper, PositionsNoRangeCanLimitStayWithinWhatTheProcessorAccepts) {
  SentryProbe dewarper(Params(0, 1, 0, 320, 240, 200));
  ASSERT_TRUE(RequestFrame(dewarper, 640, 480, 320, 240).OutputOk);
  const float nan = std::nanf("");
  dewarper.SetPosition(nan, nan, nan);
  const double pan = dewarper.Processor()->GetPan();
  const double tilt = dewarper.Processor()->GetTilt();
  EXPECT_TRUE(pan >= -180.0 && pan <= 180.0);
  EXPECT_TRUE(tilt >= -90.0 && tilt <= 90.0);
  EXPECT_GT(dewarper.Processor()->GetZoom(), 0.0);
  EXPECT_TRUE(RequestFrame(dewarper, 640, 480, 320, 240).OutputOk);
}

// A value inside [-180, 180) after the wrapping step: -180 + fmod(value + 180, 360), in single
// precision around the double remainder (which costs the low bits of small angles).
float WrappedPan(float value) {
  const float shifted = value - -180.0f;
  return -180.0f + static_cast<float>(std::fmod(static_cast<double>(shifted), 360.0));
}

TEST(Sentry360Dewarper, StepsMoveByAFifthOfADegree) {
  ASSERT_NEAR(WrappedPan(0.2f), 0.2f, 1e-4f);
  Sentry360Dewarper mounted(Params(0, 1));
  mounted.Clear();
  mounted.Pan(1, 0);
  EXPECT_EQ(PositionOf(mounted).Pan, WrappedPan(0.2f));
  mounted.Tilt(-1, 0);  // a negative request lowers the view: the tilt grows
  EXPECT_FLOAT_EQ(PositionOf(mounted).Tilt, 0.2f);
  mounted.Zoom(1, 0);
  EXPECT_FLOAT_EQ(PositionOf(mounted).Zoom, 0.75f);
  mounted.Zoom(-1, 2);  // 0.75 - 3 x 0.05 = 0.6, limited to 0.7
  EXPECT_FLOAT_EQ(PositionOf(mounted).Zoom, 0.7f);

  Sentry360Dewarper floor(Params(0, 2));
  floor.Clear();
  floor.Pan(1, 0);  // inverted
  EXPECT_EQ(PositionOf(floor).Pan, WrappedPan(-0.2f));
  floor.Tilt(1, 0);  // -1 step, inverted: +0.2
  EXPECT_FLOAT_EQ(PositionOf(floor).Tilt, 0.2f);
}

TEST(Sentry360Dewarper, ASubModeChangeResetsThePositionAndAsksForANewInput) {
  Sentry360Dewarper dewarper(Params(0, 1, 0, 1024, 768, 700));
  ASSERT_TRUE(RequestFrame(dewarper, 2048, 1536, 640, 480).OutputOk);
  dewarper.SetPosition(40.0f, 30.0f, 2.0f);
  dewarper.SetSubMode(0);  // counts as 1: no change
  EXPECT_EQ(dewarper.SubMode(), 1);
  EXPECT_FLOAT_EQ(PositionOf(dewarper).Pan, 40.0f);
  dewarper.SetSubMode(2);
  EXPECT_EQ(dewarper.SubMode(), 2);
  const Position p = PositionOf(dewarper);
  EXPECT_EQ(p.Pan, 0.0f);
  EXPECT_EQ(p.Tilt, 0.0f);
  EXPECT_FLOAT_EQ(p.Zoom, 0.7f);
  // The input size is forgotten: without a new input there is no panorama size to give.
  int width = 640, height = 480;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, &size, &format));
  const Frame frame = RequestFrame(dewarper, 2048, 1536, 640, 480);
  ASSERT_TRUE(frame.OutputOk);
  EXPECT_EQ(frame.Width, 1024);
  EXPECT_EQ(frame.Height, 768);
}

// Fills a frame of three-byte pixels with one colour and marks one pixel.
void Paint(unsigned char* frame, int width, int height, unsigned char value) {
  std::memset(frame, value, static_cast<std::size_t>(width) * height * 3);
}

unsigned char* PixelAt(unsigned char* frame, int width, int x, int y) {
  return frame + (static_cast<std::size_t>(y) * width + x) * 3;
}

unsigned char* InputBuffer(IDewarper& dewarper, int width, int height) {
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  return dewarper.GetImageInputBuffer(width, height, &buffer, &size, &format) ? buffer : nullptr;
}

unsigned char* OutputBuffer(IDewarper& dewarper, int width, int height) {
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  return dewarper.GetImageOutputBuffer(&width, &height, &buffer, &size, &format) ? buffer : nullptr;
}

// Straight ahead (pan 0, tilt 0) the output's centre pixel samples the fisheye centre. The first
// frame after a configuration copies nearest pixels.
TEST(Sentry360Dewarper, TheViewsCentreShowsTheFisheyeCentre) {
  Sentry360Dewarper dewarper(Params(0, 1, 0, 300, 220, 200));
  dewarper.Clear();
  unsigned char* input = InputBuffer(dewarper, 640, 480);
  ASSERT_NE(input, nullptr);
  Paint(input, 640, 480, 90);
  unsigned char* centre = PixelAt(input, 640, 300, 220);
  centre[0] = 11;
  centre[1] = 22;
  centre[2] = 33;
  unsigned char* output = OutputBuffer(dewarper, 320, 240);
  ASSERT_NE(output, nullptr);
  const unsigned char* shown = PixelAt(output, 320, 160, 120);
  EXPECT_EQ(shown[0], 11);
  EXPECT_EQ(shown[1], 22);
  EXPECT_EQ(shown[2], 33);
}

// The first panorama row samples the ring at radius sin((0.75 + 0.1) pi / 2) R - 1 on the
// angle-0 side of the centre.
TEST(Sentry360Dewarper, ThePanoramaStartsOnTheRim) {
  const int radius = 700;
  Sentry360Dewarper dewarper(Params(0, 1, 0, 1024, 768, radius));
  dewarper.SetSubMode(2);
  unsigned char* input = InputBuffer(dewarper, 2048, 1536);
  ASSERT_NE(input, nullptr);
  Paint(input, 2048, 1536, 90);
  const double rho = std::sin((1.0 * 0.75 + 0.1) * 3.141592653589793 / 2) * radius - 1;
  const int x = 1024 + static_cast<int>(rho);
  ASSERT_EQ(x, 1024 + 679);
  unsigned char* rim = PixelAt(input, 2048, x, 768);
  rim[0] = 44;
  rim[1] = 55;
  rim[2] = 66;
  unsigned char* output = OutputBuffer(dewarper, 0, 0);
  ASSERT_NE(output, nullptr);
  const unsigned char* shown = PixelAt(output, 1024, 0, 0);
  EXPECT_EQ(shown[0], 44);
  EXPECT_EQ(shown[1], 55);
  EXPECT_EQ(shown[2], 66);
}

// With crossed sizes the strip is as wide as the output is tall and as tall as the output is
// wide. Only what lies inside the output buffer is rendered: for a wide output the columns
// past the strip's width stay as they were; for a tall output, the rows past the strip's height.
TEST(Sentry360Dewarper, ThePanoramaStaysInsideTheOutputBuffer) {
  const unsigned char kUntouched = 0x11;
  {
    Sentry360Dewarper wide(Params(0, 1, 0, 1024, 768, 700));
    wide.SetSubMode(2);
    Frame frame = RequestFrame(wide, 2048, 1536, 0, 0);
    ASSERT_TRUE(frame.OutputOk);
    ASSERT_EQ(frame.Width, 1024);
    ASSERT_EQ(frame.Height, 768);
    Paint(frame.Input, 2048, 1536, 200);
    std::memset(frame.Output, kUntouched, frame.OutputSize);
    frame = RequestFrame(wide, 2048, 1536, 0, 0);
    ASSERT_TRUE(frame.OutputOk);
    // Strip 768 wide: columns 0..767 rendered (input bytes or black), 768.. untouched.
    EXPECT_NE(PixelAt(frame.Output, 1024, 0, 767)[0], kUntouched);
    EXPECT_NE(PixelAt(frame.Output, 1024, 767, 0)[0], kUntouched);
    EXPECT_EQ(PixelAt(frame.Output, 1024, 768, 0)[0], kUntouched);
    EXPECT_EQ(PixelAt(frame.Output, 1024, 1023, 767)[2], kUntouched);
  }
  {
    Sentry360Dewarper tall(Params(0, 1, 0, 768, 1024, 700));
    tall.SetSubMode(2);
    Frame frame = RequestFrame(tall, 1536, 2048, 0, 0);
    ASSERT_TRUE(frame.OutputOk);
    ASSERT_EQ(frame.Width, 768);
    ASSERT_EQ(frame.Height, 1024);
    Paint(frame.Input, 1536, 2048, 200);
    std::memset(frame.Output, kUntouched, frame.OutputSize);
    frame = RequestFrame(tall, 1536, 2048, 0, 0);
    ASSERT_TRUE(frame.OutputOk);
    // Strip 1024 wide (cut to the 768 columns of a row) and 768 tall: rows 768.. untouched.
    EXPECT_NE(PixelAt(frame.Output, 768, 767, 0)[0], kUntouched);
    EXPECT_NE(PixelAt(frame.Output, 768, 0, 767)[0], kUntouched);
    EXPECT_EQ(PixelAt(frame.Output, 768, 0, 768)[0], kUntouched);
    EXPECT_EQ(PixelAt(frame.Output, 768, 767, 1023)[2], kUntouched);
  }
}

}  // namespace
