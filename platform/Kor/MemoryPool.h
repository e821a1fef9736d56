// SPDX-License-Identifier: Apache-2.0
#pragma once

// Memory for the many small objects: free lists by size class, filled from slabs that are kept
// until the process ends. An allocation is a pop, a release a push. Under a sanitizer every request
// goes to the heap, so that leaks and stale uses are seen.

#include "Kor/Export.h"
#include "Kor/Thread.h"

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(KOR_SANITIZED)
#define KOR_POOL_PASSES_THROUGH 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define KOR_POOL_PASSES_THROUGH 1
#endif
#endif

namespace Kor {

class MemoryPool {
 public:
  static constexpr std::size_t granule = 16;
  static constexpr std::size_t largest = 512;  // larger requests go to the heap

  // Raises std::bad_alloc. The memory is aligned for every fundamental type.
  static void* allocate(std::size_t size) {
    KOR_ASSERT_OWNING_THREAD();
#ifndef KOR_POOL_PASSES_THROUGH
    if (size <= largest) {
      Block*& head = freeLists[classOf(size)];
      if (Block* const block = head) [[likely]] {
        head = block->next;
        return block;
      }
      return refill(classOf(size));
    }
#endif
    return ::operator new(size);
  }

  // `size` is that of the allocation.
  static void release(void* memory, [[maybe_unused]] std::size_t size) noexcept {
#ifndef KOR_POOL_PASSES_THROUGH
    if (size <= largest) {
      Block*& head = freeLists[classOf(size)];
      auto* const block = static_cast<Block*>(memory);
      block->next = head;
      head = block;
      return;
    }
#endif
    ::operator delete(memory);
  }

 private:
  struct Block {
    Block* next;
  };

  static constexpr std::size_t classOf(std::size_t size) {
    return (size + granule - 1) / granule;
  }
  KOR_API static void* refill(std::size_t sizeClass);

  KOR_API static Block* freeLists[largest / granule + 1];
};

}  // namespace Kor
