// Planar YUV 4:2:0 frame with the plane-aware remap: nearest neighbour and bilinear loops that
// walk the destination two rows at a time and produce one chroma sample per 2 x 2 block.
#pragma once

#include <libdewarp_vemo/image_planar.h>

namespace vemo {
namespace libdewarp {

class ImagePlanar420 : public ImagePlanar {
public:
  ImagePlanar420(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
                 std::uint32_t stride, bool ownImage);
  ImagePlanar420(const ImagePlanar420& other);
  ~ImagePlanar420() override;
  using ImagePlanar::operator=;
  // Deep copy, as for any planar image.
  ImagePlanar420& operator=(const ImagePlanar420& other) {
    ImagePlanar::operator=(other);
    return *this;
  }

  // Instruction sets of the remap kernels: WIDEST_KERNELS (the default) lets the bilinear
  // remap use the widest kernels this processor runs (AVX-512, else AVX2, else SSE2);
  // SSE2_KERNELS keeps every remap on the SSE2 baseline; AVX2_KERNELS and AVX512_KERNELS allow
  // at most that set. All give the same bytes; the choice is process-wide and read once per
  // frame (for comparing the kernels, in tests and measurements).
  enum KernelSet { WIDEST_KERNELS = 0, SSE2_KERNELS = 1, AVX2_KERNELS = 2, AVX512_KERNELS = 3 };
  static void SetKernelSet(KernelSet set);
  static KernelSet GetKernelSet();
  // Whether this processor runs the kernels of the set (the widest and SSE2 always).
  static bool IsKernelSetSupported(KernelSet set);

  // The source must be an ImagePlanar420 (std::bad_cast otherwise). Both return true.
  bool NnInterpolation(const Image& src, const Map& mapX, const Map& mapY) override;
  bool LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY) override;
};

}  // namespace libdewarp
}  // namespace vemo
