#include <libdewarp_vemo/split_map_builder.h>

#include <cerrno>
#include <cmath>
#include <memory>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

SplitMapBuilder::SplitMapBuilder() {}

SplitMapBuilder::SplitMapBuilder(const SplitMapBuilder& other) : LinearMapBuilder(other) {}

SplitMapBuilder& SplitMapBuilder::operator=(const SplitMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "SplitMapBuilder");
  }
  return *this;
}

SplitMapBuilder::~SplitMapBuilder() {}

ImageMap* SplitMapBuilder::BuildImageMap(const ImageMap* pobMap, const Vector2d& obSize) {
  if (pobMap == nullptr) {
    Error::SetLastError(EINVAL);
    throw Error(DEWARP_LOCATION("SplitMapBuilder"), EINVAL, "Invalid map");
  }
  return BuildImageMap(*pobMap, obSize);
}

// The map (W x H) is cut into vertical strips of the new width w, placed one above the other:
// the strip count is floor(W / w); output row r shows row r % H of strip r / H, whose columns
// start at (r / H) * w. Halving the width and doubling the height gives the left half above the
// right half; a quarter of the width and four times the height gives four strips, left to right
// from top to bottom. Output elements with no source (rows beyond the last strip, columns beyond
// the map) stay NaN.
ImageMap* SplitMapBuilder::BuildImageMap(const ImageMap& obMap, const Vector2d& obSize) {
  std::unique_ptr<ImageMap> pobResult(new ImageMap(obSize));
  pobResult->SetInputSize(obMap.GetInputSize());
  const MapPlanes obResult = GetPlanes(*pobResult);
  const MapPlanes obSource = GetPlanes(const_cast<ImageMap&>(obMap));
  if (obResult.nWidth <= 0 || obResult.nHeight <= 0 || obSource.nWidth <= 0 || obSource.nHeight <= 0) {
    return pobResult.release();
  }
  const int nStrips = static_cast<int>(
      std::floor(static_cast<float>(obSource.nWidth) / static_cast<float>(obResult.nWidth)));
  for (int nRow = 0; nRow < obResult.nHeight; ++nRow) {
    const int nStrip = nRow / obSource.nHeight;
    if (nStrip >= nStrips) {
      break;
    }
    const int nSourceRow = nRow % obSource.nHeight;
    const int nFirstColumn = nStrip * obResult.nWidth;
    int nCols = obResult.nWidth;
    if (nFirstColumn + nCols > obSource.nWidth) {
      nCols = obSource.nWidth - nFirstColumn;
    }
    const int nFrom = nSourceRow * obSource.nWidth + nFirstColumn;
    const int nTo = nRow * obResult.nWidth;
    for (int nColumn = 0; nColumn < nCols; ++nColumn) {
      obResult.pfX[nTo + nColumn] = obSource.pfX[nFrom + nColumn];
      obResult.pfY[nTo + nColumn] = obSource.pfY[nFrom + nColumn];
    }
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
