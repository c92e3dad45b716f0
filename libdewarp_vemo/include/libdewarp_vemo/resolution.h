// Image size in pixels held as a Vector2d: X is the width, Y the height. Image coordinates have
// their origin at the bottom-left with Y growing upwards (north).
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class Resolution : public Vector2d {
public:
  static const Resolution InvalidResolution;

  constexpr Resolution() : Vector2d() {}
  constexpr Resolution(const Resolution& other) : Vector2d(other) {}
  Resolution(int width, int height);
  Resolution(unsigned width, unsigned height);
  // Fractional sizes are rounded down to whole pixels.
  Resolution(DEWARP_FLOAT width, DEWARP_FLOAT height);
  explicit Resolution(const Vector2d& size);
  virtual ~Resolution() {}

  Resolution& operator=(const Resolution& other);

  // Arithmetic is component-wise and does not round.
  Resolution& operator+=(const Vector2d& other) { X += other.X; Y += other.Y; return *this; }
  Resolution& operator-=(const Vector2d& other) { X -= other.X; Y -= other.Y; return *this; }
  Resolution& operator*=(DEWARP_FLOAT k) { X *= k; Y *= k; return *this; }
  Resolution& operator/=(DEWARP_FLOAT k) { X /= k; Y /= k; return *this; }
  Resolution operator+(const Vector2d& other) const { return Exact(X + other.X, Y + other.Y); }
  Resolution operator-(const Vector2d& other) const { return Exact(X - other.X, Y - other.Y); }
  Resolution operator*(DEWARP_FLOAT k) const { return Exact(X * k, Y * k); }
  Resolution operator/(DEWARP_FLOAT k) const { return Exact(X / k, Y / k); }
  Resolution operator-() const { return Exact(-X, -Y); }

  // Width over height.
  DEWARP_FLOAT AspectRatio() const { return X / Y; }
  // Both sides finite and strictly positive.
  bool Valid() const;
  Vector2d Centre() const { return Vector2d(X / 2.0f, Y / 2.0f); }

  Vector2d SouthWest() const { return Vector2d(0.0f, 0.0f); }
  Vector2d SouthEast() const { return Vector2d(X, 0.0f); }
  Vector2d NorthWest() const { return Vector2d(0.0f, Y); }
  Vector2d NorthEast() const { return Vector2d(X, Y); }
  Vector2d South() const { return Vector2d(X / 2.0f, 0.0f); }
  Vector2d North() const { return Vector2d(X / 2.0f, Y); }
  Vector2d West() const { return Vector2d(0.0f, Y / 2.0f); }
  Vector2d East() const { return Vector2d(X, Y / 2.0f); }

  // The same points relative to the centre.
  Vector2d SouthWestOffset() const { return Vector2d(-X / 2.0f, -Y / 2.0f); }
  Vector2d SouthEastOffset() const { return Vector2d(X / 2.0f, -Y / 2.0f); }
  Vector2d NorthWestOffset() const { return Vector2d(-X / 2.0f, Y / 2.0f); }
  Vector2d NorthEastOffset() const { return Vector2d(X / 2.0f, Y / 2.0f); }
  Vector2d SouthOffset() const { return Vector2d(0.0f, -Y / 2.0f); }
  Vector2d NorthOffset() const { return Vector2d(0.0f, Y / 2.0f); }
  Vector2d WestOffset() const { return Vector2d(-X / 2.0f, 0.0f); }
  Vector2d EastOffset() const { return Vector2d(X / 2.0f, 0.0f); }

  // The point rounded to whole pixels and clamped to 0 ... X and 0 ... Y (the bounds
  // themselves included).
  Vector2d NearestNeighbour(const Vector2d& point) const;
  // Scale that brings the other size to this one along the limiting axis.
  DEWARP_FLOAT BestScale(const Resolution& other) const;
  // The largest size of the given aspect ratio inside this one, not rounded.
  Resolution BestFit(DEWARP_FLOAT aspect) const;

private:
  struct ExactTag {};
  constexpr Resolution(DEWARP_FLOAT width, DEWARP_FLOAT height, ExactTag) : Vector2d(width, height) {}
  static Resolution Exact(DEWARP_FLOAT width, DEWARP_FLOAT height) { return Resolution(width, height, ExactTag()); }
};

}  // namespace libdewarp
}  // namespace vemo
