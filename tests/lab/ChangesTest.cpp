// SPDX-License-Identifier: Apache-2.0
#include "lab/Changes.h"

#include "lab/Sessions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;

std::string changesOf(std::vector<PolicyRecord> const& before, Session const& session) {
  std::ostringstream out;
  printChanges(out, {}, before, readRecords(session));
  return out.str();
}

TEST(Changes, NothingChangedIsSaid) {
  Session session({});
  load(session, simplePolicy);
  EXPECT_EQ(changesOf(readRecords(session), session), "nothing changed in the records\n\n");
}

TEST(Changes, NewPolicyShowsAllThatCame) {
  Session session({});
  load(session, simplePolicy);
  EXPECT_EQ(changesOf({}, session), "policy-map P, input, ipv4\n"
                                    "  state       created\n"
                                    "  counts      created 0 -> 1, committed 0 -> 1\n"
                                    "  interfaces  + Ethernet1\n"
                                    "  rules       + P P 10: permit tcp any any eq 80\n"
                                    "\n");
}

TEST(Changes, ActionsAreToldByClassAndValue) {
  Session session({.updateAction = true});
  load(session, portRange);
  auto const before = readRecords(session);
  load(session, "policy-map P\n class P\n  set action1 7\n  set action2 2\n");
  EXPECT_EQ(changesOf(before, session),
            "policy-map P, input, ipv4\n"
            "  counts      committed 1 -> 2, action updates begun 0 -> 1, ended 0 -> 1\n"
            "  actions     class P: action1 1 -> 7 (2 rules)\n"
            "              class P: action2 0 -> 2 (2 rules)\n"
            "\n");
}

TEST(Changes, RulesComeGoAndChange) {
  Session session({.subRulesForPorts = true});
  load(session, portRange);
  auto const before = readRecords(session);
  load(session, "ip access-list P\n no 10\n 20 permit udp any any range 5004 5007\n"
                " permit ip any any\n");
  EXPECT_EQ(changesOf(before, session),
            "policy-map P, input, ipv4\n"
            "  counts      created 1 -> 2, committed 1 -> 2\n"
            "  rules       - P P 10: permit tcp any any eq 80\n"
            "              - P P 20: permit udp any any range 5004 5008\n"
            "              + P P 20: permit udp any any range 5004 5007\n"
            "              P P 20: sub-rules 2 -> 1\n"
            "              + P P 30: permit ip any any\n"
            "\n");
}

TEST(Changes, InterfacesComeAndGo) {
  Session session({});
  load(session, simplePolicy);
  auto const before = readRecords(session);
  load(session, "no interface Ethernet1\ninterface Ethernet2\n service-policy input P\n");
  EXPECT_EQ(changesOf(before, session), "policy-map P, input, ipv4\n"
                                        "  counts      committed 1 -> 2\n"
                                        "  interfaces  + Ethernet2\n"
                                        "              - Ethernet1\n"
                                        "\n");
}

TEST(Changes, AnotherOrderOfClassesIsTold) {
  Session session({});
  load(session, "class-map A\n match ip tcp any any\nclass-map B\n match ip udp any any\n"
                "policy-map P\n class A\n class B\ninterface Ethernet1\n service-policy input P\n");
  auto const before = readRecords(session);
  load(session, "policy-map P\n class B insert-before A\n");
  EXPECT_THAT(changesOf(before, session),
              HasSubstr("  rules       in another order, by class: B, A\n"));
}

TEST(Changes, DeletedPolicyLosesEverything) {
  Session session({});
  load(session, simplePolicy);
  auto const before = readRecords(session);
  load(session, "no policy-map P\n");
  EXPECT_EQ(changesOf(before, session), "policy-map P, input, ipv4\n"
                                        "  state       no longer created\n"
                                        "  interfaces  - Ethernet1\n"
                                        "  rules       - P P 10: permit tcp any any eq 80\n"
                                        "\n");
}

}  // namespace
}  // namespace lab::test
