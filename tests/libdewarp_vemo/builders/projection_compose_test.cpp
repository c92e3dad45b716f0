// The shift/scale projection build composes its shift/scale map one row at a time without storing
// it. Its result must equal, bit for bit, the composition of the stored maps: the projection map P,
// the dense shift/scale map S of the output size, and the combined build of S over P.
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/linear_map_builder.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/map_builder.h>
#include <libdewarp_vemo/projection_map_builder.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/shift_scale_functor.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>

namespace vemo {
namespace libdewarp {
namespace {

struct ComposeCase {
  bool bProjectionFirst;  // projection then camera, or camera then projection
  DEWARP_PROJECTION eProjection;
  int nOutWidth, nOutHeight;
  Vector2d obShift, obScale;
};

std::ostream& operator<<(std::ostream& os, const ComposeCase& c) {
  return os << (c.bProjectionFirst ? "projection-camera" : "camera-projection") << " projection " << c.eProjection
            << " out " << c.nOutWidth << "x" << c.nOutHeight << " shift (" << c.obShift.X << ", " << c.obShift.Y
            << ") scale (" << c.obScale.X << ", " << c.obScale.Y << ")";
}

const Resolution kInput(1000, 800);
const float kFocal = 300.0f;

ImageMap* Regular(const ComposeCase& c, const Resolution& out) {
  ProjectionMapBuilder b;
  return c.bProjectionFirst ? b.BuildImageMap(kInput, out, c.eProjection, CIRCULAR_FISHEYE_CAMERA, kFocal)
                            : b.BuildImageMap(kInput, out, CIRCULAR_FISHEYE_CAMERA, c.eProjection, kFocal);
}

// The composition of the stored maps, built step by step from the public builders.
ImageMap* Reference(const ComposeCase& c) {
  const Resolution out(c.nOutWidth, c.nOutHeight);
  std::unique_ptr<ImageMap> p(Regular(c, out));
  ShiftScaleFunctor f(c.obShift, c.obScale);
  std::unique_ptr<ImageMap> s(LinearMapBuilder().BuildImageMap(out, out, f));
  return CombinedMapBuilder().BuildImageMap(*s, *p);
}

ImageMap* Fused(const ComposeCase& c) {
  const Resolution out(c.nOutWidth, c.nOutHeight);
  ProjectionMapBuilder b;
  return c.bProjectionFirst
             ? b.BuildImageMap(kInput, out, c.eProjection, CIRCULAR_FISHEYE_CAMERA, kFocal, c.obShift, c.obScale)
             : b.BuildImageMap(kInput, out, CIRCULAR_FISHEYE_CAMERA, c.eProjection, kFocal, c.obShift, c.obScale);
}

// The same composition worked out pixel by pixel from its definition, sharing no code with the
// builders' row loops: the shift/scale point of output pixel (x, y) is ((x - w/2 + shift) * scale
// + w/2, likewise for y), the dense build's centred point plus the output centre; the four whole
// neighbours of that point must lie inside P, and P's values there are blended with the standard
// bilinear weights of the point's fractions. Elements without a source are NaN.
ImageMap* ByDefinition(const ComposeCase& c) {
  const Resolution out(c.nOutWidth, c.nOutHeight);
  std::unique_ptr<ImageMap> p(Regular(c, out));
  std::unique_ptr<ImageMap> result(new ImageMap(out));
  result->SetInputSize(p->GetInputSize());
  const float fWidth = static_cast<float>(p->GetMapWidth()), fHeight = static_cast<float>(p->GetMapHeight());
  auto inside = [](float v, float fLimit) { return v >= 0.0f && v < fLimit; };
  for (int y = 0; y < c.nOutHeight; ++y) {
    for (int x = 0; x < c.nOutWidth; ++x) {
      const float fCentredX = -0.5f * out.X + static_cast<float>(x);
      const float fCentredY = -0.5f * out.Y + static_cast<float>(y);
      const float fX = (fCentredX + c.obShift.X) * c.obScale.X + out.X / 2.0f;
      const float fY = (fCentredY + c.obShift.Y) * c.obScale.Y + out.Y / 2.0f;
      const float fLeft = std::floor(fX), fRight = std::ceil(fX), fTop = std::floor(fY), fBottom = std::ceil(fY);
      if (!inside(fLeft, fWidth) || !inside(fRight, fWidth) || !inside(fTop, fHeight) || !inside(fBottom, fHeight)) {
        continue;
      }
      const unsigned l = static_cast<unsigned>(fLeft), r = static_cast<unsigned>(fRight);
      const unsigned t = static_cast<unsigned>(fTop), b = static_cast<unsigned>(fBottom);
      result->SetMapItem(x, y, MapBuilder::Bilinear(p->GetMapItem(l, t), p->GetMapItem(r, t), p->GetMapItem(l, b),
                                                    p->GetMapItem(r, b), fX - fLeft, fY - fTop));
    }
  }
  return result.release();
}

// Whether two tables hold the same values bit for bit, any NaN counting as equal to any other
// (a fresh table's NaN and the one an unwritten element holds differ in their bits).
bool SameValues(const Map& a, const Map& b, std::size_t nCount) {
  const float* pa = a.GetTypePtr<float>();
  const float* pb = b.GetTypePtr<float>();
  for (std::size_t i = 0; i < nCount; ++i) {
    const bool bSame = (std::isnan(pa[i]) && std::isnan(pb[i])) || std::memcmp(pa + i, pb + i, sizeof(float)) == 0;
    if (!bSame) {
      return false;
    }
  }
  return true;
}

bool SameTable(const Map& a, const Map& b, std::size_t nCount) {
  const float* pa = a.GetTypePtr<float>();
  const float* pb = b.GetTypePtr<float>();
  if (nCount == 0) {
    return true;
  }
  return pa != nullptr && pb != nullptr && std::memcmp(pa, pb, nCount * sizeof(float)) == 0;
}

// Elements with a source (not NaN): a comparison of two maps without any would prove little.
std::size_t Sourced(const ImageMap& m) {
  const float* px = m.GetMapX().GetTypePtr<float>();
  const std::size_t n = static_cast<std::size_t>(m.GetMapWidth()) * m.GetMapHeight();
  std::size_t nSourced = 0;
  for (std::size_t i = 0; px != nullptr && i < n; ++i) {
    nSourced += std::isnan(px[i]) ? 0 : 1;
  }
  return nSourced;
}

class ProjectionCompose : public ::testing::TestWithParam<ComposeCase> {};

TEST_P(ProjectionCompose, RowByRowBuildEqualsTheStoredComposition) {
  const ComposeCase& c = GetParam();
  std::unique_ptr<ImageMap> expected(Reference(c));
  std::unique_ptr<ImageMap> actual(Fused(c));
  ASSERT_EQ(expected->GetMapWidth(), actual->GetMapWidth()) << c;
  ASSERT_EQ(expected->GetMapHeight(), actual->GetMapHeight()) << c;
  ASSERT_EQ(static_cast<unsigned>(c.nOutWidth), actual->GetMapWidth()) << c;
  ASSERT_EQ(static_cast<unsigned>(c.nOutHeight), actual->GetMapHeight()) << c;
  EXPECT_EQ(expected->GetMapSize(), actual->GetMapSize()) << c;
  EXPECT_EQ(expected->GetInputSize(), actual->GetInputSize()) << c;
  EXPECT_EQ(Vector2d(1000, 800), actual->GetInputSize()) << c;
  const std::size_t n = static_cast<std::size_t>(actual->GetMapWidth()) * actual->GetMapHeight();
  EXPECT_TRUE(SameTable(expected->GetMapX(), actual->GetMapX(), n)) << c;
  EXPECT_TRUE(SameTable(expected->GetMapY(), actual->GetMapY(), n)) << c;
  EXPECT_GT(Sourced(*actual), 0u) << c;
}

TEST_P(ProjectionCompose, RowByRowBuildEqualsTheCompositionWorkedOutPixelByPixel) {
  const ComposeCase& c = GetParam();
  std::unique_ptr<ImageMap> expected(ByDefinition(c));
  std::unique_ptr<ImageMap> actual(Fused(c));
  ASSERT_EQ(expected->GetMapWidth(), actual->GetMapWidth()) << c;
  ASSERT_EQ(expected->GetMapHeight(), actual->GetMapHeight()) << c;
  const std::size_t n = static_cast<std::size_t>(actual->GetMapWidth()) * actual->GetMapHeight();
  ASSERT_GT(n, 0u);
  EXPECT_TRUE(SameValues(expected->GetMapX(), actual->GetMapX(), n)) << c;
  EXPECT_TRUE(SameValues(expected->GetMapY(), actual->GetMapY(), n)) << c;
  EXPECT_EQ(Sourced(*expected), Sourced(*actual)) << c;
}

const Vector2d kNoShift(0.0f, 0.0f);

INSTANTIATE_TEST_SUITE_P(
    ShiftsScalesAndSizes, ProjectionCompose,
    ::testing::Values(
        // Zero shift with a non-unit scale, both argument orders.
        ComposeCase{true, EQUIRECTANGULAR_PROJECTION, 64, 48, kNoShift, Vector2d(0.5f, 0.5f)},
        ComposeCase{false, EQUIRECTANGULAR_PROJECTION, 64, 48, kNoShift, Vector2d(0.5f, 0.5f)},
        ComposeCase{true, RECTILINEAR_PROJECTION, 64, 48, kNoShift, Vector2d(1.0f, 0.75f)},
        // Negative shifts, scales below and above one, odd widths and heights.
        ComposeCase{true, RECTILINEAR_PROJECTION, 63, 47, Vector2d(-5.25f, 3.5f), Vector2d(0.8f, 0.6f)},
        ComposeCase{false, RECTILINEAR_PROJECTION, 63, 47, Vector2d(-5.25f, 3.5f), Vector2d(0.8f, 0.6f)},
        ComposeCase{true, CYLINDRICAL_PROJECTION, 65, 33, Vector2d(-12.0f, -7.5f), Vector2d(1.3f, 1.7f)},
        ComposeCase{false, CYLINDRICAL_PROJECTION, 65, 33, Vector2d(-12.0f, -7.5f), Vector2d(1.3f, 1.7f)},
        ComposeCase{true, PANNINI_PROJECTION, 81, 61, Vector2d(9.75f, -3.0f), Vector2d(0.37f, 1.25f)},
        ComposeCase{false, MERCATOR_PROJECTION, 80, 60, Vector2d(0.0f, 10.0f), Vector2d(1.0f, 1.0f)},
        ComposeCase{true, MERCATOR_PROJECTION, 80, 60, Vector2d(2.5f, 0.0f), Vector2d(2.0f, 0.9f)},
        // Shift only.
        ComposeCase{true, EQUIRECTANGULAR_PROJECTION, 50, 40, Vector2d(-3.0f, 4.0f), Vector2d(1.0f, 1.0f)},
        // A one-pixel row and a one-pixel column (a row has sources only where its y is whole).
        ComposeCase{true, EQUIRECTANGULAR_PROJECTION, 37, 1, Vector2d(-1.5f, 0.0f), Vector2d(0.7f, 1.0f)},
        ComposeCase{false, CYLINDRICAL_PROJECTION, 37, 1, Vector2d(2.0f, 0.0f), Vector2d(0.6f, 1.0f)},
        ComposeCase{true, RECTILINEAR_PROJECTION, 1, 9, kNoShift, Vector2d(1.0f, 0.55f)},
        // The single panoramic view's shape, smaller.
        ComposeCase{true, EQUIRECTANGULAR_PROJECTION, 381, 121, Vector2d(0.0f, -20.0f), Vector2d(0.95f, 0.8f)},
        // The lower half of the projection stretched to the whole height, as the panoramic views
        // of a ceiling camera show it: only the rows of that half are read.
        ComposeCase{true, CYLINDRICAL_PROJECTION, 380, 122, Vector2d(0.0f, 61.0f), Vector2d(1.0f, 0.5f)},
        ComposeCase{false, CYLINDRICAL_PROJECTION, 380, 122, Vector2d(0.0f, 61.0f), Vector2d(1.0f, 0.5f)},
        // A thin band of rows in the middle, and one whose rows run past the bottom.
        ComposeCase{true, MERCATOR_PROJECTION, 121, 90, Vector2d(3.0f, 0.0f), Vector2d(1.0f, 0.05f)},
        ComposeCase{true, EQUIRECTANGULAR_PROJECTION, 121, 90, Vector2d(0.0f, 30.0f), Vector2d(1.0f, 1.5f)}));

// A shift that takes every row of S outside the projection map: nothing is read and nothing has a
// source, as in the stored composition.
TEST(ProjectionComposeOutside, ShiftPastTheMapGivesNoSourceAnywhere) {
  for (float fShift : {500.0f, -500.0f}) {
    const ComposeCase c{true, CYLINDRICAL_PROJECTION, 64, 48, Vector2d(0.0f, fShift), Vector2d(1.0f, 1.0f)};
    std::unique_ptr<ImageMap> expected(Reference(c));
    std::unique_ptr<ImageMap> actual(Fused(c));
    ASSERT_EQ(expected->GetMapWidth(), actual->GetMapWidth());
    ASSERT_EQ(expected->GetMapHeight(), actual->GetMapHeight());
    EXPECT_EQ(0u, Sourced(*expected)) << c;
    EXPECT_EQ(0u, Sourced(*actual)) << c;
  }
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
