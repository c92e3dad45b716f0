// Converts points between an output projection and the camera's lens projection through one
// conversion function of Projection.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class ProjectionFunctor : public MapFunctor {
public:
  // The engine's internal list of projections. Values 0 to 8 are those of DEWARP_PROJECTION.
  typedef enum _PROJECTION {
    RECTILINEAR = 0,
    CYLINDRICAL = 1,
    EQUIRECTANGULAR = 2,
    MERCATOR = 3,
    LAMBERT_CYLINDRICAL = 4,
    MILLER_CYLINDRICAL = 5,
    PANNINI = 6,
    ARCHITECTURAL = 7,
    EQUIRECTANGULAR_PANNINI = 8,
    STEREOGRAPHIC = 9,
    ORTHOGRAPHIC = 10,
    EQUISOLID = 11,
    CYLINDRIC = 12,
    FISHEYE = 13,
    SPHERICAL = 14,
    MIRROR = 15
  } PROJECTION;

  // No function: every point maps to (0, 0).
  ProjectionFunctor();
  ProjectionFunctor(const ProjectionFunctor& other);
  // From the output projection to the lens: the direction of a dewarping map.
  ProjectionFunctor(DEWARP_PROJECTION eProjection, DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                    DEWARP_FLOAT fFocalLength, const Vector2d& obSquish = Projection::IdentityScale);
  // From the lens to the output projection.
  ProjectionFunctor(DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                    DEWARP_FLOAT fFocalLength, const Vector2d& obSquish = Projection::IdentityScale);
  ProjectionFunctor(ProjectionFunction pfnProjection, DEWARP_FLOAT fFocalLength,
                    const Vector2d& obSquish = Projection::IdentityScale);
  ProjectionFunctor& operator=(const ProjectionFunctor& other);
  virtual ~ProjectionFunctor() {}

  // The Set forms leave the functor unchanged when they throw.
  void Set(const ProjectionFunctor& other);
  void Set(DEWARP_PROJECTION eProjection, DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
           DEWARP_FLOAT fFocalLength, const Vector2d& obSquish = Projection::IdentityScale);
  void Set(DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
           DEWARP_FLOAT fFocalLength, const Vector2d& obSquish = Projection::IdentityScale);
  void Set(ProjectionFunction pfnProjection, DEWARP_FLOAT fFocalLength,
           const Vector2d& obSquish = Projection::IdentityScale);

  ProjectionFunction GetFunction() const { return m_pfnProjection; }
  DEWARP_FLOAT GetFocalLength() const { return m_fFocalLength; }
  // The squish travels with the functor but Call does not apply it.
  const Vector2d& GetSquish() const { return m_obSquish; }

  // RECTILINEAR_CAMERA -> RECTILINEAR, CIRCULAR_FISHEYE_CAMERA -> FISHEYE; any other type
  // throws error 22 "Invalid camera type".
  static PROJECTION ConvertCamera(DEWARP_INTERNAL_CAMERA_TYPE eCameraType);
  // Projection::<From>To<To>; null for a value outside the list.
  static ProjectionFunction GetProjection(PROJECTION eFrom, PROJECTION eTo);
  // Output projection -> lens.
  static ProjectionFunction GetProjection(DEWARP_PROJECTION eProjection,
                                          DEWARP_INTERNAL_CAMERA_TYPE eCameraType);
  // Lens -> output projection.
  static ProjectionFunction GetProjection(DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                          DEWARP_PROJECTION eProjection);

  // (0, 0) without a function, otherwise the function of the point and the focal length.
  virtual Vector2d Call(const Vector2d& obPoint);

protected:
  ProjectionFunction m_pfnProjection;
  DEWARP_FLOAT m_fFocalLength;
  Vector2d m_obSquish;
};

}  // namespace libdewarp
}  // namespace vemo
