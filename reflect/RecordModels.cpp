// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyData.h"
#include "records/TestActionKinds.h"
#include "reflect/Models.h"

namespace PolicyMapTest {
namespace {

using Kor::AttrModel;
using Kor::Model;

namespace ofPolicyType {
using T = AclPolicyType;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::policyKey>("policyKey"),
    M::key<&T::option>("option").with(Kor::Flags::lastKey),
    M::derived<&T::hash>("hash"),
};
T make(PolicyMap::PolicyMapSmKey const& policyKey, PolicyMap::ClassMapMatchOption option) {
  return {policyKey, option};
}
}  // namespace ofPolicyType

namespace ofSubRules {
using T = SubRuleDataCollection;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::key>("key"),
    M::collection<T::SubRuleAttribute>("subRule"),
    M::fwkKey<&T::fwkKey>(),
};
T::Ptr make(PolicyMap::AclRuleKey const& key) {
  return Kor::make<T>(key);
}
}  // namespace ofSubRules

namespace ofPolicyData {
using T = AclPolicyData;
using M = Model<T>;

template <auto read, auto write>
constexpr AttrModel data(std::string_view name) {
  return M::data<read, write>(name).with(Kor::Flags::recordData);
}

constexpr std::array attrs{
    M::key<&T::key>("key"),
#define POLICYMAPTEST_ROW(kind) M::collection<T::RuleAction##kind##Attribute>("ruleAction" #kind),
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
        M::collection<T::RuleMatchAttribute>("ruleMatch"),
    M::collection<T::RuleMatch6Attribute>("ruleMatch6"),
    M::collection<T::RuleMatchMacAttribute>("ruleMatchMac"),
    M::owned<T::SubRulesForKeyAttribute>("subRulesForKey"),
    M::collection<T::IntfAttribute>("intf"),
    data<&T::commitCount, &T::commitCountIs>("commitCount"),
    data<&T::dirty, &T::dirtyIs>("dirty"),
    data<&T::createCount, &T::createCountIs>("createCount"),
    data<&T::beginUpdateActionCount, &T::beginUpdateActionCountIs>("beginUpdateActionCount"),
    data<&T::endUpdateActionCount, &T::endUpdateActionCountIs>("endUpdateActionCount"),
    data<&T::created, &T::createdIs>("created"),
    M::fwkKey<&T::fwkKey>(),
};
T::Ptr make(AclPolicyType const& key) {
  return Kor::make<T>(key);
}
}  // namespace ofPolicyData

}  // namespace

constexpr Kor::TypeModel aclPolicyTypeModel = Model<AclPolicyType>::value(
    ofPolicyType::attrs,
    Model<AclPolicyType>::constructor<&ofPolicyType::make>("policyKey", "option"));
constexpr Kor::TypeModel subRuleDataCollectionModel = Model<SubRuleDataCollection>::object(
    ofSubRules::attrs, Model<SubRuleDataCollection>::constructor<&ofSubRules::make>("key"));
constexpr Kor::TypeModel aclPolicyDataModel = Model<AclPolicyData>::object(
    ofPolicyData::attrs, Model<AclPolicyData>::constructor<&ofPolicyData::make>("key"));

}  // namespace PolicyMapTest
