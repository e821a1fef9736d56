// SPDX-License-Identifier: Apache-2.0
#include "Kor/MemoryPool.h"

#include <algorithm>

namespace Kor {
namespace {

// Slabs are linked so that they stay reachable; a leak checker then reports only real leaks.
struct Slab {
  Slab* next;
};
Slab* slabs = nullptr;

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

constexpr std::size_t slabSize = std::size_t{64} * 1024;

}  // namespace

constinit MemoryPool::State MemoryPool::state{{}, sanitized};

void* MemoryPool::refill(std::size_t size) {
  if (state.passesThrough) {
    return ::operator new(size);
  }
  std::size_t const sizeClass = classOf(size);
  std::size_t const blockSize = std::max<std::size_t>(sizeClass, 1) * granule;
  auto* const memory = static_cast<std::byte*>(::operator new(slabSize));
  slabs = new (memory) Slab{slabs};
  // Ascending addresses: objects created in sequence are adjacent.
  std::byte* const first = memory + granule;
  std::size_t const count = (slabSize - granule) / blockSize;
  Block* chain = nullptr;
  for (std::size_t i = count; i-- > 1;) {
    chain = new (first + i * blockSize) Block{chain};
  }
  state.freeLists[sizeClass] = chain;
  return first;
}

}  // namespace Kor
