#include <libdewarp_vemo/sparse_map_builder_2.h>

#include <cmath>
#include <memory>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

SparseMapBuilder2::SparseMapBuilder2() {}

SparseMapBuilder2::SparseMapBuilder2(const SparseMapBuilder2& other) : MapBuilder(other) {}

SparseMapBuilder2& SparseMapBuilder2::operator=(const SparseMapBuilder2& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SparseMapBuilder2");
  }
  return *this;
}

SparseMapBuilder2::~SparseMapBuilder2() {}

// Row-wise scheme, two passes over the crop rectangle (offsets from its top-left pixel):
//   1. Sampled rows (every even row, and the last row): the functor at every even column and at
//      the last column; each odd column between two samples is their midpoint.
//   2. The remaining (odd) rows: each pixel is the midpoint of the pixels above and below, which
//      both lie on sampled rows.
// The last row and column are always sampled, so the borders are exact and nothing is
// extrapolated. Wherever one of the two values of a midpoint is not a coordinate (NaN or
// infinite, near the edge of a projection), the functor is called for that pixel instead.
// Every pass walks whole rows of contiguous memory.
ImageMap* SparseMapBuilder2::BuildImageMap(const Resolution& obInputResolution,
                                           const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                           const Resolution& obCrop) {
  const Vector2d obInputOffset = obInputResolution.Centre();
  std::unique_ptr<ImageMap> pobResult(NewImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);
  const CropGrid obGrid = GetCropGrid(obOutputResolution, obCrop, obPlanes);
  const int nStride = obPlanes.nWidth;
  const int nOrigin = obGrid.nRowBase * nStride + obGrid.nColBase;
  float* const pfX = obPlanes.pfX + nOrigin;
  float* const pfY = obPlanes.pfY + nOrigin;
  const int nCols = obGrid.nCols;
  const int nRows = obGrid.nRows;

  auto evaluate = [&](int k, int j) {
    const Vector2d obSource = pfnMapping(Vector2d(obGrid.fLeft + static_cast<float>(k),
                                                  obGrid.fTop + static_cast<float>(j)));
    pfX[j * nStride + k] = obSource.X + obInputOffset.X;
    pfY[j * nStride + k] = obSource.Y + obInputOffset.Y;
  };
  // Midpoint of the elements at indices a and b, stored at index c; false if either is not a
  // coordinate.
  auto midpoint = [&](int a, int b, int c) {
    const float fXa = pfX[a], fXb = pfX[b], fYa = pfY[a], fYb = pfY[b];
    if (!std::isfinite(fXa) || !std::isfinite(fXb) || !std::isfinite(fYa) || !std::isfinite(fYb)) {
      return false;
    }
    pfX[c] = 0.5f * (fXa + fXb);
    pfY[c] = 0.5f * (fYa + fYb);
    return true;
  };

  for (int j = 0; j < nRows; ++j) {
    if ((j % 2) != 0 && j != nRows - 1) {
      continue;
    }
    for (int k = 0; k < nCols; k += 2) {
      evaluate(k, j);
    }
    if ((nCols % 2) == 0 && nCols > 0) {
      evaluate(nCols - 1, j);
    }
    const int nRow = j * nStride;
    for (int k = 1; k + 1 < nCols; k += 2) {
      if (!midpoint(nRow + k - 1, nRow + k + 1, nRow + k)) {
        evaluate(k, j);
      }
    }
  }
  for (int j = 1; j + 1 < nRows; j += 2) {
    const int nAbove = (j - 1) * nStride;
    const int nRow = j * nStride;
    const int nBelow = (j + 1) * nStride;
    for (int k = 0; k < nCols; ++k) {
      if (!midpoint(nAbove + k, nBelow + k, nRow + k)) {
        evaluate(k, j);
      }
    }
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
