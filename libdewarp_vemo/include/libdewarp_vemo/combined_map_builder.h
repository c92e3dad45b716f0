// Composes two maps into one: a remap with the result equals a remap with the first map applied
// to the output of a remap with the second.
#pragma once

#include <libdewarp_vemo/linear_map_builder.h>

namespace vemo {
namespace libdewarp {

class CombinedMapBuilder : public LinearMapBuilder {
public:
  CombinedMapBuilder();
  CombinedMapBuilder(const CombinedMapBuilder& other);
  CombinedMapBuilder& operator=(const CombinedMapBuilder& other);
  virtual ~CombinedMapBuilder();

  using LinearMapBuilder::BuildImageMap;
  // obFirstMap: per output pixel a position in the intermediate image; obSecondMap: per
  // intermediate pixel a position in the source. The result has the size of the first map and
  // the input size of the second.
  virtual ImageMap* BuildImageMap(const ImageMap& obFirstMap, const ImageMap& obSecondMap);
  // As above; a null map raises error 22 "Invalid maps".
  virtual ImageMap* BuildImageMap(const ImageMap* pobFirstMap, const ImageMap* pobSecondMap);
};

}  // namespace libdewarp
}  // namespace vemo
