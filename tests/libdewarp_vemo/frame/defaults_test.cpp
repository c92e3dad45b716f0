#include <libdewarp_vemo/defaults.h>

#include <gtest/gtest.h>

#include <type_traits>

#include "log_capture.h"

namespace {

using vemo::libdewarp::Defaults;

TEST(Defaults, EngineWideSettings) {
  EXPECT_EQ(LOG_ERROR, Defaults::LogLevel);
  EXPECT_EQ(nullptr, Defaults::LogFunction);
  EXPECT_EQ(nullptr, Defaults::LogSettings.Function);
  EXPECT_EQ(LOG_ERROR, Defaults::LogSettings.Level);
  EXPECT_EQ(SINGLE_PANORAMIC_VIEW, Defaults::View);
  EXPECT_EQ(CYLINDRICAL_PROJECTION, Defaults::Projection);
  EXPECT_EQ(FREE_ASPECT_RATIO, Defaults::AspectRatio);
  EXPECT_EQ(LINEAR_INTERPOLATION, Defaults::Interpolation);
  EXPECT_EQ(WALL_MOUNT, Defaults::CameraMount);
  EXPECT_EQ(CIRCULAR_FISHEYE_CAMERA, Defaults::CameraType);
}

TEST(Defaults, CarriesNoDataButItsVirtualTable) {
  EXPECT_TRUE(std::has_virtual_destructor<Defaults>::value);
  EXPECT_EQ(sizeof(void*), sizeof(Defaults));
}

TEST(Defaults, CopyAndSelfAssignment) {
  Defaults a;
  Defaults b(a);
  vemo::test::LogCapture capture(LOG_WARNING);
  b = a;
  EXPECT_TRUE(capture.lines().empty());
  Defaults& alias = b;
  b = alias;
  ASSERT_EQ(1u, capture.lines().size());
  EXPECT_EQ("LIBDEWARP: WARNING - Self assignment of Defaults object\n", capture.lines()[0]);
}

}  // namespace
