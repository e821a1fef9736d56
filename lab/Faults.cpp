// SPDX-License-Identifier: Apache-2.0
#include "lab/Faults.h"

#include "lab/SourceText.h"
#include "lab/Verb.h"

#include <array>

namespace lab {

namespace {

using PolicyMapTest::AclHelper;

struct Attribute {
  std::string_view name;
  void (AclHelper::*write)(Kor::String);
};

constexpr std::array attributes{
#define POLICYMAPTEST_ROW(name, Name) Attribute{#name, &AclHelper::name##Is},
    POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

Attribute const* find(std::string_view name) {
  for (Attribute const& attribute : attributes) {
    if (attribute.name == name) {
      return &attribute;
    }
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> faultNames() {
  std::vector<std::string> names;
  names.reserve(attributes.size());
  for (Attribute const& attribute : attributes) {
    names.emplace_back(attribute.name);
  }
  return names;
}

Fault readFault(std::string_view argument) {
  auto const equals = argument.find('=');
  std::string_view const name = argument.substr(0, equals);
  if (equals == std::string_view::npos || find(name) == nullptr) {
    std::string names;
    for (Attribute const& attribute : attributes) {
      names.append(names.empty() ? "" : ", ").append(attribute.name);
    }
    throw UsageError("--inject: expected NAME=TEXT with one of " + names + ", found " +
                     excerpt(argument));
  }
  return {std::string(name), std::string(argument.substr(equals + 1))};
}

void inject(AclHelper& helper, Fault const& fault) {
  (helper.*find(fault.name)->write)(Kor::String(fault.text));
}

void clearFaults(AclHelper& helper) {
  for (Attribute const& attribute : attributes) {
    (helper.*attribute.write)({});
  }
}

}  // namespace lab
