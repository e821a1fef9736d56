// SPDX-License-Identifier: Apache-2.0

// Recipes about failures, asynchronous results, time and the journal. docs/cookbook.md shows and
// explains them.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

#include <stdexcept>

using namespace PolicyMapTestKit;
using namespace std::chrono_literals;
using namespace testing;
using PolicyMap::ClassMapMatchOption;

namespace {

// Class web on list web, in policy-map edge, attached at Ethernet1.
constexpr auto edge = R"(
  ip access-list web
    10 permit tcp any any eq 80
    20 permit udp any any range 5004 5008
  class-map match-any web
    match access-group web
  policy-map edge
    class web
      set action1 7
  interface Ethernet1
    service-policy input edge)";

TEST(Cookbook, ACommitThatFails) {
  Lab lab({.faults = {{"commitError", "table full"}}});
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("table full", "commitPolicy"));
  EXPECT_THAT(lab.record("edge"), Not(Programmed()));
}

TEST(Cookbook, TheRetry) {
  Lab lab({.faults = {{"commitError", "table full"}}});
  lab.load(edge);
  lab.advance(1s);
  lab.clearFaults();
  EXPECT_THAT(lab.record("edge"), Not(Programmed())) << "the next try is due after 1 + 2 s";
  lab.advance(2s);
  EXPECT_THAT(lab.record("edge"), Programmed());
  EXPECT_THAT(lab.failure("edge"), NoFailure());
}

TEST(Cookbook, ARuleThatFails) {
  Lab lab;
  lab.load(edge);
  lab.inject({"addRuleError", "no entry"});
  lab.load("ip access-list web\n 10 permit tcp any any eq 8080");
  EXPECT_THAT(lab.failure("edge"), FailsWith("no entry", "addRule", "web 10"));
}

TEST(Cookbook, NoRangeCheckerLeft) {
  Lab lab({.faults = {{"rangeCheckerError", "no range checker"}}});
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("no range checker", "addRule", "web 20"));
}

TEST(Cookbook, OneCallThatFails) {
  Lab lab;
  lab.aroundIs([](HelperCall& call, auto const& proceed) {
    if (call.operation == "addRule" && call.rule->seqno() == 20) {
      call.error = "no entry";
    } else {
      proceed();
    }
  });
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("no entry", "addRule", "web 20"));
}

TEST(Cookbook, AnOperationThatThrows) {
  Lab lab;
  lab.aroundIs([](HelperCall& call, auto const& proceed) {
    if (call.operation == "commitPolicy") {
      throw std::runtime_error("no link");
    }
    proceed();
  });
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("exception: no link", "commitPolicy"));
  EXPECT_TRUE(lab.journal().failed().begin()->threw);
}

TEST(Cookbook, ACreationThatIsRefused) {
  Lab lab;
  lab.aroundIs([&lab](HelperCall& call, auto const& proceed) {
    if (call.operation == "createPolicy") {
      call.error = lab.helper()->notCarriedOut("no room");
    } else {
      proceed();
    }
  });
  lab.load(edge);
  EXPECT_THAT(lab.failure("edge"), FailsWith("no room", "createPolicy"));
  EXPECT_THAT(lab.journal().calls("deletePolicy"), IsEmpty()) << "there is nothing to delete";
}

TEST(Cookbook, AFeatureThatTheHardwareLacks) {
  Lab lab({.denyRules = false});
  lab.load(edge);
  lab.load("ip access-list web\n 30 deny ip any any");
  EXPECT_THAT(lab.failure("edge"),
              FailsWith("class web: rule 30 of web: deny rules are not allowed"));
  EXPECT_THAT(lab.journal().failed(), IsEmpty()) << "the core refuses it before any call";
}

TEST(Cookbook, ResultsThatArriveLater) {
  Lab lab({.async = true});
  lab.load(edge);
  EXPECT_EQ(lab.explain("edge").begin()->waitingFor, "addIntfToPolicy");
  lab.trigger();
  EXPECT_EQ(lab.explain("edge").begin()->waitingFor, "commitPolicy");
  lab.trigger();
  EXPECT_THAT(lab.explain("edge").notProgrammed(), IsEmpty());
}

