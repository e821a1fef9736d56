// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "PolicyMapExport.h"

#include <cstdint>
#include <map>

namespace PolicyMap {

/// Numbers of which each is given out once. Every operation takes time logarithmic in the numbers
/// given out, however dense they are.
class POLICYMAP_API NumberPool {
 public:
  /// Takes `number`; returns false if that was taken before.
  bool take(std::uint32_t number);
  /// Takes and returns the next free number after `taken`, which is one. Where none is left up to
  /// the highest, it is the next free one before. Some number must be free.
  std::uint32_t takeNext(std::uint32_t taken);

 private:
  std::map<std::uint32_t, std::uint32_t>
      runs_;  // first to last number, with free ones between runs
};

}  // namespace PolicyMap
