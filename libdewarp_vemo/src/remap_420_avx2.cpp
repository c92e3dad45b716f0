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

// Eight pixels of the bilinear path: integer positions and the four weights.
struct Weights8 {
  __m256i xi, yi;
  __m256 w0, w1, w2, w3;
};

// The same, with the luma blend.
struct Lanes8 : Weights8 {
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

// Integer positions and weights of the pixels whose positions are vx, vy.
DEWARP_AVX2_INLINE Weights8 Weigh8(__m256 vx, __m256 vy) {
  Weights8 p;
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
  return p;
}

// Pixels whose positions are vx, vy (all inside the interpolable area).
DEWARP_AVX2_INLINE Lanes8 Pixels8(const Planes& s, __m256 vx, __m256 vy, __m256i stride) {
  Lanes8 p;
  static_cast<Weights8&>(p) = Weigh8(vx, vy);
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
DEWARP_AVX2_INLINE __m256i BlendChroma8(const Weights8& tl, const std::uint8_t* plane, const Offsets8* offsets) {
  __m256 value = _mm256_mul_ps(tl.w0, ChromaSamples(plane, offsets[0]));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w1, ChromaSamples(plane, offsets[1])));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w2, ChromaSamples(plane, offsets[2])));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w3, ChromaSamples(plane, offsets[3])));
  return _mm256_cvttps_epi32(value);
}

// Luma of eight even and eight odd columns (32-bit lanes, 0 to 255) as sixteen consecutive
// bytes e0 o0 e1 o1 ... e7 o7.
DEWARP_AVX2_INLINE __m128i Interleaved16(__m256i even, __m256i odd) {
  const __m256i words = _mm256_packs_epi32(even, odd);  // e0-3 o0-3 | e4-7 o4-7
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  const __m128i order = _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
  return _mm_shuffle_epi8(bytes, order);
}

// Eight U and eight V values (32-bit lanes, 0 to 255) as bytes u0 ... u7 v0 ... v7.
DEWARP_AVX2_INLINE __m128i Planar16(__m256i uLanes, __m256i vLanes) {
  const __m256i words = _mm256_packs_epi32(uLanes, vLanes);  // u0-3 v0-3 | u4-7 v4-7
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  const __m128i order = _mm_setr_epi8(0, 1, 2, 3, 8, 9, 10, 11, 4, 5, 6, 7, 12, 13, 14, 15);
  return _mm_shuffle_epi8(bytes, order);
}

// Where the bytes of a group's eight blocks go. A group whose blocks all lie inside the picture
// writes them as they are. In a group with blocks outside (and all its columns inside the
// width), each block outside gets what the scalar kernel gives it instead: the default luma in
// its top-left pixel, its other three pixels as they were, the default chroma.
struct GroupOut {
  RowPair o;
  std::uint32_t c;
  bool some;       // some blocks lie outside
  __m128i inside;  // all bits set in the two bytes of a luma row of each block inside
  __m128i chroma;  // the same in bytes j (U) and 8 + j (V) for block j
};

DEWARP_AVX2_INLINE GroupOut AllInside(const RowPair& o, std::uint32_t c) {
  GroupOut out;
  out.o = o;
  out.c = c;
  out.some = false;
  out.inside = out.chroma = _mm_setzero_si128();
  return out;
}

// From the blocks' lanes (all bits set for a block inside the picture).
DEWARP_AVX2_INLINE GroupOut SomeOutside(const RowPair& o, std::uint32_t c, __m256 inside) {
  GroupOut out;
  out.o = o;
  out.c = c;
  out.some = true;
  const __m256i lanes = _mm256_castps_si256(inside);
  out.inside = _mm_packs_epi32(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1));
  out.chroma = _mm_packs_epi16(out.inside, out.inside);
  return out;
}

