// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/PolicyMapSubConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::PolicyMapConfig;
using PolicyMap::PolicyMapSubConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

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

}  // namespace
}  // namespace policymap
