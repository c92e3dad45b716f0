#include <libdewarp_vemo/view.h>

#include <cerrno>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/performance_timer.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/scale_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

// Sets errno and throws the engine error, located in class View and the calling operation.
#define VIEW_FAIL(code, message)                                          \
  do {                                                                    \
    Error::SetLastError(code);                                            \
    throw Error(DEWARP_LOCATION("View"), (code), "%s", (message));        \
  } while (0)

namespace vemo {
namespace libdewarp {

namespace {

// Distance from a value to the nearer end of a range held as (high, low).
float DistanceToNearerEnd(float fValue, const Vector2d& obRange) {
  const float fToHigh = obRange.X - fValue;
  const float fToLow = fValue - obRange.Y;
  return FloatingPoint::is_less(fToHigh, fToLow) ? fToHigh : fToLow;
}

// Zoom at which half a field of view just fills the given distance. No room at all asks for
// as much zoom as there is (the range's zoom limit then decides).
float ZoomToFit(float fFov, float fDistance) {
  if (!FloatingPoint::is_greater(fDistance, 0.0f)) {
    return FloatingPoint::Infinity;
  }
  return (fFov * 0.5f) / fDistance;
}

}  // namespace

// ---- Construction ---------------------------------------------------------------------------

// The camera-only form leaves the aspect ratio to whoever uses the view; it holds the engine
// default until then, so that it is never read uninitialised.
View::View(const CameraPtr& pobCamera)
    : m_pobCamera(pobCamera),
      m_eAspectRatio(Defaults::AspectRatio),
      m_obProjectionFov(FieldOfView::InvalidFieldOfView),
      m_obSquish(Projection::IdentityScale),
      m_obPtzPosition(PtzPosition::Identity) {}

View::View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) : View(pobCamera) {
  m_eAspectRatio = Defaults::AspectRatio;
  BuildProjectionMap(eProjection);
}

View::View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection,
           DEWARP_ASPECT_RATIO eAspectRatio)
    : View(pobCamera) {
  m_eAspectRatio = eAspectRatio;
  BuildProjectionMap(eProjection);
}

View::View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection, const Resolution& obSize)
    : View(pobCamera) {
  m_eAspectRatio = Defaults::AspectRatio;
  BuildInitialChain(eProjection, obSize);
}

View::View(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection, const Resolution& obSize,
           DEWARP_ASPECT_RATIO eAspectRatio)
    : View(pobCamera) {
  m_eAspectRatio = eAspectRatio;
  BuildInitialChain(eProjection, obSize);
}

View::View(const View& other) { CopyFrom(other); }

View& View::operator=(const View& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "View");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

View::~View() {}

// Copies share the camera and all four maps.
void View::CopyFrom(const View& other) {
  m_pobCamera = other.m_pobCamera;
  m_eAspectRatio = other.m_eAspectRatio;
  m_obProjectionFov = other.m_obProjectionFov;
  m_obSquish = other.m_obSquish;
  m_obPtzPosition = other.m_obPtzPosition;
  m_pobScaleMap = other.m_pobScaleMap;
  m_pobProjectionMap = other.m_pobProjectionMap;
  m_pobScaledProjectionMap = other.m_pobScaledProjectionMap;
  m_pobPtzMap = other.m_pobPtzMap;
}

void View::BuildInitialChain(DEWARP_PROJECTION eProjection, const Resolution& obSize) {
  BuildProjectionMap(eProjection);
  BuildScaleMap(obSize);
  BuildScaledProjectionMap();
  ResetPtz();
}

// ---- Base behaviour of the overridable operations --------------------------------------------

// The plain view shows any projection as asked; the view kinds narrow this down.
DEWARP_PROJECTION View::GetCompatibleProjection(const CameraPtr&, DEWARP_PROJECTION eProjection) const {
  return eProjection;
}

PtzRange View::GetPtzRange(const CameraPtr&, const FieldOfView&) const {
  return PtzRange::CeilingPanoramicRange;
}

