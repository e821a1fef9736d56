// SPDX-License-Identifier: Apache-2.0
#include "testkit/Record.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace PolicyMapTestKit::test {
namespace {

// what() of the LookupError that `look` throws; "found" if it throws none.
template <class Look>
std::string errorOf(Look const& look) {
  try {
    static_cast<void>(look());
  } catch (LookupError const& error) {
    return error.what();
  }
  return "found";
}

template <class Value>
std::string printed(Value const& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

class RecordOfTwoClasses : public testing::Test {
 protected:
  Lab lab;

  RecordOfTwoClasses() {
    load(lab, "ip access-list web\n 10 permit tcp any any eq 80\n 20 permit tcp any any eq 443\n"
              "class-map match-any web\n match access-group web\n"
              "class-map match-any both\n match access-group web\n match ip udp any any eq 53\n"
              "policy-map edge\n class web\n  set action1 7\n class both\n  set action3 9\n"
              "interface Ethernet1\n service-policy input edge\n");
  }
};

TEST_F(RecordOfTwoClasses, FindsARuleByListAndNumber) {
  Record const record = lab.record("edge");
  EXPECT_EQ(record.rule("20").match, record.rules.back().match) << "a rule of the class-map itself";
  EXPECT_EQ(record.rule("web web 10").action(1), 7U);
  EXPECT_EQ(record.rule("both web 10").action(3), 9U);
}

TEST_F(RecordOfTwoClasses, NamesTheNearestRulesOfALookUpThatFails) {
  Record const record = lab.record("edge");
  EXPECT_EQ(errorOf([&] { return record.rule("web 30").action(1); }),
            "no rule of edge/input ipv4 'web 30'; nearest: 'web 10', 'web 20', 'web 10', of 5");
  EXPECT_EQ(errorOf([&] { return record.rule("web 10").action(1); }),
            "no single rule of edge/input ipv4 'web 10'; nearest: 'web web 10', 'web web 20', "
            "'both web 10', of 5");
  EXPECT_EQ(errorOf([&] { return Record().rule("web 10").action(1); }),
            "no rule of / ipv4 'web 10'; there is none at all");
}

TEST_F(RecordOfTwoClasses, RefusesAnActionThatDoesNotExist) {
  RuleRecord const rule = lab.record("edge").rules.front();
  EXPECT_EQ(rule.action(3), 0U);
  EXPECT_EQ(errorOf([&] { return rule.action(4); }),
            "no action 'action4'; nearest: 'action1', 'action2', 'action3'");
  EXPECT_EQ(errorOf([&] { return rule.action(0); }).substr(0, 20), "no action 'action0';");
}

TEST_F(RecordOfTwoClasses, IsIteratedAndPrintedInTheOrderOfProgramming) {
  EXPECT_EQ(printed(lab.record("edge")), "edge/input ipv4, on Ethernet1\n"
                                         "  web: web 10 permit tcp any any eq 80, action1 7\n"
                                         "  web: web 20 permit tcp any any eq 443, action1 7\n"
                                         "  both: web 10 permit tcp any any eq 80, action3 9\n"
                                         "  both: web 20 permit tcp any any eq 443, action3 9\n"
                                         "  both: 20 permit udp any any eq 53, action3 9");
}

TEST(Record, PrintsWhatIsNotAsUsual) {
  Lab lab;
  load(lab, "ip access-list P\n permit tcp any any range 1 5\n"
            "class-map match-any P\n match access-group P\npolicy-map P\n class P\n"
            "interface Ethernet1\n service-policy input P\n");
  EXPECT_EQ(printed(lab.record("P").rules.front()),
            "P 10 permit tcp any any range 1 5, range checker");
  load(lab, "no policy-map P\n");
  EXPECT_EQ(printed(lab.record("P")), "P/input ipv4, not created, on no interface");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
