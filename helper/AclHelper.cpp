// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"

#include "machines/TestClassCommonData.h"
#include "records/Trace.h"

#include <Kor/Assert.h>
#include <Kor/EventLoop.h>
#include <PolicyMap/PerOption.h>

#include <ostream>
#include <utility>

namespace PolicyMapTest {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::PolicyMapSmCommonData;
using PolicyMap::SubRuleData;

namespace {

// How trace lines name the data of a policy and of a class.
struct TracedPolicy {
  PolicyMapSmCommonData const* data;
  explicit TracedPolicy(PolicyMapSmCommonData::PtrConst const& policyData)
      : data(policyData.get()) {}
  friend std::ostream& operator<<(std::ostream& out, TracedPolicy const& traced) {
    return traced.data == nullptr ? out << "None" : out << traced.data->policyKey();
  }
};
struct TracedClass {
  ClassMapSmCommonData const* data;
  explicit TracedClass(ClassMapSmCommonData::PtrConst const& classData) : data(classData.get()) {}
  friend std::ostream& operator<<(std::ostream& out, TracedClass const& traced) {
    return traced.data == nullptr ? out << "None" : out << traced.data->name();
  }
};

void recordActions(AclPolicyData& data, AclRuleKey const& key, TestClassCommonData const& values) {
  data.ruleAction1Is(key, values.action1Value());
  data.ruleAction2Is(key, values.action2Value());
  data.ruleAction3Is(key, values.action3Value());
}

void recordMatch(AclPolicyData& data, AclRuleKey const& key, ClassMapSmCommonData const& rules) {
  auto const mac = [&] { data.ruleMatchMacIs(key, rules.getMacRule(key)); };
  PolicyMap::forOption(
      key.matchOption(), [&] { data.ruleMatchIs(key, rules.getIpRule(key)); },
      [&] { data.ruleMatch6Is(key, rules.getIp6Rule(key)); }, mac, mac);
}

}  // namespace

AclHelper::AclHelper(bool updateActionSupported, bool expandPortChannels) {
  updateActionSupportedIs(updateActionSupported);
  expandPortChannelsIs(expandPortChannels);
}

AclHelper::~AclHelper() {
  testDataDelAll();
}
AclHelper::NotifieeConst::~NotifieeConst() = default;
AclHelper::Notifiee::~Notifiee() = default;

Kor::KorType const* AclHelper::fwkType() const {
  return _fwkType();
}
Kor::KorType* AclHelper::_fwkType() {
  static Kor::KorType type("PolicyMapTest::AclHelper", PolicyMapAclHelper::_fwkType());
  return &type;
}

Kor::Ptr<AclHelper> aclHelperFactory(bool updateActionSupported, bool expandPortChannels) {
  return Kor::validPtr(Kor::make<AclHelper>(updateActionSupported, expandPortChannels));
}

// policies

void AclHelper::hwInit() {}

Kor::String AclHelper::createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::createPolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", matchOption=" << matchOption);
  Ptr const pinned = Kor::share(this);  // an observer of a new record may release the helper
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): so may the caller's pointer
  PolicyMapSmCommonData::PtrConst const policy = policyData;
  AclPolicyData::Ptr const data = testDataIs(AclPolicyType(policy->policyKey(), matchOption));
  KOR_ASSERT_AS(sourceName, "!data->created()", !data->created());
  data->createdIs(true);
  data->createCountInc(1);
  KOR_ASSERT_AS(sourceName, "data->ruleMatchs() == 0", data->ruleMatchs() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleMatch6s() == 0", data->ruleMatch6s() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleMatchMacs() == 0", data->ruleMatchMacs() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleAction1s() == 0", data->ruleAction1s() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleAction2s() == 0", data->ruleAction2s() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleAction3s() == 0", data->ruleAction3s() == 0);
  for (Vorel::IntfId const intf : policy->intfs(matchOption)) {
    data->intfIs(intf, true);
  }
  return createError_;
}

