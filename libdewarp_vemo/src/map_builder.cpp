#include <libdewarp_vemo/map_builder.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

MapBuilder::MapBuilder() {}

MapBuilder::MapBuilder(const MapBuilder&) {}

MapBuilder& MapBuilder::operator=(const MapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "MapBuilder");
  }
  return *this;
}

MapBuilder::~MapBuilder() {}

ImageMap* MapBuilder::BuildImageMap() { return new ImageMap(); }

ImageMap* MapBuilder::BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                    MapFunctor& pfnMapping) {
  return BuildImageMap(Resolution(obInputResolution), Resolution(obOutputResolution), pfnMapping);
}

ImageMap* MapBuilder::BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                    MapFunctor& pfnMapping) {
  return BuildImageMap(obInputResolution, obOutputResolution, pfnMapping, obOutputResolution);
}

ImageMap* MapBuilder::BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                    MapFunctor& pfnMapping, const Vector2d& obCrop) {
  return BuildImageMap(Resolution(obInputResolution), Resolution(obOutputResolution), pfnMapping,
                       Resolution(obCrop));
}

Vector2d MapBuilder::Average(const Vector2d* pobValues, unsigned int nCount) {
  Vector2d obSum(0.0f, 0.0f);
  for (unsigned int i = 0; i < nCount; ++i) {
    obSum += pobValues[i];
  }
  return obSum / static_cast<float>(nCount);
}

Vector2d MapBuilder::Bilinear(const Vector2d& obTopLeft, const Vector2d& obTopRight, const Vector2d& obBottomLeft,
                              const Vector2d& obBottomRight, float fX, float fY) {
  const float fTopLeft = (1.0f - fX) * (1.0f - fY);
  const float fTopRight = fX * (1.0f - fY);
  const float fBottomLeft = (1.0f - fX) * fY;
  const float fBottomRight = fX * fY;
  return Vector2d(fTopLeft * obTopLeft.X + fTopRight * obTopRight.X + fBottomLeft * obBottomLeft.X +
                      fBottomRight * obBottomRight.X,
                  fTopLeft * obTopLeft.Y + fTopRight * obTopRight.Y + fBottomLeft * obBottomLeft.Y +
                      fBottomRight * obBottomRight.Y);
}

void MapBuilder::BuildFrame(ImageMap& obMap, MapFunctor& pfnMapping, const Rectangle2d& obRect,
                            const Vector2d& obInputOffset, const Vector2d& obOutputOffset) {
  const MapPlanes obPlanes = GetPlanes(obMap);
  // Rows run from the smaller y of the centred rectangle (the top row of the map) while below the
  // larger, columns from Left while below Right, as in the dense build.
  const float fTop = std::fmin(obRect.Top, obRect.Bottom);
  const float fBottom = std::fmax(obRect.Top, obRect.Bottom);
  const int nRows = static_cast<int>(std::ceil(fBottom - fTop));
  const int nCols = static_cast<int>(std::ceil(obRect.Right - obRect.Left));
  if (!(nRows > 0) || !(nCols > 0)) {
    return;
  }
  auto store = [&](int k, int j) {
    const float fX = obRect.Left + static_cast<float>(k);
    const float fY = fTop + static_cast<float>(j);
    const float fColumn = fX + obOutputOffset.X;
    const float fRow = fY + obOutputOffset.Y;
    if (!(fColumn > -1.0f) || !(fRow > -1.0f)) {
      return;
    }
    const int nColumn = static_cast<int>(fColumn);
    const int nRow = static_cast<int>(fRow);
    if (nColumn >= obPlanes.nWidth || nRow >= obPlanes.nHeight) {
      return;
    }
    const Vector2d obSource = pfnMapping(Vector2d(fX, fY));
    const int nIndex = nRow * obPlanes.nWidth + nColumn;
    obPlanes.pfX[nIndex] = obSource.X + obInputOffset.X;
    obPlanes.pfY[nIndex] = obSource.Y + obInputOffset.Y;
  };
  for (int k = 0; k < nCols; ++k) {
    store(k, 0);
    if (nRows > 1) {
      store(k, nRows - 1);
    }
  }
  for (int j = 1; j + 1 < nRows; ++j) {
    store(0, j);
    if (nCols > 1) {
      store(nCols - 1, j);
    }
  }
}

ImageMap* MapBuilder::NewImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution) {
  std::unique_ptr<ImageMap> pobResult(new ImageMap(obOutputResolution));
  pobResult->SetInputSize(obInputResolution);
  return pobResult.release();
}

ImageMap* MapBuilder::NewUnfilledImageMap(const Resolution& obInputResolution,
                                          const Resolution& obOutputResolution) {
  std::unique_ptr<ImageMap> pobResult(new ImageMap());
  // Sizes converted as ImageMap::SetMapSize converts them (negative or NaN sizes give no table).
  const int nWidth = static_cast<int>(obOutputResolution.X);
  const int nHeight = static_cast<int>(obOutputResolution.Y);
  const unsigned int nCols = nWidth > 0 ? static_cast<unsigned int>(nWidth) : 0u;
  const unsigned int nRows = nHeight > 0 ? static_cast<unsigned int>(nHeight) : 0u;
  pobResult->GetMapX().ResetUnfilled(Map::FLOAT, nCols, nRows);
  pobResult->GetMapY().ResetUnfilled(Map::FLOAT, nCols, nRows);
  pobResult->SetInputSize(obInputResolution);
  return pobResult.release();
}

