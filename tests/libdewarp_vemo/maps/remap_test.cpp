// The per-frame remap on small frames whose expected bytes are worked out by hand.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar.h>
#include <libdewarp_vemo/image_planar_420.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/remap.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

using vemo::libdewarp::Image;
using vemo::libdewarp::ImageMap;
using vemo::libdewarp::ImagePlanar;
using vemo::libdewarp::ImagePlanar420;
using vemo::libdewarp::Map;
using vemo::libdewarp::Remap;
using vemo::libdewarp::Vector2d;

namespace {

// A 4:2:0 frame in a buffer of exactly 1.5 x stride x height bytes.
struct Frame {
  std::uint32_t w, h, s;
  std::vector<std::uint8_t> bytes;
  ImagePlanar420 image;
  Frame(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::uint8_t fill = 0xAA)
      : w(width), h(height), s(stride), bytes(stride * height + ((stride * height) >> 1), fill),
        image(YUV420_PLANAR_IMAGE, bytes.data(), width, height, stride, false) {}
  std::uint8_t& Y(std::uint32_t x, std::uint32_t y) { return bytes[y * s + x]; }
  std::uint8_t& U(std::uint32_t k, std::uint32_t r) { return bytes[s * h + r * (s / 2) + k]; }
  std::uint8_t& V(std::uint32_t k, std::uint32_t r) { return bytes[s * h + s * h / 4 + r * (s / 2) + k]; }
};

// Source with luma x + 16 y, U 100 + chroma index, V 150 + chroma index.
void FillPattern(Frame& f) {
  for (std::uint32_t y = 0; y < f.h; ++y) {
    for (std::uint32_t x = 0; x < f.w; ++x) {
      f.Y(x, y) = static_cast<std::uint8_t>(x + 16 * y);
    }
  }
  for (std::uint32_t i = 0; i < f.s * f.h / 4; ++i) {
    f.bytes[f.s * f.h + i] = static_cast<std::uint8_t>(100 + i);
    f.bytes[f.s * f.h + f.s * f.h / 4 + i] = static_cast<std::uint8_t>(150 + i);
  }
}

ImageMap Uniform(std::uint32_t w, std::uint32_t h, float x, float y) {
  ImageMap map(static_cast<int>(w), static_cast<int>(h));
  map.FillMap(Vector2d(x, y));
  return map;
}

}  // namespace

TEST(RemapTest, MapOfAnotherSizeThanTheDestinationThrows) {
  Frame src(640, 480, 640);
  Frame dst(640, 479, 640, 0x33);
  ImageMap map(640, 480);
  map.FillMap(Vector2d(1.0f, 1.0f));
  for (DEWARP_INTERPOLATION mode : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION, CUBIC_INTERPOLATION}) {
    try {
      map.Remap(src.image, dst.image, mode);
      ADD_FAILURE() << "no exception";
    } catch (const std::invalid_argument& e) {
      EXPECT_STREQ("incompatible src maps and dst img!", e.what());
    }
  }
  EXPECT_EQ(std::vector<std::uint8_t>(dst.bytes.size(), 0x33), dst.bytes);
}

TEST(RemapTest, YMapOfAnotherSizeThrowsToo) {
  Frame src(8, 8, 8);
  Frame dst(4, 4, 4);
  Map mx(Map::FLOAT, 4, 4);
  Map my(Map::FLOAT, 4, 2);
  EXPECT_THROW(Remap::Execute(src.image, dst.image, mx, my, NEAREST_NEIGHBOUR_INTERPOLATION), std::invalid_argument);
}

TEST(RemapTest, CubicLeavesTheDestinationUnchanged) {
  Frame src(8, 8, 8, 0x10);
  Frame dst(4, 4, 4, 0x77);
  ImageMap map = Uniform(4, 4, 1.0f, 1.0f);
  map.Remap(src.image, dst.image, CUBIC_INTERPOLATION);
  EXPECT_EQ(std::vector<std::uint8_t>(dst.bytes.size(), 0x77), dst.bytes);
  // An unknown mode also does nothing.
  map.Remap(src.image, dst.image, static_cast<DEWARP_INTERPOLATION>(7));
  EXPECT_EQ(std::vector<std::uint8_t>(dst.bytes.size(), 0x77), dst.bytes);
}

