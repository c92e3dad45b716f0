#include <libdewarp_vemo/spherical_ptz_map_builder.h>

#include <algorithm>
#include <memory>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/spherical_ptz_functor.h>

namespace vemo {
namespace libdewarp {

SphericalPtzMapBuilder::SphericalPtzMapBuilder() {}

SphericalPtzMapBuilder::SphericalPtzMapBuilder(const SphericalPtzMapBuilder& other) : SparseMapBuilder(other) {}

SphericalPtzMapBuilder& SphericalPtzMapBuilder::operator=(const SphericalPtzMapBuilder& other) {
  if (this == &other) DEWARP_LOG_WARN("Self assignment of %s object\n", "SphericalPtzMapBuilder");
  return *this;
}

SphericalPtzMapBuilder::~SphericalPtzMapBuilder() {}

namespace {

// The largest miss (in source pixels) of a cell's interpolated middle before the cell is refined.
const float kPaneThreshold = 0.125f;

// Every nSpacing-th pixel and the last, and one pixel inside the first and the last line: the
// outermost pixels of a pane often have no source (they fall on the border of the base map) while
// their neighbours have one. The extra lines confine that border to strips one pixel wide, which
// the lattice judges line by line, instead of refining every cell along the pane's edge down to
// single pixels.
template <int nSpacing>
std::vector<int> PaneLines(int nCount) {
  std::vector<int> anLines = MapBuilder::LatticeLines(nCount, nSpacing);
  if (anLines.size() >= 2 && anLines[1] > 2) {
    anLines.insert(anLines.begin() + 1, 1);
  }
  if (anLines.size() >= 2 && anLines[anLines.size() - 2] < nCount - 3) {
    anLines.insert(anLines.end() - 1, nCount - 2);
  }
  return anLines;
}

// The lattice of the panes over a base map nBaseWidth elements wide. A cell's interpolation error
// grows with the square of its size and with the bending of the map per element, and a base map
// of half the width bends twice as much per element (it spans the same view). So the spacing
// follows the square root of the width: every 32 pixels over a base map of 1920 columns or more
// (within 1/8 source pixel of the exact map plus the base map's own roughness, at a quarter of the
// 16-pixel lattice's calls), every 24 from 1080 columns, every 16 below (the same error as 32 at
// 1920 or smaller).
typedef std::vector<int> (*PaneRule)(int nCount);
PaneRule PaneLattice(float fBaseWidth) {
  if (fBaseWidth >= 1920.0f) return PaneLines<32>;
  if (fBaseWidth >= 1080.0f) return PaneLines<24>;
  return PaneLines<16>;
}

// See SphericalPtzMapBuilder::PaneNoSourceTest.
bool PaneHasNoSource(const void* pContext, float fLeft, float fTop, float fRight, float fBottom) {
  return static_cast<const SphericalPtzFunctor*>(pContext)->NoSourceWithin(Vector2d(fLeft, fTop),
                                                                          Vector2d(fRight, fBottom));
}

}  // namespace

// Panes are built on a coarse lattice: the functor at every 32nd pixel of every 32nd row over a
// base map of 1920 columns (every 24th or 16th over narrower ones, see PaneLattice), and at the
// last row and column, each cell filled by bilinear interpolation of its corners once the
// functor at the cell's middle agrees with the interpolated guess within 1/8 source pixel. A cell
// whose bilinear guess misses is filled by cubic interpolation of the sixteen crossings around it
// when that guess agrees instead; a cell that misses both, or that has a corner without a source,
// is refined (see BuildLattice). A PTZ view moves smoothly over the fisheye, so nearly every cell
// is interpolated: about one functor call in 512 pixels before refinement instead of one in four
// (a 1920 x 1080 pane: 4559 calls), and within 1/8 source pixel of the exact map plus the base
// map's own element-to-element roughness (measured against the dense build in the tests: up to
// 0.13 at 1920 x 1080). A panoramic view's pane follows the fisheye's circles and bends too much
// for 32-pixel bilinear cells (their middles miss by up to 2 source pixels); the cubic cells
// follow it within a few hundredths, where halving each cell down to 8 pixels cost about 57
// calls per cell.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                                const Resolution& obOutputResolution, MapFunctor& pfnMapping,
                                                const Resolution& obCrop) {
  return BuildOnLattice(obInputResolution, obOutputResolution, pfnMapping, obCrop, PaneLattice(obOutputResolution.X),
                        kPaneThreshold, true);
}

// One virtual camera over the whole base map: one pane of the map's size (the same lattice as
// the functor form over that size builds, with the base map's no-source test).
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos,
                                                float fFocalLength) {
  const Resolution obOutputResolution(obImageMap.GetMapSize());
  std::unique_ptr<ImageMap> pobResult(NewPanedImageMap(obImageMap, obOutputResolution, obOutputResolution));
  BuildPane(*pobResult, obImageMap, obPtzPos, fFocalLength, obOutputResolution, Vector2d(0.0f, 0.0f));
  return pobResult.release();
}

