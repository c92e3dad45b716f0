// Dense builder: calls the functor once for every pixel of the crop rectangle.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class LinearMapBuilder : public MapBuilder {
public:
  LinearMapBuilder();
  LinearMapBuilder(const LinearMapBuilder& other);
  LinearMapBuilder& operator=(const LinearMapBuilder& other);
  virtual ~LinearMapBuilder();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
