// SPDX-License-Identifier: Apache-2.0

// The two initialisers that run when the library is loaded, in this order.

#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"
#include "records/Trace.h"
#include "reflect/Models.h"

#include <Kor/Registration.h>
#include <Kor/Trace.h>

#include <string_view>
#include <vector>

namespace PolicyMapTest {
namespace {

#define POLICYMAPTEST_ACTION_NAME(kind) "PolicyMapTest::TestAction" #kind "\0"
#define POLICYMAPTEST_MACHINE_NAME(kind) "PolicyMapTest::TestAction" #kind "Sm\0"
#define POLICYMAPTEST_ACTION_MODEL(kind) &testActionModels[(kind)-1],
#define POLICYMAPTEST_MACHINE_MODEL(kind) &testActionSmModels[(kind)-1],
#define POLICYMAPTEST_TYPES(kind) TestAction##kind, TestAction##kind##Sm,

#if defined(__clang__)
#define POLICYMAPTEST_UNPADDED [[clang::no_sanitize("address")]]
#else
#define POLICYMAPTEST_UNPADDED
#endif

// The names of the library's types, in order of registration. Tools read this section without
// loading the library, so no sanitizer may pad it.
POLICYMAPTEST_UNPADDED [[gnu::section(".kor.type"), gnu::used,
                         gnu::retain]] constexpr char typeNames[] =
    POLICYMAPTEST_ACTION_KINDS(
        POLICYMAPTEST_ACTION_NAME) "PolicyMapTest::AclPolicyType\0"
                                   "PolicyMapTest::SubRuleDataCollection\0"
                                   "PolicyMapTest::AclPolicyData\0"
                                   "PolicyMapTest::AclHelper\0" POLICYMAPTEST_ACTION_KINDS(
                                       POLICYMAPTEST_MACHINE_NAME) "PolicyMapTest::"
                                                                   "TestClassCommonData\0"
                                                                   "PolicyMapTest::TestClassMapSm\0"
                                                                   "PolicyMapTest::"
                                                                   "TestPolicyMapSm\0"
                                                                   "PolicyMapTest::"
                                                                   "TestServicePolicySm";

constexpr std::array models{
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ACTION_MODEL)  //
        & aclPolicyTypeModel,
    &subRuleDataCollectionModel,
    &aclPolicyDataModel,
    &aclHelperModel,
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_MACHINE_MODEL)  //
        & testClassCommonDataModel,
    &testClassMapSmModel,
    &testPolicyMapSmModel,
    &testServicePolicySmModel,
};

// Creates the type records in the order of the arguments, before registration fills any.
template <class... T>
void makeRecords() {
  (static_cast<void>(T::_fwkType()), ...);
}

[[maybe_unused]] bool const registered = [] {
  traceHandle();  // known by name from now on
  makeRecords<PolicyMap::Action, PolicyMap::ActionSm, PolicyMap::ClassMapSm,
              PolicyMap::ClassMapSmCommonData, PolicyMap::PolicyMapAclHelper,
              PolicyMap::PolicyMapSm, PolicyMap::ServicePolicySm, AclHelper, AclPolicyData,
              AclPolicyType, SubRuleDataCollection,
              POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_TYPES) TestClassCommonData, TestClassMapSm,
              TestPolicyMapSm, TestServicePolicySm, Kor::PtrInterface>();
  Kor::registerTypes("PolicyMapTest", models);
  return true;
}();

Kor::TraceHandle const rootPathTrace("RootPathBase::Kor");

// The attributes of the library's objects, held while the library is loaded.
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
