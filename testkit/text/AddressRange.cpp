// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/AddressRange.h"

namespace PolicyMapTestKit::Text {

namespace {

bool bitAt(AddressBytes const& bytes, std::size_t bit) {
  return (bytes[bit / 8] >> (7 - bit % 8) & 1U) != 0;
}

// The last address of the prefix that begins at `low`.
AddressBytes lastOf(Family family, AddressBytes const& low, std::size_t length) {
  AddressBytes const host = invertedBits(family, prefixMask(length));
  AddressBytes last = low;
  for (std::size_t i = 0; i != last.size(); ++i) {
    last[i] = static_cast<std::uint8_t>(last[i] | host[i]);
  }
  return last;
}

// Adds one. Returns false after the last address.
bool increment(Family family, AddressBytes& bytes) {
  for (std::size_t i = addressSize(family); i-- != 0;) {
    if (++bytes[i] != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::vector<Address> addressesFromTo(Family family, AddressBytes const& low,
                                     AddressBytes const& high) {
  std::vector<Address> addresses;
  AddressBytes next = low;
  bool more = true;
  while (more && next <= high) {
    // The largest prefix that begins here and ends within the range.
    std::size_t length = addressSize(family) * 8;
    while (length != 0 && !bitAt(next, length - 1) && lastOf(family, next, length - 1) <= high) {
      --length;
    }
    addresses.push_back(maskedAddress(next, prefixMask(length)));
    next = lastOf(family, next, length);
    more = increment(family, next);
  }
  return addresses;
}

}  // namespace PolicyMapTestKit::Text
