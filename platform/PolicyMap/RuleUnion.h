// SPDX-License-Identifier: Apache-2.0
#pragma once

// RuleUnion: the rules of a match-any class-map, whose matches count each by itself: what the list
// of one denies, the list of another may permit.
//
// They are programmed one after the other, and a packet that a rule denies leaves the class. So a
// rule that denies what later lists permit comes after all of them, if its own list permits none of
// that after it. Otherwise its intersections with the rules of the later lists come before it.

#include "PolicyMap/ClassRules.h"
#include "PolicyMap/NumberPool.h"
#include "PolicyMap/RuleProduct.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMap {

template <class Rule>
class RuleUnion {
 public:
  // Each source is a list.
  RuleUnion(RuleSources<Rule> sources, RuleProduct& product)
      : sources_(std::move(sources)), product_(product) {}

  // The sources as they are to be programmed. To be called once. Unspecified after an error of the
  // product.
  RuleSources<Rule> take() {
    bool const deniesBeforeLast =
        sources_.size() > 1 &&
        std::any_of(sources_.begin(), sources_.end() - 1,
                    [](RuleSource<Rule> const& source) { return source.denies(); });
    if (deniesBeforeLast) {
      rewriteAll();
    }
    joinNamed();
    return std::move(sources_);
  }

 private:
  // What a source becomes.
  struct Rewritten {
    std::size_t source = 0;
    bool changed = false;
    std::vector<NamedRule<Rule>> rules;
    std::vector<std::size_t> composed;  // the places of intersections
    std::vector<NamedRule<Rule>> last;  // the rules that come after all others
  };

  // From the last source on, as an intersection needs what the later ones have become.
  void rewriteAll() {
    std::vector<NamedRule<Rule>> later;  // in reverse
    for (std::size_t i = sources_.size(); i-- != 0 && product_.error().empty();) {
      std::vector<NamedRule<Rule>> rules;
      sources_[i].addTo(rules);
      if (sources_[i].denies() && !later.empty()) {
        Rewritten rewritten = rewrite(rules, later);
        if (rewritten.changed) {
          rewritten.source = i;
          rules = rewritten.rules;
          rewritten_.push_back(std::move(rewritten));
        }
      }
      later.insert(later.end(), rules.rbegin(), rules.rend());
    }
    number();
    RuleSources<Rule> last;
    for (auto each = rewritten_.rbegin(); each != rewritten_.rend(); ++each) {
      sources_[each->source] = sourceOf(std::move(each->rules));
      last.push_back(sourceOf(std::move(each->last)));
    }
    sources_.insert(sources_.end(), last.begin(), last.end());
    std::erase_if(sources_, [](RuleSource<Rule> const& source) { return source.empty(); });
  }
  static RuleSource<Rule> sourceOf(std::vector<NamedRule<Rule>> rules) {
    return {Kor::Name(), nullptr, Kor::make<NamedRules<Rule>>(std::move(rules))};
  }

  Rewritten rewrite(std::vector<NamedRule<Rule>> const& rules,
                    std::vector<NamedRule<Rule>> const& later) {
    Rewritten result;
    for (auto rule = rules.begin(); rule != rules.end(); ++rule) {
      if (!rule->exact.rule.permit() && permitsSome(*rule, later.rbegin(), later.rend())) {
        result.changed = true;
        if (!permitsSome(*rule, std::next(rule), rules.end())) {
          result.last.push_back(*rule);
          continue;
        }
        addIntersections(*rule, later, result);
      }
      result.rules.push_back(*rule);
    }
    return result;
  }

  // Whether a permit among these has packets of the rule.
  template <class Iterator>
  bool permitsSome(NamedRule<Rule> const& rule, Iterator begin, Iterator end) {
    return product_.takePairs(static_cast<std::size_t>(end - begin)) &&
           std::any_of(begin, end, [&](NamedRule<Rule> const& other) {
             return other.exact.rule.permit() &&
                    !std::holds_alternative<Disjoint>(intersect(rule.exact, other.exact));
           });
  }

  void addIntersections(NamedRule<Rule> const& rule, std::vector<NamedRule<Rule>> const& later,
                        Rewritten& result) {
    // An intersection permits what the later rule does.
    NamedRule<Rule> permitting = rule;
    permitting.exact.rule.permitIs(true);
    product_.takePairs(later.size());
    std::vector<NamedRule<Rule>> all;
    for (auto other = later.rbegin(); other != later.rend(); ++other) {
      if (!product_.addBoth(permitting, *other, all)) {
        return;
      }
    }
    // After the last permit, the rule itself denies.
    while (!all.back().exact.rule.permit()) {
      all.pop_back();
    }
    composed_ += all.size();
    product_.takeRules(composed_);
    for (NamedRule<Rule>& each : all) {
      result.composed.push_back(result.rules.size());
      result.rules.push_back(std::move(each));
    }
  }

  // Where one list of rules with keys of their own ends and the next begins makes no difference
  // once they are programmed, so it must not count as a change.
  void joinNamed() {
    RuleSources<Rule> joined;
    for (auto source = sources_.begin(); source != sources_.end();) {
      auto const end = std::find_if(source, sources_.end(),
                                    [](RuleSource<Rule> const& each) { return !each.named; });
      if (end - source > 1) {
        std::vector<NamedRule<Rule>> rules;
        std::for_each(source, end, [&rules](RuleSource<Rule> const& each) { each.addTo(rules); });
        joined.push_back(sourceOf(std::move(rules)));
        source = end;
      } else {
        joined.push_back(std::move(*source++));
      }
    }
    sources_ = std::move(joined);
  }

  // Gives each intersection a number that no other rule of its name has.
  void number() {
    std::map<Kor::Name, NumberPool> pools;
    for (Rewritten const& each : rewritten_) {
      for (std::size_t const place : each.composed) {
        pools.try_emplace(each.rules[place].aclName);
      }
    }
    if (pools.empty()) {
      return;
    }
    for (RuleSource<Rule> const& source : sources_) {
      std::vector<NamedRule<Rule>> rules;
      source.addTo(rules);
      for (NamedRule<Rule> const& rule : rules) {
        auto const pool = pools.find(rule.aclName);
        if (pool != pools.end()) {
          pool->second.take(rule.seqno);
        }
      }
    }
    for (auto each = rewritten_.rbegin(); each != rewritten_.rend(); ++each) {
      for (std::size_t const place : each->composed) {
        NamedRule<Rule>& rule = each->rules[place];
        NumberPool& pool = pools.find(rule.aclName)->second;
        if (!pool.take(rule.seqno)) {
          rule.seqno = pool.takeNext(rule.seqno);
        }
      }
    }
  }

  RuleSources<Rule> sources_;
  RuleProduct& product_;
  std::vector<Rewritten> rewritten_;  // the last source first
  std::size_t composed_ = 0;
};

}  // namespace PolicyMap
