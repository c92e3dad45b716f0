// The per-frame remap: fills a destination frame from a source frame through a pair of
// coordinate maps the size of the destination. The destination image performs it through its
// first two virtual slots; the planar 4:2:0 image supplies the plane-aware versions, every other
// image class the generic per-pixel ones below.
#pragma once

#include <libdewarp_vemo/dewarp.h>

#include <cstdint>

namespace vemo {
namespace libdewarp {

class Image;
class Map;

class Remap {
public:
  // Fixed-point bilinear weights: 15 fraction bits, one entry per pair of 1/32 sub-pixel
  // fractions, [ky][kx] = (w0(kx)w0(ky), w1(kx)w0(ky), w0(kx)w1(ky), w1(kx)w1(ky)) * 32768.
  static const std::uint32_t s_coeffBits = 15;
  static std::uint16_t s_bilinearCoefficient[32][32][4];
  static bool s_bilinearCoefficientInit;

  // Generic per-pixel nearest neighbour (map rounded to integers) through GetPixel / SetPixel.
  virtual bool NnInterpolation(const Image& src, const Map& mapX, const Map& mapY);
  // Generic per-pixel bilinear blend through GetPixel / SetPixel.
  virtual bool LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY);

  // Checks that both maps have the destination's size (else std::invalid_argument
  // "incompatible src maps and dst img!") and runs the interpolation of the mode on dst.
  // CUBIC_INTERPOLATION and unknown modes leave dst as it was.
  static void Execute(const Image& src, Image& dst, const Map& mapX, const Map& mapY,
                      DEWARP_INTERPOLATION eInterpolation);

  // Fills s_bilinearCoefficient; returns true.
  static bool InitCoeffs();
  // Weighted sum of four samples with one coefficient entry, shifted back by s_coeffBits.
  static std::uint32_t Multiply4(const std::uint16_t* coefficients, std::uint32_t p0, std::uint32_t p1,
                                 std::uint32_t p2, std::uint32_t p3);
  // The cached fixed-point table of the map pair: three words per destination pixel,
  // (x >> 5, y >> 5, fraction index) of the positions rounded to 1/32 pixel; pairs of pixels
  // with a position outside width x height get defaultValue as both integer coordinates.
  static const std::uint32_t* CreateBilinenarFixedPointMap(const Map& mapX, const Map& mapY, unsigned int width,
                                                            unsigned int height, unsigned int defaultValue);
  // One fixed-point bilinear sample of a plane at integer (x, y) with the fraction index of the
  // fixed-point table; (x + 1, y + 1) must lie inside the plane.
  static std::uint8_t BiLinearInterpolation(const std::uint8_t* plane, unsigned int pitch, unsigned int x,
                                            unsigned int y, unsigned int fraction);

protected:
  Remap() {}
  Remap(const Remap&) {}
  Remap& operator=(const Remap&) { return *this; }
  // Not virtual here: the image classes add the virtual destructor after the two slots above.
  ~Remap() {}
};

}  // namespace libdewarp
}  // namespace vemo