TEST(RemapTest, NearestTruncatesTenPointNineToTen) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 10.9f, 1.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  // Luma (10, 1) = 10 + 16; chroma index (1 / 2) * 8 + 10 / 2 = 5.
  EXPECT_EQ(26, dst.Y(0, 0));
  EXPECT_EQ(26, dst.Y(1, 0));
  EXPECT_EQ(26, dst.Y(0, 1));
  EXPECT_EQ(26, dst.Y(1, 1));
  EXPECT_EQ(105, dst.U(0, 0));
  EXPECT_EQ(155, dst.V(0, 0));
}

TEST(RemapTest, NearestSamplesColumnZeroForMinusHalf) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, -0.5f, 3.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(48, dst.Y(0, 0));
  EXPECT_EQ(48, dst.Y(1, 1));
  EXPECT_EQ(100 + 8, dst.U(0, 0));
  EXPECT_EQ(150 + 8, dst.V(0, 0));
}

TEST(RemapTest, NearestMinusOneGivesTheDefaultColourForTheWholeBlock) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(4, 2, 4);
  ImageMap map = Uniform(4, 2, 3.0f, 0.0f);
  map.SetMapItem(1, 1, Vector2d(-1.0f, 0.0f));  // bottom-right pixel of the first block
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(16, dst.Y(0, 0));
  EXPECT_EQ(16, dst.Y(1, 0));
  EXPECT_EQ(16, dst.Y(0, 1));
  EXPECT_EQ(16, dst.Y(1, 1));
  // The top-left pixel is fine, so the block's chroma is sampled: index 3 / 2 = 1.
  EXPECT_EQ(101, dst.U(0, 0));
  // The second block is untouched by the bad pixel.
  EXPECT_EQ(3, dst.Y(2, 0));
  EXPECT_EQ(3, dst.Y(3, 1));
  EXPECT_EQ(101, dst.U(1, 0));
  // A bad top-left pixel gives the default chroma as well.
  map.SetMapItem(0, 0, Vector2d(-1.0f, 0.0f));
  Frame again(4, 2, 4);
  Map copyX;
  copyX = map.GetMapX();  // shares the cached table; Reset makes it rebuild
  map.GetMapX().Reset();
  map.GetMapY().Reset();
  map.FillMap(Vector2d(3.0f, 0.0f));
  map.SetMapItem(0, 0, Vector2d(-1.0f, 0.0f));
  map.Remap(src.image, again.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(16, again.Y(0, 0));
  EXPECT_EQ(16, again.Y(1, 1));
  EXPECT_EQ(128, again.U(0, 0));
  EXPECT_EQ(128, again.V(0, 0));
  EXPECT_EQ(101, again.U(1, 0));
}

TEST(RemapTest, NearestPairRuleSpoilsThePartner) {
  // Pixels (0, 0) and (1, 0) form a pair: a bad (1, 0) marks (0, 0) outside, so the whole
  // first block becomes black even though only one pixel is outside.
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 5.0f, 2.0f);
  map.SetMapItem(1, 0, Vector2d(16.0f, 2.0f));
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(16, dst.Y(0, 0));
  EXPECT_EQ(16, dst.Y(1, 1));
  EXPECT_EQ(128, dst.U(0, 0));
}

TEST(RemapTest, NearestRowsUseTheDestinationStride) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 4);  // 12 bytes: Y 8, U at 8, V at 10
  ImageMap map = Uniform(2, 2, 1.0f, 0.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  const std::vector<std::uint8_t> expected = {1, 1, 0xAA, 0xAA, 1, 1, 0xAA, 0xAA, 100, 0xAA, 150, 0xAA};
  EXPECT_EQ(expected, dst.bytes);
}

TEST(RemapTest, DestinationHeightOfOneWritesNothing) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(4, 1, 4, 0x5C);
  ImageMap map = Uniform(4, 1, 1.0f, 1.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(std::vector<std::uint8_t>(dst.bytes.size(), 0x5C), dst.bytes);
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(std::vector<std::uint8_t>(dst.bytes.size(), 0x5C), dst.bytes);
}

