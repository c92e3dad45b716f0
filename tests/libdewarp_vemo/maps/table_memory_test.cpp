// Memory of coordinate tables: large tables mapped at once, small ones from the heap, released
// large tables kept (within bounds) for the next table of the same size, and maps whose tables
// are left for the builder to fill.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <vector>
#include <new>
#include <sstream>
#include <string>
#include <thread>

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

const std::size_t kMiB = std::size_t(1) << 20;

// Starts a test of the kept blocks from an empty pool; false when this build keeps none.
bool StartWithNoSpares() {
  table_memory::ReleaseSpares();
  return table_memory::KeepsSpares();
}

// For the length of a test: huge pages are used however slowly they are made present (on a
// machine where they are slow, a slow page seen before the test would otherwise leave its fresh
// blocks on 4 KiB pages, off the huge-page boundary).
class HugePagesWhateverTheirSpeed {
public:
  HugePagesWhateverTheirSpeed() : m_bound(table_memory::SetSlowHugePage(std::numeric_limits<double>::infinity())) {}
  ~HugePagesWhateverTheirSpeed() { table_memory::SetSlowHugePage(m_bound); }
  double Bound() const { return m_bound; }

private:
  double m_bound;
};

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

TEST(TableMemory, AReleasedLargeBlockServesTheNextRequestOfItsSize) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  const std::size_t bytes = 3 * kMiB + 40;
  void* first = nullptr;
  {
    std::shared_ptr<void> block = table_memory::Allocate(bytes);
    first = block.get();
    static_cast<unsigned char*>(first)[bytes - 1] = 0x5A;
    EXPECT_EQ(0u, table_memory::SpareBytes());
  }
  EXPECT_EQ(bytes, table_memory::SpareBytes());
  // A larger request does not take it.
  std::shared_ptr<void> other = table_memory::Allocate(bytes + 4096);
  EXPECT_NE(first, other.get());
  EXPECT_EQ(bytes, table_memory::SpareBytes());
  // The same size does, contents and all.
  std::shared_ptr<void> again = table_memory::Allocate(bytes);
  EXPECT_EQ(first, again.get());
  EXPECT_EQ(0x5A, static_cast<unsigned char*>(again.get())[bytes - 1]);
  EXPECT_EQ(0u, table_memory::SpareBytes());
}

TEST(TableMemory, ASmallerRequestTakesTheSmallestLargerBlockCutToSize) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  void* small = nullptr;
  void* large = nullptr;
  {
    std::shared_ptr<void> a = table_memory::Allocate(8 * kMiB);
    std::shared_ptr<void> b = table_memory::Allocate(5 * kMiB);
    large = a.get();
    small = b.get();
    static_cast<unsigned char*>(small)[0] = 0x33;
  }
  EXPECT_EQ(13 * kMiB, table_memory::SpareBytes());
  // 4 MiB + 1: both blocks could serve it; the 5 MiB one is chosen and cut down. The rest, less
  // than 1 MiB, is too small to keep and is unmapped.
  std::shared_ptr<void> block = table_memory::Allocate(4 * kMiB + 1);
  EXPECT_EQ(small, block.get());
  EXPECT_EQ(0x33, static_cast<unsigned char*>(block.get())[0]);
  static_cast<unsigned char*>(block.get())[4 * kMiB] = 1;  // the last byte asked for is there
  EXPECT_EQ(8 * kMiB, table_memory::SpareBytes());
  // Released again, it counts with its new size only.
  block.reset();
  EXPECT_EQ(8 * kMiB + 4 * kMiB + 1, table_memory::SpareBytes());
  // And the 8 MiB block is still whole.
  std::shared_ptr<void> whole = table_memory::Allocate(8 * kMiB);
  EXPECT_EQ(large, whole.get());
  static_cast<unsigned char*>(whole.get())[8 * kMiB - 1] = 2;
}

