// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/MatchConditions.h"

#include "testkit/text/Address.h"
#include "testkit/text/ConditionReasons.h"
#include "testkit/text/IpOptions.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/RuleConversion.h"
#include "testkit/text/RuleParser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

// Names of services that are not those of their ports. A port is a name, or a number of tcp.
struct Service {
  std::string_view name;
  std::string_view port;
};
constexpr std::array services{
    Service{"cifs", "445"},
    Service{"ftps", "990"},
    Service{"h323", "1720"},
    Service{"ms-sql", "1433"},
    Service{"dns", "domain"},
    Service{"secure-http", "https"},
    Service{"dhcp", "bootps"},
    Service{"secure-imap", "imaps"},
    Service{"secure-ldap", "ldaps"},
    Service{"secure-pop3", "pop3s"},
    Service{"ipsec-nat", "non500-isakmp"},
};

// Which families a condition on IP packets is about.
struct Families {
  bool ip4 = true;
  bool ip6 = true;
};

class ConditionParser {
 public:
  explicit ConditionParser(Lexer& lexer) : lexer_(lexer) {}

  std::optional<MatchCondition> parse() {
    Lexer const before = lexer_;
    if (std::string_view const reason = reasonAhead(); !reason.empty()) {
      return unknownCondition(lexer_);
    }
    if (lexer_.accept("not")) {
      return negated(before);
    }
    if (!takeKind()) {
      lexer_ = before;
      return std::nullopt;
    }
    lexer_.expectEnd("another value or end of line");
    return std::move(condition_);
  }

 private:
  using Taker = void (ConditionParser::*)();
  struct Kind {
    std::string_view word;
    Taker take;
  };

  [[nodiscard]] std::string_view reasonAhead() const {
    Lexer ahead = lexer_;
    return knownReason(ahead.rest().text);
  }

  bool takeKind() {
    static constexpr std::array kinds{
        Kind{"any", &ConditionParser::takeAny},
        Kind{"dscp", &ConditionParser::takeDscp},
        Kind{"precedence", &ConditionParser::takePrecedence},
        Kind{"protocol", &ConditionParser::takeProtocol},
        Kind{"vlan", &ConditionParser::takeVlan},
        Kind{"cos", &ConditionParser::takeCos},
        Kind{"mpls", &ConditionParser::takeMplsExperimental},
        Kind{"ethertype", &ConditionParser::takeEtherType},
        Kind{"icmp-type", &ConditionParser::takeIcmpType},
        Kind{"ttl", &ConditionParser::takeTtl},
        Kind{"srcl4port", &ConditionParser::takeSourcePort},
        Kind{"dstl4port", &ConditionParser::takeDestinationPort},
        Kind{"srcip", &ConditionParser::takeSource},
        Kind{"dstip", &ConditionParser::takeDestination},
        Kind{"srcip6", &ConditionParser::takeSource6},
        Kind{"dstip6", &ConditionParser::takeDestination6},
        Kind{"source-address", &ConditionParser::takeSourceAddress},
        Kind{"destination-address", &ConditionParser::takeDestinationAddress},
        Kind{"source-port", &ConditionParser::takeSourcePort},
        Kind{"destination-port", &ConditionParser::takeDestinationPort},
    };
    Token const first = lexer_.peek();
    bool const ip = first.is("ip") || first.is("ipv4");
    if (ip || first.is("ipv6")) {
      static constexpr std::array<std::string_view, 4> ofFamily = {"dscp", "icmp-type",
                                                                   "precedence", "ttl"};
      Token const second = lexer_.peekSecond();
      if (std::none_of(ofFamily.begin(), ofFamily.end(),
                       [&](std::string_view word) { return second.is(word); })) {
        return false;
      }
      lexer_.next();
      families_ = {.ip4 = ip, .ip6 = !ip};
      say(ip ? "ip" : "ipv6");
    }
    for (Kind const& kind : kinds) {
      if (lexer_.accept(kind.word)) {
        bool const named = kind.word == "dscp" || kind.word == "precedence";
        if (named && lexer_.accept("ipv4")) {
          families_.ip6 = false;
          say("ip");
        } else if (named && lexer_.accept("ipv6")) {
          families_.ip4 = false;
          say("ipv6");
        }
        say(kind.word);
        (this->*kind.take)();
        return true;
      }
    }
    return false;
  }

