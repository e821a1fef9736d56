// SPDX-License-Identifier: Apache-2.0

// Every statement and its `no` form, and what each rejects.

#include "testkit/config/SettingsEditor.h"

#include "support/Allocations.h"
#include "testkit/text/Parsing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace PolicyMapTestKit::Text::test {
namespace {

using testing::ElementsAre;

Settings edited(std::string text, Settings settings = {}) {
  PolicyText parsed = readText(std::move(text));
  editSettings(settings, parsed, Reading::strict);
  return settings;
}

std::string errorOfEdit(std::string text, Settings const& settings = {}) {
  return errorFrom([&] { return edited(std::move(text), settings); });
}

std::vector<std::string> entriesOf(Settings const& settings, std::string const& name,
                                   Family family = Family::ip4) {
  std::vector<std::string> lines;
  for (auto const& [number, entry] : settings.listsOf(family).at(name)->entries.byNumber()) {
    auto const* const remark = std::get_if<Remark>(&entry);
    lines.push_back(
        std::to_string(number) + " " +
        (remark != nullptr ? "remark " + remark->text : describe(std::get<ConfiguredRule>(entry))));
  }
  return lines;
}

std::vector<std::uint32_t> placesOf(Settings const& settings, std::string const& classMap) {
  std::vector<std::uint32_t> places;
  for (auto const& [place, match] : settings.classMaps.at(classMap)->matches.byNumber()) {
    places.push_back(place);
  }
  return places;
}

InterfaceSettings interfaceIn(Settings const& settings, std::string const& name) {
  return settings.interfaces.at(Vorel::IntfId(name));
}

// Access lists

TEST(SettingsEditor, OpenedListExistsWithoutEntries) {
  EXPECT_THAT(entriesOf(edited("ip access-list L"), "L"), ElementsAre());
}

TEST(SettingsEditor, ListsOfDifferentFamiliesMayShareAName) {
  Settings const settings = edited("ip access-list L\npermit ip any any\n"
                                   "ipv6 access-list L\npermit ipv6 any any\n"
                                   "mac access-list L\npermit any any\n");
  EXPECT_THAT(entriesOf(settings, "L"), ElementsAre("10 permit ip any any"));
  EXPECT_THAT(entriesOf(settings, "L", Family::ip6), ElementsAre("10 permit ipv6 any any"));
  EXPECT_EQ(entriesOf(settings, "L", Family::mac).size(), 1U);
}

TEST(SettingsEditor, EntryWithoutNumberGoesTenBehindTheHighest) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\npermit ip any host 1.1.1.1\n"
                               "25 permit ip any any\nremark two\ndeny ip any any"),
                        "L"),
              ElementsAre("10 permit ip any host 1.1.1.1", "25 permit ip any any", "35 remark two",
                          "45 deny ip any any"));
}

TEST(SettingsEditor, EqualEntryWithoutNumberIsNotRepeated) {
  std::string const text = "ip access-list L\nremark r\npermit ip any any\n";
  EXPECT_THAT(entriesOf(edited(text, edited(text)), "L"),
              ElementsAre("10 remark r", "20 permit ip any any"));
}

TEST(SettingsEditor, EqualEntryWithAnotherNumberIsKept) {
  EXPECT_THAT(
      entriesOf(edited("ip access-list L\n10 permit ip any any\n20 permit ip any any"), "L"),
      ElementsAre("10 permit ip any any", "20 permit ip any any"));
}

TEST(SettingsEditor, EntryTakesThePlaceOfTheOneOfItsNumber) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\n10 remark r\n10 permit ip any any"), "L"),
              ElementsAre("10 permit ip any any"));
  EXPECT_THAT(entriesOf(edited("ip access-list L\n10 permit ip any any\n10 deny ip any any"), "L"),
              ElementsAre("10 deny ip any any"));
}

TEST(SettingsEditor, ARemarkAboutARuleDoesNotReplaceIt) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\n10 permit ip any any\n10 remark r"), "L"),
              ElementsAre("10 permit ip any any"));
}

