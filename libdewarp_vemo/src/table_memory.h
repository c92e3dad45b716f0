// Memory for coordinate tables.
//
// A 1920 x 1080 view needs tables of several megabytes each, and a PTZ change replaces some of
// them. Memory freshly taken from the system is mapped page by page on first touch, one page
// fault per 4 KiB; for tables of this size that costs far more than filling them. Large tables
// are therefore mapped with all their pages at once and unmapped when released, so nothing is
// kept after the last table goes. (Keeping released blocks for reuse saved about 2.5 ms of a
// 40 ms PTZ change, at the price of tens of megabytes held per process: not worth it in a
// 32-bit host.) Small tables, and every table in sanitizer builds (so that overruns are still
// caught), come from the ordinary heap.
#pragma once

#include <cstddef>
#include <memory>

namespace vemo {
namespace libdewarp {
namespace table_memory {

// `bytes` of memory aligned for any table element, owned by the returned holder; throws
// std::bad_alloc when the memory cannot be had (as operator new does).
std::shared_ptr<void> Allocate(std::size_t bytes);

}  // namespace table_memory
}  // namespace libdewarp
}  // namespace vemo
