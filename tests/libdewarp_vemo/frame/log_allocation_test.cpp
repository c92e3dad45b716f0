// Without a log function the log does no formatting work at all: it allocates nothing. The global
// allocation functions of this test program count the allocations of the calling thread.
#include <libdewarp_vemo/log.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdlib>
#include <new>

// The replacement operators below pair malloc with free; at some optimisation levels g++ does not
// see through them and warns that delete frees what new allocated.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

namespace {

thread_local long g_allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++g_allocations;
  if (void* memory = std::malloc(size ? size : 1)) {
    return memory;
  }
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
  ++g_allocations;
  if (void* memory = std::malloc(size ? size : 1)) {
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using vemo::libdewarp::Log;

int Silent(const char*, va_list) { return 0; }

void Install(DEWARP_LOG_FUNCTION function, DEWARP_LOG_LEVEL level = LOG_INFO) {
  DEWARP_LOG_SETTINGS settings;
  settings.Function = function;
  settings.Level = level;
  Log::set_logging(settings);
}

long AllocationsOfOneRoundOfLines() {
  const long before = g_allocations;
  Log::err(1, "f.cpp", "F", "The channel parameter is invalid %d\n", 1);
  Log::warn(1, "f.cpp", "F", "Could not close channel %p\n", static_cast<void*>(nullptr));
  Log::info(1, "f.cpp", "F", "information of some length %s\n", "x");
  Log::printf("a printed line of some length %d\n", 2);
  return g_allocations - before;
}

TEST(LogWithoutFunction, DoesNoFormatting) {
  Install(nullptr);
  EXPECT_EQ(0, AllocationsOfOneRoundOfLines());
  Install(nullptr, LOG_ERROR);
}

TEST(LogWithoutFunction, FormattingIsVisibleOnceAFunctionIsInstalled) {
  // The counter does see the log's work when there is a function to deliver to.
  Install(&Silent);
  EXPECT_GT(AllocationsOfOneRoundOfLines(), 0);
  Install(nullptr, LOG_ERROR);
}

}  // namespace
