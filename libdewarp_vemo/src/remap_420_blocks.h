// Block kernels of the planar 4:2:0 remap (private to the remap sources).
//
// The destination is walked two rows at a time; each 2 x 2 block of luma pixels gets one chroma
// sample. The scalar kernels handle one block and every odd case (odd widths, frames whose last
// chroma column runs past the end, blocks on the edge of the picture); the SSE2 kernels handle
// four neighbouring blocks (eight columns of a row pair) at once when all four lie inside the
// picture, with exactly the same arithmetic lane by lane: the same single-precision operations
// in the same order, truncation toward zero, so that both give the same bytes. (The AVX2 and
// AVX-512 bilinear kernels, in files of their own, follow the same rule.)
#pragma once

#include <libdewarp_vemo/image_planar.h>
#include <libdewarp_vemo/map.h>

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vemo {
namespace libdewarp {
namespace remap420 {

// The three planes of a 4:2:0 frame as the remap loops address them, with the number of bytes
// that can be read or written from each chroma plane start before the end of the frame.
struct Planes {
  std::uint8_t* y;
  std::uint8_t* u;
  std::uint8_t* v;
  std::size_t stride;
  std::size_t blocks;  // chroma samples per chroma row (stride / 2)
  std::size_t uLimit;
  std::size_t vLimit;
};

inline Planes GetPlanes(std::uint8_t* image, std::uint32_t stride, std::uint32_t height) {
  const std::uint32_t luma = stride * height;
  const std::uint32_t chroma = luma >> 1;  // both chroma planes together
  Planes planes;
  planes.y = image;
  planes.u = image + luma;
  planes.v = planes.u + luma / 4;
  planes.stride = stride;
  planes.blocks = stride / 2;
  planes.uLimit = chroma;
  planes.vLimit = chroma - luma / 4;
  return planes;
}

// Destination addresses of one row pair: the two luma rows and the chroma rows.
struct RowPair {
  std::uint8_t* y0;
  std::uint8_t* y1;
  std::uint8_t* u;
  std::uint8_t* v;
};

// Luma rows 2r and 2r + 1 at the given pitch and chroma row r of a destination.
inline RowPair GetRowPair(const Planes& d, std::size_t pitch, std::size_t r) {
  RowPair o;
  o.y0 = d.y + 2 * r * pitch;
  o.y1 = o.y0 + pitch;
  o.u = d.u + r * d.blocks;
  o.v = d.v + r * d.blocks;
  return o;
}

// Chroma sample of a source plane; positions past the end of the frame read the default.
inline std::uint8_t ReadChroma(const std::uint8_t* plane, std::size_t limit, std::size_t index) {
  return index < limit ? plane[index] : ImagePlanar::s_uDefault;
}

// ---------------------------------------------------------------------------------------------
// Scalar kernels, one block at columns (c, c + 1).
//
// t points at the merged (x, y) pair of pixel (c, 2r), b at that of pixel (c, 2r + 1).
// kChecked is the variant for odd widths and odd source layouts: it drops the column past an odd
// width (it is not part of the picture and, with stride = width, would land on the next row),
// tests each pixel's own position before using it (with an odd width the bottom-left pixel of a
// block belongs to a pair the block test does not look at) and keeps chroma reads and writes
// inside the frames.

template <bool kChecked>
inline void NearestBlock(const Planes& d, const Planes& s, const RowPair& o, const std::uint32_t* t,
                         const std::uint32_t* b, std::uint32_t width, std::uint32_t c) {
  const std::uint32_t kOut = Map::s_uNearestOutside;
  const bool hasRight = !kChecked || c + 1 < width;
  if (t[0] != kOut && b[3] != kOut) {
    if (!kChecked) {
      o.y0[c] = s.y[t[1] * s.stride + t[0]];
      o.y0[c + 1] = s.y[t[3] * s.stride + t[2]];
      o.y1[c] = s.y[b[1] * s.stride + b[0]];
      o.y1[c + 1] = s.y[b[3] * s.stride + b[2]];
    } else {
      o.y0[c] = s.y[t[1] * s.stride + t[0]];
      o.y1[c] = b[0] != kOut ? s.y[b[1] * s.stride + b[0]] : ImagePlanar::s_yDefault;
      if (hasRight) {
        o.y0[c + 1] = t[2] != kOut ? s.y[t[3] * s.stride + t[2]] : ImagePlanar::s_yDefault;
        o.y1[c + 1] = s.y[b[3] * s.stride + b[2]];
      }
    }
  } else {
    o.y0[c] = ImagePlanar::s_yDefault;
    o.y1[c] = ImagePlanar::s_yDefault;
    if (hasRight) {
      o.y0[c + 1] = ImagePlanar::s_yDefault;
      o.y1[c + 1] = ImagePlanar::s_yDefault;
    }
  }
  const std::size_t k = c / 2;
  if (kChecked && k >= d.blocks) {
    return;
  }
  if (t[0] == kOut) {
    o.u[k] = ImagePlanar::s_uDefault;
    o.v[k] = ImagePlanar::s_vDefault;
  } else {
    const std::size_t i = (t[1] / 2) * s.blocks + t[0] / 2;
    if (!kChecked) {
      o.u[k] = s.u[i];
      o.v[k] = s.v[i];
    } else {
      o.u[k] = ReadChroma(s.u, s.uLimit, i);
      o.v[k] = ReadChroma(s.v, s.vLimit, i);
    }
  }
}

// One pixel of the bilinear path: integer position and fractions.
struct Sample {
  std::uint32_t xi;
  std::uint32_t yi;
  float fx;
  float fy;
};

inline Sample MakeSample(const float* p) {
  Sample sample;
  sample.xi = static_cast<std::uint32_t>(p[0]);
  sample.yi = static_cast<std::uint32_t>(p[1]);
  sample.fx = p[0] - static_cast<float>(sample.xi);
  sample.fy = p[1] - static_cast<float>(sample.yi);
  return sample;
}

// Luma of one pixel. The lower neighbour takes fx(1 - fy) and the right neighbour (1 - fx)fy:
// the off-diagonal weights are exchanged with respect to the textbook blend; this is how the
// engine has always sampled luma and it is kept. Truncated, not rounded.
inline std::uint8_t BlendLuma(const Planes& s, const Sample& p) {
  const std::uint8_t* q = s.y + p.yi * s.stride + p.xi;
  const float value = (1.0f - p.fx) * (1.0f - p.fy) * q[0] + p.fx * (1.0f - p.fy) * q[s.stride] +
                      (1.0f - p.fx) * p.fy * q[1] + p.fx * p.fy * q[s.stride + 1];
  return static_cast<std::uint8_t>(value);
}

// Bilinear, one block (luma rows at a pitch of the destination width). An invalid block sets
// only its top-left luma sample and its chroma. The block's chroma mixes the block's four
// pixels: the weights of the top-left pixel applied to the chroma of the top-left (yi/2, xi/2),
// bottom-left (yi/2, (xi+1)/2), top-right ((yi+1)/2, xi/2) and bottom-right ((yi+1)/2,
// (xi+1)/2) pixels, each with its own xi, yi. In the checked variant a pixel of a valid block
// whose own position is the marker keeps the destination's value (as the three untouched
// pixels of an invalid block do) and lends the default chroma to the mix.
template <bool kChecked>
inline void BilinearBlock(const Planes& d, const Planes& s, const RowPair& o, const float* t, const float* b,
                          std::uint32_t width, std::uint32_t c) {
  const float kOut = Map::s_fBilinearOutside;
  const std::size_t k = c / 2;
  const bool chromaInside = !kChecked || k < d.blocks;
  if (!(t[0] != kOut && b[3] != kOut)) {
    o.y0[c] = ImagePlanar::s_yDefault;
    if (chromaInside) {
      o.u[k] = ImagePlanar::s_uDefault;
      o.v[k] = ImagePlanar::s_vDefault;
    }
    return;
  }
  const bool hasRight = !kChecked || c + 1 < width;
  const bool okTR = !kChecked || t[2] != kOut;
  const bool okBL = !kChecked || b[0] != kOut;
  const Sample tl = MakeSample(t);
  const Sample tr = okTR ? MakeSample(t + 2) : tl;
  const Sample bl = okBL ? MakeSample(b) : tl;
  const Sample br = MakeSample(b + 2);
  o.y0[c] = BlendLuma(s, tl);
  if (okBL) {
    o.y1[c] = BlendLuma(s, bl);
  }
  if (hasRight) {
    if (okTR) {
      o.y0[c + 1] = BlendLuma(s, tr);
    }
    o.y1[c + 1] = BlendLuma(s, br);
  }
  if (!chromaInside) {
    return;
  }
  const float w0 = (1.0f - tl.fx) * (1.0f - tl.fy);
  const float w1 = tl.fx * (1.0f - tl.fy);
  const float w2 = (1.0f - tl.fx) * tl.fy;
  const float w3 = tl.fx * tl.fy;
  const std::size_t i0 = (tl.yi / 2) * s.blocks + tl.xi / 2;
  const std::size_t i1 = (bl.yi / 2) * s.blocks + (bl.xi + 1) / 2;
  const std::size_t i2 = ((tr.yi + 1) / 2) * s.blocks + tr.xi / 2;
  const std::size_t i3 = ((br.yi + 1) / 2) * s.blocks + (br.xi + 1) / 2;
  if (!kChecked) {
    o.u[k] = static_cast<std::uint8_t>(w0 * s.u[i0] + w1 * s.u[i1] + w2 * s.u[i2] + w3 * s.u[i3]);
    o.v[k] = static_cast<std::uint8_t>(w0 * s.v[i0] + w1 * s.v[i1] + w2 * s.v[i2] + w3 * s.v[i3]);
  } else {
    const std::uint8_t u1 = okBL ? ReadChroma(s.u, s.uLimit, i1) : ImagePlanar::s_uDefault;
    const std::uint8_t v1 = okBL ? ReadChroma(s.v, s.vLimit, i1) : ImagePlanar::s_vDefault;
    const std::uint8_t u2 = okTR ? ReadChroma(s.u, s.uLimit, i2) : ImagePlanar::s_uDefault;
    const std::uint8_t v2 = okTR ? ReadChroma(s.v, s.vLimit, i2) : ImagePlanar::s_vDefault;
    o.u[k] = static_cast<std::uint8_t>(w0 * ReadChroma(s.u, s.uLimit, i0) + w1 * u1 + w2 * u2 +
                                       w3 * ReadChroma(s.u, s.uLimit, i3));
    o.v[k] = static_cast<std::uint8_t>(w0 * ReadChroma(s.v, s.vLimit, i0) + w1 * v1 + w2 * v2 +
                                       w3 * ReadChroma(s.v, s.vLimit, i3));
  }
}

// ---------------------------------------------------------------------------------------------
// SSE2 kernels, four blocks (eight columns) of a row pair at once.
//
// The nearest-neighbour kernel reads the packed table of Map::GetNearestPackedBuffer, the bilinear
// one the group table of Map::GetBilinearGroupBuffer. They need an even destination width (so that every merged pair
// lies in one row and is valid or outside as a whole), a source whose chroma samples all lie
// inside the frame, and a source stride and height below 32768: positions are packed as two
// 16-bit halves (x low, y high) and turned into plane offsets x + y * pitch with one
// multiply-add of 16-bit lanes. A group with a block outside the picture is left to the scalar
// kernel (the functions return false and write nothing).

// Multiplier of the multiply-add: 1 for the low half (x), the pitch for the high half (y).
inline __m128i OffsetMultiplier(std::size_t pitch) {
  return _mm_set1_epi32(static_cast<int>(1u | (static_cast<std::uint32_t>(pitch) << 16)));
}

// x + y * pitch per lane, for 0 <= x, y, pitch < 32768.
inline __m128i PlaneOffsets(__m128i x, __m128i y, __m128i multiplier) {
  return _mm_madd_epi16(_mm_or_si128(x, _mm_slli_epi32(y, 16)), multiplier);
}

// Four bytes of a plane at the lanes' offsets, as 32-bit lanes.
inline __m128i GatherBytes(const std::uint8_t* plane, __m128i offsets) {
  alignas(16) std::uint32_t o[4];
  _mm_store_si128(reinterpret_cast<__m128i*>(o), offsets);
  return _mm_set_epi32(plane[o[3]], plane[o[2]], plane[o[1]], plane[o[0]]);
}

// Stores the low byte of each 32-bit lane (values 0 to 255) as four consecutive bytes.
inline void StoreBytes4(std::uint8_t* out, __m128i lanes) {
  const __m128i words = _mm_packs_epi32(lanes, lanes);
  const std::uint32_t bytes = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
  std::memcpy(out, &bytes, 4);
}

// Stores the low bytes of two 4-lane vectors as eight consecutive bytes.
inline void StoreBytes8(std::uint8_t* out, __m128i low, __m128i high) {
  const __m128i words = _mm_packs_epi32(low, high);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(words, words));
}

// Even lanes (0, 2) of a and b as (a0, a2, b0, b2).
inline __m128i EvenLanes(__m128i a, __m128i b) {
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}

// Nearest neighbour over the packed table (Map::GetNearestPackedBuffer), columns c .. c + 7 of a
// row pair: t and b point at the words of pixels (c, 2r) and (c, 2r + 1). A packed word is
// already the (x, y) pair of 16-bit halves that the offset multiply-add takes.
inline bool NearestPackedGroup(const Planes& s, const RowPair& o, const std::uint32_t* t, const std::uint32_t* b,
                               std::uint32_t c, __m128i lumaMultiplier, __m128i chromaMultiplier) {
  const __m128i t0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t));
  const __m128i t1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t + 4));
  const __m128i b0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
  const __m128i b1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 4));
  const __m128i out = _mm_set1_epi32(-1);
  const __m128i bad = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi32(t0, out), _mm_cmpeq_epi32(t1, out)),
                                   _mm_or_si128(_mm_cmpeq_epi32(b0, out), _mm_cmpeq_epi32(b1, out)));
  if (_mm_movemask_epi8(bad) != 0) {
    return false;
  }
  StoreBytes8(o.y0 + c, GatherBytes(s.y, _mm_madd_epi16(t0, lumaMultiplier)),
              GatherBytes(s.y, _mm_madd_epi16(t1, lumaMultiplier)));
  StoreBytes8(o.y1 + c, GatherBytes(s.y, _mm_madd_epi16(b0, lumaMultiplier)),
              GatherBytes(s.y, _mm_madd_epi16(b1, lumaMultiplier)));
  // Chroma from the top-left pixel of each block: both halves shifted down by one give
  // (x / 2, y / 2), and the multiply-add (y / 2) * blocks + x / 2.
  const __m128i chroma = _mm_madd_epi16(_mm_srli_epi16(EvenLanes(t0, t1), 1), chromaMultiplier);
  StoreBytes4(o.u + c / 2, GatherBytes(s.u, chroma));
  StoreBytes4(o.v + c / 2, GatherBytes(s.v, chroma));
  return true;
}

