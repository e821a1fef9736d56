// SPDX-License-Identifier: Apache-2.0
#include "machines/PolicyMapTestSm.h"
#include "reflect/Models.h"

namespace PolicyMapTest {

// Grants by-name construction access to the private factories of the machines.
struct MachinesByName {
  static constexpr auto* makeClassMapSm = &TestClassMapSm::make;
  static constexpr auto* makePolicyMapSm = &TestPolicyMapSm::make;
};

namespace {

using Kor::Model;
using Kor::TypeModel;

template <class T>
constexpr std::array actionAttrs{
    Model<T>::template function<&T::equalTo>("equalTo", "other")
        .says("true for an action of this class with the same value"),
    Model<T>::template data<&T::value, &T::valueIs>("value").says(
        "number that the action stores in the rules of its class; default 0"),
};
template <class T, auto make>
constexpr TypeModel actionModel =
    Model<T>::entity(actionAttrs<T>, Model<T>::template constructor<make>("className", "id"));

template <class T>
constexpr std::array actionSmAttrs{
    Model<T>::template function<&T::cleanup>("cleanup").says(
        "resets the value of the class to 0, and requests programming"),
    Model<T>::template function<&T::handleAction>("handleAction")
        .says(
            "copies the value of the action to the class, and requests programming if it differs"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
template <class T, auto make>
constexpr TypeModel actionSmModel = Model<T>::object(
    actionSmAttrs<T>, Model<T>::template constructor<make>("globalCommonData", "policyCommonData",
                                                           "classCommonData", "action"));

namespace ofClassCommonData {
using T = TestClassCommonData;
using M = Model<T>;
constexpr std::array attrs{
#define POLICYMAPTEST_ROW(kind)                                                       \
  M::data<&T::action##kind##Value, &T::action##kind##ValueIs>("action" #kind "Value") \
      .says("value of action " #kind ", which the helper records in every rule; default 0"),
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};
T::Ptr make(Kor::Name const& name, PolicyMap::ClassMapSubConfig::PtrConst const& classMap,
            Acl::Config::PtrConst const& aclConfig) {
  return Kor::make<T>(name, classMap, aclConfig);
}
}  // namespace ofClassCommonData

namespace ofClassMapSm {
using T = TestClassMapSm;
using M = Model<T>;
constexpr std::array attrs{
    M::factory<&T::createActionSm>("createActionSm", "actionType"),
    M::factory<&T::createCommonData>("createCommonData").says("creates a TestClassCommonData"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
}  // namespace ofClassMapSm

namespace ofPolicyMapSm {
using T = TestPolicyMapSm;
using M = Model<T>;
constexpr std::array attrs{
    M::factory<&T::createClassMapSm>("createClassMapSm", "map", "rawMap", "action"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
}  // namespace ofPolicyMapSm

namespace ofServicePolicySm {
using T = TestServicePolicySm;
using M = Model<T>;
constexpr std::array attrs{
    M::function<&T::intfExists>("intfExists", "intf")
        .says("false for interfaces whose entry in nonexistentIntf is true"),
    M::factory<&T::createPolicyMapSm>("createPolicyMapSm", "key", "policyMap", "status"),
    M::collection<T::NonexistentIntfAttribute>("nonexistentIntf")
        .says("interfaces that do not exist, if the value is true"),
    Model<T>::activeHook(),
    Model<T>::zombieHook(),
};
}  // namespace ofServicePolicySm

}  // namespace

constexpr std::array<TypeModel, testActionKinds> testActionModels{
#define POLICYMAPTEST_ROW(kind) actionModel<TestAction##kind, &testAction##kind##Factory>,
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};
constexpr std::array<TypeModel, testActionKinds> testActionSmModels{
#define POLICYMAPTEST_ROW(kind) \
  actionSmModel<TestAction##kind##Sm, &TestAction##kind##Sm::TestAction##kind##SmIs>,
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};
constexpr TypeModel testClassCommonDataModel = ofClassCommonData::M::object(
    ofClassCommonData::attrs,
    ofClassCommonData::M::constructor<&ofClassCommonData::make>("name", "classMap", "aclConfig"));
constexpr TypeModel testClassMapSmModel = ofClassMapSm::M::object(
    ofClassMapSm::attrs, ofClassMapSm::M::constructor<MachinesByName::makeClassMapSm>(
                             "globalCommonData", "policyCommonData", "classMapConfig",
                             "rawClassMapSubConfig", "classAction"));
constexpr TypeModel testPolicyMapSmModel = ofPolicyMapSm::M::object(
    ofPolicyMapSm::attrs,
    ofPolicyMapSm::M::constructor<MachinesByName::makePolicyMapSm>(
        "globalCommonData", "key", "policyMapConfig", "classTypeConfig", "status"));
constexpr TypeModel testServicePolicySmModel = ofServicePolicySm::M::object(
    ofServicePolicySm::attrs,
    ofServicePolicySm::M::constructor<&testServicePolicySmFactory>(
        "policyConfig", "classTypeConfig", "statusRequestDir", "status", "aclConfig", "lagConfig",
        "ipStatus", "ip6Status", "routingInfo", "routing6Info", "aclHelper", "aclDiff",
        "allowL2Intf", "allowL3Intf", "allowMgmtIntf"));

}  // namespace PolicyMapTest
