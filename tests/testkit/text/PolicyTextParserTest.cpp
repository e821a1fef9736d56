// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/PolicyTextParser.h"

#include "testkit/text/Parsing.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace PolicyMapTestKit::Text::test {
namespace {

using Kinds = std::map<std::string, std::uint64_t>;

std::string const inList = "ip access-list L\n";
std::string const inClassMap = "class-map C\n";
std::string const inPolicyMap = "policy-map P\n";
std::string const inClass = "policy-map P\n class C\n";
std::string const inInterface = "interface Ethernet1\n";

Kinds skippedOf(std::string text) {
  return readText(std::move(text), Reading::lenient).skipped.byKind();
}

template <typename Body>
std::size_t countOf(PolicyText const& text) {
  std::size_t count = 0;
  for (Statement const& statement : text.statements) {
    count += std::holds_alternative<Body>(statement.body) ? 1U : 0U;
  }
  return count;
}

// The text

TEST(PolicyTextParser, EmptyTextSaysNothing) {
  EXPECT_TRUE(statements("").empty());
  EXPECT_TRUE(statements("\n \t\n! comment\n  ! comment\n!").empty());
}

TEST(PolicyTextParser, StatementsKeepTheOrderAndPlaceOfTheirLines) {
  auto const all = statements("!\r\nip access-list L\r\n\r\n  permit ip any any\r\nip routing\r\n");
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(toText(all[0].position), "t:2:1");
  EXPECT_EQ(toText(all[1].position), "t:4:3");
  EXPECT_EQ(toText(all[2].position), "t:5:1");
  EXPECT_TRUE(std::holds_alternative<RuleAdd>(all[1].body));
}

TEST(PolicyTextParser, KeywordsHaveNoCaseAndNamesHave) {
  EXPECT_EQ(last<AccessListOpen>("IP Access-List EXTENDED WeB").list.name.text, "WeB");
}

TEST(PolicyTextParser, NamesTellTheirPlace) {
  auto const all = statements("class-map C\n match access-group name L\n");
  auto const& body = std::get<ClassMatchList>(all[1].body);
  EXPECT_EQ(toText(all[1].positionOf(body.list.name)), "t:2:26");
  EXPECT_EQ(toText(all[1].positionOf(body.classMap)), "t:2:2");
}

TEST(PolicyTextParser, CommentDoesNotEndAMode) {
  EXPECT_EQ(last<RuleAdd>("ip access-list L\n!\n!\npermit ip any any").list.name.text, "L");
}

TEST(PolicyTextParser, IndentationMeansNothingToAStrictReading) {
  auto const all = statements("   interface E1\nshutdown\n     interface E2\n shutdown\n");
  ASSERT_EQ(all.size(), 4U);
  EXPECT_EQ(std::get<InterfaceShutdown>(all[1].body).interface.text, "E1");
  EXPECT_EQ(std::get<InterfaceShutdown>(all[3].body).interface.text, "E2");
}

TEST(PolicyTextParser, ModeEndsAtExitEndAndEveryTopLevelCommand) {
  for (std::string const ending : {"exit", "end", "ip routing", "hostname h", "no ip access-list M",
                                   "access-list 1 permit any", "class-map D"}) {
    EXPECT_NE(errorOf(inList + ending + "\npermit ip any any"), "no error") << ending;
  }
}

TEST(PolicyTextParser, ExitLeavesAClassForItsPolicyMap) {
  auto const all = statements(inClass + "exit\nclass D\n");
  EXPECT_EQ(std::get<PolicyClassOpen>(all.back().body).policyMap.text, "P");
  EXPECT_EQ(errorOf(inClass + "exit\nset action1 1"),
            "t:4:1: expected class or another command, found 'set'");
  EXPECT_EQ(errorOf(inClass + "exit\nexit\nclass D"),
            "t:5:1: expected a command (access-list, class-map, policy-map, interface, ...), found "
            "'class'");
  EXPECT_EQ(errorOf(inClass + "end\nclass D"),
            "t:4:1: expected a command (access-list, class-map, policy-map, interface, ...), found "
            "'class'");
}

TEST(PolicyTextParser, ExitAndEndStandAlone) {
  EXPECT_TRUE(statements("exit\nend\nexit").empty());
  EXPECT_EQ(errorOf("exit now"), "t:1:6: expected end of line, found 'now'");
  EXPECT_EQ(errorOf("end now"), "t:1:5: expected end of line, found 'now'");
}

TEST(PolicyTextParser, UnknownCommandIsRefusedByWhatTheModeKnows) {
  EXPECT_EQ(errorOf("router bgp 1"),
            "t:1:1: expected a command (access-list, class-map, policy-map, interface, ...), found "
            "'router'");
  EXPECT_EQ(errorOf(inList + " router"),
            "t:2:2: expected permit, deny, remark or another command, found 'router'");
  EXPECT_EQ(errorOf(inClassMap + "router"),
            "t:2:1: expected match or another command, found 'router'");
  EXPECT_EQ(errorOf(inPolicyMap + "router"),
            "t:2:1: expected class or another command, found 'router'");
  EXPECT_EQ(errorOf(inClass + "router"), "t:3:1: expected set, police, drop or another action, "
                                         "class or another command, found 'router'");
  EXPECT_EQ(errorOf(inInterface + "router"),
            "t:2:1: expected ip address, ipv6 address, switchport, channel-group, shutdown, "
            "service-policy or another command, found 'router'");
}

TEST(PolicyTextParser, SecondWordOfACommandIsNamedWhereItIsWrong) {
  EXPECT_EQ(errorOf("ip name-server 1.2.3.4"),
            "t:1:4: expected access-list, routing, found 'name-server'");
  EXPECT_EQ(errorOf("no ip source-route"),
            "t:1:7: expected access-list, routing, found 'source-route'");
  EXPECT_EQ(errorOf("ipv6"), "t:1:5: expected access-list, unicast-routing, found end of line");
  EXPECT_EQ(errorOf(inInterface + "ip ospf 1"), "t:2:4: expected access-list, routing, address, "
                                                "unnumbered, access-group, port, found 'ospf'");
  EXPECT_EQ(errorOf("no"), "t:1:3: expected a command (access-list, class-map, policy-map, "
                           "interface, ...), found end of line");
  EXPECT_EQ(errorOf("no hostname h"),
            "t:1:4: expected a command (access-list, class-map, policy-map, interface, ...), found "
            "'hostname'");
}

TEST(PolicyTextParser, FirstErrorIsTheOneReported) {
  EXPECT_EQ(errorOf("exit x\nexit y"), "t:1:6: expected end of line, found 'x'");
}

TEST(PolicyTextParser, RoutingIsOnOrOff) {
  EXPECT_TRUE(last<Routing>("ip routing").on);
  EXPECT_FALSE(last<Routing>("no ip routing").on);
  EXPECT_EQ(last<Routing>("ip routing").family, Family::ip4);
  EXPECT_EQ(last<Routing>("ipv6 unicast-routing").family, Family::ip6);
  EXPECT_FALSE(last<Routing>("no ipv6 unicast-routing").on);
  EXPECT_EQ(errorOf("ip routing vrf"), "t:1:12: expected end of line, found 'vrf'");
}

TEST(PolicyTextParser, HostnameIsAcceptedAndMeansNothing) {
  EXPECT_TRUE(statements("hostname edge").empty());
  EXPECT_EQ(errorOf("hostname"), "t:1:9: expected a host name, found end of line");
  EXPECT_EQ(errorOf("hostname a b"), "t:1:12: expected end of line, found 'b'");
}

// Access lists

TEST(PolicyTextParser, AccessListsOfEachFamily) {
  EXPECT_EQ(last<AccessListOpen>("ip access-list L").list.family, Family::ip4);
  EXPECT_FALSE(last<AccessListOpen>("ip access-list extended 101").standard);
  EXPECT_TRUE(last<AccessListOpen>("ip access-list standard L").standard);
  EXPECT_EQ(last<AccessListOpen>("ipv6 access-list L").list.family, Family::ip6);
  EXPECT_EQ(last<AccessListOpen>("mac access-list L").list.family, Family::mac);
  EXPECT_EQ(last<AccessListOpen>("mac access-list extended L").list.name.text, "L");
  EXPECT_EQ(errorOf("ip access-list"), "t:1:15: expected an access-list name, found end of line");
  EXPECT_EQ(errorOf("ip access-list standard"),
            "t:1:24: expected an access-list name, found end of line");
  EXPECT_EQ(errorOf("ipv6 access-list L M"), "t:1:20: expected end of line, found 'M'");
}

TEST(PolicyTextParser, AccessListsAreRemoved) {
  EXPECT_EQ(last<AccessListRemove>("no ip access-list L").list.name.text, "L");
  EXPECT_EQ(last<AccessListRemove>("no ip access-list standard L").list.family, Family::ip4);
  EXPECT_EQ(last<AccessListRemove>("no ipv6 access-list L").list.family, Family::ip6);
  EXPECT_EQ(last<AccessListRemove>("no mac access-list L").list.family, Family::mac);
}

TEST(PolicyTextParser, EntriesNameTheirListAndNumber) {
  auto const plain = last<RuleAdd>("ipv6 access-list L\npermit ipv6 any any");
  EXPECT_EQ(plain.list, (AccessListId{Family::ip6, {"L"}}));
  EXPECT_EQ(plain.sequence, std::nullopt);
  EXPECT_EQ(last<RuleAdd>(inList + "15 deny 2 any any").sequence, 15U);
  EXPECT_EQ(last<RuleAdd>(inList + "4294967295 deny 2 any any").sequence, 4294967295U);
  EXPECT_EQ(errorOf(inList + "0 permit ip any any"),
            "t:2:1: expected sequence number 1-4294967295, found '0'");
  EXPECT_EQ(errorOf(inList + "4294967296 permit ip any any"),
            "t:2:1: expected sequence number 1-4294967295, found '4294967296'");
  EXPECT_EQ(errorOf(inList + "10 allow ip any any"),
            "t:2:4: expected permit, deny or remark, found 'allow'");
  EXPECT_EQ(errorOf(inList + "10"), "t:2:3: expected permit, deny or remark, found end of line");
}

TEST(PolicyTextParser, RemarksKeepTheirText) {
  EXPECT_EQ(last<RemarkAdd>(inList + "remark  a  ! b  ").text, "a  ! b");
  EXPECT_EQ(last<RemarkAdd>(inList + "1 remark r").sequence, 1U);
  EXPECT_EQ(last<RemarkAdd>(inList + "remark").text, "");
  EXPECT_EQ(last<RemarkAdd>(inList + "remark \xc3\xa9\x01").text, "\xc3\xa9\x01");
}

TEST(PolicyTextParser, EntriesAreRemovedByNumberOrByRule) {
  EXPECT_EQ(last<EntryRemove>(inList + "no 10").sequence, 10U);
  EXPECT_FALSE(last<EntryRemove>(inList + "no 10").remarkOnly);
  EXPECT_TRUE(last<EntryRemove>(inList + "no 10 remark").remarkOnly);
  EXPECT_TRUE(last<EntryRemove>(inList + "no 10 remark a b").remarkOnly);
  EXPECT_EQ(last<RemarkRemove>(inList + "no remark a b").text, "a b");
  EXPECT_EQ(last<RemarkRemove>(inList + "no remark").text, "");
  auto const removed = last<RuleRemove>(inList + "no permit tcp any any eq 80");
  EXPECT_EQ(removed.rule, last<RuleAdd>(inList + "7 permit tcp any any eq www").rule);
  EXPECT_EQ(errorOf(inList + "no 10 log"), "t:2:7: expected remark or end of line, found 'log'");
  EXPECT_EQ(last<RuleRemove>(inList + "no 10 permit ip any any").rule,
            last<RuleAdd>(inList + "permit ip any any").rule);
  EXPECT_EQ(errorOf(inList + "no 0"), "t:2:4: expected sequence number 1-4294967295, found '0'");
}

TEST(PolicyTextParser, NumberedLinesOpenTheirListOnce) {
  auto const all = statements("access-list 97 remark r\n"
                              "access-list 97 deny 10.1.0.1 0.0.255.0 log\n"
                              "access-list 101 permit tcp any any eq www\n"
                              "access-list 97 permit any\n");
  ASSERT_EQ(all.size(), 7U);
  EXPECT_TRUE(std::get<AccessListOpen>(all[0].body).standard);
  EXPECT_EQ(std::get<AccessListOpen>(all[0].body).list.name.text, "97");
  EXPECT_EQ(std::get<RemarkAdd>(all[1].body).text, "r");
  EXPECT_EQ(std::get<RuleAdd>(all[2].body).list.name.text, "97");
  EXPECT_FALSE(std::get<AccessListOpen>(all[3].body).standard);
  EXPECT_EQ(std::get<RuleAdd>(all[4].body).list.name.text, "101");
  EXPECT_TRUE(std::holds_alternative<AccessListOpen>(all[5].body));
  EXPECT_EQ(std::get<RuleAdd>(all[6].body).list.name.text, "97");
}

TEST(PolicyTextParser, NumberSaysWhetherAListIsStandard) {
  for (std::string const number : {"1", "99", "1300", "1999"}) {
    EXPECT_EQ(errorOf("access-list " + number + " permit 10.1.2.3"), "no error") << number;
  }
  for (std::string const number : {"100", "199", "2000", "2699"}) {
    EXPECT_EQ(errorOf("access-list " + number + " permit ip any any"), "no error") << number;
  }
  for (std::string const number : {"0", "200", "1299", "2700", "L"}) {
    EXPECT_EQ(errorOf("access-list " + number + " permit any"),
              "t:1:13: expected an access-list number 1-199 or 1300-2699, found '" + number + "'");
  }
}

TEST(PolicyTextParser, NumberedLinesAreRemoved) {
  EXPECT_EQ(last<AccessListRemove>("no access-list 97").list.name.text, "97");
  EXPECT_EQ(last<RuleRemove>("no access-list 97 permit any").list.name.text, "97");
  EXPECT_EQ(statements("no access-list 97 permit any").size(), 1U);
  EXPECT_EQ(last<RemarkRemove>("no access-list 97 remark r").text, "r");
  auto const again = statements("access-list 9 permit any\nno access-list 9\n"
                                "access-list 9 deny any\n");
  ASSERT_EQ(again.size(), 5U);
  EXPECT_TRUE(std::holds_alternative<AccessListOpen>(again[3].body));
}

TEST(PolicyTextParser, FaultyNumberedLineIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf("access-list 97"),
            "t:1:15: expected permit, deny or remark, found end of line");
  EXPECT_EQ(errorOf("access-list 97 10 permit any"),
            "t:1:16: expected permit, deny or remark, found '10'");
  EXPECT_EQ(errorOf("access-list 101 permit tcp any any eq 70000"),
            "t:1:39: expected port 0-65535 or a port name, found '70000'");
}

