// Coarse-grid builder: the functor on a lattice of 8 x 8 pixel cells, bilinear inside the cells.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class GridMapBuilder : public MapBuilder {
public:
  GridMapBuilder();
  GridMapBuilder(const GridMapBuilder& other);
  GridMapBuilder& operator=(const GridMapBuilder& other);
  virtual ~GridMapBuilder();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
