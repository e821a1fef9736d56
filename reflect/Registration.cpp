// SPDX-License-Identifier: Apache-2.0
//
// What runs when the library is loaded: two initialisers, in the order in which they stand here.

#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"
#include "reflect/Models.h"

#include <Kor/Registration.h>
#include <Kor/Trace.h>

#include <string_view>
#include <vector>

namespace PolicyMapTest {
namespace {

// The library's types by name, in order of registration. Tools read the section without loading
// the library.
[[gnu::section(".kor.type"), gnu::used, gnu::retain]] constexpr char typeNames[] =
    "PolicyMapTest::TestAction1\0"
    "PolicyMapTest::TestAction2\0"
    "PolicyMapTest::TestAction3\0"
    "PolicyMapTest::AclPolicyType\0"
    "PolicyMapTest::SubRuleDataCollection\0"
    "PolicyMapTest::AclPolicyData\0"
    "PolicyMapTest::AclHelper\0"
    "PolicyMapTest::TestAction1Sm\0"
    "PolicyMapTest::TestAction2Sm\0"
    "PolicyMapTest::TestAction3Sm\0"
    "PolicyMapTest::TestClassCommonData\0"
    "PolicyMapTest::TestClassMapSm\0"
    "PolicyMapTest::TestPolicyMapSm\0"
    "PolicyMapTest::TestServicePolicySm";

constexpr std::array<Kor::TypeModel const*, 14> models{
    &testActionModels[0],   &testActionModels[1],        &testActionModels[2],
    &aclPolicyTypeModel,    &subRuleDataCollectionModel, &aclPolicyDataModel,
    &aclHelperModel,        &testActionSmModels[0],      &testActionSmModels[1],
    &testActionSmModels[2], &testClassCommonDataModel,   &testClassMapSmModel,
    &testPolicyMapSmModel,  &testServicePolicySmModel,
};

// Every record exists before the first is filled.
template <class... T>
void makeRecords() {
  (static_cast<void>(T::_fwkType()), ...);
}

[[maybe_unused]] bool const registered = [] {
  makeRecords<PolicyMap::Action, PolicyMap::ActionSm, PolicyMap::ClassMapSm,
              PolicyMap::ClassMapSmCommonData, PolicyMap::PolicyMapAclHelper,
              PolicyMap::PolicyMapSm, PolicyMap::ServicePolicySm, AclHelper, AclPolicyData,
              AclPolicyType, SubRuleDataCollection, TestAction1, TestAction1Sm, TestAction2,
              TestAction2Sm, TestAction3, TestAction3Sm, TestClassCommonData, TestClassMapSm,
              TestPolicyMapSm, TestServicePolicySm, Kor::PtrInterface>();
  Kor::registerTypes("PolicyMapTest", models);
  return true;
}();

Kor::TraceHandle const rootPathTrace("RootPathBase::Kor");

// The attributes of the library's objects, held as long as the library is loaded.
std::vector<Kor::KorAttr::Ptr> const attributeHandles = [] {
  std::vector<Kor::KorAttr::Ptr> handles;
  std::string_view names(typeNames, sizeof typeNames - 1);
  for (Kor::TypeModel const* const model : models) {
    auto const end = names.find('\0');
    Kor::KorType::typeNodeIs(model->type(), names.substr(0, end));
    names.remove_prefix(end == std::string_view::npos ? names.size() : end + 1);
  }
  for (Kor::TypeModel const* const model : models) {
    if (model->kind == Kor::TypeModel::Kind::value) {
      continue;  // values are not watched
    }
    for (Kor::AttrModel const& attr : model->attrs) {
      handles.push_back(Kor::KorAttr::attr(model->type(), attr.name));
    }
  }
  return handles;
}();

}  // namespace
}  // namespace PolicyMapTest
