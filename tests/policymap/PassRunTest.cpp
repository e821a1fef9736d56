// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <PolicyMap/PassRun.h>

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::HelperArbiter;
using PolicyMap::HelperOperation;
using PolicyMap::OptionState;
using PolicyMap::Pass;
using PolicyMap::PassKind;
using PolicyMap::PassRun;
using PolicyMap::PolicyMapSmCommonData;
using PolicyMap::ProgrammedClass;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Outcome = PassRun::Outcome;
using enum PolicyMap::ClassMapMatchOption;

// Holds the arbiter and records its notifications.
class Holder final : public HelperArbiter::Client, public PassRun::Observer {
 public:
  std::vector<std::string> told;

  void granted() override {}
  void resultArrived(Kor::String const& /*error*/) override {}
  void callEnded() override {}
  void committed(ClassMapMatchOption option) override {
    told.push_back("committed " + text(option));
  }
  void deleted(ClassMapMatchOption option) override { told.push_back("deleted " + text(option)); }
  void updateFailed() override { told.emplace_back("update failed"); }
};

// Runs a function inside each operation whose line begins with a given word.
class DoingLog final : public CallLog {
 public:
  std::string word;
  std::function<void()> deed;

 protected:
  void around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) override {
    if (wordOf(call) == word) {
      deed();
    }
    CallLog::around(call, proceed);
  }
};

class Run : public testing::Test {
 protected:
  Run() { helper->arbiter().request(holder); }

  static ProgrammedClass classOf(char const* name) {
    PolicyMap::RuleSources<Acl::IpRuleConfig> sources;
    sources.push_back(
        {Kor::Name("acl"), Kor::make<Acl::AclRules<Acl::IpRuleConfig>>(
                               std::vector<Acl::AclRules<Acl::IpRuleConfig>::Entry>{{10, {}}})});
    return {Kor::Name(name), Kor::make<PolicyMap::ClassMapSmCommonData>(name, nullptr, nullptr),
            Kor::make<PolicyMap::ClassRules>(sources)};
  }
  Pass program(ClassMapMatchOption option = ipv4) {
    Pass pass{PassKind::program,
              option,
              {{HelperOperation::createPolicy, option},
               {HelperOperation::addRule, option},
               {HelperOperation::addIntf, option, intf("Ethernet1")},
               {HelperOperation::commitPolicy, option}}};
    pass.classes.add(theClass);
    return pass;
  }
  Pass update(std::vector<ClassMapMatchOption> const& commits) {
    PolicyMap::Step step{HelperOperation::updateAction};
    step.updatedClass = theClass.data;
    Pass pass{PassKind::updateActions, ipv4, {step}};
    for (ClassMapMatchOption const option : commits) {
      pass.steps.push_back({HelperOperation::commitPolicy, option});
    }
    return pass;
  }
  PassRun& start(Pass pass) {
    run = std::make_unique<PassRun>(std::move(pass), helper, holder, data, state, holder);
    return *run;
  }
  // Programs both options.
  void standing() {
    start(program()).run();
    start(program(ipv6)).run();
    helper->taken();
    holder.told.clear();
  }
  [[nodiscard]] bool created(ClassMapMatchOption option = ipv4) const {
    return helper->arbiter().created(data->policyKey(), option);
  }

  Kor::Ptr<DoingLog> helper = Kor::make<DoingLog>();
  Holder holder;
  Kor::Ptr<PolicyMapSmCommonData> data =
      Kor::make<PolicyMapSmCommonData>(PolicyMap::PolicyMapSmKey("pm", "input"));
  PolicyMap::ProgrammedState state;
  ProgrammedClass theClass = classOf("c");
  std::unique_ptr<PassRun> run;
};

