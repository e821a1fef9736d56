// SPDX-License-Identifier: Apache-2.0
#include "policymap/PlainHost.h"

#include <PolicyMap/DuePasses.h>

#include <gmock/gmock.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::Pass;
using PolicyMap::PolicyMapSmCommonData;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PresentPolicy;
using testing::ElementsAre;
using testing::IsEmpty;

using enum PolicyMap::ClassMapMatchOption;

// The owner of any classes. It counts the requests for them.
class ClassesOwner final : public PolicyMap::PolicyOwner {
 public:
  Classes classes;
  mutable unsigned asked = 0;  // requests for all classes
  mutable std::vector<std::set<Kor::Name>> askedNames;

  Kor::Ptr<Kor::PtrInterface> pinned() override { return nullptr; }
  PolicyMapSmKey const& key() const override { return data_->policyKey(); }
  Kor::Ptr<PolicyMapSmCommonData> const& commonData() const override { return data_; }
  Kor::Ptr<PolicyMap::PolicyMapStatus> const& status() const override { return status_; }
  Classes classesInOrder() const override {
    ++asked;
    return classes;
  }
  Classes classesInOrder(std::set<Kor::Name> const& names) const override {
    askedNames.push_back(names);
    Classes some;
    for (auto const& machine : classes) {
      if (names.contains(machine->className())) {
        some.push_back(machine);
      }
    }
    return some;
  }
  void dropLeftClasses() override {}
  std::optional<double> timeProgrammed(ClassMapMatchOption /*option*/) const override { return {}; }
  void timeProgrammedIs(ClassMapMatchOption /*option*/, std::optional<double> /*time*/) override {}

 private:
  Kor::Ptr<PolicyMapSmCommonData> data_ =
      Kor::make<PolicyMapSmCommonData>(PolicyMapSmKey("pm", "input"));
  Kor::Ptr<PolicyMap::PolicyMapStatus> status_;
};

class Turn final : public PolicyMap::DuePasses::Turn {
 public:
  explicit Turn(PlainHost& host) : host_(host) {}
  bool ended = false;
  std::set<ClassMapMatchOption> owned;
  mutable unsigned asked = 0;  // requests for the interfaces
  std::vector<std::string> told;

  bool over() const override { return ended; }
  PolicyMap::PolicyHost& host() override { return host_; }
  PolicyMap::PolicyMapAclHelper const& helper() const override { return *host_.helper; }
  PolicyMap::HelperArbiter::Presence presence(ClassMapMatchOption option) const override {
    return {owned.contains(option), owned.contains(option)};
  }
  PresentPolicy present(ClassMapMatchOption option) const override {
    ++asked;
    return owned.contains(option) ? PresentPolicy{{true, true}, {intf("Ethernet1")}}
                                  : PresentPolicy{};
  }
  void refused(ClassMapMatchOption option) override { told.push_back("refused " + text(option)); }
  void renewed(Kor::Name const& name) override { told.push_back("renewed " + text(name)); }

 private:
  PlainHost& host_;
};

class Due : public testing::Test {
 protected:
  Due() {
    acls->ipAclIs("acl")->ruleIs(10, {});
    addClass("c");
  }

  void addClass(char const* name, ClassMapMatchOption option = ipv4, char const* list = "acl") {
    auto const raw = Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name(name));
    raw->matchIs(1, PolicyMap::ClassMapMatch::acl(option, Kor::Name(list)));
    auto const machine = Kor::make<ClassSm>(global, nullptr, nullptr, raw, nullptr);
    machine->hasNotificationActiveIs(true);
    machine->classNameIs(Kor::Name(name));
    owner.classes.push_back(machine);
  }
  // The operations of the next pass, or "nothing".
  std::string next() {
    std::optional<Pass> const pass = due.next(turn);
    std::string steps;
    for (PolicyMap::Step const& step : pass ? pass->steps : std::vector<PolicyMap::Step>()) {
      steps += (steps.empty() ? "" : " ") + std::string(nameOf(step.operation));
    }
    return pass ? steps : "nothing";
  }
  // The state after the pass that programs the option.
  void programmed(ClassMapMatchOption option = ipv4) {
    due.rulesDue(option);
    state[option].classes = due.next(turn)->classes;
    turn.owned = {option};
    turn.told.clear();
    owner.asked = 0;
  }

  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classMaps = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapGlobalData> global =
      Kor::make<PolicyMap::PolicyMapGlobalData>(acls, classMaps, Kor::make<Acl::AclDiff>());
  ClassesOwner owner;
  PlainHost host;
  Turn turn{host};
  PolicyMap::ProgrammedState state;
  PolicyMap::DuePasses due{owner, state};
};

