// SPDX-License-Identifier: Apache-2.0
#include "Acl/RangeCheck.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ClassMapTypeConfig.h"

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 4> optionNames{"ipv4", "ipv6", "mac", "mpls"};
constexpr Kor::EnumNames matchOptionNames{"ClassMapMatchOption", optionNames.data(),
                                          optionNames.size()};
constexpr Kor::EnumNames actionTypeNames{"ActionType", nullptr, 0};
constexpr std::array<std::string_view, 3> kinds{"acl", "classMap", "rule"};
constexpr Kor::EnumNames kindNames{"Kind", kinds.data(), kinds.size()};
constexpr std::array<std::string_view, 2> matchTypes{"matchAny", "matchAll"};
constexpr Kor::EnumNames matchTypeNames{"ClassMapMatchType", matchTypes.data(), matchTypes.size()};

// Reads one of the named values, by name or number.
template <class Enum>
void readNamed(Kor::TextIterator& it, Kor::TextIterator const& end, Kor::EnumNames const& names,
               Enum& value) {
  std::int32_t const number = Kor::sequenceToEnum(it, end, names);
  value = static_cast<Enum>(
      Acl::inRange(names.type, number, 0, static_cast<std::int64_t>(names.count) - 1));
}

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

Kor::String8 valueToStrep(ClassMapMatch::Kind kind) {
  return Kor::enumToStrep(kindNames, static_cast<std::int32_t>(kind));
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                     ClassMapMatch::Kind& kind) {
  readNamed(it, end, kindNames, kind);
}

std::ostream& operator<<(std::ostream& out, ClassMapMatch::Kind kind) {
  return out << Kor::enumToText(kindNames, static_cast<std::int32_t>(kind));
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

Kor::KorType* korEnumType(ClassMapMatch::Kind /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatch::Kind", nullptr);
  return &type;
}

Kor::KorType* korEnumType(ClassMapMatchType /*any*/) {
  static Kor::KorType type("PolicyMap::ClassMapMatchType", nullptr);
  return &type;
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
