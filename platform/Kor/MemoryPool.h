// SPDX-License-Identifier: Apache-2.0
#pragma once

// Allocation of small objects by size class. An allocation is a pop, a release is a push.
//
// Blocks are cut from slabs, and each slab has blocks of one class and its own list of free ones.
// An empty slab is used again, for blocks of any class, so objects that are created in sequence are
// adjacent, even after many others were created and destroyed. Slabs are kept until the process
// ends.
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
#include <cstdint>

namespace Kor {

class MemoryPool {
 public:
  static constexpr std::size_t granule = 16;
  static constexpr std::size_t largest = 512;  // larger requests use the heap

  // Raises std::bad_alloc. The memory is aligned for every fundamental type.
  static void* allocate(std::size_t size) {
    KOR_ASSERT_OWNING_THREAD();
    if (size <= largest) {
      // There is no free block if the pool passes through to the heap.
      Slab& slab = *state.current[classOf(size)];
      if (Block* const block = slab.free) [[likely]] {
        slab.free = block->next;
        ++slab.untilCall;
        return block;
      }
      return refill(size);
    }
    return ::operator new(size);
  }

  // `size` must be the allocated size.
  static void release(void* memory, std::size_t size) noexcept {
    if (size <= largest && !state.passesThrough) [[likely]] {
      Slab& slab = slabOf(memory);
      auto* const block = static_cast<Block*>(memory);
      block->next = slab.free;
      slab.free = block;
      if (--slab.untilCall == 0) [[unlikely]] {
        retire(slab);
      }
      return;
    }
    ::operator delete(memory);
  }

  [[nodiscard]] static bool passesThrough() { return state.passesThrough; }

 private:
  struct Block {
    Block* next;
  };
  // Allocations are made from the current slab of a class until it is full. The first release into
  // a full slab makes it a spare one; the release of its last block, an empty one.
  struct Slab {
    Block* free;  // blocks that were cut and are not allocated
    std::uint32_t
        untilCall;  // releases until retire(): 1 if full, 1 more than allocated if current
    std::uint32_t sizeClass;
    std::uint32_t cut;    // blocks cut so far
    std::uint32_t count;  // blocks that fit
    bool full;
    Slab* next;  // of the spare or empty slabs
    Slab* previous;
  };
  struct State {
    Slab* current[largest / granule + 1];
    bool passesThrough;
  };
  struct Slabs;

  // A slab begins at a multiple of its size. Its head is in one of several cache lines there: equal
  // distances would put all heads in one set of a cache.
  static constexpr std::size_t slabSize = std::size_t{256} * 1024;
  static constexpr std::size_t line = 64;
  static constexpr std::size_t headLines = 16;

  static constexpr std::size_t classOf(std::size_t size) { return (size + granule - 1) / granule; }
  static Slab& slabOf(void* memory) {
    auto const address = reinterpret_cast<std::uintptr_t>(memory);
    std::size_t const place = address / slabSize % headLines * line;
    return *reinterpret_cast<Slab*>(static_cast<std::byte*>(memory) - address % slabSize + place);
  }
  KOR_API static void* refill(std::size_t size);
  KOR_API static void retire(Slab& slab) noexcept;

  KOR_API static State state;
};

}  // namespace Kor
