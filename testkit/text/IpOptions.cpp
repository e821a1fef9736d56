// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/IpOptions.h"

#include "testkit/text/Comparison.h"
#include "testkit/text/PortNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

namespace {

using Acl::MatchOp;

struct NamedFlag {
  std::string_view name;
  std::uint8_t bit;
};

constexpr NamedFlag tcpFlags[] = {
    {"ack", Acl::TcpFlags::ack}, {"fin", Acl::TcpFlags::fin}, {"psh", Acl::TcpFlags::psh},
    {"rst", Acl::TcpFlags::rst}, {"syn", Acl::TcpFlags::syn}, {"urg", Acl::TcpFlags::urg},
    {"ece", Acl::TcpFlags::ece}, {"cwr", Acl::TcpFlags::cwr},
};

class IpOptions {
 public:
  IpOptions(Lexer& lexer, Acl::IpFilterBase& rule, RuleAlternatives* alternatives)
      : lexer_(lexer), rule_(rule), alternatives_(alternatives) {}

  void takeAll() {
    bool isLogged = false;
    while (!lexer_.peek().atEnd()) {
      Lexer const before = lexer_;
      bool const taken = takeOneOf(options) || takeOneOf(furtherOptions);
      if (!taken && isLogged && lexer_.peekSecond().atEnd()) {
        lexer_.next();  // the tag of the log
        return;
      }
      isLogged = taken && (before.peek().is("log") || before.peek().is("log-input"));
      if (!taken) {
        lexer_.fail("a rule option (" + expected() + ") or end of line");
      }
    }
  }

  // Whether policy text has a way to write a field, or leaves it out on purpose.
  static constexpr bool knows(std::string_view field) {
    for (std::string_view const other : {"permit", "protocol", "srcPort", "dstPort"}) {
      if (field == other) {
        return true;  // comes before the options
      }
    }
    for (Option const& option : options) {
      if (field == option.field) {
        return true;
      }
    }
    return field == "icmpCode" || field == "tni" || field == "vni";  // with icmpType; not written
  }

 private:
  template <class Options>
  bool takeOneOf(Options const& some) {
    return std::any_of(some.begin(), some.end(), [this](auto const& option) {
      return (this->*option.take)(option.expected);
    });
  }

  bool takeDscp(std::string_view /*word*/) {
    if (!lexer_.peek().is("dscp")) {
      return false;
    }
    refuseSecondDscp();
    lexer_.next();
    rule_.dscpIs(takeDscpValue(lexer_));
    return true;
  }

  bool takePrecedence(std::string_view word) {
    if (alternatives_ == nullptr || !lexer_.peek().is(word)) {
      return false;
    }
    refuseSecondDscp();
    lexer_.next();
    alternatives_->dscps = dscpsOf(takePrecedenceValue(lexer_));
    return true;
  }

  void refuseSecondDscp() const {
    refuseIf(!!rule_.dscp() || (alternatives_ != nullptr && !alternatives_->dscps.empty()),
             "one dscp or precedence in a rule");
  }

  bool takeTtl(std::string_view /*word*/) {
    if (!lexer_.peek().is("ttl")) {
      return false;
    }
    refuseIf(!rule_.ttl().isAny(), "one ttl in a rule");
    lexer_.next();
    MatchOp const written = acceptComparison(lexer_);
    rule_.ttlIs(takeOperands<Acl::TtlMatch>(written == MatchOp::any ? MatchOp::eq : written,
                                            [this](std::uint64_t low, std::uint64_t high) {
                                              return takeNumber(lexer_, "ttl", low, high);
                                            }));
    return true;
  }

  template <auto get, auto set>
  bool takeFlag(std::string_view word) {
    bool const taken = lexer_.accept(word);
    (rule_.*set)((rule_.*get)() || taken);
    return taken;
  }

  template <auto get, auto set>
  bool takeFlagOfTcp(std::string_view word) {
    needTcpBefore(word);
    return takeFlag<get, set>(word);
  }

