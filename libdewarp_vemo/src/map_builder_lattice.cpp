// Lattice interpolation shared by the grid, quadrant and PTZ builders.
#include <libdewarp_vemo/map_builder.h>

#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/resolution.h>

#include <libdewarp_vemo/map_functor.h>
#include <libdewarp_vemo/vector_2d.h>

#include "lattice_cubic.h"

namespace vemo {
namespace libdewarp {

namespace {

// The largest cell (in steps each way) that is left without a source on the evidence of its
// corners and middle alone; larger empty-looking cells are halved first, so that every feature of
// the picture at least 2 pixels across is seen by some evaluated point.
const int kNoSourceSteps = 4;

// One cell of a lattice: crop columns nLeft..nRight and rows nTop..nBottom, corners included.
struct LatticeCell {
  int nLeft, nRight, nTop, nBottom;
};

// The two table values of one element.
struct TablePoint {
  float fX, fY;
};

// A cell to be blended with the values its corners and middle held when it was judged. For the
// parts of refined cells those are exact functor values, kept so that whatever a neighbour's fill
// writes over them before the part is filled, the part is filled from them: so each part's fill
// depends on its own points alone, and any band of cell rows holds the values the whole lattice
// gives it.
struct ListedBlend {
  LatticeCell obCell;
  TablePoint obTopLeft, obTopRight, obBottomLeft, obBottomRight, obMiddle;
};

// How a cell of the lattice is filled (see LatticeFill).
enum CellFill : unsigned char { FILL_BLEND, FILL_BLEND_KEEP_MIDDLE, FILL_NO_SOURCE, FILL_REFINED, FILL_CUBIC };

// The four lattice columns and rows around a cell, equally spaced, the cell between the second
// and the third of each: the crossings a cubic fill of the cell reads.
struct CubicStencil {
  int anColumns[4];
  int anRows[4];
};

inline bool EquallySpaced(const int anLines[4]) {
  const int nStep = anLines[2] - anLines[1];
  return nStep >= 2 && anLines[1] - anLines[0] == nStep && anLines[3] - anLines[2] == nStep;
}

// The fractions k / nWidth (k = 0 ... nWidth) at which the pixels of a cell row lie between its
// two ends, each formed as k times the step per column; kept for the last width asked for, since
// nearly every cell of a lattice has the same width.
class RowFractions {
public:
  const float* For(int nWidth) {
    if (nWidth != m_nWidth) {
      const float fStepPerColumn = nWidth > 0 ? 1.0f / static_cast<float>(nWidth) : 1.0f;
      m_afFraction.resize(static_cast<std::size_t>(nWidth > 0 ? nWidth : 0) + 1);
      for (int k = 0; k <= nWidth; ++k) m_afFraction[k] = static_cast<float>(k) * fStepPerColumn;
      m_nWidth = nWidth;
    }
    return m_afFraction.data();
  }

private:
  int m_nWidth = -1;
  std::vector<float> m_afFraction;
};

// Row j of a cell nHeight steps high, and how far down the cell it lies (j / nHeight).
struct CellRow {
  CellRow(int j, int nCellHeight)
      : nRow(j),
        nHeight(nCellHeight),
        fY(j > 0 && j < nCellHeight ? static_cast<float>(j) / static_cast<float>(nCellHeight) : 0.0f) {}
  int nRow, nHeight;
  float fY;
};

// The value at the end of a cell row whose ends at the top and the bottom of the cell are obTop
// and obBottom: interpolated between them, except that the first and the last row take the
// corners as they are (blending them with a corner without a source would turn a corner that has
// one into NaN, NaN * 0).
inline TablePoint RowEnd(const CellRow& obRow, const TablePoint& obTop, const TablePoint& obBottom) {
  if (obRow.nRow == 0) return obTop;
  if (obRow.nRow == obRow.nHeight) return obBottom;
  return TablePoint{obTop.fX + (obBottom.fX - obTop.fX) * obRow.fY, obTop.fY + (obBottom.fY - obTop.fY) * obRow.fY};
}

// One row of a cell fill, nWidth steps long: the ends as given, the pixels between them at the
// given fractions along the row. Four pixels at a time from the left end on (the same operations
// per pixel); the left end's lane is then overwritten with the end itself.
inline void FillCellRow(float* pfRowX, float* pfRowY, int nWidth, const TablePoint& obLeft,
                        const TablePoint& obRight, const float* pfFraction) {
  const float fStepX = obRight.fX - obLeft.fX;
  const float fStepY = obRight.fY - obLeft.fY;
  int k = 0;
  const __m128 vLeftX = _mm_set1_ps(obLeft.fX), vLeftY = _mm_set1_ps(obLeft.fY);
  const __m128 vStepX = _mm_set1_ps(fStepX), vStepY = _mm_set1_ps(fStepY);
  for (; k + 4 <= nWidth; k += 4) {
    const __m128 vFraction = _mm_loadu_ps(pfFraction + k);
    _mm_storeu_ps(pfRowX + k, _mm_add_ps(vLeftX, _mm_mul_ps(vStepX, vFraction)));
    _mm_storeu_ps(pfRowY + k, _mm_add_ps(vLeftY, _mm_mul_ps(vStepY, vFraction)));
  }
  for (; k < nWidth; ++k) {
    pfRowX[k] = obLeft.fX + fStepX * pfFraction[k];
    pfRowY[k] = obLeft.fY + fStepY * pfFraction[k];
  }
  pfRowX[0] = obLeft.fX;
  pfRowY[0] = obLeft.fY;
  pfRowX[nWidth] = obRight.fX;
  pfRowY[nWidth] = obRight.fY;
}

// Bilinear fill of one cell of nWidth x nHeight steps (corners included), row by row: the
// values of the row's two ends are interpolated between the corners above and below, the
// pixels between them along the row. The ends are stored as computed and the corners exactly,
// so that two cells that share an edge store the same values on it (whichever is filled first),
// a corner is never changed by a fill, and a cell whose corners may lack a source (one of 1 x 1
// steps) stores them unchanged.
void FillCell(float* pfX, float* pfY, int nStride, int nWidth, int nHeight, const TablePoint& obTopLeft,
              const TablePoint& obTopRight, const TablePoint& obBottomLeft, const TablePoint& obBottomRight,
              RowFractions& obFractions) {
  const float* const pfFraction = obFractions.For(nWidth);
  for (int j = 0; j <= nHeight; ++j) {
    const CellRow obRow(j, nHeight);
    FillCellRow(pfX + j * nStride, pfY + j * nStride, nWidth, RowEnd(obRow, obTopLeft, obBottomLeft),
                RowEnd(obRow, obTopRight, obBottomRight), pfFraction);
  }
}

// Works out how each cell of the lattice is filled, then fills it. A cell is
//  - left without a source (its four corners and its middle have none, and it is at most
//    kNoSourceSteps each way; only with a check),
//  - blended: bilinear interpolation of its corners (with a check: the middle agreed, and keeps
//    its exact value), or
//  - evaluated pixel by pixel.
// A cell that can be neither blended nor left empty is halved at its middle row and column
// (each at least 2 steps long), down to cells of 2 x 2 steps, which are evaluated pixel by
// pixel; so a cell crossed by the edge of the picture costs a few dozen functor calls rather
// than one per pixel; a cell with a source at the two corners of one side only is halved across
// the edge only (see SplitAlongEdge), and a strip one step across with a source at some corners
// only is judged edge by edge (see SplitStrip). Without a check (an infinite threshold) a cell
// with a corner lacking a source is evaluated pixel by pixel at once, as the plain grid scheme
// does.
// With a no-source test (see MapBuilder::NoSourceTest) a cell larger than kNoSourceSteps whose
// corners and middle have no source is left without a source at once when the test vouches that
// no point of it has one. That changes nothing in the map: halved, such a cell ends as parts that
// are all left without a source (every point evaluated in it has none, and halving a cell larger
// than kNoSourceSteps never leaves a part of 1 x 1 steps, the one kind that is blended whatever
// its corners), and those parts cover exactly the cell; the other cells are classified on the
// same evaluated points, and listed in the same order, as before.
// The fills are applied in the order no source, blend, evaluation, so that on the edges that
// neighbouring cells share the more exact value wins. The cells of the lattice itself are
// recorded one byte each; only the parts of refined cells are listed.
class LatticeFill {
public:
  LatticeFill(float* pfX, float* pfY, int nStride, MapFunctor& pfnMapping, const Vector2d& obInputOffset,
              float fLeft, float fTop, float fThreshold, const MapBuilder::NoSourceTest* pobNoSource)
      : m_pfX(pfX), m_pfY(pfY), m_nStride(nStride), m_pfnMapping(pfnMapping), m_obInputOffset(obInputOffset),
        m_fLeft(fLeft), m_fTop(fTop), m_fThreshold(fThreshold), m_bCheck(std::isfinite(fThreshold)),
        m_pobNoSource(pobNoSource && pobNoSource->pfnTest ? pobNoSource : nullptr) {}

