// Shared helpers of the projection tests: the fifteen projections by name, every conversion
// by (from, to), and exact and tolerant comparisons of points.
#pragma once

#include <libdewarp_vemo/projection.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace projection_test {

using vemo::libdewarp::Projection;
using vemo::libdewarp::ProjectionFunction;
using vemo::libdewarp::Vector2d;

// The fifteen projections, in the order of the public name list.
inline const std::vector<std::string>& Names() {
  static const std::vector<std::string> names = {
      "Rectilinear",  "Cylindrical",   "Equirectangular",  "Mercator",
      "LambertCylindrical", "MillerCylindrical", "Pannini", "Architectural",
      "EquirectangularPannini", "Stereographic", "Orthographic", "Equisolid",
      "Fisheye", "Spherical", "Mirror"};
  return names;
}

inline int IndexOf(const std::string& name) {
  for (size_t i = 0; i < Names().size(); ++i) {
    if (Names()[i] == name) return static_cast<int>(i);
  }
  return -1;
}

struct Conversion {
  std::string from;
  std::string to;
  ProjectionFunction function;
};

// Every Projection::<From>To<To>, taken by name.
inline const std::vector<Conversion>& AllConversions() {
#define PROJECTION_TEST_ENTRY(P, Q) {#P, #Q, &Projection::P##To##Q},
  static const std::vector<Conversion> all = {DEWARP_PROJECTION_PAIRS(PROJECTION_TEST_ENTRY)};
#undef PROJECTION_TEST_ENTRY
  return all;
}

inline ProjectionFunction Function(const std::string& from, const std::string& to) {
  for (const Conversion& c : AllConversions()) {
    if (c.from == from && c.to == to) return c.function;
  }
  return nullptr;
}

// Same bits, or both NaN.
inline bool SameFloat(float a, float b) {
  if (std::isnan(a) && std::isnan(b)) return true;
  return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool SamePoint(const Vector2d& a, const Vector2d& b) {
  return SameFloat(a.X, b.X) && SameFloat(a.Y, b.Y);
}

// |a - b| <= tolerance, both finite.
inline bool Near(double a, double b, double tolerance) {
  return std::isfinite(a) && std::isfinite(b) && std::fabs(a - b) <= tolerance;
}

inline std::string Show(const Vector2d& v) {
  return "(" + std::to_string(v.X) + ", " + std::to_string(v.Y) + ")";
}

}  // namespace projection_test
