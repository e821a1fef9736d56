// SPDX-License-Identifier: Apache-2.0
#include "testkit/faults/FaultPlan.h"

#include <gmock/gmock.h>

namespace {

using PolicyMapTestKit::Capacity;
using PolicyMapTestKit::FaultEffect;
using PolicyMapTestKit::FaultPlan;
using PolicyMapTestKit::Occurrence;
using PolicyMapTestKit::parseFaultPlan;
using PolicyMapTestKit::PlannedFault;
using testing::ElementsAre;

PlannedFault faultOf(std::string_view text) {
  FaultPlan const plan = parseFaultPlan(text);
  EXPECT_EQ(plan.scripts.size(), 1U) << text;
  EXPECT_EQ(plan.scripts.at(0).size(), 1U) << text;
  return plan.scripts.at(0).at(0);
}

std::string planError(std::string_view text) {
  try {
    (void)parseFaultPlan(text);
  } catch (PolicyMapTestKit::Text::InputError const& error) {
    return error.what();
  }
  return "no error";
}

std::string checkError(PlannedFault const& fault) {
  try {
    PolicyMapTestKit::check(fault);
  } catch (std::exception const& error) {
    return error.what();
  }
  return "no error";
}

TEST(FaultPlan, AnOperationAloneFailsEachTime) {
  EXPECT_EQ(faultOf("addRule"), PlannedFault{.operations = {"addRule"}});
  EXPECT_EQ(faultOf("any"), PlannedFault{});
  EXPECT_EQ(faultOf("addRule,updateAction").operations,
            (std::vector<std::string>{"addRule", "updateAction"}));
}

TEST(FaultPlan, WordsSelectCalls) {
  PlannedFault const fault = faultOf(
      "any policy=edge direction=output option=ipv6 class=web rule=web:10 interface=Ethernet3/1");
  EXPECT_EQ(fault.policy, "edge");
  EXPECT_EQ(fault.direction, "output");
  EXPECT_EQ(fault.option, PolicyMap::ClassMapMatchOption::ipv6);
  EXPECT_EQ(fault.className, "web");
  EXPECT_EQ(fault.rule, "web:10");
  EXPECT_EQ(fault.intf, Vorel::IntfId("Ethernet3/1"));
  EXPECT_EQ(faultOf("any rule=\"web 10\"").rule, "web:10") << "as the journal names it";
}

TEST(FaultPlan, WordsSayWhichCallFails) {
  EXPECT_EQ(faultOf("any nth=3").occurrence, Occurrence::nth(3));
  EXPECT_EQ(faultOf("any first=3").occurrence, Occurrence::first(3));
  EXPECT_EQ(faultOf("any from=3").occurrence, Occurrence::from(3));
  EXPECT_EQ(faultOf("any every=3").occurrence, Occurrence::every(3));
  EXPECT_EQ(faultOf("any probability=0.25").occurrence, Occurrence::withProbability(0.25));
  EXPECT_EQ(faultOf("any probability=0.25 seed=7").occurrence,
            Occurrence::withProbability(0.25, 7));
  EXPECT_EQ(faultOf("any seed=7 probability=0.25").occurrence,
            Occurrence::withProbability(0.25, 7));
  EXPECT_TRUE(faultOf("any once").once);
  EXPECT_TRUE(faultOf("any optional").optional);
}

TEST(FaultPlan, WordsSayWhatHappens) {
  EXPECT_EQ(faultOf("any before").effect, FaultEffect::before);
  EXPECT_EQ(faultOf("any after").effect, FaultEffect::after);
  EXPECT_EQ(faultOf("any throws").effect, FaultEffect::throws);
  EXPECT_EQ(faultOf("any hold").effect, FaultEffect::hold);
  EXPECT_EQ(faultOf("any drop").effect, FaultEffect::drop);
  EXPECT_EQ(faultOf("any duplicate").effect, FaultEffect::duplicate);
  PlannedFault const delayed = faultOf("commitPolicy delay=0.5 text=slow");
  EXPECT_EQ(delayed.effect, FaultEffect::delay);
  EXPECT_EQ(delayed.seconds, 0.5);
  EXPECT_EQ(delayed.text, "slow");
  EXPECT_EQ(faultOf("any text=\"table full\"").text, "table full");
  EXPECT_EQ(faultOf(R"(any text="a \"b\" \\ ; # c")").text, R"(a "b" \ ; # c)");
}

TEST(FaultPlan, LinesSemicolonsAndThenSeparateFaults) {
  FaultPlan const plan = parseFaultPlan("# two scripts\n"
                                        "addRule nth=1 then commitPolicy first=2  # in this order\n"
                                        "\r\n;; createPolicy ; capacity rules=10 policies=2;\n"
                                        "capacity rules-per-policy=5 range-checkers=0 "
                                        "interfaces-per-policy=1");
  ASSERT_EQ(plan.scripts.size(), 2U);
  EXPECT_THAT(plan.scripts[0],
              ElementsAre(PlannedFault{.operations = {"addRule"}, .occurrence = Occurrence::nth(1)},
                          PlannedFault{.operations = {"commitPolicy"},
                                       .occurrence = Occurrence::first(2)}));
  EXPECT_THAT(plan.scripts[1], ElementsAre(PlannedFault{.operations = {"createPolicy"}}));
  EXPECT_EQ(plan.capacity, (Capacity{.rules = 10,
                                     .rulesPerPolicy = 5,
                                     .rangeCheckers = 0,
                                     .interfacesPerPolicy = 1,
                                     .policies = 2}));
  EXPECT_EQ(parseFaultPlan(" \n# nothing\n"), FaultPlan());
}

TEST(FaultPlan, IsWrittenAsItIsRead) {
  for (char const* const text :
       {"any", "addRule,updateAction", "addRule nth=3 once", "commitPolicy first=2 before",
        "any from=2 after optional", "any every=4 throws text=\"table full\"",
        "any probability=0.25 seed=7", "commitPolicy hold", "commitPolicy drop",
        "commitPolicy duplicate", "commitPolicy delay=0.5", "any text=\"a \\\"b\\\"\"",
        "any policy=edge direction=input option=mpls class=web rule=web:10 interface=Ethernet1"}) {
    EXPECT_EQ(toText(faultOf(text)), text);
  }
}

TEST(FaultPlan, AFaultyLineIsRefusedWithItsPlaceAndTheNearestWords) {
  EXPECT_EQ(planError("addRul"), "fault plan:1:1: expected an operation (nearest: addRule, any, "
                                 "hwInit), found 'addRul'");
  EXPECT_EQ(
      planError("\n addRule nht=3"),
      "fault plan:2:10: expected a word of a fault (nearest: nth, once, text), found 'nht=3'");
  EXPECT_EQ(planError("capacity rule=3"),
            "fault plan:1:10: expected a limit (nearest: rules, policies, rules-per-policy), found "
            "'rule=3'");
  EXPECT_EQ(planError("capacity"),
            "fault plan:1:9: expected a limit, such as rules=1000, found end of line");
  EXPECT_EQ(planError("capacity rules=many"),
            "fault plan:1:10: expected rules=N, 0 or more, found 'rules=many'");
  EXPECT_EQ(planError("addRule nth=0"), "fault plan:1:9: expected nth=N, 1 or more, found 'nth=0'");
  EXPECT_EQ(planError("addRule nth=1 first=2"),
            "fault plan:1:15: expected one of nth, first, from, every and probability, not two, "
            "found 'first=2'");
  EXPECT_EQ(planError("addRule seed=7 nth=3"),
            "fault plan:1:9: expected probability=P with seed, found 'seed=7'");
  EXPECT_EQ(planError("addRule before after"),
            "fault plan:1:16: expected one of before, after, throws, hold, drop, duplicate and "
            "delay, not two, found 'after'");
  EXPECT_EQ(planError("addRule probability=2"),
            "fault plan:1:9: expected probability=NUMBER, from 0 to 1, found 'probability=2'");
  EXPECT_EQ(planError("commitPolicy delay=-1"),
            "fault plan:1:14: expected delay=NUMBER, from 0 to 1000000, found 'delay=-1'");
  EXPECT_EQ(planError("addRule once=yes"),
            "fault plan:1:9: expected once without a value, found 'once=yes'");
  EXPECT_EQ(planError("addRule policy"), "fault plan:1:9: expected policy=VALUE, found 'policy'");
  EXPECT_EQ(planError("addRule text="), "fault plan:1:9: expected text=VALUE, found 'text='");
  EXPECT_EQ(planError("addRule text=\"full"),
            "fault plan:1:14: expected a text that ends with a quotation mark, found '\"full'");
  EXPECT_EQ(planError("addRule option=ip"),
            "fault plan:1:9: expected option=ipv4, ipv6, mac or mpls, found 'option=ip'");
  EXPECT_EQ(planError("addRule direction=in"),
            "fault plan:1:9: expected direction=input or direction=output, found 'direction=in'");
  EXPECT_EQ(planError("addRule interface=?"),
            "fault plan:1:9: expected interface=NAME, found 'interface=?'");
  EXPECT_EQ(planError("nth=3"), "fault plan:1:1: expected an operation before nth, found 'nth=3'");
  EXPECT_EQ(planError("addRule nth=1 then"),
            "fault plan:1:19: expected a fault after then, found end of line");
}

TEST(FaultPlan, AFaultThatCannotHappenIsRefused) {
  EXPECT_EQ(planError("addRule hold"),
            "fault plan:1:9: expected a fault that is possible: hold: addRule has no asynchronous "
            "result, found 'hold'");
  EXPECT_EQ(planError("addRule then commitPolicy"),
            "fault plan:1:9: expected a fault that is possible: then: the fault before needs once, "
            "nth or first: addRule, found 'then'");
  EXPECT_EQ(checkError({.operations = {"addRul"}}),
            "no operation 'addRul'; nearest: 'addRule', 'hwInit', 'createPolicy', of 12");
  EXPECT_EQ(checkError({.occurrence = Occurrence::nth(0)}), "occurrence: calls are counted from 1");
  EXPECT_EQ(checkError({.occurrence = Occurrence::withProbability(1.5)}),
            "probability: a number from 0 to 1");
  EXPECT_EQ(checkError({.effect = FaultEffect::delay, .seconds = -1}), "delay: 0 s or more");
  EXPECT_EQ(checkError({}), "no error");
}

}  // namespace
