// The view's chain of four maps: which links each constructor builds, which links each kind of
// change replaces or keeps (checked by map identity), and every failure with its errno, message
// and the state it leaves behind.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include <libdewarp_vemo/defaults.h>
#include <libdewarp_vemo/field_of_view.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/projection.h>
#include <libdewarp_vemo/single_panoramic_view.h>
#include <libdewarp_vemo/single_ptz_view.h>
#include <libdewarp_vemo/view.h>

#include "log_capture.h"
#include "views_test_support.h"

namespace vemo {
namespace libdewarp {
namespace {

using views_test::CameraPtr;
using views_test::ErrorOf;
using views_test::MakeFisheye;

typedef View::ImageMapPtr MapPtr;

struct Links {
  MapPtr projection, scale, scaled, ptz;
  explicit Links(const View& v)
      : projection(v.GetProjectionMap()), scale(v.GetScaleMap()), scaled(v.GetScaledProjectionMap()),
        ptz(v.GetPtzMap()) {}
};

bool SameSize(const MapPtr& map, float w, float h) {
  return map && map->GetMapSize().X == w && map->GetMapSize().Y == h;
}

// A PTZ view whose link builders can be told to return nothing.
class ScriptedView : public SinglePtzView {
public:
  explicit ScriptedView(const CameraPtr& camera) : SinglePtzView(camera) {}
  bool noProjection = false, noScale = false, noScaled = false, noPtz = false;
  int ptzBuilds = 0;

  ImageMapPtr BuildProjectionMap(const CameraPtr& c, DEWARP_PROJECTION p) override {
    return noProjection ? ImageMapPtr() : SinglePtzView::BuildProjectionMap(c, p);
  }
  ImageMapPtr BuildScaleMap(const ImageMapPtr& m, const Resolution& s, DEWARP_ASPECT_RATIO a) override {
    return noScale ? ImageMapPtr() : SinglePtzView::BuildScaleMap(m, s, a);
  }
  ImageMapPtr BuildScaledProjectionMap(const ImageMapPtr& s, const ImageMapPtr& p) override {
    return noScaled ? ImageMapPtr() : SinglePtzView::BuildScaledProjectionMap(s, p);
  }
  ImageMapPtr BuildPtzMap(const CameraPtr& c, const PtzPosition& pos, const ImageMapPtr& m) override {
    ++ptzBuilds;
    return noPtz ? ImageMapPtr() : SinglePtzView::BuildPtzMap(c, pos, m);
  }
  using View::BuildPtzMap;
  using View::BuildProjectionMap;
  using View::BuildScaleMap;
  using View::BuildScaledProjectionMap;
};

// A view whose target field of view is chosen by the test.
class FovView : public View {
public:
  FovView(const CameraPtr& camera, const FieldOfView& fov) : View(camera), m_fov(fov) {}
  FieldOfView GetTargetFov(const CameraPtr&, DEWARP_PROJECTION) const override { return m_fov; }
  FieldOfView m_fov;
};

class ViewPipeline : public ::testing::Test {
protected:
  CameraPtr ceiling = MakeFisheye(CEILING_MOUNT);
};

// ---- Constructors --------------------------------------------------------------------------

TEST_F(ViewPipeline, CameraOnlyFormBuildsNothing) {
  View v(ceiling);
  Links l(v);
  EXPECT_FALSE(l.projection || l.scale || l.scaled || l.ptz);
  EXPECT_EQ(ceiling, v.GetCamera());
  EXPECT_FALSE(v.GetFov().Valid());
  EXPECT_EQ(1.0f, v.GetSquish().X);
  EXPECT_EQ(1.0f, v.GetSquish().Y);
  EXPECT_TRUE(v.GetPtz() == PtzPosition(EulerAngles(0, 0, 0), 1.0f));
}

TEST_F(ViewPipeline, ProjectionFormBuildsOnlyTheProjectionMapWithTheDefaultAspect) {
  View v(ceiling, CYLINDRICAL_PROJECTION);
  Links l(v);
  EXPECT_TRUE(l.projection);
  EXPECT_FALSE(l.scale || l.scaled || l.ptz);
  EXPECT_EQ(FREE_ASPECT_RATIO, v.GetAspectRatio());
  EXPECT_TRUE(v.GetFov().Valid());
}

TEST_F(ViewPipeline, ProjectionAndAspectFormKeepsTheAspect) {
  View v(ceiling, CYLINDRICAL_PROJECTION, CROP_TO_ASPECT_RATIO);
  EXPECT_TRUE(v.GetProjectionMap());
  EXPECT_FALSE(v.GetScaleMap() || v.GetScaledProjectionMap() || v.GetPtzMap());
  EXPECT_EQ(CROP_TO_ASPECT_RATIO, v.GetAspectRatio());
}

TEST_F(ViewPipeline, SizeFormBuildsThreeLinksAndNoPtzMap) {
  View v(ceiling, CYLINDRICAL_PROJECTION, Resolution(64, 48));
  Links l(v);
  EXPECT_TRUE(l.projection && l.scaled);
  EXPECT_TRUE(SameSize(l.scale, 64, 48));
  EXPECT_FALSE(l.ptz);
  EXPECT_EQ(FREE_ASPECT_RATIO, v.GetAspectRatio());
  EXPECT_TRUE(v.GetPtz() == PtzPosition(EulerAngles(0, 0, 0), 1.0f));
}

TEST_F(ViewPipeline, SizeAndAspectFormKeepsTheAspect) {
  View v(ceiling, CYLINDRICAL_PROJECTION, Resolution(64, 48), SCALE_TO_ASPECT_RATIO);
  EXPECT_EQ(SCALE_TO_ASPECT_RATIO, v.GetAspectRatio());
  EXPECT_TRUE(SameSize(v.GetScaleMap(), 64, 48));
  EXPECT_TRUE(v.GetScaledProjectionMap());
  EXPECT_FALSE(v.GetPtzMap());
}

TEST_F(ViewPipeline, CopiesShareTheCameraAndAllFourMaps) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  View copy(v);
  Links a(v), b(copy);
  EXPECT_EQ(a.projection, b.projection);
  EXPECT_EQ(a.scale, b.scale);
  EXPECT_EQ(a.scaled, b.scaled);
  EXPECT_EQ(a.ptz, b.ptz);
  EXPECT_EQ(v.GetCamera(), copy.GetCamera());

