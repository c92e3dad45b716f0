// The engine's wrapper around one frame: pixel format, buffer, geometry and whether the wrapper
// owns the buffer. Frames handed in by the host are wrapped, never copied or freed.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/remap.h>

#include <cstdint>

namespace vemo {
namespace libdewarp {

class Image : public Remap {
public:
  // One pixel as a small list of channel bytes.
  typedef struct _tagPixelChannels {
    std::uint32_t channelSize;     // bytes per channel
    std::uint32_t channelCount;    // number of channels
    std::uint32_t currentChannel;  // next slot to fill or read
    std::uint8_t channels[4];

    void Init(std::uint32_t size, std::uint32_t count);
    // Back to the first slot, every channel zero.
    void Reset();
    // Appends a byte at currentChannel and advances (ignored when all four slots are full).
    void Add(std::uint8_t value);
    // The channel at currentChannel (0 past the last slot).
    std::uint8_t Get() const;
    // Rewinds to the first slot and returns it.
    std::uint8_t Begin();
    // Advances one slot and returns it.
    std::uint8_t Next();
    std::uint8_t& operator[](std::uint32_t index);
    const std::uint8_t& operator[](std::uint32_t index) const;
  } PixelChannels;

  Image();
  Image(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
        std::uint32_t stride, bool ownImage);
  // Copies the description; the copy never owns (and so never frees) the other's buffer.
  Image(const Image& other);
  virtual ~Image();

  virtual std::uint32_t GetBufferSize() const = 0;
  virtual std::uint32_t GetPixelSize() const;
  virtual bool IsFormatCompatible(DEWARP_IMAGE_FORMAT format) const = 0;
  virtual Image* CreateBlank() const = 0;
  virtual Image* CreateCopy() const = 0;
  virtual std::uint32_t GetChannelCount() const = 0;
  virtual bool GetPixel(std::uint32_t x, std::uint32_t y, PixelChannels& pixel) const = 0;
  virtual void GetDefaultPixel(PixelChannels& pixel) const = 0;
  virtual void SetPixel(std::uint32_t x, std::uint32_t y, const PixelChannels& pixel) = 0;

  DEWARP_IMAGE_FORMAT GetFormat() const { return m_format; }
  std::uint8_t* GetImage() const { return m_image; }
  std::uint32_t GetWidth() const { return m_width; }
  std::uint32_t GetHeight() const { return m_height; }
  std::uint32_t GetStride() const { return m_stride; }
  bool GetOwnBuffer() const { return m_ownImage; }
  // Gives up ownership without freeing; returns the buffer, which the caller now owns.
  std::uint8_t* ReleaseOwnership();
  // A buffer is present and the geometry is usable (non-zero sizes, stride not below width).
  bool IsValid() const;

  // Frees an owned buffer; a borrowed one is left alone.
  void ClearImage();
  // Frees an owned buffer and allocates GetBufferSize() uninitialised bytes that the image owns
  // (null if the allocation fails).
  void CreataDataBuffer();
  // Replaces format, buffer and geometry without copying; std::invalid_argument
  // "Incompatible format" (and no change) for a format this class cannot hold.
  void SetImage(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
                std::uint32_t stride, bool ownImage);
  // Deep copy of the described frame into a buffer of the image's own.
  void CopyImage(DEWARP_IMAGE_FORMAT format, const std::uint8_t* data, std::uint32_t width,
                 std::uint32_t height, std::uint32_t stride);
  // Deep copy.
  Image& operator=(const Image& other);

  // A new heap image on the caller's buffer (never copied, never freed) for YUV420_PLANAR_IMAGE,
  // null for any other format. The caller deletes the result.
  static Image* ImageClassFactory(const DEWARP_IMAGE& image);

protected:
  DEWARP_IMAGE_FORMAT m_format;
  std::uint8_t* m_image;
  std::uint32_t m_width;
  std::uint32_t m_height;
  std::uint32_t m_stride;
  bool m_ownImage;
};

}  // namespace libdewarp
}  // namespace vemo
