// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Packet.h"

#include <gmock/gmock.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

namespace PolicyMapPackets::test {
namespace {

std::string errorOf(std::string const& text) {
  try {
    return "no error: " + toText(readPacket(text));
  } catch (InputError const& error) {
    return error.what();
  }
}

TEST(Packet, PrintsAsItIsRead) {
  for (char const* const text :
       {"tcp 10.0.0.1:4000 > 192.0.2.80:80 syn", "tcp 0.0.0.0 > 0.0.0.0",
        "tcp 10.0.0.1:1 > 10.0.0.2:2 fin syn rst psh ack urg ece cwr dscp 46 ttl 255 tni 7 vni 9",
        "udp [2001:db8::1]:4000 > [2001:db8::2]:53 ttl 1", "sctp 10.0.0.1:1 > 10.0.0.2",
        "icmp 10.0.0.1 > 10.0.0.2 type 8 code 1", "icmp 2001:db8::1 > 2001:db8::2 type 128",
        "gre 10.0.0.1 > 10.0.0.2", "0 10.0.0.1 > 10.0.0.2", "icmp6 10.0.0.1 > 10.0.0.2",
        "1 2001:db8::1 > 2001:db8::2", "tcp 10.0.0.1 > 10.0.0.2 dscp 10 fragment",
        "mac 0011.2233.4455 > 00aa.bbcc.ddee ethertype 2054",
        "mac 0000.0000.0000 > ffff.ffff.ffff vlan 0 cos 5",
        "mac 0000.0000.0000 > ffff.ffff.ffff vlan 10 mpls-label 16 mpls-experimental 3",
        "mac 0000.0000.0000 > ffff.ffff.ffff mpls-label 0 mpls-inner-label 7",
        "mac 0000.0000.0000 > ffff.ffff.ffff ethertype 34888 mpls-label 0"}) {
    EXPECT_EQ(errorOf(text), "no error: " + std::string(text));
    EXPECT_EQ(readPacket(toText(readPacket(text))), readPacket(text));
  }
}

// A text of words of packets, most of them in their places.
std::string randomText(std::mt19937& random) {
  static std::vector<std::vector<std::string>> const places{
      {"tcp", "udp", "sctp", "icmp", "gre", "0", "255", "256", "ip", "ipv6", "mac", "ipv6 icmp",
       ""},
      {"10.0.0.1", "10.0.0.1:80", "10.0.0.1:65536", "2001:db8::1", "[2001:db8::1]:53",
       "::", "[::]:", "0011.2233.4455", "10.0.0", "ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255"},
      {">", ">", ">", ">", ">", "<", ""}};
  static std::vector<std::string> const more{"syn",
                                             "rst",
                                             "ack",
                                             "dscp",
                                             "ef",
                                             "46",
                                             "64",
                                             "ttl",
                                             "255",
                                             "256",
                                             "type",
                                             "8",
                                             "code",
                                             "tni",
                                             "vni",
                                             "7",
                                             "-1",
                                             "fragment",
                                             "ethertype",
                                             "arp",
                                             "0x800",
                                             "vlan",
                                             "0",
                                             "cos",
                                             "5",
                                             "10",
                                             "16777215",
                                             "mpls-label",
                                             "1048575",
                                             "mpls-experimental",
                                             "mpls-inner-label",
                                             "17"};
  auto const oneOf = [&random](std::vector<std::string> const& words) {
    return words[random() % words.size()];
  };
  std::string text = oneOf(places[0]) + " ";
  text.append(oneOf(places[1])).append(" ").append(oneOf(places[2])).append(" ");
  text.append(oneOf(places[1]));
  for (auto words = random() % 5; words != 0; --words) {
    text.append(" ").append(oneOf(more));
  }
  if (random() % 4 == 0) {
    text[random() % text.size()] = static_cast<char>(random());
  }
  return text;
}

TEST(Packet, IsReadOrRefusedWhateverTheTextIs) {
  std::mt19937 random(1);
  int read = 0;
  int refused = 0;
  for (int i = 0; i != 50000; ++i) {
    std::string const text = randomText(random);
    SCOPED_TRACE(text);
    std::optional<Packet> packet;
    try {
      packet = readPacket(text);
    } catch (InputError const& error) {
      ASSERT_THAT(error.what(), testing::StartsWith("packet:1:"));
      ++refused;
      continue;
    }
    ++read;
    ASSERT_EQ(errorOf(toText(*packet)), "no error: " + toText(*packet));
    ASSERT_EQ(readPacket(toText(*packet)), *packet);
  }
  EXPECT_GT(read, 500);
  EXPECT_GT(refused, 500);
}

TEST(Packet, HasZeroWhatIsNotSaid) {
  EXPECT_EQ(readPacket("tcp 10.0.0.1 > 10.0.0.2"),
            readPacket("tcp 10.0.0.1:0 > 10.0.0.2:0 ttl 0 dscp 0"));
  EXPECT_EQ(readPacket("udp 2001:db8::1 > 2001:db8::2"),
            readPacket("udp [2001:db8::1]:0 > [2001:db8::2]"));
  EXPECT_EQ(readPacket("ip 10.0.0.1 > 10.0.0.2"), readPacket("0 10.0.0.1 > 10.0.0.2"));
  EXPECT_EQ(readPacket("mac 0011.2233.4455 > 00aa.bbcc.ddee cos 1")[FieldId::vlan], 0U);
  EXPECT_EQ(readPacket("mac 0011.2233.4455 > 00aa.bbcc.ddee mpls-label 1")[FieldId::ethertype],
            0x8847U);
}

TEST(Packet, AcceptsNamesAndAnyCase) {
  EXPECT_EQ(toText(readPacket("TCP 10.0.0.1:www > 10.0.0.2:HTTPS SYN dscp EF")),
            "tcp 10.0.0.1:80 > 10.0.0.2:443 syn dscp 46");
  EXPECT_EQ(toText(readPacket("47 10.0.0.1 > 10.0.0.2")), "gre 10.0.0.1 > 10.0.0.2");
  EXPECT_EQ(toText(readPacket("ipv6 icmp 2001:db8::1 > 2001:db8::2")),
            "icmp 2001:db8::1 > 2001:db8::2");
  EXPECT_EQ(toText(readPacket("mac 00:11:22:33:44:55 > 00-aa-bb-cc-dd-ee ethertype arp")),
            "mac 0011.2233.4455 > 00aa.bbcc.ddee ethertype 2054");
}

TEST(Packet, RefusesWhatCannotBe) {
  EXPECT_EQ(errorOf("arp 10.0.0.1 > 10.0.0.2"),
            "packet:1:1: expected a protocol, ip, ipv6 or mac, found 'arp'");
  EXPECT_EQ(errorOf("icmp 10.0.0.1:80 > 10.0.0.2"),
            "packet:1:6: expected only fields that such a packet has, found '10.0.0.1:80'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1:65536 > 10.0.0.2"),
            "packet:1:5: expected port 0-65535 or a port name after ':', found "
            "'10.0.0.1:65536'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 2001:db8::1"),
            "packet:1:16: expected an IPv4 address, found '2001:db8::1'");
  EXPECT_EQ(errorOf("tcp 2001:db8::1 > 10.0.0.1"),
            "packet:1:19: expected an IPv6 address, found '10.0.0.1'");
  EXPECT_EQ(errorOf("udp 10.0.0.1 > 10.0.0.2 syn"),
            "packet:1:25: expected only fields that such a packet has, found 'syn'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 syn fragment"),
            "packet:1:25: expected only fields that such a packet has, found 'syn'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 vlan 5"),
            "packet:1:25: expected only fields that such a packet has, found 'vlan'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 dscp 64"),
            "packet:1:30: expected dscp 0-63, found '64'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 ttl 1 ttl 2"),
            "packet:1:31: expected 'ttl' once, found 'ttl'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 10.0.0.2"),
            "packet:1:14: expected '>' between the addresses, found '10.0.0.2'");
  EXPECT_EQ(errorOf("mac 0011.2233.4455 > 00aa.bbcc.ddee ethertype mpls-unicast"),
            "packet:1:37: expected a value that such a packet may have, found 'ethertype'");
  EXPECT_EQ(errorOf("mac 0011.2233.4455 > 00aa.bbcc.ddee vlan 4095"),
            "packet:1:42: expected vlan 0-4094, found '4095'");
  for (char const* const text :
       {"", "tcp", "tcp 10.0.0.1", "tcp 10.0.0.1 >", "tcp 10.0.0 > 10.0.0.2", "tcp any > any",
        "tcp [2001:db8::1 > [2001:db8::2]:1", "tcp 2001:db8::1]:1 > 2001:db8::2",
        "tcp 10.0.0.1: > 10.0.0.2", "tcp 10.0.0.1:1:2 > 10.0.0.2", "tcp 10.0.0.1 > 10.0.0.2 ttl",
        "tcp 10.0.0.1 > 10.0.0.2 source 1", "tcp [10.0.0.1]:1 > 10.0.0.2",
        "mac 10.0.0.1 > 10.0.0.2"}) {
    EXPECT_THAT(errorOf(text), testing::StartsWith("packet:1:")) << text;
  }
}

