// Engine-wide default settings.
#pragma once

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class Defaults {
public:
  // Compile-time constants, so that other static initialisers may use them in any order.
  static constexpr DEWARP_LOG_LEVEL LogLevel = LOG_ERROR;
  static constexpr DEWARP_LOG_FUNCTION LogFunction = nullptr;  // no logging
  static constexpr DEWARP_LOG_SETTINGS LogSettings = {nullptr, LOG_ERROR};
  static constexpr DEWARP_VIEW View = SINGLE_PANORAMIC_VIEW;
  static constexpr DEWARP_PROJECTION Projection = CYLINDRICAL_PROJECTION;
  static constexpr DEWARP_ASPECT_RATIO AspectRatio = FREE_ASPECT_RATIO;
  static constexpr DEWARP_INTERPOLATION Interpolation = LINEAR_INTERPOLATION;
  static constexpr DEWARP_INTERNAL_CAMERA_MOUNT CameraMount = WALL_MOUNT;
  static constexpr DEWARP_INTERNAL_CAMERA_TYPE CameraType = CIRCULAR_FISHEYE_CAMERA;

  Defaults();
  Defaults(const Defaults& other);
  Defaults& operator=(const Defaults& other);
  virtual ~Defaults();
};

}  // namespace libdewarp
}  // namespace vemo
