#include <libdewarp_vemo/shift_scale_functor.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

const Vector2d ShiftScaleFunctor::DefaultShift(0.0f, 0.0f);
const Vector2d ShiftScaleFunctor::DefaultScale(1.0f, 1.0f);

ShiftScaleFunctor::ShiftScaleFunctor() : m_obShift(DefaultShift), m_obScale(DefaultScale) {}

ShiftScaleFunctor::ShiftScaleFunctor(const Vector2d& obShift, const Vector2d& obScale)
    : m_obShift(obShift), m_obScale(obScale) {}

ShiftScaleFunctor::ShiftScaleFunctor(const ShiftScaleFunctor& other)
    : MapFunctor(other), m_obShift(other.m_obShift), m_obScale(other.m_obScale) {}

ShiftScaleFunctor& ShiftScaleFunctor::operator=(const ShiftScaleFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ShiftScaleFunctor");
    return *this;
  }
  m_obShift = other.m_obShift;
  m_obScale = other.m_obScale;
  return *this;
}

void ShiftScaleFunctor::Set(const Vector2d& obShift, const Vector2d& obScale) {
  m_obShift = obShift;
  m_obScale = obScale;
}

Vector2d ShiftScaleFunctor::Shift(const Vector2d& obPoint, const Vector2d& obShift) {
  return obPoint + obShift;
}

Vector2d ShiftScaleFunctor::Scale(const Vector2d& obPoint, const Vector2d& obScale) {
  return Vector2d(obPoint.X * obScale.X, obPoint.Y * obScale.Y);
}

Vector2d ShiftScaleFunctor::Call(const Vector2d& obPoint) {
  return Scale(Shift(obPoint, m_obShift), m_obScale);
}

}  // namespace libdewarp
}  // namespace vemo
