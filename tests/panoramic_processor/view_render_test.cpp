#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <tuple>
#include <vector>

#include "ImageProcessor.h"
#include "panoramic_reference.h"

namespace {

using namespace panoramic_test;
typedef std::vector<unsigned char> Bytes;

// Circle at (16, 16) with radius 8, zoom 1 (focal length 8), output 8 x 8 (steps of 4 pixels).
// With pan 0 and tilt 0 an output pixel at offsets (u, v) samples the input at
// (u, v) x 8 / sqrt(u^2 + v^2 + 64) from the centre.
class HandWorkedView : public ::testing::Test {
protected:
  void Render(ImageProcessorPrecisionMode mode, bool invert, double pan, double tilt) {
    ImageProcessorParams p = OwnedParams(32, 32, 24, 16, 16, 8, 8, 8, 0, 0);
    p.OutputImagePrecisionMode = mode;
    p.OutputImageInvert = invert;
    processor.SetParameters(p);
    LoadFrame(processor._inputData, LinearFrame());
    processor.SetPanTiltZoom(pan, tilt, 1);
    processor.ProcessImage();
  }
  Bytes At(int column, int row) { return PixelAt(processor._outputData, column, row, 3); }

  ImageProcessor processor;
};

TEST_F(HandWorkedView, NearestPixels) {
  Render(PrecisionModeOff, false, 0, 0);
  // Centre (i = 0, j = 0): the circle's centre (16, 16).
  EXPECT_EQ(At(4, 4), (Bytes{65, 65, 129}));
  // Right edge (u = 12, v = 0): dx = 96 / sqrt(208) = 6.656 -> (22, 16).
  EXPECT_EQ(At(7, 4), (Bytes{89, 65, 153}));
  // (u, v) = (4, 4): 32 / sqrt(96) = 3.266 -> (19, 19).
  EXPECT_EQ(At(5, 5), (Bytes{77, 77, 153}));
  // Top-left corner (u, v) = (-16, -16): -16 x 8 / 24 = -5.333, truncated to -5 -> (11, 11).
  EXPECT_EQ(At(0, 0), (Bytes{45, 45, 89}));
}

TEST_F(HandWorkedView, BilinearPixels) {
  Render(PrecisionModeOn, false, 0, 0);
  EXPECT_EQ(At(4, 4), (Bytes{65, 65, 129}));
  // fx = 0.656: 89 + 2.63, 65, 153 + 2.63.
  EXPECT_EQ(At(7, 4), (Bytes{91, 65, 155}));
  // fx = fy = 0.266: 77 + 1.06, 77 + 1.06, 153 + 2.13.
  EXPECT_EQ(At(5, 5), (Bytes{78, 78, 155}));
  // dx = -5.333 lies at x = 11 with fraction dx - floor(dx) = 0.667: 45 + 2.67, 45 + 2.67, 89 + 5.33.
  EXPECT_EQ(At(0, 0), (Bytes{47, 47, 94}));
}

TEST_F(HandWorkedView, InversionTurnsTheViewHalfWayRound) {
  Render(PrecisionModeOff, true, 0, 0);
  // Output row H/2 - j - 1 and column tables read at W/2 - i - 1: pixel (c, r) shows what
  // (7 - c, 7 - r) shows without inversion.
  EXPECT_EQ(At(3, 3), (Bytes{65, 65, 129}));
  EXPECT_EQ(At(0, 3), (Bytes{89, 65, 153}));
  EXPECT_EQ(At(2, 2), (Bytes{77, 77, 153}));
  EXPECT_EQ(At(7, 7), (Bytes{45, 45, 89}));
}

// Edge case: SetTilt(90) is accepted and tilts the virtual camera by 30 degrees.
TEST_F(HandWorkedView, TiltNinetyLooksThirtyDegreesDown) {
  Render(PrecisionModeOff, false, 0, 90);
  EXPECT_EQ(processor.GetTilt(), 90.0);
  // Column u = 0, row v = 4 with t = 30 degrees: C = -4 cos t + 2 x 8 sin t = 4.536,
  // s = 8 / sqrt(16 + 64) = 0.894, dy = -4.057 -> (16, 12). (Tilted by the full 90 degrees the
  // same ray would land at dy = -14.3, outside the circle.)
  EXPECT_EQ(At(4, 5), (Bytes{65, 49, 113}));
  // Row v = -16: -16 sin t + 8 cos t < 0, the row faces away from the lens and is black.
  for (int column = 0; column < 8; ++column) {
    EXPECT_EQ(At(column, 0), (Bytes{0, 0, 0})) << "column " << column;
  }
  // Every pixel agrees with the formulas evaluated for a 30-degree tilt.
  const ImageProcessorParams& p = processor.GetParameters();
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 8; ++column) {
      const Sample s = ViewSample(p, 0, 90, 1, column, row);
      EXPECT_EQ(At(column, row), ExpectedPixel(LinearFrame(), 96, 3, p, s, false)) << column << "," << row;
    }
  }
}

