// SPDX-License-Identifier: Apache-2.0

// What becomes of packets: the readings of docs/packets.md that need a hand on the records.
#include "packets/Matchers.h"

using namespace PolicyMapPackets;
using namespace PolicyMapTestKit;
using namespace testing;

constexpr auto edge = R"(
  ip access-list web
    10 permit tcp any any eq 80
    20 permit tcp any any range 8000 8010
  class-map match-any web
    match access-group web
  policy-map edge
    class web
      set action1 7
  interface Ethernet1
    ip address 192.0.2.1/24
    service-policy input edge)";

constexpr auto webPacket = "tcp 10.0.0.1:4000 > 192.0.2.80:80";

Kor::Ptr<PolicyMapTest::AclPolicyData> recordOf(Lab const& lab) {
  return lab.helper()->testData({{"edge", "input"}, PolicyMap::ClassMapMatchOption::ipv4});
}

PolicyMap::AclRuleKey const web10("web", "web", 10, PolicyMap::ClassMapMatchOption::ipv4);

TEST(Packets, FareAsConfigured) {
  Lab lab;
  lab.load(edge);
  EXPECT_THAT(lab, Forwards("tcp 10.0.0.1:4000 > 192.0.2.80:80", Class("web"), Action1(7)));
  EXPECT_THAT(lab, Forwards("udp 10.0.0.1:4000 > 192.0.2.80:80", NoClass()));
  EXPECT_THAT(lab, DoesWhatIsConfigured());
}

TEST(Packets, AreNotTakenByARuleWithoutSubRules) {
  Lab lab;
  lab.load(edge);
  recordOf(lab)->subRulesForKeyDel(web10);
  EXPECT_THAT(lab, Forwards(webPacket, NoClass()));
}

TEST(Packets, AreNotTakenByASubRuleThatIsFalse) {
  Lab lab;
  lab.load(edge);
  PolicyMap::SubRuleData const port80(0, 65535, 80, 80, 0, false, false);
  recordOf(lab)->subRulesForKey(web10)->subRuleIs(port80, false);
  EXPECT_THAT(lab, Forwards(webPacket, NoClass()));
}

TEST(Packets, FareByTheLastCommit) {
  Lab lab;
  lab.load(edge);
  recordOf(lab)->ruleMatchDel(web10);
  EXPECT_THAT(lab, Forwards(webPacket, NoClass()));
  recordOf(lab)->dirtyIs(true);  // so the journal says what was committed
  EXPECT_THAT(lab, Forwards(webPacket, Class("web")));
}

TEST(Packets, ADifferenceIsProvenForAllOfThem) {
  Lab lab;
  lab.load(edge);
  recordOf(lab)->ruleAction1Is(web10, 8);
  Proof const proof = prove(lab).front();
  EXPECT_EQ(proof.verdict, Verdict::different);
  EXPECT_EQ(toText(proof.differences.front().packet), "tcp 0.0.0.0 > 0.0.0.0:80");
  EXPECT_EQ(proof.differences.front().around, "tcp any any eq 80");
  EXPECT_EQ(proof.packets, Count::powerOfTwo(150));
}

TEST(Packets, AnEditMovesNoOthers) {
  Lab lab;
  lab.load(edge);
  std::vector<Subject> const before = subjectsOf(lab);
  lab.load("ip access-list web\n no 10\n");
  EXPECT_TRUE(Treats(before).like(lab).exceptFor("tcp any any eq 80"));
}
