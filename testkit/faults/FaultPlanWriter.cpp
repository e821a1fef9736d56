// SPDX-License-Identifier: Apache-2.0
#include "testkit/Journal.h"
#include "testkit/Printing.h"
#include "testkit/faults/FaultPlan.h"
#include "testkit/faults/FaultWords.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace PolicyMapTestKit {

namespace {

// With quotes if it is not one plain word.
std::string quoted(std::string_view text) {
  if (!text.empty() && text.find_first_of(" \t\"\\;#") == std::string_view::npos) {
    return std::string(text);
  }
  std::string result = "\"";
  for (char const letter : text) {
    if (letter == '"' || letter == '\\') {
      result += '\\';
    }
    result += letter;
  }
  return result + '"';
}

std::string numberText(double number) {
  std::string text = std::to_string(number);
  text.erase(text.find_last_not_of('0') + 1);
  return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

void needPositive(std::uint64_t number, char const* what) {
  if (number == 0) {
    throw std::invalid_argument(std::string(what) + ": calls are counted from 1");
  }
}

void check(PlannedFault const& fault) {
  std::for_each(fault.operations.begin(), fault.operations.end(), needOperation);
  needPositive(fault.occurrence.number, "occurrence");
  if (!(fault.occurrence.probability >= 0 && fault.occurrence.probability <= 1)) {
    throw std::invalid_argument("probability: a number from 0 to 1");
  }
  if (!(fault.seconds >= 0)) {
    throw std::invalid_argument("delay: 0 s or more");
  }
  bool const isAboutResults = FaultWords::isAboutResults(fault.effect);
  for (std::string const& operation : fault.operations) {
    if (isAboutResults && !hasResult(operation)) {
      throw std::invalid_argument(std::string(FaultWords::of(fault.effect)) + ": " + operation +
                                  " has no asynchronous result");
    }
  }
}

// Whether a fault comes to an end, so that the next one of a script can begin.
bool ends(PlannedFault const& fault) {
  using Kind = Occurrence::Kind;
  Kind const kind = fault.occurrence.kind;
  return fault.once || kind == Kind::nth || kind == Kind::first;
}

}  // namespace

bool hasResult(std::string_view operation) {
  return operation == "commitPolicy" || operation == "addIntfToPolicy" ||
         operation == "removeIntfFromPolicy";
}

void check(FaultPlan const& plan) {
  for (FaultPlan::Script const& script : plan.scripts) {
    for (PlannedFault const& fault : script) {
      check(fault);
      if (&fault != &script.back() && !ends(fault)) {
        throw std::invalid_argument("then: the fault before needs once, nth or first: " +
                                    toText(fault));
      }
    }
  }
}

std::string toText(PlannedFault const& fault) {
  std::string text;
  for (std::string const& operation : fault.operations) {
    text.append(text.empty() ? "" : ",").append(operation);
  }
  if (text.empty()) {
    text = "any";
  }
  auto const add = [&](std::string_view word, std::string_view value) {
    if (!value.empty()) {
      text.append(" ").append(word).append("=").append(quoted(value));
    }
  };
  add("policy", fault.policy);
  add("direction", fault.direction);
  add("option", fault.option ? toText(*fault.option) : std::string());
  add("class", fault.className);
  add("rule", fault.rule);
  add("interface", fault.intf ? std::string(fault.intf->name().view()) : std::string());
  Occurrence const& occurrence = fault.occurrence;
  if (occurrence.kind == Occurrence::Kind::probability) {
    add("probability", numberText(occurrence.probability));
    add("seed", std::to_string(occurrence.seed));
  } else if (occurrence.kind != Occurrence::Kind::all) {
    add(FaultWords::of(occurrence.kind), std::to_string(occurrence.number));
  }
  if (fault.once) {
    text += " once";
  }
  if (fault.effect == FaultEffect::delay) {
    add("delay", numberText(fault.seconds));
  } else if (fault.effect != FaultEffect::fails) {
    text.append(" ").append(FaultWords::of(fault.effect));
  }
  add("text", fault.text);
  return fault.optional ? text + " optional" : text;
}

std::string toText(FaultPlan const& plan) {
  std::string text;
  for (FaultPlan::Script const& script : plan.scripts) {
    text.append(text.empty() ? "" : "\n");
    char const* separator = "";
    for (PlannedFault const& fault : script) {
      text.append(std::exchange(separator, " then ")).append(toText(fault));
    }
  }
  if (plan.capacity.unlimited()) {
    return text;
  }
  text.append(text.empty() ? "capacity" : "\ncapacity");
  for (FaultWords::Limit const& each : FaultWords::limits) {
    if (plan.capacity.*each.limit) {
      text.append(" ").append(each.word).append("=");
      text.append(std::to_string(*(plan.capacity.*each.limit)));
    }
  }
  return text;
}

}  // namespace PolicyMapTestKit
