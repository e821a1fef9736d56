// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/PolicyTextParser.h"

#include "records/TestActionKinds.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/RuleParser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::uint64_t highestWord = std::numeric_limits<std::uint32_t>::max();

// The types of class-maps and policy-maps that share the syntax of plain ones.
constexpr std::array<std::string_view, 3> knownTypes = {"inspect", "qos", "traffic"};

// Unsupported commands that open their own blocks and so end the current mode. Only commands that
// are not also valid inside an interface or a list may be listed here.
constexpr std::array<std::string_view, 9> foreignBlocks = {
    "banner", "control-plane", "line", "object-group", "route-map",
    "router", "template",      "zone", "zone-pair"};

constexpr std::array<std::string_view, 5> bannerKinds = {"motd", "login", "exec", "incoming",
                                                         "prompt-timeout"};

template <std::size_t Size>
bool contains(std::array<std::string_view, Size> const& words, Token const& token) {
  return std::any_of(words.begin(), words.end(),
                     [&token](std::string_view word) { return token.is(word); });
}

Name nameOf(Token const& token) {
  return {std::string(token.text), token.column};
}

// Later statements of the mode carry the name without a column.
Name withoutColumn(Name name) {
  name.column = 0;
  return name;
}

// Consumes the name of a test action and returns its kind.
std::uint8_t takeActionKind(Lexer& lexer) {
  auto const& names = PolicyMapTest::testActionNames;
  std::string expected;
  for (std::size_t i = 0; i != names.size(); ++i) {
    if (lexer.accept(names[i])) {
      return static_cast<std::uint8_t>(i + 1);
    }
    char const* const separator = i == 0 ? "" : i + 1 == names.size() ? " or " : ", ";
    expected.append(separator).append(names[i]);
  }
  lexer.fail(std::move(expected));
}

enum class Mode : std::uint8_t { top, accessList, classMap, policyMap, policyClass, interface };

class Parser {
 public:
  Parser(SourceText const& source, Reading reading)
      : reader_(source), lenient_(reading == Reading::lenient) {}

  PolicyText parse();

 private:
  using Handler = void (Parser::*)(Lexer& lexer, bool remove);

  // A command, identified by its first one or two keywords. They are consumed before the handler is
  // called.
  struct Command {
    std::string_view first;
    std::string_view second;
    Handler handler;
    bool removable = true;
  };

  // The commands of a mode, and their description for messages.
  struct ModeCommands {
    Command const* begin;
    Command const* end;
    std::string_view expected;
  };

  static ModeCommands topCommands();
  static ModeCommands commandsOf(Mode mode);

  void parseLine();
  bool skippedBefore(Token const& first);
  void parseCommand(Lexer& lexer, Token const& first);
  static SyntaxFailure unknownCommand(Lexer& lexer, ModeCommands const& commands, bool remove);
  static Command const* find(ModeCommands const& commands, Lexer const& lexer, bool remove);
  void run(Command const& command, Lexer& lexer, bool remove);
  void refuse(Token const& first, SyntaxFailure const& failure);
  void skip(Token const& first, SyntaxFailure const& failure);
  void openBanner(Token const& first);
  bool endsBanner(std::string_view line) const;

  void ipAccessList(Lexer& lexer, bool remove);
  void ip6AccessList(Lexer& lexer, bool remove) { accessList(lexer, Family::ip6, remove); }
  void macAccessList(Lexer& lexer, bool remove);
  void numberedAccessList(Lexer& lexer, bool remove);
  void classMap(Lexer& lexer, bool remove);
  void policyMap(Lexer& lexer, bool remove);
  void interface(Lexer& lexer, bool remove);
  void ipRouting(Lexer& lexer, bool remove) { routing(lexer, Family::ip4, remove); }
  void ip6Routing(Lexer& lexer, bool remove) { routing(lexer, Family::ip6, remove); }
  void hostname(Lexer& lexer, bool remove);
  void exit(Lexer& lexer, bool remove);
  void end(Lexer& lexer, bool remove);

