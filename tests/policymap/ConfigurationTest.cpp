// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"
#include "policymap/PolicyBench.h"
#include "support/Instances.h"
#include "support/Watcher.h"

#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeConfig.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassAction;
using PolicyMap::ClassMapConfig;
using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchType;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::ClassMapTypeConfig;
using PolicyMap::PolicyMapConfig;
using PolicyMap::PolicyMapSubConfig;
using PolicyMap::PolicyMapTypeConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;
using TestSupport::Watcher;

class MatchWatcher : public Watcher<ClassMapSubConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onMatchType() override { heard("matchType"); }
  void onMatch(std::uint32_t place) override { heard("match " + std::to_string(place)); }
};
class ClassMapWatcher : public Watcher<ClassMapConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onCurrentSubConfig() override { heard("currentSubConfig"); }
};
class ClassMapsWatcher : public Watcher<ClassMapTypeConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onClassMapConfig(Kor::Name const& name) override { heard("classMapConfig " + text(name)); }
};
class ClassActionWatcher : public Watcher<ClassAction::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onAction(ActionType type) override { heard("action " + text(type)); }
};
class SubConfigWatcher : public Watcher<PolicyMapSubConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onClassPrio(Kor::Name const& name) override { heard("classPrio " + text(name)); }
  void onPrioClass(std::uint32_t prio) override { heard("prioClass " + std::to_string(prio)); }
  void onClassAction(Kor::Name const& name) override { heard("classAction " + text(name)); }
  void onRawClassMap(Kor::Name const& name) override { heard("rawClassMap " + text(name)); }
};
class PolicyMapWatcher : public Watcher<PolicyMapConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onCurrentSubConfig() override { heard("currentSubConfig"); }
};
class PoliciesWatcher : public Watcher<PolicyMapTypeConfig::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onPolicyMapConfig(Kor::Name const& name) override { heard("policyMapConfig " + text(name)); }
  void onServicePolicy(PolicyMap::ServicePolicyKey const& key) override {
    heard("servicePolicy " + text(key.intf()) + " " + text(key.direction()));
  }
};

// The identifiers that an entity logs.
class LogIds : public Kor::AttributeLogReader {
 public:
  explicit LogIds(Kor::Entity const& entity) { notifierIs(&entity); }
  void onAttribute(Kor::Entity const& /*entity*/, Kor::AttributeId id) override {
    ids.push_back(id);
  }
  std::vector<Kor::AttributeId> ids;
};

ClassMapMatch ipList(char const* name) {
  return ClassMapMatch::acl(ClassMapMatchOption::ipv4, name);
}

// One match of a class-map

TEST(Match, SaysOfWhatKindItIs) {
  auto const list = ClassMapMatch::acl(ClassMapMatchOption::ipv6, "web");
  EXPECT_EQ(list.kind(), ClassMapMatch::Kind::acl);
  EXPECT_EQ(list.option(), ClassMapMatchOption::ipv6);
  EXPECT_EQ(list.name(), "web");
  EXPECT_EQ(ClassMapMatch::classMap("inner").kind(), ClassMapMatch::Kind::classMap);
  EXPECT_EQ(ClassMapMatch::rule(Acl::IpRuleConfig()).option(), ClassMapMatchOption::ipv4);
  EXPECT_EQ(ClassMapMatch::rule(Acl::Ip6RuleConfig()).option(), ClassMapMatchOption::ipv6);
  EXPECT_EQ(ClassMapMatch::rule(Acl::MacRuleConfig()).option(), ClassMapMatchOption::mac);
  EXPECT_EQ(ClassMapMatch::rule(Acl::MacRuleConfig(), ClassMapMatchOption::mpls).option(),
            ClassMapMatchOption::mpls);
}

TEST(Match, ComparesKindOptionNameAndRule) {
  EXPECT_EQ(ipList("a"), ipList("a"));
  EXPECT_NE(ipList("a"), ipList("b"));
  EXPECT_NE(ipList("a"), ClassMapMatch::acl(ClassMapMatchOption::mac, "a"));
  EXPECT_NE(ipList("a"), ClassMapMatch::classMap("a"));
  Acl::IpRuleConfig rule;
  rule.protocolIs(6);
  EXPECT_NE(ClassMapMatch::rule(rule), ClassMapMatch::rule(Acl::IpRuleConfig()));
  EXPECT_TRUE(!ClassMapMatch());
  EXPECT_FALSE(!ipList("a"));
}

