// SPDX-License-Identifier: Apache-2.0
#include "lab/Shell.h"

#include "lab/Changes.h"
#include "lab/Faults.h"
#include "lab/Kit.h"
#include "lab/TypeListing.h"
#include "testkit/text/ShownText.h"

#include <Kor/EventLoop.h>
#include <Kor/Strep.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <variant>

namespace lab {

namespace {

using Kor::GenericPlace;
using Kor::GenericRef;
using Kor::GenericValue;

constexpr std::string_view helpText =
    "  NAME = VALUE                    keep a value under a name\n"
    "  Ns::Type(VALUE, ...)            build an object or a value\n"
    "  NAME.attribute                  read; a collection lists its members\n"
    "  NAME.attribute = VALUE          write\n"
    "  NAME.collection[KEY]            a member; assign to set it\n"
    "  NAME.collection[KEY] = []       create a member of an owned collection\n"
    "  NAME.function(VALUE, ...)       call\n"
    "  del NAME.collection[KEY]        remove a member\n"
    "  del NAME                        forget a name\n"
    "  load FILE                       program policy text; FILE may be quoted\n"
    "  run | advance SECONDS           run the event loop; its time is virtual\n"
    "  objects | types [NAME] | help | quit\n"
    "Values are written as they print: 7, 'text', True, None, [1, 2], Value(...), Ptr(...).\n";

constexpr std::string_view commands[] = {"advance", "del",  "help", "load",
                                         "objects", "quit", "run",  "types"};

bool isNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isNamePart(char c) {
  return isNameStart(c) || (c >= '0' && c <= '9');
}
bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

bool isValueWord(std::string_view word) {
  return word == "True" || word == "False" || word == "None";
}

// The result of an expression: a writable place, or a value.
using Result = std::variant<GenericRef, GenericPlace>;

GenericRef valueOf(Result const& result) {
  if (auto const* const place = std::get_if<GenericPlace>(&result)) {
    return place->get();
  }
  return std::get<GenericRef>(result);
}

// The text form of a value, safe for the terminal.
std::string textOf(GenericRef const& value) {
  return shownText(Kor::valueToStrep(value.value()).view());
}

// The objects of a lab, by the names that the shell gives them.
std::map<std::string, GenericRef, std::less<>> objectsOf(Lab const& lab) {
  auto const named = [](char const* name, Kor::Ptr<Kor::PtrInterface const> const& object) {
    return std::pair<std::string const, GenericRef>(name, GenericRef(GenericValue(object, false)));
  };
  return {named("acls", lab.acls()),
          named("classMaps", lab.classMaps()),
          named("helper", lab.helper()),
          named("machine", lab.machine()),
          named("policyMaps", lab.policyMaps()),
          named("status", lab.status())};
}

}  // namespace

// Parses and evaluates one line from left to right.
class Shell::Parser {
 public:
  using Objects = std::map<std::string, GenericRef, std::less<>>;

  // `start` is where parsing begins; columns refer to the whole line.
  Parser(std::string_view line, Objects const& objects, std::size_t start = 0)
      : line_(line), objects_(objects), at_(start) {}

  Result expression() {
    if (++depth_ > deepest) {
      fail("nested too deep");
    }
    Result result = reached(primary());
    --depth_;
    return result;
  }

