#include <libdewarp_vemo/image_map.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/remap.h>

#include <cstddef>

namespace vemo {
namespace libdewarp {

ImageMap::ImageMap() {}

ImageMap::ImageMap(int width, int height) {
  SetMapSize(width, height);
}

ImageMap::ImageMap(const Vector2d& size) {
  SetMapSize(size);
}

ImageMap::ImageMap(const ImageMap& other)
    : m_obInputSize(other.m_obInputSize), m_obMapX(other.m_obMapX), m_obMapY(other.m_obMapY) {}

ImageMap::~ImageMap() {}

void ImageMap::Remap(const Image& src, Image& dst, DEWARP_INTERPOLATION eInterpolation) const {
  Remap::Execute(src, dst, m_obMapX, m_obMapY, eInterpolation);
}

void ImageMap::SetMapSize(int width, int height) {
  // Negative sizes make no table: they are taken as zero.
  const unsigned int cols = width > 0 ? static_cast<unsigned int>(width) : 0u;
  const unsigned int rows = height > 0 ? static_cast<unsigned int>(height) : 0u;
  m_obMapX.Reset(Map::FLOAT, cols, rows);
  m_obMapY.Reset(Map::FLOAT, cols, rows);
}

void ImageMap::SetMapSize(const Vector2d& size) {
  SetMapSize(static_cast<int>(size.X), static_cast<int>(size.Y));
}

Vector2d ImageMap::GetMapSize() const {
  return Vector2d(static_cast<DEWARP_FLOAT>(m_obMapX.GetCols()), static_cast<DEWARP_FLOAT>(m_obMapX.GetRows()));
}

unsigned int ImageMap::GetMapWidth() const {
  return m_obMapX.GetCols();
}

unsigned int ImageMap::GetMapHeight() const {
  return m_obMapX.GetRows();
}

void ImageMap::SetMapItem(unsigned int x, unsigned int y, const Vector2d& value) {
  const std::size_t indexX = static_cast<std::size_t>(y) * m_obMapX.GetCols() + x;
  const std::size_t indexY = static_cast<std::size_t>(y) * m_obMapY.GetCols() + x;
  float* pfX = m_obMapX.GetTypePtr<float>();
  float* pfY = m_obMapY.GetTypePtr<float>();
  if (pfX && indexX < m_obMapX.GetAllocatedCount()) {
    pfX[indexX] = value.X;
  }
  if (pfY && indexY < m_obMapY.GetAllocatedCount()) {
    pfY[indexY] = value.Y;
  }
}

Vector2d ImageMap::GetMapItem(unsigned int x, unsigned int y) const {
  return Vector2d(m_obMapX.at<float>(x, y), m_obMapY.at<float>(x, y));
}

void ImageMap::FillMap(const Vector2d& value) {
  Map* maps[2] = {&m_obMapX, &m_obMapY};
  const float values[2] = {value.X, value.Y};
  for (int k = 0; k < 2; ++k) {
    maps[k]->ConfigForFloat();
    float* table = maps[k]->GetTypePtr<float>();
    std::size_t count = static_cast<std::size_t>(maps[k]->GetRows()) * maps[k]->GetCols();
    if (count > maps[k]->GetAllocatedCount()) {
      count = maps[k]->GetAllocatedCount();
    }
    for (std::size_t i = 0; i < count; ++i) {
      table[i] = values[k];
    }
  }
}

bool ImageMap::Empty() const {
  return false;
}

ImageMap& ImageMap::operator=(const ImageMap& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ImageMap");
    return *this;
  }
  m_obInputSize = other.m_obInputSize;
  m_obMapX = other.m_obMapX;
  m_obMapY = other.m_obMapY;
  return *this;
}

}  // namespace libdewarp
}  // namespace vemo