  void Evaluate(int k, int j) {
    const Vector2d obSource = m_pfnMapping(Vector2d(m_fLeft + static_cast<float>(k), m_fTop + static_cast<float>(j)));
    m_pfX[j * m_nStride + k] = obSource.X + m_obInputOffset.X;
    m_pfY[j * m_nStride + k] = obSource.Y + m_obInputOffset.Y;
  }

  // Decides how a cell of the lattice is filled; the parts of a refined cell are listed. Kept out
  // of line (one call per lattice cell): inlined into BuildLattice, the classification crowds the
  // registers of the fill loops there, which then spend more instructions on every row of a cell.
  // With a stencil, a cell whose bilinear guess misses but whose cubic guess at the middle agrees
  // is filled cubically (the cell itself only; its parts, once halved, are judged bilinearly).
  __attribute__((noinline)) CellFill Classify(const LatticeCell& obCell, const CubicStencil* pobStencil) {
    const CellFill eFill = ClassifyOne(obCell, pobStencil);
    if (eFill != FILL_REFINED) {
      return eFill;
    }
    while (!m_aobPending.empty()) {
      const LatticeCell obPart = m_aobPending.back();
      m_aobPending.pop_back();
      switch (ClassifyOne(obPart, nullptr)) {
        case FILL_BLEND:
          m_aobBlend.push_back(Judged(obPart));
          break;
        case FILL_BLEND_KEEP_MIDDLE:
          m_aobBlendKeepMiddle.push_back(Judged(obPart));
          break;
        case FILL_NO_SOURCE:
          m_aobNoSource.push_back(obPart);
          break;
        case FILL_REFINED:
        case FILL_CUBIC:
          break;
      }
    }
    return FILL_REFINED;
  }

