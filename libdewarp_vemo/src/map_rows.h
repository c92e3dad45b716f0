// The row steps of the dense build and of the composition of two maps. The dense and the combined
// builders run them over whole maps; the shift/scale projection build runs them together, filling
// one row of its shift/scale map into a small buffer and composing it at once, so that the
// shift/scale map is never stored. One definition of each step keeps the two ways bit-identical.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class ImageMap;
class MapFunctor;
class Vector2d;

// A builder only in that its steps use the builders' table helpers; it is never instantiated.
class MapRows : public MapBuilder {
public:
  // One row of the dense build: element k receives the functor's value at the centred point
  // (fLeft + k, fY) plus the input centre obInputOffset, for k from 0 while k < nCols.
  static void FillDenseRow(MapFunctor& pfnMapping, float fLeft, float fY, int nCols, const Vector2d& obInputOffset,
                           float* pfRowX, float* pfRowY);

  // One row of a composition: element X of the result row is the second map sampled bilinearly
  // at the first row's position X, or no source when one of the four corners of that position
  // falls outside the intermediate image (obIntermediateResolution, the second map's size).
  static void ComposeRow(const float* pfFirstX, const float* pfFirstY, int nCols, const MapPlanes& obSecond,
                         const Vector2d& obIntermediateResolution, float* pfResultX, float* pfResultY);

  // Rows 0 to nRows - 1, columns 0 to nCols - 1 of the composition of the first map over the
  // second into the result, each row as ComposeRow composes it, bit for bit; rows that repeat the
  // first row's x positions at one height (as a scale map's do) reuse what their columns share.
  static void ComposeRows(const MapPlanes& obFirst, int nRows, int nCols, const MapPlanes& obSecond,
                          const Vector2d& obIntermediateResolution, const MapPlanes& obResult);

  // The same row when its positions are the whole columns 0, 1, ..., nCols - 1 at the one height
  // fY (a shift/scale map with unit horizontal scale and a whole shift): the values ComposeRow
  // gives for them, bit for bit, from two rows of the second map read straight through.
  static void ComposeRunRow(float fY, int nCols, const MapPlanes& obSecond, const Vector2d& obIntermediateResolution,
                            float* pfResultX, float* pfResultY);

  // The result of a composition: a map of obOutputResolution whose input size is
  // obInputResolution. When bWritesAll (every element will be written) its tables are left
  // unfilled, otherwise every element starts without a source. Raises ENOMEM "No memory for map"
  // when the map cannot be made.
  static ImageMap* NewCombinedMap(const Vector2d& obOutputResolution, const Vector2d& obInputResolution,
                                  bool bWritesAll);
};

}  // namespace libdewarp
}  // namespace vemo