// Class-maps

TEST(ClassMaps, EachChangeOfMatchesIsAnnouncedOnce) {
  auto const subConfig = Kor::make<ClassMapSubConfig>("c");
  Journal journal;
  auto const watcher = Kor::make<MatchWatcher>(journal, "w", subConfig.get());
  LogIds const log(*subConfig);
  subConfig->matchIs(1, ipList("a"));
  subConfig->matchIs(1, ipList("a"));
  subConfig->matchIs(1, ipList("b"));
  subConfig->matchDel(7);
  subConfig->matchDel(1);
  subConfig->matchTypeIs(ClassMapMatchType::matchAny);
  subConfig->matchTypeIs(ClassMapMatchType::matchAll);
  EXPECT_THAT(journal, ElementsAre("w: match 1", "w: match 1", "w: match 1", "w: matchType"));
  EXPECT_THAT(log.ids, ElementsAre(ClassMapSubConfig::matchId, ClassMapSubConfig::matchId,
                                   ClassMapSubConfig::matchId, ClassMapSubConfig::matchTypeId));
}

TEST(ClassMaps, ASubConfigurationIsEditedFreelyUntilItIsTheCurrentOne) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  Journal journal;
  auto const config = all->classMapConfigIs("c");
  auto const watcher = Kor::make<ClassMapsWatcher>(journal, "all", all.get());
  auto const subConfig = Kor::make<ClassMapSubConfig>("c");
  subConfig->matchIs(1, ipList("a"));
  EXPECT_THAT(journal, IsEmpty());
  config->currentSubConfigIs(subConfig);
  EXPECT_THAT(journal, ElementsAre("all: classMapConfig c"));
  subConfig->matchIs(2, ipList("b"));
  EXPECT_THAT(journal, ElementsAre("all: classMapConfig c", "all: classMapConfig c"));
}

TEST(ClassMaps, ASubConfigurationThatIsNoLongerCurrentIsNotHeard) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  auto const config = all->classMapConfigIs("c");
  auto const first = Kor::make<ClassMapSubConfig>("c");
  config->currentSubConfigIs(first);
  config->currentSubConfigIs(Kor::make<ClassMapSubConfig>("c"));
  Journal journal;
  auto const watcher = Kor::make<ClassMapsWatcher>(journal, "all", all.get());
  first->matchIs(1, ipList("a"));
  EXPECT_THAT(journal, IsEmpty());
  config->currentSubConfig()->matchIs(1, ipList("a"));
  EXPECT_EQ(journal.size(), 1U);
  config->currentSubConfigIs(nullptr);
  EXPECT_EQ(journal.size(), 2U);
}

TEST(ClassMaps, TheSameSubConfigurationAgainIsNoChange) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  auto const config = all->classMapConfigIs("c");
  config->currentSubConfigIs(Kor::make<ClassMapSubConfig>("c"));
  Journal journal;
  auto const watcher = Kor::make<ClassMapWatcher>(journal, "c", config.get());
  auto const watcherOfAll = Kor::make<ClassMapsWatcher>(journal, "all", all.get());
  config->currentSubConfigIs(Kor::Ptr<ClassMapSubConfig>(config->currentSubConfig()));
  EXPECT_THAT(journal, IsEmpty());
  config->currentSubConfigIs(nullptr);
  EXPECT_THAT(journal, ElementsAre("c: currentSubConfig", "all: classMapConfig c"));
}

TEST(ClassMaps, ComingAndGoingIsAnnouncedOnce) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  Journal journal;
  auto const watcher = Kor::make<ClassMapsWatcher>(journal, "all", all.get());
  auto const config = all->classMapConfigIs("c");
  EXPECT_EQ(all->classMapConfigIs("c"), config);
  EXPECT_EQ(all->classMapConfigDel("c"), config);
  EXPECT_FALSE(all->classMapConfigDel("c"));
  EXPECT_THAT(journal, ElementsAre("all: classMapConfig c", "all: classMapConfig c"));
}

