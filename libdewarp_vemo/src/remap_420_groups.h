// Bilinear 4:2:0 remap over the group table of Map::GetBilinearGroupBuffer (private to the
// remap sources).
//
// A row pair of the destination is walked sixteen columns (eight 2 x 2 blocks) at a time. A
// group whose blocks all lie inside the picture goes through a vector kernel: the SSE2 one
// (the baseline, four blocks at a time) or, on processors that have it, the AVX2 one (eight
// blocks at a time), which is compiled in a file of its own and chosen once per frame. The
// SSE2 kernel leaves any other group (a block outside the picture, columns past the width) to
// the scalar kernel, block by block; the AVX2 kernel also takes groups with blocks outside the
// picture, giving those blocks the scalar kernel's bytes, and leaves it only groups with
// columns past the width. All three compute the same single-precision operations in the
// same order and truncate the same way, so they give the same bytes. On processors with AVX-512
// a third kernel takes two groups at a time.
//
// The walk needs an even destination width, a source whose chroma samples lie inside the frame
// and a source luma plane of at least eight bytes with stride and height below 32768 (the
// conditions under which image_planar_420.cpp takes it).
#pragma once

#include "remap_420_blocks.h"

#include <cstddef>
#include <cstdint>

namespace vemo {
namespace libdewarp {
namespace remap420 {

struct GroupWalk {
  Planes d;
  Planes s;
  const float* table;      // the group table
  std::size_t groups;      // groups per row pair: ceil(width / 16)
  std::size_t lumaPitch;   // destination luma row pitch
  std::uint32_t width;     // destination width (even)
  std::size_t rowPairs;    // destination height / 2

  const float* Group(std::size_t r, std::size_t g) const {
    return table + (r * groups + g) * Map::s_uBilinearGroupFloats;
  }
};

// The blocks of one group (columns c to c + 15, those below the width) through the scalar
// kernel.
void BilinearGroupByBlocks(const GroupWalk& w, const RowPair& o, const float* group, std::uint32_t c);

// Every row pair of the walk, SSE2 vector kernel.
void BilinearGroupRowsSse2(const GroupWalk& w);

// Every row pair of the walk through the SSE2 kernel, each group formed on the way from the
// map's float tables x and y (rows of 16 * w.groups columns) exactly as Map::GetBilinearGroupBuffer
// forms it for a source whose interpolable area is 0 <= x < maxX, 0 <= y < maxY, stored at its
// place in table (the group table, being built) and walked at once, as
// BilinearFormGroupsRowsAvx2 does with the AVX2 kernel.
void BilinearFormGroupsRowsSse2(const GroupWalk& w, const float* x, const float* y, float maxX, float maxY,
                                float* table);

// Every row pair of the walk, AVX2 vector kernel; only on processors with AVX2.
void BilinearGroupRowsAvx2(const GroupWalk& w);

// Every row pair of the walk through the AVX2 kernel, each group formed on the way from the
// map's float tables x and y (rows of 16 * w.groups columns, a row pair's two rows for each row
// pair of the walk) exactly as Map::GetBilinearGroupBuffer forms it for a source whose
// interpolable area is 0 <= x < maxX, 0 <= y < maxY, stored at its place in table (the group
// table, being built) and walked at once: the first frame through a map builds its group table
// in the same pass that reads it. Only on processors with AVX2.
void BilinearFormGroupsRowsAvx2(const GroupWalk& w, const float* x, const float* y, float maxX, float maxY,
                                float* table);

// One group (columns c to c + 15) through the AVX2 kernel, or block by block when some of its
// columns lie past the width; only on processors with AVX2.
void BilinearGroupAvx2(const GroupWalk& w, const RowPair& o, const float* group, std::uint32_t c);

// Every row pair of the walk, AVX-512 vector kernel (two groups at a time); only on processors
// with AVX-512 F, BW, DQ and VL.
void BilinearGroupRowsAvx512(const GroupWalk& w);

// Whether this processor (and its operating system) runs AVX2 code, and AVX-512 code of the
// four subsets above.
bool ProcessorHasAvx2();
bool ProcessorHasAvx512();

}  // namespace remap420
}  // namespace libdewarp
}  // namespace vemo
