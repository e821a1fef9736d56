// SPDX-License-Identifier: Apache-2.0
#pragma once

// The hardware interface. Implement it to program a forwarding chip.
//
// What the result of an operation means to the core:
//
//   ""            it was carried out. With asyncOperations, from a commit or interface operation:
//                 accepted; the result follows through asyncOperationResultIs(), after the call or
//                 inside it. At most one operation is outstanding
//   a text        it was carried out, and failed: the policy is deleted, and programmed again
//                 later. A createPolicy() with a text has created the policy, and a deletePolicy()
//                 with a text has deleted it. After a failed update of actions in place the policy
//                 is re-created at once instead
//   an exception  it was not carried out, and failed. A policy whose createPolicy() threw does not
//                 exist and is not deleted. A policy whose deletePolicy() threw still exists; the
//                 deletion is tried again. After any other operation, as after a text
//
// A text returned as notCarriedOut(text) has the meaning of an exception, with one difference: a
// recreatePolicy() with it has deleted the policy and not created it again.

#include "Kor/Notifiee.h"
#include "Kor/PtrInterface.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/AsyncOperationResult.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/PolicyMapSmCommonData.h"
#include "PolicyMap/SubRuleData.h"
#include "PolicyMapExport.h"

#include <memory>

namespace PolicyMap {

class HelperArbiter;

class POLICYMAP_API PolicyMapAclHelper : public Kor::PtrInterface, public Kor::NotifieeList {
 public:
  using Ptr = Kor::Ptr<PolicyMapAclHelper>;
  using PtrConst = Kor::Ptr<PolicyMapAclHelper const>;
  class NotifieeConst;
  class Notifiee;

  PolicyMapAclHelper();
  ~PolicyMapAclHelper() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Called once, before any other operation, when the helper is first given to an active machine.
  virtual void hwInit() = 0;

