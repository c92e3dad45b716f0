#include "failure.h"
#include "output_file.h"
#include "y4m.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace dewarp_tool {
namespace {

std::string FailureText(const std::string& header) {
  try {
    ParseY4mHeader(header, "clip.y4m");
  } catch (const Failure& failure) {
    EXPECT_EQ(kExitBadInput, failure.Status());
    return failure.what();
  }
  return "";
}

TEST(Y4m, HeaderOfFfmpegIsRead) {
  const Y4mHeader h = ParseY4mHeader("YUV4MPEG2 W320 H240 F30000:1001 Ip A1:1 C420jpeg XYSCSS=420JPEG", "x");
  EXPECT_EQ(320, h.width);
  EXPECT_EQ(240, h.height);
  EXPECT_EQ(30000, h.rateNum);
  EXPECT_EQ(1001, h.rateDen);
}

TEST(Y4m, OtherPixelFormatsAreNamedInTheRefusal) {
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W320 H240 C444").find("unsupported pixel format C444"));
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W320 H240 C420p10").find("unsupported pixel format C420p10"));
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W320 H240 Cmono").find("unsupported pixel format Cmono"));
}

TEST(Y4m, OddAndMissingSizesAreRefused) {
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W321 H240").find("odd frame size 321x240"));
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W320").find("no frame size"));
  EXPECT_NE(std::string::npos, FailureText("YUV4MPEG2 W-4 H240").find("bad frame width"));
  EXPECT_NE(std::string::npos, FailureText("MPEG W320 H240").find("not a YUV4MPEG2 stream"));
}

TEST(Y4m, FramesAreReadUntilTheEndAndACutFrameIsRefused) {
  std::FILE* stream = std::tmpfile();
  ASSERT_NE(nullptr, stream);
  std::fputs("YUV4MPEG2 W4 H2 F25:1\nFRAME\n", stream);
  for (int i = 0; i < 12; ++i) std::fputc(i, stream);
  std::fputs("FRAME Ixyz\n", stream);
  for (int i = 0; i < 5; ++i) std::fputc(i, stream);  // 5 of 12 bytes
  std::rewind(stream);
  Y4mReader reader(stream, "cut.y4m");
  YuvFrame frame;
  ASSERT_TRUE(reader.ReadFrame(frame));
  EXPECT_EQ(4, frame.width);
  EXPECT_EQ(11, frame.data[11]);
  try {
    reader.ReadFrame(frame);
    ADD_FAILURE() << "a cut frame was accepted";
  } catch (const Failure& failure) {
    EXPECT_NE(std::string::npos, std::string(failure.what()).find("truncated: frame 2 has 5 of 12 bytes"));
  }
  std::fclose(stream);
}

TEST(OutputFile, NothingIsLeftWithoutCommit) {
  const std::string path = ::testing::TempDir() + "dewarp_output_file_test.bin";
  std::remove(path.c_str());
  {
    OutputFile file(path);
    file.Write("abc", 3);
    std::FILE* visible = std::fopen(path.c_str(), "rb");
    EXPECT_EQ(nullptr, visible) << "the final name exists before the commit";
    if (visible) std::fclose(visible);
  }
  std::FILE* left = std::fopen(path.c_str(), "rb");
  EXPECT_EQ(nullptr, left);
  if (left) std::fclose(left);
  {
    OutputFile file(path);
    file.Write("abc", 3);
    file.Commit();
  }
  std::FILE* done = std::fopen(path.c_str(), "rb");
  ASSERT_NE(nullptr, done);
  char bytes[4] = {0};
  EXPECT_EQ(3u, std::fread(bytes, 1, 4, done));
  EXPECT_STREQ("abc", bytes);
  std::fclose(done);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace dewarp_tool
