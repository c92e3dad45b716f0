// The six view kinds: projection substitution, target fields of view per mount and projection,
// PTZ ranges per mount, the strip layouts of the dual and quad panoramas and the panes of the
// dual and quad PTZ views.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <libdewarp_vemo/dual_panoramic_view.h>
#include <libdewarp_vemo/dual_ptz_view.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/ptz_range.h>
#include <libdewarp_vemo/quad_panoramic_view.h>
#include <libdewarp_vemo/quad_ptz_view.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>

#include "log_capture.h"
#include "views_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;
using views_test::ErrorOf;
using views_test::MakeFisheye;

const double kPi = views_test::kPi;
const double kLensFov = 183.0 * kPi / 180.0;

bool SameMapValues(const ImageMap& a, const ImageMap& b) {
  if (a.GetMapSize().X != b.GetMapSize().X || a.GetMapSize().Y != b.GetMapSize().Y) {
    return false;
  }
  for (unsigned int y = 0; y < a.GetMapHeight(); y += 7) {
    for (unsigned int x = 0; x < a.GetMapWidth(); x += 5) {
      const Vector2d p = a.GetMapItem(x, y), q = b.GetMapItem(x, y);
      if (!(p == q)) {
        return false;
      }
    }
  }
  return true;
}

// ---- Projection substitution ---------------------------------------------------------------

TEST(ViewKinds, CeilingPanoramaAskedForPanniniShowsTheCylindricalProjection) {
  const CameraPtr ceiling = MakeFisheye(CEILING_MOUNT);
  test::LogCapture cap;
  SinglePanoramicView pannini(ceiling, PANNINI_PROJECTION);
  EXPECT_TRUE(cap.contains("LIBDEWARP: WARNING - The pannini projection is unsupported by this view\n"));
  EXPECT_TRUE(cap.contains("LIBDEWARP: INFO - The cylindical projection will be substituted\n"));
  cap.clear();
  SinglePanoramicView cylindrical(ceiling, CYLINDRICAL_PROJECTION);
  EXPECT_FALSE(cap.contains("unsupported by this view"));
  ASSERT_TRUE(pannini.GetProjectionMap() && cylindrical.GetProjectionMap());
  EXPECT_TRUE(SameMapValues(*pannini.GetProjectionMap(), *cylindrical.GetProjectionMap()));
  EXPECT_TRUE(pannini.GetFov() == cylindrical.GetFov());
}

TEST(ViewKinds, WallPanoramaKeepsPanniniWithinHalfATurn) {
  const CameraPtr wall = MakeFisheye(WALL_MOUNT);
  test::LogCapture cap;
  SinglePanoramicView pannini(wall, PANNINI_PROJECTION);
  EXPECT_FALSE(cap.contains("unsupported by this view"));
  EXPECT_FALSE(cap.contains("will be substituted"));
  ASSERT_TRUE(pannini.GetProjectionMap());
  // The lens sees 183 degrees; a Pannini map covers at most half a turn either way.
  EXPECT_LE(pannini.GetFov().Horizontal, static_cast<float>(kPi));
  EXPECT_LE(pannini.GetFov().Vertical, static_cast<float>(kPi));
  EXPECT_NEAR(kPi, pannini.GetFov().Horizontal, 1e-6);
  SinglePanoramicView cylindrical(wall, CYLINDRICAL_PROJECTION);
  EXPECT_FALSE(SameMapValues(*pannini.GetProjectionMap(), *cylindrical.GetProjectionMap()));
  EXPECT_NEAR(kLensFov, cylindrical.GetFov().Horizontal, 1e-5);
}

TEST(ViewKinds, PtzViewAskedForCylindricalSubstitutesTheDefaultProjection) {
  const CameraPtr ceiling = MakeFisheye(CEILING_MOUNT);
  test::LogCapture cap;
  SinglePtzView v(ceiling, CYLINDRICAL_PROJECTION);
  EXPECT_TRUE(cap.contains("LIBDEWARP: WARNING - The cylindical projection is unsupported by this view\n"));
  EXPECT_TRUE(cap.contains("LIBDEWARP: INFO - The cylindical projection will be substituted\n"));
  EXPECT_TRUE(v.GetProjectionMap());
  cap.clear();
  SinglePtzView rectilinear(ceiling, RECTILINEAR_PROJECTION);
  EXPECT_FALSE(cap.contains("unsupported by this view"));
}

