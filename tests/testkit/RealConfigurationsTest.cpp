// SPDX-License-Identifier: Apache-2.0

// Real configurations in a Lab: what is programmed of them, and that no damage to them does harm.

#include "testkit/RealConfigurations.h"

#include "testkit/Labs.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

TEST_F(RealConfigurations, ClassesOfTheFirewallHaveTheRulesOfTheirGroups) {
  Lab lab;
  load(lab, "zbf-firewall-current.cfg");
  Record const z2 =
      lab.record("policy-z2-to-admin,policy-z2-to-z3", "input", ClassMapMatchOption::ipv4);
  EXPECT_THAT(z2, AllOf(Programmed(), OnInterfaces("GigabitEthernet0/0/2")));
  EXPECT_THAT(matchesOf(z2, "class-z2-srv-nfs"),
              UnorderedElementsAre("permit tcp 101.164.8.0/22 host 101.164.101.244 eq 2049",
                                   "permit tcp 101.164.8.0/22 host 101.164.101.236 eq 2049"));
  EXPECT_THAT(matchesOf(z2, "class-z2-puppet-udp-tftp"),
              ElementsAre("permit udp 101.164.8.0/22 host 101.164.101.251 eq 69"));
  EXPECT_THAT(matchesOf(z2, "class-default"), ElementsAre("permit ip any any"));
  Record const admin =
      lab.record("policy-admin-to-z2,policy-admin-to-z3", "input", ClassMapMatchOption::ipv4);
  EXPECT_THAT(admin, AllOf(Programmed(), OnInterfaces("GigabitEthernet0/0/0")));
  EXPECT_THAT(matchesOf(admin, "class-admin-z2-tcp-syslog"),
              UnorderedElementsAre("permit tcp 101.164.100.0/23 101.164.8.0/22 eq 514",
                                   "permit tcp 101.164.100.0/23 101.164.8.0/22 eq 2020",
                                   "permit tcp 101.164.100.0/23 101.164.8.0/22 eq 2021"));
}

TEST_F(RealConfigurations, AnEditOfTheFirewallChangesWhatItChanged) {
  Lab lab;
  load(lab, "zbf-firewall-candidate1.cfg");
  Snapshot const before = lab.snapshot();
  lab.journal().clear();
  load(lab, "zbf-firewall-current.cfg");
  EXPECT_THAT(lab.journal().ofPolicy("policy-admin-to-z2,policy-admin-to-z3").calls(),
              testing::IsEmpty());
  EXPECT_THAT(lab.record("policy-z2-to-admin,policy-z2-to-z3", "input", ClassMapMatchOption::ipv4),
              Programmed());
  Lab fresh;
  load(fresh, "zbf-firewall-current.cfg");
  EXPECT_EQ(
      lab.record("policy-z2-to-admin,policy-z2-to-z3", "input", ClassMapMatchOption::ipv4).rules,
      fresh.record("policy-z2-to-admin,policy-z2-to-z3", "input", ClassMapMatchOption::ipv4).rules);
}

TEST_F(RealConfigurations, TheSwitchHasItsPoliciesOrTheReasons) {
  Lab lab;
  load(lab, "efos-cluster-switch.cfg");
  Record const shared = lab.record("InShared", "input", ClassMapMatchOption::ipv4);
  EXPECT_THAT(shared, AllOf(Programmed(), OnInterfaces("Ethernet0/9", "Ethernet0/10")));
  EXPECT_THAT(matchesOf(shared, "RdmaSrc"), ElementsAre("permit tcp any eq 10006 any"));
  EXPECT_THAT(matchesOf(shared, "RdmaDst"), ElementsAre("permit tcp any any eq 10006"));
  EXPECT_THAT(matchesOf(shared, "StorageSrc"), ElementsAre("permit tcp any eq 62500 any"));
  EXPECT_THAT(shared.rules.front().action(1), 5U) << "the queue";
  EXPECT_THAT(lab.record("InMetroCluster", "input", ClassMapMatchOption::ipv4),
              OnInterfaces("PortChannel10"));
  EXPECT_THAT(lab.explain("InShared").lines(),
              testing::Each(HasSubstr("class c5: cannot match all of its conditions: no kind of "
                                      "rule has their fields together; class c4: ")))
      << "cos and dscp";
  EXPECT_THAT(lab.explain("InClusterRdma").lines(),
              ElementsAre(HasSubstr("nothing to program: no class has rules; class CLUSTER_RDMA: "
                                    "cannot match all of its conditions: ")));
}

TEST_F(RealConfigurations, TheRouterSaysWhichPolicyMapsItLacks) {
  Lab lab;
  load(lab, "asr920-router.cfg");
  EXPECT_THAT(lab.explain().lines(),
              ElementsAre("Classification-Marking-In/input: policy-map Classification-Marking-In "
                          "does not exist",
                          "shape-all/output: policy-map shape-all does not exist"));
}

TEST_F(RealConfigurations, NearlyAllLinesAboutPoliciesAreUnderstood) {
  for (std::string const& name : names()) {
    Lab lab;
    load(lab, name);
    double const understood = static_cast<double>(lab.skipped().understood());
    double const missed = static_cast<double>(lab.skipped().missed());
    EXPECT_GE(understood, 0.95 * (understood + missed)) << name;
    EXPECT_GT(understood, 0) << name;
  }
}

// A file with this random damage: cut, lines shuffled, doubled or dropped.
std::string damaged(std::string const& text, unsigned kind, std::mt19937& random) {
  if (kind == 0) {
    return text.substr(0, random() % text.size());
  }
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (kind == 3 && random() % 4 == 0) {
      continue;
    }
    lines.push_back(line);
    if (kind == 2 && random() % 4 == 0) {
      lines.push_back(line);
    }
  }
  if (kind == 1) {
    std::shuffle(lines.begin(), lines.end(), random);
  }
  std::string all;
  for (std::string const& line : lines) {
    all += line + "\n";
  }
  return all;
}

TEST_F(RealConfigurations, NoDamageDoesHarm) {
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp)
  for (std::string const& name : names()) {
    std::string const text(read(name).content());
    for (unsigned i = 0; i != 48; ++i) {
      Text::SourceText const source(name, damaged(text, i % 4, random));
      for (Text::Reading const reading : {Text::Reading::strict, Text::Reading::lenient}) {
        Lab lab({.journal = 0});
        try {
          lab.load(source, reading);
          EXPECT_NO_THROW(static_cast<void>(lab.explain().lines())) << name << ' ' << i;
        } catch (Text::InputError const& error) {
          EXPECT_THAT(error.what(), testing::StartsWith(name));
          EXPECT_NE(error.line(), 0U) << error.what();
        }
      }
    }
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::test
