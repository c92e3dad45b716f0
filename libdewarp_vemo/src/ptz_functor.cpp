#include <libdewarp_vemo/ptz_functor.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <emmintrin.h>

#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/trigonometry.h>
#include <libdewarp_vemo/vector_3d.h>

namespace vemo {
namespace libdewarp {

namespace {

// Reads element pairs of a map, relative to an offset. A corner outside the map (or not a
// number) reads as the invalid vector, so a point the caller let stray beyond the map comes out
// as "no source" instead of a read outside the tables. The builders' maps hold both tables as
// floats, and those are read directly (the values GetMapItem gives, without a call per
// element); any other map is read through GetMapItem.
class CornerReader {
public:
  explicit CornerReader(const ImageMap& obMap)
      : m_obMap(obMap),
        m_pfX(obMap.GetMapX().GetTypePtr<float>()),
        m_pfY(obMap.GetMapY().GetTypePtr<float>()),
        m_nCols(obMap.GetMapX().GetCols()),
        m_nCount(std::min(obMap.GetMapX().GetAllocatedCount(), obMap.GetMapY().GetAllocatedCount())),
        m_fCols(static_cast<DEWARP_FLOAT>(obMap.GetMapWidth())),
        m_fRows(static_cast<DEWARP_FLOAT>(obMap.GetMapHeight())),
        m_bDirect(m_pfX && m_pfY && obMap.GetMapX().GetType() == Map::FLOAT &&
                  obMap.GetMapY().GetType() == Map::FLOAT && obMap.GetMapY().GetCols() == m_nCols) {}

  Vector2d Read(DEWARP_FLOAT fX, DEWARP_FLOAT fY, const Vector2d& obOffset) const {
    if (!(fX >= 0.0f && fX < m_fCols && fY >= 0.0f && fY < m_fRows)) return Vector2d::InvalidVector;
    const unsigned int x = static_cast<unsigned int>(static_cast<int>(fX));
    const unsigned int y = static_cast<unsigned int>(static_cast<int>(fY));
    const std::size_t nIndex = static_cast<std::size_t>(y) * m_nCols + x;
    const Vector2d obItem = m_bDirect && nIndex < m_nCount ? Vector2d(m_pfX[nIndex], m_pfY[nIndex])
                                                           : m_obMap.GetMapItem(x, y);
    return Vector2d(obItem.X - obOffset.X, obItem.Y - obOffset.Y);
  }

