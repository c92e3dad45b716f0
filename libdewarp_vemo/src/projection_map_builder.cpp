#include <libdewarp_vemo/projection_map_builder.h>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/shift_scale_functor.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

namespace {

// A shift/scale map S of the output size (dense, cheap functor) put in front of the projection
// map P: each output pixel looks up S and then samples P there. P and S are freed at the end,
// also when a step throws.
ImageMap* Compose(const Resolution& obOutputResolution, ImageMap* pobProjectionMap, const Vector2d& obShift,
                  const Vector2d& obScale) {
  boost::shared_ptr<ImageMap> pobProjection(pobProjectionMap);
  ShiftScaleFunctor obFunctor(obShift, obScale);
  boost::shared_ptr<ImageMap> pobShiftScale(
      LinearMapBuilder().BuildImageMap(obOutputResolution, obOutputResolution, obFunctor));
  return CombinedMapBuilder().BuildImageMap(*pobShiftScale, *pobProjection);
}

bool IsRegular(const Vector2d& obShift, const Vector2d& obScale) {
  return obShift == Projection::ZeroShift && obScale == Projection::IdentityScale;
}

}  // namespace

ProjectionMapBuilder::ProjectionMapBuilder() {}

ProjectionMapBuilder::ProjectionMapBuilder(const ProjectionMapBuilder& other) : SparseQuadrantMapBuilder(other) {}

ProjectionMapBuilder& ProjectionMapBuilder::operator=(const ProjectionMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ProjectionMapBuilder");
  }
  return *this;
}

ProjectionMapBuilder::~ProjectionMapBuilder() {}

// Camera then projection: from the lens image to the output projection.
ImageMap* ProjectionMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                              const Resolution& obOutputResolution,
                                              DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                                              float fFocalLength) {
  ProjectionFunctor obFunctor(eCameraType, eProjection, fFocalLength, Projection::IdentityScale);
  return MapBuilder::BuildImageMap(obInputResolution, obOutputResolution, obFunctor);
}

// Projection then camera: output pixel to lens pixel, the direction a dewarping map needs.
ImageMap* ProjectionMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                              const Resolution& obOutputResolution, DEWARP_PROJECTION eProjection,
                                              DEWARP_INTERNAL_CAMERA_TYPE eCameraType, float fFocalLength) {
  ProjectionFunctor obFunctor(eProjection, eCameraType, fFocalLength, Projection::IdentityScale);
  return MapBuilder::BuildImageMap(obInputResolution, obOutputResolution, obFunctor);
}

ImageMap* ProjectionMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                              const Resolution& obOutputResolution,
                                              DEWARP_INTERNAL_CAMERA_TYPE eCameraType, DEWARP_PROJECTION eProjection,
                                              float fFocalLength, const Vector2d& obShift, const Vector2d& obScale) {
  if (IsRegular(obShift, obScale)) {
    DEWARP_LOG_INFO("Building a regular projection map\n");
    return BuildImageMap(obInputResolution, obOutputResolution, eCameraType, eProjection, fFocalLength);
  }
  DEWARP_LOG_INFO("Building a shift/scale projection map\n");
  return Compose(obOutputResolution,
                 BuildImageMap(obInputResolution, obOutputResolution, eCameraType, eProjection, fFocalLength),
                 obShift, obScale);
}

ImageMap* ProjectionMapBuilder::BuildImageMap(const Resolution& obInputResolution,
                                              const Resolution& obOutputResolution, DEWARP_PROJECTION eProjection,
                                              DEWARP_INTERNAL_CAMERA_TYPE eCameraType, float fFocalLength,
                                              const Vector2d& obShift, const Vector2d& obScale) {
  if (IsRegular(obShift, obScale)) {
    DEWARP_LOG_INFO("Building a regular projection map\n");
    return BuildImageMap(obInputResolution, obOutputResolution, eProjection, eCameraType, fFocalLength);
  }
  DEWARP_LOG_INFO("Building a shift/scale projection map\n");
  return Compose(obOutputResolution,
                 BuildImageMap(obInputResolution, obOutputResolution, eProjection, eCameraType, fFocalLength),
                 obShift, obScale);
}

}  // namespace libdewarp
}  // namespace vemo
