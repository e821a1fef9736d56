// SPDX-License-Identifier: Apache-2.0
// The lines of class-maps.

#include "testkit/text/LineParser.h"
#include "testkit/text/MatchConditions.h"
#include "testkit/text/TypedNames.h"

namespace PolicyMapTestKit::Text {

namespace {

// The types of class-maps and policy-maps that share the syntax of plain ones.
constexpr std::array<std::string_view, 3> knownTypes = {"inspect", "qos", "traffic"};

}  // namespace

// Parses `type WORD`. Only a lenient reading accepts unknown types.
std::string LineParser::takeType(Lexer& lexer) const {
  if (!lexer.accept("type")) {
    return {};
  }
  if (!lenient_ && !contains(knownTypes, lexer.peek())) {
    lexer.fail("type inspect, qos or traffic");
  }
  std::string type(takeName(lexer, "a type").text);
  // `type inspect http match-any NAME`: what is inspected besides headers.
  bool const hasSubtype = (equalsKeyword(type, "inspect") || equalsKeyword(type, "control")) &&
                          !lexer.peekSecond().atEnd() && !lexer.peek().is("match-any") &&
                          !lexer.peek().is("match-all") && !lexer.peek().is("input") &&
                          !lexer.peek().is("output") && !lexer.peekSecond().is("insert-before");
  if (lenient_ && hasSubtype) {
    type.append(" ").append(lexer.next().text);
  }
  return type;
}

Name LineParser::nameOfType(Token const& name, std::string const& type) {
  bool const isUsual =
      type.empty() || std::any_of(knownTypes.begin(), knownTypes.end(),
                                  [&](auto known) { return equalsKeyword(type, known); });
  Name named = nameOf(name);
  if (!isUsual && !name.is("class-default")) {
    named.text = nameWithType(named.text, lowerCase(type));
  }
  return named;
}

void LineParser::classMap(Lexer& lexer, bool remove) {
  ClassMapOpen open;
  open.type = takeType(lexer);
  bool const any = lexer.accept("match-any");
  open.matchWritten = any || lexer.accept("match-all");
  open.match = any ? ClassMatch::any : ClassMatch::all;
  open.classMap =
      nameOfType(takeName(lexer, "match-any, match-all or a class-map name"), open.type);
  // Some dialects say here which packets the class is about; its conditions say it here.
  if (!lexer.accept("ipv4")) {
    lexer.accept("ipv6");
  }
  lexer.expectEnd();
  if (remove) {
    emit(ClassMapRemove{std::move(open.classMap)});
    return;
  }
  outer_ = withoutColumn(open.classMap);
  type_ = open.type;
  emit(std::move(open));
  enter(Mode::classMap);
}

void LineParser::match(Lexer& lexer, bool remove) {
  if (std::optional<MatchCondition> condition = takeCondition(lexer)) {
    emit(ClassMatchCondition{outer_, *std::move(condition), remove});
  } else if (lexer.accept("access-group") || lexer.accept("access-list")) {
    bool const ip6 = lexer.accept("ipv6");
    bool const mac = !ip6 && (lexer.accept("mac") || lexer.accept("ethernet-services"));
    lexer.accept("ipv4");
    matchList(lexer, ip6 ? Family::ip6 : mac ? Family::mac : Family::ip4, remove);
  } else if (lexer.accept("class-map")) {
    ClassMatchClass body{outer_, nameOfType(takeName(lexer, "a class-map name"), type_), remove};
    lexer.expectEnd();
    emit(std::move(body));
  } else if (lexer.accept("ip") || lexer.accept("ipv4")) {
    matchFamily(lexer, Family::ip4, remove);
  } else if (lexer.accept("ipv6")) {
    matchFamily(lexer, Family::ip6, remove);
  } else if (lexer.accept("mac")) {
    matchFamily(lexer, Family::mac, remove);
  } else {
    lexer.fail(std::string(conditionWords()));
  }
}

void LineParser::matchFamily(Lexer& lexer, Family family, bool remove) {
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

void LineParser::matchList(Lexer& lexer, Family family, bool remove) {
  lexer.accept("name");
  AccessListId list{family, nameOf(takeName(lexer, "an access-list name"))};
  lexer.expectEnd();
  emit(ClassMatchList{outer_, std::move(list), remove});
}

}  // namespace PolicyMapTestKit::Text
