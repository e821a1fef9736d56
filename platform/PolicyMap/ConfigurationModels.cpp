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
    M::data<&T::matchType, &T::matchTypeIs>("matchType"),
    M::collection<T::MatchAttribute>("match"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapSubConfig

namespace ofClassMapConfig {
using T = ClassMapConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::currentSubConfig, &T::currentSubConfigIs>("currentSubConfig"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapConfig

namespace ofClassMapTypeConfig {
using T = ClassMapTypeConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::ClassMapConfigAttribute>("classMapConfig"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapTypeConfig

namespace ofClassAction {
using T = ClassAction;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::ActionAttribute>("action"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassAction

namespace ofPolicyMapSubConfig {
using T = PolicyMapSubConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::ClassPrioAttribute>("classPrio"),
    M::collection<T::PrioClassAttribute>("prioClass"),
    M::owned<T::ClassActionAttribute>("classAction"),
    M::collection<T::RawClassMapAttribute>("rawClassMap"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapSubConfig

namespace ofPolicyMapConfig {
using T = PolicyMapConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::currentSubConfig, &T::currentSubConfigIs>("currentSubConfig"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapConfig

namespace ofPolicyMapTypeConfig {
using T = PolicyMapTypeConfig;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::PolicyMapConfigAttribute>("policyMapConfig"),
    M::collection<T::ServicePolicyAttribute>("servicePolicy"),
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
