#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <vector>

#include "ImageProcessorCommon.h"

namespace {

void ExpectAllZero(const ImageData& image) {
  EXPECT_EQ(image.Width, 0);
  EXPECT_EQ(image.Height, 0);
  EXPECT_EQ(image.Stride, 0);
  EXPECT_EQ(image.BitsPerPixel, 0);
  EXPECT_EQ(image.Data, nullptr);
  EXPECT_FALSE(image.OwnsData);
}

void Shape(ImageData& image, int width, int height, int stride, int bits) {
  image.Width = width;
  image.Height = height;
  image.Stride = stride;
  image.BitsPerPixel = bits;
}

TEST(ImageDataTest, NewImageIsAllZero) {
  ImageData image;
  ExpectAllZero(image);
}

TEST(ImageDataTest, InitDataAllocatesHeightTimesStrideOwnedBytes) {
  ImageData image;
  Shape(image, 5, 4, 16, 24);
  image.InitData();
  ASSERT_NE(image.Data, nullptr);
  EXPECT_TRUE(image.OwnsData);
  EXPECT_EQ(image.ByteCount(), 64u);
  // Every one of the 64 bytes exists (the address sanitizer build checks the extent).
  std::memset(image.Data, 0x5A, 64);
  EXPECT_EQ(image.Data[63], 0x5A);
}

TEST(ImageDataDeathTest, InitDataOnAnImageWithDataEndsTheProcess) {
  EXPECT_DEATH(
      {
        ImageData image;
        Shape(image, 2, 2, 6, 24);
        image.InitData();
        image.InitData();
      },
      "ImageProcessorCommon.*Assertion `Data == __null' failed");
}

TEST(ImageDataDeathTest, InitDataOnABorrowedBufferEndsTheProcess) {
  unsigned char buffer[4] = {0, 0, 0, 0};
  EXPECT_DEATH(
      {
        ImageData image;
        image.Borrow(buffer, 1, 1, 4, 32);
        image.InitData();
      },
      "Assertion `Data == __null' failed");
}

TEST(ImageDataTest, DeleteDataFreesOwnedData) {
  ImageData image;
  Shape(image, 3, 3, 9, 24);
  image.InitData();
  image.DeleteData();
  EXPECT_EQ(image.Data, nullptr);
  EXPECT_FALSE(image.OwnsData);
  EXPECT_EQ(image.Height, 3);  // sizes stay
  image.DeleteData();          // a second call is harmless
  EXPECT_EQ(image.Data, nullptr);
}

TEST(ImageDataTest, DeleteDataLeavesABorrowedBufferAlone) {
  std::vector<unsigned char> buffer(12, 7);
  ImageData image;
  image.Borrow(buffer.data(), 2, 2, 6, 24);
  EXPECT_FALSE(image.OwnsData);
  EXPECT_EQ(image.Data, buffer.data());
  image.DeleteData();
  EXPECT_EQ(image.Data, nullptr);
  EXPECT_FALSE(image.OwnsData);
  EXPECT_EQ(buffer[11], 7);
}

TEST(ImageDataTest, ReInitDataAllocatesForTheCurrentSize) {
  ImageData image;
  Shape(image, 2, 2, 6, 24);
  image.InitData();
  Shape(image, 4, 5, 12, 24);
  image.ReInitData();
  ASSERT_NE(image.Data, nullptr);
  EXPECT_TRUE(image.OwnsData);
  std::memset(image.Data, 1, 60);
}

TEST(ImageDataTest, CopyIntoAnEmptyImageAllocatesAndCopies) {
  ImageData source;
  Shape(source, 2, 3, 8, 32);
  source.InitData();
  for (int k = 0; k < 24; ++k) source.Data[k] = static_cast<unsigned char>(k + 1);
  ImageData copy;
  copy.CopyFrom(source);
  EXPECT_EQ(copy.Width, 2);
  EXPECT_EQ(copy.Height, 3);
  EXPECT_EQ(copy.Stride, 8);
  EXPECT_EQ(copy.BitsPerPixel, 32);
  ASSERT_NE(copy.Data, nullptr);
  EXPECT_NE(copy.Data, source.Data);
  EXPECT_TRUE(copy.OwnsData);
  for (int k = 0; k < 24; ++k) EXPECT_EQ(copy.Data[k], k + 1);
}

TEST(ImageDataTest, CopyWithTheSameByteCountWritesIntoTheExistingBuffer) {
  // 3 rows of 8 bytes and 4 rows of 6 bytes are both 24 bytes: the borrowed buffer is kept.
  ImageData source;
  Shape(source, 2, 3, 8, 32);
  source.InitData();
  std::memset(source.Data, 9, 24);
  std::vector<unsigned char> buffer(24, 0);
  ImageData target;
  target.Borrow(buffer.data(), 2, 4, 6, 24);
  target.CopyFrom(source);
  EXPECT_EQ(target.Data, buffer.data());
  EXPECT_FALSE(target.OwnsData);
  EXPECT_EQ(target.Height, 3);
  EXPECT_EQ(target.Stride, 8);
  EXPECT_EQ(target.BitsPerPixel, 32);
  EXPECT_EQ(buffer[0], 9);
  EXPECT_EQ(buffer[23], 9);
}

TEST(ImageDataTest, CopyWithAnotherByteCountDropsTheBorrowedBufferAndOwnsACopy) {
  ImageData source;
  Shape(source, 4, 4, 12, 24);
  source.InitData();
  std::memset(source.Data, 3, 48);
  std::vector<unsigned char> buffer(6, 0xEE);
  ImageData target;
  target.Borrow(buffer.data(), 1, 2, 3, 24);
  target.CopyFrom(source);
  EXPECT_NE(target.Data, buffer.data());
  EXPECT_TRUE(target.OwnsData);
  EXPECT_EQ(target.Data[47], 3);
  for (unsigned char byte : buffer) EXPECT_EQ(byte, 0xEE);
}

TEST(ImageDataTest, CopyWithAnotherByteCountReplacesOwnedData) {
  ImageData source;
  Shape(source, 4, 4, 12, 24);
  source.InitData();
  std::memset(source.Data, 4, 48);
  ImageData target;
  Shape(target, 1, 1, 3, 24);
  target.InitData();
  target.CopyFrom(source);
  EXPECT_TRUE(target.OwnsData);
  EXPECT_EQ(target.ByteCount(), 48u);
  EXPECT_EQ(target.Data[47], 4);
}

TEST(ImageDataTest, CopyFromItselfChangesNothing) {
  ImageData image;
  Shape(image, 2, 2, 6, 24);
  image.InitData();
  image.Data[5] = 42;
  unsigned char* data = image.Data;
  image.CopyFrom(image);
  EXPECT_EQ(image.Data, data);
  EXPECT_EQ(image.Data[5], 42);
}

TEST(ImageDataTest, NegativeSizesHoldNoBytes) {
  ImageData image;
  Shape(image, -2, -3, -6, 24);
  EXPECT_EQ(image.ByteCount(), 0u);
}

TEST(ImageDataTest, ASizeBeyondTheAddressSpaceFailsToAllocate) {
  ImageData image;
  Shape(image, INT_MAX, INT_MAX, INT_MAX, 8);
  EXPECT_THROW(image.InitData(), std::bad_alloc);
  EXPECT_EQ(image.Data, nullptr);
  EXPECT_FALSE(image.OwnsData);
}

TEST(ImageProcessorParamsTest, NewParametersAreAllZero) {
  ImageProcessorParams p;
  EXPECT_EQ(p.InputImageWidth, 0);
  EXPECT_EQ(p.InputImageHeight, 0);
  EXPECT_EQ(p.InputImageStride, 0);
  EXPECT_EQ(p.InputImageBitsPerPixel, 0);
  EXPECT_EQ(p.InputImageCenterX, 0);
  EXPECT_EQ(p.InputImageCenterY, 0);
  EXPECT_EQ(p.InputImageRadius, 0);
  EXPECT_FALSE(p.InputImageOwnData);
  EXPECT_EQ(p.OutputImageWidth, 0);
  EXPECT_EQ(p.OutputImageHeight, 0);
  EXPECT_EQ(p.OutputImageStride, 0);
  EXPECT_FALSE(p.OutputImageOwnData);
  EXPECT_FALSE(p.UseOutputImageMapCache);
  EXPECT_EQ(p.OutputImagePrecisionMode, PrecisionModeOff);
  EXPECT_FALSE(p.OutputImageInvert);
  EXPECT_EQ(p.OutputPanoramaImageWidth, 0);
  EXPECT_EQ(p.OutputPanoramaImageHeight, 0);
  EXPECT_EQ(p.OutputPanoramaImageStride, 0);
  EXPECT_FALSE(p.OutputPanoramaImageOwnData);
  EXPECT_FALSE(p.UseOutputPanoramaImageMapCache);
  EXPECT_EQ(p.OutputPanoramaImagePrecisionMode, PrecisionModeOff);
  EXPECT_FALSE(p.OutputPanoramaImageInvert);
}

TEST(ImageProcessorParamsTest, PrecisionModesHaveTheirNumbers) {
  EXPECT_EQ(static_cast<int>(PrecisionModeOff), 0);
  EXPECT_EQ(static_cast<int>(PrecisionModeOn), 1);
  EXPECT_EQ(static_cast<int>(PrecisionModeAuto), 2);
}

}  // namespace