DEWARP_AVX2_INLINE __m128i Load16(const std::uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The upper luma row's bytes: a block outside sets its top-left pixel to the default and keeps
// the top-right one.
DEWARP_AVX2_INLINE void PutUpperRow(const GroupOut& out, __m128i bytes) {
  std::uint8_t* const p = out.o.y0 + out.c;
  if (out.some) {
    const __m128i kept = _mm_or_si128(_mm_and_si128(Load16(p), _mm_set1_epi16(static_cast<short>(0xFF00))),
                                      _mm_set1_epi16(ImagePlanar::s_yDefault));
    bytes = _mm_blendv_epi8(kept, bytes, out.inside);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

// The lower luma row's bytes: a block outside keeps both pixels.
DEWARP_AVX2_INLINE void PutLowerRow(const GroupOut& out, __m128i bytes) {
  std::uint8_t* const p = out.o.y1 + out.c;
  if (out.some) {
    bytes = _mm_blendv_epi8(Load16(p), bytes, out.inside);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

// The chroma bytes (u0 ... u7 v0 ... v7): a block outside takes the default chroma.
DEWARP_AVX2_INLINE void PutChroma(const GroupOut& out, __m128i planar) {
  if (out.some) {
    const __m128i defaults = _mm_unpacklo_epi64(_mm_set1_epi8(static_cast<char>(ImagePlanar::s_uDefault)),
                                                _mm_set1_epi8(static_cast<char>(ImagePlanar::s_vDefault)));
    planar = _mm_blendv_epi8(defaults, planar, out.chroma);
  }
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out.o.u + out.c / 2), planar);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out.o.v + out.c / 2), _mm_unpackhi_epi64(planar, planar));
}

// Chroma through a window. Where a view is not much smaller than its part of the source, the
// sixteen chroma samples of four neighbouring blocks (a 128-bit lane of a group: blocks 0-3 or
// 4-7) lie within four rows and four columns of the chroma planes: in the built-in camera's
// 1920 x 1080 PTZ view, all but about one lane in ten thousand. Such a lane reads its 4 x 4 bytes
// with four loads per plane and picks its samples out with one byte shuffle, instead of sixteen
// loads (chroma took 2.1 ms of that view's 5.3 ms frame before, on an AMD EPYC). Lanes whose
// samples spread wider, or whose window would reach past the end of the frame, read them one
// by one.

// Chroma positions as 16-bit pairs, column low and row high (both below 32768, as the walk
// requires): the pair order of the offset multiply-add, and the unsigned minimum and maximum
// of 16-bit lanes take the columns and the rows at once.
DEWARP_AVX2_INLINE __m256i ChromaPosition(__m256i column, __m256i row) {
  return _mm256_or_si256(column, _mm256_slli_epi32(row, 16));
}

// v / 2 and (v + 1) / 2, lane by lane.
DEWARP_AVX2_INLINE __m256i Half(__m256i v) {
  return _mm256_srli_epi32(v, 1);
}
DEWARP_AVX2_INLINE __m256i HalfUp(__m256i v) {
  return _mm256_srli_epi32(_mm256_add_epi32(v, _mm256_set1_epi32(1)), 1);
}

// The multiplier that turns such a pair into a plane offset: 1 for the column, the chroma pitch
// for the row.
DEWARP_AVX2_INLINE __m256i ChromaMultiplier(const Planes& s) {
  return _mm256_set1_epi32(static_cast<int>(1u | (static_cast<std::uint32_t>(s.blocks) << 16)));
}

// The larger (or smaller) of two pairs, columns and rows apart.
template <bool kLargest>
DEWARP_AVX2_INLINE __m256i Pick(__m256i a, __m256i b) {
  return kLargest ? _mm256_max_epu16(a, b) : _mm256_min_epu16(a, b);
}

// The smallest (or largest) of the four vectors' pairs in each 128-bit lane, in every 32-bit
// lane of it, columns and rows apart.
template <bool kLargest>
DEWARP_AVX2_INLINE __m256i LaneExtreme(const __m256i* p) {
  __m256i e = Pick<kLargest>(Pick<kLargest>(p[0], p[1]), Pick<kLargest>(p[2], p[3]));
  e = Pick<kLargest>(e, _mm256_shuffle_epi32(e, _MM_SHUFFLE(1, 0, 3, 2)));
  return Pick<kLargest>(e, _mm256_shuffle_epi32(e, _MM_SHUFFLE(2, 3, 0, 1)));
}

// Four bytes of four rows from p on (row r in bytes 4r to 4r + 3).
DEWARP_AVX2_INLINE __m128i Window(const std::uint8_t* p, std::size_t pitch) {
  return _mm_setr_epi32(Load32(p), Load32(p + pitch), Load32(p + 2 * pitch), Load32(p + 3 * pitch));
}

// Byte 4k + j of each 128-bit lane (samples of block j of the lane, pixel k) as the float of
// 32-bit lane j.
DEWARP_AVX2_INLINE __m256 WindowSamples(__m256i bytes, int k) {
  const __m256i order = _mm256_setr_epi8(4 * k, -1, -1, -1, 4 * k + 1, -1, -1, -1, 4 * k + 2, -1, -1, -1, 4 * k + 3, -1,
                                         -1, -1, 4 * k, -1, -1, -1, 4 * k + 1, -1, -1, -1, 4 * k + 2, -1, -1, -1,
                                         4 * k + 3, -1, -1, -1);
  return _mm256_cvtepi32_ps(_mm256_shuffle_epi8(bytes, order));
}

// w0 c0 + w1 c1 + w2 c2 + w3 c3 in that order, truncated, from the picked samples.
DEWARP_AVX2_INLINE __m256i BlendWindow(const Weights8& tl, __m256i bytes) {
  __m256 value = _mm256_mul_ps(tl.w0, WindowSamples(bytes, 0));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w1, WindowSamples(bytes, 1)));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w2, WindowSamples(bytes, 2)));
  value = _mm256_add_ps(value, _mm256_mul_ps(tl.w3, WindowSamples(bytes, 3)));
  return _mm256_cvttps_epi32(value);
}

