#include <libdewarp_vemo/linear_map_builder.h>

#include <memory>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

#include "map_rows.h"

namespace vemo {
namespace libdewarp {

LinearMapBuilder::LinearMapBuilder() {}

LinearMapBuilder::LinearMapBuilder(const LinearMapBuilder& other) : MapBuilder(other) {}

LinearMapBuilder& LinearMapBuilder::operator=(const LinearMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "LinearMapBuilder");
  }
  return *this;
}

LinearMapBuilder::~LinearMapBuilder() {}

// Dense build: the functor is called once for every pixel of the crop rectangle, row by row.
// Destination points are relative to the output centre; the functor's result is relative to the
// input centre, which is added before the value is stored.
ImageMap* LinearMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                          const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                          const Resolution& obCrop) {
  const Vector2d obInputOffset = obInputResolution.Centre();
  // A crop that covers the output writes every element, so the tables need no fill first.
  std::unique_ptr<ImageMap> pobResult(CropCoversOutput(obOutputResolution, obCrop)
                                          ? NewUnfilledImageMap(obInputResolution, obOutputResolution)
                                          : NewImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);
  const CropGrid obGrid = GetCropGrid(obOutputResolution, obCrop, obPlanes);
  for (int j = 0; j < obGrid.nRows; ++j) {
    const float fY = obGrid.fTop + static_cast<float>(j);
    const int nOffset = (obGrid.nRowBase + j) * obPlanes.nWidth + obGrid.nColBase;
    MapRows::FillDenseRow(pfnMapping, obGrid.fLeft, fY, obGrid.nCols, obInputOffset, obPlanes.pfX + nOffset,
                          obPlanes.pfY + nOffset);
  }
  return pobResult.release();
}

void MapRows::FillDenseRow(MapFunctor& pfnMapping, float fLeft, float fY, int nCols, const Vector2d& obInputOffset,
                           float* pfRowX, float* pfRowY) {
  for (int k = 0; k < nCols; ++k) {
    const Vector2d obSource = pfnMapping(Vector2d(fLeft + static_cast<float>(k), fY));
    pfRowX[k] = obSource.X + obInputOffset.X;
    pfRowY[k] = obSource.Y + obInputOffset.Y;
  }
}

}  // namespace libdewarp
}  // namespace vemo
