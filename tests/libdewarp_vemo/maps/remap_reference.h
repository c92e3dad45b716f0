// Plain reference versions of the 4:2:0 remap, written pixel by pixel (the engine works block by
// block on cached pair tables), for byte-for-byte comparison with the engine.
//
// What every destination byte must hold:
//  - Pair rule: destination pixels 2k and 2k+1 (row-major index over the whole map) are either
//    both usable or both outside; an element past the end of the map counts as unfilled (NaN).
//  - Pixel (x, y) with y < 2 * (height / 2) and x < width belongs to block (x & ~1, y / 2); the
//    block is valid when the top-left pixel's pair and the pair of the pixel to the right of the
//    bottom-left one are usable.
//  - Nearest: valid block -> each pixel its own source sample (the default 16 when its own pair
//    is outside, which only an odd width allows); invalid block -> 16. Rows at the stride.
//  - Bilinear: valid block -> each pixel the blend with the exchanged off-diagonal weights
//    (left untouched when its own pair is outside); invalid block -> only the top-left pixel 16.
//    Rows at a pitch of the destination width.
//  - Chroma sample (k, r), k < stride / 2 and 2k < width: from block (2k, 2r).
//  - Columns past the width, the odd last row and every other byte keep their value.
//  - Source chroma samples past the end of the source frame read as 128.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace remap_reference {

struct Frame {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t stride;
  std::vector<std::uint8_t> bytes;  // exactly 1.5 x stride x height (the engine's buffer size)

  Frame(std::uint32_t w, std::uint32_t h, std::uint32_t s)
      : width(w), height(h), stride(s), bytes(s * h + ((s * h) >> 1)) {}
  std::size_t uStart() const { return static_cast<std::size_t>(stride) * height; }
  std::size_t vStart() const { return uStart() + static_cast<std::size_t>(stride) * height / 4; }
  std::size_t blocks() const { return stride / 2; }
  // Chroma sample `index` of a plane starting at `start`, 128 past the end of the frame.
  std::uint8_t chroma(std::size_t start, std::size_t index) const {
    return start + index < bytes.size() ? bytes[start + index] : 128;
  }
};

struct Maps {
  std::uint32_t width;
  std::uint32_t height;
  std::vector<float> x;
  std::vector<float> y;
  float X(std::size_t i) const { return i < x.size() ? x[i] : std::numeric_limits<float>::quiet_NaN(); }
  float Y(std::size_t i) const { return i < y.size() ? y[i] : std::numeric_limits<float>::quiet_NaN(); }
};

// Truncation toward zero as an integer inside [0, limit), or -1.
inline long long TruncIndex(float v, std::uint32_t limit) {
  if (std::isnan(v)) {
    return -1;
  }
  const double t = std::trunc(static_cast<double>(v));
  return (t >= 0.0 && t < static_cast<double>(limit)) ? static_cast<long long>(t) : -1;
}

inline bool NearestUsable(const Maps& m, std::size_t i, std::uint32_t sw, std::uint32_t sh) {
  const std::size_t a = i - (i % 2);
  for (std::size_t j = a; j < a + 2; ++j) {
    if (TruncIndex(m.X(j), sw) < 0 || TruncIndex(m.Y(j), sh) < 0) {
      return false;
    }
  }
  return true;
}

inline bool BilinearUsable(const Maps& m, std::size_t i, std::uint32_t sw, std::uint32_t sh) {
  const std::size_t a = i - (i % 2);
  const float mx = static_cast<float>(sw) - 1.0f;
  const float my = static_cast<float>(sh) - 1.0f;
  for (std::size_t j = a; j < a + 2; ++j) {
    const float x = m.X(j);
    const float y = m.Y(j);
    if (!(x >= 0.0f && x < mx && y >= 0.0f && y < my)) {
      return false;
    }
  }
  return true;
}

inline void Nearest(const Frame& src, Frame& dst, const Maps& m) {
  const std::uint32_t W = dst.width;
  const std::uint32_t H = dst.height;
  if (H < 2) {
    return;
  }
  for (std::uint32_t y = 0; y < 2 * (H / 2); ++y) {
    for (std::uint32_t x = 0; x < W; ++x) {
      const std::uint32_t c = x & ~1u;
      const std::uint32_t r = y / 2;
      const bool block = NearestUsable(m, static_cast<std::size_t>(2 * r) * W + c, src.width, src.height) &&
                         NearestUsable(m, static_cast<std::size_t>(2 * r + 1) * W + c + 1, src.width, src.height);
      const std::size_t i = static_cast<std::size_t>(y) * W + x;
      std::uint8_t value = 16;
      if (block && NearestUsable(m, i, src.width, src.height)) {
        const long long sx = TruncIndex(m.X(i), src.width);
        const long long sy = TruncIndex(m.Y(i), src.height);
        value = src.bytes[static_cast<std::size_t>(sy) * src.stride + static_cast<std::size_t>(sx)];
      }
      dst.bytes[static_cast<std::size_t>(y) * dst.stride + x] = value;
    }
  }
  for (std::uint32_t r = 0; r < H / 2; ++r) {
    for (std::uint32_t k = 0; k < dst.blocks() && 2 * k < W; ++k) {
      const std::size_t i = static_cast<std::size_t>(2 * r) * W + 2 * k;
      std::uint8_t u = 128;
      std::uint8_t v = 128;
      if (NearestUsable(m, i, src.width, src.height)) {
        const std::size_t sx = static_cast<std::size_t>(TruncIndex(m.X(i), src.width));
        const std::size_t sy = static_cast<std::size_t>(TruncIndex(m.Y(i), src.height));
        const std::size_t index = (sy / 2) * src.blocks() + sx / 2;
        u = src.chroma(src.uStart(), index);
        v = src.chroma(src.vStart(), index);
      }
      dst.bytes[dst.uStart() + r * dst.blocks() + k] = u;
      dst.bytes[dst.vStart() + r * dst.blocks() + k] = v;
    }
  }
}

