#include <libdewarp_vemo/ptz_range.h>

#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/trigonometry.h>

#include <cstdio>

namespace vemo {
namespace libdewarp {

const Vector2d PtzRange::FullMotion(Trigonometry::PI, -Trigonometry::PI);
const Vector2d PtzRange::NoMotion(0.0f, 0.0f);
const Vector2d PtzRange::EmptyZoomRange(1.0f, 1.0f);
const Vector2d PtzRange::InfiniteZoomRange(FloatingPoint::Infinity, 1.0f);

// The ranges are spelt out as (Hi, Lo) numbers so that they are constants of the image, ready
// before any code runs.
#define DEWARP_FULL_MOTION Trigonometry::PI, -Trigonometry::PI
#define DEWARP_NO_MOTION 0.0f, 0.0f
#define DEWARP_EMPTY_ZOOM 1.0f, 1.0f
#define DEWARP_INFINITE_ZOOM FloatingPoint::Infinity, 1.0f

const PtzRange PtzRange::CeilingPanoramicRange(DEWARP_FULL_MOTION, DEWARP_NO_MOTION, DEWARP_NO_MOTION,
                                               DEWARP_EMPTY_ZOOM, ZeroFlags, Literal());
const PtzRange PtzRange::FloorPanoramicRange(DEWARP_FULL_MOTION, DEWARP_NO_MOTION, DEWARP_NO_MOTION,
                                             DEWARP_EMPTY_ZOOM, ZeroFlags, Literal());
const PtzRange PtzRange::WallPanoramicRange(DEWARP_NO_MOTION, DEWARP_NO_MOTION, DEWARP_FULL_MOTION,
                                            DEWARP_EMPTY_ZOOM, ZeroFlags, Literal());
const PtzRange PtzRange::InvertedWallPanoramicRange(DEWARP_NO_MOTION, DEWARP_NO_MOTION, DEWARP_FULL_MOTION,
                                                    DEWARP_EMPTY_ZOOM, ZeroFlags, Literal());
const PtzRange PtzRange::CeilingPtzRange(DEWARP_FULL_MOTION, 0.0f, -Trigonometry::HALF_PI, DEWARP_NO_MOTION,
                                         DEWARP_INFINITE_ZOOM, ZeroFlags, Literal());
const PtzRange PtzRange::FloorPtzRange(DEWARP_FULL_MOTION, Trigonometry::HALF_PI, 0.0f, DEWARP_NO_MOTION,
                                       DEWARP_INFINITE_ZOOM, ZeroFlags, Literal());

#undef DEWARP_FULL_MOTION
#undef DEWARP_NO_MOTION
#undef DEWARP_EMPTY_ZOOM
#undef DEWARP_INFINITE_ZOOM

PtzRange::PtzRange(const DEWARP_PTZ_RANGE& range) : PtzRange() { Set(range); }

PtzRange::PtzRange(const EulerAngles& extent, const Vector2d& zoom, std::uint32_t flags) : PtzRange() {
  m_ulFlags = flags;
  Set(extent, zoom);
}

PtzRange::PtzRange(const FieldOfView& fov, const Vector2d& zoom, std::uint32_t flags) : PtzRange() {
  m_ulFlags = flags;
  Set(fov, zoom);
}

PtzRange& PtzRange::operator=(const PtzRange& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "PtzRange");
    return *this;
  }
  m_obPanRange = other.m_obPanRange;
  m_obTiltRange = other.m_obTiltRange;
  m_obRollRange = other.m_obRollRange;
  m_obZoomRange = other.m_obZoomRange;
  m_ulFlags = other.m_ulFlags;
  return *this;
}

namespace {

DEWARP_FLOAT AngleFromDegrees(DEWARP_FLOAT degrees) {
  return Trigonometry::normalise_angle(Trigonometry::degrees_to_radians(degrees));
}

// (a, -a) with a the wrapped half of an extent.
Vector2d Symmetric(DEWARP_FLOAT extent) {
  const DEWARP_FLOAT half = Trigonometry::normalise_angle(extent / 2.0f);
  return Vector2d(half, -half);
}

}  // namespace

