// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/FlagNames.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using Kor::KorAttr;
using Kor::KorType;
using testing::ElementsAre;
using testing::SizeIs;

TEST(FlagNames, AreThePairThenTheIntrospectionFlags) {
  auto const of = [](char const* name) {
    return Kor::flagNames(*Library::Shelf::_fwkType()->attr(name));
  };
  EXPECT_THAT(of("width"), ElementsAre("data", "independent domain"));
  EXPECT_THAT(of("name"), ElementsAre("key", "independent domain"));
  EXPECT_THAT(of("book"), ElementsAre("collection", "independent domain"));
  EXPECT_THAT(of("drawer"), ElementsAre("owned", "independent domain", "internal index"));
  EXPECT_THAT(of("weigh"), ElementsAre("function")) << "not twice";
  EXPECT_THAT(of("createDrawer"), ElementsAre("factory", "function"));
  EXPECT_THAT(of("rustle"), ElementsAre("hook", "function"));
}

TEST(FlagNames, AreNumbersForAPairWithoutAName) {
  KorType type("Ns::T", nullptr);
  KorAttr::Ptr const attr = KorAttr::attrIs(&type, Kor::Name("a"), &type, nullptr, nullptr,
                                            KorAttr::AttrFlags(0x20143, 0x40000000), 2);
  EXPECT_THAT(Kor::flagNames(*attr), ElementsAre("0x20143 0x40000000"));
}

TEST(FlagNames, AreDifferentForEachPair) {
  std::set<std::string_view> names;
  std::set<std::pair<std::uint32_t, std::uint32_t>> flags;
  for (Kor::FlagPairName const& pair : Kor::flagPairNames()) {
    names.insert(pair.name);
    flags.emplace(pair.flags.first(), pair.flags.second());
  }
  EXPECT_THAT(names, SizeIs(Kor::flagPairNames().size()));
  EXPECT_THAT(flags, SizeIs(Kor::flagPairNames().size()));
}

}  // namespace