Kor::String AclHelper::recreatePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                      ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::recreatePolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", matchOption=" << matchOption);
  Ptr const pinned = Kor::share(this);
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): overrides may drop the caller's
  PolicyMapSmCommonData::PtrConst const policy = policyData;
  try {
    deletePolicy(policy, matchOption);
    return createPolicy(policy, matchOption);
  } catch (...) {
    // An operation that throws counts as not carried out, so the policy is still created.
    if (AclPolicyData::Ptr const data = testData(AclPolicyType(policy->policyKey(), matchOption))) {
      data->createdIs(true);
    }
    throw;
  }
}

Kor::String AclHelper::deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::deletePolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", matchOption=" << matchOption);
  AclPolicyData::Ptr const data = testData(AclPolicyType(policyData->policyKey(), matchOption));
  KOR_ASSERT_AS(sourceName, "data", data);
  KOR_ASSERT_AS(sourceName, "data->created()", data->created());
  data->createdIs(false);
  data->ruleMatchDelAll();
  data->ruleMatch6DelAll();
  data->ruleMatchMacDelAll();
  data->subRulesForKeyDelAll();
  data->ruleAction1DelAll();
  data->ruleAction2DelAll();
  data->ruleAction3DelAll();
  data->intfDelAll();
  return deleteError_;
}

Kor::String AclHelper::commitPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::commitPolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", matchOption=" << matchOption);
  AclPolicyData::Ptr const data = testData(AclPolicyType(policyData->policyKey(), matchOption));
  KOR_ASSERT_AS(sourceName, "data", data);
  data->commitCountInc(1);
  data->dirtyIs(false);
  return result(commitError_);
}

Kor::String AclHelper::addIntfToPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                       Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::addIntfToPolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, Vorel::IntfId, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", intf=" << intf
                     << ", matchOption=" << matchOption);
  Ptr const pinned = Kor::share(this);  // a new record is announced
  AclPolicyData::Ptr const data = testDataIs(AclPolicyType(policyData->policyKey(), matchOption));
  data->intfIs(intf, true);
  return result(addIntfError_);
}

Kor::String AclHelper::removeIntfFromPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                            Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::removeIntfFromPolicy("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, Vorel::IntfId, "
                 "PolicyMap::ClassMapMatchOption): policyData="
                     << TracedPolicy(policyData) << ", intf=" << intf
                     << ", matchOption=" << matchOption);
  AclPolicyData::Ptr const data = testData(AclPolicyType(policyData->policyKey(), matchOption));
  if (data) {
    data->intfDel(intf);
  }
  return result(removeIntfError_);
}

// rules

Kor::String AclHelper::addRule(AclRuleKey const& key, SubRuleData const& subRule,
                               PolicyMapSmCommonData::PtrConst const& policyCommonData,
                               ClassMapSmCommonData::PtrConst const& classCommonData) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::addRule("
                 "const PolicyMap::AclRuleKey&, const PolicyMap::SubRuleData&, "
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "const PolicyMap::ClassMapSmCommonData::PtrConst&): key="
                     << key << ", subRule=" << subRule
                     << ", policyCommonData=" << TracedPolicy(policyCommonData)
                     << ", classCommonData=" << TracedClass(classCommonData));
  if (!rangeCheckerError_.empty() && (subRule.srcPortRange() || subRule.dstPortRange())) {
    return rangeCheckerError_;
  }
  if (!addRuleError_.empty()) {
    return addRuleError_;
  }
  auto const testClassData = classCommonData.as<TestClassCommonData const>();
  KOR_ASSERT_AS(sourceName, "testClassData", testClassData);
  AclPolicyData::Ptr const data =
      testData(AclPolicyType(policyCommonData->policyKey(), key.matchOption()));
  KOR_ASSERT_AS(sourceName, "data", data);
  recordMatch(*data, key, *testClassData);
  SubRuleDataCollection::Ptr const subRules = data->subRulesForKeyIs(key);
  KOR_ASSERT_AS(sourceName, "!subrules->subRule( subRule )", !subRules->subRule(subRule));
  subRules->subRuleIs(subRule, true);
  recordActions(*data, key, *testClassData);
  data->dirtyIs(true);
  return addRuleError_;
}

