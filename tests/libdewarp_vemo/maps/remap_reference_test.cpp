// The engine's 4:2:0 remap against the pixel-by-pixel reference, byte for byte, over many
// odd and even frame sizes, strides and maps with positions inside, on and past the edges.
// Every buffer has exactly the engine's frame size, so the sanitizer tree catches any access
// outside a frame.
#include "remap_reference.h"

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar_420.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

using vemo::libdewarp::ImageMap;
using vemo::libdewarp::ImagePlanar420;
using vemo::libdewarp::Map;

namespace {

struct Geometry {
  std::uint32_t w, h, s;
};

// Random maps: each value is one of the edge cases (NaN, negative, on and past the edges) with a
// chance of 7 in `spread`, otherwise a position inside the source.
remap_reference::Maps RandomMaps(std::mt19937& rng, std::uint32_t w, std::uint32_t h, const Geometry& src,
                                 int spread = 20) {
  remap_reference::Maps m;
  m.width = w;
  m.height = h;
  std::uniform_int_distribution<int> kind(0, spread - 1);
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
// One frame through the engine's map and through the plain reference: both start from the same
// destination bytes, drawn from rng, and must end byte for byte alike.
::testing::AssertionResult EngineMatchesReference(std::mt19937& rng, const remap_reference::Frame& src,
                                                  const ImageMap& map, const remap_reference::Maps& maps,
                                                  std::uint32_t w, std::uint32_t h, std::uint32_t stride,
                                                  DEWARP_INTERPOLATION mode) {
  remap_reference::Frame expected(w, h, stride);
  RandomBytes(rng, expected.bytes);
  remap_reference::Frame actual = expected;
  // The engine only reads the source.
  ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, const_cast<std::uint8_t*>(src.bytes.data()), src.width, src.height,
                          src.stride, false);
  ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, actual.bytes.data(), w, h, stride, false);
  map.Remap(srcImage, dstImage, mode);
  if (mode == NEAREST_NEIGHBOUR_INTERPOLATION) {
    remap_reference::Nearest(src, expected, maps);
  } else {
    remap_reference::Bilinear(src, expected, maps);
  }
  if (expected.bytes == actual.bytes) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "differs from the reference, mode " << mode;
}

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

// Every comparison runs on each set of kernels: the SSE2 baseline, AVX2 and AVX-512 (each
// skipped where the processor lacks it) and the default, the widest there is.
class RemapReferenceTest : public ::testing::TestWithParam<ImagePlanar420::KernelSet> {
protected:
  void SetUp() override {
    if (!ImagePlanar420::IsKernelSetSupported(GetParam())) {
      GTEST_SKIP() << "this processor does not run these kernels";
    }
    ImagePlanar420::SetKernelSet(GetParam());
  }
  void TearDown() override { ImagePlanar420::SetKernelSet(ImagePlanar420::WIDEST_KERNELS); }
};

std::string KernelSetName(const ::testing::TestParamInfo<ImagePlanar420::KernelSet>& info) {
  switch (info.param) {
    case ImagePlanar420::SSE2_KERNELS:
      return "Sse2";
    case ImagePlanar420::AVX2_KERNELS:
      return "Avx2";
    case ImagePlanar420::AVX512_KERNELS:
      return "Avx512";
    default:
      return "Widest";
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, RemapReferenceTest,
                         ::testing::Values(ImagePlanar420::SSE2_KERNELS, ImagePlanar420::AVX2_KERNELS,
                                           ImagePlanar420::AVX512_KERNELS, ImagePlanar420::WIDEST_KERNELS),
                         KernelSetName);

TEST(RemapKernelSetTest, TheKernelSetIsKeptUntilChanged) {
  EXPECT_EQ(ImagePlanar420::WIDEST_KERNELS, ImagePlanar420::GetKernelSet());
  ImagePlanar420::SetKernelSet(ImagePlanar420::SSE2_KERNELS);
  EXPECT_EQ(ImagePlanar420::SSE2_KERNELS, ImagePlanar420::GetKernelSet());
  ImagePlanar420::SetKernelSet(ImagePlanar420::WIDEST_KERNELS);
  EXPECT_EQ(ImagePlanar420::WIDEST_KERNELS, ImagePlanar420::GetKernelSet());
  EXPECT_TRUE(ImagePlanar420::IsKernelSetSupported(ImagePlanar420::SSE2_KERNELS));
  EXPECT_TRUE(ImagePlanar420::IsKernelSetSupported(ImagePlanar420::WIDEST_KERNELS));
  // AVX-512 kernels run only where AVX2 ones do.
  EXPECT_TRUE(!ImagePlanar420::IsKernelSetSupported(ImagePlanar420::AVX512_KERNELS) ||
              ImagePlanar420::IsKernelSetSupported(ImagePlanar420::AVX2_KERNELS));
}

TEST_P(RemapReferenceTest, NearestMatchesTheReferenceByteForByte) {
  EXPECT_GT(CompareAll(NEAREST_NEIGHBOUR_INTERPOLATION), 1000);
}

TEST_P(RemapReferenceTest, BilinearMatchesTheReferenceByteForByte) {
  EXPECT_GT(CompareAll(LINEAR_INTERPOLATION), 1000);
}

TEST_P(RemapReferenceTest, LargerFrameThroughASmoothMap) {
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
    EXPECT_TRUE(EngineMatchesReference(rng, src, ToImageMap(maps), maps, dw, dh, dw, mode));
  }
}

