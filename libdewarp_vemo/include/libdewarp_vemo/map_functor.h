// A point-to-point function object: map builders apply one to every point of an output map to
// find the matching point of the input image.
#pragma once

#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class MapFunctor {
public:
  MapFunctor() {}
  MapFunctor(const MapFunctor&) {}
  MapFunctor& operator=(const MapFunctor& other);
  virtual ~MapFunctor() {}

  // The converted point.
  virtual Vector2d Call(const Vector2d& obPoint) = 0;

  Vector2d operator()(const Vector2d& obPoint) { return Call(obPoint); }
};

}  // namespace libdewarp
}  // namespace vemo
