// SPDX-License-Identifier: Apache-2.0
#pragma once

// Input files and their errors: SourceText holds a file in memory, LineReader iterates over its
// lines, and InputError is the exception for invalid input.

#include "testkit/Export.h"

#include <Kor/Exception.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// The name of an input file, shared by everything read from it.
using FileName = std::shared_ptr<std::string const>;

// A position in an input file. Lines and columns count from 1. A column is a byte, even for a tab.
// Line 0 denotes the whole file.
struct SourcePosition {
  FileName file;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

// "FILE:LINE:COLUMN", or "FILE" for the whole file.
POLICYMAPTESTKIT_API std::string toText(SourcePosition const& position);

// The input found at an error, for a message: in single quotes, unprintable bytes as \xNN,
// truncated after 40 bytes with "..." after the closing quote. An empty text gives "end of line".
POLICYMAPTESTKIT_API std::string excerpt(std::string_view found);

// Returns the text after the byte order mark with which it may start.
POLICYMAPTESTKIT_API std::string_view withoutByteOrderMark(std::string_view text);

// Invalid input. what() is "FILE:LINE:COLUMN: expected X, found 'Y'".
class POLICYMAPTESTKIT_API InputError : public Kor::RangeException {
 public:
  // `expected` completes the sentence "expected ...". `found` is the offending input as written.
  InputError(SourcePosition position, std::string expected, std::string_view found);

  std::string const& file() const noexcept { return *position_.file; }
  std::uint32_t line() const noexcept { return position_.line; }
  std::uint32_t column() const noexcept { return position_.column; }
  SourcePosition const& position() const noexcept { return position_; }
  // Without the word "expected".
  std::string const& expected() const noexcept { return expected_; }

 private:
  SourcePosition position_;
  std::string expected_;
};

// The bytes and the name of one input file. Copies share them.
class POLICYMAPTESTKIT_API SourceText {
 public:
  SourceText(std::string name, std::string content);
  // Refers to a text that outlives it.
  static SourceText referringTo(std::string name, std::string const& content);
  static SourceText referringTo(std::string name, std::string&& content) = delete;

  // More than any real input, and less than the memory of a machine.
  static constexpr std::size_t largestFile = std::size_t{256} << 20U;

  // Reads a whole file. Raises InputError (line 0) if it cannot be read or has more than `limit`
  // bytes. Also stops at the limit for endless devices.
  static SourceText fromFile(std::string const& path, std::size_t limit = largestFile);

  FileName const& name() const noexcept { return name_; }
  std::string_view content() const noexcept { return *content_; }

 private:
  SourceText(FileName name, std::shared_ptr<std::string const> content);

  FileName name_;
  std::shared_ptr<std::string const> content_;
};

// Iterates over the lines of a text. A line ends at a line feed; a carriage return before it is
// part of the line end. Skips a byte order mark at the start. The text must outlive the reader and
// every line read from it.
class POLICYMAPTESTKIT_API LineReader {
 public:
  explicit LineReader(SourceText const& source);

  // Moves to the next line. Returns false at the end of the text. Raises InputError on a NUL byte
  // and on more than 2^32 - 1 lines or columns.
  bool next();

  std::string_view line() const noexcept { return line_; }
  // The number of the current line, from 1.
  std::uint32_t number() const noexcept { return number_; }
  // The position of a byte of the current line.
  SourcePosition position(std::uint32_t column) const { return {file_, number_, column}; }

 private:
  FileName file_;
  std::string_view rest_;
  std::string_view line_;
  std::uint32_t number_ = 0;
};

}  // namespace PolicyMapTestKit::Text