namespace {

// Runs one mode through the engine and the reference on frames wide enough for the block loops
// to take whole groups of columns, with maps mostly inside the source (so that groups with every
// block inside occur, next to groups with one block outside), and checks both byte for byte.
// Returns the number of cases compared.
int CompareWide(DEWARP_INTERPOLATION mode, int spread) {
  const Geometry sources[] = {{40, 30, 40}, {41, 29, 44}, {64, 48, 70}, {33, 8, 33}, {17, 17, 18}};
  const std::uint32_t widths[] = {8, 14, 16, 18, 24, 26, 34, 40, 48, 9, 25};
  const std::uint32_t heights[] = {2, 3, 4, 7, 10};
  const std::uint32_t extra[] = {0, 3};
  std::mt19937 rng(777u + static_cast<unsigned>(mode) * 31u + static_cast<unsigned>(spread));
  int cases = 0;
  for (const Geometry& g : sources) {
    for (std::uint32_t w : widths) {
      for (std::uint32_t h : heights) {
        for (std::uint32_t e : extra) {
          remap_reference::Frame src(g.w, g.h, g.s);
          RandomBytes(rng, src.bytes);
          const remap_reference::Maps maps = RandomMaps(rng, w, h, g, spread);
          EXPECT_TRUE(EngineMatchesReference(rng, src, ToImageMap(maps), maps, w, h, w + e, mode)) << "source " << g.w << "x" << g.h << "/" << g.s << " destination "
                                                  << w << "x" << h << "/" << w + e << " spread " << spread;
          ++cases;
        }
      }
    }
  }
  return cases;
}

}  // namespace

TEST_P(RemapReferenceTest, NearestOnWideFramesMatchesTheReference) {
  EXPECT_EQ(550, CompareWide(NEAREST_NEIGHBOUR_INTERPOLATION, 400));
  EXPECT_EQ(550, CompareWide(NEAREST_NEIGHBOUR_INTERPOLATION, 60));
}

TEST_P(RemapReferenceTest, BilinearOnWideFramesMatchesTheReference) {
  EXPECT_EQ(550, CompareWide(LINEAR_INTERPOLATION, 400));
  EXPECT_EQ(550, CompareWide(LINEAR_INTERPOLATION, 60));
}

TEST_P(RemapReferenceTest, CubicLeavesTheDestinationAsItWas) {
  // Cubic interpolation is not supported: whatever the maps hold, every byte of the destination
  // stays as it was, for small and wide frames alike.
  std::mt19937 rng(4242u);
  const Geometry g{40, 30, 40};
  for (std::uint32_t w : {1u, 7u, 16u, 34u}) {
    for (std::uint32_t h : {1u, 2u, 5u}) {
      remap_reference::Frame src(g.w, g.h, g.s);
      RandomBytes(rng, src.bytes);
      remap_reference::Frame actual(w, h, w + 1);
      RandomBytes(rng, actual.bytes);
      const std::vector<std::uint8_t> before = actual.bytes;
      ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, src.bytes.data(), g.w, g.h, g.s, false);
      ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, actual.bytes.data(), w, h, w + 1, false);
      ImageMap map = ToImageMap(RandomMaps(rng, w, h, g, 400));
      map.Remap(srcImage, dstImage, CUBIC_INTERPOLATION);
      EXPECT_EQ(before, actual.bytes) << w << "x" << h;
    }
  }
}

