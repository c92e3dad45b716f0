#include <libdewarp_vemo/water_mark.h>

#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

WaterMark::WaterMark() {}

WaterMark::WaterMark(const DEWARP_IMAGE& image) {
  (void)CheckImage(image);
}

WaterMark::WaterMark(const WaterMark&) {}

WaterMark::~WaterMark() {}

WaterMark& WaterMark::operator=(const WaterMark& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "WaterMark");
  }
  return *this;
}

bool WaterMark::Valid() const {
  return true;
}

DEWARP_INTERNAL_CAMERA_MODEL WaterMark::GetCameraModel() const {
  return GetNorvikKestrelMk2Camera();
}

DEWARP_INTERNAL_CAMERA_MOUNT WaterMark::GetCameraMount() const {
  return Defaults::CameraMount;
}

bool WaterMark::CheckImage(const DEWARP_IMAGE&) {
  return true;
}

}  // namespace libdewarp
}  // namespace vemo