TEST_F(Run, CarriesTheStepsOutAndKeepsTheStateInStep) {
  theClass.data->updateAclActionsInc(3);
  Pass pass = program();
  pass.expansion = PolicyMap::PortExpansion::alignedBlocks;
  pass.capabilities.ttl = false;
  state[ipv4].recreate = true;
  state[ipv4].retry = true;
  EXPECT_EQ(start(std::move(pass)).run(), Outcome::done);
  EXPECT_THAT(helper->taken(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit ip any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  EXPECT_THAT(holder.told, ElementsAre("committed ipv4"));
  EXPECT_TRUE(created());
  OptionState const& programmed = state[ipv4];
  ASSERT_EQ(programmed.classes.size(), 1U);
  EXPECT_FALSE(programmed.classes.begin()->actionsMoved());
  EXPECT_EQ(programmed.expansion, PolicyMap::PortExpansion::alignedBlocks);
  EXPECT_FALSE(programmed.capabilities.ttl);
  EXPECT_FALSE(programmed.recreate || programmed.retry);
  EXPECT_TRUE(data->hasIntf(ipv4, intf("Ethernet1")));
  EXPECT_TRUE(!run->failure());
}

TEST_F(Run, AStepThatFailsEndsThePassAndDeletes) {
  helper->answers["addIntf"] = "no port";
  EXPECT_EQ(start(program()).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(), Not(Contains("commit pm/input/ipv4")));
  EXPECT_EQ(run->failure().error(), "no port");
  EXPECT_EQ(run->failure().operation(), "addIntfToPolicy");
  EXPECT_THAT(holder.told, ElementsAre("deleted ipv4"));
  EXPECT_FALSE(created());
  EXPECT_TRUE(state[ipv4].classes.empty());
  EXPECT_EQ(state[ipv4].failure.error(), "no port");
  EXPECT_TRUE(state[ipv4].retry);
}

TEST_F(Run, AFailedRuleIsNamed) {
  helper->answers["addRule"] = "no room";
  start(program()).run();
  EXPECT_EQ(run->failure().className(), "c");
  EXPECT_EQ(run->failure().rule(), PolicyMap::AclRuleKey("c", "acl", 10, ipv4));
}

TEST_F(Run, ACreationThatThrowsCreatedNothing) {
  helper->word = "create";
  helper->deed = [] { throw std::runtime_error("lost"); };
  EXPECT_EQ(start(program()).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(), IsEmpty());
  EXPECT_FALSE(created());
}

TEST_F(Run, ADeletionThatThrowsLeavesThePolicyCreatedAndOwned) {
  helper->answers["commit"] = "no";
  helper->word = "delete";
  helper->deed = [] { throw std::runtime_error("lost"); };
  EXPECT_EQ(start(program()).run(), Outcome::failed);
  EXPECT_TRUE(created());
  EXPECT_EQ(helper->arbiter().creator(data->policyKey(), ipv4), &holder);
  EXPECT_TRUE(run->deletionThrew());
  EXPECT_EQ(run->failure().error(), "no");
  // The classes on the helper stay known, and a re-creation is due.
  EXPECT_EQ(state[ipv4].classes.size(), 1U);
  EXPECT_TRUE(state[ipv4].recreate);
  EXPECT_TRUE(data->hasIntf(ipv4, intf("Ethernet1")));
  EXPECT_THAT(holder.told, IsEmpty());
}

TEST_F(Run, RulesOfAReCreationThatStopsHalfWayAreNotTakenForThoseBefore) {
  standing();
  helper->answers["addRule"] = "no room";
  helper->word = "delete";
  helper->deed = [] { throw std::runtime_error("lost"); };
  Pass pass = program();
  pass.steps[0].operation = HelperOperation::recreatePolicy;
  EXPECT_EQ(start(std::move(pass)).run(), Outcome::failed);
  EXPECT_TRUE(state[ipv4].classes.empty());
  EXPECT_TRUE(created());
}

TEST_F(Run, AnUpdateThatFailsForTwoOptionsReportsTheFirstFailure) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->word = "update";
  helper->deed = [texts = std::vector<std::string>{"second", "first"}]() mutable {
    std::string const text = texts.back();
    texts.pop_back();
    throw std::runtime_error(text);
  };
  EXPECT_EQ(start(update({ipv4, ipv6})).run(), Outcome::failed);
  EXPECT_EQ(run->failure().error(), "exception: first");
  EXPECT_EQ(state[ipv6].failure.error(), "exception: second");
}

TEST_F(Run, ATeardownGoesOnAndReportsItsFirstFailure) {
  standing();
  helper->answers = {{"removeIntf", "first"}, {"delete", "second"}};
  Pass const pass{PassKind::tearDown,
                  ipv4,
                  {{HelperOperation::removeIntf, ipv4, intf("Ethernet1")},
                   {HelperOperation::deletePolicy, ipv4}}};
  EXPECT_EQ(start(pass).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  EXPECT_EQ(run->failure().error(), "first");
  EXPECT_FALSE(created());
  EXPECT_FALSE(run->deletionThrew());
  EXPECT_TRUE(data->intfs(ipv4).empty());
}

TEST_F(Run, WaitsForAResultAndGoesOnWithIt) {
  helper->asyncOperationsIs(true);
  EXPECT_EQ(start(program()).run(), Outcome::pending);
  EXPECT_FALSE(data->hasIntf(ipv4, intf("Ethernet1")));
  EXPECT_EQ(run->resultIs(""), Outcome::pending);
  EXPECT_TRUE(data->hasIntf(ipv4, intf("Ethernet1")));
  EXPECT_THAT(holder.told, IsEmpty());
  EXPECT_EQ(run->resultIs(""), Outcome::done);
  EXPECT_THAT(holder.told, ElementsAre("committed ipv4"));
}

TEST_F(Run, AResultWithATextFailsTheStepThatWaited) {
  helper->asyncOperationsIs(true);
  start(program()).run();
  EXPECT_EQ(run->resultIs("no port"), Outcome::failed);
  EXPECT_EQ(run->failure().operation(), "addIntfToPolicy");
  EXPECT_FALSE(created());
}

TEST_F(Run, OfActionsUpdatesEveryOptionInsideOneBracket) {
  standing();
  theClass.data->updateAclActionsInc(1);
  EXPECT_EQ(start(update({ipv4, ipv6})).run(), Outcome::done);
  EXPECT_THAT(helper->taken(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                           "update pm/input/ipv6 c:acl:10", "end pm/input c",
                                           "commit pm/input/ipv4", "commit pm/input/ipv6"));
  EXPECT_FALSE(state[ipv4].classes.begin()->actionsMoved());
}

TEST_F(Run, AnOptionWhoseUpdateFailsIsMarkedAndNotCommitted) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->answers["update"] = "no";
  EXPECT_EQ(start(update({ipv4, ipv6})).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                           "update pm/input/ipv6 c:acl:10", "end pm/input c"));
  EXPECT_TRUE(state[ipv4].recreate && state[ipv4].rulesDue && state[ipv4].updateFailed);
  EXPECT_EQ(state[ipv6].failure.rule(), PolicyMap::AclRuleKey("c", "acl", 10, ipv6));
  EXPECT_THAT(holder.told, ElementsAre("update failed"));
  EXPECT_TRUE(created()) << "it is created again by the next pass";
}

