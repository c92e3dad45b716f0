// Conversions between image projections, and the relations between image size, field of view
// and focal length of each projection.
//
// Points are pixels relative to the image centre, Y up. Every conversion takes the point and the
// focal length f (pixels per radian for the angular projections) and returns the point of the
// same viewing direction in the other projection; angles are radians. The equirectangular plane,
// (f * longitude, f * latitude), is the hub through which projections convert; the fisheye lens
// is equidistant (radius = f * angle from the optical axis).
//
// No conversion throws. A guard that stops a conversion returns Vector2d::InvalidVector (or a
// copy of it with one component filled in); domain errors of the library functions come back
// as NaN or infinity. Callers test results with Vector2d::Valid.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/vector_2d.h>
#include <libdewarp_vemo/vector_3d.h>

// The fifteen projections the engine knows, in the order of ProjectionFunctor's list.
#define DEWARP_PROJECTION_NAMES(M, A)                                                         \
  M(A, Rectilinear) M(A, Cylindrical) M(A, Equirectangular) M(A, Mercator)                    \
  M(A, LambertCylindrical) M(A, MillerCylindrical) M(A, Pannini) M(A, Architectural)          \
  M(A, EquirectangularPannini) M(A, Stereographic) M(A, Orthographic) M(A, Equisolid)         \
  M(A, Fisheye) M(A, Spherical) M(A, Mirror)
// The same list under a second name, so that the two can be nested.
#define DEWARP_PROJECTION_NAMES_INNER(M, A)                                                   \
  M(A, Rectilinear) M(A, Cylindrical) M(A, Equirectangular) M(A, Mercator)                    \
  M(A, LambertCylindrical) M(A, MillerCylindrical) M(A, Pannini) M(A, Architectural)          \
  M(A, EquirectangularPannini) M(A, Stereographic) M(A, Orthographic) M(A, Equisolid)         \
  M(A, Fisheye) M(A, Spherical) M(A, Mirror)
#define DEWARP_PROJECTION_ROW(M, From) DEWARP_PROJECTION_NAMES_INNER(M, From)
// Calls M(From, To) for each of the 225 ordered pairs of projections.
#define DEWARP_PROJECTION_PAIRS(M) DEWARP_PROJECTION_NAMES(DEWARP_PROJECTION_ROW, M)

namespace vemo {
namespace libdewarp {

// A conversion: the point and the focal length in, the converted point out.
typedef Vector2d (*ProjectionFunction)(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength);

class Projection {
public:
  // Shift and scale that leave a projection where it is: (0, 0) and (1, 1).
  static const Vector2d ZeroShift;
  static const Vector2d IdentityScale;

  Projection() {}
  Projection(const Projection&) {}
  Projection& operator=(const Projection& other);
  virtual ~Projection() {}

  // <From>To<To>(point, f) for every ordered pair: EquirectangularToFisheye, MercatorToPannini,
  // StereographicToRectilinear, ...; <P>To<P> returns the point unchanged.
#define DEWARP_DECLARE_PROJECTION_CONVERSION(P, Q)                                        \
  static Vector2d P##To##Q(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength);
  DEWARP_PROJECTION_PAIRS(DEWARP_DECLARE_PROJECTION_CONVERSION)
#undef DEWARP_DECLARE_PROJECTION_CONVERSION

  // Direction vectors, Y up and -Z forward: longitude 0, latitude 0 is (0, 0, -1).
  static Vector3d EquirectangularToVector3d(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength);
  static Vector2d Vector3dToEquirectangular(const Vector3d& obVector, DEWARP_FLOAT fFocalLength);

  // Focal length of an image of the given size that spans the given angle.
  static DEWARP_FLOAT EquirectangularFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT CylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT FisheyeFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT MercatorFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT LambertCylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT MillerCylindricalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT ArchitecturalFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT EquisolidFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT OrthographicFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT EquirectangularPanniniFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT PanniniFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT StereographicFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);
  static DEWARP_FLOAT RectilinearFocalLength(DEWARP_FLOAT fSize, DEWARP_FLOAT fAngle);

  // <P>FieldOfView(size, f): the (horizontal, vertical) angles an image of size (W, H) spans.
  // <P>Resolution(fov, f): the (width, height) of an image spanning the angles (h, v).
  static Vector2d EquirectangularFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d EquirectangularResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d CylindricalFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d CylindricalResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d FisheyeFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d FisheyeResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d MercatorFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d MercatorResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d LambertCylindricalFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d LambertCylindricalResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d MillerCylindricalFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d MillerCylindricalResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d ArchitecturalFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d ArchitecturalResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d EquisolidFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d EquisolidResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d OrthographicFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d OrthographicResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d EquirectangularPanniniFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d EquirectangularPanniniResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d PanniniFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d PanniniResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d StereographicFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d StereographicResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);
  static Vector2d RectilinearFieldOfView(const Vector2d& obSize, DEWARP_FLOAT fFocalLength);
  static Vector2d RectilinearResolution(const Vector2d& obFov, DEWARP_FLOAT fFocalLength);

  // Display name of an output projection; "<unknown>" (with a warning) for any other value.
  static const char* GetName(DEWARP_PROJECTION eProjection);
};

}  // namespace libdewarp
}  // namespace vemo
