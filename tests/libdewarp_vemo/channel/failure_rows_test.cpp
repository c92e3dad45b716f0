// Every failure of the C interface as a host sees it: the result, errno, the log lines and the
// state the channel is left in.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <libdewarp_vemo/channel.h>
#include <libdewarp_vemo/dual_panoramic_view.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/quad_ptz_view.h>
#include <libdewarp_vemo/read_write_mutex.h>

#include "allocation_hook.h"
#include "channel_test_support.h"

namespace {

using namespace channel_test;
using vemo::test::LogCapture;

const int kSentinelErrno = 4242;

// ---- Null channel handle -----------------------------------------------------------------------

struct NullHandleCall {
  const char* name;
  std::function<int()> call;
};

TEST(FailureRows, NullHandleIsRefusedBeforeAnyArgumentCheck) {
  DEWARP_PTZ_POSITION position = Ptz(1, 2, 3, 4);
  DEWARP_PTZ_RANGE range;
  DEWARP_RESOLUTION resolution;
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  Frame in(16, 16, 16, 1);
  Frame out(16, 16, 16, 2);
  // Invalid arguments as well: the handle is looked at first.
  const DEWARP_VIEW badView = static_cast<DEWARP_VIEW>(99);
  const std::vector<NullHandleCall> calls = {
      {"set_view", [&] { return dewarp_set_view(nullptr, badView); }},
      {"set_projection",
       [&] { return dewarp_set_projection(nullptr, badView, static_cast<DEWARP_PROJECTION>(99)); }},
      {"set_aspect_ratio",
       [&] { return dewarp_set_aspect_ratio(nullptr, static_cast<DEWARP_ASPECT_RATIO>(9)); }},
      {"set_interpolation",
       [&] { return dewarp_set_interpolation(nullptr, static_cast<DEWARP_INTERPOLATION>(9)); }},
      {"get_native_resolution", [&] { return dewarp_get_native_resolution(nullptr, nullptr); }},
      {"get_native_resolution 2", [&] { return dewarp_get_native_resolution(nullptr, &resolution); }},
      {"set_ptz", [&] { return dewarp_set_ptz(nullptr, &position); }},
      {"set_ptz null", [&] { return dewarp_set_ptz(nullptr, nullptr); }},
      {"get_ptz", [&] { return dewarp_get_ptz(nullptr, nullptr); }},
      {"get_ptz_range", [&] { return dewarp_get_ptz_range(nullptr, &range); }},
      {"calc_ptz_position", [&] { return dewarp_calc_ptz_position(nullptr, 1, 2, 3.0f, nullptr); }},
      {"image", [&] { return dewarp_image(nullptr, nullptr, &out.Image()); }},
      {"image 2", [&] { return dewarp_image(nullptr, &in.Image(), &out.Image()); }},
      {"internal_set_model", [&] { return dewarp_internal_set_model(nullptr, &model); }},
      {"internal_get_model", [&] { return dewarp_internal_get_model(nullptr, nullptr); }},
      {"internal_set_mount",
       [&] { return dewarp_internal_set_mount(nullptr, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(7)); }},
  };
  const std::vector<std::uint8_t> outBefore = out.Bytes();
  for (const NullHandleCall& c : calls) {
    LogCapture capture;
    errno = 0;
    EXPECT_EQ(c.call(), -1) << c.name;
    EXPECT_EQ(errno, EINVAL) << c.name;
    ASSERT_EQ(capture.lines().size(), 1u) << c.name << ": " << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - The channel parameter is invalid\n") << c.name;
  }
  EXPECT_EQ(position.Pan, 1.0f);
  EXPECT_EQ(out.Bytes(), outBefore);

  LogCapture capture;
  errno = 0;
  EXPECT_EQ(dewarp_internal_get_mount(nullptr), WALL_MOUNT);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(capture.count("The channel parameter is invalid"), 1u);
}

// ---- Null pointer arguments --------------------------------------------------------------------

// Runs a call that must fail on a null pointer: -1, errno 14, one line "<function> - (...)
// [Error EFAULT (14)] - Invalid pointer to <name>".
void ExpectNullPointer(const char* function, const char* internal, const char* name,
                       const std::function<int()>& call) {
  LogCapture capture;
  errno = 0;
  EXPECT_EQ(call(), -1) << function;
  EXPECT_EQ(errno, EFAULT) << function;
  ASSERT_EQ(capture.lines().size(), 1u) << function << ": " << AllLines(capture);
  const std::string& line = capture.lines()[0];
  EXPECT_EQ(line.find(std::string("LIBDEWARP: ERROR - ") + function + " - (" + internal + "@"), 0u)
      << line;
  EXPECT_NE(line.find(std::string(") [Error EFAULT (14)] - Invalid pointer to ") + name + "\n"),
            std::string::npos)
      << line;
}

TEST(FailureRows, NullPointerArguments) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  ASSERT_NE(channel.get(), nullptr);
  Frame in(64, 64, 64, 1);
  Frame out(16, 16, 16, 2);
  const std::vector<std::uint8_t> outBefore = out.Bytes();