// The chroma of the group's eight blocks through windows, from the positions of their
// top-left, bottom-left, top-right and bottom-right samples; false (nothing written) when a
// lane's samples do not fit a window, or a window would reach past the end of the frame.
// `blocks` is the multiplier of the chroma offsets (1 for the column, the pitch for the row).
DEWARP_AVX2_INLINE bool WindowChroma(const Planes& s, const GroupOut& out, const Weights8& tl,
                                     const __m256i* position, __m256i blocks) {
  const __m256i low = LaneExtreme<false>(position);
  const __m256i spread = _mm256_sub_epi16(LaneExtreme<true>(position), low);
  const __m256i wide = _mm256_cmpgt_epi16(spread, _mm256_set1_epi16(3));
  if (!_mm256_testz_si256(wide, wide)) {
    return false;
  }
  const __m256i corner = _mm256_madd_epi16(low, blocks);
  const std::size_t first = static_cast<std::uint32_t>(_mm256_cvtsi256_si32(corner));
  const std::size_t second = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm256_extracti128_si256(corner, 1)));
  // The last byte a window reads, counted from the start of the V plane (the plane nearer the
  // end of the frame), must lie inside the frame.
  if ((first > second ? first : second) + 3 * s.blocks + 4 > s.vLimit) {
    return false;
  }
  // Index of each sample in its lane's window: column + 4 row, relative to the corner.
  const __m256i multiplier = _mm256_set1_epi32(1 | (4 << 16));
  __m256i index[4];
  for (int k = 0; k < 4; ++k) index[k] = _mm256_madd_epi16(_mm256_sub_epi16(position[k], low), multiplier);
  const __m256i order =
      _mm256_packus_epi16(_mm256_packus_epi32(index[0], index[1]), _mm256_packus_epi32(index[2], index[3]));
  const __m256i u = _mm256_set_m128i(Window(s.u + second, s.blocks), Window(s.u + first, s.blocks));
  const __m256i v = _mm256_set_m128i(Window(s.v + second, s.blocks), Window(s.v + first, s.blocks));
  PutChroma(out,
            Planar16(BlendWindow(tl, _mm256_shuffle_epi8(u, order)), BlendWindow(tl, _mm256_shuffle_epi8(v, order))));
  return true;
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

