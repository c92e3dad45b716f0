#include <libdewarp_vemo/combined_map_builder.h>

#include <emmintrin.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/floating_point.h>
#include <libdewarp_vemo/image_map.h>
#include <libdewarp_vemo/log.h>
#include <libdewarp_vemo/resolution.h>
#include <libdewarp_vemo/vector_2d.h>

#include "map_rows.h"

namespace vemo {
namespace libdewarp {

CombinedMapBuilder::CombinedMapBuilder() {}

CombinedMapBuilder::CombinedMapBuilder(const CombinedMapBuilder& other) : LinearMapBuilder(other) {}

CombinedMapBuilder& CombinedMapBuilder::operator=(const CombinedMapBuilder& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "CombinedMapBuilder");
  }
  return *this;
}

CombinedMapBuilder::~CombinedMapBuilder() {}

ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap* pobFirstMap, const ImageMap* pobSecondMap) {
  if (pobFirstMap == nullptr || pobSecondMap == nullptr) {
    Error::SetLastError(EINVAL);
    throw Error(DEWARP_LOCATION("CombinedMapBuilder"), EINVAL, "Invalid maps");
  }
  return BuildImageMap(*pobFirstMap, *pobSecondMap);
}

// Per output pixel, the first map gives a position in the intermediate image; the four
// intermediate pixels around it are looked up in the second map and blended bilinearly with the
// fractions of the position above its floor. A position whose four corners do not all lie
// inside the intermediate image leaves the element NaN (the remap paints the default colour).
ImageMap* CombinedMapBuilder::BuildImageMap(const ImageMap& obFirstMap, const ImageMap& obSecondMap) {
  const Vector2d obOutputResolution = obFirstMap.GetMapSize();
  const Vector2d obIntermediateResolution = obSecondMap.GetMapSize();

  // Every element of the result is written below (a source or none), unless the first map's
  // tables hold fewer elements than its size says; only then is the result filled first.
  const MapPlanes obFirst = GetPlanes(const_cast<ImageMap&>(obFirstMap));
  const bool bWritesAll = obFirst.nWidth == static_cast<int>(obOutputResolution.X) &&
                          obFirst.nHeight == static_cast<int>(obOutputResolution.Y);
  std::unique_ptr<ImageMap> pobResult(
      MapRows::NewCombinedMap(obOutputResolution, obSecondMap.GetInputSize(), bWritesAll));

  const MapPlanes obResult = GetPlanes(*pobResult);
  const MapPlanes obSecond = GetPlanes(const_cast<ImageMap&>(obSecondMap));
  const int nRows = obResult.nHeight < obFirst.nHeight ? obResult.nHeight : obFirst.nHeight;
  const int nCols = obResult.nWidth < obFirst.nWidth ? obResult.nWidth : obFirst.nWidth;
  MapRows::ComposeRows(obFirst, nRows, nCols, obSecond, obIntermediateResolution, obResult);
  return pobResult.release();
}

ImageMap* MapRows::NewCombinedMap(const Vector2d& obOutputResolution, const Vector2d& obInputResolution,
                                  bool bWritesAll) {
  std::unique_ptr<ImageMap> pobResult;
  try {
    pobResult.reset(bWritesAll ? NewUnfilledImageMap(Resolution(obInputResolution), Resolution(obOutputResolution))
                               : new ImageMap(obOutputResolution));
  } catch (const std::bad_alloc&) {
    pobResult.reset();
  }
  if (!pobResult) {
    Error::SetLastError(ENOMEM);
    // Reported as the combined build's own failure, whichever build made the map.
    throw Error(CodeLocation(__FILE__, "CombinedMapBuilder", "BuildImageMap", __LINE__), ENOMEM,
                "No memory for map");
  }
  pobResult->SetInputSize(obInputResolution);
  return pobResult.release();
}

