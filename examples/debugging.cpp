// SPDX-License-Identifier: Apache-2.0

// Tests that fail on purpose, and are disabled; docs/debugging.md runs them and takes them
// apart.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;

namespace {

constexpr auto edge = R"(ip access-list web
                           10 permit tcp any any eq 80
                         class-map match-any web
                           match access-group web
                         policy-map edge
                           class web
                             set action1 7
                         interface Vlan10
                           service-policy input edge)";

// Vlan10 has no address.
TEST(Debugging, DISABLED_NoRecord) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(lab.record("edge"), HasRule("web 10", Action1(7)));
}

TEST(Debugging, DISABLED_NotProgrammed) {
  Lab lab;
  lab.load(edge);
  ASSERT_THAT(lab.explain("edge").notProgrammed(), testing::IsEmpty());
}

// The edit creates the policy again.
TEST(Debugging, DISABLED_TooManyCalls) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Vlan10\n ip address 192.0.2.1/24");
  std::uint64_t const next = lab.journal().next();
  lab.load("ip access-list web\n 20 permit tcp any any eq 443");
  EXPECT_THAT(lab.journal().since(next).calls(), Calls("addRule", "commitPolicy"));
}

// The edit adds a rule.
TEST(Debugging, DISABLED_OtherRecords) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Vlan10\n ip address 192.0.2.1/24");
  Snapshot const before = lab.snapshot();
  lab.load("ip access-list web\n 20 permit tcp any any eq 443");
  EXPECT_EQ(lab.snapshot(), before);
}

// The helper is called for a policy that does not exist.
TEST(Debugging, DISABLED_BrokenOrder) {
  Lab lab;
  lab.load(edge);
  auto const data = lab.machine()->policyMapSm({"edge", "input"})->policyCommonData();
  lab.helper()->commitPolicy(data, PolicyMap::ClassMapMatchOption::ipv4);
}

TEST(Debugging, Repaired) {
  Lab lab;
  lab.load(edge);
  lab.load("interface Vlan10\n ip address 192.0.2.1/24");
  ASSERT_THAT(lab.explain("edge").notProgrammed(), testing::IsEmpty());
  EXPECT_THAT(lab.record("edge"), HasRule("web 10", Action1(7)));
}

}  // namespace
