// One camera stream's dewarping state: camera model and mounting, chosen layout, projection,
// aspect ratio and interpolation, the current view and the cache of views already built.
#pragma once

#include <mutex>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/read_write_mutex.h>
#include <libdewarp_vemo/view_cache.h>

namespace vemo {
namespace libdewarp {

class Camera;
class View;
class Vector2d;

class Channel {
public:
  Channel();
  explicit Channel(const DEWARP_CHANNEL_SETTINGS& settings);
  Channel(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount);
  Channel(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount,
          const DEWARP_CHANNEL_SETTINGS& settings);
  Channel(const Channel& other);
  Channel& operator=(const Channel& other);
  virtual ~Channel();

  bool SetModel(const DEWARP_INTERNAL_CAMERA_MODEL& model);
  bool SetModel(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount);
  DEWARP_INTERNAL_CAMERA_MODEL GetModel();
  bool SetMount(DEWARP_INTERNAL_CAMERA_MOUNT mount);
  DEWARP_INTERNAL_CAMERA_MOUNT GetMount();
  bool SetView(DEWARP_VIEW view);
  DEWARP_VIEW GetView();
  bool SetProjection(DEWARP_VIEW view, DEWARP_PROJECTION projection);
  DEWARP_PROJECTION GetProjection();
  bool SetAspectRatio(DEWARP_ASPECT_RATIO aspectRatio);
  DEWARP_ASPECT_RATIO GetAspectRatio();
  bool SetInterpolation(DEWARP_INTERPOLATION interpolation);
  DEWARP_INTERPOLATION GetInterpolation();
  bool GetNativeResolution(DEWARP_RESOLUTION& resolution);
  bool SetPtz(DEWARP_PTZ_POSITION& position);
  bool ResetPtz();
  bool GetPtz(DEWARP_PTZ_POSITION& position);
  bool GetPtzRange(DEWARP_PTZ_RANGE& range);
  bool CalcPtzPosition(const Vector2d& point, float maxZoom, DEWARP_PTZ_POSITION& position);
  bool DewarpImage(const DEWARP_IMAGE& warped, DEWARP_IMAGE& dewarped);

  // A projection size as the native resolution record: each component truncated toward zero;
  // negative sizes and sizes that are not numbers give 0, sizes beyond the record's range its
  // largest value.
  static DEWARP_RESOLUTION ToNativeResolution(const Vector2d& projectionSize);

private:
  void BuildCamera(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount);
  boost::shared_ptr<View> BuildView(DEWARP_VIEW view, DEWARP_PROJECTION projection);
  boost::shared_ptr<View> GetViewObject(DEWARP_VIEW view, DEWARP_PROJECTION projection);
  boost::shared_ptr<View> GetViewObject();
  void SetCurrentView(const boost::shared_ptr<View>& view);
  void ThrowInvalidCamera(const char* function) const;

  boost::shared_ptr<ReadWriteMutex> m_pobMutex;
  boost::shared_ptr<Camera> m_pobCamera;
  boost::shared_ptr<View> m_pobCurrentView;
  DEWARP_VIEW m_eView;
  DEWARP_INTERPOLATION m_eInterpolation;
  DEWARP_ASPECT_RATIO m_eAspectRatio;
  DEWARP_PROJECTION m_eProjection;
  ViewCache m_obViews;
  // Several readers may fill the current view lazily at once (getters and the dewarping thread
  // share the read lock); this lock serialises that fill and the view cache behind it. Copies of
  // a channel share it, as they share the read-write lock.
  boost::shared_ptr<std::recursive_mutex> m_pobViewMutex;
};

}  // namespace libdewarp
}  // namespace vemo
