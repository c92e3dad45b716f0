#include <libdewarp_vemo/verify.h>

#include <libdewarp_vemo/error.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <string>

#include "log_capture.h"

namespace {

using vemo::libdewarp::CodeLocation;
using vemo::libdewarp::Error;
using vemo::libdewarp::Verify;

const CodeLocation Here("src/dewarp.cpp", nullptr, "Open", 1538);

std::string Expected(int code, const std::string& symbol, const std::string& message) {
  return "(Open@src/dewarp.cpp:1538) [Error " + symbol + " (" + std::to_string(code) + ")] - " + message;
}

// Runs a check that must throw: returns the message and leaves errno for inspection.
template <class F>
std::string Refusal(F check) {
  errno = 0;
  try {
    check();
  } catch (const Error& error) {
    return error.what();
  }
  ADD_FAILURE() << "the check passed";
  return std::string();
}

// Runs a check that must pass without touching errno.
template <class F>
void Passes(F check) {
  errno = 0;
  EXPECT_NO_THROW(check());
  EXPECT_EQ(0, errno);
}

template <class Enumeration>
void ExpectRange(int last, const std::string& message) {
  for (int value = 0; value <= last; ++value) {
    SCOPED_TRACE(value);
    Passes([&] { Verify(Here, static_cast<Enumeration>(value)); });
  }
  for (int value : {-1, last + 1, last + 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(Expected(22, "EINVAL", message), Refusal([&] { Verify(Here, static_cast<Enumeration>(value)); }));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST(VerifyEnumeration, CameraMount) { ExpectRange<DEWARP_INTERNAL_CAMERA_MOUNT>(3, "Invalid camera mount"); }

TEST(VerifyEnumeration, CameraTypeReportsTheMountMessage) {
  ExpectRange<DEWARP_INTERNAL_CAMERA_TYPE>(1, "Invalid camera mount");
}

TEST(VerifyEnumeration, ImageFormat) { ExpectRange<DEWARP_IMAGE_FORMAT>(4, "Invalid image format"); }

TEST(VerifyEnumeration, AspectRatio) { ExpectRange<DEWARP_ASPECT_RATIO>(2, "Invalid aspect ratio"); }

TEST(VerifyEnumeration, View) { ExpectRange<DEWARP_VIEW>(5, "Invalid view"); }

TEST(VerifyEnumeration, Projection) { ExpectRange<DEWARP_PROJECTION>(8, "Invalid projection"); }

TEST(VerifyEnumeration, Interpolation) { ExpectRange<DEWARP_INTERPOLATION>(2, "Invalid interpolation"); }

TEST(VerifyCameraModel, OnlyTheTypeIsTested) {
  DEWARP_INTERNAL_CAMERA_MODEL model = {RECTILINEAR_CAMERA, std::nanf(""), -1.0f, 1e30f, 0, 0};
  Passes([&] { Verify(Here, model); });
  model.Type = CIRCULAR_FISHEYE_CAMERA;
  Passes([&] { Verify(Here, model); });
}

TEST(VerifyCameraModel, TypeTwoIsRefusedAsAnInvalidMount) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = {static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(2), 183.0f, 183.0f, 183.0f,
                                              1936, 1936};
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid camera mount"), Refusal([&] { Verify(Here, model); }));
  EXPECT_EQ(22, errno);
}

TEST(VerifyPointer, NullIsRefusedWithItsName) {
  EXPECT_EQ(Expected(14, "EFAULT", "Invalid pointer to channel settings"),
            Refusal([&] { Verify(Here, nullptr, 16, "channel settings"); }));
  EXPECT_EQ(EFAULT, errno);
  EXPECT_EQ(Expected(14, "EFAULT", "Invalid pointer to Native Resolution"),
            Refusal([&] { Verify(Here, nullptr, 8, "Native Resolution"); }));
  EXPECT_EQ(EFAULT, errno);
}

TEST(VerifyPointer, AnyNonNullPointerPassesWhateverTheSize) {
  DEWARP_PTZ_RANGE range = {};
  Passes([&] { Verify(Here, &range, 32, "PTZ range"); });
  Passes([&] { Verify(Here, &range, 0, "PTZ range"); });
}

TEST(VerifyLogLevel, ValidLevelsAreSilent) {
  vemo::test::LogCapture capture(LOG_WARNING);
  for (int level = 0; level <= 4; ++level) {
    Passes([&] { Verify(Here, static_cast<DEWARP_LOG_LEVEL>(level)); });
  }
  EXPECT_TRUE(capture.lines().empty());
}

TEST(VerifyLogLevel, LevelSevenIsAcceptedWithAWarning) {
  vemo::test::LogCapture capture(LOG_WARNING);
  Passes([&] { Verify(Here, static_cast<DEWARP_LOG_LEVEL>(7)); });
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Invalid log level\n", capture.lines()[0]);
}

TEST(VerifyLogLevel, NegativeLevelIsAcceptedWithAWarning) {
  vemo::test::LogCapture capture(LOG_WARNING);
  Passes([&] { Verify(Here, static_cast<DEWARP_LOG_LEVEL>(-1)); });
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Invalid log level\n", capture.lines()[0]);
}

TEST(VerifyPtzPosition, AnythingPasses) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  vemo::test::LogCapture capture(LOG_INFO);
  for (const DEWARP_PTZ_POSITION& position : {DEWARP_PTZ_POSITION{nan, nan, nan, nan},
                                              DEWARP_PTZ_POSITION{1e9f, -1e9f, inf, -inf},
                                              DEWARP_PTZ_POSITION{0.0f, 0.0f, 0.0f, 0.0f}}) {
    Passes([&] { Verify(Here, position); });
  }
  EXPECT_TRUE(capture.lines().empty());
}

TEST(VerifyLogSettings, InvalidLevelOnlyWarns) {
  vemo::test::LogCapture capture(LOG_WARNING);
  const DEWARP_LOG_SETTINGS settings = {nullptr, static_cast<DEWARP_LOG_LEVEL>(7)};
  Passes([&] { Verify(Here, settings); });
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Invalid log level\n", capture.lines()[0]);
  capture.clear();
  const DEWARP_LOG_SETTINGS valid = {nullptr, LOG_TRACE};
  Passes([&] { Verify(Here, valid); });
  EXPECT_TRUE(capture.lines().empty());
}

DEWARP_CHANNEL_SETTINGS ChannelSettings(int view, int projection, int aspect, int interpolation) {
  DEWARP_CHANNEL_SETTINGS settings;
  settings.View = static_cast<DEWARP_VIEW>(view);
  settings.Projection = static_cast<DEWARP_PROJECTION>(projection);
  settings.AspectRatio = static_cast<DEWARP_ASPECT_RATIO>(aspect);
  settings.Interpolation = static_cast<DEWARP_INTERPOLATION>(interpolation);
  return settings;
}

TEST(VerifyChannelSettings, ValidSettingsPass) {
  Passes([&] { Verify(Here, ChannelSettings(5, 8, 2, 2)); });
  Passes([&] { Verify(Here, ChannelSettings(0, 0, 0, 0)); });
}

TEST(VerifyChannelSettings, AspectRatioIsReportedBeforeView) {
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid aspect ratio"), Refusal([&] { Verify(Here, ChannelSettings(6, 0, 3, 0)); }));
  EXPECT_EQ(EINVAL, errno);
}

TEST(VerifyChannelSettings, CheckOrderIsAspectInterpolationProjectionView) {
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid aspect ratio"), Refusal([&] { Verify(Here, ChannelSettings(6, 9, 3, 3)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid interpolation"), Refusal([&] { Verify(Here, ChannelSettings(6, 9, 0, 3)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid projection"), Refusal([&] { Verify(Here, ChannelSettings(6, 9, 0, 0)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid view"), Refusal([&] { Verify(Here, ChannelSettings(6, 0, 0, 0)); }));
}

DEWARP_IMAGE_INFO Info(int format, unsigned width, unsigned height, unsigned stride) {
  DEWARP_IMAGE_INFO info;
  info.Format = static_cast<DEWARP_IMAGE_FORMAT>(format);
  info.Width = width;
  info.Height = height;
  info.Stride = stride;
  return info;
}

TEST(VerifyImageInfo, StrideLessThanWidthIsRefused) {
  EXPECT_EQ(Expected(22, "EINVAL", "Stride less that width"),
            Refusal([&] { Verify(Here, Info(YUV420_PLANAR_IMAGE, 640, 480, 639)); }));
  EXPECT_EQ(EINVAL, errno);
  Passes([&] { Verify(Here, Info(YUV420_PLANAR_IMAGE, 640, 480, 640)); });
  Passes([&] { Verify(Here, Info(YUV420_PLANAR_IMAGE, 640, 480, 704)); });
}

TEST(VerifyImageInfo, StrideIsComparedWithTheWidthInPixelsWhateverTheFormat) {
  // A packed RGBA row of 640 pixels takes 2560 bytes, yet a stride of 640 passes.
  Passes([&] { Verify(Here, Info(RGBA32_PACKED_IMAGE, 640, 480, 640)); });
  EXPECT_EQ(Expected(22, "EINVAL", "Stride less that width"),
            Refusal([&] { Verify(Here, Info(YUV422_PACKED_IMAGE, 640, 480, 639)); }));
}

TEST(VerifyImageInfo, ZeroWidthAndHeightReportsWidth) {
  EXPECT_EQ(Expected(22, "EINVAL", "Zero width image"), Refusal([&] { Verify(Here, Info(4, 0, 0, 0)); }));
  EXPECT_EQ(EINVAL, errno);
}

TEST(VerifyImageInfo, CheckOrder) {
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid image format"), Refusal([&] { Verify(Here, Info(5, 0, 0, 0)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Invalid image format"), Refusal([&] { Verify(Here, Info(-1, 640, 480, 640)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Zero height image"), Refusal([&] { Verify(Here, Info(4, 640, 0, 0)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Zero stride image"), Refusal([&] { Verify(Here, Info(4, 640, 480, 0)); }));
  EXPECT_EQ(Expected(22, "EINVAL", "Stride less that width"), Refusal([&] { Verify(Here, Info(0, 2, 1, 1)); }));
}

TEST(VerifyImageInfo, SmallestImagePasses) { Passes([&] { Verify(Here, Info(0, 1, 1, 1)); }); }

TEST(VerifyImage, DescriptionBeforeData) {
  DEWARP_IMAGE image;
  image.Info = Info(4, 0, 480, 640);
  image.Data = nullptr;
  EXPECT_EQ(Expected(22, "EINVAL", "Zero width image"), Refusal([&] { Verify(Here, image); }));
  EXPECT_EQ(EINVAL, errno);
}

TEST(VerifyImage, NullDataIsRefused) {
  DEWARP_IMAGE image;
  image.Info = Info(4, 640, 480, 640);
  image.Data = nullptr;
  EXPECT_EQ(Expected(14, "EFAULT", "Invalid pointer to image data"), Refusal([&] { Verify(Here, image); }));
  EXPECT_EQ(EFAULT, errno);
}

TEST(VerifyImage, DescribedBufferPasses) {
  unsigned char pixels[16] = {};
  DEWARP_IMAGE image;
  image.Info = Info(4, 4, 2, 4);
  image.Data = pixels;
  Passes([&] { Verify(Here, image); });
  EXPECT_EQ(0u, vemo::libdewarp::SizeOf(image));
}

TEST(VerifyRange, BoundsAreValid) {
  Passes([&] { Verify(Here, 1.0f, 1.0f, 4.0f, "zoom"); });
  Passes([&] { Verify(Here, 4.0f, 1.0f, 4.0f, "zoom"); });
  Passes([&] { Verify(Here, 2.5f, 1.0f, 4.0f, "zoom"); });
}

TEST(VerifyRange, BelowLower) {
  EXPECT_EQ(Expected(33, "EDOM", "Invalid zoom, must be 1.000000 or greater"),
            Refusal([&] { Verify(Here, 0.5f, 1.0f, 4.0f, "zoom"); }));
  EXPECT_EQ(EDOM, errno);
  EXPECT_EQ(Expected(33, "EDOM", "Invalid tilt, must be -90.000000 or greater"),
            Refusal([&] { Verify(Here, -90.001f, -90.0f, 90.0f, "tilt"); }));
}

TEST(VerifyRange, AboveUpper) {
  EXPECT_EQ(Expected(33, "EDOM", "Invalid zoom, must be less than 4.000000"),
            Refusal([&] { Verify(Here, 4.5f, 1.0f, 4.0f, "zoom"); }));
  EXPECT_EQ(EDOM, errno);
}

TEST(VerifyRange, NaNComparesQuietlyAndPasses) {
  Passes([&] { Verify(Here, std::numeric_limits<float>::quiet_NaN(), 1.0f, 4.0f, "zoom"); });
}

TEST(Verify, ErrorNamesTheLocationOfTheCall) {
  const CodeLocation location("src/dewarp.cpp", nullptr, "SetProjection", 200);
  EXPECT_EQ("(SetProjection@src/dewarp.cpp:200) [Error EINVAL (22)] - Invalid view",
            Refusal([&] { Verify(location, static_cast<DEWARP_VIEW>(6)); }));
}

}  // namespace
