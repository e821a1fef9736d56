// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/PolicyMapTypeStatus.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapTypeStatus;
using testing::ElementsAre;
using TestSupport::Journal;
using TestSupport::Watcher;

class StatusesWatcher : public Watcher<PolicyMapTypeStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onPolicyMapStatus(PolicyMapSmKey const& key) override {
    heard(text(key.first()) + " " + text(key.second()));
  }
};

TEST(Status, PoliciesComeAndGoByKey) {
  auto const all = Kor::make<PolicyMapTypeStatus>();
  Journal journal;
  auto const watcher = Kor::make<StatusesWatcher>(journal, "w", all.get());
  auto const status = all->policyMapStatusIs({"pm", "input"});
  EXPECT_EQ(all->policyMapStatusIs({"pm", "input"}), status);
  EXPECT_EQ(all->policyMapStatus({"pm", "output"}), nullptr);
  all->policyMapStatusDel({"pm", "input"});
  EXPECT_THAT(journal, ElementsAre("w: pm input", "w: pm input"));
}

}  // namespace
}  // namespace policymap