namespace {

// The second map of a composition as its rows read it: the tables with their stored extent, and
// the size of the intermediate image, which bounds the positions.
struct SecondMap {
  const float* pfX;
  const float* pfY;
  int nWidth;
  int nHeight;
  float fWidth;
  float fHeight;
};

// The two neighbouring whole coordinates of v, floor and ceiling, when both lie in [0, limit):
// the four corners of the bilinear lookup are then inside the second map. The floor of a
// non-negative value below 2^31 is its truncation, so no rounding call is needed; NaN fails the
// first test.
inline bool Span(float v, float fLimit, int& nLow, int& nHigh) {
  if (!(v >= 0.0f) || !(v < fLimit)) {
    return false;
  }
  nLow = static_cast<int>(v);
  nHigh = nLow + (v > static_cast<float>(nLow) ? 1 : 0);
  return static_cast<float>(nHigh) < fLimit;
}

// One element of a composed row: the second map sampled bilinearly at (fX, fY), or no source.
inline void ComposeElement(float fX, float fY, const SecondMap& obSecond, float fNoSource, float& fResultX,
                           float& fResultY) {
  int nLeft, nRight, nTop, nBottom;
  // The intermediate size is the second map's size, so the corners index its tables.
  if (!Span(fX, obSecond.fWidth, nLeft, nRight) || !Span(fY, obSecond.fHeight, nTop, nBottom) ||
      nRight >= obSecond.nWidth || nBottom >= obSecond.nHeight) {
    fResultX = fNoSource;
    fResultY = fNoSource;
    return;
  }
  // Bilinear blend of the four corners, weights and sums in the order of MapBuilder::Bilinear.
  const float fFractionX = fX - static_cast<float>(nLeft);
  const float fFractionY = fY - static_cast<float>(nTop);
  const float fTopLeft = (1.0f - fFractionX) * (1.0f - fFractionY);
  const float fTopRight = fFractionX * (1.0f - fFractionY);
  const float fBottomLeft = (1.0f - fFractionX) * fFractionY;
  const float fBottomRight = fFractionX * fFractionY;
  const int nTopRow = nTop * obSecond.nWidth, nBottomRow = nBottom * obSecond.nWidth;
  fResultX = fTopLeft * obSecond.pfX[nTopRow + nLeft] + fTopRight * obSecond.pfX[nTopRow + nRight] +
             fBottomLeft * obSecond.pfX[nBottomRow + nLeft] + fBottomRight * obSecond.pfX[nBottomRow + nRight];
  fResultY = fTopLeft * obSecond.pfY[nTopRow + nLeft] + fTopRight * obSecond.pfY[nTopRow + nRight] +
             fBottomLeft * obSecond.pfY[nBottomRow + nLeft] + fBottomRight * obSecond.pfY[nBottomRow + nRight];
}

// Span for four values at once: all ones in the lanes where Span holds and the ceiling is also
// below nStored (the stored extent of the tables), with the floor (as int and as float) and the
// ceiling of every lane. The conversions are Span's own as long as the values below fLimit fit
// an int, that is for a limit of at most 2^31; lanes outside [0, limit) convert to garbage and
// fail the test.
inline __m128 SpanQuad(__m128 v, __m128 vLimit, __m128i viStored, __m128i& viLow, __m128& vLow, __m128i& viHigh) {
  viLow = _mm_cvttps_epi32(v);
  vLow = _mm_cvtepi32_ps(viLow);
  // The comparison gives -1 where v lies above its floor, and subtracting it adds one.
  viHigh = _mm_sub_epi32(viLow, _mm_castps_si128(_mm_cmpgt_ps(v, vLow)));
  __m128 vInside = _mm_and_ps(_mm_cmpge_ps(v, _mm_setzero_ps()), _mm_cmplt_ps(v, vLimit));
  vInside = _mm_and_ps(vInside, _mm_cmplt_ps(_mm_cvtepi32_ps(viHigh), vLimit));
  return _mm_and_ps(vInside, _mm_castsi128_ps(_mm_cmplt_epi32(viHigh, viStored)));
}

// viRow * viWidth per lane, for non-negative factors whose product fits an int (SSE2 multiplies
// 32-bit lanes only into 64-bit products, of lanes 0 and 2).
inline __m128i RowStarts(__m128i viRow, __m128i viWidth) {
  const __m128i viEven = _mm_mul_epu32(viRow, viWidth);
  const __m128i viOdd = _mm_mul_epu32(_mm_srli_epi64(viRow, 32), viWidth);
  return _mm_unpacklo_epi32(_mm_shuffle_epi32(viEven, _MM_SHUFFLE(0, 0, 2, 0)),
                            _mm_shuffle_epi32(viOdd, _MM_SHUFFLE(0, 0, 2, 0)));
}

// The four corners of four lanes in one table, and their bilinear weights.
struct Quad {
  __m128 vTopLeft, vTopRight, vBottomLeft, vBottomRight;
};

// The elements anIndex[0..3] of a table as one vector.
inline __m128 Gather(const float* pfTable, const int* anIndex) {
  return _mm_setr_ps(pfTable[anIndex[0]], pfTable[anIndex[1]], pfTable[anIndex[2]], pfTable[anIndex[3]]);
}

// The elements anIndex[0..3] of a table and the ones just after them, two at a time.
inline void GatherPairs(const float* pfTable, const int* anIndex, __m128& vFirst, __m128& vNext) {
  const __m128 v01 = _mm_castsi128_ps(
      _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pfTable + anIndex[0])),
                         _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pfTable + anIndex[1]))));
  const __m128 v23 = _mm_castsi128_ps(
      _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pfTable + anIndex[2])),
                         _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pfTable + anIndex[3]))));
  vFirst = _mm_shuffle_ps(v01, v23, _MM_SHUFFLE(2, 0, 2, 0));
  vNext = _mm_shuffle_ps(v01, v23, _MM_SHUFFLE(3, 1, 3, 1));
}

