#include <libdewarp_vemo/equirectangular_ptz_functor.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

EquirectangularPtzFunctor::EquirectangularPtzFunctor() : m_obEquirectangularRotation() {}

EquirectangularPtzFunctor::EquirectangularPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                                                     const ImageMap* pobImageMap)
    : m_obEquirectangularRotation() {
  Set(obPosition, fFocalLength, pobImageMap);
}

EquirectangularPtzFunctor::EquirectangularPtzFunctor(const EquirectangularPtzFunctor& other)
    : PtzFunctor(other), m_obEquirectangularRotation(other.m_obEquirectangularRotation) {}

EquirectangularPtzFunctor& EquirectangularPtzFunctor::operator=(const EquirectangularPtzFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "EquirectangularPtzFunctor");
    return *this;
  }
  CopyFrom(other);
  m_obEquirectangularRotation = other.m_obEquirectangularRotation;
  return *this;
}

EquirectangularPtzFunctor::~EquirectangularPtzFunctor() {}

// A full turn of the panorama is 2 * pi * f pixels wide, so its half period is pi * f; panning
// by an angle moves the panorama by that angle times f.
void EquirectangularPtzFunctor::Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                                    const ImageMap* pobImageMap) {
  PtzFunctor::Set(obPosition, fFocalLength, pobImageMap);
  m_obEquirectangularRotation =
      Vector2d(Trigonometry::PI * fFocalLength, obPosition.m_obOrientation.Yaw * fFocalLength);
}

Vector2d EquirectangularPtzFunctor::Call(const Vector2d& obPoint) {
  const Vector2d z = Zoom(obPoint, m_fZoom);
  return EquirectangularPerspective(z, m_fFocalLength, m_obEquirectangularRotation);
}

}  // namespace libdewarp
}  // namespace vemo
