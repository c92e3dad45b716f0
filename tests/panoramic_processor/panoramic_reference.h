// Test helpers: synthetic fisheye frames, and the renderers' formulas evaluated directly for one
// output pixel at a time, so that expected bytes are worked out independently of the
// processor's tables and loops.
#ifndef TESTS_PANORAMIC_PROCESSOR_PANORAMIC_REFERENCE_H
#define TESTS_PANORAMIC_PROCESSOR_PANORAMIC_REFERENCE_H

#include <cmath>
#include <cstdint>
#include <vector>

#include "ImageProcessor.h"

namespace panoramic_test {

const double kPi = 3.141592653589793;

// A packed input frame whose bytes are never 0, so that black (all zero) is told apart from
// any copied or interpolated pixel. Neighbouring pixels differ in every channel.
inline std::vector<unsigned char> MakeFrame(int width, int height, int bytesPerPixel, int stride) {
  std::vector<unsigned char> frame(static_cast<std::size_t>(stride) * height, 0);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < bytesPerPixel; ++c) {
        frame[static_cast<std::size_t>(y) * stride + x * bytesPerPixel + c] =
            static_cast<unsigned char>(1 + (x * 11 + y * 23 + c * 61 + (x * y) % 17) % 255);
      }
    }
  }
  return frame;
}

// A 32 x 32 frame of 3-byte pixels that are linear in x and y: (4x + 1, 4y + 1, 4x + 4y + 1).
// A nearest copy shows the source pixel directly; a bilinear mix adds 4 fx, 4 fy, 4 fx + 4 fy.
inline std::vector<unsigned char> LinearFrame() {
  std::vector<unsigned char> frame(32 * 32 * 3);
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) {
      unsigned char* p = &frame[(y * 32 + x) * 3];
      p[0] = static_cast<unsigned char>(4 * x + 1);
      p[1] = static_cast<unsigned char>(4 * y + 1);
      p[2] = static_cast<unsigned char>(4 * x + 4 * y + 1);
    }
  }
  return frame;
}

// Where one output pixel samples the input: no source, or (x, y) with the fractions.
struct Sample {
  bool HasSource;
  bool OutsideCircle;  // the view's circle test refused it
  int X;
  int Y;
  float FractionX;
  float FractionY;
  double Dx;           // the offsets from the circle's centre (0 for a row facing away)
  double Dy;
};

inline Sample FromOffsets(const ImageProcessorParams& p, double dx, double dy) {
  Sample s = {false, false, -1, -1, 0.0f, 0.0f, dx, dy};
  const int x = p.InputImageCenterX + static_cast<int>(dx);  // truncated toward zero
  const int y = p.InputImageCenterY + static_cast<int>(dy);
  if (x < 0 || y < 0 || x >= p.InputImageWidth || y >= p.InputImageHeight) {
    return s;
  }
  s.HasSource = true;
  s.X = x;
  s.Y = y;
  s.FractionX = static_cast<float>(dx - std::floor(dx));
  s.FractionY = static_cast<float>(dy - std::floor(dy));
  return s;
}

// The view's sample for output pixel (column, row), straight from the view's formulas.
inline Sample ViewSample(const ImageProcessorParams& p, double pan, double tilt, double zoom, int column,
                         int row) {
  const int W = p.OutputImageWidth;
  const int H = p.OutputImageHeight;
  const bool inv = p.OutputImageInvert;
  // Output row H/2 + j (or H/2 - j - 1 inverted); output column W/2 + i reads the column
  // tables at W/2 + i (or W/2 - i - 1 inverted), i.e. at offset i (or -i - 1) from the centre.
  const int j = inv ? H / 2 - 1 - row : row - H / 2;
  const int i = column - W / 2;
  const int m = inv ? -i - 1 : i;
  const int sx = p.InputImageWidth / W;
  const int sy = p.InputImageHeight / H;
  const double t = (tilt / 90 * 30) * kPi / 180;
  const double pr = pan * kPi / 180;
  const double st = std::sin(t), ct = std::cos(t), sp = std::sin(pr), cp = std::cos(pr);
  const double R = p.InputImageRadius;
  const double F = zoom * R;
  const double u = static_cast<double>(m) * sx;
  const double v = static_cast<double>(j) * sy;
  Sample none = {false, false, -1, -1, 0.0f, 0.0f, 0.0, 0.0};
  if (v * st + F * ct < 0) {
    return none;
  }
  const double A = v * v + F * F;
  const double B = v * sp * ct - 2 * F * st * sp;
  const double C = -v * cp * ct + 2 * F * st * cp;
  const double s = R / std::sqrt(u * u + A);
  const double dx = (u * cp - B) * s;
  const double dy = (u * sp - C) * s;
  if (dx * dx + dy * dy >= R * R) {
    none.OutsideCircle = true;
    none.Dx = dx;
    none.Dy = dy;
    return none;
  }
  return FromOffsets(p, dx, dy);
}