// Class-maps

TEST(PolicyTextParser, ClassMapMatchesAllUnlessSaidOtherwise) {
  auto const plain = last<ClassMapOpen>("class-map C");
  EXPECT_EQ(plain.match, ClassMatch::all);
  EXPECT_FALSE(plain.matchWritten);
  auto const all = last<ClassMapOpen>("class-map match-all C");
  EXPECT_EQ(all.match, ClassMatch::all);
  EXPECT_TRUE(all.matchWritten);
  auto const any = last<ClassMapOpen>("class-map type inspect match-any C");
  EXPECT_EQ(any.match, ClassMatch::any);
  EXPECT_EQ(any.type, "inspect");
  EXPECT_EQ(any.classMap.text, "C");
  EXPECT_EQ(last<ClassMapRemove>("no class-map C").classMap.text, "C");
  EXPECT_EQ(last<ClassMapRemove>("no class-map type qos match-any C").classMap.text, "C");
}

TEST(PolicyTextParser, FaultyClassMapIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf("class-map"),
            "t:1:10: expected match-any, match-all or a class-map name, found end of line");
  EXPECT_EQ(errorOf("class-map match-any"),
            "t:1:20: expected match-any, match-all or a class-map name, found end of line");
  EXPECT_EQ(errorOf("class-map C D"), "t:1:13: expected end of line, found 'D'");
  EXPECT_EQ(errorOf("class-map type control C"),
            "t:1:16: expected type inspect, qos or traffic, found 'control'");
}

