// SPDX-License-Identifier: Apache-2.0
#pragma once

// RecordedRule: everything that a record holds about one rule. The collections of AclPolicyData
// show its parts.
//
// A part is stored in the rule until someone asks for the object that represents it, e.g. the entry
// of ruleAction1 or the SubRuleDataCollection. From then on that object holds the part.

#include "records/Export.h"
#include "records/TestActionKinds.h"

#include <Kor/HashMapLink.h>
#include <Kor/PtrInterface.h>
#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/SubRuleData.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace PolicyMapTest {

enum class RulePart : std::uint8_t {
#define POLICYMAPTEST_ROW(kind) action##kind,
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
      match,
  subRules,
};
inline constexpr std::size_t ruleParts = testActionKinds + 2;

template <class Match>
class RuleWithMatch;

class POLICYMAPTEST_API RecordedRule : public Kor::PtrInterface,
                                       public Kor::HashMapLink<RecordedRule> {
 public:
  // No parts.
  explicit RecordedRule(PolicyMap::AclRuleKey const& key) : key_(key) {}
  ~RecordedRule() override;

  [[nodiscard]] PolicyMap::AclRuleKey const& key() const { return key_; }
  [[nodiscard]] PolicyMap::AclRuleKey const& fwkKey() const { return key_; }

  [[nodiscard]] bool has(RulePart part) const { return (parts_ & bitOf(part)) != 0; }
  [[nodiscard]] bool empty() const { return parts_ == 0; }

  // The place of an action or, for any other type of value, of the match.
  template <class Value>
  [[nodiscard]] Value& stored(RulePart part) {
    if constexpr (std::is_same_v<Value, std::uint32_t>) {
      return actions_[static_cast<std::size_t>(part)];
    } else {
      return static_cast<RuleWithMatch<Value>&>(*this).match;
    }
  }
  // The only sub-rule.
  [[nodiscard]] PolicyMap::SubRuleData& storedSubRule() { return subRule_; }

  // The object that holds a part; null while the rule itself does.
  [[nodiscard]] Kor::PtrInterface* holder(RulePart part) const {
    return holders_ == nullptr ? nullptr : (*holders_)[static_cast<std::size_t>(part)].get();
  }
  void holderIs(RulePart part, Kor::Ptr<Kor::PtrInterface> holder) {
    if (holders_ == nullptr) {
      holders_ = std::make_unique<Holders>();
    }
    (*holders_)[static_cast<std::size_t>(part)] = std::move(holder);
  }

 private:
  friend class RuleTable;
  using Holders = std::array<Kor::Ptr<Kor::PtrInterface>, ruleParts>;

  static constexpr std::uint8_t bitOf(RulePart part) {
    return static_cast<std::uint8_t>(1U << static_cast<unsigned>(part));
  }

  std::uint8_t parts_ = 0;
  PolicyMap::AclRuleKey key_;
  PolicyMap::SubRuleData subRule_;
  std::array<std::uint32_t, testActionKinds> actions_{};
  std::unique_ptr<Holders> holders_;
};

template <class Match>
class RuleWithMatch final : public RecordedRule {
 public:
  using RecordedRule::RecordedRule;
  [[nodiscard]] static Kor::Ptr<RecordedRule> make(PolicyMap::AclRuleKey const& key) {
    return Kor::make<RuleWithMatch>(key);
  }

  Match match;
};

}  // namespace PolicyMapTest
