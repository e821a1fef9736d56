// SPDX-License-Identifier: Apache-2.0
#include "records/RuleTable.h"

namespace PolicyMapTest {

using PolicyMap::AclRuleKey;

RecordedRule::~RecordedRule() = default;

RuleTable::~RuleTable() {
  while (cursors_ != nullptr) {
    Cursor& cursor = *cursors_;
    cursor.detach();
    cursor.rule_ = nullptr;
  }
}

RecordedRule& RuleTable::create(AclRuleKey const& key) {
  Kor::Ptr<RecordedRule> const rule = make_(key);
  rules_.insert(rule);
  return *rule;
}

RecordedRule* RuleTable::firstFrom(RecordedRule* rule, RulePart part) const {
  while (rule != nullptr && !rule->has(part)) {
    rule = rules_.next(rule);
  }
  return rule;
}

RecordedRule* RuleTable::first(RulePart part) const {
  if (members(part) == 0) {
    return nullptr;
  }
  RecordedRule*& first = firsts_[placeOf(part)];
  first = firstFrom(first != nullptr ? first : rules_.first(), part);
  return first;
}

RecordedRule* RuleTable::next(RecordedRule const& rule, RulePart part) const {
  return firstFrom(rules_.next(&rule), part);
}

RecordedRule* RuleTable::after(AclRuleKey const& key, RulePart part) const {
  return firstFrom(rules_.upperBound(key), part);
}

void RuleTable::add(RecordedRule& rule, RulePart part) {
  rule.parts_ |= RecordedRule::bitOf(part);
  ++counts_[placeOf(part)];
  firsts_[placeOf(part)] = nullptr;
}

void RuleTable::remove(RecordedRule& rule, RulePart part) {
  rule.parts_ &= static_cast<std::uint8_t>(~RecordedRule::bitOf(part));
  --counts_[placeOf(part)];
  if (rule.holders_ != nullptr) {
    rule.holderIs(part, nullptr);
  }
  if (!rule.empty()) {
    return;
  }
  for (RecordedRule*& first : firsts_) {
    if (first == &rule) {
      first = rules_.next(&rule);
    }
  }
  rules_.remove(&rule);
}

void RuleTable::clear() {
  rules_.clear();
  counts_.fill(0);
  firsts_.fill(nullptr);
}

bool RuleTable::isVisited(RecordedRule const& rule, RulePart part) const {
  for (Cursor const* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
    if (cursor->rule_ == &rule && cursor->part_ == part && !cursor->removed_) {
      return true;
    }
  }
  return false;
}

void RuleTable::leaveCursors(RecordedRule const& rule, RulePart part) {
  for (Cursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
    if (cursor->rule_ == &rule && cursor->part_ == part && !cursor->removed_) {
      cursor->removed_ = Kor::share(rule.holder(part));
    }
  }
}

void RuleTable::endCursors(RulePart part) {
  for (Cursor* cursor = cursors_; cursor != nullptr; cursor = cursor->older_) {
    cursor->over_ = cursor->over_ || cursor->part_ == part;
  }
}

RuleTable::Cursor::Cursor(Cursor const& other)
    : part_(other.part_), over_(other.over_), rule_(other.rule_), removed_(other.removed_) {
  attach(other.table_);
}

RuleTable::Cursor& RuleTable::Cursor::operator=(Cursor const& other) {
  if (this != &other) {
    detach();
    part_ = other.part_;
    over_ = other.over_;
    rule_ = other.rule_;
    removed_ = other.removed_;
    attach(other.table_);
  }
  return *this;
}

void RuleTable::Cursor::advance() {
  if (table_ == nullptr || !rule_ || over_) {
    rule_ = nullptr;
  } else {
    rule_ = Kor::share(removed_ ? table_->after(rule_->key(), part_) : table_->next(*rule_, part_));
  }
  removed_ = nullptr;
}

void RuleTable::Cursor::attach(RuleTable* table) {
  table_ = table;
  if (table_ != nullptr) {
    older_ = table_->cursors_;
    if (older_ != nullptr) {
      older_->newer_ = this;
    }
    table_->cursors_ = this;
  }
}

void RuleTable::Cursor::detach() {
  if (table_ != nullptr) {
    (newer_ == nullptr ? table_->cursors_ : newer_->older_) = older_;
    if (older_ != nullptr) {
      older_->newer_ = newer_;
    }
    newer_ = older_ = nullptr;
    table_ = nullptr;
  }
}

}  // namespace PolicyMapTest