TEST_F(Due, NothingIsAtFirst) {
  EXPECT_FALSE(due.any());
  EXPECT_EQ(next(), "nothing");
}

TEST_F(Due, RulesAreProgrammedOnce) {
  due.rulesDue();
  EXPECT_TRUE(due.any());
  EXPECT_EQ(next(), "createPolicy addRule addIntfToPolicy commitPolicy");
  EXPECT_EQ(next(), "nothing");
  EXPECT_FALSE(due.any());
  EXPECT_THAT(turn.told, ElementsAre("refused ipv6", "refused mac", "refused mpls"));
}

TEST_F(Due, WhatIsProgrammedAsWantedNeedsNoPass) {
  programmed();
  due.rulesDue(ipv4);
  EXPECT_EQ(next(), "nothing");
  due.reprogrammingDue();
  EXPECT_EQ(next(), "recreatePolicy addRule commitPolicy");
}

TEST_F(Due, AChangeOfInterfacesAsksNoClass) {
  programmed();
  host.intfs = {intf("Ethernet2")};
  due.intfsDue();
  EXPECT_EQ(next(), "removeIntfFromPolicy addIntfToPolicy commitPolicy");
  EXPECT_EQ(owner.asked, 0U);
}

TEST_F(Due, WithoutAnInterfaceItIsTakenDown) {
  programmed();
  host.intfs.clear();
  due.intfsDue();
  EXPECT_EQ(next(), "removeIntfFromPolicy deletePolicy");
  EXPECT_EQ(owner.asked, 0U);
}

TEST_F(Due, AnActionAsksItsClassAlone) {
  addClass("d");
  programmed();
  host.helper->updateActionSupportedIs(true);
  owner.classes[1]->classCommonData()->updateAclActionsInc(1);
  due.actionsDue(Kor::Name("d"));
  EXPECT_TRUE(due.any());
  turn.asked = 0;
  EXPECT_EQ(next(), "updateAction commitPolicy");
  EXPECT_EQ(turn.asked, 0U);
  EXPECT_EQ(owner.asked, 0U);
  EXPECT_THAT(owner.askedNames, ElementsAre(std::set<Kor::Name>{Kor::Name("d")}));
  EXPECT_FALSE(due.any());
}

TEST_F(Due, EverythingIncludesTheActionsOfAllClasses) {
  programmed();
  host.helper->updateActionSupportedIs(true);
  owner.classes[0]->classCommonData()->updateAclActionsInc(1);
  due.everythingDue();
  EXPECT_EQ(next(), "updateAction commitPolicy");
}

TEST_F(Due, AnActionThatCannotBeUpdatedIsProgrammedAgain) {
  programmed();
  owner.classes[0]->classCommonData()->updateAclActionsInc(1);
  due.actionsDue(Kor::Name("c"));
  EXPECT_EQ(next(), "recreatePolicy addRule commitPolicy");
}

TEST_F(Due, AnActionThatCannotBeUpdatedConcernsOnlyTheOptionsOfItsClass) {
  acls->ip6AclIs("six")->ruleIs(10, {});
  owner.classes.clear();
  addClass("c", ipv6, "six");
  programmed(ipv6);
  owner.classes[0]->classCommonData()->updateAclActionsInc(1);
  due.actionsDue(Kor::Name("c"));
  EXPECT_EQ(next(), "recreatePolicy addRule commitPolicy");
  EXPECT_THAT(turn.told, IsEmpty());
}

