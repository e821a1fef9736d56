// SPDX-License-Identifier: Apache-2.0
#pragma once

// The common part of IPv4 and IPv6 interface addresses and their statuses.

#include "Ip/AddressText.h"
#include "Kor/Entity.h"
#include "Kor/Exception.h"
#include "Kor/Hash.h"
#include "Kor/KorType.h"
#include "Kor/Notifiee.h"
#include "Kor/Strep.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace Ip {

// The address of an interface and its prefix length. Prints as a Python string, '10.1.2.3/24'; no
// address prints as ''.
template <class Traits>
class POLICYMAP_API InterfaceAddress {
 public:
  static constexpr std::size_t size = Traits::size;
  static constexpr std::size_t bits = size * 8;
  static constexpr std::string_view korTypeName = Traits::typeName;
  // In network order.
  using Bytes = std::array<std::uint8_t, size>;

  // No address.
  InterfaceAddress() = default;
  // Raises RangeException "Ip::Address::length < 0 or > 32 not allowed".
  InterfaceAddress(Bytes const& bytes, std::int64_t length);
  // Parses "10.1.2.3/24"; the default length covers one address. Raises RangeException
  // "Ip::Address: 'TEXT' is not an address".
  explicit InterfaceAddress(std::string_view text);

  [[nodiscard]] Bytes const& bytes() const { return bytes_; }
  [[nodiscard]] std::uint8_t length() const { return length_; }

  // True if there is no address. 0.0.0.0/0 is no address.
  [[nodiscard]] bool operator!() const { return *this == InterfaceAddress(); }
  friend auto operator<=>(InterfaceAddress const&, InterfaceAddress const&) = default;
  [[nodiscard]] std::uint32_t hash() const;

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  // The printed form without quotes.
  [[nodiscard]] Kor::String text() const;
  friend Kor::String valueToStrep(InterfaceAddress const& address) {
    return Kor::valueToStrep(address.text());
  }
  friend void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                              InterfaceAddress& address) {
    Kor::String text;
    Kor::sequenceToValue(it, end, text);
    address = text.empty() ? InterfaceAddress() : InterfaceAddress(text.view());
  }
  friend std::ostream& operator<<(std::ostream& out, InterfaceAddress const& address) {
    return out << valueToStrep(address);
  }

 private:
  Bytes bytes_{};
  std::uint8_t length_ = 0;
};

template <class Traits>
InterfaceAddress<Traits>::InterfaceAddress(Bytes const& bytes, std::int64_t length)
    : bytes_(bytes), length_(static_cast<std::uint8_t>(length)) {
  if (length < 0 || length > static_cast<std::int64_t>(bits)) {
    throw Kor::RangeException(std::string(korTypeName) + "::length < 0 or > " +
                              std::to_string(bits) + " not allowed");
  }
}

template <class Traits>
InterfaceAddress<Traits>::InterfaceAddress(std::string_view text) {
  auto const slash = text.find('/');
  std::size_t length = bits;
  bool const lengthIsGood =
      slash == std::string_view::npos || readPrefixLength(text.substr(slash + 1), bits, length);
  if (!lengthIsGood || !readAddress(text.substr(0, slash), bytes_)) {
    throw Kor::RangeException(std::string(korTypeName) + ": '" + std::string(text) +
                              "' is not an address");
  }
  length_ = static_cast<std::uint8_t>(length);
}

template <class Traits>
std::uint32_t InterfaceAddress<Traits>::hash() const {
  std::uint32_t hash = length_;
  for (std::uint8_t const byte : bytes_) {
    hash = Kor::hashCombine(hash, byte);
  }
  return hash;
}

template <class Traits>
Kor::String InterfaceAddress<Traits>::text() const {
  return !*this ? "" : addressText(bytes_) + "/" + std::to_string(length_);
}

// Observes a status of type `Status`, which holds addresses by interface.
template <class Status>
class AddressNotifieeConst : public Kor::NotifieeOf<Status, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeConst = AddressNotifieeConst;

  using Kor::NotifieeOf<Status, Kor::Entity::NotifieeConst>::NotifieeOf;
  // The address of that interface was set, changed or removed.
  virtual void onIntfAddress([[maybe_unused]] Vorel::IntfId intf) {}
};
template <class Status>
class AddressNotifiee : public AddressNotifieeConst<Status> {
 public:
  using Notifiee = AddressNotifiee;

  using AddressNotifieeConst<Status>::AddressNotifieeConst;
};

// Base of the status `Self`, which adds the collection.
template <class Self>
class AddressStatus : public Kor::Entity {
 public:
  using NotifieeConst = AddressNotifieeConst<Self>;
  using Notifiee = AddressNotifiee<Self>;

  static constexpr Kor::AttributeId intfAddressId = 258;

 protected:
  using Entity::Entity;

  void addressChanged(Vorel::IntfId intf) const {
    this->template attributeChanged<Self>(intfAddressId, &NotifieeConst::onIntfAddress, intf);
  }
};

}  // namespace Ip
