// Quadrant-lattice builder: a lattice laid out from the centre outward in each quadrant, bilinear cells checked against the functor and refined where they miss.
#pragma once

#include <libdewarp_vemo/map_builder.h>

namespace vemo {
namespace libdewarp {

class SparseQuadrantMapBuilder : public MapBuilder {
public:
  SparseQuadrantMapBuilder();
  SparseQuadrantMapBuilder(const SparseQuadrantMapBuilder& other);
  SparseQuadrantMapBuilder& operator=(const SparseQuadrantMapBuilder& other);
  virtual ~SparseQuadrantMapBuilder();

  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  MapFunctor& pfnMapping, const Resolution& obCrop);

protected:
  // The map this builder builds over the whole output (the crop the output itself) for a caller
  // that reads only its rows nFirstRow to nLastRow: those rows, and the lattice lines around
  // them, hold exactly the values of the whole build (its cells are independent of one another);
  // the other rows are left without a source. Nothing of the lattice is built outside the band,
  // so a band of half the rows costs about half the calls. An empty band (nFirstRow > nLastRow)
  // gives a map without any source.
  static ImageMap* BuildRowBand(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                MapFunctor& pfnMapping, int nFirstRow, int nLastRow);
};

}  // namespace libdewarp
}  // namespace vemo
