#include <libdewarp_vemo/rectangle_2d.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using vemo::libdewarp::Rectangle2d;
using vemo::libdewarp::Vector2d;

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();

void ExpectEdges(const Rectangle2d& r, float left, float top, float right, float bottom) {
  EXPECT_EQ(r.Left, left);
  EXPECT_EQ(r.Top, top);
  EXPECT_EQ(r.Right, right);
  EXPECT_EQ(r.Bottom, bottom);
}

TEST(Rectangle2d, Constructors) {
  ExpectEdges(Rectangle2d(), 0, 0, 0, 0);
  ExpectEdges(Rectangle2d(1, 9, 5, 2), 1, 9, 5, 2);
  const float edges[4] = {1, 9, 5, 2};
  ExpectEdges(Rectangle2d(edges), 1, 9, 5, 2);
  ExpectEdges(Rectangle2d(Vector2d(1, 9), Vector2d(5, 2)), 1, 9, 5, 2);
  const Vector2d corners[2] = {Vector2d(1, 9), Vector2d(5, 2)};
  ExpectEdges(Rectangle2d(corners), 1, 9, 5, 2);
  ExpectEdges(Rectangle2d(Vector2d(640, 480)), 0, 480, 640, 0);
  const Rectangle2d r(1, 9, 5, 2);
  ExpectEdges(Rectangle2d(r), 1, 9, 5, 2);
}

TEST(Rectangle2d, ConstructorsNormalise) {
  ExpectEdges(Rectangle2d(10, 0, 0, 10), 0, 10, 10, 0);
  const float edges[4] = {5, 2, 1, 9};
  ExpectEdges(Rectangle2d(edges), 1, 9, 5, 2);
  ExpectEdges(Rectangle2d(Vector2d(5, 2), Vector2d(1, 9)), 1, 9, 5, 2);
  ExpectEdges(Rectangle2d(Vector2d(-640, -480)), -640, 0, 0, -480);
}

TEST(Rectangle2d, AreaAndAspectRatioUseBottomMinusTop) {
  const Rectangle2d r(0, 10, 20, 0);
  EXPECT_EQ(r.Area(), -200.0f);
  EXPECT_EQ(r.AspectRatio(), -2.0f);
  EXPECT_EQ(r.Width(), 20.0f);
  EXPECT_EQ(r.Height(), 10.0f);
}

TEST(Rectangle2d, GetSizeGivesHeightThenWidth) {
  const Vector2d size = Rectangle2d(0, 10, 20, 0).GetSize();
  EXPECT_EQ(size.X, 10.0f);
  EXPECT_EQ(size.Y, 20.0f);
}

TEST(Rectangle2d, OnlyPointsOnTheLeftEdgeAreInside) {
  const Rectangle2d r(0, 10, 20, 0);
  EXPECT_FALSE(r.PtInRect(Vector2d(5, 5)));
  EXPECT_TRUE(r.PtInRect(Vector2d(0, 5)));
  EXPECT_TRUE(r.PtInRect(Vector2d(0, 0)));
  EXPECT_TRUE(r.PtInRect(Vector2d(0, 10)));
  EXPECT_FALSE(r.PtInRect(Vector2d(0, 10.5f)));
  EXPECT_FALSE(r.PtInRect(Vector2d(20, 5)));
  EXPECT_FALSE(r.PtInRect(Vector2d(kNan, 5)));
}

TEST(Rectangle2d, CornersAndCentre) {
  const Rectangle2d r(1, 9, 5, 2);
  EXPECT_EQ(r.TopLeft(), Vector2d(1, 9));
  EXPECT_EQ(r.TopRight(), Vector2d(5, 9));
  EXPECT_EQ(r.BottomLeft(), Vector2d(1, 2));
  EXPECT_EQ(r.BottomRight(), Vector2d(5, 2));
  EXPECT_EQ(r.Centre(), Vector2d(3, 5.5f));
}

TEST(Rectangle2d, OffsetMovesAllEdges) {
  Rectangle2d r(1, 9, 5, 2);
  r.Offset(1, -2);
  ExpectEdges(r, 2, 7, 6, 0);
  r.Offset(Vector2d(-2, 1));
  ExpectEdges(r, 0, 8, 4, 1);
  r += Vector2d(1, 1);
  ExpectEdges(r, 1, 9, 5, 2);
  r -= Vector2d(1, 2);
  ExpectEdges(r, 0, 7, 4, 0);
}

TEST(Rectangle2d, ScaleAndInvScale) {
  Rectangle2d r(1, 9, 5, 2);
  r.Scale(2);
  ExpectEdges(r, 2, 18, 10, 4);
  r.InvScale(4);
  ExpectEdges(r, 0.5f, 4.5f, 2.5f, 1);
}

