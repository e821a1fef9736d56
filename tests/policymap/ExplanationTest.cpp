// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"
#include "support/TraceRecorder.h"

#include <PolicyMap/Explanation.h>
#include <PolicyMap/HelperArbiter.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::Explanation;
using PolicyMap::IntfObstacle;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::ProgrammingState;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using enum PolicyMap::ClassMapMatchOption;
PolicyMapSmKey const pmInputKey("pm", "input");

class ExplanationTest : public testing::Test, protected PolicyBench {
 protected:
  Explanation of(ClassMapMatchOption option = ipv4,
                 PolicyMapSmKey const& policy = pmInputKey) const {
    return explain(*machine, policy).at(static_cast<std::size_t>(option));
  }
  ProgrammingState state(ClassMapMatchOption option = ipv4) const { return of(option).state; }
  IntfObstacle obstacle(ClassMapMatchOption option = ipv4) const {
    return of(option).intfs.at(0).obstacle;
  }
  void begin() {
    simplePolicy();
    start();
    settle();
  }
};

TEST_F(ExplanationTest, OfWhatIsProgrammed) {
  begin();
  Explanation const explanation = of();
  EXPECT_EQ(explanation.policy, pmInputKey);
  EXPECT_EQ(explanation.option, ipv4);
  EXPECT_EQ(explanation.state, ProgrammingState::programmed);
  EXPECT_TRUE(explanation.programmed);
  ASSERT_THAT(explanation.intfs, SizeIs(1));
  EXPECT_EQ(explanation.intfs[0].intf, intf("Ethernet1"));
  EXPECT_EQ(explanation.intfs[0].obstacle, IntfObstacle::none);
  EXPECT_THAT(explanation.missing, IsEmpty());
  EXPECT_FALSE(!!explanation.failure);
}

TEST_F(ExplanationTest, OptionsWithoutRulesHaveNothingToProgram) {
  begin();
  for (ClassMapMatchOption const option : {ipv6, mac, mpls}) {
    EXPECT_EQ(of(option).option, option);
    EXPECT_EQ(state(option), ProgrammingState::nothingToProgram);
    EXPECT_FALSE(of(option).programmed);
  }
}

TEST_F(ExplanationTest, AllPoliciesByNameAndDirection) {
  begin();
  attach("pm", "Ethernet1", "output");
  attach("other", "Ethernet2");
  std::vector<PolicyMapSmKey> keys;
  for (Explanation const& each : explain(*machine)) {
    if (each.option == ipv4) {
      keys.push_back(each.policy);
    }
  }
  EXPECT_THAT(keys, ElementsAre(PolicyMapSmKey("other", "input"), pmInputKey,
                                PolicyMapSmKey("pm", "output")));
  EXPECT_THAT(explain(*machine), SizeIs(12));
  EXPECT_THAT(explain(*machine, PolicyMapSmKey("none", "input")), IsEmpty());
}

TEST_F(ExplanationTest, OfAPolicyMapThatDoesNotExist) {
  begin();
  attach("other", "Ethernet2");
  settle();
  EXPECT_EQ(of(ipv4, {"other", "input"}).state, ProgrammingState::noPolicyMap);
}

TEST_F(ExplanationTest, WithoutHelperAndWhileInactive) {
  begin();
  machine->aclHelperDel();
  EXPECT_EQ(state(), ProgrammingState::noHelper);
  machine->aclHelperIs(helper);
  settle();
  machine->hasNotificationActiveIs(false);
  EXPECT_EQ(state(), ProgrammingState::noMachine);
}

TEST_F(ExplanationTest, BeforeTheEventLoopRuns) {
  simplePolicy();
  start();
  EXPECT_EQ(state(), ProgrammingState::due);
  settle();
  rule("acl", 20);
  EXPECT_EQ(state(), ProgrammingState::due);
  EXPECT_TRUE(of().programmed);
}

