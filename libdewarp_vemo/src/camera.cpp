#include <libdewarp_vemo/camera.h>

#include <cerrno>

#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/trigonometry.h>

namespace vemo {
namespace libdewarp {

const DEWARP_FLOAT Camera::MaxRectilinearFov = 140.0f * Trigonometry::DEGREES_TO_RADIANS;

namespace {

typedef Vector2d (*FieldOfViewFunction)(const Vector2d&, DEWARP_FLOAT);
typedef Vector2d (*ResolutionFunction)(const Vector2d&, DEWARP_FLOAT);

// The field-of-view and resolution functions of each output projection, in the order of the
// public projection values.
struct ProjectionMeasures {
  FieldOfViewFunction pfnFieldOfView;
  ResolutionFunction pfnResolution;
};

const ProjectionMeasures kMeasures[] = {
    {&Projection::RectilinearFieldOfView, &Projection::RectilinearResolution},
    {&Projection::CylindricalFieldOfView, &Projection::CylindricalResolution},
    {&Projection::EquirectangularFieldOfView, &Projection::EquirectangularResolution},
    {&Projection::MercatorFieldOfView, &Projection::MercatorResolution},
    {&Projection::LambertCylindricalFieldOfView, &Projection::LambertCylindricalResolution},
    {&Projection::MillerCylindricalFieldOfView, &Projection::MillerCylindricalResolution},
    {&Projection::PanniniFieldOfView, &Projection::PanniniResolution},
    {&Projection::ArchitecturalFieldOfView, &Projection::ArchitecturalResolution},
    {&Projection::EquirectangularPanniniFieldOfView, &Projection::EquirectangularPanniniResolution},
};
const int kMeasureCount = static_cast<int>(sizeof(kMeasures) / sizeof(kMeasures[0]));

const ProjectionMeasures* MeasuresOf(DEWARP_PROJECTION eProjection) {
  const int n = static_cast<int>(eProjection);
  return (n >= 0 && n < kMeasureCount) ? &kMeasures[n] : 0;
}

// A rectilinear image cannot reach a half turn; its angles are held at MaxRectilinearFov.
// NaN is kept as it is.
Vector2d LimitRectilinear(const Vector2d& obAngles) {
  const DEWARP_FLOAT fMax = Camera::MaxRectilinearFov;
  return Vector2d(FloatingPoint::is_greater(obAngles.X, fMax) ? fMax : obAngles.X,
                  FloatingPoint::is_greater(obAngles.Y, fMax) ? fMax : obAngles.Y);
}

// A model with no lens: the default camera type, no field of view, no pixels.
DEWARP_INTERNAL_CAMERA_MODEL EmptyModel() {
  DEWARP_INTERNAL_CAMERA_MODEL stdModel;
  stdModel.Type = Defaults::CameraType;
  stdModel.FovD = 0.0f;
  stdModel.FovH = 0.0f;
  stdModel.FovV = 0.0f;
  stdModel.ResolutionH = 0;
  stdModel.ResolutionV = 0;
  return stdModel;
}

}  // namespace

// The default camera holds an empty model of the default type on the default mount.
Camera::Camera() : m_eType(Defaults::CameraType), m_eMount(Defaults::CameraMount) {
  SetCameraModel(EmptyModel());
}

Camera::Camera(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel, DEWARP_INTERNAL_CAMERA_MOUNT eMount)
    : m_eType(stdModel.Type), m_eMount(eMount) {
  SetCameraModel(stdModel);
  SetCameraMount(eMount);
}

Camera::Camera(const Camera& other) : m_eType(other.m_eType), m_eMount(other.m_eMount) { CopyFrom(other); }

Camera& Camera::operator=(const Camera& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Camera");
    return *this;
  }
  CopyFrom(other);
  return *this;
}

Camera::~Camera() {}

void Camera::CopyFrom(const Camera& other) {
  m_eType = other.m_eType;
  m_obFov = other.m_obFov;
  m_obResolution = other.m_obResolution;
  m_stdModel = other.m_stdModel;
  m_eMount = other.m_eMount;
}

void Camera::SetCameraModel(const DEWARP_INTERNAL_CAMERA_MODEL& stdModel) {
  m_eType = stdModel.Type;
  // The model's own diagonal is kept, not recomputed from the other two angles.
  m_obFov = FieldOfView(Trigonometry::degrees_to_radians(stdModel.FovH),
                        Trigonometry::degrees_to_radians(stdModel.FovV),
                        Trigonometry::degrees_to_radians(stdModel.FovD));
  m_obResolution = Resolution(stdModel.ResolutionH, stdModel.ResolutionV);
  m_stdModel = stdModel;
}

void Camera::SetCameraMount(DEWARP_INTERNAL_CAMERA_MOUNT eMount) { m_eMount = eMount; }

DEWARP_INTERNAL_CAMERA_TYPE Camera::GetCameraType() const { return m_eType; }
FieldOfView Camera::GetCameraFieldOfView() const { return m_obFov; }
Resolution Camera::GetCameraResolution() const { return m_obResolution; }
DEWARP_INTERNAL_CAMERA_MODEL Camera::GetCameraModel() const { return m_stdModel; }
DEWARP_INTERNAL_CAMERA_MOUNT Camera::GetCameraMount() const { return m_eMount; }

bool Camera::IsHorizontal() const { return m_eMount == WALL_MOUNT || m_eMount == INVERTED_WALL_MOUNT; }
bool Camera::IsVertical() const { return m_eMount == CEILING_MOUNT || m_eMount == FLOOR_MOUNT; }

DEWARP_PROJECTION Camera::GetDefaultProjection() const { return Defaults::Projection; }
DEWARP_ASPECT_RATIO Camera::GetDefaultAspectRatio() const { return Defaults::AspectRatio; }

// The focal length follows the type of the stored model, whichever lens class holds it, so a
// model of unknown type yields NaN.
DEWARP_FLOAT Camera::GetFocalLength() const {
  const DEWARP_FLOAT fHalfWidth = 0.5f * m_obResolution.X;
  const DEWARP_FLOAT fHalfAngle = 0.5f * m_obFov.Horizontal;
  switch (m_eType) {
    case RECTILINEAR_CAMERA:
      return Projection::RectilinearFocalLength(fHalfWidth, fHalfAngle);
    case CIRCULAR_FISHEYE_CAMERA:
      return Projection::FisheyeFocalLength(fHalfWidth, fHalfAngle);
    default:
      return FloatingPoint::Nan;
  }
}

// Ceiling and floor panoramas use the half of the projection on their side of the horizon,
// stretched to the full height.
Vector2d Camera::GetScale(DEWARP_PROJECTION /*eProjection*/) const {
  if (IsVertical()) return Vector2d(1.0f, 0.5f);
  return Projection::IdentityScale;
}

Vector2d Camera::GetShift(DEWARP_PROJECTION /*eProjection*/, const Vector2d& obSize) const {
  switch (m_eMount) {
    case CEILING_MOUNT:
      return Vector2d(0.0f, obSize.Y * 0.5f);
    case FLOOR_MOUNT:
      return Vector2d(0.0f, -obSize.Y * 0.5f);
    default:
      return Projection::ZeroShift;
  }
}

// The four edge midpoints of the camera image, taken through the functor from the projection to
// the lens, span the natural size of the projection.
Resolution Camera::GetProjectionMapSize(DEWARP_PROJECTION eProjection) const {
  ProjectionFunctor obFunctor(eProjection, m_eType, GetFocalLength(), Projection::IdentityScale);
  const Vector2d obNorth = obFunctor(m_obResolution.NorthOffset());
  const Vector2d obSouth = obFunctor(m_obResolution.SouthOffset());
  const Vector2d obEast = obFunctor(m_obResolution.EastOffset());
  const Vector2d obWest = obFunctor(m_obResolution.WestOffset());
  return Resolution(FloatingPoint::floor(obEast.X - obWest.X), FloatingPoint::floor(obNorth.Y - obSouth.Y));
}

// A projection outside the public list has no measures: the result is invalid.
FieldOfView Camera::GetProjectionFieldOfView(const Resolution& obResolution, DEWARP_PROJECTION eProjection) const {
  const ProjectionMeasures* pMeasures = MeasuresOf(eProjection);
  if (!pMeasures) return FieldOfView::InvalidFieldOfView;
  Vector2d obAngles = pMeasures->pfnFieldOfView(obResolution, GetFocalLength());
  if (eProjection == RECTILINEAR_PROJECTION) obAngles = LimitRectilinear(obAngles);
  return FieldOfView(obAngles);
}

Resolution Camera::GetProjectionResolution(const FieldOfView& obFov, DEWARP_PROJECTION eProjection) const {
  const ProjectionMeasures* pMeasures = MeasuresOf(eProjection);
  if (!pMeasures) return Resolution::InvalidResolution;
  Vector2d obAngles(obFov.Horizontal, obFov.Vertical);
  if (eProjection == RECTILINEAR_PROJECTION) obAngles = LimitRectilinear(obAngles);
  return Resolution(pMeasures->pfnResolution(obAngles, GetFocalLength()));
}

ImageMap* Camera::BuildProjectionMap(DEWARP_PROJECTION eProjection, const Vector2d& obShift,
                                     const Vector2d& obScale) const {
  return BuildProjectionMap(GetProjectionMapSize(eProjection), eProjection, obShift, obScale);
}

ImageMap* Camera::BuildProjectionMap(const Resolution& obResolution, DEWARP_PROJECTION eProjection,
                                     const Vector2d& obShift, const Vector2d& obScale) const {
  ProjectionMapBuilder obBuilder;
  return obBuilder.BuildImageMap(m_obResolution, obResolution, eProjection, m_eType, GetFocalLength(), obShift,
                                 obScale);
}

const char* Camera::GetCameraTypeName(int eType) {
  switch (eType) {
    case RECTILINEAR_CAMERA:
      return "rectilinear";
    case CIRCULAR_FISHEYE_CAMERA:
      return "circular fish eye";
    default:
      return "<unknown>";
  }
}

// The field-of-view line pairs the diagonal with the vertical angle.
void Camera::LogCameraInfo() const {
  DEWARP_LOG_INFO("Camera type is %s\n", GetCameraTypeName(m_stdModel.Type));
  DEWARP_LOG_INFO("Camera resolution is (%d, %d)\n", static_cast<int>(m_stdModel.ResolutionH),
                  static_cast<int>(m_stdModel.ResolutionV));
  DEWARP_LOG_INFO("Camera FOV is (%f, %f)\n", static_cast<double>(m_stdModel.FovD),
                  static_cast<double>(m_stdModel.FovV));
}

}  // namespace libdewarp
}  // namespace vemo
