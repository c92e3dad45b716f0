// AVX2 kernel of the bilinear 4:2:0 remap: eight blocks (sixteen columns of a row pair) at
// once, over the group table of Map::GetBilinearGroupBuffer. The lanes compute exactly what
// the scalar kernel computes for one pixel, operation for operation in single precision, and
// truncate the same way, so the bytes are the same; only the number of pixels per instruction
// differs. Runs only where the processor has AVX2 (the caller checks once per frame).
#include "remap_420_groups.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vemo {
namespace libdewarp {
namespace remap420 {

namespace {

// Every function of this file is compiled for AVX2 (and only these: the inline functions of the
// headers keep the baseline instruction set). The kernels are inlined into the row loop, so that
// their vectors stay in registers.
#define DEWARP_AVX2_INLINE inline __attribute__((always_inline, target("avx2")))

// Eight pixels of the bilinear path: integer positions, the four weights and the luma blend.
struct Lanes8 {
  __m256i xi, yi;
  __m256 w0, w1, w2, w3;
  __m256i luma;
};

// Byte k (0 or 1) of each 32-bit lane as a float.
DEWARP_AVX2_INLINE __m256 ByteAsFloat8(__m256i lanes, int k) {
  const __m256i shifted = k == 0 ? lanes : _mm256_srli_epi32(lanes, 8 * k);
  return _mm256_cvtepi32_ps(_mm256_and_si256(shifted, _mm256_set1_epi32(0xFF)));
}

// The samples are read with eight plain loads per vector rather than a gather instruction:
// where gathers are microcoded, as on AMD's processors, the loads are faster (a 1920 x 1080
// frame took 5.3 ms against 6.3 ms with gathers on an AMD EPYC; bench/remap_bench).

// The offsets of the lanes, for plain loads.
struct Offsets8 {
  alignas(32) std::uint32_t o[8];
};
DEWARP_AVX2_INLINE Offsets8 LaneOffsets(__m256i offsets) {
  Offsets8 lanes;
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.o), offsets);
  return lanes;
}

// Four bytes from p on, as one 32-bit value (first byte lowest).
inline int Load32(const std::uint8_t* p) {
  int value;
  std::memcpy(&value, p, 4);
  return value;
}

// The four bytes from each lane's offset on, one 32-bit lane each.
DEWARP_AVX2_INLINE __m256i Words8(const std::uint8_t* plane, const Offsets8& l) {
  return _mm256_setr_epi32(Load32(plane + l.o[0]), Load32(plane + l.o[1]), Load32(plane + l.o[2]),
                           Load32(plane + l.o[3]), Load32(plane + l.o[4]), Load32(plane + l.o[5]),
                           Load32(plane + l.o[6]), Load32(plane + l.o[7]));
}

// Pixels whose positions are vx, vy (all inside the interpolable area).
DEWARP_AVX2_INLINE Lanes8 Pixels8(const Planes& s, __m256 vx, __m256 vy, __m256i stride) {
  Lanes8 p;
  p.xi = _mm256_cvttps_epi32(vx);
  p.yi = _mm256_cvttps_epi32(vy);
  const __m256 fx = _mm256_sub_ps(vx, _mm256_cvtepi32_ps(p.xi));
  const __m256 fy = _mm256_sub_ps(vy, _mm256_cvtepi32_ps(p.yi));
  const __m256 one = _mm256_set1_ps(1.0f);
  const __m256 gx = _mm256_sub_ps(one, fx);
  const __m256 gy = _mm256_sub_ps(one, fy);
  p.w0 = _mm256_mul_ps(gx, gy);
  p.w1 = _mm256_mul_ps(fx, gy);
  p.w2 = _mm256_mul_ps(gx, fy);
  p.w3 = _mm256_mul_ps(fx, fy);
  // Four bytes from each sample on, in its row and in the row below: P(x, y) and P(x + 1, y)
  // are the low two bytes of the first, P(x, y + 1) and P(x + 1, y + 1) of the second. The two
  // bytes past them stay inside the frame: x + 1 is at most width - 1 and the chroma planes
  // follow the last luma row.
  const Offsets8 offsets = LaneOffsets(_mm256_add_epi32(_mm256_mullo_epi32(p.yi, stride), p.xi));
  const __m256i row = Words8(s.y, offsets);
  const __m256i below = Words8(s.y + s.stride, offsets);
  // w0 P(x, y) + w1 P(x, y + 1) + w2 P(x + 1, y) + w3 P(x + 1, y + 1): the exchanged
  // off-diagonal weights of the scalar kernel, summed in the same order.
  __m256 value = _mm256_mul_ps(p.w0, ByteAsFloat8(row, 0));
  value = _mm256_add_ps(value, _mm256_mul_ps(p.w1, ByteAsFloat8(below, 0)));
  value = _mm256_add_ps(value, _mm256_mul_ps(p.w2, ByteAsFloat8(row, 1)));
  value = _mm256_add_ps(value, _mm256_mul_ps(p.w3, ByteAsFloat8(below, 1)));
  p.luma = _mm256_cvttps_epi32(value);
  return p;
}

// Chroma samples of a plane at eight offsets, as floats.
DEWARP_AVX2_INLINE __m256 ChromaSamples(const std::uint8_t* plane, const Offsets8& l) {
  return _mm256_cvtepi32_ps(_mm256_setr_epi32(plane[l.o[0]], plane[l.o[1]], plane[l.o[2]], plane[l.o[3]],
                                              plane[l.o[4]], plane[l.o[5]], plane[l.o[6]], plane[l.o[7]]));
}

// w0 c0 + w1 c1 + w2 c2 + w3 c3 in that order, truncated.
DEWARP_AVX2_INLINE __m256i BlendChroma8(const Lanes8& tl, const std::uint8_t* plane, const Offsets8* offsets) {
  __m256 value = _mm256_mul_ps(tl.w0, ChromaSamples(plane, offsets[0]));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w1, ChromaSamples(plane, offsets[1])));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w2, ChromaSamples(plane, offsets[2])));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w3, ChromaSamples(plane, offsets[3])));
  return _mm256_cvttps_epi32(value);
}

