// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyType.h"

#include <string>
#include <string_view>

namespace PolicyMapTest {
namespace {

constexpr std::string_view typeName = "PolicyMapTest::AclPolicyType";

}  // namespace

AclPolicyType::AclPolicyType(Kor::String8::IteratorConst& it,
                             Kor::String8::IteratorConst const& end) {
  auto const readField = [this](Kor::TextIterator& at, Kor::TextIterator const& last,
                                Kor::String8 const& name) {
    if (name == "policyKey") {
      policyKey_ = Kor::deserializeAttr<PolicyMap::PolicyMapSmKey>(at, last, name);
    } else if (name == "option") {
      option_ = Kor::deserializeAttr<PolicyMap::ClassMapMatchOption>(at, last, name);
    } else {
      return false;
    }
    return true;
  };
  Kor::ValueReader(typeName).read(it, end, readField);
}

Kor::KorType const* AclPolicyType::fwkType() const {
  return _fwkType();
}
Kor::KorType* AclPolicyType::_fwkType() {
  static Kor::KorType type(typeName, nullptr);
  return &type;
}

Kor::String8 valueToStrep(AclPolicyType const& type) {
  std::string text("Value('");
  text.append(typeName).append("', ** {'policyKey': ");
  text.append(PolicyMap::valueToStrep(type.policyKey()).view());
  text.append(", 'option': ").append(PolicyMap::valueToStrep(type.option()).view()).append("})");
  return text;
}

std::ostream& operator<<(std::ostream& out, AclPolicyType const& type) {
  return out << valueToStrep(type);
}

}  // namespace PolicyMapTest
