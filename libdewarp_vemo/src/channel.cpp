#include <libdewarp_vemo/channel.h>

#include <cerrno>
#include <cmath>
#include <memory>
#include <new>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/camera_builder.h>
#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/image.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/ptz_range.h>
#include <libdewarp_vemo/vector_2d.h>
#include <libdewarp_vemo/view.h>
#include <libdewarp_vemo/view_builder.h>

namespace vemo {
namespace libdewarp {

namespace {

// A projection size truncated toward zero into a record field; sizes that are negative or not
// numbers give 0 rather than an undefined conversion.
unsigned int TruncateSize(float value) {
  if (!(value >= 0.0f)) return 0;
  if (value >= 4294967295.0f) return 4294967295u;
  return static_cast<unsigned int>(value);
}

}  // namespace

DEWARP_RESOLUTION Channel::ToNativeResolution(const Vector2d& projectionSize) {
  DEWARP_RESOLUTION resolution;
  resolution.Width = TruncateSize(projectionSize.X);
  resolution.Height = TruncateSize(projectionSize.Y);
  return resolution;
}

Channel::Channel()
    : m_pobMutex(new ReadWriteMutex),
      m_eView(Defaults::View),
      m_eInterpolation(Defaults::Interpolation),
      m_eAspectRatio(Defaults::AspectRatio),
      m_eProjection(Defaults::Projection),
      m_pobViewMutex(new std::recursive_mutex) {}

Channel::Channel(const DEWARP_CHANNEL_SETTINGS& settings)
    : m_pobMutex(new ReadWriteMutex),
      m_eView(settings.View),
      m_eInterpolation(settings.Interpolation),
      m_eAspectRatio(settings.AspectRatio),
      m_eProjection(settings.Projection),
      m_pobViewMutex(new std::recursive_mutex) {}

Channel::Channel(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount)
    : Channel() {
  BuildCamera(model, mount);
  if (m_pobCamera) {
    m_eAspectRatio = m_pobCamera->GetDefaultAspectRatio();
    m_eProjection = m_pobCamera->GetDefaultProjection();
  }
}

Channel::Channel(const DEWARP_INTERNAL_CAMERA_MODEL& model, DEWARP_INTERNAL_CAMERA_MOUNT mount,
                 const DEWARP_CHANNEL_SETTINGS& settings)
    : Channel(settings) {
  BuildCamera(model, mount);
}

Channel::Channel(const Channel& other) = default;

Channel& Channel::operator=(const Channel& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Channel");
    return *this;
  }
  m_pobMutex = other.m_pobMutex;
  m_pobCamera = other.m_pobCamera;
  m_pobCurrentView = other.m_pobCurrentView;
  m_eView = other.m_eView;
  m_eInterpolation = other.m_eInterpolation;
  m_eAspectRatio = other.m_eAspectRatio;
  m_eProjection = other.m_eProjection;
  m_obViews = other.m_obViews;
  m_pobViewMutex = other.m_pobViewMutex;
  return *this;
}

// Releases the current view, the cache, the camera and the lock, in that order.
Channel::~Channel() {
  m_pobCurrentView.reset();
  m_obViews.Clear();
  m_pobCamera.reset();
  m_pobMutex.reset();
}

void Channel::BuildCamera(const DEWARP_INTERNAL_CAMERA_MODEL& model,
                          DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  CameraBuilder builder;
  m_pobCamera.reset(builder.MakeCamera(model, mount));
  if (m_pobCamera) m_pobCamera->LogCameraInfo();
}

// A view that cannot be allocated is no view: the caller reports it as "Could not build view"
// (ENOMEM) instead of letting the allocation failure through.
boost::shared_ptr<View> Channel::BuildView(DEWARP_VIEW view, DEWARP_PROJECTION projection) {
  if (!m_pobCamera) return boost::shared_ptr<View>();
  ViewBuilder builder;
  boost::shared_ptr<View> result;
  try {
    result.reset(builder.BuildView(view, m_pobCamera, projection));
  } catch (const std::bad_alloc&) {
    return boost::shared_ptr<View>();
  }
  if (result) result->SetAspectRatio(m_eAspectRatio);
  return result;
}

void Channel::ThrowInvalidCamera(const char* function) const {
  DEWARP_LOG_ERR("The camera object was invalid\n");
  Error::SetLastError(EFAULT);
  throw Error(CodeLocation(__FILE__, "Channel", function, __LINE__), EFAULT, "Invalid camera");
}

boost::shared_ptr<View> Channel::GetViewObject(DEWARP_VIEW view, DEWARP_PROJECTION projection) {
  std::lock_guard<std::recursive_mutex> guard(*m_pobViewMutex);
  if (!m_pobCamera) ThrowInvalidCamera("GetViewObject");
  const DEWARP_INTERNAL_CAMERA_MOUNT mount = m_pobCamera->GetCameraMount();
  boost::shared_ptr<View> result = m_obViews.Get(mount, projection, view);
  if (result) return result;
  result = BuildView(view, projection);
  if (!result) {
    DEWARP_LOG_ERR("Could not build view\n");
    Error::SetLastError(ENOMEM);
    throw Error(CodeLocation(__FILE__, "Channel", "GetViewObject", __LINE__), ENOMEM,
                "Invalid view");
  }
  m_obViews.Set(mount, projection, view, result);
  return result;
}

boost::shared_ptr<View> Channel::GetViewObject() {
  std::lock_guard<std::recursive_mutex> guard(*m_pobViewMutex);
  if (!m_pobCurrentView) m_pobCurrentView = GetViewObject(m_eView, m_eProjection);
  return m_pobCurrentView;
}

void Channel::SetCurrentView(const boost::shared_ptr<View>& view) {
  std::lock_guard<std::recursive_mutex> guard(*m_pobViewMutex);
  m_pobCurrentView = view;
}

bool Channel::SetModel(const DEWARP_INTERNAL_CAMERA_MODEL& model) {
  // The mount deliberately returns to the default (wall) whatever it was.
  return SetModel(model, Defaults::CameraMount);
}

bool Channel::SetModel(const DEWARP_INTERNAL_CAMERA_MODEL& model,
                       DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  WriteLock lock(*m_pobMutex);
  BuildCamera(model, mount);
  SetCurrentView(boost::shared_ptr<View>());
  m_obViews.Clear();
  GetViewObject();
  return static_cast<bool>(m_pobCamera);
}

// Callers need no lock for the model; the read lock taken here only keeps a concurrent SetModel
// from replacing the camera while it is read.
DEWARP_INTERNAL_CAMERA_MODEL Channel::GetModel() {
  ReadLock lock(*m_pobMutex);
  if (!m_pobCamera) ThrowInvalidCamera("GetModel");
  return m_pobCamera->GetCameraModel();
}

bool Channel::SetMount(DEWARP_INTERNAL_CAMERA_MOUNT mount) {
  WriteLock lock(*m_pobMutex);
  if (!m_pobCamera) {
    DEWARP_LOG_ERR("The camera was invalid\n");
    return true;
  }
  m_pobCamera->SetCameraMount(mount);
  SetCurrentView(boost::shared_ptr<View>());
  GetViewObject();
  return true;
}

DEWARP_INTERNAL_CAMERA_MOUNT Channel::GetMount() {
  ReadLock lock(*m_pobMutex);
  return m_pobCamera ? m_pobCamera->GetCameraMount() : Defaults::CameraMount;
}

bool Channel::SetView(DEWARP_VIEW view) {
  WriteLock lock(*m_pobMutex);
  m_eView = view;
  SetCurrentView(GetViewObject(view, m_eProjection));
  if (!m_pobCurrentView) return false;
  m_pobCurrentView->SetAspectRatio(m_eAspectRatio);
  return true;
}

DEWARP_VIEW Channel::GetView() {
  ReadLock lock(*m_pobMutex);
  return m_eView;
}

bool Channel::SetProjection(DEWARP_VIEW view, DEWARP_PROJECTION projection) {
  WriteLock lock(*m_pobMutex);
  m_eProjection = projection;
  m_eView = view;
  SetCurrentView(GetViewObject(view, projection));
  if (!m_pobCurrentView) return false;
  m_pobCurrentView->SetAspectRatio(m_eAspectRatio);
  return true;
}

DEWARP_PROJECTION Channel::GetProjection() {
  ReadLock lock(*m_pobMutex);
  return m_eProjection;
}

bool Channel::SetAspectRatio(DEWARP_ASPECT_RATIO aspectRatio) {
  WriteLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return false;
  }
  m_eAspectRatio = aspectRatio;
  view->SetAspectRatio(aspectRatio);
  return true;
}