struct Position {
  bool ok;
  std::size_t xi, yi;
  float fx, fy;
};

inline Position BilinearPosition(const Maps& m, std::size_t i, const Frame& src) {
  Position p{false, 0, 0, 0.0f, 0.0f};
  if (!BilinearUsable(m, i, src.width, src.height)) {
    return p;
  }
  p.ok = true;
  p.xi = static_cast<std::size_t>(std::trunc(m.X(i)));
  p.yi = static_cast<std::size_t>(std::trunc(m.Y(i)));
  p.fx = m.X(i) - static_cast<float>(p.xi);
  p.fy = m.Y(i) - static_cast<float>(p.yi);
  return p;
}

inline void Bilinear(const Frame& src, Frame& dst, const Maps& m) {
  const std::uint32_t W = dst.width;
  const std::uint32_t H = dst.height;
  if (H < 2) {
    return;
  }
  auto P = [&](std::size_t xx, std::size_t yy) -> float {
    return static_cast<float>(src.bytes[yy * src.stride + xx]);
  };
  for (std::uint32_t y = 0; y < 2 * (H / 2); ++y) {
    for (std::uint32_t x = 0; x < W; ++x) {
      const std::uint32_t c = x & ~1u;
      const std::uint32_t r = y / 2;
      const std::size_t tl = static_cast<std::size_t>(2 * r) * W + c;
      const bool block = BilinearUsable(m, tl, src.width, src.height) &&
                         BilinearUsable(m, static_cast<std::size_t>(2 * r + 1) * W + c + 1, src.width, src.height);
      std::uint8_t& out = dst.bytes[static_cast<std::size_t>(y) * W + x];  // pitch: the width
      if (!block) {
        if (x == c && y == 2 * r) {
          out = 16;
        }
        continue;
      }
      const Position p = BilinearPosition(m, static_cast<std::size_t>(y) * W + x, src);
      if (!p.ok) {
        continue;
      }
      // Lower neighbour with fx(1 - fy), right neighbour with (1 - fx)fy.
      const float value = (1.0f - p.fx) * (1.0f - p.fy) * P(p.xi, p.yi) + p.fx * (1.0f - p.fy) * P(p.xi, p.yi + 1) +
                          (1.0f - p.fx) * p.fy * P(p.xi + 1, p.yi) + p.fx * p.fy * P(p.xi + 1, p.yi + 1);
      out = static_cast<std::uint8_t>(value);
    }
  }
  for (std::uint32_t r = 0; r < H / 2; ++r) {
    for (std::uint32_t k = 0; k < dst.blocks() && 2 * k < W; ++k) {
      const std::size_t c = 2 * k;
      const std::size_t tl = static_cast<std::size_t>(2 * r) * W + c;
      const std::size_t tr = tl + 1;
      const std::size_t bl = static_cast<std::size_t>(2 * r + 1) * W + c;
      const std::size_t br = bl + 1;
      std::uint8_t& u = dst.bytes[dst.uStart() + r * dst.blocks() + k];
      std::uint8_t& v = dst.bytes[dst.vStart() + r * dst.blocks() + k];
      if (!(BilinearUsable(m, tl, src.width, src.height) && BilinearUsable(m, br, src.width, src.height))) {
        u = 128;
        v = 128;
        continue;
      }
      const Position a = BilinearPosition(m, tl, src);
      const Position b = BilinearPosition(m, bl, src);
      const Position t = BilinearPosition(m, tr, src);
      const Position d = BilinearPosition(m, br, src);
      const float w[4] = {(1.0f - a.fx) * (1.0f - a.fy), a.fx * (1.0f - a.fy), (1.0f - a.fx) * a.fy, a.fx * a.fy};
      // Samples: top-left (yi/2, xi/2), bottom-left (yi/2, (xi+1)/2), top-right ((yi+1)/2, xi/2),
      // bottom-right ((yi+1)/2, (xi+1)/2), each from its own pixel; a pixel without a position
      // contributes 128.
      const bool ok[4] = {a.ok, b.ok, t.ok, d.ok};
      const std::size_t index[4] = {(a.yi / 2) * src.blocks() + a.xi / 2, (b.yi / 2) * src.blocks() + (b.xi + 1) / 2,
                                    ((t.yi + 1) / 2) * src.blocks() + t.xi / 2,
                                    ((d.yi + 1) / 2) * src.blocks() + (d.xi + 1) / 2};
      float su = 0.0f;
      float sv = 0.0f;
      for (int j = 0; j < 4; ++j) {
        const float cu = ok[j] ? src.chroma(src.uStart(), index[j]) : 128.0f;
        const float cv = ok[j] ? src.chroma(src.vStart(), index[j]) : 128.0f;
        su = j == 0 ? w[j] * cu : su + w[j] * cu;
        sv = j == 0 ? w[j] * cv : sv + w[j] * cv;
      }
      u = static_cast<std::uint8_t>(su);
      v = static_cast<std::uint8_t>(sv);
    }
  }
}

}  // namespace remap_reference