TEST(PolicyTextParser, MatchNamesAList) {
  auto const list = [](std::string const& line) {
    return last<ClassMatchList>(inClassMap + line).list;
  };
  EXPECT_EQ(list("match access-group L"), (AccessListId{Family::ip4, {"L"}}));
  EXPECT_EQ(list("match access-group name L"), (AccessListId{Family::ip4, {"L"}}));
  EXPECT_EQ(list("match ip access-list L"), (AccessListId{Family::ip4, {"L"}}));
  EXPECT_EQ(list("match ipv6 access-group name L"), (AccessListId{Family::ip6, {"L"}}));
  EXPECT_EQ(list("match mac access-group L"), (AccessListId{Family::mac, {"L"}}));
  EXPECT_EQ(last<ClassMatchList>(inClassMap + "match access-group L").classMap.text, "C");
  EXPECT_FALSE(last<ClassMatchList>(inClassMap + "match access-group L").remove);
  EXPECT_TRUE(last<ClassMatchList>(inClassMap + "no match access-group L").remove);
  EXPECT_EQ(errorOf(inClassMap + "match access-group name"),
            "t:2:24: expected an access-list name, found end of line");
  EXPECT_EQ(errorOf(inClassMap + "match access-group L M"),
            "t:2:22: expected end of line, found 'M'");
}

