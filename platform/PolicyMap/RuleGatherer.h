// SPDX-License-Identifier: Apache-2.0
#pragma once

// Gathers the rules of one class-map and one option while the class-map and the nested ones are
// walked, and gives each rule a key of its own.
//
// A rule of a class-map wants its place as number, an intersection that of its first rule. It has
// that number unless an earlier rule of the same list name wanted it too, or unless it is the
// number of a rule of a list that has this very name. Then it gets the next number that is free
// once all others have theirs, so that no rule loses its number to one that lost its own.

#include "PolicyMap/ClassRules.h"
#include "PolicyMap/NumberPool.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace PolicyMap {

template <class Rule>
class RuleGatherer {
 public:
  void addList(Kor::Name const& name, Kor::Ptr<Acl::AclRules<Rule> const> rules) {
    // A list that is matched twice matches nothing more the second time.
    if (listNames_.insert(name).second) {
      lists_.push_back({{name, std::move(rules)}, named_.size()});
    }
  }
  void addOwn(std::uint32_t place, Rule const& rule) {
    named_.push_back({Kor::Name(), 0, place, {rule}});
  }
  // A rule that is there already matches nothing more.
  void addComposed(std::vector<NamedRule<Rule>> rules) {
    for (NamedRule<Rule>& rule : rules) {
      if (composed_.insert(rule).second) {
        named_.push_back(std::move(rule));
      }
    }
  }

  // Whether something was added, be it without rules.
  [[nodiscard]] bool matches() const { return !named_.empty() || !lists_.empty(); }

  // Everything that was added, in order; only once.
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
    std::size_t place;  // before that one of the other rules
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
    for (; from < end; ++from) {
      if (!named_[from].exact.rule.matchesNothing()) {
        rules.push_back(std::move(named_[from]));
      }
    }
    if (!rules.empty()) {
      sources.push_back({Kor::Name(), nullptr, Kor::make<NamedRules<Rule>>(std::move(rules))});
    }
  }

  std::set<Kor::Name> listNames_;
  std::vector<List> lists_;
  std::vector<NamedRule<Rule>> named_;  // with the numbers that they want
  std::set<NamedRule<Rule>> composed_;  // those of them that are intersections
};

}  // namespace PolicyMap
