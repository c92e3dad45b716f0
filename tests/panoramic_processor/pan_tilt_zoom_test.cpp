#include <gtest/gtest.h>

#include <limits>

#include "ImageProcessor.h"

namespace {

const char kPanText[] = "Assertion `pan >= -180 && pan <= 180' failed";
const char kTiltText[] = "Assertion `tilt >= -90 && tilt <= 90' failed";
const char kZoomText[] = "Assertion `zoom > 0' failed";

TEST(ImageProcessorPanTiltZoomTest, StartsAtPanZeroTiltZeroZoomOne) {
  ImageProcessor processor;
  double pan = -1, tilt = -1, zoom = -1;
  processor.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_EQ(pan, 0.0);
  EXPECT_EQ(tilt, 0.0);
  EXPECT_EQ(zoom, 1.0);
  EXPECT_EQ(processor.GetPan(), 0.0);
  EXPECT_EQ(processor.GetTilt(), 0.0);
  EXPECT_EQ(processor.GetZoom(), 1.0);
}

TEST(ImageProcessorPanTiltZoomTest, SettersStoreTheirValues) {
  ImageProcessor processor;
  processor.SetPan(-37.5);
  processor.SetTilt(12.25);
  processor.SetZoom(2.5);
  EXPECT_EQ(processor.GetPan(), -37.5);
  EXPECT_EQ(processor.GetTilt(), 12.25);
  EXPECT_EQ(processor.GetZoom(), 2.5);
  processor.SetPanTilt(170, -80);
  EXPECT_EQ(processor.GetPan(), 170.0);
  EXPECT_EQ(processor.GetTilt(), -80.0);
  EXPECT_EQ(processor.GetZoom(), 2.5);
  processor.SetPanTiltZoom(-1, 2, 0.75);
  double pan, tilt, zoom;
  processor.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_EQ(pan, -1.0);
  EXPECT_EQ(tilt, 2.0);
  EXPECT_EQ(zoom, 0.75);
}

TEST(ImageProcessorPanTiltZoomTest, TheLimitsThemselvesAreAccepted) {
  ImageProcessor processor;
  processor.SetPan(-180);
  EXPECT_EQ(processor.GetPan(), -180.0);
  processor.SetPan(180);
  EXPECT_EQ(processor.GetPan(), 180.0);
  processor.SetTilt(-90);
  EXPECT_EQ(processor.GetTilt(), -90.0);
  processor.SetTilt(90);
  EXPECT_EQ(processor.GetTilt(), 90.0);
  processor.SetZoom(std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(processor.GetZoom(), std::numeric_limits<double>::denorm_min());
  processor.SetPanTiltZoom(180, -90, 1e9);
  EXPECT_EQ(processor.GetZoom(), 1e9);
}

TEST(ImageProcessorPanTiltZoomDeathTest, PanOutsideItsRangeEndsTheProcess) {
  ImageProcessor processor;
  EXPECT_DEATH(processor.SetPan(180.5), kPanText);
  EXPECT_DEATH(processor.SetPan(-180.5), kPanText);
  EXPECT_DEATH(processor.SetPan(std::numeric_limits<double>::quiet_NaN()), kPanText);
}

TEST(ImageProcessorPanTiltZoomDeathTest, TiltOutsideItsRangeEndsTheProcess) {
  ImageProcessor processor;
  EXPECT_DEATH(processor.SetTilt(90.5), kTiltText);
  EXPECT_DEATH(processor.SetTilt(-90.5), kTiltText);
}

TEST(ImageProcessorPanTiltZoomDeathTest, ZoomNotAboveZeroEndsTheProcess) {
  ImageProcessor processor;
  EXPECT_DEATH(processor.SetZoom(0), kZoomText);
  EXPECT_DEATH(processor.SetZoom(-1), kZoomText);
}

TEST(ImageProcessorPanTiltZoomDeathTest, CombinedSettersCheckPanThenTiltThenZoom) {
  ImageProcessor processor;
  EXPECT_DEATH(processor.SetPanTilt(200, 100), kPanText);
  EXPECT_DEATH(processor.SetPanTilt(0, 100), kTiltText);
  EXPECT_DEATH(processor.SetPanTiltZoom(-200, 100, 0), kPanText);
  EXPECT_DEATH(processor.SetPanTiltZoom(0, -100, 0), kTiltText);
  EXPECT_DEATH(processor.SetPanTiltZoom(0, 0, 0), kZoomText);
}

TEST(ImageProcessorPanTiltZoomDeathTest, TheFailureNamesTheProcessorsSource) {
  ImageProcessor processor;
  EXPECT_DEATH(processor.SetTilt(91), "ImageProcessor\\.cpp:[0-9]+: .*SetTilt.*: Assertion");
}

}  // namespace