TEST_F(Due, AnActionThatHasNotMovedNeedsNoPass) {
  programmed();
  due.actionsDue(Kor::Name("c"));
  EXPECT_EQ(next(), "nothing");
}

TEST_F(Due, WhatIsUnwantedIsTakenDownWithoutAskingForClasses) {
  programmed();
  EXPECT_FALSE(due.wantedIs(true));
  EXPECT_TRUE(due.wantedIs(false));
  EXPECT_TRUE(due.unwanted());
  EXPECT_EQ(next(), "removeIntfFromPolicy deletePolicy");
  EXPECT_EQ(owner.asked, 0U);
}

TEST_F(Due, ARestartIsForGood) {
  due.restart();
  EXPECT_TRUE(due.any());
  EXPECT_TRUE(due.unwanted());
  EXPECT_FALSE(due.wantedIs(true));
  EXPECT_TRUE(due.unwanted());
}

TEST_F(Due, OnlyWhatFailedAndIsTriedAgainIsDueByItself) {
  state[ipv6].retry = true;
  due.failedDue();
  EXPECT_FALSE(state[ipv4].due());
  EXPECT_TRUE(state[ipv6].due());
}

// Its rules are still checked for errors, because an error refuses the other options too.
TEST_F(Due, AnOptionThatIsNotAllowedIsNotProgrammed) {
  host.forbidden = {ipv4};
  due.rulesDue(ipv4);
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(owner.asked, 1U);
  EXPECT_THAT(turn.told, ElementsAre("refused ipv4"));
}

TEST_F(Due, AClassThatWasBuiltAgainIsRenewedAndItsActionsAreUpdated) {
  programmed();
  host.helper->updateActionSupportedIs(true);
  owner.classes.clear();
  addClass("c");
  due.rulesDue(ipv4);
  EXPECT_EQ(next(), "updateAction commitPolicy");
  EXPECT_THAT(turn.told, ElementsAre("renewed c"));
}

// Queries of single classes, and of their neighbours, whose number does not depend on that of all
// classes, are not counted here.
class DueClass : public Due {
 protected:
  DueClass() {
    acls->ipAclIs("own")->ruleIs(10, {});
    addClass("d", ipv4, "own");
    addClass("e");
    host.helper->updateActionSupportedIs(true);
    programmed();
  }
  // The next pass after a change of class "d" in the option, and whether all classes were queried.
  std::string changed(ClassMapMatchOption option = ipv4) {
    owner.asked = 0;
    due.classDue(Kor::Name("d"), option);
    EXPECT_TRUE(due.any());
    std::string const steps = next();
    return steps + (owner.asked == 0 ? "" : ", all queried");
  }
  void rewrite(std::uint32_t seqno) {
    acls->ipAcl("own")->ruleIs(seqno, {});
    owner.classes[1]->handleMatch(ipv4);
  }
};

TEST_F(DueClass, AsProgrammedNeedsNoPass) {
  EXPECT_EQ(changed(), "nothing");
  rewrite(10);
  EXPECT_EQ(changed(), "nothing");
  EXPECT_FALSE(due.any());
}

TEST_F(DueClass, WithOtherRulesIsProgrammedWithAllOthers) {
  rewrite(20);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
}

TEST_F(DueClass, WithoutRulesIsProgrammedOnlyWhenItHasSome) {
  acls->ipAcl("own")->ruleDel(10);
  owner.classes[1]->handleMatch(ipv4);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
  programmed();
  EXPECT_EQ(changed(), "nothing");
  rewrite(10);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
}

TEST_F(DueClass, ThatLeftIsNoLongerProgrammed) {
  owner.classes.erase(owner.classes.begin() + 1);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
  programmed();
  EXPECT_EQ(changed(), "nothing");
}

