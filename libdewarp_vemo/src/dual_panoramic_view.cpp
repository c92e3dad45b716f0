#include <libdewarp_vemo/dual_panoramic_view.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

DualPanoramicView::DualPanoramicView(const CameraPtr& pobCamera) : SinglePanoramicView(pobCamera) {}

DualPanoramicView::DualPanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : SinglePanoramicView(pobCamera) {
  View::BuildProjectionMap(eProjection);
}

DualPanoramicView::DualPanoramicView(const DualPanoramicView& other) : SinglePanoramicView(other) {}

DualPanoramicView& DualPanoramicView::operator=(const DualPanoramicView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "DualPanoramicView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

DualPanoramicView::~DualPanoramicView() {}

// The single panorama cut into strips stacked one above the other.
View::ImageMapPtr DualPanoramicView::BuildProjectionMap(const CameraPtr& pobCamera,
                                                        DEWARP_PROJECTION eProjection) {
  return BuildStripProjectionMap(pobCamera, eProjection, 0.5f, 2.0f);
}

}  // namespace libdewarp
}  // namespace vemo