  // Not: the packets of all other kinds, and those that the rules deny.
  std::optional<MatchCondition> negated(Lexer const& before) {
    std::optional<MatchCondition> inner = ConditionParser(lexer_).parse();
    if (!inner) {
      lexer_ = before;
      return std::nullopt;
    }
    inner->text = "not " + inner->text;
    bool layer2 = false;
    for (ConfiguredRule& rule : inner->rules) {
      std::visit([](auto& some) { some.permitIs(false); }, rule);
      layer2 = layer2 || std::holds_alternative<Acl::MacRuleConfig>(rule);
    }
    if (layer2) {
      inner->rules.emplace_back(Acl::MacRuleConfig());
    } else {
      inner->rules.emplace_back(Acl::IpRuleConfig());
      inner->rules.emplace_back(Acl::Ip6RuleConfig());
    }
    return inner;
  }

  void say(std::string_view word) {
    condition_.text.append(condition_.text.empty() ? "" : " ").append(word);
  }
  void say(std::uint64_t number) { say(std::to_string(number)); }

  // Adds a rule for each family, which `edit` changes.
  template <class Edit>
  void add(Edit const& edit) {
    if (families_.ip4) {
      Acl::IpRuleConfig rule;
      edit(rule);
      condition_.rules.emplace_back(rule);
    }
    if (families_.ip6) {
      Acl::Ip6RuleConfig rule;
      edit(rule);
      condition_.rules.emplace_back(rule);
    }
  }
  void addMac(Acl::MacRuleConfig const& rule) { condition_.rules.emplace_back(rule); }

  // Values until the end of the line, at least one, each once.
  template <class Take>
  std::vector<std::uint64_t> takeValues(Take const& take) {
    std::vector<std::uint64_t> values;
    auto const add = [&](std::uint64_t value) {
      if (std::find(values.begin(), values.end(), value) == values.end()) {
        values.push_back(value);
        say(value);
      }
    };
    do {
      if (!takeList(take, add)) {
        add(take(lexer_));
      }
    } while (!lexer_.peek().atEnd());
    return values;
  }

  // Takes a word such as `10,12-14`. Returns false if the next word is no such list.
  template <class Take, class Add>
  bool takeList(Take const& take, Add const& add) {
    std::string_view const word = lexer_.peek().text;
    bool const isList = word.find(',') != std::string_view::npos ||
                        (word.find('-') != std::string_view::npos && isDigit(word.front()));
    if (!isList) {
      return false;
    }
    Lexer const before = lexer_;
    try {
      for (std::size_t from = 0; from <= word.size();) {
        std::size_t const comma = std::min(word.find(',', from), word.size());
        std::string_view const item = word.substr(from, comma - from);
        if (item.empty() && from == word.size() && !lexer_.peekSecond().atEnd()) {
          break;  // "ef, cs5"
        }
        std::size_t const hyphen = item.find('-');
        bool const isRange = hyphen != std::string_view::npos && isDigit(item.front());
        Lexer low(isRange ? item.substr(0, hyphen) : item);
        Lexer high(isRange ? item.substr(hyphen + 1) : item);
        std::uint64_t const last = take(high);
        std::uint64_t const first = take(low);
        if (last < first) {
          lexer_.fail("a range whose second value is not lower");
        }
        for (std::uint64_t value = first; value <= last; ++value) {
          add(value);
        }
        from = comma + 1;
      }
    } catch (SyntaxFailure const& failure) {
      before.fail(failure.expected);
    }
    lexer_.next();
    return true;
  }

  void takeAny() {
    add([](auto& /*rule*/) {});
  }

