// Forming one row of a bilinear group (see Map::GetBilinearGroupBuffer for the table's layout)
// from a map's float tables, shared by the table's build and the remap walk that forms the table
// on the way (private to the library's sources).
#pragma once

#include <libdewarp_vemo/map.h>

#include <emmintrin.h>

namespace vemo {
namespace libdewarp {

// Bounds of the interpolable area: 0 <= x < maxX and 0 <= y < maxY (a NaN fails both).
struct BilinearBounds {
  float maxX;
  float maxY;
  bool Inside(float x, float y) const { return x >= 0.0f && x < maxX && y >= 0.0f && y < maxY; }
};

// One row of a group (16 pixels, eight pairs) from the float tables at x and y: even pixels'
// x and y, odd pixels' x and y, each pair kept only when both its pixels are inside.
inline void FillGroupRow(float* out, const float* x, const float* y, const BilinearBounds& bounds) {
  const __m128 zero = _mm_setzero_ps();
  const __m128 maxX = _mm_set1_ps(bounds.maxX);
  const __m128 maxY = _mm_set1_ps(bounds.maxY);
  const __m128 marker = _mm_set1_ps(Map::s_fBilinearOutside);
  for (int h = 0; h < 2; ++h) {
    const __m128 x0 = _mm_loadu_ps(x + 8 * h), x1 = _mm_loadu_ps(x + 8 * h + 4);
    const __m128 y0 = _mm_loadu_ps(y + 8 * h), y1 = _mm_loadu_ps(y + 8 * h + 4);
    const __m128 in0 = _mm_and_ps(_mm_and_ps(_mm_cmpge_ps(x0, zero), _mm_cmplt_ps(x0, maxX)),
                                  _mm_and_ps(_mm_cmpge_ps(y0, zero), _mm_cmplt_ps(y0, maxY)));
    const __m128 in1 = _mm_and_ps(_mm_and_ps(_mm_cmpge_ps(x1, zero), _mm_cmplt_ps(x1, maxX)),
                                  _mm_and_ps(_mm_cmpge_ps(y1, zero), _mm_cmplt_ps(y1, maxY)));
    const __m128 pair = _mm_and_ps(_mm_shuffle_ps(in0, in1, _MM_SHUFFLE(2, 0, 2, 0)),
                                   _mm_shuffle_ps(in0, in1, _MM_SHUFFLE(3, 1, 3, 1)));
    const __m128 outside = _mm_andnot_ps(pair, marker);
    const __m128 values[4] = {_mm_shuffle_ps(x0, x1, _MM_SHUFFLE(2, 0, 2, 0)),
                              _mm_shuffle_ps(y0, y1, _MM_SHUFFLE(2, 0, 2, 0)),
                              _mm_shuffle_ps(x0, x1, _MM_SHUFFLE(3, 1, 3, 1)),
                              _mm_shuffle_ps(y0, y1, _MM_SHUFFLE(3, 1, 3, 1))};
    for (int k = 0; k < 4; ++k) {
      _mm_storeu_ps(out + 8 * k + 4 * h, _mm_or_ps(_mm_and_ps(pair, values[k]), outside));
    }
  }
}

}  // namespace libdewarp
}  // namespace vemo