// The corners of four lanes in a table, at the indices in anCorners (top left, top right, bottom
// left, bottom right, four lanes each). bPairs: every left corner has an element after it in its
// row, so each left corner is read together with that element, which is the right corner in the
// lanes of vAbove (positions above their floor) and is replaced by the left corner in the others
// (positions on a whole column, whose right corner is the left one).
inline Quad GatherCorners(const float* pfTable, const int (&anCorners)[4][4], bool bPairs, __m128 vAbove) {
  Quad obCorners;
  if (bPairs) {
    __m128 vNextTop, vNextBottom;
    GatherPairs(pfTable, anCorners[0], obCorners.vTopLeft, vNextTop);
    GatherPairs(pfTable, anCorners[2], obCorners.vBottomLeft, vNextBottom);
    obCorners.vTopRight = _mm_or_ps(_mm_and_ps(vAbove, vNextTop), _mm_andnot_ps(vAbove, obCorners.vTopLeft));
    obCorners.vBottomRight =
        _mm_or_ps(_mm_and_ps(vAbove, vNextBottom), _mm_andnot_ps(vAbove, obCorners.vBottomLeft));
  } else {
    obCorners.vTopLeft = Gather(pfTable, anCorners[0]);
    obCorners.vTopRight = Gather(pfTable, anCorners[1]);
    obCorners.vBottomLeft = Gather(pfTable, anCorners[2]);
    obCorners.vBottomRight = Gather(pfTable, anCorners[3]);
  }
  return obCorners;
}

// Whether the four lanes sample whole, consecutive columns x0 to x0 + 3 of one pair of rows (a
// shift/scale map with unit horizontal scale and a whole shift holds nothing else): their
// corners are then four consecutive elements of each of the two rows, the right corners the left
// ones, and are read as two vectors.
inline bool IsRun(__m128i viLeft, __m128i viRight, __m128i viTop, __m128i viBottom) {
  const __m128i viRun = _mm_add_epi32(_mm_shuffle_epi32(viLeft, 0), _mm_setr_epi32(0, 1, 2, 3));
  const __m128i viSame = _mm_and_si128(
      _mm_and_si128(_mm_cmpeq_epi32(viLeft, viRun), _mm_cmpeq_epi32(viRight, viLeft)),
      _mm_and_si128(_mm_cmpeq_epi32(viTop, _mm_shuffle_epi32(viTop, 0)),
                    _mm_cmpeq_epi32(viBottom, _mm_shuffle_epi32(viBottom, 0))));
  return _mm_movemask_epi8(viSame) == 0xFFFF;
}

// The corners of a run of four lanes (see IsRun) starting at the elements nTop and nBottom.
inline Quad RunCorners(const float* pfTable, int nTop, int nBottom) {
  Quad obCorners;
  obCorners.vTopLeft = _mm_loadu_ps(pfTable + nTop);
  obCorners.vTopRight = obCorners.vTopLeft;
  obCorners.vBottomLeft = _mm_loadu_ps(pfTable + nBottom);
  obCorners.vBottomRight = obCorners.vBottomLeft;
  return obCorners;
}

