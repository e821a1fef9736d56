// SPDX-License-Identifier: Apache-2.0
#include "policymap/ConfigurationWatchers.h"
#include "policymap/PolicyBench.h"

#include <PolicyMap/ClassAction.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ActionType;
using PolicyMap::ClassAction;
using testing::ElementsAre;
using TestSupport::Journal;

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

}  // namespace
}  // namespace policymap
