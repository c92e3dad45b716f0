// BT.601 limited-range conversion: the reference values are those of the standard's own tables
// (black 16/128/128, white 235/128/128, the primaries' well-known codes).
#include "yuv.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace dewarp_tool {
namespace {

struct Reference {
  int r, g, b, y, u, v;
};

TEST(Yuv, PrimariesAndGreysMatchTheStandardCodes) {
  const Reference references[] = {
      {0, 0, 0, 16, 128, 128},     {255, 255, 255, 235, 128, 128}, {255, 0, 0, 81, 90, 240},
      {0, 255, 0, 145, 54, 34},    {0, 0, 255, 41, 240, 110},      {255, 255, 0, 210, 16, 146},
      {0, 255, 255, 170, 166, 16}, {255, 0, 255, 106, 202, 222}};
  for (const Reference& c : references) {
    int y, u, v;
    RgbToYuv(c.r, c.g, c.b, y, u, v);
    EXPECT_EQ(c.y, y) << c.r << "," << c.g << "," << c.b;
    EXPECT_EQ(c.u, u) << c.r << "," << c.g << "," << c.b;
    EXPECT_EQ(c.v, v) << c.r << "," << c.g << "," << c.b;
  }
}

TEST(Yuv, CodesOfThePrimariesDecodeToThePrimaries) {
  int r, g, b;
  YuvToRgb(81, 90, 240, r, g, b);
  EXPECT_NEAR(255, r, 1);
  EXPECT_NEAR(0, g, 1);
  EXPECT_NEAR(0, b, 1);
  YuvToRgb(16, 128, 128, r, g, b);
  EXPECT_EQ(0, r + g + b);
  YuvToRgb(235, 128, 128, r, g, b);
  EXPECT_EQ(255 * 3, r + g + b);
}

TEST(Yuv, RoundTripStaysWithinQuantisation) {
  // Limited range has fewer steps than full range: at most about 1.2 codes per step each way.
  for (int r = 0; r < 256; r += 17) {
    for (int g = 0; g < 256; g += 17) {
      for (int b = 0; b < 256; b += 17) {
        int y, u, v, r2, g2, b2;
        RgbToYuv(r, g, b, y, u, v);
        YuvToRgb(y, u, v, r2, g2, b2);
        EXPECT_LE(std::abs(r - r2), 3);
        EXPECT_LE(std::abs(g - g2), 3);
        EXPECT_LE(std::abs(b - b2), 3);
      }
    }
  }
}

TEST(Yuv, ChromaIsTheRoundedAverageOfEachBlock) {
  RgbImage image(4, 2);
  // Left block: two red and two blue pixels; right block: four greys.
  const int colours[8][3] = {{255, 0, 0}, {0, 0, 255}, {128, 128, 128}, {128, 128, 128},
                             {0, 0, 255}, {255, 0, 0}, {128, 128, 128}, {128, 128, 128}};
  for (int i = 0; i < 8; ++i) {
    std::uint8_t* p = image.At(i % 4, i / 4);
    for (int k = 0; k < 3; ++k) p[k] = static_cast<std::uint8_t>(colours[i][k]);
  }
  const YuvFrame frame = ToYuv420(image);
  ASSERT_EQ(12u, frame.data.size());
  EXPECT_EQ(81, frame.Y()[0]);
  EXPECT_EQ(41, frame.Y()[1]);
  EXPECT_EQ(41, frame.Y()[4]);
  EXPECT_EQ((90 + 240 + 1) / 2, frame.U()[0]);  // (90+240+240+90)/4 = 165
  EXPECT_EQ((240 + 110 + 1) / 2, frame.V()[0]);  // (240+110+110+240)/4 = 175
  EXPECT_EQ(128, frame.U()[1]);
  EXPECT_EQ(128, frame.V()[1]);
}

TEST(Yuv, FramePlanesFollowTheYPlane) {
  YuvFrame frame(640, 480);
  EXPECT_EQ(460800u, frame.data.size());
  EXPECT_EQ(307200, frame.U() - frame.Y());
  EXPECT_EQ(384000, frame.V() - frame.Y());
}

}  // namespace
}  // namespace dewarp_tool
