// The builder base: forwarding of the convenience forms, the shared helpers, self-assignment.
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/grid_map_builder.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/quadrant_map_builder.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder.h>
#include <libdewarp_vemo/sparse_map_builder_2.h>
#include <libdewarp_vemo/sparse_quadrant_map_builder.h>
#include <libdewarp_vemo/split_map_builder.h>

#include <gtest/gtest.h>

#include <memory>

#include "builders_test_support.h"
#include "log_capture.h"

namespace vemo {
namespace libdewarp {
namespace {

using test::AffineFunctor;

// Records the arguments that reach the one abstract operation.
class RecordingBuilder : public MapBuilder {
public:
  using MapBuilder::BuildImageMap;
  virtual ImageMap* BuildImageMap(const Resolution& in, const Resolution& out, MapFunctor& f,
                                  const Resolution& crop) {
    ++calls;
    lastIn = in;
    lastOut = out;
    lastCrop = crop;
    lastFunctor = &f;
    return new ImageMap(out);
  }
  int calls = 0;
  Resolution lastIn, lastOut, lastCrop;
  MapFunctor* lastFunctor = nullptr;
};

TEST(MapBuilder, EmptyFormReturnsANewEmptyMap) {
  LinearMapBuilder builder;
  std::unique_ptr<ImageMap> map(builder.BuildImageMap());
  ASSERT_TRUE(map);
  EXPECT_EQ(0u, map->GetMapWidth());
  EXPECT_EQ(0u, map->GetMapHeight());
  std::unique_ptr<ImageMap> other(builder.BuildImageMap());
  EXPECT_NE(map.get(), other.get());
}

TEST(MapBuilder, ResolutionFormUsesTheOutputAsCrop) {
  RecordingBuilder builder;
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> map(builder.BuildImageMap(Resolution(640, 480), Resolution(320, 200), f));
  EXPECT_EQ(1, builder.calls);
  EXPECT_EQ(Resolution(640, 480), builder.lastIn);
  EXPECT_EQ(Resolution(320, 200), builder.lastOut);
  EXPECT_EQ(Resolution(320, 200), builder.lastCrop);
  EXPECT_EQ(&f, builder.lastFunctor);
}

TEST(MapBuilder, VectorFormsConvertToResolutionsByFlooring) {
  RecordingBuilder builder;
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> a(builder.BuildImageMap(Vector2d(640.7f, 480.2f), Vector2d(320.9f, 200.5f), f));
  EXPECT_EQ(Resolution(640, 480), builder.lastIn);
  EXPECT_EQ(Resolution(320, 200), builder.lastOut);
  EXPECT_EQ(Resolution(320, 200), builder.lastCrop);
  std::unique_ptr<ImageMap> b(builder.BuildImageMap(Vector2d(64.5f, 48.5f), Vector2d(32.5f, 20.5f), f,
                                                    Vector2d(10.9f, 8.1f)));
  EXPECT_EQ(2, builder.calls);
  EXPECT_EQ(Resolution(64, 48), builder.lastIn);
  EXPECT_EQ(Resolution(32, 20), builder.lastOut);
  EXPECT_EQ(Resolution(10, 8), builder.lastCrop);
}

TEST(MapBuilder, QuadrantBuilderForwardsTheConvenienceFormsToItsOwnBuild) {
  // 4 x 4 without crop: the quadrant walk evaluates 2 x 2 points.
  QuadrantMapBuilder builder;
  AffineFunctor f(1, 0, 1, 0);
  std::unique_ptr<ImageMap> a(builder.BuildImageMap(Resolution(8, 8), Resolution(4, 4), f));
  EXPECT_EQ(4, f.calls);
  std::unique_ptr<ImageMap> b(builder.BuildImageMap(Vector2d(8, 8), Vector2d(4, 4), f));
  EXPECT_EQ(8, f.calls);
  std::unique_ptr<ImageMap> c(builder.BuildImageMap(Vector2d(8, 8), Vector2d(4, 4), f, Vector2d(2, 2)));
  EXPECT_EQ(9, f.calls);
  std::unique_ptr<ImageMap> d(builder.BuildImageMap());
  EXPECT_EQ(0u, d->GetMapWidth());
}

TEST(MapBuilder, AverageIsTheMeanOfTheGivenValues) {
  const Vector2d values[4] = {Vector2d(1, 2), Vector2d(3, 4), Vector2d(5, -6), Vector2d(7, 8)};
  EXPECT_EQ(Vector2d(4, 2), MapBuilder::Average(values, 4));
  EXPECT_EQ(Vector2d(2, 3), MapBuilder::Average(values, 2));
  EXPECT_EQ(Vector2d(1, 2), MapBuilder::Average(values, 1));
}

TEST(MapBuilder, BilinearUsesTheStandardWeights) {
  const Vector2d tl(0, 0), tr(8, 0), bl(0, 4), br(8, 4);
  EXPECT_EQ(tl, MapBuilder::Bilinear(tl, tr, bl, br, 0, 0));
  EXPECT_EQ(tr, MapBuilder::Bilinear(tl, tr, bl, br, 1, 0));
  EXPECT_EQ(bl, MapBuilder::Bilinear(tl, tr, bl, br, 0, 1));
  EXPECT_EQ(br, MapBuilder::Bilinear(tl, tr, bl, br, 1, 1));
  EXPECT_EQ(Vector2d(2, 3), MapBuilder::Bilinear(tl, tr, bl, br, 0.25f, 0.75f));
  // A non-planar set: (1-fx)(1-fy) a + fx(1-fy) b + (1-fx) fy c + fx fy d with a..d = 1, 2, 3, 10.
  const Vector2d v = MapBuilder::Bilinear(Vector2d(1, 0), Vector2d(2, 0), Vector2d(3, 0), Vector2d(10, 0), 0.5f, 0.5f);
  EXPECT_FLOAT_EQ(4.0f, v.X);
}

TEST(MapBuilder, BuildFrameEvaluatesOnlyTheOutermostRowsAndColumns) {
  ImageMap map(6, 5);
  map.SetInputSize(Vector2d(20, 10));
  AffineFunctor f(2, 1, 3, -1);
  // A 4 x 3 crop centred on the 6 x 5 output: x from -2 to 1, y from -1.5 to 0.5.
  Rectangle2d rect(Vector2d(4, 3));
  rect.OffsetToCentre();
  MapBuilder::BuildFrame(map, f, rect, Vector2d(10, 5), Vector2d(3, 2.5f));
  EXPECT_EQ(4 + 4 + 2, f.calls);
  for (unsigned y = 0; y < 5; ++y) {
    for (unsigned x = 0; x < 6; ++x) {
      // Columns trunc(-2 + k + 3) = 1..4, rows trunc(-1.5 + j + 2.5) = 1..3.
      const bool onFrame = (x >= 1 && x <= 4 && y >= 1 && y <= 3) && (x == 1 || x == 4 || y == 1 || y == 3);
      if (!onFrame) {
        EXPECT_TRUE(test::IsNan(map, x, y)) << x << "," << y;
        continue;
      }
      const Vector2d e = f.Expected(static_cast<float>(x) - 3.0f, static_cast<float>(y) - 2.5f) + Vector2d(10, 5);
      EXPECT_FLOAT_EQ(e.X, test::MapX(map, x, y));
      EXPECT_FLOAT_EQ(e.Y, test::MapY(map, x, y));
    }
  }
}

template <class B>
void ExpectSelfAssignmentWarning(const char* name) {
  test::LogCapture cap(LOG_WARNING);
  B builder;
  B& same = builder;
  builder = same;
  ASSERT_EQ(1u, cap.lines().size()) << name;
  EXPECT_NE(std::string::npos, cap.lines()[0].find(std::string("Self assignment of ") + name + " object\n"))
      << cap.lines()[0];
  B other;
  other = builder;  // a different object: no warning
  B copy(builder);
  (void)copy;
  EXPECT_EQ(1u, cap.lines().size());
}

TEST(MapBuilder, SelfAssignmentWarnsWithTheClassName) {
  ExpectSelfAssignmentWarning<LinearMapBuilder>("LinearMapBuilder");
  ExpectSelfAssignmentWarning<GridMapBuilder>("GridMapBuilder");
  ExpectSelfAssignmentWarning<SparseMapBuilder>("SparseMapBuilder");
  ExpectSelfAssignmentWarning<SparseMapBuilder2>("SparseMapBuilder2");
  ExpectSelfAssignmentWarning<SparseQuadrantMapBuilder>("SparseQuadrantMapBuilder");
  ExpectSelfAssignmentWarning<QuadrantMapBuilder>("QuadrantMapBuilder");
  ExpectSelfAssignmentWarning<SplitMapBuilder>("SplitMapBuilder");
  ExpectSelfAssignmentWarning<CombinedMapBuilder>("CombinedMapBuilder");
  ExpectSelfAssignmentWarning<ProjectionMapBuilder>("ProjectionMapBuilder");
  ExpectSelfAssignmentWarning<ScaleMapBuilder>("ScaleMapBuilder");
}

TEST(MapBuilder, ClassTreeMatchesTheBuilderFamily) {
  EXPECT_TRUE((std::is_base_of<LinearMapBuilder, SplitMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<LinearMapBuilder, CombinedMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<QuadrantMapBuilder, ScaleMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<SparseQuadrantMapBuilder, ProjectionMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<MapBuilder, GridMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<MapBuilder, SparseMapBuilder>::value));
  EXPECT_TRUE((std::is_base_of<MapBuilder, SparseMapBuilder2>::value));
  EXPECT_TRUE((std::is_abstract<MapBuilder>::value));
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
