// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/RuleIntersection.h"

#include "PolicyMap/FieldMeeting.h"

#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>

namespace PolicyMap {
namespace {

// The exact ranges that belong to a field of ports. An unknown field of ports does not compile.
template <class Rule>
constexpr PortRanges ExactRule<Rule>::*rangesBeside(std::string_view field) {
  if (field == "srcPort") {
    return &ExactRule<Rule>::srcPorts;
  }
  if (field == "dstPort") {
    return &ExactRule<Rule>::dstPorts;
  }
  throw std::logic_error("ports without exact ranges");
}

// The name of a field in messages.
constexpr std::string_view labelOf(std::string_view field) {
  return field == "ttl" ? "TTL" : field;
}

template <class Rule>
class Fold {
 public:
  Fold(ExactRule<Rule> const& a, ExactRule<Rule> const& b) : a_(a), b_(b) {}

  Intersection<Rule> intersect() {
    if (!takeFields(std::make_index_sequence<count>())) {
      return Disjoint();
    }
    if (!inexpressible_.empty()) {
      return Inexpressible{labelOf(inexpressible_)};
    }
    return std::move(both_);
  }

 private:
  static constexpr auto fields = Rule::korFields();
  static constexpr std::size_t count = std::tuple_size_v<decltype(fields)>;

  // These return false if the intersection is empty.

  // From last to first: the last fields are the addresses, which distinguish most rules.
  template <std::size_t... i>
  bool takeFields(std::index_sequence<i...> /*all*/) {
    return (takeField<count - 1 - i>() && ...);
  }
  template <std::size_t i>
  bool takeField() {
    constexpr auto field = std::get<i>(fields);
    auto const& a = (a_.rule.*field.get)();
    auto const& b = (b_.rule.*field.get)();
    using Value = std::remove_cvref_t<decltype(a)>;
    Value value{};
    Meeting meeting = Meeting::something;
    if constexpr (field.name == "permit") {
      value = a && b;
    } else if constexpr (std::is_same_v<Value, Acl::PortMatch>) {
      constexpr auto exact = rangesBeside<Rule>(field.name);
      meeting = meet(ExactPorts{a, a_.*exact}, ExactPorts{b, b_.*exact}, value, both_.*exact);
    } else {
      meeting = meet(a, b, value);
    }
    (both_.rule.*field.set)(value);
    if (meeting == Meeting::inexpressible) {
      inexpressible_ = field.name;
    }
    return meeting != Meeting::nothing;
  }

  ExactRule<Rule> const& a_;
  ExactRule<Rule> const& b_;
  ExactRule<Rule> both_;
  std::string_view inexpressible_;  // the inexpressible field; empty if none
};

}  // namespace

Intersection<Acl::IpRuleConfig> intersect(ExactRule<Acl::IpRuleConfig> const& a,
                                          ExactRule<Acl::IpRuleConfig> const& b) {
  return Fold(a, b).intersect();
}

Intersection<Acl::Ip6RuleConfig> intersect(ExactRule<Acl::Ip6RuleConfig> const& a,
                                           ExactRule<Acl::Ip6RuleConfig> const& b) {
  return Fold(a, b).intersect();
}

Intersection<Acl::MacRuleConfig> intersect(ExactRule<Acl::MacRuleConfig> const& a,
                                           ExactRule<Acl::MacRuleConfig> const& b) {
  return Fold(a, b).intersect();
}

}  // namespace PolicyMap
