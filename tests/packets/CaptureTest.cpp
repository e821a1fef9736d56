// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Capture.h"

#include <gmock/gmock.h>

#include <string>

namespace PolicyMapPackets::test {
namespace {

using PolicyMapTestKit::Text::SourceText;

// The bytes of hexadecimal digits; blanks do not count.
std::string bytesOf(std::string const& digits) {
  std::string bytes;
  std::string pair;
  for (char const digit : digits) {
    if (digit != ' ') {
      pair += digit;
    }
    if (pair.size() == 2) {
      bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
      pair.clear();
    }
  }
  return bytes;
}

Frame frameOf(std::uint32_t link, std::string const& digits) {
  std::string const bytes = bytesOf(digits);
  return readFrame(link, {reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size()});
}

// "IP | MAC", with "-" for what is not there.
std::string textOf(Frame const& frame) {
  auto const text = [](std::optional<Packet> const& packet) {
    return packet ? toText(*packet) : "-";
  };
  return text(frame.ip) + " | " + text(frame.mac);
}

constexpr std::uint32_t ethernet = 1;
constexpr std::uint32_t raw = 101;
std::string const macs = "00aabbccddee 001122334455 ";
std::string const plainMac = "mac 0011.2233.4455 > 00aa.bbcc.ddee";
std::string const ip4 = "45b8 0028 0001 0000 4006 0000 0a000001 c0000250 ";
std::string const tcp = "0fa0 0050 00000000 00000000 5002 0000 0000 0000";

TEST(Frame, OfTcp) {
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "0800" + ip4 + tcp)),
            "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp 46 ttl 64 | " + plainMac +
                " ethertype 2048");
}

TEST(Frame, OfRawIp) {
  EXPECT_EQ(textOf(frameOf(raw, ip4 + tcp)),
            "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp 46 ttl 64 | -");
  EXPECT_EQ(textOf(frameOf(raw, "60000000 0008 11 02 " + std::string(30, '0') + "01 " +
                                    std::string(30, '0') + "02 0035 0036 0008 0000")),
            "udp [::1]:53 > [::2]:54 ttl 2 | -");
  EXPECT_EQ(textOf(frameOf(113, std::string(28, '0') + "0800" + ip4 + tcp)),
            "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp 46 ttl 64 | -");
}

TEST(Frame, OfFragmentsAndOtherProtocols) {
  EXPECT_EQ(textOf(frameOf(raw, "4500 0028 0001 0010 0a06 0000 0a000001 0a000002")),
            "tcp 10.0.0.1 > 10.0.0.2 ttl 10 fragment | -");
  EXPECT_EQ(textOf(frameOf(raw, "4500 0028 0001 2000 0a11 0000 0a000001 0a000002 0001 0002")),
            "udp 10.0.0.1:1 > 10.0.0.2:2 ttl 10 | -")
      << "the first fragment";
  EXPECT_EQ(textOf(frameOf(raw, "4500 0014 0001 0000 002f 0000 0a000001 0a000002")),
            "gre 10.0.0.1 > 10.0.0.2 | -");
  EXPECT_EQ(textOf(frameOf(raw, "4600 001c 0001 0000 0001 0000 0a000001 0a000002 01010101 0800")),
            "icmp 10.0.0.1 > 10.0.0.2 type 8 | -")
      << "after an option";
}

TEST(Frame, OfExtensionHeaders) {
  std::string const addresses = std::string(30, '0') + "01 " + std::string(30, '0') + "02 ";
  EXPECT_EQ(textOf(frameOf(raw, "60000000 0010 00 02 " + addresses +
                                    "3c00000000000000 3301000000000000 "
                                    "1100000000000000000000000000 0000"
                                    "0035 0036")),
            "- | -")
      << "an authentication header that is cut off";
  EXPECT_EQ(textOf(frameOf(raw, "60000000 0010 00 02 " + addresses +
                                    "3c00000000000000 3300000000000000 "
                                    "1101000000000000 00000000 0035 0036")),
            "udp [::1]:53 > [::2]:54 ttl 2 | -");
  EXPECT_EQ(textOf(frameOf(raw, "60000000 0010 2c 02 " + addresses + "1100000800000000")),
            "udp ::1 > ::2 ttl 2 fragment | -");
}

TEST(Frame, OfTagsAndLabels) {
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "8100 a00a 0806")),
            "- | " + plainMac + " ethertype 2054 vlan 10 cos 5");
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "88a8 000b 8100 a00a 0800" + ip4 + tcp)),
            "tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp 46 ttl 64 | " + plainMac +
                " ethertype 2048 vlan 11");
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "8847 00010b40")),
            "- | " + plainMac + " mpls-label 16 mpls-experimental 5");
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "8100 0001 8847 00010a40 00011140")),
            "- | " + plainMac + " vlan 1 mpls-label 16 mpls-experimental 5 mpls-inner-label 17");
}