  SinglePtzView assigned(ceiling);
  assigned = v;
  EXPECT_EQ(a.ptz, assigned.GetPtzMap());
  EXPECT_EQ(a.projection, assigned.GetProjectionMap());
}

TEST_F(ViewPipeline, SelfAssignmentWarnsAndChangesNothing) {
  View v(ceiling, CYLINDRICAL_PROJECTION);
  const MapPtr before = v.GetProjectionMap();
  test::LogCapture cap(LOG_WARNING);
  View& alias = v;
  v = alias;
  EXPECT_TRUE(cap.contains("Self assignment of View object"));
  EXPECT_EQ(before, v.GetProjectionMap());
}

// ---- Rebuild rules -------------------------------------------------------------------------

TEST_F(ViewPipeline, FirstFrameBuildsLinksTwoToFourAndASecondFrameRebuildsNothing) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  const MapPtr projection = v.GetProjectionMap();
  ASSERT_TRUE(projection);
  EXPECT_FALSE(v.GetScaleMap() || v.GetScaledProjectionMap() || v.GetPtzMap());

  EXPECT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links first(v);
  EXPECT_EQ(projection, first.projection);
  EXPECT_TRUE(SameSize(first.scale, 64, 48));
  EXPECT_TRUE(SameSize(first.scaled, 64, 48));
  EXPECT_TRUE(SameSize(first.ptz, 64, 48));

