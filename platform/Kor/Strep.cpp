// SPDX-License-Identifier: Apache-2.0
#include "Kor/Strep.h"

#include "Kor/NumberLiteral.h"
#include "Kor/StringLiteral.h"
#include "Kor/TextAhead.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace Kor {
namespace {

// Consumes a run of decimal digits that is a whole literal, as most integers are; returns false,
// without consuming anything, for literals of another kind.
bool takePlainInteger(TextIterator& it, TextIterator const& end, std::uint64_t& number) {
  std::string_view const text = textAhead(it, end);
  auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
  auto const length = static_cast<std::size_t>(result.ptr - text.data());
  constexpr std::string_view goOn = "_xXoObB";  // after digits, or after the zero of a prefix
  if (result.ec != std::errc() || length == 0 ||
      (length < text.size() && goOn.find(text[length]) != std::string_view::npos)) {
    return false;
  }
  skipBytes(it, length);
  return true;
}

template <class Number>
Number readInteger(TextIterator& it, TextIterator const& end, Number lowest, Number highest) {
  skipSpace(it, end);
  TextIterator const start = it;
  std::uint64_t plain = 0;
  if (takePlainInteger(it, end, plain) && std::in_range<Number>(plain) &&
      static_cast<Number>(plain) >= lowest && static_cast<Number>(plain) <= highest) {
    return static_cast<Number>(plain);
  }
  it = start;
  std::string_view const text = textAhead(it, end);
  IntegerLiteral const literal = integerLiteral(text);
  std::string const& digits = literal.digits.plain;
  if (digits.empty()) {
    failAtColumn("expected an integer", it.position());
  }
  std::uint64_t magnitude = 0;
  auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude,
                                      static_cast<int>(literal.base));
  // Minus zero is zero, so it is valid for unsigned numbers too.
  std::uint64_t const most = literal.negative
                                 ? (std::is_signed_v<Number> ? std::uint64_t{1} << 63 : 0)
                                 : static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
  auto const number = static_cast<Number>(literal.negative ? 0 - magnitude : magnitude);
  if (result.ec != std::errc() || magnitude > most || number < lowest || number > highest) {
    failAtColumn(std::string(text.substr(0, literal.length)) + " out of range", it.position());
  }
  skipBytes(it, literal.length);
  return number;
}

// Consumes white space and then this character, and returns whether it was there.
bool takeChar(TextIterator& it, TextIterator const& end, char wanted) {
  skipSpace(it, end);
  bool const there = charAhead(it, end) == wanted && !atEnd(it, end);
  skipBytes(it, there ? 1 : 0);
  return there;
}

void needChar(TextIterator& it, TextIterator const& end, char wanted) {
  if (!takeChar(it, end, wanted)) {
    failAtColumn("expected " + std::string(1, wanted), it.position());
  }
}

// Parses a text. The result is in the parsed text, or in the buffer.
std::string_view readText(TextIterator& it, TextIterator const& end, std::string& buffer) {
  if (std::optional<std::string_view> const plain = takePlainLiteral(it, end)) {
    return *plain;
  }
  buffer = readStringLiteral(it, end);
  return buffer;
}

}  // namespace

void appendStrep(std::string& to, String const& text) {
  appendStringLiteral(to, text.view());
}

