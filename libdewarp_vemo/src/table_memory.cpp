#include "table_memory.h"

#include <cstdint>
#include <ctime>
#include <mutex>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define DEWARP_TABLES_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define DEWARP_TABLES_FROM_HEAP 1
#endif
#endif

namespace vemo {
namespace libdewarp {
namespace table_memory {

namespace {

std::size_t PageRound(std::size_t bytes) {
  const long nSystemPage = sysconf(_SC_PAGESIZE);
  const std::size_t nPage = nSystemPage > 0 ? static_cast<std::size_t>(nSystemPage) : 4096;
  return (bytes + nPage - 1) / nPage * nPage;
}

std::shared_ptr<void> FromHeap(std::size_t bytes) {
  // Doubles are the widest table element; operator new aligns for them.
  double* array = new double[(bytes + sizeof(double) - 1) / sizeof(double)];
  return std::shared_ptr<void>(array, [](void* p) { delete[] static_cast<double*>(p); });
}

// From this size on a table is mapped directly (a quarter of a 1024 x 1024 float table).
const std::size_t kMappedFrom = std::size_t(1) << 20;

// Released mapped blocks kept for reuse, most recently released first. Constant-initialised,
// so it exists before any table is made and is destroyed after every static object that could
// hold one; a block released after that is unmapped at once.
class SparePool {
public:
  constexpr SparePool() : m_aBlocks(), m_nCount(0), m_nHeld(0), m_bClosed(false) {}
  ~SparePool() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    DropFrom(0);
    m_bClosed = true;
  }

  // A kept block for `bytes`, taken out of the pool, or null: one of exactly that size, or
  // else the smallest larger one, cut down to the request. Its pages past the request are kept
  // as a block of their own when they are a large block's worth (a view that releases a large
  // intermediate map serves two smaller tables from it), and unmapped otherwise, so nothing is
  // held that no table could use.
  void* Take(std::size_t bytes) {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    int nBest = -1;
    for (int i = 0; i < m_nCount; ++i) {
      if (m_aBlocks[i].nBytes >= bytes && (nBest < 0 || m_aBlocks[i].nBytes < m_aBlocks[nBest].nBytes)) {
        nBest = i;
      }
    }
    if (nBest < 0) {
      return nullptr;
    }
    const Block obBlock = m_aBlocks[nBest];
    m_nHeld -= obBlock.nBytes;
    for (int k = nBest + 1; k < m_nCount; ++k) m_aBlocks[k - 1] = m_aBlocks[k];
    --m_nCount;
    const std::size_t nKeep = PageRound(bytes), nHave = PageRound(obBlock.nBytes);
    if (nHave > nKeep) {
      char* const pRest = static_cast<char*>(obBlock.pBlock) + nKeep;
      const std::size_t nRest = nHave - nKeep;
      if (nRest >= kMappedFrom && !m_bClosed) {
        // One block out, one in: the bounds still hold.
        for (int k = m_nCount; k > 0; --k) m_aBlocks[k] = m_aBlocks[k - 1];
        m_aBlocks[0] = Block{pRest, nRest};
        ++m_nCount;
        m_nHeld += nRest;
      } else {
        munmap(pRest, nRest);
      }
    }
    return obBlock.pBlock;
  }

  // Keeps a released block, pushing the oldest ones out as far as needed; one that cannot be
  // kept is unmapped.
  void Give(void* pBlock, std::size_t bytes) {
    {
      std::lock_guard<std::mutex> obLock(m_obMutex);
      if (!m_bClosed && bytes <= s_nSpareBytes) {
        while (m_nCount > 0 && (m_nCount == s_nSpareBlocks || m_nHeld + bytes > s_nSpareBytes)) {
          DropFrom(m_nCount - 1);
        }
        for (int k = m_nCount; k > 0; --k) m_aBlocks[k] = m_aBlocks[k - 1];
        m_aBlocks[0] = Block{pBlock, bytes};
        ++m_nCount;
        m_nHeld += bytes;
        return;
      }
    }
    munmap(pBlock, bytes);
  }

