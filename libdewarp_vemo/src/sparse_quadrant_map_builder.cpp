#include <libdewarp_vemo/sparse_quadrant_map_builder.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

namespace {

// Distance between lattice lines, in pixels.
const int kSpacing = 8;
// Largest tolerated miss of a cell's interpolated middle, in source pixels. The middle is the
// only point of a cell that is checked, and where the mapping bends sharply (around the point
// opposite the lens axis, which the panoramas' full turn reaches) the rest of a cell strays up to
// about twice as far as its middle: half of 1/8 keeps the whole map within 1/8 source pixel.
const float kThreshold = 0.0625f;

// Lines through the centre pixel and every kSpacing pixels outward in both directions, ending on
// the first and the last pixel: each quadrant's lattice starts on the centre line.
std::vector<int> QuadrantLines(int nCount) {
  std::vector<int> anLines;
  if (nCount <= 0) {
    return anLines;
  }
  const int nCentre = nCount / 2;
  for (int n = nCentre; n > 0; n -= kSpacing) {
    anLines.push_back(n);
  }
  anLines.push_back(0);
  std::reverse(anLines.begin(), anLines.end());
  for (int n = nCentre + kSpacing; n < nCount - 1; n += kSpacing) {
    anLines.push_back(n);
  }
  if (anLines.back() != nCount - 1) {
    anLines.push_back(nCount - 1);
  }
  return anLines;
}

}  // namespace

SparseQuadrantMapBuilder::SparseQuadrantMapBuilder() {}

SparseQuadrantMapBuilder::SparseQuadrantMapBuilder(const SparseQuadrantMapBuilder& other) : MapBuilder(other) {}

SparseQuadrantMapBuilder& SparseQuadrantMapBuilder::operator=(const SparseQuadrantMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SparseQuadrantMapBuilder");
  }
  return *this;
}

SparseQuadrantMapBuilder::~SparseQuadrantMapBuilder() {}

// Quadrant-lattice scheme: the crop rectangle is divided at its centre pixel into four
// quadrants; in each, lattice lines run from the centre row and column outward every 8 pixels
// and end on the rectangle's edges, so the centre cross (the lens axis of a projection map)
// and the borders are exact. The functor is evaluated at the lattice crossings; each cell is
// filled by bilinear interpolation of its corners after a check: the functor is also evaluated
// at the cell's middle pixel, and a cell whose interpolated middle misses it by more than 1/16
// source pixel, or which has a corner that is not a coordinate, is halved and examined again,
// down to cells of 2 x 2 steps evaluated pixel by pixel (small cells whose corners and middle
// all lack a source are left without one). Smooth regions thus cost about one call in
// thirty-two; strongly curved ones are refined until their middles agree, which keeps the
// projection maps of a fisheye lens within 1/8 source pixel of the functor's values everywhere
// (projection_map_accuracy_test measures the built-in camera's). Over the lens picture itself
// those maps bend gently: with cells of 8 x 8 pixels the interpolation strays there by a few
// hundredths of a source pixel.
ImageMap* SparseQuadrantMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                                  const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                                  const Resolution& obCrop) {
  return BuildOnLattice(obInputResolution, obOutputResolution, pfnMapping, obCrop, QuadrantLines, kThreshold, true);
}

ImageMap* SparseQuadrantMapBuilder::BuildRowBand(const Resolution& obInputResolution,
                                                 const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                                 int nFirstRow, int nLastRow) {
  std::unique_ptr<ImageMap> pobResult(NewUnfilledImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);
  const CropGrid obGrid = GetCropGrid(obOutputResolution, obOutputResolution, obPlanes);
  const std::vector<int> anAllRows = QuadrantLines(obGrid.nRows);
  // The rows of cells that reach into the band, the cells on either side of a line at its edge
  // included (both write that line, and the more exact of the two values is the one kept).
  const int nFirst = nFirstRow - obGrid.nRowBase, nLast = nLastRow - obGrid.nRowBase;
  std::size_t nLo = 0, nHi = anAllRows.empty() ? 0 : anAllRows.size() - 1;
  while (nLo + 1 < anAllRows.size() && anAllRows[nLo + 1] < nFirst) ++nLo;
  while (nHi > nLo + 1 && anAllRows[nHi - 1] > nLast) --nHi;
  const bool bBand = nFirst <= nLast && !anAllRows.empty() && anAllRows[nLo] <= nLast && anAllRows[nHi] >= nFirst;
  // One more line on either side, where there is one: a cubic cell reads the crossings of the
  // lines beyond its own, so the cells of the band are judged and filled on the same crossings as
  // in the whole lattice. The cells added outside the band may be filled differently from the
  // whole lattice's, but they only write rows outside it and the lines they share with the band's
  // outer cells, which lie outside it too.
  if (bBand) {
    if (nLo > 0) --nLo;
    if (nHi + 1 < anAllRows.size()) ++nHi;
  }
  const std::vector<int> anRows =
      bBand ? std::vector<int>(anAllRows.begin() + nLo, anAllRows.begin() + nHi + 1) : std::vector<int>();
  // Rows outside the lines built: without a source.
  const int nBuiltFirst = bBand ? obGrid.nRowBase + anRows.front() : obPlanes.nHeight;
  const int nBuiltLast = bBand ? obGrid.nRowBase + anRows.back() : obPlanes.nHeight - 1;
  const float fNoSource = NoSource();
  for (int j = 0; j < obPlanes.nHeight; ++j) {
    if (j >= nBuiltFirst && j <= nBuiltLast) continue;
    float* const pfRowX = obPlanes.pfX + static_cast<std::ptrdiff_t>(j) * obPlanes.nWidth;
    float* const pfRowY = obPlanes.pfY + static_cast<std::ptrdiff_t>(j) * obPlanes.nWidth;
    std::fill(pfRowX, pfRowX + obPlanes.nWidth, fNoSource);
    std::fill(pfRowY, pfRowY + obPlanes.nWidth, fNoSource);
  }
  if (bBand) {
    BuildLattice(obPlanes, obGrid, pfnMapping, obInputResolution.Centre(), QuadrantLines(obGrid.nCols), anRows,
                 kThreshold, nullptr, true);
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
