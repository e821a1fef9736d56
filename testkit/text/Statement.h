// SPDX-License-Identifier: Apache-2.0
#pragma once

// The statements of policy text, one value per line and free of context: each names the list,
// class-map, policy-map or interface that it belongs to. Statements are to be applied in file
// order. The parser does not check that the named objects exist.

#include "testkit/text/Address.h"
#include "testkit/text/SourceText.h"

#include <Acl/IpRuleConfig.h>
#include <PolicyMap/ClassMapMatch.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

namespace PolicyMapTestKit::Text {

// A name and its column in the statement's line, for messages. Names taken from the enclosing mode
// have column 0.
struct Name {
  std::string text;
  std::uint32_t column = 0;

  bool operator==(Name const& other) const { return text == other.text; }
};

// A rule of any family as access lists and class-maps hold it.
using ConfiguredRule = PolicyMap::ClassMapMatch::Rule;

// Identifies one access list. Lists of different families may share a name.
struct AccessListId {
  Family family = Family::ip4;
  Name name;

  bool operator==(AccessListId const&) const = default;
};

// `ip access-list NAME`: creates the list, initially empty, if it does not exist.
struct AccessListOpen {
  AccessListId list;
  // The list matches source addresses only.
  bool standard = false;
};
struct AccessListRemove {
  AccessListId list;
};

// What a line of an access list says in the place of one value.
struct RuleAlternatives {
  // Names of object-groups; empty for none.
  std::string service;
  std::string source;
  std::string destination;
  std::string sourcePorts;
  std::string destinationPorts;
  // Empty: only those of the rule.
  std::vector<Acl::PortMatch> sourcePortValues;
  std::vector<Acl::PortMatch> destinationPortValues;
  std::vector<Acl::TcpFlags> tcpFlags;
  std::vector<std::uint8_t> dscps;
  // Of the line.
  SourcePosition place;

  // True if the line says none.
  bool empty() const {
    return service.empty() && source.empty() && destination.empty() && sourcePorts.empty() &&
           destinationPorts.empty() && sourcePortValues.empty() && destinationPortValues.empty() &&
           tcpFlags.empty() && dscps.empty();
  }
  bool operator==(RuleAlternatives const& other) const {
    auto const all = [](RuleAlternatives const& some) {
      return std::tie(some.service, some.source, some.destination, some.sourcePorts,
                      some.destinationPorts, some.sourcePortValues, some.destinationPortValues,
                      some.tcpFlags, some.dscps);
    };
    return all(*this) == all(other);
  }
};

// A line of an access list: one rule, or one for each combination of the alternatives.
struct ListRule {
  ConfiguredRule rule;
  // Null: none.
  std::shared_ptr<RuleAlternatives const> alternatives = {};

  bool operator==(ListRule const& other) const {
    bool const both = alternatives && other.alternatives;
    bool const same =
        both ? *alternatives == *other.alternatives : alternatives == other.alternatives;
    return same && rule == other.rule;
  }
};

// `[SEQ] permit ...`. Without a number the rule goes after the last entry of its list.
struct RuleAdd {
  AccessListId list;
  std::optional<std::uint32_t> sequence;
  ListRule rule;
};
// `no [SEQ] permit ...`: removes the entry with an equal rule.
struct RuleRemove {
  AccessListId list;
  // Of the entry that must have the rule. None: the first that has it.
  std::optional<std::uint32_t> sequence;
  ListRule rule;
};
// What a line of an access list that was skipped may have been.
enum class SkippedKind : std::uint8_t { permit, deny, other };

// A line that a lenient reading skipped, at its place.
struct SkippedEntryAdd {
  AccessListId list;
  std::optional<std::uint32_t> sequence;
  SkippedKind kind = SkippedKind::other;
};
// `[SEQ] remark TEXT`.
struct RemarkAdd {
  AccessListId list;
  std::optional<std::uint32_t> sequence;
  std::string text;
};
// `no remark TEXT`: removes the remark with this text. An empty text removes all remarks.
struct RemarkRemove {
  AccessListId list;
  std::string text;
};
// `no SEQ` (a rule or a remark) and `no SEQ remark` (only a remark).
struct EntryRemove {
  AccessListId list;
  std::uint32_t sequence = 0;
  bool remarkOnly = false;
};

enum class ClassMatch : std::uint8_t { any, all };

// What the members of an object-group are.
enum class GroupKind : std::uint8_t { addresses, services, ports };

// A nested group of the same kind.
struct GroupReference {
  std::string name;

