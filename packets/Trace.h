// SPDX-License-Identifier: Apache-2.0
#pragma once

// Trace: the way of one packet through the records, and what the configuration says about it.
//
//   for (Trace const& trace : tracePacket(lab, readPacket("tcp 10.9.9.9:4000 > 192.0.2.80:80"))) {
//     std::cout << trace << "\n";
//   }

#include "packets/Export.h"
#include "packets/Proof.h"
#include "packets/Subject.h"
#include "packets/space/Packet.h"
#include "testkit/text/Json.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapPackets {

struct TraceOptions {
  Selection selection = {};
  DenyReading deny = DenyReading::nextClass;
  // Also the rules before the one that decides.
  bool passedOver = false;
};

// A rule on the way, and what it does with the packet: "leaves the class", or the actions.
struct TraceLine {
  DecidingRule rule;
  std::string effect;
};

struct POLICYMAPPACKETS_API Trace {
  std::string subject;  // "edge input ipv4"
  Packet packet;
  // The last line decides, if recordedAs has a class.
  std::vector<TraceLine> recorded;
  Treatment recordedAs;
  // What decides by the configuration; none: no rule.
  std::optional<TraceLine> configured;
  Treatment configuredAs;
  Verdict verdict = Verdict::same;
  // Of `notProgrammed`.
  std::string reason;
  // The packets that are treated the same for the same reason, as the match of a rule.
  std::string around;
};

// One for each policy and option that the packet meets, by name, direction and option. Throws as
// subjectsOf().
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Trace> tracePacket(PolicyMapTestKit::Lab const& lab,
                                                                  Packet const& packet,
                                                                  TraceOptions const& options = {});
// Of subjects that are selected already.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Trace> tracePacket(
    std::vector<Subject> const& subjects, Packet const& packet, TraceOptions const& options = {});

// Lines in columns, without a line feed at the end.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Trace const& trace);
// "subject", "packet", "verdict", "recorded", "recordedRules", "configured", "configuredRule",
// "around", and "reason" if there is one.
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(Trace const& trace);

}  // namespace PolicyMapPackets
