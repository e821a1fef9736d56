// SPDX-License-Identifier: Apache-2.0

// Proofs about filter sets, compared with binary decision diagrams: verdict, smallest packet and
// number of packets.

#include "oracle/BddSides.h"
#include "packets/PacketChange.h"
#include "packets/Proof.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

namespace PolicyMapPackets::test {
namespace {

using PolicyMapTestKit::FilterLayout;
using PolicyMapTestKit::Lab;
using PolicyMapTestKit::LabOptions;
using PolicyMapTestKit::RuleRecord;
using PolicyMapTestKit::Text::Family;
using PolicyMapTestKit::Text::FilterSet;
using PolicyMapTestKit::Text::readFilterSet;
using PolicyMapTestKit::Text::SourceText;

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

Subject subjectOf(FilterSet const& rules, std::uint32_t classes, bool subRules) {
  LabOptions options;
  options.subRulesForPorts = subRules;
  Lab lab(options);
  FilterLayout layout;
  layout.classes = classes;
  lab.load(rules, layout);
  for (Subject& subject : subjectsOf(lab)) {
    if (subject.hasRules()) {
      return std::move(subject);
    }
  }
  ADD_FAILURE() << "no rules";
  return {};
}

Subject generated(std::size_t rules, std::uint32_t classes, std::uint64_t seed,
                  Family family = Family::ip4) {
  using PolicyMapTestKit::Text::generateFilterSet;
  return subjectOf(readFilterSet(SourceText("generated", generateFilterSet(rules, seed, family))),
                   classes, seed % 2 == 0);
}

TEST(Oracle, AgreesThatFilterSetsAreProgrammedAsConfigured) {
  for (std::uint32_t const classes : {1U, 4U, 16U}) {
    EXPECT_FALSE(expectTheSame(generated(150, classes, classes), std::to_string(classes)));
    EXPECT_FALSE(expectTheSame(generated(100, classes, classes, Family::ip6), "ipv6"));
  }
}

// Changes one recorded value.
std::string mutate(std::vector<RuleRecord>& rules, std::mt19937& random) {
  auto const below = [&](std::size_t end) { return static_cast<std::size_t>(random() % end); };
  std::size_t const place = below(rules.size());
  RuleRecord& rule = rules[place];
  auto& match = std::get<Acl::IpRuleConfig>(rule.match);
  auto const moved = [&](std::uint32_t value) { return random() % 2 == 0 ? value + 1 : value - 1; };
  switch (below(11)) {
  case 0: std::swap(rule, rules[below(rules.size())]); return "swapped";
  case 1: rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(place)); return "dropped";
  case 2: rules.insert(rules.begin(), RuleRecord(rule)); return "doubled";
  case 3: match.permitIs(!match.permit()); return "permit";
  case 4: ++rule.actions[below(3)]; return "action";
  case 5:
    match.protocolIs(moved(static_cast<std::uint32_t>(match.protocol().valueOr(7))) & 0xff);
    return "protocol";
  case 6: match.sourceIs(Acl::IpAddressMatch(0x0a000000, 0xff000000)); return "source";
  case 7: match.destinationIs(Acl::IpAddressMatch(0x80000000, 0x80000001)); return "destination";
  case 8: match.dscpIs(46); return "dscp";
  case 9:
    if (!rule.subRules.empty()) {
      PolicyMap::SubRuleData& sub = rule.subRules[below(rule.subRules.size())];
      sub.dstPortLowIs(static_cast<std::uint16_t>(moved(sub.dstPortLow()) & 0xffff));
    }
    return "port";
  default:
    rule.key = {rules[below(rules.size())].key.className(), rule.key.aclName(), rule.key.seqno(),
                rule.key.matchOption()};
    return "class";
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
