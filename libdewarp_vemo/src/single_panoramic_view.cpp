#include <libdewarp_vemo/single_panoramic_view.h>

#include <cerrno>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/split_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

#define PANORAMIC_FAIL(code, message)                                              \
  do {                                                                             \
    Error::SetLastError(code);                                                     \
    throw Error(DEWARP_LOCATION("SinglePanoramicView"), (code), "%s", (message));  \
  } while (0)

namespace vemo {
namespace libdewarp {

namespace {

bool IsWallMount(DEWARP_INTERNAL_CAMERA_MOUNT eMount) {
  return eMount == WALL_MOUNT || eMount == INVERTED_WALL_MOUNT;
}

bool IsPannini(DEWARP_PROJECTION eProjection) {
  return eProjection == PANNINI_PROJECTION || eProjection == EQUIRECTANGULAR_PANNINI_PROJECTION;
}

// The projections that unroll the whole horizon whatever the mounting.
bool IsCylindricalFamily(DEWARP_PROJECTION eProjection) {
  switch (eProjection) {
    case CYLINDRICAL_PROJECTION:
    case EQUIRECTANGULAR_PROJECTION:
    case MERCATOR_PROJECTION:
    case LAMBERT_CYLINDRICAL_PROJECTION:
    case MILLER_CYLINDRICAL_PROJECTION:
    case ARCHITECTURAL_PROJECTION:
      return true;
    default:
      return false;
  }
}

float ClampToPi(float fAngle) {
  return FloatingPoint::is_greater(fAngle, Trigonometry::PI) ? Trigonometry::PI : fAngle;
}

}  // namespace

SinglePanoramicView::SinglePanoramicView(const CameraPtr& pobCamera) : View(pobCamera) {
  m_eAspectRatio = GetDefaultAspectRatio();
}

SinglePanoramicView::SinglePanoramicView(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection)
    : View(pobCamera) {
  m_eAspectRatio = GetDefaultAspectRatio();
  View::BuildProjectionMap(eProjection);
}

SinglePanoramicView::SinglePanoramicView(const SinglePanoramicView& other) : View(other) {}

SinglePanoramicView& SinglePanoramicView::operator=(const SinglePanoramicView& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SinglePanoramicView");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

SinglePanoramicView::~SinglePanoramicView() {}

DEWARP_PROJECTION SinglePanoramicView::GetCompatibleProjection(const CameraPtr& pobCamera,
                                                               DEWARP_PROJECTION eProjection) const {
  if (IsPannini(eProjection)) {
    const bool bWall = pobCamera && IsWallMount(pobCamera->GetCameraMount());
    return bWall ? eProjection : SubstituteProjection(eProjection);
  }
  if (IsCylindricalFamily(eProjection)) {
    return eProjection;
  }
  return SubstituteProjection(eProjection);
}

PtzRange SinglePanoramicView::GetPtzRange(const CameraPtr& pobCamera, const FieldOfView&) const {
  if (!pobCamera) {
    PANORAMIC_FAIL(EFAULT, "Invalid camera");
  }
  switch (pobCamera->GetCameraMount()) {
    case CEILING_MOUNT:
      return PtzRange::CeilingPanoramicRange;
    case FLOOR_MOUNT:
      return PtzRange::FloorPanoramicRange;
    case WALL_MOUNT:
      return PtzRange::WallPanoramicRange;
    case INVERTED_WALL_MOUNT:
      return PtzRange::InvertedWallPanoramicRange;
    default:
      PANORAMIC_FAIL(EINVAL, "Invalid camera mount");
  }
}

FieldOfView SinglePanoramicView::GetTargetFov(const CameraPtr& pobCamera,
                                              DEWARP_PROJECTION eProjection) const {
  if (!pobCamera) {
    PANORAMIC_FAIL(EFAULT, "Invalid camera");
  }
  const DEWARP_INTERNAL_CAMERA_MOUNT eMount = pobCamera->GetCameraMount();
  if (IsWallMount(eMount)) {
    const FieldOfView obCameraFov = pobCamera->GetCameraFieldOfView();
    if (IsPannini(eProjection)) {
      return FieldOfView(ClampToPi(obCameraFov.Horizontal), ClampToPi(obCameraFov.Vertical),
                         ClampToPi(obCameraFov.Diagonal));
    }
    if (IsCylindricalFamily(eProjection)) {
      return obCameraFov;
    }
    if (eProjection == RECTILINEAR_PROJECTION) {
      return pobCamera->GetProjectionFieldOfView(pobCamera->GetProjectionMapSize(eProjection),
                                                 eProjection);
    }
    PANORAMIC_FAIL(EINVAL, "Invalid projection");
  }
  if (eMount != CEILING_MOUNT && eMount != FLOOR_MOUNT) {
    PANORAMIC_FAIL(EINVAL, "Invalid camera mount");
  }
  const FieldOfView& obFov =
      eMount == CEILING_MOUNT ? FieldOfView::CeilingFieldOfView : FieldOfView::FloorFieldOfView;
  if (eProjection == RECTILINEAR_PROJECTION || IsPannini(eProjection)) {
    PANORAMIC_FAIL(EINVAL, "Invalid projection for this orientation");
  }
  if (eProjection == CYLINDRICAL_PROJECTION) {
    return obFov;
  }
  if (IsCylindricalFamily(eProjection)) {
    return FieldOfView(obFov.Horizontal, obFov.Vertical * 2.0f);
  }
  PANORAMIC_FAIL(EINVAL, "Invalid projection");
}

DEWARP_PROJECTION SinglePanoramicView::GetDefaultProjection() const { return CYLINDRICAL_PROJECTION; }

DEWARP_ASPECT_RATIO SinglePanoramicView::GetDefaultAspectRatio() const { return SCALE_TO_ASPECT_RATIO; }

View::ImageMapPtr SinglePanoramicView::BuildStripProjectionMap(const CameraPtr& pobCamera,
                                                               DEWARP_PROJECTION eProjection,
                                                               float fWidthFactor, float fHeightFactor) {
  const ImageMapPtr pobSingle = View::BuildProjectionMap(pobCamera, eProjection);
  if (!pobSingle) {
    return ImageMapPtr();
  }
  Vector2d obSize = pobSingle->GetMapSize();
  obSize.X *= fWidthFactor;
  obSize.Y *= fHeightFactor;
  SplitMapBuilder obBuilder;
  return ImageMapPtr(obBuilder.BuildImageMap(*pobSingle, obSize));
}

}  // namespace libdewarp
}  // namespace vemo
