// The physical lens of one channel: its type (rectilinear or circular fisheye), field of view,
// sensor resolution and mounting. A camera answers what the map builders and views ask of the
// lens: focal length, natural size and field of view of each projection, the shift and scale
// of the panorama for its mount, and the PTZ map over a given base map.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class ImageMap;
class PtzPosition;

class Camera {
public:
  // Widest field of view a rectilinear projection is asked to cover (140 degrees).
  static const DEWARP_FLOAT MaxRectilinearFov;

  Camera();
  Camera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount);
  Camera(const Camera& other);
  Camera& operator=(const Camera& other);
  virtual ~Camera();

  void SetCameraModel(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel);
  void SetCameraMount(DEWARP_INTERNAL_CAMERA_MOUNT eMount);

  DEWARP_INTERNAL_CAMERA_TYPE GetCameraType() const;
  FieldOfView GetCameraFieldOfView() const;
  Resolution GetCameraResolution() const;
  DEWARP_INTERNAL_CAMERA_MODEL GetCameraModel() const;
  DEWARP_INTERNAL_CAMERA_MOUNT GetCameraMount() const;
  // Wall mounts look sideways (horizontal); ceiling and floor mounts look along the vertical.
  bool IsHorizontal() const;
  bool IsVertical() const;

  DEWARP_PROJECTION GetDefaultProjection() const;
  DEWARP_ASPECT_RATIO GetDefaultAspectRatio() const;

  // Pixels per radian of the lens; NaN for a model of unknown type.
  virtual DEWARP_FLOAT GetFocalLength() const;
  Vector2d GetScale(DEWARP_PROJECTION eProjection) const;
  Vector2d GetShift(DEWARP_PROJECTION eProjection, const Vector2d& obSize) const;
  // Natural size of the camera image in the given projection.
  Resolution GetProjectionMapSize(DEWARP_PROJECTION eProjection) const;
  FieldOfView GetProjectionFieldOfView(const Resolution& obResolution, DEWARP_PROJECTION eProjection) const;
  Resolution GetProjectionResolution(const FieldOfView& obFov, DEWARP_PROJECTION eProjection) const;

  // Projection maps (output projection -> camera image), new heap maps owned by the caller.
  ImageMap* BuildProjectionMap(DEWARP_PROJECTION eProjection, const Vector2d& obShift,
                               const Vector2d& obScale) const;
  ImageMap* BuildProjectionMap(const Resolution& obResolution, DEWARP_PROJECTION eProjection,
                               const Vector2d& obShift, const Vector2d& obScale) const;

  // PTZ map of one, two or four panes over obMap; a new heap map owned by the caller, or null
  // when the lens has no PTZ views.
  virtual ImageMap* BuildPtzMap(const PtzPosition& obPosition, const ImageMap& obMap, unsigned int uPanes) const = 0;
  // Direction (longitude, latitude) in radians of a camera image point (pixels, rows counted
  // from the top).
  virtual Vector2d MapHitPoint(const Vector2d& obPoint) const = 0;

  static const char* GetCameraTypeName(int eType);
  void LogCameraInfo() const;

protected:
  void CopyFrom(const Camera& other);

  DEWARP_INTERNAL_CAMERA_TYPE m_eType;
  FieldOfView m_obFov;
  Resolution m_obResolution;
  DEWARP_INTERNAL_CAMERA_MODEL m_stdModel;
  DEWARP_INTERNAL_CAMERA_MOUNT m_eMount;
};

}  // namespace libdewarp
}  // namespace vemo
