#include <libdewarp_vemo/rectangle_2d.h>

#include <libdewarp_vemo/log.h>

#include <utility>

namespace vemo {
namespace libdewarp {

Rectangle2d::Rectangle2d(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom)
    : Left(left), Top(top), Right(right), Bottom(bottom) {
  Normalise();
}

Rectangle2d::Rectangle2d(const DEWARP_FLOAT edges[4]) : Rectangle2d(edges[0], edges[1], edges[2], edges[3]) {}

Rectangle2d::Rectangle2d(const Vector2d& topLeft, const Vector2d& bottomRight)
    : Rectangle2d(topLeft.X, topLeft.Y, bottomRight.X, bottomRight.Y) {}

Rectangle2d::Rectangle2d(const Vector2d corners[2]) : Rectangle2d(corners[0], corners[1]) {}

Rectangle2d::Rectangle2d(const Vector2d& size) : Rectangle2d(0.0f, size.Y, size.X, 0.0f) {}

Rectangle2d& Rectangle2d::operator=(const Rectangle2d& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Rectangle2d");
    return *this;
  }
  Left = other.Left;
  Top = other.Top;
  Right = other.Right;
  Bottom = other.Bottom;
  return *this;
}

void Rectangle2d::Offset(DEWARP_FLOAT dx, DEWARP_FLOAT dy) {
  Left += dx;
  Right += dx;
  Top += dy;
  Bottom += dy;
}

void Rectangle2d::Scale(DEWARP_FLOAT k) {
  Left *= k;
  Top *= k;
  Right *= k;
  Bottom *= k;
}

void Rectangle2d::InvScale(DEWARP_FLOAT k) {
  if (!FloatingPoint::is_normal(k)) return;
  Left /= k;
  Top /= k;
  Right /= k;
  Bottom /= k;
}

void Rectangle2d::OffsetToCentre() {
  Right = Right / 2.0f;
  Left = Left - Right;
  Top = Top / 2.0f;
  Bottom = Bottom - Top;
}

void Rectangle2d::Deflate(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom) {
  Left += left;
  Top -= top;
  Right -= right;
  Bottom += bottom;
}

void Rectangle2d::Inflate(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom) {
  Left -= left;
  Top += top;
  Right += right;
  Bottom -= bottom;
}

void Rectangle2d::Normalise() {
  if (Left > Right) std::swap(Left, Right);
  if (Bottom > Top) std::swap(Bottom, Top);
}

namespace {

// Quiet minimum and maximum; on a tie or with NaN the second value is taken.
DEWARP_FLOAT Lesser(DEWARP_FLOAT a, DEWARP_FLOAT b) { return FloatingPoint::is_less(a, b) ? a : b; }
DEWARP_FLOAT Greater(DEWARP_FLOAT a, DEWARP_FLOAT b) { return FloatingPoint::is_greater(a, b) ? a : b; }

}  // namespace

void Rectangle2d::Union(const Rectangle2d& a, const Rectangle2d& b) {
  const Rectangle2d result(Lesser(a.Left, b.Left), Greater(a.Top, b.Top), Greater(a.Right, b.Right),
                           Lesser(a.Bottom, b.Bottom), Unchecked());
  *this = result;
  if (Left > Right) Left = Right;
  if (Bottom > Top) Bottom = Top;
}

void Rectangle2d::Intersection(const Rectangle2d& a, const Rectangle2d& b) {
  const Rectangle2d result(Greater(a.Left, b.Left), Lesser(a.Top, b.Top), Lesser(a.Right, b.Right),
                           Greater(a.Bottom, b.Bottom), Unchecked());
  *this = result;
  if (Left > Right) Left = Right;
  if (Bottom > Top) Bottom = Top;
  Normalise();
}

bool Rectangle2d::PtInRect(const Vector2d& p) const {
  return p.X >= Left && p.X <= Left && p.Y >= Bottom && p.Y <= Top;
}

}  // namespace libdewarp
}  // namespace vemo
