#include <gtest/gtest.h>

#include "ImageProcessor.h"

namespace {

// Two rows of two 3-byte pixels, stride 8 (two bytes of padding per row).
//   row 0: (10, 100, 200) (20, 110, 210)
//   row 1: (30, 120, 220) (40, 130, 230)
const unsigned char kImage[16] = {10, 100, 200, 20, 110, 210, 0, 0,
                                  30, 120, 220, 40, 130, 230, 0, 0};

TEST(GetAveragePixelValueTest, NoFractionGivesThePixelItself) {
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 0.0f, 0.0f), 10);
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 2, 0.0f, 0.0f), 200);
}

TEST(GetAveragePixelValueTest, FullFractionsGiveTheNeighbours) {
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 1.0f, 0.0f), 20);
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 0.0f, 1.0f), 30);
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 1, 1.0f, 1.0f), 130);
}

TEST(GetAveragePixelValueTest, HalfwayIsTheMeanOfTheFour) {
  // (10 + 20 + 30 + 40) / 4 = 25; (200 + 210 + 220 + 230) / 4 = 215.
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 0.5f, 0.5f), 25);
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 2, 0.5f, 0.5f), 215);
}

TEST(GetAveragePixelValueTest, TheResultIsTruncated) {
  // 10 x 0.75 + 20 x 0.25 = 12.5, truncated to 12.
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 0.25f, 0.0f), 12);
  // 100 x 0.75 + 120 x 0.25 = 105.
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 1, 0.0f, 0.25f), 105);
  // 10 x 0.5 x 0.75 + 20 x 0.5 x 0.25 + 30 x 0.5 x 0.75 + 40 x 0.5 x 0.25 = 3.75 + 2.5 + 11.25 + 5 = 22.5
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(kImage, 8, 3, 0, 0, 0, 0.25f, 0.5f), 22);
}

TEST(GetAveragePixelValueTest, RightIsOnePixelOnAndBelowIsOneStrideOn) {
  // Four-byte pixels, stride 12: the right neighbour is 4 bytes on, the lower one 12.
  unsigned char image[24] = {};
  image[1] = 8;        // (0, 0) channel 1
  image[5] = 16;       // (1, 0) channel 1
  image[13] = 32;      // (0, 1) channel 1
  image[17] = 64;      // (1, 1) channel 1
  // 8 x 0.25 + 16 x 0.25 + 32 x 0.25 + 64 x 0.25 = 30
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(image, 12, 4, 0, 0, 1, 0.5f, 0.5f), 30);
  // From pixel (1, 0): itself 16, right (2, 0) = 0, below (1, 1) = 64, below right 0.
  EXPECT_EQ(ImageProcessor::GetAveragePixelValue(image, 12, 4, 1, 0, 1, 0.0f, 0.5f), 40);
}

}  // namespace
