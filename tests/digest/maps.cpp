// Remap results on fixed frames and maps: merged tables, fixed-point table and the bytes of
// nearest-neighbour and bilinear output (even and odd sizes), all from plain arithmetic.
#include "digest.h"

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar_420.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/remap.h>

#include <cstdint>
#include <vector>

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::ImagePlanar420;
using vemo::libdewarp::Map;
using vemo::libdewarp::Remap;
using vemo::libdewarp::Vector2d;

namespace {

std::vector<std::uint8_t> PatternFrame(std::uint32_t w, std::uint32_t h, std::uint32_t seed) {
  std::vector<std::uint8_t> bytes(w * h + ((w * h) >> 1));
  std::uint32_t state = seed;
  for (std::uint8_t& b : bytes) {
    state = state * 1664525u + 1013904223u;
    b = static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}

// A bulging map: a quadratic pull towards the centre, a shear and an offset that runs past
// the source on two sides.
ImageMap WarpMap(std::uint32_t dw, std::uint32_t dh, float sw, float sh) {
  ImageMap map(static_cast<int>(dw), static_cast<int>(dh));
  for (std::uint32_t y = 0; y < dh; ++y) {
    for (std::uint32_t x = 0; x < dw; ++x) {
      const float u = static_cast<float>(x) / static_cast<float>(dw) - 0.5f;
      const float v = static_cast<float>(y) / static_cast<float>(dh) - 0.5f;
      const float r2 = u * u + v * v;
      const float k = 1.0f - 0.8f * r2;
      const float sx = (u * k + 0.15f * v + 0.52f) * sw;
      const float sy = (v * k + 0.49f) * sh;
      map.SetMapItem(x, y, Vector2d(sx, sy));
    }
  }
  return map;
}

void AddRemap(dewarp_digest::Digest& d, std::uint32_t sw, std::uint32_t sh, std::uint32_t dw, std::uint32_t dh,
              DEWARP_INTERPOLATION mode) {
  std::vector<std::uint8_t> src = PatternFrame(sw, sh, 17u + sw);
  std::vector<std::uint8_t> dst(dw * dh + ((dw * dh) >> 1), 0x5A);
  ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, src.data(), sw, sh, sw, false);
  ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, dst.data(), dw, dh, dw, false);
  ImageMap map = WarpMap(dw, dh, static_cast<float>(sw), static_cast<float>(sh));
  map.Remap(srcImage, dstImage, mode);
  d.add(static_cast<int>(mode));
  d.add(dw);
  d.add(dh);
  d.add_bytes(dst.data(), dst.size());
}

}  // namespace

DEWARP_DIGEST_SECTION(maps) {
  for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
    AddRemap(d, 96, 64, 80, 60, mode);
    AddRemap(d, 61, 47, 37, 23, mode);
    AddRemap(d, 50, 50, 33, 18, mode);
  }
  // The merged tables of a small warp map: integer pairs, bilinear pairs, fixed point.
  ImageMap map = WarpMap(9, 5, 12.0f, 8.0f);
  const std::int32_t* merged = map.GetMapX().Merge(0, map.GetMapY(), 12, 8);
  for (int i = 0; i < 2 * 9 * 5; ++i) {
    d.add(merged[i]);
  }
  const float* bilinear = map.GetMapX().Merge(0.0f, map.GetMapY(), 12, 8);
  for (int i = 0; i < 2 * 9 * 5; ++i) {
    d.add(bilinear[i]);
  }
  ImageMap other = WarpMap(9, 5, 12.0f, 8.0f);
  const std::uint32_t* fixed = Remap::CreateBilinenarFixedPointMap(other.GetMapX(), other.GetMapY(), 12, 8, 0);
  for (int i = 0; i < 3 * 9 * 5; ++i) {
    d.add(fixed[i]);
  }
  const Map converted = map.GetMapX().convertTo(Map::INTEGER);
  for (int i = 0; i < 9 * 5; ++i) {
    d.add(converted.GetTypePtr<std::int32_t>()[i]);
  }
}
