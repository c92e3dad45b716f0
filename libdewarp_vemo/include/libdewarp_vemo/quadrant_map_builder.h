// Mirroring builder for centred, axis-symmetric functors: one quadrant evaluated, mirrored into the other three.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class QuadrantMapBuilder : public MapBuilder {
public:
  QuadrantMapBuilder();
  QuadrantMapBuilder(const QuadrantMapBuilder& other);
  QuadrantMapBuilder& operator=(const QuadrantMapBuilder& other);
  virtual ~QuadrantMapBuilder();

  // The convenience forms forward to MapBuilder, which ends in operation 6 below.
  virtual ImageMap* BuildImageMap();
  virtual ImageMap* BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                  MapFunctor& pfnMapping);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping);
  virtual ImageMap* BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                  MapFunctor& pfnMapping, const Vector2d& obCrop);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);
};

}  // namespace libdewarp
}  // namespace vemo
