// The run-time loader of makers' libraries, against the stand-ins.
#include "adapter_test_support.h"
#include "makers/MakerLibrary.h"

using namespace adapter_test;

namespace {

TEST(MakerLibrary, OpensALibraryOnTheLoadersPathAndFindsItsCalls) {
  MakerLibrary library("libfisheyesw.so.1");
  ASSERT_TRUE(library.IsOpen());
  EXPECT_NE(library.Find("Fisheye_Initial"), nullptr);
  EXPECT_EQ(library.Find("Fisheye_NoSuchCall"), nullptr);
  EXPECT_EQ(library.Find(nullptr), nullptr);
  int (*oneFrame)(void*) = nullptr;
  EXPECT_TRUE(library.Resolve("Fisheye_OneFrame", oneFrame));
  EXPECT_NE(oneFrame, nullptr);
  EXPECT_FALSE(library.Resolve("Fisheye_NoSuchCall", oneFrame));
  EXPECT_EQ(oneFrame, nullptr);
}

TEST(MakerLibrary, AMissingLibraryIsNotOpenAndHasNoCalls) {
  MakerLibrary missing("libno-such-maker-library.so");
  EXPECT_FALSE(missing.IsOpen());
  EXPECT_EQ(missing.Find("Fisheye_Initial"), nullptr);
  MakerLibrary unnamed(nullptr);
  EXPECT_FALSE(unnamed.IsOpen());
}

struct CompleteTable {
  static const char* const LibraryName;
  int (*Initial)(void**, unsigned int);
  int (*Release)(void**);
  bool Bind(const MakerLibrary& library) {
    return library.Resolve("Fisheye_Initial", Initial) && library.Resolve("Fisheye_Release", Release);
  }
};
const char* const CompleteTable::LibraryName = "libfisheyesw.so.1";

struct IncompleteTable {
  static const char* const LibraryName;
  int (*Initial)(void**, unsigned int);
  int (*Missing)(void*);
  bool Bind(const MakerLibrary& library) {
    return library.Resolve("Fisheye_Initial", Initial) && library.Resolve("Fisheye_NoSuchCall", Missing);
  }
};
const char* const IncompleteTable::LibraryName = "libfisheyesw.so.1";

struct MissingTable {
  static const char* const LibraryName;
  int (*Any)(void*);
  bool Bind(const MakerLibrary& library) { return library.Resolve("Fisheye_Initial", Any); }
};
const char* const MissingTable::LibraryName = "libno-such-maker-library.so";

TEST(MakerCalls, ACompleteTableIsLoadedOnce) {
  const CompleteTable* calls = MakerCalls<CompleteTable>::Get();
  ASSERT_NE(calls, nullptr);
  EXPECT_NE(calls->Initial, nullptr);
  EXPECT_NE(calls->Release, nullptr);
  EXPECT_EQ(MakerCalls<CompleteTable>::Get(), calls);
}

TEST(MakerCalls, ATableWithAMissingCallOrLibraryIsNotHandedOut) {
  EXPECT_EQ(MakerCalls<IncompleteTable>::Get(), nullptr);
  EXPECT_EQ(MakerCalls<MissingTable>::Get(), nullptr);
}

}  // namespace