TEST(ViewKinds, CompatibleProjectionsOfThePanoramicViews) {
  const CameraPtr ceiling = MakeFisheye(CEILING_MOUNT), wall = MakeFisheye(INVERTED_WALL_MOUNT);
  SinglePanoramicView v(ceiling);
  for (DEWARP_PROJECTION p : {CYLINDRICAL_PROJECTION, EQUIRECTANGULAR_PROJECTION, MERCATOR_PROJECTION,
                              LAMBERT_CYLINDRICAL_PROJECTION, MILLER_CYLINDRICAL_PROJECTION,
                              ARCHITECTURAL_PROJECTION}) {
    EXPECT_EQ(p, v.GetCompatibleProjection(ceiling, p));
    EXPECT_EQ(p, v.GetCompatibleProjection(wall, p));
  }
  EXPECT_EQ(PANNINI_PROJECTION, v.GetCompatibleProjection(wall, PANNINI_PROJECTION));
  EXPECT_EQ(EQUIRECTANGULAR_PANNINI_PROJECTION, v.GetCompatibleProjection(wall, EQUIRECTANGULAR_PANNINI_PROJECTION));
  test::LogCapture cap;
  EXPECT_EQ(CYLINDRICAL_PROJECTION, v.GetCompatibleProjection(ceiling, EQUIRECTANGULAR_PANNINI_PROJECTION));
  EXPECT_TRUE(cap.contains("The equirectangular pannini projection is unsupported by this view"));
  EXPECT_EQ(CYLINDRICAL_PROJECTION, v.GetCompatibleProjection(wall, RECTILINEAR_PROJECTION));
  EXPECT_TRUE(cap.contains("The rectilinear projection is unsupported by this view"));
  cap.clear();
  EXPECT_EQ(CYLINDRICAL_PROJECTION, v.GetCompatibleProjection(wall, static_cast<DEWARP_PROJECTION>(9)));
  EXPECT_TRUE(cap.contains("The <unknown> projection is unsupported by this view"));
  EXPECT_TRUE(cap.contains("The cylindical projection will be substituted"));
}

TEST(ViewKinds, CompatibleProjectionsOfThePtzViews) {
  const CameraPtr wall = MakeFisheye(WALL_MOUNT);
  SinglePtzView v(wall);
  EXPECT_EQ(RECTILINEAR_PROJECTION, v.GetCompatibleProjection(wall, RECTILINEAR_PROJECTION));
  for (DEWARP_PROJECTION p : views_test::kProjections) {
    if (p != RECTILINEAR_PROJECTION) {
      EXPECT_EQ(CYLINDRICAL_PROJECTION, v.GetCompatibleProjection(wall, p));
    }
  }
}

TEST(ViewKinds, DefaultsOfTheKinds) {
  const CameraPtr wall = MakeFisheye(WALL_MOUNT);
  EXPECT_EQ(CYLINDRICAL_PROJECTION, SinglePanoramicView(wall).GetDefaultProjection());
  EXPECT_EQ(SCALE_TO_ASPECT_RATIO, SinglePanoramicView(wall).GetDefaultAspectRatio());
  EXPECT_EQ(SCALE_TO_ASPECT_RATIO, QuadPanoramicView(wall).GetDefaultAspectRatio());
  EXPECT_EQ(CYLINDRICAL_PROJECTION, SinglePtzView(wall).GetDefaultProjection());
  EXPECT_EQ(FREE_ASPECT_RATIO, DualPtzView(wall).GetDefaultAspectRatio());
}

// ---- Target fields of view -----------------------------------------------------------------

