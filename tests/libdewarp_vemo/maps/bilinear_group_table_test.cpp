// The bilinear table in the layout of the 4:2:0 block loops: groups of sixteen columns of a row
// pair, even and odd columns apart, pairs outside the interpolable area and columns past the
// width marked.
#include <libdewarp_vemo/map.h>

#include <gtest/gtest.h>

#include <cstdint>

using vemo::libdewarp::Map;

namespace {

const float kMarker = 3.4028235e38f;

// Pixel (c, r) of the test maps: x = (c % 4) + 0.25, y = r + 0.5, all inside a 5 x 4 source
// (x < 4, y < 3), except pixel (5, 1) with x = 4 and pixel (16, 0) with y = -0.01.
float TestX(unsigned c, unsigned r) {
  return (c == 5 && r == 1) ? 4.0f : static_cast<float>(c % 4) + 0.25f;
}
float TestY(unsigned c, unsigned r) {
  return (c == 16 && r == 0) ? -0.01f : static_cast<float>(r) + 0.5f;
}

void FillTestMaps(Map& mx, Map& my, unsigned cols, unsigned rows) {
  mx.Reset(Map::FLOAT, cols, rows);
  my.Reset(Map::FLOAT, cols, rows);
  for (unsigned r = 0; r < rows; ++r) {
    for (unsigned c = 0; c < cols; ++c) {
      mx.GetTypePtr<float>()[r * cols + c] = TestX(c, r);
      my.GetTypePtr<float>()[r * cols + c] = TestY(c, r);
    }
  }
}

}  // namespace

TEST(BilinearGroupTableTest, GroupsHoldEvenAndOddColumnsOfBothRows) {
  // 18 x 3: two groups per row pair (the second with one real pair per row), the odd last row
  // has no entries.
  Map mx, my;
  FillTestMaps(mx, my, 18, 3);
  const float* table = mx.GetBilinearGroupBuffer(my, 5, 4);
  ASSERT_NE(nullptr, table);
  // Group 0, top row: every pair inside.
  for (unsigned k = 0; k < 8; ++k) {
    EXPECT_EQ(TestX(2 * k, 0), table[k]) << k;
    EXPECT_EQ(0.5f, table[8 + k]) << k;
    EXPECT_EQ(TestX(2 * k + 1, 0), table[16 + k]) << k;
    EXPECT_EQ(0.5f, table[24 + k]) << k;
  }
  // Group 0, bottom row: the pair of columns 4 and 5 is outside (x = 4 is not below 4).
  for (unsigned k = 0; k < 8; ++k) {
    const bool inside = k != 2;
    EXPECT_EQ(inside ? TestX(2 * k, 1) : kMarker, table[32 + k]) << k;
    EXPECT_EQ(inside ? 1.5f : kMarker, table[40 + k]) << k;
    EXPECT_EQ(inside ? TestX(2 * k + 1, 1) : kMarker, table[48 + k]) << k;
    EXPECT_EQ(inside ? 1.5f : kMarker, table[56 + k]) << k;
  }
  // Group 1: columns 16 and 17; the top pair is outside (y = -0.01), the bottom one inside;
  // the columns past the width hold the marker.
  const float* group = table + 64;
  for (unsigned j = 0; j < 4; ++j) {
    EXPECT_EQ(kMarker, group[8 * j]) << j;
  }
  EXPECT_EQ(0.25f, group[32]);
  EXPECT_EQ(1.5f, group[40]);
  EXPECT_EQ(1.25f, group[48]);
  EXPECT_EQ(1.5f, group[56]);
  for (unsigned k = 1; k < 8; ++k) {
    for (unsigned j = 0; j < 8; ++j) {
      EXPECT_EQ(kMarker, group[8 * j + k]) << j << " " << k;
    }
  }
}

TEST(BilinearGroupTableTest, CachedInTheFloatSlotForOneSourceSize) {
  Map mx, my;
  FillTestMaps(mx, my, 18, 2);
  const float* table = mx.GetBilinearGroupBuffer(my, 5, 4);
  ASSERT_NE(nullptr, table);
  EXPECT_EQ(table, mx.GetMergedTypePtr<float>());
  // Refilling the maps without a Reset keeps the cached table.
  mx.GetTypePtr<float>()[0] = 2.5f;
  EXPECT_EQ(table, mx.GetBilinearGroupBuffer(my, 5, 4));
  EXPECT_EQ(0.25f, mx.GetBilinearGroupBuffer(my, 5, 4)[0]);
  // Another source size clips again: with a 4 x 4 source x must be below 3, so every pair with
  // a pixel at x = 3.25 (columns 3, 7, 11, 15 of each row) is outside.
  const float* other = mx.GetBilinearGroupBuffer(my, 4, 4);
  ASSERT_NE(nullptr, other);
  EXPECT_EQ(2.5f, other[0]);
  EXPECT_EQ(1.25f, other[16]);
  EXPECT_EQ(kMarker, other[1]);  // columns 2 and 3
  EXPECT_EQ(kMarker, other[16 + 1]);
  // The interleaved table takes the slot back and the group table is built again after it.
  const float* interleaved = mx.GetMergedBuffer<float>(my, 5, 4);
  ASSERT_NE(nullptr, interleaved);
  EXPECT_EQ(2.5f, interleaved[0]);
  EXPECT_EQ(0.5f, interleaved[1]);
  EXPECT_EQ(1.25f, interleaved[2]);
}

TEST(BilinearGroupTableTest, NoTableForOddWidthsOrMismatchedMaps) {
  Map mx, my;
  FillTestMaps(mx, my, 17, 2);
  EXPECT_EQ(nullptr, mx.GetBilinearGroupBuffer(my, 5, 4));
  Map other(Map::FLOAT, 18, 3);
  Map fresh(Map::FLOAT, 18, 2);
  EXPECT_EQ(nullptr, fresh.GetBilinearGroupBuffer(other, 5, 4));
}

TEST(BilinearGroupTableTest, IntegerMapsAreReadThroughTheirValues) {
  // An INTEGER pair goes element by element: x = c, y = 1 on a 20 x 4 source; pairs with x
  // below 19 are inside.
  Map mx(Map::INTEGER, 20, 2), my(Map::INTEGER, 20, 2);
  for (unsigned i = 0; i < 40; ++i) {
    mx.GetTypePtr<std::int32_t>()[i] = static_cast<std::int32_t>(i % 20);
    my.GetTypePtr<std::int32_t>()[i] = 1;
  }
  const float* table = mx.GetBilinearGroupBuffer(my, 20, 4);
  ASSERT_NE(nullptr, table);
  EXPECT_EQ(14.0f, table[7]);
  EXPECT_EQ(15.0f, table[16 + 7]);
  EXPECT_EQ(1.0f, table[8 + 7]);
  // Group 1: columns 16 to 19; the pair (18, 19) is outside (19 is not below 19).
  EXPECT_EQ(16.0f, table[64]);
  EXPECT_EQ(17.0f, table[64 + 16]);
  EXPECT_EQ(kMarker, table[64 + 1]);
  EXPECT_EQ(kMarker, table[64 + 16 + 1]);
  EXPECT_EQ(kMarker, table[64 + 32 + 1]);
}