TEST(Cookbook, AnErrorAsAResult) {
  Lab lab({.async = true});
  lab.load(edge);
  lab.inject({"commitError", "table full"});
  lab.trigger();
  EXPECT_THAT(lab.journal().failed(), IsEmpty()) << "the call of commitPolicy is accepted";
  lab.trigger();
  EXPECT_THAT(lab.failure("edge"), FailsWith("table full", "commitPolicy"));
}

TEST(Cookbook, AResultThatNeverArrives) {
  Lab lab({.async = true});
  lab.load(edge);
  lab.advance(29s);
  EXPECT_THAT(lab.failure("edge"), NoFailure());
  lab.advance(1s);
  EXPECT_THAT(lab.failure("edge"), FailsWith("no result within 30 seconds", "addIntfToPolicy"));
}

TEST(Cookbook, QuestionsToTheJournal) {
  Lab lab;
  lab.load(edge);
  std::uint64_t const next = lab.journal().next();
  lab.load("interface Ethernet2\n service-policy input edge");
  Journal const calls = lab.journal().since(next).ofPolicy("edge").calls();
  EXPECT_THAT(calls, Calls("addIntfToPolicy edge/input ipv4 Ethernet2", "commitPolicy"));
  EXPECT_EQ(calls.begin()->cause, "interfaces changed");
  EXPECT_THAT(lab.journal().calls("addRule").ofRule("web 10"), SizeIs(1));
  EXPECT_THAT(lab.journal().failed(), IsEmpty());
}

TEST(Cookbook, WhyIsItNotProgrammed) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Ethernet1\n no service-policy input edge\n"
           "interface Vlan10\n service-policy input edge");
  EXPECT_THAT(lab.explain("edge").lines(),
              ElementsAre("edge/input ipv4: no interface is eligible: Vlan10 (neither layer 2 nor "
                          "has an address)"));
  EXPECT_EQ(lab.explain("edge").begin()->state, PolicyMap::ProgrammingState::noIntf);
}

TEST(Cookbook, WhenIsItTriedAgain) {
  Lab lab({.faults = {{"commitError", "table full"}}});
  lab.load(edge);
  lab.advance(1500ms);
  EXPECT_EQ(lab.explain("edge").begin()->nextTry, 3.0);
}

TEST(Cookbook, WhenWasItProgrammed) {
  Lab lab;
  lab.advance(5s);
  lab.load(edge);
  auto const status = lab.status()->policyMapStatus({"edge", "input"});
  EXPECT_EQ(status->timeProgrammed(ClassMapMatchOption::ipv4), 5.0);
  EXPECT_THAT(status->intfs(ClassMapMatchOption::ipv4), ElementsAre(Vorel::IntfId("Ethernet1")));
}

// Rejects every policy with a name that it does not know.
class Choosy final : public ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;

 protected:
  void around(HelperCall& call, Proceed const& proceed) override {
    if (call.operation == "createPolicy" && (*call.policy)->policyKey().first() != "edge") {
      call.error = notCarriedOut("unknown policy");
    } else {
      proceed();
    }
  }
};

TEST(Cookbook, AHelperOfYourOwn) {
  Lab lab;
  Kor::EventLoop::Scope const scope(lab.eventLoop());
  auto const helper = Kor::make<Choosy>(true, false);
  lab.machine()->aclHelperIs(helper);
  lab.load(edge);
  lab.load("policy-map core\n class web\ninterface Ethernet1\n service-policy output core");
  EXPECT_EQ(helper->testData({{"edge", "input"}, ClassMapMatchOption::ipv4})->ruleMatchs(), 2U);
  EXPECT_THAT(lab.failure("core", "output"), FailsWith("unknown policy", "createPolicy"));
}

}  // namespace
