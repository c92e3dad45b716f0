#include <gtest/gtest.h>

#include "DewarperRegistry.h"

namespace {

int Match(const char* make, const char* model, const char* url = "rtsp://10.0.0.1/stream") {
  DewarperRegistry registry;
  return registry.GetModeByCamera(make, model, url);
}

}  // namespace

TEST(CameraMatching, Vivotek) {
  EXPECT_EQ(Match("Vivotek", "FE8181"), 3);
  EXPECT_EQ(Match("Vivotek", "FE"), 3);
  EXPECT_EQ(Match("Vivotek", "fe8181"), 0);
  EXPECT_EQ(Match("VIVOTEK", "FE8181"), 0);
  EXPECT_EQ(Match("Vivotek ", "FE8181"), 0);  // the make must be equal, not a prefix
}

// The first rule whose make matches decides alone, even when a later rule would accept.
TEST(CameraMatching, VivotekWithAnotherModelStopsTheSearch) {
  EXPECT_EQ(Match("Vivotek", "IP8161"), 0);
  EXPECT_EQ(Match("Vivotek", "SNF-8010", "rtsp://x/h264"), 0);
}

TEST(CameraMatching, RtspStreamOfASentry360) {
  EXPECT_EQ(Match("RTSP", "", "rtsp://10.0.0.5/h264"), 2);
  EXPECT_EQ(Match("RTSP", "anything", "rtsp://10.0.0.5/image.mpg"), 2);
  EXPECT_EQ(Match("RTSP", "", "rtsp://10.0.0.5/h264/"), 0);
  EXPECT_EQ(Match("RTSP", "", "rtsp://10.0.0.5/H264"), 0);
  EXPECT_EQ(Match("RTSP", "FS-IP5000", "rtsp://10.0.0.5/live"), 0);  // the model is not consulted
  EXPECT_EQ(Match("RTSP", "", "/h264"), 2);
  EXPECT_EQ(Match("RTSP", "", "h264"), 0);
}

TEST(CameraMatching, Sentry360) {
  EXPECT_EQ(Match("Sentry360", "FS-IP5000"), 2);
  EXPECT_EQ(Match("Sentry360", "fs-ip5000"), 0);
  EXPECT_EQ(Match("Sentry360", "IS-IP5000", "rtsp://x/h264"), 0);  // the address is not consulted
}

TEST(CameraMatching, EvolutionIsAnOncam) {
  EXPECT_EQ(Match("EVOLUTION", "EVO-05"), 4);
  EXPECT_EQ(Match("EVOLUTION", "EV-05"), 0);
  EXPECT_EQ(Match("Evolution", "EVO-05"), 0);
}

TEST(CameraMatching, ActiModelsInTheirOrder) {
  for (const char* model : {"KCM3911", "KCM7911-X", "B54", "B55A", "B56", "E96"}) {
    EXPECT_EQ(Match("ACTi", model), 5) << model;
  }
  EXPECT_EQ(Match("ACTi", "B57"), 0);
  EXPECT_EQ(Match("ACTi", "KCM391"), 0);
  EXPECT_EQ(Match("ACTi", "XB54"), 0);
  EXPECT_EQ(Match("ACTI", "B54"), 0);
}

TEST(CameraMatching, InaxsysNeedsBothEndsOfTheModel) {
  EXPECT_EQ(Match("Inaxsys", "IN-D5MHEM"), 6);
  EXPECT_EQ(Match("Inaxsys", "IN-DMHEM"), 6);
  EXPECT_EQ(Match("Inaxsys", "IN-D5MHE"), 0);
  EXPECT_EQ(Match("Inaxsys", "IN-D5"), 0);
  EXPECT_EQ(Match("Inaxsys", "IN-5MHEM"), 0);
  EXPECT_EQ(Match("Inaxsys", "IN-D"), 0);
}

TEST(CameraMatching, SamsungMakeIsAPrefix) {
  EXPECT_EQ(Match("Samsung", "SNF-8010"), 7);
  EXPECT_EQ(Match("Samsung Techwin Co., Ltd.", "SNF-8010VM"), 7);
  EXPECT_EQ(Match("samsung techwin", "SNF-8010"), 0);
  EXPECT_EQ(Match("Samsung Techwin", "snf-8010"), 0);
  EXPECT_EQ(Match("Samsung Techwin", "SND-8010"), 0);
  EXPECT_EQ(Match("Samsun", "SNF-8010"), 0);
}

TEST(CameraMatching, KestrelMakeIsAPrefixAndTheModelEndsWithFisheye) {
  EXPECT_EQ(Match("Kestrel", "Mk2 Fisheye"), 8);
  EXPECT_EQ(Match("Kestrel Systems", "Fisheye"), 8);
  EXPECT_EQ(Match("Kestrel", "Fisheye Mk2"), 0);
  EXPECT_EQ(Match("Kestrel", "Mk2 fisheye"), 0);
  EXPECT_EQ(Match("kestrel", "Mk2 Fisheye"), 0);
}

TEST(CameraMatching, Geovision) {
  EXPECT_EQ(Match("Geovision", "GV-FE520"), 9);
  EXPECT_EQ(Match("Geovision", "GV-FER521"), 9);
  EXPECT_EQ(Match("Geovision", "GV-BX"), 0);
  EXPECT_EQ(Match("GeoVision", "GV-FE520"), 0);
}

TEST(CameraMatching, AxisMakeIsAPrefix) {
  EXPECT_EQ(Match("AXIS", "M3007-PV"), 10);
  EXPECT_EQ(Match("AXIS Communications", "M3027-PVE"), 10);
  EXPECT_EQ(Match("AXIS", "M3037"), 0);
  EXPECT_EQ(Match("Axis", "M3007"), 0);
}

TEST(CameraMatching, UnknownMakesAndImmerVisionGiveNothing) {
  EXPECT_EQ(Match("ImmerVision", "IMV1"), 0);
  EXPECT_EQ(Match("Sony", "FE8181"), 0);
  EXPECT_EQ(Match("", ""), 0);
  EXPECT_EQ(Match("", "", ""), 0);
}

TEST(CameraMatching, MissingTextsCountAsEmpty) {
  DewarperRegistry registry;
  EXPECT_EQ(registry.GetModeByCamera(nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(registry.GetModeByCamera("RTSP", nullptr, nullptr), 0);
  EXPECT_EQ(registry.GetModeByCamera("RTSP", nullptr, "x/h264"), 2);
  EXPECT_EQ(registry.GetModeByCamera("Kestrel", "Fisheye", nullptr), 8);
}
