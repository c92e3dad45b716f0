// Rescales a projection frame to the output size under an aspect-ratio mode.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/quadrant_map_builder.h>
#include <libdewarp_vemo/resolution.h>

namespace vemo {
namespace libdewarp {

class ScaleMapBuilder : public QuadrantMapBuilder {
public:
  ScaleMapBuilder();
  ScaleMapBuilder(const ScaleMapBuilder& other);
  ScaleMapBuilder& operator=(const ScaleMapBuilder& other);
  virtual ~ScaleMapBuilder();

  using QuadrantMapBuilder::BuildImageMap;
  // The part of the output that the scaled frame covers: the best fit of the source's aspect
  // ratio for SCALE_TO_ASPECT_RATIO, the whole output otherwise.
  virtual Resolution GetCropSize(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                 DEWARP_ASPECT_RATIO eAspectRatio);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_ASPECT_RATIO eAspectRatio);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_ASPECT_RATIO eAspectRatio, const Vector2d& obShift);
};

}  // namespace libdewarp
}  // namespace vemo
