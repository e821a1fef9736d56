// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/FilterSet.h"

#include "testkit/text/FilterSetGenerator.h"
#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

std::string const line = "@10.1.2.3/16\t10.2.3.4/32\t0 : 65535\t1521 : 1525\t0x06/0xFF\t"
                         "0x1000/0x0200\t\n";

FilterSet readSet(std::string text, PortRanges ranges = PortRanges::onPortProtocols) {
  return readFilterSet(SourceText("t", std::move(text)), ranges);
}

std::string setError(std::string text) {
  return errorFrom([&] { return readSet(std::move(text)); });
}

// A line with the given last four columns.
std::string withTail(std::string const& tail) {
  return "@1.2.3.4/32 1.2.3.4/32 " + tail;
}

TEST(FilterSet, LineIsReadIntoItsColumns) {
  FilterSet const set = readSet(line);
  ASSERT_EQ(set.rules.size(), 1U);
  FilterRule const& rule = set.rules[0];
  EXPECT_EQ(set.family, Family::ip4);
  EXPECT_EQ(rule.source, addressOf(Family::ip4, "10.1.0.0", "255.255.0.0"));
  EXPECT_EQ(rule.destination, addressOf(Family::ip4, "10.2.3.4", "255.255.255.255"));
  EXPECT_TRUE(rule.sourcePort.isAny());
  EXPECT_EQ(rule.destinationPort, (PortRange{1521, 1525}));
  EXPECT_EQ(rule.protocol, 6);
  EXPECT_EQ(rule.flags, 0x1000);
  EXPECT_EQ(rule.flagsMask, 0x0200);
  EXPECT_EQ(rule.line, 1U);
}

TEST(FilterSet, OrderAndDuplicatesAreKept) {
  FilterSet const set = readSet(line + "\r\n" + line + withTail("0 : 1 2 : 3 0x11/0xff 0x0/0x0"));
  ASSERT_EQ(set.rules.size(), 3U);
  EXPECT_EQ(set.rules[1].line, 3U);
  EXPECT_EQ(set.rules[0].source, set.rules[1].source);
  EXPECT_EQ(set.rules[2].protocol, 17);
}

TEST(FilterSet, EmptyTextIsAnEmptySet) {
  EXPECT_TRUE(readSet("").rules.empty());
  EXPECT_TRUE(readSet("\n \t\n").rules.empty());
}

TEST(FilterSet, Ip6SetsAreRead) {
  FilterSet const set = readSet("@2001:db8:1::1/32 ::/0 0 : 65535 80 : 80 0x06/0xFF 0x0/0x0");
  EXPECT_EQ(set.family, Family::ip6);
  EXPECT_EQ(set.rules.at(0).source, addressOf(Family::ip6, "2001:db8::", "ffff:ffff::"));
  EXPECT_TRUE(set.rules[0].destination.isAny());
}

TEST(FilterSet, OneSetHasOneFamily) {
  std::string const line6 = "@::/0 ::/0 0 : 65535 0 : 65535 0x06/0xFF 0x0/0x0\n";
  EXPECT_EQ(setError(line + line6), "t:2:1: expected an IPv4 prefix, found '@::/0'");
  EXPECT_EQ(setError(line6 + line), "t:2:1: expected an IPv6 prefix, found '@10.1.2.3/16'");
  EXPECT_EQ(setError("@::/0 10.1.2.3/8 0 : 1 0 : 1 0x06/0xFF 0x0/0x0"),
            "t:1:7: expected an IPv6 prefix, found '10.1.2.3/8'");
}

TEST(FilterSet, ProtocolMaskOfZeroIsEveryProtocol) {
  EXPECT_EQ(readSet(withTail("0 : 65535 0 : 65535 0x00/0x00 0x0/0x0")).rules[0].protocol,
            std::nullopt);
  EXPECT_EQ(readSet(withTail("0 : 65535 0 : 65535 0x00/0xFF 0x0/0x0")).rules[0].protocol, 0);
  EXPECT_EQ(setError(withTail("0 : 65535 0 : 65535 0x06/0x0F 0x0/0x0")),
            "t:1:44: expected protocol mask 0x00 or 0xFF, found '0x06/0x0F'");
}

TEST(FilterSet, PortsNeedAProtocolThatHasThem) {
  std::string const message =
      "expected 0 : 65535 on a protocol other than tcp, udp and sctp, found ";
  std::string const source = withTail("7777 : 7777 0 : 65535 0x08/0xFF 0x0/0x0");
  std::string const destination = withTail("0 : 65535 513 : 514 0x00/0x00 0x0/0x0");
  EXPECT_EQ(setError(source), "t:1:24: " + message + "'7777'");
  EXPECT_EQ(setError(destination), "t:1:34: " + message + "'513'");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 0x84/0xFF 0x0/0x0")), "no error");
  EXPECT_EQ(setError(withTail("0 : 65535 0 : 65535 0x08/0xFF 0x0/0x0")), "no error");
}

