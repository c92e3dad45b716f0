// Cameras: focal lengths, projection sizes and fields of view, hit points, and PTZ maps in one,
// two and four panes for a few positions on every mount.
#include "digest.h"

#include <memory>

#include <libdewarp_vemo/camera_builder.h>
#include <libdewarp_vemo/fisheye_camera.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/ptz_functor.h>
#include <libdewarp_vemo/rotation_matrix_3d.h>

using namespace vemo::libdewarp;

namespace {

DEWARP_INTERNAL_CAMERA_MODEL Lens(DEWARP_INTERNAL_CAMERA_TYPE type, float fov, unsigned size) {
  DEWARP_INTERNAL_CAMERA_MODEL model;
  model.Type = type;
  model.FovD = fov;
  model.FovH = fov;
  model.FovV = fov;
  model.ResolutionH = size;
  model.ResolutionV = size;
  return model;
}

void AddVector(dewarp_digest::Digest& d, const Vector2d& v) {
  d.add(v.X);
  d.add(v.Y);
}

void AddMap(dewarp_digest::Digest& d, const ImageMap* map) {
  d.add(map != 0);
  if (!map) return;
  AddVector(d, map->GetMapSize());
  AddVector(d, map->GetInputSize());
  for (unsigned y = 0; y < map->GetMapHeight(); ++y)
    for (unsigned x = 0; x < map->GetMapWidth(); ++x) AddVector(d, map->GetMapItem(x, y));
}

}  // namespace

DEWARP_DIGEST_SECTION(cameras) {
  CameraBuilder builder;
  const DEWARP_INTERNAL_CAMERA_MOUNT mounts[] = {CEILING_MOUNT, FLOOR_MOUNT, WALL_MOUNT, INVERTED_WALL_MOUNT};
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : mounts) {
    std::unique_ptr<Camera> camera(builder.MakeCamera(Lens(CIRCULAR_FISHEYE_CAMERA, 183.0f, 480), mount));
    d.add(camera->GetFocalLength());
    for (int p = RECTILINEAR_PROJECTION; p <= EQUIRECTANGULAR_PANNINI_PROJECTION; ++p) {
      const DEWARP_PROJECTION projection = static_cast<DEWARP_PROJECTION>(p);
      const Resolution size = camera->GetProjectionMapSize(projection);
      AddVector(d, size);
      const FieldOfView fov = camera->GetProjectionFieldOfView(size, projection);
      d.add(fov.Horizontal);
      d.add(fov.Vertical);
      AddVector(d, camera->GetProjectionResolution(FieldOfView::PtzFieldOfView, projection));
    }
    const Vector2d hits[] = {Vector2d(240.0f, 240.0f), Vector2d(100.0f, 150.0f), Vector2d(400.0f, 30.0f)};
    for (const Vector2d& hit : hits) AddVector(d, camera->MapHitPoint(hit));

    std::unique_ptr<ImageMap> base(camera->BuildProjectionMap(Resolution(48, 36), RECTILINEAR_PROJECTION,
                                                              Projection::ZeroShift, Projection::IdentityScale));
    const PtzPosition positions[] = {PtzPosition(EulerAngles(0.0f, 0.0f, 0.0f), 1.0f),
                                     PtzPosition(EulerAngles(0.6f, -0.4f, 0.0f), 2.0f),
                                     PtzPosition(EulerAngles(-2.2f, 0.9f, 0.1f), 1.5f)};
    for (const PtzPosition& position : positions) {
      for (unsigned panes : {1u, 2u, 4u}) {
        std::unique_ptr<ImageMap> map(camera->BuildPtzMap(position, *base, panes));
        AddMap(d, map.get());
      }
    }
  }
  std::unique_ptr<Camera> rectilinear(builder.MakeCamera(Lens(RECTILINEAR_CAMERA, 90.0f, 1280), WALL_MOUNT));
  d.add(rectilinear->GetFocalLength());
  AddVector(d, rectilinear->GetProjectionResolution(FieldOfView(3.0f, 1.0f), RECTILINEAR_PROJECTION));

  const RotationMatrix3d rotation(0.3f, -0.7f, 0.2f);
  AddVector(d, PtzFunctor::SphericalPerspective(Vector2d(40.0f, -25.0f), 150.0f, rotation));
  AddVector(d, PtzFunctor::InvSphericalPerspective(Vector2d(40.0f, -25.0f), 150.0f, rotation));
  AddVector(d, PtzFunctor::RectilinearPerspective(Vector2d(40.0f, -25.0f), 150.0f, rotation, Vector2d(3.0f, 4.0f)));
  AddVector(d, PtzFunctor::EquirectangularPerspective(Vector2d(900.0f, 5.0f), 150.0f, Vector2d(471.2389f, 235.6194f)));
}
