// SPDX-License-Identifier: Apache-2.0
//
// Models of what the machines share: the actions, the common data, and the helper.

#include "PolicyMap/HelperOperationModels.h"
#include "PolicyMap/Models.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapGlobalData.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::Model;
using Kor::TypeModel;

namespace ofAction {
using T = Action;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::className>("className")
        .says("class that the action belongs to; the same as the name"),
    M::key<&T::actionType>("actionType").says("kind of the action, a number chosen by its class"),
    M::key<&T::id>("id").says("identifier of this action object"),
    M::function<&T::equalTo>("equalTo", "other")
        .says("true if programming the other action instead makes no difference"),
};
T::Ptr make(Kor::Name const& className, ActionType actionType, Zub::UniqueId const& id) {
  return Kor::make<T>(className, actionType, id);
}
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&make>("className", "actionType", "id"));
}  // namespace ofAction

namespace ofGlobalData {
using T = PolicyMapGlobalData;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::aclConfig>("aclConfig")
        .says("access lists that the rules are compiled from; None: none is found"),
    M::key<&T::classTypeConfig>("classTypeConfig")
        .says("class-maps in which nested ones are found; None: none is found"),
    M::key<&T::aclDiff>("aclDiff").says(
        "tells rewrites without effect; None: every rewrite is a change"),
};
T::Ptr make(Kor::Ptr<Acl::Config const> const& aclConfig,
            Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig,
            Kor::Ptr<Acl::AclDiff> const& aclDiff) {
  return Kor::make<T>(aclConfig, classTypeConfig, aclDiff);
}
constexpr TypeModel model =
    M::object(attrs, M::constructor<&make>("aclConfig", "classTypeConfig", "aclDiff"));
}  // namespace ofGlobalData

namespace ofPolicyCommonData {
using T = PolicyMapSmCommonData;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::policyKey>("policyKey").says("policy-map and direction"),
    M::collection<T::Intf4Attribute>("intf4").says(
        "interfaces where ipv4 is applied in the hardware; the value has no meaning"),
    M::collection<T::Intf6Attribute>("intf6").says(
        "interfaces where ipv6 is applied in the hardware; the value has no meaning"),
    M::collection<T::IntfMacAttribute>("intfMac").says(
        "interfaces where mac is applied in the hardware; the value has no meaning"),
    M::collection<T::IntfMplsAttribute>("intfMpls")
        .says("interfaces where any other option is applied in the hardware; the value has no "
              "meaning"),
};
T::Ptr make(PolicyMapSmKey const& policyKey) {
  return Kor::make<T>(policyKey);
}
constexpr TypeModel model = M::object(attrs, M::constructor<&make>("policyKey"));
}  // namespace ofPolicyCommonData

namespace ofClassCommonData {
using T = ClassMapSmCommonData;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::name>("name").says("class in its policy"),
    M::data<&T::classMap, &T::classMapIs>("classMap").says("matches in force, or None"),
    M::key<&T::aclConfig>("aclConfig").says("access lists that the matches refer to, or None"),
    M::data<&T::classMapStatus, &T::classMapStatusIs>("classMapStatus")
        .says("published status of the class, or None"),
    M::collection<T::ActionAttribute>("action").says("configured actions of the class by kind"),
    M::data<&T::updateAclActions, &T::updateAclActionsIs>("updateAclActions")
        .says("counts the requests to program the actions of the class's rules again, modulo 2^32"),
    M::function<&T::getIpRule>("getIpRule", "key")
        .says("match of an IPv4 rule of the class; the default for an unknown key"),
    M::function<&T::getIp6Rule>("getIp6Rule", "key")
        .says("match of an IPv6 rule of the class; the default for an unknown key"),
    M::function<&T::getMacRule>("getMacRule", "key")
        .says("match of a MAC rule of the class; the default for an unknown key"),
};
T::Ptr make(Kor::Name const& name, ClassMapSubConfig::PtrConst const& classMap,
            Acl::Config::PtrConst const& aclConfig) {
  return Kor::make<T>(name, classMap, aclConfig);
}
constexpr TypeModel model =
    M::object(attrs, M::constructor<&make>("name", "classMap", "aclConfig"));
}  // namespace ofClassCommonData

namespace ofAclHelper {
using T = PolicyMapAclHelper;
using M = Model<T>;
constexpr std::array capabilityAttrs{
    M::data<&T::updateActionSupported, &T::updateActionSupportedIs>("updateActionSupported")
        .says("actions of programmed rules can be updated in place; default False"),
    M::data<&T::reprogramPolicyOnIntfChange, &T::reprogramPolicyOnIntfChangeIs>(
        "reprogramPolicyOnIntfChange")
        .says("a change of interfaces creates the policy again; default False"),
    M::data<&T::expandPortChannels, &T::expandPortChannelsIs>("expandPortChannels")
        .says("members of a port-channel are programmed instead of the channel; default False"),
    M::data<&T::denyRulesAllowed, &T::denyRulesAllowedIs>("denyRulesAllowed")
        .says("deny rules can be programmed; default True"),
    M::data<&T::ttlSupported, &T::ttlSupportedIs>("ttlSupported")
        .says("rules that match the TTL can be programmed; default True"),
    M::data<&T::onlyTtlEqSupported, &T::onlyTtlEqSupportedIs>("onlyTtlEqSupported")
        .says("of the TTL matches, only eq can be programmed; default False"),
    M::data<&T::ackOrRstSupported, &T::ackOrRstSupportedIs>("ackOrRstSupported")
        .says("rules that match ACK or RST can be programmed; default True"),
    M::data<&T::establishedSupported, &T::establishedSupportedIs>("establishedSupported")
        .says("rules that match established connections can be programmed; default True"),
    M::data<&T::subRulesForL4Ports, &T::subRulesForL4PortsIs>("subRulesForL4Ports")
        .says("port ranges are expanded into aligned sub-rules; default False"),
    M::data<&T::asyncOperations, &T::asyncOperationsIs>("asyncOperations")
        .says("commit and interface operations report their result later; default False"),
    M::data<&T::asyncOperationResult, &T::asyncOperationResultIs>("asyncOperationResult")
        .says(
            "last reported result of an asynchronous operation; writing an equal one reports too"),
};
constexpr std::array showAttrs{
    M::function<&T::showAclRule>("showAclRule", "key")
        .says("text for operators about a rule; empty by default"),
    M::function<&T::showAclSummary>("showAclSummary")
        .says("text for operators about all policies; empty by default"),
};
constexpr auto attrs = Kor::joined(capabilityAttrs, helperOperationAttrs<T>, showAttrs);
constexpr TypeModel model = M::object(attrs);
}  // namespace ofAclHelper

constexpr std::array allSharedModels{
    &ofAction::model,          &ofGlobalData::model, &ofPolicyCommonData::model,
    &ofClassCommonData::model, &ofAclHelper::model,
};

}  // namespace

Models sharedModels() {
  return allSharedModels;
}

}  // namespace PolicyMap