TEST_P(RemapReferenceTest, SourcesBeyondTheBlockLoopsLimitsMatchTheReference) {
  // A source stride or height of 32768 and more takes the per-block loop; the result is the same.
  const Geometry sources[] = {{40, 4, 32770}, {6, 32770, 6}};
  std::mt19937 rng(99u);
  for (const Geometry& g : sources) {
    for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
      remap_reference::Frame src(g.w, g.h, g.s);
      RandomBytes(rng, src.bytes);
      const remap_reference::Maps maps = RandomMaps(rng, 32, 6, g, 400);
      EXPECT_TRUE(EngineMatchesReference(rng, src, ToImageMap(maps), maps, 32, 6, 32, mode)) << "source " << g.w << "x" << g.h << "/" << g.s << " mode " << mode;
    }
  }
}

TEST_P(RemapReferenceTest, SmoothFisheyeLikeMapMatchesTheReference) {
  // A smooth, curved map like a dewarped view (rows of the output follow arcs of the source),
  // partly outside the source, on a frame a few hundred pixels wide: long runs of whole groups.
  const std::uint32_t sw = 300, sh = 280, dw = 256, dh = 144;
  std::mt19937 rng(2024u);
  remap_reference::Frame src(sw, sh, sw + 4);
  RandomBytes(rng, src.bytes);
  remap_reference::Maps maps;
  maps.width = dw;
  maps.height = dh;
  for (std::uint32_t y = 0; y < dh; ++y) {
    for (std::uint32_t x = 0; x < dw; ++x) {
      const double a = (static_cast<double>(x) - dw / 2.0) / dw * 2.2;
      const double r = 60.0 + 0.9 * y;
      maps.x.push_back(static_cast<float>(sw / 2.0 + r * std::sin(a)));
      maps.y.push_back(static_cast<float>(sh / 2.0 - 40.0 + r * std::cos(a) * 0.8));
    }
  }
  for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
    EXPECT_TRUE(EngineMatchesReference(rng, src, ToImageMap(maps), maps, dw, dh, dw, mode));
  }
}

TEST_P(RemapReferenceTest, LongRowsOfGroupsMatchTheReference) {
  // Rows of many sixteen-column groups (widths a multiple of sixteen and not), odd source sizes
  // and strides above the widths, maps mostly inside with the edge cases sprinkled in (and
  // positions just inside the right and lower edges), both modes, twice through the cached
  // tables.
  const Geometry sources[] = {{97, 61, 101}, {130, 9, 130}};
  const std::uint32_t widths[] = {208, 200, 330};
  const std::uint32_t heights[] = {6, 13};
  std::mt19937 rng(31337u);
  for (const Geometry& g : sources) {
    for (std::uint32_t w : widths) {
      for (std::uint32_t h : heights) {
        for (int spread : {2000, 150}) {
          for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
            remap_reference::Frame src(g.w, g.h, g.s);
            RandomBytes(rng, src.bytes);
            const remap_reference::Maps maps = RandomMaps(rng, w, h, g, spread);
            ImageMap map = ToImageMap(maps);
            for (int frame = 0; frame < 2; ++frame) {
              EXPECT_TRUE(EngineMatchesReference(rng, src, map, maps, w, h, w + 5, mode)) << "source " << g.w << "x" << g.h << "/" << g.s
                                                      << " destination " << w << "x" << h << " spread " << spread
                                                      << " mode " << mode << " frame " << frame;
              RandomBytes(rng, src.bytes);
            }
          }
        }
      }
    }
  }
}

TEST_P(RemapReferenceTest, TheFirstFrameLeavesTheGroupTableItsBuildMakes) {
  // The first bilinear frame through a map builds the map's group table; the SSE2 and AVX2
  // kernels form the groups in the pass that walks the frame. Either way the table it leaves
  // must be the one the table's own build makes from an identical map, bit for bit, and be kept
  // for the next frame. Sizes of whole groups (the walk that forms them takes those), odd row
  // counts, maps with every edge case, a source that the group walks serve (its last chroma
  // samples inside the frame).
  const Geometry g = {97, 62, 100};
  const std::uint32_t sizes[][2] = {{208, 13}, {256, 6}, {32, 2}, {16, 3}, {48, 40}};
  std::mt19937 rng(4242u);
  for (const auto& size : sizes) {
    const std::uint32_t w = size[0], h = size[1];
    for (int spread : {2000, 40, 8}) {
      const remap_reference::Maps maps = RandomMaps(rng, w, h, g, spread);
      ImageMap walked = ToImageMap(maps);
      ImageMap built = ToImageMap(maps);
      remap_reference::Frame src(g.w, g.h, g.s);
      RandomBytes(rng, src.bytes);
      remap_reference::Frame dst(w, h, w);
      ImagePlanar420 srcImage(YUV420_PLANAR_IMAGE, src.bytes.data(), g.w, g.h, g.s, false);
      ImagePlanar420 dstImage(YUV420_PLANAR_IMAGE, dst.bytes.data(), w, h, w, false);
      walked.Remap(srcImage, dstImage, LINEAR_INTERPOLATION);
      const float* expected = built.GetMapX().GetBilinearGroupBuffer(built.GetMapY(), g.w, g.h);
      ASSERT_NE(nullptr, expected);
      ASSERT_TRUE(walked.GetMapX().HasBilinearGroupBuffer(g.w, g.h)) << w << "x" << h;
      const float* table = walked.GetMapX().GetMergedTypePtr<float>();
      ASSERT_NE(nullptr, table);
      EXPECT_EQ(table, walked.GetMapX().GetBilinearGroupBuffer(walked.GetMapY(), g.w, g.h));
      const std::size_t floats = (h / 2) * (w / Map::s_uBilinearGroupColumns) * Map::s_uBilinearGroupFloats;
      EXPECT_EQ(0, std::memcmp(expected, table, floats * sizeof(float))) << w << "x" << h << " spread " << spread;
    }
  }
}

