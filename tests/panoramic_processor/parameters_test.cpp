#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <vector>

#include "ImageProcessor.h"
#include "panoramic_reference.h"

namespace {

using namespace panoramic_test;

ImageProcessorParams SampleParams() {
  ImageProcessorParams p = OwnedParams(64, 48, 24, 30, 20, 18, 16, 12, 20, 8);
  p.OutputImageStride = 52;          // padded rows
  p.OutputPanoramaImageStride = 64;
  p.UseOutputImageMapCache = true;
  p.UseOutputPanoramaImageMapCache = true;
  p.OutputImagePrecisionMode = PrecisionModeAuto;
  p.OutputPanoramaImagePrecisionMode = PrecisionModeOn;
  p.OutputImageInvert = true;
  return p;
}

void ExpectSize(const ImageData& image, int width, int height, int stride, int bits) {
  EXPECT_EQ(image.Width, width);
  EXPECT_EQ(image.Height, height);
  EXPECT_EQ(image.Stride, stride);
  EXPECT_EQ(image.BitsPerPixel, bits);
}

TEST(SetParametersTest, ImagesTakeTheirSizesAndOutputsTheInputsPixelSize) {
  ImageProcessor processor;
  processor.SetParameters(SampleParams());
  ExpectSize(processor._inputData, 64, 48, 192, 24);
  ExpectSize(processor._outputData, 16, 12, 52, 24);
  ExpectSize(processor._outputPanoramaData, 20, 8, 64, 24);
}

TEST(SetParametersTest, OwnDataAllocatesHeightTimesStride) {
  ImageProcessor processor;
  processor.SetParameters(SampleParams());
  const ImageData* images[3] = {&processor._inputData, &processor._outputData, &processor._outputPanoramaData};
  const std::size_t bytes[3] = {48 * 192, 12 * 52, 8 * 64};
  for (int k = 0; k < 3; ++k) {
    ASSERT_NE(images[k]->Data, nullptr) << k;
    EXPECT_TRUE(images[k]->OwnsData) << k;
    std::memset(images[k]->Data, 0x11, bytes[k]);  // the whole extent exists
  }
}

TEST(SetParametersTest, GetParametersReturnsTheWholeRecord) {
  ImageProcessor processor;
  const ImageProcessorParams p = SampleParams();
  processor.SetParameters(p);
  const ImageProcessorParams& q = processor.GetParameters();
  EXPECT_EQ(q.InputImageWidth, 64);
  EXPECT_EQ(q.InputImageHeight, 48);
  EXPECT_EQ(q.InputImageStride, 192);
  EXPECT_EQ(q.InputImageBitsPerPixel, 24);
  EXPECT_EQ(q.InputImageCenterX, 30);
  EXPECT_EQ(q.InputImageCenterY, 20);
  EXPECT_EQ(q.InputImageRadius, 18);
  EXPECT_TRUE(q.InputImageOwnData);
  EXPECT_EQ(q.OutputImageWidth, 16);
  EXPECT_EQ(q.OutputImageHeight, 12);
  EXPECT_EQ(q.OutputImageStride, 52);
  EXPECT_TRUE(q.OutputImageOwnData);
  EXPECT_TRUE(q.UseOutputImageMapCache);
  EXPECT_EQ(q.OutputImagePrecisionMode, PrecisionModeAuto);
  EXPECT_TRUE(q.OutputImageInvert);
  EXPECT_EQ(q.OutputPanoramaImageWidth, 20);
  EXPECT_EQ(q.OutputPanoramaImageHeight, 8);
  EXPECT_EQ(q.OutputPanoramaImageStride, 64);
  EXPECT_TRUE(q.OutputPanoramaImageOwnData);
  EXPECT_TRUE(q.UseOutputPanoramaImageMapCache);
  EXPECT_EQ(q.OutputPanoramaImagePrecisionMode, PrecisionModeOn);
  EXPECT_FALSE(q.OutputPanoramaImageInvert);
}

TEST(SetParametersTest, OwnedDataIsFreedWhenNoLongerOwned) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  processor.SetParameters(p);
  p.InputImageOwnData = false;
  p.OutputImageOwnData = false;
  p.OutputPanoramaImageOwnData = false;
  processor.SetParameters(p);
  EXPECT_EQ(processor._inputData.Data, nullptr);
  EXPECT_EQ(processor._outputData.Data, nullptr);
  EXPECT_EQ(processor._outputPanoramaData.Data, nullptr);
  EXPECT_FALSE(processor._inputData.OwnsData);
  ExpectSize(processor._outputData, 16, 12, 52, 24);
}

