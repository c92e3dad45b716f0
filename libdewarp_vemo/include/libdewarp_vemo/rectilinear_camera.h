// Wide rectilinear (perspective) lens. It offers no PTZ map and no hit-point directions.
#pragma once

#include <libdewarp_vemo/camera.h>

namespace vemo {
namespace libdewarp {

class RectilinearCamera : public Camera {
public:
  RectilinearCamera();
  RectilinearCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount);
  RectilinearCamera(const RectilinearCamera& other);
  RectilinearCamera& operator=(const RectilinearCamera& other);
  virtual ~RectilinearCamera();

  // Always null.
  ImageMap* BuildPtzMap(const PtzPosition& obPosition, const ImageMap& obMap, unsigned int uPanes) const override;
  // Always Vector2d::InvalidVector.
  Vector2d MapHitPoint(const Vector2d& obPoint) const override;
};

}  // namespace libdewarp
}  // namespace vemo
