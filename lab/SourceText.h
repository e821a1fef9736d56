// SPDX-License-Identifier: Apache-2.0
// Where input comes from and how its faults are reported: SourceText is a file held in memory,
// LineReader walks over its lines, InputError is the one exception that bad input raises.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace lab {

/// The name of an input file, shared by everything that was read from it.
using FileName = std::shared_ptr<std::string const>;

/// A place in an input file. Lines and columns count from 1; a column counts bytes, a tab is one.
/// Line 0 means the file as a whole.
struct SourcePosition {
  FileName file;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

/// "FILE:LINE:COLUMN", or "FILE" for a position that means the whole file.
std::string toText(SourcePosition const& position);

/// What was found at a fault, ready for a message: in single quotes, bytes that do not print
/// written as \xNN, cut after 40 bytes with "..." behind the closing quote; "end of line" for an
/// empty text.
std::string excerpt(std::string_view found);

/// Input that cannot be accepted. what() is "FILE:LINE:COLUMN: expected X, found 'Y'".
class InputError : public std::runtime_error {
 public:
  /// `expected` completes the sentence "expected ...", `found` is the offending input as it stands.
  InputError(SourcePosition position, std::string expected, std::string_view found);

  std::string const& file() const noexcept { return *position_.file; }
  std::uint32_t line() const noexcept { return position_.line; }
  std::uint32_t column() const noexcept { return position_.column; }
  SourcePosition const& position() const noexcept { return position_; }
  /// What would have been accepted, without the word "expected".
  std::string const& expected() const noexcept { return expected_; }

 private:
  SourcePosition position_;
  std::string expected_;
};

/// The bytes of one input file together with its name.
class SourceText {
 public:
  SourceText(std::string name, std::string content);

  /// More than any input has, and less than the memory of a machine.
  static constexpr std::size_t largestFile = std::size_t{256} << 20U;

  /// Reads a whole file; raises InputError (line 0) when it cannot be read, and when it has more
  /// than `limit` bytes or, as a device, no end.
  static SourceText fromFile(std::string const& path, std::size_t limit = largestFile);

  FileName const& name() const noexcept { return name_; }
  std::string_view content() const noexcept { return content_; }

 private:
  FileName name_;
  std::string content_;
};

/// Walks over the lines of a text. A line ends at a line feed, a carriage return before it belongs
/// to the line end; a byte order mark in front of the first line is passed over.
/// The text must outlive the reader and every line taken from it.
class LineReader {
 public:
  explicit LineReader(SourceText const& source);

  /// Moves to the next line; false at the end of the text.
  /// Raises InputError on a NUL byte, which no text has, and on more than 2^32 - 1 lines or
  /// columns.
  bool next();

  std::string_view line() const noexcept { return line_; }
  /// The number of the current line, from 1.
  std::uint32_t number() const noexcept { return number_; }
  /// The position of a byte of the current line.
  SourcePosition position(std::uint32_t column) const { return {file_, number_, column}; }

 private:
  FileName file_;
  std::string_view rest_;
  std::string_view line_;
  std::uint32_t number_ = 0;
};

}  // namespace lab