  [[nodiscard]] bool atEnd() {
    skip();
    return at_ == line_.size() || line_[at_] == '#';
  }
  bool at(char c) {
    skip();
    return at_ < line_.size() && line_[at_] == c;
  }
  bool take(char c) {
    bool const here = at(c);
    at_ += here ? 1 : 0;
    return here;
  }
  void needEnd() {
    if (!atEnd()) {
      fail("expected the end of the line");
    }
  }
  std::string name(std::string_view what) {
    skip();
    std::size_t const start = at_;
    if (at_ == line_.size() || !isNameStart(line_[at_])) {
      fail("expected " + std::string(what));
    }
    while (at_ < line_.size() && isNamePart(line_[at_])) {
      ++at_;
    }
    if (at_ - start > longestName) {
      at_ = start;
      fail("expected " + std::string(what) + " of at most " + std::to_string(longestName) +
           " characters");
    }
    return std::string(line_.substr(start, at_ - start));
  }
  // A name, or several joined by `::`.
  std::string qualifiedName(std::string_view what) {
    std::string word = name(what);
    while (line_.substr(at_).starts_with("::")) {
      at_ += 2;
      word += "::" + name("a type");
    }
    return word;
  }
  // Consumes and returns the command if the next word is one; otherwise empty.
  std::string_view command() {
    skip();
    std::size_t const start = at_;
    while (at_ < line_.size() && isNamePart(line_[at_])) {
      ++at_;
    }
    std::string_view const word = line_.substr(start, at_ - start);
    bool const separate = at_ == line_.size() || isSpace(line_[at_]) || line_[at_] == '#';
    // Before `=`, a command word is the name of an object.
    if (separate && !at('=') &&
        std::find(std::begin(commands), std::end(commands), word) != std::end(commands)) {
      return word;
    }
    at_ = start;
    return {};
  }
  // The text consumed since `start`, without surrounding blanks.
  [[nodiscard]] std::string_view textFrom(std::size_t start) const {
    return trimmed(line_.substr(start, at_ - start));
  }
  [[nodiscard]] std::size_t place() const { return at_; }
  [[noreturn]] void fail(std::string const& message) const {
    throw ShellError("column " + std::to_string(at_ + 1) + ": " + message);
  }

 private:
  static constexpr unsigned deepest = 200;
  static constexpr std::size_t longestName = 255;

  // Applies the attributes, keys and calls that follow `result`.
  Result reached(Result result) {
    while (true) {
      if (take('.')) {
        // Not an assignment: assigning to a place writes to it.
        GenericPlace attribute = valueOf(result)[name("an attribute")];
        result.emplace<GenericPlace>(std::move(attribute));
      } else if (take('[')) {
        GenericValue const key = valueOf(expression()).value();
        need(']');
        auto const* const place = std::get_if<GenericPlace>(&result);
        if (place == nullptr) {
          fail("only a collection takes [KEY]");
        }
        GenericPlace member = (*place)[key];
        result.emplace<GenericPlace>(std::move(member));
      } else if (take('(')) {
        auto const* const place = std::get_if<GenericPlace>(&result);
        if (place == nullptr) {
          fail("only a function takes (VALUE, ...)");
        }
        GenericRef answer = place->invoke(arguments(')'));
        result.emplace<GenericRef>(std::move(answer));
      } else {
        return result;
      }
    }
  }

  void skip() {
    while (at_ < line_.size() && isSpace(line_[at_])) {
      ++at_;
    }
  }
  void need(char c) {
    if (!take(c)) {
      fail(std::string("expected ") + c);
    }
  }
  Kor::GenericList::Ptr arguments(char closing) {
    auto list = Kor::GenericList::of();
    if (take(closing)) {
      return list;
    }
    do {
      list->append(valueOf(expression()).value());
    } while (take(','));
    need(closing);
    return list;
  }

  Result primary() {
    skip();
    if (take('[')) {
      return GenericRef(GenericValue(arguments(']')));
    }
    std::size_t const start = at_;
    if (atEnd()) {
      fail("expected a value");
    }
    if (!isNameStart(line_[at_]) || isLiteral()) {
      return literal();
    }
    std::string const word = qualifiedName("a value");
    if (word.find(':') != std::string::npos) {
      Kor::KorType const& type = Kor::typeNamed(word);
      need('(');
      return GenericRef(Kor::genericConstruct(type, arguments(')')).value());
    }
    auto const object = objects_.find(word);
    if (object == objects_.end()) {
      at_ = start;
      fail("there is no " + word + " here");
    }
    return object->second;
  }

  // True, False, None, Value(, Ptr(, float(, and texts with a prefix.
  [[nodiscard]] bool isLiteral() const {
    std::string_view const ahead = line_.substr(at_);
    std::size_t length = 0;
    while (length < ahead.size() && isNamePart(ahead[length])) {
      ++length;
    }
    std::string_view const word = ahead.substr(0, length);
    char const next = length < ahead.size() ? ahead[length] : '\0';
    return isValueWord(word) ||
           (next == '(' && (word == "Value" || word == "Ptr" || word == "float")) || next == '\'' ||
           next == '"';
  }
  Result literal() {
    Kor::String const text(line_);
    Kor::TextIterator it(text, at_);
    GenericValue value;
    try {
      Kor::sequenceToValue(it, text.end(), value);
    } catch (Kor::RangeException const& error) {
      throw ShellError(error.text());  // the text already contains the position
    }
    at_ = it.position();
    return GenericRef(value);
  }

