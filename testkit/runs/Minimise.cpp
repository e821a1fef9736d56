// SPDX-License-Identifier: Apache-2.0
#include "testkit/runs/Minimise.h"

#include "testkit/runs/RunFile.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// A line and the more deeply indented lines below it.
struct Block {
  std::size_t indentation = 0;
  std::vector<std::string> lines;
};

std::size_t indentationOf(std::string const& line) {
  return std::min(line.find_first_not_of(" \t"), line.size());
}

// Lines that are less deeply indented are blocks of their own.
std::vector<Block> blocksOf(std::vector<std::string> const& lines, std::size_t indentation) {
  std::vector<Block> blocks;
  for (std::string const& line : lines) {
    std::size_t const own = indentationOf(line);
    bool const continues = !blocks.empty() && own > blocks.back().indentation &&
                           blocks.back().indentation >= indentation;
    if (!continues) {
      blocks.push_back({own, {}});
    }
    blocks.back().lines.push_back(line);
  }
  return blocks;
}

std::vector<std::string> linesIn(std::string const& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t const end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

// "no set action1 7" undoes "set action1 7".
bool undoes(std::string_view later, std::string_view earlier) {
  constexpr std::string_view no = "no ";
  later.remove_prefix(std::min(later.find_first_not_of(" \t"), later.size()));
  earlier.remove_prefix(std::min(earlier.find_first_not_of(" \t"), earlier.size()));
  return later.starts_with(no) && later.substr(no.size()) == earlier;
}

std::vector<std::string> wordsOf(std::string const& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

// "match ipv6 access-group NAME" with the first rule of the list in place of the list:
// "match ipv6 tcp any any eq 80". Empty if the line matches no list, or the list permits nothing.
std::string withOwnRule(std::string const& line, std::vector<std::string> const& lines) {
  std::vector<std::string> const words = wordsOf(line);
  if (words.size() < 3 || words.front() != "match" ||
      std::find(words.begin(), words.end(), "access-group") == words.end()) {
    return {};
  }
  std::string const family = words[1] == "ipv6" || words[1] == "mac" ? words[1] : "ip";
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
    std::vector<std::string> const heading = wordsOf(lines[i]);
    if (heading.size() < 3 || heading[0] != family || heading[1] != "access-list" ||
        heading.back() != words.back()) {
      continue;
    }
    constexpr std::string_view permit = "permit ";
    std::size_t const rule = lines[i + 1].find(permit);
    return rule == std::string::npos ? std::string()
                                     : line.substr(0, line.find(words.front())) + "match " +
                                           family + " " + lines[i + 1].substr(rule + permit.size());
  }
  return {};
}

std::string joined(std::vector<Block> const& blocks) {
  std::string text;
  for (Block const& block : blocks) {
    for (std::string const& line : block.lines) {
      text.append(line).append("\n");
    }
  }
  return text;
}

class Shortening {
 public:
  Shortening(Script script, std::function<void()> const& onTry)
      : script_(std::move(script)), onTry_(onTry) {
    RunFile const first = record(script_);
    if (first.found.empty()) {
      throw std::invalid_argument("nothing of the script is irregular");
    }
    wanted_ = first.found.front();
  }

  Minimised perform() {
    shortenAll();
    if (moveRulesIntoClasses()) {
      shortenAll();
    }
    return {script_, record(script_).found, tries_};
  }

 private:
  void shortenAll() {
    for (std::size_t before = size() + 1; size() < before;) {
      before = size();
      shortenSteps();
      joinTexts();
      shortenFaults();
      shortenTexts();
      plainOptions();
    }
  }

  [[nodiscard]] bool isWanted(Irregularity const& each) const {
    auto const partOf = [](Irregularity const& some) {
      switch (some.kind) {
      case Irregularity::Kind::exception:
      case Irregularity::Kind::assertion: return some.text;
      case Irregularity::Kind::finding: return some.text.substr(0, some.text.find(':'));
      default: return std::string();
      }
    };
    return each.kind == wanted_.kind && partOf(each) == partOf(wanted_);
  }

  // Keeps a script that comes to the same kind of irregularity.
  bool keeps(Script script) {
    ++tries_;
    if (onTry_) {
      onTry_();
    }
    RunFile const now = record(script);
    if (std::none_of(now.found.begin(), now.found.end(),
                     [this](Irregularity const& each) { return isWanted(each); })) {
      return false;
    }
    script_ = std::move(script);
    return true;
  }

  // Leaves out items as long as `tryWith` accepts the rest.
  template <class Item, class TryWith>
  static void shorten(std::vector<Item> items, TryWith const& tryWith) {
    for (std::size_t part = std::max<std::size_t>(items.size() / 2, 1); part != 0; part /= 2) {
      for (std::size_t i = 0; i < items.size();) {
        std::size_t const end = std::min(i + part, items.size());
        std::vector<Item> rest(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(i));
        rest.insert(rest.end(), items.begin() + static_cast<std::ptrdiff_t>(end), items.end());
        if (tryWith(rest)) {
          items = std::move(rest);
        } else {
          i = end;
        }
      }
    }
  }

  void shortenSteps() {
    shorten(script_.steps, [this](std::vector<Step> const& steps) {
      Script shorter = script_;
      shorter.steps = steps;
      return keeps(std::move(shorter));
    });
  }

  // Loads each text with the one before, if it need not be an edit of its own. Then lines that undo
  // each other, and repeated headings, can be left out.
  void joinTexts() {
    std::size_t earlier = script_.steps.size();  // the last text
    for (std::size_t i = 0; i != script_.steps.size(); ++i) {
      if (script_.steps[i].kind != Step::Kind::load) {
        continue;
      }
      if (earlier > i || !joins(earlier, i)) {
        earlier = i;
      } else {
        --i;
      }
    }
  }

  bool joins(std::size_t earlier, std::size_t later) {
    Script shorter = script_;
    std::string& text = shorter.steps[earlier].text;
    text.append(text.ends_with('\n') ? "" : "\n").append(shorter.steps[later].text);
    shorter.steps.erase(shorter.steps.begin() + static_cast<std::ptrdiff_t>(later));
    return keeps(std::move(shorter));
  }

  void shortenFaults() {
    shortenPlan(script_.options.plan, [this](FaultPlan const& plan) {
      Script shorter = script_;
      shorter.options.plan = plan;
      return keeps(std::move(shorter));
    });
    for (std::size_t i = 0; i != script_.steps.size(); ++i) {
      if (script_.steps[i].kind == Step::Kind::faults) {
        shortenPlan(parseFaultPlan(script_.steps[i].text),
                    [&](FaultPlan const& plan) { return tryText(i, toText(plan)); });
      }
    }
  }

  // Leaves out faults, and lets the others hit earlier calls, for which less has to be configured.
  template <class TryWith>
  static void shortenPlan(FaultPlan plan, TryWith const& tryWith) {
    shorten(std::vector<FaultPlan::Script>(plan.scripts),
            [&](std::vector<FaultPlan::Script> const& scripts) {
              FaultPlan shorter = plan;
              shorter.scripts = scripts;
              if (!tryWith(shorter)) {
                return false;
              }
              plan = std::move(shorter);
              return true;
            });
    for (std::size_t script = 0; script != plan.scripts.size(); ++script) {
      for (std::size_t fault = 0; fault != plan.scripts[script].size(); ++fault) {
        while (hitsEarlier(plan, plan.scripts[script][fault].occurrence, tryWith)) {
        }
      }
    }
  }

  // `occurrence` is part of the plan.
  template <class TryWith>
  static bool hitsEarlier(FaultPlan& plan, Occurrence& occurrence, TryWith const& tryWith) {
    std::uint64_t const now = occurrence.number;
    for (std::uint64_t const earlier : {std::uint64_t{1}, now / 2, now - 1}) {
      if (earlier != 0 && earlier < now) {
        occurrence.number = earlier;
        if (tryWith(plan)) {
          return true;
        }
      }
    }
    occurrence.number = now;
    return false;
  }

  bool tryText(std::size_t step, std::string text) {
    Script shorter = script_;
    shorter.steps[step].text = std::move(text);
    return keeps(std::move(shorter));
  }

  void shortenTexts() {
    for (std::size_t i = 0; i != script_.steps.size(); ++i) {
      if (script_.steps[i].kind == Step::Kind::load) {
        cancelPairs(i);
        shortenText(i);
      }
    }
  }

  // Lets classes match a rule of their own, so that no list is needed. Returns whether one does.
  bool moveRulesIntoClasses() {
    bool moved = false;
    for (std::size_t step = 0; step != script_.steps.size(); ++step) {
      if (script_.steps[step].kind != Step::Kind::load) {
        continue;
      }
      std::vector<std::string> lines = linesIn(script_.steps[step].text);
      for (std::string& line : lines) {
        std::string const ownRule = withOwnRule(line, lines);
        if (!ownRule.empty()) {
          std::string const before = std::exchange(line, ownRule);
          bool const kept = tryText(step, joined(blocksOf(lines, 0)));
          line = kept ? line : before;
          moved = moved || kept;
        }
      }
    }
    return moved;
  }

  // Leaves out a line together with the later line that undoes it.
  void cancelPairs(std::size_t step) {
    std::vector<std::string> lines = linesIn(script_.steps[step].text);
    for (std::size_t later = 1; later < lines.size(); ++later) {
      auto const line = lines.begin() + static_cast<std::ptrdiff_t>(later);
      auto const undone = std::find_if(
          lines.begin(), line, [&](std::string const& each) { return undoes(*line, each); });
      if (undone == line) {
        continue;
      }
      std::vector<std::string> rest(lines.begin(), undone);
      rest.insert(rest.end(), undone + 1, line);
      rest.insert(rest.end(), line + 1, lines.end());
      if (tryText(step, joined(blocksOf(rest, 0)))) {
        lines = std::move(rest);
        later = 0;
      }
    }
  }

  // Whole blocks first, then those within them.
  void shortenText(std::size_t step) {
    constexpr std::size_t deepest = 8;
    for (std::size_t indentation = 0; indentation <= deepest; ++indentation) {
      shorten(blocksOf(linesIn(script_.steps[step].text), indentation),
              [&](std::vector<Block> const& blocks) { return tryText(step, joined(blocks)); });
    }
  }

  void plainOptions() {
    LabOptions const usual;
    for (LabSwitch const& each : labSwitches()) {
      if (script_.options.*each.value != usual.*each.value) {
        Script plainer = script_;
        plainer.options.*each.value = usual.*each.value;
        keeps(std::move(plainer));
      }
    }
  }

  // A measure of what is left.
  [[nodiscard]] std::size_t size() const {
    std::size_t size = script_.steps.size() + script_.options.plan.scripts.size();
    for (Step const& step : script_.steps) {
      size += step.text.size();
    }
    return size;
  }

  Script script_;
  std::function<void()> const& onTry_;
  Irregularity wanted_;
  std::size_t tries_ = 0;
};

}  // namespace

Minimised minimise(Script script, std::function<void()> const& onTry) {
  return Shortening(std::move(script), onTry).perform();
}

}  // namespace PolicyMapTestKit
