// SPDX-License-Identifier: Apache-2.0
//
// Models of the machines.

#include "PolicyMap/Models.h"
#include "PolicyMap/ServicePolicySm.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::Model;
using Kor::TypeModel;

namespace ofActionSm {
using T = ActionSm;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData")
        .says("data shared by all machines below one service-policy machine, or None"),
    M::key<&T::policyCommonData>("policyCommonData")
        .says("data of the policy that the helper receives, or None"),
    M::key<&T::classCommonData>("classCommonData")
        .says("data of the class that the helper receives, or None"),
    M::data<&T::action, &T::actionIs>("action").says("observed action; None if there is none"),
    M::data<&T::initialized, &T::initializedIs>("initialized")
        .says("true after the first activation"),
    M::function<&T::cleanup>("cleanup").says(
        "undoes what handleAction did; called once, before the machine is dropped"),
    M::function<&T::handleAction>("handleAction")
        .says("called when the action is configured, changed or replaced"),
    M::function<&T::handleInitialized>("handleInitialized").says("called at the first activation"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofActionSm

namespace ofClassMapMatchSm {
using T = ClassMapMatchSm;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::option>("option").says("match option of the rules that it keeps")};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofClassMapMatchSm

namespace ofClassMapSm {
using T = ClassMapSm;
using M = Model<T>;
using Handler = void (T::*)();
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData")
        .says("data shared by all machines below one service-policy machine, or None"),
    M::key<&T::policyCommonData>("policyCommonData")
        .says("data of the policy that the helper receives, or None"),
    M::data<&T::classMapConfig, &T::classMapConfigIs>("classMapConfig")
        .says("observed class-map, or None"),
    M::data<&T::rawClassMapSubConfig, &T::rawClassMapSubConfigIs>("rawClassMapSubConfig")
        .says("matches written in the policy itself, or None"),
    M::data<&T::classAction, &T::classActionIs>("classAction")
        .says("configured actions of the class, or None"),
    M::data<&T::classMap, &T::classMapIs>("classMap")
        .says("matches in force: those of the class-map, otherwise those written in the policy"),
    M::data<&T::classCommonData, &T::classCommonDataIs>("classCommonData")
        .says("data of the class that the helper receives, or None"),
    M::data<&T::classMapStatus, &T::classMapStatusIs>("classMapStatus")
        .says("published status of the class, or None"),
    M::collection<T::ClassMapMatchSmAttribute>("classMapMatchSm")
        .says("keeper of the compiled rules by option"),
    M::collection<T::ActionSmAttribute>("actionSm")
        .says("machine of each configured action by kind"),
    M::data<&T::actionsActive, &T::actionsActiveIs>("actionsActive")
        .says("true while the class has action machines"),
    M::data<&T::initializing, &T::initializingIs>("initializing")
        .says("true during the first activation"),
    M::data<&T::initialized, &T::initializedIs>("initialized")
        .says("true after the first activation"),
    M::overloaded<static_cast<void (T::*)(ActionType)>(&T::handleAction),
                  static_cast<Handler>(&T::handleAction)>("handleAction", "actionType")
        .says("called when an action was added, replaced or removed; without a kind: all kinds"),
    M::overloaded<static_cast<void (T::*)(ClassMapMatchOption)>(&T::handleMatch),
                  static_cast<Handler>(&T::handleMatch)>("handleMatch", "option")
        .says("called when the matched traffic may have changed; without an option: all options"),
    M::factory<&T::createMatchSm>("createMatchSm", "option")
        .says("creates the keeper of the rules of an option; None: the option has no rules"),
    M::factory<&T::createActionSm>("createActionSm", "actionType")
        .says("creates the machine of a configured action; None: the kind has none"),
    M::factory<&T::createCommonData>("createCommonData")
        .says("creates the data of the class that the helper receives"),
    M::factory<&T::createClassMapStatus>("createClassMapStatus")
        .says("creates the status of the class; None: it has none"),
    M::function<&T::handleInitialized>("handleInitialized")
        .says("called at the end of the first activation"),
    M::function<&T::cleanup>("cleanup").says(
        "takes down all action machines, each after its own cleanup"),
    M::derived<&T::name>("name").says(
        "class-map, or the matches written in the policy; empty if there are neither"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofClassMapSm

namespace ofPolicyMapSm {
using T = PolicyMapSm;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::globalCommonData>("globalCommonData")
        .says("data shared by all machines below one service-policy machine, or None"),
    M::key<&T::key>("key").says("policy-map and direction"),
    M::data<&T::policyMapConfig, &T::policyMapConfigIs>("policyMapConfig")
        .says("observed policy-map, or None"),
    M::data<&T::classTypeConfig, &T::classTypeConfigIs>("classTypeConfig")
        .says("class-maps that the classes refer to, or None"),
    M::key<&T::status>("status").says("published status of the policy; None: nothing is published"),
    M::data<&T::policyMap, &T::policyMapIs>("policyMap").says("classes in force, or None"),
    M::collection<T::ClassMapSmAttribute>("classMapSm").says("machine of each class by name"),
    M::data<&T::policyCommonData, &T::policyCommonDataIs>("policyCommonData")
        .says("data of the policy that the helper receives, or None"),
    M::collection<T::PrioClassAttribute>("prioClass")
        .says("copy of the configured class at each priority"),
    M::collection<T::ClassPrioAttribute>("classPrio")
        .says("copy of the configured priority of each class"),
    M::collection<T::TimeProgrammedAttribute>("timeProgrammed")
        .says("when each option was last programmed, in seconds of the event loop's clock"),
    M::collection<T::ActiveIntfAttribute>("activeIntf")
        .says("attached interfaces; true if the policy may be programmed there"),
    M::factory<&T::createClassMapSm>("createClassMapSm", "map", "rawMap", "action")
        .says("creates the machine of a class; None: the class has none"),
    M::factory<&T::createCommonData>("createCommonData")
        .says("creates the data of the policy that the helper receives"),
    M::function<&T::handleActiveIntf>("handleActiveIntf", "intf")
        .says("called when an interface was attached or detached, or its eligibility changed"),
    M::function<&T::cleanup>("cleanup").says(
        "takes down all class machines, each after its own cleanup"),
    M::function<&T::handleInitialized>("handleInitialized")
        .says("called at the end of the first activation"),
    M::data<&T::actionsActive, &T::actionsActiveIs>("actionsActive")
        .says("stored for derived machines; the core does not use it"),
    M::data<&T::initialized, &T::initializedIs>("initialized")
        .says("true after the first activation"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofPolicyMapSm

namespace ofServicePolicySm {
using T = ServicePolicySm;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::policyConfig, &T::policyConfigIs>("policyConfig")
        .says("policy-maps and their attachments; None: nothing is programmed"),
    M::data<&T::classTypeConfig, &T::classTypeConfigIs>("classTypeConfig")
        .says("class-maps that the classes refer to, or None"),
    M::data<&T::statusRequestDir, &T::statusRequestDirIs>("statusRequestDir")
        .says("requests for hit counts, or None"),
    M::key<&T::status>("status").says("where statuses are published; None: nowhere"),
    M::data<&T::aclConfig, &T::aclConfigIs>("aclConfig")
        .says("access lists that the rules are compiled from; None: nothing is programmed"),
    M::data<&T::lagConfig, &T::lagConfigIs>("lagConfig").says("port-channel memberships, or None"),
    M::data<&T::ipStatus, &T::ipStatusIs>("ipStatus")
        .says("IPv4 addresses of interfaces; None: no interface has one"),
    M::data<&T::ip6Status, &T::ip6StatusIs>("ip6Status")
        .says("IPv6 addresses of interfaces; None: no interface has one"),
    M::data<&T::routingInfo, &T::routingInfoIs>("routingInfo")
        .says("IPv4 routing by interface; None: no interface is routed"),
    M::data<&T::routing6Info, &T::routing6InfoIs>("routing6Info")
        .says("IPv6 routing by interface; None: no interface is routed"),
    M::data<&T::aclHelper, &T::aclHelperIs>("aclHelper")
        .says("hardware on which policies are programmed; None: nothing is programmed"),
    M::key<&T::aclDiff>("aclDiff").says(
        "tells rewrites of access lists without effect; None: every rewrite is a change"),
    M::key<&T::allowL2Intf>("allowL2Intf").says("layer 2 interfaces may carry policies"),
    M::key<&T::allowL3Intf>("allowL3Intf").says("layer 3 interfaces may carry policies"),
    M::key<&T::allowMgmtIntf>("allowMgmtIntf").says("management interfaces may carry policies"),
    M::data<&T::allowIpAcl, &T::allowIpAclIs>("allowIpAcl")
        .says("option ipv4 is programmed; default True"),
    M::data<&T::allowIp6Acl, &T::allowIp6AclIs>("allowIp6Acl")
        .says("option ipv6 is programmed; default True"),
    M::data<&T::allowMacAcl, &T::allowMacAclIs>("allowMacAcl")
        .says("option mac is programmed; default True"),
    M::data<&T::commonData, &T::commonDataIs>("commonData")
        .says("data shared by the machines below, or None"),
    M::collection<T::PolicyMapSmAttribute>("policyMapSm")
        .says("machine of each attached policy-map and direction"),
    M::data<&T::initialized, &T::initializedIs>("initialized")
        .says("true after the first activation"),
    M::function<&T::intfExists>("intfExists", "intf")
        .says("false: the interface carries no policy; the base class returns True"),
    M::function<&T::allowedIntf>("allowedIntf", "intf")
        .says("true if the interface is of a kind that may carry policies"),
    M::function<&T::allowedIntfForType>("allowedIntfForType", "intf", "matchOption")
        .says("true if an allowed interface may carry rules of an option"),
    M::function<&T::memberIntfs>("memberIntfs", "intf")
        .says("hardware interfaces of an interface: itself, or the members of a port-channel"),
    M::function<&T::effectiveIntfs>("effectiveIntfs", "key", "matchOption")
        .says("interfaces where a policy is to be applied for an option, ascending"),
    M::factory<&T::createPolicyMapSm>("createPolicyMapSm", "key", "policyMap", "status")
        .says("creates the machine of a policy; None: the policy is not programmed"),
    M::factory<&T::createCommonData>("createCommonData")
        .says("creates the data shared by the machines below"),
    M::function<&T::handlePolicyMap>("handlePolicyMap", "policyMapName")
        .says("called when a policy-map was attached, detached, created or removed"),
    M::function<&T::handlePolicyMapConfig>("handlePolicyMapConfig", "policyMapName")
        .says("called when a policy-map was created or removed"),
    M::function<&T::handleIntf>("handleIntf", "intf", "force")
        .says("evaluates an interface again; with force, its policies are programmed in any case"),
    M::function<&T::cleanup>("cleanup").says("requests the removal of all policies"),
    M::function<&T::handleInitialized>("handleInitialized")
        .says("called at the end of the first activation"),
    M::data<&T::retryMin, &T::retryMinIs>("retryMin")
        .says("first wait before a failed policy is retried, in seconds above 0; default 1"),
    M::data<&T::retryMax, &T::retryMaxIs>("retryMax")
        .says("longest wait before a failed policy is retried, in seconds; default 60"),
    M::data<&T::asyncTimeout, &T::asyncTimeoutIs>("asyncTimeout")
        .says("time limit for an asynchronous result, in seconds above 0; default 30"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
constexpr TypeModel model = M::object(attrs);
}  // namespace ofServicePolicySm

constexpr std::array allMachineModels{
    &ofActionSm::model,    &ofClassMapMatchSm::model, &ofClassMapSm::model,
    &ofPolicyMapSm::model, &ofServicePolicySm::model,
};

}  // namespace

Models machineModels() {
  return allMachineModels;
}

}  // namespace PolicyMap
