// SPDX-License-Identifier: Apache-2.0
#include "Ip/Status.h"

#include <utility>

template <>
Kor::KorType const* Ip::InterfaceAddress<Ip::AddressTraits>::_fwkType() {
  static Kor::KorType const type(korTypeName, nullptr);
  return &type;
}

namespace Ip {

Status::Status(Kor::Name name) : AddressStatus(std::move(name)) {}

Status::~Status() = default;

Kor::KorType const* Status::fwkType() const {
  return _fwkType();
}

Kor::KorType const* Status::_fwkType() {
  static Kor::KorType const type("Ip::Status", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Ip
