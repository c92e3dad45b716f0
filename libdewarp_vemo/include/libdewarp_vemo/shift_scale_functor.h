// Shifts a point and then scales it component by component.
#pragma once

#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class ShiftScaleFunctor : public MapFunctor {
public:
  // The shift and scale of a default-constructed functor: (0, 0) and (1, 1).
  static const Vector2d DefaultShift;
  static const Vector2d DefaultScale;

  ShiftScaleFunctor();
  ShiftScaleFunctor(const Vector2d& obShift, const Vector2d& obScale);
  ShiftScaleFunctor(const ShiftScaleFunctor& other);
  ShiftScaleFunctor& operator=(const ShiftScaleFunctor& other);
  virtual ~ShiftScaleFunctor() {}

  void Set(const Vector2d& obShift, const Vector2d& obScale);
  const Vector2d& GetShift() const { return m_obShift; }
  const Vector2d& GetScale() const { return m_obScale; }

  // point + shift.
  static Vector2d Shift(const Vector2d& obPoint, const Vector2d& obShift);
  // Component-wise product.
  static Vector2d Scale(const Vector2d& obPoint, const Vector2d& obScale);

  // Shift first, then scale.
  virtual Vector2d Call(const Vector2d& obPoint);

protected:
  Vector2d m_obShift;
  Vector2d m_obScale;
};

}  // namespace libdewarp
}  // namespace vemo