  bool operator==(GroupReference const&) const = default;
};
struct GroupAddress {
  Family family = Family::ip4;
  Address address;

  bool operator==(GroupAddress const&) const = default;
};
// A service is a rule for any addresses.
using GroupMember = std::variant<GroupReference, GroupAddress, Acl::IpRuleConfig, Acl::PortMatch>;

// `object-group network|service NAME`, `object-group ip address|port NAME`.
struct ObjectGroupOpen {
  GroupKind kind = GroupKind::addresses;
  Name group;
};
struct ObjectGroupRemove {
  Name group;
};
// One line of a group, which may be several members, as `range A B`.
struct ObjectGroupMembers {
  Name group;
  std::vector<GroupMember> members;
  bool remove = false;
};

// A member that a lenient reading skipped.
struct ObjectGroupSkipped {
  Name group;
};

// `class-map [type WORD] [match-any|match-all] NAME`.
struct ClassMapOpen {
  Name classMap;
  ClassMatch match = ClassMatch::all;
  // True if `match` was written. Otherwise an existing class-map keeps its own.
  bool matchWritten = false;
  // The word after `type`; empty without one.
  std::string type;
};
struct ClassMapRemove {
  Name classMap;
};

// `match access-group NAME`, or its `no` form.
struct ClassMatchList {
  Name classMap;
  AccessListId list;
  bool remove = false;
};
// `match class-map NAME`, or its `no` form.
struct ClassMatchClass {
  Name classMap;
  Name nested;
  bool remove = false;
};
// The packets of a condition such as "dscp 46": those that one of the rules permits, of each family
// in order. No rules: no rule can express it.
struct MatchCondition {
  // In its canonical spelling.
  std::string text;
  std::vector<ConfiguredRule> rules;
};
// `match CONDITION`, or its `no` form.
struct ClassMatchCondition {
  Name classMap;
  MatchCondition condition;
  bool remove = false;
};

// `match ip|ipv6|mac RULE`, or its `no` form.
struct ClassMatchRule {
  Name classMap;
  ConfiguredRule rule;
  bool remove = false;
};

// `policy-map [type WORD] NAME`.
struct PolicyMapOpen {
  Name policyMap;
  std::string type;
};
struct PolicyMapRemove {
  Name policyMap;
};

// `class NAME [insert-before OTHER]`. Without `insertBefore` a new class goes after the last.
struct PolicyClassOpen {
  Name policyMap;
  Name className;
  std::optional<Name> insertBefore;
};
struct PolicyClassRemove {
  Name policyMap;
  Name className;
};

// `set ACTION VALUE`; `no set ACTION` has no value.
//
// Of the actions of real devices, the first is the DSCP, queue or class that a packet gets, the
// second a rate in kbit/s, and the third a number for the text of all others.
constexpr std::uint8_t markingAction = 1;
constexpr std::uint8_t rateAction = 2;
constexpr std::uint8_t otherAction = 3;
struct PolicyClassAction {
  Name policyMap;
  Name className;
  // The number of a kind of test action, from 1.
  std::uint8_t action = 1;
  std::optional<std::uint32_t> value;
  // Removing nothing is no mistake.
  bool ifPresent = false;
};
// An action of a class that has no number, e.g. "inspect" or "drop log".
struct PolicyClassOtherAction {
  Name policyMap;
  Name className;
  std::string text;
  // Whatever follows the keyword of the text.
  bool remove = false;
  // Removing nothing is no mistake.
  bool ifPresent = false;
  // The kind of test action, from 1, whose value is the number of the text.
  std::uint8_t action = otherAction;
};

// `interface NAME`; "Ethernet 3/1" is joined to "Ethernet3/1".
struct InterfaceOpen {
  Name interface;
  // A name that is none of an interface is that of a place (see PlaceOpen).
  bool orElsewhere = false;
};
// What is no interface, and where something is attached all the same: it cannot be programmed
// there.
struct PlaceOpen {
  Name place;
};
struct InterfaceRemove {
  Name interface;
};

// An address of an interface and the length of its subnet prefix.
struct InterfacePrefix {
  AddressBytes address{};
  std::uint8_t length = 0;