  void FillNoSource(const LatticeCell& obCell) {
    const float fNoSource = MapBuilder::NoSource();
    for (int j = obCell.nTop; j <= obCell.nBottom; ++j) {
      for (int k = obCell.nLeft; k <= obCell.nRight; ++k) {
        m_pfX[j * m_nStride + k] = fNoSource;
        m_pfY[j * m_nStride + k] = fNoSource;
      }
    }
  }

  // The cells of one band of the lattice (the nCells cells between two neighbouring rows of it,
  // columns at anColumns) left without a source, a run of neighbouring cells at a time and row by
  // row across the run: the elements of the cells and of the edges they share, as filling each
  // cell on its own writes them, in long runs rather than a cell's width at a time.
  void NoSourceBand(const std::vector<int>& anColumns, int nTop, int nBottom, const unsigned char* aeFill,
                    std::size_t nCells) {
    const float fNoSource = MapBuilder::NoSource();
    std::size_t a = 0;
    while (a < nCells) {
      if (aeFill[a] != FILL_NO_SOURCE) {
        ++a;
        continue;
      }
      std::size_t z = a + 1;
      while (z < nCells && aeFill[z] == FILL_NO_SOURCE) ++z;
      const int nLeft = anColumns[a], nRight = anColumns.size() > 1 ? anColumns[z] : anColumns[a];
      for (int j = nTop; j <= nBottom; ++j) {
        std::fill(m_pfX + j * m_nStride + nLeft, m_pfX + j * m_nStride + nRight + 1, fNoSource);
        std::fill(m_pfY + j * m_nStride + nLeft, m_pfY + j * m_nStride + nRight + 1, fNoSource);
      }
      a = z;
    }
  }