void appendStrep(std::string& to, std::uint64_t number) {
  std::array<char, 20> digits{};
  to.append(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
}

void appendStrep(std::string& to, std::int64_t number) {
  std::array<char, 20> digits{};
  to.append(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
}

String valueToStrep(String const& text) {
  std::string literal;
  literal.reserve(text.length() + 2);
  appendStringLiteral(literal, text.view());
  return literal;
}

String valueToStrep(double number) {
  if (std::isnan(number)) {
    return "float('nan')";
  }
  if (std::isinf(number)) {
    return number < 0 ? "float('-inf')" : "float('inf')";
  }
  std::array<char, 32> buffer{};
  auto const result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  std::string text(buffer.data(), result.ptr);
  if (text.find_first_of(".e") == std::string::npos) {
    text.append(".0");
  }
  return text;
}

String signedToStrep(std::int64_t number) {
  return std::to_string(number);
}
String unsignedToStrep(std::uint64_t number) {
  return std::to_string(number);
}

void sequenceToValue(TextIterator& it, TextIterator const& end, String& text) {
  skipSpace(it, end);
  if (std::optional<std::string_view> const plain = takePlainLiteral(it, end)) {
    text = String(*plain);
  } else {
    text = String(readStringLiteral(it, end));
  }
}

void sequenceToValue(TextIterator& it, TextIterator const& end, Name& text) {
  sequenceToValue(it, end, static_cast<String&>(text));
}

void sequenceToValue(TextIterator& it, TextIterator const& end, bool& value) {
  skipSpace(it, end);
  if (takeString(it, end, "True")) {
    value = true;
  } else if (takeString(it, end, "False")) {
    value = false;
  } else {
    failAtColumn("expected True or False", it.position());
  }
}

void sequenceToValue(TextIterator& it, TextIterator const& end, double& value) {
  skipSpace(it, end);
  constexpr std::array<std::pair<std::string_view, double>, 3> special{
      {{"float('nan')", std::numeric_limits<double>::quiet_NaN()},
       {"float('-inf')", -std::numeric_limits<double>::infinity()},
       {"float('inf')", std::numeric_limits<double>::infinity()}}};
  for (auto const& [text, meaning] : special) {
    if (takeString(it, end, text)) {
      value = meaning;
      return;
    }
  }
  std::string_view const text = textAhead(it, end);
  IntegerLiteral const whole = integerLiteral(text);
  if (whole.base != 10) {
    auto const integer =
        readInteger<std::int64_t>(it, end, std::numeric_limits<std::int64_t>::min(),
                                  std::numeric_limits<std::int64_t>::max());
    value = static_cast<double>(integer);
    return;
  }
  FloatLiteral const literal = floatLiteral(text);
  double number = 0;
  auto const result =
      std::from_chars(literal.plain.data(), literal.plain.data() + literal.plain.size(), number);
  if (result.ec == std::errc::result_out_of_range) {
    failAtColumn(std::string(text.substr(0, literal.length)) + " out of range", it.position());
  }
  if (result.ec != std::errc()) {
    failAtColumn("expected a number", it.position());
  }
  skipBytes(it, literal.length);
  value = number;
}

std::int64_t sequenceToInteger(TextIterator& it, TextIterator const& end, std::int64_t lowest,
                               std::int64_t highest) {
  return readInteger<std::int64_t>(it, end, lowest, highest);
}

std::uint64_t sequenceToUnsigned(TextIterator& it, TextIterator const& end, std::uint64_t highest) {
  return readInteger<std::uint64_t>(it, end, 0, highest);
}

void rethrowFromDeserializeAttr(RangeException const& error, String const& name) {
  throw RangeException("attribute '" + name.stdString() + "': " + error.text());
}

void needEnd(TextIterator const& it) {
  TextIterator rest = it;
  skipSpace(rest, it.text().end());
  if (rest.position() != it.text().length()) {
    throw RangeException("junk at column " + std::to_string(rest.position()) + " deserializing " +
                         it.text().stdString());
  }
}

String enumToText(EnumNames const& names, std::int32_t value) {
  if (value >= 0 && static_cast<std::size_t>(value) < names.count) {
    return names.names[value];
  }
  return signedToStrep(value);
}

String enumToStrep(EnumNames const& names, std::int32_t value) {
  if (value < 0 || static_cast<std::size_t>(value) >= names.count) {
    return signedToStrep(value);
  }
  std::string literal("'");
  literal.append(names.names[value]).push_back('\'');
  return literal;
}

std::int32_t sequenceToEnum(TextIterator& it, TextIterator const& end, EnumNames const& names) {
  skipSpace(it, end);
  char const c = charAhead(it, end);
  if (c == '\'' || c == '"') {
    std::string buffer;
    std::string_view const text = readText(it, end, buffer);
    for (std::size_t i = 0; i < names.count; ++i) {
      if (text == names.names[i]) {
        return static_cast<std::int32_t>(i);
      }
    }
    throw RangeException(std::string(names.type) + " has no such value: " + std::string(text));
  }
  if (integerLiteral(textAhead(it, end)).digits.plain.empty()) {
    failAtColumn("expected " + std::string(names.type), it.position());
  }
  std::int32_t value = 0;
  sequenceToValue(it, end, value);
  return value;
}

void ValueReader::open(TextIterator& it, TextIterator const& end) const {
  constexpr std::string_view head = "Value('";
  constexpr std::string_view tail = "', ** {";
  std::string_view const ahead = textAhead(it, end);
  std::size_t const length = head.size() + typeName_.size() + tail.size();
  if (ahead.size() >= length && ahead.starts_with(head) &&
      ahead.substr(head.size(), typeName_.size()) == typeName_ &&
      ahead.substr(length - tail.size(), tail.size()) == tail) {
    skipBytes(it, length);  // as it is printed
    return;
  }
  needString(it, end, " Value");
  needString(it, end, " (");
  needString(it, end, " '" + std::string(typeName_) + "'");
  needString(it, end, " ,");
  needString(it, end, " **");
  needString(it, end, " {");
}

bool ValueReader::takePrinted(TextIterator& it, TextIterator const& end, std::size_t place) const {
  std::string_view ahead = textAhead(it, end);
  auto const take = [&ahead](std::string_view token) {
    bool const there = ahead.starts_with(token);
    ahead.remove_prefix(there ? token.size() : 0);
    return there;
  };
  if ((place != 0 && !take(", ")) || !take("'") || !take(names_[place]) || !take("': ")) {
    return false;
  }
  it.positionIs(end.position() - ahead.size());
  return true;
}

bool ValueReader::more(TextIterator& it, TextIterator const& end) const {
  if (!takeChar(it, end, '}')) {
    if (atEnd(it, end)) {
      throw RangeException("premature end of value type " + std::string(shortTypeName(typeName_)));
    }
    return true;
  }
  needChar(it, end, ')');
  skipSpace(it, end);
  return false;
}

std::string_view ValueReader::attributeName(TextIterator& it, TextIterator const& end, bool first,
                                            std::string& buffer) {
  if (!first) {
    needChar(it, end, ',');
  }
  skipSpace(it, end);
  std::string_view const name = readText(it, end, buffer);
  needChar(it, end, ':');
  return name;
}

void ValueReader::unknownAttribute(std::string_view name) const {
  throw RangeException(std::string(shortTypeName(typeName_)) +
                       " has no such attribute: " + std::string(name));
}

}  // namespace Kor
