// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

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

class Host final : public PolicyMap::PolicyHost {
 public:
  Kor::Ptr<PolicyMap::PolicyMapAclHelper> helper = Kor::make<CallLog>();
  Kor::Ptr<Acl::AclDiff> diff = Kor::make<Acl::AclDiff>();
  std::set<ClassMapMatchOption> forbidden;
  std::vector<Vorel::IntfId> intfs{intf("Ethernet1")};
  std::function<void()> whenAsked;

  Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& aclHelper() const override { return helper; }
  Kor::Ptr<Acl::AclDiff> const& aclDiff() const override { return diff; }
  bool active() const override { return true; }
  bool allowsOption(ClassMapMatchOption option) const override {
    return !forbidden.contains(option);
  }
  std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& /*key*/,
                                            ClassMapMatchOption /*option*/) override {
    if (whenAsked) {
      whenAsked();
    }
    return intfs;
  }
  double retryMin() const override { return 1; }
  double retryMax() const override { return 60; }
  double asyncTimeout() const override { return 30; }
  void policyGone(PolicyMapSmKey const& /*key*/) override {}
};

class Turn final : public PolicyMap::DuePasses::Turn {
 public:
  explicit Turn(Host& host) : host_(host) {}
  bool ended = false;
  std::set<ClassMapMatchOption> owned;
  std::vector<std::string> told;

  bool over() const override { return ended; }
  PolicyMap::PolicyHost& host() override { return host_; }
  PolicyMap::PolicyMapAclHelper const& helper() const override { return *host_.helper; }
  PresentPolicy present(ClassMapMatchOption option) const override {
    return owned.contains(option) ? PresentPolicy{true, true, {intf("Ethernet1")}}
                                  : PresentPolicy{};
  }
  void refused(ClassMapMatchOption option) override { told.push_back("refused " + text(option)); }
  void renewed(Kor::Name const& name) override { told.push_back("renewed " + text(name)); }

 private:
  Host& host_;
};

class Due : public testing::Test {
 protected:
  Due() {
    acls->ipAclIs("acl")->ruleIs(10, {});
    addClass("c");
  }

  void addClass(char const* name) {
    auto const raw = Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name(name));
    raw->matchIs(1, PolicyMap::ClassMapMatch::acl(ipv4, Kor::Name("acl")));
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
  // The state after the pass that programs ipv4.
  void programmed() {
    due.rulesDue(ipv4);
    state[ipv4].classes = due.next(turn)->classes;
    turn.owned = {ipv4};
    turn.told.clear();
    owner.asked = 0;
  }

  Kor::Ptr<Acl::Config> acls = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::PolicyMapGlobalData> global =
      Kor::make<PolicyMap::PolicyMapGlobalData>(acls, nullptr, Kor::make<Acl::AclDiff>());
  ClassesOwner owner;
  Host host;
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
  EXPECT_EQ(next(), "updateAction commitPolicy");
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

TEST_F(Due, ATurnThatIsOverPlansNothing) {
  due.rulesDue();
  host.whenAsked = [this] { turn.ended = true; };
  EXPECT_EQ(next(), "nothing");
  EXPECT_EQ(owner.asked, 0U);
  EXPECT_THAT(turn.told, IsEmpty());
  EXPECT_TRUE(state[ipv6].due());
}

}  // namespace
}  // namespace policymap
