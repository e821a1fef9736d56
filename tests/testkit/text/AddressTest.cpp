// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Address.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {
namespace {

std::string hex(Family family, AddressBytes const& bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (std::size_t index = 0; index != addressSize(family); ++index) {
    text += digits[bytes[index] >> 4U];
    text += digits[bytes[index] & 0xfU];
  }
  return text;
}

std::string parsed(Family family, std::string_view text) {
  AddressBytes bytes{};
  return parseAddress(family, text, bytes) ? hex(family, bytes) : "refused";
}

void expectRefused(Family family, std::initializer_list<std::string_view> texts) {
  for (std::string_view const text : texts) {
    AddressBytes bytes{1, 2, 3};
    EXPECT_FALSE(parseAddress(family, text, bytes)) << text;
    EXPECT_EQ(bytes, (AddressBytes{1, 2, 3})) << text;
  }
}

TEST(Address, Ip4IsFourDecimalBytes) {
  EXPECT_EQ(parsed(Family::ip4, "10.1.2.255"), "0a0102ff");
  EXPECT_EQ(parsed(Family::ip4, "0.0.0.0"), "00000000");
  expectRefused(Family::ip4, {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.", ".1.2.3", "1..2.3",
                              "1.2.3.4x", "01.2.3.4", "1.2.3.-4", "1.2.3.4/24", "::"});
}

TEST(Address, Ip6IsEightGroupsWithOneGap) {
  EXPECT_EQ(parsed(Family::ip6, "1:2:3:4:5:6:7:8"), "00010002000300040005000600070008");
  EXPECT_EQ(parsed(Family::ip6, "::"), "00000000000000000000000000000000");
  EXPECT_EQ(parsed(Family::ip6, "2001:DB8::1"), "20010db8000000000000000000000001");
  EXPECT_EQ(parsed(Family::ip6, "fe80::"), "fe800000000000000000000000000000");
  EXPECT_EQ(parsed(Family::ip6, "1:2:3:4:5:6:7::"), "00010002000300040005000600070000");
  expectRefused(Family::ip6,
                {"", ":", ":::", "1", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1::2::3",
                 "12345::", "g::", "1:2:3:4::5:6:7:8", ":1::", "1::2:", "fe80::1%eth0", "::1/64"});
}

TEST(Address, Ip6MayEndWithAnIp4Address) {
  EXPECT_EQ(parsed(Family::ip6, "::ffff:192.0.2.1"), "00000000000000000000ffffc0000201");
  EXPECT_EQ(parsed(Family::ip6, "1:2:3:4:5:6:1.2.3.4"), "00010002000300040005000601020304");
  expectRefused(Family::ip6, {"1.2.3.4", "1.2.3.4::", "::1.2.3.4:5", "1:2:3:4:5:6:7:1.2.3.4",
                              "::1.2.3", "1:2:3:4:5:6:7::1.2.3.4"});
}

TEST(Address, MacHasThreeNotations) {
  for (std::string_view const text : {"0123.4567.89aB", "01:23:45:67:89:ab", "1-23-45-67-89-ab"}) {
    EXPECT_EQ(parsed(Family::mac, text), "0123456789ab") << text;
  }
  expectRefused(Family::mac, {"", "0123.4567", "123.4567.89ab", "0123.4567.89abc", "01:23:45:67:89",
                              "01:23:45:67:89:abc", "01:23:45:67:89:ag", "01:23-45:67:89:ab",
                              "01:23:45:67:89::"});
}

TEST(Address, PrefixKeepsHostBitsAndBoundsItsLength) {
  AddressBytes bytes{};
  std::uint8_t length = 0;
  EXPECT_TRUE(parsePrefix(Family::ip4, "10.1.2.3/24", bytes, length));
  EXPECT_EQ(hex(Family::ip4, bytes), "0a010203");
  EXPECT_EQ(length, 24);
  EXPECT_TRUE(parsePrefix(Family::ip6, "::/128", bytes, length));
  EXPECT_EQ(length, 128);
  for (std::string_view const text :
       {"10.1.2.3", "10.1.2.3/", "10.1.2.3/33", "10.1.2/8", "/8", "10.1.2.3/8/8", "10.1.2.3/-1"}) {
    EXPECT_FALSE(parsePrefix(Family::ip4, text, bytes, length)) << text;
  }
  EXPECT_FALSE(parsePrefix(Family::ip6, "::/129", bytes, length));
}

TEST(Address, MaskingDropsWhatIsNotCompared) {
  AddressBytes bytes{};
  ASSERT_TRUE(parseAddress(Family::ip4, "10.1.2.3", bytes));
  Address const address = maskedAddress(bytes, prefixMask(12));
  EXPECT_EQ(hex(Family::ip4, address.value), "0a000000");
  EXPECT_EQ(hex(Family::ip4, address.mask), "fff00000");
  EXPECT_FALSE(address.isAny());
  EXPECT_EQ(maskedAddress(bytes, prefixMask(0)), Address{});
  EXPECT_TRUE(Address{}.isAny());
}

TEST(Address, InvertingTouchesOnlyTheBytesOfTheFamily) {
  AddressBytes const inverted = invertedBits(Family::ip4, prefixMask(8));
  EXPECT_EQ(hex(Family::ip6, inverted), "00ffffff000000000000000000000000");
}

TEST(Address, MaskWithHolesHasNoLength) {
  std::uint8_t length = 99;
  EXPECT_TRUE(maskLength(prefixMask(0), length));
  EXPECT_EQ(length, 0);
  EXPECT_TRUE(maskLength(prefixMask(32), length));
  EXPECT_EQ(length, 32);
  EXPECT_FALSE(maskLength(AddressBytes{255, 0, 255, 0}, length));
  EXPECT_FALSE(maskLength(AddressBytes{0, 0, 0, 255}, length));
  EXPECT_EQ(length, 32);
}

}  // namespace
}  // namespace PolicyMapTestKit::Text