// tl * a + tr * b + bl * c + br * d, summed from the left as ComposeElement sums.
inline __m128 Blend(const Quad& obWeights, const Quad& obCorners) {
  return _mm_add_ps(_mm_add_ps(_mm_add_ps(_mm_mul_ps(obWeights.vTopLeft, obCorners.vTopLeft),
                                          _mm_mul_ps(obWeights.vTopRight, obCorners.vTopRight)),
                               _mm_mul_ps(obWeights.vBottomLeft, obCorners.vBottomLeft)),
                    _mm_mul_ps(obWeights.vBottomRight, obCorners.vBottomRight));
}

// The indices of the four corners of four lanes (top left, top right, bottom left, bottom right),
// from the lanes' row starts and columns.
inline void StoreCorners(__m128i viTopRow, __m128i viBottomRow, __m128i viLeft, __m128i viRight,
                         int (&anCorners)[4][4]) {
  _mm_store_si128(reinterpret_cast<__m128i*>(anCorners[0]), _mm_add_epi32(viTopRow, viLeft));
  _mm_store_si128(reinterpret_cast<__m128i*>(anCorners[1]), _mm_add_epi32(viTopRow, viRight));
  _mm_store_si128(reinterpret_cast<__m128i*>(anCorners[2]), _mm_add_epi32(viBottomRow, viLeft));
  _mm_store_si128(reinterpret_cast<__m128i*>(anCorners[3]), _mm_add_epi32(viBottomRow, viRight));
}

// The blends of four lanes whose corners are read element by element (or in pairs).
inline void ComposeGathered(__m128 vX, __m128 vLeft, __m128i viLeft, __m128i viRight, __m128i viTop, __m128i viBottom,
                            const Quad& obWeights, const SecondMap& obSecond, __m128& vResultX, __m128& vResultY) {
  const __m128i viWidth = _mm_set1_epi32(obSecond.nWidth);
  const __m128i viTopRow = RowStarts(viTop, viWidth);
  const __m128i viBottomRow = RowStarts(viBottom, viWidth);
  alignas(16) int anCorners[4][4];
  StoreCorners(viTopRow, viBottomRow, viLeft, viRight, anCorners);
  // Only a left corner in the last column has no element after it in its row.
  const __m128i viLastColumn = _mm_set1_epi32(obSecond.nWidth - 1);
  const bool bPairs = _mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(viLeft, viLastColumn))) == 0xF;
  const __m128 vAbove = _mm_cmpgt_ps(vX, vLeft);
  vResultX = Blend(obWeights, GatherCorners(obSecond.pfX, anCorners, bPairs, vAbove));
  vResultY = Blend(obWeights, GatherCorners(obSecond.pfY, anCorners, bPairs, vAbove));
}

