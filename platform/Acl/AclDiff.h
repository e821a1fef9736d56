// SPDX-License-Identifier: Apache-2.0
#pragma once

// AclDiff: the differences between two versions of an access list, and whether they affect what is
// programmed.
//
// Only the final rule at each number counts. The order of the edits, rules that were removed and
// restored, and rules that were overwritten by equal ones do not matter. Nor do rules that match
// nothing, because they are never programmed.
//
// A rule that moves to another number is a difference, even if the order of the rules stays the
// same and no packet is treated differently. The number is part of the key under which the rule is
// programmed, its actions are updated and its hits are counted, so the rule must be programmed
// again under the new number.

#include "Acl/AclRules.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/PtrInterface.h"
#include "PolicyMapExport.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Acl {

// Sequence numbers, ascending.
struct AclChange {
  std::vector<std::uint32_t> added;
  std::vector<std::uint32_t> removed;
  std::vector<std::uint32_t> changed;  // in both versions, with different rules

  [[nodiscard]] bool operator!() const {
    return added.empty() && removed.empty() && changed.empty();
  }
  friend bool operator==(AclChange const&, AclChange const&) = default;
};

// Stateless. A null version is an empty list. Both operations are linear in the number of rules.
class POLICYMAP_API AclDiff : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<AclDiff>;
  using PtrConst = Kor::Ptr<AclDiff const>;

  ~AclDiff() override;

  template <class Rule>
  [[nodiscard]] AclChange changes(Kor::Ptr<AclRules<Rule> const> const& oldRules,
                                  Kor::Ptr<AclRules<Rule> const> const& newRules) const {
    AclChange change;
    walk(oldRules, newRules, change);
    return change;
  }

  // True if both versions program the same: the rules that match something are equal and have equal
  // numbers.
  template <class Rule>
  [[nodiscard]] bool sameEffect(Kor::Ptr<AclRules<Rule> const> const& oldRules,
                                Kor::Ptr<AclRules<Rule> const> const& newRules) const {
    return oldRules == newRules || equalEffect<Rule>(rulesOf(oldRules), rulesOf(newRules));
  }

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

 private:
  template <class Rule>
  using Entries = std::vector<typename AclRules<Rule>::Entry>;

  template <class Rule>
  static Entries<Rule> const& rulesOf(Kor::Ptr<AclRules<Rule> const> const& rules) {
    static Entries<Rule> const none;
    return rules ? rules->rules() : none;
  }

  template <class Rule>
  static bool equalEffect(Entries<Rule> const& before, Entries<Rule> const& after) {
    auto const matching = [](auto from, auto end) {
      return std::find_if(from, end,
                          [](auto const& entry) { return !entry.second.matchesNothing(); });
    };
    auto was = matching(before.begin(), before.end());
    auto is = matching(after.begin(), after.end());
    while (was != before.end() && is != after.end() && *was == *is) {
      was = matching(was + 1, before.end());
      is = matching(is + 1, after.end());
    }
    return was == before.end() && is == after.end();
  }

  template <class Rule>
  static void walk(Kor::Ptr<AclRules<Rule> const> const& oldRules,
                   Kor::Ptr<AclRules<Rule> const> const& newRules, AclChange& change) {
    auto const& before = rulesOf(oldRules);
    auto const& after = rulesOf(newRules);
    auto was = before.begin();
    auto is = after.begin();
    while (was != before.end() || is != after.end()) {
      if (is == after.end() || (was != before.end() && was->first < is->first)) {
        change.removed.push_back((was++)->first);
      } else if (was == before.end() || is->first < was->first) {
        change.added.push_back((is++)->first);
      } else {
        if (was->second != is->second) {
          change.changed.push_back(is->first);
        }
        ++was;
        ++is;
      }
    }
  }
};

}  // namespace Acl
