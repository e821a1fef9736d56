// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machines/Toggles.h"
#include "records/Export.h"

#include <PolicyMap/PolicyMapSm.h>

namespace PolicyMapTest {

// The machine of one policy-map: its class machines are TestClassMapSm.
class POLICYMAPTEST_API TestPolicyMapSm : public Toggles<PolicyMap::PolicyMapSm> {
 public:
  using Ptr = Kor::Ptr<TestPolicyMapSm>;
  using PtrConst = Kor::Ptr<TestPolicyMapSm const>;

  ~TestPolicyMapSm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Returns a new machine whose notifications are on; never null.
  Kor::Ptr<PolicyMap::ClassMapSm> createClassMapSm(
      Kor::Ptr<PolicyMap::ClassMapConfig const> const& map,
      Kor::Ptr<PolicyMap::ClassMapSubConfig const> const& rawMap,
      Kor::Ptr<PolicyMap::ClassAction const> const& action) override;

 protected:
  TestPolicyMapSm(Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
                  PolicyMap::PolicyMapSmKey const& key,
                  Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
                  Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
                  Kor::Ptr<PolicyMap::PolicyMapStatus> const& status);

 private:
  friend class TestServicePolicySm;
  friend struct MachinesByName;  // creates machines from a type name

  // Returns a new machine whose notifications are on.
  static Kor::Ptr<TestPolicyMapSm> make(
      Kor::Ptr<PolicyMap::PolicyMapGlobalData> const& globalCommonData,
      PolicyMap::PolicyMapSmKey const& key,
      Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
      Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
      Kor::Ptr<PolicyMap::PolicyMapStatus> const& status);
};

}  // namespace PolicyMapTest