// Columns c .. c + 15 of a row pair from one group whose positions all lie inside the picture
// (those of its blocks outside, if it has any, set to (0, 0): `out` writes such blocks' own
// bytes). Of each pixel only the luma and the chroma position outlive its blend; the top-left pixels'
// weights are worked out again for the chroma (cheaper than keeping four more vectors alive
// through the other three blends: 4.4 ms a frame against 4.9 ms).
DEWARP_AVX2_INLINE void Group16(const Planes& s, const GroupOut& out, const Group8& g, __m256i stride,
                                __m256i blocks) {
  // Chroma positions of the four pixels of each block: top-left (xi/2, yi/2), bottom-left
  // ((xi+1)/2, yi/2), top-right (xi/2, (yi+1)/2), bottom-right ((xi+1)/2, (yi+1)/2).
  __m256i position[4];
  {
    const Lanes8 tl = Pixels8(s, g.v[0], g.v[1], stride);
    position[0] = ChromaPosition(Half(tl.xi), Half(tl.yi));
    const Lanes8 tr = Pixels8(s, g.v[2], g.v[3], stride);
    position[2] = ChromaPosition(Half(tr.xi), HalfUp(tr.yi));
    PutUpperRow(out, Interleaved16(tl.luma, tr.luma));
  }
  {
    const Lanes8 bl = Pixels8(s, g.v[4], g.v[5], stride);
    position[1] = ChromaPosition(HalfUp(bl.xi), Half(bl.yi));
    const Lanes8 br = Pixels8(s, g.v[6], g.v[7], stride);
    position[3] = ChromaPosition(HalfUp(br.xi), HalfUp(br.yi));
    PutLowerRow(out, Interleaved16(bl.luma, br.luma));
  }
  const Weights8 tl = Weigh8(g.v[0], g.v[1]);
  if (WindowChroma(s, out, tl, position, blocks)) {
    return;
  }
  const Offsets8 offsets[4] = {
      LaneOffsets(_mm256_madd_epi16(position[0], blocks)), LaneOffsets(_mm256_madd_epi16(position[1], blocks)),
      LaneOffsets(_mm256_madd_epi16(position[2], blocks)), LaneOffsets(_mm256_madd_epi16(position[3], blocks))};
  PutChroma(out, Planar16(BlendChroma8(tl, s.u, offsets), BlendChroma8(tl, s.v, offsets)));
}

// The blocks of the group at g that lie inside the picture (all bits set): those whose top pair
// and bottom pair are not the marker.
DEWARP_AVX2_INLINE __m256 InsideBlocks(const float* g) {
  const __m256 marker = _mm256_set1_ps(Map::s_fBilinearOutside);
  return _mm256_andnot_ps(_mm256_or_ps(_mm256_cmp_ps(_mm256_loadu_ps(g), marker, _CMP_EQ_OQ),
                                       _mm256_cmp_ps(_mm256_loadu_ps(g + 56), marker, _CMP_EQ_OQ)),
                          _mm256_castsi256_ps(_mm256_set1_epi32(-1)));
}

