// SPDX-License-Identifier: Apache-2.0
#include "packets/Box.h"

#include "packets/TinySpace.h"

#include <gmock/gmock.h>

namespace PolicyMapPackets::test {
namespace {

using PolicyMap::ClassMapMatchOption;

TEST(Box, SetsAreThoseOfTheirPackets) {
  std::vector<Box> const packets = tinyPackets();
  TinyBoxes random(1);
  for (int i = 0; i != 300; ++i) {
    Box const a = random.next();
    Box const b = random.next();
    std::uint64_t inA = 0;
    std::uint64_t inBoth = 0;
    bool allOfB = true;
    std::optional<Box> const both = a.intersection(b);
    std::vector<Box> const rest = a.without(b);
    for (Box const& packet : packets) {
      bool const isInA = a.contains(packet);
      bool const isInB = b.contains(packet);
      inA += isInA ? 1U : 0U;
      inBoth += isInA && isInB ? 1U : 0U;
      allOfB = allOfB && (isInA || !isInB);
      EXPECT_EQ(both && both->contains(packet), isInA && isInB);
      EXPECT_EQ(std::count_if(rest.begin(), rest.end(),
                              [&](Box const& part) { return part.contains(packet); }),
                isInA && !isInB ? 1 : 0);
    }
    EXPECT_EQ(a.packets(), Count(inA));
    EXPECT_EQ(a.overlaps(b), inBoth != 0);
    EXPECT_EQ(a.contains(b), allOfB);
    Count counted(inBoth);
    for (Box const& part : rest) {
      counted += part.packets();
    }
    EXPECT_EQ(counted, Count(inA));
  }
}

TEST(Box, TheLowestPacketIsTheFirstOfAll) {
  std::vector<Box> const packets = tinyPackets();
  TinyBoxes random(2);
  for (int i = 0; i != 100; ++i) {
    Box const box = random.next();
    auto const first = std::find_if(packets.begin(), packets.end(),
                                    [&](Box const& each) { return box.contains(each); });
    ASSERT_NE(first, packets.end());
    EXPECT_EQ(box.lowest(), *first);
  }
}

TEST(Box, CountsAllPacketsOfASpace) {
  auto const packetsOf = [](ClassMapMatchOption option, Header header) {
    Count packets;
    for (Box const& box : wholeOf(spaceOf(option, header))) {
      packets += box.packets();
    }
    return packets.text();
  };
  // Addresses, dscp, ttl, tni and vni have 126 bits, of IPv6 318.
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv4, Header::tcp), "2^166");
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv4, Header::udp), "2^158");
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv4, Header::icmp), "2^142");
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv4, Header::fragment), "2^134");
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv6, Header::tcp), "2^358");
  // 252 protocols have no header of their own.
  Count others(252);
  others <<= 126;
  EXPECT_EQ(packetsOf(ClassMapMatchOption::ipv4, Header::other), others.text());
}

TEST(Count, IsExact) {
  Count count(1);
  EXPECT_EQ(count.digits(), "1");
  EXPECT_EQ(Count().digits(), "0");
  count <<= 200;
  EXPECT_EQ(count.digits(), "1606938044258990275541962092341162602522202993782792835301376");
  EXPECT_EQ(count.text(), "2^200");
  count += Count(1);
  EXPECT_EQ(count.text(), "1606938044258990275541962092341162602522202993782792835301377");
  Count factors(10000000000000000000U);
  factors *= 10000000000000000000U;
  EXPECT_EQ(factors.digits(), "1" + std::string(38, '0'));
  EXPECT_LT(Count(2), Count(3));
  EXPECT_LT(Count(~std::uint64_t{0}), factors);
  EXPECT_EQ(Count(1024).text(), "1024") << "few digits";
}

}  // namespace
}  // namespace PolicyMapPackets::test
