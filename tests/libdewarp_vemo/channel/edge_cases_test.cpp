// The channel and its C interface as a host uses them: the notable cases of channel behaviour,
// each called through dewarp.h with the log lines captured and expanded by a callback.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include <libdewarp_vemo/channel.h>
#include <libdewarp_vemo/vector_2d.h>

#include "channel_test_support.h"

namespace {

using namespace channel_test;
using vemo::test::LogCapture;

// ---- Channel -----------------------------------------------------------------------------------

TEST(ChannelEdgeCases, SettingsOnlyChannelRefusesPtzRangeForWantOfACamera) {
  LogCapture capture;
  const DEWARP_CHANNEL_SETTINGS settings =
      Settings(SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION, FREE_ASPECT_RATIO, LINEAR_INTERPOLATION);
  ScopedChannel channel(dewarp_open(&settings));
  ASSERT_NE(channel.get(), nullptr);
  DEWARP_PTZ_RANGE range;
  std::memset(&range, 0x5A, sizeof range);
  DEWARP_PTZ_RANGE before = range;
  errno = 0;
  EXPECT_EQ(dewarp_get_ptz_range(channel, &range), -1);
  EXPECT_EQ(errno, EFAULT);
  const int invalid = LineIndex(capture, "LIBDEWARP: ERROR - The camera object was invalid\n");
  const int report = LineIndex(capture, "dewarp_get_ptz_range - (Channel::GetViewObject@");
  ASSERT_GE(invalid, 0) << AllLines(capture);
  ASSERT_GE(report, 0) << AllLines(capture);
  EXPECT_LT(invalid, report);
  EXPECT_NE(capture.lines()[static_cast<std::size_t>(report)].find("[Error EFAULT (14)] - Invalid camera\n"),
            std::string::npos);
  EXPECT_EQ(std::memcmp(&range, &before, sizeof range), 0) << "the record stays as it was";
}

TEST(ChannelEdgeCases, SwitchingBackToALayoutReusesTheCachedViewWithItsPtz) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  ASSERT_NE(channel.get(), nullptr);
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  // Inside the ceiling PTZ range at zoom 2 (tilt from -112.5 to 22.5 degrees), so kept as given.
  DEWARP_PTZ_POSITION position = Ptz(30.0f, -20.0f, 0.0f, 2.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  ASSERT_EQ(dewarp_set_view(channel, DUAL_PTZ_VIEW), 0);
  DEWARP_PTZ_POSITION other = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &other), 0);
  EXPECT_NEAR(other.Pan, 0.0f, 1e-4);  // a new view starts at the identity position
  EXPECT_NEAR(other.Tilt, 0.0f, 1e-4);
  EXPECT_NEAR(other.Zoom, 1.0f, 1e-6);

  LogCapture capture;  // building a view logs its target field of view; a cached view does not
  ASSERT_EQ(dewarp_set_view(channel, SINGLE_PTZ_VIEW), 0);
  EXPECT_FALSE(capture.contains("Target FOV")) << AllLines(capture);
  DEWARP_PTZ_POSITION back = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &back), 0);
  EXPECT_NEAR(back.Pan, 30.0f, 1e-3);
  EXPECT_NEAR(back.Tilt, -20.0f, 1e-3);
  EXPECT_NEAR(back.Roll, 0.0f, 1e-3);
  EXPECT_NEAR(back.Zoom, 2.0f, 1e-6);
  // The dual layout was kept as well.
  ASSERT_EQ(dewarp_set_view(channel, DUAL_PTZ_VIEW), 0);
  EXPECT_FALSE(capture.contains("Target FOV")) << AllLines(capture);
}

TEST(ChannelEdgeCases, SetMountWithoutCameraLogsAndSucceeds) {
  ScopedChannel channel(dewarp_open(nullptr));
  ASSERT_NE(channel.get(), nullptr);
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_internal_set_mount(channel, CEILING_MOUNT), 0);
  EXPECT_EQ(errno, 0);
  EXPECT_TRUE(capture.contains("- The camera was invalid\n")) << AllLines(capture);
  EXPECT_EQ(dewarp_internal_get_mount(channel), WALL_MOUNT) << "still no camera: the default mount";
}

