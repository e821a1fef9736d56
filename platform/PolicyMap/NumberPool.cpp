// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/NumberPool.h"

#include <iterator>
#include <limits>

namespace PolicyMap {

bool NumberPool::take(std::uint32_t number) {
  auto const after = runs_.upper_bound(number);
  auto const before = after == runs_.begin() ? runs_.end() : std::prev(after);
  if (before != runs_.end() && before->second >= number) {
    return false;
  }
  std::uint32_t last = number;
  if (after != runs_.end() && after->first == number + 1) {
    last = after->second;
    runs_.erase(after);
  }
  if (before != runs_.end() && before->second + 1 == number) {
    before->second = last;
  } else {
    runs_.emplace(number, last);
  }
  return true;
}

std::uint32_t NumberPool::takeNext(std::uint32_t taken) {
  auto const [first, last] = *std::prev(runs_.upper_bound(taken));
  std::uint32_t const next =
      last < std::numeric_limits<std::uint32_t>::max() ? last + 1 : first - 1;
  take(next);
  return next;
}

}  // namespace PolicyMap