  std::size_t Held() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    return m_nHeld;
  }

  void DropAll() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    DropFrom(0);
  }

private:
  struct Block {
    void* pBlock;
    std::size_t nBytes;
  };

  // Unmaps the blocks from index `first` on (the caller holds the lock).
  void DropFrom(int first) {
    for (int i = first; i < m_nCount; ++i) {
      munmap(m_aBlocks[i].pBlock, m_aBlocks[i].nBytes);
      m_nHeld -= m_aBlocks[i].nBytes;
    }
    if (first < m_nCount) m_nCount = first;
  }

  std::mutex m_obMutex;
  Block m_aBlocks[s_nSpareBlocks];
  int m_nCount;
  std::size_t m_nHeld;
  bool m_bClosed;
};

SparePool g_obSpares;

#ifndef DEWARP_TABLES_FROM_HEAP
// Huge pages are 2 MiB on x86 (both widths).
const std::size_t kHugePage = std::size_t(2) << 20;

#if defined(MADV_HUGEPAGE)
// A clock's reading in milliseconds (0 where it cannot be read).
double Milliseconds(clockid_t eClock) {
  timespec t;
  if (clock_gettime(eClock, &t) != 0) return 0.0;
  return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

// This thread's processor time (kernel work on its behalf included), and time that only runs on.
double ThreadMilliseconds() { return Milliseconds(CLOCK_THREAD_CPUTIME_ID); }
double MonotonicMilliseconds() { return Milliseconds(CLOCK_MONOTONIC); }

// On a virtual machine whose host takes back the memory its guest frees (free page reporting),
// the guest's free huge pages are often the very memory the host took back: making one present
// then traps to the host for each of its 4 KiB parts, and costs 5 ms instead of 0.2 (measured on
// this project's machines; 4 KiB pages, drawn from memory the host still backs, cost about 0.8 ms
// per 2 MiB there). So a block is made present one huge page at a time, each timed; from the
// first that took longer than kSlowHugePage on, the rest of the block and the blocks mapped in the
// next kSlowFor are made of 4 KiB pages. Where huge pages are cheap, nothing changes.
constexpr double kSlowHugePage = 1.5;  // ms of processor time for one 2 MiB page
constexpr double kSlowFor = 1000.0;    // ms

// The bound, and until when (monotonic ms) huge pages are not used; shared by all threads.
class HugePageSpeed {
public:
  constexpr HugePageSpeed() : m_fSlowPage(kSlowHugePage), m_fSlowUntil(0.0) {}
  bool LatelySlow() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    return MonotonicMilliseconds() < m_fSlowUntil;
  }
  double SlowPage() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    return m_fSlowPage;
  }
  void SeenSlow() {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    m_fSlowUntil = MonotonicMilliseconds() + kSlowFor;
  }
  double Reset(double fSlowPage) {
    std::lock_guard<std::mutex> obLock(m_obMutex);
    const double fPrevious = m_fSlowPage;
    m_fSlowPage = fSlowPage;
    m_fSlowUntil = 0.0;
    return fPrevious;
  }

private:
  std::mutex m_obMutex;
  double m_fSlowPage, m_fSlowUntil;
};

HugePageSpeed g_obHugePageSpeed;

bool HugePagesLatelySlow() { return g_obHugePageSpeed.LatelySlow(); }

// Makes the block present, a huge page at a time (see above).
void MakePresent(char* pBlock, std::size_t nLength) {
#if defined(MADV_POPULATE_WRITE)
  const double fSlowPage = g_obHugePageSpeed.SlowPage();
  for (std::size_t nDone = 0; nDone < nLength; nDone += kHugePage) {
    const std::size_t nPart = nLength - nDone < kHugePage ? nLength - nDone : kHugePage;
    const double fStart = ThreadMilliseconds();
    if (madvise(pBlock + nDone, nPart, MADV_POPULATE_WRITE) != 0) return;  // made present on first touch
    if (ThreadMilliseconds() - fStart > fSlowPage && nDone + nPart < nLength) {
      g_obHugePageSpeed.SeenSlow();
      char* const pRest = pBlock + nDone + nPart;
      const std::size_t nRest = nLength - nDone - nPart;
      madvise(pRest, nRest, MADV_NOHUGEPAGE);
      madvise(pRest, nRest, MADV_POPULATE_WRITE);
      return;
    }
  }
#else
  (void)pBlock;
  (void)nLength;
#endif
}

