// The 360-degree panorama: the fisheye ring unrolled into a strip, rim at the top and centre
// at the bottom.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "ImageProcessor.h"
#include "ImageProcessorPixels.h"

using namespace image_processor_pixels;

namespace {

// The strip spans an arc of 1.33 pi radii, and each column step of the arc turns the angle by
// 1 / (1.33 radius) radians, so that the whole strip goes once around the circle.
const double kArcRadii = 4.178318229274425;
const double kAnglePerArcPixel = 1.5037593984962405;

struct PanoramaGeometry {
  int Width;         // Wp
  int Height;        // Hp
  int Radius;        // R
  long long StepX;   // arc pixels per output column
  int StepY;         // radius pixels per output row
  int CenterX;
  int CenterY;
  int InputWidth;
  int InputHeight;
  bool Invert;
  bool InterpolateNow;
};

// Renders the panorama while building its map (map and fractions null when not caching).
struct PanoramaBuilder {
  template <int B>
  static void Run(const PanoramaGeometry& g, ImageProcessorMapEntry* map, float* fractions,
                  const PixelSource& source, const PixelTarget& target, int bytesPerPixel) {
    const int n = PixelSize<B>::Get(bytesPerPixel);
    const double radius = g.Radius;
    for (int r = 0; r < g.Height; ++r) {
      const int row = g.Invert ? g.Height - 1 - r : r;
      ImageProcessorMapEntry* rowMap = map != NULL ? map + static_cast<std::size_t>(row) * g.Width : NULL;
      float* rowFractions = fractions != NULL ? fractions + 2 * static_cast<std::size_t>(row) * g.Width : NULL;
      unsigned char* out = row < target.Rows ? target.Data + row * target.Stride : NULL;
      const int writable = out != NULL ? std::min(g.Width, target.Columns) : 0;
      // Top rows sample near the rim, bottom rows near the centre.
      const double rho =
          std::sin((static_cast<double>(g.Radius - r * g.StepY) / radius * 0.75 + 0.1) * kPi / 2) * radius - 1;
      for (int column = 0; column < g.Width; ++column) {
        const int arcColumn = g.Invert ? g.Width - 1 - column : column;
        const double angle = static_cast<double>(arcColumn * g.StepX) * kAnglePerArcPixel / radius;
        const double dx = rho * std::cos(angle);
        const double dy = rho * std::sin(angle);
        // Only the input rectangle limits the panorama.
        const long long x = g.CenterX + static_cast<long long>(dx);
        const long long y = g.CenterY + static_cast<long long>(dy);
        const bool inside = x >= 0 && y >= 0 && x < g.InputWidth && y < g.InputHeight;
        const float fx = inside ? static_cast<float>(dx - std::floor(dx)) : 0.0f;
        const float fy = inside ? static_cast<float>(dy - std::floor(dy)) : 0.0f;
        if (rowMap != NULL) {
          rowMap[column] = inside ? ImageProcessorEncodeSource(static_cast<int>(x), static_cast<int>(y))
                                  : ImageProcessorNoSource;
          rowFractions[2 * column] = fx;
          rowFractions[2 * column + 1] = fy;
        }
        if (column < writable) {
          WritePixel<B>(out + static_cast<std::ptrdiff_t>(column) * n, source, n,
                        inside ? static_cast<int>(x) : -1, inside ? static_cast<int>(y) : -1,
                        g.InterpolateNow, fx, fy);
        }
      }
    }
  }
};

}  // namespace

void ImageProcessor::InnerProcessPanoramaImage() {
  ImageProcessorPrivateData& tables = *_privateData;
  const int width = _params.OutputPanoramaImageWidth;
  const int height = _params.OutputPanoramaImageHeight;
  const int radius = _params.InputImageRadius;
  // Nothing is drawn for an empty strip or a circle without radius; the map is then left
  // invalid, so that later calls leave the output untouched as well.
  if (width < 1 || height < 1 || radius < 1) {
    return;
  }
  const int bytesPerPixel = _inputData.BitsPerPixel / 8;
  const PixelSource source = MakeSource(_inputData, _params, bytesPerPixel);
  const PixelTarget target = MakeTarget(_outputPanoramaData, bytesPerPixel);
  const ImageProcessorPrecisionMode mode = _params.OutputPanoramaImagePrecisionMode;
  const bool caching = _params.UseOutputPanoramaImageMapCache && tables.PanoramaMap != NULL &&
                       tables.PanoramaMapCount == static_cast<std::size_t>(width) * static_cast<std::size_t>(height);

  // The panorama does not depend on pan, tilt or zoom: one map serves until SetParameters.
  if (caching && tables.PanoramaMapValid) {
    DispatchPixelSize<MapReplay>(bytesPerPixel, tables.PanoramaMap, tables.PanoramaFractions,
                                 static_cast<std::size_t>(width), height, width, source, target,
                                 bytesPerPixel, mode != PrecisionModeOff);
    return;
  }

  PanoramaGeometry g;
  g.Width = width;
  g.Height = height;
  g.Radius = radius;
  g.StepX = static_cast<long long>(radius * kArcRadii) / width;
  g.StepY = radius / height;
  g.CenterX = _params.InputImageCenterX;
  g.CenterY = _params.InputImageCenterY;
  g.InputWidth = _params.InputImageWidth;
  g.InputHeight = _params.InputImageHeight;
  g.Invert = _params.OutputPanoramaImageInvert;
  g.InterpolateNow = mode == PrecisionModeOn;

  ImageProcessorMapEntry* map = caching ? tables.PanoramaMap : NULL;
  float* fractions = caching ? tables.PanoramaFractions : NULL;
  DispatchPixelSize<PanoramaBuilder>(bytesPerPixel, g, map, fractions, source, target, bytesPerPixel);

  if (caching) {
    tables.PanoramaMapValid = true;
  }
}