// Elements X to X + 3 of a composed row with SSE2: per lane the operations of ComposeElement in
// the same order, so the same values. Writes nothing and returns false when only some of the
// four have a source, and when a blend is NaN: which of two NaN corners a sum passes on depends
// on the order of its operands, which the compiler chooses, so such elements are left to
// ComposeElement.
inline bool ComposeQuad(const float* pfFirstX, const float* pfFirstY, const SecondMap& obSecond, float fNoSource,
                        float* pfResultX, float* pfResultY) {
  const __m128 vX = _mm_loadu_ps(pfFirstX);
  const __m128 vY = _mm_loadu_ps(pfFirstY);
  __m128i viLeft, viRight, viTop, viBottom;
  __m128 vLeft, vTop;
  const __m128 vInside =
      _mm_and_ps(SpanQuad(vX, _mm_set1_ps(obSecond.fWidth), _mm_set1_epi32(obSecond.nWidth), viLeft, vLeft, viRight),
                 SpanQuad(vY, _mm_set1_ps(obSecond.fHeight), _mm_set1_epi32(obSecond.nHeight), viTop, vTop, viBottom));
  const int nInside = _mm_movemask_ps(vInside);
  if (nInside == 0) {
    _mm_storeu_ps(pfResultX, _mm_set1_ps(fNoSource));
    _mm_storeu_ps(pfResultY, _mm_set1_ps(fNoSource));
    return true;
  }
  if (nInside != 0xF) {
    return false;
  }
  const __m128 vOne = _mm_set1_ps(1.0f);
  const __m128 vFractionX = _mm_sub_ps(vX, vLeft);
  const __m128 vFractionY = _mm_sub_ps(vY, vTop);
  Quad obWeights;
  obWeights.vTopLeft = _mm_mul_ps(_mm_sub_ps(vOne, vFractionX), _mm_sub_ps(vOne, vFractionY));
  obWeights.vTopRight = _mm_mul_ps(vFractionX, _mm_sub_ps(vOne, vFractionY));
  obWeights.vBottomLeft = _mm_mul_ps(_mm_sub_ps(vOne, vFractionX), vFractionY);
  obWeights.vBottomRight = _mm_mul_ps(vFractionX, vFractionY);

  // The corners are read at row * stored width + column, as the scalar int arithmetic reads them.
  __m128 vResultX, vResultY;
  if (IsRun(viLeft, viRight, viTop, viBottom)) {
    const int nLeft = _mm_cvtsi128_si32(viLeft);
    const int nTop = _mm_cvtsi128_si32(viTop) * obSecond.nWidth + nLeft;
    const int nBottom = _mm_cvtsi128_si32(viBottom) * obSecond.nWidth + nLeft;
    vResultX = Blend(obWeights, RunCorners(obSecond.pfX, nTop, nBottom));
    vResultY = Blend(obWeights, RunCorners(obSecond.pfY, nTop, nBottom));
  } else {
    ComposeGathered(vX, vLeft, viLeft, viRight, viTop, viBottom, obWeights, obSecond, vResultX, vResultY);
  }
  if (_mm_movemask_ps(_mm_cmpunord_ps(vResultX, vResultY)) != 0) {
    return false;
  }
  _mm_storeu_ps(pfResultX, vResultX);
  _mm_storeu_ps(pfResultY, vResultY);
  return true;
}

// The second map's rows nTop and nBottom blended with the weights of a whole column at height
// fFractionY into row, elements nFrom to nTo - 1 (whole columns inside the second map), four at
// a time: the weights are ComposeElement's for a position on a whole column, its left and right
// corners the same element, and the sums run in its order. Four elements of which one blends to
// NaN are left to ComposeElement at (X, fY), as in ComposeQuad.
void BlendRunRows(const SecondMap& obSecond, int nTop, int nBottom, float fY, float fFractionY, int nFrom, int nTo,
                  float fNoSource, float* pfResultX, float* pfResultY) {
  const float fFractionX = 0.0f;
  Quad obWeights;
  obWeights.vTopLeft = _mm_set1_ps((1.0f - fFractionX) * (1.0f - fFractionY));
  obWeights.vTopRight = _mm_set1_ps(fFractionX * (1.0f - fFractionY));
  obWeights.vBottomLeft = _mm_set1_ps((1.0f - fFractionX) * fFractionY);
  obWeights.vBottomRight = _mm_set1_ps(fFractionX * fFractionY);
  const int nTopRow = nTop * obSecond.nWidth, nBottomRow = nBottom * obSecond.nWidth;
  int X = nFrom;
  for (; X + 4 <= nTo; X += 4) {
    const __m128 vResultX = Blend(obWeights, RunCorners(obSecond.pfX, nTopRow + X, nBottomRow + X));
    const __m128 vResultY = Blend(obWeights, RunCorners(obSecond.pfY, nTopRow + X, nBottomRow + X));
    if (_mm_movemask_ps(_mm_cmpunord_ps(vResultX, vResultY)) != 0) {
      for (int k = X; k < X + 4; ++k) {
        ComposeElement(static_cast<float>(k), fY, obSecond, fNoSource, pfResultX[k], pfResultY[k]);
      }
      continue;
    }
    _mm_storeu_ps(pfResultX + X, vResultX);
    _mm_storeu_ps(pfResultY + X, vResultY);
  }
  for (; X < nTo; ++X) {
    ComposeElement(static_cast<float>(X), fY, obSecond, fNoSource, pfResultX[X], pfResultY[X]);
  }
}