TEST(ChannelEdgeCases, SetPtzWritesTheLimitedPanBack) {
  // Wall-mounted single PTZ view of the 183-degree lens: pan range +-91.5 degrees, narrowed by half
  // the 90-degree view at zoom 1 to +-46.5 degrees.
  ScopedChannel channel(OpenSmall(WALL_MOUNT));
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  DEWARP_PTZ_POSITION position = Ptz(80.0f, 0.0f, 0.0f, 1.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  EXPECT_NEAR(position.Pan, 46.5f, 1e-3);
  EXPECT_NEAR(position.Tilt, 0.0f, 1e-4);
  EXPECT_NEAR(position.Zoom, 1.0f, 1e-6);
  position = Ptz(-80.0f, 0.0f, 0.0f, 1.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  EXPECT_NEAR(position.Pan, -46.5f, 1e-3);
  DEWARP_PTZ_POSITION stored = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &stored), 0);
  EXPECT_NEAR(stored.Pan, -46.5f, 1e-3);
}

TEST(ChannelEdgeCases, NativeResolutionTruncatesTowardZero) {
  using vemo::libdewarp::Channel;
  using vemo::libdewarp::Vector2d;
  DEWARP_RESOLUTION r = Channel::ToNativeResolution(Vector2d(1919.9f, 1079.5f));
  EXPECT_EQ(r.Width, 1919u);
  EXPECT_EQ(r.Height, 1079u);
  r = Channel::ToNativeResolution(Vector2d(0.99f, 2.0f));
  EXPECT_EQ(r.Width, 0u);
  EXPECT_EQ(r.Height, 2u);
  // Sizes that no record can hold give 0 rather than an undefined conversion.
  r = Channel::ToNativeResolution(Vector2d(-3.5f, std::nanf("")));
  EXPECT_EQ(r.Width, 0u);
  EXPECT_EQ(r.Height, 0u);
}

TEST(ChannelEdgeCases, SetModelResetsTheMountToWall) {
  ScopedChannel channel(OpenSmall(FLOOR_MOUNT));
  ASSERT_EQ(dewarp_internal_get_mount(channel), FLOOR_MOUNT);
  ASSERT_EQ(dewarp_internal_set_mount(channel, CEILING_MOUNT), 0);
  ASSERT_EQ(dewarp_internal_get_mount(channel), CEILING_MOUNT);
  const DEWARP_INTERNAL_CAMERA_MODEL model = SmallLens();
  ASSERT_EQ(dewarp_internal_set_model(channel, &model), 0);
  EXPECT_EQ(dewarp_internal_get_mount(channel), WALL_MOUNT);
  // The wall-mounted panoramic range: pan and tilt fixed, roll free.
  DEWARP_PTZ_RANGE range;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &range), 0);
  EXPECT_NEAR(range.PanLo, 0.0f, 1e-4);
  EXPECT_NEAR(range.PanHi, 0.0f, 1e-4);
  EXPECT_NEAR(range.RollLo, -180.0f, 1e-3);
  EXPECT_NEAR(range.RollHi, 180.0f, 1e-3);
}

// ---- C interface -------------------------------------------------------------------------------

TEST(InterfaceEdgeCases, NullPtzPositionResetsThePtz) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  DEWARP_PTZ_POSITION position = Ptz(45.0f, -30.0f, 0.0f, 3.0f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  EXPECT_NEAR(position.Pan, 45.0f, 1e-3);
  EXPECT_NEAR(position.Tilt, -30.0f, 1e-3);
  EXPECT_NEAR(position.Zoom, 3.0f, 1e-6);
  EXPECT_EQ(dewarp_set_ptz(channel, nullptr), 0);
  DEWARP_PTZ_POSITION reset = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &reset), 0);
  // Identity orientation; the reset keeps the zoom (only the orientation is set to identity).
  EXPECT_NEAR(reset.Pan, 0.0f, 1e-4);
  EXPECT_NEAR(reset.Tilt, 0.0f, 1e-4);
  EXPECT_NEAR(reset.Roll, 0.0f, 1e-4);
}