  EXPECT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links second(v);
  EXPECT_EQ(first.projection, second.projection);
  EXPECT_EQ(first.scale, second.scale);
  EXPECT_EQ(first.scaled, second.scaled);
  EXPECT_EQ(first.ptz, second.ptz);
}

TEST_F(ViewPipeline, AFrameOfAnotherSizeRebuildsLinksTwoToFour) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  ASSERT_TRUE(v.CheckMaps(Resolution(80, 60)));
  Links after(v);
  EXPECT_EQ(before.projection, after.projection);
  EXPECT_NE(before.scale, after.scale);
  EXPECT_NE(before.scaled, after.scaled);
  EXPECT_NE(before.ptz, after.ptz);
  EXPECT_TRUE(SameSize(after.scale, 80, 60));
  EXPECT_TRUE(SameSize(after.ptz, 80, 60));
}

TEST_F(ViewPipeline, SetPtzWithTheCurrentPositionKeepsThePtzMap) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  v.SetPtz(v.GetPtz());
  Links after(v);
  EXPECT_EQ(before.ptz, after.ptz);
  EXPECT_EQ(before.scaled, after.scaled);
}

TEST_F(ViewPipeline, SetPtzWithANewPositionDropsOnlyThePtzMap) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  const PtzPosition taken = v.SetPtz(PtzPosition(EulerAngles(0.5f, -0.5f, 0.0f), 1.5f));
  EXPECT_TRUE(taken == v.GetPtz());
  EXPECT_FLOAT_EQ(0.5f, taken.m_obOrientation.Yaw);
  EXPECT_FLOAT_EQ(-0.5f, taken.m_obOrientation.Pitch);
  EXPECT_FLOAT_EQ(1.5f, taken.m_fZoom);
  Links dropped(v);
  EXPECT_FALSE(dropped.ptz);
  EXPECT_EQ(before.projection, dropped.projection);
  EXPECT_EQ(before.scale, dropped.scale);
  EXPECT_EQ(before.scaled, dropped.scaled);

  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links rebuilt(v);
  EXPECT_TRUE(rebuilt.ptz);
  EXPECT_NE(before.ptz, rebuilt.ptz);
  EXPECT_EQ(before.scale, rebuilt.scale);
  EXPECT_EQ(before.scaled, rebuilt.scaled);
}

TEST_F(ViewPipeline, ResetPtzReturnsToTheIdentityAndDropsThePtzMap) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  v.SetPtz(PtzPosition(EulerAngles(0.5f, -0.5f, 0.0f), 2.0f));
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  const PtzPosition reset = v.ResetPtz();
  EXPECT_TRUE(reset == PtzPosition(EulerAngles(0, 0, 0), 1.0f));
  EXPECT_FALSE(v.GetPtzMap());
  EXPECT_TRUE(v.GetScaledProjectionMap());
}

TEST_F(ViewPipeline, SetAspectRatioBeforeAnyFrameOnlyStoresTheValue) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  const MapPtr projection = v.GetProjectionMap();
  v.SetAspectRatio(CROP_TO_ASPECT_RATIO);
  EXPECT_EQ(CROP_TO_ASPECT_RATIO, v.GetAspectRatio());
  EXPECT_EQ(projection, v.GetProjectionMap());
  EXPECT_FALSE(v.GetScaleMap() || v.GetScaledProjectionMap() || v.GetPtzMap());
}

TEST_F(ViewPipeline, SetAspectRatioAfterAFrameRebuildsLinksTwoToFourAtTheSameSize) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  v.SetAspectRatio(SCALE_TO_ASPECT_RATIO);
  Links after(v);
  EXPECT_EQ(before.projection, after.projection);
  EXPECT_NE(before.scale, after.scale);
  EXPECT_NE(before.scaled, after.scaled);
  EXPECT_NE(before.ptz, after.ptz);
  EXPECT_TRUE(SameSize(after.scale, 64, 48));
  EXPECT_TRUE(SameSize(after.ptz, 64, 48));
}

