// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "policymap/StatusWatcher.h"

#include <PolicyMap/PolicyMapTypeStatus.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::Journal;

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

TEST_F(PublishedStatus, TellsWhenAndWhereThePolicyStandsAndAllOfItOnce) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  bench.start();
  Journal journal;
  Kor::Ptr<PolicyMapStatus> const status = bench.status->policyMapStatus(key);
  auto const watcher = Kor::make<StatusWatcher>(journal, "w", status.get());
  Kor::EventLoop::global().runFor(2);
  EXPECT_THAT(journal, UnorderedElementsAre("w: programmed ipv4", "w: time of ipv4",
                                            "w: ipv4 at Ethernet1", "w: ipv4 at Ethernet2"));
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 0);
  EXPECT_EQ(status->timeProgrammeds(), 1U);
  journal.clear();
  bench.policies->policyMapConfigDel("pm");
  bench.settle();
  EXPECT_THAT(journal,
              UnorderedElementsAre("w: class c", "w: programmed ipv4", "w: time of ipv4 gone",
                                   "w: ipv4 not at Ethernet1", "w: ipv4 not at Ethernet2"))
      << "said before the status goes";
}

TEST_F(PublishedStatus, TimeOfAnOptionIsThatOfItsLastPass) {
  bench.simplePolicy();
  Acl::MacRuleConfig const mac;
  bench.acls->macAclIs("mac")->ruleIs(1, mac);
  bench.classMatches("c", "mac", 2, ClassMapMatchOption::mac);
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  Kor::EventLoop::global().runFor(5);
  bench.rule("acl", 20);
  bench.settle();
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 5);
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::mac), 0);
  Kor::EventLoop::global().runFor(5);
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 5) << "nothing was programmed";
  bench.attach("pm", "Ethernet2");
  bench.settle();
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 10);
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::mac), 10);
}

TEST_F(PublishedStatus, TimeMovesWithAnActionUpdateInPlace) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  Kor::EventLoop::global().runFor(5);
  action->numberIs(7);
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 5);
  bench.helper->answers["update"] = "busy";
  bench.helper->answers["recreate"] = "busy";
  Kor::EventLoop::global().runFor(5);
  action->numberIs(8);
  bench.settle();
  EXPECT_EQ(status->timeProgrammeds(), 0U) << "the re-creation failed too";
}

TEST_F(PublishedStatus, TimeIsThatOfTheMachine) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const machine = bench.machine->policyMapSm(key);
  auto const expectEqual = [&] {
    for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      EXPECT_EQ(bool(machine->status()->korTimeProgrammed(option)),
                bool(machine->korTimeProgrammed(option)));
      EXPECT_EQ(machine->status()->timeProgrammed(option), machine->timeProgrammed(option));
    }
  };
  expectEqual();
  Kor::EventLoop::global().runFor(3);
  bench.rule("acl", 20);
  bench.settle();
  expectEqual();
  EXPECT_EQ(machine->timeProgrammed(ClassMapMatchOption::ipv4), 3);
  bench.helper->answers["commit"] = "table full";
  bench.rule("acl", 30);
  bench.settle();
  expectEqual();
  EXPECT_EQ(machine->timeProgrammeds(), 0U);
}

TEST_F(PublishedStatus, InterfacesFollowThoseThatAreAddedAndRemoved) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  Kor::Ptr<PolicyMapStatus> const status = bench.status->policyMapStatus(key);
  Journal journal;
  auto const watcher = Kor::make<StatusWatcher>(journal, "w", status.get());
  bench.attach("pm", "Ethernet2");
  bench.detach("Ethernet1");
  bench.settle();
  EXPECT_THAT(journal, UnorderedElementsAre("w: ipv4 not at Ethernet1", "w: ipv4 at Ethernet2"));
  EXPECT_THAT(status->intfs(ClassMapMatchOption::ipv4), ElementsAre(intf("Ethernet2")));
  journal.clear();
  bench.rule("acl", 20);
  bench.settle();
  EXPECT_THAT(journal, IsEmpty()) << "a re-creation leaves the policy where it was";
}

TEST_F(PublishedStatus, OfAPolicyThatWasRolledBackHasNeitherTimeNorInterfaces) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  bench.start();
  bench.settle();
  Kor::Ptr<PolicyMapStatus> const status = bench.status->policyMapStatus(key);
  Journal journal;
  auto const watcher = Kor::make<StatusWatcher>(journal, "w", status.get());
  bench.helper->answers["commit"] = "table full";
  bench.attach("pm", "Ethernet3");
  bench.settle();
  EXPECT_THAT(journal,
              UnorderedElementsAre("w: error", "w: programmed ipv4", "w: time of ipv4 gone",
                                   "w: ipv4 not at Ethernet1", "w: ipv4 not at Ethernet2"))
      << "the third was never there to stay";
  bench.helper->answers.clear();
  Kor::EventLoop::global().runFor(1);
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 1);
  EXPECT_EQ(status->intfs(ClassMapMatchOption::ipv4).size(), 3U);
}

