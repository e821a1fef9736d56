// SPDX-License-Identifier: Apache-2.0
#pragma once

// Memory for the many small objects: free lists by size class, filled from slabs that are kept
// until the process ends. An allocation is a pop, a release a push.
//
// A libKor that was built with a sanitizer passes every request to the heap, so that leaks and
// stale uses are seen. That is a fact of the library and the same for all that use it, however they
// were compiled themselves: memory allocated in one of them may be released in another. A program
// built with the address sanitizer runs on a normal libKor; it sees the slabs, not the blocks in
// them. A normal program on a sanitized libKor passes through as well; it has to be started with
// the sanitizer's runtime in LD_PRELOAD, since that must come first.

#include "Kor/Export.h"
#include "Kor/Thread.h"

#include <cstddef>

namespace Kor {

class MemoryPool {
 public:
  static constexpr std::size_t granule = 16;
  static constexpr std::size_t largest = 512;  // larger requests go to the heap

  // Raises std::bad_alloc. The memory is aligned for every fundamental type.
  static void* allocate(std::size_t size) {
    KOR_ASSERT_OWNING_THREAD();
    if (size <= largest) {
      // A library that passes through has empty lists.
      Block*& head = state.freeLists[classOf(size)];
      if (Block* const block = head) [[likely]] {
        head = block->next;
        return block;
      }
      return refill(size);
    }
    return ::operator new(size);
  }

  // `size` is that of the allocation.
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
