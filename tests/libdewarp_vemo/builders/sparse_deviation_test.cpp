// How far each sparse builder strays from the dense build for the real projection maps of the
// built-in camera (1936 x 1936 pixels, 183-degree equidistant fisheye), for every output
// projection. Deviations are measured in source pixels over the output pixels whose dense
// source point lies on the lens image; the table is printed and each maximum is bounded.
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

#include "builders_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

const float kLensSize = 1936.0f;
const float kLensFovDegrees = 183.0f;
// Output maps are limited to this many pixels per axis: the projections that stretch towards the
// poles or the rim (rectilinear without bound, cylindrical, Mercator, ...) would otherwise be tens
// of thousands of pixels tall. The limit keeps the centre of the map at full resolution, so the
// pixel scale, and with it the interpolation error per pixel, is that of the real map.
const float kLimit = 2048.0f;

float FocalLength() {
  return Projection::FisheyeFocalLength(0.5f * kLensSize,
                                        0.5f * Trigonometry::degrees_to_radians(kLensFovDegrees));
}

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

struct Deviation {
  float max = 0.0f;
  double sum = 0.0;
  long count = 0;
  long lost = 0;  // dense on the lens, sparse not a coordinate
};

Deviation Compare(const ImageMap& dense, const ImageMap& sparse) {
  Deviation d;
  for (unsigned y = 0; y < dense.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < dense.GetMapWidth(); ++x) {
      const Vector2d a = dense.GetMapItem(x, y);
      if (!(a.X >= 0 && a.X < kLensSize && a.Y >= 0 && a.Y < kLensSize)) {
        continue;
      }
      const Vector2d b = sparse.GetMapItem(x, y);
      if (!b.Valid()) {
        ++d.lost;
        continue;
      }
      const float e = std::hypot(a.X - b.X, a.Y - b.Y);
      d.max = std::fmax(d.max, e);
      d.sum += e;
      ++d.count;
    }
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
             float f, const ImageMap& dense) {
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
  const float f = FocalLength();
  const Resolution in(kLensSize, kLensSize);
  const Resolution out = ProjectionSize(p, f);
  ASSERT_TRUE(out.Valid());
  ProjectionFunctor functor(p, CIRCULAR_FISHEYE_CAMERA, f, Projection::IdentityScale);
  std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(in, out, functor));
  Measure<SparseQuadrantMapBuilder>("SparseQuadrantMapBuilder", 0.5f, p, in, out, f, *dense);
  Measure<SparseMapBuilder2>("SparseMapBuilder2", 0.5f, p, in, out, f, *dense);
  Measure<SparseMapBuilder>("SparseMapBuilder", 2.0f, p, in, out, f, *dense);
  Measure<GridMapBuilder>("GridMapBuilder", 0.5f, p, in, out, f, *dense);
}

INSTANTIATE_TEST_SUITE_P(AllOutputProjections, SparseDeviation, ::testing::Range(0, 9));

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
