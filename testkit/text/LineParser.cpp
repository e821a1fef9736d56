// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/LineParser.h"

#include "testkit/text/MatchConditions.h"

#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

// True for the modes of access lists, object-groups, classes, policies and zone-pairs.
bool isAboutPolicies(Mode mode) {
  return mode != Mode::top && mode != Mode::interface && mode != Mode::zone;
}

bool isAttachment(StatementBody const& body) {
  return std::holds_alternative<ServicePolicy>(body) ||
         std::holds_alternative<InterfaceAccessGroup>(body) ||
         std::holds_alternative<InterfaceZone>(body);
}

}  // namespace

LineParser::ModeCommands LineParser::topCommands() {
  static constexpr Command top[] = {
      {"ip", "access-list", &LineParser::ipAccessList},
      {"ipv4", "access-list", &LineParser::ipAccessList},
      {"ip", "routing", &LineParser::ipRouting},
      {"ipv6", "access-list", &LineParser::ip6AccessList},
      {"ipv6", "unicast-routing", &LineParser::ip6Routing},
      {"mac", "access-list", &LineParser::macAccessList},
      {"ethernet-services", "access-list", &LineParser::macAccessList},
      {"access-list", "", &LineParser::numberedAccessList},
      {"object-group", "", &LineParser::objectGroup},
      {"class-map", "", &LineParser::classMap},
      {"policy-map", "", &LineParser::policyMap},
      {"interface", "", &LineParser::interface},
      {"zone", "", &LineParser::zone},
      {"zone-pair", "", &LineParser::zonePair},
      {"port-channel", "name", &LineParser::portChannel, false},
      {"hostname", "", &LineParser::hostname, false},
      {"end-class-map", "", &LineParser::end, false},
      {"end-policy-map", "", &LineParser::end, false},
      {"exit", "", &LineParser::exit, false},
      {"end", "", &LineParser::end, false},
  };
  return {std::begin(top), std::end(top),
          "a command (access-list, class-map, policy-map, interface, ...)"};
}

