// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/EffectiveClasses.h"

#include "testkit/text/ConditionReasons.h"
#include "testkit/text/MatchConditions.h"
#include "testkit/text/TypedNames.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

// Packets of every family that has IP headers.
void matchEverything(ClassMap& classMap) {
  classMap.match = ClassMatch::any;
  classMap.matches.put(10, ownMatch(Acl::IpRuleConfig()));
  classMap.matches.put(20, ownMatch(Acl::Ip6RuleConfig()));
}

Family familyOf(PolicyMap::ClassMapMatchOption option) {
  using Option = PolicyMap::ClassMapMatchOption;
  return option == Option::ipv4 ? Family::ip4 : option == Option::ipv6 ? Family::ip6 : Family::mac;
}

constexpr unsigned allOptions = 15;
constexpr unsigned deepestNesting = 4;  // to which contradictions are found

unsigned bitOf(PolicyMap::ClassMapMatchOption option) {
  return 1U << static_cast<unsigned>(option);
}

// The options of which a match or a class-map may have rules, a bit per option.
unsigned optionsOf(Settings const& settings, ClassMap const& classMap, unsigned depth);
unsigned optionsOf(Settings const& settings, PolicyMap::ClassMapMatch const& match,
                   unsigned depth) {
  using Kind = PolicyMap::ClassMapMatch::Kind;
  if (match.kind() != Kind::classMap) {
    return bitOf(match.option());
  }
  auto const nested = settings.classMaps.find(match.name().stdString());
  bool const known = nested != settings.classMaps.end() && depth != 0;
  return known ? optionsOf(settings, *nested->second, depth - 1) : allOptions;
}

unsigned optionsOf(Settings const& settings, ClassMap const& classMap, unsigned depth) {
  bool const isAny = classMap.match == ClassMatch::any;
  auto const& matches = classMap.matches.byNumber();
  unsigned options = isAny && !matches.empty() ? 0 : allOptions;
  for (auto const& [place, match] : matches) {
    unsigned const some = optionsOf(settings, match, depth);
    options = isAny ? options | some : options & some;
  }
  return options;
}

// The class-map then matches nothing, which the condition explains.
void refuse(Settings& settings, std::string const& classMap, std::string_view condition) {
  ClassMap refusing;
  refusing.matches.put(10, PolicyMap::ClassMapMatch::classMap(conditionName(condition)));
  settings.classMaps.at(classMap).edit() = std::move(refusing);
}

}  // namespace

void refuseContradictions(Settings& settings) {
  std::vector<std::string> refused;
  for (auto const& [name, classMap] : settings.classMaps) {
    bool const mayContradict =
        classMap->match == ClassMatch::all && classMap->matches.byNumber().size() > 1;
    if (mayContradict && optionsOf(settings, *classMap, deepestNesting) == 0) {
      refused.push_back(name);
    }
  }
  for (std::string const& name : refused) {
    refuse(settings, name, contradiction);
  }
}

bool matchesMpls(Settings const& settings) {
  return std::any_of(settings.classMaps.begin(), settings.classMaps.end(),
                     [](auto const& classMap) {
                       auto const& matches = classMap.second->matches.byNumber();
                       return std::any_of(matches.begin(), matches.end(), [](auto const& match) {
                         return match.second.option() == PolicyMap::ClassMapMatchOption::mpls;
                       });
                     });
}

// The first `deny` of rules decides, so in a match-any class what is excluded by one condition
// would be excluded from all.
void refuseExclusions(Settings& settings) {
  std::vector<std::pair<std::string, std::string>> refused;
  for (auto const& [name, classMap] : settings.classMaps) {
    auto const& matches = classMap->matches.byNumber();
    if (classMap->match != ClassMatch::any || matches.size() < 2) {
      continue;
    }
    for (auto const& [place, match] : matches) {
      std::string const condition = match.name().stdString();
      if (condition.starts_with(conditionName("not "))) {
        refused.emplace_back(name, condition.substr(conditionName("").size()));
        break;
      }
    }
  }
  for (auto const& [name, condition] : refused) {
    refuse(settings, name, condition + " beside other conditions");
  }
}

std::vector<std::pair<std::uint32_t, std::string>> matchesAfterCut(
    Settings const& settings, ClassMap const& classMap,
    std::set<std::pair<Family, std::string>> const& lists) {
  std::vector<std::pair<std::uint32_t, std::string>> later;
  if (classMap.match != ClassMatch::any) {
    return later;
  }
  unsigned cut = 0;
  std::string cutList;
  for (auto const& [place, match] : classMap.matches.byNumber()) {
    unsigned const options = optionsOf(settings, match, deepestNesting);
    if ((options & cut) != 0) {
      later.emplace_back(place, cutList);
      continue;
    }
    bool const isCut = match.kind() == PolicyMap::ClassMapMatch::Kind::acl &&
                       lists.count({familyOf(match.option()), match.name().stdString()}) != 0;
    if (isCut) {
      cut |= options;
      cutList = match.name().stdString();
    }
  }
  return later;
}

void resolveTypes(Settings& settings) {
  for (auto const& [policyName, policyMap] : settings.policyMaps) {
    for (std::string const& className : policyMap->order.names()) {
      if (!isNameOfType(className) || settings.classMaps.count(className) != 0) {
        continue;
      }
      auto const plain = settings.classMaps.find(nameWithoutType(className));
      if (plain != settings.classMaps.end()) {
        settings.classMaps.emplace(className, plain->second);
      }
    }
  }
}

void resolveLists(Settings& settings) {
  using Option = PolicyMap::ClassMapMatchOption;
  auto const existing = [&](PolicyMap::ClassMapMatch const& match) {
    std::string const name = match.name().stdString();
    bool const unknown = match.kind() == PolicyMap::ClassMapMatch::Kind::acl &&
                         match.option() == Option::ipv4 &&
                         settings.listsOf(Family::ip4).count(name) == 0;
    if (unknown && settings.listsOf(Family::ip6).count(name) != 0) {
      return Family::ip6;
    }
    return unknown && settings.listsOf(Family::mac).count(name) != 0 ? Family::mac : Family::ip4;
  };
  for (auto& [name, classMap] : settings.classMaps) {
    std::vector<std::pair<std::uint32_t, PolicyMap::ClassMapMatch>> others;
    for (auto const& [place, match] : classMap->matches.byNumber()) {
      if (Family const family = existing(match); family != Family::ip4) {
        others.emplace_back(place,
                            PolicyMap::ClassMapMatch::acl(matchOption(family), match.name()));
      }
    }
    for (auto& [place, match] : others) {
      classMap.edit().matches.put(place, std::move(match));
    }
  }
}

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

}  // namespace PolicyMapTestKit::Text
