// SPDX-License-Identifier: Apache-2.0
#include "packets/TwoClasses.h"

#include "packets/Labs.h"
#include "packets/Tiny.h"

#include <algorithm>
#include <set>
#include <utility>

namespace PolicyMapPackets::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Classes with names as in `classes`, in this order, with a class-map of lists of the same name.
std::string policyOf(std::vector<std::string> const& classes, std::string const& lists) {
  std::string text = lists;
  std::string order;
  for (std::string const& name : classes) {
    text.append("\nclass-map match-any ").append(name);
    for (char const* const family : {"", "ipv6 ", "mac "}) {
      text.append("\n match ").append(family).append("access-group ").append(name);
    }
    order.append("\n class ").append(name);
  }
  return text + "\npolicy-map edge" + order +
         "\ninterface Ethernet1\n ip address 192.0.2.1/24\n ipv6 address 2001:db8::1/64\n"
         " service-policy input edge\n";
}

std::vector<std::string> foundIn(Lab const& lab, SearchOptions const& options = {}) {
  std::vector<std::string> texts;
  for (Proof const& proof : prove(lab, options)) {
    EXPECT_EQ(proof.verdict, Verdict::same);
    EXPECT_TRUE(proof.twoClasses.empty() || proof.subject == "edge input mac");
    for (TwoClasses const& each : proof.twoClasses) {
      // What the rules are said to do is what they do.
      EXPECT_EQ(traceOf(lab, toText(each.packet),
                        {.selection = {.option = each.otherOption}, .deny = options.deny})
                    .recordedAs.className,
                each.otherRule.className);
      EXPECT_EQ(traceOf(lab, toText(each.frame),
                        {.selection = {.option = ClassMapMatchOption::mac}, .deny = options.deny})
                    .recordedAs.className,
                each.rule.className);
      texts.push_back(printed(each));
    }
  }
  return texts;
}
std::vector<std::string> foundIn(std::string const& text, SearchOptions const& options = {}) {
  Lab lab;
  lab.load(text);
  return foundIn(lab, options);
}

TEST(TwoClasses, FramesOfMacRulesThatIpRulesGiveToAnotherClass) {
  std::string const text =
      policyOf({"web", "host"}, "ip access-list web\n 10 permit tcp any any eq 80\n"
                                "ipv6 access-list web\n 10 permit udp any any\n"
                                "mac access-list host\n 10 permit any any arp\n"
                                " 20 permit host 0000.0000.0009 any vlan 7");
  EXPECT_THAT(
      foundIn(text),
      ElementsAre(
          "tcp 0.0.0.0 > 0.0.0.0:80 in mac 0000.0000.0009 > 0000.0000.0000 ethertype 2048 vlan 7: "
          "class host by host 20 permit host 0000.0000.0009 any vlan 7, and class web of the ipv4 "
          "rules by web 10 permit tcp any any eq 80",
          "udp :: > :: in mac 0000.0000.0009 > 0000.0000.0000 ethertype 34525 vlan 7: class host "
          "by host 20 permit host 0000.0000.0009 any vlan 7, and class web of the ipv6 rules by "
          "web 10 permit udp any any"));
}

TEST(TwoClasses, LabelledPacketsOfMacAndMplsRules) {
  EXPECT_THAT(foundIn("mac access-list host\n 10 permit any any vlan 7\n"
                      "class-map match-any host\n match mac access-group host\n"
                      "class-map match-any labels\n match mpls experimental topmost 5\n"
                      "policy-map edge\n class host\n class labels\n"
                      "interface Ethernet1\n ip address 192.0.2.1/24\n service-policy input edge"),
              ElementsAre("mac 0000.0000.0000 > 0000.0000.0000 vlan 7 mpls-label 0 "
                          "mpls-experimental 5: class host by host 10 permit any any vlan 7, and "
                          "class labels of the mpls rules by 10 permit any any mpls-experimental "
                          "5"));
}

TEST(TwoClasses, NothingIsFoundIfNoFrameHasTwo) {
  std::string const web = "ip access-list web\n 10 permit tcp any any eq 80\n";
  std::string const host = "mac access-list host\n";
  // Other frames than those of IP; one class; a class that is left; rules that are not reached.
  EXPECT_THAT(foundIn(policyOf({"web", "host"}, web + host + " 10 permit any any arp")), IsEmpty());
  EXPECT_THAT(foundIn(policyOf({"web"}, web + "mac access-list web\n 10 permit any any")),
              IsEmpty());
  std::string const denies =
      policyOf({"web", "host"}, web + host + " 10 deny any any ip\n 20 permit any any");
  EXPECT_THAT(foundIn(denies), IsEmpty());
  EXPECT_THAT(foundIn(policyOf({"web", "host"}, web + "mac access-list web\n 10 permit any any\n" +
                                                    host + " 10 permit any any ip")),
              IsEmpty());
}

