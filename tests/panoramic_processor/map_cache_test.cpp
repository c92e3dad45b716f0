#include <gtest/gtest.h>

#include <vector>

#include "ImageProcessor.h"
#include "panoramic_reference.h"

namespace {

using namespace panoramic_test;
typedef std::vector<unsigned char> Bytes;

const int kInW = 40, kInH = 30, kOutW = 10, kOutH = 6, kPanoW = 12, kPanoH = 5;

class MapCacheTest : public ::testing::Test {
protected:
  void Configure(ImageProcessorPrecisionMode mode, bool cached, int bits = 24) {
    b = bits / 8;
    params = OwnedParams(kInW, kInH, bits, 20, 15, 14, kOutW, kOutH, kPanoW, kPanoH);
    params.OutputImagePrecisionMode = mode;
    params.OutputPanoramaImagePrecisionMode = mode;
    params.UseOutputImageMapCache = cached;
    params.UseOutputPanoramaImageMapCache = cached;
    processor.SetParameters(params);
    frame = MakeFrame(kInW, kInH, b, kInW * b);
    LoadFrame(processor._inputData, frame);
  }

  // The whole view as the formulas give it, nearest or bilinear.
  Bytes ExpectedView(double pan, double tilt, double zoom, bool bilinear) const {
    Bytes out;
    for (int row = 0; row < kOutH; ++row) {
      for (int column = 0; column < kOutW; ++column) {
        const Bytes pixel = ExpectedPixel(frame, kInW * b, b, params,
                                          ViewSample(params, pan, tilt, zoom, column, row), bilinear);
        out.insert(out.end(), pixel.begin(), pixel.end());
      }
    }
    return out;
  }
  Bytes ExpectedPanorama(bool bilinear) const {
    Bytes out;
    for (int row = 0; row < kPanoH; ++row) {
      for (int column = 0; column < kPanoW; ++column) {
        const Bytes pixel = ExpectedPixel(frame, kInW * b, b, params, PanoramaSample(params, column, row), bilinear);
        out.insert(out.end(), pixel.begin(), pixel.end());
      }
    }
    return out;
  }
  Bytes View() const {
    const ImageData& o = processor._outputData;
    return Bytes(o.Data, o.Data + o.ByteCount());
  }
  Bytes Panorama() const {
    const ImageData& o = processor._outputPanoramaData;
    return Bytes(o.Data, o.Data + o.ByteCount());
  }

  ImageProcessor processor;
  ImageProcessorParams params;
  Bytes frame;
  int b = 3;
};

// Edge case: with PrecisionModeAuto and caching on, the first ProcessImage after a pan change
// copies nearest pixels and an identical second call interpolates.
TEST_F(MapCacheTest, AutoCopiesNearestWhileBuildingAndInterpolatesOnReuse) {
  Configure(PrecisionModeAuto, true);
  // The two results really differ for this view, so the test can tell them apart.
  ASSERT_NE(ExpectedView(25, 30, 0.9, false), ExpectedView(25, 30, 0.9, true));
  ASSERT_NE(ExpectedView(-40, 30, 0.9, false), ExpectedView(-40, 30, 0.9, true));

  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, false));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));

  processor.SetPan(-40);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(-40, 30, 0.9, false));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(-40, 30, 0.9, true));
}

TEST_F(MapCacheTest, AutoFor32BitPixelsAndInvertedViews) {
  Configure(PrecisionModeAuto, true, 32);
  params.OutputImageInvert = true;
  processor.SetParameters(params);
  LoadFrame(processor._inputData, frame);
  processor.SetPanTiltZoom(10, -20, 1.2);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(10, -20, 1.2, false));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(10, -20, 1.2, true));
}

TEST_F(MapCacheTest, AChangeOfTiltOrZoomAlsoRebuildsTheMap) {
  Configure(PrecisionModeAuto, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  processor.ProcessImage();
  processor.SetTilt(35);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 35, 0.9, false));
  processor.SetZoom(1.1);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 35, 1.1, false));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 35, 1.1, true));
  EXPECT_TRUE(processor.PrivateData().ViewMapValid);
  EXPECT_EQ(processor.PrivateData().MapPan, 25.0);
  EXPECT_EQ(processor.PrivateData().MapTilt, 35.0);
  EXPECT_EQ(processor.PrivateData().MapZoom, 1.1);
}

TEST_F(MapCacheTest, SettingTheSameValuesAgainKeepsTheMap) {
  Configure(PrecisionModeAuto, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));
}

