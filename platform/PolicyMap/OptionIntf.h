// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Hash.h"
#include "Kor/Strep.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <compare>
#include <cstdint>
#include <string_view>
#include <tuple>

namespace PolicyMap {

// An interface to which a policy is applied for a match option.
class POLICYMAP_API OptionIntf {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::OptionIntf";

  OptionIntf() = default;
  OptionIntf(ClassMapMatchOption option, Vorel::IntfId intf) : option_(option), intf_(intf) {}

  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  [[nodiscard]] Vorel::IntfId intf() const { return intf_; }
  void optionIs(ClassMapMatchOption option) { option_ = option; }
  void intfIs(Vorel::IntfId const& intf) { intf_ = intf; }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(intf_.hash(), static_cast<std::uint32_t>(option_));
  }
  // Ordered by option, then interface.
  friend bool operator==(OptionIntf const&, OptionIntf const&) = default;
  friend std::strong_ordering operator<=>(OptionIntf const& a, OptionIntf const& b) {
    return std::tie(a.option_, a.intf_) <=> std::tie(b.option_, b.intf_);
  }
  [[nodiscard]] bool operator!() const { return *this == OptionIntf(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using K = OptionIntf;
    return std::tuple(
        Kor::field("option", &K::option, &K::optionIs,
                   "match option for which the policy is applied"),
        Kor::field("intf", &K::intf, &K::intfIs, "interface to which the policy is applied"));
  }

 private:
  ClassMapMatchOption option_ = ClassMapMatchOption::ipv4;
  Vorel::IntfId intf_;
};

}  // namespace PolicyMap
