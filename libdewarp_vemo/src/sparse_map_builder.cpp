#include <libdewarp_vemo/sparse_map_builder.h>

#include <cmath>
#include <memory>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

SparseMapBuilder::SparseMapBuilder() {}

SparseMapBuilder::SparseMapBuilder(const SparseMapBuilder& other) : MapBuilder(other) {}

SparseMapBuilder& SparseMapBuilder::operator=(const SparseMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SparseMapBuilder");
  }
  return *this;
}

SparseMapBuilder::~SparseMapBuilder() {}

namespace {

// Reads the neighbours at the given crop offsets from the tables, takes those that exist (inside
// the crop rectangle) and hold a coordinate (not NaN), relative to the input centre, and stores
// their mean plus the input centre at (k, j). With no usable neighbour the pixel stays NaN.
struct NeighbourFill {
  float* pfX;
  float* pfY;
  int nStride;
  int nCols;
  int nRows;
  Vector2d obInputOffset;

  void operator()(int k, int j, const int (*anOffsets)[2]) const {
    Vector2d aobNeighbours[4];
    unsigned int nCount = 0;
    for (int n = 0; n < 4; ++n) {
      const int nColumn = k + anOffsets[n][0];
      const int nRow = j + anOffsets[n][1];
      if (nColumn < 0 || nColumn >= nCols || nRow < 0 || nRow >= nRows) {
        continue;
      }
      const int nIndex = nRow * nStride + nColumn;
      if (std::isnan(pfX[nIndex]) || std::isnan(pfY[nIndex])) {
        continue;
      }
      aobNeighbours[nCount++] = Vector2d(pfX[nIndex], pfY[nIndex]) - obInputOffset;
    }
    if (nCount == 0) {
      return;
    }
    const Vector2d obAverage = MapBuilder::Average(aobNeighbours, nCount) + obInputOffset;
    pfX[j * nStride + k] = obAverage.X;
    pfY[j * nStride + k] = obAverage.Y;
  }
};

// Neighbour offsets (column, row) in map orientation (north is the row above).
const int kDiagonal[4][2] = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};  // NW, NE, SW, SE
const int kDirect[4][2] = {{0, -1}, {0, 1}, {1, 0}, {-1, 0}};      // N, S, E, W

}  // namespace

// Four passes over the crop rectangle, each visiting every second row and column; offsets are
// counted from the rectangle's top-left pixel:
//   1. lattice (even row, even column): the functor, a quarter of the pixels;
//   2. centres (odd row, odd column): mean of the four diagonal neighbours;
//   3. vertical edges (odd row, even column): mean of north, south (lattice) and east, west (pass 2);
//   4. horizontal edges (even row, odd column): mean of the four direct neighbours.
// On the right and bottom borders some neighbours lie outside the crop rectangle, and near the
// edge of a projection some hold NaN: the mean is then taken over the neighbours that exist,
// and a pixel without any usable neighbour stays NaN.
ImageMap* SparseMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                          const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                          const Resolution& obCrop) {
  const Vector2d obInputOffset = obInputResolution.Centre();
  std::unique_ptr<ImageMap> pobResult(NewImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);
  const CropGrid obCropRect = GetCropGrid(obOutputResolution, obCrop, obPlanes);
  const int nStride = obPlanes.nWidth;
  const int nOrigin = obCropRect.nRowBase * nStride + obCropRect.nColBase;
  float* const pfX = obPlanes.pfX + nOrigin;
  float* const pfY = obPlanes.pfY + nOrigin;

  for (int j = 0; j < obCropRect.nRows; j += 2) {
    const float fY = obCropRect.fTop + static_cast<float>(j);
    for (int k = 0; k < obCropRect.nCols; k += 2) {
      const Vector2d obSource = pfnMapping(Vector2d(obCropRect.fLeft + static_cast<float>(k), fY));
      pfX[j * nStride + k] = obSource.X + obInputOffset.X;
      pfY[j * nStride + k] = obSource.Y + obInputOffset.Y;
    }
  }
  const NeighbourFill fill = {pfX, pfY, nStride, obCropRect.nCols, obCropRect.nRows, obInputOffset};
  for (int j = 1; j < obCropRect.nRows; j += 2) {
    for (int k = 1; k < obCropRect.nCols; k += 2) {
      fill(k, j, kDiagonal);
    }
  }
  for (int j = 1; j < obCropRect.nRows; j += 2) {
    for (int k = 0; k < obCropRect.nCols; k += 2) {
      fill(k, j, kDirect);
    }
  }
  for (int j = 0; j < obCropRect.nRows; j += 2) {
    for (int k = 1; k < obCropRect.nCols; k += 2) {
      fill(k, j, kDirect);
    }
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
