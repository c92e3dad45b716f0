// The engine's C interface. Each exported function is an exception-proof shell around an internal
// function of the same purpose: the internal function checks the arguments, finds the channel and
// calls the channel operation; the shell catches whatever escapes, logs it and answers -1 (or a
// null handle).

#include <libdewarp_vemo/dewarp.h>

#include <cerrno>
#include <exception>
#include <new>

#include <libdewarp_vemo/bad_exception_handler.h>
#include <libdewarp_vemo/channel.h>
#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/vector_2d.h>
#include <libdewarp_vemo/verify.h>

namespace vemo {
namespace libdewarp {
namespace {

// The location of an argument check names the internal interface function, with no class.
#define DEWARP_HERE CodeLocation(__FILE__, nullptr, __FUNCTION__, __LINE__)

// Runs an internal function inside the exception barrier: a standard bad exception, any other
// standard exception (Error included) and anything else are each logged with the exported
// function's name, and the call then answers `failure`.
template <class Result, class Function>
Result Barrier(const char* name, Result failure, Function&& function) {
  BadExceptionHandler handler;
  try {
    return BadExceptionHandler::Invoke(function);
  } catch (const std::bad_exception& exception) {
    DEWARP_LOG_ERR("%s - %s\n", name, exception.what());
  } catch (const std::exception& exception) {
    DEWARP_LOG_ERR("%s - %s\n", name, exception.what());
  } catch (...) {
    DEWARP_LOG_ERR("%s - unknown error\n", name);
  }
  return failure;
}

// A null handle is the only invalid one the interface can recognise; any other value is taken
// for a channel.
Channel* ChannelOf(DEWARP_CHANNEL id) {
  if (id) return static_cast<Channel*>(id);
  DEWARP_LOG_ERR("The channel parameter is invalid\n");
  Error::SetLastError(EINVAL);
  return nullptr;
}

int Result(bool success) { return success ? 0 : -1; }

int SetLog(const DEWARP_LOG_SETTINGS* settings) {
  if (settings) Verify(DEWARP_HERE, *settings);
  Log::set_logging(settings ? *settings : Defaults::LogSettings);
  return 0;
}

// Creates a channel with the given constructor arguments. When no channel results (the object, its
// lock or its camera could not be allocated) the failure is logged, errno is ENOMEM and the result
// is null.
template <class... Arguments>
Channel* NewChannel(const Arguments&... arguments) {
  Channel* channel = nullptr;
  try {
    channel = new (std::nothrow) Channel(arguments...);
  } catch (const std::bad_alloc&) {
    channel = nullptr;
  }
  if (!channel) {
    DEWARP_LOG_ERR("a new channel could not be created\n");
    Error::SetLastError(ENOMEM);
  }
  return channel;
}

DEWARP_CHANNEL Open(const DEWARP_CHANNEL_SETTINGS* settings) {
  if (!settings) return NewChannel();
  Verify(DEWARP_HERE, settings, sizeof *settings, "channel settings");
  Verify(DEWARP_HERE, *settings);
  return NewChannel(*settings);
}

DEWARP_CHANNEL InternalOpen(const DEWARP_INTERNAL_CAMERA_MODEL* model,
                            DEWARP_INTERNAL_CAMERA_MOUNT mount,
                            const DEWARP_CHANNEL_SETTINGS* settings) {
  Verify(DEWARP_HERE, model, sizeof *model, "camera model");
  Verify(DEWARP_HERE, *model);
  Verify(DEWARP_HERE, mount);
  if (!settings) return NewChannel(*model, mount);
  Verify(DEWARP_HERE, settings, sizeof *settings, "channel settings");
  Verify(DEWARP_HERE, *settings);
  return NewChannel(*model, mount, *settings);
}

void Close(DEWARP_CHANNEL id) {
  if (!id) {
    DEWARP_LOG_WARN("Could not close channel %p\n", id);
    return;
  }
  delete static_cast<Channel*>(id);
}

int SetView(DEWARP_CHANNEL id, DEWARP_VIEW view) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, view);
  return Result(channel->SetView(view));
}

int SetProjection(DEWARP_CHANNEL id, DEWARP_VIEW view, DEWARP_PROJECTION projection) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, view);
  Verify(DEWARP_HERE, projection);
  return Result(channel->SetProjection(view, projection));
}