// Luma of eight even and eight odd columns (32-bit lanes, 0 to 255) as sixteen consecutive
// bytes e0 o0 e1 o1 ... e7 o7.
DEWARP_AVX2_INLINE void StoreInterleaved16(std::uint8_t* out, __m256i even, __m256i odd) {
  const __m256i words = _mm256_packs_epi32(even, odd);  // e0-3 o0-3 | e4-7 o4-7
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  const __m128i order = _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, order));
}

// Eight U and eight V values (32-bit lanes, 0 to 255) as eight bytes each.
DEWARP_AVX2_INLINE void StoreChroma(std::uint8_t* u, std::uint8_t* v, __m256i uLanes, __m256i vLanes) {
  const __m256i words = _mm256_packs_epi32(uLanes, vLanes);  // u0-3 v0-3 | u4-7 v4-7
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  const __m128i order = _mm_setr_epi8(0, 1, 2, 3, 8, 9, 10, 11, 4, 5, 6, 7, 12, 13, 14, 15);
  const __m128i planar = _mm_shuffle_epi8(bytes, order);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(u), planar);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(v), _mm_unpackhi_epi64(planar, planar));
}

// The eight vectors of a group, in its order: x and y of the even columns of the upper row, x
// and y of its odd columns, then the same for the lower row.
struct Group8 {
  __m256 v[8];
};

DEWARP_AVX2_INLINE Group8 LoadGroup(const float* g) {
  Group8 group;
  for (int k = 0; k < 8; ++k) group.v[k] = _mm256_loadu_ps(g + 8 * k);
  return group;
}