// The panorama's sample for output pixel (column, row), straight from its formulas.
inline Sample PanoramaSample(const ImageProcessorParams& p, int column, int row) {
  const int Wp = p.OutputPanoramaImageWidth;
  const int Hp = p.OutputPanoramaImageHeight;
  const int R = p.InputImageRadius;
  const bool inv = p.OutputPanoramaImageInvert;
  const int r = inv ? Hp - 1 - row : row;
  const int c = inv ? Wp - 1 - column : column;
  const int L = static_cast<int>(R * 4.178318229274425);
  const int sx = L / Wp;
  const int sy = R / Hp;
  const double rho = std::sin((static_cast<double>(R - r * sy) / R * 0.75 + 0.1) * kPi / 2) * R - 1;
  const double angle = static_cast<double>(c * sx) * 1.5037593984962405 / R;
  return FromOffsets(p, rho * std::cos(angle), rho * std::sin(angle));
}

// The bilinear mix of the four neighbours, in single precision, truncated.
inline int Bilinear(int p, int right, int below, int belowRight, float fx, float fy) {
  return static_cast<int>(p * (1 - fy) * (1 - fx) + right * (1 - fy) * fx + below * fy * (1 - fx) +
                          belowRight * fy * fx);
}

// The bytes an output pixel must hold for a sample: zeros without a source; the nearest pixel
// when not interpolating or on the last column or row of the input; else the bilinear mix.
inline std::vector<unsigned char> ExpectedPixel(const std::vector<unsigned char>& frame, int stride, int b,
                                                const ImageProcessorParams& p, const Sample& s,
                                                bool interpolate) {
  std::vector<unsigned char> out(b, 0);
  if (!s.HasSource) {
    return out;
  }
  const std::size_t at = static_cast<std::size_t>(s.Y) * stride + static_cast<std::size_t>(s.X) * b;
  const bool edge = s.X >= p.InputImageWidth - 1 || s.Y >= p.InputImageHeight - 1;
  for (int c = 0; c < b; ++c) {
    if (!interpolate || edge) {
      out[c] = frame[at + c];
    } else {
      out[c] = static_cast<unsigned char>(Bilinear(frame[at + c], frame[at + b + c], frame[at + stride + c],
                                                   frame[at + stride + b + c], s.FractionX, s.FractionY));
    }
  }
  return out;
}

inline std::vector<unsigned char> PixelAt(const ImageData& image, int column, int row, int b) {
  const unsigned char* p = image.Data + static_cast<std::size_t>(row) * image.Stride +
                           static_cast<std::size_t>(column) * b;
  return std::vector<unsigned char>(p, p + b);
}

// Parameters for a processor working on owned buffers.
inline ImageProcessorParams OwnedParams(int inW, int inH, int bitsPerPixel, int cx, int cy, int radius,
                                        int outW, int outH, int panoW, int panoH) {
  const int b = bitsPerPixel / 8;
  ImageProcessorParams p;
  p.InputImageWidth = inW;
  p.InputImageHeight = inH;
  p.InputImageStride = inW * b;
  p.InputImageBitsPerPixel = bitsPerPixel;
  p.InputImageCenterX = cx;
  p.InputImageCenterY = cy;
  p.InputImageRadius = radius;
  p.InputImageOwnData = true;
  p.OutputImageWidth = outW;
  p.OutputImageHeight = outH;
  p.OutputImageStride = outW * b;
  p.OutputImageOwnData = true;
  p.OutputPanoramaImageWidth = panoW;
  p.OutputPanoramaImageHeight = panoH;
  p.OutputPanoramaImageStride = panoW * b;
  p.OutputPanoramaImageOwnData = true;
  return p;
}

// Fills an owned image of the processor with a frame (same layout).
inline void LoadFrame(ImageData& image, const std::vector<unsigned char>& frame) {
  for (std::size_t k = 0; k < frame.size(); ++k) {
    image.Data[k] = frame[k];
  }
}

}  // namespace panoramic_test

#endif  // TESTS_PANORAMIC_PROCESSOR_PANORAMIC_REFERENCE_H
