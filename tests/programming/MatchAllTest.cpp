// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <gmock/gmock.h>

namespace policymap {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Class "c" of policy "pm" is a match-all over the matches that a test adds, in that order.
class MatchAll : public testing::Test {
 protected:
  PolicyBench bench;
  std::uint32_t place = 0;

  void SetUp() override {
    bench.classMap("c")->matchTypeIs(PolicyMap::ClassMapMatchType::matchAll);
    bench.policy("pm")->classPrioIs(Kor::Name("c"), 10);
    bench.attach("pm", "Ethernet1");
    bench.start();
    bench.settle();
  }

  static Acl::IpRuleConfig rule(char const* source, Acl::PortMatch const& port = {},
                                bool permit = true) {
    Acl::IpRuleConfig config;
    config.sourceIs(Acl::IpAddressMatch(std::string_view(source)));
    config.dstPortIs(port);
    config.permitIs(permit);
    return config;
  }
  void list(char const* name, std::vector<Acl::IpRuleConfig> const& rules) {
    std::uint32_t seqno = 0;
    for (Acl::IpRuleConfig const& config : rules) {
      bench.acls->ipAclIs(Kor::Name(name))->ruleIs(seqno += 10, config);
    }
    bench.classMatches("c", name, ++place);
  }
  // The rules that are added, without the text that is common to all lines.
  std::vector<std::string> rules() {
    std::string const start = "addRule pm/input/ipv4 c:";
    std::vector<std::string> found;
    for (std::string const& call : bench.settle()) {
      if (call.rfind(start, 0) == 0) {
        found.push_back(call.substr(start.size()));
      }
    }
    return found;
  }
  std::string error() { return text(bench.status->policyMapStatus({"pm", "input"})->error()); }
};

TEST_F(MatchAll, OfOneListIsTheList) {
  list("web", {rule("10.0.0.0/8")});
  EXPECT_THAT(rules(), ElementsAre("web:10 permit ip 10.0.0.0/8 any"));
}

TEST_F(MatchAll, OfTwoListsTakesWhatBothTakeUnderBothNames) {
  list("web", {rule("10.0.0.0/8"), rule("192.168.0.0/16")});
  list("dmz", {rule("10.1.0.0/16"), rule("172.16.0.0/12"), rule("192.168.1.0/24")});
  EXPECT_THAT(rules(), ElementsAre("web & dmz:10:10 permit ip 10.1.0.0/16 any",
                                   "web & dmz:30:20 permit ip 192.168.1.0/24 any"));
}

TEST_F(MatchAll, OfThreeListsNamesAllOfThem) {
  list("a", {rule("10.0.0.0/8")});
  list("b", {rule("10.1.0.0/16")});
  list("c", {rule("10.1.1.0/24")});
  EXPECT_THAT(rules(), ElementsAre("a & b:10 & c:10:10 permit ip 10.1.1.0/24 any"));
}

TEST_F(MatchAll, OverDisjointListsProgramsNothing) {
  list("a", {rule("10.0.0.0/8")});
  list("b", {rule("11.0.0.0/8")});
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(error(), "");
}

TEST_F(MatchAll, WithAMissingListProgramsNothing) {
  list("a", {rule("10.0.0.0/8")});
  bench.classMatches("c", "absent", ++place);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(MatchAll, PortRangesMeet) {
  list("a", {rule("any", Acl::PortMatch::range(1000, 2000))});
  list("b", {rule("any", Acl::PortMatch::range(1500, 3000))});
  EXPECT_THAT(rules(), ElementsAre("a & b:10:10 *>1500-2000! permit ip any any range 1500 2000"));
}

TEST_F(MatchAll, PortsThatNoSingleMatchSaysBecomeExactSubRules) {
  list("a", {rule("any", Acl::PortMatch::neq(80))});
  list("b", {rule("any", Acl::PortMatch::range(79, 82))});
  EXPECT_THAT(rules(), ElementsAre("a & b:10:10 *>79-79 permit ip any any range 79 82",
                                   "a & b:10:10 *>81-82! permit ip any any range 79 82"));
}

TEST_F(MatchAll, ADenyKeepsItsPlaceInItsList) {
  list("a", {rule("10.1.0.0/16", {}, false), rule("10.0.0.0/8")});
  list("b", {rule("any", Acl::PortMatch::eq(80))});
  EXPECT_THAT(rules(), ElementsAre("a & b:10:10 *>80-80 deny ip 10.1.0.0/16 any eq 80",
                                   "a & b:10:20 *>80-80 permit ip 10.0.0.0/8 any eq 80"));
}

TEST_F(MatchAll, AListAndARuleOfTheClassMapItself) {
  list("a", {rule("10.0.0.0/8")});
  bench.classMap("c")->matchIs(++place,
                               PolicyMap::ClassMapMatch::rule(rule("any", Acl::PortMatch::eq(53))));
  EXPECT_THAT(rules(), ElementsAre("a & :2:10 *>53-53 permit ip 10.0.0.0/8 any eq 53"));
}

TEST_F(MatchAll, ANestedMatchAnyIsOneOperand) {
  list("a", {rule("10.0.0.0/8")});
  bench.acls->ipAclIs("x")->ruleIs(10, rule("10.1.0.0/16"));
  bench.acls->ipAclIs("y")->ruleIs(10, rule("10.2.0.0/16"));
  bench.classMatches("inner", "x", 1);
  bench.classMatches("inner", "y", 2);
  bench.classMap("c")->matchIs(++place, PolicyMap::ClassMapMatch::classMap("inner"));
  EXPECT_THAT(rules(), ElementsAre("a & x:10:10 permit ip 10.1.0.0/16 any",
                                   "a & y:10:10 permit ip 10.2.0.0/16 any"));
}

TEST_F(MatchAll, InsideANestedMatchAnyIsProgrammedOnce) {
  bench.classMap("c")->matchTypeIs(PolicyMap::ClassMapMatchType::matchAny);
  bench.acls->ipAclIs("x")->ruleIs(10, rule("10.1.0.0/16"));
  bench.acls->ipAclIs("y")->ruleIs(10, rule("10.1.1.0/24"));
  for (char const* const inner : {"one", "two"}) {
    bench.classMap(inner)->matchTypeIs(PolicyMap::ClassMapMatchType::matchAll);
    bench.classMatches(inner, "x", 1);
    bench.classMatches(inner, "y", 2);
    bench.classMap("c")->matchIs(++place, PolicyMap::ClassMapMatch::classMap(inner));
  }
  EXPECT_THAT(rules(), ElementsAre("x & y:10:10 permit ip 10.1.1.0/24 any"));
}

TEST_F(MatchAll, TheSameListTwiceIsTheList) {
  list("a", {rule("10.0.0.0/8"), rule("10.0.0.0/16")});
  bench.classMatches("c", "a", ++place);
  EXPECT_EQ(rules().size(), 2U);
}

TEST_F(MatchAll, AnIdenticalRewriteProgramsNothing) {
  list("a", {rule("10.0.0.0/8")});
  list("b", {rule("10.1.0.0/16")});
  bench.settle();
  bench.acls->ipAcl("a")->ruleDel(10);
  bench.acls->ipAcl("a")->ruleIs(10, rule("10.0.0.0/8"));
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.acls->ipAcl("a")->ruleIs(10, rule("10.1.1.0/24"));
  EXPECT_THAT(rules(), ElementsAre("a & b:10:10 permit ip 10.1.1.0/24 any"));
}

TEST_F(MatchAll, OverIpAndMacIsRefused) {
  list("a", {rule("10.0.0.0/8")});
  bench.acls->macAclIs("m")->ruleIs(10, Acl::MacRuleConfig());
  bench.classMatches("c", "m", ++place, ClassMapMatchOption::mac);
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(error(), "class-map c: match-all over IP and MAC matches cannot be programmed");
}

TEST_F(MatchAll, OverIpv4AndIpv6IsEmpty) {
  list("a", {rule("10.0.0.0/8")});
  bench.acls->ip6AclIs("six")->ruleIs(10, Acl::Ip6RuleConfig());
  bench.classMatches("c", "six", ++place, ClassMapMatchOption::ipv6);
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(error(), "");
}

TEST_F(MatchAll, TtlMatchesThatNoRuleSaysAreRefusedByName) {
  Acl::IpRuleConfig five;
  five.ttlIs(Acl::TtlMatch::neq(5));
  Acl::IpRuleConfig seven;
  seven.ttlIs(Acl::TtlMatch::neq(7));
  list("a", {five});
  list("b", {seven});
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(error(),
            "class-map c: the TTL matches of rules 10 of a and 10 of b cannot be combined");
}

TEST_F(MatchAll, EveryOtherFieldMeets) {
  Acl::IpRuleConfig a;
  a.protocolIs(6);
  a.ttlIs(Acl::TtlMatch::lt(10));
  Acl::IpRuleConfig b;
  b.dscpIs(46);
  b.establishedIs(true);
  b.ttlIs(Acl::TtlMatch::gt(8));
  list("a", {a});
  list("b", {b});
  Acl::IpRuleConfig both;
  both.protocolIs(6);
  both.dscpIs(46);
  both.establishedIs(true);
  both.ttlIs(Acl::TtlMatch::eq(9));
  EXPECT_THAT(rules(), ElementsAre("a & b:10:10 " + both.describe()));
}

TEST_F(MatchAll, BranchesThatNestEachOtherOverAndOverAreRefusedInTime) {
  bench.acls->ipAclIs("leaf");
  for (int level = 0; level < 30; ++level) {
    for (char const side : {'l', 'r'}) {
      std::string const name = side + std::to_string(level);
      auto const nested = bench.classMap(name.c_str());
      nested->matchTypeIs(PolicyMap::ClassMapMatchType::matchAll);
      for (std::uint32_t branch = 1; branch <= 2; ++branch) {
        std::string const below = (branch == 1 ? "l" : "r") + std::to_string(level - 1);
        nested->matchIs(
            branch, level == 0 ? PolicyMap::ClassMapMatch::acl(ClassMapMatchOption::ipv4, "leaf")
                               : PolicyMap::ClassMapMatch::classMap(Kor::String8(below)));
      }
    }
  }
  bench.classMap("c")->matchIs(++place, PolicyMap::ClassMapMatch::classMap("l29"));
  EXPECT_THAT(bench.settle(), IsEmpty());
  EXPECT_EQ(error(), "class-map c: nested class-maps branch too often");
}

}  // namespace
}  // namespace policymap
