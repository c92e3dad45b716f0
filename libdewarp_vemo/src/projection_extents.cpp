// Projection: how image size, field of view and focal length relate in each projection.
#include <libdewarp_vemo/projection.h>

#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

namespace {

typedef Trigonometry T;
typedef FloatingPoint FP;

// Half of a plus half of b, component by component.
Vector2d Blend(const Vector2d& a, const Vector2d& b) {
  return Vector2d(0.5f * a.X + 0.5f * b.X, 0.5f * a.Y + 0.5f * b.Y);
}

// The horizontal angle of the cylindrical projections, whose width is linear in longitude.
DEWARP_FLOAT CylindricalAngle(DEWARP_FLOAT fSize, DEWARP_FLOAT f) { return 2.0f * (fSize / 2.0f) / f; }
DEWARP_FLOAT CylindricalWidth(DEWARP_FLOAT fAngle, DEWARP_FLOAT f) { return 2.0f * f * (fAngle / 2.0f); }

}  // namespace

// ---- Focal lengths -----------------------------------------------------------------------

DEWARP_FLOAT Projection::EquirectangularFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::CylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::FisheyeFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::MercatorFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::LambertCylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::MillerCylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::ArchitecturalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / fAngle;
}
DEWARP_FLOAT Projection::EquisolidFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return 0.5f * fSize / T::sin(0.5f * fAngle);
}
DEWARP_FLOAT Projection::OrthographicFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / T::sin(fAngle);
}
DEWARP_FLOAT Projection::EquirectangularPanniniFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return 0.5f * fSize / T::tan(0.5f * fAngle);
}
DEWARP_FLOAT Projection::PanniniFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return 0.5f * fSize / T::tan(0.5f * fAngle);
}
DEWARP_FLOAT Projection::StereographicFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return 0.5f * fSize / T::tan(0.5f * fAngle);
}
DEWARP_FLOAT Projection::RectilinearFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle) {
  return fSize / T::tan(fAngle);
}

// ---- Fields of view from a size (W, H) -------------------------------------------------

Vector2d Projection::EquirectangularFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(s.X / f, s.Y / f);
}
Vector2d Projection::FisheyeFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(s.X / f, s.Y / f);
}
Vector2d Projection::RectilinearFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(2.0f * T::atan(s.X / 2.0f, f), 2.0f * T::atan(s.Y / 2.0f, f));
}
Vector2d Projection::OrthographicFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(2.0f * T::asin((s.X / 2.0f) / f), 2.0f * T::asin((s.Y / 2.0f) / f));
}
Vector2d Projection::EquisolidFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(4.0f * T::asin(s.X / f), 4.0f * T::asin(s.Y / f));
}
Vector2d Projection::StereographicFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(4.0f * T::atan(s.X, f), 4.0f * T::atan(s.Y, f));
}
Vector2d Projection::CylindricalFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(CylindricalAngle(s.X, f), 2.0f * T::atan(s.Y / 2.0f, f));
}
Vector2d Projection::LambertCylindricalFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(CylindricalAngle(s.X, f), 2.0f * T::asin((s.Y / 2.0f) / f));
}
Vector2d Projection::MercatorFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Vector2d(CylindricalAngle(s.X, f), 2.0f * T::atan(T::sinh((s.Y / 2.0f) / f)));
}
// The inverse of the Miller vertical at the half height, doubled:
// 2 * 1.25 * atan(sinh(0.8 * (H/2) / f)).
Vector2d Projection::MillerCylindricalFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  const DEWARP_FLOAT half = 1.25f * T::atan(T::sinh(0.8f * ((s.Y / 2.0f) / f)));
  return Vector2d(CylindricalAngle(s.X, f), 2.0f * half);
}
Vector2d Projection::ArchitecturalFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  return Blend(MillerCylindricalFieldOfView(s, f), LambertCylindricalFieldOfView(s, f));
}
// The Pannini angles are those of the corner (W/2, H/2) taken back to longitude and latitude,
// doubled: a = atan2((W/2) / f, 2) is a quarter of the horizontal angle, and the vertical
// inverts the Pannini vertical at that column, 2 * atan(atan(cos^2(a) * (H/2) / f)). This is
// the exact inverse of PanniniResolution.
Vector2d Projection::PanniniFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  const DEWARP_FLOAT a = T::atan((s.X / 2.0f) / f, 2.0f);
  const DEWARP_FLOAT phi = (s.Y / 2.0f) / f;
  return Vector2d(2.0f * (2.0f * a), 2.0f * T::atan(T::atan(FP::square(T::cos(a)) * phi)));
}
// As PanniniFieldOfView with a single atan in the vertical; the inverse of
// EquirectangularPanniniResolution.
Vector2d Projection::EquirectangularPanniniFieldOfView(const Vector2d& s, DEWARP_FLOAT f) {
  const DEWARP_FLOAT a = T::atan((s.X / 2.0f) / f, 2.0f);
  const DEWARP_FLOAT phi = (s.Y / 2.0f) / f;
  return Vector2d(2.0f * (2.0f * a), 2.0f * T::atan(FP::square(T::cos(a)) * phi));
}

