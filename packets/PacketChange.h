// SPDX-License-Identifier: Apache-2.0
#pragma once

// PacketChange: what an edit, or another configuration, changes about packets.
//
//   std::vector<Subject> const before = subjectsOf(lab);
//   lab.edit(text);
//   for (PacketChange const& change : packetChanges(before, subjectsOf(lab))) {
//     std::cout << change << "\n";
//   }

#include "packets/Differences.h"
#include "packets/Export.h"
#include "packets/Subject.h"
#include "testkit/text/Json.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// Rules, by class, list and number.
struct RuleChanges {
  std::size_t added = 0;
  std::size_t removed = 0;
  std::size_t changed = 0;  // their match, ports or actions
  // None of these, but another order.
  bool reordered = false;

  [[nodiscard]] bool any() const { return added + removed + changed != 0 || reordered; }
};

// The differences are between before and after.
struct POLICYMAPPACKETS_API PacketChange : Differences {
  std::string subject;  // "edge input ipv4"; of two policies "edge input ipv4 -> core input ipv4"
  Verdict verdict = Verdict::same;
  // Of `notProgrammed`.
  std::string reason;
  RuleChanges rules;
  // Some packets were not compared: SearchOptions::except.
  bool hasExceptions = false;
};

// What is said before and after about each policy, direction and option, by these, that has rules
// at one of the times. What is not there at a time gives nothing to packets. If an interface is
// selected, the policies there are compared, whatever their names. By records, it is
// `notProgrammed` if it is not programmed at one of the times.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<PacketChange> packetChanges(
    std::vector<Subject> const& before, std::vector<Subject> const& after,
    Said said = Said::byRecords, SearchOptions const& options = {});

// Some lines, without a line feed at the end.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, PacketChange const& change);
// "subject", "verdict", "rules" with "added", "removed", "changed" and "reordered", and as far as
// there are any "reason", and those of addTo() with "before" and "after".
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(PacketChange const& change);

}  // namespace PolicyMapPackets