  void takeDscp() {
    for (std::uint64_t const value : takeValues(&takeDscpValue)) {
      add([&](auto& rule) { rule.dscpIs(value); });
    }
  }

  void takePrecedence() {
    for (std::uint64_t const value : takeValues(&takePrecedenceValue)) {
      for (std::uint8_t const dscp : dscpsOf(value)) {
        add([&](auto& rule) { rule.dscpIs(dscp); });
      }
    }
  }

  // A MAC rule for each of the numbers.
  void takeMacNumbers(std::string_view what, std::uint64_t low, std::uint64_t high,
                      void (Acl::MacRuleConfig::*set)(Acl::OptionalNumber)) {
    for (std::uint64_t const number :
         takeValues([&](Lexer& lexer) { return takeNumber(lexer, what, low, high); })) {
      Acl::MacRuleConfig rule;
      (rule.*set)(number);
      addMac(rule);
    }
  }
  void takeVlan() { takeMacNumbers("vlan", 1, 4094, &Acl::MacRuleConfig::vlanIs); }
  void takeCos() { takeMacNumbers("cos", 0, 7, &Acl::MacRuleConfig::cosIs); }
  void takeMplsExperimental() {
    if (!lexer_.accept("experimental")) {
      lexer_.fail("experimental");
    }
    say("experimental");
    lexer_.accept("topmost");
    takeMacNumbers("experimental", 0, 7, &Acl::MacRuleConfig::mplsExperimentalIs);
  }

  void takeEtherType() {
    std::optional<std::uint16_t> const type = acceptEtherType(lexer_);
    if (!type) {
      lexer_.fail("an Ethernet type 0-0xffff or its name");
    }
    say(*type);
    Acl::MacRuleConfig rule;
    rule.ethertypeIs(*type);
    addMac(rule);
  }

  void takeTtl() {
    for (std::uint64_t const ttl :
         takeValues([](Lexer& lexer) { return takeNumber(lexer, "ttl", 0, 255); })) {
      add([&](auto& rule) { rule.ttlIs(Acl::TtlMatch::eq(static_cast<std::int64_t>(ttl))); });
    }
  }

  void takeIcmpType() {
    for (std::uint64_t const type :
         takeValues([](Lexer& lexer) { return takeNumber(lexer, "ICMP type", 0, 255); })) {
      if (families_.ip4) {
        addIcmp<Acl::IpRuleConfig>(protocol::icmp, type);
      }
      if (families_.ip6) {
        addIcmp<Acl::Ip6RuleConfig>(protocol::icmp6, type);
      }
    }
  }
  template <class Rule>
  void addIcmp(std::uint8_t protocol, std::uint64_t type) {
    Rule rule;
    rule.protocolIs(protocol);
    rule.icmpTypeIs(type);
    condition_.rules.emplace_back(rule);
  }

  // `tcp udp` is a list. With a word that is no protocol, no header tells it.
  void takeProtocol() {
    do {
      families_ = {true, true};
      std::string const name = lowerCase(takeName(lexer_, "a protocol").text);
      say(name);
      if (name == "smtp") {
        lexer_.accept("extended");
      }
      if (!addProtocol(name)) {
        condition_.rules.clear();
        while (!lexer_.peek().atEnd()) {
          say(lowerCase(lexer_.next().text));
        }
      }
    } while (!lexer_.peek().atEnd());
  }

  // Returns false if the name is unknown, or of what is recognised by content.
  bool addProtocol(std::string const& name) {
    std::uint64_t number = 0;
    if (name == "ip" || name == "ipv4") {
      families_.ip6 = false;
      add([](auto& /*rule*/) {});
    } else if (name == "ipv6") {
      families_.ip4 = false;
      add([](auto& /*rule*/) {});
    } else if (name == "arp") {
      Acl::MacRuleConfig rule;
      rule.ethertypeIs(*etherTypeNumber(name));
      addMac(rule);
    } else if (parseNumber(name, 0, 255, number)) {
      add([&](auto& rule) { rule.protocolIs(static_cast<std::uint16_t>(number)); });
    } else {
      return takeProtocolNamed(name) || takeService(name);
    }
    return true;
  }

