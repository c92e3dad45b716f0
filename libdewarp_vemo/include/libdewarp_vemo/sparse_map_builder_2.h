// Row-wise sparse builder: the functor on every second pixel of every second row, interpolated along rows and then between rows, exact on the borders.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class SparseMapBuilder2 : public MapBuilder {
public:
  SparseMapBuilder2();
  SparseMapBuilder2(const SparseMapBuilder2& other);
  SparseMapBuilder2& operator=(const SparseMapBuilder2& other);
  virtual ~SparseMapBuilder2();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
