// Building views by layout and keeping them per (mount, projection, layout).
#include <gtest/gtest.h>

#include <typeinfo>

#include <libdewarp_vemo/dual_panoramic_view.h>
#include <libdewarp_vemo/dual_ptz_view.h>
#include <libdewarp_vemo/quad_panoramic_view.h>
#include <libdewarp_vemo/quad_ptz_view.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>
#include <libdewarp_vemo/view_builder.h>
#include <libdewarp_vemo/view_cache.h>

#include "log_capture.h"
#include "views_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;
using views_test::ErrorOf;
using views_test::MakeFisheye;

typedef boost::shared_ptr<View> ViewPtr;

TEST(ViewBuilder, BuildsTheKindOfEachLayoutWithItsProjectionMap) {
  const CameraPtr camera = MakeFisheye(WALL_MOUNT);
  const ViewBuilder builder;
  const std::type_info* kinds[] = {&typeid(SinglePanoramicView), &typeid(DualPanoramicView),
                                   &typeid(QuadPanoramicView),   &typeid(SinglePtzView),
                                   &typeid(DualPtzView),         &typeid(QuadPtzView)};
  for (int i = 0; i < 6; ++i) {
    ViewPtr v(builder.BuildView(static_cast<DEWARP_VIEW>(i), camera, CYLINDRICAL_PROJECTION));
    ASSERT_TRUE(v);
    EXPECT_TRUE(typeid(*v) == *kinds[i]) << i;
    EXPECT_EQ(camera, v->GetCamera());
    EXPECT_TRUE(v->GetProjectionMap());
  }
}

TEST(ViewBuilder, LayoutSixIsRefused) {
  const CameraPtr camera = MakeFisheye(WALL_MOUNT);
  test::LogCapture cap(LOG_ERROR);
  EXPECT_EQ("22|Invalid view", ErrorOf([&] {
              ViewBuilder().BuildView(static_cast<DEWARP_VIEW>(6), camera, CYLINDRICAL_PROJECTION);
            }));
  EXPECT_TRUE(cap.contains("LIBDEWARP: ERROR - Invalid view\n"));
  try {
    ViewBuilder().BuildView(static_cast<DEWARP_VIEW>(6), camera, CYLINDRICAL_PROJECTION);
  } catch (const Error& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find("(ViewBuilder::BuildView@")) << e.what();
  }
}

TEST(ViewBuilder, AFailingViewPassesItsErrorOn) {
  // Without a camera no projection map can be built; the half-built view is freed (checked by
  // the leak checker of the sanitizer build) and the view's error reaches the caller.
  EXPECT_EQ("14|Invalid camera",
            ErrorOf([&] { ViewBuilder().BuildView(SINGLE_PTZ_VIEW, CameraPtr(), RECTILINEAR_PROJECTION); }));
}

TEST(ViewCache, GetOfAnAbsentKeyIsEmpty) {
  ViewCache cache;
  EXPECT_FALSE(cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW));
}

TEST(ViewCache, KeysAreOrderedByMountProjectionAndLayout) {
  const ViewCache::Key k = ViewCache::MakeKey(FLOOR_MOUNT, MERCATOR_PROJECTION, QUAD_PTZ_VIEW);
  EXPECT_EQ(FLOOR_MOUNT, k.first);
  EXPECT_EQ(MERCATOR_PROJECTION, k.second.first);
  EXPECT_EQ(QUAD_PTZ_VIEW, k.second.second);
  EXPECT_TRUE(ViewCache::MakeKey(CEILING_MOUNT, PANNINI_PROJECTION, QUAD_PTZ_VIEW) <
              ViewCache::MakeKey(FLOOR_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PANORAMIC_VIEW));
  EXPECT_TRUE(ViewCache::MakeKey(WALL_MOUNT, RECTILINEAR_PROJECTION, QUAD_PTZ_VIEW) <
              ViewCache::MakeKey(WALL_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW));
}

