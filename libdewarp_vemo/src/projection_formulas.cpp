// The conversions between projections that are written out; every other pair is a chain of
// these (see projection_composition.h).
//
// All arithmetic is single precision. In the equirectangular plane a point (x, y) stands for
// longitude x / f and latitude y / f.
#include "projection_composition.h"

#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/trigonometry.h>
#include <libdewarp_vemo/vector_3d.h>

namespace vemo {
namespace libdewarp {
namespace projection_formula {

namespace {

typedef Trigonometry T;
typedef FloatingPoint FP;

// The point with its vertical coordinate replaced; the horizontal one is kept.
Vector2d WithY(const Vector2d& obPoint, DEWARP_FLOAT fY) { return Vector2d(obPoint.X, fY); }

// The point at radius R in the direction alpha around the centre.
Vector2d AtRadius(DEWARP_FLOAT fRadius, DEWARP_FLOAT fAlpha) {
  return Vector2d(fRadius * T::cos(fAlpha), fRadius * T::sin(fAlpha));
}

// The point at radius R in the direction of the given point.
Vector2d AlongPoint(const Vector2d& obPoint, DEWARP_FLOAT fRadius) {
  return AtRadius(fRadius, T::atan(obPoint.Y, obPoint.X));
}

DEWARP_FLOAT RadiusOf(const Vector2d& obPoint) { return T::hypot(obPoint.X, obPoint.Y); }

// An equirectangular point as longitude and polar angle from the zenith, t = pi/2 - latitude.
// A latitude beyond a pole folds over it: the polar angle comes back into 0 ... pi and the
// longitude gains pi.
struct PolarDirection {
  DEWARP_FLOAT Lambda;
  DEWARP_FLOAT Theta;
};

PolarDirection FoldedDirection(const Vector2d& obPoint, DEWARP_FLOAT f) {
  PolarDirection d;
  d.Lambda = obPoint.X / f;
  d.Theta = T::HALF_PI - obPoint.Y / f;
  if (d.Theta < 0.0f) {
    d.Theta = -d.Theta;
    d.Lambda += T::PI;
  }
  if (d.Theta > T::PI) {
    d.Theta = T::PI - (d.Theta - T::PI);
    d.Lambda += T::PI;
  }
  return d;
}

// cos t of a polar angle, taken as sin(pi/2 - t): on the horizon, where t is the single-precision
// pi/2, this is exactly 0 (the cosine of the rounded pi/2 would be -4.4e-8), so the direction
// straight ahead has no vertical component at all.
DEWARP_FLOAT CosPolar(DEWARP_FLOAT fTheta) { return T::sin(T::HALF_PI - fTheta); }

}  // namespace

// ---- The equirectangular hub -------------------------------------------------------------

Vector2d EquirectangularToCylindrical(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * T::tan(phi));
}

Vector2d CylindricalToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  return WithY(p, f * T::atan(p.Y, f));
}

Vector2d EquirectangularToMercator(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * FP::log(1.0f / T::cos(phi) + T::tan(phi)));
}

Vector2d MercatorToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * T::atan(T::sinh(phi)));
}

Vector2d EquirectangularToMillerCylindrical(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * FP::log(T::tan(0.4f * phi + T::QUARTER_PI)) / 0.8f);
}

Vector2d MillerCylindricalToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, (f * 1.25f) * T::atan(T::sinh(0.8f * phi)));
}

// The Lambert pair is the engine's own: the forward conversion takes the arc sine of the
// latitude and the inverse its sine (mirrored against the equal-area textbook form).
Vector2d EquirectangularToLambertCylindrical(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * T::asin(phi));
}

Vector2d LambertCylindricalToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  return WithY(p, f * T::sin(phi));
}

// Architectural: Miller below the horizon, Lambert above it.
Vector2d EquirectangularToArchitectural(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  if (phi < 0.0f) return EquirectangularToMillerCylindrical(p, f);
  return EquirectangularToLambertCylindrical(p, f);
}

Vector2d ArchitecturalToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  if (phi < 0.0f) return MillerCylindricalToEquirectangular(p, f);
  return LambertCylindricalToEquirectangular(p, f);
}

