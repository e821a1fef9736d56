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
#include "PolicyMap/Export.h"
#include "PolicyMap/RuleIntersection.h"

#include <algorithm>
#include <map>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMap {

// One rule as it is programmed: the part of its key that names it in its class, and what it takes.
template <class Rule>
struct NamedRule {
  Kor::Name aclName;
  std::uint32_t seqno = 0;
  ExactRule<Rule> exact;

  bool operator==(NamedRule const&) const = default;
};

// Rules made by intersecting others, in order. Never changes.
template <class Rule>
class ComposedRules final : public Kor::PtrInterface {
 public:
  // No name stands twice.
  explicit ComposedRules(std::vector<NamedRule<Rule>> rules) : rules_(std::move(rules)) {
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      places_.emplace(std::pair(rules_[i].seqno, rules_[i].aclName), i);
    }
  }

  [[nodiscard]] std::vector<NamedRule<Rule>> const& rules() const { return rules_; }
  [[nodiscard]] Rule const* rule(Kor::Name const& aclName, std::uint32_t seqno) const {
    auto const place = places_.find({seqno, aclName});
    return place == places_.end() ? nullptr : &rules_[place->second].exact.rule;
  }

 private:
  std::vector<NamedRule<Rule>> rules_;
  std::map<std::pair<std::uint32_t, Kor::Name>, std::size_t> places_;
};

// Rules of one origin: an access list, the class-map itself, whose list name is empty, or an
// intersection. A class-map that matches on rules and lists in turn has several sources of its own,
// with different sequence numbers.
template <class Rule>
struct RuleSource {
  Kor::Name aclName;
  Kor::Ptr<Acl::AclRules<Rule> const> rules;          // null for an intersection
  Kor::Ptr<ComposedRules<Rule> const> composed = {};  // null otherwise

  // Whether none of the rules matches anything. Intersections are never empty.
  [[nodiscard]] bool empty() const {
    return composed ? composed->rules().empty()
                    : std::all_of(rules->begin(), rules->end(),
                                  [](auto const& entry) { return entry.second.matchesNothing(); });
  }
  [[nodiscard]] Rule const* find(AclRuleKey const& key) const {
    if (composed) {
      return composed->rule(key.aclName(), key.seqno());
    }
    return aclName == key.aclName() ? rules->rule(key.seqno()) : nullptr;
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

  // No access list stands twice among the sources.
  explicit ClassRules(Sources sources);
  ~ClassRules() override;

  // The empty sources of an option: MAC rules serve mac, mpls and every further option.
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
    auto const from = [&](std::vector<std::size_t> const& places) -> Rule const* {
      for (std::size_t const place : places) {
        if (Rule const* const rule = (*sources)[place].find(key)) {
          return rule;
        }
      }
      return nullptr;
    };
    auto const list = lists_.find(key.aclName());
    Rule const* const rule = list == lists_.end() ? nullptr : from(list->second);
    return rule != nullptr ? rule : from(composed_);
  }

  // Calls visit(RuleRef) for every rule that matches something, in order, until it answers false.
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
    if (source.composed) {
      for (NamedRule<Rule> const& named : source.composed->rules()) {
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
  std::map<Kor::Name, std::vector<std::size_t>> lists_;  // places of the sources, by list name
  std::vector<std::size_t> composed_;                    // and of the intersections
};

}  // namespace PolicyMap