// Columns c .. c + 15 of a row pair from the group at g, whose blocks inside the picture are
// `inside`. A group with blocks outside goes through the vector kernel too, its blocks outside
// read at position (0, 0) and given their own bytes when written, unless some of its columns lie
// past the width: then it goes block by block.
DEWARP_AVX2_INLINE void WalkGroup(const GroupWalk& w, const RowPair& o, const float* g, std::uint32_t c,
                                  __m256 inside, __m256i stride, __m256i blocks) {
  const int lanes = _mm256_movemask_ps(inside);
  if (lanes == 0xFF) {
    Group16(w.s, AllInside(o, c), LoadGroup(g), stride, blocks);
  } else if (c + Map::s_uBilinearGroupColumns > w.width) {
    BilinearGroupByBlocks(w, o, g, c);
  } else if (lanes == 0) {
    const GroupOut out = SomeOutside(o, c, inside);
    PutUpperRow(out, _mm_setzero_si128());
    PutChroma(out, _mm_setzero_si128());
  } else {
    Group8 group = LoadGroup(g);
    for (int k = 0; k < 8; ++k) group.v[k] = _mm256_and_ps(group.v[k], inside);
    Group16(w.s, SomeOutside(o, c, inside), group, stride, blocks);
  }
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

// One row of a group from sixteen pixels' x and y, stored at out (eight floats each): the even
// and the odd pixels' x and y, each pair kept only when both its pixels are inside, otherwise
// all four values the marker (the values and markers of Map::GetBilinearGroupBuffer). Returns
// the pairs kept.
DEWARP_AVX2_INLINE __m256 FormGroupRow(const float* x, const float* y, const Bounds8& b, float* out) {
  const __m256 x0 = _mm256_loadu_ps(x), x1 = _mm256_loadu_ps(x + 8);
  const __m256 y0 = _mm256_loadu_ps(y), y1 = _mm256_loadu_ps(y + 8);
  const __m256 v[4] = {EvenLanes(x0, x1), EvenLanes(y0, y1), OddLanes(x0, x1), OddLanes(y0, y1)};
  const __m256 pair = _mm256_and_ps(Inside8(v[0], v[1], b), Inside8(v[2], v[3], b));
  const __m256 outside = _mm256_andnot_ps(pair, _mm256_set1_ps(Map::s_fBilinearOutside));
  for (int k = 0; k < 4; ++k) _mm256_storeu_ps(out + 8 * k, _mm256_or_ps(_mm256_and_ps(pair, v[k]), outside));
  return pair;
}

}  // namespace

__attribute__((target("avx2"))) void BilinearGroupAvx2(const GroupWalk& w, const RowPair& o, const float* group,
                                                        std::uint32_t c) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = ChromaMultiplier(w.s);
  WalkGroup(w, o, group, c, InsideBlocks(group), stride, blocks);
}

__attribute__((target("avx2"))) void BilinearGroupRowsAvx2(const GroupWalk& w) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = ChromaMultiplier(w.s);
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    for (std::size_t g = 0; g < w.groups; ++g) {
      const float* group = w.Group(r, g);
      const std::uint32_t c = static_cast<std::uint32_t>(g * Map::s_uBilinearGroupColumns);
      WalkGroup(w, o, group, c, InsideBlocks(group), stride, blocks);
    }
  }
  // Clean upper halves for the SSE code that runs next (no penalty for mixing the two).
  _mm256_zeroupper();
}

__attribute__((target("avx2"))) void BilinearFormGroupsRowsAvx2(const GroupWalk& w, const float* x, const float* y,
                                                                 float maxX, float maxY, float* table) {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(w.s.stride));
  const __m256i blocks = ChromaMultiplier(w.s);
  const Bounds8 bounds = {_mm256_set1_ps(maxX), _mm256_set1_ps(maxY)};
  const std::size_t cols = w.groups * Map::s_uBilinearGroupColumns;
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    const float* const x0 = x + 2 * r * cols;
    const float* const y0 = y + 2 * r * cols;
    for (std::size_t g = 0; g < w.groups; ++g) {
      const std::size_t first = g * Map::s_uBilinearGroupColumns;
      float* const stored = table + (r * w.groups + g) * Map::s_uBilinearGroupFloats;
      const __m256 upper = FormGroupRow(x0 + first, y0 + first, bounds, stored);
      const __m256 lower = FormGroupRow(x0 + cols + first, y0 + cols + first, bounds, stored + 32);
      const std::uint32_t c = static_cast<std::uint32_t>(first);
      WalkGroup(w, o, stored, c, _mm256_and_ps(upper, lower), stride, blocks);
    }
  }
  _mm256_zeroupper();
}

#undef DEWARP_AVX2_INLINE

}  // namespace remap420
}  // namespace libdewarp
}  // namespace vemo
