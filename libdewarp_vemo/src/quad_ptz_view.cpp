#include <libdewarp_vemo/quad_ptz_view.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

QuadPtzView::QuadPtzView(const CameraPtr& pobCamera) : SinglePtzView(pobCamera) {}

QuadPtzView::QuadPtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : SinglePtzView(pobCamera) {
  View::BuildProjectionMap(eProjection);
}

QuadPtzView::QuadPtzView(const QuadPtzView& other) : SinglePtzView(other) {}

QuadPtzView& QuadPtzView::operator=(const QuadPtzView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "QuadPtzView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

QuadPtzView::~QuadPtzView() {}

// The camera lays the panes out; every pane follows the one PTZ position of the view.
View::ImageMapPtr QuadPtzView::BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                                           const ImageMapPtr& pobScaledProjectionMap) {
  return BuildPanesPtzMap(pobCamera, obPtzPosition, pobScaledProjectionMap, 4u);
}

}  // namespace libdewarp
}  // namespace vemo
