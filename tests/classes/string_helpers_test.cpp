#include <gtest/gtest.h>

#include "StringHelpers.h"

TEST(StringHelpers, StartsWith) {
  EXPECT_TRUE(StringHelpers::StartsWith("FE8181", "FE"));
  EXPECT_TRUE(StringHelpers::StartsWith("FE", "FE"));
  EXPECT_TRUE(StringHelpers::StartsWith("anything", ""));
  EXPECT_TRUE(StringHelpers::StartsWith("", ""));
  EXPECT_FALSE(StringHelpers::StartsWith("F", "FE"));
  EXPECT_FALSE(StringHelpers::StartsWith("fe8181", "FE"));
  EXPECT_FALSE(StringHelpers::StartsWith("XFE", "FE"));
  EXPECT_FALSE(StringHelpers::StartsWith("", "FE"));
}

TEST(StringHelpers, EndsWith) {
  EXPECT_TRUE(StringHelpers::EndsWith("rtsp://x/h264", "/h264"));
  EXPECT_TRUE(StringHelpers::EndsWith("/h264", "/h264"));
  EXPECT_TRUE(StringHelpers::EndsWith("abc", ""));
  EXPECT_FALSE(StringHelpers::EndsWith("h264", "/h264"));
  EXPECT_FALSE(StringHelpers::EndsWith("rtsp://x/h264/", "/h264"));
  EXPECT_FALSE(StringHelpers::EndsWith("rtsp://x/H264", "/h264"));
  EXPECT_FALSE(StringHelpers::EndsWith("", "x"));
}

TEST(StringHelpers, ComparesBytesIncludingEmbeddedNulls) {
  const std::string text("ab\0cd", 5);
  EXPECT_TRUE(StringHelpers::EndsWith(text, std::string("\0cd", 3)));
  EXPECT_FALSE(StringHelpers::StartsWith(text, std::string("ab\0x", 4)));
}