TEST(BoxText, IsThatOfARule) {
  Slice const& slice = Slice::of(SliceId::tcp4);
  Box box = Box::all(slice);
  EXPECT_EQ(toText(slice, box), "tcp any any");
  box.takeTernary(slice, FieldId::source4, 0, 0x0a000000, 0xff000000);
  box.takeTernary(slice, FieldId::destination4, 0, 0xc0000250, 0xffffffff);
  box.takeInterval(slice, FieldId::sourcePort, 1024, 65535);
  box.takeInterval(slice, FieldId::destinationPort, 80, 80);
  box.takeTernary(slice, FieldId::tcpFlags, 0, 2, 18);
  box.takeInterval(slice, FieldId::dscp, 1, 7);
  box.takeInterval(slice, FieldId::ttl, 1, 1);
  EXPECT_EQ(toText(slice, box), "tcp 10.0.0.0/8 gt 1023 host 192.0.2.80 eq 80 +syn -ack dscp range "
                                "1 7 ttl eq 1");
  EXPECT_EQ(toText(Slice::of(SliceId::other6), Box::all(Slice::of(SliceId::other6))),
            "ipv6 any any");
  EXPECT_EQ(toText(Slice::of(SliceId::fragment4), Box::all(Slice::of(SliceId::fragment4))),
            "ip any any fragments");
}

}  // namespace
}  // namespace PolicyMapPackets::test
