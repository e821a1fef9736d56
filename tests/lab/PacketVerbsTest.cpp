// SPDX-License-Identifier: Apache-2.0

// `policymap-lab trace` and `prove`; the page about packets has their output.

#include "lab/Labs.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace lab::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class PacketVerbsTest : public InputFiles {
 protected:
  // With a rule of which the records are what is configured.
  std::string simple() const { return file("simple.cfg", simplePolicy); }
  // With a rule that denies. By the reading "entry", its class takes what it denies.
  std::string denies() const {
    return file("denies.cfg", simplePolicy + "ip access-list P\n 5 deny tcp any any eq 22\n");
  }
  // Other actions and one rule more.
  std::string edited() const {
    return file("edited.cfg", simplePolicy + "ip access-list P\n permit tcp any any eq 443\n");
  }
};

constexpr char const* web = "tcp 10.0.0.1:4000 > 192.0.2.80:80";
constexpr char const* denied = "tcp 10.0.0.1:4000 > 192.0.2.80:22";

TEST_F(PacketVerbsTest, TheStatusSaysWhetherAllIsAsConfigured) {
  EXPECT_EQ(runLab({"trace", simple(), web}).status, ExitStatus::success);
  EXPECT_EQ(runLab({"prove", simple()}).status, ExitStatus::success);
  EXPECT_EQ(runLab({"trace", denies(), "--deny", "entry", denied}).status,
            ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"prove", denies(), "--deny", "entry"}).status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"prove", denies(), "--deny", "entry", "--budget", "0"}).status,
            ExitStatus::undecided);
  EXPECT_EQ(runLab({"prove", denies(), "--deny", "entry", "--except", "tcp any any eq 22"}).status,
            ExitStatus::success);
}

TEST_F(PacketVerbsTest, WhatIsNotProgrammedIsExplained) {
  Outcome const proof = runLab({"prove", simple(), "--no-l2", "--no-l3"});
  EXPECT_EQ(proof.status, ExitStatus::success);
  EXPECT_THAT(proof.out, StartsWith("P input ipv4: not programmed: no interface is eligible"));
  Outcome const trace = runLab({"trace", simple(), "--no-l2", "--no-l3", web});
  EXPECT_EQ(trace.status, ExitStatus::success);
  EXPECT_THAT(trace.out, HasSubstr("NOT PROGRAMMED: no interface is eligible"));
}

TEST_F(PacketVerbsTest, PoliciesAreSelected) {
  std::string const none = "no attached policy has rules";
  EXPECT_EQ(runLab({"trace", simple(), web, "--at", "Ethernet2"}).out,
            none + " for such packets\n");
  EXPECT_EQ(runLab({"prove", simple(), "--at", "Ethernet2"}).out, none + "\n");
  EXPECT_THAT(runLab({"prove", simple(), "--at", "Ethernet1"}).out, StartsWith("P input ipv4: "));
  EXPECT_EQ(runLab({"prove", simple(), "--direction", "output"}).out, none + "\n");
  EXPECT_EQ(runLab({"prove", simple(), "--option", "ipv6"}).out, none + "\n");
}

TEST_F(PacketVerbsTest, SeveralPacketsAreTraced) {
  Outcome const traces =
      runLab({"trace", simple(), "--packet", web, "--packet", "udp 10.0.0.1 > 10.0.0.2"});
  EXPECT_EQ(traces.status, ExitStatus::success);
  EXPECT_THAT(traces.out, HasSubstr("the same, as for every tcp any any eq 80\n\nP input"));
}

TEST_F(PacketVerbsTest, BadInputIsNamed) {
  Outcome const packet = runLab({"trace", simple(), "tcp 10.0.0.1:4000 > 192.0.2.80:http2"});
  EXPECT_EQ(packet.status, ExitStatus::badInput);
  EXPECT_THAT(packet.err, HasSubstr("packet:1:21: expected port 0-65535 or a port name after ':'"));
  EXPECT_THAT(runLab({"prove", simple(), "--policy", "Q"}).err,
              HasSubstr("--policy: no attached policy-map 'Q'; nearest: 'P'"));
  EXPECT_THAT(runLab({"prove", simple(), "--at", "no interface"}).err, HasSubstr("--at: IntfId: "));
  for (std::vector<std::string> const& arguments : {std::vector<std::string>{"trace"},
                                                    {"trace", web},
                                                    {"prove"},
                                                    {"prove", simple(), "--deny", "sometimes"},
                                                    {"prove", simple(), "--option", "ip"},
                                                    {"prove", simple(), "--policy", "Q"},
                                                    {"prove", simple(), "--at", "no interface"}}) {
    EXPECT_EQ(runLab(arguments).status, ExitStatus::badInput) << testing::PrintToString(arguments);
  }
}

