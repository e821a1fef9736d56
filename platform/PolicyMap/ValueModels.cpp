// SPDX-License-Identifier: Apache-2.0
//
// Models of the enumerations and values.

#include "Acl/Generic.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMap/AsyncOperationResult.h"
#include "PolicyMap/ClassMapMatch.h"
#include "PolicyMap/Models.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/SubRuleData.h"

#include <array>

namespace PolicyMap {
namespace {

using Kor::enumModel;
using Kor::fieldsModel;
using Kor::TypeModel;

constexpr TypeModel ofMatchOption = enumModel<ClassMapMatchOption>();
constexpr TypeModel ofActionType = enumModel<ActionType>();
constexpr TypeModel ofMatchType = enumModel<ClassMapMatchType>();
constexpr TypeModel ofMatchKind = enumModel<ClassMapMatch::Kind>();
constexpr TypeModel ofPolicyMapSmKey = fieldsModel<PolicyMapSmKey>();
constexpr TypeModel ofAclRuleKey = fieldsModel<AclRuleKey>();
constexpr TypeModel ofSubRuleData = fieldsModel<SubRuleData>();
constexpr TypeModel ofAsyncOperationResult = fieldsModel<AsyncOperationResult>();
constexpr TypeModel ofServicePolicyKey = fieldsModel<ServicePolicyKey>();
constexpr TypeModel ofClassMapMatch = fieldsModel<ClassMapMatch>();
constexpr TypeModel ofOptionIntf = fieldsModel<OptionIntf>();
constexpr TypeModel ofPolicyFailure = fieldsModel<PolicyFailure>();

constexpr std::array allValueModels{
    &ofMatchOption,      &ofActionType,    &ofMatchType,     &ofMatchKind,
    &ofPolicyMapSmKey,   &ofAclRuleKey,    &ofSubRuleData,   &ofAsyncOperationResult,
    &ofServicePolicyKey, &ofClassMapMatch, &ofPolicyFailure, &ofOptionIntf,
};

}  // namespace

Models valueModels() {
  return allValueModels;
}

}  // namespace PolicyMap
