// SPDX-License-Identifier: Apache-2.0
// The lines of interfaces.

#include "testkit/text/LineParser.h"

namespace PolicyMapTestKit::Text {

namespace {

// An address that the text does not say: it is there, which is what counts.
InterfacePrefix unknownAddress(Family family) {
  return {{}, static_cast<std::uint8_t>(addressSize(family) * 8)};
}

}  // namespace

void LineParser::interface(Lexer& lexer, bool remove) {
  Name name = nameOf(takeName(lexer, "an interface name"));
  char const next = lexer.peek().atEnd() ? ' ' : lexer.peek().text.front();
  if (next >= '0' && next <= '9') {
    name.text += takeName(lexer, "an interface number").text;
  }
  lexer.expectEnd();
  if (remove) {
    emit(InterfaceRemove{std::move(name)});
    return;
  }
  outer_ = withoutColumn(name);
  emit(InterfaceOpen{std::move(name)});
  enter(Mode::interface);
}

void LineParser::address(Lexer& lexer, Family family, bool remove) {
  InterfaceAddress body{outer_, family, std::nullopt, false, remove};
  if (lexer.accept("dhcp") || lexer.accept("negotiated") || lexer.accept("autoconfig")) {
    lexer.rest();
    body.prefix = unknownAddress(family);
    emit(std::move(body));
    return;
  }
  if (!remove || !lexer.peek().atEnd()) {
    isAbout(lexer.peek());
    InterfacePrefix prefix;
    if (parsePrefix(family, lexer.peek().text, prefix.address, prefix.length)) {
      lexer.next();
    } else if (family == Family::ip4 && parseAddress(family, lexer.peek().text, prefix.address)) {
      lexer.next();
      AddressBytes mask{};
      if (!parseAddress(family, lexer.peek().text, mask) || !maskLength(mask, prefix.length)) {
        lexer.fail("a subnet mask");
      }
      lexer.next();
    } else {
      lexer.fail(family == Family::ip4 ? "A/LENGTH or A MASK" : "A/LENGTH");
    }
    body.prefix = prefix;
    body.secondary = family == Family::ip4 && lexer.accept("secondary");
  }
  lexer.expectEnd();
  emit(std::move(body));
}

void LineParser::switchport(Lexer& lexer, bool remove) {
  // What is switched how does not count here.
  static constexpr std::array<std::string_view, 9> details = {
      "access",        "block",    "general", "mode", "nonegotiate",
      "port-security", "priority", "trunk",   "voice"};
  if (contains(details, lexer.peek())) {
    lexer.rest();
    return;
  }
  lexer.expectEnd();
  emit(InterfaceSwitchport{outer_, !remove});
}

void LineParser::shutdown(Lexer& lexer, bool remove) {
  lexer.expectEnd();
  emit(InterfaceShutdown{outer_, !remove});
}

void LineParser::channelGroup(Lexer& lexer, bool remove) {
  InterfaceChannelGroup body{outer_, std::nullopt, remove};
  if (remove && !lexer.peek().atEnd()) {
    isAbout(lexer.peek());
  }
  if (!remove || !lexer.peek().atEnd()) {
    body.group = static_cast<std::uint32_t>(takeNumber(lexer, "channel-group", 1, 65535));
  }
  if (!remove && lexer.accept("mode")) {
    takeName(lexer, "a channel-group mode");
  }
  lexer.expectEnd(remove ? "end of line" : "mode or end of line");
  emit(std::move(body));
}

void LineParser::servicePolicy(Lexer& lexer, bool remove) {
  takeType(lexer);
  ServicePolicy body{outer_, Direction::input, std::nullopt, remove};
  if (lexer.accept("output") || lexer.accept("out")) {
    body.direction = Direction::output;
  } else if (!lexer.accept("input") && !lexer.accept("in")) {
    lexer.fail("input or output");
  }
  if (!remove || !lexer.peek().atEnd()) {
    body.policyMap = nameOf(takeName(lexer, "a policy-map name"));
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// `ip unnumbered INTERFACE`: it has an address of another interface.
void LineParser::unnumbered(Lexer& lexer, bool remove) {
  lexer.rest();
  emit(InterfaceAddress{outer_, Family::ip4, unknownAddress(Family::ip4), false, remove});
}

void LineParser::accessGroup(Lexer& lexer, Family family, bool remove) {
  lexer.accept("name");
  InterfaceAccessGroup body{outer_, Direction::input, {family, {}}, remove};
  body.list.name = nameOf(takeName(lexer, "an access-list name"));
  if (lexer.accept("out") || lexer.accept("output") || lexer.accept("egress")) {
    body.direction = Direction::output;
  } else if (!lexer.accept("in") && !lexer.accept("input") && !lexer.accept("ingress")) {
    lexer.fail("in or out");
  }
  lexer.rest();
  emit(std::move(body));
}

void LineParser::zoneMember(Lexer& lexer, bool remove) {
  InterfaceZone body{outer_, {}, remove};
  if (!remove || !lexer.peek().atEnd()) {
    body.zone = takeName(lexer, "a zone").text;
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// `addport 1/10`: a member of the port-channel with these bare numbers.
void LineParser::addPort(Lexer& lexer, bool remove) {
  InterfaceChannelGroup body{outer_, std::nullopt, remove};
  body.bare = nameOf(takeName(lexer, "a port-channel"));
  lexer.expectEnd();
  emit(std::move(body));
}

// Zones and port-channels

void LineParser::zone(Lexer& lexer, bool /*remove*/) {
  if (!lexer.accept("security")) {
    lexer.fail("security");
  }
  takeName(lexer, "a zone");
  lexer.expectEnd();
}

void LineParser::zonePair(Lexer& lexer, bool remove) {
  if (!lexer.accept("security")) {
    lexer.fail("security");
  }
  ZonePairOpen body;
  body.zonePair = nameOf(takeName(lexer, "the name of a zone-pair"));
  if (remove) {
    lexer.rest();
    emit(ZonePairRemove{std::move(body.zonePair)});
    return;
  }
  for (auto const& [word, zone] : {std::pair{"source", &ZonePairOpen::source},
                                   std::pair{"destination", &ZonePairOpen::destination}}) {
    if (lexer.accept(word)) {
      body.*zone = takeName(lexer, "a zone").text;
    }
  }
  lexer.expectEnd("source ZONE destination ZONE");
  outer_ = withoutColumn(body.zonePair);
  emit(std::move(body));
  enter(Mode::zonePair);
}

void LineParser::zonePairPolicy(Lexer& lexer, bool remove) {
  takeType(lexer);
  ZonePairPolicy body{outer_, std::nullopt, remove};
  if (!remove || !lexer.peek().atEnd()) {
    body.policyMap = nameOf(takeName(lexer, "a policy-map name"));
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// `port-channel name 1/10 TEXT`.
void LineParser::portChannel(Lexer& lexer, bool /*remove*/) {
  PortChannelName body{nameOf(takeName(lexer, "the numbers of a port-channel"))};
  lexer.rest();
  emit(std::move(body));
}

}  // namespace PolicyMapTestKit::Text
