// SPDX-License-Identifier: Apache-2.0

// The rules of lists and classes of real configurations with policies. All expected rules were
// written by hand from reading the files; see RealListsTest.cpp.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"
#include "testkit/RealConfigurations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit::test {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::AllOf;
using testing::ElementsAre;

// A rule in a class-map itself has no list, so where two conditions are intersected, the second has
// only its number. A condition for both families has the numbers 10 for IPv4 and 20 for IPv6.
class RealPolicies : public RealConfigurations {
 protected:
  // Classes of the firewalls: class-NAME has the list acl-NAME and a protocol.
  static void expectClasses(Record const& record, std::vector<Expected> const& classes) {
    EXPECT_THAT(record, Programmed());
    for (Expected const& each : classes) {
      std::string list = each.name;
      list.replace(0, std::string_view("class").size(), "acl").append(" & :10");
      expectRules(record, each.name, list, each.rules);
    }
  }
};

// Each service with each source with each destination.
TEST_F(RealPolicies, ListsOfTheFirewall) {
  expectLists("zbf-firewall-current.cfg", {{"acl-fw-fwvmem01-databases-tcp-databases", lines(R"(
      10 permit tcp host 101.165.245.107 host 101.164.8.156 eq 1521
      11 permit tcp host 101.165.245.107 host 101.164.8.158 eq 1521
      12 permit tcp host 101.165.245.107 host 101.164.8.159 eq 1521
      13 permit tcp host 101.165.245.107 host 101.164.8.156 eq 1522
      14 permit tcp host 101.165.245.107 host 101.164.8.158 eq 1522
      15 permit tcp host 101.165.245.107 host 101.164.8.159 eq 1522
      16 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5510
      17 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5510
      18 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5510
      19 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5511
      20 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5511
      21 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5511
      22 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5512
      23 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5512
      24 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5512
      25 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5513
      26 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5513
      27 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5513
      28 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5514
      29 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5514
      30 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5514
      31 permit tcp host 101.165.245.107 host 101.164.8.156 eq 5515
      32 permit tcp host 101.165.245.107 host 101.164.8.158 eq 5515
      33 permit tcp host 101.165.245.107 host 101.164.8.159 eq 5515)")},
                                           {"acl-fw-admin-to-fw2-admin", lines(R"(
      10 permit ip 101.165.244.0/22 101.164.100.0/23)")},
                                           {"acl-fw-dns-z2-dns-master-udp-dns", lines(R"(
      10 permit udp host 101.165.185.159 host 101.164.101.241 eq 53
      11 permit udp host 101.165.185.134 host 101.164.101.241 eq 53)")},
                                           {"acl-admin-ntp-udp-ntp", lines(R"(
      10 permit udp 101.164.100.0/23 host 101.164.9.113 eq 123
      11 permit udp 101.164.100.0/23 host 101.164.9.112 eq 123
      12 permit udp 101.164.100.0/23 host 101.164.8.150 eq 123
      13 permit udp 101.164.100.0/23 host 101.164.8.146 eq 123
      14 permit udp 101.164.100.0/23 host 101.164.8.152 eq 123
      15 permit udp 101.164.100.0/23 host 101.164.8.153 eq 123)")}});
}

TEST_F(RealPolicies, ListsOfTheCandidateFirewall) {
  expectLists("zbf-firewall-candidate1.cfg", {{"acl-inf-web-kibana-tcp-kibana", lines(R"(
      10 permit tcp host 101.164.8.169 host 101.164.101.228 eq 8082
      11 permit tcp host 101.164.8.168 host 101.164.101.228 eq 8082)")},
                                              {"acl-srv-z2-tcp-jboss", lines(R"(
      10 permit tcp host 101.164.101.244 101.164.8.0/22 eq 8080
      11 permit tcp host 101.164.101.236 101.164.8.0/22 eq 8080
      12 permit tcp host 101.164.101.244 101.164.8.0/22 eq 8081
      13 permit tcp host 101.164.101.236 101.164.8.0/22 eq 8081
      14 permit tcp host 101.164.101.244 101.164.8.0/22 eq 8082
      15 permit tcp host 101.164.101.236 101.164.8.0/22 eq 8082
      16 permit tcp host 101.164.101.244 101.164.8.0/22 eq 8083
      17 permit tcp host 101.164.101.236 101.164.8.0/22 eq 8083
      18 permit tcp host 101.164.101.244 101.164.8.0/22 eq 9990
      19 permit tcp host 101.164.101.236 101.164.8.0/22 eq 9990)")},
                                              {"acl-client-backup-mnt-backup-z2-tcp-nfs", lines(R"(
      10 permit tcp host 101.164.101.246 host 101.164.9.109 eq 2049
      11 permit tcp host 101.164.101.247 host 101.164.9.109 eq 2049
      12 permit tcp host 101.164.101.240 host 101.164.9.109 eq 2049
      13 permit tcp host 101.164.101.231 host 101.164.9.109 eq 2049)")},
                                              {"acl-f5-z3-tcp-syslog", lines(R"(
      10 permit tcp host 101.164.100.131 host 101.164.15.208 eq 514
      11 permit tcp host 101.164.100.128 host 101.164.15.208 eq 514
      12 permit tcp host 101.164.100.131 host 101.164.15.208 eq 2020
      13 permit tcp host 101.164.100.128 host 101.164.15.208 eq 2020
      14 permit tcp host 101.164.100.131 host 101.164.15.208 eq 2021
      15 permit tcp host 101.164.100.128 host 101.164.15.208 eq 2021)")}});
}

// A list and a protocol, or a service. One class wants two ports at once; another names a list
// that does not exist.
TEST_F(RealPolicies, ClassesOfTheFirewall) {
  Lab lab;
  load(lab, "zbf-firewall-current.cfg");
  expectClasses(
      lab.record("policy-z2-to-admin,policy-z2-to-z3", "input", ClassMapMatchOption::ipv4),
      {{"class-backup-z2-admin-tcp-backup", lines(R"(
      10 permit tcp host 101.164.9.109 101.164.100.0/23 eq 9103
      11 permit tcp host 101.164.9.109 101.164.100.0/23 eq 9101
      12 permit tcp host 101.164.9.109 101.164.100.0/23 eq 9102)")},
       {"class-z2-puppet-tcp-http", lines(R"(
      10 permit tcp 101.164.8.0/22 host 101.164.101.251 eq 80)")},
       {"class-z2-puppet-tcp-https-alt", {}},
       {"class-dns-z2-dns-master-udp-dns", lines(R"(
      10 permit udp host 101.164.8.139 host 101.164.101.241 eq 53
      11 permit udp host 101.164.8.149 host 101.164.101.241 eq 53)")},
       {"class-mysql-backup-z2-tcp-nfs", lines(R"(
      10 permit tcp host 101.164.101.231 host 101.164.9.109 eq 2049)")}});
  expectClasses(
      lab.record("policy-admin-to-z2,policy-admin-to-z3", "input", ClassMapMatchOption::ipv4),
      {{"class-kibana-elk-tcp-elk", lines(R"(
      10 permit tcp host 101.164.101.228 host 101.164.15.211 eq 9200
      11 permit tcp host 101.164.101.228 host 101.164.15.210 eq 9200
      12 permit tcp host 101.164.101.228 host 101.164.15.211 eq 9300
      13 permit tcp host 101.164.101.228 host 101.164.15.210 eq 9300)")},
       {"class-f5-syslog-tcp-syslog", {}}});
}

TEST_F(RealPolicies, ClassesOfTheCandidateFirewall) {
  Lab lab;
  load(lab, "zbf-firewall-candidate1.cfg");
  expectClasses(lab.record("policy-z2-to-admin", "input", ClassMapMatchOption::ipv4),
                {{"class-inf-web-monitoring-tcp-3000", lines(R"(
      10 permit tcp host 101.164.8.169 host 101.164.101.245 eq 3000
      11 permit tcp host 101.164.8.168 host 101.164.101.245 eq 3000)")},
                 {"class-z2-ossec-udp-ossec", lines(R"(
      10 permit udp 101.164.8.0/22 host 101.164.101.197 eq 1514)")},
                 {"class-mysql-backup-z2-tcp-nfs", {}}});
  expectClasses(
      lab.record("policy-admin-to-z2,policy-admin-to-z3", "input", ClassMapMatchOption::ipv4),
      {{"class-admin-z2-udp-syslog", lines(R"(
      10 permit udp 101.164.100.0/23 101.164.8.0/22 eq 514
      11 permit udp 101.164.100.0/23 101.164.8.0/22 eq 2022)")},
       {"class-admin-repo-tcp-https", lines(R"(
      10 permit tcp 101.164.100.0/23 host 101.164.8.79 eq 443)")},
       {"class-munin-z2-tcp-munin", lines(R"(
      10 permit tcp host 101.164.101.243 101.164.8.0/22 eq 4949)")}});
}

// It has no lists. Both policies have the same four classes, and others that match what rules
// cannot.
TEST_F(RealPolicies, ClassesOfTheSwitch) {
  Lab lab;
  load(lab, "efos-cluster-switch.cfg");
  for (std::string const policy : {"InShared", "InMetroCluster"}) {
    Record const record = lab.record(policy, "input", ClassMapMatchOption::ipv4);
    EXPECT_THAT(record, Programmed());
    expectRules(record, "RdmaSrc", " & :10", {"10 permit tcp any eq 10006 any"});
    expectRules(record, "RdmaDst", " & :10", {"10 permit tcp any any eq 10006"});
    expectRules(record, "StorageSrc", " & :10", {"10 permit tcp any eq 62500 any"});
    expectRules(record, "StorageDst", " & :10", {"10 permit tcp any any eq 65200"});
    EXPECT_THAT(record.rules, ElementsAre(Action1(5), Action1(5), Action1(4), Action1(4)));
  }
}

// Addresses of its lists were replaced by one that is its own wildcard.
TEST_F(RealPolicies, ListsOfTheRouter) {
  Lines const rules = lines(R"(
      10 permit ip host 111.111.111.111 any
      20 permit ip 0.0.0.0 wildcard 111.111.111.111 any
      30 deny ip any any)");
  expectLists("asr920-router.cfg",
              {{"auth-SNMP", rules}, {"auth-SNMPV2", rules}, {"auth-SSH", rules}});
}

// It attaches none of its classes; one names a list that does not exist.
TEST_F(RealPolicies, ClassesOfTheRouter) {
  Lab lab;
  load(lab, "asr920-router.cfg");
  lab.load("policy-map out\n class RoIP-RTP-Class-In\n class RoIP-RTP-Class-Out\n"
           " class Routing-and-Control\n"
           "interface Ethernet1\n switchport\n service-policy output out\n");
  EXPECT_THAT(lab.record("out", "output", ClassMapMatchOption::ipv4),
              AllOf(Programmed(), RulesAre("RoIP-RTP-Class-Out 10 permit ip any any dscp 45",
                                           "Routing-and-Control 10 permit ip any any dscp 48")));
  EXPECT_THAT(lab.record("out", "output", ClassMapMatchOption::ipv6),
              AllOf(Programmed(), RulesAre("RoIP-RTP-Class-Out 20 permit ipv6 any any dscp 45",
                                           "Routing-and-Control 20 permit ipv6 any any dscp 48")));
}

}  // namespace
}  // namespace PolicyMapTestKit::test
