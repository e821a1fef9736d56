// SPDX-License-Identifier: Apache-2.0
#include "testkit/Journal.h"
#include "testkit/Lookup.h"
#include "testkit/Printing.h"
#include "testkit/faults/FaultPlan.h"
#include "testkit/faults/FaultWords.h"
#include "testkit/text/Lexer.h"

#include <Kor/Exception.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using Text::SourcePosition;

// A word, or `WORD=VALUE`.
struct Item {
  SourcePosition place;
  std::string name;
  std::string value;
  bool hasValue = false;

  [[nodiscard]] std::string text() const { return hasValue ? name + "=" + value : name; }
};

constexpr std::string_view blanks = " \t\r";

// The items of one line. A value may be quoted: text="table full", with \" and \\ inside.
class Items {
 public:
  Items(std::string_view line, SourcePosition place) : line_(line), place_(std::move(place)) {}

  // Returns false at the end of the line or of the fault, which a semicolon ends.
  bool next(Item& item) {
    skipBlanks();
    if (atEnd() || line_[at_] == ';') {
      return false;
    }
    item = {here(), {}, {}, false};
    item.name = word("= \t\r;#");
    if (!atEnd() && line_[at_] == '=') {
      ++at_;
      item.hasValue = true;
      item.value = !atEnd() && line_[at_] == '"' ? quoted() : word(" \t\r;#");
    }
    return true;
  }
  // Moves to the next fault of the line. Returns false if there is none.
  bool nextFault() {
    skipBlanks();
    while (!atEnd() && line_[at_] == ';') {
      ++at_;
      skipBlanks();
    }
    return !atEnd();
  }
  [[nodiscard]] SourcePosition here() const {
    SourcePosition place = place_;
    place.column = static_cast<std::uint32_t>(at_ + 1);
    return place;
  }

 private:
  [[nodiscard]] bool atEnd() const { return at_ == line_.size() || line_[at_] == '#'; }
  void skipBlanks() { at_ = std::min(line_.find_first_not_of(blanks, at_), line_.size()); }
  std::string word(std::string_view ends) {
    std::size_t const end = std::min(line_.find_first_of(ends, at_), line_.size());
    std::string text(line_.substr(at_, end - at_));
    at_ = end;
    return text;
  }
  std::string quoted() {
    SourcePosition const start = here();
    std::string text;
    for (++at_; at_ != line_.size() && line_[at_] != '"'; ++at_) {
      if (line_[at_] == '\\' && at_ + 1 != line_.size()) {
        ++at_;
      }
      text += line_[at_];
    }
    if (at_ == line_.size()) {
      throw Text::InputError(start, "a text that ends with a quotation mark",
                             line_.substr(start.column - 1));
    }
    ++at_;
    return text;
  }

  std::string_view line_;
  SourcePosition place_;
  std::size_t at_ = 0;
};

std::string listed(std::vector<std::string> const& names) {
  std::string text;
  for (std::string const& name : names) {
    text.append(text.empty() ? "" : ", ").append(name);
  }
  return text;
}

[[noreturn]] void failAt(Item const& item, std::string const& expected) {
  throw Text::InputError(item.place, expected, item.text());
}

void needValue(Item const& item) {
  if (item.value.empty()) {
    failAt(item, item.name + "=VALUE");
  }
}

std::uint64_t numberOf(Item const& item, std::uint64_t low) {
  std::uint64_t number = 0;
  if (!Text::parseNumber(item.value, low, UINT64_MAX, number)) {
    failAt(item, item.name + "=N, " + std::to_string(low) + " or more");
  }
  return number;
}

double realOf(Item const& item, double highest) {
  double number = 0;
  char const* const end = item.value.data() + item.value.size();
  auto const [stop, error] = std::from_chars(item.value.data(), end, number);
  if (error != std::errc() || stop != end || !(number >= 0 && number <= highest)) {
    failAt(item, item.name + "=NUMBER, from 0 to " + std::to_string(static_cast<long>(highest)));
  }
  return number;
}

