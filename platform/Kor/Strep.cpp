// SPDX-License-Identifier: Apache-2.0
#include "Kor/Strep.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <tuple>

namespace Kor {
namespace {

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

[[noreturn]] void fail(std::string const& what, std::size_t column) {
  throw RangeException(what + " at column " + std::to_string(column));
}

bool atEnd(TextIterator const& it, TextIterator const& end) {
  return it.position() >= end.position();
}

char peek(TextIterator const& it, TextIterator const& end) {
  return atEnd(it, end) ? '\0' : *it;
}

std::string_view rest(TextIterator const& it, TextIterator const& end) {
  return it.text().view().substr(it.position(), end.position() - it.position());
}

void advance(TextIterator& it, std::size_t bytes) {
  it.positionIs(it.position() + bytes);
}

int hexValue(char c) {
  if (isDigit(c)) {
    return c - '0';
  }
  char const lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

void appendUtf8(std::string& text, std::uint32_t code) {
  auto const put = [&](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xc0 | (code >> 6));
    put(0x80 | (code & 0x3f));
  } else if (code < 0x10000) {
    put(0xe0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3f));
    put(0x80 | (code & 0x3f));
  } else {
    put(0xf0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3f));
    put(0x80 | ((code >> 6) & 0x3f));
    put(0x80 | (code & 0x3f));
  }
}

// Length of the UTF-8 sequence at the start of `bytes`; 0 if it is invalid.
std::size_t utf8Length(std::string_view bytes) {
  auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  std::size_t length = 0;
  std::uint32_t code = 0;
  if (byte(0) >= 0xf0 && byte(0) < 0xf5) {
    length = 4;
    code = byte(0) & 0x07U;
  } else if (byte(0) >= 0xe0 && byte(0) < 0xf0) {
    length = 3;
    code = byte(0) & 0x0fU;
  } else if (byte(0) >= 0xc2 && byte(0) < 0xe0) {
    length = 2;
    code = byte(0) & 0x1fU;
  }
  if (length == 0 || bytes.size() < length) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0U) != 0x80) {
      return 0;
    }
    code = (code << 6) | (byte(i) & 0x3fU);
  }
  bool const overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  bool const surrogate = code >= 0xd800 && code < 0xe000;
  return overlong || surrogate || code > 0x10ffff ? 0 : length;
}

void appendHexEscape(std::string& text, char c) {
  constexpr std::string_view digits = "0123456789abcdef";
  auto const byte = static_cast<unsigned char>(c);
  text.append("\\x").push_back(digits[byte >> 4]);
  text.push_back(digits[byte & 0x0f]);
}

// Reads a literal, starting after its opening quote.
class StringLiteralReader {
 public:
  StringLiteralReader(TextIterator& it, TextIterator const& end) : it_(it), end_(end) {}

  std::string read() {
    readOpening();
    while (!takeString(it_, end_, quote_)) {
      if (atEnd(it_, end_) || (quote_.size() == 1 && isLineEnd(*it_))) {
        fail("unterminated string", opening_);
      }
      if (*it_ == '\\') {
        readEscape();
      } else if (isLineEnd(*it_)) {
        text_.append(readLineEnd());
      } else {
        text_.push_back(*it_);
        ++it_;
      }
    }
    return std::move(text_);
  }

 private:
  // Consumes the longest prefix that matches here.
  void readPrefix() {
    for (std::string_view const prefix : {"br", "rb", "b", "r", "u"}) {
      std::string_view const ahead = rest(it_, end_).substr(0, prefix.size());
      if (std::equal(ahead.begin(), ahead.end(), prefix.begin(), prefix.end(),
                     [](char c, char lower) { return (c | 0x20) == lower; })) {
        raw_ = prefix.find('r') != std::string_view::npos;
        bytes_ = prefix.find('b') != std::string_view::npos;
        advance(it_, prefix.size());
        return;
      }
    }
  }

  void readOpening() {
    std::size_t const start = it_.position();
    readPrefix();
    opening_ = it_.position();
    for (std::string_view const quote : {"'''", "\"\"\"", "'", "\""}) {
      // Two quotes without a third are an empty text.
      if (takeString(it_, end_, quote)) {
        quote_ = quote;
        return;
      }
    }
    fail("expected a string", start);
  }