TEST_F(DueClass, IsProgrammedAtItsNewPlace) {
  std::swap(owner.classes[1], owner.classes[2]);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
  programmed();
  std::swap(owner.classes[0], owner.classes[2]);
  std::swap(owner.classes[1], owner.classes[2]);
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
}

TEST_F(DueClass, WithAnErrorRefusesTheOption) {
  auto const circle = Kor::make<PolicyMap::ClassMapSubConfig>("circle");
  circle->matchIs(1, PolicyMap::ClassMapMatch::classMap("circle"));
  classMaps->classMapConfigIs("circle")->currentSubConfigIs(circle);
  owner.classes[1]->rawClassMapSubConfigIs(circle);
  EXPECT_EQ(changed(), "removeIntfFromPolicy deletePolicy, all queried");
  EXPECT_EQ(state[ipv4].failure.error(), "class-map circle matches itself: circle > circle");
}

TEST_F(DueClass, ThatWasBuiltAgainIsRenewed) {
  auto const kept = owner.classes;
  owner.classes.clear();
  addClass("d", ipv4, "own");
  owner.classes = {kept[0], owner.classes[0], kept[2]};
  EXPECT_EQ(changed(), "updateAction commitPolicy");
  EXPECT_THAT(turn.told, ElementsAre("renewed d"));
}

TEST_F(DueClass, ThatWasBuiltAgainIsProgrammedAgainIfActionsCannotBeUpdated) {
  host.helper->updateActionSupportedIs(false);
  auto const kept = owner.classes;
  owner.classes.clear();
  addClass("d", ipv4, "own");
  owner.classes = {kept[0], owner.classes[0], kept[2]};
  EXPECT_EQ(changed(), "recreatePolicy addRule commitPolicy, all queried");
}

TEST_F(DueClass, OfAnOptionWithoutClassesIsNoMatterOfTheOthers) {
  due.rulesDue(ipv6);
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(changed(ipv6), "nothing");
}

TEST_F(DueClass, OfAnOptionWithoutInterfacesIsNoMatterOfTheOthers) {
  turn.owned.clear();
  state[ipv4].forget();
  host.intfs.clear();
  due.rulesDue(ipv4);
  EXPECT_EQ(next(), "nothing");
  owner.asked = 0;
  due.intfsDue();
  EXPECT_EQ(next(), "nothing");
  rewrite(20);
  EXPECT_EQ(changed(), "nothing");
  EXPECT_EQ(owner.asked, 0U);
  host.intfs = {intf("Ethernet1")};
  due.intfsDue();
  EXPECT_EQ(next(), "createPolicy addRule addIntfToPolicy commitPolicy");
}

TEST_F(Due, AnInterfaceIsNoMatterOfARefusedOption) {
  Acl::IpRuleConfig denied;
  denied.permitIs(false);
  acls->ipAcl("acl")->ruleIs(20, denied);
  host.helper->denyRulesAllowedIs(false);
  due.rulesDue();
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(state[ipv4].failure.error(), "class c: rule 20 of acl: deny rules are not allowed");
  owner.asked = 0;
  due.intfsDue();
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(owner.asked, 0U);
  EXPECT_EQ(state[ipv4].failure.error(), "class c: rule 20 of acl: deny rules are not allowed");
  host.helper->denyRulesAllowedIs(true);
  due.rulesDue();
  EXPECT_EQ(next(), "createPolicy addRule addIntfToPolicy commitPolicy");
}

TEST_F(Due, ATurnThatIsOverPlansNothing) {
  due.rulesDue();
  due.actionsDue(Kor::Name("c"));
  host.whenAsked = [this] { turn.ended = true; };
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(owner.asked, 0U);
  EXPECT_THAT(owner.askedNames, IsEmpty());
  EXPECT_THAT(turn.told, IsEmpty());
  EXPECT_TRUE(state[ipv6].due());
}

}  // namespace
}  // namespace policymap
