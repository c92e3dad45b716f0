// PTZ functor over a flat perspective source: the zoomed point, moved by an offset, is cast as
// a ray at the focal length, rotated and projected back onto the source.
#pragma once

#include <libdewarp_vemo/ptz_functor.h>

namespace vemo {
namespace libdewarp {

class RectilinearPtzFunctor : public PtzFunctor {
public:
  RectilinearPtzFunctor();
  RectilinearPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const Vector2d& obOffset);
  RectilinearPtzFunctor(const RectilinearPtzFunctor& other);
  RectilinearPtzFunctor& operator=(const RectilinearPtzFunctor& other);
  virtual ~RectilinearPtzFunctor();

  void Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const Vector2d& obOffset);
  const Vector2d& GetOffset() const { return m_obOffset; }

  Vector2d Call(const Vector2d& obPoint) override;

protected:
  Vector2d m_obOffset;
};

}  // namespace libdewarp
}  // namespace vemo
