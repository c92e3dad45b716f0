// Map builder results: projection maps of the built-in lens through every builder, a scale map, a
// composition and a split.
#include "digest.h"

#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/grid_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder_2.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>
#include <libdewarp_vemo/split_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

#include <memory>

namespace {

using namespace vemo::libdewarp;

void AddMap(dewarp_digest::Digest& d, const ImageMap& map) {
  d.add(map.GetMapWidth());
  d.add(map.GetMapHeight());
  d.add(map.GetInputSize().X);
  d.add(map.GetInputSize().Y);
  for (unsigned y = 0; y < map.GetMapHeight(); ++y) {
    for (unsigned x = 0; x < map.GetMapWidth(); ++x) {
      const Vector2d v = map.GetMapItem(x, y);
      d.add(v.X);
      d.add(v.Y);
    }
  }
}

template <class B>
void AddBuild(dewarp_digest::Digest& d, MapFunctor& f, const Resolution& in, const Resolution& out) {
  std::unique_ptr<ImageMap> map(B().BuildImageMap(in, out, f));
  AddMap(d, *map);
}

}  // namespace

DEWARP_DIGEST_SECTION(builders) {
  const Resolution lens(1936, 1936);
  const float f = Projection::FisheyeFocalLength(968.0f, 0.5f * Trigonometry::degrees_to_radians(183.0f));
  const Resolution out(97, 61);
  for (int p = 0; p <= 8; ++p) {
    ProjectionFunctor functor(static_cast<DEWARP_PROJECTION>(p), CIRCULAR_FISHEYE_CAMERA, f,
                              Projection::IdentityScale);
    AddBuild<LinearMapBuilder>(d, functor, lens, out);
    AddBuild<SparseMapBuilder>(d, functor, lens, out);
    AddBuild<SparseMapBuilder2>(d, functor, lens, out);
    AddBuild<GridMapBuilder>(d, functor, lens, out);
    AddBuild<SparseQuadrantMapBuilder>(d, functor, lens, out);
  }
  std::unique_ptr<ImageMap> scale(
      ScaleMapBuilder().BuildImageMap(Resolution(1936, 1280), Resolution(64, 36), SCALE_TO_ASPECT_RATIO));
  AddMap(d, *scale);
  std::unique_ptr<ImageMap> composed(ProjectionMapBuilder().BuildImageMap(
      lens, Resolution(80, 48), CYLINDRICAL_PROJECTION, CIRCULAR_FISHEYE_CAMERA, f, Vector2d(0, 24),
      Vector2d(1, 0.5f)));
  AddMap(d, *composed);
  std::unique_ptr<ImageMap> split(SplitMapBuilder().BuildImageMap(*composed, Vector2d(20, 192)));
  AddMap(d, *split);
}
