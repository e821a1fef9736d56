// SPDX-License-Identifier: Apache-2.0
#pragma once

// IpAddressMatch, Ip6AddressMatch, MacAddressMatch: the set of addresses that equal a value in
// every bit of a mask. The mask may have holes.
//
// Prints as a Python string: 'any', '10.1.2.3' (one address), '10.0.0.0/8' (leading bits; not for
// MAC) or '10.0.0.1/255.0.0.255'. All four forms are parsed for every family.

#include "Acl/OptionalNumber.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace Acl {

template <class Traits>
class POLICYMAP_API AddressMatch {
 public:
  static constexpr std::size_t size = Traits::size;
  static constexpr std::string_view korTypeName = Traits::typeName;
  // In network order.
  using Bytes = std::array<std::uint8_t, size>;

  // Matches every address.
  AddressMatch() = default;
  // Matches the addresses that equal `value` in the bits of `mask`. Clears the other bits of
  // `value`.
  AddressMatch(Bytes const& value, Bytes const& mask);
  // The same from IPv4 words, e.g. 0x0a000000 for 10.0.0.0.
  AddressMatch(std::uint32_t value, std::uint32_t mask) requires(size == 4)
      : AddressMatch(bytesOf(value), bytesOf(mask)) {}
  // Parses any of the forms above. Raises RangeException "IpAddressMatch: 'TEXT' is not an address
  // match".
  explicit AddressMatch(std::string_view text);

  [[nodiscard]] static AddressMatch any() { return {}; }
  [[nodiscard]] static AddressMatch host(Bytes const& address);
  // Raises RangeException "IpAddressMatch::length < 0 or > 32 not allowed".
  [[nodiscard]] static AddressMatch prefix(Bytes const& address, std::int64_t length);

  [[nodiscard]] Bytes const& value() const { return value_; }
  [[nodiscard]] Bytes const& mask() const { return mask_; }
  [[nodiscard]] bool isAny() const { return mask_ == Bytes{}; }
  [[nodiscard]] bool isHost() const { return length() == static_cast<std::int64_t>(size * 8); }
  // Number of leading bits of the mask; none if it has holes.
  [[nodiscard]] OptionalNumber length() const;
  [[nodiscard]] bool matches(Bytes const& address) const;
  // The printed form without quotes.
  [[nodiscard]] std::string text() const;
  // The configuration syntax: "any", "host A", "A/LENGTH", "A wildcard W".
  [[nodiscard]] std::string describe() const;

  [[nodiscard]] bool operator!() const { return isAny(); }
  friend auto operator<=>(AddressMatch const&, AddressMatch const&) = default;
  [[nodiscard]] std::uint32_t hash() const;

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  friend Kor::String valueToStrep(AddressMatch const& match) {
    return Kor::valueToStrep(Kor::String(match.text()));
  }
  friend void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                              AddressMatch& match) {
    Kor::String text;
    Kor::sequenceToValue(it, end, text);
    match = AddressMatch(text.view());
  }
  friend std::ostream& operator<<(std::ostream& out, AddressMatch const& match) {
    return out << valueToStrep(match);
  }

 private:
  static Bytes bytesOf(std::uint32_t word) {
    return {static_cast<std::uint8_t>(word >> 24), static_cast<std::uint8_t>(word >> 16),
            static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word)};
  }

  Bytes value_{};
  Bytes mask_{};
};

struct POLICYMAP_API IpAddressMatchTraits {
  static constexpr std::size_t size = 4;
  static constexpr bool printsLength = true;
  static constexpr std::string_view typeName = "Acl::IpAddressMatch";
};
struct POLICYMAP_API Ip6AddressMatchTraits {
  static constexpr std::size_t size = 16;
  static constexpr bool printsLength = true;
  static constexpr std::string_view typeName = "Acl::Ip6AddressMatch";
};
struct POLICYMAP_API MacAddressMatchTraits {
  static constexpr std::size_t size = 6;
  static constexpr bool printsLength = false;
  static constexpr std::string_view typeName = "Acl::MacAddressMatch";
};

using IpAddressMatch = AddressMatch<IpAddressMatchTraits>;
using Ip6AddressMatch = AddressMatch<Ip6AddressMatchTraits>;
using MacAddressMatch = AddressMatch<MacAddressMatchTraits>;

extern template class AddressMatch<IpAddressMatchTraits>;
extern template class AddressMatch<Ip6AddressMatchTraits>;
extern template class AddressMatch<MacAddressMatchTraits>;

}  // namespace Acl
