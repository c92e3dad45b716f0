#include <libdewarp_vemo/single_ptz_view.h>

#include <cerrno>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>

#define PTZ_VIEW_FAIL(code, message)                                         \
  do {                                                                       \
    Error::SetLastError(code);                                               \
    throw Error(DEWARP_LOCATION("SinglePtzView"), (code), "%s", (message));  \
  } while (0)

namespace vemo {
namespace libdewarp {

SinglePtzView::SinglePtzView(const CameraPtr& pobCamera) : View(pobCamera) {
  m_eAspectRatio = GetDefaultAspectRatio();
}

SinglePtzView::SinglePtzView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : View(pobCamera) {
  m_eAspectRatio = GetDefaultAspectRatio();
  View::BuildProjectionMap(eProjection);
}

SinglePtzView::SinglePtzView(const SinglePtzView& other) : View(other) {}

SinglePtzView& SinglePtzView::operator=(const SinglePtzView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SinglePtzView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

SinglePtzView::~SinglePtzView() {}

// A perspective pane is rectilinear; any other request is replaced by the default projection.
DEWARP_PROJECTION SinglePtzView::GetCompatibleProjection(const CameraPtr&,
                                                         DEWARP_PROJECTION eProjection) const {
  if (eProjection == RECTILINEAR_PROJECTION) {
    return eProjection;
  }
  return SubstituteProjection(eProjection);
}

PtzRange SinglePtzView::GetPtzRange(const CameraPtr& pobCamera, const FieldOfView& obFov) const {
  if (!pobCamera) {
    PTZ_VIEW_FAIL(EFAULT, "Invalid camera");
  }
  PtzRange obRange;
  switch (pobCamera->GetCameraMount()) {
    case CEILING_MOUNT:
      obRange = PtzRange::CeilingPtzRange;
      obRange.Inflate(obFov);
      return obRange;
    case FLOOR_MOUNT:
      obRange = PtzRange::FloorPtzRange;
      obRange.Inflate(obFov);
      return obRange;
    case WALL_MOUNT:
    case INVERTED_WALL_MOUNT:
      return PtzRange(pobCamera->GetCameraFieldOfView(), PtzRange::InfiniteZoomRange, PtzRange::ZeroFlags);
    default:
      PTZ_VIEW_FAIL(EINVAL, "Invalid camera mount");
  }
}

FieldOfView SinglePtzView::GetTargetFov(const CameraPtr&, DEWARP_PROJECTION) const {
  return FieldOfView::PtzFieldOfView;
}

}  // namespace libdewarp
}  // namespace vemo
