// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/ClassMapSubConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapMatchType;
using PolicyMap::ClassMapSubConfig;
using testing::ElementsAre;
using TestSupport::Journal;

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

}  // namespace
}  // namespace policymap