TEST(SettingsEditor, NothingGoesBehindTheHighestNumber) {
  EXPECT_EQ(errorOfEdit("ip access-list L\n4294967295 permit ip any any\n deny ip any any"),
            "t:3:2: expected a sequence number: none is left after the last entry of ip "
            "access-list L, found 'deny'");
}

TEST(SettingsEditor, ListIsRemoved) {
  EXPECT_TRUE(edited("ip access-list L\nno ip access-list L").listsOf(Family::ip4).empty());
  EXPECT_TRUE(edited("access-list 10 permit any\nno access-list 10").listsOf(Family::ip4).empty());
}

TEST(SettingsEditor, AbsentListIsNotRemoved) {
  EXPECT_EQ(errorOfEdit("ipv6 access-list L\nno ip access-list L"),
            "t:2:19: expected the name of an ip access-list that exists, found 'L'");
  EXPECT_EQ(errorOfEdit("no access-list 10 permit any"),
            "t:1:16: expected the name of an ip access-list that exists, found '10'");
}

TEST(SettingsEditor, EntryIsRemovedByItsNumber) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\npermit ip any any\nno 10"), "L"), ElementsAre());
  EXPECT_EQ(errorOfEdit("ip access-list L\n no 10"),
            "t:2:5: expected the number of an entry of ip access-list L, found '10'");
}

TEST(SettingsEditor, RemarkIsRemovedByItsNumberAndARuleIsNot) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\nremark r\nno 10 remark"), "L"), ElementsAre());
  EXPECT_EQ(errorOfEdit("ip access-list L\npermit ip any any\nno 10 remark"),
            "t:3:4: expected the number of a remark of ip access-list L, found '10'");
}

TEST(SettingsEditor, RuleIsRemovedByWhatItSays) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\npermit tcp any any eq www\n30 deny ip any any\n"
                               "no permit tcp any any eq 80"),
                        "L"),
              ElementsAre("30 deny ip any any"));
  EXPECT_EQ(errorOfEdit("ip access-list L\npermit ip any any\nno deny ip any any"),
            "t:3:4: expected a rule of ip access-list L, found 'deny ip any any'");
}

TEST(SettingsEditor, RemarksAreRemovedByTextOrAllTogether) {
  Settings const settings =
      edited("ip access-list L\nremark a\nremark b\nremark c\npermit ip any any");
  EXPECT_THAT(entriesOf(edited("ip access-list L\nno remark b", settings), "L"),
              ElementsAre("10 remark a", "30 remark c", "40 permit ip any any"));
  EXPECT_THAT(entriesOf(edited("ip access-list L\nno remark", settings), "L"),
              ElementsAre("40 permit ip any any"));
  EXPECT_EQ(errorOfEdit("ip access-list L\nno remark d", settings),
            "t:2:11: expected a remark of ip access-list L, found 'd'");
}

TEST(SettingsEditor, ListIsEitherStandardOrExtended) {
  EXPECT_EQ(errorOfEdit("ip access-list standard L\npermit any\nip access-list L"),
            "t:3:16: expected an extended access-list, which the one of this name is not, found "
            "'L'");
  EXPECT_EQ(errorOfEdit("ip access-list extended 10\naccess-list 10 permit any"),
            "t:2:13: expected a standard access-list, which the one of this name is not, found "
            "'10'");
}

TEST(SettingsEditor, CopyKeepsWhatItsOriginalLoses) {
  Settings const before = edited("ip access-list L\npermit ip any any");
  Settings const after = edited("ip access-list L\nno 10\ndeny ip any any", before);
  EXPECT_THAT(entriesOf(before, "L"), ElementsAre("10 permit ip any any"));
  EXPECT_THAT(entriesOf(after, "L"), ElementsAre("10 deny ip any any"));
}

// Class-maps

TEST(SettingsEditor, ClassMapMatchesAllUnlessWritten) {
  EXPECT_EQ(edited("class-map C").classMaps.at("C")->match, ClassMatch::all);
  EXPECT_EQ(edited("class-map match-any C").classMaps.at("C")->match, ClassMatch::any);
  EXPECT_EQ(edited("class-map match-any C\nclass-map C").classMaps.at("C")->match, ClassMatch::any);
  EXPECT_EQ(edited("class-map match-any C\nclass-map match-all C").classMaps.at("C")->match,
            ClassMatch::all);
}

