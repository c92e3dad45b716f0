#include <libdewarp_vemo/image_planar_420.h>

#include <libdewarp_vemo/map.h>

#include "bilinear_group_rows.h"
#include "remap_420_groups.h"

#include <atomic>
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

using remap420::Planes;
using remap420::GetRowPair;
using remap420::RowPair;

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

// Whether the group kernels serve this source: positions and pitches fit the 16-bit halves of
// their offset arithmetic, and the frame is large enough for their reads (the words they read
// around a sample stay inside the frame when the luma plane has at least eight bytes).
bool GroupKernelsFit(const Image& source) {
  return source.GetStride() < 32768u && source.GetHeight() < 32768u &&
         static_cast<std::size_t>(source.GetStride()) * source.GetHeight() >= 8u;
}

// The kernels of each mode, chosen by the element type of the merged table.
template <bool kChecked>
inline void Block(const Planes& d, const Planes& s, const RowPair& o, const std::uint32_t* t, const std::uint32_t* b,
                  std::uint32_t width, std::uint32_t c) {
  remap420::NearestBlock<kChecked>(d, s, o, t, b, width, c);
}
template <bool kChecked>
inline void Block(const Planes& d, const Planes& s, const RowPair& o, const float* t, const float* b,
                  std::uint32_t width, std::uint32_t c) {
  remap420::BilinearBlock<kChecked>(d, s, o, t, b, width, c);
}

// What a remap walks: both frames, the merged table (two values per pixel), the destination's
// luma row pitch, width and number of row pairs.
template <class T>
struct Walk {
  Planes d;
  Planes s;
  const T* table;
  std::size_t lumaPitch;
  std::uint32_t width;
  std::size_t rowPairs;

  const T* Top(std::size_t r) const { return table + 4 * r * static_cast<std::size_t>(width); }
  const T* Bottom(std::size_t r) const { return Top(r) + 2 * static_cast<std::size_t>(width); }
};

// Every block through the scalar kernel.
template <bool kChecked, class T>
void ScalarRows(const Walk<T>& w) {
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    const T* top = w.Top(r);
    const T* bottom = w.Bottom(r);
    for (std::uint32_t c = 0; c < w.width; c += 2) {
      Block<kChecked>(w.d, w.s, o, top + 2 * static_cast<std::size_t>(c), bottom + 2 * static_cast<std::size_t>(c),
                      w.width, c);
    }
  }
}

// Nearest neighbour over the packed table (one word per pixel): eight columns at a time through
// the group kernel, the scalar kernel (on unpacked pairs) for groups with a block outside the
// picture and for the last columns. Even widths over sources that the group kernels serve.
void NearestPackedRows(const Planes& d, const Planes& s, const std::uint32_t* table, std::uint32_t width,
                       std::size_t rowPairs) {
  const __m128i luma = remap420::OffsetMultiplier(s.stride);
  const __m128i chroma = remap420::OffsetMultiplier(s.blocks);
  for (std::size_t r = 0; r < rowPairs; ++r) {
    const RowPair o = GetRowPair(d, d.stride, r);
    const std::uint32_t* top = table + 2 * r * static_cast<std::size_t>(width);
    const std::uint32_t* bottom = top + width;
    // The block at columns k, k + 1 through the scalar kernel.
    const auto block = [&](std::uint32_t k) {
      std::uint32_t t[4], b[4];
      remap420::UnpackNearestPair(top + k, t);
      remap420::UnpackNearestPair(bottom + k, b);
      remap420::NearestBlock<false>(d, s, o, t, b, width, k);
    };
    std::uint32_t c = 0;
    for (; c + 8 <= width; c += 8) {
      if (!remap420::NearestPackedGroup(s, o, top + c, bottom + c, c, luma, chroma)) {
        for (std::uint32_t k = c; k < c + 8; k += 2) block(k);
      }
    }
    for (; c < width; c += 2) block(c);
  }
}

// Whether the per-block loops need their checked variant: odd widths, and sources whose last
// chroma samples lie past the end of the frame (or without a buffer, which nothing reads).
bool NeedsCheckedBlocks(const Image& dst, const Image& src) {
  if (src.GetImage() == nullptr) {
    return true;
  }
  const Planes s = remap420::GetPlanes(src.GetImage(), src.GetStride(), src.GetHeight());
  return (dst.GetWidth() & 1u) != 0 || !SourceChromaFits(s, src.GetWidth(), src.GetHeight());
}

