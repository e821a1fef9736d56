// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Json.h"

#include "testkit/text/JsonEscapes.h"
#include "testkit/text/JsonText.h"
#include "testkit/text/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

void writeControl(std::string& out, char character) {
  for (auto const& [letter, meant] : jsonEscapes) {
    if (meant == character) {
      out += {'\\', letter};
      return;
    }
  }
  auto const byte = static_cast<unsigned char>(character);
  out += {'\\', 'u', '0', '0', hexDigits[byte >> 4U], hexDigits[byte & 0xfU]};
}

// Of characters that are written as they are.
constexpr std::array<bool, 256> plainCharacters = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = ' '; c <= '~'; ++c) {
    plain[c] = c != '"' && c != '\\';
  }
  return plain;
}();

void writeString(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain != text.size() && plainCharacters[static_cast<unsigned char>(text[plain])]) {
      ++plain;
    }
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) {
      break;
    }
    Utf8Character const character = firstCharacter(text);
    std::size_t const size = std::max<std::size_t>(character.size, 1);
    if (character.size == 0) {
      appendUtf8(out, 0xfffd);
    } else if (character.code < 0x20 || character.code == '"' || character.code == '\\') {
      writeControl(out, text.front());
    } else {
      out += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  out += '"';
}

void writeNumber(std::string& out, std::uint64_t value) {
  std::array<char, 20> digits{};
  out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

// The shortest text that is read as the same number, with a fraction or an exponent.
void writeNumber(std::string& out, double value) {
  if (!std::isfinite(value)) {
    out += "null";
    return;
  }
  double const magnitude = std::abs(value);
  bool const isPlain = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e15);
  std::array<char, 64> buffer{};
  auto const [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                    isPlain ? std::chars_format::fixed : std::chars_format::scientific);
  static_cast<void>(error);  // the buffer is long enough for these magnitudes
  std::string_view const text(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  out += text;
  out += text.find_first_of(".e") == std::string_view::npos ? ".0" : "";
}

// Appends values to a text, on one line or indented.
class JsonWriter {
 public:
  JsonWriter(std::string& out, std::optional<std::size_t> indentation)
      : out_(out), indentation_(indentation) {}

  void write(Json const& json) {
    if (auto const* const text = json.as<std::string>()) {
      writeString(out_, *text);
    } else if (auto const* const whole = json.as<std::uint64_t>()) {
      writeNumber(out_, *whole);
    } else if (auto const* const number = json.as<double>()) {
      writeNumber(out_, *number);
    } else if (auto const* const boolean = json.as<bool>()) {
      out_ += *boolean ? "true" : "false";
    } else if (auto const* const array = json.as<Json::Array>()) {
      list('[', ']', *array, [this](Json const& item) { write(item); });
    } else if (auto const* const object = json.as<Json::Object>()) {
      list('{', '}', *object, [this](auto const& member) {
        writeString(out_, member.first);
        out_ += indentation_ ? ": " : ":";
        write(member.second);
      });
    } else {
      out_ += "null";
    }
  }

 private:
  template <class Items, class WriteItem>
  void list(char open, char close, Items const& items, WriteItem const& writeItem) {
    out_ += open;
    ++depth_;
    bool first = true;
    for (auto const& item : items) {
      out_ += std::exchange(first, false) ? "" : ",";
      newLine();
      writeItem(item);
    }
    --depth_;
    if (!first) {
      newLine();
    }
    out_ += close;
  }
  void newLine() {
    if (indentation_) {
      out_ += '\n';
      out_.append(depth_ * *indentation_, ' ');
    }
  }

  std::string& out_;
  std::optional<std::size_t> indentation_;
  std::size_t depth_ = 0;
};

}  // namespace

void JsonText::value(std::string_view text) {
  separate();
  writeString(out_, text);
}

void JsonText::value(std::uint64_t number) {
  separate();
  writeNumber(out_, number);
}

JsonError::JsonError(std::string expected, std::size_t offset)
    : std::runtime_error("expected " + expected + ", at byte " + std::to_string(offset + 1)),
      expected_(std::move(expected)),
      offset_(offset) {}

JsonError::~JsonError() = default;

Json::Json() = default;
Json::Json(Json const& other) = default;
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(Json const& other) = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json::Json(Array value) : value_(std::move(value)) {}
Json::Json(Object value) : value_(std::move(value)) {}

void Json::append(Json value) {
  std::get<Array>(value_).push_back(std::move(value));
}

void Json::add(std::string_view name, Json value) {
  std::get<Object>(value_).emplace_back(name, std::move(value));
}

Json const* Json::member(std::string_view name) const {
  auto const* const members = as<Object>();
  if (members == nullptr) {
    return nullptr;
  }
  auto const found = std::find_if(members->rbegin(), members->rend(),
                                  [name](auto const& each) { return each.first == name; });
  return found == members->rend() ? nullptr : &found->second;
}

std::string Json::text() const {
  std::string out;
  JsonWriter(out, std::nullopt).write(*this);
  return out;
}

std::string Json::text(std::size_t indentation) const {
  std::string out;
  JsonWriter(out, indentation).write(*this);
  return out;
}

}  // namespace PolicyMapTestKit::Text
