// Cubic interpolation of lattice cells: the fill of a cell from the sixteen crossings around it,
// for maps that bend too much within a cell for its four corners alone. A panorama's map, for
// one, follows the fisheye's circles: the bilinear guess at the middle of a cell 32 pixels across
// misses by up to 2 source pixels, the cubic one by a few hundredths.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <vector>

namespace vemo {
namespace libdewarp {
namespace lattice_cubic {

// The four weights of cubic Lagrange interpolation between equally spaced values at -1, 0, 1 and
// 2, at the fraction t of the way from 0 to 1. They are formed the same way wherever they are
// used, so that the check of a cell's middle and its fill compute the same value.
struct Weights {
  float w[4];
};

inline Weights At(float t) {
  const float a = t + 1.0f, b = t - 1.0f, c = t - 2.0f;
  return Weights{{-(t * b * c) / 6.0f, (a * b * c) / 2.0f, -(a * t * c) / 2.0f, (a * t * b) / 6.0f}};
}

// The interpolated value of four equally spaced values, in one fixed order of operations.
inline float Blend(const Weights& obWeights, float v0, float v1, float v2, float v3) {
  return ((obWeights.w[0] * v0 + obWeights.w[1] * v1) + obWeights.w[2] * v2) + obWeights.w[3] * v3;
}

// The weights at the fractions k / nSteps (k = 0 ... nSteps), one array per weight so that a row
// fill is four plain loops over contiguous arrays; kept for the last number of steps asked for,
// since the cells of one lattice share their size.
class StepWeights {
public:
  void For(int nSteps) {
    if (nSteps == m_nSteps) return;
    m_nSteps = nSteps;
    for (std::vector<float>& afWeight : m_aafWeight) afWeight.resize(static_cast<std::size_t>(nSteps) + 1);
    for (int k = 0; k <= nSteps; ++k) {
      const Weights obWeights = At(Fraction(k, nSteps));
      for (int n = 0; n < 4; ++n) m_aafWeight[n][k] = obWeights.w[n];
    }
  }
  const float* Weight(int n) const { return m_aafWeight[n].data(); }

  // The fraction of step k of nSteps, formed as the check of a cell's middle forms it.
  static float Fraction(int k, int nSteps) { return static_cast<float>(k) / static_cast<float>(nSteps); }

private:
  int m_nSteps = -1;
  std::vector<float> m_aafWeight[4];
};

// One row of a cell nSteps wide: the ends take the two middle values as they are (so that a
// crossing is stored exactly), the elements between them the interpolation of the four values,
// four at a time from the left end on (the same operations per element; the left end's lane is
// then overwritten with the end itself).
inline void FillRow(float* pfRow, int nSteps, const StepWeights& obWeights, float v0, float v1, float v2, float v3) {
  const float* const w0 = obWeights.Weight(0);
  const float* const w1 = obWeights.Weight(1);
  const float* const w2 = obWeights.Weight(2);
  const float* const w3 = obWeights.Weight(3);
  const __m128 vV0 = _mm_set1_ps(v0), vV1 = _mm_set1_ps(v1), vV2 = _mm_set1_ps(v2), vV3 = _mm_set1_ps(v3);
  int k = 0;
  for (; k + 4 <= nSteps; k += 4) {
    const __m128 vFirst = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(w0 + k), vV0), _mm_mul_ps(_mm_loadu_ps(w1 + k), vV1));
    const __m128 vThird = _mm_add_ps(vFirst, _mm_mul_ps(_mm_loadu_ps(w2 + k), vV2));
    _mm_storeu_ps(pfRow + k, _mm_add_ps(vThird, _mm_mul_ps(_mm_loadu_ps(w3 + k), vV3)));
  }
  for (; k < nSteps; ++k) {
    pfRow[k] = ((w0[k] * v0 + w1[k] * v1) + w2[k] * v2) + w3[k] * v3;
  }
  pfRow[0] = v1;
  pfRow[nSteps] = v2;
}

}  // namespace lattice_cubic
}  // namespace libdewarp
}  // namespace vemo
