// SPDX-License-Identifier: Apache-2.0
#include "Kor/StringLiteral.h"

#include "Kor/TextAhead.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Kor {
namespace {

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
        failAtColumn("unterminated string", opening_);
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
      std::string_view const ahead = textAhead(it_, end_).substr(0, prefix.size());
      if (std::equal(ahead.begin(), ahead.end(), prefix.begin(), prefix.end(),
                     [](char c, char lower) { return (c | 0x20) == lower; })) {
        raw_ = prefix.find('r') != std::string_view::npos;
        bytes_ = prefix.find('b') != std::string_view::npos;
        skipBytes(it_, prefix.size());
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
    failAtColumn("expected a string", start);
  }

  void readEscape() {
    std::string_view const ahead = textAhead(it_, end_);
    if (ahead.size() < 2) {
      failAtColumn("unterminated string", opening_);
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
      skipBytes(it_, 2);
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
      failAtColumn("bad escape", it_.position());  // character names are not supported
    } else {
      text_.append(ahead.substr(0, 2));  // as in Python, an unknown escape is kept as written
      skipBytes(it_, 2);
    }
  }
  std::uint32_t readHex(std::size_t digits) {
    std::size_t const column = it_.position();
    skipBytes(it_, 2);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < digits; ++i, ++it_) {
      int const digit = hexValue(charAhead(it_, end_));
      if (digit < 0) {
        failAtColumn("bad escape", column);
      }
      value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    bool const surrogate = value >= 0xd800 && value < 0xe000;
    if (surrogate || value > 0x10ffff) {
      failAtColumn("bad escape", column);
    }
    return value;
  }
  void readOctal() {
    std::size_t const column = it_.position();
    ++it_;
    unsigned value = 0;
    for (int i = 0; i < 3 && charAhead(it_, end_) >= '0' && charAhead(it_, end_) <= '7';
         ++i, ++it_) {
      value = value * 8 + static_cast<unsigned>(*it_ - '0');
    }
    if (value > 0xff) {
      failAtColumn("bad escape", column);
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
    std::string_view const taken = textAhead(it_, end_).substr(0, bytes);
    skipBytes(it_, bytes);
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

}  // namespace

void appendStringLiteral(std::string& to, std::string_view bytes) {
  auto const isPrinted = [](char c) { return c >= ' ' && c < '\x7f' && c != '\\' && c != '\''; };
  to.push_back('\'');
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t plain = i;
    while (plain < bytes.size() && isPrinted(bytes[plain])) {
      ++plain;
    }
    to.append(bytes.substr(i, plain - i));
    if (plain == bytes.size()) {
      break;
    }
    i = plain;
    char const c = bytes[i];
    if (c == '\\' || c == '\'') {
      to.push_back('\\');
      to.push_back(c);
    } else if (c == '\n') {
      to.append("\\n");
    } else if (c == '\r') {
      to.append("\\r");
    } else if (c == '\t') {
      to.append("\\t");
    } else if (std::size_t const length = utf8Length(bytes.substr(i)); length != 0) {
      to.append(bytes.substr(i, length));
      i += length - 1;
    } else {
      appendHexEscape(to, c);
    }
    ++i;
  }
  to.push_back('\'');
}

std::string readStringLiteral(TextIterator& it, TextIterator const& end) {
  return StringLiteralReader(it, end).read();
}

std::optional<std::string_view> takePlainLiteral(TextIterator& it, TextIterator const& end) {
  std::string_view const ahead = textAhead(it, end);
  char const quote = ahead.empty() ? '\0' : ahead[0];
  if (quote != '\'' && quote != '"') {
    return std::nullopt;
  }
  auto const isPlain = [](char c) { return c != '\\' && c != '\n' && c != '\r'; };
  std::size_t place = 1;
  while (place < ahead.size() && ahead[place] != quote && isPlain(ahead[place])) {
    ++place;
  }
  bool const closed = place < ahead.size() && ahead[place] == quote;
  if (!closed || (place == 1 && ahead.substr(2).starts_with(quote))) {
    return std::nullopt;  // with more than its bytes, without an end, or in three quotes
  }
  skipBytes(it, place + 1);
  return ahead.substr(1, place - 1);
}

}  // namespace Kor
