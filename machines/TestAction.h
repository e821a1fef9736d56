// SPDX-License-Identifier: Apache-2.0
#pragma once

// The three test actions: their only content is a number. They differ in their kind alone, so
// TestActionOf has all that they do, and TestAction1, TestAction2 and TestAction3 give it names.

#include "records/Export.h"

#include <PolicyMap/Action.h>
#include <Zub/UniqueId.h>

#include <cstdint>

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

  // The value is 0.
  TestActionOf(Kor::Name className, Zub::UniqueId const& id);
  ~TestActionOf() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] Kor::String8 attributeString(Kor::AttributeId id) const override;
  // Whether `other` is an action of this class that holds the same value. Class name and id do not
  // count.
  [[nodiscard]] bool equalTo(Kor::Ptr<PolicyMap::Action const> const& other) const override;

  [[nodiscard]] std::uint32_t value() const { return value_; }
  // A change reaches the machines of this action first, then the notifiees.
  void valueIs(std::uint32_t value);

  static constexpr PolicyMap::ActionType testActionType{kind};
  static constexpr Kor::AttributeId valueId = 386;

 private:
  std::uint32_t value_ = 0;
};

class POLICYMAPTEST_API TestAction1 : public TestActionOf<TestAction1, 1> {
 public:
  using Ptr = Kor::Ptr<TestAction1>;
  using PtrConst = Kor::Ptr<TestAction1 const>;
  using TestActionOf::TestActionOf;
  ~TestAction1() override;
};

class POLICYMAPTEST_API TestAction2 : public TestActionOf<TestAction2, 2> {
 public:
  using Ptr = Kor::Ptr<TestAction2>;
  using PtrConst = Kor::Ptr<TestAction2 const>;
  using TestActionOf::TestActionOf;
  ~TestAction2() override;
};

class POLICYMAPTEST_API TestAction3 : public TestActionOf<TestAction3, 3> {
 public:
  using Ptr = Kor::Ptr<TestAction3>;
  using PtrConst = Kor::Ptr<TestAction3 const>;
  using TestActionOf::TestActionOf;
  ~TestAction3() override;
};

extern template class TestActionOf<TestAction1, 1>;
extern template class TestActionOf<TestAction2, 2>;
extern template class TestActionOf<TestAction3, 3>;

// A new action in a pointer that is never null.
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<TestAction1> testAction1Factory(Kor::Name className,
                                                                         Zub::UniqueId const& id);
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<TestAction2> testAction2Factory(Kor::Name className,
                                                                         Zub::UniqueId const& id);
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<TestAction3> testAction3Factory(Kor::Name className,
                                                                         Zub::UniqueId const& id);

}  // namespace PolicyMapTest
