// SPDX-License-Identifier: Apache-2.0
#include "packets/Configured.h"

#include "machines/TestAction.h"
#include "packets/RuleBoxes.h"

#include <Acl/Config.h>
#include <Acl/Ip6AclConfig.h>
#include <Acl/IpAclConfig.h>
#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeConfig.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSubConfig;
using PolicyMapTestKit::Lab;

template <int kind, class Action>
std::uint64_t valueOf(Kor::Ptr<PolicyMap::ClassAction const> const& actions) {
  auto const action =
      actions ? actions->action(PolicyMap::ActionType{kind}).template as<Action>() : nullptr;
  return action ? action->value() : 0;
}

std::vector<std::uint64_t> valuesOf(Kor::Ptr<PolicyMap::ClassAction const> const& actions) {
  return {
#define POLICYMAPTEST_ROW(kind) valueOf<kind, PolicyMapTest::TestAction##kind>(actions),
      POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  };
}

std::string textOf(Acl::AnyRule const& rule) {
  return std::visit([](auto const& some) { return some.describe(); }, rule);
}

class Reader {
 public:
  Reader(Lab const& lab, Space const& space) : lab_(lab), classifier_(space) {}

  Classifier read(Kor::Name const& policyMap) {
    auto const map = lab_.policyMaps()->policyMapConfig(policyMap);
    if (!map || !map->currentSubConfig()) {
      return std::move(classifier_);
    }
    for (Kor::Name const& name : map->currentSubConfig()->classesInOrder()) {
      auto const own = lab_.classMaps()->classMapConfig(name);
      Kor::Ptr<ClassMapSubConfig const> const classMap =
          own ? own->currentSubConfig() : map->currentSubConfig()->rawClassMap(name);
      treatment_ = {name.stdString(), valuesOf(map->currentSubConfig()->classAction(name))};
      if (classMap) {
        classifier_.classes.push_back(conditionOf(*classMap));
      }
    }
    return std::move(classifier_);
  }

 private:
  Condition conditionOf(ClassMapSubConfig const& classMap) {
    Condition condition{classMap.matchType() == PolicyMap::ClassMapMatchType::matchAll
                            ? Condition::Kind::all
                            : Condition::Kind::any,
                        {},
                        {}};
    if (!reading_.insert(classMap.name()).second) {
      return condition;  // a class-map within itself
    }
    std::map<std::uint32_t, ClassMapMatch> matches;  // by place
    for (auto const& entry : classMap.matchIteratorConst()) {
      matches.emplace(entry.key(), entry.value());
    }
    bool isOwnList = false;  // the last part is a list of rules of the class-map itself
    for (auto const& [place, match] : matches) {
      bool const isRule = match.kind() == ClassMapMatch::Kind::rule;
      if (!isRule || !isOwnList || condition.kind == Condition::Kind::all) {
        condition.parts.emplace_back();
      }
      isOwnList = isRule;
      Condition& part = condition.parts.back();
      switch (match.kind()) {
      case ClassMapMatch::Kind::rule: add(match.rule(), std::to_string(place), part); break;
      case ClassMapMatch::Kind::acl: addList(match, part); break;
      case ClassMapMatch::Kind::classMap: part = nested(match.name()); break;
      }
    }
    reading_.erase(classMap.name());
    return condition;
  }

  Condition nested(Kor::Name const& name) {
    auto const map = lab_.classMaps()->classMapConfig(name);
    return map && map->currentSubConfig() ? conditionOf(*map->currentSubConfig()) : Condition();
  }

  void addList(ClassMapMatch const& match, Condition& part) {
    if (match.option() != classifier_.space().option) {
      return;
    }
    if (match.option() == ClassMapMatchOption::ipv4) {
      addRules(lab_.acls()->ipAcl(match.name()), match.name(), part);
    } else {
      addRules(lab_.acls()->ip6Acl(match.name()), match.name(), part);
    }
  }
  template <class List>
  void addRules(List const& list, Kor::Name const& name, Condition& part) {
    std::map<std::uint32_t, Acl::AnyRule> rules;  // by number
    if (list) {
      for (auto const& entry : list->ruleIteratorConst()) {
        rules.emplace(entry.key(), entry.value());
      }
    }
    for (auto const& [number, rule] : rules) {
      add(rule, name.stdString() + " " + std::to_string(number), part);
    }
  }

  void add(Acl::AnyRule const& rule, std::string name, Condition& part) {
    bool const permits = std::visit([](auto const& some) { return some.permit(); }, rule);
    for (Box const& box : boxesOf(rule, classifier_.space())) {
      part.entries.push_back({box, classifier_.lines.size(), permits});
    }
    classifier_.lines.push_back({treatment_, std::move(name), textOf(rule), permits});
  }

  Lab const& lab_;
  Classifier classifier_;
  Treatment treatment_;          // of the class that is being read
  std::set<Kor::Name> reading_;  // class-maps
};

}  // namespace

Classifier configured(Lab const& lab, Kor::Name const& policyMap, Space const& space) {
  return Reader(lab, space).read(policyMap);
}

}  // namespace PolicyMapPackets
