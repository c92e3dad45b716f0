// Memory of coordinate tables: large tables mapped at once, small ones from the heap, and maps
// whose tables are left for the builder to fill.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>
#include <new>

#include <gtest/gtest.h>

#include <libdewarp_vemo/map.h>

#include "../../../libdewarp_vemo/src/table_memory.h"

using namespace vemo::libdewarp;

namespace {

bool IsFillByte(const void* p, std::size_t bytes) {
  const unsigned char* c = static_cast<const unsigned char*>(p);
  for (std::size_t i = 0; i < bytes; ++i) {
    if (c[i] != 0xFF) return false;
  }
  return true;
}

}  // namespace

TEST(TableMemory, SmallAndLargeBlocksAreWritableAndAligned) {
  for (std::size_t bytes : {std::size_t(0), std::size_t(24), std::size_t(1) << 20, (std::size_t(1) << 23) + 12}) {
    std::shared_ptr<void> block = table_memory::Allocate(bytes);
    ASSERT_TRUE(block != nullptr) << bytes;
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(block.get()) % alignof(double)) << bytes;
    if (bytes > 0) {
      unsigned char* c = static_cast<unsigned char*>(block.get());
      c[0] = 1;
      c[bytes - 1] = 2;
      EXPECT_EQ(1, c[0]);
      EXPECT_EQ(2, c[bytes - 1]);
    }
  }
}

TEST(TableMemory, AnImpossibleSizeThrowsBadAlloc) {
  // More than any address space of either architecture can hold.
  EXPECT_THROW(table_memory::Allocate(std::numeric_limits<std::size_t>::max() - 4095), std::bad_alloc);
}

TEST(TableMemory, LargeFloatMapIsNanEverywhereIncludingThePadding) {
  // 1920 x 1080 floats: a table taken from mapped memory.
  Map map(Map::FLOAT, 1920, 1080);
  const float* table = map.GetTypePtr<float>();
  ASSERT_TRUE(table != nullptr);
  const std::size_t padded = map.GetMergedPixelCount();
  EXPECT_TRUE(IsFillByte(table, padded * sizeof(float)));
  EXPECT_TRUE(std::isnan(map.at<float>(1919, 1079)));
}

TEST(TableMemory, UnfilledResetFillsOnlyThePaddingAndKeepsTheSize) {
  for (unsigned cols : {7u, 8u, 1920u}) {
    Map map(Map::FLOAT, 3, 3);
    map.ResetUnfilled(Map::FLOAT, cols, 5);
    EXPECT_EQ(Map::FLOAT, map.GetType());
    EXPECT_EQ(cols, map.GetCols());
    EXPECT_EQ(5u, map.GetRows());
    EXPECT_EQ(std::size_t(cols) * 5, map.GetAllocatedCount());
    const float* table = map.GetTypePtr<float>();
    ASSERT_TRUE(table != nullptr);
    // The elements past rows x cols, which the pairwise merges read, are NaN.
    const std::size_t count = std::size_t(cols) * 5;
    const std::size_t padded = map.GetMergedPixelCount();
    ASSERT_GT(padded, count);
    EXPECT_TRUE(IsFillByte(table + count, (padded - count) * sizeof(float))) << cols;
    // The table itself is writable throughout.
    float* writable = map.GetTypePtr<float>();
    for (std::size_t i = 0; i < count; ++i) writable[i] = static_cast<float>(i);
    EXPECT_EQ(static_cast<float>(count - 1), map.at<float>(cols - 1, 4));
  }
}

TEST(TableMemory, UnfilledResetOfAnIntegerMap) {
  Map map;
  map.ResetUnfilled(Map::INTEGER, 5, 3);
  ASSERT_TRUE(map.GetTypePtr<std::int32_t>() != nullptr);
  const std::size_t count = 15, padded = map.GetMergedPixelCount();
  EXPECT_TRUE(IsFillByte(map.GetTypePtr<std::int32_t>() + count, (padded - count) * sizeof(std::int32_t)));
}

TEST(TableMemory, ARemadeMapIsNanEverywhereAgain) {
  // A map made right after one of the same size was filled and released (the allocator may hand
  // out the same memory) reads as NaN everywhere, as a fresh map does.
  Map keep(Map::FLOAT, 1024, 1024);
  {
    Map first(Map::FLOAT, 1024, 600);
    float* table = first.GetTypePtr<float>();
    for (std::size_t i = 0; i < std::size_t(1024) * 600; ++i) table[i] = 1.0f;
  }
  Map second(Map::FLOAT, 1024, 600);
  EXPECT_TRUE(IsFillByte(second.GetTypePtr<float>(), second.GetMergedPixelCount() * sizeof(float)));
}
