// SPDX-License-Identifier: Apache-2.0
#pragma once

// One step of a random run, as a value: a verb and up to four small numbers. The driver takes every
// number modulo the number of choices, so all values are valid. 0 is always the simplest choice,
// which is what shrinking aims for. A step has a text form, "rule 0 1 2 30".

#include <array>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Model {

enum class Verb : std::uint8_t {
  rule,           // kind, list, sequence number, variant: writes a rule, creates its list
  ruleDel,        // kind, list, sequence number
  listDel,        // kind, list
  match,          // class-map, version, place, variant
  matchDel,       // class-map, version, place
  matchType,      // class-map, version, 1: match-all
  classMap,       // class-map, version: makes that sub-configuration current; 2: none
  classMapDel,    // class-map
  usesClass,      // policy-map, version, class-map, priority
  usesClassDel,   // policy-map, version, class-map
  action,         // policy-map, class-map, kind, value; in both versions
  actionDel,      // policy-map, class-map, kind
  actionsDel,     // policy-map, class-map
  rawClassMap,    // policy-map, version, class-map, which matches; 2: none
  policyMap,      // policy-map, version
  policyMapDel,   // policy-map
  attach,         // interface, direction, policy-map
  detach,         // interface, direction
  ipAddress,      // interface, 1: has an address
  ip6Address,     // interface, 1: has an address
  routed,         // interface, 1: is routed
  routed6,        // interface, 1: is routed
  routing,        // 1: on
  member,         // interface, port-channel; 2: none
  nonexistent,    // interface, 1: does not exist
  allowOption,    // option, 3: not allowed
  fault,          // one of the eight texts, 1: set
  async,          // 1: on
  pseudoAsync,    // 1: on
  trigger,        // number of triggers minus one
  advance,        // tenths of a second minus one
  turn,           // turns the event loop
  capability,     // capability, 3: not the default
  otherHelper,    // 0: a new one; 1: none; 2: the previous one again
  otherMachine,   // 0: a new one with flags; 1: none
  notifications,  // 1: off
  countRequest,   // policy-map, direction
  settle,         // settles and compares
};
constexpr std::size_t verbs = static_cast<std::size_t>(Verb::settle) + 1;

struct Operation {
  Verb verb = Verb::turn;
  std::array<std::uint32_t, 4> numbers{};

  bool operator==(Operation const&) const = default;
};
using Operations = std::vector<Operation>;

// How many numbers a verb takes.
[[nodiscard]] std::size_t arity(Verb verb);
[[nodiscard]] std::string textOf(Operation const& operation);
// One step on each line.
[[nodiscard]] std::string textOf(Operations const& operations);
// Reads the text of several steps and ignores empty lines. Throws std::invalid_argument if a line
// is not a step.
[[nodiscard]] Operations operationsOf(std::string_view text);

// The relative frequency of a verb.
[[nodiscard]] std::size_t weight(Verb verb);
// The exclusive upper bound of a number.
[[nodiscard]] std::uint32_t limit(Verb verb, std::size_t number);
[[nodiscard]] Operations randomOperations(std::mt19937_64& random, std::size_t count);

// Used by RapidCheck to print a step.
inline std::ostream& operator<<(std::ostream& out, Operation const& operation) {
  return out << textOf(operation);
}

}  // namespace Model
