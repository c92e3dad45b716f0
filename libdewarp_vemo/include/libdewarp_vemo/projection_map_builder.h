// Builds the maps from an output projection to the camera's lens image (projection then camera),
// or the reverse direction (camera then projection), optionally behind a shift/scale map.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>

namespace vemo {
namespace libdewarp {

class ProjectionMapBuilder : public SparseQuadrantMapBuilder {
public:
  ProjectionMapBuilder();
  ProjectionMapBuilder(const ProjectionMapBuilder& other);
  ProjectionMapBuilder& operator=(const ProjectionMapBuilder& other);
  virtual ~ProjectionMapBuilder();

  using SparseQuadrantMapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                                  float fFocalLength);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_PROJECTION eProjection, DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                  float fFocalLength);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                                  float fFocalLength, const Vector2d& obShift, const Vector2d& obScale);
  virtual ImageMap* BuildImageMap(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                  DEWARP_PROJECTION eProjection, DEWARP_INTERNAL_CAMERA_TYPE eCameraType,
                                  float fFocalLength, const Vector2d& obShift, const Vector2d& obScale);
};

}  // namespace libdewarp
}  // namespace vemo
