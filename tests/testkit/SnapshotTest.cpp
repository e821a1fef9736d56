// SPDX-License-Identifier: Apache-2.0
#include "testkit/Snapshot.h"

#include "testkit/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(Snapshot, HasTheRecordsByPolicyDirectionAndOption) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ipv6 access-list P\n permit ipv6 any any\n"
            "class-map match-any P\n match ipv6 access-group P\n"
            "policy-map A\n class P\n"
            "interface Ethernet1\n service-policy output P\n service-policy input A\n");
  std::vector<std::string> names;
  for (Record const& record : lab.snapshot()) {
    names.push_back(record.name());
  }
  EXPECT_THAT(names, ElementsAre("A/input ipv4", "A/input ipv6", "P/input ipv4", "P/output ipv4",
                                 "P/output ipv6"));
}

TEST(Snapshot, FindsTheOnlyRecordWithoutAnOption) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_EQ(lab.record("P").option, ClassMapMatchOption::ipv4);
}

TEST(Snapshot, PrefersTheRecordThatIsCreated) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ipv6 access-list P\n permit ipv6 any any\n"
            "class-map match-any P\n no match access-group P\n match ipv6 access-group P\n");
  ASSERT_EQ(lab.snapshot().size(), 2U);
  EXPECT_EQ(lab.record("P").option, ClassMapMatchOption::ipv6);
  EXPECT_FALSE(lab.record("P", "input", ClassMapMatchOption::ipv4).created);
}

TEST(Snapshot, NamesTheNearestRecordsOfALookUpThatFails) {
  Lab lab;
  EXPECT_THAT([&] { static_cast<void>(lab.record("edge")); },
              ThrowsMessage<LookupError>("no record 'edge/input'; there is none at all"));
  load(lab, simplePolicy);
  EXPECT_THAT([&] { static_cast<void>(lab.record("P", "output")); },
              ThrowsMessage<LookupError>("no record 'P/output'; nearest: 'P/input ipv4'"));
  load(lab, "ipv6 access-list P\n permit ipv6 any any\n"
            "class-map match-any P\n match ipv6 access-group P\n");
  EXPECT_THAT(
      [&] { static_cast<void>(lab.record("P")); },
      ThrowsMessage<LookupError>(
          "more than one record 'P/input': 'P/input ipv4', 'P/input ipv6'; name the option"));
}

TEST(Snapshot, IsAValue) {
  Lab lab;
  load(lab, simplePolicy);
  Snapshot const before = lab.snapshot();
  load(lab, "policy-map P\n class P\n  set action1 2\n");
  EXPECT_NE(lab.snapshot(), before);
  EXPECT_EQ(before.record("P").rule("P 10").action(1), 1U);
}

TEST(Snapshot, KeepsTheOrderOfProgrammingOverChanges) {
  Lab lab;
  load(lab, simplePolicy);
  load(lab, "ip access-list P\n 5 permit udp any any\n 30 permit icmp any any\n");
  std::vector<std::string> rules;
  for (RuleRecord const& rule : lab.record("P")) {
    rules.push_back(rule.describe());
  }
  EXPECT_THAT(rules, ElementsAre(HasSubstr("P 5 "), HasSubstr("P 10 "), HasSubstr("P 30 ")));
}

TEST(Snapshot, PutsWhatATestWroteItselfLast) {
  Lab lab;
  load(lab, simplePolicy);
  auto const record = lab.helper()->testData({{"P", "input"}, ClassMapMatchOption::ipv4});
  std::vector<PolicyMap::AclRuleKey> expected{lab.record("P").rules.front().key};
  for (std::uint32_t const seq : {1U, 2U, 3U, 4U}) {
    expected.emplace_back("A", "A", seq, ClassMapMatchOption::ipv4);
  }
  for (auto own = expected.rbegin(); own + 1 != expected.rend(); ++own) {
    record->ruleMatchIs(*own, Acl::IpRuleConfig());
  }
  std::vector<PolicyMap::AclRuleKey> keys;
  for (RuleRecord const& rule : lab.record("P")) {
    keys.push_back(rule.key);
  }
  EXPECT_EQ(keys, expected);
}

TEST(Snapshot, PrintsAllRecords) {
  std::ostringstream out;
  Lab lab;
  out << lab.snapshot() << "; ";
  load(lab, simplePolicy);
  out << lab.snapshot();
  EXPECT_EQ(out.str(), "no records; P/input ipv4, on Ethernet1\n"
                       "  P: P 10 permit tcp any any eq 80, action1 1");
}

}  // namespace
}  // namespace PolicyMapTestKit::test
