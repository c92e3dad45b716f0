#include <libdewarp_vemo/quad_panoramic_view.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

QuadPanoramicView::QuadPanoramicView(const CameraPtr& pobCamera) : SinglePanoramicView(pobCamera) {}

QuadPanoramicView::QuadPanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : SinglePanoramicView(pobCamera) {
  View::BuildProjectionMap(eProjection);
}

QuadPanoramicView::QuadPanoramicView(const QuadPanoramicView& other) : SinglePanoramicView(other) {}

QuadPanoramicView& QuadPanoramicView::operator=(const QuadPanoramicView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "QuadPanoramicView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

QuadPanoramicView::~QuadPanoramicView() {}

// The single panorama cut into strips stacked one above the other.
View::ImageMapPtr QuadPanoramicView::BuildProjectionMap(const CameraPtr& pobCamera,
                                                        DEWARP_PROJECTION eProjection) {
  return BuildStripProjectionMap(pobCamera, eProjection, 0.25f, 4.0f);
}

}  // namespace libdewarp
}  // namespace vemo