TEST(ViewKinds, TargetFieldOfViewOfAWallPanorama) {
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : {WALL_MOUNT, INVERTED_WALL_MOUNT}) {
    const CameraPtr wall = MakeFisheye(mount);
    SinglePanoramicView v(wall);
    for (DEWARP_PROJECTION p : {CYLINDRICAL_PROJECTION, EQUIRECTANGULAR_PROJECTION, MERCATOR_PROJECTION,
                                LAMBERT_CYLINDRICAL_PROJECTION, MILLER_CYLINDRICAL_PROJECTION,
                                ARCHITECTURAL_PROJECTION}) {
      EXPECT_TRUE(v.GetTargetFov(wall, p) == wall->GetCameraFieldOfView()) << p;
    }
    for (DEWARP_PROJECTION p : {PANNINI_PROJECTION, EQUIRECTANGULAR_PANNINI_PROJECTION}) {
      const FieldOfView f = v.GetTargetFov(wall, p);
      EXPECT_FLOAT_EQ(kPi, f.Horizontal);
      EXPECT_FLOAT_EQ(kPi, f.Vertical);
      EXPECT_FLOAT_EQ(kPi, f.Diagonal);
    }
    const FieldOfView rect = v.GetTargetFov(wall, RECTILINEAR_PROJECTION);
    EXPECT_TRUE(rect == wall->GetProjectionFieldOfView(wall->GetProjectionMapSize(RECTILINEAR_PROJECTION),
                                                       RECTILINEAR_PROJECTION));
    EXPECT_EQ("22|Invalid projection", ErrorOf([&] { v.GetTargetFov(wall, static_cast<DEWARP_PROJECTION>(9)); }));
  }
}

TEST(ViewKinds, TargetFieldOfViewOfACeilingOrFloorPanorama) {
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : {CEILING_MOUNT, FLOOR_MOUNT}) {
    const CameraPtr camera = MakeFisheye(mount);
    SinglePanoramicView v(camera);
    const FieldOfView cyl = v.GetTargetFov(camera, CYLINDRICAL_PROJECTION);
    EXPECT_FLOAT_EQ(2 * kPi, cyl.Horizontal);
    EXPECT_FLOAT_EQ(kPi / 2, cyl.Vertical);
    for (DEWARP_PROJECTION p : {EQUIRECTANGULAR_PROJECTION, MERCATOR_PROJECTION, LAMBERT_CYLINDRICAL_PROJECTION,
                                MILLER_CYLINDRICAL_PROJECTION, ARCHITECTURAL_PROJECTION}) {
      const FieldOfView f = v.GetTargetFov(camera, p);
      EXPECT_FLOAT_EQ(2 * kPi, f.Horizontal) << p;
      EXPECT_FLOAT_EQ(kPi, f.Vertical) << p;
    }
    for (DEWARP_PROJECTION p : {RECTILINEAR_PROJECTION, PANNINI_PROJECTION, EQUIRECTANGULAR_PANNINI_PROJECTION}) {
      EXPECT_EQ("22|Invalid projection for this orientation", ErrorOf([&] { v.GetTargetFov(camera, p); })) << p;
    }
    EXPECT_EQ("22|Invalid projection", ErrorOf([&] { v.GetTargetFov(camera, static_cast<DEWARP_PROJECTION>(9)); }));
  }
}

TEST(ViewKinds, RefusalsAreLocatedInTheKind) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT);
  SinglePanoramicView v(camera);
  try {
    v.GetTargetFov(camera, RECTILINEAR_PROJECTION);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find("(SinglePanoramicView::GetTargetFov@")) << e.what();
  }
}

TEST(ViewKinds, TargetFieldOfViewOfThePtzViewsIsAQuarterTurn) {
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : views_test::kMounts) {
    const CameraPtr camera = MakeFisheye(mount);
    QuadPtzView v(camera);
    for (DEWARP_PROJECTION p : views_test::kProjections) {
      const FieldOfView f = v.GetTargetFov(camera, p);
      EXPECT_FLOAT_EQ(kPi / 2, f.Horizontal);
      EXPECT_FLOAT_EQ(kPi / 2, f.Vertical);
    }
  }
}

// ---- PTZ ranges ----------------------------------------------------------------------------