  ExpectNullPointer("dewarp_internal_open", "InternalOpen", "camera model", [&] {
    return dewarp_internal_open(nullptr, WALL_MOUNT, nullptr) ? 0 : -1;
  });
  ExpectNullPointer("dewarp_get_native_resolution", "GetNativeResolution", "Native Resolution",
                    [&] { return dewarp_get_native_resolution(channel, nullptr); });
  ExpectNullPointer("dewarp_get_ptz", "GetPtz", "PTZ position",
                    [&] { return dewarp_get_ptz(channel, nullptr); });
  ExpectNullPointer("dewarp_get_ptz_range", "GetPtzRange", "PTZ range",
                    [&] { return dewarp_get_ptz_range(channel, nullptr); });
  ExpectNullPointer("dewarp_calc_ptz_position", "CalcPtzPosition", "PTZ position",
                    [&] { return dewarp_calc_ptz_position(channel, 10, 10, 2.0f, nullptr); });
  ExpectNullPointer("dewarp_image", "Image", "warped image",
                    [&] { return dewarp_image(channel, nullptr, &out.Image()); });
  ExpectNullPointer("dewarp_image", "Image", "dewarped image",
                    [&] { return dewarp_image(channel, &in.Image(), nullptr); });
  // The warped image is checked whole (description, then data) before the dewarped one.
  in.Image().Data = nullptr;
  ExpectNullPointer("dewarp_image", "Image", "image data",
                    [&] { return dewarp_image(channel, &in.Image(), nullptr); });
  in.Image().Data = in.Data();
  out.Image().Data = nullptr;
  ExpectNullPointer("dewarp_image", "Image", "image data",
                    [&] { return dewarp_image(channel, &in.Image(), &out.Image()); });
  out.Image().Data = out.Data();
  ExpectNullPointer("dewarp_internal_set_model", "InternalSetModel", "camera model",
                    [&] { return dewarp_internal_set_model(channel, nullptr); });
  ExpectNullPointer("dewarp_internal_get_model", "InternalGetModel", "camera model",
                    [&] { return dewarp_internal_get_model(channel, nullptr); });
  EXPECT_EQ(out.Bytes(), outBefore);
  EXPECT_TRUE(out.GuardsIntact());
  // The channel is as it was.
  EXPECT_EQ(dewarp_internal_get_mount(channel), CEILING_MOUNT);
  DEWARP_INTERNAL_CAMERA_MODEL model;
  ASSERT_EQ(dewarp_internal_get_model(channel, &model), 0);
  EXPECT_EQ(model.ResolutionH, kSmallSide);
}

// A null settings pointer is no failure: the defaults are used.
TEST(FailureRows, NullSettingsAreTheDefaults) {
  LogCapture capture(LOG_WARNING);
  ScopedChannel plain(dewarp_open(nullptr));
  EXPECT_NE(plain.get(), nullptr);
  ScopedChannel camera(OpenSmall(WALL_MOUNT, nullptr));
  EXPECT_NE(camera.get(), nullptr);
  EXPECT_TRUE(capture.lines().empty()) << AllLines(capture);
  // Built-in camera with the engine defaults: single panoramic view, wall mount, roll only.
  DEWARP_PTZ_RANGE range;
  ASSERT_EQ(dewarp_get_ptz_range(camera, &range), 0);
  EXPECT_NEAR(range.RollHi, 180.0f, 1e-3);
  EXPECT_NEAR(range.PanHi, 0.0f, 1e-4);
}

