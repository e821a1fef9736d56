// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/EffectiveSettings.h"

#include "testkit/text/MatchConditions.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

constexpr char const* classDefault = "class-default";

std::size_t indexOf(Direction direction) {
  return static_cast<std::size_t>(direction);
}

std::string replacedAt(Vorel::IntfId intf, std::string const& policyMap) {
  return "not at " + intf.name().stdString() + ": policy-map " + policyMap +
         " is attached there in that direction";
}

// Packets of every family that has IP headers.
void matchEverything(ClassMap& classMap) {
  classMap.match = ClassMatch::any;
  classMap.matches.put(10, ownMatch(Acl::IpRuleConfig()));
  classMap.matches.put(20, ownMatch(Acl::Ip6RuleConfig()));
}

// Which kinds of rules a match has, a bit per family.
unsigned familiesOf(Settings const& settings, PolicyMap::ClassMapMatch const& match) {
  constexpr unsigned all = 7;
  using Kind = PolicyMap::ClassMapMatch::Kind;
  if (match.kind() == Kind::rule) {
    return 1U << match.rule().index();
  }
  if (match.kind() == Kind::acl) {
    using Option = PolicyMap::ClassMapMatchOption;
    return match.option() == Option::ipv4 ? 1U : match.option() == Option::ipv6 ? 2U : 4U;
  }
  auto const nested = settings.classMaps.find(match.name().stdString());
  if (!isConditionName(match.name().view()) || nested == settings.classMaps.end()) {
    return all;
  }
  unsigned families = 0;
  for (auto const& [place, alternative] : nested->second->matches.byNumber()) {
    families |= familiesOf(settings, alternative);
  }
  return families;
}

// No rule has the fields of two families, so a class with such conditions matches nothing. A
// condition that says so takes their place; with them, the core would refuse the whole policy.
void refuseContradictions(Settings& settings) {
  std::vector<std::string> refused;
  for (auto const& [name, classMap] : settings.classMaps) {
    auto const& matches = classMap->matches.byNumber();
    if (classMap->match != ClassMatch::all || matches.size() < 2) {
      continue;
    }
    unsigned common = familiesOf(settings, matches.begin()->second);
    for (auto const& [place, match] : matches) {
      common &= familiesOf(settings, match);
    }
    if (common == 0) {
      refused.push_back(name);
    }
  }
  for (std::string const& name : refused) {
    ClassMap refusing;
    refusing.matches.put(10, PolicyMap::ClassMapMatch::classMap(conditionName(contradiction)));
    settings.classMaps.at(name).edit() = std::move(refusing);
  }
}

// class-default is the last class of each policy-map, and needs no class-map.
void addClassDefault(Settings& settings) {
  bool used = false;
  for (auto& [name, policyMap] : settings.policyMaps) {
    if (policyMap->actions.count(classDefault) == 0) {
      continue;
    }
    used = true;
    if (policyMap->order.names().back() != classDefault) {
      NameOrder& order = policyMap.edit().order;
      order.erase(classDefault);
      order.append(classDefault);
    }
  }
  if (used && settings.classMaps.count(classDefault) == 0) {
    static Shared<ClassMap> const everything = [] {
      Shared<ClassMap> classMap;
      matchEverything(classMap.edit());
      return classMap;
    }();
    settings.classMaps.emplace(classDefault, everything);
  }
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

std::map<std::string, ZonePolicies> policiesOfZones(Settings const& settings) {
  std::map<std::string, ZonePolicies> zones;
  for (auto const& [name, pair] : settings.zonePairs) {
    if (pair.policyMap.empty()) {
      continue;
    }
    ZonePolicies& zone = zones[pair.source];
    zone.name += (zone.policyMaps.empty() ? "" : ",") + pair.policyMap;
    zone.policyMaps.push_back(pair.policyMap);
  }
  return zones;
}

}  // namespace

Settings EffectiveSettings::of(Settings const& written) {
  Settings settings = written;
  notes_.clear();
  expandLists(settings);
  attachZones(settings);
  if (accessGroups_) {
    for (auto const& [intf, interface] : settings.interfaces) {
      attachLists(settings, intf, Direction::input);
      attachLists(settings, intf, Direction::output);
    }
  }
  addClassDefault(settings);
  refuseContradictions(settings);
  return settings;
}

