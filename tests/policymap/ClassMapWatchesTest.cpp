// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/ClassMapWatches.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapTypeConfig;
using PolicyMap::ClassMapWatches;
using PolicyMap::DependencyKind;
using PolicyMap::PolicyMapGlobalData;
using testing::ElementsAre;
using testing::IsEmpty;

class ClassMapWatching : public testing::Test {
 protected:
  Kor::Ptr<ClassMapTypeConfig> classMaps = Kor::make<ClassMapTypeConfig>();
  Kor::Ptr<PolicyMapGlobalData> global =
      Kor::make<PolicyMapGlobalData>(Kor::make<Acl::Config>(), classMaps);
  std::vector<std::string> told;
  ClassMapWatches watches{global, [this](Kor::Name const& name) { told.push_back(text(name)); }};

  ClassMapWatching() {
    watches.classTypeConfigIs(classMaps);
    watches.hasNotificationActiveIs(true);
  }
  void indexTells(char const* name) const {
    global->dependencies().changed(DependencyKind::classMap, name);
  }
};

TEST_F(ClassMapWatching, WithoutAServiceMachineTellOfEveryClassMap) {
  classMaps->classMapConfigIs("a");
  classMaps->classMapConfigDel("a");
  EXPECT_THAT(told, ElementsAre("a", "a"));
}

TEST_F(ClassMapWatching, BelowAServiceMachineTellOfTheWatchedNamesAlone) {
  watches.attachedIs(true);
  watches.watch("a");
  classMaps->classMapConfigIs("a");
  EXPECT_THAT(told, IsEmpty()) << "the service machine feeds the index";
  indexTells("a");
  indexTells("b");
  EXPECT_THAT(told, ElementsAre("a"));
  watches.attachedIs(false);
  classMaps->classMapConfigIs("b");
  EXPECT_THAT(told, ElementsAre("a", "b"));
}

TEST_F(ClassMapWatching, BelowAServiceMachineListenToClassMapsThatTheIndexDoesNotKnow) {
  watches.attachedIs(true);
  auto const others = Kor::make<ClassMapTypeConfig>();
  watches.classTypeConfigIs(others);
  others->classMapConfigIs("a");
  EXPECT_THAT(told, ElementsAre("a"));
}

TEST_F(ClassMapWatching, WithoutGlobalDataListenBelowAServiceMachineToo) {
  watches.hasNotificationActiveIs(false);
  ClassMapWatches alone{nullptr, [this](Kor::Name const& name) { told.push_back(text(name)); }};
  alone.classTypeConfigIs(classMaps);
  alone.hasNotificationActiveIs(true);
  alone.attachedIs(true);
  alone.watch("a");
  classMaps->classMapConfigIs("a");
  EXPECT_THAT(told, ElementsAre("a"));
  alone.unwatch("a");
}

TEST_F(ClassMapWatching, AreQuietUntilNotificationsAreOn) {
  ClassMapWatches fresh{nullptr, [this](Kor::Name const& name) { told.push_back(text(name)); }};
  watches.hasNotificationActiveIs(false);
  fresh.classTypeConfigIs(classMaps);
  classMaps->classMapConfigIs("a");
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(ClassMapWatching, ANameThatIsWatchedTwiceIsToldOnceAndForgottenAtOnce) {
  watches.watch("a");
  watches.watch("a");
  indexTells("a");
  EXPECT_THAT(told, ElementsAre("a"));
  watches.unwatch("a");
  watches.unwatch("a");
  indexTells("a");
  EXPECT_THAT(told, ElementsAre("a"));
}

TEST_F(ClassMapWatching, ANameMayBeUnwatchedWhenItIsToldOf) {
  int calls = 0;
  ClassMapWatches once{global, [&](Kor::Name const& name) {
                         ++calls;
                         once.unwatch(name);
                       }};
  once.watch("a");
  indexTells("a");
  indexTells("a");
  EXPECT_EQ(calls, 1);
}

TEST_F(ClassMapWatching, AreQuietWhileNotificationsAreOffAndAsZombies) {
  watches.hasNotificationActiveIs(false);
  classMaps->classMapConfigIs("a");
  watches.hasNotificationActiveIs(true);
  watches.korDoZombieReactors(true);
  classMaps->classMapConfigIs("b");
  EXPECT_THAT(told, IsEmpty());
  watches.korDoZombieReactors(false);
  classMaps->classMapConfigIs("c");
  EXPECT_THAT(told, ElementsAre("c"));
}

TEST_F(ClassMapWatching, FindTheClassMapsThatExist) {
  auto const a = classMaps->classMapConfigIs("a");
  EXPECT_EQ(watches.classMapConfig("a"), a);
  EXPECT_FALSE(watches.classMapConfig("b"));
  watches.classTypeConfigIs(nullptr);
  EXPECT_FALSE(watches.classMapConfig("a"));
}

}  // namespace
}  // namespace policymap