TEST(PolicyTextParser, MatchNamesAnotherClassMap) {
  auto const body = last<ClassMatchClass>(inClassMap + "no match class-map D");
  EXPECT_EQ(body.classMap.text, "C");
  EXPECT_EQ(body.nested.text, "D");
  EXPECT_TRUE(body.remove);
  EXPECT_FALSE(last<ClassMatchClass>(inClassMap + "match class-map D").remove);
  EXPECT_EQ(errorOf(inClassMap + "match class-map"),
            "t:2:16: expected a class-map name, found end of line");
}

TEST(PolicyTextParser, MatchHoldsARule) {
  auto const body = last<ClassMatchRule>(inClassMap + "match ip tcp any any eq 80");
  EXPECT_EQ(body.rule, last<RuleAdd>(inList + "permit tcp any any eq 80").rule.rule);
  EXPECT_FALSE(body.remove);
  EXPECT_EQ(last<ClassMatchRule>(inClassMap + "match ip permit tcp any any eq 80").rule, body.rule);
  EXPECT_EQ(last<ClassMatchRule>(inClassMap + "no match ip tcp any any eq 80").rule, body.rule);
  EXPECT_TRUE(last<ClassMatchRule>(inClassMap + "no match ip tcp any any eq 80").remove);
  EXPECT_EQ(last<ClassMatchRule>(inClassMap + "match ip deny ip any any").rule,
            last<RuleAdd>(inList + "deny ip any any").rule.rule);
  EXPECT_EQ(last<ClassMatchRule>(inClassMap + "match ipv6 ipv6 any ::/3").rule,
            last<RuleAdd>("ipv6 access-list L\npermit ipv6 any ::/3").rule.rule);
  EXPECT_EQ(last<ClassMatchRule>(inClassMap + "match mac any any arp").rule,
            last<RuleAdd>("mac access-list L\npermit any any arp").rule.rule);
}

TEST(PolicyTextParser, UnknownMatchIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf(inClassMap + " match colour red"),
            "t:2:8: expected access-group, class-map, ip, ipv6, mac, any, dscp, precedence, "
            "protocol, vlan, cos, mpls, ethertype, ttl, srcl4port, dstl4port, srcip, dstip, "
            "source-address, destination-address, source-port or destination-port, found "
            "'colour'");
  EXPECT_EQ(errorOf(inClassMap + "match ip colour 40"),
            "t:2:10: expected protocol 0-255 or a protocol name, found 'colour'");
}

// Policy-maps

TEST(PolicyTextParser, PolicyMapMayNameATypeAndADirection) {
  EXPECT_EQ(last<PolicyMapOpen>("policy-map P").policyMap.text, "P");
  EXPECT_EQ(last<PolicyMapOpen>("policy-map type qos P").type, "qos");
  EXPECT_EQ(last<PolicyMapOpen>("policy-map P in").policyMap.text, "P");
  EXPECT_EQ(last<PolicyMapOpen>("policy-map P out").policyMap.text, "P");
  EXPECT_EQ(last<PolicyMapRemove>("no policy-map P").policyMap.text, "P");
  EXPECT_EQ(errorOf("policy-map"), "t:1:11: expected a policy-map name, found end of line");
  EXPECT_EQ(errorOf("policy-map P both"), "t:1:14: expected end of line, found 'both'");
}

