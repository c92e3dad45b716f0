#include <libdewarp_vemo/scale_functor.h>

#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

ScaleFunctor::ScaleFunctor() : m_obScaleFactor(1.0f, 1.0f) {}

ScaleFunctor::ScaleFunctor(DEWARP_FLOAT fScale) : m_obScaleFactor(fScale, fScale) {}

ScaleFunctor::ScaleFunctor(DEWARP_FLOAT fScaleX, DEWARP_FLOAT fScaleY)
    : m_obScaleFactor(fScaleX, fScaleY) {}

ScaleFunctor::ScaleFunctor(const Vector2d& obScaleFactor) : m_obScaleFactor(obScaleFactor) {}

// Destination over source: a point of a maps to the point of b at the same relative place.
ScaleFunctor::ScaleFunctor(const Resolution& obFrom, const Resolution& obTo)
    : m_obScaleFactor(obTo.X / obFrom.X, obTo.Y / obFrom.Y) {}

ScaleFunctor::ScaleFunctor(const Resolution& obFrom, const Resolution& obTo,
                           DEWARP_ASPECT_RATIO eAspectRatio)
    : m_obScaleFactor(AspectRatioFactor(obFrom, obTo, eAspectRatio, Vector2d(1.0f, 1.0f))) {}

ScaleFunctor::ScaleFunctor(const Resolution& obFrom, const Resolution& obTo,
                           DEWARP_ASPECT_RATIO eAspectRatio, const Vector2d& obSquish)
    : m_obScaleFactor(AspectRatioFactor(obFrom, obTo, eAspectRatio, obSquish)) {}

ScaleFunctor::ScaleFunctor(const ScaleFunctor& other)
    : MapFunctor(other), m_obScaleFactor(other.m_obScaleFactor) {}

ScaleFunctor& ScaleFunctor::operator=(const ScaleFunctor& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "ScaleFunctor");
    return *this;
  }
  m_obScaleFactor = other.m_obScaleFactor;
  return *this;
}

// The aspect-ratio factors map points of the output (size b) to the source: the source a,
// stretched by the squish and rounded down to whole pixels, is r.
Vector2d ScaleFunctor::AspectRatioFactor(const Resolution& obFrom, const Resolution& obTo,
                                         DEWARP_ASPECT_RATIO eAspectRatio,
                                         const Vector2d& obSquish) {
  const Resolution obSource(obFrom.X * obSquish.X, obFrom.Y * obSquish.Y);
  switch (eAspectRatio) {
    case SCALE_TO_ASPECT_RATIO: {
      // The largest part of b with the source's aspect ratio shows the whole source.
      const Resolution obFit = obTo.BestFit(obSource.AspectRatio());
      const DEWARP_FLOAT fScale = obSource.BestScale(obFit);
      return Vector2d(fScale, fScale);
    }
    case CROP_TO_ASPECT_RATIO: {
      // The source fills all of b; what does not fit is cut off.
      const DEWARP_FLOAT fScale = obSource.BestScale(obTo);
      return Vector2d(fScale, fScale);
    }
    default:
      return Vector2d(obSource.X / obTo.X, obSource.Y / obTo.Y);
  }
}

Vector2d ScaleFunctor::Scale(const Vector2d& obPoint, const Vector2d& obFactor) {
  return Vector2d(obPoint.X * obFactor.X, obPoint.Y * obFactor.Y);
}

Vector2d ScaleFunctor::Call(const Vector2d& obPoint) { return Scale(obPoint, m_obScaleFactor); }

}  // namespace libdewarp
}  // namespace vemo
