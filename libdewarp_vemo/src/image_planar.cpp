#include <libdewarp_vemo/image_planar.h>

#include <libdewarp_vemo/log.h>

#include <cstddef>
#include <stdexcept>

namespace vemo {
namespace libdewarp {

ImagePlanar::ImagePlanar(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width,
                         std::uint32_t height, std::uint32_t stride, bool ownImage)
    : Image(format, data, width, height, stride, ownImage), m_blocksPerWidth(0), m_uBuffer(nullptr),
      m_vBuffer(nullptr) {
  if (!data) {
    CreataDataBuffer();
  }
  UpdatePlanes();
}

ImagePlanar::ImagePlanar(const ImagePlanar& other)
    : Image(other), m_blocksPerWidth(0), m_uBuffer(nullptr), m_vBuffer(nullptr) {
  Image::CopyImage(other.m_format, other.m_image, other.m_width, other.m_height, other.m_stride);
  UpdatePlanes();
}

ImagePlanar::~ImagePlanar() {}

void ImagePlanar::UpdatePlanes() {
  const std::uint32_t blockWidth = GetBlockWidth();
  m_blocksPerWidth = blockWidth ? m_stride / blockWidth : 0;
  if (m_image) {
    m_uBuffer = UPlane();
    m_vBuffer = VPlane();
  } else {
    m_uBuffer = nullptr;
    m_vBuffer = nullptr;
  }
}

std::uint8_t* ImagePlanar::UPlane() const {
  return m_image + static_cast<std::size_t>(m_stride * m_height);
}

std::uint8_t* ImagePlanar::VPlane() const {
  return UPlane() + static_cast<std::size_t>(m_stride * m_height / 4);
}

void ImagePlanar::SetImage(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width,
                           std::uint32_t height, std::uint32_t stride, bool ownImage) {
  Image::SetImage(format, data, width, height, stride, ownImage);
  UpdatePlanes();
}

void ImagePlanar::CopyImage(DEWARP_IMAGE_FORMAT format, const std::uint8_t* data, std::uint32_t width,
                            std::uint32_t height, std::uint32_t stride) {
  Image::CopyImage(format, data, width, height, stride);
  UpdatePlanes();
}

ImagePlanar& ImagePlanar::operator=(const ImagePlanar& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ImagePlanar");
    return *this;
  }
  CopyImage(other.m_format, other.m_image, other.m_width, other.m_height, other.m_stride);
  return *this;
}

std::uint32_t ImagePlanar::GetBlockWidth() const {
  return m_format == YUV420_PLANAR_IMAGE ? 2 : 0;
}

std::uint32_t ImagePlanar::GetBlockHeight() const {
  return m_format == YUV420_PLANAR_IMAGE ? 2 : 0;
}

std::uint32_t ImagePlanar::GetLumaBufferSize() const {
  return m_stride * m_height * GetPixelSize();
}

std::uint32_t ImagePlanar::GetChromaBufferSize() const {
  const std::uint32_t size = m_stride * m_height * GetPixelSize();
  return m_format == YUV420_PLANAR_IMAGE ? size >> 1 : size;
}

std::uint32_t ImagePlanar::GetBufferSize() const {
  return GetLumaBufferSize() + GetChromaBufferSize();
}

// Without a block size (a format other than 4:2:0) there is no chroma grid: offset 0.
std::uint32_t ImagePlanar::CalculateOffset(std::uint32_t x, std::uint32_t y) const {
  const std::uint32_t blockWidth = GetBlockWidth();
  const std::uint32_t blockHeight = GetBlockHeight();
  if (!blockWidth || !blockHeight) {
    return 0;
  }
  return (y / blockHeight) * GetBlocksPerWidth() + x / blockWidth;
}

namespace {

void CheckPosition(const std::uint8_t* image, std::uint32_t x, std::uint32_t y, std::uint32_t width,
                   std::uint32_t height) {
  if (!image || x >= width || y >= height) {
    throw std::invalid_argument("invalid x, y");
  }
}

}  // namespace

std::uint8_t* ImagePlanar::GetYChannel(std::uint32_t x, std::uint32_t y) const {
  CheckPosition(m_image, x, y, m_width, m_height);
  return m_image + static_cast<std::size_t>(y) * m_stride + x;
}

std::uint8_t* ImagePlanar::GetUChannel(std::uint32_t x, std::uint32_t y) const {
  CheckPosition(m_image, x, y, m_width, m_height);
  return UPlane() + CalculateOffset(x, y);
}

std::uint8_t* ImagePlanar::GetVChannel(std::uint32_t x, std::uint32_t y) const {
  CheckPosition(m_image, x, y, m_width, m_height);
  return VPlane() + CalculateOffset(x, y);
}

void ImagePlanar::SetYChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value) {
  *GetYChannel(x, y) = value;
}

void ImagePlanar::SetUChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value) {
  *GetUChannel(x, y) = value;
}

void ImagePlanar::SetVChannel(std::uint32_t x, std::uint32_t y, std::uint8_t value) {
  *GetVChannel(x, y) = value;
}

std::uint32_t ImagePlanar::GetChannelCount() const {
  return 3;
}

bool ImagePlanar::IsFormatCompatible(DEWARP_IMAGE_FORMAT format) const {
  return format == YUV420_PLANAR_IMAGE;
}

Image* ImagePlanar::CreateBlank() const {
  return new ImagePlanar(m_format, nullptr, m_width, m_height, m_stride, true);
}

Image* ImagePlanar::CreateCopy() const {
  return new ImagePlanar(*this);
}

bool ImagePlanar::GetPixel(std::uint32_t x, std::uint32_t y, PixelChannels& pixel) const {
  if (!m_image || x >= m_width || y >= m_height) {
    GetDefaultPixel(pixel);
    return false;
  }
  pixel.channelSize = GetPixelSize();
  pixel.channelCount = GetChannelCount();
  pixel.currentChannel = 0;
  pixel.Add(*GetYChannel(x, y));
  pixel.Add(*GetUChannel(x, y));
  pixel.Add(*GetVChannel(x, y));
  return true;
}

void ImagePlanar::GetDefaultPixel(PixelChannels& pixel) const {
  pixel.channelSize = GetPixelSize();
  pixel.channelCount = GetChannelCount();
  pixel.channels[0] = s_yDefault;
  pixel.channels[1] = s_uDefault;
  pixel.channels[2] = s_vDefault;
  pixel.channels[3] = 0;
  pixel.currentChannel = 3;
}

void ImagePlanar::SetPixel(std::uint32_t x, std::uint32_t y, const PixelChannels& pixel) {
  SetYChannel(x, y, pixel.channels[0]);
  SetUChannel(x, y, pixel.channels[1]);
  SetVChannel(x, y, pixel.channels[2]);
}

}  // namespace libdewarp
}  // namespace vemo
