// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"
#include "Routing/RoutingStatus.h"

namespace Routing {

// IPv4 routing. Notifiee hooks: onRouting(), onRoutedIntf(IntfId).
class POLICYMAP_API RoutingInfo : public RoutingInfoBase<RoutingInfo> {
 public:
  using Ptr = Kor::Ptr<RoutingInfo>;
  using PtrConst = Kor::Ptr<RoutingInfo const>;

  explicit RoutingInfo(Kor::Name name = "routing");
  ~RoutingInfo() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
};

}  // namespace Routing
