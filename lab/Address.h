// SPDX-License-Identifier: Apache-2.0
// Addresses of the three families as bytes in network order, and their usual notations.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lab {

enum class Family : std::uint8_t { ip4, ip6, mac };

/// Bytes of an address: 4, 16 or 6.
constexpr std::size_t addressSize(Family family) noexcept {
  switch (family) {
  case Family::ip4: return 4;
  case Family::ip6: return 16;
  case Family::mac: break;
  }
  return 6;
}

/// As many bytes as the family has, in network order; the bytes behind them are zero.
using AddressBytes = std::array<std::uint8_t, 16>;

/// A set of addresses: those that agree with `value` in every bit that is set in `mask`. The mask
/// need not be contiguous. `value` is zero where `mask` is, so that equal sets compare equal;
/// default constructed it matches every address.
struct Address {
  AddressBytes value{};
  AddressBytes mask{};

  bool operator==(Address const&) const = default;
  bool isAny() const noexcept { return mask == AddressBytes{}; }
};

/// The set that agrees with `value` in the bits of `mask`; other bits of `value` are dropped.
Address maskedAddress(AddressBytes const& value, AddressBytes const& mask) noexcept;

/// A mask whose first `length` bits are set.
AddressBytes prefixMask(std::size_t length) noexcept;

/// The bits of an address of this family inverted, as between a mask and wildcard bits.
AddressBytes invertedBits(Family family, AddressBytes const& bytes) noexcept;

/// Number of leading bits of a contiguous IPv4 mask; false when the mask has holes.
bool maskLength(AddressBytes const& mask, std::uint8_t& length) noexcept;

/// Reads one address: "10.1.2.3", "2001:db8::1" (also "::ffff:10.1.2.3"), "0123.4567.89ab" or
/// "01:23:45:67:89:ab" (also with dashes). False when `text` is anything else; `bytes` is then
/// untouched.
bool parseAddress(Family family, std::string_view text, AddressBytes& bytes) noexcept;

/// Reads "ADDRESS/LENGTH", host bits kept. False when `text` is anything else.
bool parsePrefix(Family family, std::string_view text, AddressBytes& bytes,
                 std::uint8_t& length) noexcept;

}  // namespace lab
