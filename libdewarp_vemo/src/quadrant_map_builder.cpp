#include <libdewarp_vemo/quadrant_map_builder.h>

#include <cmath>
#include <memory>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

namespace {

// Number of integer steps n = 0, 1, ... with n < fLimit whose mirrored indices
// trunc(fCentre + n) and trunc(fCentre - n) both lie inside [0, nSize).
int MirrorSteps(float fLimit, float fCentre, int nSize) {
  int nSteps = 0;
  while (static_cast<float>(nSteps) < fLimit) {
    const float fHigh = fCentre + static_cast<float>(nSteps);
    const float fLow = fCentre - static_cast<float>(nSteps);
    if (!(fLow > -1.0f) || !(fHigh < static_cast<float>(nSize))) {
      break;
    }
    ++nSteps;
  }
  return nSteps;
}

}  // namespace

QuadrantMapBuilder::QuadrantMapBuilder() {}

QuadrantMapBuilder::QuadrantMapBuilder(const QuadrantMapBuilder& other) : MapBuilder(other) {}

QuadrantMapBuilder& QuadrantMapBuilder::operator=(const QuadrantMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "QuadrantMapBuilder");
  }
  return *this;
}

QuadrantMapBuilder::~QuadrantMapBuilder() {}

ImageMap* QuadrantMapBuilder::BuildImageMap() { return MapBuilder::BuildImageMap(); }

ImageMap* QuadrantMapBuilder::BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                            MapFunctor& pfnMapping) {
  return MapBuilder::BuildImageMap(obInputResolution, obOutputResolution, pfnMapping);
}

ImageMap* QuadrantMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                            const Resolution& obOutputResolution, MapFunctor& pfnMapping) {
  return MapBuilder::BuildImageMap(obInputResolution, obOutputResolution, pfnMapping);
}

ImageMap* QuadrantMapBuilder::BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                            MapFunctor& pfnMapping, const Vector2d& obCrop) {
  return MapBuilder::BuildImageMap(obInputResolution, obOutputResolution, pfnMapping, obCrop);
}

// One quadrant is evaluated (x and y from 0 up to half the clipped crop) and each result is
// mirrored about the centre into the other three quadrants, which is exact for centred,
// axis-symmetric functors such as the scale functors. The mirror runs about the centre pixel,
// so for an even height the first row (and for an even width the first column) of a full-size
// crop is never written and stays NaN: the remap paints that one-line border in the default
// colour. Indices are truncated toward zero; the loops stop before any index would leave the map.
ImageMap* QuadrantMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                            const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                            const Resolution& obCrop) {
  const Vector2d obInputOffset = obInputResolution.Centre();
  const Vector2d obOutputOffset = obOutputResolution.Centre();
  std::unique_ptr<ImageMap> pobResult(NewImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);

  Rectangle2d obRect(static_cast<const Vector2d&>(obCrop));
  obRect.Intersection(Rectangle2d(static_cast<const Vector2d&>(obOutputResolution)));
  obRect.OffsetToCentre();
  if (!(obRect.Top > 0.0f) || !(obRect.Right > 0.0f)) {
    return pobResult.release();
  }
  const int nRows = MirrorSteps(obRect.Top, obOutputOffset.Y, obPlanes.nHeight);
  const int nCols = MirrorSteps(obRect.Right, obOutputOffset.X, obPlanes.nWidth);
  const int nStride = obPlanes.nWidth;
  for (int y = 0; y < nRows; ++y) {
    const float fY = static_cast<float>(y);
    const int nLower = static_cast<int>(fY + obOutputOffset.Y) * nStride;
    const int nUpper = static_cast<int>(-fY + obOutputOffset.Y) * nStride;
    for (int x = 0; x < nCols; ++x) {
      const float fX = static_cast<float>(x);
      const Vector2d obSource = pfnMapping(Vector2d(fX, fY));
      const int nRight = static_cast<int>(fX + obOutputOffset.X);
      const int nLeft = static_cast<int>(-fX + obOutputOffset.X);
      obPlanes.pfX[nLower + nRight] = obSource.X + obInputOffset.X;
      obPlanes.pfY[nLower + nRight] = obSource.Y + obInputOffset.Y;
      obPlanes.pfX[nUpper + nRight] = obSource.X + obInputOffset.X;
      obPlanes.pfY[nUpper + nRight] = -obSource.Y + obInputOffset.Y;
      obPlanes.pfX[nUpper + nLeft] = -obSource.X + obInputOffset.X;
      obPlanes.pfY[nUpper + nLeft] = -obSource.Y + obInputOffset.Y;
      obPlanes.pfX[nLower + nLeft] = -obSource.X + obInputOffset.X;
      obPlanes.pfY[nLower + nLeft] = obSource.Y + obInputOffset.Y;
    }
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
