// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassRules: a snapshot of the rules of one class for one match option. It refers to versions of
// access lists instead of copying rules, so that classes and policies that use the same list share
// it.

#include "Acl/AclDiff.h"
#include "Acl/AclRules.h"
#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/RuleIntersection.h"
#include "PolicyMapExport.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMap {

// One rule as programmed: the part of its key that identifies it within the class, and its match.
template <class Rule>
struct NamedRule {
  Kor::Name aclName;
  // The length of the first list's name in an intersection's `aclName`; otherwise of all of it.
  std::size_t firstLength = 0;
  std::uint32_t seqno = 0;
  ExactRule<Rule> exact;

  friend auto operator<=>(NamedRule const&, NamedRule const&) = default;
};

// Inline rules and intersections in programming order, which need not be the order of their
// numbers. Immutable.
template <class Rule>
class NamedRules final : public Kor::PtrInterface {
 public:
  // Keys must be unique, and every rule must match something.
  explicit NamedRules(std::vector<NamedRule<Rule>> rules) : rules_(std::move(rules)) {}

  [[nodiscard]] std::vector<NamedRule<Rule>> const& rules() const { return rules_; }

 private:
  std::vector<NamedRule<Rule>> rules_;
};

// A group of consecutive rules: one access list, or rules with keys of their own. A class-map that
// alternates between inline rules and lists has several groups of each.
template <class Rule>
struct RuleSource {
  Kor::Name aclName;                            // of the access list
  Kor::Ptr<Acl::AclRules<Rule> const> rules;    // null unless it is an access list
  Kor::Ptr<NamedRules<Rule> const> named = {};  // null if it is an access list

  // True if no rule of the source matches anything.
  [[nodiscard]] bool empty() const {
    return named ? named->rules().empty()
                 : std::all_of(rules->begin(), rules->end(),
                               [](auto const& entry) { return entry.second.matchesNothing(); });
  }
  // Adds copies of all rules that match something, in order.
  void addTo(std::vector<NamedRule<Rule>>& all) const {
    if (named) {
      all.insert(all.end(), named->rules().begin(), named->rules().end());
      return;
    }
    for (auto const& [seqno, rule] : *rules) {
      if (!rule.matchesNothing()) {
        all.push_back({aclName, aclName.length(), seqno, {rule}});
      }
    }
  }
  // True if a rule of the source denies.
  [[nodiscard]] bool denies() const {
    return named ? std::any_of(named->rules().begin(), named->rules().end(),
                               [](auto const& each) { return !each.exact.rule.permit(); })
                 : rules->denies();
  }
};

template <class Rule>
using RuleSources = std::vector<RuleSource<Rule>>;

// The rule passed to a visitor of ClassRules::forEach().
template <class Rule>
struct RuleRef {
  Kor::Name const& aclName;
  std::uint32_t seqno;
  Rule const& rule;
  PortRanges const& srcPorts;  // empty: as in `rule`
  PortRanges const& dstPorts;
};

class POLICYMAP_API ClassRules : public Kor::PtrInterface {
 public:
  using PtrConst = Kor::Ptr<ClassRules const>;
  using Sources = std::variant<RuleSources<Acl::IpRuleConfig>, RuleSources<Acl::Ip6RuleConfig>,
                               RuleSources<Acl::MacRuleConfig>>;

  // Access lists and keys of rules must be unique among the sources.
  explicit ClassRules(Sources sources);
  ~ClassRules() override;

  // The empty sources of an option. MAC rules are used for both mac and mpls.
  static Sources emptySources(ClassMapMatchOption option);

  // True if no rule matches anything.
  [[nodiscard]] bool empty() const;

  // The rule with that key, or null.
  template <class Rule>
  [[nodiscard]] Rule const* find(AclRuleKey const& key) const {
    auto const* const sources = std::get_if<RuleSources<Rule>>(&sources_);
    if (sources == nullptr) {
      return nullptr;
    }
    auto const list = lists_.find(key.aclName());
    if (list != lists_.end()) {
      if (Rule const* const rule = (*sources)[list->second].rules->rule(key.seqno())) {
        return rule;
      }
    }
    auto const named = named_.find({key.seqno(), key.aclName()});
    if (named == named_.end()) {
      return nullptr;
    }
    auto const [place, index] = named->second;
    return &(*sources)[place].named->rules()[index].exact.rule;
  }

  // Calls visit(RuleRef) in order for every rule that matches something, until it returns false.
  template <class Visit>
  void forEach(Visit&& visit) const {
    std::visit(
        [&](auto const& sources) {
          for (auto const& source : sources) {
            if (!forEachOf(source, visit)) {
              return;
            }
          }
        },
        sources_);
  }

  // True if programming `other` instead makes no difference. Without a difference tracker, any
  // other object is treated as different.
  [[nodiscard]] bool sameEffect(ClassRules const& other, Acl::AclDiff const* aclDiff) const;

  [[nodiscard]] Sources const& sources() const { return sources_; }

 private:
  template <class Rule, class Visit>
  static bool forEachOf(RuleSource<Rule> const& source, Visit&& visit) {
    if (source.named) {
      for (NamedRule<Rule> const& named : source.named->rules()) {
        if (!visit(RuleRef<Rule>{named.aclName, named.seqno, named.exact.rule, named.exact.srcPorts,
                                 named.exact.dstPorts})) {
          return false;
        }
      }
      return true;
    }
    PortRanges const asTheRuleSays;
    for (auto const& [seqno, rule] : *source.rules) {
      if (!rule.matchesNothing() &&
          !visit(RuleRef<Rule>{source.aclName, seqno, rule, asTheRuleSays, asTheRuleSays})) {
        return false;
      }
    }
    return true;
  }

  Sources sources_;
  std::map<Kor::Name, std::size_t> lists_;  // index into the sources
  // Index of the source, and of the rule in it.
  std::map<std::pair<std::uint32_t, Kor::Name>, std::pair<std::size_t, std::size_t>> named_;
};

}  // namespace PolicyMap