  void readEscape() {
    std::string_view const ahead = rest(it_, end_);
    if (ahead.size() < 2) {
      fail("unterminated string", opening_);
    }
    char const c = ahead[1];
    if (raw_) {
      text_.push_back('\\');
      ++it_;
      text_.append(isLineEnd(c) ? readLineEnd() : take(1));
      return;
    }
    constexpr std::string_view letters = "\\'\"abfnrtv";
    constexpr std::string_view meanings = "\\'\"\a\b\f\n\r\t\v";
    if (auto const known = letters.find(c); known != std::string_view::npos) {
      text_.push_back(meanings[known]);
      advance(it_, 2);
    } else if (c == 'x') {
      text_.push_back(static_cast<char>(readHex(2)));
    } else if (c == 'u' && !bytes_) {
      appendUtf8(text_, readHex(4));
    } else if (c == 'U' && !bytes_) {
      appendUtf8(text_, readHex(8));
    } else if (c >= '0' && c <= '7') {
      readOctal();
    } else if (isLineEnd(c)) {
      ++it_;
      readLineEnd();  // an escaped line end is dropped
    } else if (c == 'N' && !bytes_) {
      fail("bad escape", it_.position());  // character names are not supported
    } else {
      text_.append(ahead.substr(0, 2));  // as in Python, an unknown escape is kept as written
      advance(it_, 2);
    }
  }
  std::uint32_t readHex(std::size_t digits) {
    std::size_t const column = it_.position();
    advance(it_, 2);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < digits; ++i, ++it_) {
      int const digit = hexValue(peek(it_, end_));
      if (digit < 0) {
        fail("bad escape", column);
      }
      value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    bool const surrogate = value >= 0xd800 && value < 0xe000;
    if (surrogate || value > 0x10ffff) {
      fail("bad escape", column);
    }
    return value;
  }
  void readOctal() {
    std::size_t const column = it_.position();
    ++it_;
    unsigned value = 0;
    for (int i = 0; i < 3 && peek(it_, end_) >= '0' && peek(it_, end_) <= '7'; ++i, ++it_) {
      value = value * 8 + static_cast<unsigned>(*it_ - '0');
    }
    if (value > 0xff) {
      fail("bad escape", column);
    }
    text_.push_back(static_cast<char>(value));
  }

  static bool isLineEnd(char c) { return c == '\n' || c == '\r'; }
  // Every line end is read as \n.
  std::string_view readLineEnd() {
    if (!takeString(it_, end_, "\r\n")) {
      ++it_;
    }
    return "\n";
  }
  // Consumes `bytes` bytes, which must be available.
  std::string_view take(std::size_t bytes) {
    std::string_view const taken = rest(it_, end_).substr(0, bytes);
    advance(it_, bytes);
    return taken;
  }

  TextIterator& it_;
  TextIterator const& end_;
  std::size_t opening_ = 0;  // column of the opening quote
  bool raw_ = false;
  bool bytes_ = false;
  std::string_view quote_;
  std::string text_;
};

// A run of digits, possibly with underscores between them.
struct Digits {
  std::string plain;       // without underscores
  std::size_t length = 0;  // with underscores
};

Digits digitsOf(std::string_view text, unsigned base) {
  auto const isOne = [&](std::size_t place) {
    return place < text.size() && static_cast<unsigned>(hexValue(text[place])) < base;
  };
  Digits digits;
  for (;; ++digits.length) {
    if (isOne(digits.length)) {
      digits.plain.push_back(text[digits.length]);
    } else if (digits.plain.empty() || text.substr(digits.length, 1) != "_" ||
               !isOne(digits.length + 1)) {
      return digits;
    }
  }
}

// An integer literal at the start of a text.
struct IntegerLiteral {
  bool negative = false;
  unsigned base = 10;
  Digits digits;           // empty: no integer
  std::size_t length = 0;  // with sign and prefix
};

IntegerLiteral integerLiteral(std::string_view text) {
  IntegerLiteral literal;
  std::size_t const sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  literal.negative = sign == 1 && text[0] == '-';
  std::string_view const head = text.substr(sign, 2);
  std::size_t prefix = 0;
  for (auto const& [lower, upper, base] :
       {std::tuple("0x", "0X", 16U), std::tuple("0o", "0O", 8U), std::tuple("0b", "0B", 2U)}) {
    if (head == lower || head == upper) {
      literal.base = base;
      prefix = text.substr(sign + 2, 1) == "_" ? 3 : 2;
    }
  }
  literal.digits = digitsOf(text.substr(std::min(sign + prefix, text.size())), literal.base);
  if (literal.digits.plain.empty() && prefix != 0) {
    // No digits after the prefix: the number is the prefix's zero.
    prefix = 0;
    literal.base = 10;
    literal.digits = digitsOf(text.substr(sign), 10);
  }
  literal.length = sign + prefix + literal.digits.length;
  return literal;
}

// A decimal number at the start of a text, with optional fraction and exponent.
struct FloatLiteral {
  std::string plain;  // without plus and underscores
  std::size_t length = 0;
};

FloatLiteral floatLiteral(std::string_view text) {
  FloatLiteral literal;
  auto const take = [&](Digits const& digits) {
    literal.plain += digits.plain;
    literal.length += digits.length;
    return !digits.plain.empty();
  };
  auto const next = [&] { return text.substr(literal.length); };
  if (next().starts_with('-') || next().starts_with('+')) {
    literal.plain = next()[0] == '-' ? "-" : "";
    literal.length = 1;
  }
  bool some = take(digitsOf(next(), 10));
  if (next().starts_with('.')) {
    literal.plain.push_back('.');
    ++literal.length;
    some = take(digitsOf(next(), 10)) || some;
  }
  if (!some) {
    return {};
  }
  // An exponent without digits does not belong to the number.
  std::string_view const tail = next();
  if (tail.starts_with('e') || tail.starts_with('E')) {
    std::size_t const sign = tail.size() > 1 && (tail[1] == '-' || tail[1] == '+') ? 1 : 0;
    Digits const exponent = digitsOf(tail.substr(1 + sign), 10);
    if (!exponent.plain.empty()) {
      literal.plain.append(tail.substr(0, 1 + sign));
      literal.length += 1 + sign;
      take(exponent);
    }
  }
  return literal;
}

