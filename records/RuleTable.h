// SPDX-License-Identifier: Apache-2.0
#pragma once

// RuleTable: the recorded rules of one type of match, by key. The rules that have a part are a
// collection of their own, in the order of Kor::HashMap. A rule leaves the table with its last
// part.

#include "records/Export.h"
#include "records/RecordedRule.h"

#include <Kor/HashMap.h>

#include <array>
#include <cstdint>

namespace PolicyMapTest {

class POLICYMAPTEST_API RuleTable {
 public:
  class Cursor;
  using Make = Kor::Ptr<RecordedRule> (*)(PolicyMap::AclRuleKey const&);

  explicit RuleTable(Make make) : make_(make) {}
  RuleTable(RuleTable const&) = delete;
  RuleTable& operator=(RuleTable const&) = delete;
  // Moves all cursors to their end.
  ~RuleTable();

  [[nodiscard]] RecordedRule* find(PolicyMap::AclRuleKey const& key) const {
    return rules_.find(key);
  }
  // Without parts if it is new.
  RecordedRule& findOrCreate(PolicyMap::AclRuleKey const& key) {
    RecordedRule* const rule = rules_.find(key);
    return rule != nullptr ? *rule : create(key);
  }

  // The number of rules that have the part.
  [[nodiscard]] std::uint32_t members(RulePart part) const { return counts_[placeOf(part)]; }
  // The first rule that has the part, the next one, and the first one after the position of a key,
  // which need not be the key of a rule. Null at the end.
  [[nodiscard]] RecordedRule* first(RulePart part) const;
  [[nodiscard]] RecordedRule* next(RecordedRule const& rule, RulePart part) const;
  [[nodiscard]] RecordedRule* after(PolicyMap::AclRuleKey const& key, RulePart part) const;

  // `rule` must not have the part yet.
  void add(RecordedRule& rule, RulePart part);
  // `rule` must have the part. It may be destroyed.
  void remove(RecordedRule& rule, RulePart part);
  // Removes all rules. There must be no cursors.
  void clear();

  [[nodiscard]] bool hasCursors() const { return cursors_ != nullptr; }
  // True if a cursor over this part is at the rule.
  [[nodiscard]] bool isVisited(RecordedRule const& rule, RulePart part) const;
  // The part of the rule is about to go: the cursors at it keep its holder.
  void leaveCursors(RecordedRule const& rule, RulePart part);
  // All members of the part are about to go: no cursor at a member has a next one.
  void endCursors(RulePart part);

 private:
  static constexpr std::size_t placeOf(RulePart part) { return static_cast<std::size_t>(part); }
  RecordedRule& create(PolicyMap::AclRuleKey const& key);
  RecordedRule* firstFrom(RecordedRule* rule, RulePart part) const;

  Make make_;
  Kor::HashMap<RecordedRule> rules_;
  std::array<std::uint32_t, ruleParts> counts_{};
  // Per part, a rule before which none has the part; null if not known. Without it, removing the
  // members one by one, each time the first, would cost the square of their number.
  mutable std::array<RecordedRule*, ruleParts> firsts_{};
  Cursor* cursors_ = nullptr;
};

// A position among the rules that have one part, or the end. It stays valid whatever happens to the
// table.
class POLICYMAPTEST_API RuleTable::Cursor {
 public:
  Cursor() = default;
  // At the first member.
  Cursor(RuleTable& table, RulePart part) : part_(part), rule_(Kor::share(table.first(part))) {
    attach(&table);
  }
  Cursor(Cursor const& other);
  Cursor& operator=(Cursor const& other);
  ~Cursor() { detach(); }

  explicit operator bool() const { return bool(rule_); }
  // The rule at the cursor, even if the part was removed.
  [[nodiscard]] RecordedRule& rule() const { return *rule_; }
  // If the part was removed, the object that holds it; otherwise null.
  [[nodiscard]] Kor::Ptr<Kor::PtrInterface> const& removed() const { return removed_; }

  void advance();

 private:
  friend class RuleTable;

  void attach(RuleTable* table);
  void detach();

  RuleTable* table_ = nullptr;
  RulePart part_{};
  bool over_ = false;
  Kor::Ptr<RecordedRule> rule_;
  Kor::Ptr<Kor::PtrInterface> removed_;
  Cursor* newer_ = nullptr;
  Cursor* older_ = nullptr;
};

}  // namespace PolicyMapTest
