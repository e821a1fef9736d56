// SPDX-License-Identifier: Apache-2.0
#include "packets/Comparison.h"

#include "packets/TinySpace.h"

#include <gmock/gmock.h>

#include <map>

namespace PolicyMapPackets::test {
namespace {

// A condition as its definition says, of one packet.
bool holdsFor(Condition const& condition, Box const& packet) {
  switch (condition.kind) {
  case Condition::Kind::list:
    for (ListEntry const& entry : condition.entries) {
      if (entry.box.contains(packet)) {
        return entry.permits;
      }
    }
    return false;
  case Condition::Kind::any:
    return std::any_of(condition.parts.begin(), condition.parts.end(),
                       [&](Condition const& part) { return holdsFor(part, packet); });
  case Condition::Kind::all: break;
  }
  return !condition.parts.empty() &&
         std::all_of(condition.parts.begin(), condition.parts.end(),
                     [&](Condition const& part) { return holdsFor(part, packet); });
}

// The number of the class that takes a packet.
std::size_t classOf(Classifier const& classifier, Box const& packet) {
  std::size_t number = 0;
  while (number != classifier.classes.size() && !holdsFor(classifier.classes[number], packet)) {
    ++number;
  }
  return number;
}

class RandomClassifiers {
 public:
  explicit RandomClassifiers(std::uint32_t seed) : boxes_(seed) {}

  Classifier next() {
    Classifier classifier(tinySpace());
    std::size_t const classes = boxes_.below(4);
    for (std::size_t number = 0; number != classes; ++number) {
      treatment_ = {"class " + std::to_string(number), {boxes_.below(2)}};
      classifier.classes.push_back(condition(classifier, 2));
    }
    return classifier;
  }

 private:
  Condition condition(Classifier& classifier, int depth) {
    Condition made;
    made.kind = depth == 0 ? Condition::Kind::list : static_cast<Condition::Kind>(boxes_.below(3));
    std::size_t const most = made.kind == Condition::Kind::list ? 5 : 3;
    for (std::size_t left = boxes_.below(most); left != 0; --left) {
      if (made.kind == Condition::Kind::list) {
        bool const permits = boxes_.below(3) != 0;
        made.entries.push_back({boxes_.next(), classifier.lines.size(), permits});
        classifier.lines.push_back({treatment_, "", "", permits});
      } else {
        made.parts.push_back(condition(classifier, depth - 1));
      }
    }
    return made;
  }

  TinyBoxes boxes_;
  Treatment treatment_;
};

Treatment treatmentOf(Classifier const& classifier, Box const& packet) {
  std::size_t const number = classOf(classifier, packet);
  if (number == classifier.classes.size()) {
    return {};
  }
  for (Line const& line : classifier.lines) {
    if (line.treatment.className == "class " + std::to_string(number)) {
      return line.treatment;
    }
  }
  return {};
}

TEST(Comparison, FindsWhatLookingAtAllPacketsFinds) {
  std::vector<Box> const packets = tinyPackets();
  RandomClassifiers random(1);
  int different = 0;
  for (int i = 0; i != 400; ++i) {
    Classifier const a = random.next();
    Classifier const b = random.next();
    std::uint64_t differing = 0;
    std::optional<Box> smallest;
    for (Box const& packet : packets) {
      if (treatmentOf(a, packet) != treatmentOf(b, packet)) {
        ++differing;
        smallest = smallest ? smallest : packet;
      }
    }
    Comparison const found = compare(a, b);
    ASSERT_TRUE(found.complete);
    Count counted;
    for (Difference const& each : found.differences) {
      counted += each.packets;
      EXPECT_NE(each.treatmentBefore, each.treatmentAfter);
      for (Box const& packet : {each.smallest, each.where.lowest()}) {
        EXPECT_EQ(treatmentOf(a, packet), each.treatmentBefore);
        EXPECT_EQ(treatmentOf(b, packet), each.treatmentAfter);
      }
    }
    EXPECT_EQ(counted, Count(differing));
    ASSERT_EQ(found.equal(), differing == 0);
    if (smallest) {
      EXPECT_EQ(found.differences.front().smallest, *smallest);
      ++different;
    }
  }
  EXPECT_GT(different, 200);
}

TEST(Comparison, WithItselfFindsNothing) {
  RandomClassifiers random(2);
  for (int i = 0; i != 100; ++i) {
    Classifier const classifier = random.next();
    EXPECT_TRUE(compare(classifier, classifier).equal());
  }
}

TEST(Comparison, MirroredFindsTheSamePackets) {
  RandomClassifiers random(3);
  for (int i = 0; i != 100; ++i) {
    Classifier const a = random.next();
    Classifier const b = random.next();
    auto const packetsOf = [](Comparison const& found) {
      std::map<std::string, Count> packets;
      for (Difference const& each : found.differences) {
        auto const [low, high] =
            std::minmax(each.treatmentBefore.className, each.treatmentAfter.className);
        packets[low + "/" + high] += each.packets;
      }
      return packets;
    };
    EXPECT_EQ(packetsOf(compare(a, b)), packetsOf(compare(b, a)));
  }
}

TEST(Comparison, IsUndecidedAtTheLimitOfSteps) {
  RandomClassifiers random(4);
  int undecided = 0;
  for (int i = 0; i != 100; ++i) {
    Classifier const a = random.next();
    Classifier const b = random.next();
    Comparison const found = compare(a, b, {.steps = 2});
    undecided += found.complete ? 0 : 1;
    EXPECT_FALSE(!found.complete && found.equal());
  }
  EXPECT_GT(undecided, 20);
}

TEST(Fate, IsThatOfThePacket) {
  std::vector<Box> const packets = tinyPackets();
  RandomClassifiers random(5);
  for (int i = 0; i != 50; ++i) {
    Classifier const classifier = random.next();
    for (Box const& packet : packets) {
      EXPECT_EQ(fateOf(classifier, packet).treatment, treatmentOf(classifier, packet));
    }
  }
}

TEST(Alike, AreOnlyPacketsThatFareTheSame) {
  std::vector<Box> const packets = tinyPackets();
  RandomClassifiers random(6);
  for (int i = 0; i != 30; ++i) {
    Classifier const a = random.next();
    Classifier const b = random.next();
    Box const& packet = packets[static_cast<std::size_t>(i) * 8];
    Box const around = alike(a, b, packet);
    EXPECT_TRUE(around.contains(packet));
    for (Box const& each : packets) {
      if (around.contains(each)) {
        EXPECT_EQ(fateOf(a, each).candidate.entry, fateOf(a, packet).candidate.entry);
        EXPECT_EQ(fateOf(b, each).candidate.entry, fateOf(b, packet).candidate.entry);
      }
    }
  }
}

}  // namespace
}  // namespace PolicyMapPackets::test