Kor::String AclHelper::updateAction(AclRuleKey const& key, SubRuleData const& subRuleData,
                                    PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                    ClassMapSmCommonData::PtrConst const& classCommonData) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::updateAction("
                 "const PolicyMap::AclRuleKey&, const PolicyMap::SubRuleData&, "
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "const PolicyMap::ClassMapSmCommonData::PtrConst&): key="
                     << key << ", subRuleData=" << subRuleData
                     << ", policyCommonData=" << TracedPolicy(policyCommonData)
                     << ", classCommonData=" << TracedClass(classCommonData));
  auto const testClassData = classCommonData.as<TestClassCommonData const>();
  KOR_ASSERT_AS(sourceName, "testClassData", testClassData);
  AclPolicyData::Ptr const data =
      testData(AclPolicyType(policyCommonData->policyKey(), key.matchOption()));
  KOR_ASSERT_AS(sourceName, "data && data->created()", data && data->created());
  recordActions(*data, key, *testClassData);
  if (key.matchOption() != ClassMapMatchOption::mpls) {
    SubRuleDataCollection::Ptr const subRules = data->subRulesForKey(key);
    KOR_ASSERT_AS(sourceName, "subRules", subRules);
    KOR_ASSERT_AS(sourceName, "subRules->subRule( subRule )", subRules->subRule(subRuleData));
  }
  return updateActionError_;
}

Kor::String AclHelper::beginUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                          ClassMapSmCommonData::PtrConst const& classCommonData) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::beginUpdateActions("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "const PolicyMap::ClassMapSmCommonData::PtrConst&): policyCommonData="
                     << TracedPolicy(policyCommonData)
                     << ", classCommonData=" << TracedClass(classCommonData));
  updateActionsCounted("begin update count for ", policyCommonData, classCommonData,
                       &AclPolicyData::beginUpdateActionCountInc);
  return {};
}

Kor::String AclHelper::endUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                        ClassMapSmCommonData::PtrConst const& classCommonData) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual Kor::String PolicyMapTest::AclHelper::endUpdateActions("
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "const PolicyMap::ClassMapSmCommonData::PtrConst&): policyCommonData="
                     << TracedPolicy(policyCommonData)
                     << ", classCommonData=" << TracedClass(classCommonData));
  updateActionsCounted("end update count for ", policyCommonData, classCommonData,
                       &AclPolicyData::endUpdateActionCountInc);
  return {};
}

void AclHelper::updateActionsCounted(std::string_view text,
                                     PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                     ClassMapSmCommonData::PtrConst const& classCommonData,
                                     std::uint32_t (AclPolicyData::*increment)(std::uint32_t)) {
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    AclPolicyData::Ptr const data = testData(AclPolicyType(policyCommonData->policyKey(), option));
    if (data && data->created()) {
      std::uint32_t const count = ((*data).*increment)(1);
      KOR_TRACE_LINE(traceHandle(), 5,
                     text << policyCommonData->policyKey() << " - " << TracedClass(classCommonData)
                          << "[" << option << "] is now " << count);
    }
  }
}

std::uint64_t AclHelper::getCountForRule(AclRuleKey const& key,
                                         PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                         ClassMapSmCommonData::PtrConst const& classCommonData) {
  KOR_TRACE_LINE(traceHandle(), 8,
                 "virtual uint64_t PolicyMapTest::AclHelper::getCountForRule("
                 "const PolicyMap::AclRuleKey&, "
                 "const PolicyMap::PolicyMapSmCommonData::PtrConst&, "
                 "const PolicyMap::ClassMapSmCommonData::PtrConst&): key="
                     << key << ", policyCommonData=" << TracedPolicy(policyCommonData)
                     << ", classCommonData=" << TracedClass(classCommonData));
  return 10;
}

// asynchronous results

Kor::String AclHelper::result(Kor::String8 const& error) {
  if (!asyncOperations()) {
    return error;
  }
  scheduleAsyncResult(error);
  return {};
}

