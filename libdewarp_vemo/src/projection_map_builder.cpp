#include <libdewarp_vemo/projection_map_builder.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <memory>
#include <vector>

#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/shift_scale_functor.h>
#include <libdewarp_vemo/vector_2d.h>

#include "map_rows.h"

namespace vemo {
namespace libdewarp {

namespace {

// The composition of a dense map S of the output size over the projection map P, with S's rows
// computed one at a time into a reusable row buffer and composed at once, S itself never stored.
// The rows are those of the dense build over the output grid and each is composed as the combined
// build composes it, so the result is bit for bit the combined build of S over P.
class RowByRowComposition : public MapRows {
public:
  // Whether S has pixels: whole-pixel tables of at least one row and one column.
  static bool HasPixels(const Resolution& obOutputResolution) {
    return CropCoversOutput(obOutputResolution, obOutputResolution);
  }

  static ImageMap* Build(const Resolution& obOutputResolution, ImageMap& obProjectionMap, MapFunctor& pfnShiftScale) {
    // S's tables, as its dense build would make them (every element written), and its grid.
    const MapPlanes obFirst = {nullptr, nullptr, static_cast<int>(obOutputResolution.X),
                               static_cast<int>(obOutputResolution.Y)};
    const CropGrid obGrid = GetCropGrid(obOutputResolution, obOutputResolution, obFirst);
    const Vector2d obFirstSize(static_cast<float>(obFirst.nWidth), static_cast<float>(obFirst.nHeight));
    // S's tables hold exactly its size, so the combined build would write every element and
    // leave the result unfilled; so does this one.
    std::unique_ptr<ImageMap> pobResult(NewCombinedMap(obFirstSize, obProjectionMap.GetInputSize(), true));

    const MapPlanes obResult = GetPlanes(*pobResult);
    const MapPlanes obSecond = GetPlanes(obProjectionMap);
    const Vector2d obIntermediateResolution = obProjectionMap.GetMapSize();
    const Vector2d obInputOffset = obOutputResolution.Centre();
    const int nRows = obResult.nHeight < obGrid.nRows ? obResult.nHeight : obGrid.nRows;
    const int nCols = obResult.nWidth < obGrid.nCols ? obResult.nWidth : obGrid.nCols;
    std::vector<float> afRowX(static_cast<std::size_t>(obGrid.nCols));
    std::vector<float> afRowY(static_cast<std::size_t>(obGrid.nCols));
    // The crop is the whole output, so grid row j and column k are S's row j and column k.
    for (int j = 0; j < nRows; ++j) {
      FillDenseRow(pfnShiftScale, obGrid.fLeft, obGrid.fTop + static_cast<float>(j), obGrid.nCols, obInputOffset,
                   afRowX.data(), afRowY.data());
      ComposeRow(afRowX.data(), afRowY.data(), nCols, obSecond, obIntermediateResolution,
                 obResult.pfX + j * obResult.nWidth, obResult.pfY + j * obResult.nWidth);
    }
    return pobResult.release();
  }
};

// The projection map P behind a shift/scale map S of the output size: each output pixel looks up
// S and then samples P there. S is cheap to compute but as large as the output, so it is not
// stored: it is computed row by row and each row composed with P at once, which saves writing and
// reading back two output-sized tables and gives the same result. An output without pixels gives
// an S without elements, composed by the builders themselves. P is freed at the end, also when a
// step throws.
ImageMap* Compose(const Resolution& obOutputResolution, ImageMap* pobProjectionMap, const Vector2d& obShift,
                  const Vector2d& obScale) {
  boost::shared_ptr<ImageMap> pobProjection(pobProjectionMap);
  ShiftScaleFunctor obFunctor(obShift, obScale);
  if (!RowByRowComposition::HasPixels(obOutputResolution)) {
    boost::shared_ptr<ImageMap> pobShiftScale(
        LinearMapBuilder().BuildImageMap(obOutputResolution, obOutputResolution, obFunctor));
    return CombinedMapBuilder().BuildImageMap(*pobShiftScale, *pobProjection);
  }
  return RowByRowComposition::Build(obOutputResolution, *pobProjection, obFunctor);
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