  bool takeProtocolNamed(std::string const& name) {
    auto const ip4 = protocolNumber(Family::ip4, name);
    auto const ip6 = protocolNumber(Family::ip6, name);
    if (!ip4 || !ip6) {
      return false;
    }
    families_ = {true, false};
    add([&](auto& rule) { rule.protocolIs(*ip4); });
    families_ = {false, true};
    add([&](auto& rule) { rule.protocolIs(*ip6); });
    return true;
  }

  // Packets to the well-known port.
  bool takeService(std::string const& name) {
    auto const alias = std::find_if(services.begin(), services.end(),
                                    [&](Service const& each) { return each.name == name; });
    std::string_view const port = alias == services.end() ? name : alias->port;
    std::size_t const before = condition_.rules.size();
    for (std::uint8_t const transport : {protocol::tcp, protocol::udp}) {
      auto number = portNumber(transport, port);
      std::uint64_t ofTcp = 0;
      if (transport == protocol::tcp && parseNumber(port, 0, Acl::PortMatch::highest, ofTcp)) {
        number = static_cast<std::uint16_t>(ofTcp);
      }
      if (number) {
        add([&](auto& rule) {
          rule.protocolIs(transport);
          rule.dstPortIs(Acl::PortMatch::eq(*number));
        });
      }
    }
    return condition_.rules.size() != before;
  }

  // Ports, ranges such as `1024-2000`, and lists of them.
  template <class Set>
  void takePort(Set const& set) {
    do {
      Lexer const before = lexer_;
      std::string_view word = takeName(lexer_, "a port").text;
      try {
        while (!word.empty()) {
          std::size_t const comma = std::min(word.find(','), word.size());
          addPorts(portsIn(word.substr(0, comma)), set);
          word.remove_prefix(std::min(comma + 1, word.size()));
        }
      } catch (SyntaxFailure const& failure) {
        before.fail(failure.expected);
      }
    } while (!lexer_.peek().atEnd());
  }
  template <class Set>
  void addPorts(Acl::PortMatch const& ports, Set const& set) {
    for (std::uint8_t const transport : {protocol::tcp, protocol::udp}) {
      add([&](auto& rule) {
        rule.protocolIs(transport);
        set(rule, ports);
      });
    }
  }
  Acl::PortMatch portsIn(std::string_view item) {
    std::size_t const hyphen = item.find('-');
    bool const isRange = hyphen != std::string_view::npos && isDigit(item.front());
    Lexer low(isRange ? item.substr(0, hyphen) : item);
    std::uint64_t const first = takePortOfTransports(low);
    if (!isRange) {
      say(first);
      return Acl::PortMatch::eq(static_cast<std::int64_t>(first));
    }
    Lexer high(item.substr(hyphen + 1));
    std::uint64_t const last = takeNumber(high, "port", first, Acl::PortMatch::highest);
    say(std::to_string(first) + "-" + std::to_string(last));
    return Acl::PortMatch::range(static_cast<std::int64_t>(first), static_cast<std::int64_t>(last));
  }
  static std::uint64_t takePortOfTransports(Lexer& lexer) {
    std::string_view const word = lexer.peek().text;
    auto port = portNumber(protocol::tcp, word);
    port = port ? port : portNumber(protocol::udp, word);
    if (!port) {
      return takeNumber(lexer, "port", 0, 65535);
    }
    lexer.next();
    return *port;
  }
  void takeSourcePort() {
    takePort([](auto& rule, Acl::PortMatch const& match) { rule.srcPortIs(match); });
  }
  void takeDestinationPort() {
    takePort([](auto& rule, Acl::PortMatch const& match) { rule.dstPortIs(match); });
  }

