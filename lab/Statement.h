// SPDX-License-Identifier: Apache-2.0
#pragma once

// The statements of policy text, one value per line and free of context: each names the list,
// class-map, policy-map or interface that it belongs to. Statements are to be applied in file
// order. The parser does not check that the named objects exist.

#include "lab/Address.h"
#include "lab/PortNames.h"
#include "lab/SourceText.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lab {

// A name and its column in the statement's line, for messages. Names taken from the enclosing mode
// have column 0.
struct Name {
  std::string text;
  std::uint32_t column = 0;

  bool operator==(Name const& other) const { return text == other.text; }
};

enum class Verdict : std::uint8_t { permit, deny };

enum class Comparison : std::uint8_t { any, eq, neq, lt, gt, range };

// A condition on a number. The numbers from `low` to `high` match, inclusive. For `neq` both are
// the one number that does not match. For `any` both are 0.
struct NumberMatch {
  Comparison comparison = Comparison::any;
  std::uint16_t low = 0;
  std::uint16_t high = 0;

  bool operator==(NumberMatch const&) const = default;
};

// Bits of IpRule::tcpFlags, with the values of the TCP header.
namespace tcp_flag {
constexpr std::uint8_t fin = 0x01;
constexpr std::uint8_t syn = 0x02;
constexpr std::uint8_t rst = 0x04;
constexpr std::uint8_t psh = 0x08;
constexpr std::uint8_t ack = 0x10;
constexpr std::uint8_t urg = 0x20;
}  // namespace tcp_flag

// A rule of an IPv4 or IPv6 list.
struct IpRule {
  Verdict verdict = Verdict::permit;
  Family family = Family::ip4;
  // None for every protocol.
  std::optional<std::uint8_t> protocol;
  Address source;
  Address destination;
  NumberMatch sourcePort;
  NumberMatch destinationPort;
  // 0 to 63.
  std::optional<std::uint8_t> dscp;
  // Numbers from 0 to 255.
  NumberMatch ttl;
  // Flags that must be set (tcp_flag); 0 for no condition.
  std::uint8_t tcpFlags = 0;
  bool established = false;
  // ACK or RST set.
  bool ackOrRst = false;
  // Matches non-initial fragments only.
  bool fragments = false;
  std::optional<IcmpMessage> icmp;

  bool operator==(IpRule const&) const = default;
};

// A rule of a MAC list.
struct MacRule {
  Verdict verdict = Verdict::permit;
  Address source;
  Address destination;
  std::optional<std::uint16_t> etherType;
  // 1 to 4094.
  std::optional<std::uint16_t> vlan;

  bool operator==(MacRule const&) const = default;
};

using Rule = std::variant<IpRule, MacRule>;

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

// `[SEQ] permit ...`. Without a number the rule goes after the last entry of its list.
struct RuleAdd {
  AccessListId list;
  std::optional<std::uint32_t> sequence;
  Rule rule;
};
// `no permit ...`: removes the entry with an equal rule.
struct RuleRemove {
  AccessListId list;
  Rule rule;
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
// `match ip|ipv6|mac RULE`, or its `no` form.
struct ClassMatchRule {
  Name classMap;
  Rule rule;
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

// `set actionN VALUE`; `no set actionN` has no value.
struct PolicyClassAction {
  Name policyMap;
  Name className;
  // 1, 2 or 3.
  std::uint8_t action = 1;
  std::optional<std::uint32_t> value;
};

// `interface NAME`; "Ethernet 3/1" is joined to "Ethernet3/1".
struct InterfaceOpen {
  Name interface;
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
};

enum class Direction : std::uint8_t { input, output };

// `service-policy input|output NAME`; the `no` form sets `remove` and may omit the name.
struct ServicePolicy {
  Name interface;
  Direction direction = Direction::input;
  std::optional<Name> policyMap;
  bool remove = false;
};

// `ip routing`, `ipv6 unicast-routing` and their `no` forms.
struct Routing {
  Family family = Family::ip4;
  bool on = true;
};

using StatementBody =
    std::variant<AccessListOpen, AccessListRemove, RuleAdd, RuleRemove, RemarkAdd, RemarkRemove,
                 EntryRemove, ClassMapOpen, ClassMapRemove, ClassMatchList, ClassMatchClass,
                 ClassMatchRule, PolicyMapOpen, PolicyMapRemove, PolicyClassOpen, PolicyClassRemove,
                 PolicyClassAction, InterfaceOpen, InterfaceRemove, InterfaceAddress,
                 InterfaceSwitchport, InterfaceShutdown, InterfaceChannelGroup, ServicePolicy,
                 Routing>;

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

}  // namespace lab
