// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/ClassMapTypeConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapSubConfig;
using PolicyMap::ClassMapTypeConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;

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

}  // namespace
}  // namespace policymap
