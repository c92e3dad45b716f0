#include <libdewarp_vemo/resolution.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::Resolution;
using vemo::libdewarp::Vector2d;

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

void ExpectSize(const Vector2d& v, float x, float y) {
  EXPECT_EQ(v.X, x);
  EXPECT_EQ(v.Y, y);
}

TEST(Resolution, Constructors) {
  ExpectSize(Resolution(), 0.0f, 0.0f);
  ExpectSize(Resolution(640, 480), 640.0f, 480.0f);
  ExpectSize(Resolution(1920u, 1080u), 1920.0f, 1080.0f);
  ExpectSize(Resolution(Vector2d(99.99f, 0.5f)), 99.0f, 0.0f);
  ExpectSize(Resolution(Resolution(7, 9)), 7.0f, 9.0f);
  EXPECT_TRUE(std::isnan(Resolution::InvalidResolution.X));
  EXPECT_TRUE(std::isnan(Resolution::InvalidResolution.Y));
}

TEST(Resolution, FractionalSizesAreRoundedDown) {
  ExpectSize(Resolution(639.9f, 480.2f), 639.0f, 480.0f);
  ExpectSize(Resolution(-0.5f, 2.0f), -1.0f, 2.0f);
}

TEST(Resolution, ValidNeedsTwoFinitePositiveSides) {
  EXPECT_FALSE(Resolution(0, 480).Valid());
  EXPECT_FALSE(Resolution(640, 0).Valid());
  EXPECT_FALSE(Resolution(-640, 480).Valid());
  EXPECT_TRUE(Resolution(1, 1).Valid());
  EXPECT_FALSE(Resolution::InvalidResolution.Valid());
  EXPECT_FALSE(Resolution(kInf, 480.0f).Valid());
}

TEST(Resolution, ArithmeticDoesNotRound) {
  Resolution r(640, 480);
  ExpectSize(r / 3.0f, 640.0f / 3.0f, 160.0f);
  ExpectSize(r * 0.25f, 160.0f, 120.0f);
  ExpectSize(r + Vector2d(0.5f, 0.25f), 640.5f, 480.25f);
  ExpectSize(r - Resolution(40, 80), 600.0f, 400.0f);
  ExpectSize(-r, -640.0f, -480.0f);
  r += Vector2d(0.5f, 0.5f);
  ExpectSize(r, 640.5f, 480.5f);
  r -= Resolution(1, 1);
  ExpectSize(r, 639.5f, 479.5f);
  r *= 2.0f;
  ExpectSize(r, 1279.0f, 959.0f);
  r /= 2.0f;
  ExpectSize(r, 639.5f, 479.5f);
}

TEST(Resolution, ComparesLikeAVector) {
  EXPECT_TRUE(Resolution(640, 480) == Resolution(640, 480));
  EXPECT_TRUE(Resolution(640, 480) == Vector2d(640.0f, 480.0f));
  EXPECT_TRUE(Resolution(640, 480) != Vector2d(640.0f, 481.0f));
  EXPECT_TRUE(Resolution::InvalidResolution == Vector2d::InvalidVector);
}

TEST(Resolution, AspectRatioAndCentre) {
  EXPECT_EQ(Resolution(640, 480).AspectRatio(), 640.0f / 480.0f);
  EXPECT_EQ(Resolution(1920, 1080).AspectRatio(), 16.0f / 9.0f);
  ExpectSize(Resolution(641, 480).Centre(), 320.5f, 240.0f);
}

TEST(Resolution, CornersAndEdgeMidpoints) {
  const Resolution r(640, 480);
  ExpectSize(r.SouthWest(), 0.0f, 0.0f);
  ExpectSize(r.SouthEast(), 640.0f, 0.0f);
  ExpectSize(r.NorthWest(), 0.0f, 480.0f);
  ExpectSize(r.NorthEast(), 640.0f, 480.0f);
  ExpectSize(r.South(), 320.0f, 0.0f);
  ExpectSize(r.North(), 320.0f, 480.0f);
  ExpectSize(r.West(), 0.0f, 240.0f);
  ExpectSize(r.East(), 640.0f, 240.0f);
  ExpectSize(r.SouthWestOffset(), -320.0f, -240.0f);
  ExpectSize(r.SouthEastOffset(), 320.0f, -240.0f);
  ExpectSize(r.NorthWestOffset(), -320.0f, 240.0f);
  ExpectSize(r.NorthEastOffset(), 320.0f, 240.0f);
  ExpectSize(r.SouthOffset(), 0.0f, -240.0f);
  ExpectSize(r.NorthOffset(), 0.0f, 240.0f);
  ExpectSize(r.WestOffset(), -320.0f, 0.0f);
  ExpectSize(r.EastOffset(), 320.0f, 0.0f);
}

TEST(Resolution, NearestNeighbourRoundsAndClampsToTheSizeItself) {
  ExpectSize(Resolution(640, 480).NearestNeighbour(Vector2d(700.4f, -3.0f)), 640.0f, 0.0f);
  ExpectSize(Resolution(640, 480).NearestNeighbour(Vector2d(639.6f, 479.5f)), 640.0f, 480.0f);
  ExpectSize(Resolution(640, 480).NearestNeighbour(Vector2d(10.5f, 11.5f)), 10.0f, 12.0f);  // ties to even
  ExpectSize(Resolution(640, 480).NearestNeighbour(Vector2d(-0.4f, 3.4f)), 0.0f, 3.0f);
}

TEST(Resolution, BestFit) {
  ExpectSize(Resolution(640, 480).BestFit(1.0f), 480.0f, 480.0f);
  ExpectSize(Resolution(640, 480).BestFit(2.0f), 640.0f, 320.0f);
  // Not rounded to whole pixels.
  ExpectSize(Resolution(640, 480).BestFit(3.0f), 640.0f, 640.0f / 3.0f);
  // Equal aspect ratios keep the width.
  ExpectSize(Resolution(640, 480).BestFit(640.0f / 480.0f), 640.0f, 640.0f / (640.0f / 480.0f));
}

TEST(Resolution, BestScaleFollowsTheLimitingAxis) {
  // Wider than the other: heights decide.
  EXPECT_EQ(Resolution(1920, 1080).BestScale(Resolution(640, 480)), 1080.0f / 480.0f);
  // Narrower or equal: widths decide.
  EXPECT_EQ(Resolution(640, 480).BestScale(Resolution(1920, 1080)), 640.0f / 1920.0f);
  EXPECT_EQ(Resolution(800, 600).BestScale(Resolution(400, 300)), 2.0f);
  // Unordered aspect ratios take the heights.
  EXPECT_EQ(Resolution(0, 0).BestScale(Resolution(10, 5)), 0.0f / 5.0f);
  EXPECT_EQ(Resolution(640, 480).BestScale(Resolution(kNan, 240.0f)), 2.0f);
}

}  // namespace
