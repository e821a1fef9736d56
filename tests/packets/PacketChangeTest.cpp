// SPDX-License-Identifier: Apache-2.0
#include "packets/PacketChange.h"

#include "packets/Labs.h"
#include "packets/Tiny.h"

namespace PolicyMapPackets::test {
namespace {

// What an edit of the policy changes.
std::string changedBy(std::string const& edit, SearchOptions const& options = {}) {
  Lab lab;
  lab.load(policy);
  std::vector<Subject> const before = subjectsOf(lab);
  lab.load(edit);
  std::vector<PacketChange> const changed =
      packetChanges(before, subjectsOf(lab), Said::byRecords, options);
  EXPECT_EQ(changed.size(), 1U);
  return printed(changed.front());
}

TEST(PacketChanges, OfNothing) {
  EXPECT_EQ(changedBy(""), "edge input ipv4: no rule changed; every packet is treated as before");
}

TEST(PacketChanges, OfARuleThatTheOthersCover) {
  EXPECT_EQ(changedBy("ip access-list rest\n 30 permit udp any any eq 99\n"),
            "edge input ipv4: 1 rule added; every packet is treated as before");
}

TEST(PacketChanges, NameClassesRulesAndTheSmallestPacket) {
  EXPECT_EQ(changedBy("ip access-list web\n no 10\n"),
            "edge input ipv4: 1 rule removed; 2^150 packets go from class web to class rest; all "
            "others are treated as before\n"
            "  tcp 0.0.0.0 > 0.0.0.0:80, as every tcp any any eq 80\n"
            "    before: web 10 permit tcp any any eq 80 of class web, action1 1\n"
            "    after: rest 20 permit ip any any of class rest, action1 2");
}

TEST(PacketChanges, OfActions) {
  EXPECT_EQ(changedBy("policy-map edge\n class web\n  set action2 5\n", {.first = 0}),
            "edge input ipv4: 2 rules changed; 2^153.58 packets get other actions of class web; "
            "all others are treated as before");
}

TEST(PacketChanges, OfTheOrderAlone) {
  EXPECT_EQ(
      changedBy("policy-map edge\n no class web\n class web\n  set action1 1\n", {.first = 0}),
      "edge input ipv4: rules in another order; 2^153.58 packets go from class web to class "
      "rest; all others are treated as before");
}

TEST(PacketChanges, LeaveOutWhatIsExcepted) {
  std::string const edit = "ip access-list web\n no 10\n no 20\n";
  EXPECT_EQ(changedBy(edit, {.first = 0, .except = {PacketSet("tcp any any eq 80")}}),
            "edge input ipv4: 2 rules removed; 2^153.46 packets go from class web to class rest; "
            "all others but the excepted ones are treated as before");
  EXPECT_EQ(changedBy(edit, {.except = {PacketSet("tcp any any")}}),
            "edge input ipv4: 2 rules removed; every packet but the excepted ones is treated as "
            "before");
}

TEST(PacketChanges, WithoutABudgetAreUndecided) {
  EXPECT_EQ(changedBy("ip access-list web\n no 10\n", {.budget = 0}),
            "edge input ipv4: 1 rule removed; the rest is undecided");
}

TEST(PacketChanges, OfAPolicyThatComesAndGoes) {
  Lab lab;
  std::vector<Subject> const nothing = subjectsOf(lab);
  lab.load(policy);
  std::vector<Subject> const attached = subjectsOf(lab);
  auto const came = packetChanges(nothing, attached);
  ASSERT_EQ(came.size(), 1U);
  EXPECT_THAT(printed(came.front()), testing::HasSubstr("4 rules added; "));
  EXPECT_EQ(came.front().moved.begin()->first.first, "");
  auto const went = packetChanges(attached, nothing);
  EXPECT_THAT(printed(went.front()), testing::HasSubstr("4 rules removed; "));
  EXPECT_EQ(went.front().packets, came.front().packets);
}

TEST(PacketChanges, AtAnInterfaceOfAnotherPolicy) {
  Lab lab;
  lab.load(policy);
  SearchOptions const options{.selection = {.interface = "Ethernet1"}, .first = 0};
  std::vector<Subject> const before = subjectsOf(lab, options.selection);
  lab.load("policy-map core\n class web\n  set action1 1\n"
           "interface Ethernet1\n service-policy input core\n");
  auto const changed =
      packetChanges(before, subjectsOf(lab, options.selection), Said::byRecords, options);
  ASSERT_EQ(changed.size(), 1U);
  EXPECT_EQ(changed.front().subject, "edge input ipv4 -> core input ipv4");
  EXPECT_EQ(changed.front().rules.removed, 2U);
}

TEST(PacketChanges, OfWhatIsNotProgrammed) {
  Lab served;
  served.load(policy);
  Lab unserved({.layer3 = false});
  unserved.load(policy);
  std::vector<Subject> const before = subjectsOf(served);
  std::vector<Subject> const after = subjectsOf(unserved);
  PacketChange const records = packetChanges(before, after).front();
  EXPECT_EQ(records.verdict, Verdict::notProgrammed);
  EXPECT_THAT(printed(records), testing::StartsWith("edge input ipv4: not programmed after: no "));
  EXPECT_THAT(printed(packetChanges(after, before).front()),
              testing::StartsWith("edge input ipv4: not programmed before: no "));
  EXPECT_EQ(packetChanges(before, after, Said::byConfiguration).front().verdict, Verdict::same);
}

TEST(PacketSet, IsTheMatchOfARule) {
  Slice const& tcp4 = Slice::of(SliceId::tcp4);
  Slice const& tcp6 = Slice::of(SliceId::tcp6);
  Slice const& udp4 = Slice::of(SliceId::udp4);
  PacketSet const tcp("tcp any any eq 80");
  EXPECT_EQ(tcp.text(), "tcp any any eq 80");
  EXPECT_EQ(tcp.boxes(tcp4).size(), 1U);
  EXPECT_EQ(tcp.boxes(tcp6).size(), 1U);
  EXPECT_TRUE(tcp.boxes(udp4).empty());
  EXPECT_TRUE(PacketSet("tcp host 10.0.0.1 any").boxes(tcp6).empty());
  EXPECT_FALSE(PacketSet("any any vlan 7").boxes(Slice::of(SliceId::tagged)).empty());
}

TEST(PacketSet, NamesWhatIsWrong) {
  for (auto const& [text, column] :
       {std::pair("", 1U), std::pair("tcp any", 8U), std::pair("tcp any any eq x", 16U)}) {
    try {
      PacketSet const set(text);
      ADD_FAILURE() << text;
    } catch (InputError const& error) {
      EXPECT_THAT(error.what(), testing::StartsWith("packets:1:" + std::to_string(column) + ": "));
    }
  }
}

// Compares with a look at each packet.
TEST(PacketChanges, OfRandomPoliciesAreRight) {
  TinyRandom random(8);
  std::vector<Packet> const packets = tinyPackets();
  std::size_t different = 0;
  for (int i = 0; i != 100; ++i) {
    Subject before;
    before.policy = {"edge", "input"};
    before.configured = random.configured();
    Subject after = before;
    after.configured = random.configured();
    PacketChange const change = packetChanges({before}, {after}, Said::byConfiguration).front();
    std::map<std::pair<std::string, std::string>, Count> moved;
    for (Packet const& packet : packets) {
      std::pair const classes(classByConfiguration(before.configured, packet),
                              classByConfiguration(after.configured, packet));
      if (classes.first != classes.second) {
        moved[classes] += Count(1);
      }
    }
    EXPECT_EQ(change.moved, moved);
    different += moved.empty() ? 0 : 1;
  }
  EXPECT_GT(different, 50U);
}

}  // namespace
}  // namespace PolicyMapPackets::test
