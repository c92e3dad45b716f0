#include <libdewarp_vemo/dual_ptz_view.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

DualPtzView::DualPtzView(const CameraPtr& pobCamera) : SinglePtzView(pobCamera) {}

DualPtzView::DualPtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : SinglePtzView(pobCamera) {
  View::BuildProjectionMap(eProjection);
}

DualPtzView::DualPtzView(const DualPtzView& other) : SinglePtzView(other) {}

DualPtzView& DualPtzView::operator=(const DualPtzView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "DualPtzView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

DualPtzView::~DualPtzView() {}

// The camera lays the panes out; every pane follows the one PTZ position of the view.
View::ImageMapPtr DualPtzView::BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                                           const ImageMapPtr& pobScaledProjectionMap) {
  return BuildPanesPtzMap(pobCamera, obPtzPosition, pobScaledProjectionMap, 2u);
}

}  // namespace libdewarp
}  // namespace vemo
