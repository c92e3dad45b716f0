// Rescales points between two resolutions, component by component, according to an
// aspect-ratio mode.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class ScaleFunctor : public MapFunctor {
public:
  // Factor (1, 1).
  ScaleFunctor();
  // Factor (k, k).
  explicit ScaleFunctor(DEWARP_FLOAT fScale);
  ScaleFunctor(DEWARP_FLOAT fScaleX, DEWARP_FLOAT fScaleY);
  explicit ScaleFunctor(const Vector2d& obScaleFactor);
  // Factor (b.X / a.X, b.Y / a.Y).
  ScaleFunctor(const Resolution& obFrom, const Resolution& obTo);
  // Factor from the aspect-ratio mode, for a source of size a stretched by the squish
  // (default (1, 1)) shown at size b:
  //   SCALE_TO_ASPECT_RATIO  the whole source fits inside b (letterbox or pillarbox);
  //   CROP_TO_ASPECT_RATIO   the source fills b, the excess is cropped;
  //   FREE_ASPECT_RATIO      (and any other value) each axis on its own: (r.X / b.X, r.Y / b.Y).
  ScaleFunctor(const Resolution& obFrom, const Resolution& obTo, DEWARP_ASPECT_RATIO eAspectRatio);
  ScaleFunctor(const Resolution& obFrom, const Resolution& obTo, DEWARP_ASPECT_RATIO eAspectRatio,
               const Vector2d& obSquish);
  ScaleFunctor(const ScaleFunctor& other);
  ScaleFunctor& operator=(const ScaleFunctor& other);
  virtual ~ScaleFunctor() {}

  void Set(const Vector2d& obScaleFactor) { m_obScaleFactor = obScaleFactor; }
  const Vector2d& GetScaleFactor() const { return m_obScaleFactor; }

  // (point.X * factor.X, point.Y * factor.Y).
  static Vector2d Scale(const Vector2d& obPoint, const Vector2d& obFactor);
  // The factor of the aspect-ratio constructors.
  static Vector2d AspectRatioFactor(const Resolution& obFrom, const Resolution& obTo,
                                    DEWARP_ASPECT_RATIO eAspectRatio, const Vector2d& obSquish);

  virtual Vector2d Call(const Vector2d& obPoint);

protected:
  Vector2d m_obScaleFactor;
};

}  // namespace libdewarp
}  // namespace vemo
