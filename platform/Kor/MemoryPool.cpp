// SPDX-License-Identifier: Apache-2.0
#include "Kor/MemoryPool.h"

#include <algorithm>

namespace Kor {
namespace {

// Slabs are linked so that they stay reachable: what a leak checker calls lost is then really lost.
struct Slab {
  Slab* next;
};
Slab* slabs = nullptr;

constexpr std::size_t slabSize = std::size_t{64} * 1024;

}  // namespace

MemoryPool::Block* MemoryPool::freeLists[largest / granule + 1];

void* MemoryPool::refill(std::size_t sizeClass) {
  std::size_t const blockSize = std::max<std::size_t>(sizeClass, 1) * granule;
  auto* const memory = static_cast<std::byte*>(::operator new(slabSize));
  slabs = new (memory) Slab{slabs};
  // Handed out in ascending addresses: objects made one after the other lie beside each other.
  std::byte* const first = memory + granule;
  std::size_t const count = (slabSize - granule) / blockSize;
  Block* chain = nullptr;
  for (std::size_t i = count; i-- > 1;) {
    chain = new (first + i * blockSize) Block{chain};
  }
  freeLists[sizeClass] = chain;
  return first;
}

}  // namespace Kor