  void match(Lexer& lexer, bool remove);
  void policyClass(Lexer& lexer, bool remove);
  void setAction(Lexer& lexer, bool remove);
  void ipAddress(Lexer& lexer, bool remove) { address(lexer, Family::ip4, remove); }
  void ip6Address(Lexer& lexer, bool remove) { address(lexer, Family::ip6, remove); }
  void switchport(Lexer& lexer, bool remove);
  void shutdown(Lexer& lexer, bool remove);
  void channelGroup(Lexer& lexer, bool remove);
  void servicePolicy(Lexer& lexer, bool remove);
  void ignored(Lexer& lexer, bool remove);

  void accessList(Lexer& lexer, Family family, bool remove, RuleKind kind);
  void accessList(Lexer& lexer, Family family, bool remove) {
    accessList(lexer, family, remove, extendedRule(family));
  }
  bool accessListEntry(Lexer& lexer, bool remove);
  void remark(Lexer& lexer, std::optional<std::uint32_t> sequence, bool remove);
  void removeSequence(Lexer& lexer, std::uint32_t sequence);
  void matchFamily(Lexer& lexer, Family family, bool remove);
  void matchList(Lexer& lexer, Family family, bool remove);
  void address(Lexer& lexer, Family family, bool remove);
  void routing(Lexer& lexer, Family family, bool remove);
  std::string takeType(Lexer& lexer) const;

  void emit(StatementBody body) {
    result_.statements.push_back({position_, block(), subject_, std::move(body)});
  }
  void isAbout(Token const& word) { subject_ = nameOf(word); }
  // The following lines belong to the mode that the current line opens.
  void enter(Mode mode) {
    mode_ = mode;
    modeLine_ = position_.line;
  }
  // The line of the command that opened the mode.
  std::uint32_t block() const {
    return mode_ == Mode::top ? 0 : mode_ == Mode::policyClass ? classLine_ : modeLine_;
  }

  LineReader reader_;
  bool lenient_;
  PolicyText result_;

  // The first word of the current line, and the one that messages quote.
  SourcePosition position_;
  Name subject_;
  Mode mode_ = Mode::top;
  // The lines that opened the mode and, in a policy-map, the class.
  std::uint32_t modeLine_ = 0;
  std::uint32_t classLine_ = 0;
  // Column of the command that opened the mode, and whether any line of the mode is indented more
  // deeply.
  std::uint32_t modeColumn_ = 1;
  bool bodyIsIndented_ = false;
  // The objects that the lines of the mode belong to. Only those of the current mode are valid.
  AccessListId list_;
  RuleKind ruleKind_ = RuleKind::ip4;
  Name outer_;  // class-map, policy-map or interface
  Name className_;
  // The list that one-line commands filled last without another command in between, and its line.
  std::string numbered_;
  std::uint32_t numberedLine_ = 0;

  // Column and kind of the skipped line whose block may still continue; column 0 for none.
  std::uint32_t skippedColumn_ = 0;
  std::string skippedKind_;
  // The last line of the current banner; none outside banners.
  std::optional<std::string> bannerEnd_;
  SourcePosition bannerPosition_;
};

Parser::ModeCommands Parser::topCommands() {
  static constexpr Command top[] = {
      {"ip", "access-list", &Parser::ipAccessList},
      {"ip", "routing", &Parser::ipRouting},
      {"ipv6", "access-list", &Parser::ip6AccessList},
      {"ipv6", "unicast-routing", &Parser::ip6Routing},
      {"mac", "access-list", &Parser::macAccessList},
      {"access-list", "", &Parser::numberedAccessList},
      {"class-map", "", &Parser::classMap},
      {"policy-map", "", &Parser::policyMap},
      {"interface", "", &Parser::interface},
      {"hostname", "", &Parser::hostname, false},
      {"exit", "", &Parser::exit, false},
      {"end", "", &Parser::end, false},
  };
  return {std::begin(top), std::end(top),
          "a command (access-list, class-map, policy-map, interface, ...)"};
}