float MapBuilder::NoSource() {
  const std::uint32_t uBits = 0xFFFFFFFFu;
  float fValue;
  std::memcpy(&fValue, &uBits, sizeof(fValue));
  return fValue;
}

bool MapBuilder::CropCoversOutput(const Resolution& obOutputResolution, const Resolution& obCrop) {
  return obOutputResolution.X >= 1.0f && obOutputResolution.Y >= 1.0f && obCrop.X >= obOutputResolution.X &&
         obCrop.Y >= obOutputResolution.Y;
}

std::vector<int> MapBuilder::LatticeLines(int nCount, int nSpacing) {
  std::vector<int> anLines;
  if (nCount <= 0 || nSpacing <= 0) {
    return anLines;
  }
  for (int n = 0; n < nCount - 1; n += nSpacing) {
    anLines.push_back(n);
  }
  anLines.push_back(nCount - 1);
  return anLines;
}

MapBuilder::MapPlanes MapBuilder::GetPlanes(ImageMap& obMap) {
  Map& obMapX = obMap.GetMapX();
  Map& obMapY = obMap.GetMapY();
  // A map without a float table gets one, converted from its own table (as FillMap does).
  if (obMapX.GetTypePtr<float>() == nullptr) {
    obMapX.ConfigForFloat();
  }
  if (obMapY.GetTypePtr<float>() == nullptr) {
    obMapY.ConfigForFloat();
  }
  MapPlanes obPlanes;
  obPlanes.pfX = obMapX.GetTypePtr<float>();
  obPlanes.pfY = obMapY.GetTypePtr<float>();
  // Both tables have the same size; the smaller extent is used should they ever differ.
  obPlanes.nWidth = static_cast<int>(std::min(obMapX.GetCols(), obMapY.GetCols()));
  obPlanes.nHeight = static_cast<int>(std::min(obMapX.GetRows(), obMapY.GetRows()));
  if (obPlanes.pfX == nullptr || obPlanes.pfY == nullptr || obPlanes.nWidth <= 0) {
    obPlanes.nWidth = 0;
    obPlanes.nHeight = 0;
    return obPlanes;
  }
  // A map copied from a non-square map reports its row count as column count too; never walk
  // past the elements that were actually allocated.
  const std::size_t nAllocated = std::min(obMapX.GetAllocatedCount(), obMapY.GetAllocatedCount());
  const std::size_t nRowsAllocated = nAllocated / static_cast<std::size_t>(obPlanes.nWidth);
  if (static_cast<std::size_t>(obPlanes.nHeight) > nRowsAllocated) {
    obPlanes.nHeight = static_cast<int>(nRowsAllocated);
  }
  return obPlanes;
}

MapBuilder::CropGrid MapBuilder::GetCropGrid(const Resolution& obOutputResolution, const Resolution& obCrop,
                                             const MapPlanes& obPlanes) {
  // The crop rectangle is clipped to the output (so nothing is ever written outside the map) and
  // centred on the origin: x from -w/2 while x < w/2, y from -h/2 while y < h/2. Pixel k of a
  // row is stored at column trunc(-w/2 + k + W/2); since w <= W that is trunc((W - w)/2) + k.
  const Vector2d obOutputOffset = obOutputResolution.Centre();
  CropGrid obGrid = {0.0f, 0.0f, 0, 0, 0, 0};
  const float fWidth = std::fmin(obCrop.X, obOutputResolution.X);
  const float fHeight = std::fmin(obCrop.Y, obOutputResolution.Y);
  if (!(fWidth > 0.0f) || !(fHeight > 0.0f) || obPlanes.nWidth <= 0 || obPlanes.nHeight <= 0) {
    return obGrid;
  }
  obGrid.fLeft = -0.5f * fWidth;
  obGrid.fTop = -0.5f * fHeight;
  obGrid.nColBase = static_cast<int>(obGrid.fLeft + obOutputOffset.X);
  obGrid.nRowBase = static_cast<int>(obGrid.fTop + obOutputOffset.Y);
  obGrid.nCols = static_cast<int>(std::ceil(fWidth));
  obGrid.nRows = static_cast<int>(std::ceil(fHeight));
  if (obGrid.nColBase + obGrid.nCols > obPlanes.nWidth) {
    obGrid.nCols = obPlanes.nWidth - obGrid.nColBase;
  }
  if (obGrid.nRowBase + obGrid.nRows > obPlanes.nHeight) {
    obGrid.nRows = obPlanes.nHeight - obGrid.nRowBase;
  }
  if (obGrid.nCols <= 0 || obGrid.nRows <= 0) {
    obGrid.nCols = 0;
    obGrid.nRows = 0;
  }
  return obGrid;
}

}  // namespace libdewarp
}  // namespace vemo
