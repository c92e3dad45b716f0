// Map building for the built-in camera (1936 x 1936 pixels, 183-degree equidistant fisheye):
// projection maps and scale maps, the dense build against each sparse builder in the same run.
//
//   map_builder_bench                          all cases
//   map_builder_bench --benchmark_filter=Scale only the scale maps
//
// Counters: calls_per_pixel is the share of output pixels for which the builder called the
// functor (1 for the dense build), Mpixels/s the output pixels built per second. The calls are
// counted through a wrapping functor in a build of their own: for a scale functor the quadrant
// builder asks once per row and per column, but the wrapper, not being a scale functor, gets the
// plain quadrant loop (one call per pixel of a quadrant, 0.25).
#include <benchmark/benchmark.h>

#include <libdewarp_vemo/grid_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/quadrant_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_functor.h>
#include <libdewarp_vemo/sparse_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder_2.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

#include <cmath>
#include <memory>

namespace {

using namespace vemo::libdewarp;

const float kLensSize = 1936.0f;
// Projections that grow without bound towards the poles are cut at this size per axis.
const float kLimit = 2048.0f;

float FocalLength() {
  return Projection::FisheyeFocalLength(0.5f * kLensSize, 0.5f * Trigonometry::degrees_to_radians(183.0f));
}

// The size of the projection of the whole lens: the lens's edge midpoints converted into it.
Resolution ProjectionSize(DEWARP_PROJECTION p) {
  ProjectionFunctor toProjection(CIRCULAR_FISHEYE_CAMERA, p, FocalLength(), Projection::IdentityScale);
  const float h = 0.5f * kLensSize;
  const Vector2d north = toProjection(Vector2d(0, h)), south = toProjection(Vector2d(0, -h));
  const Vector2d east = toProjection(Vector2d(h, 0)), west = toProjection(Vector2d(-h, 0));
  float width = std::floor(east.X - west.X), height = std::floor(north.Y - south.Y);
  if (!(width > 0.0f && width <= kLimit)) width = kLimit;
  if (!(height > 0.0f && height <= kLimit)) height = kLimit;
  return Resolution(width, height);
}

// Counts the calls of the functor it wraps (used once per case, outside the timed loop).
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

template <class B>
void Run(benchmark::State& state, MapFunctor& functor, const Resolution& in, const Resolution& out) {
  for (auto _ : state) {
    std::unique_ptr<ImageMap> map(B().BuildImageMap(in, out, functor));
    benchmark::DoNotOptimize(map.get());
  }
  CountingFunctor counting(functor);
  std::unique_ptr<ImageMap> map(B().BuildImageMap(in, out, counting));
  const double pixels = static_cast<double>(out.X) * static_cast<double>(out.Y);
  state.counters["calls_per_pixel"] = static_cast<double>(counting.calls) / pixels;
  state.counters["Mpixels/s"] =
      benchmark::Counter(pixels * 1e-6 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["width"] = out.X;
  state.counters["height"] = out.Y;
}

template <class B>
void ProjectionMap(benchmark::State& state) {
  const DEWARP_PROJECTION p = static_cast<DEWARP_PROJECTION>(state.range(0));
  ProjectionFunctor functor(p, CIRCULAR_FISHEYE_CAMERA, FocalLength(), Projection::IdentityScale);
  state.SetLabel(Projection::GetName(p));
  Run<B>(state, functor, Resolution(kLensSize, kLensSize), ProjectionSize(p));
}

// The scale map of a view: the cylindrical projection frame to a 1920 x 1080 output, scaled to
// the frame's aspect ratio.
template <class B>
void ScaleMap(benchmark::State& state) {
  const Resolution in = ProjectionSize(CYLINDRICAL_PROJECTION);
  const Resolution out(1920, 1080);
  ScaleFunctor functor(in, out, SCALE_TO_ASPECT_RATIO);
  Run<B>(state, functor, in, out);
}

#define PROJECTION_CASES(B) \
  BENCHMARK_TEMPLATE(ProjectionMap, B)->Arg(RECTILINEAR_PROJECTION)->Arg(CYLINDRICAL_PROJECTION)->Arg(EQUIRECTANGULAR_PROJECTION)->Arg(PANNINI_PROJECTION)->Unit(benchmark::kMillisecond)
PROJECTION_CASES(LinearMapBuilder);
PROJECTION_CASES(SparseQuadrantMapBuilder);
PROJECTION_CASES(SparseMapBuilder);
PROJECTION_CASES(SparseMapBuilder2);
PROJECTION_CASES(GridMapBuilder);

BENCHMARK_TEMPLATE(ScaleMap, LinearMapBuilder)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleMap, QuadrantMapBuilder)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleMap, SparseQuadrantMapBuilder)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleMap, SparseMapBuilder)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleMap, SparseMapBuilder2)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ScaleMap, GridMapBuilder)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