// ---- Invalid enumerations and image descriptions -----------------------------------------------

void ExpectInvalid(const char* function, const char* internal, const char* message,
                   const std::function<int()>& call) {
  LogCapture capture(LOG_WARNING);  // a view built on the way describes itself at info level
  errno = 0;
  EXPECT_EQ(call(), -1) << function << " / " << message;
  EXPECT_EQ(errno, EINVAL) << function << " / " << message;
  ASSERT_EQ(capture.lines().size(), 1u) << function << ": " << AllLines(capture);
  const std::string& line = capture.lines()[0];
  EXPECT_EQ(line.find(std::string("LIBDEWARP: ERROR - ") + function + " - (" + internal + "@"), 0u)
      << line;
  EXPECT_NE(line.find(std::string(") [Error EINVAL (22)] - ") + message + "\n"), std::string::npos)
      << line;
}

TEST(FailureRows, InvalidEnumerationsLeaveTheChannelAsItWas) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  ASSERT_EQ(dewarp_set_projection(channel, SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION), 0);
  DEWARP_PTZ_POSITION position = Ptz(10.0f, -40.0f, 0.0f, 1.5f);
  ASSERT_EQ(dewarp_set_ptz(channel, &position), 0);
  DEWARP_PTZ_RANGE rangeBefore;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &rangeBefore), 0);

  for (int view : {-1, 6, 1000}) {
    ExpectInvalid("dewarp_set_view", "SetView", "Invalid view",
                  [&] { return dewarp_set_view(channel, static_cast<DEWARP_VIEW>(view)); });
  }
  ExpectInvalid("dewarp_set_projection", "SetProjection", "Invalid projection", [&] {
    return dewarp_set_projection(channel, QUAD_PTZ_VIEW, static_cast<DEWARP_PROJECTION>(9));
  });
  ExpectInvalid("dewarp_set_projection", "SetProjection", "Invalid projection", [&] {
    return dewarp_set_projection(channel, QUAD_PTZ_VIEW, static_cast<DEWARP_PROJECTION>(-1));
  });
  ExpectInvalid("dewarp_set_aspect_ratio", "SetAspectRatio", "Invalid aspect ratio", [&] {
    return dewarp_set_aspect_ratio(channel, static_cast<DEWARP_ASPECT_RATIO>(3));
  });
  ExpectInvalid("dewarp_set_interpolation", "SetInterpolation", "Invalid interpolation", [&] {
    return dewarp_set_interpolation(channel, static_cast<DEWARP_INTERPOLATION>(3));
  });
  ExpectInvalid("dewarp_internal_set_mount", "InternalSetMount", "Invalid camera mount", [&] {
    return dewarp_internal_set_mount(channel, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(4));
  });
  DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  model.Type = static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(-3);
  model.ResolutionH = 77;
  ExpectInvalid("dewarp_internal_set_model", "InternalSetModel", "Invalid camera mount",
                [&] { return dewarp_internal_set_model(channel, &model); });

  // Still the same camera, mount, view and PTZ.
  EXPECT_EQ(dewarp_internal_get_mount(channel), CEILING_MOUNT);
  DEWARP_INTERNAL_CAMERA_MODEL current;
  ASSERT_EQ(dewarp_internal_get_model(channel, &current), 0);
  EXPECT_EQ(current.ResolutionH, kSmallSide);
  DEWARP_PTZ_POSITION now = UntouchedPtz();
  ASSERT_EQ(dewarp_get_ptz(channel, &now), 0);
  EXPECT_NEAR(now.Pan, 10.0f, 1e-3);
  EXPECT_NEAR(now.Tilt, -40.0f, 1e-3);
  EXPECT_NEAR(now.Zoom, 1.5f, 1e-6);
  DEWARP_PTZ_RANGE rangeAfter;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &rangeAfter), 0);
  EXPECT_EQ(std::memcmp(&rangeBefore, &rangeAfter, sizeof rangeAfter), 0);
}

