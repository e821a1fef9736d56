// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"

#include "helper/OperationTrace.h"
#include "machines/TestClassCommonData.h"
#include "records/TestActionKinds.h"
#include "records/Trace.h"

#include <Kor/Assert.h>
#include <Kor/EventLoop.h>
#include <PolicyMap/PerOption.h>

#include <array>
#include <utility>

namespace PolicyMapTest {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSmCommonData;
using PolicyMap::PolicyMapSmCommonData;
using PolicyMap::SubRuleData;

namespace {

std::array<std::uint32_t, testActionKinds> actionsOf(TestClassCommonData const& values) {
#define POLICYMAPTEST_ROW(kind) values.action##kind##Value(),
  return {POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)};
#undef POLICYMAPTEST_ROW
}

void recordMatch(AclPolicyData& data, RecordedRule& rule, ClassMapSmCommonData const& rules) {
  AclRuleKey const& key = rule.key();
  auto const mac = [&] { data.recordMatch(rule, rules.getMacRule(key)); };
  PolicyMap::forOption(
      key.matchOption(), [&] { data.recordMatch(rule, rules.getIpRule(key)); },
      [&] { data.recordMatch(rule, rules.getIp6Rule(key)); }, mac, mac);
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

AclPolicyData::Ptr AclHelper::recordOf(PolicyMapSmCommonData const& policyData,
                                       ClassMapMatchOption option) const {
  return testDataCollection_.find(AclPolicyType::View{policyData.policyKey(), option});
}

// policies

void AclHelper::hwInit() {}

Kor::String AclHelper::createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "createPolicy", Traced{"policyData", policyData},
                 Traced{"matchOption", matchOption});
  Ptr const pinned = Kor::share(this);  // observers of a new record may drop the helper
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): observers may drop the caller's
  PolicyMapSmCommonData::PtrConst const policy = policyData;
  AclPolicyData::Ptr const data = testDataIs(AclPolicyType(policy->policyKey(), matchOption));
  KOR_ASSERT_AS(sourceName, "!data->created()", !data->created());
  data->createdIs(true);
  data->createCountInc(1);
  KOR_ASSERT_AS(sourceName, "data->ruleMatchs() == 0", data->ruleMatchs() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleMatch6s() == 0", data->ruleMatch6s() == 0);
  KOR_ASSERT_AS(sourceName, "data->ruleMatchMacs() == 0", data->ruleMatchMacs() == 0);
#define POLICYMAPTEST_ROW(kind) \
  KOR_ASSERT_AS(sourceName, "data->ruleAction" #kind "s() == 0", data->ruleAction##kind##s() == 0);
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  for (Vorel::IntfId const intf : policy->intfs(matchOption)) {
    data->intfIs(intf, true);
  }
  return createError_;
}

Kor::String AclHelper::recreatePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                      ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "recreatePolicy", Traced{"policyData", policyData},
                 Traced{"matchOption", matchOption});
  Ptr const pinned = Kor::share(this);
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): overrides may drop the caller's
  PolicyMapSmCommonData::PtrConst const policy = policyData;
  try {
    deletePolicy(policy, matchOption);
    return createPolicy(policy, matchOption);
  } catch (...) {
    // A re-creation that throws counts as not carried out: the policy is still created.
    if (AclPolicyData::Ptr const data = testData(AclPolicyType(policy->policyKey(), matchOption))) {
      data->createdIs(true);
    }
    throw;
  }
}

Kor::String AclHelper::deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "deletePolicy", Traced{"policyData", policyData},
                 Traced{"matchOption", matchOption});
  AclPolicyData::Ptr const data = recordOf(*policyData, matchOption);
  KOR_ASSERT_AS(sourceName, "data", data);
  KOR_ASSERT_AS(sourceName, "data->created()", data->created());
  data->createdIs(false);
  data->rulesDelAll();
  data->intfDelAll();
  return deleteError_;
}

Kor::String AclHelper::commitPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                    ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "commitPolicy", Traced{"policyData", policyData},
                 Traced{"matchOption", matchOption});
  AclPolicyData::Ptr const data = recordOf(*policyData, matchOption);
  KOR_ASSERT_AS(sourceName, "data", data);
  data->commitCountInc(1);
  data->dirtyIs(false);
  return result(commitError_);
}

Kor::String AclHelper::addIntfToPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                       Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "addIntfToPolicy", Traced{"policyData", policyData},
                 Traced{"intf", intf}, Traced{"matchOption", matchOption});
  Ptr const pinned = Kor::share(this);  // observers of a new record may drop the helper
  AclPolicyData::Ptr const data = testDataIs(AclPolicyType(policyData->policyKey(), matchOption));
  data->intfIs(intf, true);
  return result(addIntfError_);
}

Kor::String AclHelper::removeIntfFromPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                            Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  traceOperation("Kor::String", "removeIntfFromPolicy", Traced{"policyData", policyData},
                 Traced{"intf", intf}, Traced{"matchOption", matchOption});
  AclPolicyData::Ptr const data = recordOf(*policyData, matchOption);
  if (data) {
    data->intfDel(intf);
  }
  return result(removeIntfError_);
}

// rules

