// SPDX-License-Identifier: Apache-2.0
#include "lab/IpOptions.h"

#include "lab/Comparison.h"
#include "lab/PortNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace lab {

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
  IpOptions(Lexer& lexer, Acl::IpFilterBase& rule) : lexer_(lexer), rule_(rule) {}

  void takeAll() {
    while (!lexer_.peek().atEnd()) {
      bool const taken = std::any_of(options.begin(), options.end(), [this](Option const& option) {
        return (this->*option.take)();
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
  bool takeDscp() {
    if (!lexer_.peek().is("dscp")) {
      return false;
    }
    refuseIf(!!rule_.dscp(), "one dscp in a rule");
    lexer_.next();
    std::uint64_t value = 0;
    if (auto const named = dscpNumber(lexer_.peek().text)) {
      value = *named;
    } else if (!parseNumber(lexer_.peek().text, 0, 63, value)) {
      lexer_.fail("dscp 0-63 or a DSCP name");
    }
    lexer_.next();
    rule_.dscpIs(value);
    return true;
  }

  bool takeTtl() {
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

  bool takeEstablished() {
    bool const taken = acceptTcpWord("established");
    rule_.establishedIs(rule_.established() || taken);
    return taken;
  }

  bool takeAckOrRst() {
    bool const taken = acceptTcpWord("ack-or-rst");
    rule_.ackOrRstIs(rule_.ackOrRst() || taken);
    return taken;
  }

  bool takeTcpFlag() {
    for (auto const& flag : tcpFlags) {
      if (acceptTcpWord(flag.name)) {
        int const bits = rule_.tcpFlags().mask() | flag.bit;
        rule_.tcpFlagsIs(Acl::TcpFlags(bits, bits));
        return true;
      }
    }
    return false;
  }

  bool acceptTcpWord(std::string_view word) {
    refuseIf(lexer_.peek().is(word) && rule_.protocol() != protocol::tcp,
             "protocol tcp before a TCP flag");
    return lexer_.accept(word);
  }

  bool takeIcmp() {
    if (rule_.protocol() != protocol::icmp && rule_.protocol() != protocol::icmp6) {
      return false;
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

  bool takeFragments() {
    bool const taken = lexer_.accept("fragments");
    rule_.fragmentsIs(rule_.fragments() || taken);
    return taken;
  }

  bool takeLog() { return lexer_.accept("log") || lexer_.accept("log-input"); }

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

  struct Option {
    std::string_view field;     // of the rule; empty for a word that is no part of it
    std::string_view expected;  // as messages call it
    bool (IpOptions::*take)();  // takes it if it comes next
  };
  static constexpr std::array<Option, 8> options{{
      {"dscp", "dscp", &IpOptions::takeDscp},
      {"ttl", "ttl", &IpOptions::takeTtl},
      {"established", "established", &IpOptions::takeEstablished},
      {"ackOrRst", "ack-or-rst", &IpOptions::takeAckOrRst},
      {"tcpFlags", "a TCP flag", &IpOptions::takeTcpFlag},
      {"icmpType", "an ICMP message", &IpOptions::takeIcmp},
      {"fragments", "fragments", &IpOptions::takeFragments},
      {"", "log", &IpOptions::takeLog},
  }};

  Lexer& lexer_;
  Acl::IpFilterBase& rule_;
};

static_assert(Acl::saysEachField<Acl::IpFilterBase>(IpOptions::knows),
              "policy text leaves out a field of IP rules");

}  // namespace

void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule) {
  IpOptions(lexer, rule).takeAll();
}

}  // namespace lab