TEST_F(ViewPipeline, SetDewarpedSizeWithAnAspectStoresItAndRebuildsLinksTwoToFour) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  v.SetDewarpedSize(Resolution(32, 32), CROP_TO_ASPECT_RATIO);
  Links after(v);
  EXPECT_EQ(CROP_TO_ASPECT_RATIO, v.GetAspectRatio());
  EXPECT_EQ(before.projection, after.projection);
  EXPECT_TRUE(SameSize(after.scale, 32, 32));
  EXPECT_TRUE(SameSize(after.scaled, 32, 32));
  EXPECT_TRUE(SameSize(after.ptz, 32, 32));
}

TEST_F(ViewPipeline, FieldOfViewAndSquishAreStoredAsGiven) {
  SinglePtzView v(ceiling);
  v.SetSquish(Vector2d(2.0f, 1.0f));
  EXPECT_EQ(2.0f, v.GetSquish().X);
  EXPECT_EQ(1.0f, v.GetSquish().Y);
  v.SetFov(FieldOfView(1.0f, 0.5f));
  EXPECT_EQ(1.0f, v.GetFov().Horizontal);
  EXPECT_EQ(0.5f, v.GetFov().Vertical);
}

TEST_F(ViewPipeline, TheScaleMapAppliesTheSquish) {
  // In the free aspect mode the output samples the projection with factor
  // (projection size * squish) / output size per axis: a horizontal squish of 2 doubles the
  // horizontal distance from the centre that an output pixel samples.
  SinglePtzView plain(ceiling, RECTILINEAR_PROJECTION);
  SinglePtzView squished(ceiling);
  squished.SetSquish(Vector2d(2.0f, 1.0f));
  squished.BuildProjectionMap(RECTILINEAR_PROJECTION);
  plain.SetDewarpedSize(Resolution(64, 48), FREE_ASPECT_RATIO);
  squished.SetDewarpedSize(Resolution(64, 48), FREE_ASPECT_RATIO);
  const Vector2d centre = plain.GetProjectionMap()->GetMapSize() * 0.5f;
  const Vector2d a = plain.GetScaleMap()->GetMapItem(50, 40) - centre;
  const Vector2d b = squished.GetScaleMap()->GetMapItem(50, 40) - centre;
  ASSERT_GT(std::fabs(a.X), 1.0f);
  EXPECT_NEAR(2.0f * a.X, b.X, 0.02f * std::fabs(a.X));
  EXPECT_NEAR(a.Y, b.Y, 0.02f * std::fabs(a.Y) + 1e-3f);
}

TEST_F(ViewPipeline, ProjectionSizeIsTheProjectionMapSize) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  const Vector2d size = v.GetProjectionSize();
  EXPECT_EQ(v.GetProjectionMap()->GetMapSize().X, size.X);
  EXPECT_EQ(v.GetProjectionMap()->GetMapSize().Y, size.Y);
  EXPECT_GT(size.X, 0.0f);
}

TEST_F(ViewPipeline, TinyOutputsAreDewarpedWithoutHarm) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  views_test::YuvFrame in(400, 400, 100, 128);
  ImagePlanar420 input = in.Image();
  const unsigned int sizes[][2] = {{2, 2}, {4, 1}, {1, 1}, {2, 6}};
  for (const auto& size : sizes) {
    views_test::YuvFrame out(size[0], size[1], 7, 7);
    ImagePlanar420 output = out.Image();
    EXPECT_NO_THROW(v.DewarpImage(input, output, NEAREST_NEIGHBOUR_INTERPOLATION)) << size[0] << "x" << size[1];
    EXPECT_NO_THROW(v.DewarpImage(input, output, LINEAR_INTERPOLATION)) << size[0] << "x" << size[1];
    EXPECT_TRUE(SameSize(v.GetPtzMap(), static_cast<float>(size[0]), static_cast<float>(size[1])));
  }
}

// ---- Failure table ---------------------------------------------------------------------------

TEST_F(ViewPipeline, NoCameraFailsWithInvalidCamera) {
  View v((CameraPtr()));
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.BuildProjectionMap(CYLINDRICAL_PROJECTION); }));
  EXPECT_FALSE(v.GetProjectionMap());
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.BuildProjectionMap(CameraPtr(), CYLINDRICAL_PROJECTION); }));
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.GetPtzRange(); }));
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.CalcPtzPosition(Vector2d(1, 1), 2.0f); }));
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.BuildPtzMap(); }));
  MapPtr map(new ImageMap(4, 4));
  EXPECT_EQ("14|Invalid camera", ErrorOf([&] { v.BuildPtzMap(CameraPtr(), PtzPosition(), map); }));
}