// The equirectangular Pannini pair applies tan and atan once to the latitude; the plain Pannini
// pair applies each twice. Both are the engine's definitions of these projections.
Vector2d EquirectangularToEquirectangularPannini(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  const DEWARP_FLOAT half = p.X / (2.0f * f);
  const DEWARP_FLOAT cosine = T::cos(half);
  return Vector2d(2.0f * f * T::tan(half), f * T::tan(phi) / FP::square(cosine));
}

Vector2d EquirectangularPanniniToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = p.X / f;
  const DEWARP_FLOAT phi = p.Y / f;
  const DEWARP_FLOAT a = T::atan(lambda, 2.0f);
  return Vector2d(2.0f * f * a, f * T::atan(FP::square(T::cos(a)) * phi));
}

Vector2d EquirectangularToPannini(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT phi = p.Y / f;
  const DEWARP_FLOAT half = p.X / (2.0f * f);
  const DEWARP_FLOAT cosine = T::cos(half);
  return Vector2d(2.0f * f * T::tan(half), f * T::tan(T::tan(phi)) / FP::square(cosine));
}

Vector2d PanniniToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = p.X / f;
  const DEWARP_FLOAT phi = p.Y / f;
  const DEWARP_FLOAT a = T::atan(lambda, 2.0f);
  return Vector2d(2.0f * f * a, f * T::atan(T::atan(FP::square(T::cos(a)) * phi)));
}

// ---- Stereographic -----------------------------------------------------------------------

Vector2d EquirectangularToStereographic(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = p.X / f;
  const DEWARP_FLOAT phi = p.Y / f;
  const DEWARP_FLOAT cosPhi = T::cos(phi);
  const DEWARP_FLOAT k = 2.0f * f / (cosPhi * T::cos(lambda) + 1.0f);
  return Vector2d(k * cosPhi * T::sin(lambda), k * T::sin(phi));
}

// The latitude comes back in radians, not multiplied by f: the engine's inverse is defined so.
// At the centre there is no direction to speak of and the result is invalid; straight above or
// below the centre (cos c and u both vanishing) the longitude stays invalid.
Vector2d StereographicToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  Vector2d obResult = Vector2d::InvalidVector;
  const DEWARP_FLOAT u = p.X / f;
  const DEWARP_FLOAT v = p.Y / f;
  const DEWARP_FLOAT rho = T::hypot(u, v);
  const DEWARP_FLOAT c = 2.0f * T::atan(rho, 2.0f);
  if (FP::fabs(rho) <= T::EPSILON) return obResult;
  const DEWARP_FLOAT sinC = T::sin(c);
  const DEWARP_FLOAT cosC = T::cos(c);
  obResult.Y = T::asin(sinC * v / rho);
  if (FP::fabs(cosC) < T::EPSILON && FP::fabs(u) < T::EPSILON) return obResult;
  obResult.X = f * T::atan(u * sinC, rho * cosC);
  return obResult;
}

// ---- Rectilinear -------------------------------------------------------------------------

Vector2d EquirectangularToRectilinear(const Vector2d& p, DEWARP_FLOAT f) {
  const PolarDirection d = FoldedDirection(p, f);
  return Vector2d(f * T::tan(d.Lambda), f / (T::cos(d.Lambda) * T::tan(d.Theta)));
}

Vector2d RectilinearToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT theta = T::atan(RadiusOf(p), f);
  const DEWARP_FLOAT alpha = T::atan(p.Y, p.X);
  const DEWARP_FLOAT sinTheta = T::sin(theta);
  const Vector3d d(f * T::cos(theta), f * sinTheta * T::cos(alpha), f * sinTheta * T::sin(alpha));
  return Vector2d(f * T::atan(d.Y, d.X), f * (T::HALF_PI - T::atan(T::hypot(d.X, d.Y), d.Z)));
}

Vector2d CylindricalToRectilinear(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = p.X / f;
  return Vector2d(f * T::tan(lambda), p.Y / T::cos(lambda));
}

// The vertical divides by the arc cosine of the normalised horizontal coordinate, not by the
// cosine of the longitude; this is the engine's definition of the conversion.
Vector2d RectilinearToCylindrical(const Vector2d& p, DEWARP_FLOAT f) {
  return Vector2d(f * T::atan(p.X, f), p.Y / T::acos(p.X / f));
}