TEST(ViewCache, TheSameProjectionAndLayoutOnTwoMountsAreKeptApart) {
  ViewCache cache;
  const ViewPtr ceiling(new SinglePanoramicView(MakeFisheye(CEILING_MOUNT)));
  const ViewPtr floor(new SinglePanoramicView(MakeFisheye(FLOOR_MOUNT)));
  test::LogCapture cap;
  cache.Set(CEILING_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW, ceiling);
  cache.Set(FLOOR_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW, floor);
  EXPECT_FALSE(cap.contains("overwritten"));
  EXPECT_EQ(ceiling, cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW));
  EXPECT_EQ(floor, cache.Get(FLOOR_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW));
  EXPECT_FALSE(cache.Get(WALL_MOUNT, CYLINDRICAL_PROJECTION, SINGLE_PANORAMIC_VIEW));
  EXPECT_FALSE(cache.Get(CEILING_MOUNT, CYLINDRICAL_PROJECTION, DUAL_PANORAMIC_VIEW));
  EXPECT_FALSE(cache.Get(CEILING_MOUNT, MERCATOR_PROJECTION, SINGLE_PANORAMIC_VIEW));
}

TEST(ViewCache, SettingAKeyTwiceLogsOnceAndKeepsTheSecondView) {
  ViewCache cache;
  const CameraPtr camera = MakeFisheye(WALL_MOUNT);
  const ViewPtr first(new SinglePtzView(camera)), second(new SinglePtzView(camera));
  test::LogCapture cap;
  cache.Set(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW, first);
  EXPECT_TRUE(cap.lines().empty());
  cache.Set(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW, second);
  ASSERT_EQ(1u, cap.lines().size());
  EXPECT_EQ("LIBDEWARP: INFO - Projection map cache item was overwritten\n", cap.lines()[0]);
  EXPECT_EQ(second, cache.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
  // The replaced view lives on with whoever still holds it.
  EXPECT_EQ(1, first.use_count());
}

TEST(ViewCache, ClearEmptiesAndCopiesShareTheViews) {
  ViewCache cache;
  const ViewPtr v(new SinglePtzView(MakeFisheye(WALL_MOUNT)));
  cache.Set(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW, v);
  ViewCache copy(cache);
  ViewCache assigned;
  assigned = cache;
  EXPECT_EQ(v, copy.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
  EXPECT_EQ(v, assigned.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
  cache.Clear();
  EXPECT_FALSE(cache.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
  EXPECT_EQ(v, copy.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
  test::LogCapture cap(LOG_WARNING);
  ViewCache& alias = copy;
  copy = alias;
  EXPECT_TRUE(cap.contains("Self assignment of ViewCache object"));
  EXPECT_EQ(v, copy.Get(WALL_MOUNT, RECTILINEAR_PROJECTION, SINGLE_PTZ_VIEW));
}

TEST(ViewKindsCopy, SelfAssignmentOfEachKindNamesItsClass) {
  const CameraPtr camera = MakeFisheye(WALL_MOUNT);
  test::LogCapture cap(LOG_WARNING);
  SinglePanoramicView a(camera);
  DualPanoramicView b(camera);
  QuadPanoramicView c(camera);
  SinglePtzView d(camera);
  DualPtzView e(camera);
  QuadPtzView f(camera);
  SinglePanoramicView& ra = a;
  DualPanoramicView& rb = b;
  QuadPanoramicView& rc = c;
  SinglePtzView& rd = d;
  DualPtzView& re = e;
  QuadPtzView& rf = f;
  a = ra;
  b = rb;
  c = rc;
  d = rd;
  e = re;
  f = rf;
  for (const char* name : {"SinglePanoramicView", "DualPanoramicView", "QuadPanoramicView", "SinglePtzView",
                           "DualPtzView", "QuadPtzView"}) {
    EXPECT_TRUE(cap.contains(std::string("Self assignment of ") + name + " object")) << name;
  }
  // Copies share the maps.
  DualPtzView g(camera, RECTILINEAR_PROJECTION);
  DualPtzView h(g);
  EXPECT_EQ(g.GetProjectionMap(), h.GetProjectionMap());
  e = g;
  EXPECT_EQ(g.GetProjectionMap(), e.GetProjectionMap());
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
