// SPDX-License-Identifier: Apache-2.0
#include "packets/configuration/ConfiguredPolicy.h"

#include "machines/TestAction.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSubConfig;
using Kind = MatchTree::Kind;

// Class-maps that are nested several times are read as often.
constexpr std::size_t mostNested = 100000;

bool hasRules(MatchTree const& tree) {
  return !tree.rules.empty() || std::any_of(tree.parts.begin(), tree.parts.end(),
                                            [](MatchTree const& part) { return hasRules(part); });
}

// Reads the matches of one class.
class ClassReader {
 public:
  ClassReader(ConfigurationObjects const& objects, ClassMapMatchOption option, Kor::Name className)
      : objects_(objects), option_(option), className_(std::move(className)) {}

  [[nodiscard]] bool tooLarge() const { return nested_ > mostNested; }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
  MatchTree read(ClassMapSubConfig const& classMap) {
    bool const isAny = classMap.matchType() != PolicyMap::ClassMapMatchType::matchAll;
    MatchTree tree{isAny ? Kind::any : Kind::all};
    std::map<std::uint32_t, ClassMapMatch> matches;
    for (auto const& entry : classMap.matchIteratorConst()) {
      matches.emplace(entry.key(), entry.value());
    }
    std::optional<std::size_t> own;  // the part with the last rules of the class-map itself
    for (auto const& [place, match] : matches) {
      if (match.kind() != ClassMapMatch::Kind::rule) {
        own.reset();
        tree.parts.push_back(match.kind() == ClassMapMatch::Kind::acl ? list(match)
                                                                      : nested(match.name()));
        continue;
      }
      if (match.option() != option_ && isAny) {
        continue;
      }
      // In a match-any class-map rules that follow each other are one list.
      if (!own || !isAny) {
        own = tree.parts.size();
        tree.parts.push_back({Kind::list});
      }
      if (match.option() == option_) {
        tree.parts[*own].rules.push_back({className_, Kor::Name(), place, match.rule()});
      }
    }
    return tree;
  }

 private:
  // Of another option: no packet.
  MatchTree list(ClassMapMatch const& match) const {
    MatchTree tree{Kind::list};
    if (match.option() != option_ || !objects_.acls) {
      return tree;
    }
    switch (option_) {
    case ClassMapMatchOption::ipv4: add(objects_.acls->ipAcl(match.name()), tree); break;
    case ClassMapMatchOption::ipv6: add(objects_.acls->ip6Acl(match.name()), tree); break;
    case ClassMapMatchOption::mac:
    case ClassMapMatchOption::mpls: add(objects_.acls->macAcl(match.name()), tree); break;
    }
    return tree;
  }
  template <class ListPtr>
  void add(ListPtr const& list, MatchTree& tree) const {
    if (!list) {
      return;
    }
    for (auto const& entry : list->ruleIteratorConst()) {
      tree.rules.push_back({className_, list->name(), entry.key(), entry.value()});
    }
    std::sort(tree.rules.begin(), tree.rules.end(),
              [](ConfiguredRule const& a, ConfiguredRule const& b) { return a.seqno < b.seqno; });
  }

  // A class-map that contains itself adds no packet.
  // NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
  MatchTree nested(Kor::Name const& name) {
    auto const config = objects_.classMaps ? objects_.classMaps->classMapConfig(name) : nullptr;
    if (!config || !config->currentSubConfig() || ++nested_ > mostNested ||
        !path_.insert(name).second) {
      return {};
    }
    MatchTree tree = read(*config->currentSubConfig());
    path_.erase(name);
    return tree;
  }

  ConfigurationObjects const& objects_;
  ClassMapMatchOption option_;
  Kor::Name className_;
  std::set<Kor::Name> path_;
  std::size_t nested_ = 0;
};

Kor::Ptr<ClassMapSubConfig const> matchesOf(ConfigurationObjects const& objects,
                                            PolicyMap::PolicyMapSubConfig const& policy,
                                            Kor::Name const& name) {
  if (auto const known = objects.classMaps ? objects.classMaps->classMapConfig(name) : nullptr) {
    return known->currentSubConfig();
  }
  return policy.rawClassMap(name);
}

Treatment treatmentOf(PolicyMap::PolicyMapSubConfig const& policy, Kor::Name const& name) {
  Treatment treatment{name.stdString(), {}};
  auto const actions = policy.classAction(name);
  if (!actions) {
    return treatment;
  }
#define POLICYMAPTEST_ROW(kind)                                                               \
  if (auto const action = actions->action(PolicyMapTest::TestAction##kind::testActionType)) { \
    if (auto const known = action.as<PolicyMapTest::TestAction##kind>()) {                    \
      treatment.actions[(kind)-1] = known->value();                                           \
    }                                                                                         \
  }
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  return treatment;
}

}  // namespace

bool ConfiguredPolicy::hasRules() const {
  return std::any_of(classes.begin(), classes.end(), [](ConfiguredClass const& each) {
    return PolicyMapPackets::hasRules(each.match);
  });
}

ConfiguredPolicy configuredPolicy(ConfigurationObjects const& objects, std::string_view policyMap,
                                  ClassMapMatchOption option) {
  ConfiguredPolicy result;
  auto const config =
      objects.policyMaps ? objects.policyMaps->policyMapConfig(Kor::Name(policyMap)) : nullptr;
  auto const policy = config ? config->currentSubConfig() : nullptr;
  if (!policy) {
    return result;
  }
  for (Kor::Name const& name : policy->classesInOrder()) {
    ConfiguredClass each{treatmentOf(*policy, name), {}};
    if (auto const matches = matchesOf(objects, *policy, name)) {
      ClassReader reader(objects, option, name);
      each.match = reader.read(*matches);
      result.tooLarge = result.tooLarge || reader.tooLarge();
    }
    result.classes.push_back(std::move(each));
  }
  return result;
}

}  // namespace PolicyMapPackets