// Two panes stacked: pane 1 on top, pane 2 below, each the full width and half the height.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                                const PtzPosition& obPtzPos2, float fFocalLength) {
  const Vector2d obOutputSize = obImageMap.GetMapSize();
  const Resolution obPane(obOutputSize.X, FloatingPoint::floor(0.5f * obOutputSize.Y));
  std::unique_ptr<ImageMap> pobResult(NewPanedImageMap(obImageMap, obPane, Resolution(obPane.X, 2.0f * obPane.Y)));
  BuildPane(*pobResult, obImageMap, obPtzPos1, fFocalLength, obPane, Vector2d(0.0f, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos2, fFocalLength, obPane, Vector2d(0.0f, obPane.Y));
  return pobResult.release();
}

// Four panes in a 2 x 2 grid, in reading order: top-left, top-right, bottom-left, bottom-right.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                                const PtzPosition& obPtzPos2, const PtzPosition& obPtzPos3,
                                                const PtzPosition& obPtzPos4, float fFocalLength) {
  const Vector2d obOutputSize = obImageMap.GetMapSize();
  const Resolution obPane(FloatingPoint::floor(0.5f * obOutputSize.X), FloatingPoint::floor(0.5f * obOutputSize.Y));
  std::unique_ptr<ImageMap> pobResult(
      NewPanedImageMap(obImageMap, obPane, Resolution(2.0f * obPane.X, 2.0f * obPane.Y)));
  BuildPane(*pobResult, obImageMap, obPtzPos1, fFocalLength, obPane, Vector2d(0.0f, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos2, fFocalLength, obPane, Vector2d(obPane.X, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos3, fFocalLength, obPane, Vector2d(0.0f, obPane.Y));
  BuildPane(*pobResult, obImageMap, obPtzPos4, fFocalLength, obPane, Vector2d(obPane.X, obPane.Y));
  return pobResult.release();
}

// The result of a multi-pane build: of the base map's size and input size. When the panes
// cover it exactly every element is written by a pane and the tables are left unfilled;
// otherwise (an odd width or height) the uncovered last row or column stays NaN.
ImageMap* SphericalPtzMapBuilder::NewPanedImageMap(const ImageMap& obImageMap, const Resolution& obPane,
                                                   const Resolution& obCovered) {
  const Resolution obOutput(obImageMap.GetMapSize());
  const Resolution obInput(obImageMap.GetInputSize());
  const bool bCovered = obPane.X >= 1.0f && obPane.Y >= 1.0f && obCovered.X == obOutput.X && obCovered.Y == obOutput.Y;
  return bCovered ? NewUnfilledImageMap(obInput, obOutput) : NewImageMap(obInput, obOutput);
}

// Parts of a base map without a source (the bands above and below a panorama that fills only
// part of it, the corners outside the fisheye's circle) would otherwise be halved down to cells
// of a few pixels, each found empty by its own corners and middle: with the test, the cells
// over them are found empty at the size of the lattice, by a scan of the base map.
void SphericalPtzMapBuilder::BuildPane(ImageMap& obResult, const ImageMap& obImageMap, const PtzPosition& obPtzPos,
                                       float fFocalLength, const Resolution& obPaneResolution,
                                       const Vector2d& obOffset) {
  SphericalPtzFunctor obFunctor(obPtzPos, fFocalLength, obImageMap);
  const NoSourceTest obNoSource = PaneNoSourceTest(obFunctor);
  BuildPaneLattice(obResult, obFunctor, &obNoSource, Resolution(obImageMap.GetInputSize()), obPaneResolution,
                   obOffset);
}

MapBuilder::NoSourceTest SphericalPtzMapBuilder::PaneNoSourceTest(const SphericalPtzFunctor& obFunctor) {
  const NoSourceTest obTest = {PaneHasNoSource, &obFunctor};
  return obTest;
}

// The pane is built in place: its crop rectangle is the pane, centred on the pane for the
// functor and stored from obOffset in the result (the same values a separate pane map copied
// element by element would give).
void SphericalPtzMapBuilder::BuildPaneLattice(ImageMap& obResult, MapFunctor& pfnMapping,
                                              const NoSourceTest* pobNoSource, const Resolution& obInputResolution,
                                              const Resolution& obPaneResolution, const Vector2d& obOffset) {
  const MapPlanes obPlanes = GetPlanes(obResult);
  MapPlanes obPanePlanes = obPlanes;
  const int nOffsetX = static_cast<int>(obOffset.X);
  const int nOffsetY = static_cast<int>(obOffset.Y);
  if (nOffsetX >= obPlanes.nWidth || nOffsetY >= obPlanes.nHeight) return;
  // The pane's own view of the result: its tables start at the pane's top-left element.
  obPanePlanes.pfX += nOffsetY * obPlanes.nWidth + nOffsetX;
  obPanePlanes.pfY += nOffsetY * obPlanes.nWidth + nOffsetX;
  CropGrid obGrid = GetCropGrid(obPaneResolution, obPaneResolution, obPlanes);
  obGrid.nCols = std::min(obGrid.nCols, obPlanes.nWidth - nOffsetX - obGrid.nColBase);
  obGrid.nRows = std::min(obGrid.nRows, obPlanes.nHeight - nOffsetY - obGrid.nRowBase);
  if (obGrid.nCols <= 0 || obGrid.nRows <= 0) return;
  const PaneRule fnLines = PaneLattice(static_cast<float>(obPlanes.nWidth));
  BuildLattice(obPanePlanes, obGrid, pfnMapping, obInputResolution.Centre(), fnLines(obGrid.nCols),
               fnLines(obGrid.nRows), kPaneThreshold, pobNoSource, true);
}

}  // namespace libdewarp
}  // namespace vemo