  // The blended cells of one band of the lattice (the nCells cells between two neighbouring rows
  // of it, columns at anColumns), each filled from its corners as FillCell fills a cell, but row
  // by row across the whole band, so that the tables are written front to back rather than a
  // cell at a time; then the kept middles take their exact values. The values are those of
  // filling the cells one after the other in reading order, each with its middle: cells that
  // share an edge store the same values on it, and a kept middle lies inside its cell or, in a
  // cell one step across, on its left or top edge, which it shares only with cells before it. So
  // a middle ends with the value it had when its cell came: the cell above (an earlier band) has
  // been filled then, and a blended cell on the left has written its own right edge over it.
  void BlendBand(const std::vector<int>& anColumns, int nTop, int nBottom, const unsigned char* aeFill,
                 std::size_t nCells) {
    auto blended = [&](std::size_t a) { return aeFill[a] == FILL_BLEND || aeFill[a] == FILL_BLEND_KEEP_MIDDLE; };
    auto cell = [&](std::size_t a) {
      return LatticeCell{anColumns[a], anColumns.size() > 1 ? anColumns[a + 1] : anColumns[a], nTop, nBottom};
    };
    m_aobMiddles.clear();
    for (std::size_t a = 0; a < nCells; ++a) {
      if (aeFill[a] != FILL_BLEND_KEEP_MIDDLE) continue;
      const LatticeCell obCell = cell(a);
      const bool bOverwritten = obCell.nRight - obCell.nLeft == 1 && a > 0 && blended(a - 1);
      if (!bOverwritten) {
        const int nColumn = MiddleColumn(obCell), nRow = MiddleRow(obCell);
        m_aobMiddles.push_back(KeptMiddle{nColumn, nRow, At(nColumn, nRow)});
      }
    }
    // The corners of the band's cells (the lattice crossings on its top and bottom lines), read
    // once for all its rows.
    const std::size_t nLines = anColumns.size() > 1 ? nCells + 1 : 1;
    const std::size_t nRight = nLines > 1 ? 1 : 0;  // the right end's line: the next one, if any
    m_aobTop.resize(nLines);
    m_aobBottom.resize(nLines);
    for (std::size_t a = 0; a < nLines; ++a) {
      m_aobTop[a] = At(anColumns[a], nTop);
      m_aobBottom[a] = At(anColumns[a], nBottom);
    }
    const int nHeight = nBottom - nTop;
    m_aobEnd.resize(nLines);
    for (int j = 0; j <= nHeight; ++j) {
      const CellRow obRow(j, nHeight);
      float* const pfRowX = m_pfX + (nTop + j) * m_nStride;
      float* const pfRowY = m_pfY + (nTop + j) * m_nStride;
      // The row's ends on every line, each shared by the cells on either side of it.
      for (std::size_t a = 0; a < nLines; ++a) m_aobEnd[a] = RowEnd(obRow, m_aobTop[a], m_aobBottom[a]);
      for (std::size_t a = 0; a < nCells; ++a) {
        if (!blended(a)) continue;
        const int nLeft = anColumns[a], nWidth = anColumns[a + nRight] - nLeft;
        FillCellRow(pfRowX + nLeft, pfRowY + nLeft, nWidth, m_aobEnd[a], m_aobEnd[a + nRight],
                    m_obFractions.For(nWidth));
      }
    }
    for (const KeptMiddle& obMiddle : m_aobMiddles) {
      m_pfX[obMiddle.nRow * m_nStride + obMiddle.nColumn] = obMiddle.obValue.fX;
      m_pfY[obMiddle.nRow * m_nStride + obMiddle.nColumn] = obMiddle.obValue.fY;
    }
  }

  // The cubic cells of one band of the lattice (its top line is row line b), each filled from the
  // sixteen crossings around it: down each of the four stencil columns the value at the cell row
  // is interpolated between the column's four crossings, and along the row between those four
  // values. A cell's edges take the crossings' columns and rows as they are at their ends, so two
  // cubic cells that share an edge store the same values on it, and the crossings are kept exact;
  // the middle then takes its exact value, as a blended cell's does.
  void CubicBand(const std::vector<int>& anColumns, const std::vector<int>& anRows, std::size_t b,
                 const unsigned char* aeFill, std::size_t nCells) {
    for (std::size_t a = 0; a < nCells; ++a) {
      if (aeFill[a] != FILL_CUBIC) continue;
      TablePoint aobCrossing[4][4];  // [column][row]
      for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) aobCrossing[c][r] = At(anColumns[a - 1 + c], anRows[b - 1 + r]);
      }
      const LatticeCell obCell{anColumns[a], anColumns[a + 1], anRows[b], anRows[b + 1]};
      const int nWidth = obCell.nRight - obCell.nLeft, nHeight = obCell.nBottom - obCell.nTop;
      const int nMiddle = MiddleRow(obCell) * m_nStride + MiddleColumn(obCell);
      const TablePoint obMiddle{m_pfX[nMiddle], m_pfY[nMiddle]};
      m_obCubicWeights.For(nWidth);
      for (int j = 0; j <= nHeight; ++j) {
        float afX[4], afY[4];
        const int nRow = j == 0 ? 1 : j == nHeight ? 2 : -1;
        const lattice_cubic::Weights obDown = lattice_cubic::At(lattice_cubic::StepWeights::Fraction(j, nHeight));
        for (int c = 0; c < 4; ++c) {
          const TablePoint* const aobColumn = aobCrossing[c];
          afX[c] = nRow >= 0 ? aobColumn[nRow].fX : ColumnBlend(obDown, aobColumn, &TablePoint::fX);
          afY[c] = nRow >= 0 ? aobColumn[nRow].fY : ColumnBlend(obDown, aobColumn, &TablePoint::fY);
        }
        const int nOrigin = (obCell.nTop + j) * m_nStride + obCell.nLeft;
        lattice_cubic::FillRow(m_pfX + nOrigin, nWidth, m_obCubicWeights, afX[0], afX[1], afX[2], afX[3]);
        lattice_cubic::FillRow(m_pfY + nOrigin, nWidth, m_obCubicWeights, afY[0], afY[1], afY[2], afY[3]);
      }
      m_pfX[nMiddle] = obMiddle.fX;
      m_pfY[nMiddle] = obMiddle.fY;
    }
  }