TEST(SettingsEditor, ClassMapIsRemoved) {
  EXPECT_TRUE(edited("class-map C\nno class-map C").classMaps.empty());
  EXPECT_EQ(errorOfEdit("no class-map C"),
            "t:1:14: expected the name of a class-map that exists, found 'C'");
}

TEST(SettingsEditor, MatchesStandInTheOrderOfTheirLines) {
  Settings const settings = edited("class-map C\nmatch access-group L\nmatch ipv6 access-group L\n"
                                   "match class-map D\nmatch ip tcp any any eq 80\n"
                                   "match access-group L");
  EXPECT_THAT(placesOf(settings, "C"), ElementsAre(10, 20, 30, 40));
}

TEST(SettingsEditor, EachKindOfMatchIsRemoved) {
  Settings const settings = edited("class-map C\nmatch access-group L\nmatch mac access-group L\n"
                                   "match class-map D\nmatch ip deny udp any any\n"
                                   "match ipv6 tcp any any eq 80\nmatch mac any any arp");
  Settings const after = edited("class-map C\nno match access-group L\nno match class-map D\n"
                                "no match ip deny udp any any\nno match mac any any arp",
                                settings);
  EXPECT_THAT(placesOf(after, "C"), ElementsAre(20, 50));
}

TEST(SettingsEditor, AbsentMatchIsNotRemoved) {
  EXPECT_EQ(errorOfEdit("class-map C\nmatch ipv6 access-group L\nno match access-group L"),
            "t:3:23: expected a match of class-map C, found 'L'");
  EXPECT_EQ(errorOfEdit("class-map C\nno match class-map D"),
            "t:2:20: expected a match of class-map C, found 'D'");
  EXPECT_EQ(errorOfEdit("class-map C\nmatch ip deny ip any any\nno match ip ip any any"),
            "t:3:13: expected a match of class-map C, found 'permit ip any any'");
}

// The memory requests for `count` rules without numbers, each followed by a remark that is removed
// again.
std::size_t requestsOfRemarks(std::size_t count) {
  std::string text = "ip access-list L\n";
  for (std::size_t i = 0; i != count; ++i) {
    text += "permit tcp any any eq " + std::to_string(i) + "\nremark once\nno remark\n";
  }
  PolicyText parsed = readText(std::move(text));
  Settings settings;
  std::size_t const before = TestSupport::heapAllocations();
  editSettings(settings, parsed, Reading::strict);
  return TestSupport::heapAllocations() - before;
}

TEST(SettingsEditor, TakingRemarksBackCostsNoMoreInALongList) {
  EXPECT_LT(requestsOfRemarks(800), 5 * requestsOfRemarks(200));
}

TEST(SettingsEditor, RemarkThatARuleReplacesIsNoRemarkAnyMore) {
  EXPECT_THAT(entriesOf(edited("ip access-list L\n10 remark a\n20 remark b\n30 permit ip any any\n"
                               "10 permit tcp any any\nno remark\n40 remark d"),
                        "L"),
              ElementsAre("10 permit tcp any any", "30 permit ip any any", "40 remark d"));
}

// Policy-maps

TEST(SettingsEditor, ClassesStandInTheOrderOfTheirFirstLines) {
  EXPECT_THAT(edited("policy-map P\nclass A\nclass B\nclass A").policyMaps.at("P")->order.names(),
              ElementsAre("A", "B"));
}

TEST(SettingsEditor, ClassGoesBeforeAnother) {
  std::string const text = "policy-map P\nclass A\nclass B\nclass C insert-before B";
  EXPECT_THAT(edited(text).policyMaps.at("P")->order.names(), ElementsAre("A", "C", "B"));
  EXPECT_THAT(edited(text + "\nclass B insert-before A").policyMaps.at("P")->order.names(),
              ElementsAre("B", "A", "C"));
}

