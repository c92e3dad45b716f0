#include <libdewarp_vemo/ptz_position.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const EulerAngles PtzPosition::DefaultOrientation(0.0f, 0.0f, 0.0f);
const PtzPosition PtzPosition::Identity;

PtzPosition::PtzPosition(const DEWARP_PTZ_POSITION& position) : PtzPosition() { Set(position); }

PtzPosition& PtzPosition::operator=(const PtzPosition& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "PtzPosition");
    return *this;
  }
  m_obOrientation = other.m_obOrientation;
  m_fZoom = other.m_fZoom;
  return *this;
}

void PtzPosition::Set(const DEWARP_PTZ_POSITION& position) {
  m_obOrientation.Yaw = Trigonometry::normalise_angle(Trigonometry::degrees_to_radians(position.Pan));
  m_obOrientation.Pitch = Trigonometry::normalise_angle(Trigonometry::degrees_to_radians(position.Tilt));
  m_obOrientation.Roll = Trigonometry::normalise_angle(Trigonometry::degrees_to_radians(position.Roll));
  m_fZoom = position.Zoom;
}

void PtzPosition::Get(DEWARP_PTZ_POSITION& position) const {
  position.Pan = Trigonometry::radians_to_degrees(m_obOrientation.Yaw);
  position.Tilt = Trigonometry::radians_to_degrees(m_obOrientation.Pitch);
  position.Roll = Trigonometry::radians_to_degrees(m_obOrientation.Roll);
  position.Zoom = m_fZoom;
}

DEWARP_PTZ_POSITION PtzPosition::Get() const {
  DEWARP_PTZ_POSITION position;
  Get(position);
  return position;
}

void PtzPosition::Concatenate(const EulerAngles& orientation) { m_obOrientation.Concatenate(orientation); }

void PtzPosition::Concatenate(const PtzPosition& other) {
  m_obOrientation.Concatenate(other.m_obOrientation);
  m_fZoom *= other.m_fZoom;
}

void PtzPosition::Clear() {
  m_obOrientation = EulerAngles::Invalid;
  m_fZoom = FloatingPoint::Nan;
}

void PtzPosition::SetIdentity() { m_obOrientation = EulerAngles::Identity; }

bool PtzPosition::IsValid() const {
  return m_obOrientation != EulerAngles::Invalid && FloatingPoint::is_normal(m_fZoom);
}

}  // namespace libdewarp
}  // namespace vemo
