// Pictures in the two forms the tool handles: packed 8-bit RGB (image files, the sample scene,
// the contact sheet) and planar YUV 4:2:0 (the engine's frames and YUV4MPEG2 video), with the
// conversions between them (ITU-R BT.601, limited range: Y 16..235, Cb and Cr 16..240).
#ifndef DEWARP_TOOL_YUV_H
#define DEWARP_TOOL_YUV_H

#include <cstdint>
#include <vector>

namespace dewarp_tool {

struct RgbImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;  // width * height * 3 bytes, rows top to bottom, R G B

  RgbImage() = default;
  RgbImage(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * h * 3, 0) {}
  std::uint8_t* At(int x, int y) { return &pixels[(static_cast<std::size_t>(y) * width + x) * 3]; }
  const std::uint8_t* At(int x, int y) const {
    return &pixels[(static_cast<std::size_t>(y) * width + x) * 3];
  }
};

// One planar 4:2:0 frame, stride equal to the width: the Y plane (width x height), then U and V
// (width/2 x height/2 each). Width and height are even.
struct YuvFrame {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> data;

  YuvFrame() = default;
  YuvFrame(int w, int h) : width(w), height(h), data(FrameSize(w, h), 0) {}
  static std::size_t FrameSize(int w, int h) { return static_cast<std::size_t>(w) * h * 3 / 2; }
  std::uint8_t* Y() { return data.data(); }
  std::uint8_t* U() { return data.data() + static_cast<std::size_t>(width) * height; }
  std::uint8_t* V() { return U() + static_cast<std::size_t>(width / 2) * (height / 2); }
  const std::uint8_t* Y() const { return data.data(); }
  const std::uint8_t* U() const { return data.data() + static_cast<std::size_t>(width) * height; }
  const std::uint8_t* V() const { return U() + static_cast<std::size_t>(width / 2) * (height / 2); }
};

// One pixel, BT.601 limited range, rounded to the nearest integer and clamped to 0..255.
void RgbToYuv(int r, int g, int b, int& y, int& u, int& v);
void YuvToRgb(int y, int u, int v, int& r, int& g, int& b);

// Whole pictures. Chroma is the average of each 2x2 block; the RGB picture's width and height
// must be even.
YuvFrame ToYuv420(const RgbImage& image);
RgbImage ToRgb(const YuvFrame& frame);

}  // namespace dewarp_tool

#endif
