// SPDX-License-Identifier: Apache-2.0
#include "packets/Packet.h"

#include "testkit/text/SourceText.h"

#include <gmock/gmock.h>

namespace PolicyMapPackets::test {
namespace {

using PolicyMapTestKit::Text::InputError;

std::string errorOf(std::string const& text) {
  try {
    return "no error: " + Packet(text).text();
  } catch (InputError const& error) {
    return error.what();
  }
}

TEST(Packet, PrintsAsItIsRead) {
  for (char const* const text :
       {"tcp 10.0.0.1:4000 > 192.0.2.80:80 syn", "tcp 0.0.0.0:0 > 0.0.0.0:0",
        "tcp 10.0.0.1:1 > 10.0.0.2:2 fin syn rst psh ack urg ece cwr dscp 46 ttl 255 tni 7 vni 9",
        "udp [2001:db8::1]:4000 > [2001:db8::2]:53 ttl 1", "sctp 10.0.0.1:1 > 10.0.0.2:2",
        "icmp 10.0.0.1 > 10.0.0.2 type 8 code 1", "icmp 2001:db8::1 > 2001:db8::2 type 128",
        "ip 10.0.0.1 > 10.0.0.2 protocol 47", "ip 10.0.0.1 > 10.0.0.2",
        "fragment 10.0.0.1 > 10.0.0.2 protocol 6 dscp 10"}) {
    EXPECT_EQ(Packet(text).text(), text);
    EXPECT_EQ(Packet(Packet(text).text()), Packet(text));
  }
}

TEST(Packet, HasZeroWhatIsNotSaid) {
  EXPECT_EQ(Packet("tcp 10.0.0.1 > 10.0.0.2"), Packet("tcp 10.0.0.1:0 > 10.0.0.2:0 ttl 0 dscp 0"));
  EXPECT_EQ(Packet("udp 2001:db8::1 > 2001:db8::2"), Packet("udp [2001:db8::1]:0 > [2001:db8::2]"));
}

TEST(Packet, AcceptsNamesOfCodePointsAndAnyCase) {
  EXPECT_EQ(Packet("TCP 10.0.0.1 > 10.0.0.2 SYN dscp EF").text(),
            "tcp 10.0.0.1:0 > 10.0.0.2:0 syn dscp 46");
}

TEST(Packet, RefusesWhatCannotBe) {
  EXPECT_EQ(errorOf("arp 10.0.0.1 > 10.0.0.2"),
            "packet:1:1: expected tcp, udp, sctp, icmp, ip or fragment, found 'arp'");
  EXPECT_EQ(errorOf("icmp 10.0.0.1:80 > 10.0.0.2"),
            "packet:1:6: expected an address alone, because this header has no ports, found "
            "'10.0.0.1:80'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1:65536 > 10.0.0.2"),
            "packet:1:5: expected a port 0-65535 after ':', found '10.0.0.1:65536'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 2001:db8::1"),
            "packet:1:16: expected an IPv4 address, found '2001:db8::1'");
  EXPECT_EQ(errorOf("tcp 2001:db8::1 > 10.0.0.1"),
            "packet:1:19: expected an IPv6 address, found '10.0.0.1'");
  EXPECT_EQ(errorOf("udp 10.0.0.1 > 10.0.0.2 syn"),
            "packet:1:25: expected a field that a packet of this header has, found 'syn'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 dscp 64"),
            "packet:1:30: expected dscp 0-63, found '64'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 > 10.0.0.2 ttl 1 ttl 2"),
            "packet:1:31: expected each field once, found 'ttl'");
  EXPECT_EQ(errorOf("tcp 10.0.0.1 10.0.0.2"),
            "packet:1:14: expected '>' between source and destination, found '10.0.0.2'");
  EXPECT_EQ(errorOf("ip 10.0.0.1 > 10.0.0.2 protocol 6"),
            "packet:1:34: expected another protocol, or the header of this one, found end of line");
  for (char const* const text :
       {"", "tcp", "tcp 10.0.0.1", "tcp 10.0.0.1 >", "tcp 10.0.0 > 10.0.0.2", "tcp any > any",
        "tcp [2001:db8::1 > [2001:db8::2]:1", "tcp 2001:db8::1]:1 > 2001:db8::2",
        "tcp 10.0.0.1: > 10.0.0.2", "tcp 10.0.0.1:1:2 > 10.0.0.2", "tcp 10.0.0.1 > 10.0.0.2 ttl",
        "tcp 10.0.0.1 > 10.0.0.2 source 1", "tcp [10.0.0.1]:1 > 10.0.0.2"}) {
    EXPECT_THAT(errorOf(text), testing::StartsWith("packet:1:")) << text;
  }
}

TEST(BoxText, IsThatOfARule) {
  Box box = wholeOf(spaceOf(PolicyMap::ClassMapMatchOption::ipv4, Header::tcp)).front();
  EXPECT_EQ(textOf(box), "tcp any any");
  box.set(Field::source, {0x0a000000, 0xff000000});
  box.set(Field::destination, {0xc0000250, 0xffffffff});
  box.set(Field::sourcePort, {1024, 65535});
  box.set(Field::destinationPort, {80, 80});
  box.set(Field::tcpFlags, {2, 18});
  box.set(Field::ttl, {1, 1});
  box.set(Field::dscp, {1, 7});
  EXPECT_EQ(textOf(box),
            "tcp 10.0.0.0/8 range 1024 65535 host 192.0.2.80 eq 80 +syn -ack dscp 1-7 ttl 1");
}

}  // namespace
}  // namespace PolicyMapPackets::test