  // Whether every element that Read can be asked for at columns fLeft ... fRight and rows
  // fTop ... fBottom (whole numbers, fLeft <= fRight, fTop <= fBottom) reads with a coordinate
  // that is not a number. The part of the rectangle outside the map reads as the invalid vector
  // anyway; inside, the elements are scanned in the tables, so the answer is false for a map that
  // Read would read through GetMapItem.
  bool NoSourceIn(double fLeft, double fTop, double fRight, double fBottom) const {
    fLeft = std::max(fLeft, 0.0);
    fTop = std::max(fTop, 0.0);
    fRight = std::min(fRight, static_cast<double>(m_fCols) - 1.0);
    fBottom = std::min(fBottom, static_cast<double>(m_fRows) - 1.0);
    if (fLeft > fRight || fTop > fBottom) return true;
    const std::size_t nLeft = static_cast<std::size_t>(fLeft), nRight = static_cast<std::size_t>(fRight);
    const std::size_t nTop = static_cast<std::size_t>(fTop), nBottom = static_cast<std::size_t>(fBottom);
    if (!m_bDirect || !(nBottom * m_nCols + nRight < m_nCount)) return false;
    // Four elements at a time: the ordered comparison of x with y holds exactly where neither is
    // NaN, that is where an element has a source.
    for (std::size_t y = nTop; y <= nBottom; ++y) {
      const float* const pfRowX = m_pfX + y * m_nCols;
      const float* const pfRowY = m_pfY + y * m_nCols;
      std::size_t x = nLeft;
      for (; x + 3 <= nRight; x += 4) {
        if (_mm_movemask_ps(_mm_cmpord_ps(_mm_loadu_ps(pfRowX + x), _mm_loadu_ps(pfRowY + x))) != 0) return false;
      }
      for (; x <= nRight; ++x) {
        if (!std::isnan(pfRowX[x]) && !std::isnan(pfRowY[x])) return false;
      }
    }
    return true;
  }

private:
  const ImageMap& m_obMap;
  const float* m_pfX;
  const float* m_pfY;
  std::size_t m_nCols;
  std::size_t m_nCount;
  DEWARP_FLOAT m_fCols;
  DEWARP_FLOAT m_fRows;
  bool m_bDirect;
};

// A point zoomed by fZoom about obCentre. For a positive zoom every step of it (a subtraction, a
// division, an addition, each rounded to float) is non-decreasing in the point, so the zoomed
// points of a rectangle lie within the zoomed rectangle's corners.
inline Vector2d ZoomAbout(const Vector2d& obPoint, const Vector2d& obCentre, DEWARP_FLOAT fZoom) {
  return Vector2d((obPoint.X - obCentre.X) / fZoom + obCentre.X, (obPoint.Y - obCentre.Y) / fZoom + obCentre.Y);
}

}  // namespace

PtzFunctor::PtzFunctor() : m_obRotation(), m_fZoom(PtzPosition::DefaultZoom), m_fFocalLength(0.0f), m_pobImageMap(0) {}

PtzFunctor::PtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap)
    : m_obRotation(), m_fZoom(PtzPosition::DefaultZoom), m_fFocalLength(0.0f), m_pobImageMap(0) {
  Set(obPosition, fFocalLength, pobImageMap);
}

PtzFunctor::PtzFunctor(const PtzFunctor& other) : MapFunctor(other) { CopyFrom(other); }

PtzFunctor& PtzFunctor::operator=(const PtzFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "PtzFunctor");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

PtzFunctor::~PtzFunctor() {}

void PtzFunctor::CopyFrom(const PtzFunctor& other) {
  m_obRotation = other.m_obRotation;
  m_fZoom = other.m_fZoom;
  m_fFocalLength = other.m_fFocalLength;
  m_pobImageMap = other.m_pobImageMap;
  m_obInputResolution = other.m_obInputResolution;
  m_obOutputResolution = other.m_obOutputResolution;
  m_obInputOffset = other.m_obInputOffset;
  m_obOutputOffset = other.m_obOutputOffset;
}

void PtzFunctor::Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap) {
  m_obRotation.Setup(obPosition.m_obOrientation);
  m_fZoom = obPosition.m_fZoom;
  m_fFocalLength = fFocalLength;
  m_pobImageMap = pobImageMap;
  if (pobImageMap) {
    // Sizes of the attached map; the offsets are their centres (half sizes, not rounded).
    m_obOutputResolution = pobImageMap->GetMapSize();
    m_obInputResolution = pobImageMap->GetInputSize();
    m_obOutputOffset = Vector2d(m_obOutputResolution.X / 2.0f, m_obOutputResolution.Y / 2.0f);
    m_obInputOffset = Vector2d(m_obInputResolution.X / 2.0f, m_obInputResolution.Y / 2.0f);
  } else {
    m_obOutputResolution = Vector2d::ZeroVector;
    m_obInputResolution = Vector2d::ZeroVector;
    m_obOutputOffset = Vector2d::ZeroVector;
    m_obInputOffset = Vector2d::ZeroVector;
  }
}

Vector2d PtzFunctor::Zoom(const Vector2d& obPoint, DEWARP_FLOAT fZoom) const {
  const Vector2d z = ZoomAbout(obPoint, m_obOutputOffset, fZoom);
  if (!m_pobImageMap) return z;

  const DEWARP_FLOAT x0 = FloatingPoint::floor(z.X);
  const DEWARP_FLOAT x1 = FloatingPoint::ceiling(z.X);
  const DEWARP_FLOAT y0 = FloatingPoint::floor(z.Y);
  const DEWARP_FLOAT y1 = FloatingPoint::ceiling(z.Y);
  const CornerReader obMap(*m_pobImageMap);
  const Vector2d c00 = obMap.Read(x0, y0, m_obInputOffset);
  const Vector2d c10 = obMap.Read(x1, y0, m_obInputOffset);
  const Vector2d c01 = obMap.Read(x0, y1, m_obInputOffset);
  const Vector2d c11 = obMap.Read(x1, y1, m_obInputOffset);

  const DEWARP_FLOAT fx = z.X - x0;
  const DEWARP_FLOAT fy = z.Y - y0;
  const DEWARP_FLOAT w00 = (1.0f - fx) * (1.0f - fy);
  const DEWARP_FLOAT w10 = fx * (1.0f - fy);
  const DEWARP_FLOAT w01 = (1.0f - fx) * fy;
  const DEWARP_FLOAT w11 = fx * fy;
  return Vector2d(w00 * c00.X + w10 * c10.X + w01 * c01.X + w11 * c11.X,
                  w00 * c00.Y + w10 * c10.Y + w01 * c01.Y + w11 * c11.Y);
}

