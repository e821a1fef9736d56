// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/MatchConditions.h"

#include "testkit/text/Address.h"
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

constexpr std::string_view notInHeaders = "a header does not tell it";
constexpr std::string_view noField = "rules do not have this field";
constexpr std::string_view notInRules = "rules cannot say it";
constexpr std::string_view notUnderstood = "not understood";

// The beginnings of conditions that no rule expresses.
struct Inexpressible {
  std::string_view word;
  std::string_view reason;
};

constexpr std::array inexpressible{
    Inexpressible{"cos", noField},
    Inexpressible{"mpls", noField},
    Inexpressible{"packet", noField},
    Inexpressible{"ip rtp", notInRules},
    Inexpressible{"not access-group", notInRules},
    Inexpressible{"not class-map", notInRules},
    Inexpressible{"application", notInHeaders},
    Inexpressible{"application-group", notInHeaders},
    Inexpressible{"atm", notInHeaders},
    Inexpressible{"authentication", notInHeaders},
    Inexpressible{"discard-class", notInHeaders},
    Inexpressible{"flow", notInHeaders},
    Inexpressible{"fr-dlci", notInHeaders},
    Inexpressible{"input-interface", notInHeaders},
    Inexpressible{"qos-group", notInHeaders},
    Inexpressible{"traffic-category", notInHeaders},
    Inexpressible{"user-group", notInHeaders},
};

// Names of services that are not those of their ports.
struct Service {
  std::string_view name;
  std::string_view port;
};
constexpr std::array services{
    Service{"dns", "domain"},
    Service{"secure-http", "https"},
    Service{"dhcp", "bootps"},
    Service{"secure-imap", "imaps"},
    Service{"secure-ldap", "ldaps"},
    Service{"secure-pop3", "pop3s"},
    Service{"ipsec-nat", "non500-isakmp"},
};

// Empty if the condition is none of them.
std::string_view knownReason(std::string_view condition) {
  for (Inexpressible const& each : inexpressible) {
    bool const begins = condition.size() >= each.word.size() &&
                        equalsKeyword(condition.substr(0, each.word.size()), each.word);
    if (begins && (condition.size() == each.word.size() || condition[each.word.size()] == ' ')) {
      return each.reason;
    }
  }
  return {};
}

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
        Kind{"ethertype", &ConditionParser::takeEtherType},
        Kind{"srcl4port", &ConditionParser::takeSourcePort},
        Kind{"dstl4port", &ConditionParser::takeDestinationPort},
        Kind{"srcip", &ConditionParser::takeSource},
        Kind{"dstip", &ConditionParser::takeDestination},
        Kind{"srcip6", &ConditionParser::takeSource6},
        Kind{"dstip6", &ConditionParser::takeDestination6},
    };
    Token const first = lexer_.peek();
    bool const ip = first.is("ip") || first.is("ipv4");
    if (ip || first.is("ipv6")) {
      Token const second = lexer_.peekSecond();
      if (!second.is("dscp") && !second.is("precedence")) {
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

  // A precedence is the first three bits of the DSCP.
  void takePrecedence() {
    for (std::uint64_t const value : takeValues(&takePrecedenceValue)) {
      for (std::uint64_t low = 0; low != 8; ++low) {
        add([&](auto& rule) { rule.dscpIs(value * 8 + low); });
      }
    }
  }

  void takeVlan() {
    for (std::uint64_t const vlan :
         takeValues([](Lexer& lexer) { return takeNumber(lexer, "vlan", 1, 4094); })) {
      Acl::MacRuleConfig rule;
      rule.vlanIs(vlan);
      addMac(rule);
    }
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

  void takeProtocol() {
    std::string const name = lowerCase(takeName(lexer_, "a protocol").text);
    say(name);
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
    } else if (!lexer_.peek().atEnd() || !(takeProtocolNamed(name) || takeService(name))) {
      // Recognised by content, or unknown.
      condition_.rules.clear();
      while (!lexer_.peek().atEnd()) {
        say(lowerCase(lexer_.next().text));
      }
    }
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
    for (std::uint8_t const transport : {protocol::tcp, protocol::udp}) {
      if (auto const number = portNumber(transport, port)) {
        add([&](auto& rule) {
          rule.protocolIs(transport);
          rule.dstPortIs(Acl::PortMatch::eq(*number));
        });
      }
    }
    return !condition_.rules.empty();
  }

  template <class Set>
  void takePort(Set const& set) {
    for (std::uint64_t const port : takeValues(&takePortOfTransports)) {
      for (std::uint8_t const transport : {protocol::tcp, protocol::udp}) {
        add([&](auto& rule) {
          rule.protocolIs(transport);
          set(rule, Acl::PortMatch::eq(static_cast<std::int64_t>(port)));
        });
      }
    }
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
    condition.text.append(condition.text.empty() ? "" : " ").append(lowerCase(lexer.next().text));
  }
  lexer.rest();
  condition.text.resize(std::min(condition.text.size(), longest));
  return condition;
}

std::string conditionName(std::string_view condition) {
  return "match " + std::string(condition);
}

bool isConditionName(std::string_view classMap) {
  return classMap.starts_with(conditionName(""));
}

std::string_view reasonAgainst(std::string_view condition) {
  if (condition == contradiction) {
    return "no kind of rule has their fields together";
  }
  std::string_view const known = knownReason(condition);
  bool const isProtocol = condition.starts_with("protocol ");
  return !known.empty() ? known : isProtocol ? notInHeaders : notUnderstood;
}

std::string_view conditionWords() {
  return "access-group, class-map, ip, ipv6, mac, any, dscp, precedence, protocol, vlan, "
         "ethertype, srcl4port, dstl4port, srcip or dstip";
}

}  // namespace PolicyMapTestKit::Text