// Walks the row pairs of a destination through an unpacked merged table block by block (the
// frames that the group kernels do not serve).
template <class T>
void RemapRowPairs(const Image& dst, const Image& src, const T* table, std::size_t lumaPitch) {
  Walk<T> w;
  w.d = remap420::GetPlanes(dst.GetImage(), dst.GetStride(), dst.GetHeight());
  w.s = remap420::GetPlanes(src.GetImage(), src.GetStride(), src.GetHeight());
  w.table = table;
  w.lumaPitch = lumaPitch;
  w.width = dst.GetWidth();
  w.rowPairs = dst.GetHeight() / 2;
  if (NeedsCheckedBlocks(dst, src)) {
    ScalarRows<true>(w);
  } else {
    ScalarRows<false>(w);
  }
}

// Which kernels the remaps may use (ImagePlanar420::KernelSet), process-wide.
std::atomic<int> g_kernelSet(ImagePlanar420::WIDEST_KERNELS);

// The row kernel of a bilinear frame over groups, chosen once for the whole frame: the widest
// allowed that the processor runs.
typedef void (*GroupRows)(const remap420::GroupWalk&);
GroupRows ChooseGroupRows() {
  const ImagePlanar420::KernelSet set = ImagePlanar420::GetKernelSet();
  const bool avx512 = set == ImagePlanar420::WIDEST_KERNELS || set == ImagePlanar420::AVX512_KERNELS;
  const bool avx2 = avx512 || set == ImagePlanar420::AVX2_KERNELS;
  if (avx512 && remap420::ProcessorHasAvx512()) return remap420::BilinearGroupRowsAvx512;
  if (avx2 && remap420::ProcessorHasAvx2()) return remap420::BilinearGroupRowsAvx2;
  return remap420::BilinearGroupRowsSse2;
}

}  // namespace

namespace remap420 {

void BilinearGroupByBlocks(const GroupWalk& w, const RowPair& o, const float* group, std::uint32_t c) {
  for (std::uint32_t k = 0; k < 8 && c + 2 * k < w.width; ++k) {
    // The block's top pair (top-left, top-right pixel) and bottom pair, as the scalar kernel
    // takes them.
    const float t[4] = {group[k], group[8 + k], group[16 + k], group[24 + k]};
    const float b[4] = {group[32 + k], group[40 + k], group[48 + k], group[56 + k]};
    BilinearBlock<false>(w.d, w.s, o, t, b, w.width, c + 2 * k);
  }
}

void BilinearGroupRowsSse2(const GroupWalk& w) {
  const __m128i luma = OffsetMultiplier(w.s.stride);
  const __m128i chroma = OffsetMultiplier(w.s.blocks);
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    for (std::size_t g = 0; g < w.groups; ++g) {
      const float* group = w.Group(r, g);
      const std::uint32_t c = static_cast<std::uint32_t>(g * Map::s_uBilinearGroupColumns);
      if (!BilinearGroup16(w.s, o, group, c, luma, chroma)) {
        BilinearGroupByBlocks(w, o, group, c);
      }
    }
  }
}

void BilinearFormGroupsRowsSse2(const GroupWalk& w, const float* x, const float* y, float maxX, float maxY,
                                float* table) {
  const __m128i luma = OffsetMultiplier(w.s.stride);
  const __m128i chroma = OffsetMultiplier(w.s.blocks);
  const BilinearBounds bounds = {maxX, maxY};
  const std::size_t cols = w.groups * Map::s_uBilinearGroupColumns;
  for (std::size_t r = 0; r < w.rowPairs; ++r) {
    const RowPair o = GetRowPair(w.d, w.lumaPitch, r);
    const std::size_t upper = 2 * r * cols, lower = upper + cols;
    for (std::size_t g = 0; g < w.groups; ++g) {
      const std::size_t first = g * Map::s_uBilinearGroupColumns;
      float* const group = table + (r * w.groups + g) * Map::s_uBilinearGroupFloats;
      FillGroupRow(group, x + upper + first, y + upper + first, bounds);
      FillGroupRow(group + Map::s_uBilinearGroupFloats / 2, x + lower + first, y + lower + first, bounds);
      const std::uint32_t c = static_cast<std::uint32_t>(first);
      if (!BilinearGroup16(w.s, o, group, c, luma, chroma)) {
        BilinearGroupByBlocks(w, o, group, c);
      }
    }
  }
}

// The AVX2 kernel runs in 32-bit processes too: it keeps few vectors alive at once, so the eight
// vector registers of 32-bit code serve it (a 1920 x 1080 bilinear frame in a 32-bit process on
// an AMD EPYC: 6.0 ms against 8.5 ms with SSE2). The AVX-512 kernel keeps more alive and stays
// with 64-bit processes.
bool ProcessorHasAvx2() {
  static const bool has = __builtin_cpu_supports("avx2") != 0;
  return has;
}

bool ProcessorHasAvx512() {
#if defined(__i386__)
  return false;
#else
  static const bool has = ProcessorHasAvx2() && __builtin_cpu_supports("avx512f") != 0 &&
                          __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                          __builtin_cpu_supports("avx512vl") != 0;
  return has;
#endif
}

}  // namespace remap420

