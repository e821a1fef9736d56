// SPDX-License-Identifier: Apache-2.0
#include "lab/RuleParser.h"

#include <string>
#include <string_view>

namespace lab {

namespace {

constexpr std::uint64_t highestPort = 65535;
constexpr std::uint64_t highestTtl = 255;

struct NamedComparison {
  std::string_view name;
  Comparison comparison;
};

constexpr NamedComparison comparisons[] = {
    {"eq", Comparison::eq}, {"neq", Comparison::neq},     {"lt", Comparison::lt},
    {"gt", Comparison::gt}, {"range", Comparison::range},
};

struct NamedFlag {
  std::string_view name;
  std::uint8_t bit;
};

constexpr NamedFlag tcpFlags[] = {
    {"ack", tcp_flag::ack}, {"fin", tcp_flag::fin}, {"psh", tcp_flag::psh},
    {"rst", tcp_flag::rst}, {"syn", tcp_flag::syn}, {"urg", tcp_flag::urg},
};

// Consumes the next word if it is a comparison; otherwise returns `any`.
Comparison acceptComparison(Lexer& lexer) noexcept {
  for (auto const& [name, comparison] : comparisons) {
    if (lexer.accept(name)) {
      return comparison;
    }
  }
  return Comparison::any;
}

// Parses the operands of a comparison on numbers up to `highest`. The bounds of the operand exclude
// comparisons that no number satisfies. `takeOperand(low, high)` parses one operand.
template <class TakeOperand>
NumberMatch takeOperands(Comparison comparison, std::uint64_t highest, TakeOperand takeOperand) {
  auto const match = [comparison](std::uint64_t low, std::uint64_t high) {
    return NumberMatch{comparison, static_cast<std::uint16_t>(low),
                       static_cast<std::uint16_t>(high)};
  };
  if (comparison == Comparison::lt) {
    return match(0, takeOperand(std::uint64_t{1}, highest) - 1);
  }
  if (comparison == Comparison::gt) {
    return match(takeOperand(std::uint64_t{0}, highest - 1) + 1, highest);
  }
  std::uint64_t const low = takeOperand(std::uint64_t{0}, highest);
  return match(low, comparison == Comparison::range ? takeOperand(low, highest) : low);
}

std::uint64_t takePort(Lexer& lexer, std::uint8_t protocol, std::uint64_t low, std::uint64_t high) {
  std::uint64_t port = 0;
  bool known = parseNumber(lexer.peek().text, low, high, port);
  if (auto const named = portNumber(protocol, lexer.peek().text)) {
    port = *named;
    known = low <= port && port <= high;
  }
  if (!known) {
    lexer.fail("port " + std::to_string(low) + "-" + std::to_string(high) + " or a port name");
  }
  lexer.next();
  return port;
}

NumberMatch takePorts(Lexer& lexer, std::optional<std::uint8_t> protocol) {
  Lexer const before = lexer;
  Comparison const comparison = acceptComparison(lexer);
  if (comparison == Comparison::any) {
    return {};
  }
  if (!protocol || !hasPorts(*protocol)) {
    before.fail("protocol tcp, udp or sctp before a port");
  }
  return takeOperands(comparison, highestPort, [&](std::uint64_t low, std::uint64_t high) {
    return takePort(lexer, *protocol, low, high);
  });
}

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

Address takeIpAddress(Lexer& lexer, Family family, std::string_view side) {
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
  if (!lexer.peek().is("ip") && !lexer.peek().is("ipv6")) {
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

// The options after the addresses of a rule, in any order, each at most once.
class IpOptions {
 public:
  IpOptions(Lexer& lexer, IpRule& rule) : lexer_(lexer), rule_(rule) {}

  void takeAll() {
    while (!lexer_.peek().atEnd()) {
      if (!takeDscp() && !takeTtl() && !takeTcpFlag() && !takeIcmp() && !takeWord()) {
        lexer_.fail(
            "a rule option (dscp, ttl, established, ack-or-rst, a TCP flag, an ICMP message, "
            "fragments, log) or end of line");
      }
    }
  }

 private:
  bool takeDscp() {
    if (!lexer_.peek().is("dscp")) {
      return false;
    }
    refuseIf(rule_.dscp.has_value(), "one dscp in a rule");
    lexer_.next();
    std::uint64_t value = 0;
    if (auto const named = dscpNumber(lexer_.peek().text)) {
      value = *named;
    } else if (!parseNumber(lexer_.peek().text, 0, 63, value)) {
      lexer_.fail("dscp 0-63 or a DSCP name");
    }
    lexer_.next();
    rule_.dscp = static_cast<std::uint8_t>(value);
    return true;
  }

  bool takeTtl() {
    if (!lexer_.peek().is("ttl")) {
      return false;
    }
    refuseIf(rule_.ttl.comparison != Comparison::any, "one ttl in a rule");
    lexer_.next();
    Comparison const written = acceptComparison(lexer_);
    rule_.ttl = takeOperands(written == Comparison::any ? Comparison::eq : written, highestTtl,
                             [this](std::uint64_t low, std::uint64_t high) {
                               return takeNumber(lexer_, "ttl", low, high);
                             });
    return true;
  }

  bool takeTcpFlag() {
    std::uint8_t bits = 0;
    for (auto const& flag : tcpFlags) {
      bits = lexer_.peek().is(flag.name) ? flag.bit : bits;
    }
    bool const established = lexer_.peek().is("established");
    bool const ackOrRst = lexer_.peek().is("ack-or-rst");
    if (bits == 0 && !established && !ackOrRst) {
      return false;
    }
    refuseIf(rule_.protocol != protocol::tcp, "protocol tcp before a TCP flag");
    rule_.tcpFlags = static_cast<std::uint8_t>(rule_.tcpFlags | bits);
    rule_.established = rule_.established || established;
    rule_.ackOrRst = rule_.ackOrRst || ackOrRst;
    lexer_.next();
    return true;
  }

  bool takeIcmp() {
    if (rule_.protocol != protocol::icmp && rule_.protocol != protocol::icmp6) {
      return false;
    }
    auto message = icmpMessage(*rule_.protocol, lexer_.peek().text);
    std::uint64_t number = 0;
    bool const numeric = parseNumber(lexer_.peek().text, 0, UINT64_MAX, number);
    if (!message && !numeric) {
      return false;
    }
    refuseIf(rule_.icmp.has_value(), "one ICMP message in a rule");
    if (numeric) {
      message = IcmpMessage{takeIcmpNumber("ICMP type"), std::nullopt};
      if (parseNumber(lexer_.peek().text, 0, UINT64_MAX, number)) {
        message->code = takeIcmpNumber("ICMP code");
      }
    } else {
      lexer_.next();
    }
    rule_.icmp = message;
    return true;
  }

  std::uint8_t takeIcmpNumber(std::string_view what) {
    return static_cast<std::uint8_t>(takeNumber(lexer_, what, 0, 255));
  }

  bool takeWord() {
    if (lexer_.accept("fragments")) {
      rule_.fragments = true;
      return true;
    }
    return lexer_.accept("log") || lexer_.accept("log-input");
  }

  void refuseIf(bool refused, std::string_view expected) const {
    if (refused) {
      lexer_.fail(std::string(expected));
    }
  }

  Lexer& lexer_;
  IpRule& rule_;
};

IpRule parseStandardRule(Lexer& lexer, Verdict verdict) {
  IpRule rule;
  rule.verdict = verdict;
  rule.source = takeIp4Address(lexer, "source", true);
  lexer.accept("log");
  lexer.expectEnd("log or end of line");
  return rule;
}

IpRule parseIpRule(Lexer& lexer, Family family, Verdict verdict) {
  IpRule rule;
  rule.verdict = verdict;
  rule.family = family;
  rule.protocol = takeProtocol(lexer, family);
  rule.source = takeIpAddress(lexer, family, "source");
  rule.sourcePort = takePorts(lexer, rule.protocol);
  rule.destination = takeIpAddress(lexer, family, "destination");
  rule.destinationPort = takePorts(lexer, rule.protocol);
  IpOptions(lexer, rule).takeAll();
  return rule;
}

bool takeEtherType(Lexer& lexer, MacRule& rule) {
  std::uint64_t number = 0;
  auto type = etherTypeNumber(lexer.peek().text);
  if (parseNumber(lexer.peek().text, 0, 0xffff, number) ||
      parseHexNumber(lexer.peek().text, 0xffff, number)) {
    type = static_cast<std::uint16_t>(number);
  }
  if (!type || rule.etherType) {
    return false;
  }
  rule.etherType = type;
  lexer.next();
  return true;
}

bool takeVlan(Lexer& lexer, MacRule& rule) {
  if (rule.vlan || !lexer.accept("vlan")) {
    return false;
  }
  rule.vlan = static_cast<std::uint16_t>(takeNumber(lexer, "vlan", 1, 4094));
  return true;
}

MacRule parseMacRule(Lexer& lexer, Verdict verdict) {
  MacRule rule;
  rule.verdict = verdict;
  rule.source = takeMacAddress(lexer, "source", false);
  rule.destination = takeMacAddress(lexer, "destination", true);
  while (!lexer.peek().atEnd()) {
    if (!takeEtherType(lexer, rule) && !takeVlan(lexer, rule) && !lexer.accept("log")) {
      lexer.fail("an Ethernet type, vlan, log or end of line");
    }
  }
  return rule;
}

}  // namespace

Rule parseRule(Lexer& lexer, RuleKind kind, Verdict verdict) {
  switch (kind) {
  case RuleKind::standardIp4: return parseStandardRule(lexer, verdict);
  case RuleKind::ip4: return parseIpRule(lexer, Family::ip4, verdict);
  case RuleKind::ip6: return parseIpRule(lexer, Family::ip6, verdict);
  case RuleKind::mac: break;
  }
  return parseMacRule(lexer, verdict);
}

}  // namespace lab