  bool operator==(InterfacePrefix const&) const = default;
};

// `ip address ...`, `ipv6 address ...` and their `no` forms. A `no` form without a prefix removes
// all addresses of the family.
struct InterfaceAddress {
  Name interface;
  Family family = Family::ip4;
  std::optional<InterfacePrefix> prefix;
  bool secondary = false;
  bool remove = false;
};

// `switchport`, `no switchport`.
struct InterfaceSwitchport {
  Name interface;
  bool on = true;
};
// `shutdown`, `no shutdown`.
struct InterfaceShutdown {
  Name interface;
  bool on = true;
};
// `channel-group N`; `no channel-group [N]` sets `remove` and may omit the number.
struct InterfaceChannelGroup {
  Name interface;
  std::optional<std::uint32_t> group;
  bool remove = false;
  // Instead of the number: the bare numbers of the port-channel (see PortChannelName).
  std::optional<Name> bare = {};
};

enum class Direction : std::uint8_t { input, output };

// `service-policy input|output NAME`; the `no` form sets `remove` and may omit the name.
struct ServicePolicy {
  Name interface;
  std::string type;
  Direction direction = Direction::input;
  std::optional<Name> policyMap;
  bool remove = false;
};

// A line that would attach something, and that a lenient reading skipped.
struct SkippedAttachment {
  Name interface;
  std::string line;
};

// `ip access-group NAME in`, `ipv6 traffic-filter NAME in` and such.
struct InterfaceAccessGroup {
  Name interface;
  Direction direction = Direction::input;
  Family family = Family::ip4;
  // A `no` form may omit it.
  std::optional<Name> list;
  // Of several lists of one family, those with lower numbers come first. A list replaces the one of
  // its number.
  std::uint32_t priority = 0;
  bool remove = false;
};
// `zone-member security ZONE`.
struct InterfaceZone {
  Name interface;
  std::string zone;
  bool remove = false;
};

// `zone-pair security NAME source ZONE destination ZONE`.
struct ZonePairOpen {
  Name zonePair;
  std::string source;
  std::string destination;
};
struct ZonePairRemove {
  Name zonePair;
};
// `service-policy type inspect NAME` in a zone-pair.
struct ZonePairPolicy {
  Name zonePair;
  std::optional<Name> policyMap;
  bool remove = false;
};

// `port-channel name NUMBERS NAME`: the interface with these bare numbers is a port-channel.
struct PortChannelName {
  Name interface;
};

// `ip routing`, `ipv6 unicast-routing` and their `no` forms.
struct Routing {
  Family family = Family::ip4;
  bool on = true;
};

using StatementBody =
    std::variant<AccessListOpen, AccessListRemove, RuleAdd, RuleRemove, SkippedEntryAdd, RemarkAdd,
                 RemarkRemove, EntryRemove, ClassMapOpen, ClassMapRemove, ClassMatchList,
                 ClassMatchClass, ClassMatchRule, ClassMatchCondition, ObjectGroupOpen,
                 ObjectGroupRemove, ObjectGroupMembers, ObjectGroupSkipped, PolicyMapOpen,
                 PolicyMapRemove, PolicyClassOpen, PolicyClassRemove, PolicyClassAction,
                 PolicyClassOtherAction, InterfaceOpen, PlaceOpen, InterfaceRemove,
                 InterfaceAddress, InterfaceSwitchport, InterfaceShutdown, InterfaceChannelGroup,
                 ServicePolicy, InterfaceAccessGroup, SkippedAttachment, InterfaceZone,
                 ZonePairOpen, ZonePairRemove, ZonePairPolicy, PortChannelName, Routing>;

struct Statement {
  // The first word of the line.
  SourcePosition position;
  // The line of the command whose mode contains the statement; 0 at top level.
  std::uint32_t block = 0;
  // The word that messages about the statement quote, unless they quote a name. By default the
  // first word.
  Name subject;
  StatementBody body;

  SourcePosition subjectPosition() const { return positionOf(subject); }
  // The position of one of the statement's names; the statement itself for a name from its mode.
  SourcePosition positionOf(Name const& name) const {
    return name.column == 0 ? position : SourcePosition{position.file, position.line, name.column};
  }
};

}  // namespace PolicyMapTestKit::Text
