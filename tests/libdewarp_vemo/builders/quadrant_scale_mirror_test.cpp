// The quadrant builder fills a scale functor's map from one evaluation per column and per row
// (its x depends on the point's x alone, its y on its y alone): the map must be bit for bit the
// one the plain mirroring loop writes, kept here as the reference, and the one the builder's own
// loop writes for any other functor.
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/quadrant_map_builder.h>
#include <libdewarp_vemo/rectangle_2d.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/scale_functor.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace vemo {
namespace libdewarp {
namespace {

// The plain loop: one quadrant of steps (x, y) evaluated, each result written to the four
// mirrored elements in order, (sx, sy), (sx, -sy), (-sx, -sy), (-sx, sy), each plus the input
// centre; the steps along an axis stop before a mirrored index would leave the map.
std::unique_ptr<ImageMap> Reference(const Resolution& in, const Resolution& out, MapFunctor& f, const Resolution& crop) {
  std::unique_ptr<ImageMap> map(new ImageMap(out));
  map->SetInputSize(in);
  const int width = static_cast<int>(map->GetMapWidth()), height = static_cast<int>(map->GetMapHeight());
  float* const mx = map->GetMapX().GetTypePtr<float>();
  float* const my = map->GetMapY().GetTypePtr<float>();
  Rectangle2d rect(static_cast<const Vector2d&>(crop));
  rect.Intersection(Rectangle2d(static_cast<const Vector2d&>(out)));
  rect.OffsetToCentre();
  if (!(rect.Top > 0.0f) || !(rect.Right > 0.0f)) return map;
  const Vector2d cIn = in.Centre(), cOut = out.Centre();
  auto inside = [](float centre, float step, int size) {
    return centre - step > -1.0f && centre + step < static_cast<float>(size);
  };
  for (int y = 0; static_cast<float>(y) < rect.Top && inside(cOut.Y, static_cast<float>(y), height); ++y) {
    for (int x = 0; static_cast<float>(x) < rect.Right && inside(cOut.X, static_cast<float>(x), width); ++x) {
      const float fx = static_cast<float>(x), fy = static_cast<float>(y);
      const Vector2d s = f(Vector2d(fx, fy));
      const int lower = static_cast<int>(fy + cOut.Y), upper = static_cast<int>(-fy + cOut.Y);
      const int right = static_cast<int>(fx + cOut.X), left = static_cast<int>(-fx + cOut.X);
      auto put = [&](int row, int col, float vx, float vy) {
        mx[row * width + col] = vx;
        my[row * width + col] = vy;
      };
      put(lower, right, s.X + cIn.X, s.Y + cIn.Y);
      put(upper, right, s.X + cIn.X, -s.Y + cIn.Y);
      put(upper, left, -s.X + cIn.X, -s.Y + cIn.Y);
      put(lower, left, -s.X + cIn.X, s.Y + cIn.Y);
    }
  }
  return map;
}

// A scale functor of another type: the builder runs its plain loop for it.
class OtherScale : public ScaleFunctor {
public:
  OtherScale(float x, float y) : ScaleFunctor(x, y) {}
};

void ExpectSameBits(const ImageMap& a, const ImageMap& b, const char* what) {
  ASSERT_EQ(a.GetMapWidth(), b.GetMapWidth());
  ASSERT_EQ(a.GetMapHeight(), b.GetMapHeight());
  EXPECT_EQ(a.GetInputSize(), b.GetInputSize());
  const std::size_t n = static_cast<std::size_t>(a.GetMapWidth()) * a.GetMapHeight();
  for (const bool xMap : {true, false}) {
    const float* pa = (xMap ? a.GetMapX() : a.GetMapY()).GetTypePtr<float>();
    const float* pb = (xMap ? b.GetMapX() : b.GetMapY()).GetTypePtr<float>();
    for (std::size_t k = 0; k < n; ++k) {
      if (std::memcmp(pa + k, pb + k, sizeof(float)) != 0) {
        ADD_FAILURE() << what << ": " << (xMap ? "x" : "y") << " element " << k % a.GetMapWidth() << ", "
                      << k / a.GetMapWidth() << ": " << pa[k] << " vs " << pb[k];
        return;
      }
    }
  }
}

TEST(QuadrantScaleMirror, ScaleFunctorMapsMatchThePlainLoopBitForBit) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const Resolution outs[] = {Resolution(4, 4),   Resolution(5, 5),    Resolution(1, 1),     Resolution(2, 3),
                             Resolution(97, 33), Resolution(33, 96),  Resolution(10.5f, 7.25f), Resolution(385, 217)};
  const Resolution ins[] = {Resolution(3808, 1212), Resolution(20, 30), Resolution(0, 0), Resolution(7, 1)};
  const float factors[][2] = {{1.983f, 1.983f}, {0.5f, 2.25f}, {-1.5f, 0.75f}, {0.0f, -0.0f}, {inf, -inf}, {nan, 1.0f}, {1.0f, nan}};
  int cases = 0;
  for (const Resolution& out : outs) {
    const Resolution crops[] = {out, Resolution(out.X * 0.5f, out.Y), Resolution(out.X, out.Y * 0.75f),
                                Resolution(out.X + 6, out.Y + 3), Resolution(3, 2), Resolution(0.0f, out.Y)};
    for (const Resolution& crop : crops) {
      for (const Resolution& in : ins) {
        for (const auto& factor : factors) {
          ScaleFunctor scale(factor[0], factor[1]);
          OtherScale other(factor[0], factor[1]);
          ScaleFunctor plain(factor[0], factor[1]);
          std::unique_ptr<ImageMap> fast(QuadrantMapBuilder().BuildImageMap(in, out, scale, crop));
          std::unique_ptr<ImageMap> loop(QuadrantMapBuilder().BuildImageMap(in, out, other, crop));
          std::unique_ptr<ImageMap> reference(Reference(in, out, plain, crop));
          ExpectSameBits(*reference, *fast, "scale functor");
          ExpectSameBits(*reference, *loop, "plain loop");
          ++cases;
        }
      }
    }
  }
  EXPECT_EQ(cases, 8 * 6 * 4 * 7);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
