// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the random runs do, one step as a value: a verb and up to four small numbers. The driver
// takes every number modulo what it chooses from, so all values are good, and 0 is the plainest
// choice everywhere: that is what shrinking goes for. A step has a text form, "rule 0 1 2 30".

#include <array>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Model {

enum class Verb : std::uint8_t {
  rule,           // kind, list, sequence number, variant: writes a rule, makes its list
  ruleDel,        // kind, list, sequence number
  listDel,        // kind, list
  match,          // class-map, version, place, variant
  matchDel,       // class-map, version, place
  matchType,      // class-map, version, 1: match-all
  classMap,       // class-map, version: that sub-configuration is the current one; 2: none is
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
  ipAddress,      // interface, 1: has one
  ip6Address,     // interface, 1: has one
  routed,         // interface, 1: it is
  routed6,        // interface, 1: it is
  routing,        // 1: on
  member,         // interface, port-channel; 2: of none
  nonexistent,    // interface, 1: it is not there
  allowOption,    // option, 3: not allowed
  fault,          // which of the eight texts, 1: set
  async,          // 1: on
  pseudoAsync,    // 1: on
  trigger,        // how often, less one
  advance,        // tenths of a second, less one
  turn,           // turns the event loop
  capability,     // which, 3: other than usual
  otherHelper,    // 0: another one; 1: none; 2: the last one again
  otherMachine,   // 0: another one with flags; 1: none
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
// One step per line.
[[nodiscard]] std::string textOf(Operations const& operations);
// Reads the text of several steps; empty lines do not count. Throws std::invalid_argument for what
// is no step.
[[nodiscard]] Operations operationsOf(std::string_view text);

// How often a verb is chosen, compared with others.
[[nodiscard]] std::size_t weight(Verb verb);
// Numbers stay below this.
[[nodiscard]] std::uint32_t limit(Verb verb, std::size_t number);
[[nodiscard]] Operations randomOperations(std::mt19937_64& random, std::size_t count);

// How RapidCheck prints one.
inline std::ostream& operator<<(std::ostream& out, Operation const& operation) {
  return out << textOf(operation);
}

}  // namespace Model