// A cut that leaves 1 MiB or more keeps the rest as a block of its own (a released projection map
// serves a scale map and then a combined map), and the rest serves the next request.
TEST(TableMemory, ACutLeavingALargeBlocksWorthKeepsTheRestForTheNextRequest) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  void* whole = nullptr;
  { whole = table_memory::Allocate(8 * kMiB).get(); }
  EXPECT_EQ(8 * kMiB, table_memory::SpareBytes());
  std::shared_ptr<void> first = table_memory::Allocate(3 * kMiB);
  EXPECT_EQ(whole, first.get());
  EXPECT_EQ(5 * kMiB, table_memory::SpareBytes());
  std::shared_ptr<void> rest = table_memory::Allocate(5 * kMiB);
  EXPECT_EQ(static_cast<unsigned char*>(whole) + 3 * kMiB, rest.get());
  EXPECT_EQ(0u, table_memory::SpareBytes());
  static_cast<unsigned char*>(rest.get())[5 * kMiB - 1] = 3;  // its last byte is there
  static_cast<unsigned char*>(first.get())[3 * kMiB - 1] = 4;
  first.reset();
  rest.reset();
  EXPECT_EQ(8 * kMiB, table_memory::SpareBytes());
}

// The flags the kernel lists for the mapping that holds the address ("hg": offered for huge pages,
// "nh": never on huge pages), or an empty string when it cannot be told.
std::string MappingFlags(const void* p) {
  std::ifstream smaps("/proc/self/smaps");
  const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(p);
  bool inside = false;
  std::string line;
  while (std::getline(smaps, line)) {
    unsigned long long from = 0, to = 0;
    char dash = 0;
    std::istringstream head(line);
    if (head >> std::hex >> from >> dash >> to && dash == '-') {
      inside = address >= from && address < to;
      continue;
    }
    if (inside && line.compare(0, 8, "VmFlags:") == 0) return line.substr(8) + " ";
  }
  return std::string();
}

// Huge pages slow to make present: the rest of the block is made of 4 KiB pages, and so are the
// blocks mapped next; once the bound is back (and the slow page forgotten), huge pages again.
TEST(TableMemory, AfterASlowHugePageTheRestAndTheNextBlocksTakeSmallPages) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  HugePagesWhateverTheirSpeed whatever;
  std::shared_ptr<void> usual = table_memory::Allocate(4 * kMiB);
  if (MappingFlags(usual.get()).find(" hg ") == std::string::npos) {
    GTEST_SKIP() << "this kernel does not offer blocks for huge pages";
  }
  // A bound below any time: the first huge page of the next fresh block counts as slow.
  table_memory::SetSlowHugePage(-1.0);
  std::shared_ptr<void> first = table_memory::Allocate(8 * kMiB);
  unsigned char* const bytes = static_cast<unsigned char*>(first.get());
  EXPECT_NE(std::string::npos, MappingFlags(bytes).find(" hg "));
  EXPECT_NE(std::string::npos, MappingFlags(bytes + 2 * kMiB).find(" nh "));
  EXPECT_NE(std::string::npos, MappingFlags(bytes + 8 * kMiB - 1).find(" nh "));
  bytes[0] = 1;
  bytes[8 * kMiB - 1] = 2;
  std::shared_ptr<void> next = table_memory::Allocate(4 * kMiB);
  EXPECT_EQ(std::string::npos, MappingFlags(next.get()).find(" hg "));
  static_cast<unsigned char*>(next.get())[4 * kMiB - 1] = 3;
  // The usual bound back, the slow page forgotten.
  EXPECT_EQ(-1.0, table_memory::SetSlowHugePage(whatever.Bound()));
  std::shared_ptr<void> later = table_memory::Allocate(4 * kMiB);
  EXPECT_NE(std::string::npos, MappingFlags(later.get()).find(" hg "));
  EXPECT_EQ(std::string::npos, MappingFlags(later.get()).find(" nh "));
}

// Fresh blocks of a huge page or more start on a 2 MiB boundary, so that the kernel can back
// them with transparent huge pages; the whole request is there, and so are blocks just under a
// huge page, which are mapped as they are.
TEST(TableMemory, AFreshBlockOfAHugePageOrMoreStartsOnAHugePageBoundary) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  HugePagesWhateverTheirSpeed whatever;
  const std::size_t kHuge = 2 * kMiB;
  for (std::size_t bytes : {kHuge, 3 * kMiB + 40, 17 * kMiB + 4095}) {
    std::shared_ptr<void> block = table_memory::Allocate(bytes);
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(block.get()) % kHuge) << bytes;
    unsigned char* c = static_cast<unsigned char*>(block.get());
    for (std::size_t i = 0; i < bytes; i += 4096) c[i] = 0x11;
    c[bytes - 1] = 0x22;
    EXPECT_EQ(0x11, c[0]);
    EXPECT_EQ(0x22, c[bytes - 1]);
  }
  std::shared_ptr<void> under = table_memory::Allocate(kHuge - 4096);
  unsigned char* c = static_cast<unsigned char*>(under.get());
  c[0] = 1;
  c[kHuge - 4097] = 2;
  EXPECT_EQ(2, c[kHuge - 4097]);
  table_memory::ReleaseSpares();
}

