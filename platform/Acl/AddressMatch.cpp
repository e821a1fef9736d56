// SPDX-License-Identifier: Apache-2.0
#include "Acl/AddressMatch.h"

#include "Acl/RangeCheck.h"
#include "Ip/AddressText.h"
#include "Kor/Exception.h"
#include "Kor/Hash.h"

namespace Acl {
namespace {

template <std::size_t size>
std::array<std::uint8_t, size> leadingBits(std::size_t length) {
  std::array<std::uint8_t, size> mask{};
  Ip::prefixMask(length, mask);
  return mask;
}

// Parses the part after the '/': a number of leading bits, or a mask.
template <std::size_t size>
bool readMask(std::string_view text, std::array<std::uint8_t, size>& mask) {
  std::size_t length = 0;
  if (Ip::readPrefixLength(text, size * 8, length)) {
    mask = leadingBits<size>(length);
    return true;
  }
  return Ip::readAddress(text, mask);
}

}  // namespace

template <class Traits>
AddressMatch<Traits>::AddressMatch(Bytes const& value, Bytes const& mask) : mask_(mask) {
  for (std::size_t i = 0; i < size; ++i) {
    value_[i] = value[i] & mask[i];
  }
}

template <class Traits>
AddressMatch<Traits>::AddressMatch(std::string_view text) {
  if (text == "any") {
    return;
  }
  auto const slash = text.find('/');
  Bytes value{};
  Bytes mask = leadingBits<size>(size * 8);
  bool const maskIsGood =
      slash == std::string_view::npos || readMask<size>(text.substr(slash + 1), mask);
  if (!maskIsGood || !Ip::readAddress(text.substr(0, slash), value)) {
    throw Kor::RangeException(std::string(Kor::shortTypeName(korTypeName)) + ": '" +
                              std::string(text) + "' is not an address match");
  }
  *this = AddressMatch(value, mask);
}

template <class Traits>
AddressMatch<Traits> AddressMatch<Traits>::host(Bytes const& address) {
  return AddressMatch(address, leadingBits<size>(size * 8));
}

template <class Traits>
AddressMatch<Traits> AddressMatch<Traits>::prefix(Bytes const& address, std::int64_t length) {
  std::string const attribute = std::string(Kor::shortTypeName(korTypeName)) + "::length";
  auto const checked = inRange(attribute, length, 0, static_cast<std::int64_t>(size * 8));
  return AddressMatch(address, leadingBits<size>(static_cast<std::size_t>(checked)));
}

template <class Traits>
OptionalNumber AddressMatch<Traits>::length() const {
  int const length = Ip::prefixLength(mask_);
  return length < 0 ? OptionalNumber() : OptionalNumber(length);
}

template <class Traits>
bool AddressMatch<Traits>::matches(Bytes const& address) const {
  return AddressMatch(address, mask_).value_ == value_;
}

template <class Traits>
std::string AddressMatch<Traits>::text() const {
  if (isAny()) {
    return "any";
  }
  std::string address = Ip::addressText(value_);
  if (isHost()) {
    return address;
  }
  OptionalNumber const leading = length();
  bool const asLength = Traits::printsLength && leading;
  return address + "/" + (asLength ? std::to_string(*leading) : Ip::addressText(mask_));
}

template <class Traits>
std::string AddressMatch<Traits>::describe() const {
  if (isHost()) {
    return "host " + text();
  }
  if (isAny() || (Traits::printsLength && length())) {
    return text();
  }
  Bytes wildcard = mask_;
  for (std::uint8_t& byte : wildcard) {
    byte = static_cast<std::uint8_t>(~byte);
  }
  return Ip::addressText(value_) + " wildcard " + Ip::addressText(wildcard);
}

template <class Traits>
std::uint32_t AddressMatch<Traits>::hash() const {
  std::uint32_t hash = 0;
  for (Bytes const* const bytes : {&value_, &mask_}) {
    for (std::size_t i = 0; i < size; i += 2) {
      hash = Kor::hashCombine(hash, static_cast<std::uint32_t>((*bytes)[i] << 8 | (*bytes)[i + 1]));
    }
  }
  return hash;
}

template <class Traits>
Kor::KorType* AddressMatch<Traits>::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

template class AddressMatch<IpAddressMatchTraits>;
template class AddressMatch<Ip6AddressMatchTraits>;
template class AddressMatch<MacAddressMatchTraits>;

}  // namespace Acl
