// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/PolicyMapTypeConfig.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSubConfig;
using PolicyMap::PolicyMapTypeConfig;
using testing::ElementsAre;
using TestSupport::Journal;

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
