#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <vector>

#include "ImageProcessor.h"
#include "panoramic_reference.h"

namespace {

using namespace panoramic_test;
typedef std::vector<unsigned char> Bytes;

// Circle at (16, 16) with radius 10 in the linear 32 x 32 frame, an 8 x 5 strip:
// arc L = trunc(10 x 4.1783) = 41, column step 41 / 8 = 5, row step 10 / 5 = 2.
// Row 0: rho = sin((1 x 0.75 + 0.1) pi / 2) x 10 - 1 = 8.7237; row 4: sin(0.25 pi / 2) x 10 - 1 = 2.8268.
// Column c turns by c x 5 x 1.50376 / 10 radians.
class HandWorkedPanorama : public ::testing::Test {
protected:
  void Render(ImageProcessorPrecisionMode mode, bool invert) {
    ImageProcessorParams p = OwnedParams(32, 32, 24, 16, 16, 10, 0, 0, 8, 5);
    p.OutputPanoramaImagePrecisionMode = mode;
    p.OutputPanoramaImageInvert = invert;
    processor.SetParameters(p);
    LoadFrame(processor._inputData, LinearFrame());
    processor.ProcessPanoramaImage();
  }
  Bytes At(int column, int row) { return PixelAt(processor._outputPanoramaData, column, row, 3); }