// A block of at least one huge page placed on a huge-page boundary and offered to the kernel for
// transparent huge pages, then made present at once: one fault and one clearing pass per 2 MiB
// instead of 512 faults of 4 KiB. On this project's virtual machines that took a fresh 1920 x 1080
// pair of float tables (16.6 MB) from about 10 ms to 3 ms. Where the kernel has no huge pages for
// us the advice is refused and the block is an ordinary one; where it cannot make the pages
// present at once (a kernel without that advice) they are made present on first touch, as with
// any memory. Null when the address space has no room for the aligned reservation, and while
// huge pages are slow to make present (see above).
void* MapOnHugePages(std::size_t bytes) {
  if (HugePagesLatelySlow()) {
    return nullptr;
  }
  const std::size_t nLength = PageRound(bytes);
  const std::size_t nReserve = nLength + kHugePage;
  if (nLength < kHugePage || nReserve < nLength) {
    return nullptr;
  }
  void* pReserved = mmap(nullptr, nReserve, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pReserved == MAP_FAILED) {
    return nullptr;
  }
  // Keep the aligned part of the reservation and give the rest back.
  char* const pStart = static_cast<char*>(pReserved);
  const std::uintptr_t uStart = reinterpret_cast<std::uintptr_t>(pStart);
  char* const pBlock = pStart + ((kHugePage - uStart % kHugePage) % kHugePage);
  const std::size_t nHead = static_cast<std::size_t>(pBlock - pStart);
  const std::size_t nTail = nReserve - nHead - nLength;
  if (nHead > 0) munmap(pStart, nHead);
  if (nTail > 0) munmap(pBlock + nLength, nTail);
  madvise(pBlock, nLength, MADV_HUGEPAGE);
  MakePresent(pBlock, nLength);
  return pBlock;
}
#endif

// Fresh memory for a large table, every page present; null when it cannot be had.
void* MapFresh(std::size_t bytes) {
#if defined(MADV_HUGEPAGE)
  if (void* pBlock = MapOnHugePages(bytes)) {
    return pBlock;
  }
#endif
  void* pBlock = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
  return pBlock == MAP_FAILED ? nullptr : pBlock;
}
#endif

}  // namespace

std::shared_ptr<void> Allocate(std::size_t bytes) {
#ifndef DEWARP_TABLES_FROM_HEAP
  if (bytes >= kMappedFrom) {
    void* pages = g_obSpares.Take(bytes);
    if (!pages) {
      pages = MapFresh(bytes);
      if (!pages) {
        // Kept blocks may be what fills the address space: give them back and try once more.
        g_obSpares.DropAll();
        pages = MapFresh(bytes);
      }
      if (!pages) {
        throw std::bad_alloc();
      }
    }
    try {
      return std::shared_ptr<void>(pages, [bytes](void* p) { g_obSpares.Give(p, bytes); });
    } catch (...) {
      g_obSpares.Give(pages, bytes);
      throw;
    }
  }
#endif
  return FromHeap(bytes);
}

bool KeepsSpares() {
#ifdef DEWARP_TABLES_FROM_HEAP
  return false;
#else
  return true;
#endif
}

std::size_t SpareBytes() { return g_obSpares.Held(); }

void ReleaseSpares() { g_obSpares.DropAll(); }

double SetSlowHugePage(double fMilliseconds) {
#if !defined(DEWARP_TABLES_FROM_HEAP) && defined(MADV_HUGEPAGE)
  return g_obHugePageSpeed.Reset(fMilliseconds);
#else
  return fMilliseconds;
#endif
}

}  // namespace table_memory
}  // namespace libdewarp
}  // namespace vemo