void ExpectRange(const PtzRange& expected, const PtzRange& actual) {
  EXPECT_TRUE(expected.m_obPanRange == actual.m_obPanRange);
  EXPECT_TRUE(expected.m_obTiltRange == actual.m_obTiltRange);
  EXPECT_TRUE(expected.m_obRollRange == actual.m_obRollRange);
  EXPECT_TRUE(expected.m_obZoomRange == actual.m_obZoomRange);
}

TEST(ViewKinds, PanoramicRangesPerMount) {
  const FieldOfView fov(1.0f, 1.0f);
  struct { DEWARP_INTERNAL_CAMERA_MOUNT mount; const PtzRange& range; } cases[] = {
      {CEILING_MOUNT, PtzRange::CeilingPanoramicRange}, {FLOOR_MOUNT, PtzRange::FloorPanoramicRange},
      {WALL_MOUNT, PtzRange::WallPanoramicRange}, {INVERTED_WALL_MOUNT, PtzRange::InvertedWallPanoramicRange}};
  for (const auto& c : cases) {
    const CameraPtr camera = MakeFisheye(c.mount);
    ExpectRange(c.range, DualPanoramicView(camera).GetPtzRange(camera, fov));
  }
  // Wall panoramas roll, ceiling panoramas pan.
  EXPECT_EQ(0.0f, PtzRange::WallPanoramicRange.m_obPanRange.X);
  EXPECT_FLOAT_EQ(kPi, PtzRange::CeilingPanoramicRange.m_obPanRange.X);
}

TEST(ViewKinds, PtzRangesPerMount) {
  const FieldOfView fov(1.0f, 0.6f);
  const CameraPtr ceiling = MakeFisheye(CEILING_MOUNT), floor = MakeFisheye(FLOOR_MOUNT);
  const PtzRange c = SinglePtzView(ceiling).GetPtzRange(ceiling, fov);
  EXPECT_FLOAT_EQ(kPi, c.m_obPanRange.X);  // full motion is never widened
  EXPECT_FLOAT_EQ(0.3f, c.m_obTiltRange.X);
  EXPECT_FLOAT_EQ(-kPi / 2 - 0.3, c.m_obTiltRange.Y);
  const PtzRange f = SinglePtzView(floor).GetPtzRange(floor, fov);
  EXPECT_FLOAT_EQ(kPi / 2 + 0.3, f.m_obTiltRange.X);
  EXPECT_FLOAT_EQ(-0.3f, f.m_obTiltRange.Y);
  EXPECT_TRUE(std::isinf(f.m_obZoomRange.X));
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : {WALL_MOUNT, INVERTED_WALL_MOUNT}) {
    const CameraPtr wall = MakeFisheye(mount);
    const PtzRange w = DualPtzView(wall).GetPtzRange(wall, fov);  // not widened by the view
    EXPECT_NEAR(kLensFov / 2, w.m_obPanRange.X, 1e-5);
    EXPECT_NEAR(-kLensFov / 2, w.m_obPanRange.Y, 1e-5);
    EXPECT_NEAR(kLensFov / 2, w.m_obTiltRange.X, 1e-5);
    EXPECT_NEAR(-kLensFov / 2, w.m_obTiltRange.Y, 1e-5);
    EXPECT_FLOAT_EQ(kPi, w.m_obRollRange.X);
    EXPECT_TRUE(std::isinf(w.m_obZoomRange.X));
    EXPECT_EQ(1.0f, w.m_obZoomRange.Y);
  }
}

TEST(ViewKinds, AnUnknownMountIsRefused) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT);
  camera->SetCameraMount(static_cast<DEWARP_INTERNAL_CAMERA_MOUNT>(7));
  const FieldOfView fov(1.0f, 1.0f);
  EXPECT_EQ("22|Invalid camera mount", ErrorOf([&] { SinglePanoramicView(camera).GetPtzRange(camera, fov); }));
  EXPECT_EQ("22|Invalid camera mount", ErrorOf([&] { SinglePtzView(camera).GetPtzRange(camera, fov); }));
  EXPECT_EQ("22|Invalid camera mount",
            ErrorOf([&] { SinglePanoramicView(camera).GetTargetFov(camera, CYLINDRICAL_PROJECTION); }));
}