TEST(FailureRows, InvalidOpenArguments) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  // The mount is checked after the model.
  DEWARP_INTERNAL_CAMERA_MODEL badModel = model;
  badModel.Type = static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(5);
  ExpectInvalid("dewarp_internal_open", "InternalOpen", "Invalid camera mount", [&] {
    return dewarp_internal_open(&badModel, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(-1), nullptr) ? 0 : -1;
  });
  ExpectInvalid("dewarp_internal_open", "InternalOpen", "Invalid camera mount", [&] {
    return dewarp_internal_open(&model, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(4), nullptr) ? 0 : -1;
  });
  // Settings: aspect ratio, interpolation, projection, view.
  DEWARP_CHANNEL_SETTINGS s = Settings(static_cast<DEWARP_VIEW>(6), static_cast<DEWARP_PROJECTION>(9),
                                       SCALE_TO_ASPECT_RATIO, static_cast<DEWARP_INTERPOLATION>(3));
  ExpectInvalid("dewarp_internal_open", "InternalOpen", "Invalid interpolation",
                [&] { return dewarp_internal_open(&model, WALL_MOUNT, &s) ? 0 : -1; });
  s.Interpolation = CUBIC_INTERPOLATION;
  ExpectInvalid("dewarp_open", "Open", "Invalid projection", [&] { return dewarp_open(&s) ? 0 : -1; });
  s.Projection = EQUIRECTANGULAR_PANNINI_PROJECTION;
  ExpectInvalid("dewarp_open", "Open", "Invalid view", [&] { return dewarp_open(&s) ? 0 : -1; });
  s.View = QUAD_PTZ_VIEW;
  ScopedChannel opened(dewarp_open(&s));
  EXPECT_NE(opened.get(), nullptr);
}

TEST(FailureRows, InvalidImageDescriptionsInTheirOrder) {
  ScopedChannel channel(OpenSmall(WALL_MOUNT));
  Frame in(64, 48, 64, 1);
  Frame out(32, 24, 32, 0x42);
  const std::vector<std::uint8_t> outBefore = out.Bytes();
  struct Case {
    bool warped;
    DEWARP_IMAGE_INFO info;
    const char* message;
  };
  const Case cases[] = {
      {true, {static_cast<DEWARP_IMAGE_FORMAT>(5), 0, 0, 0}, "Invalid image format"},
      {true, {static_cast<DEWARP_IMAGE_FORMAT>(-1), 64, 48, 64}, "Invalid image format"},
      {true, {YUV420_PLANAR_IMAGE, 0, 0, 0}, "Zero width image"},
      {true, {YUV420_PLANAR_IMAGE, 64, 0, 0}, "Zero height image"},
      {true, {YUV420_PLANAR_IMAGE, 64, 48, 0}, "Zero stride image"},
      {true, {YUV420_PLANAR_IMAGE, 64, 48, 63}, "Stride less that width"},
      {false, {static_cast<DEWARP_IMAGE_FORMAT>(7), 32, 24, 32}, "Invalid image format"},
      {false, {YUV420_PLANAR_IMAGE, 0, 24, 32}, "Zero width image"},
      {false, {YUV420_PLANAR_IMAGE, 32, 0, 32}, "Zero height image"},
      {false, {YUV420_PLANAR_IMAGE, 32, 24, 0}, "Zero stride image"},
      {false, {YUV420_PLANAR_IMAGE, 32, 24, 31}, "Stride less that width"},
      // A stride in bytes of a packed format would be larger; the check is in pixels.
      {false, {YUV420_PLANAR_IMAGE, 32, 24, 16}, "Stride less that width"},
  };
  for (const Case& c : cases) {
    DEWARP_IMAGE warped = in.Image();
    DEWARP_IMAGE dewarped = out.Image();
    (c.warped ? warped : dewarped).Info = c.info;
    if (c.warped) {
      // The dewarped image is not looked at when the warped one fails.
      dewarped.Info.Format = static_cast<DEWARP_IMAGE_FORMAT>(99);
      dewarped.Data = nullptr;
    }
    ExpectInvalid("dewarp_image", "Image", c.message,
                  [&] { return dewarp_image(channel, &warped, &dewarped); });
    EXPECT_EQ(dewarped.Data, c.warped ? nullptr : out.Data());
  }
  // Formats without an image class are valid enumerations but cannot be dewarped.
  for (DEWARP_IMAGE_FORMAT format :
       {RGBA32_PACKED_IMAGE, YUV422_PACKED_IMAGE, YUV420_PACKED_IMAGE, YUV422_PLANAR_IMAGE}) {
    DEWARP_IMAGE warped = in.Image();
    DEWARP_IMAGE dewarped = out.Image();
    warped.Info.Format = format;
    ExpectInvalid("dewarp_image", "Channel::DewarpImage", "Invalid image format",
                  [&] { return dewarp_image(channel, &warped, &dewarped); });
    dewarped.Info.Format = format;
    warped.Info.Format = YUV420_PLANAR_IMAGE;
    ExpectInvalid("dewarp_image", "Channel::DewarpImage", "Invalid image format",
                  [&] { return dewarp_image(channel, &warped, &dewarped); });
  }
  EXPECT_EQ(out.Bytes(), outBefore);
  EXPECT_TRUE(out.GuardsIntact());
  // Nothing was left behind: the next good frame goes through.
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), 0);
}

