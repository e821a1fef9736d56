// SPDX-License-Identifier: Apache-2.0
// What a lenient reading skips: lines that are not understood, the lines below them, and texts such
// as banners.

#include "testkit/text/LineParser.h"
#include "testkit/text/MatchConditions.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

// Unsupported commands that open their own blocks and so end the current mode. Only commands that
// are not also valid inside an interface or a list may be listed here.
constexpr std::array<std::string_view, 6> foreignBlocks = {
    "banner", "control-plane", "line", "route-map", "router", "template"};

constexpr std::array<std::string_view, 5> bannerKinds = {"motd", "login", "exec", "incoming",
                                                         "prompt-timeout"};

// Words of access list entries that are understood, but that rules cannot say.
constexpr std::array<std::string_view, 26> withoutField = {"packet-length",
                                                           "lsap",
                                                           "igmp-type",
                                                           "routing-type",
                                                           "v2-leave",
                                                           "v2-report",
                                                           "v3-report",
                                                           "tos",
                                                           "http-method",
                                                           "tcp-option-length",
                                                           "tcp-flags-mask",
                                                           "dvmrp",
                                                           "host-query",
                                                           "host-report",
                                                           "pim",
                                                           "trace",
                                                           "option",
                                                           "evaluate",
                                                           "dynamic",
                                                           "flow-label",
                                                           "routing",
                                                           "hbh",
                                                           "mobility",
                                                           "auth",
                                                           "dest-option",
                                                           "undetermined-transport"};

constexpr std::size_t longestPlace = 80;

// True for lines that attach something, or look like it: `[no] service-policy`, `[no] zone-member`,
// `[no] ip|ipv4|ipv6|mac [port] access-group|traffic-filter`.
bool isAboutAttachments(Lexer lexer) {
  static constexpr std::array<std::string_view, 2> firstWords = {"service-policy", "zone-member"};
  static constexpr std::array<std::string_view, 5> families = {"ip", "ipv4", "ipv6", "mac",
                                                               "ethernet-services"};
  static constexpr std::array<std::string_view, 2> groups = {"access-group", "traffic-filter"};
  lexer.accept("no");
  if (contains(firstWords, lexer.peek())) {
    return true;
  }
  if (!contains(families, lexer.next())) {
    return false;
  }
  lexer.accept("port");
  return contains(groups, lexer.peek());
}

