// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Json.h"
#include "testkit/text/JsonEscapes.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/Utf8.h"

#include <algorithm>
#include <charconv>

namespace PolicyMapTestKit::Text {

namespace {

class JsonReader {
 public:
  explicit JsonReader(std::string_view text) : text_(text) {}

  Json all() {
    Json json = value();
    skip();
    if (at_ != text_.size()) {
      fail("the end");
    }
    return json;
  }

 private:
  static constexpr unsigned deepest = 200;

  [[noreturn]] void fail(std::string expected) const { throw JsonError(std::move(expected), at_); }

  void skip() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }
  [[nodiscard]] char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool take(char c) {
    bool const here = at_ < text_.size() && text_[at_] == c;
    at_ += here ? 1 : 0;
    return here;
  }
  bool takeWord(std::string_view word) {
    bool const here = text_.substr(at_).starts_with(word);
    at_ += here ? word.size() : 0;
    return here;
  }

  Json value() {
    skip();
    if (++depth_ > deepest) {
      fail("at most " + std::to_string(deepest) + " levels");
    }
    Json json = valueOfKind();
    --depth_;
    return json;
  }

  Json valueOfKind() {
    if (take('{')) {
      return object();
    }
    if (take('[')) {
      return array();
    }
    if (take('"')) {
      return string();
    }
    if (takeWord("true")) {
      return true;
    }
    if (takeWord("false")) {
      return false;
    }
    if (takeWord("null")) {
      return {};
    }
    return number();
  }

  Json object() {
    Json::Object members;
    skip();
    if (take('}')) {
      return members;
    }
    do {
      skip();
      if (!take('"')) {
        fail("a name in quotes");
      }
      std::string name = string();
      skip();
      if (!take(':')) {
        fail("a colon");
      }
      members.emplace_back(std::move(name), value());
      skip();
    } while (take(','));
    if (!take('}')) {
      fail("a comma or }");
    }
    return members;
  }

  Json array() {
    Json::Array items;
    skip();
    if (take(']')) {
      return items;
    }
    do {
      items.push_back(value());
      skip();
    } while (take(','));
    if (!take(']')) {
      fail("a comma or ]");
    }
    return items;
  }

  // After the opening quote.
  std::string string() {
    std::string read;
    while (!take('"')) {
      if (at_ == text_.size()) {
        fail("a closing quote");
      }
      if (take('\\')) {
        escape(read);
        continue;
      }
      Utf8Character const character = firstCharacter(text_.substr(at_));
      if (character.size == 0 || character.code < 0x20) {
        fail("a character in UTF-8 that is no control character");
      }
      read += text_.substr(at_, character.size);
      at_ += character.size;
    }
    return read;
  }

  // After the backslash.
  void escape(std::string& read) {
    if (take('u')) {
      std::uint32_t code = codeUnit();
      if (code >= 0xd800 && code < 0xdc00 && takeWord("\\u")) {
        std::uint32_t const low = codeUnit();
        code = low >= 0xdc00 && low < 0xe000 ? 0x10000 + ((code - 0xd800) << 10U) + (low - 0xdc00)
                                             : 0xd800;
      }
      if (code >= 0xd800 && code < 0xe000) {
        fail("a pair of surrogates");
      }
      appendUtf8(read, code);
      return;
    }
    for (auto const& [letter, meant] : jsonEscapes) {
      if (take(letter)) {
        read += meant;
        return;
      }
    }
    fail("an escape");
  }
  std::uint32_t codeUnit() {
    std::string_view const digits = text_.substr(at_, 4);
    std::uint32_t code = 0;
    auto const [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc() || end != digits.data() + 4) {
      fail("four hexadecimal digits");
    }
    at_ += 4;
    return code;
  }

  Json number() {
    std::size_t const start = at_;
    bool whole = !take('-');
    if (!take('0')) {
      digits(start == at_ ? "a value" : "a digit");
    }
    if (take('.')) {
      whole = false;
      digits("a digit");
    }
    if (take('e') || take('E')) {
      whole = false;
      static_cast<void>(take('+') || take('-'));
      digits("a digit");
    }
    std::string_view const written = text_.substr(start, at_ - start);
    std::uint64_t natural = 0;
    if (whole && parsed(written, natural)) {
      return natural;
    }
    double real = 0;
    if (!parsed(written, real)) {
      at_ = start;
      fail("a number in the range of a double");
    }
    return real;
  }
  template <class Number>
  static bool parsed(std::string_view written, Number& value) {
    return std::from_chars(written.data(), written.data() + written.size(), value).ec ==
           std::errc();
  }
  void digits(char const* expected) {
    if (!isDigit(next())) {
      fail(expected);
    }
    while (isDigit(next())) {
      ++at_;
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  unsigned depth_ = 0;
};

}  // namespace

Json Json::parse(std::string_view text) {
  return JsonReader(text).all();
}

}  // namespace PolicyMapTestKit::Text