// ---- Channel without camera --------------------------------------------------------------------

TEST(FailureRows, ChannelWithoutCamera) {
  const DEWARP_CHANNEL_SETTINGS settings =
      Settings(SINGLE_PTZ_VIEW, RECTILINEAR_PROJECTION, CROP_TO_ASPECT_RATIO, NEAREST_NEIGHBOUR_INTERPOLATION);
  ScopedChannel channel(dewarp_open(&settings));
  ASSERT_NE(channel.get(), nullptr);
  DEWARP_PTZ_POSITION position = Ptz(5, 6, 7, 8);
  DEWARP_PTZ_RANGE range;
  DEWARP_RESOLUTION resolution = {11, 12};
  DEWARP_INTERNAL_CAMERA_MODEL model;
  std::memset(&model, 0, sizeof model);
  Frame in(64, 48, 64, 1);
  Frame out(32, 24, 32, 0x42);
  const std::vector<std::uint8_t> outBefore = out.Bytes();
  const std::vector<NullHandleCall> calls = {
      {"dewarp_set_view", [&] { return dewarp_set_view(channel, DUAL_PTZ_VIEW); }},
      {"dewarp_set_projection",
       [&] { return dewarp_set_projection(channel, SINGLE_PANORAMIC_VIEW, CYLINDRICAL_PROJECTION); }},
      {"dewarp_set_aspect_ratio", [&] { return dewarp_set_aspect_ratio(channel, SCALE_TO_ASPECT_RATIO); }},
      {"dewarp_get_native_resolution", [&] { return dewarp_get_native_resolution(channel, &resolution); }},
      {"dewarp_set_ptz", [&] { return dewarp_set_ptz(channel, &position); }},
      {"dewarp_set_ptz", [&] { return dewarp_set_ptz(channel, nullptr); }},
      {"dewarp_get_ptz", [&] { return dewarp_get_ptz(channel, &position); }},
      {"dewarp_get_ptz_range", [&] { return dewarp_get_ptz_range(channel, &range); }},
      {"dewarp_calc_ptz_position", [&] { return dewarp_calc_ptz_position(channel, 3, 4, 2.0f, &position); }},
      {"dewarp_image", [&] { return dewarp_image(channel, &in.Image(), &out.Image()); }},
  };
  for (const NullHandleCall& c : calls) {
    LogCapture capture;
    errno = 0;
    EXPECT_EQ(c.call(), -1) << c.name;
    EXPECT_EQ(errno, EFAULT) << c.name;
    ASSERT_EQ(capture.lines().size(), 2u) << c.name << ": " << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - The camera object was invalid\n");
    EXPECT_EQ(capture.lines()[1].find(std::string("LIBDEWARP: ERROR - ") + c.name +
                                      " - (Channel::GetViewObject@"),
              0u)
        << capture.lines()[1];
    EXPECT_NE(capture.lines()[1].find(") [Error EFAULT (14)] - Invalid camera\n"), std::string::npos);
  }
  {
    LogCapture capture;
    errno = 0;
    EXPECT_EQ(dewarp_internal_get_model(channel, &model), -1);
    EXPECT_EQ(errno, EFAULT);
    ASSERT_EQ(capture.lines().size(), 2u) << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - The camera object was invalid\n");
    EXPECT_NE(capture.lines()[1].find("dewarp_internal_get_model - (Channel::GetModel@"), std::string::npos);
  }
  // Nothing was written back.
  EXPECT_EQ(position.Pan, 5.0f);
  EXPECT_EQ(position.Zoom, 8.0f);
  EXPECT_EQ(resolution.Width, 11u);
  EXPECT_EQ(model.ResolutionH, 0u);
  EXPECT_EQ(out.Bytes(), outBefore);
  // What needs no view still works, and a camera makes the channel whole.
  errno = kSentinelErrno;
  EXPECT_EQ(dewarp_set_interpolation(channel, LINEAR_INTERPOLATION), 0);
  EXPECT_EQ(errno, kSentinelErrno) << "errno is not cleared on success";
  EXPECT_EQ(dewarp_internal_get_mount(channel), WALL_MOUNT);
  const DEWARP_INTERNAL_CAMERA_MODEL builtIn = SmallLens();
  EXPECT_EQ(dewarp_internal_set_model(channel, &builtIn), 0);
  EXPECT_EQ(dewarp_get_ptz(channel, &position), 0);
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), 0);
}

