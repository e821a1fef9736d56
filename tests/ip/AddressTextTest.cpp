// SPDX-License-Identifier: Apache-2.0
#include <Ip/AddressText.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cstdint>
#include <string>

namespace {

// The address that `text` reads as, printed again; "bad" if it is rejected.
template <std::size_t size>
std::string reread(std::string const& text) {
  std::array<std::uint8_t, size> bytes{};
  return Ip::readAddress(text, bytes) ? Ip::addressText(bytes) : "bad";
}

TEST(AddressText, IpAddressesReadAndPrint) {
  EXPECT_EQ(reread<4>("10.1.2.3"), "10.1.2.3");
  EXPECT_EQ(reread<4>("255.255.255.255"), "255.255.255.255");
  for (char const* const text :
       {"", "10", "10.1.2", "10.1.2.3.4", "10.1.2.256", "10.1.2.", ".1.2.3", "10..2.3", "10.1.2.3 ",
        "10.1.2.-3", "10.1.2.0003", "a.b.c.d"}) {
    EXPECT_EQ(reread<4>(text), "bad") << text;
  }
}

TEST(AddressText, ADecimalPartHasNoLeadingZero) {
  EXPECT_EQ(reread<4>("0.0.0.0"), "0.0.0.0");
  for (char const* const text : {"010.0.0.1", "10.00.0.1", "10.0.0.01", "10.0.0.08", "000.0.0.0"}) {
    EXPECT_EQ(reread<4>(text), "bad") << text;
    EXPECT_EQ(reread<16>(std::string("::ffff:") + text), "bad") << text;
  }
  EXPECT_EQ(reread<16>("::0.0.0.0"), "::");
}

TEST(AddressText, MacAddressesReadInTheirThreeNotations) {
  EXPECT_EQ(reread<6>("0123.4567.89ab"), "0123.4567.89ab");
  EXPECT_EQ(reread<6>("01:23:45:67:89:AB"), "0123.4567.89ab");
  EXPECT_EQ(reread<6>("01-23-45-67-89-ab"), "0123.4567.89ab");
  for (char const* const text :
       {"", "0123.4567.89a", "0123.4567.89abc", "0123:4567:89ab", "01:23-45:67:89:ab",
        "01:23:45:67:89", "01:23:45:67:89:a", "01:23:45:67:89:ag", "0123.4567.89a-",
        "012.34567.89ab", "01:23:45:67:89:ab:cd", "..............", "-----------------"}) {
    EXPECT_EQ(reread<6>(text), "bad") << text;
  }
}

TEST(AddressText, Ip6AddressesLeaveOutTheLongestRunOfZeros) {
  EXPECT_EQ(reread<16>("2001:0db8:0000:0000:0000:0000:0000:0001"), "2001:db8::1");
  EXPECT_EQ(reread<16>("2001:DB8::1"), "2001:db8::1");
  EXPECT_EQ(reread<16>("::"), "::");
  EXPECT_EQ(reread<16>("::1"), "::1");
  EXPECT_EQ(reread<16>("1::"), "1::");
  EXPECT_EQ(reread<16>("1:0:0:2:0:0:0:3"), "1:0:0:2::3");
  EXPECT_EQ(reread<16>("1:0:0:2:3:0:0:4"), "1::2:3:0:0:4");
  EXPECT_EQ(reread<16>("1:0:2:3:4:5:6:7"), "1:0:2:3:4:5:6:7");
  EXPECT_EQ(reread<16>("1:2:3:4:5:6:7::"), "1:2:3:4:5:6:7:0");
  EXPECT_EQ(reread<16>("::ffff:10.1.2.3"), "::ffff:a01:203");
  EXPECT_EQ(reread<16>("1:2:3:4:5:6:10.1.2.3"), "1:2:3:4:5:6:a01:203");
  for (char const* const text : {"",
                                 ":",
                                 ":::",
                                 "1",
                                 "1:2:3:4:5:6:7",
                                 "1:2:3:4:5:6:7:8:9",
                                 "1:2:3:4:5:6:7:8::",
                                 "::1::",
                                 "1::2::3",
                                 "12345::",
                                 "g::",
                                 ":1::",
                                 "1:",
                                 "::1:",
                                 "1:2:3:4:5:6:7:10.1.2.3",
                                 "10.1.2.3::",
                                 "::10.1.2",
                                 "::10.1.2.3:1",
                                 "10.1.2.3",
                                 "1:2:3:4:5:6:7:8 ",
                                 "::-1"}) {
    EXPECT_EQ(reread<16>(text), "bad") << text;
  }
}

template <std::size_t size>
void printedReadsBack() {
  auto bytes =
      *rc::gen::container<std::array<std::uint8_t, size>>(rc::gen::weightedOneOf<std::uint8_t>(
          {{1, rc::gen::just<std::uint8_t>(0)}, {1, rc::gen::arbitrary<std::uint8_t>()}}));
  std::array<std::uint8_t, size> read{};
  RC_ASSERT(Ip::readAddress(Ip::addressText(bytes), read));
  RC_ASSERT(read == bytes);
}

RC_GTEST_PROP(AddressText, WhatIsPrintedReadsBack, ()) {
  printedReadsBack<4>();
  printedReadsBack<6>();
  printedReadsBack<16>();
}

TEST(AddressText, MasksAndTheirLengthsAgree) {
  for (std::size_t length = 0; length <= 128; ++length) {
    std::array<std::uint8_t, 16> mask{};
    Ip::prefixMask(length, mask);
    EXPECT_EQ(Ip::prefixLength(mask), static_cast<int>(length));
  }
  EXPECT_EQ(Ip::prefixLength(std::array<std::uint8_t, 4>{255, 0, 255, 0}), -1);
  EXPECT_EQ(Ip::prefixLength(std::array<std::uint8_t, 4>{255, 0xf1, 0, 0}), -1);
  EXPECT_EQ(Ip::prefixLength(std::array<std::uint8_t, 4>{0, 0, 0, 1}), -1);
  EXPECT_EQ(Ip::prefixLength(std::array<std::uint8_t, 4>{0xf0, 0x80, 0, 0}), -1);
}

}  // namespace
