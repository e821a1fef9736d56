// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machines/Toggles.h"
#include "records/Export.h"

#include <PolicyMap/ClassMapSm.h>

namespace PolicyMapTest {

// The machine of one class with test actions. It creates test action machines and a
// TestClassCommonData.
class POLICYMAPTEST_API TestClassMapSm : public Toggles<PolicyMap::ClassMapSm> {
 public:
  using Ptr = Kor::Ptr<TestClassMapSm>;
  using PtrConst = Kor::Ptr<TestClassMapSm const>;

  ~TestClassMapSm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Returns a machine that has already handled the configured action of this kind. Returns null and
  // traces if the kind is not a test action. Asserts "action": an action of the kind is configured.
  // The class action must not be null.
  Kor::Ptr<PolicyMap::ActionSm> createActionSm(PolicyMap::ActionType actionType) override;
  // The global data must not be null.
  Kor::Ptr<PolicyMap::ClassMapSmCommonData> createCommonData() override;

 protected:
  TestClassMapSm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                 Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                 Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
                 Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
                 Kor::Ptr<PolicyMap::ClassAction const> const& classAction);

 private:
  friend class TestPolicyMapSm;
  friend struct MachinesByName;  // creates machines from a type name

  // Returns a new machine whose notifications are on.
  static Kor::Ptr<TestClassMapSm> make(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
      Kor::Ptr<PolicyMap::ClassAction const> const& classAction);
};

}  // namespace PolicyMapTest