// Columns c .. c + 15 of a row pair from one group whose blocks all lie inside the picture.
DEWARP_AVX2_INLINE void Group16(const Planes& s, const RowPair& o, const Group8& g, std::uint32_t c, __m256i stride,
                                __m256i blocks) {
  const Lanes8 tl = Pixels8(s, g.v[0], g.v[1], stride);
  const Lanes8 tr = Pixels8(s, g.v[2], g.v[3], stride);
  StoreInterleaved16(o.y0 + c, tl.luma, tr.luma);
  const Lanes8 bl = Pixels8(s, g.v[4], g.v[5], stride);
  const Lanes8 br = Pixels8(s, g.v[6], g.v[7], stride);
  StoreInterleaved16(o.y1 + c, bl.luma, br.luma);
  // Chroma offsets of the four pixels of each block: top-left (yi/2, xi/2), bottom-left
  // (yi/2, (xi+1)/2), top-right ((yi+1)/2, xi/2), bottom-right ((yi+1)/2, (xi+1)/2).
  const __m256i one = _mm256_set1_epi32(1);
  const Offsets8 offsets[4] = {
      LaneOffsets(_mm256_add_epi32(_mm256_mullo_epi32(_mm256_srli_epi32(tl.yi, 1), blocks),
                                   _mm256_srli_epi32(tl.xi, 1))),
      LaneOffsets(_mm256_add_epi32(_mm256_mullo_epi32(_mm256_srli_epi32(bl.yi, 1), blocks),
                                   _mm256_srli_epi32(_mm256_add_epi32(bl.xi, one), 1))),
      LaneOffsets(_mm256_add_epi32(_mm256_mullo_epi32(_mm256_srli_epi32(_mm256_add_epi32(tr.yi, one), 1), blocks),
                                   _mm256_srli_epi32(tr.xi, 1))),
      LaneOffsets(_mm256_add_epi32(_mm256_mullo_epi32(_mm256_srli_epi32(_mm256_add_epi32(br.yi, one), 1), blocks),
                                   _mm256_srli_epi32(_mm256_add_epi32(br.xi, one), 1)))};
  StoreChroma(o.u + c / 2, o.v + c / 2, BlendChroma8(tl, s.u, offsets), BlendChroma8(tl, s.v, offsets));
}

// Columns c .. c + 15 of a row pair from the group at g; false (nothing written) when a block of
// the group lies outside the picture (its top pair or its bottom pair holds the marker).
DEWARP_AVX2_INLINE bool TableGroup16(const Planes& s, const RowPair& o, const float* g, std::uint32_t c,
                                     __m256i stride, __m256i blocks) {
  const __m256 marker = _mm256_set1_ps(Map::s_fBilinearOutside);
  const __m256 bad = _mm256_or_ps(_mm256_cmp_ps(_mm256_loadu_ps(g), marker, _CMP_EQ_OQ),
                                  _mm256_cmp_ps(_mm256_loadu_ps(g + 56), marker, _CMP_EQ_OQ));
  if (_mm256_movemask_ps(bad) != 0) {
    return false;
  }
  Group16(s, o, LoadGroup(g), c, stride, blocks);
  return true;
}

// Lanes 0, 2, 4, ... 14 and 1, 3, 5, ... 15 of the sixteen floats in a (first eight) and b.
DEWARP_AVX2_INLINE __m256 EvenLanes(__m256 a, __m256 b) {
  return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(_mm256_shuffle_ps(a, b, 0x88)), 0xD8));
}
DEWARP_AVX2_INLINE __m256 OddLanes(__m256 a, __m256 b) {
  return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(_mm256_shuffle_ps(a, b, 0xDD)), 0xD8));
}

// Bounds of the interpolable area, as Map::GetBilinearGroupBuffer tests them.
struct Bounds8 {
  __m256 maxX, maxY;
};

// Whether 0 <= x < maxX and 0 <= y < maxY, lane by lane (a NaN fails).
DEWARP_AVX2_INLINE __m256 Inside8(__m256 x, __m256 y, const Bounds8& b) {
  const __m256 zero = _mm256_setzero_ps();
  return _mm256_and_ps(_mm256_and_ps(_mm256_cmp_ps(x, zero, _CMP_GE_OQ), _mm256_cmp_ps(x, b.maxX, _CMP_LT_OQ)),
                       _mm256_and_ps(_mm256_cmp_ps(y, zero, _CMP_GE_OQ), _mm256_cmp_ps(y, b.maxY, _CMP_LT_OQ)));
}

