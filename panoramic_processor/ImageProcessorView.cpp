// The perspective view: a virtual pan/tilt/zoom camera looking into the fisheye circle.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "ImageProcessor.h"
#include "ImageProcessorPixels.h"

using namespace image_processor_pixels;

namespace {

// Everything a view rebuild needs besides the column tables, fixed for one frame.
struct ViewGeometry {
  int HalfWidth;     // the view covers 2 x HalfWidth columns and 2 x HalfHeight rows
  int HalfHeight;
  int MapWidth;      // map entries per output row (the output width)
  int StepY;         // input rows per output row
  double SinTilt;
  double CosTilt;
  double SinPan;
  double CosPan;
  double Radius;     // R, the fisheye circle's radius
  double Focal;      // F = zoom x R, the virtual camera's focal length in input pixels
  int CenterX;
  int CenterY;
  int InputWidth;
  int InputHeight;
  bool Invert;
  bool InterpolateNow;
};

double DegreesToRadians(double degrees) {
  return degrees * kPi / 180;
}

// Source pixel of one output pixel, or x = y = -1 when there is none, with its fractions.
struct ViewSource {
  int X;
  int Y;
  float FractionX;
  float FractionY;
};

inline ViewSource LocateSource(const ViewGeometry& g, double square, double panCosine, double panSine,
                               double a, double b, double c) {
  ViewSource found = {-1, -1, 0.0f, 0.0f};
  const double s = g.Radius / std::sqrt(square + a);
  const double dx = (panCosine - b) * s;
  const double dy = (panSine - c) * s;
  // Written so that a NaN offset (a degenerate circle) also counts as outside.
  if (!(dx * dx + dy * dy < g.Radius * g.Radius)) {
    return found;
  }
  const long long x = g.CenterX + static_cast<long long>(dx);
  const long long y = g.CenterY + static_cast<long long>(dy);
  if (x < 0 || y < 0 || x >= g.InputWidth || y >= g.InputHeight) {
    return found;
  }
  found.X = static_cast<int>(x);
  found.Y = static_cast<int>(y);
  found.FractionX = static_cast<float>(dx - std::floor(dx));
  found.FractionY = static_cast<float>(dy - std::floor(dy));
  return found;
}

// Renders the view while building its map (map and fractions null when not caching).
struct ViewBuilder {
  template <int B>
  static void Run(const ViewGeometry& g, const ImageProcessorPrivateData& tables,
                  ImageProcessorMapEntry* map, float* fractions, const PixelSource& source,
                  const PixelTarget& target, int bytesPerPixel) {
    const int n = PixelSize<B>::Get(bytesPerPixel);
    const int columns = 2 * g.HalfWidth;
    for (int j = -g.HalfHeight; j < g.HalfHeight; ++j) {
      const double v = static_cast<double>(j) * g.StepY;
      const int row = g.Invert ? g.HalfHeight - j - 1 : g.HalfHeight + j;
      ImageProcessorMapEntry* rowMap = map != NULL ? map + static_cast<std::size_t>(row) * g.MapWidth : NULL;
      float* rowFractions = fractions != NULL ? fractions + 2 * static_cast<std::size_t>(row) * g.MapWidth : NULL;
      unsigned char* out = row < target.Rows ? target.Data + row * target.Stride : NULL;
      const int writable = out != NULL ? std::min(columns, target.Columns) : 0;
      if (v * g.SinTilt + g.Focal * g.CosTilt < 0) {
        // The whole row looks away from the lens.
        if (rowMap != NULL) {
          std::fill(rowMap, rowMap + columns, ImageProcessorNoSource);
        }
        if (writable > 0) {
          std::memset(out, 0, static_cast<std::size_t>(writable) * n);
        }
        continue;
      }
      const double a = v * v + g.Focal * g.Focal;
      // The factor 2 on the focal terms belongs to the mapping.
      const double b = v * g.SinPan * g.CosTilt - 2 * g.Focal * g.SinTilt * g.SinPan;
      const double c = -v * g.CosPan * g.CosTilt + 2 * g.Focal * g.SinTilt * g.CosPan;
      for (int i = -g.HalfWidth; i < g.HalfWidth; ++i) {
        const int k = g.Invert ? g.HalfWidth - i - 1 : g.HalfWidth + i;
        const int column = g.HalfWidth + i;
        const ViewSource found = LocateSource(g, tables.ColumnSquares[k], tables.ColumnPanCosines[k],
                                              tables.ColumnPanSines[k], a, b, c);
        if (rowMap != NULL) {
          rowMap[column] = found.X < 0 ? ImageProcessorNoSource : ImageProcessorEncodeSource(found.X, found.Y);
          rowFractions[2 * column] = found.FractionX;
          rowFractions[2 * column + 1] = found.FractionY;
        }
        if (column < writable) {
          WritePixel<B>(out + static_cast<std::ptrdiff_t>(column) * n, source, n, found.X, found.Y,
                        g.InterpolateNow, found.FractionX, found.FractionY);
        }
      }
    }
  }
};

}  // namespace

