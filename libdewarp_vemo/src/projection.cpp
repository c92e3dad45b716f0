// Projection: the names of the output projections, the direction-vector conversions and every
// conversion between two projections, each generated from the written-out conversions by the
// composition rules of projection_composition.h.
#include <libdewarp_vemo/projection.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

#include "projection_composition.h"

namespace vemo {
namespace libdewarp {

const Vector2d Projection::ZeroShift(0.0f, 0.0f);
const Vector2d Projection::IdentityScale(1.0f, 1.0f);

Projection& Projection::operator=(const Projection& other) {
  if (this == &other) DEWARP_LOG_WARN("Self assignment of %s object\n", "Projection");
  return *this;
}

#define DEWARP_DEFINE_PROJECTION_CONVERSION(P, Q)                                          \
  Vector2d Projection::P##To##Q(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) {        \
    return projection_composition::Convert<projection_composition::Kind::P,                \
                                           projection_composition::Kind::Q>(obPoint,           \
                                                                             fFocalLength);     \
  }
DEWARP_PROJECTION_PAIRS(DEWARP_DEFINE_PROJECTION_CONVERSION)
#undef DEWARP_DEFINE_PROJECTION_CONVERSION

// (sin t sin lambda, cos t, -sin t cos lambda) with lambda = x / f and the polar angle
// t = pi/2 - y / f. cos t is taken as sin(pi/2 - t), which is exactly 0 on the horizon, so that
// longitude 0, latitude 0 gives exactly (0, 0, -1).
Vector3d Projection::EquirectangularToVector3d(const Vector2d& obPoint, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = obPoint.X / f;
  const DEWARP_FLOAT t = Trigonometry::HALF_PI - obPoint.Y / f;
  const DEWARP_FLOAT sinT = Trigonometry::sin(t);
  const DEWARP_FLOAT cosT = Trigonometry::sin(Trigonometry::HALF_PI - t);
  return Vector3d(sinT * Trigonometry::sin(lambda), cosT, -sinT * Trigonometry::cos(lambda));
}

Vector2d Projection::Vector3dToEquirectangular(const Vector3d& obVector, DEWARP_FLOAT f) {
  return Vector2d(f * Trigonometry::atan(obVector.X, -obVector.Z),
                  f * Trigonometry::asin(obVector.Y / obVector.Length()));
}

const char* Projection::GetName(DEWARP_PROJECTION eProjection) {
  // "cylindical" and "miller cyclindrical" are the engine's own spellings of these names.
  switch (eProjection) {
    case RECTILINEAR_PROJECTION: return "rectilinear";
    case CYLINDRICAL_PROJECTION: return "cylindical";
    case EQUIRECTANGULAR_PROJECTION: return "equirectangular";
    case MERCATOR_PROJECTION: return "mercator";
    case LAMBERT_CYLINDRICAL_PROJECTION: return "lambert cylindrical";
    case MILLER_CYLINDRICAL_PROJECTION: return "miller cyclindrical";
    case PANNINI_PROJECTION: return "pannini";
    case ARCHITECTURAL_PROJECTION: return "architectural";
    case EQUIRECTANGULAR_PANNINI_PROJECTION: return "equirectangular pannini";
  }
  DEWARP_LOG_WARN("Unable to get the name of an unknown projection\n");
  return "<unknown>";
}

}  // namespace libdewarp
}  // namespace vemo
