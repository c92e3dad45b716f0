// Rearranges one map into a map of another size: the map is cut into vertical strips of the new
// width, placed one above the other (two strips for half the width and twice the height, four
// for a quarter of the width and four times the height).
#pragma once

#include <libdewarp_vemo/linear_map_builder.h>

namespace vemo {
namespace libdewarp {

class SplitMapBuilder : public LinearMapBuilder {
public:
  SplitMapBuilder();
  SplitMapBuilder(const SplitMapBuilder& other);
  SplitMapBuilder& operator=(const SplitMapBuilder& other);
  virtual ~SplitMapBuilder();

  using LinearMapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const ImageMap& obMap, const Vector2d& obSize);
  // As above; a null map raises error 22 "Invalid map".
  virtual ImageMap* BuildImageMap(const ImageMap* pobMap, const Vector2d& obSize);
};

}  // namespace libdewarp
}  // namespace vemo