// ---- A view or channel that cannot be created ---------------------------------------------------

TEST(FailureRows, ChannelThatCannotBeCreated) {
  using namespace vemo::libdewarp;
  // Whichever part fails to be allocated (the channel, its lock, its camera), no channel results.
  const std::size_t parts[] = {sizeof(Channel), sizeof(ReadWriteMutex)};
  for (std::size_t size : parts) {
    LogCapture capture;
    errno = 0;
    ArmAllocationFault(AllocationFault::BadAlloc, size);
    DEWARP_CHANNEL channel = dewarp_open(nullptr);
    const bool fired = AllocationFaultFired();
    DisarmAllocationFault();
    ASSERT_TRUE(fired) << size;
    EXPECT_EQ(channel, nullptr) << size;
    EXPECT_EQ(errno, ENOMEM) << size;
    ASSERT_EQ(capture.lines().size(), 1u) << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - a new channel could not be created\n");
  }
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  const std::size_t withCamera[] = {sizeof(Channel), sizeof(ReadWriteMutex), sizeof(FisheyeCamera)};
  for (std::size_t size : withCamera) {
    LogCapture capture(LOG_ERROR);
    errno = 0;
    ArmAllocationFault(AllocationFault::BadAlloc, size);
    DEWARP_CHANNEL channel = dewarp_internal_open(&model, CEILING_MOUNT, nullptr);
    const bool fired = AllocationFaultFired();
    DisarmAllocationFault();
    ASSERT_TRUE(fired) << size;
    EXPECT_EQ(channel, nullptr) << size;
    EXPECT_EQ(errno, ENOMEM) << size;
    ASSERT_EQ(capture.lines().size(), 1u) << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - a new channel could not be created\n");
  }
}

