// AVX-512 kernel of the bilinear 4:2:0 remap: two neighbouring groups of the group table
// (thirty-two columns, sixteen blocks of a row pair) at once, each lane computing exactly what
// the scalar kernel computes for one pixel, operation for operation in single precision, with
// the same truncation, so the bytes are the same. Runs only where the processor has AVX-512
// (foundation, byte and word, double and quad word, vector length; the caller checks once per
// frame). A pair of groups with a block outside the picture goes group by group through the
// AVX2 kernel, and from there block by block through the scalar one.
#include "remap_420_groups.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

// GCC's own AVX-512 headers start some results from a deliberately undefined vector, which its
// flow analysis reports as possibly uninitialised.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

namespace vemo {
namespace libdewarp {
namespace remap420 {

namespace {

// Every function of this file is compiled for AVX-512 (and only these: the inline functions of
// the headers keep the baseline instruction set). The kernels are inlined into the row loop.
#define DEWARP_AVX512_TARGET target("avx2,avx512f,avx512bw,avx512dq,avx512vl")
#define DEWARP_AVX512_INLINE inline __attribute__((always_inline, DEWARP_AVX512_TARGET))

// Eight lanes of the first group and eight of the second, from the same place in each.
DEWARP_AVX512_INLINE __m512 Load16(const float* first, const float* second) {
  return _mm512_insertf32x8(_mm512_castps256_ps512(_mm256_loadu_ps(first)), _mm256_loadu_ps(second), 1);
}

// Sixteen pixels of the bilinear path: integer positions, the four weights and the luma blend.
struct Lanes16 {
  __m512i xi, yi;
  __m512 w0, w1, w2, w3;
  __m512i luma;
};

// Byte k (0 or 1) of each 32-bit lane as a float.
DEWARP_AVX512_INLINE __m512 ByteAsFloat16(__m512i lanes, int k) {
  const __m512i shifted = k == 0 ? lanes : _mm512_srli_epi32(lanes, 8 * k);
  return _mm512_cvtepi32_ps(_mm512_and_si512(shifted, _mm512_set1_epi32(0xFF)));
}

// Pixels at offset `at` of both groups (x there, y eight floats further; all inside the
// interpolable area).
DEWARP_AVX512_INLINE Lanes16 Pixels16(const Planes& s, const float* g0, const float* g1, int at, __m512i stride) {
  Lanes16 p;
  const __m512 vx = Load16(g0 + at, g1 + at);
  const __m512 vy = Load16(g0 + at + 8, g1 + at + 8);
  p.xi = _mm512_cvttps_epi32(vx);
  p.yi = _mm512_cvttps_epi32(vy);
  const __m512 fx = _mm512_sub_ps(vx, _mm512_cvtepi32_ps(p.xi));
  const __m512 fy = _mm512_sub_ps(vy, _mm512_cvtepi32_ps(p.yi));
  const __m512 one = _mm512_set1_ps(1.0f);
  const __m512 gx = _mm512_sub_ps(one, fx);
  const __m512 gy = _mm512_sub_ps(one, fy);
  p.w0 = _mm512_mul_ps(gx, gy);
  p.w1 = _mm512_mul_ps(fx, gy);
  p.w2 = _mm512_mul_ps(gx, fy);
  p.w3 = _mm512_mul_ps(fx, fy);
  // Four bytes from each sample on, in its row and in the row below (the two past the
  // neighbours stay inside the frame, as for the AVX2 kernel).
  const __m512i offsets = _mm512_add_epi32(_mm512_mullo_epi32(p.yi, stride), p.xi);
  const __m512i row = _mm512_i32gather_epi32(offsets, s.y, 1);
  const __m512i below = _mm512_i32gather_epi32(offsets, s.y + s.stride, 1);
  // w0 P(x, y) + w1 P(x, y + 1) + w2 P(x + 1, y) + w3 P(x + 1, y + 1), in that order.
  __m512 value = _mm512_mul_ps(p.w0, ByteAsFloat16(row, 0));
  value = _mm512_add_ps(value, _mm512_mul_ps(p.w1, ByteAsFloat16(below, 0)));
  value = _mm512_add_ps(value, _mm512_mul_ps(p.w2, ByteAsFloat16(row, 1)));
  value = _mm512_add_ps(value, _mm512_mul_ps(p.w3, ByteAsFloat16(below, 1)));
  p.luma = _mm512_cvttps_epi32(value);
  return p;
}

// Chroma samples at sixteen offsets as floats, each read as the last of four bytes (no read
// past the sample).
DEWARP_AVX512_INLINE __m512 ChromaSamples16(const std::uint8_t* plane, __m512i offsets) {
  return _mm512_cvtepi32_ps(_mm512_srli_epi32(_mm512_i32gather_epi32(offsets, plane - 3, 1), 24));
}

DEWARP_AVX512_INLINE __m512i BlendChroma16(const Lanes16& tl, const std::uint8_t* plane, const __m512i* offsets) {
  __m512 value = _mm512_mul_ps(tl.w0, ChromaSamples16(plane, offsets[0]));
  value = _mm512_add_ps(value, _mm512_mul_ps(tl.w1, ChromaSamples16(plane, offsets[1])));
  value = _mm512_add_ps(value, _mm512_mul_ps(tl.w2, ChromaSamples16(plane, offsets[2])));
  value = _mm512_add_ps(value, _mm512_mul_ps(tl.w3, ChromaSamples16(plane, offsets[3])));
  return _mm512_cvttps_epi32(value);
}

// Luma of the even and odd columns of both groups (lanes 0 to 255) as thirty-two consecutive
// bytes.
DEWARP_AVX512_INLINE void StoreInterleaved32(std::uint8_t* out, __m512i even, __m512i odd) {
  const __m128i e = _mm512_cvtepi32_epi8(even);
  const __m128i o = _mm512_cvtepi32_epi8(odd);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(e, o));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), _mm_unpackhi_epi8(e, o));
}

// Columns c .. c + 31 of a row pair from groups g0 (columns c ..) and g1 (columns c + 16 ..);
// false (nothing written) when a block of either lies outside the picture.
DEWARP_AVX512_INLINE bool Group32(const Planes& s, const RowPair& o, const float* g0, const float* g1,
                                  std::uint32_t c, __m512i stride, __m512i blocks) {
  const __m512 marker = _mm512_set1_ps(Map::s_fBilinearOutside);
  const __mmask16 bad = _mm512_cmp_ps_mask(Load16(g0, g1), marker, _CMP_EQ_OQ) |
                        _mm512_cmp_ps_mask(Load16(g0 + 56, g1 + 56), marker, _CMP_EQ_OQ);
  if (bad != 0) {
    return false;
  }
  const Lanes16 tl = Pixels16(s, g0, g1, 0, stride);
  const Lanes16 tr = Pixels16(s, g0, g1, 16, stride);
  StoreInterleaved32(o.y0 + c, tl.luma, tr.luma);
  const Lanes16 bl = Pixels16(s, g0, g1, 32, stride);
  const Lanes16 br = Pixels16(s, g0, g1, 48, stride);
  StoreInterleaved32(o.y1 + c, bl.luma, br.luma);
  // Chroma offsets of the four pixels of each block: top-left (yi/2, xi/2), bottom-left
  // (yi/2, (xi+1)/2), top-right ((yi+1)/2, xi/2), bottom-right ((yi+1)/2, (xi+1)/2).
  const __m512i one = _mm512_set1_epi32(1);
  const __m512i offsets[4] = {
      _mm512_add_epi32(_mm512_mullo_epi32(_mm512_srli_epi32(tl.yi, 1), blocks), _mm512_srli_epi32(tl.xi, 1)),
      _mm512_add_epi32(_mm512_mullo_epi32(_mm512_srli_epi32(bl.yi, 1), blocks),
                       _mm512_srli_epi32(_mm512_add_epi32(bl.xi, one), 1)),
      _mm512_add_epi32(_mm512_mullo_epi32(_mm512_srli_epi32(_mm512_add_epi32(tr.yi, one), 1), blocks),
                       _mm512_srli_epi32(tr.xi, 1)),
      _mm512_add_epi32(_mm512_mullo_epi32(_mm512_srli_epi32(_mm512_add_epi32(br.yi, one), 1), blocks),
                       _mm512_srli_epi32(_mm512_add_epi32(br.xi, one), 1))};
  _mm_storeu_si128(reinterpret_cast<__m128i*>(o.u + c / 2), _mm512_cvtepi32_epi8(BlendChroma16(tl, s.u, offsets)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(o.v + c / 2), _mm512_cvtepi32_epi8(BlendChroma16(tl, s.v, offsets)));
  return true;
}

}  // namespace

__attribute__((DEWARP_AVX512_TARGET)) void BilinearGroupRowsAvx512(const GroupWalk& w) {
  const __m512i stride = _mm512_set1_epi32(static_cast<int>(w.s.stride));
  const __m512i blocks = _mm512_set1_epi32(static_cast<int>(w.s.blocks));
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    std::size_t g = 0;
    for (; g + 2 <= w.groups; g += 2) {
      const std::uint32_t c = static_cast<std::uint32_t>(g * Map::s_uBilinearGroupColumns);
      if (!Group32(w.s, o, w.Group(r, g), w.Group(r, g + 1), c, stride, blocks)) {
        BilinearGroupAvx2(w, o, w.Group(r, g), c);
        BilinearGroupAvx2(w, o, w.Group(r, g + 1), c + Map::s_uBilinearGroupColumns);
      }
    }
    if (g < w.groups) {
      BilinearGroupAvx2(w, o, w.Group(r, g), static_cast<std::uint32_t>(g * Map::s_uBilinearGroupColumns));
    }
  }
  // Clean upper halves for the SSE code that runs next.
  _mm256_zeroupper();
}

#undef DEWARP_AVX512_INLINE
#undef DEWARP_AVX512_TARGET

}  // namespace remap420
}  // namespace libdewarp
}  // namespace vemo

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
