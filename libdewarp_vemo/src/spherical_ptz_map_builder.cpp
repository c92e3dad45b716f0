#include <libdewarp_vemo/spherical_ptz_map_builder.h>

#include <memory>

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

// One virtual camera over the whole base map.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos,
                                                float fFocalLength) {
  const Resolution obInputResolution(obImageMap.GetInputSize());
  const Resolution obOutputResolution(obImageMap.GetMapSize());
  SphericalPtzFunctor obFunctor(obPtzPos, fFocalLength, obImageMap);
  // Through the virtual operation, so the sparse builder of the base class builds the map.
  return BuildImageMap(obInputResolution, obOutputResolution, obFunctor, obOutputResolution);
}

// Two panes stacked: pane 1 on top, pane 2 below, each the full width and half the height.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                                const PtzPosition& obPtzPos2, float fFocalLength) {
  const Vector2d obOutputSize = obImageMap.GetMapSize();
  std::unique_ptr<ImageMap> pobResult(new ImageMap(obOutputSize));
  pobResult->SetInputSize(obImageMap.GetInputSize());

  const Resolution obPane(obOutputSize.X, FloatingPoint::floor(0.5f * obOutputSize.Y));
  BuildPane(*pobResult, obImageMap, obPtzPos1, fFocalLength, obPane, Vector2d(0.0f, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos2, fFocalLength, obPane, Vector2d(0.0f, obPane.Y));
  return pobResult.release();
}

// Four panes in a 2 x 2 grid, in reading order: top-left, top-right, bottom-left, bottom-right.
ImageMap* SphericalPtzMapBuilder::BuildImageMap(const ImageMap& obImageMap, const PtzPosition& obPtzPos1,
                                                const PtzPosition& obPtzPos2, const PtzPosition& obPtzPos3,
                                                const PtzPosition& obPtzPos4, float fFocalLength) {
  const Vector2d obOutputSize = obImageMap.GetMapSize();
  std::unique_ptr<ImageMap> pobResult(new ImageMap(obOutputSize));
  pobResult->SetInputSize(obImageMap.GetInputSize());

  const Resolution obPane(FloatingPoint::floor(0.5f * obOutputSize.X), FloatingPoint::floor(0.5f * obOutputSize.Y));
  BuildPane(*pobResult, obImageMap, obPtzPos1, fFocalLength, obPane, Vector2d(0.0f, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos2, fFocalLength, obPane, Vector2d(obPane.X, 0.0f));
  BuildPane(*pobResult, obImageMap, obPtzPos3, fFocalLength, obPane, Vector2d(0.0f, obPane.Y));
  BuildPane(*pobResult, obImageMap, obPtzPos4, fFocalLength, obPane, Vector2d(obPane.X, obPane.Y));
  return pobResult.release();
}

void SphericalPtzMapBuilder::BuildPane(ImageMap& obResult, const ImageMap& obImageMap, const PtzPosition& obPtzPos,
                                       float fFocalLength, const Resolution& obPaneResolution,
                                       const Vector2d& obOffset) {
  const Resolution obInputResolution(obImageMap.GetInputSize());
  SphericalPtzFunctor obFunctor(obPtzPos, fFocalLength, obImageMap);
  boost::shared_ptr<ImageMap> pobPane(
      BuildImageMap(obInputResolution, obPaneResolution, obFunctor, obPaneResolution));
  if (!pobPane) return;
  const int nCols = static_cast<int>(pobPane->GetMapWidth());
  const int nRows = static_cast<int>(pobPane->GetMapHeight());
  const int nOffsetX = static_cast<int>(obOffset.X);
  const int nOffsetY = static_cast<int>(obOffset.Y);
  for (int y = 0; y < nRows; ++y) {
    for (int x = 0; x < nCols; ++x) {
      obResult.SetMapItem(x + nOffsetX, y + nOffsetY, pobPane->GetMapItem(x, y));
    }
  }
}

}  // namespace libdewarp
}  // namespace vemo