// Rules do not know the zone to which a packet goes. So the policy-maps of all zone-pairs with one
// source are one policy-map, for input at the interfaces of that zone.
void EffectiveSettings::attachZones(Settings& settings) {
  for (auto const& [zone, policies] : policiesOfZones(settings)) {
    std::string const where = "policy-map " + policies.name + " of zone " + zone;
    bool empty = true;
    for (auto& [intf, interface] : settings.interfaces) {
      std::string& attached = interface.policyMaps[indexOf(Direction::input)];
      if (interface.zone != zone) {
        continue;
      }
      empty = false;
      if (!attached.empty()) {
        notes_.push_back({where, replacedAt(intf, attached)});
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

// The policy-map of one class that matches the lists of all families.
void EffectiveSettings::attachLists(Settings& settings, Vorel::IntfId intf, Direction direction) {
  InterfaceSettings& interface = settings.interfaces.at(intf);
  auto const& lists = interface.accessGroups[indexOf(direction)];
  std::string& attached = interface.policyMaps[indexOf(direction)];
  std::string names;
  for (std::string const& list : lists) {
    names += (names.empty() || list.empty() ? "" : ",") + list;
  }
  if (names.empty()) {
    return;
  }
  if (!attached.empty()) {
    notes_.push_back(
        {"access-group " + names + " (" + toText(direction) + ")", replacedAt(intf, attached)});
    return;
  }
  attached = "access-group " + names;
  ClassMap& classMap = settings.classMaps[attached].edit();
  classMap.match = ClassMatch::any;
  for (std::size_t i = 0; i != lists.size(); ++i) {
    if (!lists[i].empty()) {
      classMap.matches.put(
          static_cast<std::uint32_t>(i + 1) * 10,
          PolicyMap::ClassMapMatch::acl(matchOption(static_cast<Family>(i)), lists[i]));
    }
  }
  PolicyMapSettings& policyMap = settings.policyMaps[attached].edit();
  if (policyMap.actions.try_emplace(attached).second) {
    policyMap.order.append(attached);
  }
}

void EffectiveSettings::noteSkippedDenies(std::string const& name, AccessList const& list) {
  for (auto const& [number, entry] : list.entries.byNumber()) {
    if (auto const* const skipped = std::get_if<SkippedDeny>(&entry)) {
      notes_.push_back({"access-list " + name, "the deny at " + toText(skipped->place) +
                                                   " was skipped, so the entries after it are "
                                                   "left out"});
      return;
    }
  }
}

void EffectiveSettings::expandLists(Settings& settings) {
  if (!groups_.sameAs(settings.objectGroups)) {
    expanded_.clear();
    groups_ = settings.objectGroups;
  }
  std::map<AccessListKey, Expanded> used;
  for (Family const family : {Family::ip4, Family::ip6, Family::mac}) {
    for (auto& [name, list] : settings.listsOf(family)) {
      if (!list->entries.needExpansion()) {
        continue;
      }
      noteSkippedDenies(name, *list);
      AccessListKey const key{family, name};
      auto const known = expanded_.find(key);
      bool const same = known != expanded_.end() && known->second.written.sameAs(list);
      Shared<AccessList> effective =
          same ? known->second.effective : expanded(*list, *settings.objectGroups);
      used.emplace(key, Expanded{list, effective});
      list = std::move(effective);
    }
  }
  expanded_ = std::move(used);
}

// A line keeps its number if the rules of the lines before it leave it free, and otherwise follows
// them.
Shared<AccessList> EffectiveSettings::expanded(AccessList const& list, ObjectGroups const& groups) {
  Shared<AccessList> effective;
  effective.edit().standard = list.standard;
  ListEntries& entries = effective.edit().entries;
  std::uint64_t next = 0;
  auto const put = [&](std::uint32_t wanted, ListEntry entry) {
    next = std::max<std::uint64_t>(wanted, next);
    if (next <= std::numeric_limits<std::uint32_t>::max()) {
      entries.put(static_cast<std::uint32_t>(next++), std::move(entry));
    }
  };
  for (auto const& [number, entry] : list.entries.byNumber()) {
    if (std::holds_alternative<SkippedDeny>(entry)) {
      break;
    }
    auto const* const line = std::get_if<ListRule>(&entry);
    if (line == nullptr) {
      put(number, entry);
      continue;
    }
    try {
      for (ConfiguredRule const& rule : rulesOf(*line, groups)) {
        put(number, rule);
      }
    } catch (InputError const&) {
      // A lenient reading has said so.
    }
  }
  return effective;
}

}  // namespace PolicyMapTestKit::Text
