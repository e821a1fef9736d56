// SPDX-License-Identifier: Apache-2.0
#pragma once

// The hardware interface: who programs a forwarding chip implements it.
//
// Every operation that answers a text answers "" for success and a message for failure. With
// asyncOperations the commit and interface operations answer "" for "accepted", and the real result
// comes later, or inside the call, through asyncOperationResultIs. One operation is outstanding at
// a time.

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

  // Called once, before anything else, when the helper is first given to an active machine.
  virtual void hwInit() = 0;

  // A policy: created empty, applied to the interfaces that its common data hold for the option
  // already.
  virtual Kor::String createPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  // Empties a created policy in one step.
  virtual Kor::String recreatePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                     ClassMapMatchOption matchOption) = 0;
  virtual Kor::String deletePolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  virtual Kor::String commitPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                   ClassMapMatchOption matchOption) = 0;
  virtual Kor::String addIntfToPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                      Vorel::IntfId intf, ClassMapMatchOption matchOption) = 0;
  virtual Kor::String removeIntfFromPolicy(PolicyMapSmCommonData::PtrConst const& policyData,
                                           Vorel::IntfId intf, ClassMapMatchOption matchOption) = 0;

  // Rules of a created policy, and their actions.
  virtual Kor::String addRule(AclRuleKey const& key, SubRuleData const& subRule,
                              PolicyMapSmCommonData::PtrConst const& policyCommonData,
                              ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  virtual Kor::String beginUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                         ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  virtual Kor::String updateAction(AclRuleKey const& key, SubRuleData const& subRuleData,
                                   PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                   ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  virtual Kor::String endUpdateActions(PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                       ClassMapSmCommonData::PtrConst const& classCommonData) = 0;
  // Packets that a rule has matched so far.
  virtual std::uint64_t getCountForRule(AclRuleKey const& key,
                                        PolicyMapSmCommonData::PtrConst const& policyCommonData,
                                        ClassMapSmCommonData::PtrConst const& classCommonData) = 0;

  // What a person is shown; here nothing.
  [[nodiscard]] virtual Kor::String showAclRule(AclRuleKey const& key) const;
  [[nodiscard]] virtual Kor::String showAclSummary() const;

  // What the hardware can do. Read when a programming pass starts.
  virtual void updateActionSupportedIs(bool supported);  // actions of programmed rules can change
  virtual void reprogramPolicyOnIntfChangeIs(bool reprogram);
  virtual void expandPortChannelsIs(bool expand);  // it programs members, not the channel
  virtual void denyRulesAllowedIs(bool allowed);
  virtual void ttlSupportedIs(bool supported);
  virtual void onlyTtlEqSupportedIs(bool only);
  virtual void ackOrRstSupportedIs(bool supported);
  virtual void establishedSupportedIs(bool supported);
  virtual void subRulesForL4PortsIs(bool subRules);  // port ranges become aligned sub-rules
  virtual void asyncOperationsIs(bool async);

  // An asynchronous operation has ended. A signal: equal results notify too.
  virtual void asyncOperationResultIs(AsyncOperationResult const& result);

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

  // Shares this helper among the policies that are programmed on it.
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
