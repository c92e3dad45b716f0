// Base of the map builders: turns a map functor (destination point -> source point) into an
// ImageMap. Builders are stateless objects created for one build; every BuildImageMap returns
// a new heap ImageMap that the caller owns.
#pragma once

#include <vector>

namespace vemo {
namespace libdewarp {

class ImageMap;
class MapFunctor;
class Rectangle2d;
class Resolution;
class Vector2d;

class MapBuilder {
public:
  MapBuilder();
  MapBuilder(const MapBuilder& other);
  MapBuilder& operator=(const MapBuilder& other);
  virtual ~MapBuilder();

  // A new, empty map.
  virtual ImageMap* BuildImageMap();
  // The convenience forms; all of them end in the resolution form with a crop.
  virtual ImageMap* BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                  MapFunctor& pfnMapping);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping);
  virtual ImageMap* BuildImageMap(const Vector2d& obInputResolution, const Vector2d& obOutputResolution,
                                  MapFunctor& pfnMapping, const Vector2d& obCrop);
  // The one operation each concrete builder implements: a map of obOutputResolution whose
  // elements inside the centred crop rectangle hold source coordinates (pixels of an image of
  // obInputResolution, from its top-left sample); elements outside the crop stay NaN.
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop) = 0;

  // Mean of the first nCount values (nCount > 0).
  static Vector2d Average(const Vector2d* pobValues, unsigned int nCount);
  // Bilinear blend of four corner values with the fractions (fX, fY) measured from the
  // top-left corner: obTopLeft at (0, 0), obTopRight at (1, 0), obBottomLeft at (0, 1),
  // obBottomRight at (1, 1).
  static Vector2d Bilinear(const Vector2d& obTopLeft, const Vector2d& obTopRight, const Vector2d& obBottomLeft,
                           const Vector2d& obBottomRight, float fX, float fY);
  // Evaluates the functor on the frame of a crop rectangle: its first and last row and its
  // first and last column. obRect is the crop rectangle centred on the origin, obInputOffset
  // and obOutputOffset the centres of the input and output resolutions. Each value is stored
  // as the dense build stores it (functor result plus input centre, at the point plus the
  // output centre); points that fall outside the map are skipped.
  static void BuildFrame(ImageMap& obMap, MapFunctor& pfnMapping, const Rectangle2d& obRect,
                         const Vector2d& obInputOffset, const Vector2d& obOutputOffset);

  // Lattice lines every nSpacing pixels from 0, and always at the last pixel nCount - 1.
  static std::vector<int> LatticeLines(int nCount, int nSpacing);
  // The value of a table element without a source: NaN with every byte 0xFF, as in a fresh table.
  static float NoSource();

  // What a builder may know about its functor that the lattice cannot see: pfnTest(pContext,
  // fLeft, fTop, fRight, fBottom) is true only if the functor gives no source (a value that is not
  // a coordinate) at every point (x, y) with fLeft <= x <= fRight and fTop <= y <= fBottom, the
  // points as the lattice hands them to the functor. It is asked about a cell larger than the
  // lattice leaves empty on the evidence of its corners and middle alone, once those have no
  // source: a true answer leaves the whole cell without a source at once instead of halving it
  // down to small cells, each of which would be found empty by its own corners and middle. A
  // false answer ("may have a source") costs nothing but that refinement, so the test may be
  // conservative; it must never be true for a cell with a point that has a source.
  struct NoSourceTest {
    bool (*pfnTest)(const void* pContext, float fLeft, float fTop, float fRight, float fBottom);
    const void* pContext;
  };

protected:
  // The float tables of a map, row-major, element (x, y) at y * nWidth + x.
  struct MapPlanes {
    float* pfX;
    float* pfY;
    int nWidth;
    int nHeight;
  };
  // The pixels of the crop rectangle centred on the output: nCols x nRows pixels; pixel (k, j)
  // of the crop is evaluated at the centred point (fLeft + k, fTop + j) and stored at map column
  // nColBase + k, row nRowBase + j. fTop is the smallest y (the top row in map coordinates).
  struct CropGrid {
    float fLeft;
    float fTop;
    int nCols;
    int nRows;
    int nColBase;
    int nRowBase;
  };

  // A new map of the output size, every element NaN, its input size set.
  static ImageMap* NewImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution);
  // A new map of the output size whose tables are not filled (only the padding past the last
  // element reads as NaN), its input size set: for builds that write every element themselves.
  static ImageMap* NewUnfilledImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution);
  // Whether a build over obCrop writes every element of a map of obOutputResolution: both sizes
  // positive and the crop not smaller than the output.
  static bool CropCoversOutput(const Resolution& obOutputResolution, const Resolution& obCrop);
  // The float tables of a map (a map without float tables is converted first).
  static MapPlanes GetPlanes(ImageMap& obMap);
  // The crop rectangle of obCrop centred on obOutputResolution, clipped to the map.
  static CropGrid GetCropGrid(const Resolution& obOutputResolution, const Resolution& obCrop,
                              const MapPlanes& obPlanes);
  // Lattice lines over nCount crop pixels: ascending crop indices, the first 0, the last nCount - 1.
  typedef std::vector<int> (*LatticeRule)(int nCount);
  // A map of the output size built by BuildLattice on the lines fnLines draws across and down the
  // crop; its tables are filled first only when the crop leaves part of them unwritten.
  static ImageMap* BuildOnLattice(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop, LatticeRule fnLines,
                                  float fThreshold, bool bCubic = false);
  // Lattice interpolation shared by the grid builders: the functor is evaluated at every
  // crossing of the lattice columns anColumns and rows anRows (crop indices, ascending, first 0
  // and last nCols - 1 / nRows - 1); every cell between neighbouring lines is then filled by
  // bilinear interpolation of its four corners. Without a check (fThreshold infinite) a cell
  // with a corner that is not a coordinate (NaN or infinite) is evaluated pixel by pixel. With
  // a finite fThreshold the functor is also evaluated at each cell's middle: a cell is blended
  // when its interpolated middle is within fThreshold source pixels of it, left without a
  // source when its corners and middle have none, and otherwise halved and examined again,
  // down to cells of 2 x 2 steps, which are evaluated pixel by pixel. Every element of the crop
  // is written. With a pobNoSource test (and a finite fThreshold) a larger cell whose corners
  // and middle have no source is left without a source at once when the test says so; the map
  // is the same, element for element and bit for bit, as without the test. With bCubic (and a
  // finite fThreshold) a cell whose bilinear guess misses is filled instead by cubic
  // interpolation of the sixteen crossings around it, when the lines there are equally spaced,
  // all sixteen have a source and the cubic guess at the middle is within fThreshold; only
  // cells that fail both are halved.
  static void BuildLattice(const MapPlanes& obPlanes, const CropGrid& obGrid, MapFunctor& pfnMapping,
                           const Vector2d& obInputOffset, const std::vector<int>& anColumns,
                           const std::vector<int>& anRows, float fThreshold,
                           const NoSourceTest* pobNoSource = nullptr, bool bCubic = false);
};

}  // namespace libdewarp
}  // namespace vemo