TEST(RemapTest, OddLastRowIsNeverWritten) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 3, 2);
  ImageMap map = Uniform(2, 3, 2.0f, 1.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(18, dst.Y(1, 1));
  EXPECT_EQ(0xAA, dst.Y(0, 2));
  EXPECT_EQ(0xAA, dst.Y(1, 2));
}

TEST(RemapTest, BilinearAtWidthMinusOneMarksThePairOutside) {
  Frame src(8, 4, 8);
  FillPattern(src);
  Frame dst(2, 2, 2, 0xAA);
  ImageMap map = Uniform(2, 2, 2.0f, 1.0f);
  map.SetMapItem(1, 0, Vector2d(7.0f, 1.0f));  // x = W - 1 for the partner of the top-left pixel
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  // Invalid block: only the top-left luma and the chroma are written.
  EXPECT_EQ(16, dst.Y(0, 0));
  EXPECT_EQ(0xAA, dst.Y(1, 0));
  EXPECT_EQ(0xAA, dst.Y(0, 1));
  EXPECT_EQ(0xAA, dst.Y(1, 1));
  EXPECT_EQ(128, dst.U(0, 0));
  EXPECT_EQ(128, dst.V(0, 0));
}

TEST(RemapTest, BilinearBelowWidthMinusOneIsInterpolated) {
  // Luma 20 * row, so the blend along x is flat and along y it rises by 20 per row. With
  // fy = 0 the exchanged weights give the lower neighbour the weight fx: 20 + 20 * 0.99 -> 39.
  Frame src(8, 4, 8);
  for (std::uint32_t y = 0; y < 4; ++y) {
    for (std::uint32_t x = 0; x < 8; ++x) {
      src.Y(x, y) = static_cast<std::uint8_t>(20 * y);
    }
  }
  Frame dst(2, 2, 2, 0xAA);
  ImageMap map = Uniform(2, 2, 6.99f, 1.0f);
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(39, dst.Y(0, 0));
  EXPECT_EQ(39, dst.Y(1, 1));
}

TEST(RemapTest, BilinearHalfWayBlends) {
  Frame src(4, 4, 4);
  // P(1, 1) = 0, P(1, 2) = 100 (lower), P(2, 1) = 100 (right), P(2, 2) = 200.
  src.Y(1, 1) = 0;
  src.Y(1, 2) = 100;
  src.Y(2, 1) = 100;
  src.Y(2, 2) = 200;
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 1.5f, 1.5f);
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(100, dst.Y(0, 0));
  EXPECT_EQ(100, dst.Y(1, 1));
  // 0, 1, 1, 1: 0.75 truncates to 0.
  src.Y(1, 2) = 1;
  src.Y(2, 1) = 1;
  src.Y(2, 2) = 1;
  Frame dst2(2, 2, 2);
  map.Remap(src.image, dst2.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(0, dst2.Y(0, 0));
  EXPECT_EQ(0, dst2.Y(1, 0));
}

TEST(RemapTest, BilinearExchangesTheOffDiagonalWeights) {
  Frame src(4, 4, 4, 0);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 1.25f, 1.0f);  // xi = 1, yi = 1, fx = 0.25, fy = 0
  src.Y(2, 1) = 200;  // right neighbour: weight (1 - fx) fy = 0
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(0, dst.Y(0, 0));
  src.Y(2, 1) = 0;
  src.Y(1, 2) = 200;  // lower neighbour: weight fx (1 - fy) = 0.25
  Frame dst2(2, 2, 2);
  map.Remap(src.image, dst2.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(50, dst2.Y(0, 0));
  EXPECT_EQ(50, dst2.Y(1, 1));
}

