#include <libdewarp_vemo/spherical_ptz_functor.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

SphericalPtzFunctor::SphericalPtzFunctor() {}

SphericalPtzFunctor::SphericalPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                                         const ImageMap* pobImageMap)
    : PtzFunctor(obPosition, fFocalLength, pobImageMap) {}

SphericalPtzFunctor::SphericalPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                                         const ImageMap& obImageMap)
    : PtzFunctor(obPosition, fFocalLength, &obImageMap) {}

SphericalPtzFunctor::SphericalPtzFunctor(const SphericalPtzFunctor& other) : PtzFunctor(other) {}

SphericalPtzFunctor& SphericalPtzFunctor::operator=(const SphericalPtzFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SphericalPtzFunctor");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

SphericalPtzFunctor::~SphericalPtzFunctor() {}

// The builder hands points relative to the view's centre; the map is addressed from its
// top-left element, so the point is moved by the output offset before zooming.
Vector2d SphericalPtzFunctor::Call(const Vector2d& obPoint) {
  const Vector2d p(obPoint.X + m_obOutputOffset.X, obPoint.Y + m_obOutputOffset.Y);
  const Vector2d z = Zoom(p, m_fZoom);
  return SphericalPerspective(z, m_fFocalLength, m_obRotation);
}

// The move by the output offset is non-decreasing in the point, so the moved rectangle holds
// every moved point. A lookup with a NaN coordinate stays NaN through the rotation: the radius
// (hypot of NaN and a finite value is NaN, of NaN and an infinite one infinite) is NaN or
// infinite, so the angle from the axis, wrapped into one turn, is NaN, and so are its sine and
// cosine, the rotated ray and both coordinates of the result. That result has no source.
bool SphericalPtzFunctor::NoSourceWithin(const Vector2d& obLow, const Vector2d& obHigh) const {
  const Vector2d pLow(obLow.X + m_obOutputOffset.X, obLow.Y + m_obOutputOffset.Y);
  const Vector2d pHigh(obHigh.X + m_obOutputOffset.X, obHigh.Y + m_obOutputOffset.Y);
  return ZoomFindsNoSource(pLow, pHigh, m_fZoom);
}

}  // namespace libdewarp
}  // namespace vemo