template <class Number>
Number readInteger(TextIterator& it, TextIterator const& end, Number lowest, Number highest) {
  skipSpace(it, end);
  std::string_view const text = rest(it, end);
  IntegerLiteral const literal = integerLiteral(text);
  std::string const& digits = literal.digits.plain;
  if (digits.empty()) {
    fail("expected an integer", it.position());
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
    fail(std::string(text.substr(0, literal.length)) + " out of range", it.position());
  }
  advance(it, literal.length);
  return number;
}

}  // namespace

String valueToStrep(String const& text) {
  std::string literal("'");
  std::string_view const bytes = text.view();
  for (std::size_t i = 0; i < bytes.size();) {
    char const c = bytes[i];
    if (c == '\\' || c == '\'') {
      literal.push_back('\\');
      literal.push_back(c);
    } else if (c == '\n') {
      literal.append("\\n");
    } else if (c == '\r') {
      literal.append("\\r");
    } else if (c == '\t') {
      literal.append("\\t");
    } else if (c >= ' ' && c < '\x7f') {
      literal.push_back(c);
    } else if (std::size_t const length = utf8Length(bytes.substr(i)); length != 0) {
      literal.append(bytes.substr(i, length));
      i += length - 1;
    } else {
      appendHexEscape(literal, c);
    }
    ++i;
  }
  literal.push_back('\'');
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

void skipSpace(TextIterator& it, TextIterator const& end) {
  while (!atEnd(it, end) && isSpace(*it)) {
    ++it;
  }
}

bool takeString(TextIterator& it, TextIterator const& end, std::string_view token) {
  if (!rest(it, end).starts_with(token)) {
    return false;
  }
  advance(it, token.size());
  return true;
}

void needString(TextIterator& it, TextIterator const& end, std::string_view pattern) {
  while (!pattern.empty()) {
    if (pattern.front() == ' ') {
      skipSpace(it, end);
      pattern.remove_prefix(1);
      continue;
    }
    std::string_view const token = pattern.substr(0, pattern.find(' '));
    if (!takeString(it, end, token)) {
      fail("expected " + std::string(token), it.position());
    }
    pattern.remove_prefix(token.size());
  }
}

void sequenceToValue(TextIterator& it, TextIterator const& end, String& text) {
  skipSpace(it, end);
  text = String(StringLiteralReader(it, end).read());
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
    fail("expected True or False", it.position());
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
  std::string_view const text = rest(it, end);
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
    fail(std::string(text.substr(0, literal.length)) + " out of range", it.position());
  }
  if (result.ec != std::errc()) {
    fail("expected a number", it.position());
  }
  advance(it, literal.length);
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
  String const text = enumToText(names, value);
  bool const named = value >= 0 && static_cast<std::size_t>(value) < names.count;
  return named ? "'" + text + "'" : text;
}

std::int32_t sequenceToEnum(TextIterator& it, TextIterator const& end, EnumNames const& names) {
  skipSpace(it, end);
  char const c = peek(it, end);
  if (c == '\'' || c == '"') {
    String text;
    sequenceToValue(it, end, text);
    for (std::size_t i = 0; i < names.count; ++i) {
      if (text.view() == names.names[i]) {
        return static_cast<std::int32_t>(i);
      }
    }
    throw RangeException(std::string(names.type) + " has no such value: " + text.stdString());
  }
  if (integerLiteral(rest(it, end)).digits.plain.empty()) {
    fail("expected " + std::string(names.type), it.position());
  }
  std::int32_t value = 0;
  sequenceToValue(it, end, value);
  return value;
}

void ValueReader::open(TextIterator& it, TextIterator const& end) const {
  needString(it, end, " Value");
  needString(it, end, " (");
  needString(it, end, " '" + std::string(typeName_) + "'");
  needString(it, end, " ,");
  needString(it, end, " **");
  needString(it, end, " {");
}

bool ValueReader::more(TextIterator& it, TextIterator const& end) const {
  needString(it, end, " ");
  if (atEnd(it, end)) {
    throw RangeException("premature end of value type " + std::string(shortTypeName(typeName_)));
  }
  if (*it != '}') {
    return true;
  }
  needString(it, end, "} ");
  needString(it, end, ") ");
  return false;
}

String ValueReader::attributeName(TextIterator& it, TextIterator const& end, bool first) {
  if (!first) {
    needString(it, end, ", ");
  }
  String name;
  sequenceToValue(it, end, name);
  needString(it, end, " : ");
  return name;
}

void ValueReader::unknownAttribute(String const& name) const {
  throw RangeException(std::string(shortTypeName(typeName_)) +
                       " has no such attribute: " + name.stdString());
}

}  // namespace Kor
