// The projection maps that the views build for the built-in camera (1936 x 1936 pixels,
// 183-degree equidistant fisheye), through ProjectionMapBuilder's regular three-value build,
// against the dense build of the same functor (the functor at every pixel), element by element
// over the whole map: both builds give a source to the same elements, and where they do the
// projection map is within 1/8 source pixel of the dense value in x and in y.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/trigonometry.h>

#include <gtest/gtest.h>

#include "builders_test_support.h"

#include <cmath>
#include <cstdio>
#include <memory>

namespace vemo {
namespace libdewarp {
namespace {

using ::vemo::test::kLensSize;
using ::vemo::test::LensFocalLength;

const float kTolerance = 0.125f;

struct Case {
  DEWARP_PROJECTION projection;
  float width;
  float height;
  const char* view;
};

// The sizes the views ask for with this camera. The ceiling panorama (also cut into the strips of
// the dual and quad panoramas) is a cylindrical map a full turn wide, 2 pi f = 3808 pixels: its
// left and right ends reach round to the point opposite the lens axis, far outside the picture,
// where the mapping bends most sharply. The PTZ views look up a rectilinear map; the panoramas of
// a wall mount look up maps that span no more than the lens's own field of view.
const Case kCases[] = {
    {CYLINDRICAL_PROJECTION, 3808, 1212, "single panoramic, ceiling or floor"},
    {RECTILINEAR_PROJECTION, 1212, 1212, "PTZ"},
    {PANNINI_PROJECTION, 2424, 958, "single panoramic, wall"},
};

TEST(ProjectionMapAccuracy, RealMapsStayWithinAnEighthOfASourcePixelOfTheDenseBuild) {
  const float f = LensFocalLength();
  const Resolution in(kLensSize, kLensSize);
  for (const Case& c : kCases) {
    const Resolution out(c.width, c.height);
    ProjectionFunctor functor(c.projection, CIRCULAR_FISHEYE_CAMERA, f, Projection::IdentityScale);
    std::unique_ptr<ImageMap> dense(LinearMapBuilder().BuildImageMap(in, out, functor));
    std::unique_ptr<ImageMap> built(
        ProjectionMapBuilder().BuildImageMap(in, out, c.projection, CIRCULAR_FISHEYE_CAMERA, f));
    ASSERT_EQ(dense->GetMapWidth(), built->GetMapWidth());
    ASSERT_EQ(dense->GetMapHeight(), built->GetMapHeight());
    float worst = 0.0f;
    unsigned worstX = 0, worstY = 0;
    long compared = 0, oneSided = 0;
    for (unsigned y = 0; y < dense->GetMapHeight(); ++y) {
      for (unsigned x = 0; x < dense->GetMapWidth(); ++x) {
        const Vector2d a = dense->GetMapItem(x, y), b = built->GetMapItem(x, y);
        if (a.Valid() != b.Valid()) {
          ++oneSided;
          continue;
        }
        if (!a.Valid()) {
          continue;
        }
        ++compared;
        const float d = std::fmax(std::fabs(a.X - b.X), std::fabs(a.Y - b.Y));
        if (d > worst) {
          worst = d;
          worstX = x;
          worstY = y;
        }
      }
    }
    std::printf("  %-20s %4.0f x %-4.0f (%s): worst %.4f source px at (%u, %u) over %ld elements\n",
                Projection::GetName(c.projection), c.width, c.height, c.view, worst, worstX, worstY, compared);
    EXPECT_EQ(0, oneSided) << Projection::GetName(c.projection);
    // Almost every element has a source: a test that compared nothing would prove nothing.
    EXPECT_GT(compared, static_cast<long>(0.99 * c.width * c.height)) << Projection::GetName(c.projection);
    EXPECT_LE(worst, kTolerance) << Projection::GetName(c.projection) << " at " << worstX << ", " << worstY;
  }
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