TEST(PolicyTextParser, ClassesStandInTheirPolicyMap) {
  auto const plain = last<PolicyClassOpen>(inPolicyMap + "class C");
  EXPECT_EQ(plain.policyMap.text, "P");
  EXPECT_EQ(plain.className.text, "C");
  EXPECT_EQ(plain.insertBefore, std::nullopt);
  auto const before = last<PolicyClassOpen>(inClass + "class type inspect D insert-before C");
  EXPECT_EQ(before.policyMap.text, "P");
  EXPECT_EQ(before.className.text, "D");
  EXPECT_EQ(before.insertBefore->text, "C");
  EXPECT_EQ(last<PolicyClassRemove>(inClass + "no class C").className.text, "C");
  EXPECT_EQ(errorOf(inPolicyMap + "class"), "t:2:6: expected a class name, found end of line");
  EXPECT_EQ(errorOf(inPolicyMap + "class C insert-before"),
            "t:2:22: expected a class name, found end of line");
  EXPECT_EQ(errorOf(inPolicyMap + "class C after D"),
            "t:2:9: expected insert-before or end of line, found 'after'");
  EXPECT_EQ(errorOf(inClass + "no class C\nset action1 1"),
            "t:4:1: expected class or another command, found 'set'");
}

TEST(PolicyTextParser, ActionsAreSetAndRemoved) {
  auto const body = last<PolicyClassAction>(inClass + "set action3 4294967295");
  EXPECT_EQ(body.policyMap.text, "P");
  EXPECT_EQ(body.className.text, "C");
  EXPECT_EQ(body.action, 3);
  EXPECT_EQ(body.value, 4294967295U);
  EXPECT_EQ(last<PolicyClassAction>(inClass + "set action1 0").value, 0U);
  EXPECT_EQ(last<PolicyClassAction>(inClass + "no set action2").value, std::nullopt);
  EXPECT_EQ(last<PolicyClassAction>(inClass + "no set action2 7").value, std::nullopt);
  EXPECT_EQ(last<PolicyClassAction>(inClass + "no set action2").action, 2);
}

TEST(PolicyTextParser, FaultyActionIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf(inClass + "set action4 1"),
            "t:3:5: expected action1, action2, action3 or a marking such as dscp, found 'action4'");
  EXPECT_EQ(errorOf(inClass + "set action1"),
            "t:3:12: expected action value 0-4294967295, found end of line");
  EXPECT_EQ(errorOf(inClass + "set action1 4294967296"),
            "t:3:13: expected action value 0-4294967295, found '4294967296'");
  EXPECT_EQ(errorOf(inClass + "set action1 -1"),
            "t:3:13: expected action value 0-4294967295, found '-1'");
  EXPECT_EQ(errorOf(inClass + "set action1 1 2"), "t:3:15: expected end of line, found '2'");
}

TEST(PolicyTextParser, DescriptionsMeanNothing) {
  for (std::string const& mode : {inClassMap, inPolicyMap, inClass, inInterface}) {
    EXPECT_EQ(statements(mode + "description any words, \x01 too").size(), statements(mode).size());
    EXPECT_EQ(statements(mode + "no description").size(), statements(mode).size());
  }
}

// Interfaces

TEST(PolicyTextParser, InterfaceNameIsJoined) {
  EXPECT_EQ(last<InterfaceOpen>("interface Ethernet3/1").interface.text, "Ethernet3/1");
  EXPECT_EQ(last<InterfaceOpen>("interface Ethernet 3/1").interface.text, "Ethernet3/1");
  EXPECT_EQ(last<InterfaceRemove>("no interface Vlan 10").interface.text, "Vlan10");
  EXPECT_EQ(errorOf("interface"), "t:1:10: expected an interface name, found end of line");
  EXPECT_EQ(errorOf("interface E1 upside-down"),
            "t:1:14: expected end of line, found 'upside-down'");
}

TEST(PolicyTextParser, InterfaceAddressesOfIp4) {
  auto const prefix = last<InterfaceAddress>(inInterface + "ip address 10.1.2.3/24");
  EXPECT_EQ(prefix.interface.text, "Ethernet1");
  EXPECT_EQ(prefix.family, Family::ip4);
  EXPECT_EQ(prefix.prefix, (InterfacePrefix{AddressBytes{10, 1, 2, 3}, 24}));
  EXPECT_FALSE(prefix.secondary || prefix.remove);
  auto const mask =
      last<InterfaceAddress>(inInterface + "ip address 10.1.2.3 255.255.255.0 secondary");
  EXPECT_EQ(mask.prefix, prefix.prefix);
  EXPECT_TRUE(mask.secondary);
  auto const removed = last<InterfaceAddress>(inInterface + "no ip address 10.1.2.3/24");
  EXPECT_EQ(removed.prefix, prefix.prefix);
  EXPECT_TRUE(removed.remove);
  EXPECT_EQ(last<InterfaceAddress>(inInterface + "no ip address").prefix, std::nullopt);
}

