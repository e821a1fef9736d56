// SPDX-License-Identifier: Apache-2.0
#include "packets/Simulation.h"

#include "packets/Labs.h"
#include "packets/PacketGenerator.h"
#include "packets/Tiny.h"
#include "packets/engine/Surroundings.h"

#include <PolicyMap/ClassMapStatus.h>

namespace PolicyMapPackets::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(Simulator, CountsClassesAndRules) {
  Lab lab;
  lab.load(policy);
  Simulator simulator(subjectsOf(lab));
  simulator.take(readPacket(webPacket), 3);
  simulator.take(readPacket("tcp 10.0.0.1 > 192.0.2.80:8001"));
  simulator.take(readPacket("udp 10.0.0.1 > 192.0.2.80:53"), 2);
  simulator.take(readPacket("mac 0011.2233.4455 > 00aa.bbcc.ddee"));  // of another table
  std::vector<Simulation> const all = simulator.results();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].packets, 6U);
  EXPECT_THAT(all[0].classes, ElementsAre(Pair("", 2), Pair("rest", 0), Pair("web", 4)));
  EXPECT_EQ(printed(all[0]),
            "edge input ipv4: 6 packets, 0 in class rest, 4 in class web, 2 in no class\n"
            "  class  rule     packets  match\n"
            "  web    web 10         3  permit tcp any any eq 80\n"
            "  web    web 20         1  permit tcp any any range 8000 8010\n"
            "  rest   rest 10        2  deny udp any any eq 53\n"
            "  rest   rest 20        0  permit ip any any\n"
            "  1 rule was never hit");
}

TEST(Simulator, CountsSubRules) {
  Lab lab({.subRulesForPorts = true});
  lab.load(policy);
  Simulator simulator(subjectsOf(lab));
  simulator.take(readPacket("tcp 10.0.0.1 > 192.0.2.80:8001"), 5);
  simulator.take(readPacket("tcp 10.0.0.1 > 192.0.2.80:8010"), 7);
  std::vector<Simulation> const all = simulator.results();
  std::vector<std::uint64_t> packets;
  for (SubRuleHits const& each : all[0].rules[1].subRules) {
    packets.push_back(each.packets);
  }
  EXPECT_THAT(packets, ElementsAre(5, 0, 7));  // 8000-8007, 8008-8009, 8010
}

TEST(Simulator, AsJson) {
  Lab lab;
  lab.load(policy);
  Simulator simulator(subjectsOf(lab));
  simulator.take(readPacket(webPacket));
  std::string const json = jsonOf(simulator.results()[0]).text();
  EXPECT_THAT(json, testing::HasSubstr(R"({"class":"web","packets":1})"));
  EXPECT_THAT(json, testing::HasSubstr(R"("neverHit":3)"));
}

TEST(Simulator, ReadsDenyAsItIsTold) {
  Lab lab;
  lab.load(policy);
  Simulator simulator(subjectsOf(lab), DenyReading::entry);
  simulator.take(readPacket("udp 10.0.0.1 > 192.0.2.80:53"));
  EXPECT_THAT(simulator.results()[0].classes,
              ElementsAre(Pair("", 0), Pair("rest", 1), Pair("web", 0)));
}

TEST(Simulator, HitsAreThoseOfTheStatuses) {
  Lab lab;
  lab.load(policy);
  Simulator simulator(subjectsOf(lab));
  simulator.take(readPacket(webPacket), 41);
  showHits(lab, simulator.results());
  lab.requests()->countRequestIs({"edge", "input"}, 1);
  lab.settle();
  auto const status = lab.status()->policyMapStatus({"edge", "input"})->classMapStatus("web");
  EXPECT_EQ(status->hitCount(keyOf("web", 10)), 41U);
  EXPECT_EQ(status->hitCount(keyOf("web", 20)), 0U);
}

// Whatever the tree leaves out does not count.
TEST(Simulator, OfRandomRecordsIsRight) {
  TinyRandom random(9);
  std::vector<Packet> const packets = tinyPackets();
  for (int i = 0; i != 60; ++i) {
    Subject subject;
    subject.policy = {"edge", "input"};
    for (int part = 0; part != 6; ++part) {
      for (RuleRecord& rule : random.recorded()) {
        rule.key = {rule.key.className(), "list",
                    static_cast<std::uint32_t>(subject.recorded.size()), ClassMapMatchOption::ipv4};
        subject.recorded.push_back(std::move(rule));
      }
    }
    auto const deny = static_cast<DenyReading>(i % 3);
    std::map<std::string, std::uint64_t> classes;
    for (RuleRecord const& rule : subject.recorded) {
      classes.try_emplace(rule.key.className().stdString());
    }
    classes.try_emplace("");
    Simulator simulator({subject}, deny);
    for (Packet const& packet : packets) {
      ++classes[classByRecords(subject.recorded, deny, packet)];
      simulator.take(packet);
    }
    if (!subject.recorded.empty()) {
      EXPECT_EQ(simulator.results().at(0).classes, classes);
    }
  }
}

TEST(PointIndex, FindsAllLinesThatDecide) {
  TinyRandom random(10);
  Treatments treatments;
  Slice const& slice = Slice::of(SliceId::tcp4);
  for (int i = 0; i != 30; ++i) {
    std::vector<RuleRecord> rules;
    for (int part = 0; part != 20; ++part) {
      std::vector<RuleRecord> const some = random.recorded();
      rules.insert(rules.end(), some.begin(), some.end());
    }
    RecordedSide const side(slice, rules, DenyReading::nextClass, treatments);
    PointIndex const index(side);
    for (Packet const& packet : tinyPackets()) {
      if (packet.slice().id() != slice.id()) {
        continue;
      }
      LineIndex const line = decide(side, packet.box()).line;
      auto const near = index.near(packet.box());
      EXPECT_TRUE(std::is_sorted(near.begin(), near.end()));
      EXPECT_TRUE(line == side.nothing() ||
                  std::find(near.begin(), near.end(), line) != near.end());
    }
  }
}

TEST(PacketGenerator, RepeatsWithItsSeed) {
  Lab lab;
  lab.load(policy);
  auto const generated = [&](std::uint32_t seed) {
    PacketGenerator generator(subjectsOf(lab), {.seed = seed});
    std::string text;
    for (int i = 0; i != 20; ++i) {
      auto const [packet, times] = generator.next();
      text += toText(packet) + " " + std::to_string(times) + "\n";
    }
    return text;
  };
  EXPECT_EQ(generated(7), generated(7));
  EXPECT_NE(generated(7), generated(8));
}

TEST(PacketGenerator, MakesPossiblePacketsOfRules) {
  Lab lab;
  lab.load(policy);
  PacketGenerator generator(subjectsOf(lab));
  Simulator simulator(subjectsOf(lab));
  std::uint32_t most = 0;
  for (int i = 0; i != 2000; ++i) {
    auto const [packet, times] = generator.next();
    EXPECT_EQ(readPacket(toText(packet)), packet);
    simulator.take(packet, times);
    most = std::max(most, times);
  }
  EXPECT_GT(most, 100U);
  EXPECT_EQ(simulator.results()[0].neverHit(), 0U);
}

TEST(PacketGenerator, HasNothingWithoutRules) {
  EXPECT_FALSE(PacketGenerator(std::vector<Subject>()).hasPackets());
}

}  // namespace
}  // namespace PolicyMapPackets::test