DEWARP_ASPECT_RATIO Channel::GetAspectRatio() {
  ReadLock lock(*m_pobMutex);
  return m_eAspectRatio;
}

bool Channel::SetInterpolation(DEWARP_INTERPOLATION interpolation) {
  WriteLock lock(*m_pobMutex);
  m_eInterpolation = interpolation;
  return true;
}

DEWARP_INTERPOLATION Channel::GetInterpolation() {
  ReadLock lock(*m_pobMutex);
  return m_eInterpolation;
}

bool Channel::GetNativeResolution(DEWARP_RESOLUTION& resolution) {
  ReadLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return false;
  }
  resolution = ToNativeResolution(view->GetProjectionSize());
  return true;
}

// The PTZ setters and getters report success even without a view; the failure is only logged.
bool Channel::SetPtz(DEWARP_PTZ_POSITION& position) {
  WriteLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return true;
  }
  PtzPosition taken = view->SetPtz(PtzPosition(position));
  taken.Get(position);
  return true;
}

bool Channel::ResetPtz() {
  WriteLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return true;
  }
  view->ResetPtz();
  return true;
}

bool Channel::GetPtz(DEWARP_PTZ_POSITION& position) {
  ReadLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return true;
  }
  view->GetPtz().Get(position);
  return true;
}

bool Channel::GetPtzRange(DEWARP_PTZ_RANGE& range) {
  ReadLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) {
    DEWARP_LOG_ERR("The view was invalid\n");
    return true;
  }
  range = view->GetPtzRange().Get();
  return true;
}

bool Channel::CalcPtzPosition(const Vector2d& point, float maxZoom,
                              DEWARP_PTZ_POSITION& position) {
  ReadLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) return false;
  view->CalcPtzPosition(point, maxZoom).Get(position);
  return true;
}

bool Channel::DewarpImage(const DEWARP_IMAGE& warped, DEWARP_IMAGE& dewarped) {
  ReadLock lock(*m_pobMutex);
  boost::shared_ptr<View> view = GetViewObject();
  if (!view) return false;
  std::unique_ptr<Image> input(Image::ImageClassFactory(warped));
  std::unique_ptr<Image> output(Image::ImageClassFactory(dewarped));
  // Only planar 4:2:0 frames have an image class; any other format is refused here, before a
  // frame is touched.
  if (!input || !output) {
    Error::SetLastError(EINVAL);
    throw Error(CodeLocation(__FILE__, "Channel", "DewarpImage", __LINE__), EINVAL,
                "Invalid image format");
  }
  view->DewarpImage(*input, *output, m_eInterpolation);
  dewarped.Data = output->GetImage();
  output->ReleaseOwnership();
  return true;
}

}  // namespace libdewarp
}  // namespace vemo