TEST(ViewRenderTest, SourceOnTheLastInputColumnAndRowIsCopiedNotMixed) {
  // The circle's centre is the input's bottom-right pixel; the centre output pixel samples it
  // exactly, and there is no right or lower neighbour to mix with.
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(32, 32, 24, 31, 31, 8, 8, 8, 0, 0);
  p.OutputImagePrecisionMode = PrecisionModeOn;
  processor.SetParameters(p);
  LoadFrame(processor._inputData, LinearFrame());
  processor.ProcessImage();
  EXPECT_EQ(PixelAt(processor._outputData, 4, 4, 3), (Bytes{125, 125, 249}));
  // (u, v) = (-4, 0): dx = -32 / sqrt(80) = -3.578 -> x = 28 with fraction 0.422, y = 31 is the
  // last row: copied although the mode is bilinear.
  EXPECT_EQ(PixelAt(processor._outputData, 3, 4, 3), (Bytes{113, 125, 237}));
}

// Byte-exact comparison of every output pixel with the formulas, for 24- and 32-bit pixels,
// with and without inversion, nearest and bilinear, on a centred and an off-centre circle.
class ViewReferenceTest : public ::testing::TestWithParam<std::tuple<int, bool, int, int>> {};

TEST_P(ViewReferenceTest, EveryPixelFollowsTheFormulas) {
  const int bits = std::get<0>(GetParam());
  const bool invert = std::get<1>(GetParam());
  const ImageProcessorPrecisionMode mode = static_cast<ImageProcessorPrecisionMode>(std::get<2>(GetParam()));
  const int centerX = std::get<3>(GetParam());
  const int b = bits / 8;
  const int inW = 40, inH = 30, outW = 10, outH = 6;
  const double pan = 30, tilt = 45, zoom = 0.8;

  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(inW, inH, bits, centerX, 15, 14, outW, outH, 0, 0);
  p.OutputImageInvert = invert;
  p.OutputImagePrecisionMode = mode;
  processor.SetParameters(p);
  const Bytes frame = MakeFrame(inW, inH, b, inW * b);
  ImageData input;
  input.Borrow(const_cast<unsigned char*>(frame.data()), inW, inH, inW * b, bits);
  processor.InputImage(input);
  processor.SetPanTiltZoom(pan, tilt, zoom);
  processor.ProcessImage();
  ImageData output;
  processor.OutputImage(output);
  ASSERT_EQ(output.Width, outW);
  ASSERT_EQ(output.Stride, outW * b);

  int copied = 0, mixed = 0, outsideCircle = 0, outsideRectangle = 0;
  for (int row = 0; row < outH; ++row) {
    for (int column = 0; column < outW; ++column) {
      const Sample s = ViewSample(p, pan, tilt, zoom, column, row);
      const Bytes expected = ExpectedPixel(frame, inW * b, b, p, s, mode == PrecisionModeOn);
      EXPECT_EQ(PixelAt(output, column, row, b), expected) << "pixel " << column << "," << row;
      if (s.HasSource) {
        (mode == PrecisionModeOn && s.X < inW - 1 && s.Y < inH - 1 ? mixed : copied) += 1;
      } else if (s.OutsideCircle) {
        // Black although the ray would still land inside the input rectangle.
        const int x = centerX + static_cast<int>(s.Dx), y = 15 + static_cast<int>(s.Dy);
        if (x >= 0 && y >= 0 && x < inW && y < inH) {
          ++outsideCircle;
          EXPECT_EQ(PixelAt(output, column, row, b), Bytes(b, 0));
        }
      } else {
        ++outsideRectangle;
      }
    }
  }
  // The configuration reaches every kind of pixel the test means to check.
  EXPECT_GT(copied + mixed, 0);
  EXPECT_GT(outsideCircle, 0);
  if (mode == PrecisionModeOn) {
    EXPECT_GT(mixed, 0);
  }
  if (centerX < 14) {
    EXPECT_GT(outsideRectangle, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(AllLayouts, ViewReferenceTest,
                         ::testing::Combine(::testing::Values(24, 32), ::testing::Bool(),
                                            ::testing::Values(static_cast<int>(PrecisionModeOff),
                                                              static_cast<int>(PrecisionModeOn)),
                                            ::testing::Values(20, 6)));

TEST(ViewRenderTest, OddSizesLeaveTheLastColumnAndRowUntouchedOnEveryFrame) {
  // Columns run from -W/2 to W/2 - 1 and rows from -H/2 to H/2 - 1: a 7 x 5 view draws 6 x 4.
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(28, 20, 24, 14, 10, 9, 7, 5, 0, 0);
  p.UseOutputImageMapCache = true;
  p.OutputImagePrecisionMode = PrecisionModeAuto;
  processor.SetParameters(p);
  LoadFrame(processor._inputData, MakeFrame(28, 20, 3, 84));
  std::memset(processor._outputData.Data, 0xCD, 5 * 21);
  for (int frame = 0; frame < 2; ++frame) {
    processor.ProcessImage();
    for (int row = 0; row < 5; ++row) {
      EXPECT_EQ(PixelAt(processor._outputData, 6, row, 3), Bytes(3, 0xCD)) << "frame " << frame;
    }
    for (int column = 0; column < 7; ++column) {
      EXPECT_EQ(PixelAt(processor._outputData, column, 4, 3), Bytes(3, 0xCD)) << "frame " << frame;
    }
    EXPECT_NE(PixelAt(processor._outputData, 3, 2, 3), Bytes(3, 0xCD));
  }
}

TEST(ViewRenderTest, ARadiusOfZeroGivesABlackView) {
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(16, 16, 24, 8, 8, 0, 4, 4, 0, 0);
  processor.SetParameters(p);
  LoadFrame(processor._inputData, MakeFrame(16, 16, 3, 48));
  std::memset(processor._outputData.Data, 0xCD, 48);
  processor.ProcessImage();
  for (int k = 0; k < 48; ++k) EXPECT_EQ(processor._outputData.Data[k], 0) << k;
}

TEST(ViewRenderTest, AnInfiniteZoomSeesNothing) {
  // F is infinite: s = R / sqrt(inf) = 0 while B or C is infinite or NaN, so no offset is a
  // number and every pixel is black.
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(16, 16, 24, 8, 8, 6, 4, 4, 0, 0);
  p.OutputImagePrecisionMode = PrecisionModeOn;
  processor.SetParameters(p);
  LoadFrame(processor._inputData, MakeFrame(16, 16, 3, 48));
  std::memset(processor._outputData.Data, 0xCD, 48);
  processor.SetPanTiltZoom(10, 10, std::numeric_limits<double>::infinity());
  processor.ProcessImage();
  for (int k = 0; k < 48; ++k) EXPECT_EQ(processor._outputData.Data[k], 0) << k;
}

}  // namespace
