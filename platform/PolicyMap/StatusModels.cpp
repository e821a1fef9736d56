// SPDX-License-Identifier: Apache-2.0
//
// Models of the statuses and of the status requests.

#include "PolicyMap/Models.h"
#include "PolicyMap/PolicyMapTypeStatus.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::Model;
using Kor::TypeModel;

namespace ofClassMapStatus {
using T = ClassMapStatus;
using M = Model<T>;
constexpr std::array attrs{
    M::data<&T::error, &T::errorIs>("error").says(
        "why the class cannot be programmed, or which objects it misses; empty if neither"),
    M::data<&T::programmed, &T::programmedIs>("programmed")
        .says("true if rules of the class are programmed"),
    M::collection<T::HitCountAttribute>("hitCount")
        .says("packets that each rule had matched when counts were last requested"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapStatus

namespace ofPolicyMapStatus {
using T = PolicyMapStatus;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::key>("key").says("policy-map and direction"),
    M::data<&T::error, &T::errorIs>("error").says(
        "text of the first failure, in the order of the options; empty without a failure"),
    M::collection<T::ProgrammedAttribute>("programmed")
        .says("options for which the policy is programmed; absent: it is not"),
    M::collection<T::FailureAttribute>("failure").says(
        "why the policy is not programmed as configured, by option; absent: no failure"),
    M::owned<T::ClassMapStatusAttribute>("classMapStatus")
        .says("status of each class by name, while the class is in the policy"),
    M::collection<T::TimeProgrammedAttribute>("timeProgrammed")
        .says("when each programmed option was last programmed, in seconds of the event loop's "
              "clock"),
    M::collection<T::AppliedIntfAttribute>("appliedIntf")
        .says("options and interfaces where the policy is applied; the value has no meaning"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, PolicyMapSmKey>>("key"));
}  // namespace ofPolicyMapStatus

namespace ofPolicyMapTypeStatus {
using T = PolicyMapTypeStatus;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::PolicyMapStatusAttribute>("policyMapStatus")
        .says("status of each attached policy-map and direction"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapTypeStatus

namespace ofStatusRequestDir {
using T = PolicyMapStatusRequestDir;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::CountRequestAttribute>("countRequest")
        .says("a new number requests the hit counts of that policy from the helper"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofStatusRequestDir

constexpr std::array allStatusModels{
    &ofClassMapStatus::model,
    &ofPolicyMapStatus::model,
    &ofPolicyMapTypeStatus::model,
    &ofStatusRequestDir::model,
};

}  // namespace

Models statusModels() {
  return allStatusModels;
}

}  // namespace PolicyMap
