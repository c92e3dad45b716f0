// Fault injection for the channel tests: the test program replaces the global allocation functions
// so that one chosen allocation of the current thread can fail (std::bad_alloc, or null for the
// non-throwing forms) or throw a foreign exception (an int), as a component beneath the interface
// might. Nothing changes while no failure is armed.
#pragma once

#include <cstddef>

namespace channel_test {

enum class AllocationFault { None, BadAlloc, ThrowInt };

// Arms a fault at the next allocation of exactly `size` bytes made by the calling thread (the size
// of the object whose creation should fail); the hook disarms itself once it has fired.
void ArmAllocationFault(AllocationFault fault, std::size_t size, int thrownValue = 0);
void DisarmAllocationFault();
// True once the armed fault has fired (since the last ArmAllocationFault).
bool AllocationFaultFired();

}  // namespace channel_test