TEST(InterfaceEdgeCases, GetMountOfNullHandleIsWallWithEinval) {
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_internal_get_mount(nullptr), 2);
  EXPECT_EQ(errno, EINVAL);
  ASSERT_EQ(capture.lines().size(), 1u) << AllLines(capture);
  EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - The channel parameter is invalid\n");
}

TEST(InterfaceEdgeCases, ChannelValidTakesAnyNonNullHandle) {
  DEWARP_CHANNEL channel = dewarp_open(nullptr);
  ASSERT_NE(channel, nullptr);
  EXPECT_EQ(dewarp_channel_valid(channel), 0);
  dewarp_close(channel);
  EXPECT_EQ(dewarp_channel_valid(channel), 0) << "a stale handle is not detected";
  int notAChannel = 0;
  EXPECT_EQ(dewarp_channel_valid(&notAChannel), 0);
  EXPECT_EQ(dewarp_channel_valid(nullptr), -1);
}

TEST(InterfaceEdgeCases, OpenWithoutSettingsHasNoCamera) {
  ScopedChannel channel(dewarp_open(nullptr));
  ASSERT_NE(channel.get(), nullptr);
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_set_view(channel, SINGLE_PTZ_VIEW), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_TRUE(capture.contains("The camera object was invalid\n"));
  EXPECT_TRUE(capture.contains("dewarp_set_view - (Channel::GetViewObject@"));
  DEWARP_INTERNAL_CAMERA_MODEL model;
  std::memset(&model, 0, sizeof model);
  errno = 0;
  EXPECT_EQ(dewarp_internal_get_model(channel, &model), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(model.ResolutionH, 0u);
}

TEST(InterfaceEdgeCases, SetProjectionReportsTheViewFirst) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_set_projection(channel, static_cast<DEWARP_VIEW>(6),
                                  static_cast<DEWARP_PROJECTION>(9)),
            -1);
  EXPECT_EQ(errno, EINVAL);
  ASSERT_EQ(capture.lines().size(), 1u) << AllLines(capture);
  const std::string& line = capture.lines()[0];
  EXPECT_EQ(line.find("LIBDEWARP: ERROR - dewarp_set_projection - (SetProjection@"), 0u) << line;
  EXPECT_NE(line.find(") [Error EINVAL (22)] - Invalid view\n"), std::string::npos) << line;
  EXPECT_EQ(line.find("Invalid projection"), std::string::npos);
}

TEST(InterfaceEdgeCases, ZeroWidthOutputIsRefusedAndLeftUntouched) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  Frame in(64, 64, 64, 100);
  Frame out(32, 16, 32, 0x3C);
  out.Image().Info.Width = 0;
  const std::vector<std::uint8_t> before = out.Bytes();
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(capture.contains("dewarp_image - (Image@")) << AllLines(capture);
  EXPECT_TRUE(capture.contains("[Error EINVAL (22)] - Zero width image\n")) << AllLines(capture);
  EXPECT_EQ(out.Bytes(), before);
  EXPECT_TRUE(out.GuardsIntact());
  EXPECT_EQ(out.Image().Data, out.Data());
}

// A host callback that records each line expanded.
std::vector<std::string>* g_hostLines = nullptr;
int HostLog(const char* format, va_list arguments) {
  char text[1024];
  const int n = std::vsnprintf(text, sizeof text, format, arguments);
  if (g_hostLines) g_hostLines->push_back(text);
  return n;
}

TEST(InterfaceEdgeCases, SetLogNullTurnsLoggingOff) {
  std::vector<std::string> lines;
  g_hostLines = &lines;
  DEWARP_LOG_SETTINGS settings;
  settings.Function = &HostLog;
  settings.Level = LOG_INFO;
  ASSERT_EQ(dewarp_set_log(&settings), 0);
  EXPECT_EQ(dewarp_set_view(nullptr, SINGLE_PTZ_VIEW), -1);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "LIBDEWARP: ERROR - The channel parameter is invalid\n");
  EXPECT_EQ(dewarp_set_log(nullptr), 0);
  EXPECT_EQ(dewarp_set_view(nullptr, SINGLE_PTZ_VIEW), -1);
  EXPECT_EQ(dewarp_internal_get_mount(nullptr), WALL_MOUNT);
  dewarp_close(nullptr);
  EXPECT_EQ(lines.size(), 1u) << "nothing is delivered once logging is off";
  g_hostLines = nullptr;
}