TEST_F(PacketVerbsTest, TraceAsJson) {
  auto const json = runLab({"trace", denies(), denied, "--deny", "entry", "--json"}).json();
  EXPECT_EQ(json.at("version"), 1);
  auto const& trace = json.at("traces").at(0);
  EXPECT_EQ(trace.at("subject"), "P input ipv4");
  EXPECT_EQ(trace.at("packet"), denied);
  EXPECT_EQ(trace.at("verdict"), "different");
  EXPECT_EQ(trace.at("recorded").at("class"), "P");
  EXPECT_EQ(trace.at("recordedRules").at(0).at("effect"), "action1 1");
  EXPECT_EQ(trace.at("configured").at("class"), "");
  EXPECT_FALSE(trace.contains("configuredRule"));
  EXPECT_EQ(trace.at("around"), "tcp any any eq 22");
}

TEST_F(PacketVerbsTest, ProveAsJson) {
  auto const json = runLab({"prove", denies(), "--deny", "entry", "--json"}).json();
  EXPECT_EQ(json.at("version"), 1);
  EXPECT_EQ(json.at("verdict"), "different");
  auto const& proof = json.at("proofs").at(0);
  EXPECT_EQ(proof.at("packets"), "1427247692705959881058285969449495136382746624") << "2^150";
  EXPECT_EQ(proof.at("moved").at(0).at("recorded"), "P");
  auto const& difference = proof.at("differences").at(0);
  EXPECT_EQ(difference.at("packet"), "tcp 0.0.0.0 > 0.0.0.0:22");
  EXPECT_EQ(difference.at("around"), "tcp any any eq 22");
  EXPECT_EQ(difference.at("recordedRule").at("seq"), 5);
  EXPECT_FALSE(difference.contains("configuredRule"));
}

TEST_F(PacketVerbsTest, ComparesTwoConfigurations) {
  Outcome const same = runLab({"compare", simple(), simple()});
  EXPECT_EQ(same.status, ExitStatus::success);
  EXPECT_EQ(same.out, "P input ipv4: no rule changed; every packet is treated as before\n");
  Outcome const found = runLab({"compare", simple(), edited()});
  EXPECT_EQ(found.status, ExitStatus::notProgrammed);
  EXPECT_THAT(found.out,
              StartsWith("P input ipv4: 1 rule added; 2^150 packets go from no class to class P; "
                         "all others are treated as before\n"
                         "  tcp 0.0.0.0 > 0.0.0.0:443, as every tcp any any eq 443\n"
                         "    before: no rule\n    after: P "));
  EXPECT_EQ(runLab({"compare", simple(), edited(), "--except", "tcp any any eq 443"}).status,
            ExitStatus::success);
  EXPECT_EQ(runLab({"compare", simple(), edited(), "--budget", "0"}).status, ExitStatus::undecided);
}

TEST_F(PacketVerbsTest, ComparesWithAnEdit) {
  std::string const edit = file("edit.cfg", "ip access-list P\n permit tcp any any eq 443\n");
  EXPECT_EQ(runLab({"compare", simple(), edit, "--edit"}).out,
            runLab({"compare", simple(), edited()}).out);
}

TEST_F(PacketVerbsTest, ComparesWhatIsConfiguredWhetherOrNotItIsProgrammed) {
  EXPECT_EQ(runLab({"compare", simple(), edited(), "--no-l2", "--no-l3"}).out,
            "P input ipv4: not programmed before: no interface is eligible: Ethernet1 "
            "(interfaces of its kind are not served)\n");
  EXPECT_THAT(
      runLab({"compare", simple(), edited(), "--no-l2", "--no-l3", "--of", "configuration"}).out,
      StartsWith("P input ipv4: 1 rule added; 2^150 packets go"));
}

