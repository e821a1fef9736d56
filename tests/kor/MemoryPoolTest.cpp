// SPDX-License-Identifier: Apache-2.0
#include "support/Allocations.h"

#include <Kor/MemoryPool.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using Kor::MemoryPool;

#define SKIP_WHEN_PASSING_THROUGH()                                            \
  if (MemoryPool::passesThrough()) {                                           \
    GTEST_SKIP() << "in this build the pool passes every request to the heap"; \
  }                                                                            \
  static_assert(true)

TEST(MemoryPool, MemoryThatWasReleasedIsHandedOutAgain) {
  SKIP_WHEN_PASSING_THROUGH();
  void* const first = MemoryPool::allocate(40);
  MemoryPool::release(first, 40);
  void* const second = MemoryPool::allocate(48);
  EXPECT_EQ(first, second) << "40 and 48 bytes are of one size class";
  void* const third = MemoryPool::allocate(48);
  EXPECT_NE(second, third);
  MemoryPool::release(second, 48);
  MemoryPool::release(third, 48);
}

TEST(MemoryPool, SizeClassesDoNotShare) {
  SKIP_WHEN_PASSING_THROUGH();
  void* const small = MemoryPool::allocate(48);
  MemoryPool::release(small, 48);
  void* const large = MemoryPool::allocate(49);
  EXPECT_NE(small, large);
  MemoryPool::release(large, 49);
}

TEST(MemoryPool, ReusingMemoryTakesNothingFromTheHeap) {
  SKIP_WHEN_PASSING_THROUGH();
  std::vector<void*> blocks;
  blocks.reserve(100);
  for (int i = 0; i < 100; ++i) {
    blocks.push_back(MemoryPool::allocate(64));
  }
  for (void* const block : blocks) {
    MemoryPool::release(block, 64);
  }
  auto const before = TestSupport::heapAllocations();
  for (void*& block : blocks) {
    block = MemoryPool::allocate(64);
  }
  EXPECT_EQ(TestSupport::heapAllocations(), before);
  for (void* const block : blocks) {
    MemoryPool::release(block, 64);
  }
}

TEST(MemoryPool, OneRequestOfTheHeapServesManyOfThePool) {
  SKIP_WHEN_PASSING_THROUGH();
  constexpr std::size_t size = 496;
  auto const before = TestSupport::heapAllocations();
  std::vector<void*> blocks;
  blocks.reserve(10000);
  for (int i = 0; i < 10000; ++i) {
    blocks.push_back(MemoryPool::allocate(size));
  }
  auto const regions = TestSupport::heapAllocations() - before - 1;  // without the vector's own
  // A region of 4 MiB holds 15 slabs with 526 blocks of 496 bytes each.
  EXPECT_LE(regions, 2U);
  EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
  for (void* const block : blocks) {
    MemoryPool::release(block, size);
  }
}

// What remains of a crowd that came and went in any order does not show in the addresses.
TEST(MemoryPool, MemoryOfManyThatAreGoneIsHandedOutInTheOrderOfAddresses) {
  SKIP_WHEN_PASSING_THROUGH();
  constexpr std::size_t size = 112;
  constexpr std::size_t many = 100000;
  std::vector<void*> blocks(many);
  for (void*& block : blocks) {
    block = MemoryPool::allocate(size);
  }
  std::shuffle(blocks.begin(), blocks.end(), std::mt19937(1));
  for (void* const block : blocks) {
    MemoryPool::release(block, size);
  }
  auto const before = TestSupport::heapAllocations();
  for (void*& block : blocks) {
    block = MemoryPool::allocate(size);
  }
  EXPECT_EQ(TestSupport::heapAllocations(), before);
  std::size_t neighbours = 0;
  for (std::size_t i = 1; i < many; ++i) {
    neighbours += static_cast<std::byte*>(blocks[i - 1]) + size == blocks[i] ? 1 : 0;
  }
  // Not where a slab begins, nor in those few that never became empty.
  EXPECT_GT(neighbours, many * 9 / 10);
  for (void* const block : blocks) {
    MemoryPool::release(block, size);
  }
}

