// SPDX-License-Identifier: Apache-2.0
#include "machines/TestAction.h"

#include <array>
#include <string_view>
#include <utility>

namespace PolicyMapTest {
namespace {

constexpr std::array<std::string_view, 3> typeNames{
    "PolicyMapTest::TestAction1", "PolicyMapTest::TestAction2", "PolicyMapTest::TestAction3"};

template <class Action>
Kor::Ptr<Action> newAction(Kor::Name className, Zub::UniqueId const& id) {
  return Kor::validPtr(Kor::make<Action>(std::move(className), id));
}

}  // namespace

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
  static Kor::KorType type(typeNames[kind - 1], Action::_fwkType());
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
  attributeChanged<Self>(valueId, [](NotifieeConst& notifiee) { notifiee.onValue(); });
}

template class TestActionOf<TestAction1, 1>;
template class TestActionOf<TestAction2, 2>;
template class TestActionOf<TestAction3, 3>;

TestAction1::~TestAction1() = default;
TestAction2::~TestAction2() = default;
TestAction3::~TestAction3() = default;

Kor::Ptr<TestAction1> testAction1Factory(Kor::Name className, Zub::UniqueId const& id) {
  return newAction<TestAction1>(std::move(className), id);
}
Kor::Ptr<TestAction2> testAction2Factory(Kor::Name className, Zub::UniqueId const& id) {
  return newAction<TestAction2>(std::move(className), id);
}
Kor::Ptr<TestAction3> testAction3Factory(Kor::Name className, Zub::UniqueId const& id) {
  return newAction<TestAction3>(std::move(className), id);
}

}  // namespace PolicyMapTest
