// Identifies the camera from marks carried in the frame. This engine accepts every frame and
// announces its built-in camera model with the default mount.
#pragma once

#include <libdewarp_vemo/dewarp.h>

namespace vemo {
namespace libdewarp {

class WaterMark {
public:
  WaterMark();
  explicit WaterMark(const DEWARP_IMAGE& image);
  WaterMark(const WaterMark& other);
  virtual ~WaterMark();
  WaterMark& operator=(const WaterMark& other);

  bool Valid() const;
  DEWARP_INTERNAL_CAMERA_MODEL GetCameraModel() const;
  DEWARP_INTERNAL_CAMERA_MOUNT GetCameraMount() const;
  // Accepts every image without reading it.
  bool CheckImage(const DEWARP_IMAGE& image);
};

}  // namespace libdewarp
}  // namespace vemo
