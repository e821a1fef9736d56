// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "PolicyMapExport.h"

#include <cstdint>
#include <map>

namespace PolicyMap {

// Hands out each number at most once. Every operation is logarithmic in the count of numbers handed
// out, however dense they are.
class POLICYMAP_API NumberPool {
 public:
  // Takes `number`. Returns false if it is already taken.
  bool take(std::uint32_t number);
  // Takes and returns the next free number after `taken`, which must be taken. If there is none up
  // to the maximum, it is the nearest free number before. At least one number must be free.
  std::uint32_t takeNext(std::uint32_t taken);

 private:
  // From first to last number. Runs are separated by free numbers.
  std::map<std::uint32_t, std::uint32_t> runs_;
};

}  // namespace PolicyMap
