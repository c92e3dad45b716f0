#include <libdewarp_vemo/rectilinear_ptz_functor.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

RectilinearPtzFunctor::RectilinearPtzFunctor() : m_obOffset() {}

RectilinearPtzFunctor::RectilinearPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                                             const Vector2d& obOffset)
    : PtzFunctor(obPosition, fFocalLength, 0), m_obOffset(obOffset) {}

RectilinearPtzFunctor::RectilinearPtzFunctor(const RectilinearPtzFunctor& other)
    : PtzFunctor(other), m_obOffset(other.m_obOffset) {}

RectilinearPtzFunctor& RectilinearPtzFunctor::operator=(const RectilinearPtzFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "RectilinearPtzFunctor");
    return *this;
  }
  CopyFrom(other);
  m_obOffset = other.m_obOffset;
  return *this;
}

RectilinearPtzFunctor::~RectilinearPtzFunctor() {}

// No map is attached to a rectilinear PTZ functor: the offset takes its place.
void RectilinearPtzFunctor::Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const Vector2d& obOffset) {
  PtzFunctor::Set(obPosition, fFocalLength, 0);
  m_obOffset = obOffset;
}

Vector2d RectilinearPtzFunctor::Call(const Vector2d& obPoint) {
  const Vector2d z = Zoom(obPoint, m_fZoom);
  return RectilinearPerspective(z, m_fFocalLength, m_obRotation, m_obOffset);
}

}  // namespace libdewarp
}  // namespace vemo
