// SPDX-License-Identifier: Apache-2.0
#pragma once

// Simulation: many packets through the records, and what each rule gets of them.
//
//   Simulator simulator(subjectsOf(lab));
//   simulator.take(readPacket("tcp 10.0.0.1:4000 > 192.0.2.80:80"), 1000);
//   showHits(lab, simulator.results());  // as hit counts of the statuses

#include "packets/Differences.h"
#include "packets/Export.h"
#include "packets/Subject.h"
#include "packets/engine/PointIndex.h"
#include "packets/space/Packet.h"
#include "testkit/text/Json.h"

#include <array>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

struct SubRuleHits {
  PolicyMap::SubRuleData subRule;
  std::uint64_t packets = 0;
};

// The packets that a rule took: it decided them, or denied them to its class.
struct RuleHits {
  PolicyMap::AclRuleKey key;
  DecidingRule rule;
  std::uint64_t packets = 0;
  // Each packet counts for the first sub-rule that takes it.
  std::vector<SubRuleHits> subRules = {};
};

struct POLICYMAPPACKETS_API Simulation {
  std::string subject;  // "edge input ipv4"
  PolicyMap::PolicyMapSmKey policy;
  // That the table of this option sees.
  std::uint64_t packets = 0;
  // In the order of programming.
  std::vector<RuleHits> rules = {};
  // By class; empty for no class. Every class with rules is there.
  std::map<std::string, std::uint64_t> classes = {};

  // The number of rules without a packet.
  [[nodiscard]] std::size_t neverHit() const;
};

class POLICYMAPPACKETS_API Simulator {
 public:
  explicit Simulator(std::vector<Subject> subjects, DenyReading deny = DenyReading::nextClass);
  Simulator(Simulator const&) = delete;
  Simulator& operator=(Simulator const&) = delete;
  ~Simulator();

  // Each table that sees the packet counts it so many times.
  void take(Packet const& packet, std::uint64_t times = 1);

  // For each subject with recorded rules, in order.
  [[nodiscard]] std::vector<Simulation> results() const;

 private:
  class Table;

  std::vector<Subject> subjects_;
  std::vector<std::unique_ptr<Table>> tables_;
};

// From now on the helper of the lab returns these numbers of packets for its rules when the core
// asks for hit counts. Replaces what was given to Lab::aroundIs().
POLICYMAPPACKETS_API void showHits(PolicyMapTestKit::Lab& lab,
                                   std::vector<Simulation> const& simulations);

// A table, in lines without a line feed at the end.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Simulation const& simulation);
// "subject", "packets", "classes" with "class" and "packets", "rules" with "packets" and
// "subRules", "neverHit".
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(
    Simulation const& simulation);

}  // namespace PolicyMapPackets
