// The engine's 4:2:0 remap against the pixel-by-pixel reference, byte for byte, over many
// odd and even frame sizes, strides and maps with positions inside, on and past the edges.
// Every buffer has exactly the engine's frame size, so the sanitizer tree catches any access
// outside a frame.
#include "remap_reference.h"

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar_420.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::ImagePlanar420;
using vemo::libdewarp::Map;

namespace {

struct Geometry {
  std::uint32_t w, h, s;
};

remap_reference::Maps RandomMaps(std::mt19937& rng, std::uint32_t w, std::uint32_t h, const Geometry& src) {
  remap_reference::Maps m;
  m.width = w;
  m.height = h;
  std::uniform_int_distribution<int> kind(0, 19);
  std::uniform_real_distribution<float> inside(0.0f, 1.0f);
  auto value = [&](std::uint32_t size) -> float {
    const float extent = static_cast<float>(size);
    switch (kind(rng)) {
      case 0:
        return std::numeric_limits<float>::quiet_NaN();
      case 1:
        return -1.0f;
      case 2:
        return -0.5f;
      case 3:
        return extent - 1.0f;
      case 4:
        return extent;
      case 5:
        return extent - 1.01f;
      case 6:
        return extent + 3.5f;
      default:
        return inside(rng) * (extent - 1.0f);
    }
  };
  for (std::uint32_t i = 0; i < w * h; ++i) {
    m.x.push_back(value(src.w));
    m.y.push_back(value(src.h));
  }
  return m;
}

ImageMap ToImageMap(const remap_reference::Maps& m) {
  ImageMap map(static_cast<int>(m.width), static_cast<int>(m.height));
  for (std::size_t i = 0; i < m.x.size(); ++i) {
    map.GetMapX().GetTypePtr<float>()[i] = m.x[i];
    map.GetMapY().GetTypePtr<float>()[i] = m.y[i];
  }
  return map;
}

void RandomBytes(std::mt19937& rng, std::vector<std::uint8_t>& bytes) {
  std::uniform_int_distribution<int> byte(0, 255);
  for (std::uint8_t& b : bytes) {
    b = static_cast<std::uint8_t>(byte(rng));
  }
}

// Runs one mode through the engine and the reference on identical frames; returns the number
// of cases compared.
int CompareAll(DEWARP_INTERPOLATION mode) {
  const Geometry sources[] = {{5, 3, 5}, {6, 4, 6}, {7, 7, 8}, {9, 5, 9}, {3, 1, 3}, {1, 1, 1}, {8, 6, 11}, {2, 2, 2}};
  const std::uint32_t widths[] = {1, 2, 3, 4, 5, 7, 8};
  const std::uint32_t heights[] = {1, 2, 3, 4, 5, 6};
  const std::uint32_t extra[] = {0, 1, 2};
  std::mt19937 rng(12345u + static_cast<unsigned>(mode));
  int cases = 0;
  for (const Geometry& g : sources) {
    for (std::uint32_t w : widths) {
      for (std::uint32_t h : heights) {
        for (std::uint32_t e : extra) {
          for (int round = 0; round < 2; ++round) {
            remap_reference::Frame src(g.w, g.h, g.s);
            RandomBytes(rng, src.bytes);
            remap_reference::Frame expected(w, h, w + e);
            RandomBytes(rng, expected.bytes);
            remap_reference::Frame actual = expected;
            const remap_reference::Maps maps = RandomMaps(rng, w, h, g);

            ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, src.bytes.data(), g.w, g.h, g.s, false);
            ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, actual.bytes.data(), w, h, w + e, false);
            ImageMap map = ToImageMap(maps);
            map.Remap(srcImage, dstImage, mode);
            if (mode == NEAREST_NEIGHBOUR_INTERPOLATION) {
              remap_reference::Nearest(src, expected, maps);
            } else {
              remap_reference::Bilinear(src, expected, maps);
            }
            EXPECT_EQ(expected.bytes, actual.bytes)
                << "source " << g.w << "x" << g.h << "/" << g.s << " destination " << w << "x" << h << "/" << w + e;
            // A second frame through the cached tables gives the same result again.
            RandomBytes(rng, src.bytes);
            remap_reference::Frame expected2 = expected;
            remap_reference::Frame actual2 = expected;
            ImagePlanar420 dstImage2(YUV420_PLANAR_IMAGE, actual2.bytes.data(), w, h, w + e, false);
            map.Remap(srcImage, dstImage2, mode);
            if (mode == NEAREST_NEIGHBOUR_INTERPOLATION) {
              remap_reference::Nearest(src, expected2, maps);
            } else {
              remap_reference::Bilinear(src, expected2, maps);
            }
            EXPECT_EQ(expected2.bytes, actual2.bytes) << "cached, destination " << w << "x" << h;
            ++cases;
          }
        }
      }
    }
  }
  return cases;
}

}  // namespace

TEST(RemapReferenceTest, NearestMatchesTheReferenceByteForByte) {
  EXPECT_GT(CompareAll(NEAREST_NEIGHBOUR_INTERPOLATION), 1000);
}

TEST(RemapReferenceTest, BilinearMatchesTheReferenceByteForByte) {
  EXPECT_GT(CompareAll(LINEAR_INTERPOLATION), 1000);
}

TEST(RemapReferenceTest, LargerFrameThroughASmoothMap) {
  // A smooth map (a scaled, shifted copy of the source) on a frame large enough for the block
  // loops to run long rows, both modes.
  const std::uint32_t sw = 64, sh = 48, dw = 40, dh = 30;
  std::mt19937 rng(7u);
  remap_reference::Frame src(sw, sh, sw);
  RandomBytes(rng, src.bytes);
  remap_reference::Maps maps;
  maps.width = dw;
  maps.height = dh;
  for (std::uint32_t y = 0; y < dh; ++y) {
    for (std::uint32_t x = 0; x < dw; ++x) {
      maps.x.push_back(1.37f * static_cast<float>(x) + 3.3f);
      maps.y.push_back(1.41f * static_cast<float>(y) - 0.7f);
    }
  }
  for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
    remap_reference::Frame expected(dw, dh, dw);
    RandomBytes(rng, expected.bytes);
    remap_reference::Frame actual = expected;
    ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, src.bytes.data(), sw, sh, sw, false);
    ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, actual.bytes.data(), dw, dh, dw, false);
    ImageMap map = ToImageMap(maps);
    map.Remap(srcImage, dstImage, mode);
    if (mode == NEAREST_NEIGHBOUR_INTERPOLATION) {
      remap_reference::Nearest(src, expected, maps);
    } else {
      remap_reference::Bilinear(src, expected, maps);
    }
    EXPECT_EQ(expected.bytes, actual.bytes) << mode;
  }
}
