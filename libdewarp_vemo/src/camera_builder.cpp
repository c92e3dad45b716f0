#include <libdewarp_vemo/camera_builder.h>

#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/rectilinear_camera.h>

namespace vemo {
namespace libdewarp {

CameraBuilder::CameraBuilder() {}
CameraBuilder::CameraBuilder(const CameraBuilder&) {}

CameraBuilder& CameraBuilder::operator=(const CameraBuilder& other) {
  if (this == &other) DEWARP_LOG_WARN("Self assignment of %s object\n", "CameraBuilder");
  return *this;
}

CameraBuilder::~CameraBuilder() {}

Camera* CameraBuilder::MakeCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel,
                                  DEWARP_INTERNAL_CAMERA_MOUNT eMount) const {
  switch (stdModel.Type) {
    case RECTILINEAR_CAMERA:
      return new RectilinearCamera(stdModel, eMount);
    case CIRCULAR_FISHEYE_CAMERA:
      return new FisheyeCamera(stdModel, eMount);
    default:
      return 0;
  }
}

}  // namespace libdewarp
}  // namespace vemo
