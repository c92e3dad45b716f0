// How far each sparse builder strays from the dense build for the real projection maps of the
// built-in camera (1936 x 1936 pixels, 183-degree equidistant fisheye), for every output
// projection. Each sparse map is built whole, at its real size; its deviation is measured in
// source pixels against the dense value (the functor at the pixel, as the dense build computes
// it) over a sample of the output pixels whose dense source point lies on the lens: every pixel
// of every seventh row and of every seventh column, and the whole of the first and last two rows
// and columns. The table is printed and each maximum is bounded.
#include <libdewarp_vemo/grid_map_builder.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/sparse_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder_2.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using ::vemo::test::kLensSize;
using ::vemo::test::LensFocalLength;

// Output maps are limited to this many pixels per axis: the projections that stretch towards the
// poles or the rim (rectilinear without bound, cylindrical, Mercator, ...) would otherwise be tens
// of thousands of pixels tall. The limit keeps the centre of the map at full resolution, so the
// pixel scale, and with it the interpolation error per pixel, is that of the real map.
const float kLimit = 2048.0f;

// The natural size of a projection of the whole lens: the lens's edge midpoints converted into
// the projection give its width and height.
Resolution ProjectionSize(DEWARP_PROJECTION p, float f) {
  ProjectionFunctor toProjection(CIRCULAR_FISHEYE_CAMERA, p, f, Projection::IdentityScale);
  const float h = 0.5f * kLensSize;
  const Vector2d north = toProjection(Vector2d(0, h)), south = toProjection(Vector2d(0, -h));
  const Vector2d east = toProjection(Vector2d(h, 0)), west = toProjection(Vector2d(-h, 0));
  float width = std::floor(east.X - west.X), height = std::floor(north.Y - south.Y);
  if (!(width > 0.0f && width <= kLimit)) width = kLimit;
  if (!(height > 0.0f && height <= kLimit)) height = kLimit;
  return Resolution(width, height);
}

// The sample: every seventh row and column crosses every position inside the builders' cells
// (their lattices repeat every 2, 4 or 8 pixels, all prime to 7), and the borders, where the
// builders have fewer neighbours to work from, are taken whole.
const unsigned kSampleStride = 7;

bool IsSampled(unsigned i, unsigned count) { return i % kSampleStride == 0 || i < 2 || i + 2 >= count; }

// The dense build's value at output pixel (x, y): the functor at the pixel's point relative to
// the output centre, plus the input centre (the dense builder's own convention, which
// DenseReference.MatchesTheDenseBuilder below holds it to).
Vector2d DenseSource(MapFunctor& functor, const Resolution& in, const Resolution& out, unsigned x, unsigned y) {
  const Vector2d point(-0.5f * out.X + static_cast<float>(x), -0.5f * out.Y + static_cast<float>(y));
  const Vector2d source = functor(point);
  const Vector2d centre = in.Centre();
  return Vector2d(source.X + centre.X, source.Y + centre.Y);
}

// The sampled pixels whose dense source point lies on the lens, with that point.
struct SamplePoint {
  unsigned x;
  unsigned y;
  Vector2d dense;
};

std::vector<SamplePoint> DenseSample(MapFunctor& functor, const Resolution& in, const Resolution& out) {
  const unsigned width = static_cast<unsigned>(out.X), height = static_cast<unsigned>(out.Y);
  std::vector<unsigned> sampledColumns, allColumns;
  for (unsigned x = 0; x < width; ++x) {
    allColumns.push_back(x);
    if (IsSampled(x, width)) {
      sampledColumns.push_back(x);
    }
  }
  std::vector<SamplePoint> sample;
  for (unsigned y = 0; y < height; ++y) {
    for (unsigned x : IsSampled(y, height) ? allColumns : sampledColumns) {
      const Vector2d a = DenseSource(functor, in, out, x, y);
      if (a.X >= 0 && a.X < kLensSize && a.Y >= 0 && a.Y < kLensSize) {
        sample.push_back(SamplePoint{x, y, a});
      }
    }
  }
  return sample;
}

struct Deviation {
  float max = 0.0f;
  double sum = 0.0;
  long count = 0;
  long lost = 0;  // dense on the lens, sparse not a coordinate
};

