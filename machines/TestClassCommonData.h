// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"

#include <PolicyMap/ClassMapSmCommonData.h>

#include <cstdint>

namespace PolicyMapTest {

// The data of one class, with the numbers that its test actions carry. The action machines write
// them, and the helper copies them into every rule that it records.
class POLICYMAPTEST_API TestClassCommonData : public PolicyMap::ClassMapSmCommonData {
 public:
  using Ptr = Kor::Ptr<TestClassCommonData>;
  using PtrConst = Kor::Ptr<TestClassCommonData const>;
  class NotifieeConst;
  class Notifiee;

  // All three values 0. Any pointer may be null.
  TestClassCommonData(Kor::Name name, Kor::Ptr<PolicyMap::ClassMapSubConfig const> classMap,
                      Kor::Ptr<Acl::Config const> aclConfig);
  ~TestClassCommonData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // A write that changes something notifies. It asks for no programming: the action machines do
  // that by updateAclActionsInc().
  [[nodiscard]] std::uint32_t action1Value() const { return action1Value_; }
  void action1ValueIs(std::uint32_t value);
  [[nodiscard]] std::uint32_t action2Value() const { return action2Value_; }
  void action2ValueIs(std::uint32_t value);
  [[nodiscard]] std::uint32_t action3Value() const { return action3Value_; }
  void action3ValueIs(std::uint32_t value);

  static constexpr Kor::AttributeId action1ValueId = 258;
  static constexpr Kor::AttributeId action2ValueId = 259;
  static constexpr Kor::AttributeId action3ValueId = 260;

 private:
  using Hook = void (NotifieeConst::*)();
  void valueIs(std::uint32_t& stored, std::uint32_t value, Kor::AttributeId id, Hook hook);

  std::uint32_t action1Value_ = 0;
  std::uint32_t action2Value_ = 0;
  std::uint32_t action3Value_ = 0;
};

class POLICYMAPTEST_API TestClassCommonData::NotifieeConst
    : public Kor::NotifieeOf<TestClassCommonData, PolicyMap::ClassMapSmCommonData::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onAction1Value() {}
  virtual void onAction2Value() {}
  virtual void onAction3Value() {}
};

class POLICYMAPTEST_API TestClassCommonData::Notifiee : public TestClassCommonData::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMapTest
