// SPDX-License-Identifier: Apache-2.0
#pragma once

// Step, Script: what is done to a Lab, as values: they can be performed, written to a file,
// shortened, and turned into the source of a test.
//
//   Script script;
//   script.steps = {Step::load("edge.cfg", text), Step::faults("addRule nth=3"), Step::check()};
//   ScriptRun run(script);

#include "testkit/Export.h"
#include "testkit/Lab.h"
#include "testkit/text/FilterSet.h"
#include "testkit/text/PolicyTextParser.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

struct POLICYMAPTESTKIT_API Step {
  enum class Kind : std::uint8_t {
    load,     // policy text, as an edit of what is configured
    rules,    // a filter set, in place of what is configured
    inject,   // sets an error attribute of the helper
    faults,   // begins a fault plan, which lasts until it is ended, or until the end of the script
    end,      // ends the latest fault plan with this text; without a text all plans
    clear,    // ends the effect of all faults
    advance,  // advances virtual time
    trigger,  // delivers the pending asynchronous result, `times` times
    release,  // delivers the held result of the number that is the text; without a text all
    check,    // ends all faults, lets time pass, and compares with a new lab; see Recovery.h
    detach,   // takes everything away from the interfaces
    attach,   // puts it back
  };

  Kind kind = Kind::check;
  // Of the file that was loaded.
  std::string name = {};
  // The content of the file; "NAME=TEXT" of an error attribute; the fault plan; a number.
  std::string text = {};
  // Of policy text; none: that of the script.
  std::optional<Text::Reading> reading = {};
  double seconds = 0;
  std::uint32_t times = 1;
  FilterLayout layout = {};
  Text::PortRanges portRanges = Text::PortRanges::onPortProtocols;

  static Step load(std::string name, std::string text) {
    return {.kind = Kind::load, .name = std::move(name), .text = std::move(text)};
  }
  static Step faults(std::string plan) { return {.kind = Kind::faults, .text = std::move(plan)}; }
  static Step advance(double seconds) { return {.kind = Kind::advance, .seconds = seconds}; }
  static Step check() { return {.kind = Kind::check}; }

  bool operator==(Step const&) const = default;
};

// Performs a step other than `faults`, `end` and `check`, for which a ScriptRun is needed and which
// throw std::invalid_argument. Throws Text::InputError for policy text or a filter set that is
// invalid, and std::out_of_range for a result that is not held.
POLICYMAPTESTKIT_API void perform(Lab& lab, Step const& step, Text::Reading reading);

// "load edge.cfg", "advance 5", "check".
POLICYMAPTESTKIT_API std::string toText(Step const& step);
// "load", "advance".
POLICYMAPTESTKIT_API std::string_view nameOf(Step::Kind kind);
// None if there is no step of this name.
POLICYMAPTESTKIT_API std::optional<Step::Kind> stepKindOf(std::string_view name);

// In seconds. Operations that are retried forever would keep a longer advance running.
inline constexpr double longestAdvance = 1e6;

struct Script {
  LabOptions options = {};
  // Of the policy text.
  Text::Reading reading = Text::Reading::strict;
  std::vector<Step> steps = {};
};

// The number of lines of policy text of all steps that are not empty.
POLICYMAPTESTKIT_API std::size_t linesOf(Script const& script);
// The same without the first step that has policy text.
POLICYMAPTESTKIT_API std::size_t linesOfEdits(Script const& script);

}  // namespace PolicyMapTestKit
