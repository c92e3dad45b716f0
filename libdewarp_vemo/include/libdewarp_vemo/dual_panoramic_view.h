// The panorama cut into two halves shown one above the other.
#pragma once

#include <libdewarp_vemo/single_panoramic_view.h>

namespace vemo {
namespace libdewarp {

class DualPanoramicView : public SinglePanoramicView {
public:
  explicit DualPanoramicView(const CameraPtr& pobCamera);
  DualPanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  DualPanoramicView(const DualPanoramicView& other);
  DualPanoramicView& operator=(const DualPanoramicView& other);
  virtual ~DualPanoramicView();

  using View::BuildProjectionMap;
  ImageMapPtr BuildProjectionMap(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) override;
};

}  // namespace libdewarp
}  // namespace vemo