TEST_F(MapCacheTest, AutoWithoutCachingAlwaysCopiesNearest) {
  Configure(PrecisionModeAuto, false);
  processor.SetPanTiltZoom(25, 30, 0.9);
  for (int call = 0; call < 3; ++call) {
    processor.ProcessImage();
    EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, false));
    processor.ProcessPanoramaImage();
    EXPECT_EQ(Panorama(), ExpectedPanorama(false));
  }
  EXPECT_FALSE(processor.PrivateData().ViewMapValid);
  EXPECT_EQ(processor.PrivateData().ViewMap, nullptr);
}

TEST_F(MapCacheTest, OnInterpolatesWhenBuildingAndWhenReusing) {
  Configure(PrecisionModeOn, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));
  processor.ProcessPanoramaImage();
  EXPECT_EQ(Panorama(), ExpectedPanorama(true));
  processor.ProcessPanoramaImage();
  EXPECT_EQ(Panorama(), ExpectedPanorama(true));
}

TEST_F(MapCacheTest, OffCopiesNearestWhenBuildingAndWhenReusing) {
  Configure(PrecisionModeOff, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, false));
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, false));
  EXPECT_TRUE(processor.PrivateData().ViewMapValid);
}

TEST_F(MapCacheTest, AReusedMapFollowsANewFrame) {
  Configure(PrecisionModeAuto, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  for (unsigned char& byte : frame) byte = static_cast<unsigned char>(byte % 200 + 50);
  LoadFrame(processor._inputData, frame);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, true));
}

TEST_F(MapCacheTest, TheViewMapHoldsSourceColumnAndRowOrAllOnes) {
  Configure(PrecisionModeOff, true);
  processor.SetPanTiltZoom(25, 90, 0.5);
  processor.ProcessImage();
  const ImageProcessorPrivateData& tables = processor.PrivateData();
  int none = 0, some = 0;
  for (int row = 0; row < kOutH; ++row) {
    for (int column = 0; column < kOutW; ++column) {
      const Sample s = ViewSample(params, 25, 90, 0.5, column, row);
      const std::uint32_t entry = tables.ViewMap[row * kOutW + column];
      if (s.HasSource) {
        ++some;
        EXPECT_EQ(entry, static_cast<std::uint32_t>(s.X) | (static_cast<std::uint32_t>(s.Y) << 16));
      } else {
        ++none;
        EXPECT_EQ(entry, 0xFFFFFFFFu);
      }
    }
  }
  EXPECT_GT(none, 0);
  EXPECT_GT(some, 0);
}

TEST_F(MapCacheTest, ThePanoramaMapIsBuiltOnceAndReusedWhateverThePan) {
  Configure(PrecisionModeAuto, true);
  ASSERT_NE(ExpectedPanorama(false), ExpectedPanorama(true));
  processor.ProcessPanoramaImage();
  EXPECT_EQ(Panorama(), ExpectedPanorama(false));
  EXPECT_TRUE(processor.PrivateData().PanoramaMapValid);
  processor.SetPanTiltZoom(90, 45, 3);
  processor.ProcessPanoramaImage();
  EXPECT_EQ(Panorama(), ExpectedPanorama(true));
}

TEST_F(MapCacheTest, SetParametersInvalidatesBothMaps) {
  Configure(PrecisionModeAuto, true);
  processor.SetPanTiltZoom(25, 30, 0.9);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  ASSERT_TRUE(processor.PrivateData().ViewMapValid);
  ASSERT_TRUE(processor.PrivateData().PanoramaMapValid);
  processor.SetParameters(params);
  EXPECT_FALSE(processor.PrivateData().ViewMapValid);
  EXPECT_FALSE(processor.PrivateData().PanoramaMapValid);
  EXPECT_EQ(processor.PrivateData().MapPan, 0.0);
  EXPECT_EQ(processor.PrivateData().MapTilt, 0.0);
  EXPECT_EQ(processor.PrivateData().MapZoom, 0.0);
  // The owned input was allocated afresh: load the frame again. The next calls build again.
  LoadFrame(processor._inputData, frame);
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(25, 30, 0.9, false));
  processor.ProcessPanoramaImage();
  EXPECT_EQ(Panorama(), ExpectedPanorama(false));
}

TEST_F(MapCacheTest, ARowFacingAwayStaysBlackWhenTheMapIsReused) {
  Configure(PrecisionModeAuto, true);
  // Tilt 90 (30 degrees) and a short focal length: row v = -15 gives -7.5 + 1.4 x 0.87 < 0.
  processor.SetPanTiltZoom(0, 90, 0.1);
  processor.ProcessImage();
  processor.ProcessImage();
  EXPECT_EQ(View(), ExpectedView(0, 90, 0.1, true));
  for (int column = 0; column < kOutW; ++column) {
    EXPECT_EQ(PixelAt(processor._outputData, column, 0, 3), Bytes(3, 0));
    EXPECT_EQ(processor.PrivateData().ViewMap[column], 0xFFFFFFFFu);
  }
}

}  // namespace
