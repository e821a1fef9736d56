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
  // A later list permits what an earlier one denies.
  std::string differs() const {
    return file("differs.cfg", simplePolicy + "ip access-list P\n"
                                              " 5 deny tcp any any eq 80\n"
                                              "ip access-list Q\n"
                                              " permit tcp any any eq 80\n"
                                              "class-map match-any P\n"
                                              " match access-group Q\n");
  }
};

constexpr char const* web = "tcp 10.0.0.1:4000 > 192.0.2.80:80";

TEST_F(PacketVerbsTest, TheStatusSaysWhetherAllIsAsConfigured) {
  EXPECT_EQ(runLab({"trace", simple(), web}).status, ExitStatus::success);
  EXPECT_EQ(runLab({"prove", simple()}).status, ExitStatus::success);
  EXPECT_EQ(runLab({"trace", differs(), web}).status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"prove", differs()}).status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"prove", simple(), "--no-l2", "--no-l3"}).status, ExitStatus::notProgrammed);
  EXPECT_EQ(runLab({"prove", simple(), "--steps", "0"}).status, ExitStatus::undecided);
}

TEST_F(PacketVerbsTest, PoliciesAreSelected) {
  EXPECT_EQ(runLab({"trace", simple(), web, "--at", "Ethernet2"}).out, "no policy\n");
  EXPECT_EQ(runLab({"prove", simple(), "--at", "Ethernet2"}).out, "no policy\n");
  EXPECT_THAT(runLab({"prove", simple(), "--at", "Ethernet1"}).out, StartsWith("P input ipv4: "));
  EXPECT_EQ(runLab({"prove", simple(), "--policy", "Q"}).out, "no policy\n");
  EXPECT_EQ(runLab({"prove", simple(), "--option", "ipv6"}).out, "no policy\n");
}

TEST_F(PacketVerbsTest, BadInputIsNamed) {
  Outcome const packet = runLab({"trace", simple(), "tcp 10.0.0.1:4000 > 192.0.2.80:http"});
  EXPECT_EQ(packet.status, ExitStatus::badInput);
  EXPECT_THAT(packet.err, HasSubstr("packet:1:21: expected a port 0-65535 after ':'"));
  for (std::vector<std::string> const& arguments : {std::vector<std::string>{"trace"},
                                                    {"trace", web},
                                                    {"prove"},
                                                    {"prove", simple(), "--deny", "sometimes"},
                                                    {"prove", simple(), "--option", "mac"},
                                                    {"prove", simple(), "--at", ""},
                                                    {"prove", simple(), "--at", "no interface"}}) {
    EXPECT_EQ(runLab(arguments).status, ExitStatus::badInput) << testing::PrintToString(arguments);
  }
}

TEST_F(PacketVerbsTest, TraceAsJson) {
  auto const json = runLab({"trace", differs(), web, "--json"}).json();
  EXPECT_EQ(json.at("packets"), 1);
  EXPECT_EQ(json.at("packet"), web);
  auto const& policy = json.at("policies").at(0);
  EXPECT_EQ(policy.at("policy"), "P");
  EXPECT_EQ(policy.at("same"), false);
  EXPECT_EQ(policy.at("records").at("class"), "");
  EXPECT_EQ(policy.at("recordedLines").at(0).at("line"), "P 5");
  EXPECT_EQ(policy.at("recordedLines").at(0).at("permits"), false);
  EXPECT_EQ(policy.at("configuration").at("class"), "P");
  EXPECT_EQ(policy.at("configuration").at("action1"), 1);
  EXPECT_EQ(policy.at("configuredLine").at("rule"), "permit tcp any any eq 80");
  EXPECT_EQ(policy.at("alike"), "tcp any any eq 80");
  auto const none = runLab({"trace", simple(), "udp 10.0.0.1 > 10.0.0.2", "--json"}).json();
  EXPECT_TRUE(none.at("policies").at(0).at("configuredLine").is_null());
}

TEST_F(PacketVerbsTest, ProveAsJson) {
  auto const json = runLab({"prove", differs(), "--json"}).json();
  auto const& policy = json.at("policies").at(0);
  EXPECT_EQ(policy.at("same"), false);
  EXPECT_EQ(policy.at("complete"), true);
  auto const& difference = policy.at("differences").at(0);
  EXPECT_EQ(difference.at("smallest"), "tcp 0.0.0.0:0 > 0.0.0.0:80");
  EXPECT_EQ(difference.at("such"), "tcp any any eq 80");
  EXPECT_EQ(difference.at("packets"), "1427247692705959881058285969449495136382746624") << "2^150";
  EXPECT_TRUE(difference.at("records").is_null());
  EXPECT_EQ(difference.at("configuration").at("line"), "Q 10");
  auto const unknown = runLab({"prove", simple(), "--no-l2", "--no-l3", "--json"}).json();
  EXPECT_THAT(unknown.at("policies").at(0).at("unknown"), StartsWith("no interface is eligible"));
}

}  // namespace
}  // namespace lab::test