TEST_F(PublishedStatus, ChangesWhenThePassHasEnded) {
  bench.helper->asyncOperationsIs(true);
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  bench.helper->asyncOperationResultIs({});
  EXPECT_EQ(bench.settle(), std::vector<std::string>({"commit pm/input/ipv4"}));
  EXPECT_EQ(status->programmeds() + status->timeProgrammeds() + status->appliedIntfs(), 0U);
  Kor::EventLoop::global().runFor(2);
  bench.helper->asyncOperationResultIs({});
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 2);
  EXPECT_EQ(status->appliedIntfs(), 1U);
}

TEST_F(PublishedStatus, OfAHelperTakenAwayIsEmpty) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine->aclHelperDel();
  auto const status = bench.status->policyMapStatus(key);
  EXPECT_EQ(status->programmeds() + status->timeProgrammeds() + status->appliedIntfs(), 0U);
}

TEST_F(PublishedStatus, OfWhatAnotherMachineLeftStandingStays) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine = nullptr;
  bench.acls->ipAclDel("acl");
  Kor::EventLoop::global().runFor(5);
  bench.start();
  EXPECT_THAT(bench.settle(), IsEmpty()) << "no rules, and nothing that this machine programmed";
  auto const status = bench.status->policyMapStatus(key);
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
  EXPECT_TRUE(status->korTimeProgrammed(ClassMapMatchOption::ipv4));
  EXPECT_THAT(status->intfs(ClassMapMatchOption::ipv4), ElementsAre(intf("Ethernet1")));
  bench.rule("acl", 10);
  bench.detach("Ethernet1");
  bench.attach("pm", "Ethernet2");
  bench.settle();
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 5);
  EXPECT_THAT(status->intfs(ClassMapMatchOption::ipv4), ElementsAre(intf("Ethernet2")));
}

TEST_F(PublishedStatus, OfAClassWithoutAnyClassMapSaysSo) {
  bench.simplePolicy();
  bench.policy("pm")->classPrioIs("ghost", 20);
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  ASSERT_TRUE(status->classMapStatus("ghost"));
  EXPECT_EQ(status->classMapStatus("ghost")->error(), "missing class-map ghost");
  EXPECT_FALSE(status->classMapStatus("ghost")->programmed());
  bench.rule("ghosts", 1);
  bench.classMatches("ghost", "ghosts");
  bench.settle();
  EXPECT_EQ(status->classMapStatus("ghost")->error(), "");
  EXPECT_TRUE(status->classMapStatus("ghost")->programmed());
  bench.classes->classMapConfigDel("ghost");
  bench.settle();
  ASSERT_TRUE(status->classMapStatus("ghost"));
  EXPECT_EQ(status->classMapStatus("ghost")->error(), "missing class-map ghost");
  EXPECT_FALSE(status->classMapStatus("ghost")->programmed());
  bench.policy("pm")->classPrioDel("ghost");
  bench.settle();
  EXPECT_FALSE(status->classMapStatus("ghost"));
}

TEST_F(PublishedStatus, OfAClassWhoseClassMapCameSaysSoWithoutAHelperToo) {
  bench.simplePolicy();
  bench.policy("pm")->classPrioIs("ghost", 20);
  bench.start();
  bench.machine->aclHelperDel();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  EXPECT_EQ(status->classMapStatus("ghost")->error(), "missing class-map ghost");
  bench.classMatches("ghost", "ghosts");
  bench.settle();
  EXPECT_EQ(status->classMapStatus("ghost")->error(), "");
}

TEST_F(PublishedStatus, OfAClassThatNeverHadAClassMapGoesWithTheClass) {
  bench.simplePolicy();
  bench.policy("pm")->classPrioIs("ghost", 20);
  bench.start();
  bench.settle();
  bench.policy("pm")->classPrioDel("ghost");
  bench.settle();
  EXPECT_FALSE(bench.status->policyMapStatus(key)->classMapStatus("ghost"));
}

