#include "yuv.h"

#include <algorithm>
#include <cmath>

namespace dewarp_tool {

namespace {

int ClampByte(double value) {
  const long rounded = std::lround(value);
  return static_cast<int>(std::min(255L, std::max(0L, rounded)));
}

// BT.601 luma weights; limited range scales luma to 219 steps above 16, chroma to 224 steps
// around 128.
constexpr double kR = 0.299;
constexpr double kB = 0.114;
constexpr double kG = 1.0 - kR - kB;

}  // namespace

void RgbToYuv(int r, int g, int b, int& y, int& u, int& v) {
  const double luma = kR * r + kG * g + kB * b;  // 0..255
  y = ClampByte(16.0 + luma * 219.0 / 255.0);
  u = ClampByte(128.0 + (b - luma) / (2.0 * (1.0 - kB)) * 224.0 / 255.0);
  v = ClampByte(128.0 + (r - luma) / (2.0 * (1.0 - kR)) * 224.0 / 255.0);
}

void YuvToRgb(int y, int u, int v, int& r, int& g, int& b) {
  const double luma = (y - 16) * 255.0 / 219.0;
  const double pb = (u - 128) * 255.0 / 224.0;  // (B - Y') / (2 (1 - kB)) in 0..255 units
  const double pr = (v - 128) * 255.0 / 224.0;
  const double red = luma + 2.0 * (1.0 - kR) * pr;
  const double blue = luma + 2.0 * (1.0 - kB) * pb;
  const double green = (luma - kR * red - kB * blue) / kG;
  r = ClampByte(red);
  g = ClampByte(green);
  b = ClampByte(blue);
}

YuvFrame ToYuv420(const RgbImage& image) {
  YuvFrame frame(image.width, image.height);
  const int cw = image.width / 2;
  for (int cy = 0; cy < image.height / 2; ++cy) {
    for (int cx = 0; cx < cw; ++cx) {
      int sumU = 0;
      int sumV = 0;
      for (int dy = 0; dy < 2; ++dy) {
        for (int dx = 0; dx < 2; ++dx) {
          const int x = 2 * cx + dx;
          const int y = 2 * cy + dy;
          const std::uint8_t* p = image.At(x, y);
          int yy, uu, vv;
          RgbToYuv(p[0], p[1], p[2], yy, uu, vv);
          frame.Y()[static_cast<std::size_t>(y) * image.width + x] = static_cast<std::uint8_t>(yy);
          sumU += uu;
          sumV += vv;
        }
      }
      // Rounded average of the block's four chroma samples.
      frame.U()[static_cast<std::size_t>(cy) * cw + cx] = static_cast<std::uint8_t>((sumU + 2) / 4);
      frame.V()[static_cast<std::size_t>(cy) * cw + cx] = static_cast<std::uint8_t>((sumV + 2) / 4);
    }
  }
  return frame;
}

RgbImage ToRgb(const YuvFrame& frame) {
  RgbImage image(frame.width, frame.height);
  const int cw = frame.width / 2;
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const std::size_t c = static_cast<std::size_t>(y / 2) * cw + x / 2;
      int r, g, b;
      YuvToRgb(frame.Y()[static_cast<std::size_t>(y) * frame.width + x], frame.U()[c], frame.V()[c], r, g, b);
      std::uint8_t* p = image.At(x, y);
      p[0] = static_cast<std::uint8_t>(r);
      p[1] = static_cast<std::uint8_t>(g);
      p[2] = static_cast<std::uint8_t>(b);
    }
  }
  return image;
}

}  // namespace dewarp_tool