int SetAspectRatio(DEWARP_CHANNEL id, DEWARP_ASPECT_RATIO aspectRatio) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, aspectRatio);
  return Result(channel->SetAspectRatio(aspectRatio));
}

int SetInterpolation(DEWARP_CHANNEL id, DEWARP_INTERPOLATION interpolation) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, interpolation);
  return Result(channel->SetInterpolation(interpolation));
}

int GetNativeResolution(DEWARP_CHANNEL id, DEWARP_RESOLUTION* resolution) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, resolution, sizeof *resolution, "Native Resolution");
  return Result(channel->GetNativeResolution(*resolution));
}

int SetPtz(DEWARP_CHANNEL id, DEWARP_PTZ_POSITION* position) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  if (!position) return Result(channel->ResetPtz());
  Verify(DEWARP_HERE, position, sizeof *position, "PTZ position");
  Verify(DEWARP_HERE, *position);
  return Result(channel->SetPtz(*position));
}

int GetPtz(DEWARP_CHANNEL id, DEWARP_PTZ_POSITION* position) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, position, sizeof *position, "PTZ position");
  return Result(channel->GetPtz(*position));
}

int GetPtzRange(DEWARP_CHANNEL id, DEWARP_PTZ_RANGE* range) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, range, sizeof *range, "PTZ range");
  return Result(channel->GetPtzRange(*range));
}

int CalcPtzPosition(DEWARP_CHANNEL id, int x, int y, float maxZoom,
                    DEWARP_PTZ_POSITION* position) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, position, sizeof *position, "PTZ position");
  const Vector2d point(static_cast<float>(x), static_cast<float>(y));
  return Result(channel->CalcPtzPosition(point, maxZoom, *position));
}

int Image(DEWARP_CHANNEL id, const DEWARP_IMAGE* warped, DEWARP_IMAGE* dewarped) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, warped, sizeof *warped, "warped image");
  Verify(DEWARP_HERE, *warped);
  Verify(DEWARP_HERE, dewarped, sizeof *dewarped, "dewarped image");
  Verify(DEWARP_HERE, *dewarped);
  return Result(channel->DewarpImage(*warped, *dewarped));
}

int InternalSetModel(DEWARP_CHANNEL id, const DEWARP_INTERNAL_CAMERA_MODEL* model) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, model, sizeof *model, "camera model");
  Verify(DEWARP_HERE, *model);
  return Result(channel->SetModel(*model));
}

int InternalGetModel(DEWARP_CHANNEL id, DEWARP_INTERNAL_CAMERA_MODEL* model) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, model, sizeof *model, "camera model");
  const DEWARP_INTERNAL_CAMERA_MODEL current = channel->GetModel();
  model->Type = current.Type;
  model->FovD = current.FovD;
  model->FovH = current.FovH;
  model->FovV = current.FovV;
  model->ResolutionH = current.ResolutionH;
  model->ResolutionV = current.ResolutionV;
  return 0;
}

int InternalSetMount(DEWARP_CHANNEL id, DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  Channel* channel = ChannelOf(id);
  if (!channel) return -1;
  Verify(DEWARP_HERE, mount);
  return Result(channel->SetMount(mount));
}