TEST(SettingsEditor, ClassGoesBeforeNoneThatIsNotThere) {
  EXPECT_EQ(errorOfEdit("policy-map P\nclass A\nclass C insert-before B"),
            "t:3:23: expected another class of policy-map P, found 'B'");
  EXPECT_EQ(errorOfEdit("policy-map P\nclass A\nclass A insert-before A"),
            "t:3:23: expected another class of policy-map P, found 'A'");
}

TEST(SettingsEditor, ClassIsRemovedWithItsActions) {
  Settings const settings = edited("policy-map P\nclass A\nset action1 1\nclass B\nno class A");
  EXPECT_THAT(settings.policyMaps.at("P")->order.names(), ElementsAre("B"));
  EXPECT_EQ(settings.policyMaps.at("P")->actions.count("A"), 0U);
  EXPECT_EQ(errorOfEdit("policy-map P\nno class A"),
            "t:2:10: expected a class of policy-map P, found 'A'");
}

TEST(SettingsEditor, PolicyMapIsRemoved) {
  EXPECT_TRUE(edited("policy-map P\nno policy-map P").policyMaps.empty());
  EXPECT_EQ(errorOfEdit("no policy-map P"),
            "t:1:15: expected the name of a policy-map that exists, found 'P'");
}

TEST(SettingsEditor, ActionsAreSetReplacedAndRemoved) {
  Settings const settings = edited("policy-map P\nclass A\nset action1 1\nset action3 4294967295\n"
                                   "set action1 2\nno set action3\nset action2 0");
  EXPECT_EQ(settings.policyMaps.at("P")->actions.at("A"), (ClassActions{2U, 0U, std::nullopt}));
}

TEST(SettingsEditor, AbsentActionIsNotRemoved) {
  EXPECT_EQ(errorOfEdit("policy-map P\nclass A\n no set action2 7"),
            "t:3:9: expected an action of class A, found 'action2'");
}

// Interfaces

TEST(SettingsEditor, SpellingsOfAnInterfaceMeanTheSame) {
  Settings const settings = edited("interface Port-channel 7\nshutdown\ninterface po7\nswitchport");
  ASSERT_EQ(settings.interfaces.size(), 1U);
  EXPECT_TRUE(interfaceIn(settings, "PortChannel7").shutdown);
  EXPECT_EQ(interfaceIn(settings, "PortChannel7").switchport, true);
}

TEST(SettingsEditor, InterfaceNameMustBeOne) {
  for (std::string const name : {"Ethernet", "Vlan4095", "Vlan0", "Frobnicator1", "Ethernet1/"}) {
    EXPECT_EQ(
        errorOfEdit("!\ninterface " + name),
        "t:2:11: expected an interface name such as Ethernet3/1, PortChannel7 or Vlan10, found '" +
            name + "'");
  }
}

TEST(SettingsEditor, InterfaceIsRemoved) {
  EXPECT_TRUE(edited("interface Ethernet1\nshutdown\nno interface Et1").interfaces.empty());
  EXPECT_EQ(errorOfEdit("no interface Ethernet1"),
            "t:1:14: expected the name of an interface that exists, found 'Ethernet1'");
}

std::vector<std::string> addressesOf(InterfaceSettings const& interface) {
  std::vector<std::string> texts;
  for (auto const& [number, prefix] : interface.ip4.byNumber()) {
    texts.push_back(interfaceAddress<::Ip::Address>(prefix).text().stdString());
  }
  for (auto const& [number, prefix] : interface.ip6.byNumber()) {
    texts.push_back(interfaceAddress<::Ip6::Address>(prefix).text().stdString());
  }
  return texts;
}

TEST(SettingsEditor, PrimaryAddressStandsFirstAndIsReplaced) {
  std::string const text = "interface Ethernet1\nip address 10.0.0.1/24 secondary\n"
                           "ip address 10.0.1.1/24\n";
  EXPECT_THAT(addressesOf(interfaceIn(edited(text), "Ethernet1")),
              ElementsAre("10.0.1.1/24", "10.0.0.1/24"));
  EXPECT_THAT(addressesOf(interfaceIn(edited(text + "ip address 10.0.2.1/24"), "Ethernet1")),
              ElementsAre("10.0.2.1/24", "10.0.0.1/24"));
  EXPECT_THAT(addressesOf(interfaceIn(edited(text + "ip address 10.0.0.1/24"), "Ethernet1")),
              ElementsAre("10.0.0.1/24"));
}

