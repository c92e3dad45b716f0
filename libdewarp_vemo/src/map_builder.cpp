#include <libdewarp_vemo/map_builder.h>

#include <algorithm>
#include <cmath>
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

namespace {

// One cell of a lattice: crop columns nLeft..nRight and rows nTop..nBottom, corners included.
struct LatticeCell {
  int nLeft, nRight, nTop, nBottom;
};

}  // namespace

void MapBuilder::BuildLattice(const MapPlanes& obPlanes, const CropGrid& obGrid, MapFunctor& pfnMapping,
                              const Vector2d& obInputOffset, const std::vector<int>& anColumns,
                              const std::vector<int>& anRows, float fThreshold) {
  if (obGrid.nCols <= 0 || obGrid.nRows <= 0 || anColumns.empty() || anRows.empty()) {
    return;
  }
  const int nStride = obPlanes.nWidth;
  float* const pfX = obPlanes.pfX + obGrid.nRowBase * nStride + obGrid.nColBase;
  float* const pfY = obPlanes.pfY + obGrid.nRowBase * nStride + obGrid.nColBase;
  auto evaluate = [&](int k, int j) {
    const Vector2d obSource = pfnMapping(Vector2d(obGrid.fLeft + static_cast<float>(k),
                                                  obGrid.fTop + static_cast<float>(j)));
    pfX[j * nStride + k] = obSource.X + obInputOffset.X;
    pfY[j * nStride + k] = obSource.Y + obInputOffset.Y;
  };
  auto value = [&](int k, int j) { return Vector2d(pfX[j * nStride + k], pfY[j * nStride + k]); };

  // 1. The lattice crossings.
  for (int j : anRows) {
    for (int k : anColumns) {
      evaluate(k, j);
    }
  }
  // 2. Cells whose four corners are coordinates are interpolated; the others are kept for a
  // pixel-by-pixel evaluation, done after all interpolation so that the exact values of a cell's
  // edges are not overwritten by a neighbour's interpolation.
  std::vector<LatticeCell> aobDense;
  const bool bCheck = std::isfinite(fThreshold);
  const size_t nCellColumns = anColumns.size() > 1 ? anColumns.size() - 1 : 1;
  const size_t nCellRows = anRows.size() > 1 ? anRows.size() - 1 : 1;
  for (size_t b = 0; b < nCellRows; ++b) {
    for (size_t a = 0; a < nCellColumns; ++a) {
      LatticeCell obCell;
      obCell.nLeft = anColumns[a];
      obCell.nRight = anColumns.size() > 1 ? anColumns[a + 1] : anColumns[a];
      obCell.nTop = anRows[b];
      obCell.nBottom = anRows.size() > 1 ? anRows[b + 1] : anRows[b];
      const Vector2d obTopLeft = value(obCell.nLeft, obCell.nTop);
      const Vector2d obTopRight = value(obCell.nRight, obCell.nTop);
      const Vector2d obBottomLeft = value(obCell.nLeft, obCell.nBottom);
      const Vector2d obBottomRight = value(obCell.nRight, obCell.nBottom);
      if (!obTopLeft.Valid() || !obTopRight.Valid() || !obBottomLeft.Valid() || !obBottomRight.Valid()) {
        aobDense.push_back(obCell);
        continue;
      }
      const int nWidth = obCell.nRight - obCell.nLeft;
      const int nHeight = obCell.nBottom - obCell.nTop;
      const float fWidth = nWidth > 0 ? static_cast<float>(nWidth) : 1.0f;
      const float fHeight = nHeight > 0 ? static_cast<float>(nHeight) : 1.0f;
      const int nMidColumn = obCell.nLeft + nWidth / 2;
      const int nMidRow = obCell.nTop + nHeight / 2;
      const bool bHasMiddle = (nWidth >= 2 || nHeight >= 2);
      Vector2d obMiddle;
      if (bCheck && bHasMiddle) {
        obMiddle = pfnMapping(Vector2d(obGrid.fLeft + static_cast<float>(nMidColumn),
                                       obGrid.fTop + static_cast<float>(nMidRow))) + obInputOffset;
        const Vector2d obGuess =
            Bilinear(obTopLeft, obTopRight, obBottomLeft, obBottomRight,
                     static_cast<float>(nMidColumn - obCell.nLeft) / fWidth,
                     static_cast<float>(nMidRow - obCell.nTop) / fHeight);
        const float fMiss = std::fmax(std::fabs(obGuess.X - obMiddle.X), std::fabs(obGuess.Y - obMiddle.Y));
        if (!(fMiss <= fThreshold)) {
          aobDense.push_back(obCell);
          continue;
        }
      }
      for (int j = obCell.nTop; j <= obCell.nBottom; ++j) {
        const float fY = static_cast<float>(j - obCell.nTop) / fHeight;
        float* const pfRowX = pfX + j * nStride;
        float* const pfRowY = pfY + j * nStride;
        for (int k = obCell.nLeft; k <= obCell.nRight; ++k) {
          const Vector2d obBlend = Bilinear(obTopLeft, obTopRight, obBottomLeft, obBottomRight,
                                            static_cast<float>(k - obCell.nLeft) / fWidth, fY);
          pfRowX[k] = obBlend.X;
          pfRowY[k] = obBlend.Y;
        }
      }
      if (bCheck && bHasMiddle) {
        pfX[nMidRow * nStride + nMidColumn] = obMiddle.X;
        pfY[nMidRow * nStride + nMidColumn] = obMiddle.Y;
      }
    }
  }
  // 3. The cells that interpolation cannot serve, pixel by pixel (their corners are exact
  // already and are not evaluated twice).
  for (const LatticeCell& obCell : aobDense) {
    for (int j = obCell.nTop; j <= obCell.nBottom; ++j) {
      const bool bLatticeRow = (j == obCell.nTop || j == obCell.nBottom);
      for (int k = obCell.nLeft; k <= obCell.nRight; ++k) {
        if (bLatticeRow && (k == obCell.nLeft || k == obCell.nRight)) {
          continue;
        }
        evaluate(k, j);
      }
    }
  }
}

}  // namespace libdewarp
}  // namespace vemo