TEST(Rectangle2d, InvScaleByZeroOrAnyNonNormalNumberLeavesTheRectangleUnchanged) {
  Rectangle2d r(1, 9, 5, 2);
  r.InvScale(0);
  ExpectEdges(r, 1, 9, 5, 2);
  r.InvScale(std::numeric_limits<float>::denorm_min());
  r.InvScale(std::numeric_limits<float>::infinity());
  r.InvScale(kNan);
  ExpectEdges(r, 1, 9, 5, 2);
}

TEST(Rectangle2d, OffsetToCentre) {
  Rectangle2d r(Vector2d(640, 480));
  r.OffsetToCentre();
  ExpectEdges(r, -320, 240, 320, -240);
  // With non-zero left and bottom the halved right and top are subtracted from them.
  Rectangle2d s(2, 10, 8, 4);
  s.OffsetToCentre();
  ExpectEdges(s, 2 - 4, 5, 4, 4 - 5);
}

TEST(Rectangle2d, DeflateAndInflate) {
  Rectangle2d r(0, 10, 20, 0);
  r.Deflate(1, 2, 3, 4);
  ExpectEdges(r, 1, 8, 17, 4);
  r.Inflate(1, 2, 3, 4);
  ExpectEdges(r, 0, 10, 20, 0);
  r.Deflate(2, 1);
  ExpectEdges(r, 2, 9, 18, 1);
  r.Inflate(Vector2d(2, 1));
  ExpectEdges(r, 0, 10, 20, 0);
  r.Deflate(Vector2d(1, 1));
  ExpectEdges(r, 1, 9, 19, 1);
  r.Inflate(1, 1);
  r.Deflate(Rectangle2d(1, 4, 3, 2));  // edges normalised to (1, 4, 3, 2)
  ExpectEdges(r, 1, 6, 17, 2);
  r.Inflate(Rectangle2d(1, 4, 3, 2));
  ExpectEdges(r, 0, 10, 20, 0);
}

TEST(Rectangle2d, NullAndEmpty) {
  Rectangle2d r(1, 9, 5, 2);
  EXPECT_FALSE(r.IsNull());
  EXPECT_FALSE(r.IsEmpty());
  r.SetNull();
  EXPECT_TRUE(r.IsNull());
  EXPECT_TRUE(r.IsEmpty());
  EXPECT_TRUE(Rectangle2d(1, 5, 1, 2).IsEmpty());
  EXPECT_TRUE(Rectangle2d(1, 5, 4, 5).IsEmpty());
  EXPECT_FALSE(Rectangle2d(1, 5, 1, 2).IsNull());
}

TEST(Rectangle2d, NormaliseSwapsInvertedEdges) {
  Rectangle2d r;
  r.Left = 5;
  r.Top = 1;
  r.Right = 2;
  r.Bottom = 7;
  r.Normalise();
  ExpectEdges(r, 2, 7, 5, 1);
}

TEST(Rectangle2d, Union) {
  Rectangle2d r;
  r.Union(Rectangle2d(0, 10, 10, 0), Rectangle2d(5, 20, 30, 2));
  ExpectEdges(r, 0, 20, 30, 0);
  Rectangle2d s(0, 10, 10, 0);
  s.Union(Rectangle2d(-5, 3, 2, -1));
  ExpectEdges(s, -5, 10, 10, -1);
}

TEST(Rectangle2d, UnionTakesTheSecondValueOnNan) {
  Rectangle2d a(0, 10, 10, 0);
  a.Left = kNan;
  Rectangle2d r;
  r.Union(a, Rectangle2d(3, 4, 5, 1));
  ExpectEdges(r, 3, 10, 10, 0);
  r.Union(Rectangle2d(3, 4, 5, 1), a);
  EXPECT_TRUE(std::isnan(r.Left));
}

TEST(Rectangle2d, Intersection) {
  Rectangle2d r;
  r.Intersection(Rectangle2d(0, 10, 10, 0), Rectangle2d(5, 20, 30, 2));
  ExpectEdges(r, 5, 10, 10, 2);
  Rectangle2d s(0, 10, 10, 0);
  s.Intersection(Rectangle2d(-5, 3, 2, -1));
  ExpectEdges(s, 0, 3, 2, 0);
}

TEST(Rectangle2d, DisjointRectanglesIntersectInADegenerateRectangle) {
  Rectangle2d r;
  r.Intersection(Rectangle2d(0, 10, 10, 0), Rectangle2d(20, 30, 30, 20));
  EXPECT_EQ(r.Left, 10.0f);
  EXPECT_EQ(r.Right, 10.0f);
  EXPECT_EQ(r.Bottom, 10.0f);
  EXPECT_EQ(r.Top, 10.0f);
  EXPECT_TRUE(r.IsEmpty());
}

}  // namespace
