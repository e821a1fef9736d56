// SPDX-License-Identifier: Apache-2.0
// The lines of interfaces.

#include "testkit/text/LineParser.h"

#include <algorithm>

namespace PolicyMapTestKit::Text {

namespace {

// An address that the text does not say: it is there, which is what counts.
InterfacePrefix unknownAddress(Family family) {
  return {{}, static_cast<std::uint8_t>(addressSize(family) * 8)};
}

constexpr std::size_t mostOfRange = 1024;

std::string_view trimmed(std::string_view text) {
  std::size_t const first = text.find_first_not_of(" \t");
  std::size_t const last = text.find_last_not_of(" \t");
  return first == std::string_view::npos ? "" : text.substr(first, last - first + 1);
}

// The place of the hyphen of a range: a digit precedes it. No place: npos.
std::size_t hyphenOf(std::string_view text) {
  for (std::size_t i = text.find('-'); i != std::string_view::npos; i = text.find('-', i + 1)) {
    std::string_view const before = trimmed(text.substr(0, i));
    if (!before.empty() && isDigit(before.back())) {
      return i;
    }
  }
  return std::string_view::npos;
}

bool hasRange(std::string_view name) {
  return hyphenOf(name) != std::string_view::npos;
}

// The length of the digits at the end.
std::size_t digitsAtEnd(std::string_view text) {
  std::size_t length = 0;
  while (length != text.size() && isDigit(text[text.size() - 1 - length])) {
    ++length;
  }
  return length;
}

// "Ethernet1/1 - 4, Ethernet1/7": the names of the interfaces; none if it is no such text.
std::vector<std::string> interfacesIn(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    std::size_t const comma = std::min(text.find(','), text.size());
    std::string_view const item = trimmed(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
    std::size_t const hyphen = std::min(hyphenOf(item), item.size());
    std::string_view const first = trimmed(item.substr(0, hyphen));
    std::string_view const last = hyphen == item.size() ? first : trimmed(item.substr(hyphen + 1));
    std::size_t const digits = digitsAtEnd(first);
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (!parseNumber(first.substr(first.size() - digits), 0, highestWord, low) ||
        !parseNumber(last.substr(last.size() - digitsAtEnd(last)), low, highestWord, high) ||
        high - low >= mostOfRange - names.size()) {
      return {};
    }
    for (std::uint64_t number = low; number <= high; ++number) {
      names.push_back(std::string(first.substr(0, first.size() - digits)) + std::to_string(number));
    }
  }
  return names;
}

}  // namespace

void LineParser::interface(Lexer& lexer, bool remove) {
  lexer.accept("preconfigure");
  bool const isRange = lexer.accept("range") || hasRange(lexer.peek().text);
  Name name = nameOf(lexer.peek());
  std::vector<std::string> names;
  if (isRange) {
    Lexer const before = lexer;
    names = interfacesIn(lexer.rest().text);
    if (names.empty()) {
      before.fail("interfaces such as Ethernet1/1 - 4, Ethernet1/7, at most " +
                  std::to_string(mostOfRange));
    }
  } else {
    names.emplace_back(takeName(lexer, "an interface name").text);
    if (!lexer.peek().atEnd() && isDigit(lexer.peek().text.front())) {
      names.front() += takeName(lexer, "an interface number").text;
    }
    if (lexer.accept("type")) {
      takeName(lexer, "a type");
    }
    lexer.accept("point-to-point") || lexer.accept("multipoint") || lexer.accept("l2transport");
  }
  lexer.expectEnd();
  interfaces_.clear();
  for (std::string const& each : names) {
    name.text = each;
    if (remove) {
      emit(InterfaceRemove{name});
    } else {
      emit(InterfaceOpen{name, lenient_});
      interfaces_.push_back(withoutColumn(name));
    }
  }
  if (!remove) {
    outer_ = interfaces_.back();
    enter(Mode::interface);
  }
}

void LineParser::address(Lexer& lexer, Family family, bool remove) {
  InterfaceAddress body{outer_, family, std::nullopt, false, remove};
  bool const linkLocal = family == Family::ip6 && lexer.peekSecond().is("link-local");
  if (linkLocal || lexer.accept("dhcp") || lexer.accept("negotiated") ||
      lexer.accept("autoconfig")) {
    lexer.rest();
    body.prefix = unknownAddress(family);
    emit(std::move(body));
    return;
  }
  lexer.accept("virtual");
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
    if (family == Family::ip6) {
      lexer.accept("eui-64") || lexer.accept("anycast");
    }
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
  ServicePolicy body{outer_, takeType(lexer), Direction::input, std::nullopt, remove};
  if (lexer.accept("output") || lexer.accept("out")) {
    body.direction = Direction::output;
  } else if (!lexer.accept("input") && !lexer.accept("in")) {
    lexer.fail("input or output");
  }
  if (!remove || !lexer.peek().atEnd()) {
    body.policyMap = nameOfType(takeName(lexer, "a policy-map name"), body.type);
  }
  // How a device counts and shares it.
  static constexpr std::array<std::string_view, 4> details = {
      "account", "no-stats", "shared-policy-instance", "subscriber-parent"};
  if (contains(details, lexer.peek())) {
    lexer.rest();
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// `ip unnumbered INTERFACE`: it has an address of another interface.
void LineParser::unnumbered(Lexer& lexer, bool remove) {
  lexer.rest();
  emit(InterfaceAddress{outer_, Family::ip4, unknownAddress(Family::ip4), false, remove});
}

// `ipv6 enable`: it has a link-local address.
void LineParser::ip6Enable(Lexer& lexer, bool remove) {
  lexer.expectEnd();
  emit(InterfaceAddress{outer_, Family::ip6, unknownAddress(Family::ip6), false, remove});
}

// `no ip access-group in` names no list.
void LineParser::accessGroup(Lexer& lexer, Family family, bool remove, bool ofPort) {
  lexer.accept("name");
  InterfaceAccessGroup body{outer_, Direction::input, family, std::nullopt, 0, remove};
  if (!remove || !lexer.peekSecond().atEnd()) {
    body.list = nameOf(takeName(lexer, "an access-list name"));
  }
  // Old texts have no direction, which means out; at a port it means in.
  if (lexer.accept("out") || lexer.accept("output") || lexer.accept("egress") ||
      (lexer.peek().atEnd() && !remove && family == Family::ip4 && !ofPort)) {
    body.direction = Direction::output;
  } else if (!lexer.accept("in") && !lexer.accept("input") && !lexer.accept("ingress") &&
             !(ofPort && lexer.peek().atEnd())) {
    lexer.fail("in or out");
  }
  body.priority = takePriority(lexer);
  // What a device counts.
  if (lenient_ || lexer.peek().is("hardware-count") || lexer.peek().is("interface-statistics")) {
    lexer.rest();
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// The number after the direction; 0 without one.
std::uint32_t LineParser::takePriority(Lexer& lexer) {
  std::uint64_t number = 0;
  if (parseNumber(lexer.peek().text, 1, highestWord, number)) {
    lexer.next();
  }
  return static_cast<std::uint32_t>(number);
}

// `ip port access-group NAME in`.
void LineParser::ofPort(Lexer& lexer, Family family, bool remove) {
  if (!lexer.accept("access-group") && !lexer.accept("traffic-filter")) {
    lexer.fail("access-group");
  }
  accessGroup(lexer, family, remove, true);
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
  lexer.rest();
  enter(Mode::zone);
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
