// SPDX-License-Identifier: Apache-2.0
#include "testkit/LabOptions.h"

#include <Kor/Exception.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace PolicyMapTestKit {

namespace {

using PolicyMapTest::AclHelper;

struct Attribute {
  std::string_view name;
  void (AclHelper::*write)(Kor::String);
};

constexpr std::array attributes{
#define POLICYMAPTEST_ROW(name, Name, prose) Attribute{#name, &AclHelper::name##Is},
    POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

}  // namespace

std::vector<std::string> faultNames() {
  std::vector<std::string> names;
  names.reserve(attributes.size());
  for (Attribute const& attribute : attributes) {
    names.emplace_back(attribute.name);
  }
  return names;
}

void inject(AclHelper& helper, Fault const& fault) {
  auto const found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](Attribute const& row) { return row.name == fault.name; });
  if (found == attributes.end()) {
    std::string names;
    for (Attribute const& attribute : attributes) {
      names.append(names.empty() ? "" : ", ").append(attribute.name);
    }
    throw Kor::RangeException("no error attribute '" + fault.name + "'; there are " + names);
  }
  (helper.*found->write)(Kor::String(fault.text));
}

void clearFaults(AclHelper& helper) {
  for (Attribute const& attribute : attributes) {
    (helper.*attribute.write)({});
  }
}

}  // namespace PolicyMapTestKit
