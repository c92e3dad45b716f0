#include "ImageProcessorPrivateData.h"

#include <new>

namespace {

// Zero-filled array of count elements; null for an empty table.
template <class T>
T* AllocateTable(std::size_t count) {
  return count == 0 ? NULL : new T[count]();
}

}  // namespace

ImageProcessorPrivateData::ImageProcessorPrivateData()
    : ColumnSquares(NULL),
      ColumnPanCosines(NULL),
      ColumnPanSines(NULL),
      MapPan(0),
      MapTilt(0),
      MapZoom(0),
      ViewMapValid(false),
      PanoramaMapValid(false),
      ViewMap(NULL),
      PanoramaMap(NULL),
      ViewFractions(NULL),
      PanoramaFractions(NULL),
      ColumnCount(0),
      ViewMapCount(0),
      PanoramaMapCount(0) {}

ImageProcessorPrivateData::~ImageProcessorPrivateData() {
  Clear();
}

void ImageProcessorPrivateData::Clear() {
  delete[] ColumnSquares;
  delete[] ColumnPanCosines;
  delete[] ColumnPanSines;
  delete[] ViewMap;
  delete[] PanoramaMap;
  delete[] ViewFractions;
  delete[] PanoramaFractions;
  ColumnSquares = ColumnPanCosines = ColumnPanSines = NULL;
  ViewMap = PanoramaMap = NULL;
  ViewFractions = PanoramaFractions = NULL;
  ColumnCount = ViewMapCount = PanoramaMapCount = 0;
  MapPan = MapTilt = MapZoom = 0;
  ViewMapValid = PanoramaMapValid = false;
}

void ImageProcessorPrivateData::Allocate(const ImageProcessorParams& params) {
  Clear();
  // Every count is checked before anything is allocated. The fraction tables hold two floats
  // per pixel, so the pixel counts are checked for twice the size of one float.
  const std::size_t columns = ImageProcessorElementCount(params.OutputImageWidth, 1, sizeof(double));
  const std::size_t viewPixels = params.UseOutputImageMapCache
      ? ImageProcessorElementCount(params.OutputImageWidth, params.OutputImageHeight, 2 * sizeof(float))
      : 0;
  const std::size_t panoramaPixels = params.UseOutputPanoramaImageMapCache
      ? ImageProcessorElementCount(params.OutputPanoramaImageWidth, params.OutputPanoramaImageHeight,
                                   2 * sizeof(float))
      : 0;
  try {
    ColumnSquares = AllocateTable<double>(columns);
    ColumnPanCosines = AllocateTable<double>(columns);
    ColumnPanSines = AllocateTable<double>(columns);
    ColumnCount = columns;
    ViewMap = AllocateTable<ImageProcessorMapEntry>(viewPixels);
    ViewFractions = AllocateTable<float>(2 * viewPixels);
    ViewMapCount = viewPixels;
    PanoramaMap = AllocateTable<ImageProcessorMapEntry>(panoramaPixels);
    PanoramaFractions = AllocateTable<float>(2 * panoramaPixels);
    PanoramaMapCount = panoramaPixels;
  } catch (const std::bad_alloc&) {
    Clear();
    throw;
  }
}