TEST(FailureRows, ViewThatCannotBeBuilt) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  ASSERT_EQ(dewarp_set_view(channel, SINGLE_PANORAMIC_VIEW), 0);
  DEWARP_PTZ_RANGE before;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &before), 0);
  {
    LogCapture capture(LOG_ERROR);
    errno = 0;
    ArmAllocationFault(AllocationFault::BadAlloc, sizeof(vemo::libdewarp::QuadPtzView));
    const int result = dewarp_set_view(channel, QUAD_PTZ_VIEW);
    DisarmAllocationFault();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errno, ENOMEM);
    ASSERT_EQ(capture.lines().size(), 2u) << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - Could not build view\n");
    EXPECT_EQ(capture.lines()[1].find("LIBDEWARP: ERROR - dewarp_set_view - (Channel::GetViewObject@"), 0u);
    EXPECT_NE(capture.lines()[1].find(") [Error ENOMEM (12)] - Invalid view\n"), std::string::npos);
  }
  // Nothing half-built was cached: asking again builds the view.
  EXPECT_EQ(dewarp_set_view(channel, QUAD_PTZ_VIEW), 0);
  DEWARP_PTZ_RANGE quad;
  ASSERT_EQ(dewarp_get_ptz_range(channel, &quad), 0);
  EXPECT_NEAR(quad.TiltHi, 45.0f, 1e-3);  // a ceiling PTZ range, not the panoramic one
  EXPECT_NE(std::memcmp(&before, &quad, sizeof quad), 0);
}

// ---- Foreign exceptions ------------------------------------------------------------------------

TEST(FailureRows, ForeignExceptionIsLoggedAndAnswersMinusOne) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  {
    LogCapture capture(LOG_ERROR);
    errno = kSentinelErrno;
    ArmAllocationFault(AllocationFault::ThrowInt, sizeof(vemo::libdewarp::DualPanoramicView), 1234);
    const int result = dewarp_set_view(channel, DUAL_PANORAMIC_VIEW);
    const bool fired = AllocationFaultFired();
    DisarmAllocationFault();
    ASSERT_TRUE(fired);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errno, kSentinelErrno) << "a foreign exception leaves errno as it was";
    ASSERT_EQ(capture.lines().size(), 2u) << AllLines(capture);
    EXPECT_EQ(capture.lines()[0], "LIBDEWARP: ERROR - Caught unexpected integer exception - 1234\n");
    EXPECT_EQ(capture.formats()[0], "LIBDEWARP: ERROR - Caught unexpected integer exception - %d\n");
    EXPECT_EQ(capture.lines()[1].find("LIBDEWARP: ERROR - dewarp_set_view - "), 0u) << capture.lines()[1];
    EXPECT_EQ(capture.formats()[1], "LIBDEWARP: ERROR - %s - %s\n");
    EXPECT_EQ(capture.lines()[1], std::string("LIBDEWARP: ERROR - dewarp_set_view - ") +
                                      std::bad_exception().what() + "\n");
  }
  // Every lock was released on the way out: the channel takes readers and writers.
  EXPECT_EQ(dewarp_set_view(channel, DUAL_PANORAMIC_VIEW), 0);
  DEWARP_PTZ_POSITION position = UntouchedPtz();
  EXPECT_EQ(dewarp_get_ptz(channel, &position), 0);
  Frame in(64, 64, 64, 120);
  Frame out(32, 32, 32, 0);
  EXPECT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), 0);
}

// ---- Lock failure ------------------------------------------------------------------------------

// A host whose log callback calls back into the channel while the channel is being changed: the
// nested calls cannot take the lock that the outer call holds.
struct Reentry {
  DEWARP_CHANNEL channel = nullptr;
  bool done = false;
  int readResult = 0, readErrno = 0, writeResult = 0, writeErrno = 0;
  DEWARP_PTZ_POSITION position = UntouchedPtz();
  std::vector<std::string> lines;
};
Reentry* g_reentry = nullptr;

int ReentrantLog(const char* format, va_list arguments) {
  char text[1024];
  const int n = std::vsnprintf(text, sizeof text, format, arguments);
  Reentry& r = *g_reentry;
  r.lines.push_back(text);
  if (!r.done && std::string(text).find("Camera type is") != std::string::npos) {
    r.done = true;
    errno = 0;
    r.readResult = dewarp_get_ptz(r.channel, &r.position);
    r.readErrno = errno;
    errno = 0;
    r.writeResult = dewarp_set_interpolation(r.channel, NEAREST_NEIGHBOUR_INTERPOLATION);
    r.writeErrno = errno;
  }
  return n;
}