// The columns of a first map whose rows hold the same x positions (a scale map: each output
// column samples the same intermediate columns in every row), worked out once from one row: per
// column whether it can have a source at all (the x half of ComposeElement's test), its left
// corner, whether its right corner is the next column (the position lies above its floor), and
// the x parts of its weights, as ComposeElement forms them. A row of the first map with these x
// positions and one height in every column that can have a source is then composed with the
// row's weights formed once (a column that cannot have none whatever its height).
class AcrossColumns {
public:
  AcrossColumns(const float* pfRowX, int nCols, const SecondMap& obSecond)
      : m_pfRowX(pfRowX), m_nCols(nCols), m_anLeft(nCols), m_anAbove(nCols), m_afFraction(nCols),
        m_afRest(nCols), m_aeQuad(static_cast<std::size_t>(nCols / 4)) {
    std::vector<bool> abInside(static_cast<std::size_t>(nCols));
    for (int k = 0; k < nCols; ++k) {
      int nLeft = 0, nRight = 0;
      abInside[k] = Span(pfRowX[k], obSecond.fWidth, nLeft, nRight) && nRight < obSecond.nWidth;
      if (abInside[k]) m_anInside.push_back(k);
      m_anLeft[k] = abInside[k] ? nLeft : 0;
      m_anAbove[k] = abInside[k] && nRight > nLeft ? -1 : 0;
      m_afFraction[k] = abInside[k] ? pfRowX[k] - static_cast<float>(nLeft) : 0.0f;
      m_afRest[k] = 1.0f - m_afFraction[k];
    }
    for (std::size_t q = 0; q < m_aeQuad.size(); ++q) {
      bool bInside = true, bPairs = true;
      for (std::size_t k = 4 * q; k < 4 * q + 4; ++k) {
        bInside = bInside && abInside[k];
        bPairs = bPairs && m_anLeft[k] < obSecond.nWidth - 1;
      }
      m_aeQuad[q] = !bInside ? QUAD_ONE_BY_ONE : bPairs ? QUAD_PAIRS : QUAD_GATHERED;
    }
  }

  // Whether a row of the first map holds these columns' x positions, bit for bit, and one height
  // (the same bits) in every column that can have a source.
  bool Holds(const float* pfRowX, const float* pfRowY) const {
    if (std::memcmp(pfRowX, m_pfRowX, static_cast<std::size_t>(m_nCols) * sizeof(float)) != 0) return false;
    return std::all_of(m_anInside.begin(), m_anInside.end(), [pfRowY, this](int k) {
      return std::memcmp(pfRowY + k, pfRowY + m_anInside.front(), sizeof(float)) == 0;
    });
  }

  // A row that Holds: ComposeElement's values, four at a time where all four columns can have a
  // source and none blends to NaN (as ComposeQuad), one by one at the row's own positions
  // otherwise.
  void Compose(const float* pfRowY, const SecondMap& obSecond, float fNoSource, float* pfResultX,
               float* pfResultY) const {
    int nTop = 0, nBottom = 0;
    const float fY = m_anInside.empty() ? 0.0f : pfRowY[m_anInside.front()];
    if (m_anInside.empty() || !Span(fY, obSecond.fHeight, nTop, nBottom) || nBottom >= obSecond.nHeight) {
      for (int k = 0; k < m_nCols; ++k) pfResultX[k] = pfResultY[k] = fNoSource;
      return;
    }
    const float fFractionY = fY - static_cast<float>(nTop);
    const __m128 vFractionY = _mm_set1_ps(fFractionY), vRestY = _mm_set1_ps(1.0f - fFractionY);
    const __m128i viTopRow = _mm_set1_epi32(nTop * obSecond.nWidth);
    const __m128i viBottomRow = _mm_set1_epi32(nBottom * obSecond.nWidth);
    for (std::size_t q = 0; q < m_aeQuad.size(); ++q) {
      const int k = static_cast<int>(4 * q);
      if (m_aeQuad[q] == QUAD_ONE_BY_ONE || !BlendQuad(k, m_aeQuad[q] == QUAD_PAIRS, vFractionY, vRestY, viTopRow,
                                                       viBottomRow, obSecond, pfResultX, pfResultY)) {
        for (int i = k; i < k + 4; ++i) {
          ComposeElement(m_pfRowX[i], pfRowY[i], obSecond, fNoSource, pfResultX[i], pfResultY[i]);
        }
      }
    }
    for (int i = static_cast<int>(4 * m_aeQuad.size()); i < m_nCols; ++i) {
      ComposeElement(m_pfRowX[i], pfRowY[i], obSecond, fNoSource, pfResultX[i], pfResultY[i]);
    }
  }

private:
  enum QuadKind : unsigned char { QUAD_ONE_BY_ONE, QUAD_PAIRS, QUAD_GATHERED };

