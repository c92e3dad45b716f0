// Projection conversions, extents and functors at fixed sample points.
#include "digest.h"

#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/projection_functor.h>
#include <libdewarp_vemo/scale_functor.h>
#include <libdewarp_vemo/shift_scale_functor.h>

#include <cmath>
#include <limits>

namespace {

using vemo::libdewarp::Projection;
using vemo::libdewarp::ProjectionFunction;
using vemo::libdewarp::Resolution;
using vemo::libdewarp::Vector2d;
using vemo::libdewarp::Vector3d;

// NaN results are compared as NaN, whatever their sign and payload.
void AddFloat(dewarp_digest::Digest& d, float value) {
  d.add(std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value);
}

void AddPoint(dewarp_digest::Digest& d, const Vector2d& v) {
  AddFloat(d, v.X);
  AddFloat(d, v.Y);
}

const Vector2d kPoints[] = {Vector2d(0.0f, 0.0f),      Vector2d(120.5f, -33.25f), Vector2d(-400.0f, 250.0f),
                            Vector2d(900.0f, 700.0f),  Vector2d(-1500.0f, -80.0f), Vector2d(3.0f, 2000.0f),
                            Vector2d(0.001f, 0.0f),    Vector2d(0.0f, -310.0f),   Vector2d(250.0f, 0.0f),
                            Vector2d(-2000.0f, 1200.0f), Vector2d(37.0f, 951.0f),  Vector2d(-611.0f, -611.0f)};
const float kFocalLengths[] = {611.15f, 250.0f, 1000.0f};

}  // namespace

DEWARP_DIGEST_SECTION(projection) {
#define DIGEST_PROJECTION_ENTRY(P, Q) {#P "To" #Q, &Projection::P##To##Q},
  static const struct {
    const char* name;
    ProjectionFunction function;
  } conversions[] = {DEWARP_PROJECTION_PAIRS(DIGEST_PROJECTION_ENTRY)};
#undef DIGEST_PROJECTION_ENTRY
  for (const auto& c : conversions) {
    d.add(c.name);
    for (float f : kFocalLengths) {
      for (const Vector2d& p : kPoints) AddPoint(d, c.function(p, f));
    }
  }

  for (float f : kFocalLengths) {
    for (const Vector2d& p : kPoints) {
      const Vector3d v = Projection::EquirectangularToVector3d(p, f);
      AddFloat(d, v.X);
      AddFloat(d, v.Y);
      AddFloat(d, v.Z);
      AddPoint(d, Projection::Vector3dToEquirectangular(v, f));
    }
  }

  const float sizes[] = {1920.0f, 500.0f, 1.0f};
  const float angles[] = {3.1415927f, 0.7853982f, 2.0f};
  for (float s : sizes) {
    for (float a : angles) {
      AddFloat(d, Projection::EquirectangularFocalLength(s, a));
      AddFloat(d, Projection::CylindricalFocalLength(s, a));
      AddFloat(d, Projection::FisheyeFocalLength(s, a));
      AddFloat(d, Projection::MercatorFocalLength(s, a));
      AddFloat(d, Projection::LambertCylindricalFocalLength(s, a));
      AddFloat(d, Projection::MillerCylindricalFocalLength(s, a));
      AddFloat(d, Projection::ArchitecturalFocalLength(s, a));
      AddFloat(d, Projection::EquisolidFocalLength(s, a));
      AddFloat(d, Projection::OrthographicFocalLength(s, a));
      AddFloat(d, Projection::EquirectangularPanniniFocalLength(s, a));
      AddFloat(d, Projection::PanniniFocalLength(s, a));
      AddFloat(d, Projection::StereographicFocalLength(s, a));
      AddFloat(d, Projection::RectilinearFocalLength(s, a));
    }
  }

  typedef Vector2d (*Extent)(const Vector2d&, DEWARP_FLOAT);
  const Extent fieldsOfView[] = {
      &Projection::EquirectangularFieldOfView, &Projection::CylindricalFieldOfView,
      &Projection::FisheyeFieldOfView,         &Projection::MercatorFieldOfView,
      &Projection::LambertCylindricalFieldOfView, &Projection::MillerCylindricalFieldOfView,
      &Projection::ArchitecturalFieldOfView,   &Projection::EquisolidFieldOfView,
      &Projection::OrthographicFieldOfView,    &Projection::EquirectangularPanniniFieldOfView,
      &Projection::PanniniFieldOfView,         &Projection::StereographicFieldOfView,
      &Projection::RectilinearFieldOfView};
  const Extent resolutions[] = {
      &Projection::EquirectangularResolution, &Projection::CylindricalResolution,
      &Projection::FisheyeResolution,         &Projection::MercatorResolution,
      &Projection::LambertCylindricalResolution, &Projection::MillerCylindricalResolution,
      &Projection::ArchitecturalResolution,   &Projection::EquisolidResolution,
      &Projection::OrthographicResolution,    &Projection::EquirectangularPanniniResolution,
      &Projection::PanniniResolution,         &Projection::StereographicResolution,
      &Projection::RectilinearResolution};
  const Vector2d extentSizes[] = {Vector2d(1920.0f, 1080.0f), Vector2d(640.0f, 480.0f), Vector2d(100.0f, 2000.0f)};
  const Vector2d extentAngles[] = {Vector2d(3.1415927f, 1.5707964f), Vector2d(1.2f, 0.9f), Vector2d(6.2831855f, 3.0f)};
  for (float f : kFocalLengths) {
    for (Extent e : fieldsOfView) {
      for (const Vector2d& s : extentSizes) AddPoint(d, e(s, f));
    }
    for (Extent e : resolutions) {
      for (const Vector2d& a : extentAngles) AddPoint(d, e(a, f));
    }
  }

  for (int p = 0; p <= 9; ++p) d.add(Projection::GetName(static_cast<DEWARP_PROJECTION>(p)));

  // Functors as the map builders use them.
  for (int p = 0; p <= 8; ++p) {
    vemo::libdewarp::ProjectionFunctor toLens(static_cast<DEWARP_PROJECTION>(p), CIRCULAR_FISHEYE_CAMERA, 611.15f);
    vemo::libdewarp::ProjectionFunctor fromLens(RECTILINEAR_CAMERA, static_cast<DEWARP_PROJECTION>(p), 640.0f);
    for (const Vector2d& q : kPoints) {
      AddPoint(d, toLens(q));
      AddPoint(d, fromLens(q));
    }
  }
  const Resolution from(1936, 968);
  const Resolution to(1280, 720);
  for (int mode = 0; mode <= 2; ++mode) {
    vemo::libdewarp::ScaleFunctor plain(from, to, static_cast<DEWARP_ASPECT_RATIO>(mode));
    vemo::libdewarp::ScaleFunctor squished(from, to, static_cast<DEWARP_ASPECT_RATIO>(mode), Vector2d(1.0f, 0.5f));
    AddPoint(d, plain.GetScaleFactor());
    AddPoint(d, squished.GetScaleFactor());
    AddPoint(d, squished(Vector2d(-640.0f, 359.0f)));
  }
  vemo::libdewarp::ShiftScaleFunctor shiftScale(Vector2d(0.0f, 484.0f), Vector2d(1.0f, 0.5f));
  AddPoint(d, shiftScale(Vector2d(17.0f, -33.0f)));
}