TEST_F(ExplanationTest, WhileAResultIsPending) {
  helper->asyncOperationsIs(true);
  simplePolicy();
  start();
  Kor::EventLoop::global().runFor(2);
  EXPECT_EQ(state(), ProgrammingState::waiting);
  EXPECT_EQ(of().waitingFor, "addIntfToPolicy");
  EXPECT_EQ(of().waitingSince, 0);
  helper->asyncOperationResultIs(PolicyMap::AsyncOperationResult("", Kor::now()));
  EXPECT_EQ(of().waitingFor, "commitPolicy");
  EXPECT_EQ(of().waitingSince, 2);
  // Of its option alone.
  EXPECT_EQ(state(ipv6), ProgrammingState::due);
  helper->asyncOperationResultIs(PolicyMap::AsyncOperationResult("", Kor::now()));
  settle();
  EXPECT_EQ(state(), ProgrammingState::programmed);
}

TEST_F(ExplanationTest, OfAFailureAndItsNextTry) {
  helper->answers["commit"] = "table full";
  begin();
  EXPECT_EQ(state(), ProgrammingState::failed);
  EXPECT_EQ(of().failure.error(), "table full");
  EXPECT_EQ(of().failure.operation(), "commitPolicy");
  EXPECT_EQ(of().nextTry, 1.0);
  Kor::EventLoop::global().runFor(1);
  EXPECT_EQ(of().nextTry, 3.0);
  helper->answers.clear();
  Kor::EventLoop::global().runFor(2);
  EXPECT_EQ(state(), ProgrammingState::programmed);
  EXPECT_EQ(of().nextTry, std::nullopt);
}

TEST_F(ExplanationTest, OfARefusal) {
  helper->denyRulesAllowedIs(false);
  simplePolicy();
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  acls->ipAclIs("acl")->ruleIs(20, deny);
  start();
  settle();
  EXPECT_EQ(state(), ProgrammingState::refused);
  EXPECT_EQ(of().failure.error(), "class c: rule 20 of acl: deny rules are not allowed");
  EXPECT_EQ(of().failure.rule().seqno(), 20U);
  EXPECT_EQ(of().nextTry, std::nullopt);
}

TEST_F(ExplanationTest, OfAnOptionThatIsNotAllowed) {
  simplePolicy();
  start();
  machine->allowIpAclIs(false);
  settle();
  EXPECT_EQ(state(), ProgrammingState::optionNotAllowed);
}

TEST_F(ExplanationTest, OfMissingObjectsByClass) {
  simplePolicy();
  classMatches("c", "gone", 2);
  policy("pm")->classPrioIs(Kor::Name("d"), 20);
  classMap("d")->matchIs(1, PolicyMap::ClassMapMatch::classMap(Kor::Name("e")));
  start();
  settle();
  auto const missing = of().missing;
  ASSERT_THAT(missing, SizeIs(2));
  EXPECT_EQ(missing[0].className, "c");
  EXPECT_EQ(missing[0].object, "ip access-list gone");
  EXPECT_EQ(missing[1].className, "d");
  EXPECT_EQ(missing[1].object, "class-map e");
}

TEST_F(ExplanationTest, OfMissingObjectsOfClassesWithOnePriority) {
  simplePolicy();
  for (char const* const name : {"e", "d"}) {
    policy("pm")->classPrioIs(Kor::Name(name), 10);  // that of class c
  }
  start();
  settle();
  auto const missing = of().missing;
  ASSERT_THAT(missing, SizeIs(2));
  EXPECT_EQ(missing[0].object, "class-map d");
  EXPECT_EQ(missing[1].object, "class-map e");
}

TEST_F(ExplanationTest, OfInterfacesWithoutTheRightKind) {
  simplePolicy();
  detach("Ethernet1");
  attach("pm", "Vlan10");
  start();
  settle();
  EXPECT_EQ(state(), ProgrammingState::noIntf);
  EXPECT_EQ(obstacle(), IntfObstacle::noLayer);
  ip6->intfAddressIs(intf("Vlan10"), Ip6::Address("2001:db8::1/64"));
  settle();
  EXPECT_EQ(obstacle(), IntfObstacle::noAddress);
  EXPECT_EQ(obstacle(ipv6), IntfObstacle::none);
  EXPECT_EQ(obstacle(mac), IntfObstacle::notPhysical);
  EXPECT_EQ(obstacle(mpls), IntfObstacle::notRouting);
  machine->nonexistent.insert(intf("Vlan10"));
  EXPECT_EQ(obstacle(), IntfObstacle::absent);
}

