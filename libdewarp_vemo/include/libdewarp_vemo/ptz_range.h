// Limits within which a view may be steered. Each range is a Vector2d whose X is the upper
// limit ("Hi") and Y the lower limit ("Lo"); angles in radians.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/vector_2d.h>

#include <cstdint>

namespace vemo {
namespace libdewarp {

class PtzRange {
public:
  Vector2d m_obPanRange;
  Vector2d m_obTiltRange;
  Vector2d m_obRollRange;
  Vector2d m_obZoomRange;
  std::uint32_t m_ulFlags;

  static constexpr std::uint32_t ZeroFlags = 0;
  // Keep the upper tilt limit when deflating by a field of view.
  static constexpr std::uint32_t NoDeflateHighTilt = 1;
  // Keep the lower tilt limit when deflating by a field of view.
  static constexpr std::uint32_t NoDeflateLowTilt = 2;

  // (Hi, Lo) pairs.
  static const Vector2d FullMotion;
  static const Vector2d NoMotion;
  static const Vector2d EmptyZoomRange;
  static const Vector2d InfiniteZoomRange;

  static const PtzRange CeilingPanoramicRange;
  static const PtzRange FloorPanoramicRange;
  static const PtzRange WallPanoramicRange;
  static const PtzRange InvertedWallPanoramicRange;
  static const PtzRange CeilingPtzRange;
  static const PtzRange FloorPtzRange;

  constexpr PtzRange() : m_obPanRange(), m_obTiltRange(), m_obRollRange(), m_obZoomRange(), m_ulFlags(ZeroFlags) {}
  constexpr PtzRange(const PtzRange& o)
      : m_obPanRange(o.m_obPanRange), m_obTiltRange(o.m_obTiltRange), m_obRollRange(o.m_obRollRange),
        m_obZoomRange(o.m_obZoomRange), m_ulFlags(o.m_ulFlags) {}
  constexpr PtzRange(const Vector2d& pan, const Vector2d& tilt, const Vector2d& roll, const Vector2d& zoom,
                     std::uint32_t flags)
      : m_obPanRange(pan), m_obTiltRange(tilt), m_obRollRange(roll), m_obZoomRange(zoom), m_ulFlags(flags) {}
  explicit PtzRange(const DEWARP_PTZ_RANGE& range);
  PtzRange(const EulerAngles& extent, const Vector2d& zoom, std::uint32_t flags);
  PtzRange(const FieldOfView& fov, const Vector2d& zoom, std::uint32_t flags);
  virtual ~PtzRange() {}

  PtzRange& operator=(const PtzRange& other);

  // From the record in degrees: each angle limit converted to radians and wrapped into
  // [-pi, pi); the zoom limits copied.
  void Set(const DEWARP_PTZ_RANGE& range);
  DEWARP_PTZ_RANGE Get() const;
  // Symmetric ranges of half the given extents.
  void Set(const EulerAngles& extent, const Vector2d& zoom);
  // Symmetric pan and tilt ranges of half the field of view, free roll.
  void Set(const FieldOfView& fov, const Vector2d& zoom);

  // Raise to Lo, then lower to Hi (an inverted range yields Hi). NaN passes through.
  DEWARP_FLOAT LimitPan(DEWARP_FLOAT pan) const { return Clamp(pan, m_obPanRange); }
  DEWARP_FLOAT LimitTilt(DEWARP_FLOAT tilt) const { return Clamp(tilt, m_obTiltRange); }
  DEWARP_FLOAT LimitRoll(DEWARP_FLOAT roll) const { return Clamp(roll, m_obRollRange); }
  DEWARP_FLOAT LimitZoom(DEWARP_FLOAT zoom) const { return Clamp(zoom, m_obZoomRange); }
  PtzPosition Limit(const PtzPosition& position) const;

  // Widens pan and tilt (unless they are full motion) by half the field of view on each side.
  void Inflate(const FieldOfView& fov);
  // Narrows pan and tilt (unless they are full motion) so that a view of the given field of
  // view stays inside; a range too small collapses to its middle.
  void Deflate(const FieldOfView& fov);

private:
  // Ranges given as (Hi, Lo) numbers, for the constant ranges.
  struct Literal {};
  constexpr PtzRange(DEWARP_FLOAT panHi, DEWARP_FLOAT panLo, DEWARP_FLOAT tiltHi, DEWARP_FLOAT tiltLo,
                     DEWARP_FLOAT rollHi, DEWARP_FLOAT rollLo, DEWARP_FLOAT zoomHi, DEWARP_FLOAT zoomLo,
                     std::uint32_t flags, Literal)
      : m_obPanRange(panHi, panLo), m_obTiltRange(tiltHi, tiltLo), m_obRollRange(rollHi, rollLo),
        m_obZoomRange(zoomHi, zoomLo), m_ulFlags(flags) {}

  static DEWARP_FLOAT Clamp(DEWARP_FLOAT value, const Vector2d& range) {
    if (value < range.Y) value = range.Y;
    if (value > range.X) value = range.X;
    return value;
  }
};

}  // namespace libdewarp
}  // namespace vemo
