// SPDX-License-Identifier: Apache-2.0
#include "Kor/MemoryPool.h"

#include "Kor/Assert.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace Kor {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif

constexpr std::size_t slabsPerRegion = 15;  // and one lost to alignment
constexpr std::size_t cutAtOnce = 4096;     // bytes: the rest of a slab is not touched

}  // namespace

struct MemoryPool::Slabs {
  static constexpr std::size_t classes = largest / granule + 1;

  // The current slab of a class that has none.
  static Slab none;

  // Regions are linked so that they stay reachable; a leak checker then reports only real leaks.
  struct Region {
    Region* next;
  };
  static Region* regions;
  static std::byte* uncut;  // the slabs of the newest region that were never used
  static std::size_t uncutSlabs;
  static Slab* empty;
  static std::array<Slab*, classes> spare;

  static std::size_t blockSize(std::size_t sizeClass) {
    return std::max<std::size_t>(sizeClass, 1) * granule;
  }
  static std::byte* firstBlock(Slab& slab) {
    auto* const head = reinterpret_cast<std::byte*>(&slab);
    return head - reinterpret_cast<std::uintptr_t>(head) % slabSize + headLines * line;
  }

  static Slab& newest() {
    if (uncutSlabs == 0) {
      auto* const memory = static_cast<std::byte*>(::operator new((slabsPerRegion + 1) * slabSize));
      regions = new (memory) Region{regions};
      uncut = memory + slabSize - reinterpret_cast<std::uintptr_t>(memory) % slabSize;
      uncutSlabs = slabsPerRegion;
    }
    Slab& slab = slabOf(uncut);
    uncut += slabSize;
    --uncutSlabs;
    return slab;
  }

  // Returns an empty slab, prepared for blocks of this class.
  static Slab& makeCurrent(std::size_t sizeClass) {
    Slab& slab = empty != nullptr ? *std::exchange(empty, empty->next) : newest();
    std::size_t const count = (slabSize - headLines * line) / blockSize(sizeClass);
    return *new (&slab) Slab{nullptr,
                             1,
                             static_cast<std::uint32_t>(sizeClass),
                             0,
                             static_cast<std::uint32_t>(count),
                             false,
                             nullptr,
                             nullptr};
  }

  // In ascending addresses, so that objects created in sequence are adjacent.
  static void cutMore(Slab& slab) {
    std::size_t const size = blockSize(slab.sizeClass);
    auto const more =
        std::min<std::size_t>(std::max<std::size_t>(cutAtOnce / size, 1), slab.count - slab.cut);
    std::byte* const first = firstBlock(slab) + slab.cut * size;
    for (std::size_t i = more; i-- > 0;) {
      slab.free = new (first + i * size) Block{slab.free};
    }
    slab.cut += static_cast<std::uint32_t>(more);
  }

  static void addSpare(Slab& slab) {
    Slab*& head = spare[slab.sizeClass];
    slab.previous = nullptr;
    slab.next = head;
    if (head != nullptr) {
      head->previous = &slab;
    }
    head = &slab;
  }
  static void takeSpare(Slab& slab) {
    (slab.previous == nullptr ? spare[slab.sizeClass] : slab.previous->next) = slab.next;
    if (slab.next != nullptr) {
      slab.next->previous = slab.previous;
    }
  }
};

constinit MemoryPool::Slab MemoryPool::Slabs::none{};
constinit MemoryPool::Slabs::Region* MemoryPool::Slabs::regions = nullptr;
constinit std::byte* MemoryPool::Slabs::uncut = nullptr;
constinit std::size_t MemoryPool::Slabs::uncutSlabs = 0;
constinit MemoryPool::Slab* MemoryPool::Slabs::empty = nullptr;
constinit std::array<MemoryPool::Slab*, MemoryPool::Slabs::classes> MemoryPool::Slabs::spare{};

constinit MemoryPool::State MemoryPool::state = [] {
  State initial{{}, sanitized};
  std::fill(std::begin(initial.current), std::end(initial.current), &Slabs::none);
  return initial;
}();

void* MemoryPool::refill(std::size_t size) {
  if (state.passesThrough) {
    return ::operator new(size);
  }
  std::size_t const sizeClass = classOf(size);
  Slab*& current = state.current[sizeClass];
  if (current->cut == current->count) {
    Slab* const spare = Slabs::spare[sizeClass];
    Slab& next = spare != nullptr ? *spare : Slabs::makeCurrent(sizeClass);
    if (spare != nullptr) {
      Slabs::takeSpare(next);
      ++next.untilCall;
    }
    if (current != &Slabs::none) {
      current->full = true;
      current->untilCall = 1;
    }
    current = &next;
  }
  if (current->free == nullptr) {
    Slabs::cutMore(*current);
  }
  KOR_ASSERT(current->free != nullptr);
  return allocate(size);
}

void MemoryPool::retire(Slab& slab) noexcept {
  KOR_ASSERT(&slab != state.current[slab.sizeClass]);
  if (slab.full) {
    slab.full = false;
    slab.untilCall = slab.count - 1;
    Slabs::addSpare(slab);
  } else {
    Slabs::takeSpare(slab);
    slab.next = std::exchange(Slabs::empty, &slab);
  }
}

}  // namespace Kor