// ---- The equidistant fisheye and its relatives --------------------------------------------

Vector2d FisheyeToMirror(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, f * T::sin(RadiusOf(p) / (2.0f * f)));
}

Vector2d MirrorToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, f * 2.0f * T::asin(T::hypot(p.X / f, p.Y / f)));
}

Vector2d FisheyeToEquisolid(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, 2.0f * f * T::sin(RadiusOf(p) / (2.0f * f)));
}

Vector2d EquisolidToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, f * 2.0f * T::asin(RadiusOf(p) / (2.0f * f)));
}

Vector2d FisheyeToOrthographic(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, f * T::sin(RadiusOf(p) / f));
}

Vector2d OrthographicToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  return AlongPoint(p, f * T::asin(RadiusOf(p) / f));
}

// Angles from the axis beyond pi/2 are limited to pi/2.
Vector2d FisheyeToRectilinear(const Vector2d& p, DEWARP_FLOAT f) {
  DEWARP_FLOAT theta = RadiusOf(p) / f;
  if (FP::is_greater(theta, T::HALF_PI)) theta = T::HALF_PI;
  return AlongPoint(p, f * T::tan(theta));
}

Vector2d RectilinearToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT rho = RadiusOf(p) / f;
  if (rho != 0.0f) return p * (T::atan(rho) / rho);
  return p;
}

Vector2d FisheyeToEquirectangular(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT r = RadiusOf(p);
  const DEWARP_FLOAT theta = r / f;
  const DEWARP_FLOAT k = (theta != 0.0f) ? T::sin(theta) / r : 1.0f / f;
  const DEWARP_FLOAT dx = k * p.X;
  const DEWARP_FLOAT dy = k * p.Y;
  const DEWARP_FLOAT dz = T::cos(theta);
  return Vector2d(f * T::atan(dx, dz), f * T::atan(dy, T::hypot(dz, dx)));
}

// There is no guard for the lens centre, where rho is 0: the point straight ahead comes out as
// NaN.
Vector2d EquirectangularToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  const PolarDirection d = FoldedDirection(p, f);
  const DEWARP_FLOAT sinTheta = T::sin(d.Theta);
  const DEWARP_FLOAT dx = sinTheta * T::sin(d.Lambda);
  const DEWARP_FLOAT dy = CosPolar(d.Theta);
  const DEWARP_FLOAT dz = sinTheta * T::cos(d.Lambda);
  const DEWARP_FLOAT rho = T::hypot(dy, dx);
  const DEWARP_FLOAT theta = T::atan(rho, dz);
  const DEWARP_FLOAT radius = f * theta;
  return Vector2d(radius * dx / rho, radius * dy / rho);
}

Vector2d FisheyeToCylindrical(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT theta = RadiusOf(p) / f;
  const DEWARP_FLOAT alpha = T::atan(p.Y, p.X);
  const DEWARP_FLOAT sinTheta = T::sin(theta);
  const Vector3d d(f * T::cos(theta), f * sinTheta * T::cos(alpha), f * sinTheta * T::sin(alpha));
  return Vector2d(f * T::atan(d.Y, d.X), f * T::tan(T::HALF_PI - T::atan(T::hypot(d.X, d.Y), d.Z)));
}

Vector2d CylindricalToFisheye(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT lambda = p.X / f;
  const DEWARP_FLOAT a = f * T::sin(lambda);
  const DEWARP_FLOAT rho = T::hypot(a, p.Y);
  const DEWARP_FLOAT t = T::atan(rho, f * T::cos(lambda));
  const DEWARP_FLOAT k = t * f / rho;
  return Vector2d(k * a, k * p.Y);
}

// ---- The polar panorama ------------------------------------------------------------------

Vector2d CylindricalToSpherical(const Vector2d& p, DEWARP_FLOAT f) {
  const DEWARP_FLOAT h = f * T::HALF_PI;
  const DEWARP_FLOAT a = -p.X / h;
  const DEWARP_FLOAT psi = T::atan(p.Y, h);
  const DEWARP_FLOAT radius = (T::HALF_PI + psi) * f;
  return AtRadius(radius, a);
}

}  // namespace projection_formula
}  // namespace libdewarp
}  // namespace vemo