TEST_F(PacketVerbsTest, CompareAsJson) {
  auto const json = runLab({"compare", simple(), edited(), "--json"}).json();
  EXPECT_EQ(json.at("verdict"), "different");
  auto const& change = json.at("changes").at(0);
  EXPECT_EQ(change.at("rules").at("added"), 1);
  EXPECT_EQ(change.at("moved").at(0).at("before"), "");
  EXPECT_EQ(change.at("moved").at(0).at("after"), "P");
  EXPECT_EQ(change.at("differences").at(0).at("packet"), "tcp 0.0.0.0 > 0.0.0.0:443");
  EXPECT_FALSE(change.at("differences").at(0).contains("beforeRule"));
}

TEST_F(PacketVerbsTest, CompareNeedsTwoFilesThatAreThere) {
  EXPECT_THAT(runLab({"compare", simple()}).err, HasSubstr("compare needs two files"));
  EXPECT_THAT(runLab({"compare", simple(), edited(), "--policy", "Q"}).err,
              HasSubstr("--policy: no attached policy-map 'Q'; nearest: 'P'"));
  EXPECT_THAT(runLab({"compare", simple(), edited(), "--except", "tcp any"}).err,
              HasSubstr("packets:1:"));
  std::string const none = file("none.cfg", "interface Ethernet1\n ip address 192.0.2.1/24\n");
  EXPECT_THAT(runLab({"compare", simple(), none, "--policy", "P"}).out,
              StartsWith("P input ipv4: 1 rule removed; 2^150 packets go from class P to no "));
}

TEST_F(PacketVerbsTest, SimulatesPacketsOfAFile) {
  std::string const packets = file("packets", std::string("# two\n") + web + "\n" + denied + "\n");
  Outcome const outcome = runLab({"simulate", simple(), "--packets", packets});
  EXPECT_EQ(outcome.status, ExitStatus::success);
  EXPECT_THAT(outcome.out, StartsWith("P input ipv4: 2 packets, 1 in class P, 1 in no class\n"
                                      "  class  rule  packets  match\n"));
  auto const json = runLab({"simulate", simple(), "--packets", packets, "--json"}).json();
  EXPECT_EQ(json.at("simulations").at(0).at("packets"), 2);
}

TEST_F(PacketVerbsTest, SimulatesGeneratedPackets) {
  Outcome const outcome = runLab({"simulate", denies(), "--generate", "5000", "--seed", "3"});
  EXPECT_THAT(outcome.out, StartsWith("P input ipv4: 5,000 packets, "));
  EXPECT_THAT(outcome.out, testing::Not(HasSubstr("never hit")));
  EXPECT_EQ(runLab({"simulate", denies(), "--generate", "5000", "--seed", "3"}).out, outcome.out);
  EXPECT_THAT(runLab({"simulate", denies(), "--generate", "1", "--never-hit"}).out,
              HasSubstr("\n  1 rule was never hit\n"));
}

TEST_F(PacketVerbsTest, SimulatesACapture) {
  std::string capture("\xd4\xc3\xb2\xa1\2\0\4\0\0\0\0\0\0\0\0\0\xff\xff\0\0\x65\0\0\0", 24);
  EXPECT_THAT(runLab({"simulate", simple(), "--capture", file("some.pcap", capture)}).out,
              StartsWith("P input ipv4: 0 packets"));
  EXPECT_EQ(runLab({"simulate", simple(), "--capture", simple()}).status, ExitStatus::badInput);
}

TEST_F(PacketVerbsTest, SimulateNeedsPackets) {
  EXPECT_THAT(runLab({"simulate", simple()}).err,
              HasSubstr("simulate needs --packets, --capture or --generate"));
}

TEST_F(PacketVerbsTest, SimulateSaysThatThereAreNoRules) {
  EXPECT_EQ(runLab({"simulate", simple(), "--option", "mac", "--generate", "1"}).out,
            "no attached policy has rules\n");
}

}  // namespace
}  // namespace lab::test