LineParser::ModeCommands LineParser::commandsOf(Mode mode) {
  // What a device does besides matching.
  static constexpr Command accessList[] = {
      {"statistics", "", &LineParser::ignored},
      {"counters", "", &LineParser::ignored},
      {"fragments", "", &LineParser::ignored},
      {"ignore", "", &LineParser::ignored},
  };
  static constexpr Command classMap[] = {
      {"match", "", &LineParser::match},
      {"description", "", &LineParser::ignored},
      {"description:", "", &LineParser::ignored},
  };
  static constexpr Command policyMap[] = {
      {"class", "", &LineParser::policyClass},
      {"description", "", &LineParser::ignored},
      {"description:", "", &LineParser::ignored},
  };
  static constexpr Command zone[] = {
      {"description", "", &LineParser::ignored},
  };
  static constexpr Command zonePair[] = {
      {"service-policy", "", &LineParser::zonePairPolicy},
      {"description", "", &LineParser::ignored},
  };
  static constexpr Command policyClass[] = {
      {"set", "", &LineParser::setAction},       {"assign-queue", "", &LineParser::assignQueue},
      {"police", "", &LineParser::police},       {"police-simple", "", &LineParser::police},
      {"shape", "", &LineParser::shape},         {"bandwidth", "", &LineParser::bandwidth},
      {"priority", "", &LineParser::bandwidth},  {"class", "", &LineParser::policyClass},
      {"description", "", &LineParser::ignored},
  };
  static constexpr Command interface[] = {
      {"ip", "address", &LineParser::ipAddress},
      {"ipv4", "address", &LineParser::ipAddress},
      {"ipv6", "address", &LineParser::ip6Address},
      {"ipv6", "enable", &LineParser::ip6Enable},
      {"ip", "unnumbered", &LineParser::unnumbered},
      {"ipv4", "unnumbered", &LineParser::unnumbered},
      {"ip", "access-group", &LineParser::ipAccessGroup},
      {"ipv4", "access-group", &LineParser::ipAccessGroup},
      {"ip", "port", &LineParser::portAccessGroup},
      {"ipv6", "port", &LineParser::port6AccessGroup},
      {"mac", "port", &LineParser::macPortAccessGroup},
      {"ipv6", "access-group", &LineParser::ip6AccessGroup},
      {"ipv6", "traffic-filter", &LineParser::ip6AccessGroup},
      {"mac", "access-group", &LineParser::macAccessGroup},
      {"ethernet-services", "access-group", &LineParser::macAccessGroup},
      {"zone-member", "security", &LineParser::zoneMember},
      {"addport", "", &LineParser::addPort},
      {"switchport", "", &LineParser::switchport},
      {"shutdown", "", &LineParser::shutdown},
      {"channel-group", "", &LineParser::channelGroup},
      {"bundle", "id", &LineParser::channelGroup},
      {"service-policy", "", &LineParser::servicePolicy},
      {"description", "", &LineParser::ignored},
      {"description:", "", &LineParser::ignored},
  };
  switch (mode) {
  case Mode::accessList:
    return {std::begin(accessList), std::end(accessList),
            "permit, deny, remark or another command"};
  case Mode::classMap:
    return {std::begin(classMap), std::end(classMap), "match or another command"};
  case Mode::policyMap:
    return {std::begin(policyMap), std::end(policyMap), "class or another command"};
  case Mode::policyClass:
    return {std::begin(policyClass), std::end(policyClass),
            "set, police, drop or another action, class or another command"};
  case Mode::objectGroup:
    return {nullptr, nullptr, "a member of the object-group or another command"};
  case Mode::zone: return {std::begin(zone), std::end(zone), "description or another command"};
  case Mode::zonePair:
    return {std::begin(zonePair), std::end(zonePair), "service-policy or another command"};
  case Mode::interface:
    return {
        std::begin(interface), std::end(interface),
        "ip address, ipv6 address, switchport, channel-group, shutdown, service-policy or another "
        "command"};
  case Mode::top: break;
  }
  return topCommands();
}

void LineParser::emit(StatementBody body) {
  auto const add = [this](StatementBody some) {
    result_.statements.push_back({position_, block(), subject_, std::move(some)});
  };
  for (std::size_t i = 0; mode_ == Mode::interface && i + 1 < interfaces_.size(); ++i) {
    StatementBody other = body;
    std::visit(
        [&](auto& some) {
          if constexpr (requires { some.interface = interfaces_[i]; }) {
            some.interface = interfaces_[i];
          }
        },
        other);
    add(std::move(other));
  }
  add(std::move(body));
}

PolicyText LineParser::parse() {
  while (reader_.next()) {
    parseLine();
  }
  if (bannerEnd_) {
    throw InputError(bannerPosition_, "a banner that ends with " + excerpt(*bannerEnd_), "banner");
  }
  return std::move(result_);
}

void LineParser::parseLine() {
  Lexer lexer(reader_.line());
  Token const first = lexer.peek();
  if (skippedBefore(first) || first.atEnd() || first.text.front() == '!') {
    return;
  }
  position_ = reader_.position(first.column);
  isAbout(first);
  bodyIsIndented_ = bodyIsIndented_ || first.column > modeColumn_;
  std::uint64_t const skippedBefore = result_.skipped.total();
  std::size_t const statements = result_.statements.size();
  bool const inPolicies = isAboutPolicies(mode_);
  knownToBeInexpressible_ = false;
  try {
    parseCommand(lexer, first);
  } catch (SyntaxFailure const& failure) {
    refuse(first, failure);
  }
  bool const understood = result_.skipped.total() == skippedBefore;
  bool const attaches =
      result_.statements.size() > statements && isAttachment(result_.statements.back().body);
  if (attaches || isAboutPolicies(mode_) || (understood && inPolicies) || beginsPolicies(first)) {
    result_.skipped.sawPolicyLine(understood || knownToBeInexpressible_);
  }
}