TEST(RemapTest, BilinearChromaMixesTheFourPixelsOfTheBlock) {
  // Source 8 x 8: chroma 4 x 4 per plane, pitch 4. U[i] = 10 i, V[i] = 200 - 10 i.
  Frame src(8, 8, 8);
  for (std::uint32_t i = 0; i < 16; ++i) {
    src.bytes[64 + i] = static_cast<std::uint8_t>(10 * i);
    src.bytes[80 + i] = static_cast<std::uint8_t>(200 - 10 * i);
  }
  Frame dst(2, 2, 2);
  ImageMap map(2, 2);
  map.SetMapItem(0, 0, Vector2d(2.5f, 2.5f));  // top-left: weights 1/4 each, index (2/2)*4 + 2/2 = 5
  map.SetMapItem(0, 1, Vector2d(4.0f, 0.0f));  // bottom-left: row 0/2, column (4+1)/2 -> index 2
  map.SetMapItem(1, 0, Vector2d(0.0f, 4.0f));  // top-right: row (4+1)/2, column 0 -> index 8
  map.SetMapItem(1, 1, Vector2d(6.0f, 6.0f));  // bottom-right: row 7/2, column 7/2 -> index 15
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ((50 + 20 + 80 + 150) / 4, dst.U(0, 0));
  EXPECT_EQ((150 + 180 + 120 + 50) / 4, dst.V(0, 0));
}

TEST(RemapTest, BilinearChromaUsesTheTopLeftWeightsInOrder) {
  // All four pixels at (1.25, 0.5) in a 4 x 4 source: xi 1, yi 0, weights 0.375, 0.125, 0.375,
  // 0.125 on the samples top-left (0, 0) -> index 0, bottom-left (0, 1) -> 1, top-right
  // (0, 0) -> 0, bottom-right (0, 1) -> 1. U[0] = 80, U[1] = 160: 30 + 20 + 30 + 20 = 100.
  Frame src(4, 4, 4, 0);
  src.bytes[16] = 80;
  src.bytes[17] = 160;
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 1.25f, 0.5f);
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_EQ(100, dst.U(0, 0));
  EXPECT_EQ(0, dst.V(0, 0));
}

TEST(RemapTest, BilinearRowsUseTheDestinationWidthAsPitch) {
  Frame src(4, 4, 4, 0);
  src.Y(1, 1) = 40;
  Frame dst(2, 2, 4);  // stride 4: the rows land at 0 and 2, not at 0 and 4
  ImageMap map = Uniform(2, 2, 1.0f, 1.0f);
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  const std::vector<std::uint8_t> expected = {40, 40, 40, 40, 0xAA, 0xAA, 0xAA, 0xAA, 0, 0xAA, 0, 0xAA};
  EXPECT_EQ(expected, dst.bytes);
}

TEST(RemapTest, SourceOfAnotherClassIsABadCast) {
  Frame dst(2, 2, 2);
  std::unique_ptr<Image> plain(dst.image.CreateBlank());
  ImageMap map = Uniform(2, 2, 0.0f, 0.0f);
  EXPECT_THROW(map.Remap(*plain, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION), std::bad_cast);
  EXPECT_THROW(map.Remap(*plain, dst.image, LINEAR_INTERPOLATION), std::bad_cast);
}

TEST(RemapTest, NearestTableIsBuiltOnceAndKeptInTheXMap) {
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 3.0f, 0.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  const std::int32_t* table = map.GetMapX().GetMergedTypePtr<std::int32_t>();
  ASSERT_NE(nullptr, table);
  // Refilling without Reset does not change the cached table: the old positions are used.
  map.FillMap(Vector2d(5.0f, 0.0f));
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  EXPECT_EQ(table, map.GetMapX().GetMergedTypePtr<std::int32_t>());
  EXPECT_EQ(3, dst.Y(0, 0));
  // Bilinear keeps its own table in the float slot.
  map.Remap(src.image, dst.image, LINEAR_INTERPOLATION);
  EXPECT_NE(nullptr, map.GetMapX().GetMergedTypePtr<float>());
  EXPECT_EQ(table, map.GetMapX().GetMergedTypePtr<std::int32_t>());
}