TEST(SettingsEditor, AddressesOfIp6AddUp) {
  EXPECT_THAT(
      addressesOf(interfaceIn(edited("interface Ethernet1\nipv6 address 2001:db8::1/64\n"
                                     "ipv6 address 2001:db8:1::1/64\nipv6 address 2001:db8::1/64"),
                              "Ethernet1")),
      ElementsAre("2001:db8::1/64", "2001:db8:1::1/64"));
}

TEST(SettingsEditor, AddressesAreRemovedOneByOneOrAllTogether) {
  Settings const settings = edited("interface Ethernet1\nip address 10.0.0.1/24\n"
                                   "ip address 10.0.1.1/24 secondary\nipv6 address 2001:db8::1/64");
  EXPECT_THAT(addressesOf(interfaceIn(
                  edited("interface Ethernet1\nno ip address 10.0.0.1/24", settings), "Ethernet1")),
              ElementsAre("10.0.1.1/24", "2001:db8::1/64"));
  Settings const none =
      edited("interface Ethernet1\nno ip address\nno ip address\nno ipv6 address", settings);
  EXPECT_THAT(addressesOf(interfaceIn(none, "Ethernet1")), ElementsAre());
  EXPECT_EQ(errorOfEdit("interface Ethernet1\nno ip address 10.0.2.1/24", settings),
            "t:2:15: expected an address of interface Ethernet1, found '10.0.2.1/24'");
  EXPECT_EQ(errorOfEdit("interface Ethernet1\nno ipv6 address 2001:db8::2/64", settings),
            "t:2:17: expected an address of interface Ethernet1, found '2001:db8::2/64'");
}

TEST(SettingsEditor, SwitchportIsWrittenOrNot) {
  EXPECT_EQ(interfaceIn(edited("interface Ethernet1"), "Ethernet1").switchport, std::nullopt);
  EXPECT_EQ(interfaceIn(edited("interface Ethernet1\nno switchport"), "Ethernet1").switchport,
            false);
}

TEST(SettingsEditor, ShutdownAndItsNoFormAreStates) {
  EXPECT_TRUE(interfaceIn(edited("interface Ethernet1\nshutdown\nshutdown"), "Ethernet1").shutdown);
  EXPECT_FALSE(
      interfaceIn(edited("interface Ethernet1\nshutdown\nno shutdown\nno shutdown"), "Ethernet1")
          .shutdown);
}

TEST(SettingsEditor, ChannelGroupIsOnePerInterface) {
  Settings const settings =
      edited("interface Ethernet1\nchannel-group 7\nchannel-group 8 mode active");
  EXPECT_EQ(interfaceIn(settings, "Ethernet1").channelGroup, 8U);
  EXPECT_EQ(interfaceIn(edited("interface Ethernet1\nno channel-group 8", settings), "Ethernet1")
                .channelGroup,
            std::nullopt);
  EXPECT_EQ(interfaceIn(edited("interface Ethernet1\nno channel-group\nno channel-group", settings),
                        "Ethernet1")
                .channelGroup,
            std::nullopt);
  EXPECT_EQ(errorOfEdit("interface Ethernet1\nno channel-group 7", settings),
            "t:2:18: expected the channel-group of interface Ethernet1, found '7'");
}

TEST(SettingsEditor, OnlyPhysicalInterfacesAreMembers) {
  for (std::string const name : {"Vlan10", "PortChannel7", "Loopback0", "Ethernet1.5"}) {
    EXPECT_EQ(errorOfEdit("interface " + name + "\nchannel-group 7"),
              "t:2:1: expected a command for " + name +
                  ", which cannot join a channel-group: it is not a physical interface, found "
                  "'channel-group'");
  }
}

