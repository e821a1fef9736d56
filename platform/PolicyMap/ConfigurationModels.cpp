// SPDX-License-Identifier: Apache-2.0
//
// Models of the configuration classes.

#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/Models.h"
#include "PolicyMap/PolicyMapTypeConfig.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::Model;
using Kor::TypeModel;

namespace ofClassMapSubConfig {
using T = ClassMapSubConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::matchType, &T::matchTypeIs>("matchType")
        .says("whether traffic must satisfy any or all of the match statements; default matchAny"),
    M::collection<T::MatchAttribute>("match").says(
        "statements by place; they apply in ascending order of place"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapSubConfig

namespace ofClassMapConfig {
using T = ClassMapConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::currentSubConfig, &T::currentSubConfigIs>("currentSubConfig")
        .says("matches in force; None: the class-map matches nothing"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapConfig

namespace ofClassMapTypeConfig {
using T = ClassMapTypeConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::ClassMapConfigAttribute>("classMapConfig").says("class-maps by name"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapTypeConfig

namespace ofClassAction {
using T = ClassAction;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::ActionAttribute>("action").says("configured actions of the class by kind"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassAction

namespace ofPolicyMapSubConfig {
using T = PolicyMapSubConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::ClassPrioAttribute>("classPrio")
        .says("priority of each class; lower numbers come first, equal ones by class name"),
    M::collection<T::PrioClassAttribute>("prioClass")
        .says("class at each priority, derived from classPrio; of several, the one written last"),
    M::owned<T::ClassActionAttribute>("classAction").says("actions of each class by class name"),
    M::collection<T::RawClassMapAttribute>("rawClassMap")
        .says("matches written in the policy, by class; used if no class-map of the name exists"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapSubConfig

namespace ofPolicyMapConfig {
using T = PolicyMapConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::currentSubConfig, &T::currentSubConfigIs>("currentSubConfig")
        .says("classes in force; None: the policy-map has no classes"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapConfig

namespace ofPolicyMapTypeConfig {
using T = PolicyMapTypeConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::PolicyMapConfigAttribute>("policyMapConfig").says("policy-maps by name"),
    M::collection<T::ServicePolicyAttribute>("servicePolicy")
        .says("name of the policy-map attached to an interface in a direction"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapTypeConfig

constexpr std::array allConfigurationModels{
    &ofClassMapSubConfig::model,   &ofClassMapConfig::model,     &ofClassMapTypeConfig::model,
    &ofClassAction::model,         &ofPolicyMapSubConfig::model, &ofPolicyMapConfig::model,
    &ofPolicyMapTypeConfig::model,
};

}  // namespace

Models configurationModels() {
  return allConfigurationModels;
}

}  // namespace PolicyMap
