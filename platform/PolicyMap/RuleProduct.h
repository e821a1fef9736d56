// SPDX-License-Identifier: Apache-2.0
#pragma once

// RuleProduct: intersections of rules, each with a name that is composed of theirs.
//
// The rules of a match-all class-map are all non-empty intersections of one rule from each operand.
// The first matching rule of each operand decides for a packet, so the operands are nested in
// order, the first outermost: the intersection of these first matching rules then comes before any
// other that matches the packet.

#include "PolicyMap/ClassRules.h"
#include "PolicyMap/RuleLimits.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMap {

class RuleProduct {
 public:
  // For `classMap`, a match-all or a match-any as `kind` says, within the class `whole`. Adds the
  // number of compared pairs to `pairs`, which counts over the whole class.
  RuleProduct(std::string_view kind, Kor::Name classMap, Kor::Name whole, RuleLimits const& limits,
              std::size_t& pairs)
      : kind_(kind),
        classMap_(std::move(classMap)),
        whole_(std::move(whole)),
        limits_(limits),
        pairs_(pairs) {}

  // Requires at least one operand. Empty after an error.
  template <class Rule>
  std::vector<NamedRule<Rule>> of(std::vector<RuleSources<Rule>> const& operands) {
    std::vector<NamedRule<Rule>> left = listed(operands.front());
    for (std::size_t i = 1; i < operands.size(); ++i) {
      left = both(left, listed(operands[i]));
    }
    return left;
  }

  // Adds the number of pairs that are about to be compared. False, and an error, if they are too
  // many.
  bool takePairs(std::size_t pairs) {
    pairs_ += pairs;
    if (pairs_ > limits_.pairs) {
      fail(whole_, std::string(kind_) + " compares more than " + std::to_string(limits_.pairs) +
                       " pairs of rules");
    }
    return error_.empty();
  }
  // Adds the intersection of two rules to `all`, if it is not empty. False after an error.
  template <class Rule>
  bool addBoth(NamedRule<Rule> const& a, NamedRule<Rule> const& b,
               std::vector<NamedRule<Rule>>& all) {
    Intersection<Rule> met = intersect(a.exact, b.exact);
    if (auto* const exact = std::get_if<ExactRule<Rule>>(&met)) {
      all.push_back(together(a, b, std::move(*exact)));
    } else if (auto const* const inexpressible = std::get_if<Inexpressible>(&met)) {
      fail(classMap_, "the " + std::string(inexpressible->field) + " matches of rules " +
                          nameOf(a) + " and " + nameOf(b) + " cannot be combined");
    }
    return takeRules(all.size());
  }
  // False, and an error, if there are too many composed rules.
  bool takeRules(std::size_t rules) {
    if (rules > limits_.composedRules) {
      fail(classMap_, std::string(kind_) + " makes more than " +
                          std::to_string(limits_.composedRules) + " rules");
    }
    return error_.empty();
  }

  // The first error, with the name of the class-map; empty if none.
  [[nodiscard]] std::string const& error() const { return error_; }

 private:
  template <class Rule>
  static std::vector<NamedRule<Rule>> listed(RuleSources<Rule> const& sources) {
    std::vector<NamedRule<Rule>> rules;
    for (RuleSource<Rule> const& source : sources) {
      source.addTo(rules);
    }
    return rules;
  }

  template <class Rule>
  std::vector<NamedRule<Rule>> both(std::vector<NamedRule<Rule>> const& left,
                                    std::vector<NamedRule<Rule>> const& right) {
    if (!takePairs(left.size() * right.size())) {
      return {};
    }
    std::vector<NamedRule<Rule>> all;
    for (NamedRule<Rule> const& a : left) {
      for (NamedRule<Rule> const& b : right) {
        if (!addBoth(a, b, all)) {
          return {};
        }
      }
    }
    return all;
  }

  // The rule composed of two: it has the number of the first, and the other rule is appended to its
  // list name. In that name, each number except the first follows the name of its list.
  template <class Rule>
  static NamedRule<Rule> together(NamedRule<Rule> const& first, NamedRule<Rule> const& second,
                                  ExactRule<Rule> exact) {
    std::string_view const added = second.aclName.view();
    std::string name = first.aclName.stdString() + " & ";
    name.append(added.substr(0, second.firstLength)).append(":");
    name.append(std::to_string(second.seqno)).append(added.substr(second.firstLength));
    return {Kor::Name(Kor::String8(name)), first.firstLength, first.seqno, std::move(exact)};
  }

  template <class Rule>
  static std::string nameOf(NamedRule<Rule> const& rule) {
    return std::to_string(rule.seqno) +
           (rule.aclName.empty() ? std::string() : " of " + rule.aclName.stdString());
  }

  void fail(Kor::Name const& classMap, std::string const& text) {
    if (error_.empty()) {
      error_ = "class-map " + classMap.stdString() + ": " + text;
    }
  }

  std::string_view kind_;
  Kor::Name classMap_;
  Kor::Name whole_;
  RuleLimits const& limits_;
  std::size_t& pairs_;
  std::string error_;
};

}  // namespace PolicyMap
