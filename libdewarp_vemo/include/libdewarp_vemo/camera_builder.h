// Makes the camera object for a lens model.
#pragma once

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class Camera;

class CameraBuilder {
public:
  CameraBuilder();
  CameraBuilder(const CameraBuilder& other);
  CameraBuilder& operator=(const CameraBuilder& other);
  virtual ~CameraBuilder();

  // A new RectilinearCamera for type 0, a new FisheyeCamera for type 1, null for any other
  // type. The caller owns the result.
  Camera* MakeCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount) const;
};

}  // namespace libdewarp
}  // namespace vemo
