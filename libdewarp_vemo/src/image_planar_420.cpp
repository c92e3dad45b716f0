#include <libdewarp_vemo/image_planar_420.h>

#include <libdewarp_vemo/map.h>

#include <cstddef>
#include <typeinfo>

namespace vemo {
namespace libdewarp {

ImagePlanar420::ImagePlanar420(DEWARP_IMAGE_FORMAT format, std::uint8_t* data, std::uint32_t width,
                               std::uint32_t height, std::uint32_t stride, bool ownImage)
    : ImagePlanar(format, data, width, height, stride, ownImage) {}

ImagePlanar420::ImagePlanar420(const ImagePlanar420& other) : ImagePlanar(other) {}

ImagePlanar420::~ImagePlanar420() {}

namespace {

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

Planes GetPlanes(std::uint8_t* image, std::uint32_t stride, std::uint32_t height) {
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

// The loops read the source at positions taken from the merged tables (inside width x height)
// and write the destination within its rows, so they need buffers and strides not below the
// widths (which the interface guarantees for the host's frames).
bool Usable(const Image& image) {
  return image.GetImage() != nullptr && image.GetStride() >= image.GetWidth();
}

// Whether every chroma sample of a source position inside width x height lies inside both
// chroma planes. It does except for odd strides combined with small or odd heights, where the
// last chroma column runs past the frame.
bool SourceChromaFits(const Planes& s, std::uint32_t width, std::uint32_t height) {
  if (width == 0 || height == 0) {
    return true;
  }
  const std::size_t last = ((height - 1) / 2) * s.blocks + (width - 1) / 2;
  return last < s.vLimit && last < s.uLimit;
}

// Chroma sample of a source plane; positions past the end of the frame read the default.
inline std::uint8_t ReadChroma(const std::uint8_t* plane, std::size_t limit, std::size_t index) {
  return index < limit ? plane[index] : ImagePlanar::s_uDefault;
}

// Nearest neighbour, one destination row pair. T points at the merged (x, y) pair of pixel
// (0, 2r), B at that of pixel (0, 2r + 1). kChecked is the variant for odd widths and odd
// source layouts: it drops the column past an odd width (it is not part of the picture and,
// with stride = width, would land on the next row), tests each pixel's own position before
// using it (with an odd width the bottom-left pixel of a block belongs to a pair the block
// test does not look at) and keeps chroma reads and writes inside the frames.
template <bool kChecked>
void NearestRowPair(const Planes& d, const Planes& s, const std::uint32_t* T, const std::uint32_t* B,
                    std::uint32_t width, std::size_t r) {
  const std::uint32_t kOut = Map::s_uNearestOutside;
  std::uint8_t* y0 = d.y + 2 * r * d.stride;
  std::uint8_t* y1 = y0 + d.stride;
  std::uint8_t* u = d.u + r * d.blocks;
  std::uint8_t* v = d.v + r * d.blocks;
  for (std::uint32_t c = 0; c < width; c += 2) {
    const std::uint32_t* t = T + 2 * static_cast<std::size_t>(c);
    const std::uint32_t* b = B + 2 * static_cast<std::size_t>(c);
    const bool hasRight = !kChecked || c + 1 < width;
    if (t[0] != kOut && b[3] != kOut) {
      if (!kChecked) {
        y0[c] = s.y[t[1] * s.stride + t[0]];
        y0[c + 1] = s.y[t[3] * s.stride + t[2]];
        y1[c] = s.y[b[1] * s.stride + b[0]];
        y1[c + 1] = s.y[b[3] * s.stride + b[2]];
      } else {
        y0[c] = s.y[t[1] * s.stride + t[0]];
        y1[c] = b[0] != kOut ? s.y[b[1] * s.stride + b[0]] : ImagePlanar::s_yDefault;
        if (hasRight) {
          y0[c + 1] = t[2] != kOut ? s.y[t[3] * s.stride + t[2]] : ImagePlanar::s_yDefault;
          y1[c + 1] = s.y[b[3] * s.stride + b[2]];
        }
      }
    } else {
      y0[c] = ImagePlanar::s_yDefault;
      y1[c] = ImagePlanar::s_yDefault;
      if (hasRight) {
        y0[c + 1] = ImagePlanar::s_yDefault;
        y1[c + 1] = ImagePlanar::s_yDefault;
      }
    }
    const std::size_t k = c / 2;
    if (kChecked && k >= d.blocks) {
      continue;
    }
    if (t[0] == kOut) {
      u[k] = ImagePlanar::s_uDefault;
      v[k] = ImagePlanar::s_vDefault;
    } else {
      const std::size_t i = (t[1] / 2) * s.blocks + t[0] / 2;
      if (!kChecked) {
        u[k] = s.u[i];
        v[k] = s.v[i];
      } else {
        u[k] = ReadChroma(s.u, s.uLimit, i);
        v[k] = ReadChroma(s.v, s.vLimit, i);
      }
    }
  }
}

// One pixel of the bilinear path: integer position, fractions and the four weights.
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

// Bilinear, one destination row pair (luma rows at a pitch of the destination width). The
// block's chroma mixes the block's four pixels: the weights of the top-left pixel applied to
// the chroma of the top-left (yi/2, xi/2), bottom-left (yi/2, (xi+1)/2), top-right
// ((yi+1)/2, xi/2) and bottom-right ((yi+1)/2, (xi+1)/2) pixels, each with its own xi, yi.
// kChecked as for the nearest neighbour; a pixel of a valid block whose own position is the
// marker keeps the destination's value (as the three untouched pixels of an invalid block do)
// and lends the default chroma to the mix.
template <bool kChecked>
void BilinearRowPair(const Planes& d, const Planes& s, const float* T, const float* B, std::uint32_t width,
                     std::size_t r) {
  const float kOut = Map::s_fBilinearOutside;
  std::uint8_t* y0 = d.y + 2 * r * width;
  std::uint8_t* y1 = y0 + width;
  std::uint8_t* u = d.u + r * d.blocks;
  std::uint8_t* v = d.v + r * d.blocks;
  for (std::uint32_t c = 0; c < width; c += 2) {
    const float* t = T + 2 * static_cast<std::size_t>(c);
    const float* b = B + 2 * static_cast<std::size_t>(c);
    const std::size_t k = c / 2;
    const bool chromaInside = !kChecked || k < d.blocks;
    if (!(t[0] != kOut && b[3] != kOut)) {
      y0[c] = ImagePlanar::s_yDefault;
      if (chromaInside) {
        u[k] = ImagePlanar::s_uDefault;
        v[k] = ImagePlanar::s_vDefault;
      }
      continue;
    }
    const bool hasRight = !kChecked || c + 1 < width;
    const bool okTR = !kChecked || t[2] != kOut;
    const bool okBL = !kChecked || b[0] != kOut;
    const Sample tl = MakeSample(t);
    const Sample tr = okTR ? MakeSample(t + 2) : tl;
    const Sample bl = okBL ? MakeSample(b) : tl;
    const Sample br = MakeSample(b + 2);
    y0[c] = BlendLuma(s, tl);
    if (okBL) {
      y1[c] = BlendLuma(s, bl);
    }
    if (hasRight) {
      if (okTR) {
        y0[c + 1] = BlendLuma(s, tr);
      }
      y1[c + 1] = BlendLuma(s, br);
    }
    if (!chromaInside) {
      continue;
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
      u[k] = static_cast<std::uint8_t>(w0 * s.u[i0] + w1 * s.u[i1] + w2 * s.u[i2] + w3 * s.u[i3]);
      v[k] = static_cast<std::uint8_t>(w0 * s.v[i0] + w1 * s.v[i1] + w2 * s.v[i2] + w3 * s.v[i3]);
    } else {
      const std::uint8_t u1 = okBL ? ReadChroma(s.u, s.uLimit, i1) : ImagePlanar::s_uDefault;
      const std::uint8_t v1 = okBL ? ReadChroma(s.v, s.vLimit, i1) : ImagePlanar::s_vDefault;
      const std::uint8_t u2 = okTR ? ReadChroma(s.u, s.uLimit, i2) : ImagePlanar::s_uDefault;
      const std::uint8_t v2 = okTR ? ReadChroma(s.v, s.vLimit, i2) : ImagePlanar::s_vDefault;
      u[k] = static_cast<std::uint8_t>(w0 * ReadChroma(s.u, s.uLimit, i0) + w1 * u1 + w2 * u2 +
                                       w3 * ReadChroma(s.u, s.uLimit, i3));
      v[k] = static_cast<std::uint8_t>(w0 * ReadChroma(s.v, s.vLimit, i0) + w1 * v1 + w2 * v2 +
                                       w3 * ReadChroma(s.v, s.vLimit, i3));
    }
  }
}

}  // namespace

bool ImagePlanar420::NnInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  const ImagePlanar420& source = dynamic_cast<const ImagePlanar420&>(src);
  const std::uint32_t* table = mapX.GetMergedBuffer<std::uint32_t>(mapY, source.m_width, source.m_height);
  if (m_height < 2) {
    return true;
  }
  // Without a table (maps of different type or size) or one the size of this frame, or without
  // usable buffers, nothing is written.
  if (!table || mapX.GetRows() != m_height || mapX.GetCols() != m_width || !Usable(*this) || !Usable(source)) {
    return true;
  }
  const Planes d = GetPlanes(m_image, m_stride, m_height);
  const Planes s = GetPlanes(source.m_image, source.m_stride, source.m_height);
  const bool checked = (m_width & 1u) != 0 || !SourceChromaFits(s, source.m_width, source.m_height);
  const std::size_t pitch = 2 * static_cast<std::size_t>(m_width);
  for (std::size_t r = 0; r < m_height / 2; ++r) {
    const std::uint32_t* top = table + 2 * r * pitch;
    if (checked) {
      NearestRowPair<true>(d, s, top, top + pitch, m_width, r);
    } else {
      NearestRowPair<false>(d, s, top, top + pitch, m_width, r);
    }
  }
  return true;
}

bool ImagePlanar420::LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  const ImagePlanar420& source = dynamic_cast<const ImagePlanar420&>(src);
  const float* table = mapX.GetMergedBuffer<float>(mapY, source.m_width, source.m_height);
  if (m_height < 2) {
    return true;
  }
  if (!table || mapX.GetRows() != m_height || mapX.GetCols() != m_width || !Usable(*this) || !Usable(source)) {
    return true;
  }
  const Planes d = GetPlanes(m_image, m_stride, m_height);
  const Planes s = GetPlanes(source.m_image, source.m_stride, source.m_height);
  const bool checked = (m_width & 1u) != 0 || !SourceChromaFits(s, source.m_width, source.m_height);
  const std::size_t pitch = 2 * static_cast<std::size_t>(m_width);
  for (std::size_t r = 0; r < m_height / 2; ++r) {
    const float* top = table + 2 * r * pitch;
    if (checked) {
      BilinearRowPair<true>(d, s, top, top + pitch, m_width, r);
    } else {
      BilinearRowPair<false>(d, s, top, top + pitch, m_width, r);
    }
  }
  return true;
}

}  // namespace libdewarp
}  // namespace vemo
