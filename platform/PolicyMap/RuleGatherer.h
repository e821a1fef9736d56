// SPDX-License-Identifier: Apache-2.0
#pragma once

// Collects the rules of one class-map for one option during the walk through it and its nested
// class-maps, and gives each rule a unique key.
//
// The preferred number of an inline rule is its place, that of an intersection is the number of its
// first rule. A rule gets its preferred number unless an earlier rule with the same list name
// prefers it too, or an access list with exactly this name contains it. Otherwise it gets the next
// free number after all other rules have theirs, so that no rule loses its preferred number to a
// renumbered one.

#include "PolicyMap/ClassRules.h"
#include "PolicyMap/NumberPool.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace PolicyMap {

template <class Rule>
class RuleGatherer {
 public:
  void addList(Kor::Name const& name, Kor::Ptr<Acl::AclRules<Rule> const> rules) {
    // A repeated list matches nothing additional.
    if (listNames_.insert(name).second) {
      lists_.push_back({{name, std::move(rules)}, named_.size()});
    }
  }
  // Inline rules are one list with those before, unless beginList() was called.
  void addOwn(std::uint32_t place, Rule const& rule) {
    named_.push_back({Kor::Name(), 0, place, {rule}});
  }
  void beginList() { starts_.push_back(named_.size()); }
  // A repeated rule matches nothing additional.
  void addComposed(std::vector<NamedRule<Rule>> rules) {
    beginList();
    for (NamedRule<Rule>& rule : rules) {
      if (composed_.insert(rule).second) {
        named_.push_back(std::move(rule));
      }
    }
    beginList();
  }

  // True if anything was added, even if it has no rules.
  [[nodiscard]] bool matches() const { return !named_.empty() || !lists_.empty(); }

  // Everything that was added, in order, each list as a source of its own. To be called once.
  [[nodiscard]] RuleSources<Rule> finish() {
    number();
    RuleSources<Rule> sources;
    std::size_t from = 0;
    for (auto& [list, place] : lists_) {
      if (!list.empty()) {
        addNamed(from, place, sources);
        from = place;
        sources.push_back(std::move(list));
      }
    }
    addNamed(from, named_.size(), sources);
    return sources;
  }

 private:
  struct List {
    RuleSource<Rule> source;
    std::size_t place;  // the number of named rules before it
  };

  void number() {
    std::map<Kor::Name, NumberPool> pools;
    for (NamedRule<Rule> const& rule : named_) {
      pools.try_emplace(rule.aclName);
    }
    for (List const& list : lists_) {
      auto const pool = pools.find(list.source.aclName);
      if (pool != pools.end()) {
        for (auto const& [seqno, rule] : *list.source.rules) {
          pool->second.take(seqno);
        }
      }
    }
    std::vector<NamedRule<Rule>*> moved;
    for (NamedRule<Rule>& rule : named_) {
      if (!pools.find(rule.aclName)->second.take(rule.seqno)) {
        moved.push_back(&rule);
      }
    }
    for (NamedRule<Rule>* const rule : moved) {
      rule->seqno = pools.find(rule->aclName)->second.takeNext(rule->seqno);
    }
  }

  void addNamed(std::size_t from, std::size_t end, RuleSources<Rule>& sources) {
    std::vector<NamedRule<Rule>> rules;
    for (auto start = std::upper_bound(starts_.begin(), starts_.end(), from); from < end; ++from) {
      for (; start != starts_.end() && *start == from; ++start) {
        addSource(rules, sources);
      }
      if (!named_[from].exact.rule.matchesNothing()) {
        rules.push_back(std::move(named_[from]));
      }
    }
    addSource(rules, sources);
  }
  static void addSource(std::vector<NamedRule<Rule>>& rules, RuleSources<Rule>& sources) {
    if (!rules.empty()) {
      sources.push_back(
          {Kor::Name(), nullptr, Kor::make<NamedRules<Rule>>(std::exchange(rules, {}))});
    }
  }

  std::set<Kor::Name> listNames_;
  std::vector<List> lists_;
  std::vector<NamedRule<Rule>> named_;  // with their preferred numbers until number()
  std::vector<std::size_t> starts_;     // the numbers of named rules before the start of a list
  std::set<NamedRule<Rule>> composed_;  // the intersections among named_
};

}  // namespace PolicyMap
