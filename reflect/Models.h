// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables of the library's fourteen types. From a type's table come its registration, its
// adapter, its attribute names and its by-name constructor.

#include <Kor/Model.h>

#include <array>
#include <span>

namespace PolicyMapTest {

extern std::array<Kor::TypeModel, 3> const testActionModels;  // of TestAction1, 2 and 3
extern Kor::TypeModel const aclPolicyTypeModel;
extern Kor::TypeModel const subRuleDataCollectionModel;
extern Kor::TypeModel const aclPolicyDataModel;
extern Kor::TypeModel const aclHelperModel;
extern std::array<Kor::TypeModel, 3> const testActionSmModels;
extern Kor::TypeModel const testClassCommonDataModel;
extern Kor::TypeModel const testClassMapSmModel;
extern Kor::TypeModel const testPolicyMapSmModel;
extern Kor::TypeModel const testServicePolicySmModel;

}  // namespace PolicyMapTest