// The first rules of both tables are of one class.
TEST(TwoClasses, LaterRulesMayBeOfAnotherClass) {
  auto const rulesIn = [](std::string const& lists) {
    Lab lab;
    lab.load(policyOf({"one", "two"}, lists));
    Proof const proof = prove(lab).back();
    std::vector<std::string> rules;
    for (TwoClasses const& each : proof.twoClasses) {
      rules.push_back(each.rule.className + " " + each.rule.name() + ", " +
                      each.otherRule.className + " " + each.otherRule.name());
    }
    return rules;
  };
  std::string const mac = "mac access-list one\n 10 permit any any vlan 5\n";
  std::string const ip = "ip access-list one\n 10 permit tcp any any\n";
  EXPECT_THAT(rulesIn(mac + ip + "ip access-list two\n 10 permit ip any any"),
              ElementsAre("one one 10, two two 10"));
  EXPECT_THAT(rulesIn(mac + ip + "mac access-list two\n 10 permit any any vlan 6"),
              ElementsAre("two two 10, one one 10"));
}

TEST(TwoClasses, OnlyWhatIsProgrammedCounts) {
  std::string const lists = "ipv6 access-list web\n 10 permit udp any any\n"
                            "mac access-list host\n 10 permit any any";
  Lab lab;
  lab.load(policyOf({"web", "host"}, lists));
  EXPECT_EQ(foundIn(lab).size(), 1U);
  EXPECT_THAT(foundIn(lab, {.selection = {.option = ClassMapMatchOption::mac}}), IsEmpty());
  std::vector<Subject> const subjects = subjectsOf(lab);
  Subject const& mac = *std::find_if(subjects.begin(), subjects.end(), [](Subject const& subject) {
    return subject.option == ClassMapMatchOption::mac;
  });
  EXPECT_EQ(twoClasses(mac, subjects, {}).size(), 1U);
  EXPECT_THAT(twoClasses(mac, subjects, {.budget = 1}), IsEmpty());
  lab.load("interface Ethernet1\n no ipv6 address 2001:db8::1/64");
  EXPECT_THAT(prove(lab).back().twoClasses, IsEmpty());
}

Subject subjectOf(ClassMapMatchOption option, std::vector<RuleRecord> recorded) {
  Subject subject;
  subject.policy = {"edge", "input"};
  subject.option = option;
  subject.recorded = std::move(recorded);
  return subject;
}

// MAC rules about frames of IP and others, with and without two VLANs.
std::vector<RuleRecord> macRules(TinyRandom& random) {
  std::vector<RuleRecord> rules(random.below(4));
  for (std::uint32_t i = 0; i != rules.size(); ++i) {
    Acl::MacRuleConfig match;
    match.permitIs(!random.oneIn(3));
    match.ethertypeIs(random.oneIn(3) ? 0x0806 : 0x0800);
    if (random.oneIn(2)) {
      match.vlanIs(1 + random.below(2));
    }
    rules[i] = {{TinyRandom::className(random.below(2)), "frames", i, ClassMapMatchOption::mac},
                match,
                {},
                {PolicyMap::SubRuleData()}};
  }
  return rules;
}

// Compares with a look at each frame and each packet.
TEST(TwoClasses, AreFoundIfThereAreAny) {
  TinyRandom random(8);
  std::vector<Packet> const packets = tinyPackets();
  int found = 0;
  for (int i = 0; i != 150; ++i) {
    std::vector<Subject> const subjects{subjectOf(ClassMapMatchOption::ipv4, random.recorded()),
                                        subjectOf(ClassMapMatchOption::mac, macRules(random))};
    std::set<std::string> ofPackets;
    for (Packet const& packet : packets) {
      ofPackets.insert(classByRecords(subjects[0].recorded, DenyReading::nextClass, packet));
    }
    std::set<std::string> ofFrames;
    for (char const* const vlan : {"", " vlan 1", " vlan 2"}) {
      std::string const frame = "mac 0000.0000.0000 > 0000.0000.0000 ethertype ip";
      for (Trace const& trace : tracePacket(subjects, readPacket(frame + vlan))) {
        ofFrames.insert(trace.recordedAs.className);
      }
    }
    bool isThere = false;
    for (std::string const& one : ofFrames) {
      for (std::string const& other : ofPackets) {
        isThere = isThere || (!one.empty() && !other.empty() && one != other);
      }
    }
    EXPECT_EQ(twoClasses(subjects[1], subjects, {}).size(), isThere ? 1U : 0U);
    found += isThere ? 1 : 0;
  }
  EXPECT_GT(found, 30);
  EXPECT_LT(found, 120);
}

TEST(TwoClasses, AsJson) {
  Lab lab;
  lab.load(policyOf({"web", "host"}, "ip access-list web\n 10 permit tcp any any eq 80\n"
                                     "mac access-list host\n 10 permit any any"));
  EXPECT_EQ(
      jsonOf(prove(lab).back()).text(),
      R"({"subject":"edge input mac","verdict":"the same","twoClasses":[{"frame":)"
      R"("mac 0000.0000.0000 > 0000.0000.0000 ethertype 2048","rule":{"class":"host","acl":"host",)"
      R"("seq":10,"match":"permit any any"},"otherOption":"ipv4","packet":)"
      R"("tcp 0.0.0.0 > 0.0.0.0:80","otherRule":{"class":"web","acl":"web","seq":10,"match":)"
      R"("permit tcp any any eq 80"}}]})");
}

}  // namespace
}  // namespace PolicyMapPackets::test
