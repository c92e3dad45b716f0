// PTZ functor over an equidistant fisheye source: a point of the PTZ view (relative to its
// centre) is zoomed, looked up in the attached map and rotated on the sphere.
#pragma once

#include <libdewarp_vemo/ptz_functor.h>

namespace vemo {
namespace libdewarp {

class SphericalPtzFunctor : public PtzFunctor {
public:
  SphericalPtzFunctor();
  SphericalPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap = 0);
  SphericalPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap& obImageMap);
  SphericalPtzFunctor(const SphericalPtzFunctor& other);
  SphericalPtzFunctor& operator=(const SphericalPtzFunctor& other);
  virtual ~SphericalPtzFunctor();

  Vector2d Call(const Vector2d& obPoint) override;
};

}  // namespace libdewarp
}  // namespace vemo
