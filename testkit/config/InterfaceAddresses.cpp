// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/InterfaceAddresses.h"

#include <Kor/Hash.h>

#include <algorithm>
#include <string_view>

namespace PolicyMapTestKit::Text {

std::uint32_t PrefixHash::operator()(InterfacePrefix const& prefix) const {
  std::string_view const bytes(reinterpret_cast<char const*>(prefix.address.data()),
                               prefix.address.size());
  return Kor::hashCombine(Kor::hashBytes(bytes), Kor::hashOf(prefix.length));
}

void InterfaceAddresses::addPrimary(InterfacePrefix const& prefix) {
  erase(prefix);
  entries_.put(primary, prefix);
}

void InterfaceAddresses::addSecondary(InterfacePrefix const& prefix) {
  auto const number = entries_.numberOf(prefix);
  if (number && *number != primary) {
    return;
  }
  if (number) {
    entries_.erase(*number);
  }
  // Numbers cannot run out: only this line assigns them, ten per line of input.
  entries_.put(entries_.nextNumber().value(), prefix);
}

bool InterfaceAddresses::erase(InterfacePrefix const& prefix) {
  auto const number = entries_.numberOf(prefix);
  return number && entries_.erase(*number);
}

bool InterfaceAddresses::operator==(InterfaceAddresses const& other) const {
  auto const same = [](auto const& left, auto const& right) {
    return left.second == right.second && (left.first == primary) == (right.first == primary);
  };
  return std::equal(byNumber().begin(), byNumber().end(), other.byNumber().begin(),
                    other.byNumber().end(), same);
}

}  // namespace PolicyMapTestKit::Text