TEST(PolicyTextParser, InterfaceAddressesOfIp6) {
  auto const body = last<InterfaceAddress>(inInterface + "ipv6 address 2001:db8::1/64");
  EXPECT_EQ(body.family, Family::ip6);
  EXPECT_EQ(body.prefix->length, 64);
  EXPECT_EQ(body.prefix->address[15], 1);
  EXPECT_TRUE(last<InterfaceAddress>(inInterface + "no ipv6 address").remove);
}

TEST(PolicyTextParser, FaultyInterfaceAddressIsRefusedWithItsColumn) {
  EXPECT_EQ(errorOf(inInterface + "ip address"),
            "t:2:11: expected A/LENGTH or A MASK, found end of line");
  EXPECT_EQ(errorOf(inInterface + "ip address none"),
            "t:2:12: expected A/LENGTH or A MASK, found 'none'");
  EXPECT_EQ(errorOf(inInterface + "ip address 10.1.2.3"),
            "t:2:20: expected a subnet mask, found end of line");
  EXPECT_EQ(errorOf(inInterface + "ip address 10.1.2.3 255.0.255.0"),
            "t:2:21: expected a subnet mask, found '255.0.255.0'");
  EXPECT_EQ(errorOf(inInterface + "ip address 10.1.2.3/24 primary"),
            "t:2:24: expected end of line, found 'primary'");
  EXPECT_EQ(errorOf(inInterface + "ipv6 address 2001:db8::1"),
            "t:2:14: expected A/LENGTH, found '2001:db8::1'");
  EXPECT_EQ(errorOf(inInterface + "ipv6 address ::1/64 secondary"),
            "t:2:21: expected end of line, found 'secondary'");
}

TEST(PolicyTextParser, InterfaceSwitches) {
  EXPECT_TRUE(last<InterfaceSwitchport>(inInterface + "switchport").on);
  EXPECT_FALSE(last<InterfaceSwitchport>(inInterface + "no switchport").on);
  EXPECT_TRUE(last<InterfaceShutdown>(inInterface + "shutdown").on);
  EXPECT_FALSE(last<InterfaceShutdown>(inInterface + "no shutdown").on);
  EXPECT_EQ(errorOf(inInterface + "switchport fast"), "t:2:12: expected end of line, found 'fast'");
  EXPECT_EQ(errorOf(inInterface + "shutdown now"), "t:2:10: expected end of line, found 'now'");
}

TEST(PolicyTextParser, ChannelGroups) {
  EXPECT_EQ(last<InterfaceChannelGroup>(inInterface + "channel-group 7").group, 7U);
  EXPECT_EQ(last<InterfaceChannelGroup>(inInterface + "channel-group 7 mode active").group, 7U);
  EXPECT_FALSE(last<InterfaceChannelGroup>(inInterface + "channel-group 7").remove);
  EXPECT_EQ(last<InterfaceChannelGroup>(inInterface + "no channel-group").group, std::nullopt);
  EXPECT_EQ(last<InterfaceChannelGroup>(inInterface + "no channel-group 7").group, 7U);
  EXPECT_TRUE(last<InterfaceChannelGroup>(inInterface + "no channel-group 7").remove);
  EXPECT_EQ(errorOf(inInterface + "channel-group 0"),
            "t:2:15: expected channel-group 1-65535, found '0'");
  EXPECT_EQ(errorOf(inInterface + "channel-group 7 mode"),
            "t:2:21: expected a channel-group mode, found end of line");
  EXPECT_EQ(errorOf(inInterface + "channel-group 7 active"),
            "t:2:17: expected mode or end of line, found 'active'");
}

TEST(PolicyTextParser, ServicePolicies) {
  auto const body = last<ServicePolicy>(inInterface + "service-policy input P");
  EXPECT_EQ(body.interface.text, "Ethernet1");
  EXPECT_EQ(body.direction, Direction::input);
  EXPECT_EQ(body.policyMap->text, "P");
  EXPECT_FALSE(body.remove);
  EXPECT_EQ(last<ServicePolicy>(inInterface + "service-policy in P").direction, Direction::input);
  EXPECT_EQ(last<ServicePolicy>(inInterface + "service-policy out P").direction, Direction::output);
  EXPECT_EQ(last<ServicePolicy>(inInterface + "service-policy type inspect output P").direction,
            Direction::output);
  auto const removed = last<ServicePolicy>(inInterface + "no service-policy output");
  EXPECT_TRUE(removed.remove);
  EXPECT_EQ(removed.policyMap, std::nullopt);
  EXPECT_EQ(last<ServicePolicy>(inInterface + "no service-policy input P").policyMap->text, "P");
  EXPECT_EQ(errorOf(inInterface + "service-policy P"),
            "t:2:16: expected input or output, found 'P'");
  EXPECT_EQ(errorOf(inInterface + "service-policy input"),
            "t:2:21: expected a policy-map name, found end of line");
  EXPECT_EQ(errorOf(inInterface + "service-policy input P Q"),
            "t:2:24: expected end of line, found 'Q'");
}

// Lenient reading

TEST(PolicyTextParser, LenientReadingCountsWhatItPassesOver) {
  auto const text =
      readText("version 1\nip routing\nno ip source-route\nversion 2\n", Reading::lenient);
  EXPECT_EQ(text.statements.size(), 1U);
  EXPECT_EQ(text.skipped.total(), 3U);
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"no ip source-route", 1}, {"version", 2}}));
}