// A packed pair of pixels (two words) as the scalar kernel's (x0, y0, x1, y1).
inline void UnpackNearestPair(const std::uint32_t* packed, std::uint32_t* pair) {
  const std::uint32_t kOut = Map::s_uNearestOutside;
  for (int k = 0; k < 2; ++k) {
    pair[2 * k] = packed[k] == kOut ? kOut : (packed[k] & 0xFFFFu);
    pair[2 * k + 1] = packed[k] == kOut ? kOut : (packed[k] >> 16);
  }
}

// Bilinear lanes of four pixels: integer position, the four weights and the luma blend.
struct BilinearLanes {
  __m128i xi, yi;
  __m128 w0, w1, w2, w3;
  __m128i luma;
};

// Byte k of each 32-bit lane as a float.
inline __m128 ByteAsFloat(__m128i lanes, int k) {
  const __m128i shifted = k == 0 ? lanes : _mm_srli_epi32(lanes, 8 * k);
  return _mm_cvtepi32_ps(k == 3 ? shifted : _mm_and_si128(shifted, _mm_set1_epi32(0xFF)));
}

// Two bytes at p as a 16-bit value (first byte low).
inline int Load16(const std::uint8_t* p) {
  std::uint16_t value;
  std::memcpy(&value, p, 2);
  return value;
}