  // `syn`, `+syn`, `-syn`: the flag, and whether it must be set; no flag if the next word is none.
  Acl::TcpFlags takeSignedFlag() {
    Token word = lexer_.peek();
    bool const isSigned = word.text.starts_with('+') || word.text.starts_with('-');
    bool const set = !word.text.starts_with('-');
    word.text.remove_prefix(isSigned ? 1 : 0);
    auto const* const flag =
        std::find_if(std::begin(tcpFlags), std::end(tcpFlags),
                     [&](NamedFlag const& each) { return word.is(each.name); });
    if (flag == std::end(tcpFlags)) {
      return {};
    }
    needTcp();
    lexer_.next();
    return {set ? flag->bit : 0, flag->bit};
  }

  void addFlag(Acl::TcpFlags flag) {
    Acl::TcpFlags const known = rule_.tcpFlags();
    rule_.tcpFlagsIs(
        Acl::TcpFlags((known.value() & ~flag.mask()) | flag.value(), known.mask() | flag.mask()));
  }

  bool takeTcpFlag(std::string_view /*word*/) {
    Acl::TcpFlags const flag = takeSignedFlag();
    addFlag(flag);
    return flag.mask() != 0;
  }

  // `match-all +syn -ack`; the flags themselves are options.
  bool takeAllFlags(std::string_view word) {
    if (!lexer_.peek().is(word)) {
      return false;
    }
    needTcp();
    lexer_.next();
    refuseIf(!takeTcpFlag({}), "a TCP flag such as +syn");
    return true;
  }

  // `match-any +syn -ack`: a rule for each flag.
  bool takeAnyFlag(std::string_view word) {
    if (!lexer_.peek().is(word) || alternatives_ == nullptr) {
      return false;
    }
    needTcp();
    lexer_.next();
    for (Acl::TcpFlags flag = takeSignedFlag(); flag.mask() != 0; flag = takeSignedFlag()) {
      alternatives_->tcpFlags.push_back(flag);
    }
    refuseIf(alternatives_->tcpFlags.empty(), "a TCP flag such as +syn");
    return true;
  }

  void needTcpBefore(std::string_view word) const {
    if (lexer_.peek().is(word)) {
      needTcp();
    }
  }
  void needTcp() const {
    refuseIf(rule_.protocol() != protocol::tcp, "protocol tcp before a TCP flag");
  }

  bool takeIcmp(std::string_view /*word*/) {
    if (rule_.protocol() != protocol::icmp && rule_.protocol() != protocol::icmp6) {
      return false;
    }
    if (lexer_.accept("icmp-type") && !isNumber()) {
      lexer_.fail("ICMP type 0-255");
    }
    if (!!rule_.icmpType() && !rule_.icmpCode() && lexer_.accept("icmp-code")) {
      rule_.icmpCodeIs(takeNumber(lexer_, "ICMP code", 0, 255));
      return true;
    }
    auto const protocol = static_cast<std::uint8_t>(*rule_.protocol());
    auto const message = icmpMessage(protocol, lexer_.peek().text);
    bool const numeric = isNumber();
    if (!message && !numeric) {
      return false;
    }
    refuseIf(!!rule_.icmpType(), "one ICMP message in a rule");
    if (numeric) {
      rule_.icmpTypeIs(takeNumber(lexer_, "ICMP type", 0, 255));
      if (isNumber()) {
        rule_.icmpCodeIs(takeNumber(lexer_, "ICMP code", 0, 255));
      }
      return true;
    }
    lexer_.next();
    rule_.icmpTypeIs(message->type);
    if (message->code) {
      rule_.icmpCodeIs(*message->code);
    }
    return true;
  }

  bool takeLog(std::string_view /*word*/) {
    return lexer_.accept("log") || lexer_.accept("log-input");
  }

  // A word with a value that does not change what the rule matches.
  bool takeWithValue(std::string_view word) {
    bool const taken = lexer_.accept(word);
    if (taken) {
      takeName(lexer_, "a value of " + std::string(word));
    }
    return taken;
  }

  // The list that it fills, and for how long.
  bool takeReflect(std::string_view word) {
    bool const taken = takeWithValue(word);
    if (taken) {
      takeWithValue("timeout");
    }
    return taken;
  }

  // What the device does with the packets, up to the end of the line.
  bool takeRest(std::string_view word) {
    bool const taken = lexer_.accept(word);
    if (taken) {
      lexer_.rest();
    }
    return taken;
  }
  bool takeWord(std::string_view word) { return lexer_.accept(word); }

  bool takeRateLimit(std::string_view word) {
    bool const taken = takeWithValue(word);
    if (taken) {
      takeName(lexer_, "a burst size");
    }
    return taken;
  }