TEST(SettingsEditor, PolicyMapIsAttachedReplacedAndDetachedByDirection) {
  Settings const settings = edited("interface Ethernet1\nservice-policy input A\n"
                                   "service-policy output A\nservice-policy in B");
  EXPECT_THAT(interfaceIn(settings, "Ethernet1").policyMaps, ElementsAre("B", "A"));
  EXPECT_THAT(interfaceIn(edited("interface Ethernet1\nno service-policy input B\n"
                                 "no service-policy output\nno service-policy output",
                                 settings),
                          "Ethernet1")
                  .policyMaps,
              ElementsAre("", ""));
  EXPECT_EQ(errorOfEdit("interface Ethernet1\nno service-policy input A", settings),
            "t:2:25: expected the policy-map that is attached for input, found 'A'");
}

TEST(SettingsEditor, RoutingIsSwitchedByFamily) {
  Settings const settings = edited("ip routing\nipv6 unicast-routing");
  EXPECT_EQ(settings.ipRouting, true);
  EXPECT_TRUE(settings.ip6Routing);
  Settings const off = edited("no ip routing\nno ip routing", settings);
  EXPECT_EQ(off.ipRouting, false);
  EXPECT_TRUE(off.ip6Routing);
  EXPECT_FALSE(edited("no ipv6 unicast-routing", settings).ip6Routing);
}

// Lenient reading

TEST(SettingsEditor, LenientEditCountsWhatCannotBeCarriedOut) {
  PolicyText text =
      readText("no class-map A\nno class-map B\ninterface X0/1\n shutdown\n"
               "ip access-list L\n no 10\n permit ip any any\n no permit tcp any any\n"
               "policy-map P\n class A insert-before B\n  set action1 1\n"
               "no interface Ethernet1\nno policy-map Q\nno mac access-list M\n",
               Reading::lenient);
  Settings settings;
  editSettings(settings, text, Reading::lenient);
  EXPECT_EQ(text.skipped.byKind(), (std::map<std::string, std::uint64_t>{
                                       {"class (insert-before)", 2},
                                       {"interface (name)", 1},
                                       {"no access-list entry (absent)", 1},
                                       {"no class-map (absent)", 2},
                                       {"no interface (absent)", 1},
                                       {"no mac access-list (absent)", 1},
                                       {"no policy-map (absent)", 1},
                                       {"no rule (absent)", 1},
                                   }));
  EXPECT_THAT(entriesOf(settings, "L"), ElementsAre("10 permit ip any any"));
}

// The settings after a lenient edit whose text they partly reject.
Settings leftOf(std::string const& text, Settings settings, PolicyText& read) {
  read = readText(text, Reading::lenient);
  editSettings(settings, read, Reading::lenient);
  return settings;
}

TEST(SettingsEditor, WhatStandsInAModeThatCannotBeOpenedIsPassedOverWithIt) {
  Settings const before = edited("ip access-list standard L\npermit host 10.0.0.1\n"
                                 "ip access-list extended 10\npermit tcp any any\n"
                                 "policy-map P\nclass A\nset action1 1");
  for (std::string const indent : {"", " "}) {
    PolicyText read;
    Settings const after =
        leftOf("ip access-list L\n" + indent + "deny tcp any any\n" + indent + "remark r\n" +
                   "access-list 10 permit any\naccess-list 10 deny any\n" + "policy-map P\n" +
                   indent + "class A insert-before Q\n" + indent + "set action1 9\n" + indent +
                   "class B\n" + indent + "set action1 5\n",
               before, read);
    EXPECT_EQ(read.skipped.byKind(), (std::map<std::string, std::uint64_t>{
                                         {"class (insert-before)", 2},
                                         {"ip access-list (other kind)", 5},
                                     }));
    EXPECT_EQ(entriesOf(after, "L"), entriesOf(before, "L"));
    EXPECT_EQ(entriesOf(after, "10"), entriesOf(before, "10"));
    EXPECT_EQ(after.policyMaps.at("P")->actions.at("A").at(0), 1U);
    EXPECT_EQ(after.policyMaps.at("P")->actions.at("B").at(0), 5U);
  }
}

}  // namespace
}  // namespace PolicyMapTestKit::Text::test
