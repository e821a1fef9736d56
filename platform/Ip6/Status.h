// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Ip/InterfaceAddress.h"
#include "Kor/Collection.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <cstddef>
#include <string_view>

namespace Ip6 {

struct POLICYMAP_API AddressTraits {
  static constexpr std::size_t size = 16;
  static constexpr std::string_view typeName = "Ip6::Address";
};
using Address = Ip::InterfaceAddress<AddressTraits>;

}  // namespace Ip6

template <>
POLICYMAP_API Kor::KorType* Ip::InterfaceAddress<Ip6::AddressTraits>::_fwkType();

namespace Ip6 {

// The IPv6 addresses of interfaces. Notifiee hook: onIntfAddress(IntfId).
class POLICYMAP_API Status : public Ip::AddressStatus<Status> {
 public:
  using Ptr = Kor::Ptr<Status>;
  using PtrConst = Kor::Ptr<Status const>;

  explicit Status(Kor::Name name = "ip6");
  ~Status() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  KOR_VALUE_COLLECTION(Status, intfAddress, IntfAddress, Vorel::IntfId, Address,
                       KOR_ON_CHANGE(addressChanged(key)))
};

}  // namespace Ip6
