// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables of the library's types. A type's registration, adapter, attribute names and by-name
// constructor come from its table.

#include "records/TestActionKinds.h"

#include <Kor/Model.h>

#include <array>
#include <span>

namespace PolicyMapTest {

extern std::array<Kor::TypeModel, testActionKinds> const testActionModels;  // by kind
extern Kor::TypeModel const aclPolicyTypeModel;
extern Kor::TypeModel const subRuleDataCollectionModel;
extern Kor::TypeModel const aclPolicyDataModel;
extern Kor::TypeModel const aclHelperModel;
extern std::array<Kor::TypeModel, testActionKinds> const testActionSmModels;
extern Kor::TypeModel const testClassCommonDataModel;
extern Kor::TypeModel const testClassMapSmModel;
extern Kor::TypeModel const testPolicyMapSmModel;
extern Kor::TypeModel const testServicePolicySmModel;

}  // namespace PolicyMapTest
