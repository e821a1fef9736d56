// SPDX-License-Identifier: Apache-2.0
#include "packets/HeaderNames.h"
#include "packets/Packet.h"
#include "testkit/text/Address.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/SourceText.h"

#include <algorithm>
#include <optional>
#include <set>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMapTestKit::Text::AddressBytes;
using PolicyMapTestKit::Text::Family;
using PolicyMapTestKit::Text::InputError;
using PolicyMapTestKit::Text::Lexer;
using PolicyMapTestKit::Text::SyntaxFailure;
using PolicyMapTestKit::Text::Token;

// Reads the words of a packet.
class PacketReader {
 public:
  explicit PacketReader(std::string_view text) : lexer_(text) {}

  Box read() {
    Header const header = takeHeader();
    Token const source = lexer_.next();
    bool const isIp6 =
        std::count(source.text.begin(), source.text.end(), ':') > 1 || source.text.starts_with('[');
    Box packet = Box(spaceOf(isIp6 ? ClassMapMatchOption::ipv6 : ClassMapMatchOption::ipv4, header))
                     .lowest();
    takeEndpoint(packet, source, Field::source, Field::sourcePort);
    if (!lexer_.accept(">")) {
      lexer_.fail("'>' between source and destination");
    }
    takeEndpoint(packet, lexer_.next(), Field::destination, Field::destinationPort);
    while (!lexer_.peek().atEnd()) {
      takeField(packet);
    }
    if (header == Header::other || header == Header::fragment) {
      needProtocol(packet);
    }
    return packet;
  }

 private:
  Header takeHeader() {
    for (HeaderName const& each : headerNames) {
      if (lexer_.accept(each.name)) {
        return each.header;
      }
    }
    lexer_.fail("tcp, udp, sctp, icmp, ip or fragment");
  }

  // "10.0.0.1:4000", "[2001:db8::1]:53", "2001:db8::1".
  static void takeEndpoint(Box& packet, Token const& token, Field address, Field port) {
    bool const isIp6 = packet.space().option == ClassMapMatchOption::ipv6;
    std::string_view text = token.text;
    std::string_view number;
    bool const hasPort = packet.space().placeOf(port) != packet.space().fields.size();
    std::string_view const end = isIp6 ? "]:" : ":";
    bool const bracketed = isIp6 && text.starts_with('[');
    if (std::size_t const at = text.find(end);
        at != std::string_view::npos && (!isIp6 || bracketed)) {
      number = text.substr(at + end.size());
      text = text.substr(0, at);
    } else if (bracketed && text.ends_with(']')) {
      text.remove_suffix(1);
    }
    text.remove_prefix(bracketed ? 1 : 0);
    AddressBytes bytes{};
    Family const family = isIp6 ? Family::ip6 : Family::ip4;
    if (!parseAddress(family, text, bytes)) {
      throw SyntaxFailure{isIp6 ? "an IPv6 address" : "an IPv4 address", token};
    }
    Bits value = 0;
    for (std::size_t i = 0; i != addressSize(family); ++i) {
      value = value << 8U | bytes.at(i);
    }
    packet.set(address, {value, packet.of(address).second});
    if (number.empty() && text.size() + (bracketed ? 2 : 0) == token.text.size()) {
      return;
    }
    std::uint64_t parsed = 0;
    if (!hasPort || !PolicyMapTestKit::Text::parseNumber(number, 0, 65535, parsed)) {
      throw SyntaxFailure{hasPort ? "a port 0-65535 after ':'"
                                  : "an address alone, because this header has no ports",
                          token};
    }
    packet.set(port, {parsed, parsed});
  }

  void takeField(Box& packet) {
    Token const word = lexer_.peek();
    for (FlagName const& flag : flagNames) {
      if (word.is(flag.name) && has(packet, Field::tcpFlags)) {
        lexer_.next();
        Range const& before = packet.of(Field::tcpFlags);
        packet.set(Field::tcpFlags, {before.first | flag.bit, before.second});
        return;
      }
    }
    for (Field const field : packet.space().fields) {
      std::string_view const name = traitsOf(field).name;
      bool const isNumber = !traitsOf(field).isTernary && name.find(' ') == std::string_view::npos;
      if (isNumber && word.is(name)) {
        takeNumber(packet, field);
        return;
      }
    }
    lexer_.fail("a field that a packet of this header has");
  }

  void takeNumber(Box& packet, Field field) {
    Token const name = lexer_.next();
    if (!taken_.insert(field).second) {
      throw SyntaxFailure{"each field once", name};
    }
    std::uint64_t const most = (std::uint64_t{1} << packet.space().bitsOf(field)) - 1;
    std::uint64_t number = 0;
    std::optional<std::uint8_t> const known =
        field == Field::dscp ? PolicyMapTestKit::Text::dscpNumber(lexer_.peek().text)
                             : std::nullopt;
    if (known) {
      lexer_.next();
      number = *known;
    } else {
      number = PolicyMapTestKit::Text::takeNumber(lexer_, traitsOf(field).name, 0, most);
    }
    packet.set(field, {number, number});
  }

  void needProtocol(Box const& packet) const {
    Bits const protocol = packet.of(Field::protocol).first;
    auto const& known = packet.space().protocols;
    if (std::none_of(known.begin(), known.end(), [&](auto const& each) {
          return each.first <= protocol && protocol <= each.second;
        })) {
      lexer_.fail("another protocol, or the header of this one");
    }
  }

  static bool has(Box const& packet, Field field) {
    return packet.space().placeOf(field) != packet.space().fields.size();
  }

  Lexer lexer_;
  std::set<Field> taken_;
};

Box read(std::string_view text) {
  try {
    return PacketReader(text).read();
  } catch (SyntaxFailure const& failure) {
    throw InputError({std::make_shared<std::string const>("packet"), 1, failure.found.column},
                     failure.expected, failure.found.text);
  }
}

}  // namespace

Packet::Packet(std::string_view text) : box_(read(text)) {}

}  // namespace PolicyMapPackets
