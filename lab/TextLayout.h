// SPDX-License-Identifier: Apache-2.0
#pragma once

// Layout of text for a terminal: colour, wrapping and columns. Bytes that could control a terminal
// are escaped (lab/ShownText.h).

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

// The properties of the output.
struct TextStyle {
  // Use terminal colours.
  bool color = false;
  // Lines are wrapped at blanks before this column.
  std::size_t width = 100;
};

enum class Tint : std::uint8_t { none, heading, good, bad, changed, faint };

// The text in a colour, if colours are enabled.
std::string tinted(TextStyle const& style, Tint tint, std::string_view text);

// Splits the text at blanks into lines of at most `width` columns. A longer word gets a line of its
// own.
std::vector<std::string> wrapped(std::string_view original, std::size_t width);

// Joins items into lines of at most `width` columns, with `separator` between two items. Items are
// not split.
std::vector<std::string> wrappedItems(std::vector<std::string> const& items,
                                      std::string_view separator, std::size_t width);

// Prints `head` followed by `text`, wrapped and indented by the length of `head`. No line ends with
// blanks.
void printWrapped(std::ostream& out, TextStyle const& style, std::string_view head,
                  std::string_view text);

// A table whose last column is wrapped.
class Table {
 public:
  enum class Align : std::uint8_t { left, right };
  struct Column {
    std::string title;
    Align align = Align::left;
  };

  Table(std::vector<Column> columns, std::size_t indentation);

  // One cell per column. The lines of `below` are printed under the row as they are.
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

// "1 rule", "2 rules".
std::string counted(std::uint64_t count, std::string_view noun);

}  // namespace lab
