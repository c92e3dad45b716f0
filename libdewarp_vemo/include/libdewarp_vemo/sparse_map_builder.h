// Sparse builder: the functor on every second row and column, the other pixels averaged from their neighbours.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class SparseMapBuilder : public MapBuilder {
public:
  SparseMapBuilder();
  SparseMapBuilder(const SparseMapBuilder& other);
  SparseMapBuilder& operator=(const SparseMapBuilder& other);
  virtual ~SparseMapBuilder();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
