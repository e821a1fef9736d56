// SPDX-License-Identifier: Apache-2.0
#include "lab/Changes.h"

#include "lab/Labs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;

std::string changesOf(Snapshot const& before, Lab const& lab) {
  std::ostringstream out;
  printChanges(out, {}, difference(before, lab.snapshot()));
  return out.str();
}

TEST(Changes, NothingChangedIsSaid) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_EQ(changesOf(lab.snapshot(), lab), "nothing changed in the records\n\n");
}

TEST(Changes, NewPolicyShowsAllThatCame) {
  Lab lab;
  load(lab, simplePolicy);
  EXPECT_EQ(changesOf({}, lab), "policy-map P, input, ipv4\n"
                                "  state       created\n"
                                "  counts      created 0 -> 1, committed 0 -> 1\n"
                                "  interfaces  + Ethernet1\n"
                                "  rules       + P P 10: permit tcp any any eq 80\n"
                                "\n");
}

TEST(Changes, ActionsAreToldByClassAndValue) {
  Lab lab({.updateAction = true});
  load(lab, portRange);
  auto const before = lab.snapshot();
  load(lab, "policy-map P\n class P\n  set action1 7\n  set action2 2\n");
  EXPECT_EQ(changesOf(before, lab),
            "policy-map P, input, ipv4\n"
            "  counts      committed 1 -> 2, action updates begun 0 -> 1, ended 0 -> 1\n"
            "  actions     class P: action1 1 -> 7 (2 rules)\n"
            "              class P: action2 0 -> 2 (2 rules)\n"
            "\n");
}

TEST(Changes, RulesComeGoAndChange) {
  Lab lab({.subRulesForPorts = true});
  load(lab, portRange);
  auto const before = lab.snapshot();
  load(lab, "ip access-list P\n no 10\n 20 permit udp any any range 5004 5007\n"
            " permit ip any any\n");
  EXPECT_EQ(changesOf(before, lab), "policy-map P, input, ipv4\n"
                                    "  counts      created 1 -> 2, committed 1 -> 2\n"
                                    "  rules       - P P 10: permit tcp any any eq 80\n"
                                    "              - P P 20: permit udp any any range 5004 5008\n"
                                    "              + P P 20: permit udp any any range 5004 5007\n"
                                    "              P P 20: sub-rules 2 -> 1\n"
                                    "              + P P 30: permit ip any any\n"
                                    "\n");
}

TEST(Changes, InterfacesComeAndGo) {
  Lab lab;
  load(lab, simplePolicy);
  auto const before = lab.snapshot();
  load(lab, "no interface Ethernet1\ninterface Ethernet2\n service-policy input P\n");
  EXPECT_EQ(changesOf(before, lab), "policy-map P, input, ipv4\n"
                                    "  counts      committed 1 -> 2\n"
                                    "  interfaces  + Ethernet2\n"
                                    "              - Ethernet1\n"
                                    "\n");
}

TEST(Changes, AnotherOrderOfClassesIsTold) {
  Lab lab;
  load(lab, "class-map A\n match ip tcp any any\nclass-map B\n match ip udp any any\n"
            "policy-map P\n class A\n class B\ninterface Ethernet1\n service-policy input P\n");
  auto const before = lab.snapshot();
  load(lab, "policy-map P\n class B insert-before A\n");
  EXPECT_THAT(changesOf(before, lab),
              HasSubstr("  rules       in another order, by class: B, A\n"));
}

TEST(Changes, DeletedPolicyLosesEverything) {
  Lab lab;
  load(lab, simplePolicy);
  auto const before = lab.snapshot();
  load(lab, "no policy-map P\n");
  EXPECT_EQ(changesOf(before, lab), "policy-map P, input, ipv4\n"
                                    "  state       no longer created\n"
                                    "  interfaces  - Ethernet1\n"
                                    "  rules       - P P 10: permit tcp any any eq 80\n"
                                    "\n");
}

}  // namespace
}  // namespace lab::test