Parser::ModeCommands Parser::commandsOf(Mode mode) {
  static constexpr Command classMap[] = {
      {"match", "", &Parser::match},
      {"description", "", &Parser::ignored},
  };
  static constexpr Command policyMap[] = {
      {"class", "", &Parser::policyClass},
      {"description", "", &Parser::ignored},
  };
  static constexpr Command policyClass[] = {
      {"set", "", &Parser::setAction},
      {"class", "", &Parser::policyClass},
      {"description", "", &Parser::ignored},
  };
  static constexpr Command interface[] = {
      {"ip", "address", &Parser::ipAddress},        {"ipv6", "address", &Parser::ip6Address},
      {"switchport", "", &Parser::switchport},      {"shutdown", "", &Parser::shutdown},
      {"channel-group", "", &Parser::channelGroup}, {"service-policy", "", &Parser::servicePolicy},
      {"description", "", &Parser::ignored},
  };
  switch (mode) {
  case Mode::accessList: return {nullptr, nullptr, "permit, deny, remark or another command"};
  case Mode::classMap:
    return {std::begin(classMap), std::end(classMap), "match or another command"};
  case Mode::policyMap:
    return {std::begin(policyMap), std::end(policyMap), "class or another command"};
  case Mode::policyClass:
    return {std::begin(policyClass), std::end(policyClass), "set, class or another command"};
  case Mode::interface:
    return {
        std::begin(interface), std::end(interface),
        "ip address, ipv6 address, switchport, channel-group, shutdown, service-policy or another "
        "command"};
  case Mode::top: break;
  }
  return topCommands();
}

PolicyText Parser::parse() {
  while (reader_.next()) {
    parseLine();
  }
  if (bannerEnd_) {
    throw InputError(bannerPosition_, "a banner that ends with " + excerpt(*bannerEnd_), "banner");
  }
  return std::move(result_);
}

void Parser::parseLine() {
  Lexer lexer(reader_.line());
  Token const first = lexer.peek();
  if (skippedBefore(first) || first.atEnd() || first.text.front() == '!') {
    return;
  }
  position_ = reader_.position(first.column);
  isAbout(first);
  bodyIsIndented_ = bodyIsIndented_ || first.column > modeColumn_;
  try {
    parseCommand(lexer, first);
  } catch (SyntaxFailure const& failure) {
    refuse(first, failure);
  }
}

void Parser::refuse(Token const& first, SyntaxFailure const& failure) {
  if (!lenient_) {
    throw InputError(reader_.position(failure.found.column), failure.expected, failure.found.text);
  }
  skip(first, failure);
}

// True if the line belongs to something that was skipped before it. Counts the line then.
bool Parser::skippedBefore(Token const& first) {
  if (bannerEnd_) {
    result_.skipped.add("banner");
    if (endsBanner(reader_.line())) {
      bannerEnd_.reset();
    }
    return true;
  }
  if (skippedColumn_ == 0 || first.atEnd() || first.text.front() == '!') {
    return false;
  }
  if (first.column > skippedColumn_) {
    result_.skipped.add(skippedKind_);
    return true;
  }
  skippedColumn_ = 0;
  return false;
}

Parser::Command const* Parser::find(ModeCommands const& commands, Lexer const& lexer, bool remove) {
  Command const* const found =
      std::find_if(commands.begin, commands.end, [&](Command const& command) {
        return lexer.peek().is(command.first) && (command.removable || !remove) &&
               (command.second.empty() || lexer.peekSecond().is(command.second));
      });
  return found == commands.end ? nullptr : found;
}

void Parser::run(Command const& command, Lexer& lexer, bool remove) {
  lexer.next();
  if (!command.second.empty()) {
    lexer.next();
  }
  (this->*command.handler)(lexer, remove);
}

void Parser::parseCommand(Lexer& lexer, Token const& first) {
  bool const remove = lexer.accept("no");
  ModeCommands const inMode = commandsOf(mode_);
  if (Command const* const command = find(commandsOf(Mode::top), lexer, remove)) {
    // Even a faulty command ends the mode: the lines after it must not be applied to the old mode.
    Mode const before = std::exchange(mode_, Mode::top);
    modeColumn_ = position_.column;
    bodyIsIndented_ = false;
    if (command->handler == &Parser::exit && before == Mode::policyClass) {
      mode_ = Mode::policyMap;
    }
    if (command->handler != &Parser::numberedAccessList) {
      numbered_.clear();
    }
    run(*command, lexer, remove);
  } else if (mode_ == Mode::accessList && accessListEntry(lexer, remove)) {
    return;
  } else if (Command const* const inner = find(inMode, lexer, remove)) {
    run(*inner, lexer, remove);
  } else {
    // Not thrown: a lenient reading may encounter millions of them.
    refuse(first, unknownCommand(lexer, inMode, remove));
  }
}