TEST_F(Run, ABracketThatCannotBeOpenedUpdatesNothing) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->answers["begin"] = "locked";
  EXPECT_EQ(start(update({ipv4})).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(), ElementsAre("begin pm/input c", "end pm/input c"));
  EXPECT_EQ(state[ipv4].failure.error(), "locked");
  EXPECT_EQ(state[ipv4].failure.operation(), "beginUpdateActions");
  EXPECT_EQ(state[ipv4].failure.className(), "c");
}

TEST_F(Run, ABracketThatCannotBeClosedIsTheFailureOfWhatItUpdated) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->answers["end"] = "locked";
  start(update({ipv4})).run();
  EXPECT_EQ(state[ipv6].failure.error(), "locked");
  EXPECT_EQ(state[ipv6].failure.operation(), "endUpdateActions");
  EXPECT_TRUE(!state[ClassMapMatchOption::mac].failure);
  EXPECT_THAT(holder.told, ElementsAre("update failed"));
  EXPECT_TRUE(!!run->failure());
}

TEST_F(Run, WhenItIsAbandonedAtTheEndOfABracketItTellsNothing) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->answers["end"] = "locked";
  helper->word = "end";
  helper->deed = [this] { run->abandon(); };
  EXPECT_EQ(start(update({ipv4})).run(), Outcome::abandoned);
  EXPECT_THAT(helper->taken(), Not(Contains("commit pm/input/ipv4")));
  EXPECT_THAT(holder.told, IsEmpty());
  EXPECT_FALSE(!!state[ipv4].failure);
}

