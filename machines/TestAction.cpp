// SPDX-License-Identifier: Apache-2.0
#include "machines/TestAction.h"

#include <utility>

namespace PolicyMapTest {

template <class Self, int kind>
TestActionOf<Self, kind>::TestActionOf(Kor::Name className, Zub::UniqueId const& id)
    : Action(std::move(className), testActionType, id) {}

template <class Self, int kind>
TestActionOf<Self, kind>::~TestActionOf() = default;

template <class Self, int kind>
Kor::KorType const* TestActionOf<Self, kind>::fwkType() const {
  return _fwkType();
}
template <class Self, int kind>
Kor::KorType* TestActionOf<Self, kind>::_fwkType() {
  static Kor::KorType type(Self::korTypeName, Action::_fwkType());
  return &type;
}

template <class Self, int kind>
Kor::String8 TestActionOf<Self, kind>::attributeString(Kor::AttributeId id) const {
  return this->fwkType()->attributeString(id);
}

template <class Self, int kind>
bool TestActionOf<Self, kind>::equalTo(Kor::Ptr<PolicyMap::Action const> const& other) const {
  auto const same = other.as<Self const>();
  return same && same->value() == value_;
}

template <class Self, int kind>
void TestActionOf<Self, kind>::valueIs(std::uint32_t value) {
  if (value == value_) {
    return;
  }
  value_ = value;
  attributeChanged<Self>(valueId, &NotifieeConst::onValue);
}

#define POLICYMAPTEST_ROW(kind)                                                   \
  template class TestActionOf<TestAction##kind, kind>;                            \
  TestAction##kind::~TestAction##kind() = default;                                \
  Kor::Ptr<TestAction##kind> testAction##kind##Factory(Kor::Name className,       \
                                                       Zub::UniqueId const& id) { \
    return Kor::validPtr(Kor::make<TestAction##kind>(std::move(className), id));  \
  }

POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

}  // namespace PolicyMapTest
