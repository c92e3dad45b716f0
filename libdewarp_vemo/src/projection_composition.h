// How the conversions between projections are put together.
//
// Only a small set of conversions is written out (projection_formulas.cpp); every other ordered
// pair is the chain of two or three of them:
//   - to Spherical: to Cylindrical first, then CylindricalToSpherical;
//   - from or to Mirror, Equisolid or Orthographic: through Fisheye;
//   - between any other two (Fisheye included): through Equirectangular.
// A written-out conversion always takes precedence over a chain, so Fisheye and Rectilinear
// reach Cylindrical directly and Cylindrical reaches Rectilinear directly. Each chained
// conversion is exactly the sequence of its pieces and inherits their behaviour unchanged.
#pragma once

#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/vector_2d.h>

// Calls M(From, To) for every conversion that is written out.
#define DEWARP_WRITTEN_CONVERSIONS(M)                                                          \
  M(Equirectangular, Cylindrical) M(Cylindrical, Equirectangular)                              \
  M(Equirectangular, Mercator) M(Mercator, Equirectangular)                                    \
  M(Equirectangular, MillerCylindrical) M(MillerCylindrical, Equirectangular)                  \
  M(Equirectangular, LambertCylindrical) M(LambertCylindrical, Equirectangular)                \
  M(Equirectangular, Architectural) M(Architectural, Equirectangular)                          \
  M(Equirectangular, EquirectangularPannini) M(EquirectangularPannini, Equirectangular)        \
  M(Equirectangular, Pannini) M(Pannini, Equirectangular)                                      \
  M(Equirectangular, Stereographic) M(Stereographic, Equirectangular)                          \
  M(Equirectangular, Rectilinear) M(Rectilinear, Equirectangular)                              \
  M(Cylindrical, Rectilinear) M(Rectilinear, Cylindrical)                                      \
  M(Fisheye, Mirror) M(Mirror, Fisheye)                                                        \
  M(Fisheye, Equisolid) M(Equisolid, Fisheye)                                                  \
  M(Fisheye, Orthographic) M(Orthographic, Fisheye)                                            \
  M(Fisheye, Rectilinear) M(Rectilinear, Fisheye)                                              \
  M(Fisheye, Equirectangular) M(Equirectangular, Fisheye)                                      \
  M(Fisheye, Cylindrical) M(Cylindrical, Fisheye)                                              \
  M(Cylindrical, Spherical)

namespace vemo {
namespace libdewarp {

// The written-out conversions themselves.
namespace projection_formula {
#define DEWARP_DECLARE_FORMULA(P, Q)                                                       \
  Vector2d P##To##Q(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength);
DEWARP_WRITTEN_CONVERSIONS(DEWARP_DECLARE_FORMULA)
#undef DEWARP_DECLARE_FORMULA
}  // namespace projection_formula

namespace projection_composition {

#define DEWARP_PROJECTION_KIND(A, P) P,
enum class Kind { DEWARP_PROJECTION_NAMES(DEWARP_PROJECTION_KIND, ) };
#undef DEWARP_PROJECTION_KIND

// Written<From, To>::value tells whether the conversion is written out; Apply runs it.
template <Kind From, Kind To>
struct Written {
  static constexpr bool value = false;
};

#define DEWARP_WRITTEN_CONVERSION(P, Q)                                                    \
  template <>                                                                                  \
  struct Written<Kind::P, Kind::Q> {                                                       \
    static constexpr bool value = true;                                                        \
    static Vector2d Apply(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) {                \
      return projection_formula::P##To##Q(obPoint, fFocalLength);                          \
    }                                                                                          \
  };
DEWARP_WRITTEN_CONVERSIONS(DEWARP_WRITTEN_CONVERSION)
#undef DEWARP_WRITTEN_CONVERSION

constexpr bool IsFisheyeRelative(Kind k) {
  return k == Kind::Mirror || k == Kind::Equisolid || k == Kind::Orthographic;
}

// The projection at which a conversion that is not written out is split in two.
constexpr Kind Stop(Kind from, Kind to) {
  if (to == Kind::Spherical) return Kind::Cylindrical;
  if (IsFisheyeRelative(from) || IsFisheyeRelative(to)) return Kind::Fisheye;
  return Kind::Equirectangular;
}

template <Kind From, Kind To>
Vector2d Convert(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength) {
  if constexpr (From == To) {
    return obPoint;
  } else if constexpr (Written<From, To>::value) {
    return Written<From, To>::Apply(obPoint, fFocalLength);
  } else if constexpr (From == Kind::Spherical) {
    // The polar panorama is an output only: no conversion leads back out of it, so a point of
    // it has no counterpart in another projection.
    return Vector2d::InvalidVector;
  } else {
    constexpr Kind Via = Stop(From, To);
    return Convert<Via, To>(Convert<From, Via>(obPoint, fFocalLength), fFocalLength);
  }
}

}  // namespace projection_composition
}  // namespace libdewarp
}  // namespace vemo