TEST(InterfaceEdgeCases, LogLevelSevenIsAcceptedWithAWarning) {
  std::vector<std::string> lines;
  g_hostLines = &lines;
  DEWARP_LOG_SETTINGS settings;
  settings.Function = &HostLog;
  settings.Level = LOG_WARNING;
  ASSERT_EQ(dewarp_set_log(&settings), 0);
  settings.Level = static_cast<DEWARP_LOG_LEVEL>(7);
  EXPECT_EQ(dewarp_set_log(&settings), 0);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "LIBDEWARP: WARNING - Invalid log level\n");
  // The level is clamped to info: info lines (a camera's description) are delivered now.
  ScopedChannel channel(OpenSmall(WALL_MOUNT));
  bool info = false;
  for (const std::string& line : lines) info = info || line.find("LIBDEWARP: INFO - Camera type is") == 0;
  EXPECT_TRUE(info);
  dewarp_set_log(nullptr);
  g_hostLines = nullptr;
}

TEST(InterfaceEdgeCases, ArgumentChecksOfRecordsAndImages) {
  LogCapture capture;
  // A camera model of type 2 reports the mount's message.
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  model.Type = static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(2);
  errno = 0;
  EXPECT_EQ(dewarp_internal_open(&model, WALL_MOUNT, nullptr), nullptr);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(capture.contains("dewarp_internal_open - (InternalOpen@"));
  EXPECT_TRUE(capture.contains("[Error EINVAL (22)] - Invalid camera mount\n")) << AllLines(capture);

  // Settings with a bad aspect ratio and a bad view report the aspect ratio.
  capture.clear();
  DEWARP_CHANNEL_SETTINGS settings = Settings(static_cast<DEWARP_VIEW>(17), CYLINDRICAL_PROJECTION,
                                              static_cast<DEWARP_ASPECT_RATIO>(3), LINEAR_INTERPOLATION);
  errno = 0;
  EXPECT_EQ(dewarp_open(&settings), nullptr);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(capture.contains("dewarp_open - (Open@"));
  EXPECT_TRUE(capture.contains("] - Invalid aspect ratio\n")) << AllLines(capture);
  EXPECT_FALSE(capture.contains("Invalid view"));

  // Stride 639 under width 640 is refused; 640 passes.
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  Frame in(640, 480, 640, 90);
  Frame out(64, 48, 64, 0);
  in.Image().Info.Stride = 639;
  capture.clear();
  errno = 0;
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(capture.contains("] - Stride less that width\n")) << AllLines(capture);
  in.Image().Info.Stride = 640;
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), 0);

  // Zero width and zero height report the width.
  in.Image().Info.Width = 0;
  in.Image().Info.Height = 0;
  capture.clear();
  errno = 0;
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(capture.contains("] - Zero width image\n")) << AllLines(capture);
  EXPECT_FALSE(capture.contains("Zero height"));
}

TEST(InterfaceEdgeCases, BuiltInCameraModel) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  EXPECT_EQ(model.Type, CIRCULAR_FISHEYE_CAMERA);
  EXPECT_EQ(model.FovD, 183.0f);
  EXPECT_EQ(model.FovH, 183.0f);
  EXPECT_EQ(model.FovV, 183.0f);
  EXPECT_EQ(model.ResolutionH, 1936u);
  EXPECT_EQ(model.ResolutionV, 1936u);
  // A channel on it hands the same record back.
  ScopedChannel channel(OpenBuiltIn(CEILING_MOUNT));
  DEWARP_INTERNAL_CAMERA_MODEL back;
  std::memset(&back, 0, sizeof back);
  ASSERT_EQ(dewarp_internal_get_model(channel, &back), 0);
  EXPECT_EQ(std::memcmp(&back, &model, sizeof model), 0);
}

}  // namespace