// Texts of failures whose option is no longer wanted.
class LeftoverText : public PublishedStatus {
 protected:
  LeftoverText() {
    bench.simplePolicy();
    bench.classMatches("c", "acl6", 2, ClassMapMatchOption::ipv6);
    bench.acls->ip6AclIs("acl6")->ruleIs(1, {});
    bench.start();
    bench.settle();
  }
  // Removes the rules of ipv6; their deletion fails with a text.
  void failToDelete() {
    bench.helper->answers["delete"] = "stuck";
    bench.classMap("c")->matchDel(2);
    bench.settle();
    bench.helper->answers.clear();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapStatus> status() const {
    return bench.status->policyMapStatus(key);
  }
};

TEST_F(LeftoverText, StaysUntilAPassOfAnotherOptionEndsWell) {
  failToDelete();
  EXPECT_EQ(status()->error(), "stuck");
  EXPECT_EQ(status()->failure(ClassMapMatchOption::ipv6).operation(), "deletePolicy");
  bench.acls->ipAclIs("acl")->ruleIs(20, {});
  EXPECT_THAT(bench.settle(), Contains("commit pm/input/ipv4"));
  EXPECT_EQ(status()->error(), "");
  EXPECT_EQ(status()->failures(), 0U);
}

TEST_F(LeftoverText, StaysThroughAPassThatFails) {
  failToDelete();
  bench.helper->answers["addRule"] = "no room";
  bench.acls->ipAclIs("acl")->ruleIs(20, {});
  bench.settle();
  EXPECT_EQ(status()->failure(ClassMapMatchOption::ipv6).error(), "stuck");
  bench.helper->answers.clear();
  Kor::EventLoop::global().runFor(1);
  EXPECT_EQ(status()->failures(), 0U);
}

TEST_F(LeftoverText, IsNotTriedAgain) {
  failToDelete();
  Kor::EventLoop::global().runFor(1000);
  EXPECT_THAT(bench.helper->taken(), IsEmpty());
}

TEST_F(LeftoverText, OfARemovalGoesTheSameWay) {
  bench.helper->answers["removeIntf"] = "busy";
  bench.classMap("c")->matchDel(2);
  bench.settle();
  EXPECT_EQ(status()->error(), "busy");
  bench.helper->answers.clear();
  bench.attach("pm", "Ethernet2");
  bench.settle();
  EXPECT_EQ(status()->error(), "");
}

TEST_F(LeftoverText, OfTheHelperThatWasLeftGoesWithTheFirstPassOnTheNext) {
  auto const second = Kor::make<CallLog>();
  bench.helper->answers["delete"] = "stuck";
  bench.classMap("c")->matchDel(2);
  bench.machine->aclHelperIs(second);
  EXPECT_EQ(status()->error(), "stuck");
  bench.settle();
  EXPECT_EQ(status()->error(), "");
  EXPECT_THAT(second->taken(), Contains("commit pm/input/ipv4"));
}

TEST_F(PublishedStatus, OfAFailedUpdateKeepsItsFirstTextUntilACommit) {
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  bench.helper->answers = {{"update", "first"}, {"addRule", "second"}};
  action->numberIs(7);
  bench.helper->updateActionSupportedIs(true);
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  auto const expectFirst = [&] {
    PolicyMap::PolicyFailure const failure = status->failure(ClassMapMatchOption::ipv4);
    EXPECT_EQ(failure.error(), "first");
    EXPECT_EQ(failure.operation(), "updateAction");
    EXPECT_EQ(failure.rule(), PolicyMap::AclRuleKey("c", "acl", 10, ClassMapMatchOption::ipv4));
    EXPECT_FALSE(status->programmed(ClassMapMatchOption::ipv4));
  };
  expectFirst();
  bench.helper->answers = {{"create", "third"}};
  Kor::EventLoop::global().runFor(1);
  expectFirst();
  bench.helper->answers.clear();
  Kor::EventLoop::global().runFor(2);
  EXPECT_EQ(status->error(), "");
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
  // A later failure is published with its own text.
  bench.helper->answers = {{"addRule", "fourth"}};
  bench.rule("acl", 20);
  bench.settle();
  EXPECT_EQ(status->error(), "fourth");
}

TEST_F(PublishedStatus, OfAPolicyOfManyClassesIsPublishedForThoseConcerned) {
  bench.simplePolicy();
  bench.classMatches("d", "deny");
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  bench.acls->ipAclIs("deny")->ruleIs(5, deny);
  bench.policy("pm")->classPrioIs("d", 20);
  bench.start();
  bench.settle();
  auto const status = bench.status->policyMapStatus(key);
  bench.helper->denyRulesAllowedIs(false);
  bench.settle();
  EXPECT_EQ(status->classMapStatus("d")->error(),
            "class d: rule 5 of deny: deny rules are not allowed");
  EXPECT_EQ(status->classMapStatus("c")->error(), "");
  EXPECT_FALSE(status->classMapStatus("c")->programmed());
  bench.acls->ipAcl("deny")->ruleDel(5);
  bench.settle();
  EXPECT_EQ(status->classMapStatus("d")->error(), "");
  EXPECT_TRUE(status->classMapStatus("c")->programmed());
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