TEST_F(ViewPipeline, ErrorsAreLocatedInClassViewAndTheOperation) {
  View v((CameraPtr()));
  try {
    v.GetPtzRange();
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find("(View::GetPtzRange@")) << e.what();
    EXPECT_NE(std::string::npos, std::string(e.what()).find("[Error EFAULT (14)] - Invalid camera")) << e.what();
  }
}

TEST_F(ViewPipeline, BuilderWithoutProjectionMapFailsWithCode22) {
  ScriptedView v(ceiling);
  v.noProjection = true;
  EXPECT_EQ("22|Invalid projection map", ErrorOf([&] { v.BuildProjectionMap(RECTILINEAR_PROJECTION); }));
  EXPECT_FALSE(v.GetProjectionMap());
}

TEST_F(ViewPipeline, MissingProjectionMapFailsWithCode14ForScaleMapAndCheckMaps) {
  View v(ceiling);
  EXPECT_EQ("14|Invalid projection map", ErrorOf([&] { v.BuildScaleMap(Resolution(64, 48)); }));
  EXPECT_EQ("14|Invalid projection map", ErrorOf([&] { v.CheckMaps(Resolution(64, 48)); }));
  EXPECT_EQ("14|Invalid projection map", ErrorOf([&] { v.SetDewarpedSize(Resolution(64, 48)); }));
  EXPECT_EQ("14|Invalid projection map",
            ErrorOf([&] { v.BuildScaleMap(MapPtr(), Resolution(64, 48), FREE_ASPECT_RATIO); }));
  EXPECT_FALSE(v.GetScaleMap() || v.GetScaledProjectionMap() || v.GetPtzMap());
}

TEST_F(ViewPipeline, ProjectionSizeWithoutProjectionMapFailsWithCode22) {
  View v(ceiling);
  EXPECT_EQ("22|Invalid projection map", ErrorOf([&] { v.GetProjectionSize(); }));
}

TEST_F(ViewPipeline, BuilderWithoutScaleMapFailsAndKeepsTheProjectionMap) {
  ScriptedView v(ceiling);
  v.BuildProjectionMap(RECTILINEAR_PROJECTION);
  const MapPtr projection = v.GetProjectionMap();
  v.noScale = true;
  EXPECT_EQ("22|Invalid scale map", ErrorOf([&] { v.CheckMaps(Resolution(64, 48)); }));
  EXPECT_EQ(projection, v.GetProjectionMap());
  EXPECT_FALSE(v.GetScaleMap() || v.GetScaledProjectionMap() || v.GetPtzMap());

  // Once the builder works again the next frame builds the missing links.
  v.noScale = false;
  EXPECT_TRUE(v.CheckMaps(Resolution(64, 48)));
  EXPECT_EQ(projection, v.GetProjectionMap());
  EXPECT_TRUE(v.GetScaleMap() && v.GetScaledProjectionMap() && v.GetPtzMap());
}

TEST_F(ViewPipeline, CompositionWithoutItsInputsFailsWithCode14) {
  View v(ceiling);
  EXPECT_EQ("14|Invalid projection and scale map", ErrorOf([&] { v.BuildScaledProjectionMap(); }));
  View p(ceiling, CYLINDRICAL_PROJECTION);
  EXPECT_EQ("14|Invalid projection and scale map", ErrorOf([&] { p.BuildScaledProjectionMap(); }));
  EXPECT_EQ("14|Invalid projection and scale map",
            ErrorOf([&] { p.BuildScaledProjectionMap(MapPtr(), p.GetProjectionMap()); }));
  EXPECT_FALSE(p.GetScaledProjectionMap());
}