TEST(FilterSet, PortsOnAnyProtocolAreTakenOnRequest) {
  FilterSet const set =
      readSet(withTail("7777 : 7778 513 : 514 0x08/0xFF 0x0/0x0\n"), PortRanges::onAnyProtocol);
  EXPECT_EQ(set.rules[0].protocol, 8);
  EXPECT_EQ(set.rules[0].sourcePort, (PortRange{7777, 7778}));
  EXPECT_EQ(set.rules[0].destinationPort, (PortRange{513, 514}));
}

TEST(FilterSet, FaultyColumnIsRefusedWithItsPlace) {
  EXPECT_EQ(setError("10.1.2.3/16 1.2.3.4/5"),
            "t:1:1: expected @SOURCE/LENGTH, found '10.1.2.3/16'");
  EXPECT_EQ(setError("\n@10.1.2.3/33 1.2.3.4/5"),
            "t:2:1: expected an IPv4 prefix, found '@10.1.2.3/33'");
  EXPECT_EQ(setError("@10.1.2.3/32"), "t:1:13: expected an IPv4 prefix, found end of line");
  EXPECT_EQ(setError(withTail("65536 : 1")), "t:1:24: expected port 0-65535, found '65536'");
  EXPECT_EQ(setError(withTail("1 - 2")), "t:1:26: expected ':' between two ports, found '-'");
  EXPECT_EQ(setError(withTail("2 : 1")), "t:1:28: expected port 2-65535, found '1'");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 6/0xFF 0x0/0x0")),
            "t:1:36: expected protocol/mask in hexadecimal, found '6/0xFF'");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 0x06 0x0/0x0")),
            "t:1:36: expected protocol/mask in hexadecimal, found '0x06'");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 0x06/0xFF 0x10000/0x0")),
            "t:1:46: expected flags/mask in hexadecimal, found '0x10000/0x0'");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 0x06/0xFF")),
            "t:1:45: expected flags/mask in hexadecimal, found end of line");
  EXPECT_EQ(setError(withTail("1 : 2 3 : 4 0x06/0xFF 0x0/0x0 7")),
            "t:1:54: expected end of line, found '7'");
}

TEST(FilterSet, BadBytesAreRefused) {
  EXPECT_EQ(setError(line + std::string("@\0", 2)), "t:2:2: expected text, found '\\x00'");
  EXPECT_EQ(setError("@\xff/8"), "t:1:1: expected an IPv4 prefix, found '@\\xff/8'");
  std::string longLine = "@";
  longLine.resize(10'000'000, '1');
  EXPECT_EQ(setError(longLine),
            "t:1:1: expected an IPv4 prefix, found '@" + std::string(39, '1') + "'...");
}

TEST(FilterSet, EveryTruncationOfALineIsRefusedOrWhole) {
  std::string const whole = line.substr(0, line.find_last_not_of("\t\n") + 1);
  for (std::size_t size = 1; size < whole.size(); ++size) {
    std::string const error = setError(whole.substr(0, size));
    // A cut inside the last number leaves a shorter but complete line.
    bool const stillWhole = size > whole.rfind('x') + 1;
    EXPECT_EQ(error == "no error", stillWhole) << whole.substr(0, size);
  }
}

TEST(FilterSet, RealSetsHaveTheirCountsOfRulesAndRanges) {
  std::string const folder = corpusFolder();
  if (folder.empty()) {
    GTEST_SKIP() << "POLICYMAPTEST_CORPUS is not set: real filter sets were not read";
  }
  struct Counts {
    std::size_t rules;
    std::size_t withRange;
  };
  std::map<std::string, Counts> const sets = {
      {"acl1_1k", {942, 108}},    {"acl3_1k", {990, 204}},  {"acl5_1k", {933, 84}},
      {"fw1_1k", {857, 82}},      {"fw4_1k", {847, 521}},   {"ipc1_1k", {974, 103}},
      {"acl1_10k", {9774, 1128}}, {"fw1_10k", {9379, 963}}, {"acl1_v6_1k", {864, 101}}};
  for (auto const& [name, counts] : sets) {
    FilterSet const set =
        readFilterSet(SourceText::fromFile(folder + "/rules/" + name), PortRanges::onAnyProtocol);
    std::size_t withRange = 0;
    for (FilterRule const& rule : set.rules) {
      auto const isRange = [](PortRange const& range) {
        return !range.isAny() && range.low != range.high;
      };
      withRange += isRange(rule.sourcePort) || isRange(rule.destinationPort) ? 1U : 0U;
    }
    EXPECT_EQ(set.rules.size(), counts.rules) << name;
    EXPECT_EQ(withRange, counts.withRange) << name;
  }
}

TEST(FilterSet, HundredThousandRulesAreRead) {
  FilterSet const set = readSet(generateFilterSet(100'000));
  EXPECT_EQ(set.rules.size(), 100'000U);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
