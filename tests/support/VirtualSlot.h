// SPDX-License-Identifier: Apache-2.0
#pragma once

// virtualSlotOf(&Class::member): the index of a virtual member function in the table of its class,
// as compiled. Binary consumers depend on these numbers, so tests pin them.
//
// A pointer to a virtual member function holds the byte offset into the table. It is marked as
// virtual by the lowest bit of the offset (x86) or of the second word (ARM). The result for a
// function that is not virtual is -1.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TestSupport {

template <class Member>
int virtualSlotOf(Member member) {
  struct Representation {
    std::uintptr_t function;
    std::ptrdiff_t adjustment;
  } representation{};
  static_assert(sizeof(member) == sizeof(representation), "not a pointer to a member function");
  std::memcpy(&representation, &member, sizeof(member));
#if defined(__arm__) || defined(__aarch64__)
  bool const isVirtual = (representation.adjustment & 1) != 0;
  std::uintptr_t const offset = representation.function;
#else
  bool const isVirtual = (representation.function & 1) != 0;
  std::uintptr_t const offset = representation.function - 1;
#endif
  return isVirtual ? static_cast<int>(offset / sizeof(void*)) : -1;
}

}  // namespace TestSupport
