// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/FilterSettings.h"

#include <string>

namespace PolicyMapTestKit::Text {

namespace {

// Adds one class with its class-map and access list of the same name.
void addClass(Settings& settings, std::string const& name, PolicyMapSettings& policyMap) {
  policyMap.order.append(name);
  policyMap.actions.try_emplace(name);
  ClassMap& classMap = settings.classMaps[name].edit();
  classMap.match = ClassMatch::any;
}

}  // namespace

Settings filterSettings(FilterSet const& set, std::size_t classes, std::size_t interfaces) {
  Settings settings;
  std::string const policyName = "rules";
  PolicyMapSettings& policyMap = settings.policyMaps[policyName].edit();
  for (std::size_t i = 0; i != classes; ++i) {
    std::string const name = policyName + "-" + std::to_string(i + 1);
    addClass(settings, name, policyMap);
    auto& entries = settings.listsOf(set.family)[name].edit().entries;
    std::size_t const end = set.rules.size() * (i + 1) / classes;
    for (std::size_t rule = set.rules.size() * i / classes; rule != end; ++rule) {
      entries.put(entries.nextNumber().value(), configuredRule(set.rules[rule], set.family));
    }
    auto& matches = settings.classMaps[name].edit().matches;
    matches.put(matches.nextNumber().value(),
                PolicyMap::ClassMapMatch::acl(matchOption(set.family), name));
  }
  for (std::size_t i = 0; i != interfaces; ++i) {
    Vorel::IntfId const intf("Ethernet" + std::to_string(i + 1));
    settings.interfaces[intf].policyMaps[static_cast<std::size_t>(Direction::input)] = policyName;
  }
  return settings;
}

}  // namespace PolicyMapTestKit::Text
