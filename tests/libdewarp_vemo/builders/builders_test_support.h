// Test functors and map helpers for the map builder tests.
#pragma once

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/trigonometry.h>
#include <libdewarp_vemo/vector_2d.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

namespace vemo {
namespace test {

// The built-in camera's lens: a 1936 x 1936 picture over 183 degrees, and its focal length in
// pixels per radian.
const float kLensSize = 1936.0f;
const float kLensFovDegrees = 183.0f;
inline float LensFocalLength() {
  return ::vemo::libdewarp::Projection::FisheyeFocalLength(
      0.5f * kLensSize, 0.5f * ::vemo::libdewarp::Trigonometry::degrees_to_radians(kLensFovDegrees));
}

using ::vemo::libdewarp::ImageMap;
using ::vemo::libdewarp::MapFunctor;
using ::vemo::libdewarp::Vector2d;

// (x, y) -> (a x + b, c y + d); counts its calls and records the points it was asked for.
class AffineFunctor : public MapFunctor {
public:
  AffineFunctor(float a, float b, float c, float d) : m_a(a), m_b(b), m_c(c), m_d(d) {}
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    if (record) {
      points.push_back(p);
    }
    return Vector2d(m_a * p.X + m_b, m_c * p.Y + m_d);
  }
  Vector2d Expected(float x, float y) const { return Vector2d(m_a * x + m_b, m_c * y + m_d); }

  long calls = 0;
  bool record = false;
  std::vector<Vector2d> points;

private:
  float m_a, m_b, m_c, m_d;
};

// A general affine map (x, y) -> (a x + b y + e, c x + d y + f), mixing the axes.
class MixedAffineFunctor : public MapFunctor {
public:
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    return Vector2d(0.5f * p.X + 0.25f * p.Y + 3.0f, -0.75f * p.X + 1.5f * p.Y - 2.0f);
  }
  long calls = 0;
};

// (x, y) -> (x^2 / 8, y): curved along x, so linear interpolation misses between samples.
class QuadraticFunctor : public MapFunctor {
public:
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    return Vector2d(p.X * p.X / 8.0f, p.Y);
  }
  long calls = 0;
};

// Wraps another functor and answers NaN for points with x >= xLimit (a region outside a
// projection's domain).
class NanBeyondFunctor : public MapFunctor {
public:
  NanBeyondFunctor(MapFunctor& inner, float xLimit) : m_inner(inner), m_xLimit(xLimit) {}
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    if (p.X >= m_xLimit) {
      return Vector2d::InvalidVector;
    }
    return m_inner(p);
  }
  long calls = 0;

private:
  MapFunctor& m_inner;
  float m_xLimit;
};

// Forwards to another functor and counts the calls.
class CountingFunctor : public MapFunctor {
public:
  explicit CountingFunctor(MapFunctor& inner) : m_inner(inner) {}
  virtual Vector2d Call(const Vector2d& p) {
    ++calls;
    return m_inner(p);
  }
  long calls = 0;

private:
  MapFunctor& m_inner;
};

// Throws on the n-th call.
class ThrowingFunctor : public MapFunctor {
public:
  explicit ThrowingFunctor(long n) : m_n(n) {}
  virtual Vector2d Call(const Vector2d& p) {
    if (++calls == m_n) {
      throw std::runtime_error("functor failure");
    }
    return p;
  }
  long calls = 0;

private:
  long m_n;
};

inline float MapX(const ImageMap& m, unsigned x, unsigned y) { return m.GetMapItem(x, y).X; }
inline float MapY(const ImageMap& m, unsigned x, unsigned y) { return m.GetMapItem(x, y).Y; }
inline bool IsNan(const ImageMap& m, unsigned x, unsigned y) {
  const Vector2d v = m.GetMapItem(x, y);
  return std::isnan(v.X) && std::isnan(v.Y);
}

// The lattice (MapBuilder::BuildLattice) over the whole crop: lines every `spacing` pixels and
// the last, with the given threshold, no-source test and cubic cells.
class LatticeProbe : public ::vemo::libdewarp::MapBuilder {
public:
  using MapBuilder::BuildImageMap;
  ImageMap* BuildImageMap(const ::vemo::libdewarp::Resolution& in, const ::vemo::libdewarp::Resolution& out,
                          MapFunctor& f, const ::vemo::libdewarp::Resolution& crop) override {
    std::unique_ptr<ImageMap> map(NewImageMap(in, out));
    const MapPlanes planes = GetPlanes(*map);
    const CropGrid grid = GetCropGrid(out, crop, planes);
    BuildLattice(planes, grid, f, in.Centre(), LatticeLines(grid.nCols, spacing), LatticeLines(grid.nRows, spacing),
                 threshold, test, cubic);
    return map.release();
  }
  int spacing = 16;
  float threshold = 0.125f;
  const NoSourceTest* test = nullptr;
  bool cubic = false;
};

}  // namespace test
}  // namespace vemo