// The 2 x 2 neighbourhoods of four luma pixels, one per 32-bit lane: bytes P(x, y), P(x + 1, y),
// P(x, y + 1), P(x + 1, y + 1) from the lowest up. `below` is the luma plane one row further.
inline __m128i Neighbourhoods(const std::uint8_t* plane, const std::uint8_t* below, __m128i offsets) {
  const std::uint32_t o[4] = {static_cast<std::uint32_t>(_mm_cvtsi128_si32(offsets)),
                              static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(offsets, 1))),
                              static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(offsets, 2))),
                              static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(offsets, 3)))};
  __m128i q = _mm_cvtsi32_si128(Load16(plane + o[0]));
  q = _mm_insert_epi16(q, Load16(below + o[0]), 1);
  q = _mm_insert_epi16(q, Load16(plane + o[1]), 2);
  q = _mm_insert_epi16(q, Load16(below + o[1]), 3);
  q = _mm_insert_epi16(q, Load16(plane + o[2]), 4);
  q = _mm_insert_epi16(q, Load16(below + o[2]), 5);
  q = _mm_insert_epi16(q, Load16(plane + o[3]), 6);
  q = _mm_insert_epi16(q, Load16(below + o[3]), 7);
  return q;
}

inline BilinearLanes BilinearPixels(const Planes& s, __m128 x, __m128 y, __m128i lumaMultiplier) {
  BilinearLanes p;
  p.xi = _mm_cvttps_epi32(x);
  p.yi = _mm_cvttps_epi32(y);
  const __m128 fx = _mm_sub_ps(x, _mm_cvtepi32_ps(p.xi));
  const __m128 fy = _mm_sub_ps(y, _mm_cvtepi32_ps(p.yi));
  const __m128 one = _mm_set1_ps(1.0f);
  const __m128 gx = _mm_sub_ps(one, fx);
  const __m128 gy = _mm_sub_ps(one, fy);
  p.w0 = _mm_mul_ps(gx, gy);
  p.w1 = _mm_mul_ps(fx, gy);
  p.w2 = _mm_mul_ps(gx, fy);
  p.w3 = _mm_mul_ps(fx, fy);
  const __m128i q = Neighbourhoods(s.y, s.y + s.stride, PlaneOffsets(p.xi, p.yi, lumaMultiplier));
  // w0 P(x, y) + w1 P(x, y + 1) + w2 P(x + 1, y) + w3 P(x + 1, y + 1): the exchanged
  // off-diagonal weights of the scalar kernel, summed in the same order.
  __m128 value = _mm_mul_ps(p.w0, ByteAsFloat(q, 0));
  value = _mm_add_ps(value, _mm_mul_ps(p.w1, ByteAsFloat(q, 2)));
  value = _mm_add_ps(value, _mm_mul_ps(p.w2, ByteAsFloat(q, 1)));
  value = _mm_add_ps(value, _mm_mul_ps(p.w3, ByteAsFloat(q, 3)));
  p.luma = _mm_cvttps_epi32(value);
  return p;
}

