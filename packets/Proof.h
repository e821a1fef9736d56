// SPDX-License-Identifier: Apache-2.0
#pragma once

// Whether the records treat packets as the configuration says: of one packet, and of all.

#include "packets/Comparison.h"
#include "packets/Packet.h"
#include "packets/Recorded.h"
#include "testkit/Lab.h"

#include <PolicyMap/PolicyMapSmKey.h>
#include <Vorel/IntfId.h>

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// Which policies and options. None: all.
struct Selection {
  std::optional<Vorel::IntfId> intf = {};
  std::string policyMap = {};
  std::optional<PolicyMap::ClassMapMatchOption> option = {};  // ipv4 or ipv6
};

struct ProofOptions {
  Deny deny = Deny::nextClass;
  ComparisonLimits limits = {};
};

// Of one policy with one option.
struct Proof {
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option{};
  std::string unknown;  // why the records say nothing about packets; empty if they do
  // By their smallest packets, in the order of headers.
  std::vector<Difference> differences;
  bool complete = true;  // false: undecided, there may be more differences
};

// Of the attached policies that have rules for the option, by name, direction and option.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Proof> prove(PolicyMapTestKit::Lab const& lab,
                                                            Selection const& selection = {},
                                                            ProofOptions const& options = {});

// What becomes of one packet in one policy.
struct Trace {
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option{};
  std::string unknown;
  std::vector<Line> recorded;  // that match the packet, until a class takes it
  Treatment byRecords;
  std::optional<Line> configured;  // the line that decides
  Treatment byConfiguration;
  std::optional<Box> alike;  // all of whose packets fare the same for the same reason

  [[nodiscard]] bool same() const { return byRecords == byConfiguration; }
};
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Trace> trace(PolicyMapTestKit::Lab const& lab,
                                                            Packet const& packet,
                                                            Selection const& selection = {},
                                                            Deny deny = Deny::nextClass);

// A line per line that decides, and what it comes to.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Trace const& trace);
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Proof const& proof);

}  // namespace PolicyMapPackets
