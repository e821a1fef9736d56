// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/EffectiveSettings.h"

#include "testkit/config/EffectiveClasses.h"
#include "testkit/text/TypedNames.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

// The device itself.
constexpr char const* selfZone = "self";

// The places of the lists of one family in the class-map of lists that are attached by themselves.
constexpr std::size_t placesOfFamily = 10000000;

std::size_t indexOf(Direction direction) {
  return static_cast<std::size_t>(direction);
}

std::string replacedAt(std::string const& interface, std::string const& policyMap) {
  return "not at " + interface + ": policy-map " + policyMap +
         " is attached there in that direction";
}

// "policy-map edge (input)"
std::string inDirection(std::string const& what, Direction direction) {
  return what + " (" + toText(direction) + ")";
}

// The lists by themselves, of all families.
std::string namesOfLists(InterfaceSettings::AccessGroups const& lists) {
  std::string names;
  for (auto const& ofFamily : lists) {
    for (auto const& [priority, list] : ofFamily) {
      names.append(names.empty() ? "" : ",").append(list);
    }
  }
  return names;
}

std::string notDefined(std::string const& interface) {
  return "not defined, but attached to " + interface;
}

// The classes of several policy-maps one after the other, each class once. class-default, if one of
// them has it, is last.
Shared<PolicyMapSettings> merged(Settings const& settings, std::vector<std::string> const& names) {
  Shared<PolicyMapSettings> all;
  PolicyMapSettings& into = all.edit();
  for (std::string const& name : names) {
    auto const found = settings.policyMaps.find(name);
    if (found == settings.policyMaps.end()) {
      continue;
    }
    for (std::string const& className : found->second->order.names()) {
      ClassActions const& actions = found->second->actions.at(className);
      if (into.actions.emplace(className, actions).second) {
        into.order.append(className);
      }
    }
  }
  if (into.order.has(classDefault)) {
    into.order.erase(classDefault);
    into.order.append(classDefault);
  }
  return all;
}

// The policy-maps of the zone-pairs with one source zone, and the name of the policy-map that
// replaces them.
struct ZonePolicies {
  std::string name;
  std::vector<std::string> policyMaps;
};

// Pairs to the device itself come after the others: rules cannot tell their packets apart.
std::map<std::string, ZonePolicies> policiesOfZones(Settings const& settings) {
  std::vector<ZonePair const*> pairs;
  for (auto const& [name, pair] : settings.zonePairs) {
    if (!pair.policyMap.empty()) {
      pairs.push_back(&pair);
    }
  }
  std::sort(pairs.begin(), pairs.end(), [](ZonePair const* one, ZonePair const* other) {
    bool const oneLast = one->destination == selfZone;
    bool const otherLast = other->destination == selfZone;
    return std::tie(oneLast, one->order) < std::tie(otherLast, other->order);
  });
  std::map<std::string, ZonePolicies> zones;
  for (ZonePair const* const pair : pairs) {
    ZonePolicies& zone = zones[pair->source];
    zone.name += (zone.policyMaps.empty() ? "" : ",") + pair->policyMap;
    zone.policyMaps.push_back(pair->policyMap);
  }
  for (auto& [name, zone] : zones) {
    if (zone.policyMaps.size() > 1 && settings.policyMaps.count(zone.name) != 0) {
      zone.name.insert(0, "zone-pairs ");  // a policy-map has that name
    }
  }
  return zones;
}

}  // namespace

Settings EffectiveSettings::of(Settings const& written) {
  Settings settings = written;
  notes_.clear();
  expandLists(settings);
  resolveLists(settings);
  resolveTypes(settings);
  for (auto& [intf, interface] : settings.interfaces) {
    bool const isPlain = interface.skippedAttachments.empty() &&
                         interface.typedPolicyMaps[0].empty() &&
                         interface.typedPolicyMaps[1].empty();
    if (isPlain) {
      continue;  // nearly all: spares them their names
    }
    attachTypedPolicies(interface, nameOf(settings, intf));
    noteSkipped(interface, nameOf(settings, intf));
  }
  noteElsewhere(settings);
  attachZones(settings);
  groupsByName_.clear();
  if (accessGroups_) {
    for (auto const& [intf, interface] : settings.interfaces) {
      attachLists(settings, intf, Direction::input);
      attachLists(settings, intf, Direction::output);
    }
  }
  addClassDefault(settings);
  if (!cutLists_.empty()) {
    cutClasses(settings);
  }
  refuseContradictions(settings);
  refuseExclusions(settings);
  return settings;
}

// One policy-map per interface and direction is programmed.
void EffectiveSettings::attachTypedPolicies(InterfaceSettings& interface,
                                            std::string const& where) {
  for (Direction const direction : {Direction::input, Direction::output}) {
    std::string& attached = interface.policyMaps[indexOf(direction)];
    for (auto const& [type, policyMap] : interface.typedPolicyMaps[indexOf(direction)]) {
      if (attached.empty()) {
        attached = policyMap;
      } else if (!policyMap.empty()) {
        std::string const named =
            isNameOfType(policyMap) ? policyMap : nameWithType(policyMap, type);
        notes_.push_back(
            {inDirection("policy-map " + named, direction), replacedAt(where, attached)});
      }
    }
  }
}