Deviation Compare(const std::vector<SamplePoint>& dense, const ImageMap& sparse) {
  Deviation d;
  for (const SamplePoint& point : dense) {
    const Vector2d b = sparse.GetMapItem(point.x, point.y);
    if (!b.Valid()) {
      ++d.lost;
      continue;
    }
    const float dx = point.dense.X - b.X, dy = point.dense.Y - b.Y;
    const float e = std::sqrt(dx * dx + dy * dy);
    d.max = std::fmax(d.max, e);
    d.sum += e;
    ++d.count;
  }
  return d;
}

struct Bound {
  const char* name;
  float maxDeviation;
};

// Bounds: an error below half a source pixel is below the rounding of a nearest-neighbour remap.
// The schemes that evaluate their borders must meet it everywhere. SparseMapBuilder fills its
// last column and row from the inner neighbours only, which shifts them by up to one output pixel
// (a source pixel or two at this scale): two source pixels for it.
template <class B>
void Measure(const char* name, float bound, DEWARP_PROJECTION p, const Resolution& in, const Resolution& out,
             float f, const std::vector<SamplePoint>& dense) {
  ProjectionFunctor functor(p, CIRCULAR_FISHEYE_CAMERA, f, Projection::IdentityScale);
  std::unique_ptr<ImageMap> sparse(B().BuildImageMap(in, out, functor));
  const Deviation d = Compare(dense, *sparse);
  std::printf("  %-26s %-24s %5.0f x %-5.0f max %8.4f mean %8.5f px over %8ld pixels, %ld lost\n",
              Projection::GetName(p), name, out.X, out.Y, d.max, d.count ? d.sum / d.count : 0.0, d.count,
              d.lost);
  EXPECT_GT(d.count, 0) << name;
  EXPECT_LE(d.max, bound) << name << " " << Projection::GetName(p);
  // A pixel that the dense build places on the lens may be lost only next to the map's own NaN
  // points; allow one in ten thousand.
  EXPECT_LE(d.lost, d.count / 10000 + 4) << name << " " << Projection::GetName(p);
}

class SparseDeviation : public ::testing::TestWithParam<int> {};

TEST_P(SparseDeviation, EachSparseBuilderStaysCloseToTheDenseBuild) {
  const DEWARP_PROJECTION p = static_cast<DEWARP_PROJECTION>(GetParam());
  const float f = LensFocalLength();
  const Resolution in(kLensSize, kLensSize);
  const Resolution out = ProjectionSize(p, f);
  ASSERT_TRUE(out.Valid());
  ProjectionFunctor functor(p, CIRCULAR_FISHEYE_CAMERA, f, Projection::IdentityScale);
  const std::vector<SamplePoint> dense = DenseSample(functor, in, out);
  Measure<SparseQuadrantMapBuilder>("SparseQuadrantMapBuilder", 0.5f, p, in, out, f, dense);
  Measure<SparseMapBuilder2>("SparseMapBuilder2", 0.5f, p, in, out, f, dense);
  Measure<SparseMapBuilder>("SparseMapBuilder", 2.0f, p, in, out, f, dense);
  Measure<GridMapBuilder>("GridMapBuilder", 0.5f, p, in, out, f, dense);
}

INSTANTIATE_TEST_SUITE_P(AllOutputProjections, SparseDeviation, ::testing::Range(0, 9));

// The reference above is the dense build itself: on a map small enough to build densely, every
// pixel's value is that of LinearMapBuilder, to the bit, for every projection.
TEST(DenseReference, MatchesTheDenseBuilder) {
  const float f = LensFocalLength();
  const Resolution in(kLensSize, kLensSize);
  const Resolution out(97, 61);
  for (int n = 0; n < 9; ++n) {
    const DEWARP_PROJECTION p = static_cast<DEWARP_PROJECTION>(n);
    ProjectionFunctor functor(p, CIRCULAR_FISHEYE_CAMERA, f, Projection::IdentityScale);
    std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(in, out, functor));
    long compared = 0;
    for (unsigned y = 0; y < 61; ++y) {
      for (unsigned x = 0; x < 97; ++x) {
        const Vector2d a = dense->GetMapItem(x, y);
        const Vector2d b = DenseSource(functor, in, out, x, y);
        if (std::isnan(a.X) && std::isnan(b.X)) {
          continue;
        }
        ASSERT_EQ(a.X, b.X) << Projection::GetName(p) << " at " << x << ", " << y;
        ASSERT_EQ(a.Y, b.Y) << Projection::GetName(p) << " at " << x << ", " << y;
        ++compared;
      }
    }
    EXPECT_GT(compared, 97 * 61 / 2) << Projection::GetName(p);
  }
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