TEST(ClassMaps, OneThatWasRemovedTellsItsFormerOwnerNothing) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  auto const config = all->classMapConfigIs("c");
  all->classMapConfigDel("c");
  Journal journal;
  auto const watcher = Kor::make<ClassMapsWatcher>(journal, "all", all.get());
  config->currentSubConfigIs(Kor::make<ClassMapSubConfig>("c"));
  config->currentSubConfig()->matchIs(1, ipList("a"));
  EXPECT_THAT(journal, IsEmpty());
}

TEST(ClassMaps, OneThatOutlivesItsOwnerIsEditedInPeace) {
  auto all = Kor::make<ClassMapTypeConfig>();
  auto const kept = all->classMapConfigIs("c");
  kept->currentSubConfigIs(Kor::make<ClassMapSubConfig>("c"));
  all = nullptr;
  kept->currentSubConfig()->matchIs(1, ipList("a"));
  kept->currentSubConfigIs(nullptr);
  EXPECT_FALSE(kept->currentSubConfig());
}

TEST(ClassMaps, ASubConfigurationThatOutlivesItsClassMapIsEditedInPeace) {
  auto const subConfig = Kor::make<ClassMapSubConfig>("c");
  {
    auto const all = Kor::make<ClassMapTypeConfig>();
    all->classMapConfigIs("c")->currentSubConfigIs(subConfig);
  }
  subConfig->matchIs(1, ipList("a"));
  EXPECT_EQ(subConfig->matchs(), 1U);
}

TEST(ClassMaps, AHookMayDropTheClassMapThatIsBeingWritten) {
  auto const all = Kor::make<ClassMapTypeConfig>();
  Journal journal;
  auto const watcher = Kor::make<ClassMapWatcher>(journal, "c", all->classMapConfigIs("c").get());
  watcher->reactionIs([&] { all->classMapConfigDel("c"); });
  auto const subConfig = Kor::make<ClassMapSubConfig>("c");
  // Uncounted on purpose: the collection holds the only reference.
  ClassMapConfig* const written = all->classMapConfig("c").get();
  written->currentSubConfigIs(subConfig);
  EXPECT_THAT(journal, ElementsAre("c: currentSubConfig"));
  EXPECT_EQ(all->classMapConfigs(), 0U);
}

// Policy-maps

TEST(PolicyMaps, TheActionsOfAClassAreAnnouncedByKind) {
  auto const actions = Kor::make<ClassAction>("c");
  Journal journal;
  auto const watcher = Kor::make<ClassActionWatcher>(journal, "a", actions.get());
  auto const first = Kor::make<NumberAction>("c", 1);
  actions->actionIs(ActionType{1}, first);
  actions->actionIs(ActionType{1}, first);
  actions->actionIs(ActionType{1}, Kor::make<NumberAction>("c", 1));
  first->numberIs(3);
  EXPECT_EQ(actions->actionDel(ActionType{2}), nullptr);
  actions->actionDel(ActionType{1});
  EXPECT_EQ(actions->action(ActionType{1}), nullptr);
  EXPECT_THAT(journal, ElementsAre("a: action 1", "a: action 1", "a: action 1"));
}

TEST(PolicyMaps, ThePrioritiesOfClassesAreFollowedByTheClassesOfPriorities) {
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  subConfig->classPrioIs("a", 10);
  subConfig->classPrioIs("b", 20);
  EXPECT_EQ(subConfig->prioClass(10), "a");
  EXPECT_EQ(subConfig->prioClass(20), "b");
  subConfig->classPrioIs("a", 30);
  EXPECT_FALSE(subConfig->korPrioClass(10));
  EXPECT_EQ(subConfig->prioClass(30), "a");
  subConfig->classPrioDel("b");
  EXPECT_FALSE(subConfig->korPrioClass(20));
  subConfig->classPrioDelAll();
  EXPECT_EQ(subConfig->prioClasss(), 0U);
}

