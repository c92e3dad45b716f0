#include <libdewarp_vemo/remap.h>

#include <libdewarp_vemo/image.h>
#include <libdewarp_vemo/map.h>

#include <cstddef>
#include <stdexcept>

namespace vemo {
namespace libdewarp {

std::uint16_t Remap::s_bilinearCoefficient[32][32][4];
const std::uint32_t Remap::s_coeffBits;
bool Remap::s_bilinearCoefficientInit = Remap::InitCoeffs();

bool Remap::InitCoeffs() {
  for (int ky = 0; ky < 32; ++ky) {
    const float wy0 = 1.0f - static_cast<float>(ky) / 32.0f;
    const float wy1 = static_cast<float>(ky) / 32.0f;
    for (int kx = 0; kx < 32; ++kx) {
      const float wx0 = 1.0f - static_cast<float>(kx) / 32.0f;
      const float wx1 = static_cast<float>(kx) / 32.0f;
      const float scale = static_cast<float>(1u << s_coeffBits);
      std::uint16_t* entry = s_bilinearCoefficient[ky][kx];
      entry[0] = static_cast<std::uint16_t>(wx0 * wy0 * scale);
      entry[1] = static_cast<std::uint16_t>(wx1 * wy0 * scale);
      entry[2] = static_cast<std::uint16_t>(wx0 * wy1 * scale);
      entry[3] = static_cast<std::uint16_t>(wx1 * wy1 * scale);
    }
  }
  return true;
}

std::uint32_t Remap::Multiply4(const std::uint16_t* coefficients, std::uint32_t p0, std::uint32_t p1,
                               std::uint32_t p2, std::uint32_t p3) {
  // Truncating, as the floating-point paths do.
  return (coefficients[0] * p0 + coefficients[1] * p1 + coefficients[2] * p2 + coefficients[3] * p3) >>
         s_coeffBits;
}

std::uint8_t Remap::BiLinearInterpolation(const std::uint8_t* plane, unsigned int pitch, unsigned int x,
                                          unsigned int y, unsigned int fraction) {
  const std::uint8_t* p = plane + static_cast<std::size_t>(y) * pitch + x;
  const std::uint16_t* coefficients = s_bilinearCoefficient[(fraction >> 5) & 31u][fraction & 31u];
  return static_cast<std::uint8_t>(Multiply4(coefficients, p[0], p[1], p[pitch], p[pitch + 1]));
}

const std::uint32_t* Remap::CreateBilinenarFixedPointMap(const Map& mapX, const Map& mapY, unsigned int width,
                                                          unsigned int height, unsigned int defaultValue) {
  return mapX.GetFixedPointBuffer(mapY, width, height, defaultValue);
}

void Remap::Execute(const Image& src, Image& dst, const Map& mapX, const Map& mapY,
                    DEWARP_INTERPOLATION eInterpolation) {
  if (dst.GetHeight() != mapX.GetRows() || dst.GetWidth() != mapX.GetCols() || dst.GetHeight() != mapY.GetRows() ||
      dst.GetWidth() != mapY.GetCols()) {
    throw std::invalid_argument("incompatible src maps and dst img!");
  }
  switch (eInterpolation) {
    case NEAREST_NEIGHBOUR_INTERPOLATION:
      dst.NnInterpolation(src, mapX, mapY);
      break;
    case LINEAR_INTERPOLATION:
      dst.LinearInterpolation(src, mapX, mapY);
      break;
    default:
      // Cubic interpolation is not supported: the destination stays as it was.
      break;
  }
}

namespace {

// The generic paths walk the destination that the maps describe, within the tables' storage.
bool GenericSizeFits(const Image& dst, const Map& mapX, const Map& mapY) {
  const std::size_t pixels = static_cast<std::size_t>(dst.GetWidth()) * dst.GetHeight();
  return mapX.GetRows() == dst.GetHeight() && mapX.GetCols() == dst.GetWidth() &&
         mapY.GetRows() == dst.GetHeight() && mapY.GetCols() == dst.GetWidth() &&
         pixels <= mapX.GetAllocatedCount() && pixels <= mapY.GetAllocatedCount();
}

}  // namespace

// Nearest neighbour through the image's own pixel accessors: the maps are rounded to integers
// once (the integer tables stay in the maps); positions outside the source give the default
// pixel.
bool Remap::NnInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  Image& dst = static_cast<Image&>(*this);
  if (!GenericSizeFits(dst, mapX, mapY)) {
    return false;
  }
  mapX.ConfigForInt();
  mapY.ConfigForInt();
  const std::int32_t* pnX = mapX.GetTypePtr<std::int32_t>();
  const std::int32_t* pnY = mapY.GetTypePtr<std::int32_t>();
  Image::PixelChannels pixel;
  pixel.Init(1, 0);
  for (std::uint32_t y = 0; y < dst.GetHeight(); ++y) {
    for (std::uint32_t x = 0; x < dst.GetWidth(); ++x) {
      const std::size_t i = static_cast<std::size_t>(y) * dst.GetWidth() + x;
      // Negative positions become huge unsigned ones, which GetPixel refuses.
      src.GetPixel(static_cast<std::uint32_t>(pnX[i]), static_cast<std::uint32_t>(pnY[i]), pixel);
      dst.SetPixel(x, y, pixel);
    }
  }
  return true;
}

// Bilinear blend through the image's own pixel accessors, channel by channel, with the
// textbook weights and truncation; positions without a right and lower neighbour inside the
// source give the default pixel.
bool Remap::LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  Image& dst = static_cast<Image&>(*this);
  if (!GenericSizeFits(dst, mapX, mapY)) {
    return false;
  }
  mapX.ConfigForFloat();
  mapY.ConfigForFloat();
  const float* pfX = mapX.GetTypePtr<float>();
  const float* pfY = mapY.GetTypePtr<float>();
  const float fMaxX = static_cast<float>(src.GetWidth()) - 1.0f;
  const float fMaxY = static_cast<float>(src.GetHeight()) - 1.0f;
  Image::PixelChannels p00, p10, p01, p11, result;
  p00.Init(1, 0);
  p10.Init(1, 0);
  p01.Init(1, 0);
  p11.Init(1, 0);
  for (std::uint32_t y = 0; y < dst.GetHeight(); ++y) {
    for (std::uint32_t x = 0; x < dst.GetWidth(); ++x) {
      const std::size_t i = static_cast<std::size_t>(y) * dst.GetWidth() + x;
      const float fx = pfX[i];
      const float fy = pfY[i];
      if (!(fx >= 0.0f && fx < fMaxX && fy >= 0.0f && fy < fMaxY)) {
        dst.GetDefaultPixel(result);
        dst.SetPixel(x, y, result);
        continue;
      }
      const std::uint32_t xi = static_cast<std::uint32_t>(fx);
      const std::uint32_t yi = static_cast<std::uint32_t>(fy);
      const float ax = fx - static_cast<float>(xi);
      const float ay = fy - static_cast<float>(yi);
      src.GetPixel(xi, yi, p00);
      src.GetPixel(xi + 1, yi, p10);
      src.GetPixel(xi, yi + 1, p01);
      src.GetPixel(xi + 1, yi + 1, p11);
      result = p00;
      const std::uint32_t channels = p00.channelCount < 4 ? p00.channelCount : 4;
      for (std::uint32_t c = 0; c < channels; ++c) {
        const float value = (1.0f - ax) * (1.0f - ay) * p00.channels[c] + ax * (1.0f - ay) * p10.channels[c] +
                            (1.0f - ax) * ay * p01.channels[c] + ax * ay * p11.channels[c];
        result.channels[c] = static_cast<std::uint8_t>(value);
      }
      dst.SetPixel(x, y, result);
    }
  }
  return true;
}

}  // namespace libdewarp
}  // namespace vemo