// Chroma samples of a plane for two sets of four offsets, first and second, as bytes 1 and 3
// of 32-bit lanes. Each sample is read as the high byte of the 16-bit value that ends with it,
// so that no read goes past the sample (the byte before it is the end of the plane in front:
// luma before U, U before V).
inline __m128i ChromaPairs(const std::uint8_t* plane, const std::uint32_t* first, const std::uint32_t* second) {
  const std::uint8_t* p = plane - 1;
  __m128i q = _mm_cvtsi32_si128(Load16(p + first[0]));
  q = _mm_insert_epi16(q, Load16(p + second[0]), 1);
  q = _mm_insert_epi16(q, Load16(p + first[1]), 2);
  q = _mm_insert_epi16(q, Load16(p + second[1]), 3);
  q = _mm_insert_epi16(q, Load16(p + first[2]), 4);
  q = _mm_insert_epi16(q, Load16(p + second[2]), 5);
  q = _mm_insert_epi16(q, Load16(p + first[3]), 6);
  q = _mm_insert_epi16(q, Load16(p + second[3]), 7);
  return q;
}

// w0 c0 + w1 c1 + w2 c2 + w3 c3 in that order, truncated; c0, c1 are bytes 1 and 3 of `a`,
// c2, c3 bytes 1 and 3 of `b`.
inline __m128i BlendChroma(__m128 w0, __m128 w1, __m128 w2, __m128 w3, __m128i a, __m128i b) {
  __m128 value = _mm_mul_ps(w0, ByteAsFloat(a, 1));
  value = _mm_add_ps(value, _mm_mul_ps(w1, ByteAsFloat(a, 3)));
  value = _mm_add_ps(value, _mm_mul_ps(w2, ByteAsFloat(b, 1)));
  value = _mm_add_ps(value, _mm_mul_ps(w3, ByteAsFloat(b, 3)));
  return _mm_cvttps_epi32(value);
}

