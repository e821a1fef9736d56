// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/ClassMapStatus.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapStatus;
using testing::ElementsAre;
using TestSupport::Journal;
using TestSupport::Watcher;

class ClassStatusWatcher : public Watcher<ClassMapStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onError() override { heard("error"); }
};

TEST(Status, OfAClassAnnouncesAnotherErrorOnly) {
  auto const status = Kor::make<ClassMapStatus>("c");
  Journal journal;
  auto const watcher = Kor::make<ClassStatusWatcher>(journal, "w", status.get());
  status->errorIs("");
  status->errorIs("no list");
  status->errorIs("no list");
  status->errorIs("");
  EXPECT_THAT(journal, ElementsAre("w: error", "w: error"));
}

}  // namespace
}  // namespace policymap