TEST(FailureRows, LockFailure) {
  ScopedChannel channel(OpenSmall(CEILING_MOUNT));
  Reentry reentry;
  reentry.channel = channel;
  g_reentry = &reentry;
  DEWARP_LOG_SETTINGS settings;
  settings.Function = &ReentrantLog;
  settings.Level = LOG_INFO;
  ASSERT_EQ(dewarp_set_log(&settings), 0);
  const DEWARP_INTERNAL_CAMERA_MODEL model = SmallLens();
  const int outer = dewarp_internal_set_model(channel, &model);
  dewarp_set_log(nullptr);
  g_reentry = nullptr;

  EXPECT_EQ(outer, 0) << "the outer change goes on";
  ASSERT_TRUE(reentry.done);
  EXPECT_EQ(reentry.readResult, -1);
  EXPECT_EQ(reentry.readErrno, EDEADLK);
  EXPECT_TRUE(SamePtz(reentry.position, UntouchedPtz()));
  EXPECT_EQ(reentry.writeResult, -1);
  EXPECT_EQ(reentry.writeErrno, EDEADLK);
  std::string read, write;
  for (const std::string& line : reentry.lines) {
    if (line.find("dewarp_get_ptz - ") != std::string::npos) read = line;
    if (line.find("dewarp_set_interpolation - ") != std::string::npos) write = line;
  }
  EXPECT_EQ(read.find("LIBDEWARP: ERROR - dewarp_get_ptz - (ReadLock::ReadLock@"), 0u) << read;
  EXPECT_NE(read.find(") [Error EDEADLK (35)] - Lock failure\n"), std::string::npos) << read;
  EXPECT_EQ(write.find("LIBDEWARP: ERROR - dewarp_set_interpolation - (WriteLock::WriteLock@"), 0u) << write;
  EXPECT_NE(write.find(") [Error EDEADLK (35)] - Lock failure\n"), std::string::npos) << write;
  // No guard released a lock it did not hold.
  for (const std::string& line : reentry.lines) EXPECT_EQ(line.find("Invalid mutex"), std::string::npos);
  // Afterwards the lock is free again.
  DEWARP_PTZ_POSITION position = UntouchedPtz();
  EXPECT_EQ(dewarp_get_ptz(channel, &position), 0);
  EXPECT_EQ(dewarp_set_interpolation(channel, NEAREST_NEIGHBOUR_INTERPOLATION), 0);
}

// ---- Closing -----------------------------------------------------------------------------------

TEST(FailureRows, CloseOfNullHandleWarns) {
  LogCapture capture(LOG_WARNING);
  errno = kSentinelErrno;
  dewarp_close(nullptr);
  EXPECT_EQ(errno, kSentinelErrno);
  ASSERT_EQ(capture.lines().size(), 1u) << AllLines(capture);
  EXPECT_EQ(capture.formats()[0], "LIBDEWARP: WARNING - Could not close channel %p\n");
  char expected[128];
  std::snprintf(expected, sizeof expected, "LIBDEWARP: WARNING - Could not close channel %p\n",
                static_cast<void*>(nullptr));
  EXPECT_EQ(capture.lines()[0], expected);
}

TEST(FailureRows, CloseReleasesEverything) {
  // Under the leak checker this shows that the channel, its camera, views and maps are freed.
  LogCapture capture(LOG_ERROR);
  DEWARP_CHANNEL channel = OpenSmall(FLOOR_MOUNT);
  ASSERT_NE(channel, nullptr);
  ASSERT_EQ(dewarp_set_view(channel, QUAD_PTZ_VIEW), 0);
  Frame in(96, 96, 96, 50);
  Frame out(40, 30, 40, 0);
  ASSERT_EQ(dewarp_image(channel, &in.Image(), &out.Image()), 0);
  dewarp_close(channel);
  EXPECT_TRUE(capture.lines().empty()) << AllLines(capture);
}

}  // namespace
