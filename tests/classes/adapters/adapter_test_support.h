// Helpers of the adapter tests: creation parameters, frames requested the way a host does, the
// stand-ins' call log and pointer texts as the stand-ins print them.
#ifndef TESTS_CLASSES_ADAPTERS_ADAPTER_TEST_SUPPORT_H
#define TESTS_CLASSES_ADAPTERS_ADAPTER_TEST_SUPPORT_H

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "DewarperType.h"
#include "FakeCalls.h"
#include "IDewarper.h"

namespace adapter_test {

inline DewarpParams_t Params(int lens, int position, int scroll = 0, int x = 0, int y = 0, int r = 0) {
  DewarpParams_t params = {lens, position, scroll, x, y, r};
  return params;
}

// A pointer as the stand-ins print it (%p).
inline std::string Ptr(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

inline std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
inline std::string Format(const char* format, ...) {
  char text[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

// What the host gets back from one pair of buffer requests.
struct Frame {
  bool InputOk = false;
  bool OutputOk = false;
  unsigned char* Input = nullptr;
  unsigned char* Output = nullptr;
  unsigned int InputSize = 0;
  unsigned int OutputSize = 0;
  int InputFormat = -1;
  int OutputFormat = -1;
  int Width = 0;   // output size as written back
  int Height = 0;
};

// Asks for an input buffer of inputWidth x inputHeight, then for an output of the requested
// size (which the dewarper may change), the way a host does for every frame.
inline Frame RequestFrame(IDewarper& dewarper, int inputWidth, int inputHeight, int outputWidth,
                          int outputHeight) {
  Frame frame;
  frame.InputOk = dewarper.GetImageInputBuffer(inputWidth, inputHeight, &frame.Input, &frame.InputSize,
                                               &frame.InputFormat);
  frame.Width = outputWidth;
  frame.Height = outputHeight;
  frame.OutputOk = dewarper.GetImageOutputBuffer(&frame.Width, &frame.Height, &frame.Output,
                                                 &frame.OutputSize, &frame.OutputFormat);
  return frame;
}

// Whether the dynamic loader finds a library of this name (the same search the adapters use).
inline bool LibraryPresent(const char* fileName) {
  void* handle = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    return false;
  }
  dlclose(handle);
  return true;
}

// Tests against the stand-ins start from an empty call log and default answers.
class FakeLogTest : public ::testing::Test {
protected:
  void SetUp() override { fake_makers::Reset(); }
  void TearDown() override { fake_makers::Reset(); }
  static std::vector<std::string> Calls() { return fake_makers::Take(); }
};

struct Range {
  float Min, Max, Span;
  bool Wraps;
};

template <class Dewarper>
Range PanRangeOf(Dewarper& dewarper) {
  Range range = {0, 0, 0, false};
  dewarper.GetPanRange(range.Min, range.Max, range.Span, range.Wraps);
  return range;
}

template <class Dewarper>
Range TiltRangeOf(Dewarper& dewarper) {
  Range range = {0, 0, 0, false};
  dewarper.GetTiltRange(range.Min, range.Max, range.Span, range.Wraps);
  return range;
}

#define EXPECT_RANGE(range, min, max, span, wraps) \
  do {                                             \
    const ::adapter_test::Range r_ = (range);      \
    EXPECT_FLOAT_EQ(r_.Min, (min));                \
    EXPECT_FLOAT_EQ(r_.Max, (max));                \
    EXPECT_FLOAT_EQ(r_.Span, (span));              \
    EXPECT_EQ(r_.Wraps, (wraps));                  \
  } while (0)

struct Position {
  float Pan, Tilt, Zoom;
};

inline Position PositionOf(IDewarper& dewarper) {
  Position p = {0, 0, 0};
  dewarper.GetPosition(p.Pan, p.Tilt, p.Zoom);
  return p;
}

}  // namespace adapter_test

#endif
