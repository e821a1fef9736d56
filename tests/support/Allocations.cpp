// SPDX-License-Identifier: Apache-2.0
#include "support/Allocations.h"

#include <Kor/MemoryPool.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::size_t requests = 0;

void* counted(std::size_t size) noexcept {
  ++requests;
  return std::malloc(std::max<std::size_t>(size, 1));
}
void* countedOrThrow(std::size_t size) {
  if (void* const memory = counted(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
  return countedOrThrow(size);
}
void* operator new[](std::size_t size) {
  return countedOrThrow(size);
}
void* operator new(std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return counted(size);
}
void* operator new[](std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return counted(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::nothrow_t const& /*tag*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::nothrow_t const& /*tag*/) noexcept {
  std::free(memory);
}

namespace TestSupport {
namespace {

constexpr unsigned char mark = 0x5a;

// Calls `visit(memory, size)` on the first block of each of the pool's free lists, which is the
// block that the next request of that size gets.
template <class Visit>
void visitFirstFreeBlocks(Visit&& visit) {
  for (std::size_t size = Kor::MemoryPool::granule; size <= Kor::MemoryPool::largest;
       size += Kor::MemoryPool::granule) {
    void* const memory = Kor::MemoryPool::allocate(size);
    visit(static_cast<unsigned char*>(memory), size);
    Kor::MemoryPool::release(memory, size);
  }
}

// The pool keeps its link in the first word of a free block and does not write to the rest.
constexpr std::size_t linkSize = sizeof(void*);

}  // namespace

std::size_t heapAllocations() {
  return requests;
}

AllocationProbe::AllocationProbe() {
  if (!Kor::MemoryPool::passesThrough()) {
    visitFirstFreeBlocks([](unsigned char* memory, std::size_t size) {
      std::memset(memory + linkSize, mark, size - linkSize);
    });
  }
  heapBefore_ = requests;
}

bool AllocationProbe::sawAllocation() {
  if (requests != heapBefore_) {
    return true;
  }
  bool touched = false;
  if (!Kor::MemoryPool::passesThrough()) {
    visitFirstFreeBlocks([&](unsigned char const* memory, std::size_t size) {
      touched = touched || !std::all_of(memory + linkSize, memory + size,
                                        [](unsigned char byte) { return byte == mark; });
    });
  }
  return touched;
}

}  // namespace TestSupport
