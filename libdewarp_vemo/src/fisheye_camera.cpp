#include <libdewarp_vemo/fisheye_camera.h>

#include <cerrno>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/ptz_functor.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/spherical_ptz_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const PtzPosition FisheyeCamera::CeilingOrientation(EulerAngles(0.0f, Trigonometry::HALF_PI, 0.0f),
                                                    PtzPosition::DefaultZoom);
const PtzPosition FisheyeCamera::FloorOrientation(EulerAngles(0.0f, Trigonometry::HALF_PI, Trigonometry::PI),
                                                  PtzPosition::DefaultZoom);
const PtzPosition FisheyeCamera::WallOrientation(EulerAngles(0.0f, 0.0f, 0.0f), PtzPosition::DefaultZoom);
const PtzPosition FisheyeCamera::InvertedWallOrientation(EulerAngles(0.0f, 0.0f, Trigonometry::PI),
                                                         PtzPosition::DefaultZoom);

FisheyeCamera::FisheyeCamera() {}

FisheyeCamera::FisheyeCamera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount)
    : Camera(stdModel, eMount) {}

FisheyeCamera::FisheyeCamera(const FisheyeCamera& other) : Camera(other) {}

FisheyeCamera& FisheyeCamera::operator=(const FisheyeCamera& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "FisheyeCamera");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

FisheyeCamera::~FisheyeCamera() {}

PtzPosition FisheyeCamera::GetHomePosition() const {
  switch (m_eMount) {
    case CEILING_MOUNT:
      return CeilingOrientation;
    case FLOOR_MOUNT:
      return FloorOrientation;
    case WALL_MOUNT:
      return WallOrientation;
    case INVERTED_WALL_MOUNT:
      return InvertedWallOrientation;
    default:
      Error::SetLastError(EINVAL);
      throw Error(DEWARP_LOCATION("FisheyeCamera"), EINVAL, "Invalid camera mount");
  }
}

// Ceiling and floor lenses see all around and offer one, two or four panes; wall lenses offer a
// single pane only.
ImageMap* FisheyeCamera::BuildPtzMap(const PtzPosition& obPosition, const ImageMap& obMap, unsigned int uPanes) const {
  if (IsVertical()) {
    if (uPanes == 2) return BuildDualPtzMap(obPosition, obMap);
    if (uPanes == 4) return BuildQuadPtzMap(obPosition, obMap);
    if (uPanes != 1) DEWARP_LOG_WARN("Ignoring invalid number of panes (%u) for PTZ view\n", uPanes);
    return BuildSinglePtzMap(obPosition, obMap);
  }
  if (uPanes != 1) DEWARP_LOG_WARN("Only single pane PTZ view is available for this camera mounting\n");
  return BuildSinglePtzMap(obPosition, obMap);
}

// The pane looks in the requested direction turned by fYawOffset in pan (no offset leaves the
// requested position untouched), seen from the mount: the mount's orientation followed by the
// pane's, zooms multiplied.
PtzPosition FisheyeCamera::GetPanePosition(const PtzPosition& obPosition, DEWARP_FLOAT fYawOffset) const {
  PtzPosition obPane(obPosition);
  if (fYawOffset != 0.0f) {
    obPane.m_obOrientation.Yaw = Trigonometry::normalise_angle(obPane.m_obOrientation.Yaw + fYawOffset);
  }
  PtzPosition obHome = GetHomePosition();
  obHome.Concatenate(obPane);
  return obHome;
}

ImageMap* FisheyeCamera::BuildSinglePtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const {
  SphericalPtzMapBuilder obBuilder;
  return obBuilder.BuildImageMap(obMap, GetPanePosition(obPosition, 0.0f), GetFocalLength());
}

// Two panes stacked: the requested direction on top, the opposite direction (pan + pi) below.
ImageMap* FisheyeCamera::BuildDualPtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const {
  SphericalPtzMapBuilder obBuilder;
  return obBuilder.BuildImageMap(obMap, GetPanePosition(obPosition, 0.0f),
                                 GetPanePosition(obPosition, Trigonometry::PI), GetFocalLength());
}

// Four panes in reading order (top-left, top-right, bottom-left, bottom-right), each a quarter
// turn in pan further than the one before: pan + 0, + pi/2, + pi, + 3pi/2.
ImageMap* FisheyeCamera::BuildQuadPtzMap(const PtzPosition& obPosition, const ImageMap& obMap) const {
  SphericalPtzMapBuilder obBuilder;
  return obBuilder.BuildImageMap(obMap, GetPanePosition(obPosition, 0.0f),
                                 GetPanePosition(obPosition, Trigonometry::HALF_PI),
                                 GetPanePosition(obPosition, Trigonometry::PI),
                                 GetPanePosition(obPosition, 3.0f * Trigonometry::HALF_PI), GetFocalLength());
}

// Camera image point (pixels, rows from the top) -> (longitude, latitude) in radians. The
// radius tested against the half width is that of the incoming point, before flipping and
// centring.
Vector2d FisheyeCamera::MapHitPoint(const Vector2d& obPoint) const {
  const DEWARP_FLOAT f = GetFocalLength();
  const DEWARP_FLOAT r0 = Trigonometry::hypot(obPoint.X, obPoint.Y);
  Vector2d obCentred(obPoint);
  if (IsVertical()) obCentred.Y = m_obResolution.Y - obCentred.Y;
  const Vector2d obCentre = m_obResolution.Centre();
  obCentred.X -= obCentre.X;
  obCentred.Y -= obCentre.Y;
  const DEWARP_FLOAT fHalfWidth = m_obResolution.X / 2.0f;
  if (r0 > fHalfWidth) obCentred *= fHalfWidth / r0;
  Vector2d obResult = MapHitPoint(RotateHitPoint(obCentred, f), f);
  obResult.X /= f;
  obResult.Y /= f;
  if (IsHorizontal() && obResult.X == Trigonometry::PI) obResult.X = 0.0f;
  return obResult;
}

Vector2d FisheyeCamera::RotateHitPoint(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) const {
  const RotationMatrix3d obRotation(GetHomePosition().m_obOrientation);
  return PtzFunctor::InvSphericalPerspective(obPoint, fFocalLength, obRotation);
}

Vector2d FisheyeCamera::MapHitPoint(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) const {
  ProjectionFunctor obFunctor(m_eType, EQUIRECTANGULAR_PROJECTION, fFocalLength, Projection::IdentityScale);
  return obFunctor(obPoint);
}

}  // namespace libdewarp
}  // namespace vemo