// The row of a table of words that an item names; null if there is none.
template <class Rows>
auto const* wordOf(Rows const& rows, Item const& item) {
  auto const found = std::find_if(rows.begin(), rows.end(),
                                  [&](auto const& row) { return row.word == item.name; });
  return found == rows.end() ? nullptr : &*found;
}

template <class Rows>
void addWords(Rows const& rows, std::vector<std::string>& words) {
  std::transform(rows.begin(), rows.end(), std::back_inserter(words),
                 [](auto const& row) { return std::string(row.word); });
}

class FaultParser {
 public:
  explicit FaultParser(Items& items) : items_(items) {}

  void parse(FaultPlan& plan) {
    Item item;
    items_.next(item);
    if (item.name == "capacity") {
      takeCapacity(plan.capacity);
      return;
    }
    FaultPlan::Script script;
    do {
      fault_ = {};
      takeOperations(item);
      script.push_back(takeFault());
    } while (goesOn_ && items_.next(item));
    if (goesOn_) {
      throw Text::InputError(items_.here(), "a fault after then", {});
    }
    plan.scripts.push_back(std::move(script));
  }

 private:
  using Take = void (FaultParser::*)(Item const&);
  struct Word {
    std::string_view word;
    Take take;
  };

  void takeCapacity(Capacity& capacity) {
    Item item;
    bool any = false;
    for (; items_.next(item); any = true) {
      auto const* const found = wordOf(FaultWords::limits, item);
      if (found == nullptr) {
        std::vector<std::string> known;
        addWords(FaultWords::limits, known);
        failAt(item,
               "a limit (nearest: " + listed(nearestNames(item.name, std::move(known))) + ")");
      }
      capacity.*found->limit = numberOf(item, 0);
    }
    if (!any) {
      throw Text::InputError(items_.here(), "a limit, such as rules=1000", {});
    }
  }

  // `any`, or names with commas between them.
  void takeOperations(Item const& item) {
    if (item.hasValue) {
      failAt(item, "an operation before " + item.name);
    }
    if (item.name == "any") {
      return;
    }
    for (std::size_t from = 0; from <= item.name.size();) {
      std::size_t const comma = std::min(item.name.find(',', from), item.name.size());
      fault_.operations.push_back(item.name.substr(from, comma - from));
      from = comma + 1;
      try {
        needOperation(fault_.operations.back());
      } catch (LookupError const&) {
        std::vector<std::string> known = operationNames();
        known.insert(known.end(), {"any", "capacity"});
        failAt(item, "an operation (nearest: " +
                         listed(nearestNames(fault_.operations.back(), std::move(known))) + ")");
      }
    }
  }

  PlannedFault takeFault() {
    Item item;
    bool hasWords = false;
    goesOn_ = false;
    seed_.reset();
    while (items_.next(item)) {
      hasWords = true;
      if (item.text() == "then") {
        goesOn_ = true;
        break;
      }
      take(item);
    }
    if (seed_ && fault_.occurrence.kind != Occurrence::Kind::probability) {
      failAt(*seed_, "probability=P with seed");
    }
    try {
      FaultPlan plan(fault_);
      if (goesOn_) {
        plan.scripts.front().emplace_back();
      }
      check(plan);
    } catch (std::invalid_argument const& error) {
      throw Text::InputError(hasWords ? item.place : items_.here(),
                             "a fault that is possible: " + std::string(error.what()),
                             hasWords ? item.text() : std::string());
    }
    return std::move(fault_);
  }

