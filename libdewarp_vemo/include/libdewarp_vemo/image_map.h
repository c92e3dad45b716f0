// A pair of coordinate tables (source x and source y per destination pixel) together with the
// size of the source image that the coordinates address. Map builders fill it, views keep it
// and Remap() runs a frame through it.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class Image;

class ImageMap {
public:
  ImageMap();
  ImageMap(int width, int height);
  explicit ImageMap(const Vector2d& size);
  // Copies the input size and copy-constructs both maps: the arrays move to the new object.
  ImageMap(const ImageMap& other);
  virtual ~ImageMap();

  // Remaps src into dst through this map (see Remap::Execute).
  virtual void Remap(const Image& src, Image& dst, DEWARP_INTERPOLATION eInterpolation) const;

  // Fresh FLOAT tables of width x height, every element NaN.
  void SetMapSize(int width, int height);
  // As above with x and y truncated to integers.
  void SetMapSize(const Vector2d& size);
  Vector2d GetMapSize() const;
  unsigned int GetMapWidth() const;
  unsigned int GetMapHeight() const;

  void SetInputSize(const Vector2d& size) { m_obInputSize = size; }
  const Vector2d& GetInputSize() const { return m_obInputSize; }

  // Source coordinate of destination pixel (x, y). Positions outside the allocated tables are
  // ignored on writing and read as the invalid vector.
  void SetMapItem(unsigned int x, unsigned int y, const Vector2d& value);
  Vector2d GetMapItem(unsigned int x, unsigned int y) const;

  // Sets every element of the x table to value.X and of the y table to value.Y.
  void FillMap(const Vector2d& value);

  // Always false.
  bool Empty() const;

  // Shallow copy: input size and both maps member by member (both objects then share the arrays).
  ImageMap& operator=(const ImageMap& other);

  const Map& GetMapX() const { return m_obMapX; }
  const Map& GetMapY() const { return m_obMapY; }
  Map& GetMapX() { return m_obMapX; }
  Map& GetMapY() { return m_obMapY; }

private:
  Vector2d m_obInputSize;
  Map m_obMapX;
  Map m_obMapY;
};

}  // namespace libdewarp
}  // namespace vemo
