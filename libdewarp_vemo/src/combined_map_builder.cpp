#include <libdewarp_vemo/combined_map_builder.h>

#include <cerrno>
#include <memory>
#include <new>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

CombinedMapBuilder::CombinedMapBuilder() {}

CombinedMapBuilder::CombinedMapBuilder(const CombinedMapBuilder& other) : LinearMapBuilder(other) {}

CombinedMapBuilder& CombinedMapBuilder::operator=(const CombinedMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "CombinedMapBuilder");
  }
  return *this;
}

CombinedMapBuilder::~CombinedMapBuilder() {}

ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap* pobFirstMap, const ImageMap* pobSecondMap) {
  if (pobFirstMap == nullptr || pobSecondMap == nullptr) {
    Error::SetLastError(EINVAL);
    throw Error(DEWARP_LOCATION("CombinedMapBuilder"), EINVAL, "Invalid maps");
  }
  return BuildImageMap(*pobFirstMap, *pobSecondMap);
}

// Per output pixel, the first map gives a position in the intermediate image; the four
// intermediate pixels around it are looked up in the second map and blended bilinearly with the
// fractions of the position above its floor. A position whose four corners do not all lie
// inside the intermediate image leaves the element NaN (the remap paints the default colour).
ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap& obFirstMap, const ImageMap& obSecondMap) {
  const Vector2d obOutputResolution = obFirstMap.GetMapSize();
  const Vector2d obIntermediateResolution = obSecondMap.GetMapSize();
  const Vector2d obInputResolution = obSecondMap.GetInputSize();

  std::unique_ptr<ImageMap> pobResult;
  try {
    pobResult.reset(new (std::nothrow) ImageMap(obOutputResolution));
  } catch (const std::bad_alloc&) {
    pobResult.reset();
  }
  if (!pobResult) {
    Error::SetLastError(ENOMEM);
    throw Error(DEWARP_LOCATION("CombinedMapBuilder"), ENOMEM, "No memory for map");
  }
  pobResult->SetInputSize(obInputResolution);

  const MapPlanes obResult = GetPlanes(*pobResult);
  const MapPlanes obFirst = GetPlanes(const_cast<ImageMap&>(obFirstMap));
  const MapPlanes obSecond = GetPlanes(const_cast<ImageMap&>(obSecondMap));
  const float fWidth = obIntermediateResolution.X;
  const float fHeight = obIntermediateResolution.Y;
  auto inside = [fWidth, fHeight](float fX, float fY) {
    return FloatingPoint::is_greaterequal(fX, 0.0f) && FloatingPoint::is_less(fX, fWidth) &&
           FloatingPoint::is_greaterequal(fY, 0.0f) && FloatingPoint::is_less(fY, fHeight);
  };
  const int nRows = obResult.nHeight < obFirst.nHeight ? obResult.nHeight : obFirst.nHeight;
  const int nCols = obResult.nWidth < obFirst.nWidth ? obResult.nWidth : obFirst.nWidth;
  for (int Y = 0; Y < nRows; ++Y) {
    for (int X = 0; X < nCols; ++X) {
      const float fX = obFirst.pfX[Y * obFirst.nWidth + X];
      const float fY = obFirst.pfY[Y * obFirst.nWidth + X];
      const float fCeilX = FloatingPoint::ceiling(fX);
      const float fCeilY = FloatingPoint::ceiling(fY);
      const float fFloorX = FloatingPoint::floor(fX);
      const float fFloorY = FloatingPoint::floor(fY);
      // obSrc1 = (ceil, ceil), obSrc2 = (floor, floor), obSrc3 = (floor, ceil), obSrc4 = (ceil, floor).
      if (!inside(fCeilX, fCeilY) || !inside(fFloorX, fFloorY) || !inside(fFloorX, fCeilY) ||
          !inside(fCeilX, fFloorY)) {
        continue;
      }
      const int nLeft = static_cast<int>(fFloorX);
      const int nRight = static_cast<int>(fCeilX);
      const int nTop = static_cast<int>(fFloorY);
      const int nBottom = static_cast<int>(fCeilY);
      // The intermediate size is the second map's size, so the corners index its tables.
      if (nRight >= obSecond.nWidth || nBottom >= obSecond.nHeight) {
        continue;
      }
      auto item = [&obSecond](int nColumn, int nRow) {
        const int nIndex = nRow * obSecond.nWidth + nColumn;
        return Vector2d(obSecond.pfX[nIndex], obSecond.pfY[nIndex]);
      };
      const Vector2d obBlend = Bilinear(item(nLeft, nTop), item(nRight, nTop), item(nLeft, nBottom),
                                        item(nRight, nBottom), fX - fFloorX, fY - fFloorY);
      obResult.pfX[Y * obResult.nWidth + X] = obBlend.X;
      obResult.pfY[Y * obResult.nWidth + X] = obBlend.Y;
    }
  }
  return pobResult.release();
}

}  // namespace libdewarp
}  // namespace vemo
