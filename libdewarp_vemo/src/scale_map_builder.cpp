#include <libdewarp_vemo/scale_map_builder.h>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/scale_functor.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

ScaleMapBuilder::ScaleMapBuilder() {}

ScaleMapBuilder::ScaleMapBuilder(const ScaleMapBuilder& other) : QuadrantMapBuilder(other) {}

ScaleMapBuilder& ScaleMapBuilder::operator=(const ScaleMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ScaleMapBuilder");
  }
  return *this;
}

ScaleMapBuilder::~ScaleMapBuilder() {}

Resolution ScaleMapBuilder::GetCropSize(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                        DEWARP_ASPECT_RATIO eAspectRatio) {
  if (eAspectRatio == SCALE_TO_ASPECT_RATIO) {
    return Resolution(obOutputResolution.BestFit(obInputResolution.AspectRatio()));
  }
  return obOutputResolution;
}

// The scale functor is centred and axis-symmetric, so the quadrant builder serves it; with
// SCALE_TO_ASPECT_RATIO the parts of the output outside the best-fit crop stay NaN (the remap
// paints them as letterbox or pillarbox bars).
ImageMap* ScaleMapBuilder::BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                         DEWARP_ASPECT_RATIO eAspectRatio) {
  ScaleFunctor obFunctor(obInputResolution, obOutputResolution, eAspectRatio);
  const Resolution obCrop = GetCropSize(obInputResolution, obOutputResolution, eAspectRatio);
  return QuadrantMapBuilder::BuildImageMap(obInputResolution, obOutputResolution, obFunctor, obCrop);
}

// The shift is handed to the scale functor as its fourth value (the functor's squish of the
// source size).
ImageMap* ScaleMapBuilder::BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                         DEWARP_ASPECT_RATIO eAspectRatio, const Vector2d& obShift) {
  ScaleFunctor obFunctor(obInputResolution, obOutputResolution, eAspectRatio, obShift);
  const Resolution obCrop = GetCropSize(obInputResolution, obOutputResolution, eAspectRatio);
  return QuadrantMapBuilder::BuildImageMap(obInputResolution, obOutputResolution, obFunctor, obCrop);
}

}  // namespace libdewarp
}  // namespace vemo
