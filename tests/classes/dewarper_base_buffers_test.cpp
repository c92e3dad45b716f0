#include <gtest/gtest.h>

#include <climits>

#include "recording_dewarper.h"

TEST(DewarperBaseBuffers, OutputSizeIsRoundedAndTheBufferReused) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  int width = 1001, height = 601, format = 0;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, &size, &format));
  EXPECT_EQ(width, 1008);
  EXPECT_EQ(height, 602);
  EXPECT_EQ(size, 1008u * 3u * 602u);
  EXPECT_EQ(format, 12);
  ASSERT_NE(buffer, nullptr);
  buffer[size - 1] = 0x5a;  // the whole size is writable
  EXPECT_EQ(dewarper.inits, 1);
  EXPECT_FALSE(dewarper.m_needsInit);

  int again_w = 1001, again_h = 601;
  unsigned char* again = nullptr;
  unsigned int again_size = 0;
  int again_format = 0;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&again_w, &again_h, &again, &again_size, &again_format));
  EXPECT_EQ(again, buffer);
  EXPECT_EQ(again_w, 1008);
  EXPECT_EQ(again_h, 602);
  EXPECT_EQ(again_size, size);
  EXPECT_EQ(dewarper.inits, 1);  // not reinitialised
}

TEST(DewarperBaseBuffers, SizesAlreadyRoundStayAsTheyAre) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  int width = 640, height = 480;
  unsigned int size = 0;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, nullptr, &size, nullptr));
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
  width = 1;
  height = 1;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, nullptr, &size, nullptr));
  EXPECT_EQ(width, 8);
  EXPECT_EQ(height, 2);
  EXPECT_EQ(size, 48u);
}

TEST(DewarperBaseBuffers, NewOutputSizeReallocatesAndReinitialises) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  int width = 320, height = 240;
  unsigned char* first = nullptr;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, &first, nullptr, nullptr));
  width = 328;
  height = 240;
  unsigned char* second = nullptr;
  unsigned int size = 0;
  ASSERT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, &second, &size, nullptr));
  EXPECT_EQ(dewarper.inits, 2);
  EXPECT_EQ(dewarper.m_dstWidth, 328);
  EXPECT_EQ(dewarper.m_dstHeight, 240);
  EXPECT_EQ(size, 328u * 3u * 240u);
  ASSERT_NE(second, nullptr);
  second[size - 1] = 1;
}

TEST(DewarperBaseBuffers, FailedInitialisationIsTheAnswerAndIsNotRetried) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  dewarper.initResult = false;
  int width = 64, height = 64;
  unsigned char* buffer = nullptr;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, nullptr, nullptr));
  EXPECT_NE(buffer, nullptr);  // the buffer is handed back all the same
  EXPECT_FALSE(dewarper.m_needsInit);
  EXPECT_EQ(dewarper.inits, 1);
  EXPECT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, nullptr, nullptr));
  EXPECT_EQ(dewarper.inits, 1);
}

TEST(DewarperBaseBuffers, InputBufferIsReusedForTheSameSize) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  dewarper.m_needsInit = false;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  ASSERT_TRUE(dewarper.GetImageInputBuffer(1936, 1936, &buffer, &size, &format));
  EXPECT_EQ(size, 1936u * 3u * 1936u);
  EXPECT_EQ(format, 12);
  EXPECT_EQ(dewarper.m_width, 1936);
  EXPECT_EQ(dewarper.m_height, 1936);
  EXPECT_TRUE(dewarper.m_needsInit);  // a new input size asks for initialisation
  ASSERT_NE(buffer, nullptr);
  buffer[size - 1] = 7;

  dewarper.m_needsInit = false;
  unsigned char* again = nullptr;
  ASSERT_TRUE(dewarper.GetImageInputBuffer(1936, 1936, &again, &size, &format));
  EXPECT_EQ(again, buffer);
  EXPECT_FALSE(dewarper.m_needsInit);

  ASSERT_TRUE(dewarper.GetImageInputBuffer(1920, 1080, &again, &size, &format));
  EXPECT_TRUE(dewarper.m_needsInit);
  EXPECT_EQ(dewarper.m_width, 1920);
  EXPECT_EQ(dewarper.m_height, 1080);
  EXPECT_EQ(size, 1920u * 3u * 1080u);
  again[size - 1] = 7;
  EXPECT_EQ(dewarper.inits, 0);  // the input side never initialises by itself
}

