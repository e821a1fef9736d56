// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Hash.h"
#include "Kor/Strep.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <compare>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <utility>

namespace PolicyMap {

// Where a policy is attached: interface and direction ("input" or "output").
class POLICYMAP_API ServicePolicyKey {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::ServicePolicyKey";

  ServicePolicyKey() = default;
  ServicePolicyKey(Vorel::IntfId intf, Kor::Name direction)
      : intf_(intf), direction_(std::move(direction)) {}

  [[nodiscard]] Vorel::IntfId intf() const { return intf_; }
  [[nodiscard]] Kor::Name const& direction() const { return direction_; }
  void intfIs(Vorel::IntfId const& intf) { intf_ = intf; }
  void directionIs(Kor::Name const& direction) { direction_ = direction; }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(intf_.hash(), direction_.hash());
  }
  // Ordered by interface, then direction.
  friend bool operator==(ServicePolicyKey const&, ServicePolicyKey const&) = default;
  friend std::strong_ordering operator<=>(ServicePolicyKey const& a, ServicePolicyKey const& b) {
    return std::tie(a.intf_, a.direction_) <=> std::tie(b.intf_, b.direction_);
  }
  [[nodiscard]] bool operator!() const { return *this == ServicePolicyKey(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using K = ServicePolicyKey;
    return std::tuple(
        Kor::field("intf", &K::intf, &K::intfIs, "interface where a policy-map is attached"),
        Kor::field("direction", &K::direction, &K::directionIs, "input or output"));
  }

 private:
  Vorel::IntfId intf_;
  Kor::Name direction_;
};

// Throws Kor::RangeException for a direction other than "input" and "output".
POLICYMAP_API void korCheckKey(ServicePolicyKey const& key);

}  // namespace PolicyMap
