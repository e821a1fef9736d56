// SPDX-License-Identifier: Apache-2.0
#pragma once

// Common part of the rules of the three kinds of access lists: source, destination and the
// operations of a value.

#include "Acl/Fields.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

namespace Acl {

// `Self` is the rule, `Filter` the fields it matches besides the addresses, `Match` its type of
// address set. A default-constructed rule permits everything.
template <class Self, class Filter, class Match>
class RuleConfig : public Filter {
 public:
  using AddressMatch = Match;

  static constexpr auto korFields() {
    return std::tuple_cat(
        Filter::filterFields(),
        std::tuple(Kor::field("source", &RuleConfig::source, &RuleConfig::sourceIs,
                              "source addresses that match; default any"),
                   Kor::field("destination", &RuleConfig::destination, &RuleConfig::destinationIs,
                              "destination addresses that match; default any")));
  }

  [[nodiscard]] Match const& source() const { return source_; }
  void sourceIs(Match const& source) { source_ = source; }
  [[nodiscard]] Match const& destination() const { return destination_; }
  void destinationIs(Match const& destination) { destination_ = destination; }

  // One line of configuration, e.g. "permit tcp 10.0.0.0/8 eq 80 any established".
  [[nodiscard]] std::string describe() const {
    return this->describeFilter(Self::anyProtocol, source_.describe(), destination_.describe());
  }

  // True only for a default-constructed rule.
  [[nodiscard]] bool operator!() const { return *this == RuleConfig(); }
  bool operator==(RuleConfig const&) const = default;
  std::strong_ordering operator<=>(RuleConfig const&) const = default;
  [[nodiscard]] std::uint32_t hash() const { return hashOfFields(static_cast<Self const&>(*this)); }

  [[nodiscard]] Kor::KorType const* fwkType() const { return Self::_fwkType(); }

 private:
  Match source_;
  Match destination_;
};

}  // namespace Acl
