// The frame-mark hook: every frame is accepted and announces the built-in camera.
#include <libdewarp_vemo/water_mark.h>

#include <gtest/gtest.h>
#include <log_capture.h>

#include <cstring>

using vemo::libdewarp::WaterMark;

TEST(WaterMarkTest, EmptyImageIsValidAndReportsTheBuiltInCamera) {
  DEWARP_IMAGE empty;
  std::memset(&empty, 0, sizeof(empty));
  WaterMark mark(empty);
  EXPECT_TRUE(mark.Valid());
  const DEWARP_INTERNAL_CAMERA_MODEL model = mark.GetCameraModel();
  EXPECT_EQ(CIRCULAR_FISHEYE_CAMERA, model.Type);
  EXPECT_EQ(1, static_cast<int>(model.Type));
  EXPECT_EQ(183.0f, model.FovD);
  EXPECT_EQ(183.0f, model.FovH);
  EXPECT_EQ(183.0f, model.FovV);
  EXPECT_EQ(1936u, model.ResolutionH);
  EXPECT_EQ(1936u, model.ResolutionV);
  EXPECT_EQ(WALL_MOUNT, mark.GetCameraMount());
  EXPECT_EQ(2, static_cast<int>(mark.GetCameraMount()));
  EXPECT_TRUE(mark.CheckImage(empty));
}

TEST(WaterMarkTest, CopiesAndSelfAssignment) {
  vemo::test::LogCapture cap(LOG_WARNING);
  WaterMark a;
  WaterMark b(a);
  b = a;
  EXPECT_FALSE(cap.contains("Self assignment"));
  WaterMark& alias = b;
  b = alias;
  EXPECT_TRUE(cap.contains("Self assignment of WaterMark object"));
  EXPECT_TRUE(b.Valid());
}