void ImagePlanar420::SetKernelSet(KernelSet set) {
  g_kernelSet.store(set);
}

ImagePlanar420::KernelSet ImagePlanar420::GetKernelSet() {
  return static_cast<KernelSet>(g_kernelSet.load());
}

bool ImagePlanar420::IsKernelSetSupported(KernelSet set) {
  switch (set) {
    case WIDEST_KERNELS:
    case SSE2_KERNELS:
      return true;
    case AVX2_KERNELS:
      return remap420::ProcessorHasAvx2();
    case AVX512_KERNELS:
      return remap420::ProcessorHasAvx512();
  }
  return false;
}

bool ImagePlanar420::NnInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  const ImagePlanar420& source = dynamic_cast<const ImagePlanar420&>(src);
  // Frames that the group kernels serve take the packed table (half the bytes to read per
  // frame), every other frame the unpacked one (both kept in the x map's integer merge slot).
  const bool packed = mapX.GetCols() == m_width && !NeedsCheckedBlocks(*this, source) && GroupKernelsFit(source);
  const std::uint32_t* table = packed ? mapX.GetNearestPackedBuffer(mapY, source.m_width, source.m_height)
                                      : mapX.GetMergedBuffer<std::uint32_t>(mapY, source.m_width, source.m_height);
  if (m_height < 2) {
    return true;
  }
  // Without a table (maps of different type or size) or one the size of this frame, or without
  // usable buffers, nothing is written.
  if (!table || mapX.GetRows() != m_height || mapX.GetCols() != m_width || !Usable(*this) || !Usable(source)) {
    return true;
  }
  if (packed) {
    // Destination luma rows at the stride.
    NearestPackedRows(remap420::GetPlanes(m_image, m_stride, m_height),
                      remap420::GetPlanes(source.m_image, source.m_stride, source.m_height), table, m_width,
                      m_height / 2);
    return true;
  }
  // Destination luma rows at the stride.
  RemapRowPairs(*this, source, table, m_stride);
  return true;
}

bool ImagePlanar420::LinearInterpolation(const Image& src, const Map& mapX, const Map& mapY) {
  const ImagePlanar420& source = dynamic_cast<const ImagePlanar420&>(src);
  // Frames that the group kernels serve take the group table, every other frame the
  // interleaved one (both kept in the x map's float merge slot, built on first use).
  const bool groups = mapX.GetCols() == m_width && !NeedsCheckedBlocks(*this, source) && GroupKernelsFit(source);
  if (!groups) {
    const float* table = mapX.GetMergedBuffer<float>(mapY, source.m_width, source.m_height);
    if (m_height < 2) {
      return true;
    }
    if (!table || mapX.GetRows() != m_height || mapX.GetCols() != m_width || !Usable(*this) || !Usable(source)) {
      return true;
    }
    // Destination luma rows at a pitch of the width.
    RemapRowPairs(*this, source, table, m_width);
    return true;
  }
  remap420::GroupWalk w;
  w.d = remap420::GetPlanes(m_image, m_stride, m_height);
  w.s = remap420::GetPlanes(source.m_image, source.m_stride, source.m_height);
  w.table = nullptr;
  w.groups = (m_width + Map::s_uBilinearGroupColumns - 1) / Map::s_uBilinearGroupColumns;
  w.lumaPitch = m_width;  // destination luma rows at a pitch of the width
  w.width = m_width;
  w.rowPairs = m_height / 2;
  const bool walkable = m_height >= 2 && mapX.GetRows() == m_height && Usable(*this) && Usable(source);
  const GroupRows rows = ChooseGroupRows();
  // The AVX2 and SSE2 kernels build a missing table in the pass that walks the frame through it.
  const bool forms = rows == remap420::BilinearGroupRowsAvx2 || rows == remap420::BilinearGroupRowsSse2;
  if (walkable && forms && !mapX.HasBilinearGroupBuffer(source.m_width, source.m_height)) {
    if (float* table = mapX.NewBilinearGroupBuffer(mapY)) {
      const auto form = rows == remap420::BilinearGroupRowsAvx2 ? remap420::BilinearFormGroupsRowsAvx2
                                                                : remap420::BilinearFormGroupsRowsSse2;
      form(w, mapX.GetTypePtr<float>(), mapY.GetTypePtr<float>(), static_cast<float>(source.m_width) - 1.0f,
           static_cast<float>(source.m_height) - 1.0f, table);
      mapX.KeepBilinearGroupBuffer(table, source.m_width, source.m_height);
      return true;
    }
  }
  w.table = mapX.GetBilinearGroupBuffer(mapY, source.m_width, source.m_height);
  if (w.table && walkable) {
    rows(w);
  }
  return true;
}

}  // namespace libdewarp
}  // namespace vemo