  // The listed parts of refined cells, after the lattice's own cells of the same kind.
  void FillListedNoSource() {
    for (const LatticeCell& obCell : m_aobNoSource) FillNoSource(obCell);
  }
  void BlendListed() {
    for (const ListedBlend& obPart : m_aobBlend) BlendAs(obPart, false);
    for (const ListedBlend& obPart : m_aobBlendKeepMiddle) BlendAs(obPart, true);
  }
  // Neighbouring listed cells share their edges. Nothing but exact values is written from here
  // on, so a point evaluated once keeps its value and is not evaluated again (one bit per
  // element of the rows the listed cells reach).
  void EvaluateListed() {
    int nRows = 0;
    for (const LatticeCell& obCell : m_aobEvaluate) nRows = std::max(nRows, obCell.nBottom + 1);
    std::vector<std::uint32_t> auDone((static_cast<std::size_t>(nRows) * m_nStride + 31) / 32, 0u);
    for (const LatticeCell& obCell : m_aobEvaluate) {
      for (int j = obCell.nTop; j <= obCell.nBottom; ++j) {
        for (int k = obCell.nLeft; k <= obCell.nRight; ++k) {
          const std::size_t n = static_cast<std::size_t>(j) * m_nStride + k;
          const std::uint32_t uBit = std::uint32_t(1) << (n % 32);
          if ((auDone[n / 32] & uBit) == 0) {
            auDone[n / 32] |= uBit;
            Evaluate(k, j);
          }
        }
      }
    }
  }

private:
  Vector2d Value(int k, int j) const { return Vector2d(m_pfX[j * m_nStride + k], m_pfY[j * m_nStride + k]); }

  static int MiddleColumn(const LatticeCell& obCell) { return obCell.nLeft + (obCell.nRight - obCell.nLeft) / 2; }
  static int MiddleRow(const LatticeCell& obCell) { return obCell.nTop + (obCell.nBottom - obCell.nTop) / 2; }

  // The cell with the values its corners and middle hold now.
  ListedBlend Judged(const LatticeCell& obCell) const {
    return ListedBlend{obCell,
                       At(obCell.nLeft, obCell.nTop),
                       At(obCell.nRight, obCell.nTop),
                       At(obCell.nLeft, obCell.nBottom),
                       At(obCell.nRight, obCell.nBottom),
                       At(MiddleColumn(obCell), MiddleRow(obCell))};
  }
  TablePoint At(int k, int j) const { return TablePoint{m_pfX[j * m_nStride + k], m_pfY[j * m_nStride + k]}; }

  static float ColumnBlend(const lattice_cubic::Weights& obWeights, const TablePoint* aobColumn,
                           float TablePoint::*pfCoordinate) {
    return lattice_cubic::Blend(obWeights, aobColumn[0].*pfCoordinate, aobColumn[1].*pfCoordinate,
                                aobColumn[2].*pfCoordinate, aobColumn[3].*pfCoordinate);
  }

  // Whether the cubic guess at a cell's middle (as CubicBand would fill it) agrees with the
  // functor's value there within the threshold, each way; never when a crossing of the stencil
  // has no source.
  bool CubicFits(const CubicStencil& obStencil, int nMidColumn, int nMidRow, const Vector2d& obMiddle) const {
    const int nWidth = obStencil.anColumns[2] - obStencil.anColumns[1];
    const int nHeight = obStencil.anRows[2] - obStencil.anRows[1];
    const lattice_cubic::Weights obAcross =
        lattice_cubic::At(lattice_cubic::StepWeights::Fraction(nMidColumn - obStencil.anColumns[1], nWidth));
    const lattice_cubic::Weights obDown =
        lattice_cubic::At(lattice_cubic::StepWeights::Fraction(nMidRow - obStencil.anRows[1], nHeight));
    float afX[4], afY[4];
    for (int c = 0; c < 4; ++c) {
      TablePoint aobColumn[4];
      for (int r = 0; r < 4; ++r) {
        aobColumn[r] = At(obStencil.anColumns[c], obStencil.anRows[r]);
        if (!Vector2d(aobColumn[r].fX, aobColumn[r].fY).Valid()) return false;
      }
      afX[c] = ColumnBlend(obDown, aobColumn, &TablePoint::fX);
      afY[c] = ColumnBlend(obDown, aobColumn, &TablePoint::fY);
    }
    const float fGuessX = lattice_cubic::Blend(obAcross, afX[0], afX[1], afX[2], afX[3]);
    const float fGuessY = lattice_cubic::Blend(obAcross, afY[0], afY[1], afY[2], afY[3]);
    return std::fabs(fGuessX - obMiddle.X) <= m_fThreshold && std::fabs(fGuessY - obMiddle.Y) <= m_fThreshold;
  }