// ---- Layouts -------------------------------------------------------------------------------

TEST(ViewKinds, DualPanoramaIsHalfAsWideAndTwiceAsTall) {
  for (DEWARP_INTERNAL_CAMERA_MOUNT mount : views_test::kMounts) {
    const CameraPtr camera = MakeFisheye(mount);
    SinglePanoramicView single(camera, CYLINDRICAL_PROJECTION);
    DualPanoramicView dual(camera, CYLINDRICAL_PROJECTION);
    const Vector2d s = single.GetProjectionSize(), d = dual.GetProjectionSize();
    EXPECT_EQ(std::floor(s.X / 2), d.X) << mount;
    EXPECT_EQ(2 * s.Y, d.Y) << mount;
    EXPECT_TRUE(single.GetFov() == dual.GetFov());
  }
}

TEST(ViewKinds, QuadPanoramaIsAQuarterAsWideAndFourTimesAsTall) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT);
  SinglePanoramicView single(camera, MERCATOR_PROJECTION);
  QuadPanoramicView quad(camera, MERCATOR_PROJECTION);
  const Vector2d s = single.GetProjectionSize(), q = quad.GetProjectionSize();
  EXPECT_EQ(std::floor(s.X / 4), q.X);
  EXPECT_EQ(4 * s.Y, q.Y);
}

TEST(ViewKinds, StripsAreTakenFromTheSinglePanorama) {
  // Every valid element of the dual map is one of the single map's source points.
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT);
  SinglePanoramicView single(camera, CYLINDRICAL_PROJECTION);
  DualPanoramicView dual(camera, CYLINDRICAL_PROJECTION);
  const ImageMap& s = *single.GetProjectionMap();
  const ImageMap& d = *dual.GetProjectionMap();
  const unsigned int w = d.GetMapWidth(), h = s.GetMapHeight();
  int compared = 0;
  for (unsigned int y = 0; y < h; y += 9) {
    for (unsigned int x = 0; x < w; x += 11) {
      const Vector2d top = d.GetMapItem(x, y), bottom = d.GetMapItem(x, y + h);
      // The two strips hold the two halves of the panorama, in either order.
      const bool topLeft = top == s.GetMapItem(x, y), topRight = top == s.GetMapItem(x + w, y);
      const bool bottomLeft = bottom == s.GetMapItem(x, y), bottomRight = bottom == s.GetMapItem(x + w, y);
      EXPECT_TRUE((topLeft && bottomRight) || (topRight && bottomLeft)) << x << "," << y;
      ++compared;
    }
  }
  EXPECT_GT(compared, 100);
}

TEST(ViewKinds, DualAndQuadPtzMapsSplitTheOutputIntoPanes) {
  const CameraPtr camera = MakeFisheye(CEILING_MOUNT);
  SinglePtzView single(camera, RECTILINEAR_PROJECTION);
  DualPtzView dual(camera, RECTILINEAR_PROJECTION);
  QuadPtzView quad(camera, RECTILINEAR_PROJECTION);
  const PtzPosition p(EulerAngles(0.4f, -0.7f, 0.0f), 1.0f);
  single.SetPtz(p);
  dual.SetPtz(p);
  quad.SetPtz(p);
  const Resolution size(160, 120);
  ASSERT_TRUE(single.CheckMaps(size) && dual.CheckMaps(size) && quad.CheckMaps(size));
  EXPECT_FALSE(SameMapValues(*single.GetPtzMap(), *dual.GetPtzMap()));
  EXPECT_FALSE(SameMapValues(*single.GetPtzMap(), *quad.GetPtzMap()));
  EXPECT_FALSE(SameMapValues(*dual.GetPtzMap(), *quad.GetPtzMap()));
  // The panoramic kinds and the single PTZ view lay out one pane only.
  EXPECT_EQ(160.0f, single.GetPtzMap()->GetMapSize().X);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
