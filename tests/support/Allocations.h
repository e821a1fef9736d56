// SPDX-License-Identifier: Apache-2.0
#pragma once

// Counting allocations. A program that includes this replaces the global operator new, so that what
// the libraries allocate counts as well.

#include <cstddef>

namespace TestSupport {

// Memory requests since the program started: operator new in all its forms.
[[nodiscard]] std::size_t heapAllocations();

// Tells whether memory was taken from the heap, or taken from or given to the free lists of
// Kor::MemoryPool. What was taken and given back again counts.
class AllocationProbe {
 public:
  AllocationProbe();
  AllocationProbe(AllocationProbe const&) = delete;
  AllocationProbe& operator=(AllocationProbe const&) = delete;

  // Since the probe was made. Ask once.
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