  // Bilinear fill of the cell from the given corners; with bKeepMiddle its middle then takes the
  // given middle value.
  void BlendAs(const ListedBlend& obPart, bool bKeepMiddle) {
    const LatticeCell& obCell = obPart.obCell;
    const int nOrigin = obCell.nTop * m_nStride + obCell.nLeft;
    FillCell(m_pfX + nOrigin, m_pfY + nOrigin, m_nStride, obCell.nRight - obCell.nLeft, obCell.nBottom - obCell.nTop,
             obPart.obTopLeft, obPart.obTopRight, obPart.obBottomLeft, obPart.obBottomRight, m_obFractions);
    if (bKeepMiddle) {
      const int nMiddle = MiddleRow(obCell) * m_nStride + MiddleColumn(obCell);
      m_pfX[nMiddle] = obPart.obMiddle.fX;
      m_pfY[nMiddle] = obPart.obMiddle.fY;
    }
  }

  // Whether the no-source test vouches for every point of the cell, corners included; the
  // corner points are formed as Evaluate forms them.
  bool NoSourceVouched(const LatticeCell& obCell) const {
    return m_pobNoSource->pfnTest(m_pobNoSource->pContext, m_fLeft + static_cast<float>(obCell.nLeft),
                                  m_fTop + static_cast<float>(obCell.nTop), m_fLeft + static_cast<float>(obCell.nRight),
                                  m_fTop + static_cast<float>(obCell.nBottom));
  }

  // How one cell is filled; a cell to be evaluated pixel by pixel is listed at once, a refined
  // cell's parts are queued.
  CellFill ClassifyOne(const LatticeCell& obCell, const CubicStencil* pobStencil) {
    const int nWidth = obCell.nRight - obCell.nLeft;
    const int nHeight = obCell.nBottom - obCell.nTop;
    if (nWidth <= 1 && nHeight <= 1) {
      return FILL_BLEND;  // every pixel is a corner: blending stores the corners unchanged
    }
    const Vector2d obTopLeft = Value(obCell.nLeft, obCell.nTop);
    const Vector2d obTopRight = Value(obCell.nRight, obCell.nTop);
    const Vector2d obBottomLeft = Value(obCell.nLeft, obCell.nBottom);
    const Vector2d obBottomRight = Value(obCell.nRight, obCell.nBottom);
    const int nValid = (obTopLeft.Valid() ? 1 : 0) + (obTopRight.Valid() ? 1 : 0) + (obBottomLeft.Valid() ? 1 : 0) +
                       (obBottomRight.Valid() ? 1 : 0);
    if (!m_bCheck) {
      if (nValid == 4) {
        return FILL_BLEND;
      }
      m_aobEvaluate.push_back(obCell);
      return FILL_REFINED;
    }
    if (nValid != 0 && nValid != 4 && (nWidth == 1 || nHeight == 1)) {
      SplitStrip(obCell, nWidth == 1);
      return FILL_REFINED;
    }
    const int nMidColumn = obCell.nLeft + nWidth / 2;
    const int nMidRow = obCell.nTop + nHeight / 2;
    if (nValid == 2 && SplitAlongEdge(obCell, obTopLeft.Valid() == obTopRight.Valid(),
                                      obTopLeft.Valid() == obBottomLeft.Valid(), nMidColumn, nMidRow)) {
      return FILL_REFINED;
    }
    bool bMiddleKnown = false;
    if (nValid == 4 || nValid == 0) {
      Evaluate(nMidColumn, nMidRow);
      bMiddleKnown = true;
      const Vector2d obMiddle = Value(nMidColumn, nMidRow);
      if (nValid == 0 && !obMiddle.Valid() &&
          ((nWidth <= kNoSourceSteps && nHeight <= kNoSourceSteps) || (m_pobNoSource && NoSourceVouched(obCell)))) {
        return FILL_NO_SOURCE;
      }
      if (nValid == 4 && obMiddle.Valid()) {
        const Vector2d obGuess = MapBuilder::Bilinear(
            obTopLeft, obTopRight, obBottomLeft, obBottomRight,
            static_cast<float>(nMidColumn - obCell.nLeft) / static_cast<float>(nWidth > 0 ? nWidth : 1),
            static_cast<float>(nMidRow - obCell.nTop) / static_cast<float>(nHeight > 0 ? nHeight : 1));
        const float fMiss = std::fmax(std::fabs(obGuess.X - obMiddle.X), std::fabs(obGuess.Y - obMiddle.Y));
        if (fMiss <= m_fThreshold) {
          return FILL_BLEND_KEEP_MIDDLE;
        }
        if (pobStencil && CubicFits(*pobStencil, nMidColumn, nMidRow, obMiddle)) {
          return FILL_CUBIC;
        }
      }
    }
    if (nWidth <= 2 && nHeight <= 2) {
      m_aobEvaluate.push_back(obCell);
      return FILL_REFINED;
    }
    Split(obCell, nMidColumn, nMidRow, bMiddleKnown, true, true);
    return FILL_REFINED;
  }

