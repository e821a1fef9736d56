// SPDX-License-Identifier: Apache-2.0

// Proofs about filter sets, compared with binary decision diagrams: verdict, smallest packet and
// number of packets.

#include "oracle/BddSides.h"
#include "oracle/FilterSubjects.h"
#include "packets/Proof.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

namespace PolicyMapPackets::test {
namespace {

struct Found {
  Count packets;
  std::optional<Packet> smallest;
};

Found byDiagrams(Subject const& subject, DenyReading deny = DenyReading::nextClass) {
  Found found;
  for (Slice const& slice : Slice::ofOption(subject.option)) {
    BddSpace const space(slice);
    bdd const set = BddSpace::difference(space.recorded(subject, deny), space.configured(subject));
    if (set != bddfalse) {
      found.packets += space.count(set);
      found.smallest = found.smallest ? found.smallest : space.smallest(set);
    }
  }
  return found;
}

// Whether there was a difference.
bool expectTheSame(Subject const& subject, std::string const& what,
                   DenyReading deny = DenyReading::nextClass) {
  Proof const proof = prove(subject, {.deny = deny});
  Found const found = byDiagrams(subject, deny);
  EXPECT_FALSE(proof.isSpent) << what;
  EXPECT_EQ(proof.packets, found.packets) << what;
  EXPECT_EQ(proof.verdict, found.smallest ? Verdict::different : Verdict::same) << what;
  if (found.smallest && !proof.differences.empty()) {
    EXPECT_EQ(proof.differences.front().packet, *found.smallest) << what;
  }
  return found.smallest.has_value();
}

TEST(Oracle, AgreesThatFilterSetsAreProgrammedAsConfigured) {
  for (std::uint32_t const classes : {1U, 4U, 16U}) {
    EXPECT_FALSE(expectTheSame(generated(150, classes, classes), std::to_string(classes)));
    EXPECT_FALSE(expectTheSame(generated(100, classes, classes, Family::ip6), "ipv6"));
  }
}

TEST(Oracle, AgreesAboutChangedRecords) {
  std::mt19937 random(3);
  std::size_t different = 0;
  for (std::uint64_t seed = 1; seed != 5; ++seed) {
    Subject const subject = generated(60, 4, seed);
    for (int i = 0; i != 25; ++i) {
      Subject changed = subject;
      std::string const what = mutate(changed.recorded, random);
      different +=
          expectTheSame(changed, what + " " + std::to_string(i), static_cast<DenyReading>(i % 3))
              ? 1
              : 0;
    }
  }
  EXPECT_GT(different, 50U);
}

// Rules about large networks, nearly all of which overlap.
TEST(Oracle, AgreesAboutShuffledRecords) {
  std::mt19937 random(4);
  std::size_t different = 0;
  for (int i = 0; i != 4; ++i) {
    Subject subject = generated(60, 8, 9);
    for (RuleRecord& rule : subject.recorded) {
      auto& match = std::get<Acl::IpRuleConfig>(rule.match);
      match.sourceIs(Acl::IpAddressMatch(static_cast<std::uint32_t>(random()) & 0xc0000000,
                                         random() % 3 == 0 ? 0 : 0xc0000000));
      match.destinationIs(Acl::IpAddressMatch());
    }
    different += expectTheSame(subject, "other addresses") ? 1 : 0;
    std::shuffle(subject.recorded.begin(), subject.recorded.end(), random);
    different += expectTheSame(subject, "shuffled") ? 1 : 0;
  }
  EXPECT_EQ(different, 8U);
}

TEST(Oracle, AgreesAboutFilterSetsOfOthers) {
  constexpr std::size_t mostRules = 250;  // diagrams of more take long
  char const* const corpus = std::getenv("POLICYMAPTEST_CORPUS");
  if (corpus == nullptr) {
    GTEST_SKIP() << "POLICYMAPTEST_CORPUS is not set";
  }
  std::mt19937 random(5);
  std::size_t sets = 0;
  for (auto const& file : std::filesystem::directory_iterator(std::string(corpus) + "/rules")) {
    if (file.file_size() > 200000) {
      continue;
    }
    ++sets;
    FilterSet rules = readFilterSet(SourceText::fromFile(file.path()),
                                    PolicyMapTestKit::Text::PortRanges::onAnyProtocol);
    rules.rules.resize(std::min(rules.rules.size(), mostRules));
    Subject subject = subjectOf(rules, 16, sets % 2 == 0);
    std::string const name = file.path().filename();
    EXPECT_FALSE(expectTheSame(subject, name));
    if (std::holds_alternative<Acl::IpRuleConfig>(subject.recorded.front().match)) {
      std::string const what = mutate(subject.recorded, random);
      expectTheSame(subject, name + ", " + what);
    }
  }
  EXPECT_GT(sets, 3U);
}

}  // namespace
}  // namespace PolicyMapPackets::test
