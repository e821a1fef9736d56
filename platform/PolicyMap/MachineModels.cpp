// SPDX-License-Identifier: Apache-2.0
//
// Models of the actions, the machines, their shared data, and the helper.

#include "PolicyMap/HelperOperationModels.h"
#include "PolicyMap/Models.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/ServicePolicySm.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::Model;
using Kor::TypeModel;

namespace ofAction {
using T = Action;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::className>("className"),
    M::key<&T::actionType>("actionType"),
    M::key<&T::id>("id"),
    M::function<&T::equalTo>("equalTo", "other"),
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
    M::key<&T::aclConfig>("aclConfig"),
    M::key<&T::classTypeConfig>("classTypeConfig"),
    M::key<&T::aclDiff>("aclDiff"),
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
    M::key<&T::policyKey>("policyKey"),
    M::collection<T::Intf4Attribute>("intf4"),
    M::collection<T::Intf6Attribute>("intf6"),
    M::collection<T::IntfMacAttribute>("intfMac"),
    M::collection<T::IntfMplsAttribute>("intfMpls"),
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
    M::key<&T::name>("name"),
    M::data<&T::classMap, &T::classMapIs>("classMap"),
    M::key<&T::aclConfig>("aclConfig"),
    M::data<&T::classMapStatus, &T::classMapStatusIs>("classMapStatus"),
    M::collection<T::ActionAttribute>("action"),
    M::data<&T::updateAclActions, &T::updateAclActionsIs>("updateAclActions"),
    M::function<&T::getIpRule>("getIpRule", "key"),
    M::function<&T::getIp6Rule>("getIp6Rule", "key"),
    M::function<&T::getMacRule>("getMacRule", "key"),
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
    M::data<&T::updateActionSupported, &T::updateActionSupportedIs>("updateActionSupported"),
    M::data<&T::reprogramPolicyOnIntfChange, &T::reprogramPolicyOnIntfChangeIs>(
        "reprogramPolicyOnIntfChange"),
    M::data<&T::expandPortChannels, &T::expandPortChannelsIs>("expandPortChannels"),
    M::data<&T::denyRulesAllowed, &T::denyRulesAllowedIs>("denyRulesAllowed"),
    M::data<&T::ttlSupported, &T::ttlSupportedIs>("ttlSupported"),
    M::data<&T::onlyTtlEqSupported, &T::onlyTtlEqSupportedIs>("onlyTtlEqSupported"),
    M::data<&T::ackOrRstSupported, &T::ackOrRstSupportedIs>("ackOrRstSupported"),
    M::data<&T::establishedSupported, &T::establishedSupportedIs>("establishedSupported"),
    M::data<&T::subRulesForL4Ports, &T::subRulesForL4PortsIs>("subRulesForL4Ports"),
    M::data<&T::asyncOperations, &T::asyncOperationsIs>("asyncOperations"),
    M::data<&T::asyncOperationResult, &T::asyncOperationResultIs>("asyncOperationResult"),
};
constexpr std::array showAttrs{
    M::function<&T::showAclRule>("showAclRule", "key"),
    M::function<&T::showAclSummary>("showAclSummary"),
};
constexpr auto attrs = Kor::joined(capabilityAttrs, helperOperationAttrs<T>, showAttrs);
constexpr TypeModel model = M::object(attrs);
}  // namespace ofAclHelper

