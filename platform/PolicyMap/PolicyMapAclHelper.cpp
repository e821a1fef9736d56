// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapAclHelper.h"

#include "PolicyMap/HelperArbiter.h"

namespace PolicyMap {

PolicyMapAclHelper::PolicyMapAclHelper() : arbiter_(std::make_unique<HelperArbiter>(*this)) {}

PolicyMapAclHelper::~PolicyMapAclHelper() = default;
PolicyMapAclHelper::NotifieeConst::~NotifieeConst() = default;
PolicyMapAclHelper::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapAclHelper::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapAclHelper::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapAclHelper", PtrInterface::_fwkType());
  return &type;
}

Kor::String PolicyMapAclHelper::notCarriedOut(Kor::String error) {
  arbiter_->notCarriedOut();
  return error;
}

Kor::String PolicyMapAclHelper::showAclRule(AclRuleKey const& /*key*/) const {
  return {};
}
Kor::String PolicyMapAclHelper::showAclSummary() const {
  return {};
}

void PolicyMapAclHelper::announce(Id id, Hook hook) {
  notify<NotifieeConst>(this, PolicyMapAclHelper::_fwkType(), id, hook);
}

void PolicyMapAclHelper::flagIs(bool& flag, bool value, Id id, Hook hook) {
  if (value == flag) {
    return;
  }
  flag = value;
  announce(id, hook);
}

void PolicyMapAclHelper::updateActionSupportedIs(bool supported) {
  flagIs(updateActionSupported_, supported, updateActionSupportedId,
         &NotifieeConst::onUpdateActionSupported);
}
void PolicyMapAclHelper::reprogramPolicyOnIntfChangeIs(bool reprogram) {
  flagIs(reprogramPolicyOnIntfChange_, reprogram, reprogramPolicyOnIntfChangeId,
         &NotifieeConst::onReprogramPolicyOnIntfChange);
}
void PolicyMapAclHelper::expandPortChannelsIs(bool expand) {
  flagIs(expandPortChannels_, expand, expandPortChannelsId, &NotifieeConst::onExpandPortChannels);
}
void PolicyMapAclHelper::denyRulesAllowedIs(bool allowed) {
  flagIs(denyRulesAllowed_, allowed, denyRulesAllowedId, &NotifieeConst::onDenyRulesAllowed);
}
void PolicyMapAclHelper::ttlSupportedIs(bool supported) {
  flagIs(ttlSupported_, supported, ttlSupportedId, &NotifieeConst::onTtlSupported);
}
void PolicyMapAclHelper::onlyTtlEqSupportedIs(bool only) {
  flagIs(onlyTtlEqSupported_, only, onlyTtlEqSupportedId, &NotifieeConst::onOnlyTtlEqSupported);
}
void PolicyMapAclHelper::ackOrRstSupportedIs(bool supported) {
  flagIs(ackOrRstSupported_, supported, ackOrRstSupportedId, &NotifieeConst::onAckOrRstSupported);
}
void PolicyMapAclHelper::establishedSupportedIs(bool supported) {
  flagIs(establishedSupported_, supported, establishedSupportedId,
         &NotifieeConst::onEstablishedSupported);
}
void PolicyMapAclHelper::subRulesForL4PortsIs(bool subRules) {
  flagIs(subRulesForL4Ports_, subRules, subRulesForL4PortsId, &NotifieeConst::onSubRulesForL4Ports);
}
void PolicyMapAclHelper::asyncOperationsIs(bool async) {
  flagIs(asyncOperations_, async, asyncOperationsId, &NotifieeConst::onAsyncOperations);
}

void PolicyMapAclHelper::asyncOperationResultIs(AsyncOperationResult const& result) {
  // The client that receives the result may drop this helper.
  Ptr const pinned = Kor::share(this);
  // A copy: the notifications may overwrite or destroy the object that `result` refers to.
  AsyncOperationResult const delivered(result.error(), result.time());
  asyncOperationResult_ = delivered;
  announce(asyncOperationResultId, &NotifieeConst::onAsyncOperationResult);
  arbiter_->resultIs(delivered);
}

}  // namespace PolicyMap
