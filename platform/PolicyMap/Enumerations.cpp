// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ActionType.h"
#include "PolicyMap/ClassMapMatchOption.h"

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 4> optionNames{"ipv4", "ipv6", "mac", "mpls"};
constexpr Kor::EnumNames matchOptionNames{"ClassMapMatchOption", optionNames.data(),
                                          optionNames.size()};
constexpr Kor::EnumNames actionTypeNames{"ActionType", nullptr, 0};

}  // namespace

Kor::String8 valueToStrep(ClassMapMatchOption option) {
  return Kor::enumToStrep(matchOptionNames, static_cast<std::int32_t>(option));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                     ClassMapMatchOption& option) {
  option = static_cast<ClassMapMatchOption>(Kor::sequenceToEnum(it, end, matchOptionNames));
}

std::ostream& operator<<(std::ostream& out, ClassMapMatchOption option) {
  return out << Kor::enumToText(matchOptionNames, static_cast<std::int32_t>(option));
}

Kor::String8 valueToStrep(ActionType type) {
  return Kor::enumToStrep(actionTypeNames, static_cast<std::int32_t>(type));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, ActionType& type) {
  type = static_cast<ActionType>(Kor::sequenceToEnum(it, end, actionTypeNames));
}

std::ostream& operator<<(std::ostream& out, ActionType type) {
  return out << Kor::enumToText(actionTypeNames, static_cast<std::int32_t>(type));
}

Kor::KorType* korEnumType(ClassMapMatchOption /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatchOption", nullptr);
  return &type;
}

Kor::KorType* korEnumType(ActionType /*any*/) {
  static Kor::KorType type("PolicyMap::ActionType", nullptr);
  return &type;
}

}  // namespace PolicyMap
