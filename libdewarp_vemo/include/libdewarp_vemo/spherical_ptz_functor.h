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

  // Whether Call gives no source (NaN) for every point (x, y) with obLow.X <= x <= obHigh.X and
  // obLow.Y <= y <= obHigh.Y, judged from the elements of the attached map that the lookups can
  // read (see ZoomFindsNoSource): the rotation on the sphere turns a lookup with a coordinate
  // that is not a number into (NaN, NaN). False when that cannot be told.
  bool NoSourceWithin(const Vector2d& obLow, const Vector2d& obHigh) const;
};

}  // namespace libdewarp
}  // namespace vemo
