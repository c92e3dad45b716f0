#include <libdewarp_vemo/projection_map_builder.h>

#include <boost/shared_ptr.hpp>

#include <cmath>
#include <cstddef>
#include <limits>
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

// The composition of S over the projection map P, S's rows filled one at a time into a reusable
// row buffer and composed at once, S itself never stored. Each row is composed as the combined
// build composes it, so the result is bit for bit the combined build of S over P.
class RowByRowComposition : public MapRows {
public:
  // The shift/scale map S of the output size, row by row, as its dense build over the output grid
  // makes it: element k of row j is the ShiftScaleFunctor's value (p + shift) * scale at the
  // centred point p = (fLeft + k, fTop + j), plus the output centre. The same float operations in
  // the same order as the functor and the dense row step, so bit for bit the dense build's; written
  // out as a plain loop that vectorises, where the functor would cost a virtual call per element.
  // S's y is the same along a row.
  class ShiftScaleRows {
  public:
    ShiftScaleRows(const Resolution& obOutputResolution, const Vector2d& obShift, const Vector2d& obScale)
        : m_obShift(obShift), m_obScale(obScale), m_obCentre(obOutputResolution.Centre()) {
      const MapPlanes obTables = {nullptr, nullptr, static_cast<int>(obOutputResolution.X),
                                  static_cast<int>(obOutputResolution.Y)};
      m_obGrid = GetCropGrid(obOutputResolution, obOutputResolution, obTables);
    }

    int Rows() const { return m_obGrid.nRows; }
    int Cols() const { return m_obGrid.nCols; }

    float RowY(int j) const {
      return ((m_obGrid.fTop + static_cast<float>(j)) + m_obShift.Y) * m_obScale.Y + m_obCentre.Y;
    }

    void FillRow(int j, float* pfX, float* pfY) const {
      const float fY = RowY(j);
      for (int k = 0; k < m_obGrid.nCols; ++k) {
        pfX[k] = ((m_obGrid.fLeft + static_cast<float>(k)) + m_obShift.X) * m_obScale.X + m_obCentre.X;
        pfY[k] = fY;
      }
    }

    // The rows of a map nHeight rows high that a composition of S over it reads: the whole rows
    // around S's smallest and largest finite y, with a row to spare on either side, within the map.
    // Empty (first above last) when S has no finite y.
    void GetReadRows(int nHeight, int& nFirst, int& nLast) const {
      float fLow = 0.0f, fHigh = -1.0f;
      for (int j = 0; j < m_obGrid.nRows; ++j) {
        const float fY = RowY(j);
        if (!std::isfinite(fY)) continue;
        if (fHigh < fLow) {
          fLow = fHigh = fY;
        } else {
          fLow = std::fmin(fLow, fY);
          fHigh = std::fmax(fHigh, fY);
        }
      }
      if (fHigh < fLow) {
        nFirst = 1;
        nLast = 0;
        return;
      }
      const float fLimit = static_cast<float>(nHeight);
      nFirst = static_cast<int>(std::fmin(std::fmax(std::floor(fLow) - 1.0f, 0.0f), fLimit));
      nLast = static_cast<int>(std::fmin(std::fmax(std::ceil(fHigh) + 1.0f, -1.0f), fLimit - 1.0f));
    }

  private:
    Vector2d m_obShift, m_obScale, m_obCentre;
    CropGrid m_obGrid;
  };

  // Whether S has pixels: whole-pixel tables of at least one row and one column.
  static bool HasPixels(const Resolution& obOutputResolution) {
    return CropCoversOutput(obOutputResolution, obOutputResolution);
  }

