#include "table_memory.h"

#include <new>

#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define DEWARP_TABLES_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define DEWARP_TABLES_FROM_HEAP 1
#endif
#endif

namespace vemo {
namespace libdewarp {
namespace table_memory {

namespace {

std::shared_ptr<void> FromHeap(std::size_t bytes) {
  // Doubles are the widest table element; operator new aligns for them.
  double* array = new double[(bytes + sizeof(double) - 1) / sizeof(double)];
  return std::shared_ptr<void>(array, [](void* p) { delete[] static_cast<double*>(p); });
}

}  // namespace

std::shared_ptr<void> Allocate(std::size_t bytes) {
#ifndef DEWARP_TABLES_FROM_HEAP
  // From this size on a table is mapped directly (a quarter of a 1024 x 1024 float table).
  const std::size_t kMappedFrom = std::size_t(1) << 20;
  if (bytes >= kMappedFrom) {
    void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (pages == MAP_FAILED) {
      throw std::bad_alloc();
    }
    try {
      return std::shared_ptr<void>(pages, [bytes](void* p) { munmap(p, bytes); });
    } catch (...) {
      munmap(pages, bytes);
      throw;
    }
  }
#endif
  return FromHeap(bytes);
}

}  // namespace table_memory
}  // namespace libdewarp
}  // namespace vemo
