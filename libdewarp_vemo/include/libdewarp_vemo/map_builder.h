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
  // The float tables of a map (a map without float tables is converted first).
  static MapPlanes GetPlanes(ImageMap& obMap);
  // The crop rectangle of obCrop centred on obOutputResolution, clipped to the map.
  static CropGrid GetCropGrid(const Resolution& obOutputResolution, const Resolution& obCrop,
                              const MapPlanes& obPlanes);
  // Lattice interpolation shared by the grid builders: the functor is evaluated at every
  // crossing of the lattice columns anColumns and rows anRows (crop indices, ascending, first 0
  // and last nCols - 1 / nRows - 1); every cell between neighbouring lines is then filled by
  // bilinear interpolation of its four corners. A cell with a corner that is not a coordinate
  // (NaN or infinite) is evaluated pixel by pixel instead. If fThreshold is finite, the functor
  // is also evaluated at each cell's middle pixel and a cell whose interpolated middle misses
  // it by more than fThreshold source pixels is evaluated pixel by pixel as well.
  static void BuildLattice(const MapPlanes& obPlanes, const CropGrid& obGrid, MapFunctor& pfnMapping,
                           const Vector2d& obInputOffset, const std::vector<int>& anColumns,
                           const std::vector<int>& anRows, float fThreshold);
};

}  // namespace libdewarp
}  // namespace vemo
