// PTZ functor over an equirectangular panorama: panning shifts the panorama horizontally and
// points wrap around its period.
#pragma once

#include <libdewarp_vemo/ptz_functor.h>

namespace vemo {
namespace libdewarp {

class EquirectangularPtzFunctor : public PtzFunctor {
public:
  EquirectangularPtzFunctor();
  EquirectangularPtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength,
                            const ImageMap* pobImageMap = 0);
  EquirectangularPtzFunctor(const EquirectangularPtzFunctor& other);
  EquirectangularPtzFunctor& operator=(const EquirectangularPtzFunctor& other);
  virtual ~EquirectangularPtzFunctor();

  // As PtzFunctor::Set; the panorama's half period becomes pi * f (a full turn is 2 * pi * f
  // pixels wide) and its shift the pan angle times f.
  void Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap = 0);
  // X: half period of the panorama, Y: horizontal shift (both in pixels).
  void SetEquirectangularRotation(const Vector2d& obRotation) { m_obEquirectangularRotation = obRotation; }
  const Vector2d& GetEquirectangularRotation() const { return m_obEquirectangularRotation; }

  Vector2d Call(const Vector2d& obPoint) override;

protected:
  Vector2d m_obEquirectangularRotation;
};

}  // namespace libdewarp
}  // namespace vemo
