// SPDX-License-Identifier: Apache-2.0
#include "Kor/FlagNames.h"

#include "Kor/TypeModel.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace Kor {
namespace {

constexpr std::array<FlagPairName, 12> pairs{{
    {"data", Flags::data},
    {"record data", Flags::recordData},
    {"key", Flags::key},
    {"last key", Flags::lastKey},
    {"derived", Flags::derived},
    {"framework key", Flags::fwkKey},
    {"collection", Flags::collection},
    {"owned", Flags::owned},
    {"settable owned", Flags::settableOwned},
    {"function", Flags::function},
    {"factory", Flags::factory},
    {"hook", Flags::hook},
}};

using Introspection = KorAttr::KorAttrIntrospectionFlags;
constexpr std::array<IntrospectionFlagName, 3> introspection{{
    {"independent domain", Introspection::isIndependentDomainAttr_()},
    {"function", Introspection::isFunction_()},
    {"internal index", Introspection::hasInternalIndex_()},
}};

std::string nameOfPair(KorAttr::AttrFlags flags) {
  auto const* const named = std::ranges::find(pairs, flags, &FlagPairName::flags);
  if (named != pairs.end()) {
    return std::string(named->name);
  }
  std::ostringstream numbers;
  numbers << std::hex << "0x" << flags.first() << " 0x" << flags.second();
  return numbers.str();
}

}  // namespace

std::span<FlagPairName const> flagPairNames() {
  return pairs;
}

std::span<IntrospectionFlagName const> introspectionFlagNames() {
  return introspection;
}

std::vector<std::string> flagNames(KorAttr const& attr) {
  std::vector<std::string> names{nameOfPair(attr.flags())};
  for (IntrospectionFlagName const& named : introspection) {
    bool const isSet = (attr.introspectionFlags().value() & named.flag.value()) != 0;
    if (isSet && named.name != names.front()) {
      names.emplace_back(named.name);
    }
  }
  return names;
}

}  // namespace Kor
