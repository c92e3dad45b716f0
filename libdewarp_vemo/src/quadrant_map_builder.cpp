#include <libdewarp_vemo/quadrant_map_builder.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <typeinfo>
#include <vector>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_functor.h>
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

// What the mirroring loop leaves along one axis of the map: step n (n = 0, 1, ... nSteps - 1, in
// turn) writes s(n) + fIn at index trunc(n + fCentre), the high side, and then -s(n) + fIn at
// index trunc(-n + fCentre), the low side. For each index: the step that wrote it last (-1 if
// none) and the value it left.
struct MirroredAxis {
  std::vector<int> anStep;
  std::vector<float> afValue;
  int nFirst = -1, nLast = -1;  // the written indices lie in nFirst..nLast (none: both -1)

  template <class Value>
  MirroredAxis(int nSize, int nSteps, float fCentre, float fIn, Value s)
      : anStep(static_cast<std::size_t>(nSize), -1), afValue(static_cast<std::size_t>(nSize), 0.0f) {
    for (int n = 0; n < nSteps; ++n) {
      const float fStep = static_cast<float>(n);
      const float fValue = s(fStep);
      Write(static_cast<int>(fStep + fCentre), n, fValue + fIn);
      Write(static_cast<int>(-fStep + fCentre), n, -fValue + fIn);
    }
  }
  // Whether every index from nFirst to nLast was written.
  bool Contiguous() const {
    for (int k = nFirst; k >= 0 && k <= nLast; ++k) {
      if (anStep[static_cast<std::size_t>(k)] < 0) return false;
    }
    return true;
  }

private:
  void Write(int nIndex, int nStep, float fValue) {
    anStep[static_cast<std::size_t>(nIndex)] = nStep;
    afValue[static_cast<std::size_t>(nIndex)] = fValue;
    nFirst = nFirst < 0 || nIndex < nFirst ? nIndex : nFirst;
    nLast = nIndex > nLast ? nIndex : nLast;
  }
};

// The mirroring loop for a scale functor, whose x depends on the point's x alone and whose y on
// its y alone (each is the coordinate times a factor): the functor is asked once per step along
// each axis, and each written row is filled from the two axes, with the values and at the
// elements the loop writes. Every step writes whole rows (all written columns), so each element
// holds what the last step of its row wrote there: along the row, the x value its column's last
// step left, and the y value of the row's side. On the centre row (step 0 writes it from both
// sides) the two sides' y values, -sy + c and sy + c with sy = 0 times the factor, agree: both c
// for a zero sy, both NaN for a NaN one. False (nothing written) where the written columns are not
// one run, which the plain loop then serves.
bool MirrorScale(float* pfX, float* pfY, int nWidth, int nHeight, MapFunctor& pfnMapping, int nRows, int nCols,
                 const Vector2d& obInputOffset, const Vector2d& obOutputOffset) {
  const MirroredAxis obColumns(nWidth, nCols, obOutputOffset.X, obInputOffset.X,
                               [&](float fX) { return pfnMapping(Vector2d(fX, 0.0f)).X; });
  if (!obColumns.Contiguous()) {
    return false;
  }
  const MirroredAxis obRows(nHeight, nRows, obOutputOffset.Y, obInputOffset.Y,
                            [&](float fY) { return pfnMapping(Vector2d(0.0f, fY)).Y; });
  const int nFirst = obColumns.nFirst, nCount = obColumns.nLast - obColumns.nFirst + 1;
  for (int nRow = obRows.nFirst; nRow >= 0 && nRow <= obRows.nLast; ++nRow) {
    if (obRows.anStep[static_cast<std::size_t>(nRow)] < 0) continue;
    float* const pfRowX = pfX + static_cast<std::size_t>(nRow) * nWidth + nFirst;
    float* const pfRowY = pfY + static_cast<std::size_t>(nRow) * nWidth + nFirst;
    std::memcpy(pfRowX, &obColumns.afValue[static_cast<std::size_t>(nFirst)], sizeof(float) * nCount);
    std::fill(pfRowY, pfRowY + nCount, obRows.afValue[static_cast<std::size_t>(nRow)]);
  }
  return true;
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
  if (typeid(pfnMapping) == typeid(ScaleFunctor) &&
      MirrorScale(obPlanes.pfX, obPlanes.pfY, obPlanes.nWidth, obPlanes.nHeight, pfnMapping, nRows, nCols,
                  obInputOffset, obOutputOffset)) {
    return pobResult.release();
  }
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
