// SPDX-License-Identifier: Apache-2.0
#include "lab/TextLayout.h"

#include "lab/Kit.h"
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <utility>

namespace lab {

namespace {

// Minimum width of a column, however far to the right it starts.
constexpr std::size_t narrowest = 30;

std::size_t roomAfter(std::size_t width, std::size_t used) {
  return width > used + narrowest ? width - used : narrowest;
}

char const* sequenceOf(Tint tint) {
  switch (tint) {
  case Tint::none: break;
  case Tint::heading: return "\033[1m";
  case Tint::good: return "\033[32m";
  case Tint::bad: return "\033[31m";
  case Tint::changed: return "\033[33m";
  case Tint::faint: return "\033[2m";
  }
  return "";
}

}  // namespace

std::string tinted(TextStyle const& style, Tint tint, std::string_view text) {
  std::string shown = shownText(text);
  if (!style.color || tint == Tint::none || text.empty()) {
    return shown;
  }
  return sequenceOf(tint) + shown + "\033[0m";
}

std::vector<std::string> wrapped(std::string_view original, std::size_t width) {
  std::string const shown = shownText(original);
  std::string_view text = shown;
  std::vector<std::string> lines;
  while (text.size() > width) {
    std::size_t cut = text.rfind(' ', width);
    if (cut == std::string_view::npos || cut == 0) {
      cut = text.find(' ', width);
    }
    if (cut == std::string_view::npos) {
      break;
    }
    lines.emplace_back(text.substr(0, cut));
    text.remove_prefix(cut + 1);
  }
  lines.emplace_back(text);
  return lines;
}

std::vector<std::string> wrappedItems(std::vector<std::string> const& items,
                                      std::string_view separator, std::size_t width) {
  std::vector<std::string> lines;
  for (std::string const& item : items) {
    if (lines.empty() || lines.back().size() + separator.size() + item.size() > width) {
      lines.push_back(item);
    } else {
      lines.back().append(separator).append(item);
    }
  }
  return lines;
}

void printWrapped(std::ostream& out, TextStyle const& style, std::string_view head,
                  std::string_view text) {
  std::string lead(head);
  for (std::string const& line : wrapped(text, roomAfter(style.width, head.size()))) {
    std::string const full = lead + line;
    out << full.substr(0, full.find_last_not_of(' ') + 1) << "\n";
    lead.assign(head.size(), ' ');
  }
}

Table::Table(std::vector<Column> columns, std::size_t indentation)
    : columns_(std::move(columns)), indentation_(indentation) {
  for (Column const& column : columns_) {
    widths_.push_back(column.title.size());
  }
}

void Table::add(std::vector<std::string> cells, std::vector<std::string> below) {
  for (std::size_t i = 0; i != widths_.size(); ++i) {
    cells[i] = shownText(cells[i]);
    widths_[i] = std::max(widths_[i], cells[i].size());
  }
  rows_.push_back({std::move(cells), std::move(below)});
}

// All cells except the last.
std::string Table::lead(std::vector<std::string> const& cells) const {
  std::string line(indentation_, ' ');
  for (std::size_t i = 0; i + 1 != cells.size(); ++i) {
    std::string const padding(widths_[i] - cells[i].size(), ' ');
    line += columns_[i].align == Align::right ? padding + cells[i] : cells[i] + padding;
    line += "  ";
  }
  return line;
}

void Table::print(std::ostream& out, TextStyle const& style) const {
  std::vector<std::string> titles;
  for (Column const& column : columns_) {
    titles.push_back(column.title);
  }
  out << tinted(style, Tint::faint, lead(titles) + titles.back()) << "\n";
  for (Row const& row : rows_) {
    printWrapped(out, style, lead(row.cells), row.cells.back());
    for (std::string const& line : row.below) {
      out << tinted(style, Tint::faint, line) << "\n";
    }
  }
}

std::string counted(std::uint64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace lab