void EffectiveSettings::noteElsewhere(Settings const& settings) {
  for (auto [place, attached] : settings.elsewhere) {
    attachTypedPolicies(attached, place);
    std::string const text = "not at " + place + ", which is no interface that carries policies";
    for (Direction const direction : {Direction::input, Direction::output}) {
      if (std::string const& name = attached.policyMaps[indexOf(direction)]; !name.empty()) {
        notes_.push_back({inDirection("policy-map " + name, direction), text});
      }
      std::string const lists = namesOfLists(attached.accessGroups[indexOf(direction)]);
      if (!lists.empty() && accessGroups_) {
        notes_.push_back({inDirection("access-group " + lists, direction), text});
      }
    }
    if (!attached.zone.empty()) {
      notes_.push_back({"zone " + attached.zone, text});
    }
    noteSkipped(attached, place);
  }
}

void EffectiveSettings::noteSkipped(InterfaceSettings const& interface, std::string const& where) {
  for (std::string const& line : interface.skippedAttachments) {
    notes_.push_back({"'" + line + "'", "not at " + where + ": the line was skipped"});
  }
}

// Rules do not know the zone to which a packet goes. So the policy-maps of all zone-pairs with one
// source are one policy-map, for input at the interfaces of that zone.
void EffectiveSettings::attachZones(Settings& settings) {
  for (auto const& [zone, policies] : policiesOfZones(settings)) {
    std::string const where = "policy-map " + policies.name + " of zone " + zone;
    if (zone == selfZone) {
      notes_.push_back({where, "not programmed: packets of the device itself enter no interface"});
      continue;
    }
    for (std::string const& policyMap : policies.policyMaps) {
      if (policies.policyMaps.size() > 1 && settings.policyMaps.count(policyMap) == 0) {
        notes_.push_back({"policy-map " + policyMap, "not defined, but of zone " + zone, false});
      }
    }
    bool empty = true;
    for (auto& [intf, interface] : settings.interfaces) {
      std::string& attached = interface.policyMaps[indexOf(Direction::input)];
      if (interface.zone != zone) {
        continue;
      }
      empty = false;
      if (!attached.empty()) {
        notes_.push_back({where, replacedAt(nameOf(settings, intf), attached)});
        continue;
      }
      attached = policies.name;
      if (policies.policyMaps.size() > 1) {
        settings.policyMaps.emplace(policies.name, merged(settings, policies.policyMaps));
      }
    }
    if (empty) {
      notes_.push_back({where, "not programmed: no interface is in the zone"});
    }
  }
}

// "access-group a,b"; if another interface has other lists of these names, "access-group ip a,ipv6
// b".
std::string EffectiveSettings::nameOfGroups(InterfaceSettings::AccessGroups const& lists) {
  static constexpr std::array<char const*, 3> families = {"ip ", "ipv6 ", "mac "};
  std::string name = "access-group " + namesOfLists(lists);
  if (groupsByName_.try_emplace(name, lists).first->second == lists) {
    return name;
  }
  name = "access-group ";
  char const* separator = "";
  for (std::size_t i = 0; i != lists.size(); ++i) {
    for (auto const& [priority, list] : lists[i]) {
      name.append(std::exchange(separator, ",")).append(families[i]).append(list);
    }
  }
  return name;
}

// What a cut list would have denied must not match later in the class: the matches after it that
// may have rules of its family are left out.
void EffectiveSettings::cutClasses(Settings& settings) {
  for (auto& [name, classMap] : settings.classMaps) {
    for (auto const& [match, list] : matchesAfterCut(settings, *classMap, cutLists_)) {
      classMap.edit().matches.erase(match);
      notes_.push_back({"class-map " + name,
                        "a match after access-list " + list + " is left out, whose end is lost",
                        false});
    }
  }
}

// The policy-map of one class that matches the lists of all families.
void EffectiveSettings::attachLists(Settings& settings, Vorel::IntfId intf, Direction direction) {
  InterfaceSettings& interface = settings.interfaces.at(intf);
  auto const& lists = interface.accessGroups[indexOf(direction)];
  std::string& attached = interface.policyMaps[indexOf(direction)];
  std::string const names = namesOfLists(lists);
  if (names.empty()) {
    return;
  }
  std::string const name = nameOfGroups(lists);
  if (!attached.empty() && settings.policyMaps.count(attached) == 0) {
    notes_.push_back(
        {inDirection("policy-map " + attached, direction), notDefined(nameOf(settings, intf))});
  } else if (!attached.empty()) {
    notes_.push_back({inDirection("access-group " + names, direction),
                      replacedAt(nameOf(settings, intf), attached)});
    return;
  }
  attached = name;
  ClassMap& classMap = settings.classMaps[attached].edit();
  classMap.match = ClassMatch::any;
  for (std::size_t i = 0; i != lists.size(); ++i) {
    auto const family = static_cast<Family>(i);
    auto place = static_cast<std::uint32_t>(i * placesOfFamily);
    for (auto const& [priority, list] : lists[i]) {
      place += 10;
      classMap.matches.put(place, PolicyMap::ClassMapMatch::acl(matchOption(family), list));
    }
  }
  PolicyMapSettings& policyMap = settings.policyMaps[attached].edit();
  if (policyMap.actions.try_emplace(attached).second) {
    policyMap.order.append(attached);
  }
}

}  // namespace PolicyMapTestKit::Text
