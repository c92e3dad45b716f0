// Common state of the PTZ functors: the rotation of the virtual PTZ camera, its zoom, the focal
// length of the source and, optionally, an image map in which zoomed points are looked up.
// The subclasses apply the rotation in the geometry of their source (equidistant fisheye,
// flat perspective image, equirectangular panorama).
//
// The geometric helpers that rotate points between views live here as well:
//   SphericalPerspective / InvSphericalPerspective  between two equidistant images,
//   RectilinearPerspective                          onto a flat perspective image,
//   EquirectangularPerspective                      along a panorama that wraps around.
#pragma once

#include <libdewarp_vemo/dewarp.h>
#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>
#include <libdewarp_vemo/vector_2d.h>

namespace vemo {
namespace libdewarp {

class ImageMap;
class PtzPosition;

class PtzFunctor : public MapFunctor {
public:
  PtzFunctor();
  PtzFunctor(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap = 0);
  PtzFunctor(const PtzFunctor& other);
  PtzFunctor& operator=(const PtzFunctor& other);
  virtual ~PtzFunctor();

  // Rotation from the position's orientation, its zoom, the focal length and the attached map.
  // With a map, the output resolution is the map's size, the input resolution the map's input
  // size, and each offset half of its resolution (the centre used to centre points). Without
  // a map all four are zero.
  void Set(const PtzPosition& obPosition, DEWARP_FLOAT fFocalLength, const ImageMap* pobImageMap = 0);

  // Zooms a point about the output centre and, with a map attached, samples the map there
  // (bilinear over the four surrounding elements); the sample is relative to the input centre.
  Vector2d Zoom(const Vector2d& obPoint, DEWARP_FLOAT fZoom) const;
  // Whether Zoom, with a map attached, gives a sample with a coordinate that is not a number
  // for every point of the rectangle from obLow to obHigh (corners included): true only when
  // every element of the map that those lookups can read has a coordinate that is not a number
  // (elements outside the map read as no source). It scans the elements under the zoomed
  // rectangle; false (may have a source) for a positive zoom it cannot vouch for, a map whose
  // tables are not read directly, or a rectangle that does not zoom to finite points.
  bool ZoomFindsNoSource(const Vector2d& obLow, const Vector2d& obHigh, DEWARP_FLOAT fZoom) const;

  const RotationMatrix3d& GetRotation() const { return m_obRotation; }
  DEWARP_FLOAT GetZoom() const { return m_fZoom; }
  DEWARP_FLOAT GetFocalLength() const { return m_fFocalLength; }
  const ImageMap* GetImageMap() const { return m_pobImageMap; }
  const Vector2d& GetInputResolution() const { return m_obInputResolution; }
  const Vector2d& GetOutputResolution() const { return m_obOutputResolution; }
  const Vector2d& GetInputOffset() const { return m_obInputOffset; }
  const Vector2d& GetOutputOffset() const { return m_obOutputOffset; }

  // Rotates a point of an equidistant image (radius = f * angle) on the sphere by R (object to
  // inertial) and returns the matching point of the equidistant image.
  static Vector2d SphericalPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                       const RotationMatrix3d& obRotation);
  // The inverse rotation (inertial to object), without wrapping the angle from the axis.
  static Vector2d InvSphericalPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                          const RotationMatrix3d& obRotation);
  // Casts the ray through a point of a perspective image (plus offset) at focal length f,
  // rotates it by R and projects it back onto the perspective image.
  static Vector2d RectilinearPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                         const RotationMatrix3d& obRotation, const Vector2d& obOffset);
  // Shifts a panorama point horizontally by obRotation.Y and wraps it into one period
  // 2 * obRotation.X about the centre. The focal length is not used.
  static Vector2d EquirectangularPerspective(const Vector2d& obPoint, DEWARP_FLOAT fFocalLength,
                                             const Vector2d& obRotation);

protected:
  void CopyFrom(const PtzFunctor& other);

  RotationMatrix3d m_obRotation;
  DEWARP_FLOAT m_fZoom;
  DEWARP_FLOAT m_fFocalLength;
  const ImageMap* m_pobImageMap;
  Vector2d m_obInputResolution;
  Vector2d m_obOutputResolution;
  Vector2d m_obInputOffset;
  Vector2d m_obOutputOffset;
};

}  // namespace libdewarp
}  // namespace vemo