LineParser::Command const* LineParser::find(ModeCommands const& commands, Lexer const& lexer,
                                            bool remove) {
  Command const* const found =
      std::find_if(commands.begin, commands.end, [&](Command const& command) {
        return lexer.peek().is(command.first) && (command.removable || !remove) &&
               (command.second.empty() || lexer.peekSecond().is(command.second));
      });
  return found == commands.end ? nullptr : found;
}

void LineParser::run(Command const& command, Lexer& lexer, bool remove) {
  lexer.next();
  if (!command.second.empty()) {
    lexer.next();
  }
  command_ = command.first;
  (this->*command.handler)(lexer, remove);
}

void LineParser::parseCommand(Lexer& lexer, Token const& first) {
  bool const remove = lexer.accept("no");
  bool const wasInPolice = std::exchange(inPolice_, false);
  ModeCommands const inMode = commandsOf(mode_);
  bool const nestsGroup =
      mode_ == Mode::objectGroup && first.column > modeColumn_ && lexer.peek().is("object-group");
  if (Command const* const command =
          nestsGroup ? nullptr : find(commandsOf(Mode::top), lexer, remove)) {
    skippedHeader_ = {};
    // Even a faulty command ends the mode: the lines after it must not be applied to the old mode.
    Mode const before = std::exchange(mode_, Mode::top);
    modeColumn_ = position_.column;
    bodyIsIndented_ = false;
    if (command->handler == &LineParser::exit && before == Mode::policyClass) {
      mode_ = wasInPolice ? Mode::policyClass : Mode::policyMap;
    }
    if (command->handler != &LineParser::numberedAccessList) {
      numbered_.clear();
    }
    run(*command, lexer, remove);
  } else if ((mode_ == Mode::accessList && accessListEntry(lexer, remove)) ||
             (mode_ == Mode::objectGroup && groupMember(lexer, remove))) {
    return;
  } else if (Command const* const inner = find(inMode, lexer, remove)) {
    run(*inner, lexer, remove);
  } else if (mode_ == Mode::policyClass && isOtherAction(lexer.peek())) {
    classAction(lexer, remove);
  } else {
    // Not thrown: a lenient reading may encounter millions of them.
    refuse(first, unknownCommand(lexer, inMode, remove));
  }
}

// Reports the second word if the first one begins a command.
SyntaxFailure LineParser::unknownCommand(Lexer& lexer, ModeCommands const& commands, bool remove) {
  std::string seconds;
  for (ModeCommands const& list : {commandsOf(Mode::top), commands}) {
    std::for_each(list.begin, list.end, [&](Command const& command) {
      bool const fits = lexer.peek().is(command.first) && (command.removable || !remove);
      if (fits && seconds.find(command.second) == std::string::npos) {
        seconds += (seconds.empty() ? "" : ", ") + std::string(command.second);
      }
    });
  }
  if (seconds.empty()) {
    return {std::string(commands.expected), lexer.peek()};
  }
  lexer.next();
  return {seconds, lexer.peek()};
}

// Other commands

void LineParser::routing(Lexer& lexer, Family family, bool remove) {
  lexer.expectEnd();
  emit(Routing{family, !remove});
}

void LineParser::hostname(Lexer& lexer, bool /*remove*/) {
  takeName(lexer, "a host name");
  lexer.expectEnd();
}

void LineParser::ignored(Lexer& lexer, bool /*remove*/) {
  lexer.rest();
}

void LineParser::exit(Lexer& lexer, bool /*remove*/) {
  lexer.expectEnd();
}

void LineParser::end(Lexer& lexer, bool /*remove*/) {
  lexer.expectEnd();
}

PolicyText parsePolicyText(SourceText const& source, Reading reading,
                           ActionMapping const& actions) {
  return LineParser(source, reading, actions).parse();
}

}  // namespace PolicyMapTestKit::Text
