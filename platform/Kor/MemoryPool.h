// SPDX-License-Identifier: Apache-2.0
#pragma once

// Allocation of small objects: free lists by size class, filled from slabs that are kept until the
// process ends. An allocation is a pop, a release is a push.
//
// A sanitized libKor forwards every request to the heap, so that leaks and uses after release are
// found. This depends on the library alone, not on how its users were compiled, because one may
// release what another has allocated. A program built with the address sanitizer can run on a
// normal libKor; it sees the slabs but not the blocks in them. A normal program can run on a
// sanitized libKor if it is started with the sanitizer's runtime in LD_PRELOAD, which must be
// loaded first.

#include "Kor/Export.h"
#include "Kor/Thread.h"

#include <cstddef>

namespace Kor {

class MemoryPool {
 public:
  static constexpr std::size_t granule = 16;
  static constexpr std::size_t largest = 512;  // larger requests use the heap

  // Raises std::bad_alloc. The memory is aligned for every fundamental type.
  static void* allocate(std::size_t size) {
    KOR_ASSERT_OWNING_THREAD();
    if (size <= largest) {
      // The lists are empty if the pool passes through to the heap.
      Block*& head = state.freeLists[classOf(size)];
      if (Block* const block = head) [[likely]] {
        head = block->next;
        return block;
      }
      return refill(size);
    }
    return ::operator new(size);
  }

  // `size` must be the allocated size.
  static void release(void* memory, std::size_t size) noexcept {
    if (size <= largest && !state.passesThrough) [[likely]] {
      Block*& head = state.freeLists[classOf(size)];
      auto* const block = static_cast<Block*>(memory);
      block->next = head;
      head = block;
      return;
    }
    ::operator delete(memory);
  }

  [[nodiscard]] static bool passesThrough() { return state.passesThrough; }

 private:
  struct Block {
    Block* next;
  };
  struct State {
    Block* freeLists[largest / granule + 1];
    bool passesThrough;
  };

  static constexpr std::size_t classOf(std::size_t size) { return (size + granule - 1) / granule; }
  KOR_API static void* refill(std::size_t size);

  KOR_API static State state;
};

}  // namespace Kor
