// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/RandomEdits.h"

#include "testkit/text/SourceText.h"

#include <algorithm>
#include <array>

namespace PolicyMapTestKit {

namespace {

bool isEdited(std::string_view text) {
  constexpr std::array<std::string_view, 4> others{"exit", "end", "exit-address-family", "quit"};
  return !text.empty() && text.front() != '!' && text.front() != '#' &&
         std::find(others.begin(), others.end(), text) == others.end();
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// The places of words that are numbers.
std::vector<std::size_t> numbersIn(std::string const& text) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i != text.size(); ++i) {
    bool const begins = isDigit(text[i]) && (i == 0 || text[i - 1] == ' ');
    std::size_t const end = std::min(text.find(' ', i), text.size());
    if (begins && std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i),
                              text.begin() + static_cast<std::ptrdiff_t>(end), &isDigit)) {
      places.push_back(i);
    }
  }
  return places;
}

std::size_t below(std::mt19937_64& random, std::size_t end) {
  return static_cast<std::size_t>(random() % end);
}

}  // namespace

void RandomEdits::add(std::string_view policyText) {
  Text::SourceText const source("edits", std::string(policyText));
  Text::LineReader reader(source);
  std::vector<std::size_t> above;
  while (reader.next()) {
    std::size_t const begin =
        std::min(reader.line().find_first_not_of(" \t"), reader.line().size());
    std::string const text(reader.line().substr(begin));
    if (!isEdited(text)) {
      continue;
    }
    while (!above.empty() && lines_[above.back()].indentation >= begin) {
      above.pop_back();
    }
    lines_.push_back({text, begin, above, false});
    above.push_back(lines_.size() - 1);
  }
}

std::string RandomEdits::next(std::mt19937_64& random) {
  std::size_t const line = below(random, lines_.size());
  bool const isInterface = lines_[line].text.starts_with("interface ");
  constexpr std::size_t ways = 8;
  switch (below(random, ways)) {
  case 0:
  case 1: return withOtherNumber(line, random);
  case 2:
    if (isInterface) {
      return lines_[line].text + "\n shutdown\n";
    }
    if (std::vector<std::size_t> const others = otherClasses(line); !others.empty()) {
      std::string const& other = lines_[others[below(random, others.size())]].text;
      return inPlace(lines_[line],
                     lines_[line].text + " insert-before " + other.substr(classWord.size()));
    }
    [[fallthrough]];
  case 3:
    if (isInterface) {
      return lines_[line].text + "\n no shutdown\n";
    }
    [[fallthrough]];
  default: break;
  }
  // Most of what is removed is soon put back.
  std::vector<std::size_t> removed;
  for (std::size_t i = 0; i != lines_.size(); ++i) {
    if (lines_[i].removed) {
      removed.push_back(i);
    }
  }
  constexpr std::size_t mostRemoved = 4;
  if (below(random, mostRemoved) < removed.size()) {
    return putBack(removed[below(random, removed.size())]);
  }
  return remove(line);
}

std::string RandomEdits::inPlace(Line const& line, std::string const& text) const {
  std::string all;
  for (std::size_t const header : line.above) {
    all.append(lines_[header].indentation, ' ').append(lines_[header].text).append("\n");
  }
  return all.append(line.indentation, ' ').append(text).append("\n");
}

std::string RandomEdits::remove(std::size_t line) {
  Line& removed = lines_[line];
  removed.removed = true;
  constexpr std::string_view no = "no ";
  return inPlace(removed, removed.text.starts_with(no) ? removed.text.substr(no.size())
                                                       : std::string(no) + removed.text);
}

// With all lines below it.
std::string RandomEdits::putBack(std::size_t line) {
  lines_[line].removed = false;
  std::string text = inPlace(lines_[line], lines_[line].text);
  for (std::size_t i = line + 1;
       i != lines_.size() && lines_[i].indentation > lines_[line].indentation; ++i) {
    lines_[i].removed = false;
    text.append(lines_[i].indentation, ' ').append(lines_[i].text).append("\n");
  }
  return text;
}

// Of the same policy-map.
std::vector<std::size_t> RandomEdits::otherClasses(std::size_t line) const {
  std::vector<std::size_t> others;
  for (std::size_t i = 0; lines_[line].isClass() && i != lines_.size(); ++i) {
    if (i != line && lines_[i].isClass() && lines_[i].above == lines_[line].above) {
      others.push_back(i);
    }
  }
  return others;
}

// Somewhat more or less.
std::string RandomEdits::withOtherNumber(std::size_t line, std::mt19937_64& random) const {
  std::string text = lines_[line].text;
  std::vector<std::size_t> const places = numbersIn(text);
  if (!places.empty()) {
    constexpr std::size_t longest = 9;  // fits after any addition
    constexpr std::size_t steps = 5;
    std::size_t const begin = places[below(random, places.size())];
    std::size_t const end = std::min(text.find(' ', begin), text.size());
    std::string const number = text.substr(begin, std::min(end - begin, longest));
    std::size_t const other = std::stoul(number) + 1 + below(random, steps);
    text.replace(begin, end - begin, std::to_string(other));
  }
  return inPlace(lines_[line], text);
}

}  // namespace PolicyMapTestKit