TEST(RemapTest, NearestTableMarksBothPixelsOfABadPairWithAllOnes) {
  const float xs[4] = {1.0f, 2.0f, 3.0f, 9.0f};
  const float ys[4] = {0.0f, 1.0f, 0.0f, 0.0f};
  Map mx(Map::FLOAT, 4, 1), my(Map::FLOAT, 4, 1);
  for (int i = 0; i < 4; ++i) {
    mx.GetTypePtr<float>()[i] = xs[i];
    my.GetTypePtr<float>()[i] = ys[i];
  }
  const std::uint32_t* table = mx.GetMergedBuffer<std::uint32_t>(my, 9, 2);
  const std::uint32_t expected[8] = {1, 0, 2, 1, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(expected[i], table[i]) << i;
  }
  // Maps of different sizes give no table.
  Map other(Map::FLOAT, 2, 2);
  Map fresh(Map::FLOAT, 4, 1);
  EXPECT_EQ(nullptr, fresh.GetMergedBuffer<std::uint32_t>(other, 9, 2));
  EXPECT_EQ(nullptr, fresh.GetMergedBuffer<float>(other, 9, 2));
}

TEST(RemapTest, PackedNearestTableHoldsXLowAndYHighAndTheMarkerForBadPairs) {
  const float xs[6] = {1.9f, 300.0f, 3.0f, 9.0f, 32766.5f, 0.0f};
  const float ys[6] = {0.0f, 2.5f, 0.0f, -1.0f, 7.0f, 32766.0f};
  Map mx(Map::FLOAT, 6, 1), my(Map::FLOAT, 6, 1);
  for (int i = 0; i < 6; ++i) {
    mx.GetTypePtr<float>()[i] = xs[i];
    my.GetTypePtr<float>()[i] = ys[i];
  }
  const std::uint32_t* table = mx.GetNearestPackedBuffer(my, 32767, 32767);
  ASSERT_NE(nullptr, table);
  // (1, 0) and (300, 2); a pair with y = -1 is outside; (32766, 7) and (0, 32766).
  const std::uint32_t expected[6] = {1u, 300u | (2u << 16), 0xFFFFFFFFu, 0xFFFFFFFFu, 32766u | (7u << 16),
                                     32766u << 16};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], table[i]) << i;
  }
  // Cached for this source size; another size rebuilds it (x = 300 is now outside).
  EXPECT_EQ(table, mx.GetNearestPackedBuffer(my, 32767, 32767));
  const std::uint32_t* narrow = mx.GetNearestPackedBuffer(my, 100, 32767);
  ASSERT_NE(nullptr, narrow);
  EXPECT_EQ(0xFFFFFFFFu, narrow[0]);
  EXPECT_EQ(0xFFFFFFFFu, narrow[1]);
  // Sources of 32768 pixels or more either way have no packed table; the unpacked one serves.
  EXPECT_EQ(nullptr, mx.GetNearestPackedBuffer(my, 32768, 2));
  EXPECT_EQ(nullptr, mx.GetNearestPackedBuffer(my, 2, 32768));
  Map other(Map::FLOAT, 2, 2);
  EXPECT_EQ(nullptr, mx.GetNearestPackedBuffer(other, 100, 100));
}

TEST(RemapTest, IntegerMergeAfterANearestRemapGivesPairsNotThePackedTable) {
  // A nearest remap of an even-width frame keeps the packed table (one word per pixel) in the
  // integer merge slot; the integer merge reads pairs, two words per pixel, so it must not be
  // handed the packed table.
  Frame src(16, 4, 16);
  FillPattern(src);
  Frame dst(2, 2, 2);
  ImageMap map = Uniform(2, 2, 3.0f, 1.0f);
  map.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  const std::int32_t* packed = map.GetMapX().GetMergedTypePtr<std::int32_t>();
  ASSERT_NE(nullptr, packed);
  EXPECT_EQ(static_cast<std::int32_t>(3u | (1u << 16)), packed[0]);
  const std::int32_t* merged = map.GetMapX().Merge(0, map.GetMapY(), 16, 4);
  ASSERT_NE(nullptr, merged);
  for (int i = 0; i < 8; i += 2) {
    EXPECT_EQ(3, merged[i]) << i;
    EXPECT_EQ(1, merged[i + 1]) << i;
  }
  // That table is now cached as the merge describes.
  EXPECT_EQ(merged, map.GetMapX().Merge(0, map.GetMapY(), 16, 4));
}

