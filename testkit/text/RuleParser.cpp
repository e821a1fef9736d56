// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/RuleParser.h"

#include "testkit/text/Comparison.h"
#include "testkit/text/IpOptions.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/Ports.h"
#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

namespace {

AddressBytes takeAddress(Lexer& lexer, Family family, std::string_view what) {
  AddressBytes bytes{};
  if (!parseAddress(family, lexer.peek().text, bytes)) {
    lexer.fail(std::string(what));
  }
  lexer.next();
  return bytes;
}

Address exactAddress(Family family, AddressBytes const& bytes) {
  return maskedAddress(bytes, prefixMask(addressSize(family) * 8));
}

AddressBytes takeWildcard(Lexer& lexer, Family family) {
  return invertedBits(family, takeAddress(lexer, family, "wildcard bits"));
}

// Parses `any` or `host A`, which are common to all kinds of lists; none if the next word is
// neither.
std::optional<Address> takeAnyOrHost(Lexer& lexer, Family family, std::string_view what) {
  if (lexer.accept("any")) {
    return Address{};
  }
  if (lexer.accept("host")) {
    return exactAddress(family, takeAddress(lexer, family, what));
  }
  return std::nullopt;
}

std::optional<Address> takePrefix(Lexer& lexer, Family family) {
  AddressBytes bytes{};
  std::uint8_t length = 0;
  if (!parsePrefix(family, lexer.peek().text, bytes, length)) {
    return std::nullopt;
  }
  lexer.next();
  return maskedAddress(bytes, prefixMask(length));
}

Address takeIp4Address(Lexer& lexer, std::string_view side, bool standard) {
  if (auto const address = takeAnyOrHost(lexer, Family::ip4, "an IPv4 address")) {
    return *address;
  }
  if (auto const address = takePrefix(lexer, Family::ip4)) {
    return *address;
  }
  AddressBytes const bytes =
      takeAddress(lexer, Family::ip4, std::string(side) + ": any, host A, A/LENGTH or A WILDCARD");
  AddressBytes wildcard{};
  bool const alone = standard && !parseAddress(Family::ip4, lexer.peek().text, wildcard);
  return alone ? exactAddress(Family::ip4, bytes)
               : maskedAddress(bytes, takeWildcard(lexer, Family::ip4));
}

Address takeIp6Address(Lexer& lexer, std::string_view side) {
  if (auto const address = takeAnyOrHost(lexer, Family::ip6, "an IPv6 address")) {
    return *address;
  }
  if (auto const address = takePrefix(lexer, Family::ip6)) {
    return *address;
  }
  lexer.fail(std::string(side) + ": any, host A or A/LENGTH");
}

// Takes the name of an object-group if one of the words precedes it.
bool takeGroup(Lexer& lexer, std::initializer_list<std::string_view> words, std::string* group) {
  bool const named = group != nullptr && std::any_of(words.begin(), words.end(),
                                                     [&](auto word) { return lexer.accept(word); });
  if (named) {
    *group = takeName(lexer, "an object-group name").text;
  }
  return named;
}

Address takeIpAddress(Lexer& lexer, Family family, std::string_view side, std::string* group) {
  if (takeGroup(lexer, {"object-group", "addrgroup", "net-group"}, group)) {
    return {};
  }
  return family == Family::ip4 ? takeIp4Address(lexer, side, false) : takeIp6Address(lexer, side);
}

bool isMacAddress(Token const& token) {
  AddressBytes bytes{};
  return parseAddress(Family::mac, token.text, bytes);
}

// True if the next MAC address is a mask of the source before it. `A B` is a source and a
// destination, so the second address can be the source's mask only if a destination follows it.
// Raises SyntaxFailure at the source if the lexer `atSource` is at exactly three addresses, because
// the mask could then belong to either of the first two.
bool sourceMaskFollows(Lexer const& lexer, Lexer const& atSource) {
  if (!isMacAddress(lexer.peek())) {
    return false;
  }
  Token const third = lexer.peekSecond();
  if (!isMacAddress(third)) {
    return third.is("any") || third.is("host");
  }
  Lexer ahead = lexer;
  Token const second = ahead.next();
  if (!isMacAddress(ahead.peekSecond())) {
    std::string const one = std::string(atSource.peek().text) + " ";
    std::string const two = std::string(second.text) + " ";
    atSource.fail("host before one of three MAC addresses: '" + one + two + "host " +
                  std::string(third.text) + "' (wildcard bits of the source) or 'host " + one +
                  two + std::string(third.text) + "' (wildcard bits of the destination)");
  }
  return true;
}

Address takeMacAddress(Lexer& lexer, std::string_view side, bool isDestination) {
  if (auto const address = takeAnyOrHost(lexer, Family::mac, "a MAC address")) {
    return *address;
  }
  Lexer const before = lexer;
  AddressBytes const bytes =
      takeAddress(lexer, Family::mac, std::string(side) + ": any, host M or M [WILDCARD]");
  bool const masked = isDestination ? isMacAddress(lexer.peek()) : sourceMaskFollows(lexer, before);
  return masked ? maskedAddress(bytes, takeWildcard(lexer, Family::mac))
                : exactAddress(Family::mac, bytes);
}

std::optional<std::uint8_t> takeProtocol(Lexer& lexer, Family family) {
  std::optional<std::uint8_t> number;
  if (!lexer.peek().is("ip") && !lexer.peek().is("ipv4") && !lexer.peek().is("ipv6")) {
    std::uint64_t value = 0;
    number = protocolNumber(family, lexer.peek().text);
    if (parseNumber(lexer.peek().text, 0, 255, value)) {
      number = static_cast<std::uint8_t>(value);
    }
    if (!number) {
      lexer.fail("protocol 0-255 or a protocol name");
    }
  }
  lexer.next();
  return number;
}

// `permit every` is every packet.
Acl::IpRuleConfig parseStandardRule(Lexer& lexer, Verdict verdict) {
  Acl::IpRuleConfig rule;
  rule.permitIs(verdict == Verdict::permit);
  if (!lexer.accept("every")) {
    rule.sourceIs(addressMatch<Acl::IpAddressMatch>(takeIp4Address(lexer, "source", true)));
  }
  for (std::string_view const word : {"assign-queue", "mirror", "redirect"}) {
    if (lexer.accept(word)) {
      takeName(lexer, "a value of " + std::string(word));
    }
  }
  lexer.accept("log");
  lexer.expectEnd("log or end of line");
  return rule;
}

// Null `alternatives`: only one port, and no group.
Acl::PortMatch takePortsOrGroup(Lexer& lexer, std::optional<std::uint8_t> protocol,
                                std::initializer_list<std::string_view> words,
                                RuleAlternatives* alternatives,
                                std::string RuleAlternatives::*group,
                                std::vector<Acl::PortMatch> RuleAlternatives::*values) {
  if (alternatives == nullptr || !protocol || !hasPorts(*protocol)) {
    return takePorts(lexer, protocol);
  }
  if (takeGroup(lexer, words, &(alternatives->*group))) {
    return {};
  }
  Acl::PortMatch const first = takePorts(lexer, protocol);
  alternatives->*values = takeFurtherPorts(lexer, *protocol, first);
  return (alternatives->*values).empty() ? first : Acl::PortMatch();
}

// Null `alternatives`: none are allowed.
template <class Rule>
Rule parseIpRule(Lexer& lexer, Family family, Verdict verdict, RuleAlternatives* alternatives) {
  using Match = typename Rule::AddressMatch;
  using Some = RuleAlternatives;
  Rule rule;
  rule.permitIs(verdict == Verdict::permit);
  if (lexer.accept("every")) {
    takeIpOptions(lexer, rule, alternatives);
    return rule;
  }
  auto const group = [alternatives](std::string Some::*name) {
    return alternatives == nullptr ? nullptr : &(alternatives->*name);
  };
  std::optional<std::uint8_t> protocol;
  if (!takeGroup(lexer, {"object-group"}, group(&Some::service))) {
    protocol = takeProtocol(lexer, family);
  }
  if (protocol) {
    rule.protocolIs(*protocol);
  }
  rule.sourceIs(addressMatch<Match>(takeIpAddress(lexer, family, "source", group(&Some::source))));
  rule.srcPortIs(takePortsOrGroup(lexer, protocol, {"portgroup", "port-group"}, alternatives,
                                  &Some::sourcePorts, &Some::sourcePortValues));
  rule.destinationIs(
      addressMatch<Match>(takeIpAddress(lexer, family, "destination", group(&Some::destination))));
  rule.dstPortIs(takePortsOrGroup(lexer, protocol, {"portgroup", "port-group", "object-group"},
                                  alternatives, &Some::destinationPorts,
                                  &Some::destinationPortValues));
  takeIpOptions(lexer, rule, alternatives);
  return rule;
}

bool takeEtherType(Lexer& lexer, Acl::MacRuleConfig& rule) {
  if (rule.ethertype()) {
    return false;
  }
  bool const word = lexer.accept("ethertype");
  std::optional<std::uint16_t> const type = acceptEtherType(lexer);
  if (type) {
    rule.ethertypeIs(*type);
    lexer.accept("0x0");  // wildcard bits: none
  } else if (word) {
    lexer.fail("an Ethernet type 0-0xffff or its name");
  }
  return type.has_value();
}

// `WORD [eq] N`, once.
bool takeMacNumber(Lexer& lexer, Acl::MacRuleConfig& rule, std::string_view word, std::uint64_t low,
                   std::uint64_t high, Acl::OptionalNumber (Acl::MacRuleConfig::*get)() const,
                   void (Acl::MacRuleConfig::*set)(Acl::OptionalNumber)) {
  if ((rule.*get)() || !lexer.accept(word)) {
    return false;
  }
  lexer.accept("eq");
  (rule.*set)(takeNumber(lexer, word, low, high));
  return true;
}

Acl::MacRuleConfig parseMacRule(Lexer& lexer, Verdict verdict) {
  using Match = Acl::MacAddressMatch;
  Acl::MacRuleConfig rule;
  rule.permitIs(verdict == Verdict::permit);
  rule.sourceIs(addressMatch<Match>(takeMacAddress(lexer, "source", false)));
  rule.destinationIs(addressMatch<Match>(takeMacAddress(lexer, "destination", true)));
  while (!lexer.peek().atEnd()) {
    using Rule = Acl::MacRuleConfig;
    if (!takeEtherType(lexer, rule) &&
        !takeMacNumber(lexer, rule, "vlan", 1, 4094, &Rule::vlan, &Rule::vlanIs) &&
        !takeMacNumber(lexer, rule, "cos", 0, 7, &Rule::cos, &Rule::cosIs) &&
        !lexer.accept("log")) {
      lexer.fail("an Ethernet type, vlan, cos, log or end of line");
    }
  }
  return rule;
}

ConfiguredRule parseRule(Lexer& lexer, RuleKind kind, Verdict verdict,
                         RuleAlternatives* alternatives) {
  switch (kind) {
  case RuleKind::standardIp4: return parseStandardRule(lexer, verdict);
  case RuleKind::ip4:
    return parseIpRule<Acl::IpRuleConfig>(lexer, Family::ip4, verdict, alternatives);
  case RuleKind::ip6:
    return parseIpRule<Acl::Ip6RuleConfig>(lexer, Family::ip6, verdict, alternatives);
  case RuleKind::mac: break;
  }
  return parseMacRule(lexer, verdict);
}

}  // namespace

