// SPDX-License-Identifier: Apache-2.0
#pragma once

// TwoClasses: a frame that the MAC rules of a record give to one class, and the rules of another
// kind to another one. Which of the two counts is for the hardware to say, not for the records.

#include "packets/Differences.h"
#include "packets/Export.h"
#include "packets/Subject.h"
#include "packets/space/Packet.h"
#include "testkit/text/Json.h"

#include <PolicyMap/ClassMapMatchOption.h>

#include <iosfwd>
#include <vector>

namespace PolicyMapPackets {

struct TwoClasses {
  Packet frame;  // as the MAC rules see it
  DecidingRule rule;
  PolicyMap::ClassMapMatchOption otherOption{};
  Packet packet;  // the same as the other rules see it
  DecidingRule otherRule;
};

// Of each other kind of rules of the policy the first pair of rules, with their smallest packets.
// `mac` are MAC rules; of `subjects` those of the same policy and direction count. Nothing is found
// of rules that are not programmed as configured, or when the budget is spent.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<TwoClasses> twoClasses(
    Subject const& mac, std::vector<Subject> const& subjects, SearchOptions const& options);

// One line, without a line feed.
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, TwoClasses const& found);
// "frame", "rule", "otherOption", "packet", "otherRule".
[[nodiscard]] POLICYMAPPACKETS_API PolicyMapTestKit::Text::Json jsonOf(TwoClasses const& found);

}  // namespace PolicyMapPackets
