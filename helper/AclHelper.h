// SPDX-License-Identifier: Apache-2.0
#pragma once

// AclHelper: the test double of the hardware interface. It programs nothing: it records every call
// in one AclPolicyData per policy and option, and returns the texts that the test has set.
//
// Results: "" is success, any other text is a failure. An operation returns its own text,
// unchanged, e.g. commitPolicy() returns commitError. With asyncOperations the commit and interface
// operations return "" and store their text in asyncError; it is delivered as asyncOperationResult
// whenever asyncTrigger changes, or inside the operation with pseudoAsync.
//
// A call that hardware could not perform in this state fails an assertion of source
// "PolicyMapTestSm".

#include "helper/HelperErrors.h"
#include "records/AclPolicyData.h"
#include "records/AclPolicyType.h"
#include "records/Export.h"

#include <Kor/Collection.h>
#include <PolicyMap/PolicyMapAclHelper.h>

#include <cstdint>
#include <string_view>

namespace PolicyMapTest {

class POLICYMAPTEST_API AclHelper : public PolicyMap::PolicyMapAclHelper {
 public:
  using Ptr = Kor::Ptr<AclHelper>;
  using PtrConst = Kor::Ptr<AclHelper const>;
  class NotifieeConst;
  class Notifiee;

  // The core reads the two capabilities; the helper's own operations ignore them.
  AclHelper(bool updateActionSupported, bool expandPortChannels);
  // Removes all records and notifies of each.
  ~AclHelper() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Does nothing: there is no hardware.
  void hwInit() override;

  // Creates the record if needed, and records the interfaces listed in the policy data. Asserts
  // that the policy is not created and that the record has no rule matches and no actions.
  Kor::String createPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Deletes, then creates; returns the result of the creation.
  Kor::String recreatePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                             PolicyMap::ClassMapMatchOption matchOption) override;
  // Empties the record except for the counters and `dirty`. Asserts that the policy is created.
  Kor::String deletePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Counts a commit and clears `dirty`. Asserts that the record exists; the policy need not be
  // created.
  Kor::String commitPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Records the interface; creates the record if needed.
  Kor::String addIntfToPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                              Vorel::IntfId intf,
                              PolicyMap::ClassMapMatchOption matchOption) override;
  // Removes the interface from the record, if there is one.
  Kor::String removeIntfFromPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                                   Vorel::IntfId intf,
                                   PolicyMap::ClassMapMatchOption matchOption) override;

  // Records match, sub-rule and actions, and sets `dirty`. Fails first, recording nothing: with
  // rangeCheckerError if it is set and the sub-rule needs a range checker, else with addRuleError
  // if set. Asserts that the class data are a TestClassCommonData, that the record exists, and that
  // the rule does not have the sub-rule yet.
  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
                      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Increments beginUpdateActionCount of each created record of the policy. Always succeeds.
  Kor::String beginUpdateActions(
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Records the actions, also if it fails. Asserts first that the class data are a
  // TestClassCommonData and that the policy is created; after recording, that the sub-rule was
  // added (not for mpls).
  Kor::String updateAction(
      PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRuleData,
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Increments endUpdateActionCount of each created record of the policy. Always succeeds.
  Kor::String endUpdateActions(
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Always 10.
  std::uint64_t getCountForRule(
      PolicyMap::AclRuleKey const& key,
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;

  // Sets `error` as the pending result. With pseudoAsync, delivers it before returning.
  void scheduleAsyncResult(Kor::String8 error);
  // Delivers asyncError with the current time, and keeps it pending.
  void handleAsyncTrigger();

  // The records. newTestData() does not notify; every other change calls onTestData(key).
  KOR_OWNED_COLLECTION(AclHelper, testData, TestData, AclPolicyType, AclPolicyData,
                       KOR_ON_CHANGE(announceTestData(key)))

  // A setter does nothing if the value is equal; otherwise it stores the value and then notifies. A
  // change of asyncTrigger delivers the pending result before it notifies.
  [[nodiscard]] std::uint32_t asyncTrigger() const { return asyncTrigger_; }
  void asyncTriggerIs(std::uint32_t trigger);
  // Adds `step`, modulo 2^32, and returns the new value.
  std::uint32_t asyncTriggerInc(std::uint32_t step);
  [[nodiscard]] Kor::String8 const& asyncError() const { return asyncError_; }
  void asyncErrorIs(Kor::String8 error);
  [[nodiscard]] bool pseudoAsync() const { return pseudoAsync_; }
  void pseudoAsyncIs(bool pseudoAsync);

  // The texts of failing operations (see helper/HelperErrors.h): createError(),
  // createErrorIs(error) and so on.
#define POLICYMAPTEST_ROW(name, Name, prose)       \
  [[nodiscard]] Kor::String8 const& name() const { \
    return name##_;                                \
  }                                                \
  void name##Is(Kor::String8 error);
  POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

  // Identifiers of the attributes, in registration order.
  enum Id : Kor::AttributeId {
    scheduleAsyncResultId = Kor::firstAttributeId(2),
    asyncTriggerId,
    handleAsyncTriggerId,
    asyncErrorId,
    pseudoAsyncId,
    testDataId,
#define POLICYMAPTEST_ROW(name, Name, prose) name##Id,
    POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  };

 private:
  using Hook = void (NotifieeConst::*)();
  template <class... Args>
  void announce(Kor::AttributeId id, void (NotifieeConst::*hook)(Args...), Args... args);
  template <class Value>
  void attributeIs(Value& attribute, Value const& value, Kor::AttributeId id, Hook hook);
  void announceTestData(AclPolicyType const& key);
  // The record of a policy for an option, or null. Makes no key.
  [[nodiscard]] AclPolicyData::Ptr recordOf(PolicyMap::PolicyMapSmCommonData const& policyData,
                                            PolicyMap::ClassMapMatchOption option) const;
  // The return value of an operation that can be asynchronous.
  Kor::String result(Kor::String8 const& error);
  void updateActionsCounted(std::string_view text,
                            PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
                            PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData,
                            std::uint32_t (AclPolicyData::*increment)(std::uint32_t));

  std::uint32_t asyncTrigger_ = 0;
  Kor::String8 asyncError_;
  bool pseudoAsync_ = false;
#define POLICYMAPTEST_ROW(name, Name, prose) Kor::String8 name##_;
  POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

class POLICYMAPTEST_API AclHelper::NotifieeConst
    : public Kor::NotifieeOf<AclHelper, PolicyMap::PolicyMapAclHelper::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onAsyncTrigger() {}
  virtual void onAsyncError() {}
  virtual void onPseudoAsync() {}
  // The record of that key was created or removed.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): the published signature
  virtual void onTestData(AclPolicyType /*key*/) {}
#define POLICYMAPTEST_ROW(name, Name, prose) \
  virtual void on##Name() {}
  POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

class POLICYMAPTEST_API AclHelper::Notifiee : public AclHelper::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// Returns a new helper; never null.
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<AclHelper> aclHelperFactory(bool updateActionSupported,
                                                                     bool expandPortChannels);

}  // namespace PolicyMapTest
