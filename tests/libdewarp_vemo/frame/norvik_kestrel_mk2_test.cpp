#include <libdewarp_vemo/norvik_kestrel_mk2.h>

#include <gtest/gtest.h>

namespace {

TEST(NorvikKestrelMk2, IsA183DegreeFisheyeOf1936By1936Pixels) {
  const DEWARP_INTERNAL_CAMERA_MODEL model = GetNorvikKestrelMk2Camera();
  EXPECT_EQ(1, model.Type);
  EXPECT_EQ(CIRCULAR_FISHEYE_CAMERA, model.Type);
  EXPECT_EQ(183.0f, model.FovD);
  EXPECT_EQ(183.0f, model.FovH);
  EXPECT_EQ(183.0f, model.FovV);
  EXPECT_EQ(1936u, model.ResolutionH);
  EXPECT_EQ(1936u, model.ResolutionV);
}

TEST(NorvikKestrelMk2, EachCallReturnsAnIndependentCopy) {
  DEWARP_INTERNAL_CAMERA_MODEL first = GetNorvikKestrelMk2Camera();
  first.FovD = 90.0f;
  first.ResolutionH = 1;
  EXPECT_EQ(90.0f, first.FovD);
  const DEWARP_INTERNAL_CAMERA_MODEL second = GetNorvikKestrelMk2Camera();
  EXPECT_EQ(183.0f, second.FovD);
  EXPECT_EQ(1936u, second.ResolutionH);
  EXPECT_EQ(183.0f, vemo::libdewarp::NorvikKestrelMk2.FovD);
}

}  // namespace
