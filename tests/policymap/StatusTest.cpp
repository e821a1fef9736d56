// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/Watcher.h"

#include <PolicyMap/PolicyMapTypeStatus.h>

#include <gmock/gmock.h>

namespace policymap {
namespace {

using PolicyMap::ClassMapStatus;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapTypeStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Journal;
using TestSupport::Watcher;

class ClassStatusWatcher : public Watcher<ClassMapStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onError() override { heard("error"); }
};
class StatusWatcher : public Watcher<PolicyMapStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onError() override { heard("error"); }
  void onProgrammed(ClassMapMatchOption option) override { heard("programmed " + text(option)); }
  void onClassMapStatus(Kor::Name const& name) override { heard("class " + text(name)); }
};
class StatusesWatcher : public Watcher<PolicyMapTypeStatus::NotifieeConst> {
 public:
  using Watcher::Watcher;
  void onPolicyMapStatus(PolicyMapSmKey const& key) override {
    heard(text(key.first()) + " " + text(key.second()));
  }
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

TEST(Status, OfAPolicyAnnouncesEachChangeOnce) {
  auto const status = Kor::make<PolicyMapStatus>(PolicyMapSmKey("pm", "input"));
  EXPECT_EQ(status->name(), "pm");
  EXPECT_EQ(status->key(), PolicyMapSmKey("pm", "input"));
  Journal journal;
  auto const watcher = Kor::make<StatusWatcher>(journal, "w", status.get());
  status->errorIs("table full");
  status->errorIs("table full");
  status->programmedIs(ClassMapMatchOption::mac, true);
  status->programmedIs(ClassMapMatchOption::mac, true);
  status->programmedDel(ClassMapMatchOption::ipv4);
  status->programmedDel(ClassMapMatchOption::mac);
  auto const classStatus = status->classMapStatusIs("c");
  classStatus->errorIs("inside");
  status->classMapStatusDel("c");
  EXPECT_THAT(journal, ElementsAre("w: error", "w: programmed mac", "w: programmed mac",
                                   "w: class c", "w: class c"));
}

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

class PublishedStatus : public testing::Test {
 protected:
  PolicyBench bench;
  PolicyMapSmKey const key{"pm", "input"};
};

TEST_F(PublishedStatus, ComesWithThePolicyAndGoesWithIt) {
  bench.simplePolicy();
  EXPECT_EQ(bench.status->policyMapStatuss(), 0U);
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  ASSERT_TRUE(status);
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
  EXPECT_FALSE(status->korProgrammed(ClassMapMatchOption::ipv6));
  EXPECT_TRUE(status->classMapStatus("c"));
  bench.detach("Ethernet1");
  bench.settle();
  EXPECT_EQ(bench.status->policyMapStatuss(), 0U);
}

TEST_F(PublishedStatus, IsOneForEachDirection) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2", "output");
  bench.start();
  bench.settle();
  EXPECT_EQ(bench.status->policyMapStatuss(), 2U);
  EXPECT_TRUE(
      bench.status->policyMapStatus({"pm", "output"})->programmed(ClassMapMatchOption::ipv4));
}

TEST_F(PublishedStatus, OfAClassComesAndGoesWithTheClass) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  bench.rule("other", 1);
  bench.classMatches("d", "other");
  bench.policy("pm")->classPrioIs("d", 20);
  bench.settle();
  EXPECT_TRUE(status->classMapStatus("d"));
  bench.policy("pm")->classPrioDel("d");
  bench.settle();
  EXPECT_FALSE(status->classMapStatus("d"));
  EXPECT_TRUE(status->classMapStatus("c"));
}

TEST_F(PublishedStatus, NamesEverythingThatAClassRefersToAndIsMissing) {
  bench.simplePolicy();
  bench.classMatches("c", "gone", 2);
  bench.classMatches("c", "gone6", 3, ClassMapMatchOption::ipv6);
  bench.classMatches("c", "goneMac", 4, ClassMapMatchOption::mac);
  bench.classMap("c")->matchIs(5, PolicyMap::ClassMapMatch::classMap("goneMap"));
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  EXPECT_EQ(status->classMapStatus("c")->error(),
            "missing ip access-list gone, missing ipv6 access-list gone6, missing mac access-list "
            "goneMac, missing class-map goneMap");
  EXPECT_EQ(status->error(), "");
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4)) << "what is there is programmed";
}

TEST_F(PublishedStatus, ChangesAreAnnouncedOnce) {
  bench.simplePolicy();
  bench.start();
  Journal journal;
  auto const watcher =
      Kor::make<StatusWatcher>(journal, "w", bench.status->policyMapStatus(key).get());
  bench.settle();
  EXPECT_EQ(std::count(journal.begin(), journal.end(), "w: programmed ipv4"), 1);
  journal.clear();
  bench.rule("acl", 20);
  bench.settle();
  EXPECT_THAT(journal, IsEmpty()) << "it stood before and stands again";
}

TEST_F(PublishedStatus, WithoutAStatusObjectNothingIsPublished) {
  bench.simplePolicy();
  bench.status = nullptr;
  bench.start();
  EXPECT_EQ(bench.settle().size(), 5U);
  auto const machine = bench.machine->policyMapSm(key);
  ASSERT_TRUE(machine);
  EXPECT_FALSE(machine->status());
}

}  // namespace
}  // namespace policymap