  // A cell with a source at two corners on one side only (its top or bottom pair, its left or
  // right pair) has the edge of the picture running through it from side to side, as along the
  // bars above and below a panorama: it is halved across that edge only, at its middle row (or
  // column), so that each halving keeps one part of the full width on the edge and one clear of
  // it, down to a strip one step across, which SplitStrip judges edge by edge. Halved both ways,
  // the cell would leave two parts on the edge at each step, each halved again down to 2 x 2
  // steps (about 200 calls for a 32-pixel cell against about 100). False, with nothing done,
  // when the corners lie otherwise or the cell is too short across the edge to halve.
  bool SplitAlongEdge(const LatticeCell& obCell, bool bTopPair, bool bLeftPair, int nMidColumn, int nMidRow) {
    const bool bAcross = bTopPair && obCell.nBottom - obCell.nTop >= 2;
    const bool bDown = bLeftPair && obCell.nRight - obCell.nLeft >= 2;
    if (!bAcross && !bDown) {
      return false;
    }
    Split(obCell, nMidColumn, nMidRow, false, bDown, bAcross);
    return true;
  }

  // A strip one step across with a source at some corners only, such as the strip between the
  // outermost pixels of a picture (without a source) and their neighbours (with one): it has no
  // pixels but those of its two long edges, so each edge is queued as a cell of its own (zero
  // steps across) and judged on its own ends and middle, rather than the strip being halved down
  // to cells whose every pixel is evaluated.
  void SplitStrip(const LatticeCell& obCell, bool bColumns) {
    if (bColumns) {
      m_aobPending.push_back(LatticeCell{obCell.nLeft, obCell.nLeft, obCell.nTop, obCell.nBottom});
      m_aobPending.push_back(LatticeCell{obCell.nRight, obCell.nRight, obCell.nTop, obCell.nBottom});
    } else {
      m_aobPending.push_back(LatticeCell{obCell.nLeft, obCell.nRight, obCell.nTop, obCell.nTop});
      m_aobPending.push_back(LatticeCell{obCell.nLeft, obCell.nRight, obCell.nBottom, obCell.nBottom});
    }
  }

  // Halves the cell at its middle column (with bColumns, if it is at least 2 steps wide) and
  // middle row (with bRows, if at least 2 steps high), evaluates the new lattice points and queues
  // the parts.
  void Split(const LatticeCell& obCell, int nMidColumn, int nMidRow, bool bMiddleKnown, bool bColumns, bool bRows) {
    int anColumns[3] = {obCell.nLeft, obCell.nRight, obCell.nRight};
    int anRows[3] = {obCell.nTop, obCell.nBottom, obCell.nBottom};
    int nColumns = 2, nRows = 2;
    if (bColumns && obCell.nRight - obCell.nLeft >= 2) {
      anColumns[1] = nMidColumn;
      nColumns = 3;
    }
    if (bRows && obCell.nBottom - obCell.nTop >= 2) {
      anRows[1] = nMidRow;
      nRows = 3;
    }
    for (int b = 0; b < nRows; ++b) {
      for (int a = 0; a < nColumns; ++a) {
        const bool bCorner = (a == 0 || a == nColumns - 1) && (b == 0 || b == nRows - 1);
        const bool bMiddle = bMiddleKnown && anColumns[a] == nMidColumn && anRows[b] == nMidRow;
        // A cell zero steps across (an edge of a strip) has its two columns or rows on one line.
        const bool bRepeat = (a > 0 && anColumns[a] == anColumns[a - 1]) || (b > 0 && anRows[b] == anRows[b - 1]);
        if (!bCorner && !bMiddle && !bRepeat) {
          Evaluate(anColumns[a], anRows[b]);
        }
      }
    }
    for (int b = 0; b + 1 < nRows; ++b) {
      for (int a = 0; a + 1 < nColumns; ++a) {
        m_aobPending.push_back(LatticeCell{anColumns[a], anColumns[a + 1], anRows[b], anRows[b + 1]});
      }
    }
  }

  float* m_pfX;
  float* m_pfY;
  int m_nStride;
  MapFunctor& m_pfnMapping;
  Vector2d m_obInputOffset;
  float m_fLeft, m_fTop, m_fThreshold;
  bool m_bCheck;
  const MapBuilder::NoSourceTest* m_pobNoSource;
  std::vector<LatticeCell> m_aobPending, m_aobNoSource, m_aobEvaluate;
  std::vector<ListedBlend> m_aobBlend, m_aobBlendKeepMiddle;
  // The middles of a band that keep their exact values, and the fractions of the cell rows.
  struct KeptMiddle {
    int nColumn, nRow;
    TablePoint obValue;
  };
  std::vector<KeptMiddle> m_aobMiddles;
  std::vector<TablePoint> m_aobTop, m_aobBottom, m_aobEnd;
  RowFractions m_obFractions;
  lattice_cubic::StepWeights m_obCubicWeights;
};

}  // namespace