// One row of a group from sixteen pixels' x and y, into v[0..3]: the even and the odd pixels' x
// and y, each pair kept only when both its pixels are inside, otherwise all four values the
// marker (the values and markers of Map::GetBilinearGroupBuffer). Returns the pairs kept.
DEWARP_AVX2_INLINE __m256 FormGroupRow(const float* x, const float* y, const Bounds8& b, __m256* v) {
  const __m256 x0 = _mm256_loadu_ps(x), x1 = _mm256_loadu_ps(x + 8);
  const __m256 y0 = _mm256_loadu_ps(y), y1 = _mm256_loadu_ps(y + 8);
  v[0] = EvenLanes(x0, x1);
  v[1] = EvenLanes(y0, y1);
  v[2] = OddLanes(x0, x1);
  v[3] = OddLanes(y0, y1);
  const __m256 pair = _mm256_and_ps(Inside8(v[0], v[1], b), Inside8(v[2], v[3], b));
  const __m256 outside = _mm256_andnot_ps(pair, _mm256_set1_ps(Map::s_fBilinearOutside));
  for (int k = 0; k < 4; ++k) v[k] = _mm256_or_ps(_mm256_and_ps(pair, v[k]), outside);
  return pair;
}

}  // namespace

__attribute__((target("avx2"))) void BilinearGroupAvx2(const GroupWalk& w, const RowPair& o, const float* group,
                                                        std::uint32_t c) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = _mm256_set1_epi32(static_cast<int>(w.s.blocks));
  if (!TableGroup16(w.s, o, group, c, stride, blocks)) {
    BilinearGroupByBlocks(w, o, group, c);
  }
}

__attribute__((target("avx2"))) void BilinearGroupRowsAvx2(const GroupWalk& w) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = _mm256_set1_epi32(static_cast<int>(w.s.blocks));
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    for (std::size_t g = 0; g < w.groups; ++g) {
      const float* group = w.Group(r, g);
      const std::uint32_t c = static_cast<std::uint32_t>(g * Map::s_uBilinearGroupColumns);
      if (!TableGroup16(w.s, o, group, c, stride, blocks)) {
        BilinearGroupByBlocks(w, o, group, c);
      }
    }
  }
  // Clean upper halves for the SSE code that runs next (no penalty for mixing the two).
  _mm256_zeroupper();
}

__attribute__((target("avx2"))) void BilinearFormGroupsRowsAvx2(const GroupWalk& w, const float* x, const float* y,
                                                                 float maxX, float maxY, float* table) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = _mm256_set1_epi32(static_cast<int>(w.s.blocks));
  const Bounds8 bounds = {_mm256_set1_ps(maxX), _mm256_set1_ps(maxY)};
  const std::size_t cols = w.groups * Map::s_uBilinearGroupColumns;
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    const float* const x0 = x + 2 * r * cols;
    const float* const y0 = y + 2 * r * cols;
    for (std::size_t g = 0; g < w.groups; ++g) {
      const std::size_t first = g * Map::s_uBilinearGroupColumns;
      Group8 group;
      const __m256 upper = FormGroupRow(x0 + first, y0 + first, bounds, group.v);
      const __m256 lower = FormGroupRow(x0 + cols + first, y0 + cols + first, bounds, group.v + 4);
      float* const stored = table + (r * w.groups + g) * Map::s_uBilinearGroupFloats;
      for (int k = 0; k < 8; ++k) _mm256_storeu_ps(stored + 8 * k, group.v[k]);
      const std::uint32_t c = static_cast<std::uint32_t>(first);
      if (_mm256_movemask_ps(_mm256_and_ps(upper, lower)) == 0xFF) {
        Group16(w.s, o, group, c, stride, blocks);
      } else {
        BilinearGroupByBlocks(w, o, stored, c);
      }
    }
  }
  _mm256_zeroupper();
}

#undef DEWARP_AVX2_INLINE

}  // namespace remap420
}  // namespace libdewarp
}  // namespace vemo
