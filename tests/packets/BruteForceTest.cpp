// SPDX-License-Identifier: Apache-2.0

// Proofs about random policies, compared with a look at each of their packets.

#include "packets/Proof.h"
#include "packets/Tiny.h"
#include "packets/engine/Comparison.h"
#include "packets/engine/Surroundings.h"

#include <gmock/gmock.h>

#include <optional>

namespace PolicyMapPackets::test {
namespace {

constexpr DenyReading denyReadings[] = {DenyReading::nextClass, DenyReading::stop,
                                        DenyReading::entry};

Subject subjectOf(std::vector<RuleRecord> recorded, ConfiguredPolicy configured) {
  Subject subject;
  subject.policy = {"edge", "input"};
  subject.option = PolicyMap::ClassMapMatchOption::ipv4;
  subject.recorded = std::move(recorded);
  subject.configured = std::move(configured);
  return subject;
}

// What a look at each packet finds.
struct Looked {
  std::uint64_t packets = 0;  // that are treated differently
  std::optional<Packet> first;
  std::map<std::pair<std::string, std::string>, Count> moved;
};

Looked lookAtAll(Subject const& subject, DenyReading deny) {
  static std::vector<Packet> const all = tinyPackets();
  Looked looked;
  for (Packet const& packet : all) {
    std::string const recorded = classByRecords(subject.recorded, deny, packet);
    std::string const configured = classByConfiguration(subject.configured, packet);
    if (recorded != configured) {
      ++looked.packets;
      looked.first = looked.first ? looked.first : packet;
      looked.moved[{recorded, configured}] += Count(1);
    }
  }
  return looked;
}

void expectAsLooked(Subject const& subject, DenyReading deny) {
  Looked const looked = lookAtAll(subject, deny);
  Proof const proof = prove(subject, {.deny = deny});
  ASSERT_FALSE(proof.isSpent);
  ASSERT_EQ(proof.verdict, looked.packets == 0 ? Verdict::same : Verdict::different);
  EXPECT_EQ(proof.packets, Count(looked.packets));
  EXPECT_EQ(proof.moved, looked.moved);
  if (looked.first) {
    EXPECT_EQ(proof.differences.front().packet, *looked.first);
  }
}

TEST(BruteForce, ProofsOfRandomPoliciesAreRight) {
  TinyRandom random(1);
  for (int i = 0; i != 300; ++i) {
    Subject const subject = subjectOf(random.recorded(), random.configured());
    expectAsLooked(subject, denyReadings[i % 3]);
  }
}

// The records are nearly what is configured.
TEST(BruteForce, ProofsOfProgrammedPoliciesAreRight) {
  TinyRandom random(2);
  int same = 0;
  for (int i = 0; i != 300; ++i) {
    ConfiguredPolicy const configured = random.configured();
    std::vector<RuleRecord> rules = TinyRandom::programmed(configured);
    if (random.oneIn(2)) {
      rules.erase(rules.begin() + random.below(static_cast<std::uint32_t>(rules.size())));
    }
    Subject const subject = subjectOf(std::move(rules), configured);
    expectAsLooked(subject, DenyReading::nextClass);
    same += prove(subject).verdict == Verdict::same ? 1 : 0;
  }
  EXPECT_GT(same, 20);
  EXPECT_LT(same, 280);
}

TEST(BruteForce, TheRulesThatDecideAPacketAreThoseOfItsClass) {
  TinyRandom random(3);
  for (int i = 0; i != 20; ++i) {
    Subject const subject = subjectOf(random.recorded(), random.configured());
    Treatments treatments;
    for (SliceId const slice : {SliceId::tcp4, SliceId::udp4}) {
      RecordedSide const recorded(Slice::of(slice), subject.recorded, DenyReading::nextClass,
                                  treatments);
      ConfigurationSide const configured(Slice::of(slice), subject.configured, treatments);
      for (Packet const& packet : tinyPackets()) {
        if (packet.slice().id() != slice) {
          continue;
        }
        auto const classOf = [&](Side const& side) {
          return treatments.of(side.treatment(decide(side, packet.box()).line)).className;
        };
        EXPECT_EQ(classOf(recorded),
                  classByRecords(subject.recorded, DenyReading::nextClass, packet));
        EXPECT_EQ(classOf(configured), classByConfiguration(subject.configured, packet));
      }
    }
  }
}

TEST(BruteForce, AroundAPacketTheSameRulesDecide) {
  TinyRandom random(4);
  for (int i = 0; i != 40; ++i) {
    Subject const subject = subjectOf(random.recorded(), random.configured());
    Treatments treatments;
    Slice const& slice = Slice::of(SliceId::tcp4);
    RecordedSide const recorded(slice, subject.recorded, DenyReading::nextClass, treatments);
    ConfigurationSide const configured(slice, subject.configured, treatments);
    auto const linesOf = [&](Box const& packet) {
      return std::pair(decide(recorded, packet).line, decide(configured, packet).line);
    };
    Box const center = tinyPackets()[random.below(1024)].box();
    Box const around = surroundings(recorded, configured, center);
    ASSERT_TRUE(contains(slice, around, center));
    for (Packet const& packet : tinyPackets()) {
      if (packet.slice().id() == slice.id() && contains(slice, around, packet.box())) {
        EXPECT_EQ(linesOf(packet.box()), linesOf(center)) << packet;
      }
    }
  }
}

TEST(BruteForce, WithASmallBudgetNothingIsCalledTheSameThatIsNot) {
  TinyRandom random(5);
  int undecided = 0;
  for (int i = 0; i != 200; ++i) {
    Subject const subject = subjectOf(random.recorded(), random.configured());
    Proof const proof = prove(subject, {.budget = random.below(4)});
    Looked const looked = lookAtAll(subject, DenyReading::nextClass);
    EXPECT_FALSE(proof.verdict == Verdict::same && looked.packets != 0);
    EXPECT_FALSE(proof.verdict == Verdict::different && looked.packets == 0);
    EXPECT_LE(proof.packets, Count(looked.packets));
    undecided += proof.verdict == Verdict::undecided ? 1 : 0;
  }
  EXPECT_GT(undecided, 20);
}

}  // namespace
}  // namespace PolicyMapPackets::test
