// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapMatchType.h"

#include "PolicyMap/NamedEnum.h"

#include <array>
#include <string_view>

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 2> matchTypeTexts{"matchAny", "matchAll"};
constexpr Kor::EnumNames matchTypeNames{"ClassMapMatchType", matchTypeTexts.data(),
                                        matchTypeTexts.size()};

}  // namespace

Kor::KorType* korEnumType(ClassMapMatchType /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatchType", matchTypeNames);
  return &type;
}

Kor::String8 valueToStrep(ClassMapMatchType type) {
  return Kor::enumToStrep(matchTypeNames, static_cast<std::int32_t>(type));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, ClassMapMatchType& type) {
  readNamed(it, end, matchTypeNames, type);
}

std::ostream& operator<<(std::ostream& out, ClassMapMatchType type) {
  return out << Kor::enumToText(matchTypeNames, static_cast<std::int32_t>(type));
}

}  // namespace PolicyMap
