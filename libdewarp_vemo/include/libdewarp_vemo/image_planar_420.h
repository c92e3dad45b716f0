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

  // The source must be an ImagePlanar420 (std::bad_cast otherwise). Both return true.
  bool NnInterpolation(const Image& src, const Map& mapX, const Map& mapY) override;
  bool LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY) override;
};

}  // namespace libdewarp
}  // namespace vemo
