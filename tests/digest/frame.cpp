// Frame results: error texts, the errno symbol table, the defaults, the argument-check messages and
// the log line formats.
#include "digest.h"

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/norvik_kestrel_mk2.h>
#include <libdewarp_vemo/verify.h>

#include <string>

namespace {

using vemo::libdewarp::CodeLocation;
using vemo::libdewarp::Defaults;
using vemo::libdewarp::Error;
using vemo::libdewarp::Log;
using vemo::libdewarp::Verify;

template <class F>
std::string Refusal(F check) {
  try {
    check();
  } catch (const Error& error) {
    return error.what();
  }
  return "<passed>";
}

void AddVerifyMessages(dewarp_digest::Digest& d) {
  const CodeLocation at("src/dewarp.cpp", nullptr, "Open", 1538);
  for (int value = -1; value <= 10; ++value) {
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_INTERNAL_CAMERA_TYPE>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_IMAGE_FORMAT>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_ASPECT_RATIO>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_VIEW>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_PROJECTION>(value)); }));
    d.add(Refusal([&] { Verify(at, static_cast<DEWARP_INTERPOLATION>(value)); }));
  }
  d.add(Refusal([&] { Verify(at, nullptr, 16, "channel settings"); }));
  const unsigned sizes[][3] = {{0, 0, 0}, {640, 0, 0}, {640, 480, 0}, {640, 480, 639}, {640, 480, 640}};
  for (const auto& size : sizes) {
    const DEWARP_IMAGE_INFO info = {YUV420_PLANAR_IMAGE, size[0], size[1], size[2]};
    d.add(Refusal([&] { Verify(at, info); }));
    const DEWARP_IMAGE image = {info, nullptr};
    d.add(Refusal([&] { Verify(at, image); }));
  }
  const float values[] = {-1.0f, 0.999f, 1.0f, 2.5f, 4.0f, 4.0001f, 1e10f};
  for (float value : values) {
    d.add(Refusal([&] { Verify(at, value, 1.0f, 4.0f, "zoom"); }));
    d.add(Refusal([&] { Verify(at, value, -0.1f, 3.14159265f, "pan"); }));
  }
}

}  // namespace

DEWARP_DIGEST_SECTION(frame) {
  // Formatted error texts and symbols.
  const Error error("x");
  for (int code = -1; code <= 131; ++code) {
    d.add(Error::FormatError(code));
    d.add(error.Symbol(code));
    d.add(error.Description(code));
  }
  const CodeLocation at("src/view.cpp", "View", "CheckMaps", 42);
  d.add(Error(at, 113).what());
  d.add(Error(at, 22, "Invalid %s %d %.3f", "view", 7, 0.1).what());
  d.add(Error(33, "%s", std::string(300, 'w').c_str()).what());

  // Defaults and the built-in camera model.
  d.add(static_cast<int>(Defaults::LogLevel));
  d.add(Defaults::LogFunction == nullptr);
  d.add(static_cast<int>(Defaults::LogSettings.Level));
  d.add(static_cast<int>(Defaults::View));
  d.add(static_cast<int>(Defaults::Projection));
  d.add(static_cast<int>(Defaults::AspectRatio));
  d.add(static_cast<int>(Defaults::Interpolation));
  d.add(static_cast<int>(Defaults::CameraMount));
  d.add(static_cast<int>(Defaults::CameraType));
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  d.add(static_cast<int>(model.Type));
  d.add(model.FovD);
  d.add(model.FovH);
  d.add(model.FovV);
  d.add(model.ResolutionH);
  d.add(model.ResolutionV);

  // Argument-check messages.
  AddVerifyMessages(d);

  // Line formats of the log.
  for (int level = -1; level <= 5; ++level) {
    d.add(Log::reformat(static_cast<DEWARP_LOG_LEVEL>(level), 1, "f", "g", "message %d\n"));
  }
  d.add(Log::reformat("message %d\n"));
}
