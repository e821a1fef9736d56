// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machines/Toggles.h"
#include "records/Export.h"

#include <PolicyMap/ClassMapSm.h>

namespace PolicyMapTest {

// The machine of one class with test actions: it makes test action machines and a
// TestClassCommonData.
class POLICYMAPTEST_API TestClassMapSm : public Toggles<PolicyMap::ClassMapSm> {
 public:
  using Ptr = Kor::Ptr<TestClassMapSm>;
  using PtrConst = Kor::Ptr<TestClassMapSm const>;

  ~TestClassMapSm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // The machine of the configured action of that kind; it has handled its action when this returns.
  // Null, with a trace line, for kinds other than 1, 2 and 3. Asserts "action": there is an action
  // of that kind. The class action must be there.
  Kor::Ptr<PolicyMap::ActionSm> createActionSm(PolicyMap::ActionType actionType) override;
  // The global data must be there.
  Kor::Ptr<PolicyMap::ClassMapSmCommonData> createCommonData() override;

 protected:
  TestClassMapSm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                 Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
                 Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
                 Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
                 Kor::Ptr<PolicyMap::ClassAction const> const& classAction);

 private:
  friend class TestPolicyMapSm;
  friend struct MachinesByName;  // what builds machines from a type name

  // A new machine whose notifications are on.
  static Kor::Ptr<TestClassMapSm> make(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      Kor::Ptr<PolicyMap::PolicyMapSmCommonData> const& policyCommonData,
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& classMapConfig,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawClassMapSubConfig,
      Kor::Ptr<PolicyMap::ClassAction const> const& classAction);
};

}  // namespace PolicyMapTest