TEST(SetParametersTest, OwnDataAllocatesAfreshEachTime) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  processor.SetParameters(p);
  p.OutputImageHeight = 20;
  processor.SetParameters(p);
  ASSERT_TRUE(processor._outputData.OwnsData);
  std::memset(processor._outputData.Data, 0x22, 20 * 52);
}

TEST(SetParametersTest, ABorrowedBufferIsKeptWhileItsSizeHolds) {
  std::vector<unsigned char> buffer(12 * 52, 0x33);
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  p.OutputImageOwnData = false;
  processor.SetParameters(p);
  processor._outputData.Borrow(buffer.data(), 16, 12, 52, 24);
  processor.SetParameters(p);
  EXPECT_EQ(processor._outputData.Data, buffer.data());
  EXPECT_FALSE(processor._outputData.OwnsData);
  // Other sizes: the buffer is let go rather than overrun, and left as it was.
  p.OutputImageHeight = 24;
  processor.SetParameters(p);
  EXPECT_EQ(processor._outputData.Data, nullptr);
  for (unsigned char byte : buffer) EXPECT_EQ(byte, 0x33);
}

TEST(SetParametersTest, OwnDataReplacesABorrowedBuffer) {
  std::vector<unsigned char> buffer(48 * 192, 0x44);
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  p.InputImageOwnData = false;
  processor.SetParameters(p);
  processor._inputData.Borrow(buffer.data(), 64, 48, 192, 24);
  p.InputImageOwnData = true;
  processor.SetParameters(p);
  EXPECT_NE(processor._inputData.Data, buffer.data());
  EXPECT_TRUE(processor._inputData.OwnsData);
  for (unsigned char byte : buffer) ASSERT_EQ(byte, 0x44);
}

TEST(SetParametersTest, TablesAreSizedForTheOutputsAndZeroFilled) {
  ImageProcessor processor;
  processor.SetParameters(SampleParams());
  const ImageProcessorPrivateData& t = processor.PrivateData();
  EXPECT_EQ(t.ColumnCount, 16u);
  ASSERT_NE(t.ColumnSquares, nullptr);
  ASSERT_NE(t.ColumnPanCosines, nullptr);
  ASSERT_NE(t.ColumnPanSines, nullptr);
  EXPECT_EQ(t.ViewMapCount, 16u * 12u);
  EXPECT_EQ(t.PanoramaMapCount, 20u * 8u);
  for (std::size_t k = 0; k < 16; ++k) {
    EXPECT_EQ(t.ColumnSquares[k], 0.0);
    EXPECT_EQ(t.ColumnPanCosines[k], 0.0);
    EXPECT_EQ(t.ColumnPanSines[k], 0.0);
  }
  for (std::size_t k = 0; k < 16 * 12; ++k) {
    EXPECT_EQ(t.ViewMap[k], 0u);
    EXPECT_EQ(t.ViewFractions[2 * k], 0.0f);
    EXPECT_EQ(t.ViewFractions[2 * k + 1], 0.0f);
  }
  for (std::size_t k = 0; k < 20 * 8; ++k) {
    EXPECT_EQ(t.PanoramaMap[k], 0u);
    EXPECT_EQ(t.PanoramaFractions[2 * k + 1], 0.0f);
  }
  EXPECT_FALSE(t.ViewMapValid);
  EXPECT_FALSE(t.PanoramaMapValid);
}