DEWARP_INTERNAL_CAMERA_MOUNT InternalGetMount(DEWARP_CHANNEL id) {
  Channel* channel = ChannelOf(id);
  if (!channel) return WALL_MOUNT;
  return channel->GetMount();
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo

using namespace vemo::libdewarp;

extern "C" {

int dewarp_set_log(const DEWARP_LOG_SETTINGS* Settings) {
  return Barrier("dewarp_set_log", -1, [&] { return SetLog(Settings); });
}

DEWARP_CHANNEL dewarp_open(const DEWARP_CHANNEL_SETTINGS* ChannelSettings) {
  return Barrier("dewarp_open", DEWARP_CHANNEL(nullptr),
                 [&] { return Open(ChannelSettings); });
}

DEWARP_CHANNEL dewarp_internal_open(const DEWARP_INTERNAL_CAMERA_MODEL* Model,
                                    DEWARP_INTERNAL_CAMERA_MOUNT Mount,
                                    const DEWARP_CHANNEL_SETTINGS* ChannelSettings) {
  return Barrier("dewarp_internal_open", DEWARP_CHANNEL(nullptr),
                 [&] { return InternalOpen(Model, Mount, ChannelSettings); });
}

void dewarp_close(DEWARP_CHANNEL ChannelId) {
  Barrier("dewarp_close", 0, [&] {
    Close(ChannelId);
    return 0;
  });
}

int dewarp_channel_valid(DEWARP_CHANNEL ChannelId) {
  return Barrier("dewarp_channel_valid", -1, [&] { return ChannelId ? 0 : -1; });
}

int dewarp_set_view(DEWARP_CHANNEL ChannelId, DEWARP_VIEW View) {
  return Barrier("dewarp_set_view", -1, [&] { return SetView(ChannelId, View); });
}

int dewarp_set_projection(DEWARP_CHANNEL ChannelId, DEWARP_VIEW View,
                          DEWARP_PROJECTION Projection) {
  return Barrier("dewarp_set_projection", -1,
                 [&] { return SetProjection(ChannelId, View, Projection); });
}

int dewarp_set_aspect_ratio(DEWARP_CHANNEL ChannelId, DEWARP_ASPECT_RATIO AspectRatio) {
  return Barrier("dewarp_set_aspect_ratio", -1,
                 [&] { return SetAspectRatio(ChannelId, AspectRatio); });
}

int dewarp_set_interpolation(DEWARP_CHANNEL ChannelId, DEWARP_INTERPOLATION Interpolation) {
  return Barrier("dewarp_set_interpolation", -1,
                 [&] { return SetInterpolation(ChannelId, Interpolation); });
}

int dewarp_get_native_resolution(DEWARP_CHANNEL ChannelId, DEWARP_RESOLUTION* Resolution) {
  return Barrier("dewarp_get_native_resolution", -1,
                 [&] { return GetNativeResolution(ChannelId, Resolution); });
}

int dewarp_set_ptz(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_POSITION* Position) {
  return Barrier("dewarp_set_ptz", -1, [&] { return SetPtz(ChannelId, Position); });
}

int dewarp_get_ptz(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_POSITION* Position) {
  return Barrier("dewarp_get_ptz", -1, [&] { return GetPtz(ChannelId, Position); });
}

int dewarp_get_ptz_range(DEWARP_CHANNEL ChannelId, DEWARP_PTZ_RANGE* Range) {
  return Barrier("dewarp_get_ptz_range", -1, [&] { return GetPtzRange(ChannelId, Range); });
}

int dewarp_calc_ptz_position(DEWARP_CHANNEL ChannelId, int X, int Y, float MaxZoom,
                             DEWARP_PTZ_POSITION* Position) {
  return Barrier("dewarp_calc_ptz_position", -1,
                 [&] { return CalcPtzPosition(ChannelId, X, Y, MaxZoom, Position); });
}

int dewarp_image(DEWARP_CHANNEL ChannelId, const DEWARP_IMAGE* Warped, DEWARP_IMAGE* Dewarped) {
  return Barrier("dewarp_image", -1, [&] { return Image(ChannelId, Warped, Dewarped); });
}

int dewarp_internal_set_model(DEWARP_CHANNEL ChannelId, const DEWARP_INTERNAL_CAMERA_MODEL* Model) {
  return Barrier("dewarp_internal_set_model", -1,
                 [&] { return InternalSetModel(ChannelId, Model); });
}

int dewarp_internal_get_model(DEWARP_CHANNEL ChannelId, DEWARP_INTERNAL_CAMERA_MODEL* Model) {
  return Barrier("dewarp_internal_get_model", -1,
                 [&] { return InternalGetModel(ChannelId, Model); });
}

int dewarp_internal_set_mount(DEWARP_CHANNEL ChannelId, DEWARP_INTERNAL_CAMERA_MOUNT Mount) {
  return Barrier("dewarp_internal_set_mount", -1,
                 [&] { return InternalSetMount(ChannelId, Mount); });
}

DEWARP_INTERNAL_CAMERA_MOUNT dewarp_internal_get_mount(DEWARP_CHANNEL ChannelId) {
  // A null handle answers the default mount, as does a failure inside the barrier.
  return Barrier("dewarp_internal_get_mount", WALL_MOUNT,
                 [&] { return InternalGetMount(ChannelId); });
}

}  // extern "C"
