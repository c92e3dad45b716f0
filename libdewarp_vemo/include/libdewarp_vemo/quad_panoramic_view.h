// The panorama cut into four strips shown one above the other.
#pragma once

#include <libdewarp_vemo/single_panoramic_view.h>

namespace vemo {
namespace libdewarp {

class QuadPanoramicView : public SinglePanoramicView {
public:
  explicit QuadPanoramicView(const CameraPtr& pobCamera);
  QuadPanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  QuadPanoramicView(const QuadPanoramicView& other);
  QuadPanoramicView& operator=(const QuadPanoramicView& other);
  virtual ~QuadPanoramicView();

  using View::BuildProjectionMap;
  ImageMapPtr BuildProjectionMap(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) override;
};

}  // namespace libdewarp
}  // namespace vemo
