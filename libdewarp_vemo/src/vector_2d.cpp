#include <libdewarp_vemo/vector_2d.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const Vector2d Vector2d::InvalidVector(FloatingPoint::Nan, FloatingPoint::Nan);
const Vector2d Vector2d::InfiniteVector(FloatingPoint::Infinity, FloatingPoint::Infinity);
const Vector2d Vector2d::ZeroVector(FloatingPoint::Zero, FloatingPoint::Zero);
const Vector2d Vector2d::IdentityVector(1.0f, 1.0f);

Vector2d& Vector2d::operator=(const Vector2d& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Vector2d");
    return *this;
  }
  X = other.X;
  Y = other.Y;
  return *this;
}

DEWARP_FLOAT Vector2d::Length() const { return Trigonometry::hypot(X, Y); }

DEWARP_FLOAT Vector2d::Angle() const { return Trigonometry::atan(X, Y); }

DEWARP_FLOAT Distance(const Vector2d& a, const Vector2d& b) { return Trigonometry::hypot(a.X - b.X, a.Y - b.Y); }

}  // namespace libdewarp
}  // namespace vemo