namespace {

// A map whose positions are drawn anywhere in the square of `extent` source pixels from
// (x0, y0): the four pixels of a block land anywhere in it, so the chroma samples of four
// neighbouring blocks spread over extent / 2 + 2 columns and rows at most.
remap_reference::Maps SquareMaps(std::mt19937& rng, std::uint32_t w, std::uint32_t h, float x0, float y0,
                                 float extent) {
  remap_reference::Maps m;
  m.width = w;
  m.height = h;
  std::uniform_real_distribution<float> offset(0.0f, extent);
  for (std::uint32_t i = 0; i < w * h; ++i) {
    m.x.push_back(x0 + offset(rng));
    m.y.push_back(y0 + offset(rng));
  }
  return m;
}

}  // namespace

TEST_P(RemapReferenceTest, ChromaSamplesCloseTogetherMatchTheReference) {
  // The AVX2 kernel reads the chroma of four neighbouring blocks from a window of 4 x 4 samples
  // when they all fit one, and one by one otherwise. Squares of 2 to 10 source pixels put the
  // samples of four blocks within at most 3 to 7 rows and columns, on both sides of the window's
  // four. The squares sit anywhere inside the source and against its lower right corner, where
  // a window ends on the last byte of the frame (or would end past it: those samples are read
  // one by one), for sources of even and odd sizes and strides above the width. Whole groups of
  // sixteen columns and a width that is not.
  const Geometry sources[] = {{64, 48, 64}, {66, 50, 71}, {41, 30, 44}, {32, 16, 32}};
  const float extents[] = {2.0f, 5.0f, 6.0f, 6.99f, 7.0f, 8.0f, 9.0f, 10.0f};
  std::mt19937 rng(5150u);
  int cases = 0;
  for (const Geometry& g : sources) {
    for (float extent : extents) {
      // The square's corner: at random, then as far right and down as it fits (its largest
      // positions just below the last column and row the blend can start from), then one and
      // two source pixels up and to the left of that.
      std::uniform_real_distribution<float> cornerX(0.0f, static_cast<float>(g.w) - 1.0f - extent);
      std::uniform_real_distribution<float> cornerY(0.0f, static_cast<float>(g.h) - 1.0f - extent);
      const float farX = static_cast<float>(g.w) - 1.0f - extent, farY = static_cast<float>(g.h) - 1.0f - extent;
      const float corners[][2] = {{cornerX(rng), cornerY(rng)}, {farX, farY}, {farX - 1.0f, farY - 1.0f},
                                  {farX - 2.0f, farY - 2.0f}, {farX, farY - 1.0f}};
      for (const auto& corner : corners) {
        for (std::uint32_t w : {64u, 48u, 40u}) {
          const std::uint32_t h = 6;
          remap_reference::Frame src(g.w, g.h, g.s);
          RandomBytes(rng, src.bytes);
          const remap_reference::Maps maps = SquareMaps(rng, w, h, corner[0], corner[1], extent);
          ImageMap map = ToImageMap(maps);
          for (int frame = 0; frame < 2; ++frame) {
            EXPECT_TRUE(EngineMatchesReference(rng, src, map, maps, w, h, w + 2, LINEAR_INTERPOLATION))
                << "source " << g.w << "x" << g.h << "/" << g.s << " square " << extent << " at (" << corner[0]
                << ", " << corner[1] << ") destination " << w << "x" << h << " frame " << frame;
            RandomBytes(rng, src.bytes);
          }
          ++cases;
        }
      }
    }
  }
  EXPECT_EQ(4 * 8 * 5 * 3, cases);
}
