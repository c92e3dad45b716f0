// Axis-aligned rectangle in image coordinates (origin bottom-left, Y up): after Normalise,
// Left <= Right and Bottom <= Top.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class Rectangle2d {
public:
  DEWARP_FLOAT Left;
  DEWARP_FLOAT Top;
  DEWARP_FLOAT Right;
  DEWARP_FLOAT Bottom;

  constexpr Rectangle2d() : Left(0.0f), Top(0.0f), Right(0.0f), Bottom(0.0f) {}
  constexpr Rectangle2d(const Rectangle2d& o) : Left(o.Left), Top(o.Top), Right(o.Right), Bottom(o.Bottom) {}
  Rectangle2d(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom);
  // { left, top, right, bottom }
  explicit Rectangle2d(const DEWARP_FLOAT edges[4]);
  // The first point gives Left and Top, the second Right and Bottom.
  Rectangle2d(const Vector2d& topLeft, const Vector2d& bottomRight);
  explicit Rectangle2d(const Vector2d corners[2]);
  // A rectangle of the given size with its bottom-left corner at the origin.
  explicit Rectangle2d(const Vector2d& size);
  virtual ~Rectangle2d() {}

  Rectangle2d& operator=(const Rectangle2d& other);

  DEWARP_FLOAT Width() const { return Right - Left; }
  DEWARP_FLOAT Height() const { return Top - Bottom; }
  // Both measured with Bottom - Top, so they are negative (or zero) for a normalised
  // rectangle; callers take the sign into account.
  DEWARP_FLOAT Area() const { return (Right - Left) * (Bottom - Top); }
  DEWARP_FLOAT AspectRatio() const { return (Right - Left) / (Bottom - Top); }
  // (height, width), in this order.
  Vector2d GetSize() const { return Vector2d(Top - Bottom, Right - Left); }

  Vector2d TopLeft() const { return Vector2d(Left, Top); }
  Vector2d TopRight() const { return Vector2d(Right, Top); }
  Vector2d BottomLeft() const { return Vector2d(Left, Bottom); }
  Vector2d BottomRight() const { return Vector2d(Right, Bottom); }
  Vector2d Centre() const { return Vector2d(Left + Width() / 2.0f, Bottom + Height() / 2.0f); }

  void Offset(DEWARP_FLOAT dx, DEWARP_FLOAT dy);
  void Offset(const Vector2d& d) { Offset(d.X, d.Y); }
  Rectangle2d& operator+=(const Vector2d& d) { Offset(d.X, d.Y); return *this; }
  Rectangle2d& operator-=(const Vector2d& d) { Offset(-d.X, -d.Y); return *this; }

  void Scale(DEWARP_FLOAT k);
  // Divides every edge by k; a k that is not a normal number leaves the rectangle unchanged.
  void InvScale(DEWARP_FLOAT k);
  // Moves the origin to the centre: (0, H, W, 0) becomes (-W/2, H/2, W/2, -H/2).
  void OffsetToCentre();

  void Deflate(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom);
  void Deflate(DEWARP_FLOAT dx, DEWARP_FLOAT dy) { Deflate(dx, dy, dx, dy); }
  void Deflate(const Vector2d& d) { Deflate(d.X, d.Y, d.X, d.Y); }
  void Deflate(const Rectangle2d& r) { Deflate(r.Left, r.Top, r.Right, r.Bottom); }
  void Inflate(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom);
  void Inflate(DEWARP_FLOAT dx, DEWARP_FLOAT dy) { Inflate(dx, dy, dx, dy); }
  void Inflate(const Vector2d& d) { Inflate(d.X, d.Y, d.X, d.Y); }
  void Inflate(const Rectangle2d& r) { Inflate(r.Left, r.Top, r.Right, r.Bottom); }

  void SetNull() { Left = 0.0f; Top = 0.0f; Right = 0.0f; Bottom = 0.0f; }
  bool IsNull() const { return Left == 0.0f && Top == 0.0f && Right == 0.0f && Bottom == 0.0f; }
  bool IsEmpty() const { return Top - Bottom == 0.0f || Right - Left == 0.0f; }
  void Normalise();

  void Union(const Rectangle2d& a, const Rectangle2d& b);
  void Union(const Rectangle2d& b) { Union(*this, b); }
  // Disjoint rectangles give a degenerate rectangle at the clamped edge, never an inverted one.
  void Intersection(const Rectangle2d& a, const Rectangle2d& b);
  void Intersection(const Rectangle2d& b) { Intersection(*this, b); }

  // Only points on the left edge (within the vertical extent) are inside: the horizontal test
  // compares with Left on both sides.
  bool PtInRect(const Vector2d& p) const;

private:
  // Edges taken as they are, without Normalise.
  struct Unchecked {};
  constexpr Rectangle2d(DEWARP_FLOAT left, DEWARP_FLOAT top, DEWARP_FLOAT right, DEWARP_FLOAT bottom, Unchecked)
      : Left(left), Top(top), Right(right), Bottom(bottom) {}
};

}  // namespace libdewarp
}  // namespace vemo
