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

constexpr std::array switches{
    LabSwitch{"updateAction", &LabOptions::updateAction},
    LabSwitch{"expandPortChannels", &LabOptions::expandPortChannels},
    LabSwitch{"subRulesForPorts", &LabOptions::subRulesForPorts},
    LabSwitch{"reprogramOnIntfChange", &LabOptions::reprogramOnIntfChange},
    LabSwitch{"denyRules", &LabOptions::denyRules},
    LabSwitch{"ttl", &LabOptions::ttl},
    LabSwitch{"onlyTtlEq", &LabOptions::onlyTtlEq},
    LabSwitch{"ackOrRst", &LabOptions::ackOrRst},
    LabSwitch{"established", &LabOptions::established},
    LabSwitch{"async", &LabOptions::async},
    LabSwitch{"pseudoAsync", &LabOptions::pseudoAsync},
    LabSwitch{"layer2", &LabOptions::layer2},
    LabSwitch{"layer3", &LabOptions::layer3},
    LabSwitch{"management", &LabOptions::management},
    LabSwitch{"ipLists", &LabOptions::ipLists},
    LabSwitch{"ip6Lists", &LabOptions::ip6Lists},
    LabSwitch{"macLists", &LabOptions::macLists},
    LabSwitch{"accessGroups", &LabOptions::accessGroups},
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

std::span<LabSwitch const> labSwitches() {
  return switches;
}

}  // namespace PolicyMapTestKit
