// SPDX-License-Identifier: Apache-2.0
#include "lab/Faults.h"

#include "lab/Input.h"
#include "lab/Verb.h"
#include "testkit/faults/FaultWords.h"
#include "testkit/text/SourceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <vector>

namespace lab {

namespace {

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
  Number value{};
  char const* const end = text.data() + text.size();
  auto const [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

Fault readFaultOf(std::string_view option, std::string_view argument) {
  auto const equals = argument.find('=');
  std::string const name(argument.substr(0, equals));
  std::vector<std::string> const known = faultNames();
  if (equals == std::string_view::npos ||
      std::find(known.begin(), known.end(), name) == known.end()) {
    std::string names;
    for (std::string const& one : known) {
      names.append(names.empty() ? "" : ", ").append(one);
    }
    throw UsageError(std::string(option) + ": expected NAME=TEXT with one of " + names +
                     ", found " + excerpt(argument));
  }
  return {name, std::string(argument.substr(equals + 1))};
}

}  // namespace

Fault readFault(std::string_view argument) {
  return readFaultOf("--inject", argument);
}

FaultPlan readPlan(std::string const& option, std::string const& argument) {
  bool const isFile = argument.starts_with('@');
  return parseFaultPlan(isFile ? readInput(argument.substr(1)) : SourceText(option, argument));
}

void addPlan(FaultPlan& plan, FaultPlan const& more) {
  plan.scripts.insert(plan.scripts.end(), more.scripts.begin(), more.scripts.end());
  for (FaultWords::Limit const& each : FaultWords::limits) {
    if (more.capacity.*each.limit) {
      plan.capacity.*each.limit = more.capacity.*each.limit;
    }
  }
}

std::optional<double> secondsOf(std::string_view text) {
  std::optional<double> const value = numberOf<double>(text);
  return value && *value >= 0 && *value <= longestAdvance ? value : std::nullopt;
}

Step readStep(std::string const& argument) {
  std::string_view const all = argument;
  auto const blank = all.find(' ');
  std::string_view const verb = all.substr(0, blank);
  bool const alone = blank == std::string_view::npos;
  std::string_view const rest = alone ? std::string_view() : all.substr(blank + 1);
  constexpr std::array<std::string_view, 7> withoutArgument{"clear",  "trigger", "release", "check",
                                                            "detach", "attach",  "end"};
  Step step;
  if (alone &&
      std::find(withoutArgument.begin(), withoutArgument.end(), verb) != withoutArgument.end()) {
    step.kind = *stepKindOf(verb);
    return step;
  }
  if (verb == "trigger") {
    std::optional<std::uint32_t> const number = numberOf<std::uint32_t>(rest);
    if (!number || *number == 0 || *number > mostTriggers) {
      throw UsageError("trigger: N must be 1 to 1000000, found " + excerpt(rest));
    }
    step.kind = Step::Kind::trigger;
    step.times = *number;
    return step;
  }
  if (verb == "release") {
    if (!numberOf<std::uint64_t>(rest)) {
      throw UsageError("release: N must be a number, found " + excerpt(rest));
    }
    step.kind = Step::Kind::release;
    step.text = rest;
    return step;
  }
  if (verb == "inject" && !alone) {
    step.kind = Step::Kind::inject;
    Fault const fault = readFaultOf("inject", rest);
    step.text = fault.name + "=" + fault.text;
    return step;
  }
  if ((verb == "faults" || verb == "end") && !rest.empty()) {
    step.kind = *stepKindOf(verb);
    try {
      if (rest == std::string("@") + standardInput) {
        throw UsageError(std::string(verb) + ": a plan of a step is not read from standard input");
      }
      step.text = toText(readPlan(std::string(verb), std::string(rest)));
    } catch (InputError const& error) {
      throw UsageError(error.what());
    }
    return step;
  }
  if (verb == "load" && !rest.empty()) {
    step.kind = Step::Kind::load;
    step.name = rest;
    if (step.name != standardInput && !std::ifstream(step.name)) {
      throw UsageError("load: " + step.name + " cannot be read");
    }
    return step;
  }
  throw UsageError(
      "expected clear, trigger, trigger N, release, release N, inject NAME=TEXT, faults "
      "PLAN, end, end PLAN, load FILE, check, detach or attach, found " +
      excerpt(argument));
}

std::string faultOfStep(std::string const& argument) {
  try {
    static_cast<void>(readStep(argument));
    return "";
  } catch (UsageError const& error) {
    return error.what();
  }
}

std::string faultOfSeconds(std::string const& seconds) {
  return secondsOf(seconds) ? "" : "SECONDS must be 0 to 1000000, not " + seconds;
}

Step withContent(Step step) {
  if (step.kind == Step::Kind::load) {
    SourceText const source = readInput(step.name);
    step.name = *source.name();
    step.text = source.content();
  }
  return step;
}

std::string optionOf(Step const& step) {
  return (step.kind == Step::Kind::advance ? "--" : "--then ") + toText(step);
}

}  // namespace lab
