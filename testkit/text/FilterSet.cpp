// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/FilterSet.h"

#include "testkit/text/Lexer.h"
#include "testkit/text/PortNames.h"

#include <algorithm>
#include <string>

namespace PolicyMapTestKit::Text {

namespace {

// Parses one line of a set. The first rule determines the family.
class FilterLine {
 public:
  FilterLine(std::string_view line, Family family, bool familyKnown)
      : lexer_(line), family_(family), familyKnown_(familyKnown) {}

  bool empty() const { return lexer_.peek().atEnd(); }
  Family family() const { return family_; }

  FilterRule parse(PortRanges portRanges) {
    FilterRule rule;
    rule.source = takeSource();
    rule.destination = takePrefix(lexer_.peek().text);
    Lexer const atSourcePort = lexer_;
    rule.sourcePort = takeRange();
    Lexer const atDestinationPort = lexer_;
    rule.destinationPort = takeRange();
    takeProtocol(rule);
    takePair("flags/mask", 0xffff, rule.flags, rule.flagsMask);
    lexer_.expectEnd();
    bool const portsAllowed =
        portRanges == PortRanges::onAnyProtocol || (rule.protocol && hasPorts(*rule.protocol));
    if (!portsAllowed && !(rule.sourcePort.isAny() && rule.destinationPort.isAny())) {
      Lexer const& where = rule.sourcePort.isAny() ? atDestinationPort : atSourcePort;
      where.fail("0 : 65535 on a protocol other than tcp, udp and sctp");
    }
    return rule;
  }

 private:
  Address takeSource() {
    std::string_view const text = lexer_.peek().text;
    if (text.empty() || text.front() != '@') {
      lexer_.fail("@SOURCE/LENGTH");
    }
    std::string_view const prefix = text.substr(1);
    if (!familyKnown_ && prefix.find(':') != std::string_view::npos) {
      family_ = Family::ip6;
    }
    return takePrefix(prefix);
  }

  Address takePrefix(std::string_view text) {
    AddressBytes bytes{};
    std::uint8_t length = 0;
    if (!parsePrefix(family_, text, bytes, length)) {
      lexer_.fail(family_ == Family::ip4 ? "an IPv4 prefix" : "an IPv6 prefix");
    }
    lexer_.next();
    return maskedAddress(bytes, prefixMask(length));
  }

  PortRange takeRange() {
    std::uint64_t const low = takeNumber(lexer_, "port", 0, 65535);
    if (!lexer_.accept(":")) {
      lexer_.fail("':' between two ports");
    }
    std::uint64_t const high = takeNumber(lexer_, "port", low, 65535);
    return {static_cast<std::uint16_t>(low), static_cast<std::uint16_t>(high)};
  }

  void takeProtocol(FilterRule& rule) {
    std::uint16_t protocol = 0;
    std::uint16_t mask = 0;
    Lexer const before = lexer_;
    takePair("protocol/mask", 0xff, protocol, mask);
    if (mask != 0x00 && mask != 0xff) {
      before.fail("protocol mask 0x00 or 0xFF");
    }
    if (mask != 0) {
      rule.protocol = static_cast<std::uint8_t>(protocol);
    }
  }

  void takePair(std::string_view what, std::uint64_t highest, std::uint16_t& value,
                std::uint16_t& mask) {
    std::string_view const text = lexer_.peek().text;
    std::size_t const slash = std::min(text.find('/'), text.size());
    std::uint64_t parsedValue = 0;
    std::uint64_t parsedMask = 0;
    if (slash == text.size() || !parseHexNumber(text.substr(0, slash), highest, parsedValue) ||
        !parseHexNumber(text.substr(slash + 1), highest, parsedMask)) {
      lexer_.fail(std::string(what) + " in hexadecimal");
    }
    lexer_.next();
    value = static_cast<std::uint16_t>(parsedValue);
    mask = static_cast<std::uint16_t>(parsedMask);
  }

  Lexer lexer_;
  Family family_;
  bool familyKnown_;
};

}  // namespace

FilterSet readFilterSet(SourceText const& source, PortRanges portRanges) {
  FilterSet set;
  std::string_view const content = source.content();
  constexpr std::size_t shortestLine = 32;  // shorter ones are no rules
  set.rules.reserve(
      std::min(static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n')),
               content.size() / shortestLine) +
      1);
  LineReader reader(source);
  while (reader.next()) {
    FilterLine line(reader.line(), set.family, !set.rules.empty());
    if (line.empty()) {
      continue;
    }
    try {
      set.rules.push_back(line.parse(portRanges));
    } catch (SyntaxFailure const& failure) {
      throw InputError(reader.position(failure.found.column), failure.expected, failure.found.text);
    }
    set.rules.back().line = reader.number();
    set.family = line.family();
  }
  return set;
}

}  // namespace PolicyMapTestKit::Text
