// The combined build row by row, against the bilinear rule worked out element by element: random
// positions (NaN, infinite, negative, beyond the intermediate image, on whole numbers, at the last
// column and row) over second maps of several sizes, for every row length from 1 to 37 and a long
// row, compared bit for bit.
#include <libdewarp_vemo/combined_map_builder.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/map.h>
#include <libdewarp_vemo/map_builder.h>

#include "../../../libdewarp_vemo/src/map_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace vemo {
namespace libdewarp {
namespace {

float FromBits(std::uint32_t uBits) {
  float f;
  std::memcpy(&f, &uBits, sizeof(f));
  return f;
}

// The NaN that invalid operations (0 * inf, inf - inf) produce on x86: a second map whose NaNs all
// carry it gives the same NaN whichever operand a sum of two NaNs passes on.
const std::uint32_t kDefaultNan = 0xFFC00000u;

// Uniform in [0, 1), from the generator's bits alone (the same on every platform).
float Unit(std::mt19937& g) {
  return static_cast<float>(g() >> 8) * (1.0f / 16777216.0f);
}

int Below(std::mt19937& g, int n) {
  return static_cast<int>(g() % static_cast<std::uint32_t>(n));
}

// The second map: an intermediate image of nWidth x nHeight (its x table) whose y table is
// nYWidth x nYHeight. Both tables are read with the smaller extent, so a y table smaller than the
// x table leaves fewer stored elements than the intermediate image has.
struct SecondCase {
  int nWidth, nHeight;
  int nYWidth, nYHeight;
};

// A value of the second map: mostly ordinary coordinates, some signed zeros, tiny and huge
// values, infinities and NaN (the default NaN, or any NaN, quiet or signalling, when bAnyNan).
float SecondValue(std::mt19937& g, bool bAnyNan) {
  switch (Below(g, 24)) {
    case 0:
      return bAnyNan ? FromBits(0x7F800001u + (g() & 0x807FFFFEu)) : FromBits(kDefaultNan);
    case 1:
      return std::numeric_limits<float>::infinity();
    case 2:
      return -std::numeric_limits<float>::infinity();
    case 3:
      return -0.0f;
    case 4:
      return 0.0f;
    case 5:
      return std::numeric_limits<float>::denorm_min() * static_cast<float>(Below(g, 1000) + 1);
    case 6:
      return 3.0e38f * (Unit(g) - 0.5f);
    default:
      return 4000.0f * Unit(g) - 1000.0f;
  }
}

std::unique_ptr<ImageMap> MakeSecond(const SecondCase& c, std::mt19937& g, bool bAnyNan) {
  std::unique_ptr<ImageMap> second(new ImageMap(c.nWidth, c.nHeight));
  second->GetMapY().Reset(Map::FLOAT, static_cast<unsigned>(c.nYWidth), static_cast<unsigned>(c.nYHeight));
  float* pfX = second->GetMapX().GetTypePtr<float>();
  float* pfY = second->GetMapY().GetTypePtr<float>();
  for (int i = 0; i < c.nWidth * c.nHeight; ++i) {
    pfX[i] = SecondValue(g, bAnyNan);
  }
  for (int i = 0; i < c.nYWidth * c.nYHeight; ++i) {
    pfY[i] = SecondValue(g, bAnyNan);
  }
  return second;
}

// A position along an axis of fLimit whole pixels, drawn by kind.
float Position(std::mt19937& g, int nKind, int nLimit) {
  const float fLimit = static_cast<float>(nLimit);
  switch (nKind) {
    case 0:  // inside, fractional
      return (fLimit - 1.0f) * Unit(g);
    case 1:  // a whole pixel, the last one included
      return static_cast<float>(Below(g, nLimit));
    case 2:  // the last pixel and next to it
      switch (Below(g, 4)) {
        case 0:
          return fLimit - 1.0f;
        case 1:
          return std::nextafter(fLimit - 1.0f, 0.0f);
        case 2:
          return std::nextafter(fLimit - 1.0f, fLimit);
        default:
          return fLimit - 0.5f;
      }
    default:  // anything else
      switch (Below(g, 14)) {
        case 0:
          return std::numeric_limits<float>::quiet_NaN();
        case 1:
          return FromBits(0xFFFFFFFFu);
        case 2:
          return std::numeric_limits<float>::infinity();
        case 3:
          return -std::numeric_limits<float>::infinity();
        case 4:
          return -0.0f;
        case 5:
          return -std::numeric_limits<float>::denorm_min();
        case 6:
          return -0.5f * Unit(g);
        case 7:
          return -1.0f - 100.0f * Unit(g);
        case 8:
          return fLimit;
        case 9:
          return fLimit + 100.0f * Unit(g);
        case 10:
          return 2147483648.0f;
        case 11:
          return 1.0e10f;
        case 12:
          return 0.0f;
        default:
          return (fLimit + 2.0f) * Unit(g) - 1.0f;
      }
  }
}

// First map positions in runs of one kind (so that groups of neighbours are all inside, all
// whole, all outside, or mixed).
void FillPositions(std::mt19937& g, float* pfValues, int nCount, int nLimit) {
  for (int i = 0; i < nCount;) {
    const int nKind = Below(g, 6) < 3 ? 0 : Below(g, 4);
    const int nRun = 1 + Below(g, 9);
    for (int k = 0; k < nRun && i < nCount; ++k, ++i) {
      pfValues[i] = Position(g, nKind, nLimit);
    }
  }
}

// The bilinear rule for one position: the corners are the whole pixels l = floor(x), r = ceil(x),
// t = floor(y), b = ceil(y), which must lie in the intermediate image and in the stored tables
// (element (c, r) at r * stored width + c); the result is (1-fx)(1-fy) tl + fx(1-fy) tr +
// (1-fx)fy bl + fx fy br with fx = x - l, fy = y - t, summed from the left; otherwise no source.
void Reference(float fX, float fY, const ImageMap& second, float& fResultX, float& fResultY) {
  const Map& obX = second.GetMapX();
  const Map& obY = second.GetMapY();
  const float fWidth = static_cast<float>(second.GetMapWidth());
  const float fHeight = static_cast<float>(second.GetMapHeight());
  const float fStoredWidth = static_cast<float>(std::min(obX.GetCols(), obY.GetCols()));
  const float fStoredHeight = static_cast<float>(std::min(obX.GetRows(), obY.GetRows()));
  const float fLeft = std::floor(fX), fRight = std::ceil(fX), fTop = std::floor(fY), fBottom = std::ceil(fY);
  if (!(fLeft >= 0.0f) || !(fRight < fWidth) || !(fRight < fStoredWidth) || !(fTop >= 0.0f) ||
      !(fBottom < fHeight) || !(fBottom < fStoredHeight)) {
    fResultX = fResultY = MapBuilder::NoSource();
    return;
  }
  const int l = static_cast<int>(fLeft), r = static_cast<int>(fRight);
  const int t = static_cast<int>(fTop), b = static_cast<int>(fBottom);
  const int nStride = static_cast<int>(fStoredWidth);
  const float fx = fX - static_cast<float>(l);
  const float fy = fY - static_cast<float>(t);
  const float tl = (1.0f - fx) * (1.0f - fy);
  const float tr = fx * (1.0f - fy);
  const float bl = (1.0f - fx) * fy;
  const float br = fx * fy;
  const float* pfX = obX.GetTypePtr<float>();
  const float* pfY = obY.GetTypePtr<float>();
  const int nTop = t * nStride, nBottom = b * nStride;
  fResultX = tl * pfX[nTop + l] + tr * pfX[nTop + r] + bl * pfX[nBottom + l] + br * pfX[nBottom + r];
  fResultY = tl * pfY[nTop + l] + tr * pfY[nTop + r] + bl * pfY[nBottom + l] + br * pfY[nBottom + r];
}

const SecondCase kSecondMaps[] = {
    {1, 1, 1, 1},   {2, 1, 2, 1},  {1, 2, 1, 2},   {2, 2, 2, 2},   {3, 5, 3, 5},     {5, 3, 5, 3},
    {17, 9, 17, 9}, {64, 48, 64, 48}, {101, 7, 101, 7},
    // The y table narrower, shorter, or both: the stored extent is below the intermediate size.
    {12, 6, 9, 6},  {12, 6, 12, 4}, {12, 6, 7, 5},  {8, 8, 10, 11},
};

std::vector<int> RowLengths() {
  std::vector<int> anLengths;
  for (int n = 1; n <= 37; ++n) {
    anLengths.push_back(n);
  }
  anLengths.push_back(1003);
  return anLengths;
}

const int kRows = 3;

// The first map: nCols x kRows positions over the second map's intermediate image.
std::unique_ptr<ImageMap> MakeFirst(std::mt19937& g, int nCols, const SecondCase& c) {
  std::unique_ptr<ImageMap> first(new ImageMap(nCols, kRows));
  FillPositions(g, first->GetMapX().GetTypePtr<float>(), nCols * kRows, c.nWidth);
  FillPositions(g, first->GetMapY().GetTypePtr<float>(), nCols * kRows, c.nHeight);
  return first;
}

// Every element of the composition of `first` over `second` against the bilinear rule, bit for
// bit; with bNanMeetsNan a NaN result only needs a NaN expected (which of two NaN corners of any
// payload a blend passes on is the composition's own choice, see below). Counts the elements
// compared and those with a source.
void ExpectTheBilinearRule(const ImageMap& first, const ImageMap& second, bool bNanMeetsNan, std::size_t& nSourced,
                           std::size_t& nTotal) {
  std::unique_ptr<ImageMap> result(CombinedMapBuilder().BuildImageMap(first, second));
  const int nCount = static_cast<int>(first.GetMapWidth() * first.GetMapHeight());
  ASSERT_EQ(first.GetMapWidth(), result->GetMapWidth());
  ASSERT_EQ(first.GetMapHeight(), result->GetMapHeight());
  const float* pfFirstX = first.GetMapX().GetTypePtr<float>();
  const float* pfFirstY = first.GetMapY().GetTypePtr<float>();
  const float* pfResultX = result->GetMapX().GetTypePtr<float>();
  const float* pfResultY = result->GetMapY().GetTypePtr<float>();
  for (int i = 0; i < nCount; ++i) {
    float fExpectedX, fExpectedY;
    Reference(pfFirstX[i], pfFirstY[i], second, fExpectedX, fExpectedY);
    const bool bNanX = bNanMeetsNan && std::isnan(fExpectedX) && std::isnan(pfResultX[i]);
    const bool bNanY = bNanMeetsNan && std::isnan(fExpectedY) && std::isnan(pfResultY[i]);
    if (!bNanX) {
      ASSERT_EQ(0, std::memcmp(&fExpectedX, pfResultX + i, sizeof(float)))
          << "x of element " << i << " of " << first.GetMapWidth() << " x " << first.GetMapHeight() << " over "
          << second.GetMapWidth() << " x " << second.GetMapHeight() << ", position (" << pfFirstX[i] << ", "
          << pfFirstY[i] << "): " << fExpectedX << " expected, " << pfResultX[i] << " given";
    }
    if (!bNanY) {
      ASSERT_EQ(0, std::memcmp(&fExpectedY, pfResultY + i, sizeof(float)))
          << "y of element " << i << " of " << first.GetMapWidth() << " x " << first.GetMapHeight() << " over "
          << second.GetMapWidth() << " x " << second.GetMapHeight() << ", position (" << pfFirstX[i] << ", "
          << pfFirstY[i] << "): " << fExpectedY << " expected, " << pfResultY[i] << " given";
    }
    nSourced += std::isnan(pfResultX[i]) ? 0 : 1;
    ++nTotal;
  }
}

TEST(CombinedMapRows, EveryElementFollowsTheBilinearRuleBitForBit) {
  std::mt19937 g(20240611u);
  std::size_t nSourced = 0, nTotal = 0;
  for (const SecondCase& c : kSecondMaps) {
    std::unique_ptr<ImageMap> second(MakeSecond(c, g, false));
    for (int nCols : RowLengths()) {
      std::unique_ptr<ImageMap> first(MakeFirst(g, nCols, c));
      ExpectTheBilinearRule(*first, *second, false, nSourced, nTotal);
      if (HasFatalFailure()) return;
    }
  }
  // Most positions are drawn inside: a comparison of unsourced elements alone would prove little.
  EXPECT_GT(nSourced, nTotal / 4);
}

// Second map NaNs with any payload: where two meet in a blend, the one that survives is the
// composition's own choice, which must not depend on where the element lies in its row. The
// same positions composed as rows and as a single column (one element per row) must agree.
TEST(CombinedMapRows, RowsGiveTheValuesOfSingleElementsWhateverTheirNans) {
  std::mt19937 g(77u);
  for (const SecondCase& c : kSecondMaps) {
    std::unique_ptr<ImageMap> second(MakeSecond(c, g, true));
    for (int nCols : RowLengths()) {
      std::unique_ptr<ImageMap> first(MakeFirst(g, nCols, c));
      const int nCount = nCols * kRows;
      ImageMap column(1, nCount);
      std::memcpy(column.GetMapX().GetTypePtr<float>(), first->GetMapX().GetTypePtr<float>(), nCount * sizeof(float));
      std::memcpy(column.GetMapY().GetTypePtr<float>(), first->GetMapY().GetTypePtr<float>(), nCount * sizeof(float));
      std::unique_ptr<ImageMap> rows(CombinedMapBuilder().BuildImageMap(*first, *second));
      std::unique_ptr<ImageMap> single(CombinedMapBuilder().BuildImageMap(column, *second));
      EXPECT_EQ(0, std::memcmp(rows->GetMapX().GetTypePtr<float>(), single->GetMapX().GetTypePtr<float>(),
                               nCount * sizeof(float)))
          << nCols << " x " << kRows << " over " << c.nWidth << " x " << c.nHeight;
      EXPECT_EQ(0, std::memcmp(rows->GetMapY().GetTypePtr<float>(), single->GetMapY().GetTypePtr<float>(),
                               nCount * sizeof(float)))
          << nCols << " x " << kRows << " over " << c.nWidth << " x " << c.nHeight;
    }
  }
}

// A first map of runs: along each row, whole consecutive columns from a random start (some before
// the first column, some running past the last) on one y per row (whole, fractional, signed zero,
// at or past the last row), the runs now and then broken by a fractional column, a repeated
// column, a jump or a second y. Runs are what a shift/scale map with unit horizontal scale holds,
// and the composition reads their corners as whole vectors of the second map's rows.
std::unique_ptr<ImageMap> MakeRuns(std::mt19937& g, int nCols, const SecondCase& c) {
  std::unique_ptr<ImageMap> first(new ImageMap(nCols, kRows));
  float* pfX = first->GetMapX().GetTypePtr<float>();
  float* pfY = first->GetMapY().GetTypePtr<float>();
  for (int r = 0; r < kRows; ++r) {
    const float afY[] = {static_cast<float>(Below(g, c.nHeight)),
                         static_cast<float>(Below(g, c.nHeight)) + 0.5f,
                         static_cast<float>(Below(g, c.nHeight)) + Unit(g),
                         -0.0f,
                         static_cast<float>(c.nHeight - 1),
                         static_cast<float>(c.nHeight) - 0.5f};
    const float fY = afY[Below(g, 6)];
    float fX = static_cast<float>(Below(g, c.nWidth + 6) - 3);
    for (int k = 0; k < nCols; ++k) {
      const int i = r * nCols + k;
      pfX[i] = fX;
      pfY[i] = fY;
      switch (Below(g, 40)) {
        case 0:
          pfX[i] = fX + 0.5f;
          break;
        case 1:
          fX -= 1.0f;  // the next column repeats this one
          break;
        case 2:
          fX = static_cast<float>(Below(g, c.nWidth + 6) - 3) - 1.0f;
          break;
        case 3:
          pfY[i] = fY + 1.0f;
          break;
        default:
          break;
      }
      fX += 1.0f;
      if (fX > static_cast<float>(c.nWidth + 2)) fX = static_cast<float>(Below(g, c.nWidth + 6) - 3);
    }
  }
  return first;
}

// Groups of four elements, from the start of a row in steps of four, that are a run inside the
// second map: four whole, consecutive columns, all inside, on one y inside.
int InsideRuns(const ImageMap& first, const SecondCase& c) {
  const int nCols = static_cast<int>(first.GetMapWidth());
  const float* pfX = first.GetMapX().GetTypePtr<float>();
  const float* pfY = first.GetMapY().GetTypePtr<float>();
  const int nWidth = std::min(c.nWidth, c.nYWidth), nHeight = std::min(c.nHeight, c.nYHeight);
  int nRuns = 0;
  for (int r = 0; r < kRows; ++r) {
    for (int X = 0; X + 4 <= nCols; X += 4) {
      const float* x = pfX + r * nCols + X;
      const float* y = pfY + r * nCols + X;
      bool bRun = x[0] >= 0.0f && x[3] <= static_cast<float>(nWidth - 1) && x[0] == std::floor(x[0]) &&
                  y[0] >= 0.0f && std::ceil(y[0]) <= static_cast<float>(nHeight - 1);
      for (int k = 1; k < 4; ++k) bRun = bRun && x[k] == x[0] + static_cast<float>(k) && y[k] == y[0];
      nRuns += bRun ? 1 : 0;
    }
  }
  return nRuns;
}

// The composition against the bilinear rule over every second map (with the default NaN, then
// with NaN of any payload) and every row length, for nRepeats first maps drawn by fnMake each,
// which fnSeen also sees. Stops at the first fatal failure.
template <typename Make, typename Seen>
void ExpectOverEveryCase(std::mt19937& g, int nRepeats, Make fnMake, Seen fnSeen, std::size_t& nSourced,
                         std::size_t& nTotal) {
  for (bool bAnyNan : {false, true}) {
    for (const SecondCase& c : kSecondMaps) {
      std::unique_ptr<ImageMap> second(MakeSecond(c, g, bAnyNan));
      for (int nCols : RowLengths()) {
        for (int nRepeat = 0; nRepeat < nRepeats; ++nRepeat) {
          std::unique_ptr<ImageMap> first(fnMake(g, nCols, c));
          fnSeen(*first, c);
          ExpectTheBilinearRule(*first, *second, bAnyNan, nSourced, nTotal);
          if (::testing::Test::HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST(CombinedMapRows, RunsOfWholeColumnsFollowTheBilinearRuleBitForBit) {
  std::mt19937 g(9173u);
  std::size_t nSourced = 0, nTotal = 0, nRuns = 0;
  ExpectOverEveryCase(g, 4, MakeRuns, [&nRuns](const ImageMap& first, const SecondCase& c) {
    nRuns += static_cast<std::size_t>(InsideRuns(first, c));
  }, nSourced, nTotal);
  // Runs inside the second map were composed, many of them with a source.
  EXPECT_GT(nRuns, 5000u);
  EXPECT_GT(nSourced, nTotal / 8);
}

// A first map of 7 rows like a scale map: every row but the last three holds one row of x
// positions (of every kind), at one height per row (of every kind) except in the columns whose
// position is NaN, which hold heights of their own; the fourth-last row is drawn at random; the
// last two are like a letterbox band, every x position off the second map (NaN, negative, at or
// beyond its width, infinite) at heights of every kind, but for one column of the last row, whose
// position is drawn at random.
std::unique_ptr<ImageMap> MakeAcross(std::mt19937& g, int nCols, const SecondCase& c) {
  const int nRows = 7;
  std::unique_ptr<ImageMap> first(new ImageMap(nCols, nRows));
  float* pfX = first->GetMapX().GetTypePtr<float>();
  float* pfY = first->GetMapY().GetTypePtr<float>();
  std::vector<float> afRow(static_cast<std::size_t>(nCols));
  FillPositions(g, afRow.data(), nCols, c.nWidth);
  for (int r = 0; r < nRows; ++r) {
    float* const pfRowX = pfX + r * nCols;
    float* const pfRowY = pfY + r * nCols;
    if (r == nRows - 4) {
      FillPositions(g, pfRowX, nCols, c.nWidth);
      FillPositions(g, pfRowY, nCols, c.nHeight);
      continue;
    }
    if (r >= nRows - 2) {
      const float fInf = std::numeric_limits<float>::infinity(), fWidth = static_cast<float>(c.nWidth);
      const float afOff[] = {FromBits(kDefaultNan), -1.5f, -0.25f, fWidth, fWidth + 3.5f, fInf, -fInf};
      for (int k = 0; k < nCols; ++k) pfRowX[k] = afOff[Below(g, 7)];
      FillPositions(g, pfRowY, nCols, c.nHeight);
      if (r == nRows - 1) FillPositions(g, pfRowX + Below(g, nCols), 1, c.nWidth);
      continue;
    }
    const float fY = Position(g, Below(g, 4), c.nHeight);
    for (int k = 0; k < nCols; ++k) {
      pfRowX[k] = afRow[k];
      pfRowY[k] = std::isnan(afRow[k]) ? Position(g, Below(g, 4), c.nHeight) : fY;
    }
  }
  return first;
}

TEST(CombinedMapRows, RowsRepeatingOneRowOfPositionsFollowTheBilinearRuleBitForBit) {
  std::mt19937 g(2718u);
  std::size_t nSourced = 0, nTotal = 0;
  ExpectOverEveryCase(g, 3, MakeAcross, [](const ImageMap&, const SecondCase&) {}, nSourced, nTotal);
  EXPECT_GT(nSourced, nTotal / 8);
}

// The run row over a second map's tables, as the projection build reads them.
struct RunRowProbe : MapRows {
  static void Compose(float fY, int nCols, ImageMap& second, float* pfX, float* pfY) {
    ComposeRunRow(fY, nCols, GetPlanes(second), second.GetMapSize(), pfX, pfY);
  }
};

// A row of whole columns 0, 1, ... at one height, composed by ComposeRunRow, against the bilinear
// rule element by element: heights of every kind (fractional, whole, the last row, outside, NaN),
// every row length from 1 to 37 and a long row (shorter and longer than the second map's rows).
void ExpectRunRowsFollowTheRule(const SecondCase& c, std::mt19937& g, bool bAnyNan, std::size_t& nSourced,
                                std::size_t& nTotal) {
  std::unique_ptr<ImageMap> second(MakeSecond(c, g, bAnyNan));
  for (int nCols : RowLengths()) {
    for (int nKind = 0; nKind < 4; ++nKind) {
      const float fY = Position(g, nKind, c.nHeight);
      std::vector<float> afX(static_cast<std::size_t>(nCols)), afY(static_cast<std::size_t>(nCols));
      RunRowProbe::Compose(fY, nCols, *second, afX.data(), afY.data());
      for (int k = 0; k < nCols; ++k) {
        float fExpectedX, fExpectedY;
        Reference(static_cast<float>(k), fY, *second, fExpectedX, fExpectedY);
        const bool bNanX = bAnyNan && std::isnan(fExpectedX) && std::isnan(afX[k]);
        const bool bNanY = bAnyNan && std::isnan(fExpectedY) && std::isnan(afY[k]);
        if (!bNanX) {
          ASSERT_EQ(0, std::memcmp(&fExpectedX, &afX[k], sizeof(float)))
              << "x of column " << k << " of " << nCols << " at height " << fY << " over " << c.nWidth << " x "
              << c.nHeight << ": " << fExpectedX << " expected, " << afX[k] << " given";
        }
        if (!bNanY) {
          ASSERT_EQ(0, std::memcmp(&fExpectedY, &afY[k], sizeof(float)))
              << "y of column " << k << " of " << nCols << " at height " << fY << " over " << c.nWidth << " x "
              << c.nHeight << ": " << fExpectedY << " expected, " << afY[k] << " given";
        }
        nSourced += std::isnan(afX[k]) ? 0 : 1;
        ++nTotal;
      }
    }
  }
}

TEST(CombinedMapRows, RowsOfWholeColumnsAtOneHeightFollowTheBilinearRuleBitForBit) {
  std::mt19937 g(4711u);
  std::size_t nSourced = 0, nTotal = 0;
  for (bool bAnyNan : {false, true}) {
    for (const SecondCase& c : kSecondMaps) {
      for (int nRepeat = 0; nRepeat < 6; ++nRepeat) {
        ExpectRunRowsFollowTheRule(c, g, bAnyNan, nSourced, nTotal);
        if (HasFatalFailure()) return;
      }
    }
  }
  // Most columns of the long rows lie beyond the second maps, yet many elements had a source.
  EXPECT_GT(nSourced, nTotal / 16);
}

}  // namespace
}  // namespace libdewarp
}  // namespace vemo
