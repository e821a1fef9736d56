// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassRules: the rules of one class for one match option, at one time. It refers to versions of
// access lists instead of copying rules, so that classes and policies that use a list share them.

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

// One rule as it is programmed: the part of its key that names it in its class, and what it takes.
template <class Rule>
struct NamedRule {
  Kor::Name aclName;
  std::size_t firstLength =
      0;  // of an intersection: of the first list's name in `aclName`; else all
  std::uint32_t seqno = 0;
  ExactRule<Rule> exact;

  friend auto operator<=>(NamedRule const&, NamedRule const&) = default;
};

// Rules of class-maps themselves and intersections, in the order in which they are programmed,
// which need not be that of their numbers. Never changes.
template <class Rule>
class NamedRules final : public Kor::PtrInterface {
 public:
  // Names are unique, and every rule matches something.
  explicit NamedRules(std::vector<NamedRule<Rule>> rules) : rules_(std::move(rules)) {}

  [[nodiscard]] std::vector<NamedRule<Rule>> const& rules() const { return rules_; }

 private:
  std::vector<NamedRule<Rule>> rules_;
};

// What comes in one piece: an access list, or rules that have names of their own. A class-map that
// matches on rules and lists in turn has several of either.
template <class Rule>
struct RuleSource {
  Kor::Name aclName;                            // of an access list
  Kor::Ptr<Acl::AclRules<Rule> const> rules;    // null unless it is one
  Kor::Ptr<NamedRules<Rule> const> named = {};  // null if it is one

  // Whether none of the rules matches anything.
  [[nodiscard]] bool empty() const {
    return named ? named->rules().empty()
                 : std::all_of(rules->begin(), rules->end(),
                               [](auto const& entry) { return entry.second.matchesNothing(); });
  }
};

template <class Rule>
using RuleSources = std::vector<RuleSource<Rule>>;

// A rule of a class while it is visited.
template <class Rule>
struct RuleRef {
  Kor::Name const& aclName;
  std::uint32_t seqno;
  Rule const& rule;
  PortRanges const& srcPorts;  // empty: as the rule says
  PortRanges const& dstPorts;
};

class POLICYMAP_API ClassRules : public Kor::PtrInterface {
 public:
  using PtrConst = Kor::Ptr<ClassRules const>;
  using Sources = std::variant<RuleSources<Acl::IpRuleConfig>, RuleSources<Acl::Ip6RuleConfig>,
                               RuleSources<Acl::MacRuleConfig>>;

  // Access lists and names of rules are unique among the sources.
  explicit ClassRules(Sources sources);
  ~ClassRules() override;

  // The empty sources of an option: MAC rules serve both mac and mpls.
  static Sources emptySources(ClassMapMatchOption option);

  // Whether no rule matches anything.
  [[nodiscard]] bool empty() const;

  // The rule of that key; null when it is not one of these.
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

  // Calls visit(RuleRef) for every rule that matches something, in order, until it returns false.
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

  // Whether programming `other` instead would make no difference. Without a difference tracker
  // every other object is taken for a difference.
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
  std::map<Kor::Name, std::size_t> lists_;  // places among the sources
  // Place of the source and of the rule in it.
  std::map<std::pair<std::uint32_t, Kor::Name>, std::pair<std::size_t, std::size_t>> named_;
};

}  // namespace PolicyMap