// Luma of four even and four odd columns (32-bit lanes, 0 to 255) as eight consecutive bytes
// e0 o0 e1 o1 e2 o2 e3 o3.
inline void StoreInterleaved8(std::uint8_t* out, __m128i even, __m128i odd) {
  const __m128i words = _mm_packs_epi32(even, odd);
  const __m128i mixed = _mm_unpacklo_epi16(words, _mm_srli_si128(words, 8));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(mixed, mixed));
}

// Bilinear, columns c .. c + 15 of a row pair from one group of the group table (layout in
// map.h): four blocks at a time, the even columns' pixels in one set of lanes and the odd
// columns' in another, so that a block's top-left, top-right, bottom-left and bottom-right
// pixels share a lane.
// (Inlined into the row loop, so that its vectors stay in registers.)
inline __attribute__((always_inline)) bool BilinearGroup16(const Planes& s, const RowPair& o, const float* g,
                                                           std::uint32_t c, __m128i lumaMultiplier,
                                                           __m128i chromaMultiplier) {
  // Pairs are inside or outside as a whole: a block is inside when its top pair's x (even
  // columns of the top row) and its bottom pair's y (odd columns of the bottom row) are not the
  // marker.
  const __m128 out = _mm_set1_ps(Map::s_fBilinearOutside);
  const __m128 bad = _mm_or_ps(_mm_or_ps(_mm_cmpeq_ps(_mm_loadu_ps(g), out), _mm_cmpeq_ps(_mm_loadu_ps(g + 4), out)),
                               _mm_or_ps(_mm_cmpeq_ps(_mm_loadu_ps(g + 56), out),
                                         _mm_cmpeq_ps(_mm_loadu_ps(g + 60), out)));
  if (_mm_movemask_ps(bad) != 0) {
    return false;
  }
  const __m128i one = _mm_set1_epi32(1);
  for (int h = 0; h < 2; ++h) {
    const float* q = g + 4 * h;
    const BilinearLanes tl = BilinearPixels(s, _mm_loadu_ps(q), _mm_loadu_ps(q + 8), lumaMultiplier);
    const BilinearLanes tr = BilinearPixels(s, _mm_loadu_ps(q + 16), _mm_loadu_ps(q + 24), lumaMultiplier);
    StoreInterleaved8(o.y0 + c + 8 * h, tl.luma, tr.luma);
    const BilinearLanes bl = BilinearPixels(s, _mm_loadu_ps(q + 32), _mm_loadu_ps(q + 40), lumaMultiplier);
    const BilinearLanes br = BilinearPixels(s, _mm_loadu_ps(q + 48), _mm_loadu_ps(q + 56), lumaMultiplier);
    StoreInterleaved8(o.y1 + c + 8 * h, bl.luma, br.luma);
    // Chroma offsets of the four pixels of each block: top-left (yi/2, xi/2), bottom-left
    // (yi/2, (xi+1)/2), top-right ((yi+1)/2, xi/2), bottom-right ((yi+1)/2, (xi+1)/2).
    alignas(16) std::uint32_t offsets[4][4];
    _mm_store_si128(reinterpret_cast<__m128i*>(offsets[0]),
                    PlaneOffsets(_mm_srli_epi32(tl.xi, 1), _mm_srli_epi32(tl.yi, 1), chromaMultiplier));
    _mm_store_si128(reinterpret_cast<__m128i*>(offsets[1]),
                    PlaneOffsets(_mm_srli_epi32(_mm_add_epi32(bl.xi, one), 1), _mm_srli_epi32(bl.yi, 1),
                                 chromaMultiplier));
    _mm_store_si128(reinterpret_cast<__m128i*>(offsets[2]),
                    PlaneOffsets(_mm_srli_epi32(tr.xi, 1), _mm_srli_epi32(_mm_add_epi32(tr.yi, one), 1),
                                 chromaMultiplier));
    _mm_store_si128(reinterpret_cast<__m128i*>(offsets[3]),
                    PlaneOffsets(_mm_srli_epi32(_mm_add_epi32(br.xi, one), 1),
                                 _mm_srli_epi32(_mm_add_epi32(br.yi, one), 1), chromaMultiplier));
    // The top-left pixels' weights applied to the four samples of each block.
    StoreBytes4(o.u + c / 2 + 4 * h, BlendChroma(tl.w0, tl.w1, tl.w2, tl.w3, ChromaPairs(s.u, offsets[0], offsets[1]),
                                                 ChromaPairs(s.u, offsets[2], offsets[3])));
    StoreBytes4(o.v + c / 2 + 4 * h, BlendChroma(tl.w0, tl.w1, tl.w2, tl.w3, ChromaPairs(s.v, offsets[0], offsets[1]),
                                                 ChromaPairs(s.v, offsets[2], offsets[3])));
  }
  return true;
}

}  // namespace remap420
}  // namespace libdewarp
}  // namespace vemo
