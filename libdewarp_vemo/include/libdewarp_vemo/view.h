// One output layout of one camera: the chain of four coordinate maps from the output frame back
// into the camera frame, and the PTZ position that the last link shows.
//
//   1. projection map         flat projection -> camera image (built by the camera)
//   2. scale map              output size     -> projection (aspect-ratio handling and squish)
//   3. scaled projection map  composition of 2 and 1
//   4. PTZ map                the part of 3 that the current pan, tilt and zoom show
//
// Each link is rebuilt only when one of its inputs changes: a new output size or aspect ratio
// replaces links 2 to 4, a new PTZ position drops link 4, and a new projection needs a new view.
#pragma once

#include <utility>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/ptz_range.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class Camera;
class Image;
class ImageMap;

class View {
public:
  typedef boost::shared_ptr<Camera> CameraPtr;
  typedef boost::shared_ptr<ImageMap> ImageMapPtr;
  // Target resolution and target field of view of a projection map.
  typedef std::pair<Resolution, FieldOfView> ProjectionMapSize;

  explicit View(const CameraPtr& pobCamera);
  View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection, DEWARP_ASPECT_RATIO eAspectRatio);
  View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection, const Resolution& obSize);
  View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection, const Resolution& obSize,
       DEWARP_ASPECT_RATIO eAspectRatio);
  View(const View& other);
  View& operator=(const View& other);
  virtual ~View();

  // ---- Operations that the view kinds override -------------------------------------------
  virtual DEWARP_PROJECTION GetCompatibleProjection(const CameraPtr& pobCamera,
                                                    DEWARP_PROJECTION eProjection) const;
  virtual PtzRange GetPtzRange(const CameraPtr& pobCamera, const FieldOfView& obFov) const;
  virtual FieldOfView GetTargetFov(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) const;
  virtual DEWARP_PROJECTION GetDefaultProjection() const;
  virtual DEWARP_ASPECT_RATIO GetDefaultAspectRatio() const;
  virtual ProjectionMapSize CalcProjectionMapSize(const CameraPtr& pobCamera,
                                                  DEWARP_PROJECTION eProjection) const;
  // Builders of the four links; each returns a new map or an empty pointer.
  virtual ImageMapPtr BuildProjectionMap(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection);
  virtual ImageMapPtr BuildScaleMap(const ImageMapPtr& pobProjectionMap, const Resolution& obSize,
                                    DEWARP_ASPECT_RATIO eAspectRatio);
  virtual ImageMapPtr BuildScaledProjectionMap(const ImageMapPtr& pobScaleMap,
                                               const ImageMapPtr& pobProjectionMap);
  virtual ImageMapPtr BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                                  const ImageMapPtr& pobScaledProjectionMap);

  // ---- The chain, built with the view's own state ----------------------------------------
  void BuildProjectionMap(DEWARP_PROJECTION eProjection);
  void BuildScaleMap(const Resolution& obSize);
  void BuildScaledProjectionMap();
  void BuildPtzMap();
  // Brings the chain up to date for an output of the given size; true when a PTZ map exists.
  bool CheckMaps(const Resolution& obSize);

  void SetDewarpedSize(const Resolution& obSize);
  void SetDewarpedSize(const Resolution& obSize, DEWARP_ASPECT_RATIO eAspectRatio);
  void SetAspectRatio(DEWARP_ASPECT_RATIO eAspectRatio);
  DEWARP_ASPECT_RATIO GetAspectRatio() const;
  void SetFov(const FieldOfView& obFov);
  FieldOfView GetFov() const;
  void SetSquish(const Vector2d& obSquish);
  Vector2d GetSquish() const;
  Vector2d GetProjectionSize() const;

  // ---- PTZ -------------------------------------------------------------------------------
  PtzPosition GetPtz() const;
  PtzRange GetPtzRange() const;
  PtzPosition LimitPtz(const PtzPosition& obPosition) const;
  float BestZoom(const PtzPosition& obPosition) const;
  PtzPosition SetPtz(const PtzPosition& obPosition);
  PtzPosition ResetPtz();
  // The PTZ position that centres the view on a point of the camera image, zoomed in as far as
  // the range allows but never beyond fMaxZoom. The view's own position is not changed.
  PtzPosition CalcPtzPosition(const Vector2d& obPoint, float fMaxZoom) const;

  // Remaps one frame through the PTZ map, building whatever link is missing for its size.
  void DewarpImage(const Image& obInput, Image& obOutput, DEWARP_INTERPOLATION eInterpolation);

  // The camera and the four links as they stand (empty pointers for links not built).
  CameraPtr GetCamera() const;
  ImageMapPtr GetProjectionMap() const;
  ImageMapPtr GetScaleMap() const;
  ImageMapPtr GetScaledProjectionMap() const;
  ImageMapPtr GetPtzMap() const;

protected:
  // Logs that a projection cannot be shown by this view and returns the view's default
  // projection in its place.
  DEWARP_PROJECTION SubstituteProjection(DEWARP_PROJECTION eProjection) const;
  // The camera's PTZ map over the scaled projection map, laid out in the given number of panes.
  ImageMapPtr BuildPanesPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                               const ImageMapPtr& pobScaledProjectionMap, unsigned int uPanes) const;
  void CopyFrom(const View& other);

  CameraPtr m_pobCamera;
  DEWARP_ASPECT_RATIO m_eAspectRatio;
  FieldOfView m_obProjectionFov;
  Vector2d m_obSquish;
  PtzPosition m_obPtzPosition;
  ImageMapPtr m_pobScaleMap;
  ImageMapPtr m_pobProjectionMap;
  ImageMapPtr m_pobScaledProjectionMap;
  ImageMapPtr m_pobPtzMap;

private:
  void BuildInitialChain(DEWARP_PROJECTION eProjection, const Resolution& obSize);
};

}  // namespace libdewarp
}  // namespace vemo
