// SPDX-License-Identifier: Apache-2.0
#pragma once

// The machines of the test actions, TestAction1Sm, TestAction2Sm, ... (see
// records/TestActionKinds.h). Each copies the value of its action into the class common data and
// requests that the actions of the rules are programmed again. They differ only in their kind:
// TestActionSmOf implements the behaviour.

#include "machines/TestAction.h"
#include "machines/TestClassCommonData.h"
#include "machines/Toggles.h"
#include "records/Export.h"

#include <PolicyMap/ActionSm.h>

#include <string_view>

namespace PolicyMapTest {

// `Self` is the named class, `Action` the class of the actions that it reads.
template <class Self, class Action>
class POLICYMAPTEST_API TestActionSmOf : public Toggles<PolicyMap::ActionSm> {
 public:
  ~TestActionSmOf() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Writes 0 and requests programming, even if the value is already 0. Asserts "classData": the
  // class common data are a TestClassCommonData.
  void cleanup() override;
  // Writes the action's value and requests programming if it differs. Makes the same assertion. The
  // action must be of the machine's kind.
  void handleAction() override;

 protected:
  // Any pointer may be null, but handleAction() terminates the process without class common data or
  // action.
  TestActionSmOf(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                 Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                 Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
                 Kor::Ptr<PolicyMap::Action const> const& action);

  // Returns a new machine that has handled its action once and whose notifications are on.
  static Kor::Ptr<Self> create(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                               Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                               Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,
                               Kor::Ptr<PolicyMap::Action const> const& action);
};

// TestActionNSmIs is the published name of the function that creates a machine.
// NOLINTBEGIN(readability-identifier-naming)
#define POLICYMAPTEST_ROW(kind)                                                             \
  class POLICYMAPTEST_API TestAction##kind##Sm                                              \
      : public TestActionSmOf<TestAction##kind##Sm, TestAction##kind> {                     \
   public:                                                                                  \
    using Ptr = Kor::Ptr<TestAction##kind##Sm>;                                             \
    using PtrConst = Kor::Ptr<TestAction##kind##Sm const>;                                  \
    static constexpr std::string_view korTypeName = "PolicyMapTest::TestAction" #kind "Sm"; \
    ~TestAction##kind##Sm() override;                                                       \
    static Kor::Ptr<TestAction##kind##Sm> TestAction##kind##SmIs(                           \
        Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,                   \
        Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,                 \
        Kor::Ptr<PolicyMap::ClassMapSmCommonData> const& classCommonData,                   \
        Kor::Ptr<PolicyMap::Action const> const& action);                                   \
                                                                                            \
   protected:                                                                               \
    friend class TestActionSmOf<TestAction##kind##Sm, TestAction##kind>;                    \
    using TestActionSmOf::TestActionSmOf;                                                   \
  };                                                                                        \
  extern template class TestActionSmOf<TestAction##kind##Sm, TestAction##kind>;

POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
// NOLINTEND(readability-identifier-naming)

#undef POLICYMAPTEST_ROW

}  // namespace PolicyMapTest