void AclHelper::scheduleAsyncResult(Kor::String8 error) {
  KOR_TRACE_LINE(
      traceHandle(), 8,
      "void PolicyMapTest::AclHelper::scheduleAsyncResult(Kor::String): error=" << error);
  Ptr const pinned = Kor::share(this);  // the change of asyncError is announced
  asyncErrorIs(std::move(error));
  if (pseudoAsync_) {
    handleAsyncTrigger();
  }
}

void AclHelper::handleAsyncTrigger() {
  KOR_TRACE_LINE(traceHandle(), 8, "void PolicyMapTest::AclHelper::handleAsyncTrigger()");
  asyncOperationResultIs(PolicyMap::AsyncOperationResult(asyncError_, Kor::now()));
}

// attributes

template <class... Args>
void AclHelper::announce(Kor::AttributeId id, void (NotifieeConst::*hook)(Args...),
                         Args const&... args) {
  // Copies: an argument may lie in an object that a hook releases.
  notify<NotifieeConst>(
      this, AclHelper::_fwkType(), id,
      [hook, ... held = args](NotifieeConst& notifiee) { (notifiee.*hook)(held...); });
}

template <class Value>
void AclHelper::attributeIs(Value& attribute, Value const& value, Kor::AttributeId id, Hook hook) {
  if (value == attribute) {
    return;
  }
  attribute = value;
  announce(id, hook);
}

void AclHelper::announceTestData(AclPolicyType const& key) {
  announce(testDataId, &NotifieeConst::onTestData, key);
}

void AclHelper::asyncTriggerIs(std::uint32_t trigger) {
  if (trigger == asyncTrigger_) {
    return;
  }
  Ptr const pinned = Kor::share(this);  // a caller that waits for the result may release the helper
  asyncTrigger_ = trigger;
  handleAsyncTrigger();
  announce(asyncTriggerId, &NotifieeConst::onAsyncTrigger);
}

std::uint32_t AclHelper::asyncTriggerInc(std::uint32_t step) {
  std::uint32_t const trigger = asyncTrigger_ + step;
  asyncTriggerIs(trigger);
  return trigger;
}

void AclHelper::asyncErrorIs(Kor::String8 error) {
  attributeIs(asyncError_, error, asyncErrorId, &NotifieeConst::onAsyncError);
}
void AclHelper::pseudoAsyncIs(bool pseudoAsync) {
  attributeIs(pseudoAsync_, pseudoAsync, pseudoAsyncId, &NotifieeConst::onPseudoAsync);
}
void AclHelper::createErrorIs(Kor::String8 error) {
  attributeIs(createError_, error, createErrorId, &NotifieeConst::onCreateError);
}
void AclHelper::deleteErrorIs(Kor::String8 error) {
  attributeIs(deleteError_, error, deleteErrorId, &NotifieeConst::onDeleteError);
}
void AclHelper::commitErrorIs(Kor::String8 error) {
  attributeIs(commitError_, error, commitErrorId, &NotifieeConst::onCommitError);
}
void AclHelper::addIntfErrorIs(Kor::String8 error) {
  attributeIs(addIntfError_, error, addIntfErrorId, &NotifieeConst::onAddIntfError);
}
void AclHelper::removeIntfErrorIs(Kor::String8 error) {
  attributeIs(removeIntfError_, error, removeIntfErrorId, &NotifieeConst::onRemoveIntfError);
}
void AclHelper::addRuleErrorIs(Kor::String8 error) {
  attributeIs(addRuleError_, error, addRuleErrorId, &NotifieeConst::onAddRuleError);
}
void AclHelper::updateActionErrorIs(Kor::String8 error) {
  attributeIs(updateActionError_, error, updateActionErrorId, &NotifieeConst::onUpdateActionError);
}
void AclHelper::rangeCheckerErrorIs(Kor::String8 error) {
  attributeIs(rangeCheckerError_, error, rangeCheckerErrorId, &NotifieeConst::onRangeCheckerError);
}

}  // namespace PolicyMapTest
