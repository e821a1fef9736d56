// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/AclPolicyType.h"
#include "records/Export.h"
#include "records/RuleCollections.h"
#include "records/RuleTable.h"
#include "records/SubRuleDataCollection.h"
#include "records/TestActionKinds.h"

#include <Acl/Ip6RuleConfig.h>
#include <Acl/IpRuleConfig.h>
#include <Acl/MacRuleConfig.h>
#include <Kor/Collection.h>
#include <PolicyMap/AclRuleKey.h>
#include <Vorel/IntfId.h>

#include <array>
#include <cstdint>

namespace PolicyMapTest {

// Everything that the helper has recorded about one policy and option. Plain storage: no checks, no
// notifications.
//
// The collections about rules show one object per rule, RecordedRule. The ones of one rule are in
// one place, so a caller that reads or writes several of them can look it up once: ruleOf().
class POLICYMAPTEST_API AclPolicyData : public Kor::PtrInterface,
                                        public Kor::HashMapLink<AclPolicyData> {
 public:
  using Ptr = Kor::Ptr<AclPolicyData>;
  using PtrConst = Kor::Ptr<AclPolicyData const>;

  // Empty: all counters are 0, not dirty, not created.
  explicit AclPolicyData(AclPolicyType const& key);
  ~AclPolicyData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] AclPolicyType const& key() const { return key_; }
  [[nodiscard]] AclPolicyType const& fwkKey() const { return key_; }

 private:
  AclPolicyType key_;
  RuleTable ipRules_{&RuleWithMatch<Acl::IpRuleConfig>::make};
  RuleTable ip6Rules_{&RuleWithMatch<Acl::Ip6RuleConfig>::make};
  RuleTable macRules_{&RuleWithMatch<Acl::MacRuleConfig>::make};
  RuleTable& rules_;  // the one for the option of the record

