// Replacement of the global allocation functions for fault injection (see allocation_hook.h).
#include "allocation_hook.h"

#include <cstdlib>
#include <new>

namespace channel_test {
namespace {

thread_local AllocationFault t_fault = AllocationFault::None;
thread_local std::size_t t_size = 0;
thread_local int t_value = 0;
thread_local bool t_fired = false;

// True when this allocation is the armed one; the fault then fires once.
bool FaultNow(std::size_t size, AllocationFault& fault) {
  if (t_fault == AllocationFault::None || size != t_size) return false;
  fault = t_fault;
  t_fault = AllocationFault::None;
  t_fired = true;
  return true;
}

void* Allocate(std::size_t size) {
  AllocationFault fault = AllocationFault::None;
  if (FaultNow(size, fault)) {
    if (fault == AllocationFault::ThrowInt) throw t_value;
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* AllocateNoThrow(std::size_t size) noexcept {
  AllocationFault fault = AllocationFault::None;
  if (FaultNow(size, fault)) return nullptr;
  return std::malloc(size ? size : 1);
}

}  // namespace

void ArmAllocationFault(AllocationFault fault, std::size_t size, int thrownValue) {
  t_fired = false;
  t_value = thrownValue;
  t_size = size;
  t_fault = fault;
}

void DisarmAllocationFault() { t_fault = AllocationFault::None; }

bool AllocationFaultFired() { return t_fired; }

}  // namespace channel_test

void* operator new(std::size_t size) { return channel_test::Allocate(size); }
void* operator new[](std::size_t size) { return channel_test::Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return channel_test::AllocateNoThrow(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return channel_test::AllocateNoThrow(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
