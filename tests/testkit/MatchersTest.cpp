// SPDX-License-Identifier: Apache-2.0
#include "testkit/Matchers.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace PolicyMapTestKit::test {
namespace {

using testing::AllOf;
using testing::Gt;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// What a failing assertion says about the value; "it matches" if it does not fail.
template <class Value, class MatcherOf>
std::string mismatch(Value const& value, MatcherOf const& matcher) {
  testing::StringMatchResultListener listener;
  return testing::ExplainMatchResult(matcher, value, &listener) ? "it matches" : listener.str();
}

class Matching : public testing::Test {
 protected:
  Lab lab{LabOptions{.subRulesForPorts = true}};

  Matching() {
    load(lab,
         "ip access-list web\n 10 permit tcp any any eq 80\n 20 permit tcp any any range 8 11\n"
         " 30 permit tcp any any range 8 12\n"
         "class-map match-any web\n match access-group web\n"
         "policy-map edge\n class web\n  set action1 7\n  set action3 9\n"
         "interface Ethernet1\n service-policy input edge\n"
         "interface Ethernet2\n service-policy input edge\n");
  }
};

TEST_F(Matching, ProgrammedSaysWhatIsMissing) {
  Record record = lab.record("edge");
  EXPECT_THAT(record, Programmed());
  record.dirty = true;
  EXPECT_EQ(mismatch(record, Programmed()), "it is not committed");
  record.created = false;
  EXPECT_EQ(mismatch(record, Programmed()), "it is not created");
  EXPECT_THAT(record, Not(Programmed()));
}

TEST_F(Matching, HasRuleSaysWhichPartDiffers) {
  Record const record = lab.record("edge");
  EXPECT_THAT(record, HasRule("web 10"));
  EXPECT_THAT(record, HasRule("web 10", "permit tcp any any eq 80"));
  EXPECT_THAT(record, HasRule("web 10", "permit tcp any any eq 80", Action1(7), Action3(Gt(8))));
  EXPECT_THAT(record, HasRule("web 30", SubRules(2)));
  EXPECT_EQ(mismatch(record, HasRule("web 11")),
            "no rule of edge/input ipv4 'web 11'; nearest: 'web 10', 'web 20', 'web 30'");
  EXPECT_EQ(mismatch(record, HasRule("web 10", "permit tcp any any eq 81")),
            "rule web 10 is \"permit tcp any any eq 80\"");
  EXPECT_EQ(mismatch(record, HasRule("web 10", Action1(7), Action2(1))),
            "of rule web 10, action2 is 0");
  EXPECT_EQ(mismatch(record, HasRule("web 30", SubRules(3))),
            "of rule web 30, the number of sub-rules is 2");
}

TEST_F(Matching, ARulesValuesAreMatchedByThemselves) {
  RuleRecord const rule = lab.record("edge").rule("web 20");
  EXPECT_THAT(rule, Action1(7));
  EXPECT_THAT(rule, ActionValue(3, 9));
  EXPECT_THAT(rule, SubRules(1));
  EXPECT_EQ(mismatch(rule, ActionValue(1, 8)), "action1 is 7");
}

TEST_F(Matching, RulesAreNamesTheFirstDifference) {
  Record const record = lab.record("edge");
  std::string const first = "web 10 permit tcp any any eq 80";
  std::string const second = "web 20 permit tcp any any range 8 11";
  std::string const third = "web 30 permit tcp any any range 8 12";
  EXPECT_THAT(record, RulesAre(first, second, third));
  EXPECT_EQ(mismatch(record, RulesAre(second, first, third)),
            "rule 1 is \"" + first + "\", not \"" + second + "\"");
  EXPECT_EQ(mismatch(record, RulesAre(first, second)),
            "rule 3 is \"" + third + "\", and not expected");
  EXPECT_EQ(mismatch(record, RulesAre(first, second, third, "web 40")),
            "rule 4 is missing: \"web 40\"");
  EXPECT_THAT(Record(), RulesAre());
}

TEST_F(Matching, OnInterfacesNamesWhatIsMissingAndWhatIsTooMuch) {
  Record const record = lab.record("edge");
  EXPECT_THAT(record, OnInterfaces("Ethernet2", "Ethernet1"));
  EXPECT_EQ(mismatch(record, OnInterfaces("Ethernet1")), "it is also on Ethernet2");
  EXPECT_EQ(mismatch(record, OnInterfaces("Ethernet1", "Ethernet2", "Ethernet3")),
            "it is not on Ethernet3");
  EXPECT_EQ(mismatch(record, OnInterfaces("Ethernet1", "Ethernet3")),
            "it is not on Ethernet3, and it is also on Ethernet2");
}

TEST_F(Matching, FailsWithSaysWhatTheFailureIs) {
  EXPECT_EQ(mismatch(lab.failure("edge"), FailsWith("x")), "there is no failure");
  lab.inject({"addRuleError", "table full"});
  lab.load("no ip access-list web\nip access-list web\n 15 permit ip any any\n");
  auto const failure = lab.failure("edge");
  EXPECT_THAT(failure, FailsWith("table full"));
  EXPECT_THAT(failure, FailsWith(HasSubstr("full"), "addRule", "web 15"));
  EXPECT_EQ(mismatch(failure, FailsWith("full")), "the text is \"table full\"");
  EXPECT_EQ(mismatch(failure, FailsWith("table full", "commitPolicy")), "the operation is addRule");
  EXPECT_EQ(mismatch(failure, FailsWith("table full", "addRule", "web 16")),
            "the rule is \"web 15\"");
}

TEST_F(Matching, NoFailureSaysWhatFailed) {
  EXPECT_THAT(lab.failure("edge"), NoFailure());
  lab.inject({"commitError", "full"});
  lab.load("interface Ethernet3\n service-policy input edge\n");
  EXPECT_THAT(lab.failure("edge"), Not(NoFailure()));
  EXPECT_EQ(testing::PrintToString(lab.failure("edge")), "commitPolicy: full");
}

TEST_F(Matching, AllProgrammedSaysWhatIsNot) {
  EXPECT_THAT(lab.explain(), AllProgrammed());
  EXPECT_EQ(mismatch(Lab().explain(), AllProgrammed()), "nothing is attached");
  lab.load("interface Vlan7\n service-policy input edge\n service-policy output other\n");
  EXPECT_EQ(mismatch(lab.explain(), AllProgrammed()),
            "edge/input ipv4: programmed at Ethernet1, Ethernet2; not at Vlan7 (neither layer 2 "
            "nor has an address)\n"
            "other/output: policy-map other does not exist");
}

// What can match nothing is an error, also below Not().
TEST_F(Matching, ATextThatCanMatchNothingIsAnError) {
  using Unread = std::invalid_argument;
  Record const record = lab.record("edge");
  EXPECT_THROW(static_cast<void>(HasRule("web10")), Unread);
  EXPECT_THROW(static_cast<void>(HasRule("web ten", Action1(7))), Unread);
  EXPECT_THROW(static_cast<void>(HasRule("", "permit ip any any")), Unread);
  EXPECT_THROW(static_cast<void>(FailsWith("x", "comitPolicy")), LookupError);
  EXPECT_THROW(static_cast<void>(FailsWith("x", "addRule", "web")), Unread);
  EXPECT_THROW(static_cast<void>(Calls("addRule", "hwInitt x")), LookupError);
  EXPECT_THROW(static_cast<void>(OnInterfaces("Foo")), Kor::RangeException);
  EXPECT_THROW(static_cast<void>(lab.journal().calls("addRul")), LookupError);
  EXPECT_THROW(mismatch(record, RulesAre("web 10")), Unread);
  EXPECT_THAT([&] { mismatch(record, Not(HasRule("web 10", "permit tcp any any eqq 80"))); },
              testing::ThrowsMessage<Text::InputError>(
                  HasSubstr("expected rule:1:20: expected a rule option (")));
}

TEST_F(Matching, RulesAreTellsClassesApart) {
  lab.load("class-map match-any two\n match access-group web\n"
           "policy-map edge\n class two insert-before web\n exit\n"
           "ip access-list web\n no 20\n no 30\n");
  Record const record = lab.record("edge");
  EXPECT_THAT(record, RulesAre("two web 10 permit tcp any any eq 80",
                               "web web 10 permit tcp any any eq 80"));
  EXPECT_EQ(mismatch(record, RulesAre("web web 10 permit tcp any any eq 80",
                                      "two web 10 permit tcp any any eq 80")),
            "rule 1 is \"two web 10 permit tcp any any eq 80\", not \"web web 10 permit tcp any "
            "any eq 80\"");
}

TEST_F(Matching, AFailureOfNoRuleNamesNone) {
  lab.inject({"commitError", "full"});
  lab.load("interface Ethernet3\n service-policy input edge\n");
  EXPECT_EQ(mismatch(lab.failure("edge"), FailsWith("full", "commitPolicy", "web 10")),
            "it names no rule");
}

TEST(RuleMatchers, TakeEverySpellingOfARule) {
  Lab lab;
  load(lab, "ip access-list a\n 10 permit icmp any any echo\n 20 deny tcp any any eq www\n"
            "class-map match-any a\n match access-group a\n match mac any any arp\n"
            "policy-map a\n class a\n"
            "interface Ethernet1\n service-policy input a\n");
  Record const record = lab.record("a", "input", PolicyMap::ClassMapMatchOption::ipv4);
  EXPECT_THAT(record, HasRule("a 10", "permit icmp any any echo"));
  EXPECT_THAT(record, HasRule("a 10", "permit icmp any any 8"));
  EXPECT_THAT(record, HasRule("a 10", record.rules[0].matchText()));
  EXPECT_THAT(record, RulesAre("a 10 permit  icmp any any echo", "a 20 deny tcp any any eq 80"));
  EXPECT_EQ(mismatch(record, HasRule("a 10", "permit icmp any any echo-reply")),
            "rule a 10 is \"" + Text::describe(record.rules[0].match) + "\"");
  EXPECT_EQ(mismatch(record, HasRule("a 20", "permit tcp any any eq www")),
            "rule a 20 is \"deny tcp any any eq 80\"");
  EXPECT_THAT(lab.record("a", "input", PolicyMap::ClassMapMatchOption::mac),
              AllOf(HasRule("20", "permit any any arp"),
                    HasRule("20", "permit any any ethertype arp"),
                    HasRule("20", "permit any any ethertype 2054")));
}

TEST_F(Matching, AFailureIsOfOneOption) {
  lab.inject({"commitError", "full"});
  lab.load("ipv6 access-list six\n permit ipv6 any any\n"
           "class-map match-any web\n match ipv6 access-group six\n");
  using PolicyMap::ClassMapMatchOption;
  EXPECT_THAT(lab.failure("edge", "input", ClassMapMatchOption::ipv6), FailsWith("full"));
  EXPECT_THAT(lab.failure("edge", "input", ClassMapMatchOption::ipv4), Not(FailsWith("full")));
  EXPECT_THAT(lab.failure("edge"), FailsWith("full"));
  EXPECT_THAT([&] { static_cast<void>(lab.failure("edge", "output")); },
              testing::ThrowsMessage<LookupError>(
                  "no attached policy-map 'edge/output'; nearest: 'edge/input'"));
}

TEST_F(Matching, CallsNamesTheFirstDifference) {
  Journal const calls = lab.journal().ofPolicy("edge");
  EXPECT_THAT(calls, Calls("createPolicy", "addRule edge/input ipv4 web web 10", "addRule",
                           "addRule", "addRule", "addIntfToPolicy",
                           "addIntfToPolicy edge/input ipv4 Ethernet2", "commitPolicy"));
  EXPECT_THAT(mismatch(calls, Calls("createPolicy", "commitPolicy")),
              StartsWith("call 2 is \"addRule edge/input ipv4 web web 10 "));
  EXPECT_EQ(mismatch(lab.journal().calls("commitPolicy"), Calls("commitPolicy edge")),
            "call 1 is \"commitPolicy edge/input ipv4\", not \"commitPolicy edge\"")
      << "whole words";
}

TEST_F(Matching, AFailingAssertionPrintsTheRecordAndWhatDiffers) {
  EXPECT_EQ(testing::PrintToString(lab.record("edge").rules.front()),
            "web 10 permit tcp any any eq 80, action1 7, action3 9");
  EXPECT_THAT(testing::PrintToString(lab.record("edge")),
              HasSubstr("edge/input ipv4, on Ethernet1"));
  EXPECT_EQ(testing::DescribeMatcher<Record const&>(HasRule("web 10", Action1(8))),
            "has rule web 10 that has action1 that is equal to 8");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
