// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/ClassMapConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapConfig;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::ClassMapTypeConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

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
  // Not counted on purpose: the collection holds the only reference.
  ClassMapConfig* const written = all->classMapConfig("c").get();
  written->currentSubConfigIs(subConfig);
  EXPECT_THAT(journal, ElementsAre("c: currentSubConfig"));
  EXPECT_EQ(all->classMapConfigs(), 0U);
}

}  // namespace
}  // namespace policymap