// The plain view covers whatever the camera's full projection map covers in that projection;
// the view kinds ask for the field of view of their layout instead.
FieldOfView View::GetTargetFov(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) const {
  if (!pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  return pobCamera->GetProjectionFieldOfView(pobCamera->GetProjectionMapSize(eProjection), eProjection);
}

DEWARP_PROJECTION View::GetDefaultProjection() const { return Defaults::Projection; }

DEWARP_ASPECT_RATIO View::GetDefaultAspectRatio() const { return Defaults::AspectRatio; }

View::ProjectionMapSize View::CalcProjectionMapSize(const CameraPtr& pobCamera,
                                                    DEWARP_PROJECTION eProjection) const {
  if (!pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  FieldOfView obFov = GetTargetFov(pobCamera, eProjection);
  Resolution obResolution = pobCamera->GetProjectionResolution(obFov, eProjection);

  const Resolution obFullSize = pobCamera->GetProjectionMapSize(eProjection);
  const FieldOfView obFullFov = pobCamera->GetProjectionFieldOfView(obFullSize, eProjection);
  if (FloatingPoint::is_greater(obFov.Vertical, obFullFov.Vertical)) {
    obFov = FieldOfView(obFov.Horizontal, obFullFov.Vertical, obFov.Diagonal);
    obResolution = Resolution(Vector2d(obResolution.X, obFullSize.Y));
  }

  if (!obResolution.Valid()) {
    VIEW_FAIL(EDOM, "Invalid projection resolution");
  }
  if (!obFov.Valid()) {
    VIEW_FAIL(EDOM, "Invalid projection field-of-view");
  }
  return ProjectionMapSize(obResolution, obFov);
}

View::ImageMapPtr View::BuildProjectionMap(const CameraPtr& pobCamera, DEWARP_PROJECTION eProjection) {
  if (!pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  const ProjectionMapSize obTarget = CalcProjectionMapSize(pobCamera, eProjection);
  const Resolution& obResolution = obTarget.first;
  const FieldOfView& obFov = obTarget.second;

  DEWARP_LOG_INFO("Target FOV = (%f, %f)\n",
                  static_cast<double>(Trigonometry::radians_to_degrees(obFov.Horizontal)),
                  static_cast<double>(Trigonometry::radians_to_degrees(obFov.Vertical)));
  DEWARP_LOG_INFO("Target resolution = (%f, %f)\n", static_cast<double>(obResolution.X),
                  static_cast<double>(obResolution.Y));
  if (!obResolution.Valid() || !obFov.Valid()) {
    VIEW_FAIL(EDOM, "Invalid projection resolution");
  }

  Vector2d obShift = Projection::ZeroShift;
  Vector2d obScale = Projection::IdentityScale;
  obShift = pobCamera->GetShift(eProjection, obResolution);
  obScale = pobCamera->GetScale(eProjection);
  DEWARP_LOG_INFO("Shift is = (%f, %f)\n", static_cast<double>(obShift.X), static_cast<double>(obShift.Y));
  DEWARP_LOG_INFO("Scale is = (%f, %f)\n", static_cast<double>(obScale.X), static_cast<double>(obScale.Y));

  m_obProjectionFov = obFov;
  return ImageMapPtr(pobCamera->BuildProjectionMap(obResolution, eProjection, obShift, obScale));
}

View::ImageMapPtr View::BuildScaleMap(const ImageMapPtr& pobProjectionMap, const Resolution& obSize,
                                      DEWARP_ASPECT_RATIO eAspectRatio) {
  if (!pobProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid projection map");
  }
  const Resolution obProjectionSize(pobProjectionMap->GetMapSize());
  ScaleMapBuilder obBuilder;
  return ImageMapPtr(obBuilder.BuildImageMap(obProjectionSize, obSize, eAspectRatio, m_obSquish));
}

View::ImageMapPtr View::BuildScaledProjectionMap(const ImageMapPtr& pobScaleMap,
                                                 const ImageMapPtr& pobProjectionMap) {
  if (!pobScaleMap || !pobProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid projection and scale map");
  }
  CombinedMapBuilder obBuilder;
  return ImageMapPtr(obBuilder.BuildImageMap(*pobScaleMap, *pobProjectionMap));
}

View::ImageMapPtr View::BuildPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                                    const ImageMapPtr& pobScaledProjectionMap) {
  return BuildPanesPtzMap(pobCamera, obPtzPosition, pobScaledProjectionMap, 1u);
}

View::ImageMapPtr View::BuildPanesPtzMap(const CameraPtr& pobCamera, const PtzPosition& obPtzPosition,
                                         const ImageMapPtr& pobScaledProjectionMap,
                                         unsigned int uPanes) const {
  if (!pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  if (!pobScaledProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid scaled projection map");
  }
  return ImageMapPtr(pobCamera->BuildPtzMap(obPtzPosition, *pobScaledProjectionMap, uPanes));
}

DEWARP_PROJECTION View::SubstituteProjection(DEWARP_PROJECTION eProjection) const {
  DEWARP_LOG_WARN("The %s projection is unsupported by this view\n", Projection::GetName(eProjection));
  const DEWARP_PROJECTION eSubstitute = GetDefaultProjection();
  DEWARP_LOG_INFO("The %s projection will be substituted\n", Projection::GetName(eSubstitute));
  return eSubstitute;
}

// ---- The chain ---------------------------------------------------------------------------------
//
// Each builder below replaces its link only with a finished map. When a build fails the link is
// left empty, so that the next CheckMaps builds it again instead of remapping through a map that
// no longer fits the links before it; the earlier links stay as they were.

// Every projection requested of a view passes through the view's GetCompatibleProjection before
// its projection map is built. A view kind therefore builds its map only for a projection that it
// can show, and a request it cannot show is replaced (and logged) rather than refused, so that
// every view kind shows a picture for every projection a caller may request.
void View::BuildProjectionMap(DEWARP_PROJECTION eProjection) {
  PerformanceTimer obTimer("projection map build");
  m_pobProjectionMap.reset();
  if (!m_pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  const DEWARP_PROJECTION eCompatible = GetCompatibleProjection(m_pobCamera, eProjection);
  ImageMapPtr pobMap = BuildProjectionMap(m_pobCamera, eCompatible);
  if (!pobMap) {
    VIEW_FAIL(EINVAL, "Invalid projection map");
  }
  m_pobProjectionMap = pobMap;
}

void View::BuildScaleMap(const Resolution& obSize) {
  PerformanceTimer obTimer("scale map build");
  if (!m_pobProjectionMap) {
    m_pobScaleMap.reset();
    VIEW_FAIL(EFAULT, "Invalid projection map");
  }
  m_pobScaleMap.reset();
  ImageMapPtr pobMap = BuildScaleMap(m_pobProjectionMap, obSize, m_eAspectRatio);
  if (!pobMap) {
    VIEW_FAIL(EINVAL, "Invalid scale map");
  }
  m_pobScaleMap = pobMap;
}

void View::BuildScaledProjectionMap() {
  PerformanceTimer obTimer("combinded map build");
  m_pobScaledProjectionMap.reset();
  if (!m_pobScaleMap || !m_pobProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid projection and scale map");
  }
  ImageMapPtr pobMap = BuildScaledProjectionMap(m_pobScaleMap, m_pobProjectionMap);
  if (!pobMap) {
    VIEW_FAIL(EINVAL, "Invalid scaled projection map");
  }
  m_pobScaledProjectionMap = pobMap;
}

void View::BuildPtzMap() {
  PerformanceTimer obTimer("PTZ map build");
  m_pobPtzMap.reset();
  if (!m_pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  if (!m_pobScaledProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid scaled projection map");
  }
  ImageMapPtr pobMap = BuildPtzMap(m_pobCamera, m_obPtzPosition, m_pobScaledProjectionMap);
  if (!pobMap) {
    VIEW_FAIL(EINVAL, "Invalid PTZ map");
  }
  m_pobPtzMap = pobMap;
}

bool View::CheckMaps(const Resolution& obSize) {
  if (!m_pobProjectionMap) {
    VIEW_FAIL(EFAULT, "Invalid projection map");
  }
  if (!m_pobScaleMap) {
    BuildScaleMap(obSize);
    BuildScaledProjectionMap();
    BuildPtzMap();
  } else if (obSize != m_pobScaleMap->GetMapSize()) {
    SetDewarpedSize(obSize);
  }
  if (!m_pobScaledProjectionMap) {
    BuildScaledProjectionMap();
    BuildPtzMap();
  }
  if (!m_pobPtzMap) {
    BuildPtzMap();
  }
  return static_cast<bool>(m_pobPtzMap);
}

void View::SetDewarpedSize(const Resolution& obSize) {
  BuildScaleMap(obSize);
  BuildScaledProjectionMap();
  BuildPtzMap();
}

void View::SetDewarpedSize(const Resolution& obSize, DEWARP_ASPECT_RATIO eAspectRatio) {
  m_eAspectRatio = eAspectRatio;
  SetDewarpedSize(obSize);
}

void View::SetAspectRatio(DEWARP_ASPECT_RATIO eAspectRatio) {
  m_eAspectRatio = eAspectRatio;
  if (m_pobScaleMap) {
    SetDewarpedSize(Resolution(m_pobScaleMap->GetMapSize()));
  }
}

DEWARP_ASPECT_RATIO View::GetAspectRatio() const { return m_eAspectRatio; }

void View::SetFov(const FieldOfView& obFov) { m_obProjectionFov = obFov; }

FieldOfView View::GetFov() const { return m_obProjectionFov; }

void View::SetSquish(const Vector2d& obSquish) { m_obSquish = obSquish; }

Vector2d View::GetSquish() const { return m_obSquish; }

Vector2d View::GetProjectionSize() const {
  if (!m_pobProjectionMap) {
    VIEW_FAIL(EINVAL, "Invalid projection map");
  }
  return m_pobProjectionMap->GetMapSize();
}

// ---- PTZ ---------------------------------------------------------------------------------------

PtzPosition View::GetPtz() const { return m_obPtzPosition; }

PtzRange View::GetPtzRange() const {
  if (!m_pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  return GetPtzRange(m_pobCamera, GetFov());
}

PtzPosition View::LimitPtz(const PtzPosition& obPosition) const {
  FieldOfView obFov = GetFov();
  PtzRange obRange = GetPtzRange();
  const float fZoom = obRange.LimitZoom(obPosition.m_fZoom);
  obFov /= fZoom;
  if (m_eAspectRatio > 2) {
    DEWARP_LOG_WARN("Invalid aspect ratio\n");
  }
  obRange.Deflate(obFov);
  return obRange.Limit(obPosition);
}

float View::BestZoom(const PtzPosition& obPosition) const {
  const FieldOfView obFov = GetFov();
  const PtzRange obRange = GetPtzRange();
  const EulerAngles& obOrientation = obPosition.m_obOrientation;
  const float fPanZoom =
      ZoomToFit(obFov.Horizontal, DistanceToNearerEnd(obOrientation.Yaw, obRange.m_obPanRange));
  const float fTiltZoom =
      ZoomToFit(obFov.Vertical, DistanceToNearerEnd(obOrientation.Pitch, obRange.m_obTiltRange));
  const float fBest = FloatingPoint::is_greater(fPanZoom, fTiltZoom) ? fPanZoom : fTiltZoom;
  return obRange.LimitZoom(fBest);
}

PtzPosition View::SetPtz(const PtzPosition& obPosition) {
  const PtzPosition obLimited = LimitPtz(obPosition);
  if (obLimited != m_obPtzPosition) {
    m_obPtzPosition = obLimited;
    m_pobPtzMap.reset();
  }
  return m_obPtzPosition;
}

PtzPosition View::ResetPtz() {
  PtzPosition obPosition;
  obPosition.SetIdentity();
  return SetPtz(obPosition);
}

PtzPosition View::CalcPtzPosition(const Vector2d& obPoint, float fMaxZoom) const {
  if (!m_pobCamera) {
    VIEW_FAIL(EFAULT, "Invalid camera");
  }
  const Vector2d obAngles = m_pobCamera->MapHitPoint(obPoint);
  const EulerAngles obOrientation(obAngles.X, obAngles.Y, 0.0f);
  PtzPosition obPosition = LimitPtz(PtzPosition(obOrientation, fMaxZoom));
  const float fBest = BestZoom(obPosition);
  // Never more than the caller's zoom; also when the best zoom cannot be told (NaN).
  obPosition.m_fZoom = FloatingPoint::is_less(fBest, fMaxZoom) ? fBest : fMaxZoom;
  return obPosition;
}

void View::DewarpImage(const Image& obInput, Image& obOutput, DEWARP_INTERPOLATION eInterpolation) {
  PerformanceTimer obTimer("image dewarp");
  if (!CheckMaps(Resolution(obOutput.GetWidth(), obOutput.GetHeight()))) {
    VIEW_FAIL(EINVAL, "Invalid PTZ map");
  }
  m_pobPtzMap->Remap(obInput, obOutput, eInterpolation);
}

// ---- Accessors ---------------------------------------------------------------------------------

View::CameraPtr View::GetCamera() const { return m_pobCamera; }
View::ImageMapPtr View::GetProjectionMap() const { return m_pobProjectionMap; }
View::ImageMapPtr View::GetScaleMap() const { return m_pobScaleMap; }
View::ImageMapPtr View::GetScaledProjectionMap() const { return m_pobScaledProjectionMap; }
View::ImageMapPtr View::GetPtzMap() const { return m_pobPtzMap; }

}  // namespace libdewarp
}  // namespace vemo