  void take(Item const& item) {
    using FaultWords::effects;
    using FaultWords::occurrences;
    static constexpr std::array words{
        Word{"policy", &FaultParser::takePolicy},
        Word{"direction", &FaultParser::takeDirection},
        Word{"option", &FaultParser::takeOption},
        Word{"class", &FaultParser::takeClass},
        Word{"rule", &FaultParser::takeRule},
        Word{"interface", &FaultParser::takeInterface},
        Word{"probability", &FaultParser::takeProbability},
        Word{"seed", &FaultParser::takeSeed},
        Word{"once", &FaultParser::takeOnce},
        Word{"text", &FaultParser::takeText},
        Word{"optional", &FaultParser::takeOptional},
    };
    if (auto const* const occurrence = wordOf(occurrences, item)) {
      occurrenceIs(item, {occurrence->value, numberOf(item, 1)});
    } else if (auto const* const effect = wordOf(effects, item)) {
      takeEffect(item, effect->value);
    } else if (Word const* const word = wordOf(words, item)) {
      (this->*word->take)(item);
    } else {
      std::vector<std::string> known;
      addWords(words, known);
      addWords(occurrences, known);
      addWords(effects, known);
      known.emplace_back("then");
      failAt(item, "a word of a fault (nearest: " +
                       listed(nearestNames(item.name, std::move(known))) + ")");
    }
  }

  void takePolicy(Item const& item) { takeName(item, fault_.policy); }
  void takeDirection(Item const& item) {
    if (item.value != "input" && item.value != "output") {
      failAt(item, "direction=input or direction=output");
    }
    fault_.direction = item.value;
  }
  void takeClass(Item const& item) { takeName(item, fault_.className); }
  void takeRule(Item const& item) {
    takeName(item, fault_.rule);
    // As in the journal: "web 10".
    if (std::size_t const blank = fault_.rule.rfind(' '); blank != std::string::npos) {
      fault_.rule[blank] = ':';
    }
  }
  static void takeName(Item const& item, std::string& name) {
    needValue(item);
    name = item.value;
  }
  void takeOption(Item const& item) {
    for (PolicyMap::ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      if (toText(option) == item.value) {
        fault_.option = option;
        return;
      }
    }
    failAt(item, "option=ipv4, ipv6, mac or mpls");
  }
  void takeInterface(Item const& item) {
    try {
      fault_.intf = Vorel::IntfId(item.value);
    } catch (Kor::RangeException const&) {
      failAt(item, "interface=NAME");
    }
  }

  void takeProbability(Item const& item) {
    occurrenceIs(item, Occurrence::withProbability(realOf(item, 1), fault_.occurrence.seed));
  }
  void occurrenceIs(Item const& item, Occurrence const& occurrence) {
    if (fault_.occurrence.kind != Occurrence::Kind::all) {
      failAt(item, "one of nth, first, from, every and probability, not two");
    }
    fault_.occurrence = occurrence;
  }
  void takeSeed(Item const& item) {
    fault_.occurrence.seed = numberOf(item, 0);
    seed_ = item;
  }

  void takeOnce(Item const& item) { takeFlag(item, fault_.once); }
  void takeOptional(Item const& item) { takeFlag(item, fault_.optional); }
  static void takeFlag(Item const& item, bool& flag) {
    if (item.hasValue) {
      failAt(item, item.name + " without a value");
    }
    flag = true;
  }

  void takeEffect(Item const& item, FaultEffect effect) {
    if (fault_.effect != FaultEffect::fails) {
      failAt(item, "one of before, after, throws, hold, drop, duplicate and delay, not two");
    }
    fault_.effect = effect;
    if (fault_.effect == FaultEffect::delay) {
      constexpr double longest = 1e6;
      fault_.seconds = realOf(item, longest);
    } else {
      bool flag = false;
      takeFlag(item, flag);
    }
  }
  void takeText(Item const& item) {
    needValue(item);
    fault_.text = item.value;
  }

  Items& items_;
  PlannedFault fault_;
  bool goesOn_ = false;  // `then` has come
  std::optional<Item> seed_;
};

}  // namespace

FaultPlan parseFaultPlan(Text::SourceText const& source) {
  FaultPlan plan;
  Text::LineReader reader(source);
  while (reader.next()) {
    Items items(reader.line(), reader.position(1));
    while (items.nextFault()) {
      FaultParser(items).parse(plan);
    }
  }
  return plan;
}

FaultPlan parseFaultPlan(std::string_view text) {
  return parseFaultPlan(Text::SourceText("fault plan", std::string(text)));
}

}  // namespace PolicyMapTestKit
