// SPDX-License-Identifier: Apache-2.0
#pragma once

// FaultPlan: which calls of the helper fail, when, and how.
//
//   addRule nth=3 once
//   commitPolicy policy=edge before text="table full"
//   addRule,updateAction class=web probability=0.1 seed=7
//   createPolicy nth=1 then commitPolicy nth=2
//   commitPolicy drop once
//   capacity rules=1000 policies=8
//
// A plan has one fault per line; a semicolon is as good as a line end, and # begins a comment. The
// order of the words after the operations does not matter. See docs/faults.md.

#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/text/SourceText.h"

#include <PolicyMap/ClassMapMatchOption.h>
#include <Vorel/IntfId.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// Which of the calls that a fault selects fail. Calls are counted from 1, for each fault by itself.
struct Occurrence {
  enum class Kind : std::uint8_t {
    all,
    nth,          // call `number` alone
    first,        // calls 1 to `number`
    from,         // call `number` and all later ones
    every,        // each multiple of `number`
    probability,  // each call by itself, pseudo-random and the same for each `seed`
  };

  Kind kind = Kind::all;
  std::uint64_t number = 1;
  double probability = 1;
  std::uint64_t seed = 1;

  static Occurrence nth(std::uint64_t number) { return {Kind::nth, number}; }
  static Occurrence first(std::uint64_t number) { return {Kind::first, number}; }
  static Occurrence from(std::uint64_t number) { return {Kind::from, number}; }
  static Occurrence every(std::uint64_t number) { return {Kind::every, number}; }
  static Occurrence withProbability(double probability, std::uint64_t seed = 1) {
    return {Kind::probability, 1, probability, seed};
  }

  bool operator==(Occurrence const&) const = default;
};

// What happens to a call.
enum class FaultEffect : std::uint8_t {
  // addRule is not carried out, any other operation is, and the call fails: what the error
  // attributes of the helper do. hwInit and getCountForRule, which return no text, throw.
  fails,
  before,  // not carried out, and the call fails
  after,   // carried out, and the call fails; an asynchronous one by its result
  throws,  // not carried out, and the operation throws InjectedFault
  // These are about asynchronous results, of operations that succeed unless the fault has a text.
  hold,       // delivered by Lab::release()
  drop,       // never delivered
  duplicate,  // delivered twice
  delay,      // delivered after `seconds` of virtual time
};

struct PlannedFault {
  // Names of functions of the helper; none: any.
  std::vector<std::string> operations = {};
  // Only calls with these arguments; empty: any. A call without such an argument is not selected.
  std::string policy = {};
  std::string direction = {};
  std::optional<PolicyMap::ClassMapMatchOption> option = {};
  std::string className = {};
  std::string rule = {};  // "web:10"; of a rule of the class-map itself "10"
  std::optional<Vorel::IntfId> intf = {};

  Occurrence occurrence = {};
  // At most one call fails.
  bool once = false;
  FaultEffect effect = FaultEffect::fails;
  double seconds = 0;
  // What the operation returns. If it is empty, "injected #3 at addRule(edge/input ipv4 web
  // web:30)", where 3 counts the injected faults of the lab.
  std::string text = {};
  // Not meeting it is no finding.
  bool optional = false;

  bool operator==(PlannedFault const&) const = default;
};

// As in the text of a plan, without what is usual.
POLICYMAPTESTKIT_API std::string toText(PlannedFault const& fault);

// What the simulated hardware has room for. addRule, addIntfToPolicy or createPolicy fails before
// it is carried out if it would need more.
struct Capacity {
  std::optional<std::uint64_t> rules = {};  // hardware entries: each sub-rule counts
  std::optional<std::uint64_t> rulesPerPolicy = {};
  std::optional<std::uint64_t> rangeCheckers = {};  // sub-rules that need one
  std::optional<std::uint64_t> interfacesPerPolicy = {};
  std::optional<std::uint64_t> policies = {};

  [[nodiscard]] bool unlimited() const { return *this == Capacity(); }
  bool operator==(Capacity const&) const = default;
};

struct FaultPlan {
  // Each fault of a script begins when the one before can fail no more calls.
  using Script = std::vector<PlannedFault>;

  std::vector<Script> scripts = {};
  Capacity capacity = {};

  FaultPlan() = default;
  // A plan of one fault.
  FaultPlan(PlannedFault fault)
      : scripts{{std::move(fault)}} {}  // NOLINT(google-explicit-constructor)

  bool operator==(FaultPlan const&) const = default;
};

// A line per script, and one for the capacity.
POLICYMAPTESTKIT_API std::string toText(FaultPlan const& plan);

// Throws Text::InputError, with the nearest known words for an unknown one.
POLICYMAPTESTKIT_API FaultPlan parseFaultPlan(Text::SourceText const& source);
POLICYMAPTESTKIT_API FaultPlan parseFaultPlan(std::string_view text);

// Throws std::invalid_argument if a fault can select no call, e.g. for an unknown operation.
POLICYMAPTESTKIT_API void check(FaultPlan const& plan);

// True if the result of the operation can be asynchronous.
POLICYMAPTESTKIT_API bool hasResult(std::string_view operation);

}  // namespace PolicyMapTestKit