  // Creates an empty policy, applied to the interfaces that its common data already contain for the
  // option.
  virtual Kor::String createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  // Removes all rules of a created policy in one step.
  virtual Kor::String recreatePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                     ClassMapMatchOption matchOption) = 0;
  // Deletes the policy with its rules and interfaces.
  virtual Kor::String deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  // Called last after changes to rules, interfaces or actions, except when the policy is deleted.
  virtual Kor::String commitPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  virtual Kor::String addIntfToPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                      Vorel::IntfId intf, ClassMapMatchOption matchOption) = 0;
  virtual Kor::String removeIntfFromPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                           Vorel::IntfId intf, ClassMapMatchOption matchOption) = 0;

  // Adds one hardware entry of a rule to a created policy. A rule with several sub-rules is added
  // by several calls.
  virtual Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule,
                              PolicyMapSmCommonData::PtrConst const& policyCommonData,
                              ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  // These update the actions of a class's rules in place, over all options: begin, one
  // updateAction() per sub-rule, end. endUpdateActions() is called even if begin or an update has
  // failed.
  virtual Kor::String beginUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                         ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  virtual Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRuleData,
                                   PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                   ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  virtual Kor::String endUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                       ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  // The packets that a rule has matched so far.
  virtual std::uint64_t getCountForRule(AclRuleKey const& key,
                                        PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                        ClassMapSmCommonData::PtrConst const& classCommonData) = 0;

  // Texts for operators. The default is empty.
  [[nodiscard]] virtual Kor::String showAclRule(AclRuleKey const& key) const;
  [[nodiscard]] virtual Kor::String showAclSummary() const;

  // The capabilities of the hardware. They are read when a pass is planned, asyncOperations after
  // each operation. A change is handled by the next pass.

  // Actions of programmed rules can be updated in place.
  virtual void updateActionSupportedIs(bool supported);
  // A change of interfaces re-creates the policy.
  virtual void reprogramPolicyOnIntfChangeIs(bool reprogram);
  // The members of a port-channel are programmed instead of the channel.
  virtual void expandPortChannelsIs(bool expand);
  virtual void denyRulesAllowedIs(bool allowed);
  virtual void ttlSupportedIs(bool supported);
  virtual void onlyTtlEqSupportedIs(bool only);
  virtual void ackOrRstSupportedIs(bool supported);
  virtual void establishedSupportedIs(bool supported);
  // Port ranges are expanded into aligned sub-rules.
  virtual void subRulesForL4PortsIs(bool subRules);
  virtual void asyncOperationsIs(bool async);

  // Reports the result of an asynchronous operation. A signal: equal results notify too.
  virtual void asyncOperationResultIs(AsyncOperationResult const& result);

  // Returns `error`, not empty, and marks the operation that is being called as not carried out. To
  // be used in its return statement:
  //
  //   Kor::String createPolicy(...) override {
  //     return full() ? notCarriedOut("no room") : AclHelper::createPolicy(...);
  //   }
  [[nodiscard]] Kor::String notCarriedOut(Kor::String error);

  [[nodiscard]] bool updateActionSupported() const { return updateActionSupported_; }
  [[nodiscard]] bool reprogramPolicyOnIntfChange() const { return reprogramPolicyOnIntfChange_; }
  [[nodiscard]] bool expandPortChannels() const { return expandPortChannels_; }
  [[nodiscard]] bool denyRulesAllowed() const { return denyRulesAllowed_; }
  [[nodiscard]] bool ttlSupported() const { return ttlSupported_; }
  [[nodiscard]] bool onlyTtlEqSupported() const { return onlyTtlEqSupported_; }
  [[nodiscard]] bool ackOrRstSupported() const { return ackOrRstSupported_; }
  [[nodiscard]] bool establishedSupported() const { return establishedSupported_; }
  [[nodiscard]] bool subRulesForL4Ports() const { return subRulesForL4Ports_; }
  [[nodiscard]] bool asyncOperations() const { return asyncOperations_; }
  [[nodiscard]] AsyncOperationResult const& asyncOperationResult() const {
    return asyncOperationResult_;
  }

  // Shares this helper among the policies programmed on it.
  [[nodiscard]] HelperArbiter& arbiter() const { return *arbiter_; }

  // Identifiers of the attributes, in registration order.
  enum Id : Kor::AttributeId {
    updateActionSupportedId = 130,
    reprogramPolicyOnIntfChangeId,
    expandPortChannelsId,
    denyRulesAllowedId,
    ttlSupportedId,
    onlyTtlEqSupportedId,
    ackOrRstSupportedId,
    establishedSupportedId,
    subRulesForL4PortsId,
    asyncOperationsId,
    asyncOperationResultId,
  };

 private:
  using Hook = void (NotifieeConst::*)();
  void flagIs(bool& flag, bool value, Id id, Hook hook);
  void announce(Id id, Hook hook);

  bool updateActionSupported_ = false;
  bool reprogramPolicyOnIntfChange_ = false;
  bool expandPortChannels_ = false;
  bool denyRulesAllowed_ = true;
  bool ttlSupported_ = true;
  bool onlyTtlEqSupported_ = false;
  bool ackOrRstSupported_ = true;
  bool establishedSupported_ = true;
  bool subRulesForL4Ports_ = false;
  bool asyncOperations_ = false;
  AsyncOperationResult asyncOperationResult_;
  std::unique_ptr<HelperArbiter> arbiter_;
};

class POLICYMAP_API PolicyMapAclHelper::NotifieeConst : public Kor::NotifieeOf<PolicyMapAclHelper> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onUpdateActionSupported() {}
  virtual void onReprogramPolicyOnIntfChange() {}
  virtual void onExpandPortChannels() {}
  virtual void onDenyRulesAllowed() {}
  virtual void onTtlSupported() {}
  virtual void onOnlyTtlEqSupported() {}
  virtual void onAckOrRstSupported() {}
  virtual void onEstablishedSupported() {}
  virtual void onSubRulesForL4Ports() {}
  virtual void onAsyncOperations() {}
  virtual void onAsyncOperationResult() {}
};

class POLICYMAP_API PolicyMapAclHelper::Notifiee : public PolicyMapAclHelper::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
