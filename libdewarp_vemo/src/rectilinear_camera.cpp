#include <libdewarp_vemo/rectilinear_camera.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

RectilinearCamera::RectilinearCamera() {}

RectilinearCamera::RectilinearCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel,
                                     DEWARP_INTERNAL_CAMERA_MOUNT eMount)
    : Camera(stdModel, eMount) {}

RectilinearCamera::RectilinearCamera(const RectilinearCamera& other) : Camera(other) {}

RectilinearCamera& RectilinearCamera::operator=(const RectilinearCamera& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "RectilinearCamera");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

RectilinearCamera::~RectilinearCamera() {}

ImageMap* RectilinearCamera::BuildPtzMap(const PtzPosition& /*obPosition*/, const ImageMap& /*obMap*/,
                                         unsigned int /*uPanes*/) const {
  return 0;
}

Vector2d RectilinearCamera::MapHitPoint(const Vector2d& /*obPoint*/) const { return Vector2d::InvalidVector; }

}  // namespace libdewarp
}  // namespace vemo