void PtzRange::Set(const DEWARP_PTZ_RANGE& range) {
  m_obPanRange = Vector2d(AngleFromDegrees(range.PanHi), AngleFromDegrees(range.PanLo));
  m_obTiltRange = Vector2d(AngleFromDegrees(range.TiltHi), AngleFromDegrees(range.TiltLo));
  m_obRollRange = Vector2d(AngleFromDegrees(range.RollHi), AngleFromDegrees(range.RollLo));
  m_obZoomRange = Vector2d(range.ZoomHi, range.ZoomLo);
}

DEWARP_PTZ_RANGE PtzRange::Get() const {
  DEWARP_PTZ_RANGE range;
  range.PanLo = Trigonometry::radians_to_degrees(m_obPanRange.Y);
  range.PanHi = Trigonometry::radians_to_degrees(m_obPanRange.X);
  range.TiltLo = Trigonometry::radians_to_degrees(m_obTiltRange.Y);
  range.TiltHi = Trigonometry::radians_to_degrees(m_obTiltRange.X);
  range.RollLo = Trigonometry::radians_to_degrees(m_obRollRange.Y);
  range.RollHi = Trigonometry::radians_to_degrees(m_obRollRange.X);
  range.ZoomLo = m_obZoomRange.Y;
  range.ZoomHi = m_obZoomRange.X;
  return range;
}

void PtzRange::Set(const EulerAngles& extent, const Vector2d& zoom) {
  m_obPanRange = Symmetric(extent.Yaw);
  m_obTiltRange = Symmetric(extent.Pitch);
  m_obRollRange = Symmetric(extent.Roll);
  m_obZoomRange = zoom;
}

void PtzRange::Set(const FieldOfView& fov, const Vector2d& zoom) {
  m_obPanRange = Symmetric(fov.Horizontal);
  m_obTiltRange = Symmetric(fov.Vertical);
  m_obRollRange = FullMotion;
  m_obZoomRange = zoom;
}

PtzPosition PtzRange::Limit(const PtzPosition& position) const {
  const EulerAngles& orientation = position.m_obOrientation;
  return PtzPosition(EulerAngles(LimitPan(orientation.Yaw), LimitTilt(orientation.Pitch), LimitRoll(orientation.Roll)),
                     LimitZoom(position.m_fZoom));
}

void PtzRange::Inflate(const FieldOfView& fov) {
  const DEWARP_FLOAT h = Trigonometry::normalise_angle(fov.Horizontal * 0.5f);
  const DEWARP_FLOAT v = Trigonometry::normalise_angle(fov.Vertical * 0.5f);
  if (m_obPanRange != FullMotion) {
    m_obPanRange.X += h;
    m_obPanRange.Y -= h;
  }
  if (m_obTiltRange != FullMotion) {
    m_obTiltRange.X += v;
    m_obTiltRange.Y -= v;
  }
}

void PtzRange::Deflate(const FieldOfView& fov) {
  const DEWARP_FLOAT h = Trigonometry::normalise_angle(fov.Horizontal * 0.5f);
  const DEWARP_FLOAT v = Trigonometry::normalise_angle(fov.Vertical * 0.5f);
  if (m_obPanRange != FullMotion) {
    if (m_obPanRange.X - m_obPanRange.Y > 2.0f * h) {
      m_obPanRange.X -= h;
      m_obPanRange.Y += h;
    } else {
      const DEWARP_FLOAT middle = (m_obPanRange.X + m_obPanRange.Y) / 2.0f;
      m_obPanRange = Vector2d(middle, middle);
    }
  }
  if (m_obTiltRange != FullMotion) {
    DEWARP_FLOAT hi = m_obTiltRange.X - v;
    if (m_ulFlags & NoDeflateHighTilt) {
      hi = m_obTiltRange.X;
      std::fputs("NoDeflateHighTilt flag active\n", stderr);
    }
    DEWARP_FLOAT lo = m_obTiltRange.Y + v;
    if (m_ulFlags & NoDeflateLowTilt) {
      lo = m_obTiltRange.Y;
      std::fputs("NoDeflateLowTilt flag active\n", stderr);
    }
    if (lo > hi) {
      const DEWARP_FLOAT middle = (m_obTiltRange.X + m_obTiltRange.Y) / 2.0f;
      m_obTiltRange = Vector2d(middle, middle);
    } else {
      m_obTiltRange = Vector2d(hi, lo);
    }
  }
}

}  // namespace libdewarp
}  // namespace vemo
