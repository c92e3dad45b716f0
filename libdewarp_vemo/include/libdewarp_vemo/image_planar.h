// Planar YUV 4:2:0 frame: a Y plane of stride x height bytes followed by the U and V planes,
// each of stride x height / 4 bytes with a row pitch of stride / 2; one chroma sample covers a
// block of 2 x 2 luma pixels. The chroma planes are sized from the stride, as the host's frames
// are laid out.
#pragma once

#include <libdewarp_vemo/image.h>

namespace vemo {
namespace libdewarp {

class ImagePlanar : public Image {
public:
  // Video black.
  static const std::uint8_t s_yDefault = 16;
  static const std::uint8_t s_uDefault = 128;
  static const std::uint8_t s_vDefault = 128;

  // With a null buffer the image allocates (and owns) GetBufferSize() bytes.
  ImagePlanar(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
              std::uint32_t stride, bool ownImage);
  // Always a private deep copy.
  ImagePlanar(const ImagePlanar& other);
  ~ImagePlanar() override;

  std::uint32_t GetBufferSize() const override;
  bool IsFormatCompatible(DEWARP_IMAGE_FORMAT format) const override;
  // New heap ImagePlanar of this format and geometry with an uninitialised buffer of its own.
  Image* CreateBlank() const override;
  // New heap ImagePlanar holding a deep copy.
  Image* CreateCopy() const override;
  std::uint32_t GetChannelCount() const override;
  // Y, U, V of pixel (x, y); outside the image the default pixel and false.
  bool GetPixel(std::uint32_t x, std::uint32_t y, PixelChannels& pixel) const override;
  void GetDefaultPixel(PixelChannels& pixel) const override;
  // Writes channels 0, 1, 2 to Y, U, V; std::invalid_argument "invalid x, y" outside the image.
  void SetPixel(std::uint32_t x, std::uint32_t y, const PixelChannels& pixel) override;
  // Deep copy with the plane pointers recomputed.
  virtual ImagePlanar& operator=(const ImagePlanar& other);

  std::uint32_t GetBlockWidth() const;
  std::uint32_t GetBlockHeight() const;
  std::uint32_t GetLumaBufferSize() const;
  // Both chroma planes together.
  std::uint32_t GetChromaBufferSize() const;
  // Index of the chroma sample of pixel (x, y) within a chroma plane.
  std::uint32_t CalculateOffset(std::uint32_t x, std::uint32_t y) const;

  // Pointer to the sample of pixel (x, y); std::invalid_argument "invalid x, y" outside.
  std::uint8_t* GetYChannel(std::uint32_t x, std::uint32_t y) const;
  std::uint8_t* GetUChannel(std::uint32_t x, std::uint32_t y) const;
  std::uint8_t* GetVChannel(std::uint32_t x, std::uint32_t y) const;
  void SetYChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value);
  void SetUChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value);
  void SetVChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value);

  // Plane starts and chroma pitch as the layout gives them for the current buffer and stride
  // (the stored fields are refreshed by the constructors, SetImage, CopyImage and assignment;
  // these stay right even after an assignment through an Image reference).
  std::uint8_t* GetUBuffer() const { return m_image ? UPlane() : nullptr; }
  std::uint8_t* GetVBuffer() const { return m_image ? VPlane() : nullptr; }
  std::uint32_t GetBlocksPerWidth() const { return GetBlockWidth() ? m_stride / GetBlockWidth() : 0; }

  // As Image's, then the plane pointers are recomputed.
  void SetImage(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
                std::uint32_t stride, bool ownImage);
  void CopyImage(DEWARP_IMAGE_FORMAT format, const std::uint8_t* data, std::uint32_t width,
                 std::uint32_t height, std::uint32_t stride);

protected:
  // Sets m_blocksPerWidth, m_uBuffer and m_vBuffer from the buffer and the stride.
  void UpdatePlanes();
  // Start of the U and V planes of the current buffer (which must not be null).
  std::uint8_t* UPlane() const;
  std::uint8_t* VPlane() const;

  std::uint32_t m_blocksPerWidth;
  std::uint8_t* m_uBuffer;
  std::uint8_t* m_vBuffer;
};

}  // namespace libdewarp
}  // namespace vemo