// ---- Sizes from a field of view (h, v) --------------------------------------------------

Vector2d Projection::EquirectangularResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(f * v.X, f * v.Y);
}
Vector2d Projection::FisheyeResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(f * v.X, f * v.Y);
}
Vector2d Projection::MercatorResolution(const Vector2d& v, DEWARP_FLOAT f) {
  const DEWARP_FLOAT half = v.Y / 2.0f;
  return Vector2d(CylindricalWidth(v.X, f), 2.0f * f * FP::log(1.0f / T::cos(half) + T::tan(half)));
}
Vector2d Projection::MillerCylindricalResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(CylindricalWidth(v.X, f), 2.0f * f * 1.25f * T::asinh(T::tan(0.8f * v.Y / 2.0f)));
}
Vector2d Projection::EquirectangularPanniniResolution(const Vector2d& v, DEWARP_FLOAT f) {
  const DEWARP_FLOAT quarter = v.X / 4.0f;
  return Vector2d(2.0f * (2.0f * f) * T::tan(quarter),
                  2.0f * f * T::tan(v.Y / 2.0f) / FP::square(T::cos(quarter)));
}
Vector2d Projection::PanniniResolution(const Vector2d& v, DEWARP_FLOAT f) {
  const DEWARP_FLOAT quarter = v.X / 4.0f;
  return Vector2d(2.0f * (2.0f * f) * T::tan(quarter),
                  2.0f * f * T::tan(T::tan(v.Y / 2.0f)) / FP::square(T::cos(quarter)));
}
Vector2d Projection::ArchitecturalResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Blend(MillerCylindricalResolution(v, f), LambertCylindricalResolution(v, f));
}
Vector2d Projection::CylindricalResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(CylindricalWidth(v.X, f), 2.0f * f * T::tan(v.Y / 2.0f));
}
// Here the sine of the half angle: the equal-area direction, unlike the point conversions.
Vector2d Projection::LambertCylindricalResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(CylindricalWidth(v.X, f), 2.0f * f * T::sin(v.Y / 2.0f));
}
Vector2d Projection::RectilinearResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(2.0f * f * T::tan(v.X / 2.0f), 2.0f * f * T::tan(v.Y / 2.0f));
}
Vector2d Projection::OrthographicResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(2.0f * f * T::sin(v.X / 2.0f), 2.0f * f * T::sin(v.Y / 2.0f));
}
Vector2d Projection::EquisolidResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(2.0f * (2.0f * f) * T::sin(v.X / 4.0f), 2.0f * (2.0f * f) * T::sin(v.Y / 4.0f));
}
// The stereographic radius 2f * tan(angle / 2) at each half angle, doubled.
Vector2d Projection::StereographicResolution(const Vector2d& v, DEWARP_FLOAT f) {
  return Vector2d(2.0f * (2.0f * f) * T::tan(v.X / 4.0f), 2.0f * (2.0f * f) * T::tan(v.Y / 4.0f));
}

}  // namespace libdewarp
}  // namespace vemo