TEST_F(ViewPipeline, BuilderWithoutScaledProjectionMapFailsAndKeepsTheEarlierLinks) {
  ScriptedView v(ceiling);
  v.BuildProjectionMap(RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.CheckMaps(Resolution(64, 48)));
  Links before(v);
  v.noScaled = true;
  EXPECT_EQ("22|Invalid scaled projection map", ErrorOf([&] { v.CheckMaps(Resolution(32, 24)); }));
  EXPECT_EQ(before.projection, v.GetProjectionMap());
  EXPECT_TRUE(SameSize(v.GetScaleMap(), 32, 24));
  EXPECT_FALSE(v.GetScaledProjectionMap());

  v.noScaled = false;
  EXPECT_TRUE(v.CheckMaps(Resolution(32, 24)));
  EXPECT_TRUE(SameSize(v.GetScaledProjectionMap(), 32, 24));
  EXPECT_TRUE(SameSize(v.GetPtzMap(), 32, 24));
}

TEST_F(ViewPipeline, PtzMapWithoutScaledProjectionMapFailsWithCode14) {
  SinglePtzView v(ceiling, RECTILINEAR_PROJECTION);
  EXPECT_EQ("14|Invalid scaled projection map", ErrorOf([&] { v.BuildPtzMap(); }));
  EXPECT_EQ("14|Invalid scaled projection map", ErrorOf([&] { v.BuildPtzMap(ceiling, PtzPosition(), MapPtr()); }));
  EXPECT_FALSE(v.GetPtzMap());
}

TEST_F(ViewPipeline, BuilderWithoutPtzMapFailsWithCode22AlsoAtDewarpTime) {
  ScriptedView v(ceiling);
  v.BuildProjectionMap(RECTILINEAR_PROJECTION);
  v.noPtz = true;
  EXPECT_EQ("22|Invalid PTZ map", ErrorOf([&] { v.CheckMaps(Resolution(64, 48)); }));
  EXPECT_TRUE(v.GetScaledProjectionMap());
  EXPECT_FALSE(v.GetPtzMap());

  views_test::YuvFrame in(400, 400, 100, 128), out(64, 48, 7, 7);
  ImagePlanar420 input = in.Image();
  ImagePlanar420 output = out.Image();
  EXPECT_EQ("22|Invalid PTZ map", ErrorOf([&] { v.DewarpImage(input, output, LINEAR_INTERPOLATION); }));
  // Nothing was written into the caller's frame.
  EXPECT_EQ(std::vector<std::uint8_t>(out.Bytes().size(), 7), out.Bytes());
}

TEST_F(ViewPipeline, ARectilinearCameraOffersNoPtzMap) {
  const CameraPtr rectilinear = views_test::MakeRectilinear(WALL_MOUNT);
  View v(rectilinear, RECTILINEAR_PROJECTION);
  ASSERT_TRUE(v.GetProjectionMap());
  EXPECT_EQ("22|Invalid PTZ map", ErrorOf([&] { v.CheckMaps(Resolution(64, 48)); }));
  EXPECT_FALSE(v.GetPtzMap());
}

TEST_F(ViewPipeline, InvalidTargetResolutionFailsWithCode33) {
  FovView v(ceiling, FieldOfView(0.0f, 0.0f, 0.0f));
  EXPECT_EQ("33|Invalid projection resolution", ErrorOf([&] { v.BuildProjectionMap(RECTILINEAR_PROJECTION); }));
  EXPECT_FALSE(v.GetProjectionMap());
  EXPECT_EQ("33|Invalid projection resolution",
            ErrorOf([&] { v.CalcProjectionMapSize(ceiling, RECTILINEAR_PROJECTION); }));
}

TEST_F(ViewPipeline, InvalidTargetFieldOfViewFailsWithCode33) {
  FovView v(ceiling, FieldOfView(1.0f, 1.0f, FloatingPoint::Nan));
  EXPECT_EQ("33|Invalid projection field-of-view",
            ErrorOf([&] { v.CalcProjectionMapSize(ceiling, RECTILINEAR_PROJECTION); }));
  EXPECT_EQ("33|Invalid projection field-of-view", ErrorOf([&] { v.BuildProjectionMap(RECTILINEAR_PROJECTION); }));
}