TEST(RemapTest, CoefficientTableHoldsTheProductsOfThe32ndWeights) {
  EXPECT_TRUE(Remap::s_bilinearCoefficientInit);
  EXPECT_EQ(15u, Remap::s_coeffBits);
  for (int ky = 0; ky < 32; ++ky) {
    for (int kx = 0; kx < 32; ++kx) {
      // (32 - kx)/32 * (32 - ky)/32 * 32768 = (32 - kx)(32 - ky) * 32, exactly.
      const std::uint16_t* e = Remap::s_bilinearCoefficient[ky][kx];
      EXPECT_EQ((32 - kx) * (32 - ky) * 32, e[0]) << ky << " " << kx;
      EXPECT_EQ(kx * (32 - ky) * 32, e[1]);
      EXPECT_EQ((32 - kx) * ky * 32, e[2]);
      EXPECT_EQ(kx * ky * 32, e[3]);
    }
  }
  const std::uint16_t* origin = Remap::s_bilinearCoefficient[0][0];
  EXPECT_EQ(32768, origin[0]);
  EXPECT_EQ(0, origin[1]);
  EXPECT_EQ(0, origin[2]);
  EXPECT_EQ(0, origin[3]);
  EXPECT_EQ(31744, Remap::s_bilinearCoefficient[0][1][0]);
  EXPECT_EQ(1024, Remap::s_bilinearCoefficient[0][1][1]);
  EXPECT_EQ(30752, Remap::s_bilinearCoefficient[31][31][3]);
  EXPECT_TRUE(Remap::InitCoeffs());
}

TEST(RemapTest, FixedPointSampleAndWeightedSum) {
  const std::uint8_t plane[4] = {0, 100, 100, 200};
  EXPECT_EQ(100, Remap::BiLinearInterpolation(plane, 2, 0, 0, 16 * 32 + 16));
  EXPECT_EQ(0, Remap::BiLinearInterpolation(plane, 2, 0, 0, 0));
  // kx = 8 (a quarter), ky = 0: 0.75 * 0 + 0.25 * 100 = 25.
  EXPECT_EQ(25, Remap::BiLinearInterpolation(plane, 2, 0, 0, 8));
  const std::uint16_t coefficients[4] = {16384, 16384, 0, 0};
  EXPECT_EQ(150u, Remap::Multiply4(coefficients, 100, 200, 7, 7));
}

TEST(RemapTest, FixedPointTableRoundsToThe32ndOfAPixel) {
  Map mx(Map::FLOAT, 2, 1), my(Map::FLOAT, 2, 1);
  mx.GetTypePtr<float>()[0] = 1.5f;       // X = 48: column 1, fraction 16
  my.GetTypePtr<float>()[0] = 2.25f;      // Y = 72: row 2, fraction 8
  mx.GetTypePtr<float>()[1] = 0.015625f;  // 32 x = 0.5 rounds to even: 0
  my.GetTypePtr<float>()[1] = 0.0f;
  const std::uint32_t* table = Remap::CreateBilinenarFixedPointMap(mx, my, 4, 4, 999);
  ASSERT_NE(nullptr, table);
  const std::uint32_t expected[6] = {1, 2, 8 * 32 + 16, 0, 0, 0};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], table[i]) << i;
  }
  EXPECT_EQ(table, Remap::CreateBilinenarFixedPointMap(mx, my, 4, 4, 999));
  EXPECT_TRUE(mx.GetOwnBuffer());
}

TEST(RemapTest, FixedPointTableGivesTheDefaultToBothPixelsOfABadPair) {
  Map mx(Map::FLOAT, 2, 1), my(Map::FLOAT, 2, 1);
  mx.GetTypePtr<float>()[0] = 1.5f;
  my.GetTypePtr<float>()[0] = 2.25f;
  mx.GetTypePtr<float>()[1] = 4.0f;  // X = 128, not below 32 * 4
  my.GetTypePtr<float>()[1] = 0.5f;  // Y = 16: fraction 16
  const std::uint32_t* table = Remap::CreateBilinenarFixedPointMap(mx, my, 4, 4, 999);
  const std::uint32_t expected[6] = {999, 999, 8 * 32 + 16, 999, 999, 16 * 32 + 0};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], table[i]) << i;
  }
}

