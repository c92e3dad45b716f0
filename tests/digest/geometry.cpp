// Geometry results that must come out the same, bit for bit, on every architecture: the sine
// and cosine tables, table lookups, angle wrapping, a grid of rotations through matrices,
// quaternions and back, and PTZ limits.
#include "digest.h"

#include <libdewarp_vemo/euler_angles.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/ptz_position.h>
#include <libdewarp_vemo/ptz_range.h>
#include <libdewarp_vemo/quaternion.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/trigonometry.h>

namespace {

using namespace vemo::libdewarp;

void AddVector(dewarp_digest::Digest& d, const Vector3d& v) {
  d.add(v.X);
  d.add(v.Y);
  d.add(v.Z);
}

void AddAngles(dewarp_digest::Digest& d, const EulerAngles& e) {
  d.add(e.Yaw);
  d.add(e.Pitch);
  d.add(e.Roll);
}

void AddQuaternion(dewarp_digest::Digest& d, const Quaternion& q) {
  d.add(q.W);
  d.add(q.X);
  d.add(q.Y);
  d.add(q.Z);
}

void AddMatrix(dewarp_digest::Digest& d, const RotationMatrix3d& m) {
  const float entries[9] = {m.M11, m.M12, m.M13, m.M21, m.M22, m.M23, m.M31, m.M32, m.M33};
  for (float entry : entries) d.add(entry);
}

void AddRange(dewarp_digest::Digest& d, const PtzRange& r) {
  d.add(r.m_obPanRange.X);
  d.add(r.m_obPanRange.Y);
  d.add(r.m_obTiltRange.X);
  d.add(r.m_obTiltRange.Y);
  d.add(r.m_obRollRange.X);
  d.add(r.m_obRollRange.Y);
  d.add(r.m_obZoomRange.X);
  d.add(r.m_obZoomRange.Y);
}

void Tables(dewarp_digest::Digest& d) {
  d.add_bytes(Trigonometry::SineTable.data(), sizeof(float) * Trigonometry::SineTable.size());
  d.add_bytes(Trigonometry::CosineTable.data(), sizeof(float) * Trigonometry::CosineTable.size());
  for (int k = -5000; k <= 5000; ++k) {
    const float x = k * 0.000731f;
    d.add(Trigonometry::table_index(x));
    d.add(Trigonometry::normalise_angle(x * 37.0f));
  }
}

void LibraryFunctions(dewarp_digest::Digest& d) {
  for (int k = -400; k <= 400; ++k) {
    const float x = k * 0.00249f;
    const float y = 0.2f + (k % 11) * 0.13f;
    d.add(Trigonometry::sin(x * 4));
    d.add(Trigonometry::cos(x * 4));
    d.add(Trigonometry::tan(x));
    d.add(Trigonometry::atan(x, y));
    d.add(Trigonometry::atan(x * 3));
    d.add(Trigonometry::asin(x));
    d.add(Trigonometry::acos(x));
    d.add(Trigonometry::hypot(x, y));
    d.add(FloatingPoint::sqrt(y));
  }
}

void Rotations(dewarp_digest::Digest& d) {
  const float pi = Trigonometry::PI;
  for (int i = 0; i < 12; ++i) {
    for (int j = -6; j <= 6; ++j) {
      for (int k = 0; k < 8; ++k) {
        const EulerAngles e(-pi + i * pi / 6 + 0.01f, j * pi / 12, -pi + k * pi / 4 + 0.02f);
        const RotationMatrix3d m(e);
        AddMatrix(d, m);
        EulerAngles back;
        back.FromRotationMatrix(m);
        AddAngles(d, back);
        Quaternion toObject, toInertial;
        toObject.SetToRotateInertialToObject(e);
        toInertial.SetToRotateObjectToInertial(e);
        AddQuaternion(d, toObject);
        EulerAngles fromQuaternion;
        fromQuaternion.FromObjectToInertialQuaternion(toInertial);
        AddAngles(d, fromQuaternion);
        AddVector(d, m.ObjectToInertial(Vector3d(0.0f, 0.0f, -1.0f)));
        AddVector(d, m.InertialToObject(Vector3d(0.3f, 0.4f, -0.866f)));
        EulerAngles wrapped(e.Yaw * 3, e.Pitch * 3, e.Roll * 3);
        wrapped.Normalise();
        AddAngles(d, wrapped);
        EulerAngles chained = e;
        chained.Concatenate(EulerAngles(0.1f, -0.2f, 0.3f));
        AddAngles(d, chained);
        AddQuaternion(d, Slerp(Quaternion::Identity, toObject, 0.3f));
        AddQuaternion(d, Power(toObject, 0.5f));
        d.add(toObject.GetRotationAngle());
        AddVector(d, toObject.GetRotationAxis());
      }
    }
  }
}

void PtzLimits(dewarp_digest::Digest& d) {
  const PtzRange* ranges[] = {&PtzRange::CeilingPanoramicRange, &PtzRange::WallPanoramicRange,
                              &PtzRange::CeilingPtzRange, &PtzRange::FloorPtzRange};
  const FieldOfView views[] = {FieldOfView::PtzFieldOfView, FieldOfView(1.0f, 0.75f), FieldOfView(0.2f, 0.1f)};
  for (const PtzRange* range : ranges) {
    AddRange(d, *range);
    for (const FieldOfView& view : views) {
      PtzRange deflated = *range;
      deflated.Deflate(view);
      AddRange(d, deflated);
      PtzRange inflated = *range;
      inflated.Inflate(view);
      AddRange(d, inflated);
      for (int k = -20; k <= 20; ++k) {
        const PtzPosition p(EulerAngles(k * 0.17f, k * 0.09f, k * 0.05f), 0.5f + (k + 20) * 0.25f);
        const PtzPosition limited = deflated.Limit(p);
        AddAngles(d, limited.m_obOrientation);
        d.add(limited.m_fZoom);
      }
    }
  }
  for (int k = -36; k <= 36; ++k) {
    DEWARP_PTZ_POSITION record = {k * 10.0f, k * 2.5f, k * -5.0f, 1.0f + k * 0.125f};
    const PtzPosition p(record);
    AddAngles(d, p.m_obOrientation);
    const DEWARP_PTZ_POSITION back = p.Get();
    d.add(back.Pan);
    d.add(back.Tilt);
    d.add(back.Roll);
    DEWARP_PTZ_RANGE limits = {k * -5.0f, k * 5.0f, k * -2.0f, k * 2.0f, -180.0f, 180.0f, 1.0f, 8.0f};
    AddRange(d, PtzRange(limits));
  }
}

void SizesAndRectangles(dewarp_digest::Digest& d) {
  const Resolution sizes[] = {Resolution(640, 480), Resolution(1936, 1936), Resolution(1920.7f, 1080.2f)};
  for (const Resolution& a : sizes) {
    for (const Resolution& b : sizes) {
      d.add(a.BestScale(b));
      const Resolution fit = a.BestFit(b.AspectRatio());
      d.add(fit.X);
      d.add(fit.Y);
      Rectangle2d r(a);
      r.Intersection(Rectangle2d(b));
      r.OffsetToCentre();
      d.add(r.Left);
      d.add(r.Top);
      d.add(r.Right);
      d.add(r.Bottom);
    }
  }
}

}  // namespace

DEWARP_DIGEST_SECTION(geometry) {
  Tables(d);
  LibraryFunctions(d);
  Rotations(d);
  PtzLimits(d);
  SizesAndRectangles(d);
}
