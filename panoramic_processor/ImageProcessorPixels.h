// Pixel access shared by the view and panorama renderers: the readable part of the input, the
// writable part of an output, nearest and bilinear pixel copies, and the cached-map replay.
#ifndef PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PIXELS_H
#define PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PIXELS_H

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "ImageProcessorCommon.h"
#include "ImageProcessorPrivateData.h"

namespace image_processor_pixels {

const double kPi = 3.141592653589793;

// The input as far as it may be read: pixels (x, y) with x < Columns and y < Rows lie inside
// both the configured input rectangle and the input buffer (Height x Stride bytes).
struct PixelSource {
  const unsigned char* Data;
  std::ptrdiff_t Stride;
  int Columns;
  int Rows;
};

// An output as far as it may be written: Rows rows of Columns pixels inside its buffer.
struct PixelTarget {
  unsigned char* Data;
  std::ptrdiff_t Stride;
  int Columns;
  int Rows;
};

inline PixelSource MakeSource(const ImageData& input, const ImageProcessorParams& params,
                              int bytesPerPixel) {
  PixelSource source = {input.Data, input.Stride, 0, 0};
  if (input.Data != NULL && bytesPerPixel > 0 && input.Stride > 0 && input.Height > 0) {
    source.Columns = std::max(0, std::min(params.InputImageWidth, input.Stride / bytesPerPixel));
    source.Rows = std::max(0, std::min(params.InputImageHeight, input.Height));
  }
  return source;
}

inline PixelTarget MakeTarget(const ImageData& output, int bytesPerPixel) {
  PixelTarget target = {output.Data, output.Stride, 0, 0};
  if (output.Data != NULL && bytesPerPixel > 0 && output.Stride > 0 && output.Height > 0) {
    target.Columns = output.Stride / bytesPerPixel;
    target.Rows = output.Height;
  }
  return target;
}

// Bytes per pixel as a compile-time constant for the common sizes; 0 means "given at run time".
template <int B>
struct PixelSize {
  static int Get(int) { return B; }
};
template <>
struct PixelSize<0> {
  static int Get(int bytesPerPixel) { return bytesPerPixel; }
};

// p points at one channel of a pixel; right is bytesPerPixel bytes on, below one stride on.
inline int AveragePixelValue(const unsigned char* p, std::ptrdiff_t stride, int bytesPerPixel,
                             float fx, float fy) {
  return static_cast<int>(p[0] * (1 - fy) * (1 - fx) + p[bytesPerPixel] * (1 - fy) * fx +
                          p[stride] * fy * (1 - fx) + p[stride + bytesPerPixel] * fy * fx);
}

// Writes one output pixel from source (x, y): black when there is no readable source (x or y
// negative or outside the source), bilinear when asked for and the right and lower neighbours
// exist, otherwise the nearest pixel.
template <int B>
inline void WritePixel(unsigned char* out, const PixelSource& source, int bytesPerPixel, int x, int y,
                       bool interpolate, float fx, float fy) {
  const int n = PixelSize<B>::Get(bytesPerPixel);
  if (x < 0 || y < 0 || x >= source.Columns || y >= source.Rows) {
    std::memset(out, 0, n);
    return;
  }
  const unsigned char* in = source.Data + y * source.Stride + static_cast<std::ptrdiff_t>(x) * n;
  if (interpolate && x < source.Columns - 1 && y < source.Rows - 1) {
    for (int channel = 0; channel < n; ++channel) {
      out[channel] = static_cast<unsigned char>(AveragePixelValue(in + channel, source.Stride, n, fx, fy));
    }
  } else {
    std::memcpy(out, in, n);
  }
}

// Replays a cached map over the output rectangle it was built for (rows x columns, mapWidth
// entries per map row): entries with a negative row are black; with precise set, sources
// inside the bilinear bounds are interpolated with the stored fractions, the rest copied.
struct MapReplay {
  template <int B>
  static void Run(const ImageProcessorMapEntry* map, const float* fractions, std::size_t mapWidth,
                  int rows, int columns, const PixelSource& source, const PixelTarget& target,
                  int bytesPerPixel, bool precise) {
    const int n = PixelSize<B>::Get(bytesPerPixel);
    const int writableRows = std::min(rows, target.Rows);
    const int writableColumns = std::min(columns, target.Columns);
    for (int row = 0; row < writableRows; ++row) {
      const ImageProcessorMapEntry* entries = map + row * mapWidth;
      const float* rowFractions = fractions + 2 * row * mapWidth;
      unsigned char* out = target.Data + row * target.Stride;
      for (int column = 0; column < writableColumns; ++column, out += n) {
        const ImageProcessorMapEntry entry = entries[column];
        const int y = ImageProcessorSourceRow(entry);
        const int x = y < 0 ? -1 : ImageProcessorSourceColumn(entry);
        WritePixel<B>(out, source, n, x, y, precise, rowFractions[2 * column],
                      rowFractions[2 * column + 1]);
      }
    }
  }
};

// Calls Renderer::template Run<B>(arguments...) with B fixed for 1, 3 and 4 bytes per pixel.
template <class Renderer, class... Arguments>
void DispatchPixelSize(int bytesPerPixel, Arguments&&... arguments) {
  switch (bytesPerPixel) {
    case 1:
      Renderer::template Run<1>(arguments...);
      break;
    case 3:
      Renderer::template Run<3>(arguments...);
      break;
    case 4:
      Renderer::template Run<4>(arguments...);
      break;
    default:
      Renderer::template Run<0>(arguments...);
      break;
  }
}

}  // namespace image_processor_pixels

#endif  // PANORAMIC_PROCESSOR_IMAGE_PROCESSOR_PIXELS_H