TEST_F(Run, ABracketThatCannotBeClosedBlamesNoRule) {
  standing();
  theClass.data->updateAclActionsInc(1);
  helper->answers["end"] = "locked";
  helper->word = "update";
  helper->deed = [this, calls = 0]() mutable {
    helper->answers["update"] = calls++ == 0 ? "no" : "";
  };
  start(update({ipv4, ipv6})).run();
  EXPECT_EQ(state[ipv4].failure.error(), "no");
  EXPECT_EQ(state[ipv4].failure.rule(), PolicyMap::AclRuleKey("c", "acl", 10, ipv4));
  EXPECT_EQ(state[ipv6].failure.error(), "locked");
  EXPECT_EQ(state[ipv6].failure.rule(), PolicyMap::AclRuleKey());
}

// The option is created again, with the actions of both classes.
TEST_F(Run, OfAnOptionWhoseUpdateFailedTheNextClassIsNotUpdated) {
  ProgrammedClass const next = classOf("d");
  Pass both = program();
  both.classes.add(next);
  start(std::move(both)).run();
  helper->taken();
  theClass.data->updateAclActionsInc(1);
  next.data->updateAclActionsInc(1);
  Pass pass = update({ipv4});
  PolicyMap::Step step{HelperOperation::updateAction};
  step.updatedClass = next.data;
  pass.steps.insert(pass.steps.begin() + 1, step);
  helper->answers["update"] = "no";
  EXPECT_EQ(start(std::move(pass)).run(), Outcome::failed);
  EXPECT_THAT(helper->taken(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                           "end pm/input c", "begin pm/input d", "end pm/input d"));
  EXPECT_EQ(state[ipv4].failure.className(), "c");
}

TEST_F(Run, ACommitOfWhatIsToBeCreatedAgainIsNotTheLastWord) {
  helper->word = "commit";
  helper->deed = [this] { state[ipv4].recreate = true; };
  state[ipv4].failureIs({"earlier", "commitPolicy", {}, {}});
  EXPECT_EQ(start(program()).run(), Outcome::done);
  EXPECT_THAT(holder.told, IsEmpty());
  EXPECT_EQ(state[ipv4].failure.error(), "earlier");
}

TEST_F(Run, WhenItIsAbandonedInsideAnOperationItCallsNothingMore) {
  helper->word = "addRule";
  helper->deed = [this] { run->abandon(); };
  EXPECT_EQ(start(program()).run(), Outcome::abandoned);
  EXPECT_THAT(helper->taken(), ElementsAre("create pm/input/ipv4",
                                           "addRule pm/input/ipv4 c:acl:10 permit ip any any"));
  EXPECT_THAT(holder.told, IsEmpty());
  EXPECT_TRUE(state[ipv4].classes.empty());
}

TEST_F(Run, WhenItIsAbandonedInsideARollBackItTellsNothing) {
  helper->answers["addRule"] = "no room";
  helper->word = "delete";
  helper->deed = [this] { run->abandon(); };
  EXPECT_EQ(start(program()).run(), Outcome::abandoned);
  EXPECT_THAT(holder.told, IsEmpty());
}

TEST_F(Run, TakesDownWhatIsItsOwnOrNobodysAndNothingElse) {
  HelperArbiter& arbiter = helper->arbiter();
  Holder other;
  data->intfAdd(ipv4, intf("Ethernet1"));
  arbiter.createdIs(data->policyKey(), ipv4, &other);
  PassRun::takeDown(*helper, holder, data, ipv4, state[ipv4]);
  EXPECT_THAT(helper->taken(), IsEmpty());
  EXPECT_TRUE(created());
  EXPECT_TRUE(data->intfs(ipv4).empty());
  arbiter.createdIs(data->policyKey(), ipv4, nullptr);
  PassRun::takeDown(*helper, holder, data, ipv4, state[ipv4]);
  EXPECT_THAT(helper->taken(), ElementsAre("delete pm/input/ipv4"));
  EXPECT_FALSE(created());
}

}  // namespace
}  // namespace policymap