TEST(RemapTest, GenericNearestRoundsThroughThePixelAccessors) {
  Frame src(4, 4, 4);
  FillPattern(src);
  Frame holder(2, 2, 2);
  std::unique_ptr<Image> dst(holder.image.CreateBlank());  // a plain planar image: generic slots
  std::fill(dst->GetImage(), dst->GetImage() + dst->GetBufferSize(), 0xAA);
  ImageMap map = Uniform(2, 2, 1.6f, 0.4f);  // rounds to (2, 0)
  map.SetMapItem(1, 1, Vector2d(-0.6f, 0.0f));  // rounds to -1: outside
  map.Remap(src.image, *dst, NEAREST_NEIGHBOUR_INTERPOLATION);
  const std::uint8_t* y = dst->GetImage();
  EXPECT_EQ(2, y[0]);
  EXPECT_EQ(2, y[1]);
  EXPECT_EQ(2, y[2]);
  EXPECT_EQ(16, y[3]);
  // The block's chroma is the last pixel written, (1, 1): the default.
  EXPECT_EQ(128, y[4]);
  EXPECT_EQ(128, y[5]);
}

TEST(RemapTest, GenericBilinearUsesTheTextbookWeights) {
  Frame src(4, 4, 4, 0);
  for (std::uint32_t yy = 0; yy < 4; ++yy) {
    for (std::uint32_t xx = 0; xx < 4; ++xx) {
      src.Y(xx, yy) = static_cast<std::uint8_t>(10 * xx + 40 * yy);
    }
  }
  Frame holder(2, 2, 2);
  std::unique_ptr<Image> dst(holder.image.CreateBlank());
  ImageMap map = Uniform(2, 2, 1.5f, 0.5f);  // 0.25 (10 + 20 + 50 + 60) = 35
  map.SetMapItem(1, 0, Vector2d(1.25f, 0.0f));  // 0.75 * 10 + 0.25 * 20 = 12.5 -> 12
  map.SetMapItem(1, 1, Vector2d(3.0f, 0.0f));   // no right neighbour: default
  map.Remap(src.image, *dst, LINEAR_INTERPOLATION);
  const std::uint8_t* y = dst->GetImage();
  EXPECT_EQ(35, y[0]);
  EXPECT_EQ(12, y[1]);
  EXPECT_EQ(35, y[2]);
  EXPECT_EQ(16, y[3]);
  // The generic path converted nothing away: the maps stay FLOAT.
  EXPECT_EQ(Map::FLOAT, map.GetMapX().GetType());
}

TEST(RemapTest, CopyOfATallMapReadsOnlyItsOwnElements) {
  // A 2 x 4 map copy-constructed reports 4 x 4: its 16 pixels read the 8 elements the array
  // holds, and the rest count as unfilled, so the lower row pair becomes the default colour.
  Frame src(16, 4, 16);
  FillPattern(src);
  ImageMap tall = Uniform(2, 4, 1.0f, 0.0f);
  ImageMap copy(tall);
  EXPECT_EQ(Vector2d(4.0f, 4.0f), copy.GetMapSize());
  Frame dst(4, 4, 4);
  copy.Remap(src.image, dst.image, NEAREST_NEIGHBOUR_INTERPOLATION);
  for (std::uint32_t x = 0; x < 4; ++x) {
    EXPECT_EQ(1, dst.Y(x, 0)) << x;
    EXPECT_EQ(1, dst.Y(x, 1)) << x;
    EXPECT_EQ(16, dst.Y(x, 2)) << x;
    EXPECT_EQ(16, dst.Y(x, 3)) << x;
  }
  EXPECT_EQ(100, dst.U(0, 0));
  EXPECT_EQ(100, dst.U(1, 0));
  EXPECT_EQ(128, dst.U(0, 1));
  EXPECT_EQ(128, dst.V(1, 1));
}