  bool isNumber() const {
    std::uint64_t number = 0;
    return parseNumber(lexer_.peek().text, 0, UINT64_MAX, number);
  }

  void refuseIf(bool refused, std::string_view expected) const {
    if (refused) {
      lexer_.fail(std::string(expected));
    }
  }

  static std::string expected() {
    std::string text;
    for (Option const& option : options) {
      text.append(text.empty() ? "" : ", ").append(option.expected);
    }
    return text;
  }

  using F = Acl::IpFilterBase;
  struct Option {
    std::string_view field;     // of the rule; empty for a word that the rule does not keep
    std::string_view expected;  // the word itself, or what messages call it
    bool (IpOptions::*take)(std::string_view word);  // consumes it if it comes next
  };
  static constexpr std::array options{
      Option{"dscp", "dscp", &IpOptions::takeDscp},
      Option{"ttl", "ttl", &IpOptions::takeTtl},
      Option{"established", "established",
             &IpOptions::takeFlagOfTcp<&F::established, &F::establishedIs>},
      Option{"ackOrRst", "ack-or-rst", &IpOptions::takeFlagOfTcp<&F::ackOrRst, &F::ackOrRstIs>},
      Option{"tcpFlags", "a TCP flag", &IpOptions::takeTcpFlag},
      Option{"icmpType", "an ICMP message", &IpOptions::takeIcmp},
      Option{"fragments", "fragments", &IpOptions::takeFlag<&F::fragments, &F::fragmentsIs>},
      Option{"", "precedence", &IpOptions::takePrecedence},
      Option{"", "log", &IpOptions::takeLog},
      Option{"", "time-range", &IpOptions::takeWithValue},
  };
  // The same for words that messages do not list.
  static constexpr std::array furtherOptions{
      Option{"", "match-all", &IpOptions::takeAllFlags},
      Option{"", "flag", &IpOptions::takeAllFlags},
      Option{"", "match-any", &IpOptions::takeAnyFlag},
      Option{"", "reflect", &IpOptions::takeReflect},
      Option{"", "assign-queue", &IpOptions::takeWithValue},
      Option{"", "mirror", &IpOptions::takeWithValue},
      Option{"", "redirect", &IpOptions::takeWithValue},
      Option{"", "rate-limit", &IpOptions::takeRateLimit},
      Option{"", "counter", &IpOptions::takeWithValue},
      Option{"", "icmp-off", &IpOptions::takeWord},
      Option{"", "icmp-on", &IpOptions::takeWord},
      Option{"", "capture", &IpOptions::takeRest},
      Option{"", "nexthop", &IpOptions::takeRest},
      Option{"", "nexthop1", &IpOptions::takeRest},
      Option{"", "set", &IpOptions::takeRest},
      Option{"", "police", &IpOptions::takeRest},
      Option{"", "tracked", &IpOptions::takeWord},
  };

  Lexer& lexer_;
  Acl::IpFilterBase& rule_;
  RuleAlternatives* alternatives_;
};

static_assert(Acl::saysEachField<Acl::IpFilterBase>(IpOptions::knows),
              "policy text leaves out a field of IP rules");

}  // namespace

void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule, RuleAlternatives* alternatives) {
  IpOptions(lexer, rule, alternatives).takeAll();
}

std::vector<std::uint8_t> dscpsOf(std::uint64_t precedence) {
  std::vector<std::uint8_t> dscps(8);
  std::iota(dscps.begin(), dscps.end(), static_cast<std::uint8_t>(precedence * 8));
  return dscps;
}

std::uint64_t takeDscpValue(Lexer& lexer) {
  std::uint64_t value = 0;
  if (auto const named = dscpNumber(lexer.peek().text)) {
    value = *named;
  } else if (!parseNumber(lexer.peek().text, 0, 63, value)) {
    lexer.fail("dscp 0-63 or a DSCP name");
  }
  lexer.next();
  return value;
}

std::uint64_t takePrecedenceValue(Lexer& lexer) {
  std::uint64_t value = 0;
  if (auto const named = precedenceNumber(lexer.peek().text)) {
    value = *named;
  } else if (!parseNumber(lexer.peek().text, 0, 7, value)) {
    lexer.fail("precedence 0-7 or its name");
  }
  lexer.next();
  return value;
}

}  // namespace PolicyMapTestKit::Text
