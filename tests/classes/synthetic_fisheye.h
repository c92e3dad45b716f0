// A synthetic fisheye frame in planar YUV 4:2:0: a bright circular picture on black, with a
// pattern of rings and sectors so that every direction of view looks different.
#ifndef TESTS_CLASSES_SYNTHETIC_FISHEYE_H
#define TESTS_CLASSES_SYNTHETIC_FISHEYE_H

#include <cmath>
#include <cstdint>
#include <cstring>

// Fills width x height luma bytes followed by the two quarter-size chroma planes, as many
// bytes as (width * 3 * height) / 2.
inline void FillSyntheticFisheye(unsigned char* frame, int width, int height) {
  const double cx = width / 2.0;
  const double cy = height / 2.0;
  const double radius = (width < height ? width : height) / 2.0;
  const double pi = 3.14159265358979323846;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double dx = x + 0.5 - cx;
      const double dy = y + 0.5 - cy;
      const double r = std::sqrt(dx * dx + dy * dy);
      unsigned char luma = 0;
      if (r < radius) {
        const int ring = static_cast<int>(r / radius * 12.0);
        const int sector = static_cast<int>((std::atan2(dy, dx) + pi) / (2.0 * pi) * 16.0) % 16;
        luma = static_cast<unsigned char>(40 + (ring * 16 + sector * 7) % 200);
      }
      frame[static_cast<std::size_t>(y) * width + x] = luma;
    }
  }
  const std::size_t luma = static_cast<std::size_t>(width) * height;
  const std::size_t quarter = luma / 4;
  unsigned char* u = frame + luma;
  unsigned char* v = u + quarter;
  for (std::size_t i = 0; i < quarter; ++i) {
    u[i] = static_cast<unsigned char>(64 + i % 128);
    v[i] = static_cast<unsigned char>(192 - i % 128);
  }
}

#endif
