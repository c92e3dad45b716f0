#include <libdewarp_vemo/resolution.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

const Resolution Resolution::InvalidResolution(FloatingPoint::Nan, FloatingPoint::Nan, ExactTag());

Resolution::Resolution(int width, int height)
    : Vector2d(static_cast<DEWARP_FLOAT>(width), static_cast<DEWARP_FLOAT>(height)) {}

Resolution::Resolution(unsigned width, unsigned height)
    : Vector2d(static_cast<DEWARP_FLOAT>(width), static_cast<DEWARP_FLOAT>(height)) {}

Resolution::Resolution(DEWARP_FLOAT width, DEWARP_FLOAT height)
    : Vector2d(FloatingPoint::floor(width), FloatingPoint::floor(height)) {}

Resolution::Resolution(const Vector2d& size) : Resolution(size.X, size.Y) {}

Resolution& Resolution::operator=(const Resolution& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Resolution");
    return *this;
  }
  X = other.X;
  Y = other.Y;
  return *this;
}

bool Resolution::Valid() const {
  return FloatingPoint::is_finite(X) && FloatingPoint::is_finite(Y) && X > 0.0f && Y > 0.0f;
}

namespace {

DEWARP_FLOAT ClampToRange(DEWARP_FLOAT value, DEWARP_FLOAT upper) {
  if (value < 0.0f) return 0.0f;
  if (value > upper) return upper;
  return value;
}

}  // namespace

Vector2d Resolution::NearestNeighbour(const Vector2d& point) const {
  return Vector2d(ClampToRange(FloatingPoint::nearbyint(point.X), X),
                  ClampToRange(FloatingPoint::nearbyint(point.Y), Y));
}

DEWARP_FLOAT Resolution::BestScale(const Resolution& other) const {
  // Wider than the other (or not comparable): the heights decide.
  if (!FloatingPoint::is_lessequal(AspectRatio(), other.AspectRatio())) return Y / other.Y;
  return X / other.X;
}

Resolution Resolution::BestFit(DEWARP_FLOAT aspect) const {
  if (AspectRatio() <= aspect) return Exact(X, X / aspect);
  return Exact(aspect * Y, Y);
}

}  // namespace libdewarp
}  // namespace vemo