TEST(TableMemory, SmallBlocksAreNeverKept) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  { std::shared_ptr<void> block = table_memory::Allocate(kMiB - 1); }
  EXPECT_EQ(0u, table_memory::SpareBytes());
}

TEST(TableMemory, KeptBytesStayWithinTheBoundNewestFirst) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  // Ten blocks of 12 MiB released one after another: 64 MiB hold five of them, the newest.
  const std::size_t bytes = 12 * kMiB;
  std::vector<std::shared_ptr<void>> blocks;
  std::vector<void*> addresses;
  for (int i = 0; i < 10; ++i) {
    blocks.push_back(table_memory::Allocate(bytes));
    addresses.push_back(blocks.back().get());
  }
  for (std::shared_ptr<void>& block : blocks) {
    block.reset();
    EXPECT_LE(table_memory::SpareBytes(), table_memory::s_nSpareBytes);
  }
  const std::size_t kept = table_memory::s_nSpareBytes / bytes;
  ASSERT_EQ(5u, kept);
  EXPECT_EQ(kept * bytes, table_memory::SpareBytes());
  // They come back newest first: the last released block is handed out first.
  for (std::size_t i = 0; i < kept; ++i) {
    std::shared_ptr<void> block = table_memory::Allocate(bytes);
    EXPECT_EQ(addresses[addresses.size() - 1 - i], block.get()) << i;
    blocks[i] = block;
  }
  EXPECT_EQ(0u, table_memory::SpareBytes());
}

TEST(TableMemory, AtMostTheBoundNumberOfBlocksIsKept) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  {
    std::vector<std::shared_ptr<void>> blocks;
    for (int i = 0; i < 12; ++i) blocks.push_back(table_memory::Allocate(kMiB + 8 * i));
  }
  // 8 blocks of the 12: the sizes of the last 8 released (vector elements go first to last).
  std::size_t expected = 0;
  for (int i = 4; i < 12; ++i) expected += kMiB + 8 * i;
  ASSERT_EQ(8, table_memory::s_nSpareBlocks);
  EXPECT_EQ(expected, table_memory::SpareBytes());
}

TEST(TableMemory, ABlockLargerThanTheBoundIsUnmappedAtOnce) {
  if (!StartWithNoSpares()) GTEST_SKIP() << "tables come from the heap in this build";
  { std::shared_ptr<void> small = table_memory::Allocate(2 * kMiB); }
  { std::shared_ptr<void> huge = table_memory::Allocate(table_memory::s_nSpareBytes + 4096); }
  // The huge block is not kept and does not push the small one out.
  EXPECT_EQ(2 * kMiB, table_memory::SpareBytes());
  table_memory::ReleaseSpares();
  EXPECT_EQ(0u, table_memory::SpareBytes());
}

TEST(TableMemory, ThreadsNeverShareAKeptBlock) {
  table_memory::ReleaseSpares();
  // Four threads take and release blocks of two sizes; each writes its own mark over both ends
  // of the block and checks them before releasing it. A block handed to two holders at once
  // would show another thread's mark.
  const std::size_t sizes[2] = {2 * kMiB, 2 * kMiB + 4096};
  std::vector<int> failures(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 150; ++i) {
        const std::size_t bytes = sizes[(i + t) % 2];
        std::shared_ptr<void> block = table_memory::Allocate(bytes);
        unsigned char* c = static_cast<unsigned char*>(block.get());
        const unsigned char mark = static_cast<unsigned char>(16 * t + i % 16);
        std::memset(c, mark, 4096);
        std::memset(c + bytes - 4096, mark, 4096);
        std::this_thread::yield();
        for (std::size_t k = 0; k < 4096; k += 512) {
          if (c[k] != mark || c[bytes - 1 - k] != mark) ++failures[t];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(0, failures[t]) << t;
  EXPECT_LE(table_memory::SpareBytes(), table_memory::s_nSpareBytes);
}