void ImageProcessor::InnerProcessImage() {
  ImageProcessorPrivateData& tables = *_privateData;
  const int width = _params.OutputImageWidth;
  const int height = _params.OutputImageHeight;
  // Nothing to draw, or no column tables (after a failed SetParameters).
  if (width < 1 || height < 1 || tables.ColumnCount < static_cast<std::size_t>(width)) {
    return;
  }
  const int bytesPerPixel = _inputData.BitsPerPixel / 8;
  const PixelSource source = MakeSource(_inputData, _params, bytesPerPixel);
  const PixelTarget target = MakeTarget(_outputData, bytesPerPixel);
  const ImageProcessorPrecisionMode mode = _params.OutputImagePrecisionMode;
  const bool caching = _params.UseOutputImageMapCache && tables.ViewMap != NULL &&
                       tables.ViewMapCount == static_cast<std::size_t>(width) * static_cast<std::size_t>(height);

  ViewGeometry g;
  g.HalfWidth = width / 2;
  g.HalfHeight = height / 2;
  g.MapWidth = width;

  if (caching && tables.ViewMapValid && _pan == tables.MapPan && _tilt == tables.MapTilt &&
      _zoom == tables.MapZoom) {
    DispatchPixelSize<MapReplay>(bytesPerPixel, tables.ViewMap, tables.ViewFractions,
                                 static_cast<std::size_t>(width), 2 * g.HalfHeight, 2 * g.HalfWidth,
                                 source, target, bytesPerPixel, mode != PrecisionModeOff);
    return;
  }

  // The virtual camera tilts a third as far as asked: 90 degrees of tilt look 30 degrees down.
  const double tilt = DegreesToRadians(_tilt / 90 * 30);
  const double pan = DegreesToRadians(_pan);
  g.SinTilt = std::sin(tilt);
  g.CosTilt = std::cos(tilt);
  g.SinPan = std::sin(pan);
  g.CosPan = std::cos(pan);
  g.Radius = _params.InputImageRadius;
  g.Focal = _zoom * g.Radius;
  // The output samples the input at whole-pixel steps.
  const int stepX = _params.InputImageWidth / width;
  g.StepY = _params.InputImageHeight / height;
  g.CenterX = _params.InputImageCenterX;
  g.CenterY = _params.InputImageCenterY;
  g.InputWidth = _params.InputImageWidth;
  g.InputHeight = _params.InputImageHeight;
  g.Invert = _params.OutputImageInvert;
  g.InterpolateNow = mode == PrecisionModeOn;

  for (int i = -g.HalfWidth; i < g.HalfWidth; ++i) {
    const double u = static_cast<double>(i) * stepX;
    const int k = g.HalfWidth + i;
    tables.ColumnSquares[k] = u * u;
    tables.ColumnPanCosines[k] = u * g.CosPan;
    tables.ColumnPanSines[k] = u * g.SinPan;
  }

  ImageProcessorMapEntry* map = caching ? tables.ViewMap : NULL;
  float* fractions = caching ? tables.ViewFractions : NULL;
  DispatchPixelSize<ViewBuilder>(bytesPerPixel, g, tables, map, fractions, source, target, bytesPerPixel);

  if (caching) {
    // Marked valid only now that the map has been built completely.
    tables.ViewMapValid = true;
    tables.MapPan = _pan;
    tables.MapTilt = _tilt;
    tables.MapZoom = _zoom;
  }
}
