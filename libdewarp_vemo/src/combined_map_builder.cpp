#include <libdewarp_vemo/combined_map_builder.h>

#include <cerrno>
#include <memory>
#include <new>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

#include "map_rows.h"

namespace vemo {
namespace libdewarp {

CombinedMapBuilder::CombinedMapBuilder() {}

CombinedMapBuilder::CombinedMapBuilder(const CombinedMapBuilder& other) : LinearMapBuilder(other) {}

CombinedMapBuilder& CombinedMapBuilder::operator=(const CombinedMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "CombinedMapBuilder");
  }
  return *this;
}

CombinedMapBuilder::~CombinedMapBuilder() {}

ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap* pobFirstMap, const ImageMap* pobSecondMap) {
  if (pobFirstMap == nullptr || pobSecondMap == nullptr) {
    Error::SetLastError(EINVAL);
    throw Error(DEWARP_LOCATION("CombinedMapBuilder"), EINVAL, "Invalid maps");
  }
  return BuildImageMap(*pobFirstMap, *pobSecondMap);
}

// Per output pixel, the first map gives a position in the intermediate image; the four
// intermediate pixels around it are looked up in the second map and blended bilinearly with the
// fractions of the position above its floor. A position whose four corners do not all lie
// inside the intermediate image leaves the element NaN (the remap paints the default colour).
ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap& obFirstMap, const ImageMap& obSecondMap) {
  const Vector2d obOutputResolution = obFirstMap.GetMapSize();
  const Vector2d obIntermediateResolution = obSecondMap.GetMapSize();

  // Every element of the result is written below (a source or none), unless the first map's
  // tables hold fewer elements than its size says; only then is the result filled first.
  const MapPlanes obFirst = GetPlanes(const_cast<ImageMap&>(obFirstMap));
  const bool bWritesAll = obFirst.nWidth == static_cast<int>(obOutputResolution.X) &&
                          obFirst.nHeight == static_cast<int>(obOutputResolution.Y);
  std::unique_ptr<ImageMap> pobResult(
      MapRows::NewCombinedMap(obOutputResolution, obSecondMap.GetInputSize(), bWritesAll));

  const MapPlanes obResult = GetPlanes(*pobResult);
  const MapPlanes obSecond = GetPlanes(const_cast<ImageMap&>(obSecondMap));
  const int nRows = obResult.nHeight < obFirst.nHeight ? obResult.nHeight : obFirst.nHeight;
  const int nCols = obResult.nWidth < obFirst.nWidth ? obResult.nWidth : obFirst.nWidth;
  for (int Y = 0; Y < nRows; ++Y) {
    MapRows::ComposeRow(obFirst.pfX + Y * obFirst.nWidth, obFirst.pfY + Y * obFirst.nWidth, nCols, obSecond,
                        obIntermediateResolution, obResult.pfX + Y * obResult.nWidth,
                        obResult.pfY + Y * obResult.nWidth);
  }
  return pobResult.release();
}

ImageMap* MapRows::NewCombinedMap(const Vector2d& obOutputResolution, const Vector2d& obInputResolution,
                                  bool bWritesAll) {
  std::unique_ptr<ImageMap> pobResult;
  try {
    pobResult.reset(bWritesAll ? NewUnfilledImageMap(Resolution(obInputResolution), Resolution(obOutputResolution))
                               : new ImageMap(obOutputResolution));
  } catch (const std::bad_alloc&) {
    pobResult.reset();
  }
  if (!pobResult) {
    Error::SetLastError(ENOMEM);
    // Reported as the combined build's own failure, whichever build made the map.
    throw Error(CodeLocation(__FILE__, "CombinedMapBuilder", "BuildImageMap", __LINE__), ENOMEM,
                "No memory for map");
  }
  pobResult->SetInputSize(obInputResolution);
  return pobResult.release();
}

namespace {

// The two neighbouring whole coordinates of v, floor and ceiling, when both lie in [0, limit):
// the four corners of the bilinear lookup are then inside the second map. The floor of a
// non-negative value below 2^31 is its truncation, so no rounding call is needed; NaN fails the
// first test.
inline bool Span(float v, float fLimit, int& nLow, int& nHigh) {
  if (!(v >= 0.0f) || !(v < fLimit)) {
    return false;
  }
  nLow = static_cast<int>(v);
  nHigh = nLow + (v > static_cast<float>(nLow) ? 1 : 0);
  return static_cast<float>(nHigh) < fLimit;
}

}  // namespace

void MapRows::ComposeRow(const float* pfFirstX, const float* pfFirstY, int nCols, const MapPlanes& obSecond,
                         const Vector2d& obIntermediateResolution, float* pfResultX, float* pfResultY) {
  const float fWidth = obIntermediateResolution.X;
  const float fHeight = obIntermediateResolution.Y;
  const float fNoSource = NoSource();
  for (int X = 0; X < nCols; ++X) {
    const float fX = pfFirstX[X];
    const float fY = pfFirstY[X];
    int nLeft, nRight, nTop, nBottom;
    // The intermediate size is the second map's size, so the corners index its tables.
    if (!Span(fX, fWidth, nLeft, nRight) || !Span(fY, fHeight, nTop, nBottom) || nRight >= obSecond.nWidth ||
        nBottom >= obSecond.nHeight) {
      pfResultX[X] = fNoSource;
      pfResultY[X] = fNoSource;
      continue;
    }
    // Bilinear blend of the four corners, weights and sums in the order of MapBuilder::Bilinear.
    const float fFractionX = fX - static_cast<float>(nLeft);
    const float fFractionY = fY - static_cast<float>(nTop);
    const float fTopLeft = (1.0f - fFractionX) * (1.0f - fFractionY);
    const float fTopRight = fFractionX * (1.0f - fFractionY);
    const float fBottomLeft = (1.0f - fFractionX) * fFractionY;
    const float fBottomRight = fFractionX * fFractionY;
    const int nTopRow = nTop * obSecond.nWidth, nBottomRow = nBottom * obSecond.nWidth;
    pfResultX[X] = fTopLeft * obSecond.pfX[nTopRow + nLeft] + fTopRight * obSecond.pfX[nTopRow + nRight] +
                   fBottomLeft * obSecond.pfX[nBottomRow + nLeft] + fBottomRight * obSecond.pfX[nBottomRow + nRight];
    pfResultY[X] = fTopLeft * obSecond.pfY[nTopRow + nLeft] + fTopRight * obSecond.pfY[nTopRow + nRight] +
                   fBottomLeft * obSecond.pfY[nBottomRow + nLeft] + fBottomRight * obSecond.pfY[nBottomRow + nRight];
  }
}

}  // namespace libdewarp
}  // namespace vemo
