// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ActionType.h"

namespace PolicyMap {
namespace {

constexpr Kor::EnumNames actionTypeNames{"ActionType", nullptr, 0};

}  // namespace

Kor::KorType* korEnumType(ActionType /*any*/) {
  static Kor::KorType type("PolicyMap::ActionType", actionTypeNames);
  return &type;
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

}  // namespace PolicyMap
