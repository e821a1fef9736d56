// SPDX-License-Identifier: Apache-2.0
#pragma once

// Counts allocations. A program that includes this header replaces the global operator new, so that
// allocations inside the libraries are counted too.

#include <cstddef>

namespace TestSupport {

// The number of memory requests since the program started, over all forms of operator new.
[[nodiscard]] std::size_t heapAllocations();

// Detects whether memory was taken from the heap, or taken from or returned to the free lists of
// Kor::MemoryPool. Memory that was taken and returned again is detected too.
class AllocationProbe {
 public:
  AllocationProbe();
  AllocationProbe(AllocationProbe const&) = delete;
  AllocationProbe& operator=(AllocationProbe const&) = delete;

  // Since construction. Call it at most once.
  [[nodiscard]] bool sawAllocation();

 private:
  std::size_t heapBefore_;
};

template <class Action>
[[nodiscard]] bool allocates(Action&& action) {
  AllocationProbe probe;
  action();
  return probe.sawAllocation();
}

}  // namespace TestSupport