namespace ofActionSm {
using T = ActionSm;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData"),
    M::key<&T::policyCommonData>("policyCommonData"),
    M::key<&T::classCommonData>("classCommonData"),
    M::data<&T::action, &T::actionIs>("action"),
    M::data<&T::initialized, &T::initializedIs>("initialized"),
    M::function<&T::cleanup>("cleanup"),
    M::function<&T::handleAction>("handleAction"),
    M::function<&T::handleInitialized>("handleInitialized"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofActionSm

namespace ofClassMapMatchSm {
using T = ClassMapMatchSm;
using M = Model<T>;
constexpr std::array attrs{M::key<&T::option>("option")};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofClassMapMatchSm

namespace ofClassMapSm {
using T = ClassMapSm;
using M = Model<T>;
using Handler = void (T::*)();
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData"),
    M::key<&T::policyCommonData>("policyCommonData"),
    M::data<&T::classMapConfig, &T::classMapConfigIs>("classMapConfig"),
    M::data<&T::rawClassMapSubConfig, &T::rawClassMapSubConfigIs>("rawClassMapSubConfig"),
    M::data<&T::classAction, &T::classActionIs>("classAction"),
    M::data<&T::classMap, &T::classMapIs>("classMap"),
    M::data<&T::classCommonData, &T::classCommonDataIs>("classCommonData"),
    M::data<&T::classMapStatus, &T::classMapStatusIs>("classMapStatus"),
    M::collection<T::ClassMapMatchSmAttribute>("classMapMatchSm"),
    M::collection<T::ActionSmAttribute>("actionSm"),
    M::data<&T::actionsActive, &T::actionsActiveIs>("actionsActive"),
    M::data<&T::initializing, &T::initializingIs>("initializing"),
    M::data<&T::initialized, &T::initializedIs>("initialized"),
    M::overloaded<static_cast<void (T::*)(ActionType)>(&T::handleAction),
                  static_cast<Handler>(&T::handleAction)>("handleAction", "actionType"),
    M::overloaded<static_cast<void (T::*)(ClassMapMatchOption)>(&T::handleMatch),
                  static_cast<Handler>(&T::handleMatch)>("handleMatch", "option"),
    M::factory<&T::createMatchSm>("createMatchSm", "option"),
    M::factory<&T::createActionSm>("createActionSm", "actionType"),
    M::factory<&T::createCommonData>("createCommonData"),
    M::factory<&T::createClassMapStatus>("createClassMapStatus"),
    M::function<&T::handleInitialized>("handleInitialized"),
    M::function<&T::cleanup>("cleanup"),
    M::derived<&T::name>("name"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofClassMapSm

namespace ofPolicyMapSm {
using T = PolicyMapSm;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData"),
    M::key<&T::key>("key"),
    M::data<&T::policyMapConfig, &T::policyMapConfigIs>("policyMapConfig"),
    M::data<&T::classTypeConfig, &T::classTypeConfigIs>("classTypeConfig"),
    M::key<&T::status>("status"),
    M::data<&T::policyMap, &T::policyMapIs>("policyMap"),
    M::collection<T::ClassMapSmAttribute>("classMapSm"),
    M::data<&T::policyCommonData, &T::policyCommonDataIs>("policyCommonData"),
    M::collection<T::PrioClassAttribute>("prioClass"),
    M::collection<T::ClassPrioAttribute>("classPrio"),
    M::collection<T::TimeProgrammedAttribute>("timeProgrammed"),
    M::collection<T::ActiveIntfAttribute>("activeIntf"),
    M::factory<&T::createClassMapSm>("createClassMapSm", "map", "rawMap", "action"),
    M::factory<&T::createCommonData>("createCommonData"),
    M::function<&T::handleActiveIntf>("handleActiveIntf", "intf"),
    M::function<&T::cleanup>("cleanup"),
    M::function<&T::handleInitialized>("handleInitialized"),
    M::data<&T::actionsActive, &T::actionsActiveIs>("actionsActive"),
    M::data<&T::initialized, &T::initializedIs>("initialized"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofPolicyMapSm

namespace ofServicePolicySm {
using T = ServicePolicySm;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::policyConfig, &T::policyConfigIs>("policyConfig"),
    M::data<&T::classTypeConfig, &T::classTypeConfigIs>("classTypeConfig"),
    M::data<&T::statusRequestDir, &T::statusRequestDirIs>("statusRequestDir"),
    M::key<&T::status>("status"),
    M::data<&T::aclConfig, &T::aclConfigIs>("aclConfig"),
    M::data<&T::lagConfig, &T::lagConfigIs>("lagConfig"),
    M::data<&T::ipStatus, &T::ipStatusIs>("ipStatus"),
    M::data<&T::ip6Status, &T::ip6StatusIs>("ip6Status"),
    M::data<&T::routingInfo, &T::routingInfoIs>("routingInfo"),
    M::data<&T::routing6Info, &T::routing6InfoIs>("routing6Info"),
    M::data<&T::aclHelper, &T::aclHelperIs>("aclHelper"),
    M::key<&T::aclDiff>("aclDiff"),
    M::key<&T::allowL2Intf>("allowL2Intf"),
    M::key<&T::allowL3Intf>("allowL3Intf"),
    M::key<&T::allowMgmtIntf>("allowMgmtIntf"),
    M::data<&T::allowIpAcl, &T::allowIpAclIs>("allowIpAcl"),
    M::data<&T::allowIp6Acl, &T::allowIp6AclIs>("allowIp6Acl"),
    M::data<&T::allowMacAcl, &T::allowMacAclIs>("allowMacAcl"),
    M::data<&T::commonData, &T::commonDataIs>("commonData"),
    M::collection<T::PolicyMapSmAttribute>("policyMapSm"),
    M::data<&T::initialized, &T::initializedIs>("initialized"),
    M::function<&T::intfExists>("intfExists", "intf"),
    M::function<&T::allowedIntf>("allowedIntf", "intf"),
    M::function<&T::allowedIntfForType>("allowedIntfForType", "intf", "matchOption"),
    M::function<&T::memberIntfs>("memberIntfs", "intf"),
    M::function<&T::effectiveIntfs>("effectiveIntfs", "key", "matchOption"),
    M::factory<&T::createPolicyMapSm>("createPolicyMapSm", "key", "policyMap", "status"),
    M::factory<&T::createCommonData>("createCommonData"),
    M::function<&T::handlePolicyMap>("handlePolicyMap", "policyMapName"),
    M::function<&T::handlePolicyMapConfig>("handlePolicyMapConfig", "policyMapName"),
    M::function<&T::handleIntf>("handleIntf", "intf", "force"),
    M::function<&T::cleanup>("cleanup"),
    M::function<&T::handleInitialized>("handleInitialized"),
    M::data<&T::retryMin, &T::retryMinIs>("retryMin"),
    M::data<&T::retryMax, &T::retryMaxIs>("retryMax"),
    M::data<&T::asyncTimeout, &T::asyncTimeoutIs>("asyncTimeout"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofServicePolicySm

constexpr std::array<TypeModel const*, 10> models{
    &ofAction::model,          &ofGlobalData::model, &ofPolicyCommonData::model,
    &ofClassCommonData::model, &ofAclHelper::model,  &ofActionSm::model,
    &ofClassMapMatchSm::model, &ofClassMapSm::model, &ofPolicyMapSm::model,
    &ofServicePolicySm::model,
};

}  // namespace

Models machineModels() {
  return models;
}

}  // namespace PolicyMap