// Zoom blends the four elements around the zoomed point, whose columns are floor and ceiling of
// its x and rows floor and ceiling of its y; an element outside the map, or with a coordinate
// that is not a number, makes that coordinate of the blend NaN whatever its weight (0 * NaN is
// NaN). So when every element within the zoomed rectangle, widened to whole elements, has such a
// coordinate, so has every sample of the rectangle. No further margin is needed: each step of the
// zoom is non-decreasing in the point (see ZoomAbout), so a point of the rectangle zooms, with the
// same roundings, to a point between the zoomed corners, and its floor and ceiling lie between
// the corners' floors and ceilings.
bool PtzFunctor::ZoomFindsNoSource(const Vector2d& obLow, const Vector2d& obHigh, DEWARP_FLOAT fZoom) const {
  if (!m_pobImageMap || !(fZoom > 0.0f)) return false;
  const Vector2d zLow = ZoomAbout(obLow, m_obOutputOffset, fZoom);
  const Vector2d zHigh = ZoomAbout(obHigh, m_obOutputOffset, fZoom);
  if (!zLow.Valid() || !zHigh.Valid() || !(zLow.X <= zHigh.X) || !(zLow.Y <= zHigh.Y)) return false;
  const CornerReader obMap(*m_pobImageMap);
  return obMap.NoSourceIn(std::floor(static_cast<double>(zLow.X)), std::floor(static_cast<double>(zLow.Y)),
                          std::ceil(static_cast<double>(zHigh.X)), std::ceil(static_cast<double>(zHigh.Y)));
}

Vector2d PtzFunctor::SphericalPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                          const RotationMatrix3d& obRotation) {
  const DEWARP_FLOAT r = Trigonometry::hypot(obPoint.X, obPoint.Y);
  const DEWARP_FLOAT fTheta = Trigonometry::normalise_angle(r / fFocalLength);
  const std::pair<float, float> sc = Trigonometry::sin_and_cos(fTheta);
  const DEWARP_FLOAT k = (r != 0.0f) ? sc.first / r : 0.0f;
  const Vector3d V = obRotation.ObjectToInertial(Vector3d(k * obPoint.X, k * obPoint.Y, sc.second));
  const DEWARP_FLOAT rho = Trigonometry::hypot(V.X, V.Y);
  const DEWARP_FLOAT m = (rho != 0.0f) ? Trigonometry::atan(rho, V.Z) * fFocalLength / rho : 0.0f;
  return Vector2d(m * V.X, m * V.Y);
}

Vector2d PtzFunctor::InvSphericalPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                             const RotationMatrix3d& obRotation) {
  Vector2d obResult = Vector2d::InvalidVector;
  const DEWARP_FLOAT r = Trigonometry::hypot(obPoint.X, obPoint.Y);
  const DEWARP_FLOAT fTheta = r / fFocalLength;
  const std::pair<float, float> sc = Trigonometry::sin_and_cos(fTheta);
  const DEWARP_FLOAT k = (r != 0.0f) ? sc.first / r : 0.0f;
  const Vector3d V = obRotation.InertialToObject(Vector3d(k * obPoint.X, k * obPoint.Y, sc.second));
  const DEWARP_FLOAT rho = Trigonometry::hypot(V.X, V.Y);
  const DEWARP_FLOAT m = (rho != 0.0f) ? Trigonometry::atan(rho, V.Z) * fFocalLength / rho : 0.0f;
  obResult.X = m * V.X;
  obResult.Y = m * V.Y;
  return obResult;
}

Vector2d PtzFunctor::RectilinearPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                            const RotationMatrix3d& obRotation, const Vector2d& obOffset) {
  const Vector3d V =
      obRotation.ObjectToInertial(Vector3d(obPoint.X + obOffset.X, obPoint.Y + obOffset.Y, fFocalLength));
  return Vector2d(fFocalLength * V.X / V.Z, fFocalLength * V.Y / V.Z);
}

Vector2d PtzFunctor::EquirectangularPerspective(const Vector2d& obPoint, DEWARP_FLOAT /*fFocalLength*/,
                                                const Vector2d& obRotation) {
  DEWARP_FLOAT x = obPoint.X + obRotation.Y;
  const DEWARP_FLOAT fHalf = obRotation.X;
  // Without a positive, finite period (or for a point that is not a number) there is nothing
  // to wrap around.
  if (!(fHalf > 0.0f) || !FloatingPoint::is_finite(fHalf) || !FloatingPoint::is_finite(x)) {
    return Vector2d(x, obPoint.Y);
  }
  const DEWARP_FLOAT fPeriod = 2.0f * fHalf;
  // A point many periods away is first brought within one period in a single step, so the
  // wrapping loops below stay short (and cannot stall where adding a period no longer changes
  // a large value). Within a few periods they run as plain repeated additions.
  if (FloatingPoint::fabs(x) > 8.0f * fPeriod) x = std::fmod(x, fPeriod);
  while (x < -fHalf) x += fPeriod;
  while (x > fHalf) x -= fPeriod;
  return Vector2d(x, obPoint.Y);
}

}  // namespace libdewarp
}  // namespace vemo
