// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"
#include "records/TestActionKinds.h"

#include <PolicyMap/ClassMapSmCommonData.h>

#include <array>
#include <cstdint>

namespace PolicyMapTest {

// The data of one class and the values of its test actions. The action machines write the values;
// the helper copies them into every rule that it records.
class POLICYMAPTEST_API TestClassCommonData : public PolicyMap::ClassMapSmCommonData {
 public:
  using Ptr = Kor::Ptr<TestClassCommonData>;
  using PtrConst = Kor::Ptr<TestClassCommonData const>;
  class NotifieeConst;
  class Notifiee;

  // All values are 0. Any pointer may be null.
  TestClassCommonData(Kor::Name name, Kor::Ptr<PolicyMap::ClassMapSubConfig const> classMap,
                      Kor::Ptr<Acl::Config const> aclConfig);
  ~TestClassCommonData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // For each kind of test action: action1Value(), action1ValueIs(value), action1ValueId and so on.
  // A write that changes the value notifies but does not request programming; the action machines
  // do that, with updateAclActionsInc().
#define POLICYMAPTEST_ROW(kind)                             \
  [[nodiscard]] std::uint32_t action##kind##Value() const { \
    return values_[(kind)-1];                               \
  }                                                         \
  void action##kind##ValueIs(std::uint32_t value);          \
  static constexpr Kor::AttributeId action##kind##ValueId = Kor::firstAttributeId(2) + (kind)-1;
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

 private:
  using Hook = void (NotifieeConst::*)();
  void valueIs(std::uint32_t& stored, std::uint32_t value, Kor::AttributeId id, Hook hook);

  std::array<std::uint32_t, testActionKinds> values_{};
};

class POLICYMAPTEST_API TestClassCommonData::NotifieeConst
    : public Kor::NotifieeOf<TestClassCommonData, PolicyMap::ClassMapSmCommonData::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
#define POLICYMAPTEST_ROW(kind) \
  virtual void onAction##kind##Value() {}
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

class POLICYMAPTEST_API TestClassCommonData::Notifiee : public TestClassCommonData::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMapTest
