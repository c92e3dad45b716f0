// Pan, tilt, roll and zoom of a virtual PTZ view. The orientation is in radians (Yaw = pan,
// Pitch = tilt, Roll = roll); the zoom is a magnification factor (1 = no zoom). The public
// record carries the same values in degrees.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/euler_angles.h>

namespace vemo {
namespace libdewarp {

class PtzPosition {
public:
  EulerAngles m_obOrientation;
  DEWARP_FLOAT m_fZoom;

  static constexpr DEWARP_FLOAT DefaultZoom = 1.0f;
  static const EulerAngles DefaultOrientation;
  static const PtzPosition Identity;

  constexpr PtzPosition() : m_obOrientation(), m_fZoom(DefaultZoom) {}
  constexpr PtzPosition(const PtzPosition& o) : m_obOrientation(o.m_obOrientation), m_fZoom(o.m_fZoom) {}
  constexpr PtzPosition(const EulerAngles& orientation, DEWARP_FLOAT zoom)
      : m_obOrientation(orientation), m_fZoom(zoom) {}
  explicit PtzPosition(const DEWARP_PTZ_POSITION& position);
  virtual ~PtzPosition() {}

  PtzPosition& operator=(const PtzPosition& other);

  // From the record in degrees: each angle converted to radians and wrapped into [-pi, pi).
  void Set(const DEWARP_PTZ_POSITION& position);
  // To the record in degrees; the angles are not wrapped.
  void Get(DEWARP_PTZ_POSITION& position) const;
  DEWARP_PTZ_POSITION Get() const;

  void Concatenate(const EulerAngles& orientation);
  // The other's orientation after this one, and the product of the zooms.
  void Concatenate(const PtzPosition& other);

  // Marks the position as unset: invalid orientation and NaN zoom.
  void Clear();
  // Resets the orientation only; the zoom is kept.
  void SetIdentity();
  // Compares the orientation with the invalid one through the quiet inequality, which is never
  // true against NaN: so no position counts as valid. Nothing relies on the result.
  bool IsValid() const;

  // Exact, no tolerance.
  bool operator==(const PtzPosition& o) const { return m_obOrientation == o.m_obOrientation && m_fZoom == o.m_fZoom; }
  bool operator!=(const PtzPosition& o) const {
    return m_obOrientation != o.m_obOrientation || FloatingPoint::is_lessgreater(m_fZoom, o.m_fZoom);
  }
};

}  // namespace libdewarp
}  // namespace vemo
