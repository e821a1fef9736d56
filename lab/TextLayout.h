// SPDX-License-Identifier: Apache-2.0
// Text that a person reads: colour, wrapping and columns. Bytes that would steer a terminal are
// escaped on the way (lab/ShownText.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// What is printed to, and how.
struct TextStyle {
  /// Terminal colours; only where a person looks.
  bool color = false;
  /// Lines are wrapped before this column where a blank allows it.
  std::size_t width = 100;
};

enum class Tint : std::uint8_t { none, heading, good, bad, changed, faint };

/// The text in a colour, if there is colour.
std::string tinted(TextStyle const& style, Tint tint, std::string_view text);

/// The text cut at blanks into lines of `width` columns at most; a longer word is a line of its
/// own.
std::vector<std::string> wrapped(std::string_view original, std::size_t width);

/// As many items on a line as fit into `width` columns, with `separator` between two; no item is
/// cut.
std::vector<std::string> wrappedItems(std::vector<std::string> const& items,
                                      std::string_view separator, std::size_t width);

/// Prints `head` and behind it `text`, wrapped, with lines after the first indented by the length
/// of `head`. No line ends with blanks.
void printWrapped(std::ostream& out, TextStyle const& style, std::string_view head,
                  std::string_view text);

/// A table whose last column is wrapped.
class Table {
 public:
  enum class Align : std::uint8_t { left, right };
  struct Column {
    std::string title;
    Align align = Align::left;
  };

  Table(std::vector<Column> columns, std::size_t indentation);

  /// As many cells as there are columns. The lines of `below` stand under the row as they are.
  void add(std::vector<std::string> cells, std::vector<std::string> below = {});
  void print(std::ostream& out, TextStyle const& style) const;

 private:
  struct Row {
    std::vector<std::string> cells;
    std::vector<std::string> below;
  };

  std::string lead(std::vector<std::string> const& cells) const;

  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;
  std::size_t indentation_;
  std::vector<Row> rows_;
};

/// "1 rule", "2 rules".
std::string counted(std::uint64_t count, std::string_view noun);

}  // namespace lab