TEST(PolicyTextParser, StrictReadingSkipsNothing) {
  EXPECT_EQ(readText("ip routing\n").skipped.total(), 0U);
}

TEST(PolicyTextParser, RuleWithAnUnknownTailIsNotReadByHalf) {
  auto const text = readText(inList + " permit tcp any any eq 80 tos 3\n"
                                      " access-list 101 permit tcp any any packet-length 5\n",
                             Reading::lenient);
  EXPECT_EQ(countOf<RuleAdd>(text), 0U);
  EXPECT_EQ(countOf<AccessListOpen>(text), 2U);
  EXPECT_EQ(countOf<SkippedEntryAdd>(text), 2U);
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"permit (packet-length)", 1}, {"permit (tos)", 1}}));
}

TEST(PolicyTextParser, LinesBelowASkippedLineAreSkippedWithIt) {
  auto const text = readText("route-map G\n"
                             " host 10.1.2.3\n"
                             "!\n"
                             "  shutdown\n"
                             "ip routing\n",
                             Reading::lenient);
  EXPECT_EQ(text.statements.size(), 1U);
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"route-map", 3}}));
}

TEST(PolicyTextParser, BlockInsideAModeIsSkippedAndTheModeGoesOn) {
  auto const text = readText("interface E1\n"
                             " service instance 2 ethernet\n"
                             "  shutdown\n"
                             " service-policy input P\n",
                             Reading::lenient);
  ASSERT_EQ(text.statements.size(), 2U);
  EXPECT_TRUE(std::holds_alternative<ServicePolicy>(text.statements[1].body));
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"service instance", 2}}));
}

TEST(PolicyTextParser, UnknownCommandBesideTheHeaderEndsAnIndentedMode) {
  auto const text =
      readText("interface E1\n switchport\nmonitor lab 1\nshutdown\n", Reading::lenient);
  EXPECT_EQ(countOf<InterfaceShutdown>(text), 0U);
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"monitor", 1}, {"shutdown", 1}}));
}

TEST(PolicyTextParser, UnknownCommandInAFlatModeDoesNotEndIt) {
  auto const text =
      readText("interface 0/9\nmtu 9216\nservice-policy in P\nexit\nshutdown\n", Reading::lenient);
  EXPECT_EQ(countOf<ServicePolicy>(text), 1U);
  EXPECT_EQ(text.skipped.byKind(), (Kinds{{"mtu", 1}, {"shutdown", 1}}));
}

TEST(PolicyTextParser, BlockOfItsOwnEndsAFlatMode) {
  auto const text = readText("interface E1\nrouter ospf 1\nshutdown\n", Reading::lenient);
  EXPECT_EQ(countOf<InterfaceShutdown>(text), 0U);
}

TEST(PolicyTextParser, LinesBehindAFaultyHeaderBelongToNoMode) {
  auto const text = readText("ip access-list A\nip access-list B C\npermit ip any any\n"
                             "policy-map P\nclass X\nclass Y Z\nset action1 1\n",
                             Reading::lenient);
  EXPECT_EQ(countOf<RuleAdd>(text), 0U);
  EXPECT_EQ(countOf<PolicyClassAction>(text), 0U);
  EXPECT_EQ(
      text.skipped.byKind(),
      (Kinds{{"class (z)", 1}, {"ip access-list (c)", 1}, {"permit", 1}, {"set action1", 1}}));
}

TEST(PolicyTextParser, BannerIsSkippedToItsEnd) {
  EXPECT_EQ(skippedOf("banner motd ^C\ninterface E1\n  no  ^C\nip routing\n"),
            (Kinds{{"banner", 3}}));
  EXPECT_EQ(skippedOf("banner login #one line#\nip routing\n"), (Kinds{{"banner", 1}}));
  EXPECT_EQ(skippedOf("banner motd\ninterface E1\nEOF\nip routing\n"), (Kinds{{"banner", 3}}));
  EXPECT_EQ(skippedOf("banner hello\nip routing\n"), (Kinds{{"banner", 1}}));
}

TEST(PolicyTextParser, BannerWithoutAnEndIsRefusedWhereItBegins) {
  EXPECT_EQ(errorOf("!\n banner motd ^C\nip routing\n", Reading::lenient),
            "t:2:2: expected a banner that ends with '^C', found 'banner'");
}

TEST(PolicyTextParser, LenientReadingTakesAnyType) {
  auto const text =
      readText("class-map type control match-any C\npolicy-map type pbr P\n"
               " class type control C\ninterface E1\n service-policy type pbr input P\n",
               Reading::lenient);
  EXPECT_EQ(text.skipped.total(), 0U);
  EXPECT_EQ(text.statements.size(), 5U);
}

// Input that is not policy text

TEST(PolicyTextParser, NulByteIsRefusedByEveryReading) {
  std::string const text("ip routing\nip rou\0ting\n", 23);
  EXPECT_EQ(errorOf(text), "t:2:7: expected text, found '\\x00ting'");
  EXPECT_EQ(errorOf(text, Reading::lenient), "t:2:7: expected text, found '\\x00ting'");
  EXPECT_EQ(errorOf(std::string("! \0", 3)), "t:1:3: expected text, found '\\x00'");
}

