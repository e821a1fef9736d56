// SPDX-License-Identifier: Apache-2.0
#pragma once

// Proof: whether the records treat every packet as the configuration says.
//
//   for (Proof const& proof : prove(lab)) {
//     if (proof.verdict == Verdict::different) { ... proof.differences.front() ... }
//   }

#include "packets/Differences.h"
#include "packets/Export.h"
#include "packets/Subject.h"
#include "packets/TwoClasses.h"
#include "testkit/text/Json.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// The differences are between the records and the configuration, in this order.
struct POLICYMAPPACKETS_API Proof : Differences {
  std::string subject;  // "edge input ipv4"
  Verdict verdict = Verdict::same;
  // Of `notProgrammed`.
  std::string reason;
  // What is irregular about the sub-rules, whether or not packets care.
  std::vector<std::string> findings;
  // Of MAC rules, from proofs of several options: packets that other rules give to another class.
  // Said, but no difference.
  std::vector<TwoClasses> twoClasses;
};

// Each policy that is attached and has anything to program for an option, or should have. Throws as
// subjectsOf().
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Proof> prove(PolicyMapTestKit::Lab const& lab,
                                                            SearchOptions const& options = {});
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Proof> proofsOf(std::vector<Subject> const& subjects,
                                                               SearchOptions const& options = {});
[[nodiscard]] POLICYMAPPACKETS_API Proof prove(Subject const& subject,
                                               SearchOptions const& options = {});

// The texts of the proofs that are different or undecided; empty is good. For SweepOptions::look.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<std::string> unproven(
    PolicyMapTestKit::Lab const& lab);

// Some lines, without a line feed at the end.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Proof const& proof);
// "subject", "verdict", and as far as there are any "reason", "packets", "log2Packets", "atLeast",
// "pairs", "moved", "differences", "findings", "twoClasses". Counts are texts: they exceed the
// numbers of JSON.
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(Proof const& proof);

}  // namespace PolicyMapPackets
