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
    M::data<&T::error, &T::errorIs>("error"),
    M::data<&T::programmed, &T::programmedIs>("programmed"),
    M::collection<T::HitCountAttribute>("hitCount"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofClassMapStatus

namespace ofPolicyMapStatus {
using T = PolicyMapStatus;
using M = Model<T>;
constexpr std::array attrs{
    M::key<&T::key>("key"),
    M::data<&T::error, &T::errorIs>("error"),
    M::collection<T::ProgrammedAttribute>("programmed"),
    M::collection<T::FailureAttribute>("failure"),
    M::owned<T::ClassMapStatusAttribute>("classMapStatus"),
    M::collection<T::TimeProgrammedAttribute>("timeProgrammed"),
    M::collection<T::AppliedIntfAttribute>("appliedIntf"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, PolicyMapSmKey>>("key"));
}  // namespace ofPolicyMapStatus

namespace ofPolicyMapTypeStatus {
using T = PolicyMapTypeStatus;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::PolicyMapStatusAttribute>("policyMapStatus"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofPolicyMapTypeStatus

namespace ofStatusRequestDir {
using T = PolicyMapStatusRequestDir;
using M = Model<T>;
constexpr std::array attrs{
    M::collection<T::CountRequestAttribute>("countRequest"),
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