// Reports the second word if the first one begins a command.
SyntaxFailure Parser::unknownCommand(Lexer& lexer, ModeCommands const& commands, bool remove) {
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

void Parser::skip(Token const& first, SyntaxFailure const& failure) {
  skippedKind_ = skippedKind(reader_.line(), failure);
  skippedColumn_ = first.column;
  result_.skipped.add(skippedKind_);
  bool const beside = first.column <= modeColumn_;
  if (beside && (bodyIsIndented_ || contains(foreignBlocks, first))) {
    mode_ = Mode::top;
  }
  if (first.is("banner")) {
    openBanner(first);
  }
}

// Determines the end of the banner, unless it ends on its first line.
void Parser::openBanner(Token const& first) {
  Lexer lexer(reader_.line());
  lexer.next();
  if (contains(bannerKinds, lexer.peek())) {
    lexer.next();
  }
  std::string_view const text = lexer.rest().text;
  if (text.empty()) {
    bannerEnd_ = "EOF";
  } else {
    // The end mark is a character, or the two characters that denote a control character.
    std::size_t const size = text.front() == '^' && text.size() > 1 ? 2 : 1;
    std::string_view const mark = text.substr(0, size);
    bool const isWord = (mark.front() >= '0' && mark.front() <= '9') ||
                        (mark.front() >= 'A' && mark.front() <= 'Z') ||
                        (mark.front() >= 'a' && mark.front() <= 'z');
    if (!isWord && text.find(mark, size) == std::string_view::npos) {
      bannerEnd_ = mark;
    }
  }
  bannerPosition_ = reader_.position(first.column);
  skippedColumn_ = 0;
}

bool Parser::endsBanner(std::string_view line) const {
  return *bannerEnd_ == "EOF" ? Lexer(line).peek().text == "EOF"
                              : line.find(*bannerEnd_) != std::string_view::npos;
}

// Access lists

void Parser::ipAccessList(Lexer& lexer, bool remove) {
  bool const standard = lexer.accept("standard");
  if (!standard) {
    lexer.accept("extended");
  }
  accessList(lexer, Family::ip4, remove, standard ? RuleKind::standardIp4 : RuleKind::ip4);
}

void Parser::macAccessList(Lexer& lexer, bool remove) {
  lexer.accept("extended");
  accessList(lexer, Family::mac, remove);
}

void Parser::accessList(Lexer& lexer, Family family, bool remove, RuleKind kind) {
  AccessListId list{family, nameOf(takeName(lexer, "an access-list name"))};
  lexer.expectEnd();
  if (remove) {
    emit(AccessListRemove{std::move(list)});
    return;
  }
  list_ = {family, withoutColumn(list.name)};
  ruleKind_ = kind;
  emit(AccessListOpen{std::move(list), kind == RuleKind::standardIp4});
  enter(Mode::accessList);
}

// One line that names its list by number, as if the list's mode were open for this line.
void Parser::numberedAccessList(Lexer& lexer, bool remove) {
  std::uint64_t number = 0;
  Token const token = lexer.peek();
  bool const standard =
      parseNumber(token.text, 1, 99, number) || parseNumber(token.text, 1300, 1999, number);
  if (!standard && !parseNumber(token.text, 100, 199, number) &&
      !parseNumber(token.text, 2000, 2699, number)) {
    lexer.fail("an access-list number 1-199 or 1300-2699");
  }
  lexer.next();
  std::string const name = std::to_string(number);
  list_ = {Family::ip4, {name, token.column}};
  ruleKind_ = standard ? RuleKind::standardIp4 : RuleKind::ip4;
  if (remove && lexer.peek().atEnd()) {
    numbered_.clear();
    emit(AccessListRemove{list_});
    return;
  }
  std::size_t const before = result_.statements.size();
  if (!lexer.peek().is("permit") && !lexer.peek().is("deny") && !lexer.peek().is("remark")) {
    lexer.fail("permit, deny or remark");
  }
  accessListEntry(lexer, remove);
  if (remove) {
    return;
  }
  if (numbered_ != name) {
    // Opened only after the line was parsed.
    result_.statements.insert(result_.statements.begin() + static_cast<std::ptrdiff_t>(before),
                              {position_, 0, subject_, AccessListOpen{list_, standard}});
    numbered_ = name;
    numberedLine_ = position_.line;
  }
  result_.statements.back().block = numberedLine_;
}

// Parses an entry of the list. Returns false, without consuming a word, if the line is not one.
bool Parser::accessListEntry(Lexer& lexer, bool remove) {
  std::optional<std::uint32_t> sequence;
  std::uint64_t number = 0;
  if (parseNumber(lexer.peek().text, 0, std::numeric_limits<std::uint64_t>::max(), number)) {
    isAbout(lexer.peek());
    sequence = static_cast<std::uint32_t>(takeNumber(lexer, "sequence number", 1, highestWord));
  }
  if (sequence && remove) {
    removeSequence(lexer, *sequence);
    return true;
  }
  if (lexer.accept("remark")) {
    remark(lexer, sequence, remove);
    return true;
  }
  bool const permit = lexer.peek().is("permit");
  if (!sequence) {
    isAbout(lexer.peek());
  }
  if (!permit && !lexer.peek().is("deny")) {
    if (sequence) {
      lexer.fail("permit, deny or remark");
    }
    return false;
  }
  lexer.next();
  ConfiguredRule const rule = parseRule(lexer, ruleKind_, permit ? Verdict::permit : Verdict::deny);
  if (remove) {
    emit(RuleRemove{list_, rule});
  } else {
    emit(RuleAdd{list_, sequence, rule});
  }
  return true;
}

void Parser::remark(Lexer& lexer, std::optional<std::uint32_t> sequence, bool remove) {
  if (remove && !lexer.peek().atEnd()) {
    isAbout(lexer.peek());
  }
  std::string text(lexer.rest().text);
  if (remove) {
    emit(RemarkRemove{list_, std::move(text)});
  } else {
    emit(RemarkAdd{list_, sequence, std::move(text)});
  }
}

void Parser::removeSequence(Lexer& lexer, std::uint32_t sequence) {
  bool const remarkOnly = lexer.accept("remark");
  if (remarkOnly) {
    lexer.rest();
  }
  lexer.expectEnd("remark or end of line");
  emit(EntryRemove{list_, sequence, remarkOnly});
}

// Class-maps

// Parses `type WORD`. Only a lenient reading accepts unknown types.
std::string Parser::takeType(Lexer& lexer) const {
  if (!lexer.accept("type")) {
    return {};
  }
  if (!lenient_ && !contains(knownTypes, lexer.peek())) {
    lexer.fail("type inspect, qos or traffic");
  }
  return std::string(takeName(lexer, "a type").text);
}

void Parser::classMap(Lexer& lexer, bool remove) {
  ClassMapOpen open;
  open.type = takeType(lexer);
  bool const any = lexer.accept("match-any");
  open.matchWritten = any || lexer.accept("match-all");
  open.match = any ? ClassMatch::any : ClassMatch::all;
  open.classMap = nameOf(takeName(lexer, "match-any, match-all or a class-map name"));
  lexer.expectEnd();
  if (remove) {
    emit(ClassMapRemove{std::move(open.classMap)});
    return;
  }
  outer_ = withoutColumn(open.classMap);
  emit(std::move(open));
  enter(Mode::classMap);
}

void Parser::match(Lexer& lexer, bool remove) {
  if (lexer.accept("access-group")) {
    matchList(lexer, Family::ip4, remove);
  } else if (lexer.accept("class-map")) {
    ClassMatchClass body{outer_, nameOf(takeName(lexer, "a class-map name")), remove};
    lexer.expectEnd();
    emit(std::move(body));
  } else if (lexer.accept("ip")) {
    matchFamily(lexer, Family::ip4, remove);
  } else if (lexer.accept("ipv6")) {
    matchFamily(lexer, Family::ip6, remove);
  } else if (lexer.accept("mac")) {
    matchFamily(lexer, Family::mac, remove);
  } else {
    lexer.fail("access-group, class-map, ip, ipv6 or mac");
  }
}

void Parser::matchFamily(Lexer& lexer, Family family, bool remove) {
  if (lexer.accept("access-group") || lexer.accept("access-list")) {
    matchList(lexer, family, remove);
    return;
  }
  isAbout(lexer.peek());
  bool const deny = lexer.accept("deny");
  if (!deny) {
    lexer.accept("permit");
  }
  ConfiguredRule const rule =
      parseRule(lexer, extendedRule(family), deny ? Verdict::deny : Verdict::permit);
  emit(ClassMatchRule{outer_, rule, remove});
}

void Parser::matchList(Lexer& lexer, Family family, bool remove) {
  lexer.accept("name");
  AccessListId list{family, nameOf(takeName(lexer, "an access-list name"))};
  lexer.expectEnd();
  emit(ClassMatchList{outer_, std::move(list), remove});
}

// Policy-maps

void Parser::policyMap(Lexer& lexer, bool remove) {
  PolicyMapOpen open;
  open.type = takeType(lexer);
  open.policyMap = nameOf(takeName(lexer, "a policy-map name"));
  // Some dialects specify the direction here; this one does so where the policy-map is attached.
  if (!lexer.accept("in")) {
    lexer.accept("out");
  }
  lexer.expectEnd();
  if (remove) {
    emit(PolicyMapRemove{std::move(open.policyMap)});
    return;
  }
  outer_ = withoutColumn(open.policyMap);
  emit(std::move(open));
  enter(Mode::policyMap);
}

void Parser::policyClass(Lexer& lexer, bool remove) {
  // Even a faulty header ends the mode: the lines after it must not be applied to the previous
  // class.
  mode_ = Mode::policyMap;
  takeType(lexer);
  Name name = nameOf(takeName(lexer, "a class name"));
  std::optional<Name> other;
  if (!remove && lexer.accept("insert-before")) {
    other = nameOf(takeName(lexer, "a class name"));
  }
  lexer.expectEnd(remove || other ? "end of line" : "insert-before or end of line");
  if (remove) {
    emit(PolicyClassRemove{outer_, std::move(name)});
    return;
  }
  className_ = withoutColumn(name);
  emit(PolicyClassOpen{outer_, std::move(name), std::move(other)});
  mode_ = Mode::policyClass;
  classLine_ = position_.line;
}

void Parser::setAction(Lexer& lexer, bool remove) {
  isAbout(lexer.peek());
  PolicyClassAction body{outer_, className_, takeActionKind(lexer), std::nullopt};
  if (!remove || !lexer.peek().atEnd()) {
    body.value = static_cast<std::uint32_t>(takeNumber(lexer, "action value", 0, highestWord));
  }
  if (remove) {
    body.value.reset();
  }
  lexer.expectEnd();
  emit(std::move(body));
}

// Interfaces

void Parser::interface(Lexer& lexer, bool remove) {
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

void Parser::address(Lexer& lexer, Family family, bool remove) {
  InterfaceAddress body{outer_, family, std::nullopt, false, remove};
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

void Parser::switchport(Lexer& lexer, bool remove) {
  lexer.expectEnd();
  emit(InterfaceSwitchport{outer_, !remove});
}

void Parser::shutdown(Lexer& lexer, bool remove) {
  lexer.expectEnd();
  emit(InterfaceShutdown{outer_, !remove});
}

void Parser::channelGroup(Lexer& lexer, bool remove) {
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

void Parser::servicePolicy(Lexer& lexer, bool remove) {
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

// Other commands

void Parser::routing(Lexer& lexer, Family family, bool remove) {
  lexer.expectEnd();
  emit(Routing{family, !remove});
}

void Parser::hostname(Lexer& lexer, bool /*remove*/) {
  takeName(lexer, "a host name");
  lexer.expectEnd();
}

void Parser::ignored(Lexer& lexer, bool /*remove*/) {
  lexer.rest();
}

void Parser::exit(Lexer& lexer, bool /*remove*/) {
  lexer.expectEnd();
}

void Parser::end(Lexer& lexer, bool /*remove*/) {
  lexer.expectEnd();
}

}  // namespace

PolicyText parsePolicyText(SourceText const& source, Reading reading) {
  return Parser(source, reading).parse();
}

}  // namespace PolicyMapTestKit::Text
