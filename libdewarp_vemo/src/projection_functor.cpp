#include <libdewarp_vemo/projection_functor.h>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>

#include <cerrno>

namespace vemo {
namespace libdewarp {

namespace {

const int ProjectionCount = 15;

// Every conversion, row by row: the row is the projection converted from, the column the one
// converted to, both in the order of DEWARP_PROJECTION_NAMES.
#define DEWARP_CONVERSION_ENTRY(P, Q) &Projection::P##To##Q,
const ProjectionFunction Conversions[ProjectionCount * ProjectionCount] = {
    DEWARP_PROJECTION_PAIRS(DEWARP_CONVERSION_ENTRY)};
#undef DEWARP_CONVERSION_ENTRY

// Row of a value of the internal list in the table above, or -1. CYLINDRIC is another name of
// the cylindrical projection and shares its conversions.
int RowOf(ProjectionFunctor::PROJECTION eProjection) {
  switch (eProjection) {
    case ProjectionFunctor::RECTILINEAR: return 0;
    case ProjectionFunctor::CYLINDRICAL: return 1;
    case ProjectionFunctor::EQUIRECTANGULAR: return 2;
    case ProjectionFunctor::MERCATOR: return 3;
    case ProjectionFunctor::LAMBERT_CYLINDRICAL: return 4;
    case ProjectionFunctor::MILLER_CYLINDRICAL: return 5;
    case ProjectionFunctor::PANNINI: return 6;
    case ProjectionFunctor::ARCHITECTURAL: return 7;
    case ProjectionFunctor::EQUIRECTANGULAR_PANNINI: return 8;
    case ProjectionFunctor::STEREOGRAPHIC: return 9;
    case ProjectionFunctor::ORTHOGRAPHIC: return 10;
    case ProjectionFunctor::EQUISOLID: return 11;
    case ProjectionFunctor::CYLINDRIC: return 1;
    case ProjectionFunctor::FISHEYE: return 12;
    case ProjectionFunctor::SPHERICAL: return 13;
    case ProjectionFunctor::MIRROR: return 14;
  }
  return -1;
}

}  // namespace

ProjectionFunctor::ProjectionFunctor()
    : m_pfnProjection(0), m_fFocalLength(0.0f), m_obSquish(Projection::IdentityScale) {}

ProjectionFunctor::ProjectionFunctor(const ProjectionFunctor& other)
    : MapFunctor(other),
      m_pfnProjection(other.m_pfnProjection),
      m_fFocalLength(other.m_fFocalLength),
      m_obSquish(other.m_obSquish) {}

ProjectionFunctor::ProjectionFunctor(DEWARP_PROJECTION eProjection,
                                     DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                     DEWARP_FLOAT fFocalLength, const Vector2d& obSquish)
    : m_pfnProjection(GetProjection(eProjection, eCameraType)),
      m_fFocalLength(fFocalLength),
      m_obSquish(obSquish) {}

ProjectionFunctor::ProjectionFunctor(DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                     DEWARP_PROJECTION eProjection, DEWARP_FLOAT fFocalLength,
                                     const Vector2d& obSquish)
    : m_pfnProjection(GetProjection(eCameraType, eProjection)),
      m_fFocalLength(fFocalLength),
      m_obSquish(obSquish) {}

ProjectionFunctor::ProjectionFunctor(ProjectionFunction pfnProjection, DEWARP_FLOAT fFocalLength,
                                     const Vector2d& obSquish)
    : m_pfnProjection(pfnProjection), m_fFocalLength(fFocalLength), m_obSquish(obSquish) {}

ProjectionFunctor& ProjectionFunctor::operator=(const ProjectionFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ProjectionFunctor");
    return *this;
  }
  m_pfnProjection = other.m_pfnProjection;
  m_fFocalLength = other.m_fFocalLength;
  m_obSquish = other.m_obSquish;
  return *this;
}

void ProjectionFunctor::Set(const ProjectionFunctor& other) { *this = other; }

void ProjectionFunctor::Set(DEWARP_PROJECTION eProjection, DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                            DEWARP_FLOAT fFocalLength, const Vector2d& obSquish) {
  Set(GetProjection(eProjection, eCameraType), fFocalLength, obSquish);
}

void ProjectionFunctor::Set(DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                            DEWARP_FLOAT fFocalLength, const Vector2d& obSquish) {
  Set(GetProjection(eCameraType, eProjection), fFocalLength, obSquish);
}

void ProjectionFunctor::Set(ProjectionFunction pfnProjection, DEWARP_FLOAT fFocalLength,
                            const Vector2d& obSquish) {
  m_pfnProjection = pfnProjection;
  m_fFocalLength = fFocalLength;
  m_obSquish = obSquish;
}

ProjectionFunctor::PROJECTION ProjectionFunctor::ConvertCamera(DEWARP_INTERNAL_CAMERA_TYPE eCameraType) {
  switch (eCameraType) {
    case RECTILINEAR_CAMERA: return RECTILINEAR;
    case CIRCULAR_FISHEYE_CAMERA: return FISHEYE;
  }
  Error::SetLastError(EINVAL);
  throw Error(DEWARP_LOCATION("ProjectionFunctor"), EINVAL, "Invalid camera type");
}

ProjectionFunction ProjectionFunctor::GetProjection(PROJECTION eFrom, PROJECTION eTo) {
  const int from = RowOf(eFrom);
  const int to = RowOf(eTo);
  if (from < 0 || to < 0) return 0;
  return Conversions[from * ProjectionCount + to];
}

ProjectionFunction ProjectionFunctor::GetProjection(DEWARP_PROJECTION eProjection,
                                                    DEWARP_INTERNAL_CAMERA_TYPE eCameraType) {
  return GetProjection(static_cast<PROJECTION>(eProjection), ConvertCamera(eCameraType));
}

ProjectionFunction ProjectionFunctor::GetProjection(DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                                    DEWARP_PROJECTION eProjection) {
  return GetProjection(ConvertCamera(eCameraType), static_cast<PROJECTION>(eProjection));
}

Vector2d ProjectionFunctor::Call(const Vector2d& obPoint) {
  if (!m_pfnProjection) return Vector2d(0.0f, 0.0f);
  return m_pfnProjection(obPoint, m_fFocalLength);
}

}  // namespace libdewarp
}  // namespace vemo