  // `A MASK`, with the mask of a subnet, or `A/LENGTH`.
  Address takeSubnet(Family family) {
    AddressBytes bytes{};
    std::uint8_t length = 0;
    Token const word = lexer_.peek();
    if (parsePrefix(family, word.text, bytes, length)) {
      say(lowerCase(lexer_.next().text));
      return maskedAddress(bytes, prefixMask(length));
    }
    if (!parseAddress(family, word.text, bytes)) {
      lexer_.fail("A MASK or A/LENGTH");
    }
    say(lowerCase(lexer_.next().text));
    AddressBytes mask{};
    if (!parseAddress(family, lexer_.peek().text, mask)) {
      lexer_.fail("a subnet mask");
    }
    say(lowerCase(lexer_.next().text));
    return maskedAddress(bytes, mask);
  }
  void takeSource() { addAddresses<Acl::IpRuleConfig>(Family::ip4, true); }
  void takeDestination() { addAddresses<Acl::IpRuleConfig>(Family::ip4, false); }
  void takeSource6() { addAddresses<Acl::Ip6RuleConfig>(Family::ip6, true); }
  void takeDestination6() { addAddresses<Acl::Ip6RuleConfig>(Family::ip6, false); }

  // `ipv4 A MASK`, `ipv6 A/LENGTH`, `mac M`.
  void takeSourceAddress() { addWrittenAddress(true); }
  void takeDestinationAddress() { addWrittenAddress(false); }
  void addWrittenAddress(bool isSource) {
    if (lexer_.accept("ipv6")) {
      say("ipv6");
      addAddresses<Acl::Ip6RuleConfig>(Family::ip6, isSource);
    } else if (lexer_.accept("mac")) {
      say("mac");
      addMacAddress(isSource);
    } else {
      lexer_.accept("ipv4");
      addAddresses<Acl::IpRuleConfig>(Family::ip4, isSource);
    }
  }
  void addMacAddress(bool isSource) {
    AddressBytes bytes{};
    if (!parseAddress(Family::mac, lexer_.peek().text, bytes)) {
      lexer_.fail("a MAC address");
    }
    say(lowerCase(lexer_.next().text));
    auto const match = addressMatch<Acl::MacAddressMatch>(
        maskedAddress(bytes, prefixMask(addressSize(Family::mac) * 8)));
    Acl::MacRuleConfig rule;
    if (isSource) {
      rule.sourceIs(match);
    } else {
      rule.destinationIs(match);
    }
    addMac(rule);
  }

  template <class Rule>
  void addAddresses(Family family, bool isSource) {
    auto const match = addressMatch<typename Rule::AddressMatch>(takeSubnet(family));
    Rule rule;
    if (isSource) {
      rule.sourceIs(match);
    } else {
      rule.destinationIs(match);
    }
    condition_.rules.emplace_back(rule);
  }

  Lexer& lexer_;
  Families families_;
  MatchCondition condition_;
};

}  // namespace

std::optional<MatchCondition> takeCondition(Lexer& lexer) {
  return ConditionParser(lexer).parse();
}

MatchCondition unknownCondition(Lexer& lexer) {
  constexpr std::size_t longest = 200;  // it becomes a name
  MatchCondition condition;
  while (!lexer.peek().atEnd() && condition.text.size() < longest) {
    std::string_view const word = lexer.next().text;
    condition.text.append(condition.text.empty() ? lowerCase(word) : " " + std::string(word));
  }
  lexer.rest();
  if (condition.text.empty()) {
    condition.text = "an empty condition";
  }
  condition.text.resize(std::min(condition.text.size(), longest));
  return condition;
}

std::string conditionName(std::string_view condition) {
  return "match " + std::string(condition);
}

bool isConditionName(std::string_view classMap) {
  return classMap.starts_with(conditionName(""));
}

std::string_view conditionWords() {
  return "access-group, class-map, ip, ipv6, mac, any, dscp, precedence, protocol, vlan, cos, "
         "mpls, "
         "ethertype, ttl, srcl4port, dstl4port, srcip, dstip, source-address, destination-address, "
         "source-port or destination-port";
}

}  // namespace PolicyMapTestKit::Text