bool isLetterOrDigit(char c) {
  return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

bool LineParser::beginsPolicies(Token const& first) {
  static constexpr std::array<std::string_view, 8> words = {
      "access-list", "class",          "class-map", "match",
      "policy-map",  "service-policy", "zone-pair", "object-group"};
  return contains(words, first);
}

void LineParser::refuse(Token const& first, SyntaxFailure const& failure) {
  if (!lenient_) {
    throw InputError(reader_.position(failure.found.column), failure.expected, failure.found.text);
  }
  skip(first, failure);
}

// True if the line belongs to something that was skipped before it. Counts the line then.
bool LineParser::skippedBefore(Token const& first) {
  if (bannerEnd_) {
    result_.skipped.add("banner", reader_.position(first.column));
    if (endsBanner(reader_.line())) {
      bannerEnd_.reset();
    }
    return true;
  }
  if (skippedColumn_ == 0 || first.atEnd() || first.text.front() == '!') {
    return false;
  }
  if (first.column > skippedColumn_) {
    if (isAboutAttachments(Lexer(reader_.line()))) {
      if (attachesElsewhere(first, skippedPlace())) {
        result_.skipped.sawPolicyLine(true);
        return true;
      }
      if (!first.is("no")) {
        keepAttachment(first, skippedPlace());
      }
    }
    result_.skipped.add(skippedKind_, reader_.position(first.column));
    if (beginsPolicies(first) || Lexer(reader_.line()).peekSecond().is("access-group")) {
      result_.skipped.sawPolicyLine(false);
    }
    return true;
  }
  skippedColumn_ = 0;
  return false;
}

// Of a line about attachments: true if it attaches something, at the place, which is no interface.
bool LineParser::attachesElsewhere(Token const& first, std::string const& place) {
  static constexpr std::array<Handler, 5> attaching = {
      &LineParser::servicePolicy, &LineParser::ipAccessGroup, &LineParser::ip6AccessGroup,
      &LineParser::macAccessGroup, &LineParser::zoneMember};
  Lexer lexer(reader_.line());
  bool const remove = lexer.accept("no");
  Command const* const command = find(commandsOf(Mode::interface), lexer, remove);
  if (command == nullptr ||
      std::find(attaching.begin(), attaching.end(), command->handler) == attaching.end()) {
    return false;
  }
  Mode const mode = std::exchange(mode_, Mode::top);
  Name const outer = std::exchange(outer_, Name{place});
  std::size_t const before = result_.statements.size();
  position_ = reader_.position(first.column);
  isAbout(first);
  bool attaches = true;
  try {
    emit(PlaceOpen{outer_});
    run(*command, lexer, remove);
  } catch (SyntaxFailure const&) {
    attaches = false;
    result_.statements.resize(before);
  }
  mode_ = mode;
  outer_ = outer;
  return attaches;
}

// Of a line about attachments: keeps it, to explain it.
void LineParser::keepAttachment(Token const& first, std::string const& place) {
  position_ = reader_.position(first.column);
  Name const name{mode_ == Mode::interface ? outer_.text : place};
  if (mode_ != Mode::interface) {
    emit(PlaceOpen{name});
  }
  std::string_view const line = Lexer(reader_.line()).rest().text;
  emit(SkippedAttachment{name, std::string(line.substr(0, longestPlace))});
}

void LineParser::skip(Token const& first, SyntaxFailure const& failure) {
  bool const attaches = isAboutAttachments(Lexer(reader_.line()));
  if (attaches && mode_ == Mode::top && first.column <= modeColumn_) {
    bool const inBlock = contains(foreignBlocks, Lexer(skippedHeader_).peek());
    if (attachesElsewhere(first, inBlock ? skippedPlace() : "the device")) {
      return;
    }
  }
  skippedKind_ = skippedKind(reader_.line(), failure);
  skippedHeader_ = Lexer(reader_.line()).rest().text;
  skippedInInterface_ = mode_ == Mode::interface && first.column > modeColumn_;
  skippedColumn_ = first.column;
  result_.skipped.add(skippedKind_, position_);
  knownToBeInexpressible_ = contains(withoutField, failure.found);
  if (mode_ == Mode::classMap && first.is("match") && !widening_) {
    Lexer lexer(reader_.line());
    lexer.next();
    emit(ClassMatchCondition{outer_, unknownCondition(lexer), false});
    return;
  }
  if (mode_ == Mode::accessList && skipsEntry(Lexer(reader_.line()), first.column > modeColumn_)) {
    return;
  }
  if (first.is("access-list") && skipsNumberedEntry()) {
    return;
  }
  if (mode_ == Mode::objectGroup && first.column > modeColumn_) {
    emit(ObjectGroupSkipped{outer_});
  }
  if (attaches && !first.is("no")) {
    keepAttachment(first, "the device");
  }
  bool const beside = first.column <= modeColumn_;
  if (beside && (bodyIsIndented_ || contains(foreignBlocks, first))) {
    mode_ = Mode::top;
  }
  openText(first);
}

// Where the lines below the skipped one are.
std::string LineParser::skippedPlace() const {
  std::string const place(skippedHeader_.substr(0, longestPlace));
  return skippedInInterface_ ? outer_.text + " " + place : place;
}

// If the line begins a text that the following lines continue: determines its end.
void LineParser::openText(Token const& first) {
  Lexer lexer(reader_.line());
  lexer.next();
  if (first.is("banner")) {
    openBanner(lexer);
  } else if (first.is("macro") && lexer.peek().is("name")) {
    bannerEnd_ = "@";
  } else if (std::string_view const line = lexer.rest().text;
             line.ends_with("^C") && line.find("^C") == line.size() - 2) {
    bannerEnd_ = "^C";
  } else {
    return;
  }
  bannerPosition_ = reader_.position(first.column);
  skippedColumn_ = 0;
}

// Determines the end of the banner, unless it ends on its first line.
void LineParser::openBanner(Lexer& lexer) {
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
    // A word is the text itself; a letter alone is none.
    bool const isWord = Lexer(text).peek().text.size() > 1 && isLetterOrDigit(mark.front());
    if (!isWord && text.find(mark, size) == std::string_view::npos) {
      bannerEnd_ = mark;
    }
  }
}

bool LineParser::endsBanner(std::string_view line) const {
  return *bannerEnd_ == "EOF" ? Lexer(line).peek().text == "EOF"
                              : line.find(*bannerEnd_) != std::string_view::npos;
}

}  // namespace PolicyMapTestKit::Text
