// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/IpOptions.h"

#include "testkit/text/Comparison.h"
#include "testkit/text/PortNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
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
};

class IpOptions {
 public:
  IpOptions(Lexer& lexer, Acl::IpFilterBase& rule, std::optional<std::uint8_t>* precedence)
      : lexer_(lexer), rule_(rule), precedence_(precedence) {}

  void takeAll() {
    while (!lexer_.peek().atEnd()) {
      bool const taken = std::any_of(options.begin(), options.end(), [this](Option const& option) {
        return (this->*option.take)(option.expected);
      });
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
  bool takeDscp(std::string_view /*word*/) {
    if (!lexer_.peek().is("dscp")) {
      return false;
    }
    refuseIf(!!rule_.dscp() || (precedence_ != nullptr && *precedence_),
             "one dscp or precedence in a rule");
    lexer_.next();
    rule_.dscpIs(takeDscpValue(lexer_));
    return true;
  }

  bool takePrecedence(std::string_view word) {
    if (precedence_ == nullptr || !lexer_.peek().is(word)) {
      return false;
    }
    refuseIf(!!rule_.dscp() || *precedence_, "one dscp or precedence in a rule");
    lexer_.next();
    *precedence_ = static_cast<std::uint8_t>(takePrecedenceValue(lexer_));
    return true;
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

  bool takeTcpFlag(std::string_view /*word*/) {
    for (auto const& flag : tcpFlags) {
      needTcpBefore(flag.name);
      if (lexer_.accept(flag.name)) {
        int const bits = rule_.tcpFlags().mask() | flag.bit;
        rule_.tcpFlagsIs(Acl::TcpFlags(bits, bits));
        return true;
      }
    }
    return false;
  }

  void needTcpBefore(std::string_view word) const {
    refuseIf(lexer_.peek().is(word) && rule_.protocol() != protocol::tcp,
             "protocol tcp before a TCP flag");
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

  bool takeTimeRange(std::string_view word) {
    bool const taken = lexer_.accept(word);
    if (taken) {
      takeName(lexer_, "the name of a time-range");
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
      Option{"", "time-range", &IpOptions::takeTimeRange},
  };

  Lexer& lexer_;
  Acl::IpFilterBase& rule_;
  std::optional<std::uint8_t>* precedence_;
};

static_assert(Acl::saysEachField<Acl::IpFilterBase>(IpOptions::knows),
              "policy text leaves out a field of IP rules");

}  // namespace

void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule, std::optional<std::uint8_t>* precedence) {
  IpOptions(lexer, rule, precedence).takeAll();
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
