// SPDX-License-Identifier: Apache-2.0
// The lines of object-groups.

#include "testkit/text/AddressRange.h"
#include "testkit/text/IpOptions.h"
#include "testkit/text/LineParser.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/Ports.h"

namespace PolicyMapTestKit::Text {

namespace {

// Takes `any`, `host A`, `A/LENGTH`, `A MASK` or `range A B`; none if the next word begins none.
std::vector<Address> takeAddresses(Lexer& lexer, GroupSyntax const& syntax) {
  Family const family = syntax.family;
  AddressBytes bytes{};
  std::uint8_t length = 0;
  auto const take = [&](std::string_view what) {
    AddressBytes taken{};
    if (!parseAddress(family, lexer.peek().text, taken)) {
      lexer.fail(std::string(what));
    }
    lexer.next();
    return taken;
  };
  AddressBytes const exact = prefixMask(addressSize(family) * 8);
  if (lexer.accept("any")) {
    return {Address{}};
  }
  if (lexer.accept("host")) {
    return {maskedAddress(take("an address"), exact)};
  }
  if (lexer.peek().is("range")) {
    lexer.next();
    AddressBytes const low = take("the first address");
    Lexer const atHigh = lexer;
    AddressBytes const high = take("the last address");
    if (high < low) {
      atHigh.fail("an address not below the first one");
    }
    return addressesFromTo(family, low, high);
  }
  if (parsePrefix(family, lexer.peek().text, bytes, length)) {
    lexer.next();
    return {maskedAddress(bytes, prefixMask(length))};
  }
  if (!parseAddress(family, lexer.peek().text, bytes)) {
    return {};
  }
  lexer.next();
  if (lexer.peek().atEnd()) {
    return {maskedAddress(bytes, exact)};
  }
  if (lexer.peek().text.front() == '/') {
    Token const word = lexer.peek();
    std::uint64_t bits = 0;
    if (!parseNumber(word.text.substr(1), 0, addressSize(family) * std::uint64_t{8}, bits)) {
      lexer.fail("the length of a prefix");
    }
    lexer.next();
    return {maskedAddress(bytes, prefixMask(static_cast<unsigned>(bits)))};
  }
  AddressBytes const mask = take(syntax.wildcards ? "wildcard bits" : "a subnet mask");
  return {maskedAddress(bytes, syntax.wildcards ? invertedBits(family, mask) : mask)};
}

// The protocols of a service: `tcp`, `tcp-udp`, `icmp`, a number; none if the next word is none.
std::vector<std::uint8_t> takeProtocols(Lexer& lexer) {
  std::uint64_t number = 0;
  std::string_view const word = lexer.peek().text;
  std::vector<std::uint8_t> protocols;
  if (lexer.peek().is("tcp-udp")) {
    protocols = {protocol::tcp, protocol::udp};
  } else if (auto const named = protocolNumber(Family::ip4, word)) {
    protocols = {*named};
  } else if (parseNumber(word, 0, 255, number)) {
    protocols = {static_cast<std::uint8_t>(number)};
  }
  if (!protocols.empty()) {
    lexer.next();
  }
  return protocols;
}

// `eq 80`, or `80` alone.
Acl::PortMatch takePortsOrOne(Lexer& lexer, std::uint8_t protocol) {
  std::optional<std::int64_t> port;
  if (hasPorts(protocol)) {
    port = acceptPort(lexer, protocol);
  }
  return port ? Acl::PortMatch::eq(*port) : takePorts(lexer, protocol);
}

// What follows the protocol of a service.
std::vector<GroupMember> takeServices(Lexer& lexer, std::vector<std::uint8_t> const& protocols) {
  std::vector<GroupMember> members;
  Lexer const before = lexer;
  for (std::uint8_t const protocol : protocols) {
    lexer = before;
    Acl::IpRuleConfig service;
    service.protocolIs(protocol);
    if (lexer.accept("source")) {
      service.srcPortIs(takePorts(lexer, protocol));
    }
    lexer.accept("destination");
    service.dstPortIs(takePortsOrOne(lexer, protocol));
    if (protocol == protocol::icmp || protocol == protocol::icmp6) {
      takeIpOptions(lexer, service);
    }
    members.emplace_back(service);
  }
  return members;
}

}  // namespace

// Network groups of one dialect have subnet masks, address groups of another wildcard bits.
void LineParser::objectGroup(Lexer& lexer, bool remove) {
  GroupSyntax syntax;
  if (lexer.accept("network")) {
    if (lexer.accept("ipv6")) {
      syntax.family = Family::ip6;
    } else {
      lexer.accept("ipv4");
    }
  } else if (lexer.accept("port")) {
    syntax.kind = GroupKind::ports;
  } else if (lexer.accept("v6-network")) {
    syntax.family = Family::ip6;
  } else if (lexer.accept("service") || lexer.accept("v6-service")) {
    syntax.kind = GroupKind::services;
  } else if (lexer.accept("ip") || lexer.accept("ipv4") || lexer.peek().is("ipv6")) {
    syntax.family = lexer.accept("ipv6") ? Family::ip6 : Family::ip4;
    syntax.wildcards = true;
    if (lexer.accept("port")) {
      syntax.kind = GroupKind::ports;
    } else if (!lexer.accept("address")) {
      lexer.fail("address or port");
    }
  } else {
    lexer.fail("network, service, port, ip address or ip port");
  }
  Name group = nameOf(takeName(lexer, "an object-group name"));
  if (syntax.kind == GroupKind::services && !lexer.peek().atEnd()) {
    syntax.protocols = takeProtocols(lexer);
  }
  lexer.expectEnd();
  if (remove) {
    emit(ObjectGroupRemove{std::move(group)});
    return;
  }
  outer_ = withoutColumn(group);
  group_ = std::move(syntax);
  emit(ObjectGroupOpen{group_.kind, std::move(group)});
  enter(Mode::objectGroup);
}

// Parses a line of the group. Returns false, without consuming a word, if it is none.
bool LineParser::groupMember(Lexer& lexer, bool remove) {
  if (lexer.accept("description")) {
    lexer.rest();
    return true;
  }
  Lexer const before = lexer;
  std::uint64_t number = 0;
  if (group_.kind != GroupKind::services &&
      parseNumber(lexer.peek().text, 1, highestWord, number)) {
    lexer.next();  // the number of the line
  }
  ObjectGroupMembers body{outer_, {}, remove};
  if (lexer.accept("group-object") || lexer.accept("object-group")) {
    body.members.emplace_back(
        GroupReference{std::string(takeName(lexer, "an object-group name").text)});
  } else if (group_.kind == GroupKind::addresses) {
    lexer.accept("network-object");
    for (Address const& address : takeAddresses(lexer, group_)) {
      body.members.emplace_back(GroupAddress{group_.family, address});
    }
  } else if (group_.kind == GroupKind::ports) {
    if (Acl::PortMatch const ports = takePorts(lexer, protocol::tcp); !ports.isAny()) {
      body.members.emplace_back(ports);
    }
  } else if (lexer.accept("port-object")) {
    body.members = takeServices(lexer, group_.protocols);
  } else {
    lexer.accept("service-object");
    if (lexer.accept("ip")) {
      body.members.emplace_back(Acl::IpRuleConfig());
    } else {
      body.members = takeServices(lexer, takeProtocols(lexer));
    }
  }
  if (body.members.empty()) {
    lexer = before;
    return false;
  }
  lexer.expectEnd();
  emit(std::move(body));
  return true;
}

}  // namespace PolicyMapTestKit::Text
