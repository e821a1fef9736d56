// SPDX-License-Identifier: Apache-2.0
#pragma once

// Addresses of the three families as bytes in network order, and their text forms.

#include "testkit/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace PolicyMapTestKit::Text {

enum class Family : std::uint8_t { ip4, ip6, mac };

// Bytes of an address: 4, 16 or 6.
constexpr std::size_t addressSize(Family family) noexcept {
  switch (family) {
  case Family::ip4: return 4;
  case Family::ip6: return 16;
  case Family::mac: break;
  }
  return 6;
}

// The address in network order. The bytes beyond the family's size are zero.
using AddressBytes = std::array<std::uint8_t, 16>;

// A set of addresses: those that equal `value` in every bit set in `mask`. The mask may have holes.
// `value` is zero where `mask` is, so that equal sets compare equal. Default: matches every
// address.
struct Address {
  AddressBytes value{};
  AddressBytes mask{};

  bool operator==(Address const&) const = default;
  bool isAny() const noexcept { return mask == AddressBytes{}; }
};

// The addresses that equal `value` in the bits of `mask`. Clears the other bits of `value`.
POLICYMAPTESTKIT_API Address maskedAddress(AddressBytes const& value,
                                           AddressBytes const& mask) noexcept;

// A mask whose first `length` bits are set.
POLICYMAPTESTKIT_API AddressBytes prefixMask(std::size_t length) noexcept;

// Inverts the bits of an address of this family: converts between a mask and wildcard bits.
POLICYMAPTESTKIT_API AddressBytes invertedBits(Family family, AddressBytes const& bytes) noexcept;

// Number of leading bits of an IPv4 mask. Returns false if the mask has holes.
POLICYMAPTESTKIT_API bool maskLength(AddressBytes const& mask, std::uint8_t& length) noexcept;

// Parses one address: "10.1.2.3", "2001:db8::1" (also "::ffff:10.1.2.3"), "0123.4567.89ab" or
// "01:23:45:67:89:ab" (also with dashes). Returns false for any other text and leaves `bytes`
// unchanged.
POLICYMAPTESTKIT_API bool parseAddress(Family family, std::string_view text,
                                       AddressBytes& bytes) noexcept;

// Parses "ADDRESS/LENGTH" and keeps the host bits. Returns false for any other text.
POLICYMAPTESTKIT_API bool parsePrefix(Family family, std::string_view text, AddressBytes& bytes,
                                      std::uint8_t& length) noexcept;

}  // namespace PolicyMapTestKit::Text