  // Columns k to k + 3 (all with a source): stored and true, or nothing written and false when a
  // blend is NaN.
  bool BlendQuad(int k, bool bPairs, __m128 vFractionY, __m128 vRestY, __m128i viTopRow, __m128i viBottomRow,
                 const SecondMap& obSecond, float* pfResultX, float* pfResultY) const {
    const __m128 vFractionX = _mm_loadu_ps(&m_afFraction[k]), vRestX = _mm_loadu_ps(&m_afRest[k]);
    Quad obWeights;
    obWeights.vTopLeft = _mm_mul_ps(vRestX, vRestY);
    obWeights.vTopRight = _mm_mul_ps(vFractionX, vRestY);
    obWeights.vBottomLeft = _mm_mul_ps(vRestX, vFractionY);
    obWeights.vBottomRight = _mm_mul_ps(vFractionX, vFractionY);
    const __m128i viLeft = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&m_anLeft[k]));
    const __m128i viAbove = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&m_anAbove[k]));
    const __m128i viRight = _mm_sub_epi32(viLeft, viAbove);
    alignas(16) int anCorners[4][4];
    StoreCorners(viTopRow, viBottomRow, viLeft, viRight, anCorners);
    const __m128 vAbove = _mm_castsi128_ps(viAbove);
    const __m128 vResultX = Blend(obWeights, GatherCorners(obSecond.pfX, anCorners, bPairs, vAbove));
    const __m128 vResultY = Blend(obWeights, GatherCorners(obSecond.pfY, anCorners, bPairs, vAbove));
    if (_mm_movemask_ps(_mm_cmpunord_ps(vResultX, vResultY)) != 0) return false;
    _mm_storeu_ps(pfResultX + k, vResultX);
    _mm_storeu_ps(pfResultY + k, vResultY);
    return true;
  }

  const float* m_pfRowX;
  int m_nCols;
  std::vector<int> m_anInside;  // the columns that can have a source
  std::vector<int> m_anLeft, m_anAbove;
  std::vector<float> m_afFraction, m_afRest;
  std::vector<QuadKind> m_aeQuad;
};

// Whether no position of a row lies across the second map (each x outside [0, width) or not a
// number, where Span fails): then no element of the row has a source, whatever its height, as
// in the letterbox bands of a scale map.
bool NoColumnInside(const float* pfRowX, int nCols, float fWidth) {
  const __m128 vZero = _mm_setzero_ps(), vWidth = _mm_set1_ps(fWidth);
  int k = 0;
  for (; k + 4 <= nCols; k += 4) {
    const __m128 vX = _mm_loadu_ps(pfRowX + k);
    if (_mm_movemask_ps(_mm_and_ps(_mm_cmpge_ps(vX, vZero), _mm_cmplt_ps(vX, vWidth))) != 0) return false;
  }
  for (; k < nCols; ++k) {
    if (pfRowX[k] >= 0.0f && pfRowX[k] < fWidth) return false;
  }
  return true;
}

}  // namespace

