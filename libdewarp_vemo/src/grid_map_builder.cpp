#include <libdewarp_vemo/grid_map_builder.h>

#include <limits>
#include <memory>
#include <vector>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

namespace {

// Distance between lattice lines, in pixels.
const int kSpacing = 8;

std::vector<int> GridLines(int nCount) { return MapBuilder::LatticeLines(nCount, kSpacing); }

}  // namespace

GridMapBuilder::GridMapBuilder() {}

GridMapBuilder::GridMapBuilder(const GridMapBuilder& other) : MapBuilder(other) {}

GridMapBuilder& GridMapBuilder::operator=(const GridMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "GridMapBuilder");
  }
  return *this;
}

GridMapBuilder::~GridMapBuilder() {}

// Coarse-grid scheme: the functor is evaluated on a lattice of lines every 8 pixels from the
// crop rectangle's top-left pixel, plus its last row and column, so that every pixel lies in a
// cell of at most 9 x 9 pixels whose corners are exact; the cell is filled by bilinear
// interpolation of its corners (about one call in 64). A cell with a corner that is not a
// coordinate is evaluated pixel by pixel. No error check: the map is exact for affine functors
// and close for smooth ones.
ImageMap* GridMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                        const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                        const Resolution& obCrop) {
  return BuildOnLattice(obInputResolution, obOutputResolution, pfnMapping, obCrop, GridLines,
                        std::numeric_limits<float>::infinity());
}

}  // namespace libdewarp
}  // namespace vemo
