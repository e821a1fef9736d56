// SPDX-License-Identifier: Apache-2.0
#pragma once

// AclHelper: the hardware interface's test double. It programs nothing: it records every call in
// one AclPolicyData per policy and option, and answers with the texts that the test has set.
//
// Answers: "" is success, any other text a failure; the text of the attribute named after the
// operation is passed on as it stands. With asyncOperations the commit and interface operations
// answer "" and put their text into asyncError; it is delivered as asyncOperationResult whenever
// asyncTrigger changes, or inside the operation with pseudoAsync.
//
// A calling order that hardware would not survive is an assertion of source "PolicyMapTestSm".

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

  // The two capabilities are announced to the core only; the helper's own operations ignore them.
  AclHelper(bool updateActionSupported, bool expandPortChannels);
  // Removes all records, each announced.
  ~AclHelper() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Does nothing: there is no hardware.
  void hwInit() override;

  // Make the record if it is missing. Creating asserts that the policy is not created and that the
  // record holds no rules and no actions; it records the interfaces that the policy data list.
  Kor::String createPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Deletes and creates; answers what the creation answers.
  Kor::String recreatePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                             PolicyMap::ClassMapMatchOption matchOption) override;
  // Empties the record of a created policy, counters and `dirty` apart.
  Kor::String deletePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Asserts that there is a record, created or not.
  Kor::String commitPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption matchOption) override;
  // Makes the record if it is missing.
  Kor::String addIntfToPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                              Vorel::IntfId intf,
                              PolicyMap::ClassMapMatchOption matchOption) override;
  // Records nothing when there is no record.
  Kor::String removeIntfFromPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                                   Vorel::IntfId intf,
                                   PolicyMap::ClassMapMatchOption matchOption) override;

  // Answers rangeCheckerError, for a sub-rule that needs a range checker, or addRuleError before it
  // records anything. Asserts that the class data are a TestClassCommonData, that there is a
  // record, and that the sub-rule is new to the rule.
  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
                      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Count on every created record of the policy; always "".
  Kor::String beginUpdateActions(
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Records the actions of a rule even when it answers updateActionError. Asserts that the class
  // data are a TestClassCommonData, that the policy is created and, after recording, that the
  // sub-rule was added; the last not for MPLS.
  Kor::String updateAction(
      PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRuleData,
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  Kor::String endUpdateActions(
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;
  // Always 10.
  std::uint64_t getCountForRule(
      PolicyMap::AclRuleKey const& key,
      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
      PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData) override;

  // Makes `error` the pending result; with pseudoAsync it is delivered at once.
  void scheduleAsyncResult(Kor::String8 error);
  // Delivers asyncError with the present time. The text stays pending.
  void handleAsyncTrigger();

  // The records. newTestData() is silent; every other change calls onTestData(key).
  KOR_OWNED_COLLECTION(AclHelper, testData, TestData, AclPolicyType, AclPolicyData,
                       KOR_ON_CHANGE(announceTestData(key)))

  // Each setter does nothing when the value is the one that it has; otherwise it notifies. A change
  // of asyncTrigger delivers the pending result before that.
  [[nodiscard]] std::uint32_t asyncTrigger() const { return asyncTrigger_; }
  void asyncTriggerIs(std::uint32_t trigger);
  // Adds and wraps; answers the new value.
  std::uint32_t asyncTriggerInc(std::uint32_t step);
  [[nodiscard]] Kor::String8 const& asyncError() const { return asyncError_; }
  void asyncErrorIs(Kor::String8 error);
  [[nodiscard]] bool pseudoAsync() const { return pseudoAsync_; }
  void pseudoAsyncIs(bool pseudoAsync);

  [[nodiscard]] Kor::String8 const& createError() const { return createError_; }
  void createErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& deleteError() const { return deleteError_; }
  void deleteErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& commitError() const { return commitError_; }
  void commitErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& addIntfError() const { return addIntfError_; }
  void addIntfErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& removeIntfError() const { return removeIntfError_; }
  void removeIntfErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& addRuleError() const { return addRuleError_; }
  void addRuleErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& updateActionError() const { return updateActionError_; }
  void updateActionErrorIs(Kor::String8 error);
  [[nodiscard]] Kor::String8 const& rangeCheckerError() const { return rangeCheckerError_; }
  void rangeCheckerErrorIs(Kor::String8 error);

  static constexpr Kor::AttributeId asyncTriggerId = 259;
  static constexpr Kor::AttributeId asyncErrorId = 261;
  static constexpr Kor::AttributeId pseudoAsyncId = 262;
  static constexpr Kor::AttributeId testDataId = 263;
  static constexpr Kor::AttributeId createErrorId = 264;
  static constexpr Kor::AttributeId deleteErrorId = 265;
  static constexpr Kor::AttributeId commitErrorId = 266;
  static constexpr Kor::AttributeId addIntfErrorId = 267;
  static constexpr Kor::AttributeId removeIntfErrorId = 268;
  static constexpr Kor::AttributeId addRuleErrorId = 269;
  static constexpr Kor::AttributeId updateActionErrorId = 270;
  static constexpr Kor::AttributeId rangeCheckerErrorId = 271;

 private:
  using Hook = void (NotifieeConst::*)();
  template <class... Args>
  void announce(Kor::AttributeId id, void (NotifieeConst::*hook)(Args...), Args const&... args);
  template <class Value>
  void attributeIs(Value& attribute, Value const& value, Kor::AttributeId id, Hook hook);
  void announceTestData(AclPolicyType const& key);
  // What an operation that may be asynchronous answers.
  Kor::String result(Kor::String8 const& error);
  void updateActionsCounted(std::string_view text,
                            PolicyMap::PolicyMapSmCommonData::PtrConst const& policyCommonData,
                            PolicyMap::ClassMapSmCommonData::PtrConst const& classCommonData,
                            std::uint32_t (AclPolicyData::*increment)(std::uint32_t));

  std::uint32_t asyncTrigger_ = 0;
  Kor::String8 asyncError_;
  bool pseudoAsync_ = false;
  Kor::String8 createError_;
  Kor::String8 deleteError_;
  Kor::String8 commitError_;
  Kor::String8 addIntfError_;
  Kor::String8 removeIntfError_;
  Kor::String8 addRuleError_;
  Kor::String8 updateActionError_;
  Kor::String8 rangeCheckerError_;
};

class POLICYMAPTEST_API AclHelper::NotifieeConst
    : public Kor::NotifieeOf<AclHelper, PolicyMap::PolicyMapAclHelper::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onAsyncTrigger() {}
  virtual void onAsyncError() {}
  virtual void onPseudoAsync() {}
  // The record of that key came or went.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): hooks get keys of their own
  virtual void onTestData(AclPolicyType /*key*/) {}
  virtual void onCreateError() {}
  virtual void onDeleteError() {}
  virtual void onCommitError() {}
  virtual void onAddIntfError() {}
  virtual void onRemoveIntfError() {}
  virtual void onAddRuleError() {}
  virtual void onUpdateActionError() {}
  virtual void onRangeCheckerError() {}
};

class POLICYMAPTEST_API AclHelper::Notifiee : public AclHelper::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// A new helper in a pointer that is never null.
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<AclHelper> aclHelperFactory(bool updateActionSupported,
                                                                     bool expandPortChannels);

}  // namespace PolicyMapTest