ImageMap* MapBuilder::BuildOnLattice(const Resolution& obInputResolution, const Resolution& obOutputResolution,
                                     MapFunctor& pfnMapping, const Resolution& obCrop, LatticeRule fnLines,
                                     float fThreshold, bool bCubic) {
  std::unique_ptr<ImageMap> pobResult(CropCoversOutput(obOutputResolution, obCrop)
                                          ? NewUnfilledImageMap(obInputResolution, obOutputResolution)
                                          : NewImageMap(obInputResolution, obOutputResolution));
  const MapPlanes obPlanes = GetPlanes(*pobResult);
  const CropGrid obGrid = GetCropGrid(obOutputResolution, obCrop, obPlanes);
  BuildLattice(obPlanes, obGrid, pfnMapping, obInputResolution.Centre(), fnLines(obGrid.nCols),
               fnLines(obGrid.nRows), fThreshold, nullptr, bCubic);
  return pobResult.release();
}

void MapBuilder::BuildLattice(const MapPlanes& obPlanes, const CropGrid& obGrid, MapFunctor& pfnMapping,
                              const Vector2d& obInputOffset, const std::vector<int>& anColumns,
                              const std::vector<int>& anRows, float fThreshold, const NoSourceTest* pobNoSource,
                              bool bCubic) {
  if (obGrid.nCols <= 0 || obGrid.nRows <= 0 || anColumns.empty() || anRows.empty()) {
    return;
  }
  const int nStride = obPlanes.nWidth;
  LatticeFill obFill(obPlanes.pfX + obGrid.nRowBase * nStride + obGrid.nColBase,
                     obPlanes.pfY + obGrid.nRowBase * nStride + obGrid.nColBase, nStride, pfnMapping, obInputOffset,
                     obGrid.fLeft, obGrid.fTop, fThreshold, pobNoSource);
  // 1. The lattice crossings.
  for (int j : anRows) {
    for (int k : anColumns) {
      obFill.Evaluate(k, j);
    }
  }
  // 2. Each cell between neighbouring lines: how it is filled, one byte per cell.
  const size_t nCellColumns = anColumns.size() > 1 ? anColumns.size() - 1 : 1;
  const size_t nCellRows = anRows.size() > 1 ? anRows.size() - 1 : 1;
  auto cell = [&](size_t a, size_t b) {
    return LatticeCell{anColumns[a], anColumns.size() > 1 ? anColumns[a + 1] : anColumns[a], anRows[b],
                       anRows.size() > 1 ? anRows[b + 1] : anRows[b]};
  };
  // The cubic stencil of a cell: only inside the lattice, where the lines around the cell are
  // equally spaced (at least 2 steps apart) on both sides of it.
  auto stencil = [&](size_t a, size_t b, CubicStencil& obStencil) {
    if (!bCubic || a < 1 || a + 2 >= anColumns.size() || b < 1 || b + 2 >= anRows.size()) return false;
    for (int n = 0; n < 4; ++n) {
      obStencil.anColumns[n] = anColumns[a - 1 + n];
      obStencil.anRows[n] = anRows[b - 1 + n];
    }
    return EquallySpaced(obStencil.anColumns) && EquallySpaced(obStencil.anRows);
  };
  std::vector<unsigned char> aeFill(nCellColumns * nCellRows);
  for (size_t b = 0; b < nCellRows; ++b) {
    for (size_t a = 0; a < nCellColumns; ++a) {
      CubicStencil obStencil;
      aeFill[b * nCellColumns + a] = obFill.Classify(cell(a, b), stencil(a, b, obStencil) ? &obStencil : nullptr);
    }
  }
  // 3. The fills, least exact first.
  for (size_t b = 0; b < nCellRows; ++b) {
    const LatticeCell obFirst = cell(0, b);
    obFill.NoSourceBand(anColumns, obFirst.nTop, obFirst.nBottom, &aeFill[b * nCellColumns], nCellColumns);
  }
  obFill.FillListedNoSource();
  for (size_t b = 0; b < nCellRows; ++b) {
    const LatticeCell obFirst = cell(0, b);
    obFill.BlendBand(anColumns, obFirst.nTop, obFirst.nBottom, &aeFill[b * nCellColumns], nCellColumns);
  }
  // Cubic cells after the blended ones: on an edge they share, the cubic value is the more exact.
  if (bCubic) {
    for (size_t b = 0; b < nCellRows; ++b) obFill.CubicBand(anColumns, anRows, b, &aeFill[b * nCellColumns], nCellColumns);
  }
  obFill.BlendListed();
  obFill.EvaluateListed();
}

}  // namespace libdewarp
}  // namespace vemo
