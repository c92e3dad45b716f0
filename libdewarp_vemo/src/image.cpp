#include <libdewarp_vemo/image.h>

#include <libdewarp_vemo/image_planar_420.h>
#include <libdewarp_vemo/log.h>

#include <cstring>
#include <new>
#include <stdexcept>

namespace vemo {
namespace libdewarp {

void Image::PixelChannels::Init(std::uint32_t size, std::uint32_t count) {
  channelSize = size;
  channelCount = count;
  Reset();
}

void Image::PixelChannels::Reset() {
  currentChannel = 0;
  std::memset(channels, 0, sizeof(channels));
}

void Image::PixelChannels::Add(std::uint8_t value) {
  if (currentChannel < sizeof(channels)) {
    channels[currentChannel++] = value;
  }
}

std::uint8_t Image::PixelChannels::Get() const {
  return currentChannel < sizeof(channels) ? channels[currentChannel] : 0;
}

std::uint8_t Image::PixelChannels::Begin() {
  currentChannel = 0;
  return Get();
}

std::uint8_t Image::PixelChannels::Next() {
  if (currentChannel < sizeof(channels)) {
    ++currentChannel;
  }
  return Get();
}

// Indices past the four slots address the last one.
std::uint8_t& Image::PixelChannels::operator[](std::uint32_t index) {
  return channels[index < sizeof(channels) ? index : sizeof(channels) - 1];
}

const std::uint8_t& Image::PixelChannels::operator[](std::uint32_t index) const {
  return channels[index < sizeof(channels) ? index : sizeof(channels) - 1];
}

Image::Image()
    : m_format(YUV420_PLANAR_IMAGE), m_image(nullptr), m_width(0), m_height(0), m_stride(0), m_ownImage(false) {}

Image::Image(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
             std::uint32_t stride, bool ownImage)
    : m_format(format), m_image(data), m_width(width), m_height(height), m_stride(stride), m_ownImage(ownImage) {}

Image::Image(const Image& other)
    : Remap(other), m_format(other.m_format), m_image(other.m_image), m_width(other.m_width),
      m_height(other.m_height), m_stride(other.m_stride), m_ownImage(false) {}

Image::~Image() {
  ClearImage();
}

std::uint32_t Image::GetPixelSize() const {
  return 1;
}

std::uint8_t* Image::ReleaseOwnership() {
  m_ownImage = false;
  return m_image;
}

bool Image::IsValid() const {
  return m_image != nullptr && m_width != 0 && m_height != 0 && m_stride >= m_width;
}

void Image::ClearImage() {
  if (m_ownImage && m_image) {
    delete[] m_image;
    m_image = nullptr;
  }
}

void Image::CreataDataBuffer() {
  ClearImage();
  // Not checked: a failed allocation leaves a null buffer that the image "owns".
  m_image = new (std::nothrow) std::uint8_t[GetBufferSize()];
  m_ownImage = true;
}

void Image::SetImage(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width, std::uint32_t height,
                     std::uint32_t stride, bool ownImage) {
  if (!IsFormatCompatible(format)) {
    throw std::invalid_argument("Incompatible format");
  }
  ClearImage();
  m_format = format;
  m_image = data;
  m_width = width;
  m_height = height;
  m_stride = stride;
  m_ownImage = ownImage;
}

void Image::CopyImage(DEWARP_IMAGE_FORMAT format, const std::uint8_t* data, std::uint32_t width,
                      std::uint32_t height, std::uint32_t stride) {
  if (!IsFormatCompatible(format)) {
    throw std::invalid_argument("Incompatible format");
  }
  // The old buffer is released only after the copy, so that copying from a frame that shares
  // this image's own buffer reads live memory.
  std::uint8_t* previous = m_ownImage ? m_image : nullptr;
  m_format = format;
  m_image = nullptr;
  m_width = width;
  m_height = height;
  m_stride = stride;
  m_ownImage = false;
  const std::uint32_t size = GetBufferSize();
  m_image = new (std::nothrow) std::uint8_t[size];
  m_ownImage = true;
  if (m_image && data && size) {
    std::memcpy(m_image, data, size);
  }
  delete[] previous;
}

Image& Image::operator=(const Image& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Image");
    return *this;
  }
  CopyImage(other.m_format, other.m_image, other.m_width, other.m_height, other.m_stride);
  return *this;
}

Image* Image::ImageClassFactory(const DEWARP_IMAGE& image) {
  if (image.Info.Format != YUV420_PLANAR_IMAGE) {
    return nullptr;
  }
  return new ImagePlanar420(image.Info.Format, static_cast<std::uint8_t*>(image.Data), image.Info.Width,
                            image.Info.Height, image.Info.Stride, false);
}

}  // namespace libdewarp
}  // namespace vemo
