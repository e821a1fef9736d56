// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/Configuration.h"

#include "machines/TestAction.h"
#include "testkit/config/EffectiveClasses.h"

#include <Zub/UniqueId.h>

#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

// Iterates over two ordered maps in parallel: calls visit(key, before, after), null if missing.
template <class Map, class Visit>
void walkBoth(Map const& before, Map const& after, Visit visit) {
  auto was = before.begin();
  auto is = after.begin();
  while (was != before.end() || is != after.end()) {
    if (is == after.end() || (was != before.end() && was->first < is->first)) {
      visit(was->first, &was->second, nullptr);
      ++was;
    } else if (was == before.end() || is->first < was->first) {
      visit(is->first, nullptr, &is->second);
      ++is;
    } else {
      visit(was->first, &was->second, &is->second);
      ++was;
      ++is;
    }
  }
}

// How the configuration of access lists stores each kind of rule.
struct IpLists {
  using Rule = Acl::IpRuleConfig;
  static auto find(Acl::Config& acls, Kor::Name const& name) { return acls.ipAcl(name); }
  static auto make(Acl::Config& acls, Kor::Name const& name) { return acls.newIpAcl(name); }
  static void announce(Acl::Config& acls, Acl::IpAclConfig::Ptr const& list) {
    acls.ipAclNotify(list->name(), list);
  }
  static void remove(Acl::Config& acls, Kor::Name const& name) { acls.ipAclDel(name); }
};

struct Ip6Lists {
  using Rule = Acl::Ip6RuleConfig;
  static auto find(Acl::Config& acls, Kor::Name const& name) { return acls.ip6Acl(name); }
  static auto make(Acl::Config& acls, Kor::Name const& name) { return acls.newIp6Acl(name); }
  static void announce(Acl::Config& acls, Acl::Ip6AclConfig::Ptr const& list) {
    acls.ip6AclNotify(list->name(), list);
  }
  static void remove(Acl::Config& acls, Kor::Name const& name) { acls.ip6AclDel(name); }
};

struct MacLists {
  using Rule = Acl::MacRuleConfig;
  static auto find(Acl::Config& acls, Kor::Name const& name) { return acls.macAcl(name); }
  static auto make(Acl::Config& acls, Kor::Name const& name) { return acls.newMacAcl(name); }
  static void announce(Acl::Config& acls, Acl::MacAclConfig::Ptr const& list) {
    acls.macAclNotify(list->name(), list);
  }
  static void remove(Acl::Config& acls, Kor::Name const& name) { acls.macAclDel(name); }
};

// Null for a remark: remarks are not part of the configuration.
template <class Rule>
Rule const* ruleOf(ListEntry const* entry) {
  if (entry == nullptr || std::holds_alternative<Remark>(*entry)) {
    return nullptr;
  }
  return &std::get<Rule>(std::get<ConfiguredRule>(*entry));
}

// Filled without notifications, then announced as a whole.
template <class Lists>
void newList(Acl::Config& acls, Kor::Name const& name, AccessList const& settings) {
  auto const list = Lists::make(acls, name);
  for (auto const& [number, entry] : settings.entries.byNumber()) {
    if (auto const* const rule = ruleOf<typename Lists::Rule>(&entry)) {
      list->newRule(number, *rule);
    }
  }
  Lists::announce(acls, list);
}

template <class Lists>
void editList(Acl::Config& acls, Kor::Name const& name, AccessList const& before,
              AccessList const& after) {
  using Rule = typename Lists::Rule;
  auto const list = Lists::find(acls, name);
  walkBoth(before.entries.byNumber(), after.entries.byNumber(),
           [&](std::uint32_t number, ListEntry const* was, ListEntry const* is) {
             Rule const* const oldRule = ruleOf<Rule>(was);
             Rule const* const newRule = ruleOf<Rule>(is);
             if (newRule == nullptr) {
               list->ruleDel(number);
             } else if (oldRule == nullptr || *oldRule != *newRule) {
               list->ruleIs(number, *newRule);
             }
           });
}

