// Circular fisheye lens with the equidistant model (radius = f * angle from the axis).
#pragma once

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/ptz_position.h>

namespace vemo {
namespace libdewarp {

class FisheyeCamera : public Camera {
public:
  // Orientation of the lens for each mount, relative to a lens looking at the horizon.
  static const PtzPosition CeilingOrientation;
  static const PtzPosition FloorOrientation;
  static const PtzPosition WallOrientation;
  static const PtzPosition InvertedWallOrientation;

  FisheyeCamera();
  FisheyeCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount);
  FisheyeCamera(const FisheyeCamera& other);
  FisheyeCamera& operator=(const FisheyeCamera& other);
  virtual ~FisheyeCamera();

  // Orientation of the mount; error 22 "Invalid camera mount" for an unknown mount.
  PtzPosition GetHomePosition() const;

  ImageMap* BuildPtzMap(const PtzPosition& obPosition, const ImageMap& obMap, unsigned int uPanes) const override;
  ImageMap* BuildSinglePtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const;
  ImageMap* BuildDualPtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const;
  ImageMap* BuildQuadPtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const;

  Vector2d MapHitPoint(const Vector2d& obPoint) const override;

protected:
  // The pane's position: the requested one turned by fYawOffset in pan, seen from the mount.
  PtzPosition GetPanePosition(const PtzPosition& obPosition, DEWARP_FLOAT fYawOffset) const;
  // A centred lens point turned from the mount's orientation back to the lens axis.
  Vector2d RotateHitPoint(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) const;
  // A centred lens point as an equirectangular point (f * longitude, f * latitude).
  Vector2d MapHitPoint(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) const;
};

}  // namespace libdewarp
}  // namespace vemo
