// SPDX-License-Identifier: Apache-2.0
#include "Ip6/Status.h"

#include <utility>

template <>
Kor::KorType* Ip::InterfaceAddress<Ip6::AddressTraits>::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

namespace Ip6 {

Status::Status(Kor::Name name) : AddressStatus(std::move(name)) {}

Status::~Status() = default;

Kor::KorType const* Status::fwkType() const {
  return _fwkType();
}

Kor::KorType* Status::_fwkType() {
  static Kor::KorType type("Ip6::Status", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Ip6