template <class Lists>
void listsOfFamilyAre(Acl::Config& acls, Settings::Lists const& before,
                      Settings::Lists const& after) {
  walkBoth(
      before, after,
      [&](std::string const& name, Shared<AccessList> const* was, Shared<AccessList> const* is) {
        if (is == nullptr) {
          Lists::remove(acls, name);
        } else if (was == nullptr) {
          newList<Lists>(acls, name, **is);
        } else if (!is->sameAs(*was)) {
          editList<Lists>(acls, name, **was, **is);
        }
      });
}

// The settings of a new class-map.
ClassMap const noMatches;

void classMapIs(PolicyMap::ClassMapSubConfig& subConfig, ClassMap const& before,
                ClassMap const& after) {
  subConfig.matchTypeIs(after.match == ClassMatch::any ? PolicyMap::ClassMapMatchType::matchAny
                                                       : PolicyMap::ClassMapMatchType::matchAll);
  using Match = PolicyMap::ClassMapMatch;
  walkBoth(before.matches.byNumber(), after.matches.byNumber(),
           [&](std::uint32_t place, Match const* was, Match const* is) {
             if (is == nullptr) {
               subConfig.matchDel(place);
             } else if (was == nullptr || *was != *is) {
               subConfig.matchIs(place, *is);
             }
           });
}

// The differences between the kinds of actions.
struct ActionKind {
  Kor::Ptr<PolicyMap::Action> (*make)(Kor::Name const& className, std::uint32_t value);
  void (*valueIs)(Kor::Ptr<PolicyMap::Action> const& action, std::uint32_t value);
};

template <class Action, auto factory>
constexpr ActionKind actionKind = {
    [](Kor::Name const& className, std::uint32_t value) -> Kor::Ptr<PolicyMap::Action> {
      Kor::Ptr<Action> const action = factory(className, Zub::UniqueId::next());
      action->valueIs(value);
      return action;
    },
    [](Kor::Ptr<PolicyMap::Action> const& action, std::uint32_t value) {
      action.as<Action>()->valueIs(value);
    }};

constexpr std::array kindsOfActions{
#define POLICYMAPTEST_ROW(kind) \
  actionKind<PolicyMapTest::TestAction##kind, PolicyMapTest::testAction##kind##Factory>,
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

void actionsAre(PolicyMap::ClassAction& classAction, ClassActions const& values) {
  for (std::size_t i = 0; i != values.size(); ++i) {
    PolicyMap::ActionType const type{static_cast<std::int32_t>(i + 1)};
    auto const action = classAction.action(type);
    if (!values[i]) {
      classAction.actionDel(type);
    } else if (action) {
      kindsOfActions[i].valueIs(action, *values[i]);
    } else {
      classAction.actionIs(type, kindsOfActions[i].make(classAction.className(), *values[i]));
    }
  }
}

// Priorities increase in tens from the first class.
void classesAre(PolicyMap::PolicyMapSubConfig& subConfig, PolicyMapSettings const& before,
                PolicyMapSettings const& after) {
  constexpr std::uint32_t step = 10;
  for (std::string const& name : before.order.names()) {
    if (after.actions.count(name) == 0) {
      subConfig.classPrioDel(name);
      subConfig.classActionDel(name);
    }
  }
  std::uint32_t priority = 0;
  for (std::string const& name : after.order.names()) {
    priority += step;
    auto const actions = after.actions.find(name);
    auto const known = before.actions.find(name);
    if (known == before.actions.end() || known->second != actions->second) {
      actionsAre(*subConfig.classActionIs(name), actions->second);
    }
    subConfig.classPrioIs(name, priority);
  }
}

}  // namespace

Configuration::Configuration()
    : acls_(Kor::make<Acl::Config>()),
      classMaps_(Kor::make<PolicyMap::ClassMapTypeConfig>("class-maps")),
      policyMaps_(Kor::make<PolicyMap::PolicyMapTypeConfig>("policy-maps")),
      lag_(Kor::make<Lag::Input::Config>()),
      ip_(Kor::make<::Ip::Status>()),
      ip6_(Kor::make<::Ip6::Status>()),
      routing_(Kor::make<::Routing::RoutingInfo>()),
      routing6_(Kor::make<::Routing6::RoutingInfo>()) {}

void Configuration::settingsAre(Settings const& settings) {
  Settings next = effects_.of(settings);
  listsAre(next);
  classMapsAre(next);
  policyMapsAre(next);
  interfacesAre(next);
  routing_->routingIs(settings.ipRouting ? *settings.ipRouting : matchesMpls(next));
  routing6_->routingIs(settings.ip6Routing);
  settings_ = settings;
  effective_ = std::move(next);
}