  std::string_view line_;
  Objects const& objects_;
  std::size_t at_;
  unsigned depth_ = 0;  // nesting depth of the current expression
};

void Shell::execute(std::string const& written) {
  std::string_view const text = trimmed(written);
  // Blanks before the text count as columns.
  std::string_view const line(written.data(),
                              static_cast<std::size_t>(text.end() - written.data()));
  if (text.empty() || text.front() == '#' || carriedOut(line) || kept(line)) {
    return;
  }
  Parser parser(line, objects_);
  Result const result = parser.expression();
  auto const* const place = std::get_if<GenericPlace>(&result);
  if (parser.at('=')) {
    if (place == nullptr) {
      parser.fail("only an attribute or a member can be written");
    }
    static_cast<void>(parser.take('='));
    GenericValue const value = valueOf(parser.expression()).value();
    parser.needEnd();
    GenericPlace target = *place;
    target = value;
    return;
  }
  parser.needEnd();
  if (place != nullptr) {
    print(*place);
  } else {
    print(std::get<GenericRef>(result));
  }
}

bool Shell::quits(std::string_view line) {
  static Parser::Objects const none;
  Parser parser(line, none);
  return parser.command() == "quit" && parser.atEnd();
}

// NAME = VALUE
bool Shell::kept(std::string_view line) {
  Parser parser(line, objects_);
  if (parser.atEnd() || !isNameStart(line[parser.place()])) {
    return false;
  }
  std::size_t const start = parser.place();
  std::string const name = parser.name("a name");
  if (!parser.take('=')) {
    return false;
  }
  if (isValueWord(name)) {
    Parser(line, objects_, start).fail(name + " is a value, not a name");
  }
  GenericRef const value = valueOf(parser.expression());
  parser.needEnd();
  objects_.insert_or_assign(name, value);
  return true;
}

// Removes a name or a member.
void Shell::del(std::string_view line, std::size_t start) {
  Parser parser(line, objects_, start);
  if (!parser.atEnd() && isNameStart(line[parser.place()])) {
    Parser ahead = parser;
    std::string const name = ahead.name("a name");
    if (ahead.atEnd() && objects_.erase(name) != 0) {
      return;
    }
  }
  Result const result = parser.expression();
  parser.needEnd();
  auto const* const place = std::get_if<GenericPlace>(&result);
  if (place == nullptr) {
    parser.fail("only a member can be removed");
  }
  place->del();
}

void Shell::advance(std::string_view line, std::size_t start) {
  Parser parser(line, objects_, start);
  auto const seconds = Kor::converted<double>(valueOf(parser.expression()).value(), "seconds");
  std::string const written(parser.textFrom(start));
  parser.needEnd();
  if (!(seconds >= 0 && seconds <= longestAdvance)) {
    throw Kor::RangeException("the time to advance must be 0 to 1000000 seconds, not " + written);
  }
  Kor::EventLoop::global().runFor(seconds);
  if (lab_) {
    lab_->advance(std::chrono::duration<double>(seconds));
  }
}

void Shell::runDue() {
  Kor::EventLoop::global().runUntilIdle();
  if (lab_) {
    lab_->settle();
  }
}

// Programs policy text as an edit of what was loaded before, and prints what changed. The first
// time it creates a lab and names its objects.
void Shell::load(std::string_view line, std::size_t start) {
  Parser parser(line, objects_, start);
  if (parser.atEnd()) {
    parser.fail("expected a file");
  }
  std::string file(trimmed(line.substr(start)));
  if (file.front() == '\'' || file.front() == '"') {
    file = Kor::converted<Kor::String>(valueOf(parser.expression()).value(), "file").stdString();
    parser.needEnd();
  }
  SourceText const source = SourceText::fromFile(file);
  std::unique_ptr<Lab> created = lab_ ? nullptr : std::make_unique<Lab>();
  Lab& lab = created ? *created : *lab_;
  if (created) {
    for (auto const& [name, object] : objectsOf(lab)) {
      if (objects_.contains(name)) {
        std::string text = "load: the name " + name;
        text.append(" is in use; `del ").append(name).append("` removes it");
        throw ShellError(text);
      }
    }
  }
  Snapshot const before = lab.snapshot();
  lab.load(source);
  if (created) {
    objects_.merge(objectsOf(lab));
    lab_ = std::move(created);
  }
  printChanges(console_.out, console_.style, difference(before, lab.snapshot()));
}

void Shell::types(std::string_view line, std::size_t start) {
  Parser parser(line, objects_, start);
  if (parser.atEnd()) {
    printTypes(Kor::KorType::all(), console_);
    return;
  }
  std::string const name = parser.qualifiedName("a type");
  parser.needEnd();
  for (Kor::KorType const* const type : typesNamed(name)) {
    printType(*type, console_);
  }
}

bool Shell::carriedOut(std::string_view line) {
  Parser parser(line, objects_);
  std::string_view const command = parser.command();
  std::size_t const rest = parser.place();
  if (command == "advance") {
    advance(line, rest);
  } else if (command == "load") {
    load(line, rest);
  } else if (command == "del") {
    del(line, rest);
  } else if (command == "types") {
    types(line, rest);
  } else if (command.empty() || command == "quit") {
    return false;
  } else {
    parser.needEnd();
    if (command == "help") {
      console_.out << helpText;
    } else if (command == "run") {
      runDue();
    } else {
      printObjects();
    }
  }
  return true;
}

void Shell::print(GenericRef const& value) {
  if (!value.value().present()) {
    return;
  }
  console_.out << textOf(value) << "\n";
  if (value.value().kind() != GenericValue::Kind::object) {
    return;
  }
  Table table({{"attribute"}, {"value"}}, 2);
  for (Kor::KorAttr::Ptr const& attr : value.type()->attrs()) {
    if (attr->isFunction()) {
      continue;
    }
    GenericPlace const place = value[attr->name().view()];
    std::string text;
    if (attr->isCollection()) {
      text = counted(place.size(), "member");
    } else {
      text = textOf(place.get());
    }
    table.add({attr->name().stdString(), text});
  }
  table.print(console_.out, console_.style);
}

void Shell::print(GenericPlace const& place) {
  if (place.attr().isFunction()) {
    console_.out << place.attr().name() << shapeOf(place.attr()) << "\n";
  } else if (place.isWholeCollection()) {
    for (auto const& [key, member] : place) {
      console_.out << textOf(key) << ": " << textOf(member) << "\n";
    }
  } else {
    print(place.get());
  }
}

void Shell::printObjects() const {
  Table table({{"name"}, {"value"}}, 0);
  for (auto const& [name, value] : objects_) {
    table.add({name, textOf(value)});
  }
  table.print(console_.out, console_.style);
}

std::vector<std::string> Shell::completions(std::string_view line) const {
  std::size_t start = line.size();
  while (start > 0 && (isNamePart(line[start - 1]) || line[start - 1] == ':')) {
    --start;
  }
  std::string_view const begun = line.substr(start);
  std::vector<std::string> found;
  auto const offer = [&](std::string_view name) {
    if (name.starts_with(begun)) {
      found.emplace_back(name);
    }
  };
  if (start > 0 && line[start - 1] == '.') {
    // The longest part before the dot that is a complete expression.
    std::string_view const before = line.substr(0, start - 1);
    for (std::size_t from = 0; from < before.size(); ++from) {
      if (!isNameStart(before[from]) || (from > 0 && isNamePart(before[from - 1]))) {
        continue;
      }
      // Completion must not call functions.
      if (before.substr(from).find('(') != std::string_view::npos) {
        continue;
      }
      try {
        Parser parser(before.substr(from), objects_);
        GenericRef const object = valueOf(parser.expression());
        parser.needEnd();
        for (Kor::KorAttr::Ptr const& attr : object.type()->attrs()) {
          offer(attr->name().view());
        }
        break;
      } catch (std::exception const&) {
        continue;  // not an expression, or one without attributes
      }
    }
  } else {
    std::for_each(std::begin(commands), std::end(commands), offer);
    for (auto const& [name, value] : objects_) {
      offer(name);
    }
    for (Kor::KorType const* const type : Kor::KorType::all()) {
      if (type->operations().construct != nullptr) {
        offer(type->name());
      }
    }
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

}  // namespace lab
