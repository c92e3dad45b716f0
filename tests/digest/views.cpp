// Deterministic results of the views: projection map sizes and fields of view, PTZ ranges, PTZ map
// samples, point-to-PTZ conversions and dewarped frames of every view kind on a small lens.
#include "digest.h"

#include <cstdint>
#include <memory>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <libdewarp_vemo/camera.h>
#include <libdewarp_vemo/camera_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/image_planar_420.h>
#include <libdewarp_vemo/view.h>
#include <libdewarp_vemo/view_builder.h>

namespace {

using namespace vemo::libdewarp;

const unsigned int kSide = 200;

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

void AddPosition(dewarp_digest::Digest& d, const PtzPosition& p) {
  d.add(p.m_obOrientation.Yaw);
  d.add(p.m_obOrientation.Pitch);
  d.add(p.m_obOrientation.Roll);
  d.add(p.m_fZoom);
}

std::vector<std::uint8_t> Pattern(unsigned int w, unsigned int h) {
  std::vector<std::uint8_t> data(w * h * 3 / 2);
  for (unsigned int i = 0; i < w * h; ++i) {
    data[i] = static_cast<std::uint8_t>((i % w) * 7 + (i / w) * 3);
  }
  for (unsigned int i = w * h; i < data.size(); ++i) {
    data[i] = static_cast<std::uint8_t>(i * 13);
  }
  return data;
}

void AddView(dewarp_digest::Digest& d, View& v, std::vector<std::uint8_t>& input) {
  const Vector2d size = v.GetProjectionSize();
  d.add(size.X);
  d.add(size.Y);
  d.add(v.GetFov().Horizontal);
  d.add(v.GetFov().Vertical);
  AddRange(d, v.GetPtzRange());
  AddPosition(d, v.SetPtz(PtzPosition(EulerAngles(0.4f, -0.3f, 0.1f), 1.5f)));
  AddPosition(d, v.CalcPtzPosition(Vector2d(60.0f, 70.0f), 4.0f));
  const unsigned int w = 64, h = 48;
  v.CheckMaps(Resolution(w, h));
  const boost::shared_ptr<ImageMap> map = v.GetPtzMap();
  for (unsigned int y = 0; y < h; y += 7) {
    for (unsigned int x = 0; x < w; x += 9) {
      const Vector2d item = map->GetMapItem(x, y);
      d.add(item.X);
      d.add(item.Y);
    }
  }
  for (DEWARP_INTERPOLATION interpolation : {NEAREST_NEIGHBOUR_INTERPOLATION, LINEAR_INTERPOLATION}) {
    std::vector<std::uint8_t> output(w * h * 3 / 2, 0);
    ImagePlanar420 in(YUV420_PLANAR_IMAGE, input.data(), kSide, kSide, kSide, false);
    ImagePlanar420 out(YUV420_PLANAR_IMAGE, output.data(), w, h, w, false);
    v.DewarpImage(in, out, interpolation);
    d.add_bytes(output.data(), output.size());
  }
}

}  // namespace

DEWARP_DIGEST_SECTION(views) {
  DEWARP_INTERNAL_CAMERA_MODEL model;
  model.Type = CIRCULAR_FISHEYE_CAMERA;
  model.FovD = model.FovH = model.FovV = 183.0f;
  model.ResolutionH = model.ResolutionV = kSide;
  std::vector<std::uint8_t> input = Pattern(kSide, kSide);
  const DEWARP_PROJECTION projections[] = {RECTILINEAR_PROJECTION, CYLINDRICAL_PROJECTION, EQUIRECTANGULAR_PROJECTION,
                                           PANNINI_PROJECTION, ARCHITECTURAL_PROJECTION};
  for (int mount = CEILING_MOUNT; mount <= INVERTED_WALL_MOUNT; ++mount) {
    const boost::shared_ptr<Camera> camera(
        CameraBuilder().MakeCamera(model, static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(mount)));
    for (int kind = SINGLE_PANORAMIC_VIEW; kind <= QUAD_PTZ_VIEW; ++kind) {
      for (DEWARP_PROJECTION projection : projections) {
        std::unique_ptr<View> view(ViewBuilder().BuildView(static_cast<DEWARP_VIEW>(kind), camera, projection));
        AddView(d, *view, input);
      }
    }
  }
}