Kor::String AclHelper::addRule(AclRuleKey const& key, SubRuleData const& subRule,
                               PolicyMapSmCommonData::PtrConst const& policyCommonData,
                               ClassMapSmCommonData::PtrConst const& classCommonData) {
  traceOperation("Kor::String", "addRule", Traced{"key", key}, Traced{"subRule", subRule},
                 Traced{"policyCommonData", policyCommonData},
                 Traced{"classCommonData", classCommonData});
  if (!rangeCheckerError_.empty() && (subRule.srcPortRange() || subRule.dstPortRange())) {
    return rangeCheckerError_;
  }
  if (!addRuleError_.empty()) {
    return addRuleError_;
  }
  auto const testClassData = classCommonData.as<TestClassCommonData const>();
  KOR_ASSERT_AS(sourceName, "testClassData", testClassData);
  AclPolicyData::Ptr const data = recordOf(*policyCommonData, key.matchOption());
  KOR_ASSERT_AS(sourceName, "data", data);
  RecordedRule& rule = data->ruleOf(key);
  recordMatch(*data, rule, *testClassData);
  KOR_ASSERT_AS(sourceName, "!subrules->subRule( subRule )",
                !AclPolicyData::hasSubRule(rule, subRule));
  data->recordSubRule(rule, subRule);
  data->recordActions(rule, actionsOf(*testClassData));
  data->dirtyIs(true);
  return addRuleError_;
}

Kor::String AclHelper::updateAction(AclRuleKey const& key, SubRuleData const& subRuleData,
                                    PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                    ClassMapSmCommonData::PtrConst const& classCommonData) {
  traceOperation("Kor::String", "updateAction", Traced{"key", key},
                 Traced{"subRuleData", subRuleData}, Traced{"policyCommonData", policyCommonData},
                 Traced{"classCommonData", classCommonData});
  auto const testClassData = classCommonData.as<TestClassCommonData const>();
  KOR_ASSERT_AS(sourceName, "testClassData", testClassData);
  AclPolicyData::Ptr const data = recordOf(*policyCommonData, key.matchOption());
  KOR_ASSERT_AS(sourceName, "data && data->created()", data && data->created());
  RecordedRule& rule = data->ruleOf(key);
  data->recordActions(rule, actionsOf(*testClassData));
  if (key.matchOption() != ClassMapMatchOption::mpls) {
    KOR_ASSERT_AS(sourceName, "subRules", rule.has(RulePart::subRules));
    KOR_ASSERT_AS(sourceName, "subRules->subRule( subRule )",
                  AclPolicyData::hasSubRule(rule, subRuleData));
  }
  return updateActionError_;
}

Kor::String AclHelper::beginUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                          ClassMapSmCommonData::PtrConst const& classCommonData) {
  traceOperation("Kor::String", "beginUpdateActions", Traced{"policyCommonData", policyCommonData},
                 Traced{"classCommonData", classCommonData});
  updateActionsCounted("begin update count for ", policyCommonData, classCommonData,
                       &AclPolicyData::beginUpdateActionCountInc);
  return {};
}

Kor::String AclHelper::endUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                        ClassMapSmCommonData::PtrConst const& classCommonData) {
  traceOperation("Kor::String", "endUpdateActions", Traced{"policyCommonData", policyCommonData},
                 Traced{"classCommonData", classCommonData});
  updateActionsCounted("end update count for ", policyCommonData, classCommonData,
                       &AclPolicyData::endUpdateActionCountInc);
  return {};
}

void AclHelper::updateActionsCounted(std::string_view text,
                                     PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                     ClassMapSmCommonData::PtrConst const& classCommonData,
                                     std::uint32_t (AclPolicyData::*increment)(std::uint32_t)) {
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    AclPolicyData::Ptr const data = recordOf(*policyCommonData, option);
    if (data && data->created()) {
      std::uint32_t const count = ((*data).*increment)(1);
      KOR_TRACE_LINE(traceHandle(), 5,
                     text << policyCommonData->policyKey() << " - "
                          << (Traced{"classCommonData", classCommonData}) << "[" << option
                          << "] is now " << count);
    }
  }
}

std::uint64_t AclHelper::getCountForRule(AclRuleKey const& key,
                                         PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                         ClassMapSmCommonData::PtrConst const& classCommonData) {
  traceOperation("uint64_t", "getCountForRule", Traced{"key", key},
                 Traced{"policyCommonData", policyCommonData},
                 Traced{"classCommonData", classCommonData});
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
  Ptr const pinned = Kor::share(this);  // observers of asyncError may drop the helper
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
void AclHelper::announce(Kor::AttributeId id, void (NotifieeConst::*hook)(Args...), Args... args) {
  notify<NotifieeConst>(this, AclHelper::_fwkType(), id, hook, args...);
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
  Ptr const pinned = Kor::share(this);  // a client that gets the result may drop the helper
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
#define POLICYMAPTEST_ROW(name, Name, prose)                         \
  void AclHelper::name##Is(Kor::String8 error) {                     \
    attributeIs(name##_, error, name##Id, &NotifieeConst::on##Name); \
  }
POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

}  // namespace PolicyMapTest