TEST_F(ExplanationTest, OfInterfacesThatAreNotServed) {
  simplePolicy();
  start(false);
  settle();
  EXPECT_EQ(state(), ProgrammingState::noIntf);
  EXPECT_EQ(obstacle(), IntfObstacle::notServed);
}

TEST_F(ExplanationTest, OfAPortChannelWithoutMembers) {
  helper->expandPortChannelsIs(true);
  simplePolicy();
  detach("Ethernet1");
  attach("pm", "PortChannel1");
  start();
  settle();
  EXPECT_EQ(state(), ProgrammingState::noIntf);
  EXPECT_EQ(obstacle(), IntfObstacle::noMembers);
  lag->memberOfIs(intf("Ethernet5"), intf("PortChannel1"));
  settle();
  EXPECT_EQ(state(), ProgrammingState::programmed);
  EXPECT_EQ(obstacle(), IntfObstacle::none);
}

TEST_F(ExplanationTest, OfInterfacesThatTheMachineExcludes) {
  class Excluding final : public ServiceSm {
   public:
    using ServiceSm::ServiceSm;
    bool allowedIntfForType(Vorel::IntfId /*which*/, ClassMapMatchOption option) override {
      return option != ipv4;
    }
  };
  simplePolicy();
  start<Excluding>();
  settle();
  EXPECT_EQ(state(), ProgrammingState::noIntf);
  EXPECT_EQ(obstacle(), IntfObstacle::excluded);
}

TEST_F(ExplanationTest, CallsNoOperationAndChangesNothing) {
  begin();
  rule("acl", 20);
  EXPECT_THAT(explain(*machine), SizeIs(4));
  EXPECT_THAT(helper->taken(), IsEmpty());
  EXPECT_THAT(settle(), testing::Contains(testing::HasSubstr("acl:20")));
}

// The trace of passes.

TEST_F(ExplanationTest, EachPassIsTracedWithItsCauseItsStepsAndItsRetry) {
  TestSupport::TraceRecorder const trace("PolicyMap", 4);
  helper->answers["commit"] = "full";
  begin();
  EXPECT_THAT(trace.lines(),
              ElementsAre("PolicyMap|3|pm/input: rules changed: createPolicy ipv4, addRule ipv4, "
                          "addIntfToPolicy ipv4 Ethernet1, commitPolicy ipv4",
                          "PolicyMap|4|pm/input: createPolicy ipv4: done",
                          "PolicyMap|4|pm/input: addRule ipv4: done",
                          "PolicyMap|4|pm/input: addIntfToPolicy ipv4 Ethernet1: done",
                          "PolicyMap|4|pm/input: commitPolicy ipv4: full",
                          "PolicyMap|2|pm/input: commitPolicy failed: full",
                          "PolicyMap|2|pm/input: next try in 1 s"));
}

TEST_F(ExplanationTest, TheCauseOfAPassIsTraced) {
  auto const changed = action("pm", "c");
  helper->updateActionSupportedIs(true);
  begin();
  TestSupport::TraceRecorder const trace("PolicyMap", 3);
  attach("pm", "Ethernet2");
  settle();
  changed->numberIs(7);
  settle();
  machine->handleIntf(intf("Ethernet1"), true);
  settle();
  machine->aclConfigIs(Kor::make<Acl::Config>());
  settle();
  EXPECT_THAT(
      trace.lines(),
      ElementsAre("PolicyMap|3|pm/input: interfaces changed: addIntfToPolicy ipv4 Ethernet2, "
                  "commitPolicy ipv4",
                  "PolicyMap|3|pm/input: actions changed: updateAction class c, commitPolicy ipv4",
                  "PolicyMap|3|pm/input: to be programmed again: recreatePolicy ipv4, addRule "
                  "ipv4, commitPolicy ipv4",
                  "PolicyMap|3|pm/input: replaced configuration: removeIntfFromPolicy ipv4 "
                  "Ethernet1, removeIntfFromPolicy ipv4 Ethernet2, deletePolicy ipv4"));
}

TEST_F(ExplanationTest, APendingResultIsTraced) {
  helper->asyncOperationsIs(true);
  TestSupport::TraceRecorder const trace("PolicyMap", 4);
  begin();
  EXPECT_EQ(trace.lines().back(), "PolicyMap|4|pm/input: addIntfToPolicy ipv4 Ethernet1: pending");
}

}  // namespace
}  // namespace policymap