// ---- Projection map size and its log lines -----------------------------------------------------

TEST_F(ViewPipeline, TargetBeyondTheFullVerticalFieldOfViewIsCutToIt) {
  const Resolution full = ceiling->GetProjectionMapSize(EQUIRECTANGULAR_PROJECTION);
  const FieldOfView fullFov = ceiling->GetProjectionFieldOfView(full, EQUIRECTANGULAR_PROJECTION);
  ASSERT_TRUE(full.Valid());
  ASSERT_TRUE(fullFov.Valid());
  FovView v(ceiling, FieldOfView(1.0f, fullFov.Vertical + 0.1f));
  const View::ProjectionMapSize size = v.CalcProjectionMapSize(ceiling, EQUIRECTANGULAR_PROJECTION);
  EXPECT_EQ(fullFov.Vertical, size.second.Vertical);
  EXPECT_EQ(1.0f, size.second.Horizontal);
  EXPECT_EQ(full.Y, size.first.Y);

  // Within the full field of view nothing is cut.
  FovView w(ceiling, FieldOfView(1.0f, fullFov.Vertical - 0.1f));
  const View::ProjectionMapSize inside = w.CalcProjectionMapSize(ceiling, EQUIRECTANGULAR_PROJECTION);
  EXPECT_EQ(fullFov.Vertical - 0.1f, inside.second.Vertical);
  EXPECT_LT(inside.first.Y, full.Y);
}

double Number(const std::string& line, const char* format, int which) {
  double a = NAN, b = NAN;
  if (std::sscanf(line.c_str(), format, &a, &b) != 2) {
    return NAN;
  }
  return which == 0 ? a : b;
}

TEST_F(ViewPipeline, ProjectionMapBuildLogsTargetShiftAndScale) {
  test::LogCapture cap;
  SinglePanoramicView v(ceiling, CYLINDRICAL_PROJECTION);
  std::string fov, resolution, shift, scale;
  for (const std::string& line : cap.lines()) {
    if (line.find("Target FOV = ") != std::string::npos) fov = line.substr(line.find("Target"));
    if (line.find("Target resolution = ") != std::string::npos) resolution = line.substr(line.find("Target"));
    if (line.find("Shift is = ") != std::string::npos) shift = line.substr(line.find("Shift"));
    if (line.find("Scale is = ") != std::string::npos) scale = line.substr(line.find("Scale"));
  }
  // A ceiling panorama in cylindrical projection covers the whole horizon and a quarter turn
  // below it: 360 by 90 degrees.
  EXPECT_NEAR(360.0, Number(fov, "Target FOV = (%lf, %lf)", 0), 1e-3) << fov;
  EXPECT_NEAR(90.0, Number(fov, "Target FOV = (%lf, %lf)", 1), 1e-3) << fov;
  const Vector2d size = v.GetProjectionSize();
  EXPECT_EQ(size.X, Number(resolution, "Target resolution = (%lf, %lf)", 0)) << resolution;
  EXPECT_EQ(size.Y, Number(resolution, "Target resolution = (%lf, %lf)", 1)) << resolution;
  // The ceiling mount shifts the panorama by half its height and halves its vertical scale.
  EXPECT_EQ(0.0, Number(shift, "Shift is = (%lf, %lf)", 0)) << shift;
  EXPECT_EQ(size.Y * 0.5, Number(shift, "Shift is = (%lf, %lf)", 1)) << shift;
  EXPECT_EQ(1.0, Number(scale, "Scale is = (%lf, %lf)", 0)) << scale;
  EXPECT_EQ(0.5, Number(scale, "Scale is = (%lf, %lf)", 1)) << scale;
  EXPECT_NEAR(2.0 * views_test::kPi, v.GetFov().Horizontal, 1e-5);
  EXPECT_NEAR(views_test::kPi / 2.0, v.GetFov().Vertical, 1e-5);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
