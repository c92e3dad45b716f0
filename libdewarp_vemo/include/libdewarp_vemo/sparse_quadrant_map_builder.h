// Quadrant-lattice builder: a lattice laid out from the centre outward in each quadrant, bilinear cells checked against the functor and refined where they miss.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class SparseQuadrantMapBuilder : public MapBuilder {
public:
  SparseQuadrantMapBuilder();
  SparseQuadrantMapBuilder(const SparseQuadrantMapBuilder& other);
  SparseQuadrantMapBuilder& operator=(const SparseQuadrantMapBuilder& other);
  virtual ~SparseQuadrantMapBuilder();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
