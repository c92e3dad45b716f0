// Working tables of the panoramic image processor: the view's column tables and the cached
// source maps of the view and of the panorama.
#ifndef PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PRIVATE_DATA_H
#define PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PRIVATE_DATA_H

#include <cstddef>
#include <cstdint>

#include "ImageProcessorCommon.h"

// A map entry: source column in the low 16 bits, source row in the high 16 bits (read back as
// a signed row, so that a row below 0 means "no source"); all ones when there is no source.
// Inputs therefore stay within 65535 columns and 32767 rows for a cached map.
typedef std::uint32_t ImageProcessorMapEntry;
const ImageProcessorMapEntry ImageProcessorNoSource = 0xFFFFFFFFu;

inline ImageProcessorMapEntry ImageProcessorEncodeSource(int x, int y) {
  return (static_cast<std::uint32_t>(x) & 0xFFFFu) | ((static_cast<std::uint32_t>(y) & 0xFFFFu) << 16);
}
inline int ImageProcessorSourceColumn(ImageProcessorMapEntry entry) {
  return static_cast<int>(entry & 0xFFFFu);
}
inline int ImageProcessorSourceRow(ImageProcessorMapEntry entry) {
  return static_cast<int>(static_cast<std::int16_t>(static_cast<std::uint16_t>(entry >> 16)));
}

// All zero or null after construction.
struct ImageProcessorPrivateData {
  // One entry per output column (OutputImageWidth entries each): u squared, u x cos(pan),
  // u x sin(pan), with u the column's offset from the centre in input pixels.
  double* ColumnSquares;
  double* ColumnPanCosines;
  double* ColumnPanSines;
  // The pan, tilt and zoom for which the view map was built.
  double MapPan;
  double MapTilt;
  double MapZoom;
  bool ViewMapValid;
  bool PanoramaMapValid;
  // One entry per output pixel; present only when the corresponding map cache is used.
  ImageProcessorMapEntry* ViewMap;
  ImageProcessorMapEntry* PanoramaMap;
  // Two fractions (column, row) per output pixel, beside the maps.
  float* ViewFractions;
  float* PanoramaFractions;

  // The sizes the tables above were allocated for (entries, not bytes).
  std::size_t ColumnCount;
  std::size_t ViewMapCount;
  std::size_t PanoramaMapCount;

  ImageProcessorPrivateData();
  ~ImageProcessorPrivateData();
  ImageProcessorPrivateData(const ImageProcessorPrivateData&) = delete;
  ImageProcessorPrivateData& operator=(const ImageProcessorPrivateData&) = delete;

  // Frees every table, clears both valid flags and the stored pan, tilt and zoom.
  void Clear();
  // Clear, then allocates zero-filled tables for the sizes in params. When a table cannot be
  // allocated (an element count too large for the address space) everything is left cleared
  // and std::bad_alloc is thrown.
  void Allocate(const ImageProcessorParams& params);
};

#endif  // PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PRIVATE_DATA_H
