// Builds the map of one, two or four virtual PTZ cameras over a base map (for example a
// projection map of the fisheye). Each pane is built by the sparse builder from a
// SphericalPtzFunctor that looks the PTZ ray up in the base map.
//
// The base map's map size is the size of the result and its input size the result's input
// size. Two panes are stacked (full width, half height each); four panes form a 2 x 2 grid in
// reading order. Rows and columns left over by an odd size stay NaN.
#pragma once

#include <libdewarp_vemo/sparse_map_builder.h>

namespace vemo {
namespace libdewarp {

class ImageMap;
class PtzPosition;
class SphericalPtzFunctor;

class SphericalPtzMapBuilder : public SparseMapBuilder {
public:
  SphericalPtzMapBuilder();
  SphericalPtzMapBuilder(const SphericalPtzMapBuilder& other);
  SphericalPtzMapBuilder& operator=(const SphericalPtzMapBuilder& other);
  virtual ~SphericalPtzMapBuilder();

  using SparseMapBuilder::BuildImageMap;
  // The pane builder: a coarse lattice with a check at every cell's middle (see the source).
  ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                          MapFunctor& pfnMapping, const Resolution& obCrop) override;
  virtual ImageMap* BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos, float fFocalLength);
  virtual ImageMap* BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                  const PtzPosition& obPtzPos2, float fFocalLength);
  virtual ImageMap* BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                  const PtzPosition& obPtzPos2, const PtzPosition& obPtzPos3,
                                  const PtzPosition& obPtzPos4, float fFocalLength);

protected:
  // The no-source test of a pane's lattice: a cell is left without a source at once when every
  // element of the base map that obFunctor's lookups can read for it has none (see
  // SphericalPtzFunctor::NoSourceWithin). obFunctor must outlive the test.
  static NoSourceTest PaneNoSourceTest(const SphericalPtzFunctor& obFunctor);
  // The lattice of one pane of obPaneResolution, built into obResult from obOffset, with the pane's
  // points centred on the pane for the functor; pobNoSource may be null.
  static void BuildPaneLattice(ImageMap& obResult, MapFunctor& pfnMapping, const NoSourceTest* pobNoSource,
                               const Resolution& obInputResolution, const Resolution& obPaneResolution,
                               const Vector2d& obOffset);

private:
  static ImageMap* NewPanedImageMap(const ImageMap& obImageMap, const Resolution& obPane,
                                    const Resolution& obCovered);
  // One pane of obPaneResolution over the base map, built straight into obResult at obOffset.
  void BuildPane(ImageMap& obResult, const ImageMap& obImageMap, const PtzPosition& obPtzPos,
                 float fFocalLength, const Resolution& obPaneResolution, const Vector2d& obOffset);
};

}  // namespace libdewarp
}  // namespace vemo