TEST(PolicyTextParser, BinaryWordsAreRefusedPrintably) {
  EXPECT_EQ(errorOf("\x7f\x45LF\x02\x01"),
            "t:1:1: expected a command (access-list, class-map, policy-map, interface, ...), found "
            "'\\x7fELF\\x02\\x01'");
  EXPECT_EQ(errorOf("ip access-list \x1b[31m"),
            "t:1:16: expected an access-list name, found '\\x1b[31m'");
  EXPECT_EQ(skippedOf("\x7f\x45LF\x02\x01\n\xff\xfe"), (Kinds{{"(text)", 2}}));
}

TEST(PolicyTextParser, EveryTruncationOfATextIsReadOrRefused) {
  std::string const text =
      "ip access-list L\n 10 permit tcp host 10.1.2.3 range 1 2 any eq www log\n"
      "class-map match-any C\n match access-group name L\n"
      "policy-map P\n class C insert-before D\n  set action1 1\n"
      "interface E1\n ip address 10.1.2.3 255.255.0.0\n"
      " service-policy input P\nbanner motd #x\n#\n";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    std::string const strict = errorOf(text.substr(0, size));
    EXPECT_TRUE(strict == "no error" || strict.find(": expected ") != std::string::npos) << strict;
    std::string const lenient = errorOf(text.substr(0, size), Reading::lenient);
    EXPECT_TRUE(lenient == "no error" || lenient.find("a banner that ends") != std::string::npos)
        << lenient;
  }
}

TEST(PolicyTextParser, RandomBytesAndWordsAreReadOrRefused) {
  std::mt19937 random(1);
  std::string const words[] = {"ip",    "access-list", "permit", "tcp",       "any",   "host",
                               "eq",    "\n",          "no",     "class-map", "match", "set",
                               "class", "10",          "\n ",    "::",        "mac",   "interface",
                               "0x",    "/",           "exit",   "\t",        "\xff",  "type"};
  for (int round = 0; round != 2000; ++round) {
    std::string text;
    for (int piece = 0; piece != 60; ++piece) {
      auto const draw = random() % 26;
      text += draw < 24 ? words[draw] + " " : std::string(1, static_cast<char>(random() % 255 + 1));
    }
    for (Reading const reading : {Reading::strict, Reading::lenient}) {
      std::string const error = errorOf(text, reading);
      EXPECT_TRUE(error == "no error" || error.find(": expected ") != std::string::npos) << error;
    }
  }
}

constexpr std::size_t tenMegabytes = 10'000'000;

TEST(PolicyTextParser, LineOfTenMegabytesIsRefusedShortly) {
  std::string const word(tenMegabytes, 'x');
  for (std::string const start : {"", "ip ", "no ip ", "ip access-list ", "interface "}) {
    std::string const error = errorOf(start + word);
    EXPECT_LT(error.size(), 250U);
    EXPECT_EQ(error.substr(error.find("found")), "found '" + std::string(40, 'x') + "'...");
  }
  for (std::string const start :
       {"permit ", "permit tcp ", "permit tcp any any eq ", "permit ip any any ", "10 "}) {
    EXPECT_LT(errorOf(inList + start + word).size(), 250U) << start;
  }
}

TEST(PolicyTextParser, LineOfTenMegabytesOfWordsIsRefusedOrRead) {
  std::string words;
  while (words.size() < tenMegabytes) {
    words += "log ";
  }
  EXPECT_EQ(statements(inList + "permit ip any any " + words).size(), 2U);
  EXPECT_EQ(last<RemarkAdd>(inList + "remark " + words).text.size(), words.size() - 1);
  EXPECT_EQ(statements(std::string(tenMegabytes, ' ') + "ip routing").size(), 1U);
  EXPECT_EQ(skippedOf(words), (Kinds{{"log", 1}}));
}

TEST(PolicyTextParser, VeryManyLinesAreRead) {
  constexpr std::size_t lines = 200'000;
  std::string known = inList;
  std::string unknown;
  std::string faulty = inList;
  for (std::size_t line = 0; line != lines; ++line) {
    known += "permit ip any any\n";
    unknown += "u" + std::to_string(line) + "\n";
    faulty += "permit tcp any any eq x\n";
  }
  EXPECT_EQ(statements(known).size(), lines + 1);
  auto const text = readText(unknown, Reading::lenient);
  EXPECT_EQ(text.skipped.total(), lines);
  EXPECT_EQ(text.skipped.byKind().size(), 257U);
  EXPECT_EQ(text.skipped.byKind().at("other"), lines - 256);
  EXPECT_EQ(skippedOf(faulty), (Kinds{{"permit (x)", lines}}));
}

TEST(PolicyTextParser, OtherTextsAreSkippedToTheirEnd) {
  EXPECT_EQ(skippedOf("banner motd Z\ninterface E1\nsome Z\nip routing\n"), (Kinds{{"banner", 3}}));
  EXPECT_EQ(skippedOf("macro name M\ninterface E1\n@\nip routing\n"),
            (Kinds{{"banner", 2}, {"macro", 1}}));
  EXPECT_EQ(skippedOf("aaa authentication banner ^C\ninterface E1\n^C\nip routing\n"),
            (Kinds{{"aaa", 1}, {"banner", 2}}));
  EXPECT_EQ(skippedOf("menu M title ^Cone line^C\nip routing\n"), (Kinds{{"menu", 1}}));
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