TEST(PolicyMaps, OfTwoClassesAtOnePriorityTheOneWrittenLastIsFound) {
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  subConfig->classPrioIs("a", 10);
  subConfig->classPrioIs("b", 10);
  EXPECT_EQ(subConfig->prioClass(10), "b");
  subConfig->classPrioIs("a", 5);
  EXPECT_EQ(subConfig->prioClass(10), "b") << "the one that leaves was not the one found";
  EXPECT_EQ(subConfig->prioClass(5), "a");
}

TEST(PolicyMaps, ClassesOrderByPriorityThenName) {
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  subConfig->classPrioIs("b", 10);
  subConfig->classPrioIs("z", 5);
  subConfig->classPrioIs("a", 10);
  subConfig->classPrioIs("c", 4000000000U);
  EXPECT_THAT(subConfig->classesInOrder(), ElementsAre("z", "a", "b", "c"));
  EXPECT_THAT(subConfig->classesInOrder({"b", "no-class", "z", "a"}), ElementsAre("z", "a", "b"));
  EXPECT_THAT(subConfig->classesInOrder({}), IsEmpty());
}

TEST(PolicyMaps, EachChangeOfClassesIsAnnouncedOnce) {
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  Journal journal;
  auto const watcher = Kor::make<SubConfigWatcher>(journal, "s", subConfig.get());
  subConfig->classPrioIs("a", 10);
  EXPECT_THAT(std::exchange(journal, {}), ElementsAre("s: prioClass 10", "s: classPrio a"));
  subConfig->classPrioIs("a", 10);
  EXPECT_THAT(journal, IsEmpty());
  subConfig->classPrioIs("a", 20);
  EXPECT_THAT(std::exchange(journal, {}),
              ElementsAre("s: prioClass 10", "s: prioClass 20", "s: classPrio a"));
  subConfig->classPrioDel("a");
  EXPECT_THAT(std::exchange(journal, {}), ElementsAre("s: prioClass 20", "s: classPrio a"));
  auto const actions = subConfig->classActionIs("a");
  subConfig->classActionIs("a");
  actions->actionIs(ActionType{1}, Kor::make<NumberAction>("a", 1));
  subConfig->classActionDel("a");
  EXPECT_THAT(std::exchange(journal, {}), ElementsAre("s: classAction a", "s: classAction a"));
  auto const raw = Kor::make<ClassMapSubConfig>("a");
  subConfig->rawClassMapIs("a", raw);
  raw->matchIs(1, ipList("x"));
  subConfig->rawClassMapDel("a");
  EXPECT_THAT(std::exchange(journal, {}), ElementsAre("s: rawClassMap a", "s: rawClassMap a"));
}

TEST(PolicyMaps, EveryStoredChangeReachesTheAttributeLog) {
  auto const subConfig = Kor::make<PolicyMapSubConfig>("pm");
  LogIds const log(*subConfig);
  subConfig->classPrioIs("a", 10);
  subConfig->classActionIs("a");
  subConfig->rawClassMapIs("a", Kor::make<ClassMapSubConfig>("a"));
  EXPECT_THAT(log.ids,
              ElementsAre(PolicyMapSubConfig::prioClassId, PolicyMapSubConfig::classPrioId,
                          PolicyMapSubConfig::classActionId, PolicyMapSubConfig::rawClassMapId));
}

TEST(PolicyMaps, AHookMayDropTheSubConfigurationThatIsBeingWritten) {
  auto const config = Kor::make<PolicyMapConfig>("pm");
  config->currentSubConfigIs(Kor::make<PolicyMapSubConfig>("pm"));
  PolicyMapSubConfig* const written = config->currentSubConfig().get();
  Journal journal;
  auto const watcher = Kor::make<SubConfigWatcher>(journal, "s", written);
  written->classPrioIs("a", 10);
  watcher->reactionIs([&] { config->currentSubConfigIs(nullptr); });
  written->classPrioIs("a", 20);
  EXPECT_FALSE(config->currentSubConfig());
}

