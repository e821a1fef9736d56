// SPDX-License-Identifier: Apache-2.0
#include "acl/ValueChecks.h"

#include <Acl/AddressMatch.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using Acl::Ip6AddressMatch;
using Acl::IpAddressMatch;
using Acl::MacAddressMatch;
using TestSupport::expectTextForm;
using TestSupport::rangeError;

TEST(AddressMatch, PrintsAndReadsBack) {
  expectTextForm(IpAddressMatch(), "'any'");
  expectTextForm(IpAddressMatch("10.1.2.3"), "'10.1.2.3'");
  expectTextForm(IpAddressMatch("10.0.0.0/8"), "'10.0.0.0/8'");
  expectTextForm(IpAddressMatch("10.0.0.1/255.0.0.255"), "'10.0.0.1/255.0.0.255'");
  expectTextForm(Ip6AddressMatch("2001:db8::/32"), "'2001:db8::/32'");
  expectTextForm(Ip6AddressMatch("1::2/ffff::ffff"), "'1::2/ffff::ffff'");
  expectTextForm(MacAddressMatch("0123.4567.89ab"), "'0123.4567.89ab'");
  expectTextForm(MacAddressMatch("0123.4500.0000/24"), "'0123.4500.0000/ffff.ff00.0000'");
  EXPECT_EQ(TestSupport::printed(IpAddressMatch("10.0.0.0/8")), "'10.0.0.0/8'");
}

TEST(AddressMatch, BitsOutsideTheMaskAreCleared) {
  EXPECT_EQ(IpAddressMatch("10.1.2.3/8"), IpAddressMatch("10.0.0.0/255.0.0.0"));
  EXPECT_EQ(IpAddressMatch(0x0a010203, 0xff0000ff), IpAddressMatch("10.0.0.3/255.0.0.255"));
  EXPECT_EQ(IpAddressMatch("10.1.2.3/0"), IpAddressMatch::any());
  EXPECT_EQ(MacAddressMatch({1, 2, 3, 4, 5, 6}, {}), MacAddressMatch());
}

TEST(AddressMatch, BuildsFromAHostOrAPrefix) {
  EXPECT_EQ(IpAddressMatch::host({10, 1, 2, 3}), IpAddressMatch("10.1.2.3"));
  EXPECT_TRUE(IpAddressMatch::host({}).isHost());
  EXPECT_EQ(IpAddressMatch::prefix({10, 1, 2, 3}, 9), IpAddressMatch("10.0.0.0/9"));
  EXPECT_EQ(Ip6AddressMatch::prefix({}, 128), Ip6AddressMatch("::"));
  for (std::int64_t const length : {-1, 33}) {
    EXPECT_EQ(rangeError([&] { (void)IpAddressMatch::prefix({}, length); }),
              "IpAddressMatch::length < 0 or > 32 not allowed");
  }
  EXPECT_EQ(rangeError([] { (void)Ip6AddressMatch::prefix({}, 129); }),
            "Ip6AddressMatch::length < 0 or > 128 not allowed");
  EXPECT_EQ(rangeError([] { (void)MacAddressMatch::prefix({}, 49); }),
            "MacAddressMatch::length < 0 or > 48 not allowed");
}

TEST(AddressMatch, TellsTheLengthOfAMaskWithoutHoles) {
  EXPECT_EQ(IpAddressMatch("10.0.0.0/8").length(), 8);
  EXPECT_EQ(IpAddressMatch().length(), 0);
  EXPECT_FALSE(IpAddressMatch("10.0.0.1/255.0.0.255").length());
}

TEST(AddressMatch, MatchesTheAddressesOfItsSet) {
  IpAddressMatch const match("10.0.0.1/255.0.0.255");
  EXPECT_TRUE(match.matches({10, 7, 7, 1}));
  EXPECT_FALSE(match.matches({10, 7, 7, 2}));
  EXPECT_TRUE(IpAddressMatch().matches({1, 2, 3, 4}));
}

TEST(AddressMatch, ABadTextIsRefusedWithIt) {
  for (char const* const text : {"", "x", "Any", "10.1.2.3/33", "10.1.2.3/", "10.1.2.3/-1", "/8",
                                 "10.1.2.3/8/8", "10.1.2/8", "::1"}) {
    EXPECT_EQ(rangeError([&] { (void)IpAddressMatch(text); }),
              "IpAddressMatch: '" + std::string(text) + "' is not an address match");
  }
}

TEST(AddressMatch, DescribesItselfAsInAConfiguration) {
  EXPECT_EQ(IpAddressMatch().describe(), "any");
  EXPECT_EQ(IpAddressMatch("10.1.2.3").describe(), "host 10.1.2.3");
  EXPECT_EQ(IpAddressMatch("10.0.0.0/8").describe(), "10.0.0.0/8");
  EXPECT_EQ(IpAddressMatch("10.0.0.1/255.0.0.255").describe(), "10.0.0.1 wildcard 0.255.255.0");
  EXPECT_EQ(MacAddressMatch("0123.4500.0000/24").describe(),
            "0123.4500.0000 wildcard 0000.00ff.ffff");
  EXPECT_EQ(MacAddressMatch().describe(), "any");
}

TEST(AddressMatch, SortsByValueAndMask) {
  TestSupport::expectAscending<IpAddressMatch>(
      {IpAddressMatch(), IpAddressMatch("0.0.0.0/1"), IpAddressMatch("10.0.0.0/8"),
       IpAddressMatch("10.0.0.0/9"), IpAddressMatch("10.0.0.1")});
  EXPECT_TRUE(!IpAddressMatch());
  EXPECT_FALSE(!IpAddressMatch("0.0.0.0"));
  EXPECT_EQ(Ip6AddressMatch().fwkType()->name(), "Acl::Ip6AddressMatch");
  EXPECT_EQ(MacAddressMatch::_fwkType()->name(), "Acl::MacAddressMatch");
}

}  // namespace