TEST(SetParametersTest, MapTablesExistOnlyWithTheirCacheFlag) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  p.UseOutputImageMapCache = false;
  processor.SetParameters(p);
  EXPECT_EQ(processor.PrivateData().ViewMap, nullptr);
  EXPECT_EQ(processor.PrivateData().ViewFractions, nullptr);
  EXPECT_NE(processor.PrivateData().PanoramaMap, nullptr);
  p.UseOutputImageMapCache = true;
  p.UseOutputPanoramaImageMapCache = false;
  processor.SetParameters(p);
  EXPECT_NE(processor.PrivateData().ViewMap, nullptr);
  EXPECT_EQ(processor.PrivateData().PanoramaMap, nullptr);
  EXPECT_EQ(processor.PrivateData().PanoramaFractions, nullptr);
  EXPECT_EQ(processor.PrivateData().ColumnCount, 16u);
}

TEST(SetParametersTest, AnElementCountBeyondTheAddressSpaceFailsToAllocate) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  processor.SetParameters(p);
  processor.SetPanTiltZoom(10, 10, 1);
  processor.ProcessImage();
  ImageProcessorParams huge = p;
  huge.OutputImageOwnData = false;
  huge.OutputImageWidth = INT_MAX;
  huge.OutputImageHeight = INT_MAX;
  EXPECT_THROW(processor.SetParameters(huge), std::bad_alloc);
  // Nothing is left half-built: no tables, no valid map, and rendering does nothing.
  const ImageProcessorPrivateData& t = processor.PrivateData();
  EXPECT_EQ(t.ColumnSquares, nullptr);
  EXPECT_EQ(t.ViewMap, nullptr);
  EXPECT_EQ(t.PanoramaMap, nullptr);
  EXPECT_FALSE(t.ViewMapValid);
  std::vector<unsigned char> buffer(64, 0x55);
  processor._outputData.Borrow(buffer.data(), 4, 4, 16, 32);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
  for (unsigned char byte : buffer) EXPECT_EQ(byte, 0x55);
  // A sensible configuration works again afterwards.
  processor.SetParameters(p);
  EXPECT_EQ(processor.PrivateData().ColumnCount, 16u);
}

TEST(SetParametersTest, AnImageBeyondTheAddressSpaceFailsToAllocate) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  p.InputImageHeight = INT_MAX;
  p.InputImageStride = INT_MAX;
  EXPECT_THROW(processor.SetParameters(p), std::bad_alloc);
  EXPECT_EQ(processor.PrivateData().ColumnSquares, nullptr);
  processor.ProcessImage();
  processor.ProcessPanoramaImage();
}

TEST(ImageCopyTest, InputImageCopiesIntoTheInput) {
  ImageProcessor processor;
  ImageProcessorParams p = SampleParams();
  processor.SetParameters(p);
  unsigned char* owned = processor._inputData.Data;
  std::vector<unsigned char> frame = MakeFrame(64, 48, 3, 192);
  ImageData source;
  source.Borrow(frame.data(), 64, 48, 192, 24);
  processor.InputImage(source);
  EXPECT_EQ(processor._inputData.Data, owned);  // same byte count: copied into place
  EXPECT_EQ(std::memcmp(processor._inputData.Data, frame.data(), frame.size()), 0);
  frame[0] ^= 0xFF;  // a copy, not a reference
  EXPECT_NE(processor._inputData.Data[0], frame[0]);
}

TEST(ImageCopyTest, OutputImagesAreCopiedOut) {
  ImageProcessor processor;
  processor.SetParameters(SampleParams());
  std::memset(processor._outputData.Data, 0x61, 12 * 52);
  std::memset(processor._outputPanoramaData.Data, 0x62, 8 * 64);
  ImageData view, panorama;
  processor.OutputImage(view);
  processor.OutputPanoramaImage(panorama);
  ExpectSize(view, 16, 12, 52, 24);
  ExpectSize(panorama, 20, 8, 64, 24);
  ASSERT_TRUE(view.OwnsData);
  EXPECT_EQ(view.Data[12 * 52 - 1], 0x61);
  EXPECT_EQ(panorama.Data[8 * 64 - 1], 0x62);
  EXPECT_NE(view.Data, processor._outputData.Data);
}

}  // namespace
