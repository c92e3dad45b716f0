// Memory for coordinate tables.
//
// A 1920 x 1080 view needs tables of several megabytes each, and a PTZ change replaces some of
// them. Memory freshly taken from the system is mapped page by page on first touch, one page
// fault per 4 KiB (and on a virtual machine each first touch may also trap to the hypervisor);
// for tables of this size that costs far more than filling them. Large tables are therefore
// mapped with all their pages at once, on transparent huge pages where the kernel offers them (one
// fault per 2 MiB), and a released large table is kept for a while: a PTZ
// change releases the old map's tables just before it asks for new ones of the same sizes, and
// gets the same, already mapped and warm, memory back. That took a 1920 x 1080 PTZ change from
// about 45 ms to 14 ms on this project's machines.
//
// What is kept is bounded for the whole process (s_nSpareBytes, in at most s_nSpareBlocks
// blocks), whatever the number of channels: a block that would not fit pushes the oldest ones
// out, and a block larger than the bound is unmapped at once. A request takes a kept block of
// its own size, or else the smallest larger one cut down to the request (the pages past it are
// kept as a block of their own when they make a large table's worth, and unmapped otherwise):
// the intermediate maps a view releases while it builds its first maps serve the smaller ones it
// builds next. Kept blocks are all unmapped when the library is unloaded.
//
// Small tables, and every table in builds with the address sanitizer (so that overruns and use
// after release are still caught), come from the ordinary heap and are never kept.
#pragma once

#include <cstddef>
#include <memory>

namespace vemo {
namespace libdewarp {
namespace table_memory {

// Bounds of the released blocks kept for reuse.
const std::size_t s_nSpareBytes = std::size_t(64) << 20;
const int s_nSpareBlocks = 8;

// `bytes` of memory aligned for any table element, owned by the returned holder; throws
// std::bad_alloc when the memory cannot be had (as operator new does). The contents are
// unspecified: a reused block holds what its last table left in it.
std::shared_ptr<void> Allocate(std::size_t bytes);

// Whether this build keeps released large blocks for reuse (not under the address sanitizer).
bool KeepsSpares();

// Bytes in released blocks kept for reuse at the moment.
std::size_t SpareBytes();

// Unmaps every kept block now.
void ReleaseSpares();

// The processor time, in milliseconds, above which making one huge page present counts as slow
// (after which blocks are made of 4 KiB pages for a while, see table_memory.cpp); forgets any slow
// page seen so far and returns the previous bound. For tests.
double SetSlowHugePage(double fMilliseconds);

}  // namespace table_memory
}  // namespace libdewarp
}  // namespace vemo