TEST(PolicyMaps, TheCurrentSubConfigurationIsAnnouncedWhenAnotherOneTakesOver) {
  auto const config = Kor::make<PolicyMapConfig>("pm");
  Journal journal;
  auto const watcher = Kor::make<PolicyMapWatcher>(journal, "pm", config.get());
  LogIds const log(*config);
  auto const first = Kor::make<PolicyMapSubConfig>("pm");
  config->currentSubConfigIs(first);
  config->currentSubConfigIs(first);
  first->classPrioIs("a", 10);
  config->currentSubConfigIs(nullptr);
  EXPECT_THAT(journal, ElementsAre("pm: currentSubConfig", "pm: currentSubConfig"));
  EXPECT_EQ(log.ids.size(), 2U);
}

TEST(PolicyMaps, PolicyMapsAndAttachmentsAreAnnouncedOnce) {
  auto const all = Kor::make<PolicyMapTypeConfig>();
  Journal journal;
  auto const watcher = Kor::make<PoliciesWatcher>(journal, "all", all.get());
  auto const config = all->policyMapConfigIs("pm");
  EXPECT_EQ(all->policyMapConfigIs("pm"), config);
  config->currentSubConfigIs(Kor::make<PolicyMapSubConfig>("pm"));
  all->servicePolicyIs({intf("Ethernet1"), "input"}, "pm");
  all->servicePolicyIs({intf("Ethernet1"), "input"}, "pm");
  all->servicePolicyIs({intf("Ethernet1"), "input"}, "other");
  EXPECT_EQ(all->servicePolicyDel({intf("Ethernet1"), "output"}), "");
  EXPECT_EQ(all->servicePolicyDel({intf("Ethernet1"), "input"}), "other");
  all->policyMapConfigDel("pm");
  EXPECT_THAT(journal,
              ElementsAre("all: policyMapConfig pm", "all: servicePolicy Ethernet1 input",
                          "all: servicePolicy Ethernet1 input",
                          "all: servicePolicy Ethernet1 input", "all: policyMapConfig pm"));
}

// Actions

TEST(Actions, NameTheirAttributes) {
  NumberAction const action("web", 7);
  EXPECT_EQ(action.className(), "web");
  EXPECT_EQ(action.name(), "web");
  EXPECT_EQ(action.actionType(), ActionType{7});
  EXPECT_EQ(action.attributeString(258), "className");
  EXPECT_EQ(action.attributeString(259), "actionType");
  EXPECT_EQ(action.attributeString(260), "id");
  EXPECT_EQ(action.attributeString(261), "equalTo");
  EXPECT_EQ(action.attributeString(130), "name");
  EXPECT_EQ(action.attributeString(386), "unknown");
  EXPECT_EQ(action.attributeString(0), "unknown");
}

TEST(Actions, EqualOnlyThemselvesUnlessTheySayOtherwise) {
  auto const action = Kor::make<NumberAction>("web", 7);
  EXPECT_TRUE(action->equalTo(Kor::Ptr<PolicyMap::Action const>(action)));
  EXPECT_FALSE(
      action->equalTo(Kor::Ptr<PolicyMap::Action const>(Kor::make<NumberAction>("web", 7))));
  EXPECT_FALSE(action->equalTo(nullptr));
}

TEST(Attachment, InAnotherDirectionIsRefused) {
  auto const config = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Vorel::IntfId const where(Kor::String8("Ethernet1"));
  for (char const* const direction : {"both", "Input", "input ", ""}) {
    PolicyMap::ServicePolicyKey const key(where, direction);
    EXPECT_THROW(config->servicePolicyIs(key, "pm"), Kor::RangeException) << direction;
    EXPECT_THROW(config->newServicePolicy(key, "pm"), Kor::RangeException) << direction;
  }
  EXPECT_EQ(config->servicePolicys(), 0U);
  config->servicePolicyIs({where, "output"}, "pm");
  config->servicePolicyIs({where, "input"}, "pm");
  EXPECT_EQ(config->servicePolicys(), 2U);
}

TEST(Attachment, InAnotherDirectionIsNamed) {
  auto const config = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  try {
    config->servicePolicyIs({Vorel::IntfId(Kor::String8("Ethernet1")), "both"}, "pm");
    FAIL();
  } catch (Kor::RangeException const& exception) {
    EXPECT_STREQ(exception.what(),
                 "ServicePolicyKey::direction 'both' not allowed, must be 'input' or 'output'");
  }
}

}  // namespace
}  // namespace policymap
