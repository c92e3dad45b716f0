// The sample scene, checked against the room's geometry worked out by hand.
#include "contact_sheet.h"
#include "font.h"
#include "scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace dewarp_tool {
namespace {

void ExpectColour(const double rgb[3], double r, double g, double b) {
  EXPECT_DOUBLE_EQ(r, rgb[0]);
  EXPECT_DOUBLE_EQ(g, rgb[1]);
  EXPECT_DOUBLE_EQ(b, rgb[2]);
}

Vec3 Towards(const Vec3& from, const Vec3& to) { return {to.x - from.x, to.y - from.y, to.z - from.z}; }

TEST(Scene, FloorTilesAlternateAcrossTheJoints) {
  const CameraPose pose = PoseForMount(CEILING_MOUNT);
  double rgb[3];
  SceneColour(pose.position, Towards(pose.position, {0.5, 0.0, 0.5}), rgb);  // tile (0, 0)
  ExpectColour(rgb, 228, 218, 196);
  SceneColour(pose.position, Towards(pose.position, {-0.5, 0.0, 0.5}), rgb);  // tile (-1, 0)
  ExpectColour(rgb, 176, 112, 78);
  SceneColour(pose.position, Towards(pose.position, {1.0, 0.0, 0.5}), rgb);  // on the joint x = 1
  ExpectColour(rgb, 55, 45, 40);
}

TEST(Scene, WallLabelsReadFromInsideTheRoom) {
  const CameraPose pose = PoseForMount(WALL_MOUNT);
  // "NORTH" is 29 font columns of 0.2 m centred on the north wall: its N begins at x = -2.9; the
  // top row of letters spans 2.0 to 2.2 m. The N's top-left corner is ink, its top middle not.
  double rgb[3];
  SceneColour(pose.position, Towards(pose.position, {-2.8, 2.1, -4.0}), rgb);
  ExpectColour(rgb, 250, 250, 245);
  SceneColour(pose.position, Towards(pose.position, {-2.4, 2.1, -4.0}), rgb);
  ExpectColour(rgb, 70, 110, 195);
  // The east wall is green, seen facing east with south on the right.
  SceneColour(pose.position, Towards(pose.position, {4.0, 0.5, -0.5}), rgb);  // below the label
  EXPECT_GT(rgb[1], rgb[0]);
  EXPECT_GT(rgb[1], rgb[2]);
}

TEST(Scene, EquidistantLensCoversHalfTheFieldAtTheRim) {
  const CameraPose pose = PoseForMount(WALL_MOUNT);
  Vec3 d;
  ASSERT_TRUE(FisheyeRay(968.0, 968.0, 1936, 183.0, pose, d));
  EXPECT_NEAR(-1.0, d.z, 1e-12);  // the centre looks along the axis (north)
  // Half the picture's width from the centre is half the field of view: 91.5 degrees.
  ASSERT_TRUE(FisheyeRay(1936.0, 968.0, 1936, 183.0, pose, d));
  EXPECT_NEAR(std::cos(91.5 * M_PI / 180.0), -d.z, 1e-12);
  EXPECT_GT(d.x, 0.0);  // the right of the picture is east
  EXPECT_FALSE(FisheyeRay(0.0, 0.0, 1936, 183.0, pose, d));  // corners lie outside the circle
  // Up in the picture is up in the room for an upright wall camera.
  ASSERT_TRUE(FisheyeRay(968.0, 100.0, 1936, 183.0, pose, d));
  EXPECT_GT(d.y, 0.0);
}

TEST(Scene, SampleIsBlackOutsideTheCircleAndFloorBelowACeilingCamera) {
  const RgbImage image = RenderSample(64, CEILING_MOUNT);
  ASSERT_EQ(64, image.width);
  EXPECT_EQ(0, image.At(0, 0)[0] + image.At(0, 0)[1] + image.At(0, 0)[2]);
  EXPECT_EQ(0, image.At(63, 63)[0] + image.At(63, 63)[1] + image.At(63, 63)[2]);
  // A pixel between the centre and the rim's middle, inside tile (0, 0): cream floor.
  const std::uint8_t* p = image.At(36, 36);
  EXPECT_NEAR(228, p[0], 12);
  EXPECT_NEAR(218, p[1], 12);
}

TEST(Font, GlyphsAndCaseFolding) {
  EXPECT_TRUE(GlyphInk('N', 0, 0));
  EXPECT_FALSE(GlyphInk('N', 2, 0));
  EXPECT_TRUE(GlyphInk('N', 4, 6));
  EXPECT_EQ(GlyphInk('n', 1, 2), GlyphInk('N', 1, 2));
  EXPECT_FALSE(GlyphInk('N', 5, 0));
  EXPECT_FALSE(GlyphInk('@', 0, 0));
  EXPECT_EQ(29, TextColumns("NORTH"));
}

TEST(ContactSheet, ShrinkingAveragesAndKeepsProportions) {
  RgbImage image(4, 2);
  for (int x = 0; x < 4; ++x) {
    for (int y = 0; y < 2; ++y) image.At(x, y)[0] = static_cast<std::uint8_t>(x < 2 ? 0 : 200);
  }
  const RgbImage small = FitInto(image, 2, 2);
  ASSERT_EQ(2, small.width);
  ASSERT_EQ(1, small.height);
  EXPECT_EQ(0, small.At(0, 0)[0]);
  EXPECT_EQ(200, small.At(1, 0)[0]);
}

}  // namespace
}  // namespace dewarp_tool
