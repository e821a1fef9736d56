// SPDX-License-Identifier: Apache-2.0
#pragma once

// The test actions TestAction1, TestAction2, ... (see records/TestActionKinds.h). Their only
// content is a number. They differ only in their kind: TestActionOf implements the behaviour; the
// named classes are created and registered.

#include "records/Export.h"
#include "records/TestActionKinds.h"

#include <PolicyMap/Action.h>
#include <Zub/UniqueId.h>

#include <cstdint>
#include <string_view>

namespace PolicyMapTest {

// `Self` is the named class, `kind` its action kind.
template <class Self, int kind>
class POLICYMAPTEST_API TestActionOf : public PolicyMap::Action {
 public:
  class POLICYMAPTEST_API NotifieeConst
      : public Kor::NotifieeOf<Self, PolicyMap::Action::NotifieeConst> {
    using Base = Kor::NotifieeOf<Self, PolicyMap::Action::NotifieeConst>;

   public:
    using Base::Base;
    virtual void onValue() {}
  };
  class POLICYMAPTEST_API Notifiee : public NotifieeConst {
   public:
    using NotifieeConst::NotifieeConst;
  };

  // The initial value is 0.
  TestActionOf(Kor::Name className, Zub::UniqueId const& id);
  ~TestActionOf() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] Kor::String8 attributeString(Kor::AttributeId id) const override;
  // True for an action of this class with the same value; class name and id are not compared.
  [[nodiscard]] bool equalTo(Kor::Ptr<PolicyMap::Action const> const& other) const override;

  [[nodiscard]] std::uint32_t value() const { return value_; }
  // Does nothing if the value is equal. A change reaches the machines of this action first, then
  // the notifiees.
  void valueIs(std::uint32_t value);

  static constexpr PolicyMap::ActionType testActionType{kind};
  static constexpr Kor::AttributeId valueId = Kor::firstAttributeId(3);

 private:
  std::uint32_t value_ = 0;
};

// The factories return a new action with the value 0; never null.
#define POLICYMAPTEST_ROW(kind)                                                            \
  class POLICYMAPTEST_API TestAction##kind : public TestActionOf<TestAction##kind, kind> { \
   public:                                                                                 \
    using Ptr = Kor::Ptr<TestAction##kind>;                                                \
    using PtrConst = Kor::Ptr<TestAction##kind const>;                                     \
    static constexpr std::string_view korTypeName = "PolicyMapTest::TestAction" #kind;     \
    using TestActionOf::TestActionOf;                                                      \
    ~TestAction##kind() override;                                                          \
  };                                                                                       \
  extern template class TestActionOf<TestAction##kind, kind>;                              \
  [[nodiscard]] POLICYMAPTEST_API Kor::Ptr<TestAction##kind> testAction##kind##Factory(    \
      Kor::Name className, Zub::UniqueId const& id);

POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)

#undef POLICYMAPTEST_ROW

}  // namespace PolicyMapTest