// Rows whose x positions are those of the middle row and whose height is one throughout are
// composed across the columns worked out once (the middle row: a scale map's first row, and the
// rows of its letterbox bands, hold no positions); a row none of whose positions lies across
// the second map (a letterbox band) has no source; any other row as ComposeRow composes it.
void MapRows::ComposeRows(const MapPlanes& obFirst, int nRows, int nCols, const MapPlanes& obSecond,
                          const Vector2d& obIntermediateResolution, const MapPlanes& obResult) {
  if (nRows <= 0 || nCols <= 0) return;
  const SecondMap obSampled = {obSecond.pfX, obSecond.pfY, obSecond.nWidth, obSecond.nHeight,
                               obIntermediateResolution.X, obIntermediateResolution.Y};
  const float fNoSource = NoSource();
  const AcrossColumns obColumns(obFirst.pfX + (nRows / 2) * obFirst.nWidth, nCols, obSampled);
  for (int Y = 0; Y < nRows; ++Y) {
    const float* const pfRowX = obFirst.pfX + Y * obFirst.nWidth;
    const float* const pfRowY = obFirst.pfY + Y * obFirst.nWidth;
    float* const pfResultX = obResult.pfX + Y * obResult.nWidth;
    float* const pfResultY = obResult.pfY + Y * obResult.nWidth;
    if (obColumns.Holds(pfRowX, pfRowY)) {
      obColumns.Compose(pfRowY, obSampled, fNoSource, pfResultX, pfResultY);
    } else if (NoColumnInside(pfRowX, nCols, obSampled.fWidth)) {
      std::fill(pfResultX, pfResultX + nCols, fNoSource);
      std::fill(pfResultY, pfResultY + nCols, fNoSource);
    } else {
      ComposeRow(pfRowX, pfRowY, nCols, obSecond, obIntermediateResolution, pfResultX, pfResultY);
    }
  }
}

// Every element's position is a whole column, so its corners are one element each of two rows;
// the columns inside the second map are blended a run at a time, the others have no source.
void MapRows::ComposeRunRow(float fY, int nCols, const MapPlanes& obSecond, const Vector2d& obIntermediateResolution,
                            float* pfResultX, float* pfResultY) {
  const SecondMap obSampled = {obSecond.pfX, obSecond.pfY, obSecond.nWidth, obSecond.nHeight,
                               obIntermediateResolution.X, obIntermediateResolution.Y};
  const float fNoSource = NoSource();
  int nTop = 0, nBottom = 0, nInside = 0;
  if (Span(fY, obSampled.fHeight, nTop, nBottom) && nBottom < obSampled.nHeight) {
    // Column X has a source where X < the image's width (Span) and X < the stored width.
    nInside = nCols < obSampled.nWidth ? nCols : obSampled.nWidth;
    while (nInside > 0 && !(static_cast<float>(nInside - 1) < obSampled.fWidth)) --nInside;
  }
  if (nInside > 0) {
    BlendRunRows(obSampled, nTop, nBottom, fY, fY - static_cast<float>(nTop), 0, nInside, fNoSource, pfResultX,
                 pfResultY);
  }
  for (int X = nInside; X < nCols; ++X) {
    pfResultX[X] = fNoSource;
    pfResultY[X] = fNoSource;
  }
}

// Four elements at a time with SSE2 where that gives the scalar values, otherwise (the rest of
// the row, and the quads ComposeQuad leaves) one by one.
void MapRows::ComposeRow(const float* pfFirstX, const float* pfFirstY, int nCols, const MapPlanes& obSecond,
                         const Vector2d& obIntermediateResolution, float* pfResultX, float* pfResultY) {
  const SecondMap obSampled = {obSecond.pfX, obSecond.pfY, obSecond.nWidth, obSecond.nHeight,
                               obIntermediateResolution.X, obIntermediateResolution.Y};
  const float fNoSource = NoSource();
  // SpanQuad agrees with Span for limits up to 2^31; other limits leave every element to
  // ComposeElement.
  const float fIntRange = 2147483648.0f;
  const bool bQuads = obSampled.fWidth <= fIntRange && obSampled.fHeight <= fIntRange;
  int X = 0;
  while (X < nCols) {
    if (bQuads && nCols - X >= 4 &&
        ComposeQuad(pfFirstX + X, pfFirstY + X, obSampled, fNoSource, pfResultX + X, pfResultY + X)) {
      X += 4;
      continue;
    }
    const int nEnd = nCols - X < 4 ? nCols : X + 4;
    for (; X < nEnd; ++X) {
      ComposeElement(pfFirstX[X], pfFirstY[X], obSampled, fNoSource, pfResultX[X], pfResultY[X]);
    }
  }
}

}  // namespace libdewarp
}  // namespace vemo
