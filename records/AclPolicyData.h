// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/AclPolicyType.h"
#include "records/Export.h"
#include "records/SubRuleDataCollection.h"
#include "records/TestActionKinds.h"

#include <Acl/Ip6RuleConfig.h>
#include <Acl/IpRuleConfig.h>
#include <Acl/MacRuleConfig.h>
#include <Kor/Collection.h>
#include <PolicyMap/AclRuleKey.h>
#include <Vorel/IntfId.h>

#include <cstdint>

namespace PolicyMapTest {

// Everything that the helper has recorded about one policy and option. Plain storage: no checks, no
// notifications.
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

  // The values of the test actions, by rule: ruleAction1 and so on.
#define POLICYMAPTEST_ROW(kind)                                                                  \
  KOR_VALUE_COLLECTION(AclPolicyData, ruleAction##kind, RuleAction##kind, PolicyMap::AclRuleKey, \
                       std::uint32_t)
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  // The match of each rule: ruleMatch for ipv4, ruleMatch6 for ipv6, ruleMatchMac for all others.
  KOR_VALUE_COLLECTION(AclPolicyData, ruleMatch, RuleMatch, PolicyMap::AclRuleKey,
                       Acl::IpRuleConfig)
  KOR_VALUE_COLLECTION(AclPolicyData, ruleMatch6, RuleMatch6, PolicyMap::AclRuleKey,
                       Acl::Ip6RuleConfig)
  KOR_VALUE_COLLECTION(AclPolicyData, ruleMatchMac, RuleMatchMac, PolicyMap::AclRuleKey,
                       Acl::MacRuleConfig)
  // The sub-rules of each rule. A caller that holds a reference keeps removed ones.
  KOR_OWNED_COLLECTION(AclPolicyData, subRulesForKey, SubRulesForKey, PolicyMap::AclRuleKey,
                       SubRuleDataCollection)
  // The interfaces to which the policy is applied.
  KOR_VALUE_COLLECTION(AclPolicyData, intf, Intf, Vorel::IntfId, bool)

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
  std::uint32_t commitCount_ = 0;
  bool dirty_ = false;
  std::uint32_t createCount_ = 0;
  std::uint32_t beginUpdateActionCount_ = 0;
  std::uint32_t endUpdateActionCount_ = 0;
  bool created_ = false;
};

}  // namespace PolicyMapTest