  // The values of the test actions, by rule: ruleAction1 and so on.
#define POLICYMAPTEST_ROW(kind)                                                         \
  KOR_VALUE_COLLECTION_IN(RuleCollection, (RulePartOf{rules_, RulePart::action##kind}), \
                          AclPolicyData, ruleAction##kind, RuleAction##kind,            \
                          PolicyMap::AclRuleKey, std::uint32_t)
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  // The match of each rule: ruleMatch for ipv4, ruleMatch6 for ipv6, ruleMatchMac for all others.
  KOR_VALUE_COLLECTION_IN(RuleCollection, (RulePartOf{ipRules_, RulePart::match}), AclPolicyData,
                          ruleMatch, RuleMatch, PolicyMap::AclRuleKey, Acl::IpRuleConfig)
  KOR_VALUE_COLLECTION_IN(RuleCollection, (RulePartOf{ip6Rules_, RulePart::match}), AclPolicyData,
                          ruleMatch6, RuleMatch6, PolicyMap::AclRuleKey, Acl::Ip6RuleConfig)
  KOR_VALUE_COLLECTION_IN(RuleCollection, (RulePartOf{macRules_, RulePart::match}), AclPolicyData,
                          ruleMatchMac, RuleMatchMac, PolicyMap::AclRuleKey, Acl::MacRuleConfig)
  // The sub-rules of each rule. A caller that holds a reference keeps removed ones.
  KOR_OWNED_COLLECTION_IN(RuleCollection, (RulePartOf{rules_, RulePart::subRules}), AclPolicyData,
                          subRulesForKey, SubRulesForKey, PolicyMap::AclRuleKey,
                          SubRuleDataCollection)
  // The interfaces to which the policy is applied.
  KOR_VALUE_COLLECTION(AclPolicyData, intf, Intf, Vorel::IntfId, bool)

  // What the helper writes about one rule, with one look-up for all of it. The rule is in a
  // collection as soon as something is written for it, and valid until all of that was removed.
  [[nodiscard]] RecordedRule& ruleOf(PolicyMap::AclRuleKey const& key) {
    return rules_.findOrCreate(key);
  }
  // The type of the match must be the one for the option of the record.
  void recordMatch(RecordedRule& rule, Acl::IpRuleConfig const& match) {
    ruleMatchCollection_.setIn(rule, match);
  }
  void recordMatch(RecordedRule& rule, Acl::Ip6RuleConfig const& match) {
    ruleMatch6Collection_.setIn(rule, match);
  }
  void recordMatch(RecordedRule& rule, Acl::MacRuleConfig const& match) {
    ruleMatchMacCollection_.setIn(rule, match);
  }
  void recordActions(RecordedRule& rule, std::array<std::uint32_t, testActionKinds> const& values) {
#define POLICYMAPTEST_ROW(kind) ruleAction##kind##Collection_.setIn(rule, values[(kind)-1]);
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  }
  void recordSubRule(RecordedRule& rule, PolicyMap::SubRuleData const& subRule);
  // Whether the rule has that sub-rule, and has stored true for it.
  [[nodiscard]] static bool hasSubRule(RecordedRule& rule, PolicyMap::SubRuleData const& subRule);
  // Empties the collections about rules.
  void rulesDelAll();

  // Calls visit(subRule) for each sub-rule of that rule, or of all rules. Unlike subRulesForKey(),
  // this creates no objects. `visit` must not change the record.
  template <class Visit>
  void forEachSubRule(PolicyMap::AclRuleKey const& key, Visit const& visit) const {
    RecordedRule* const rule = rules_.find(key);
    if (rule != nullptr && rule->has(RulePart::subRules)) {
      visitSubRules(*rule, visit);
    }
  }
  template <class Visit>
  void forEachSubRule(Visit const& visit) const {
    for (RecordedRule* rule = rules_.first(RulePart::subRules); rule != nullptr;
         rule = rules_.next(*rule, RulePart::subRules)) {
      visitSubRules(*rule, visit);
    }
  }

  // Counters. `xInc(count)` adds, modulo 2^32, and returns the new value.
  [[nodiscard]] std::uint32_t commitCount() const {
    return commitCount_;
  }
  void commitCountIs(std::uint32_t count) {
    commitCount_ = count;
  }
  std::uint32_t commitCountInc(std::uint32_t count) {
    return commitCount_ += count;
  }

  // True if a rule was added since the last commit. Set by AclHelper::addRule().
  [[nodiscard]] bool dirty() const {
    return dirty_;
  }
  void dirtyIs(bool dirty) {
    dirty_ = dirty;
  }

  [[nodiscard]] std::uint32_t createCount() const {
    return createCount_;
  }
  void createCountIs(std::uint32_t count) {
    createCount_ = count;
  }
  std::uint32_t createCountInc(std::uint32_t count) {
    return createCount_ += count;
  }

  [[nodiscard]] std::uint32_t beginUpdateActionCount() const {
    return beginUpdateActionCount_;
  }
  void beginUpdateActionCountIs(std::uint32_t count) {
    beginUpdateActionCount_ = count;
  }
  std::uint32_t beginUpdateActionCountInc(std::uint32_t count) {
    return beginUpdateActionCount_ += count;
  }

  [[nodiscard]] std::uint32_t endUpdateActionCount() const {
    return endUpdateActionCount_;
  }
  void endUpdateActionCountIs(std::uint32_t count) {
    endUpdateActionCount_ = count;
  }
  std::uint32_t endUpdateActionCountInc(std::uint32_t count) {
    return endUpdateActionCount_ += count;
  }

  // Whether the policy exists in the simulated hardware.
  [[nodiscard]] bool created() const {
    return created_;
  }
  void createdIs(bool created) {
    created_ = created;
  }

 private:
  static SubRuleDataCollection* subRulesOf(RecordedRule& rule) {
    return static_cast<SubRuleDataCollection*>(rule.holder(RulePart::subRules));
  }
  template <class Visit>
  static void visitSubRules(RecordedRule& rule, Visit const& visit) {
    if (SubRuleDataCollection const* const subRules = subRulesOf(rule)) {
      for (auto const& entry : subRules->subRuleIteratorConst()) {
        visit(entry.key());
      }
    } else {
      visit(rule.storedSubRule());
    }
  }

  std::uint32_t commitCount_ = 0;
  bool dirty_ = false;
  std::uint32_t createCount_ = 0;
  std::uint32_t beginUpdateActionCount_ = 0;
  std::uint32_t endUpdateActionCount_ = 0;
  bool created_ = false;
};

}  // namespace PolicyMapTest
