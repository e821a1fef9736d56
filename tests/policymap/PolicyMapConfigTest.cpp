// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/PolicyMapConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapConfig;
using PolicyMap::PolicyMapSubConfig;
using testing::ElementsAre;
using TestSupport::Journal;

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

}  // namespace
}  // namespace policymap