TEST(MemoryPool, EmptySlabsServeRequestsOfAnySize) {
  SKIP_WHEN_PASSING_THROUGH();
  std::vector<void*> blocks(50000);
  std::size_t requests = 0;
  for (std::size_t const size : {400U, 384U, 48U, 208U}) {
    auto const before = TestSupport::heapAllocations();
    for (void*& block : blocks) {
      block = MemoryPool::allocate(size);
    }
    requests = TestSupport::heapAllocations() - before;
    for (void* const block : blocks) {
      MemoryPool::release(block, size);
    }
    if (size != 400) {
      EXPECT_EQ(requests, 0U) << size;
    }
  }
}

TEST(MemoryPool, PassesThroughInASanitizedLibraryAlone) {
  // The tests are compiled like the library.
#if defined(__SANITIZE_ADDRESS__)
  constexpr bool sanitized = true;
#elif defined(__has_feature)
  constexpr bool sanitized = __has_feature(address_sanitizer);
#else
  constexpr bool sanitized = false;
#endif
  EXPECT_EQ(MemoryPool::passesThrough(), sanitized);
  void* const warm = MemoryPool::allocate(32);
  auto const before = TestSupport::heapAllocations();
  MemoryPool::release(warm, 32);
  void* const memory = MemoryPool::allocate(32);
  EXPECT_EQ(TestSupport::heapAllocations() - before, sanitized ? 1U : 0U);
  MemoryPool::release(memory, 32);
}

TEST(MemoryPool, LargeRequestsGoToTheHeap) {
  auto const before = TestSupport::heapAllocations();
  void* const memory = MemoryPool::allocate(MemoryPool::largest + 1);
  EXPECT_EQ(TestSupport::heapAllocations(), before + 1);
  std::memset(memory, 0, MemoryPool::largest + 1);
  MemoryPool::release(memory, MemoryPool::largest + 1);
}

TEST(MemoryPool, KeepsWhatIsWrittenWhenThereAreManySlabs) {
  constexpr std::size_t blocks = 100000;  // 48 MB
  std::vector<std::size_t*> all;
  all.reserve(blocks);
  for (std::size_t i = 0; i != blocks; ++i) {
    all.push_back(static_cast<std::size_t*>(MemoryPool::allocate(480)));
    std::fill_n(all.back(), 480 / sizeof(std::size_t), i);
  }
  std::size_t changed = 0;
  for (std::size_t i = 0; i != blocks; ++i) {
    changed += all[i][0] == i && all[i][480 / sizeof(std::size_t) - 1] == i ? 0U : 1U;
    MemoryPool::release(all[i], 480);
  }
  EXPECT_EQ(changed, 0U);
}

TEST(MemoryPool, ServesRequestsForNothing) {
  void* const a = MemoryPool::allocate(0);
  void* const b = MemoryPool::allocate(0);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(a, b);
  MemoryPool::release(a, 0);
  MemoryPool::release(b, 0);
}

RC_GTEST_PROP(MemoryPool, BlocksAreAlignedAndDoNotOverlap, ()) {
  auto const sizes =
      *rc::gen::container<std::vector<std::size_t>>(rc::gen::inRange<std::size_t>(0, 600));
  std::vector<std::pair<unsigned char*, std::size_t>> blocks;
  for (std::size_t const size : sizes) {
    auto* const memory = static_cast<unsigned char*>(MemoryPool::allocate(size));
    RC_ASSERT(reinterpret_cast<std::uintptr_t>(memory) % alignof(std::max_align_t) == 0U);
    std::memset(memory, static_cast<int>(blocks.size() & 0xffU), size);
    blocks.emplace_back(memory, size);
  }
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    auto const [memory, size] = blocks[i];
    for (std::size_t byte = 0; byte < size; ++byte) {
      RC_ASSERT(memory[byte] == (i & 0xffU));
    }
    MemoryPool::release(memory, size);
  }
}

}  // namespace