TEST(Frame, OfWhatIsCutOffOrUnknown) {
  EXPECT_EQ(textOf(frameOf(ethernet, "00aabbccddee")), "- | -");
  EXPECT_EQ(textOf(frameOf(ethernet, macs + "0800" + ip4 + "0fa0 0050")),
            "- | " + plainMac + " ethertype 2048")
      << "of its flags nothing is known";
  EXPECT_EQ(textOf(frameOf(raw, "7500")), "- | -");
  EXPECT_EQ(textOf(frameOf(9999, ip4 + tcp)), "- | -");
  EXPECT_EQ(textOf(frameOf(raw, "")), "- | -");
}

std::vector<Frame> captured(std::string const& digits) {
  return readCapture(SourceText("some.pcap", bytesOf(digits)));
}

std::string const littlePcap = "d4c3b2a1 0200 0400 00000000 00000000 ffff0000 65000000";
std::string const bigPcap = "a1b2c3d4 0002 0004 00000000 00000000 0000ffff 00000065";
std::string const gre = "4500 0014 0001 0000 002f 0000 0a000001 0a000002";  // 20 bytes

TEST(Capture, OfBothByteOrders) {
  for (std::string const& file :
       {littlePcap + "00000000 00000000 14000000 14000000" + gre,
        bigPcap + "00000000 00000000 00000014 00000014" + gre,
        std::string("4d3cb2a1 0200 0400 00000000 00000000 ffff0000 65000000"
                    "00000000 00000000 14000000 14000000") +
            gre}) {
    std::vector<Frame> const frames = captured(file);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(textOf(frames[0]), "gre 10.0.0.1 > 10.0.0.2 | -");
  }
  EXPECT_TRUE(captured(littlePcap).empty());
}

TEST(Capture, OfBlocks) {
  std::string const section = "0a0d0d0a 1c000000 4d3c2b1a 0100 0000 ffffffffffffffff 1c000000";
  std::string const interface = "01000000 14000000 6500 0000 ffff0000 14000000";
  std::string const enhanced =
      "06000000 34000000 00000000 00000000 00000000 14000000 14000000" + gre + "34000000";
  std::string const simple = "03000000 24000000 14000000" + gre + "24000000";
  std::string const other = "05000000 10000000 00000000 10000000";
  EXPECT_EQ(captured(section + interface + enhanced + other + simple).size(), 2U);
  std::string const bigSection = "0a0d0d0a 0000001c 1a2b3c4d 0001 0000 ffffffffffffffff 0000001c";
  EXPECT_EQ(captured(bigSection + "00000001 00000014 0065 0000 0000ffff 00000014" +
                     "00000003 00000024 00000014" + gre + "00000024")
                .size(),
            1U);
  EXPECT_THROW(captured(section + enhanced), InputError) << "without an interface";
  EXPECT_THROW(captured(section + interface + "06000000 05000000"), InputError);
}

TEST(Capture, NamesTheByteOfWhatIsWrong) {
  for (auto const& [file, message] :
       {std::pair(std::string("00010203"), "some.pcap:1:1: expected a capture file"),
        std::pair(std::string(), "some.pcap:1:1: expected a capture file"),
        std::pair(std::string("d4c3b2a1 0200"), "some.pcap:1:7: expected 4 bytes more"),
        std::pair(littlePcap + "00000000 00000000 14000000 14000000 45",
                  "some.pcap:1:42: expected 20 bytes more")}) {
    try {
      (void)captured(file);
      ADD_FAILURE() << message;
    } catch (InputError const& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(message));
    }
  }
}

// Every shorter file, and every file with one byte of another value, is read or refused.
TEST(Capture, SurvivesWhatIsDamaged) {
  std::string const file = bytesOf(littlePcap + "00000000 00000000 14000000 14000000" + gre +
                                   "00000000 00000000" + "28000000 28000000" + ip4 + tcp);
  std::size_t refused = 0;
  auto const read = [&](std::string bytes) {
    try {
      (void)readCapture(SourceText("some.pcap", std::move(bytes)));
    } catch (InputError const&) {
      ++refused;
    }
  };
  for (std::size_t i = 0; i != file.size(); ++i) {
    read(file.substr(0, i));
    for (int const value : {0, 1, 0x7f, 0x80, 0xff}) {
      std::string damaged = file;
      damaged[i] = static_cast<char>(value);
      read(damaged);
    }
  }
  EXPECT_GT(refused, file.size() / 2);
}

TEST(Packets, AreReadFromLines) {
  std::vector<Packet> const packets =
      readPackets(SourceText("packets", "# some\n\n  tcp 10.0.0.1 > 10.0.0.2:80\n! more\n"
                                        "udp 10.0.0.1 > 10.0.0.2\n"));
  ASSERT_EQ(packets.size(), 2U);
  EXPECT_EQ(toText(packets[1]), "udp 10.0.0.1 > 10.0.0.2");
  try {
    (void)readPackets(SourceText("packets", "udp 10.0.0.1 > 10.0.0.2\ntcp 10.0.0.1\n"));
    ADD_FAILURE();
  } catch (InputError const& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("packets:2:13: expected '>'"));
  }
}

}  // namespace
}  // namespace PolicyMapPackets::test