TEST(DewarperBaseBuffers, NothingIsHandedOutWhenNotReady) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  dewarper.ready = false;
  unsigned char* buffer = nullptr;
  unsigned int size = 0;
  int format = 0;
  EXPECT_FALSE(dewarper.GetImageInputBuffer(64, 64, &buffer, &size, &format));
  int width = 64, height = 64;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, &size, &format));
  EXPECT_EQ(buffer, nullptr);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(dewarper.m_input, nullptr);
  EXPECT_EQ(dewarper.m_output, nullptr);
  EXPECT_EQ(dewarper.inits, 0);
}

TEST(DewarperBaseBuffers, UnusableSizesAllocateNothing) {
  const int sizes[][2] = {{0, 10}, {10, 0}, {-1, 10}, {10, -1}, {INT_MIN, INT_MIN},
                          {65536, 65536}, {INT_MAX, INT_MAX}, {INT_MAX, 1}, {1431655766, 1}};
  for (const auto& s : sizes) {
    InitCountingDewarper dewarper(ParamsWithPosition(1));
    unsigned char* buffer = nullptr;
    unsigned int size = 0;
    int format = 0;
    EXPECT_FALSE(dewarper.GetImageInputBuffer(s[0], s[1], &buffer, &size, &format)) << s[0] << "x" << s[1];
    int width = s[0], height = s[1];
    EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, &buffer, &size, &format)) << s[0] << "x" << s[1];
    EXPECT_EQ(width, s[0]);
    EXPECT_EQ(height, s[1]);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(dewarper.m_input, nullptr);
    EXPECT_EQ(dewarper.m_output, nullptr);
    EXPECT_EQ(dewarper.m_width, 0);
    EXPECT_EQ(dewarper.m_dstWidth, 0);
    EXPECT_EQ(dewarper.inits, 0);
  }
}

// Three bytes per pixel must still be countable in 32 bits: 1431655765 x 3 is 2^32 - 1.
TEST(DewarperBaseBuffers, UsableSizeEndsWhereTheByteCountWouldOverflow) {
  EXPECT_TRUE(RecordingDewarper::IsFrameSizeUsable(1431655765, 1));
  EXPECT_FALSE(RecordingDewarper::IsFrameSizeUsable(1431655766, 1));
  EXPECT_TRUE(RecordingDewarper::IsFrameSizeUsable(37837, 37837));  // 4294915707 bytes
  EXPECT_FALSE(RecordingDewarper::IsFrameSizeUsable(37838, 37838));
  EXPECT_TRUE(RecordingDewarper::IsFrameSizeUsable(1, 1));
  EXPECT_FALSE(RecordingDewarper::IsFrameSizeUsable(0, 1));
}

TEST(DewarperBaseBuffers, RoundingThatWouldOverflowIsRefused) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  int width = INT_MAX - 2, height = 1;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  EXPECT_EQ(width, INT_MAX - 2);
  width = 8;
  height = INT_MAX;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  EXPECT_EQ(dewarper.m_output, nullptr);
}

TEST(DewarperBaseBuffers, NullOutParametersAreNotWritten) {
  InitCountingDewarper dewarper(ParamsWithPosition(1));
  EXPECT_TRUE(dewarper.GetImageInputBuffer(16, 16, nullptr, nullptr, nullptr));
  EXPECT_NE(dewarper.m_input, nullptr);
  int width = 16, height = 16;
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(nullptr, &height, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(&width, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(dewarper.GetImageOutputBuffer(nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(dewarper.m_output, nullptr);
  EXPECT_TRUE(dewarper.GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  EXPECT_NE(dewarper.m_output, nullptr);
}

TEST(DewarperBaseBuffers, DeletingThroughTheInterfaceReleasesBothBuffers) {
  IDewarper* dewarper = new InitCountingDewarper(ParamsWithPosition(1));
  int width = 100, height = 100;
  ASSERT_TRUE(dewarper->GetImageInputBuffer(100, 100, nullptr, nullptr, nullptr));
  ASSERT_TRUE(dewarper->GetImageOutputBuffer(&width, &height, nullptr, nullptr, nullptr));
  delete dewarper;  // the leak checker of the sanitizer build sees what is left behind
}
