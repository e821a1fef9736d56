// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Ports.h"

#include "testkit/text/Comparison.h"
#include "testkit/text/PortNames.h"
#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace PolicyMapTestKit::Text {

namespace {

std::uint64_t takePort(Lexer& lexer, std::uint8_t protocol, std::uint64_t low, std::uint64_t high) {
  Lexer const before = lexer;
  std::optional<std::int64_t> const port = acceptPort(lexer, protocol);
  auto const number = static_cast<std::uint64_t>(port.value_or(-1));
  if (!port || number < low || number > high) {
    before.fail("port " + std::to_string(low) + "-" + std::to_string(high) + " or a port name");
  }
  return number;
}

// All ports but some, which are in ascending order.
std::vector<Acl::PortMatch> portsBetween(std::vector<std::int64_t> const& ports) {
  std::vector<Acl::PortMatch> between;
  std::int64_t from = 0;
  auto const add = [&](std::int64_t to) {
    if (from <= to) {
      between.push_back(from == to ? Acl::PortMatch::eq(from) : Acl::PortMatch::range(from, to));
    }
  };
  for (std::int64_t const port : ports) {
    add(port - 1);
    from = port + 1;
  }
  add(Acl::PortMatch::highest);
  return between;
}

}  // namespace

std::optional<std::int64_t> acceptPort(Lexer& lexer, std::uint8_t protocol) {
  Token const word = lexer.peek();
  std::uint64_t port = 0;
  if (word.atEnd()) {
    return std::nullopt;
  }
  if (!isDigit(word.text.front())) {
    auto const named = portNumber(protocol, word.text);
    if (!named) {
      return std::nullopt;
    }
    port = *named;
  } else if (!parseNumber(word.text, 0, Acl::PortMatch::highest, port)) {
    return std::nullopt;
  }
  lexer.next();
  return static_cast<std::int64_t>(port);
}

Acl::PortMatch takePorts(Lexer& lexer, std::optional<std::uint8_t> protocol) {
  Lexer const before = lexer;
  Acl::MatchOp const comparison = acceptComparison(lexer);
  if (comparison == Acl::MatchOp::any) {
    return {};
  }
  if (!protocol || !hasPorts(*protocol)) {
    before.fail("protocol tcp, udp or sctp before a port");
  }
  return takeOperands<Acl::PortMatch>(comparison, [&](std::uint64_t low, std::uint64_t high) {
    return takePort(lexer, *protocol, low, high);
  });
}

std::vector<Acl::PortMatch> takeFurtherPorts(Lexer& lexer, std::uint8_t protocol,
                                             Acl::PortMatch const& first) {
  bool const equal = first.op() == Acl::MatchOp::eq;
  std::vector<std::int64_t> ports{first.low()};
  if (equal || first.op() == Acl::MatchOp::neq) {
    while (std::optional<std::int64_t> const port = acceptPort(lexer, protocol)) {
      if (std::find(ports.begin(), ports.end(), *port) == ports.end()) {
        ports.push_back(*port);
      }
    }
  }
  if (ports.size() == 1) {
    return {};
  }
  if (!equal) {
    std::sort(ports.begin(), ports.end());
    return portsBetween(ports);
  }
  std::vector<Acl::PortMatch> matches;
  std::transform(ports.begin(), ports.end(), std::back_inserter(matches), &Acl::PortMatch::eq);
  return matches;
}

}  // namespace PolicyMapTestKit::Text
