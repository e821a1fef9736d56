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
    M::key<&T::policyKey>("policyKey").says("policy-map and direction"),
    M::key<&T::option>("option")
        .with(Kor::Flags::lastKey)
        .says("match option for which the policy is programmed"),
    M::derived<&T::hash>("hash").says("hash that collections use, before they reverse its bits"),
};
T make(PolicyMap::PolicyMapSmKey const& policyKey, PolicyMap::ClassMapMatchOption option) {
  return {policyKey, option};
}
}  // namespace ofPolicyType

namespace ofSubRules {
using T = SubRuleDataCollection;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::key>("key").says("rule that the sub-rules were added for"),
    M::collection<T::SubRuleAttribute>("subRule").says(
        "sub-rules that were added; the helper stores true"),
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
    M::key<&T::key>("key").says("policy-map, direction and option that the record is about"),
#define POLICYMAPTEST_ROW(kind)                                     \
  M::collection<T::RuleAction##kind##Attribute>("ruleAction" #kind) \
      .says("value of action" #kind " in each rule"),
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
        M::collection<T::RuleMatchAttribute>("ruleMatch")
            .says("match of each rule of option ipv4"),
    M::collection<T::RuleMatch6Attribute>("ruleMatch6").says("match of each rule of option ipv6"),
    M::collection<T::RuleMatchMacAttribute>("ruleMatchMac")
        .says("match of each rule of any other option"),
    M::owned<T::SubRulesForKeyAttribute>("subRulesForKey").says("sub-rules of each rule"),
    M::collection<T::IntfAttribute>("intf").says("interfaces to which the policy is applied"),
    data<&T::commitCount, &T::commitCountIs>("commitCount").says("number of commits, modulo 2^32"),
    data<&T::dirty, &T::dirtyIs>("dirty").says("true if a rule was added since the last commit"),
    data<&T::createCount, &T::createCountIs>("createCount")
        .says("number of creations, modulo 2^32"),
    data<&T::beginUpdateActionCount, &T::beginUpdateActionCountIs>("beginUpdateActionCount")
        .says("number of begun updates of actions, modulo 2^32"),
    data<&T::endUpdateActionCount, &T::endUpdateActionCountIs>("endUpdateActionCount")
        .says("number of ended updates of actions, modulo 2^32"),
    data<&T::created, &T::createdIs>("created").says(
        "true while the policy exists in the simulated hardware"),
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