std::optional<std::uint16_t> acceptEtherType(Lexer& lexer) {
  std::uint64_t number = 0;
  auto type = etherTypeNumber(lexer.peek().text);
  if (parseNumber(lexer.peek().text, 0, 0xffff, number) ||
      parseHexNumber(lexer.peek().text, 0xffff, number)) {
    type = static_cast<std::uint16_t>(number);
  }
  if (type) {
    lexer.next();
  }
  return type;
}

ConfiguredRule parseRule(Lexer& lexer, RuleKind kind, Verdict verdict) {
  return parseRule(lexer, kind, verdict, nullptr);
}

ListRule parseListRule(Lexer& lexer, RuleKind kind, Verdict verdict, SourcePosition const& place) {
  RuleAlternatives alternatives;
  ListRule line{parseRule(lexer, kind, verdict, &alternatives)};
  if (!alternatives.empty()) {
    alternatives.place = place;
    line.alternatives = std::make_shared<RuleAlternatives const>(std::move(alternatives));
  }
  return line;
}

bool isWritten(ConfiguredRule const& rule, std::string_view text) {
  if (describe(rule) == text) {
    return true;
  }
  // The error at the rightmost word is that of the kind of rule that is meant.
  std::optional<SyntaxFailure> error;
  bool isRule = false;
  for (RuleKind const kind : {RuleKind::ip4, RuleKind::ip6, RuleKind::mac}) {
    try {
      Lexer lexer(text);
      bool const deny = lexer.accept("deny");
      if (!deny && !lexer.accept("permit")) {
        lexer.fail("permit or deny");
      }
      if (parseRule(lexer, kind, deny ? Verdict::deny : Verdict::permit) == rule) {
        return true;
      }
      isRule = true;
    } catch (SyntaxFailure const& failure) {
      if (!error || failure.found.column > error->found.column) {
        error = failure;
      }
    }
  }
  if (!isRule) {
    static auto const file = std::make_shared<std::string const>("expected rule");
    throw InputError({file, 1, error->found.column}, error->expected, error->found.text);
  }
  return false;
}

}  // namespace PolicyMapTestKit::Text