void Configuration::listsAre(Settings const& next) {
  Acl::Config& acls = *acls_;
  listsOfFamilyAre<IpLists>(acls, effective_.listsOf(Family::ip4), next.listsOf(Family::ip4));
  listsOfFamilyAre<Ip6Lists>(acls, effective_.listsOf(Family::ip6), next.listsOf(Family::ip6));
  listsOfFamilyAre<MacLists>(acls, effective_.listsOf(Family::mac), next.listsOf(Family::mac));
}

void Configuration::classMapsAre(Settings const& next) {
  walkBoth(effective_.classMaps, next.classMaps,
           [&](std::string const& name, Shared<ClassMap> const* was, Shared<ClassMap> const* is) {
             if (is == nullptr) {
               classMaps_->classMapConfigDel(name);
             } else if (was == nullptr) {
               auto const subConfig = Kor::make<PolicyMap::ClassMapSubConfig>(name);
               classMapIs(*subConfig, noMatches, **is);
               classMaps_->classMapConfigIs(name)->currentSubConfigIs(subConfig);
             } else if (!is->sameAs(*was)) {
               classMapIs(*classMaps_->classMapConfig(name)->currentSubConfig(), **was, **is);
             }
           });
}

void Configuration::policyMapsAre(Settings const& next) {
  using Policy = Shared<PolicyMapSettings>;
  walkBoth(effective_.policyMaps, next.policyMaps,
           [&](std::string const& name, Policy const* was, Policy const* is) {
             if (is == nullptr) {
               policyMaps_->policyMapConfigDel(name);
             } else if (was == nullptr) {
               auto const subConfig = Kor::make<PolicyMap::PolicyMapSubConfig>(name);
               classesAre(*subConfig, PolicyMapSettings(), **is);
               policyMaps_->policyMapConfigIs(name)->currentSubConfigIs(subConfig);
             } else if (!is->sameAs(*was)) {
               classesAre(*policyMaps_->policyMapConfig(name)->currentSubConfig(), **was, **is);
             }
           });
}

void Configuration::interfacesAre(Settings const& next) {
  InterfaceSettings const none;
  walkBoth(effective_.interfaces, next.interfaces,
           [&](Vorel::IntfId intf, InterfaceSettings const* was, InterfaceSettings const* is) {
             interfaceIs(intf, was == nullptr ? none : *was, is == nullptr ? none : *is);
           });
}

namespace {

// A switchport has no address; any other interface has its first one.
template <class Address, class Status>
void addressIs(Status& status, Vorel::IntfId intf, InterfaceSettings const& settings,
               InterfaceAddresses const& addresses) {
  if (addresses.empty() || settings.switchport.value_or(false)) {
    status.intfAddressDel(intf);
  } else {
    status.intfAddressIs(intf, interfaceAddress<Address>(addresses.first()));
  }
}

}  // namespace

void Configuration::interfaceIs(Vorel::IntfId intf, InterfaceSettings const& before,
                                InterfaceSettings const& after) {
  if (before == after) {
    return;
  }
  addressIs<::Ip::Address>(*ip_, intf, after, after.ip4);
  addressIs<::Ip6::Address>(*ip6_, intf, after, after.ip6);
  if (after.switchport.value_or(true)) {
    routing_->routedIntfDel(intf);
  } else {
    routing_->routedIntfIs(intf, true);
  }
  if (after.channelGroup) {
    lag_->memberOfIs(intf, Vorel::IntfId("PortChannel" + std::to_string(*after.channelGroup)));
  } else {
    lag_->memberOfDel(intf);
  }
  if (onShutdown_ && before.shutdown != after.shutdown) {
    onShutdown_(intf, after.shutdown);
  }
  for (Direction const direction : {Direction::input, Direction::output}) {
    std::string const& policyMap = after.policyMaps[static_cast<std::size_t>(direction)];
    PolicyMap::ServicePolicyKey const key(intf, toText(direction));
    if (policyMap.empty()) {
      policyMaps_->servicePolicyDel(key);
    } else {
      policyMaps_->servicePolicyIs(key, policyMap);
    }
  }
}

}  // namespace PolicyMapTestKit::Text
