// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapMatchOption.h"

#include <string_view>

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 4> matchOptionTexts{"ipv4", "ipv6", "mac", "mpls"};
constexpr Kor::EnumNames matchOptionNames{"ClassMapMatchOption", matchOptionTexts.data(),
                                          matchOptionTexts.size()};

}  // namespace

Kor::KorType* korEnumType(ClassMapMatchOption /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatchOption", matchOptionNames);
  return &type;
}

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

}  // namespace PolicyMap