  ImageProcessor processor;
};

TEST_F(HandWorkedPanorama, NearestPixels) {
  Render(PrecisionModeOff, false);
  // Row 0, column 0 (angle 0): (8.724, 0) -> (24, 16).
  EXPECT_EQ(At(0, 0), (Bytes{97, 65, 161}));
  // Row 0, column 2 (angle 1.5038): (0.584, 8.704) -> (16, 24).
  EXPECT_EQ(At(2, 0), (Bytes{65, 97, 161}));
  // Row 0, column 4 (angle 3.0075): (-8.645, 1.166) -> (8, 17).
  EXPECT_EQ(At(4, 0), (Bytes{33, 69, 101}));
  // Bottom row, column 0: (2.827, 0) -> (18, 16), near the centre.
  EXPECT_EQ(At(0, 4), (Bytes{73, 65, 137}));
}

TEST_F(HandWorkedPanorama, BilinearPixels) {
  Render(PrecisionModeOn, false);
  EXPECT_EQ(At(0, 0), (Bytes{99, 65, 163}));   // fx 0.724
  EXPECT_EQ(At(2, 0), (Bytes{67, 99, 166}));   // fx 0.584, fy 0.704
  EXPECT_EQ(At(4, 0), (Bytes{34, 69, 103}));   // fx = -8.645 - floor(-8.645) = 0.355, fy 0.166
  EXPECT_EQ(At(0, 4), (Bytes{76, 65, 140}));   // fx 0.827
}

TEST_F(HandWorkedPanorama, InversionFlipsRowsAndColumns) {
  Render(PrecisionModeOff, true);
  EXPECT_EQ(At(7, 4), (Bytes{97, 65, 161}));
  EXPECT_EQ(At(5, 4), (Bytes{65, 97, 161}));
  EXPECT_EQ(At(3, 4), (Bytes{33, 69, 101}));
  EXPECT_EQ(At(7, 0), (Bytes{73, 65, 137}));
}

class PanoramaReferenceTest : public ::testing::TestWithParam<std::tuple<int, bool, int, int>> {};

TEST_P(PanoramaReferenceTest, EveryPixelFollowsTheFormulas) {
  const int bits = std::get<0>(GetParam());
  const bool invert = std::get<1>(GetParam());
  const ImageProcessorPrecisionMode mode = static_cast<ImageProcessorPrecisionMode>(std::get<2>(GetParam()));
  const int centerX = std::get<3>(GetParam());
  const int b = bits / 8;
  const int inW = 40, inH = 30, panoW = 12, panoH = 5;

  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(inW, inH, bits, centerX, 15, 14, 0, 0, panoW, panoH);
  p.OutputPanoramaImageInvert = invert;
  p.OutputPanoramaImagePrecisionMode = mode;
  processor.SetParameters(p);
  const Bytes frame = MakeFrame(inW, inH, b, inW * b);
  LoadFrame(processor._inputData, frame);
  processor.ProcessPanoramaImage();
  ImageData output;
  processor.OutputPanoramaImage(output);
  ASSERT_EQ(output.Height, panoH);

  int copied = 0, mixed = 0, outsideRectangle = 0;
  for (int row = 0; row < panoH; ++row) {
    for (int column = 0; column < panoW; ++column) {
      const Sample s = PanoramaSample(p, column, row);
      EXPECT_EQ(PixelAt(output, column, row, b), ExpectedPixel(frame, inW * b, b, p, s, mode == PrecisionModeOn))
          << "pixel " << column << "," << row;
      if (!s.HasSource) {
        ++outsideRectangle;
      } else {
        (mode == PrecisionModeOn && s.X < inW - 1 && s.Y < inH - 1 ? mixed : copied) += 1;
      }
    }
  }
  EXPECT_GT(copied + mixed, 0);
  if (mode == PrecisionModeOn) {
    EXPECT_GT(mixed, 0);
  }
  if (centerX > 26) {
    EXPECT_GT(outsideRectangle, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(AllLayouts, PanoramaReferenceTest,
                         ::testing::Combine(::testing::Values(24, 32), ::testing::Bool(),
                                            ::testing::Values(static_cast<int>(PrecisionModeOff),
                                                              static_cast<int>(PrecisionModeOn)),
                                            ::testing::Values(20, 33)));

// Edge case: a panorama with radius 0 leaves the output untouched, on every call.
TEST(PanoramaRenderTest, RadiusZeroLeavesTheOutputUntouchedOnEveryCall) {
  for (int cached = 0; cached < 2; ++cached) {
    for (int mode = PrecisionModeOff; mode <= PrecisionModeAuto; ++mode) {
      ImageProcessor processor;
      ImageProcessorParams p = OwnedParams(16, 16, 24, 8, 8, 0, 0, 0, 6, 4);
      p.UseOutputPanoramaImageMapCache = cached != 0;
      p.OutputPanoramaImagePrecisionMode = static_cast<ImageProcessorPrecisionMode>(mode);
      processor.SetParameters(p);
      LoadFrame(processor._inputData, MakeFrame(16, 16, 3, 48));
      std::memset(processor._outputPanoramaData.Data, 0xCD, 4 * 18);
      for (int call = 0; call < 3; ++call) {
        processor.ProcessPanoramaImage();
        for (int k = 0; k < 4 * 18; ++k) {
          ASSERT_EQ(processor._outputPanoramaData.Data[k], 0xCD)
              << "byte " << k << " call " << call << " cached " << cached << " mode " << mode;
        }
      }
      EXPECT_FALSE(processor.PrivateData().PanoramaMapValid);
    }
  }
}

TEST(PanoramaRenderTest, NegativeRadiusAndEmptyStripsDrawNothing) {
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(16, 16, 24, 8, 8, -5, 0, 0, 6, 4);
  processor.SetParameters(p);
  std::memset(processor._outputPanoramaData.Data, 0xCD, 4 * 18);
  processor.ProcessPanoramaImage();
  for (int k = 0; k < 4 * 18; ++k) ASSERT_EQ(processor._outputPanoramaData.Data[k], 0xCD);
  p.InputImageRadius = 5;
  p.OutputPanoramaImageHeight = 0;
  processor.SetParameters(p);
  processor.ProcessPanoramaImage();  // nothing to draw into, nothing happens
  EXPECT_EQ(processor._outputPanoramaData.ByteCount(), 0u);
}

// Edge case: output pixels whose ray leaves the fisheye circle are black in the view, but the
// panorama blacks only pixels outside the input rectangle.
TEST(PanoramaRenderTest, OnlyTheViewBlacksRaysOutsideTheCircle) {
  // A circle of radius 14 centred 7 pixels from the right edge of a 40 x 30 input.
  const int inW = 40, inH = 30, cx = 33, cy = 15, R = 14;
  const Bytes frame = MakeFrame(inW, inH, 3, inW * 3);
  ImageProcessor processor;
  ImageProcessorParams p = OwnedParams(inW, inH, 24, cx, cy, R, 10, 6, 16, 6);
  processor.SetParameters(p);
  LoadFrame(processor._inputData, frame);
  processor.SetPanTiltZoom(-60, 60, 0.7);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();

  // View: a pixel whose ray leaves the circle is black even where the input has a pixel.
  int viewBlackInsideRectangle = 0;
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 10; ++column) {
      const Sample s = ViewSample(p, -60, 60, 0.7, column, row);
      if (!s.OutsideCircle) continue;
      const int x = cx + static_cast<int>(s.Dx), y = cy + static_cast<int>(s.Dy);
      if (x < 0 || y < 0 || x >= inW || y >= inH) continue;
      ++viewBlackInsideRectangle;
      EXPECT_EQ(PixelAt(processor._outputData, column, row, 3), Bytes(3, 0)) << column << "," << row;
    }
  }
  EXPECT_GT(viewBlackInsideRectangle, 0);

  // Panorama: black exactly where the sample leaves the input rectangle, copied elsewhere.
  int black = 0, copied = 0;
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 16; ++column) {
      const Sample s = PanoramaSample(p, column, row);
      const int x = cx + static_cast<int>(s.Dx), y = cy + static_cast<int>(s.Dy);
      const bool inside = x >= 0 && y >= 0 && x < inW && y < inH;
      EXPECT_EQ(s.HasSource, inside);
      const Bytes pixel = PixelAt(processor._outputPanoramaData, column, row, 3);
      if (inside) {
        ++copied;
        EXPECT_EQ(pixel, ExpectedPixel(frame, inW * 3, 3, p, s, false)) << column << "," << row;
        EXPECT_NE(pixel, Bytes(3, 0));
      } else {
        ++black;
        EXPECT_EQ(pixel, Bytes(3, 0)) << column << "," << row;
      }
    }
  }
  EXPECT_GT(black, 0);
  EXPECT_GT(copied, 0);
}

}  // namespace