  static ImageMap* Build(const Resolution& obOutputResolution, ImageMap& obProjectionMap, const ShiftScaleRows& obRows) {
    const Vector2d obFirstSize(static_cast<float>(static_cast<int>(obOutputResolution.X)),
                               static_cast<float>(static_cast<int>(obOutputResolution.Y)));
    // S's tables hold exactly its size, so the combined build would write every element and
    // leave the result unfilled; so does this one.
    std::unique_ptr<ImageMap> pobResult(NewCombinedMap(obFirstSize, obProjectionMap.GetInputSize(), true));

    const MapPlanes obResult = GetPlanes(*pobResult);
    const MapPlanes obSecond = GetPlanes(obProjectionMap);
    const Vector2d obIntermediateResolution = obProjectionMap.GetMapSize();
    const int nRows = obResult.nHeight < obRows.Rows() ? obResult.nHeight : obRows.Rows();
    const int nCols = obResult.nWidth < obRows.Cols() ? obResult.nWidth : obRows.Cols();
    std::vector<float> afRowX(static_cast<std::size_t>(obRows.Cols()));
    std::vector<float> afRowY(static_cast<std::size_t>(obRows.Cols()));
    // S's x is the same in every row; where it is the column itself (unit horizontal scale and a
    // whole shift, as the panoramic views have), each row reads two rows of P straight through.
    obRows.FillRow(0, afRowX.data(), afRowY.data());
    bool bRun = true;
    for (int k = 0; k < nCols; ++k) bRun = bRun && afRowX[k] == static_cast<float>(k) && !std::signbit(afRowX[k]);
    // The crop is the whole output, so grid row j and column k are S's row j and column k.
    for (int j = 0; j < nRows; ++j) {
      float* const pfResultX = obResult.pfX + j * obResult.nWidth;
      float* const pfResultY = obResult.pfY + j * obResult.nWidth;
      if (bRun) {
        ComposeRunRow(obRows.RowY(j), nCols, obSecond, obIntermediateResolution, pfResultX, pfResultY);
        continue;
      }
      obRows.FillRow(j, afRowX.data(), afRowY.data());
      ComposeRow(afRowX.data(), afRowY.data(), nCols, obSecond, obIntermediateResolution, pfResultX, pfResultY);
    }
    return pobResult.release();
  }
};

// The shift/scale map S of the output size over the projection map P: each output pixel looks up
// S and then samples P there. S is cheap to compute but as large as the output, so it is not
// stored: it is computed row by row and each row composed with P at once, which saves writing and
// reading back two output-sized tables and gives the same result. P is built only in the rows S
// reads (fnBuildRows builds P's rows first to last): the rest of it would never be looked at. An
// output without pixels gives an S without elements, composed by the builders themselves over the
// whole of P. P is freed at the end, also when a step throws.
template <typename BuildRows>
ImageMap* Compose(const Resolution& obOutputResolution, const Vector2d& obShift, const Vector2d& obScale,
                  BuildRows fnBuildRows) {
  if (!RowByRowComposition::HasPixels(obOutputResolution)) {
    boost::shared_ptr<ImageMap> pobProjection(fnBuildRows(0, std::numeric_limits<int>::max()));
    ShiftScaleFunctor obFunctor(obShift, obScale);
    boost::shared_ptr<ImageMap> pobShiftScale(
        LinearMapBuilder().BuildImageMap(obOutputResolution, obOutputResolution, obFunctor));
    return CombinedMapBuilder().BuildImageMap(*pobShiftScale, *pobProjection);
  }
  const RowByRowComposition::ShiftScaleRows obRows(obOutputResolution, obShift, obScale);
  int nFirst = 0, nLast = -1;
  obRows.GetReadRows(static_cast<int>(obOutputResolution.Y), nFirst, nLast);
  boost::shared_ptr<ImageMap> pobProjection(fnBuildRows(nFirst, nLast));
  return RowByRowComposition::Build(obOutputResolution, *pobProjection, obRows);
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
  ProjectionFunctor obFunctor(eCameraType, eProjection, fFocalLength, Projection::IdentityScale);
  return Compose(obOutputResolution, obShift, obScale, [&](int nFirstRow, int nLastRow) {
    return BuildRowBand(obInputResolution, obOutputResolution, obFunctor, nFirstRow, nLastRow);
  });
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
  ProjectionFunctor obFunctor(eProjection, eCameraType, fFocalLength, Projection::IdentityScale);
  return Compose(obOutputResolution, obShift, obScale, [&](int nFirstRow, int nLastRow) {
    return BuildRowBand(obInputResolution, obOutputResolution, obFunctor, nFirstRow, nLastRow);
  });
}

}  // namespace libdewarp
}  // namespace vemo
