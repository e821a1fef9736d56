// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/SourceText.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::size_t excerptLimit = 40;

struct FileCloser {
  void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

[[noreturn]] void failReading(std::string const& path, int error) {
  throw InputError({std::make_shared<std::string const>(path), 0, 0}, "a readable file",
                   std::strerror(error));
}

std::string message(SourcePosition const& position, std::string const& expected,
                    std::string_view found) {
  return toText(position) + ": expected " + expected + ", found " + excerpt(found);
}

}  // namespace

std::string toText(SourcePosition const& position) {
  if (position.line == 0) {
    return *position.file;
  }
  return *position.file + ":" + std::to_string(position.line) + ":" +
         std::to_string(position.column);
}

std::string excerpt(std::string_view found) {
  if (found.empty()) {
    return "end of line";
  }
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "'";
  for (char const character : found.substr(0, excerptLimit)) {
    auto const byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte < 0x7f) {
      text += character;
    } else {
      text += "\\x";
      text += digits[byte >> 4U];
      text += digits[byte & 0xfU];
    }
  }
  text += '\'';
  return found.size() > excerptLimit ? text + "..." : text;
}

std::string_view withoutByteOrderMark(std::string_view text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (text.starts_with(mark)) {
    text.remove_prefix(mark.size());
  }
  return text;
}

InputError::InputError(SourcePosition position, std::string expected, std::string_view found)
    : Kor::RangeException(message(position, expected, found)),
      position_(std::move(position)),
      expected_(std::move(expected)) {}

SourceText::SourceText(std::string name, std::string content)
    : SourceText(std::make_shared<std::string const>(std::move(name)),
                 std::make_shared<std::string const>(std::move(content))) {}

SourceText::SourceText(FileName name, std::shared_ptr<std::string const> content)
    : name_(std::move(name)), content_(std::move(content)) {}

SourceText SourceText::referringTo(std::string name, std::string const& content) {
  return {std::make_shared<std::string const>(std::move(name)),
          std::shared_ptr<std::string const>(std::shared_ptr<void>(), &content)};
}

SourceText SourceText::fromFile(std::string const& path, std::size_t limit) {
  std::unique_ptr<std::FILE, FileCloser> const file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    failReading(path, errno);
  }
  std::string content;
  constexpr std::size_t block = std::size_t{1} << 16U;
  std::size_t filled = 0;
  for (std::size_t got = block; got != 0; filled += got) {
    content.resize(filled + block);
    errno = 0;
    got = std::fread(content.data() + filled, 1, block, file.get());
    if (filled + got > limit) {
      throw InputError({std::make_shared<std::string const>(path), 0, 0},
                       "a file of at most " + std::to_string(limit) + " bytes", "a longer one");
    }
  }
  // A directory can be opened like a file; only reading it fails.
  if (std::ferror(file.get()) != 0) {
    failReading(path, errno);
  }
  content.resize(filled);
  return {path, std::move(content)};
}

LineReader::LineReader(SourceText const& source)
    : file_(source.name()), rest_(withoutByteOrderMark(source.content())) {}

bool LineReader::next() {
  if (rest_.empty()) {
    return false;
  }
  constexpr std::size_t limit = std::numeric_limits<std::uint32_t>::max() - 1;
  if (number_ == limit) {
    throw InputError(position(1), "fewer lines", rest_);
  }
  ++number_;
  std::size_t const end = rest_.find('\n');
  line_ = rest_.substr(0, end);
  rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
  if (!line_.empty() && line_.back() == '\r') {
    line_.remove_suffix(1);
  }
  if (line_.size() > limit) {
    throw InputError(position(1), "a shorter line", line_);
  }
  std::size_t const nul = line_.find('\0');
  if (nul != std::string_view::npos) {
    throw InputError(position(static_cast<std::uint32_t>(nul) + 1), "text", line_.substr(nul));
  }
  return true;
}

}  // namespace PolicyMapTestKit::Text
