// SPDX-License-Identifier: Apache-2.0
#pragma once

// The machines of the three test actions. Each copies the value of its action into the class common
// data and asks for the rules' actions to be programmed again. They differ in their kind alone, so
// TestActionSmOf has all that they do.

#include "machines/TestAction.h"
#include "machines/TestClassCommonData.h"
#include "machines/Toggles.h"
#include "records/Export.h"

#include <PolicyMap/ActionSm.h>

namespace PolicyMapTest {

// `Self` is the named class, `Action` the class of the actions that it reads.
template <class Self, class Action>
class POLICYMAPTEST_API TestActionSmOf : public Toggles<PolicyMap::ActionSm> {
 public:
  ~TestActionSmOf() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Writes 0 and asks for programming, also when it is 0 already. Asserts "classData": the class
  // common data are a TestClassCommonData.
  void cleanup() override;
  // Writes the action's value and asks for programming if it differs. Asserts "classData", too; the
  // action is of the machine's own kind.
  void handleAction() override;

 protected:
  // Any pointer may be null, but without common data and action the first handleAction() ends the
  // process.
  TestActionSmOf(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                 Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                 Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
                 Kor::Ptr<PolicyMap::Action const> const& action);

  // A new machine that has handled its action once and then switched its notifications on.
  static Kor::Ptr<Self> create(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                               Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                               Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
                               Kor::Ptr<PolicyMap::Action const> const& action);
};

class POLICYMAPTEST_API TestAction1Sm : public TestActionSmOf<TestAction1Sm, TestAction1> {
 public:
  using Ptr = Kor::Ptr<TestAction1Sm>;
  using PtrConst = Kor::Ptr<TestAction1Sm const>;
  ~TestAction1Sm() override;

  // NOLINTNEXTLINE(readability-identifier-naming): the published name
  static Kor::Ptr<TestAction1Sm> TestAction1SmIs(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
      Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
      Kor::Ptr<PolicyMap::Action const> const& action);

 protected:
  friend class TestActionSmOf<TestAction1Sm, TestAction1>;
  using TestActionSmOf::TestActionSmOf;
};

class POLICYMAPTEST_API TestAction2Sm : public TestActionSmOf<TestAction2Sm, TestAction2> {
 public:
  using Ptr = Kor::Ptr<TestAction2Sm>;
  using PtrConst = Kor::Ptr<TestAction2Sm const>;
  ~TestAction2Sm() override;

  // NOLINTNEXTLINE(readability-identifier-naming): the published name
  static Kor::Ptr<TestAction2Sm> TestAction2SmIs(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
      Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
      Kor::Ptr<PolicyMap::Action const> const& action);

 protected:
  friend class TestActionSmOf<TestAction2Sm, TestAction2>;
  using TestActionSmOf::TestActionSmOf;
};

class POLICYMAPTEST_API TestAction3Sm : public TestActionSmOf<TestAction3Sm, TestAction3> {
 public:
  using Ptr = Kor::Ptr<TestAction3Sm>;
  using PtrConst = Kor::Ptr<TestAction3Sm const>;
  ~TestAction3Sm() override;

  // NOLINTNEXTLINE(readability-identifier-naming): the published name
  static Kor::Ptr<TestAction3Sm> TestAction3SmIs(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
      Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
      Kor::Ptr<PolicyMap::Action const> const& action);

 protected:
  friend class TestActionSmOf<TestAction3Sm, TestAction3>;
  using TestActionSmOf::TestActionSmOf;
};

extern template class TestActionSmOf<TestAction1Sm, TestAction1>;
extern template class TestActionSmOf<TestAction2Sm, TestAction2>;
extern template class TestActionSmOf<TestAction3Sm, TestAction3>;

}  // namespace PolicyMapTest
